#include "image_output.h"

#include <algorithm>
#include <iostream>

#include "file_type.h"
#include "library_error.h"
#include "pixel_file.h"

namespace korvel::tools {
namespace {

std::string WriteAdvice(KORVEL_RETURN_CODE code, FileType type) {
  if (code == KORVEL_RETURN_CODE_ImageFormatNotSupported) {
    switch (type) {
      case FileType::kPng:
        return "PNG files hold mono, Bayer and colour formats that are not packed, such as Mono12 and BGRa8; .raw and "
               ".bin files hold all.";
      case FileType::kBmp:
        return "BMP files hold mono and Bayer formats that are not packed, colour of 8 bits, and the formats 10p32; "
               ".raw and .bin files hold all.";
      case FileType::kJpeg:
        return "JPEG files hold formats of 8 bits, such as Mono8 and BGRa8; .raw and .bin files hold all.";
      default:
        break;
    }
  }
  return std::string("The output must end in ") + kOutputEndings +
         " and lie in a folder that exists, can be written to and has space left.";
}

}  // namespace

KORVEL_RETURN_CODE TryWriteImage(const Image& image, const std::string& path, std::optional<uint32_t> quality) {
  const FileType type = TypeOfFile(path);
  if (type == FileType::kBarePixels) {
    const ImageFacts facts = FactsOf(image);
    WriteBytes(path, facts.bytes, facts.byte_count);
    return KORVEL_RETURN_CODE_Success;
  }
  if (quality && type == FileType::kPng) {
    constexpr uint32_t kSmallestFile = 10;  // below it the library's scale goes on in ways of no use
    return KORVEL_ImageWriter_WriteAsPNG(image.Get(), std::max(*quality, kSmallestFile), path.data(), path.size());
  }
  if (quality && type == FileType::kJpeg) {
    return KORVEL_ImageWriter_WriteAsJPG(image.Get(), *quality, path.data(), path.size());
  }
  return KORVEL_ImageWriter_Write(image.Get(), path.data(), path.size());
}

ToolError WriteError(KORVEL_RETURN_CODE code, const std::string& path) {
  return LibraryError(code, "write '" + path + "'", WriteAdvice(code, TypeOfFile(path)));
}

void WriteImage(const Image& image, const std::string& path, std::optional<uint32_t> quality) {
  const KORVEL_RETURN_CODE code = TryWriteImage(image, path, quality);
  if (code != KORVEL_RETURN_CODE_Success) throw WriteError(code, path);
}

void PrintWritten(const std::string& path, const ImageFacts& facts) {
  std::cout << "wrote " << path << ": " << Describe(facts) << "\n";
}

}  // namespace korvel::tools
