#include "io/file_ending.h"

namespace img::io {

std::string LowerCaseEnding(const std::filesystem::path& path) {
  std::string ending = path.extension().string();
  for (char& letter : ending) {
    if (letter >= 'A' && letter <= 'Z') letter = static_cast<char>(letter - 'A' + 'a');
  }
  return ending;
}

std::optional<FileFormat> FileFormatOfEnding(std::string_view lowerCaseEnding) {
  constexpr struct {
    std::string_view ending;
    FileFormat format;
  } kEndings[] = {
      {".raw", FileFormat::Raw},  {".png", FileFormat::Png}, {".jpeg", FileFormat::Jpeg},
      {".jpg", FileFormat::Jpeg}, {".bmp", FileFormat::Bmp},
  };
  for (const auto& [ending, format] : kEndings) {
    if (ending == lowerCaseEnding) return format;
  }
  return std::nullopt;
}

}  // namespace img::io
