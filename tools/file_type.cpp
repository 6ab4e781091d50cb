#include "file_type.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <filesystem>
#include <system_error>
#include <utility>

#include "tool_error.h"

namespace korvel::tools {
namespace {

constexpr std::array<std::pair<std::string_view, FileType>, 6> kEndings{{{".bmp", FileType::kBmp},
                                                                         {".jpg", FileType::kJpeg},
                                                                         {".jpeg", FileType::kJpeg},
                                                                         {".png", FileType::kPng},
                                                                         {".raw", FileType::kRaw},
                                                                         {".bin", FileType::kBarePixels}}};

}  // namespace

std::string NameOfFile(const std::string& path) { return std::filesystem::path(path).filename().string(); }

std::string EndingOf(const std::string& path) {
  std::string ending = std::filesystem::path(path).extension().string();
  std::transform(ending.begin(), ending.end(), ending.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return ending;
}

FileType TypeOfFile(const std::string& path) {
  const std::string ending = EndingOf(path);
  const auto* const found =
      std::find_if(kEndings.begin(), kEndings.end(), [&](const auto& entry) { return entry.first == ending; });
  return found == kEndings.end() ? FileType::kUnknown : found->second;
}

bool IsPicture(FileType type) { return type == FileType::kBmp || type == FileType::kJpeg || type == FileType::kPng; }

std::string_view NameOfFileType(FileType type) {
  switch (type) {
    case FileType::kBmp:
      return "BMP";
    case FileType::kJpeg:
      return "JPEG";
    case FileType::kPng:
      return "PNG";
    case FileType::kRaw:
      return "RAW";
    case FileType::kBarePixels:
      return "bare pixels";
    case FileType::kUnknown:
      break;
  }
  return "unknown";
}

std::string InsertBeforeEnding(const std::string& path, const std::string& text) {
  const std::filesystem::path whole(path);
  return (whole.parent_path() / (whole.stem().string() + text + whole.extension().string())).string();
}

void RefuseSameFile(const std::string& input, const std::string& output) {
  std::error_code error;  // set where one of them doesn't exist, and then they aren't the same
  if (std::filesystem::equivalent(input, output, error)) {
    throw ToolError("'" + output + "' is the input itself, which would be overwritten", "Choose another output.");
  }
}

}  // namespace korvel::tools
