#include "io/image_writer.h"

#include <filesystem>
#include <memory>
#include <system_error>

#include "io/io_failure.h"
#include "io/path_ending.h"
#include "io/png/png_output.h"

namespace img::io {
namespace {

using korvel::internal::ImgStatusCode;

constexpr const char* kWithParameter =
    "static void img::io::ImageWriter::writeImage(const img::IfcImage &, const std::string &, const "
    "img::io::ImgParameter &)";
constexpr const char* kByEnding =
    "static void img::io::ImageWriter::writeImage(const img::IfcImage &, const std::string &)";
constexpr const char* kUnknownFormat = "ImageWriter: Unknown file format invalid!";

void RequireDirectory(const std::filesystem::path& path, const char* location) {
  const std::filesystem::path directory = path.parent_path();
  std::error_code ignored;
  if (!directory.empty() && !std::filesystem::is_directory(directory, ignored)) {
    ThrowIo(ImgStatusCode::Io, location, "ImageWriter: FileDirectory invalid!");
  }
}

std::unique_ptr<IfcImageOutput> MakeOutput(const IfcImage& image, const std::string& path,
                                           const ImgParameter& parameter) {
  switch (parameter.fileFormat) {
    case FileFormat::Png:
      return png::MakeOutput(image.PixelFormat(), path, static_cast<const PNGParameter&>(parameter));
    default:
      ThrowIo(ImgStatusCode::Io, kWithParameter, kUnknownFormat);
  }
}

}  // namespace

void ImageWriter::writeImage(const IfcImage& image, const std::string& path, const ImgParameter& parameter) {
  RequireDirectory(path, kWithParameter);
  const std::unique_ptr<IfcImageOutput> output = MakeOutput(image, path, parameter);
  if (!output->IsEndingOfType(LowerCaseEnding(path))) {
    ThrowIo(ImgStatusCode::Io, kWithParameter, "ImageWriter: FileFormat is incorrect to file ending!");
  }
  output->Out(image);
}

void ImageWriter::writeImage(const IfcImage& image, const std::string& path) {
  RequireDirectory(path, kByEnding);
  if (LowerCaseEnding(path) != kPngEnding) ThrowIo(ImgStatusCode::Io, kByEnding, kUnknownFormat);
  writeImage(image, path, PNGParameter());
}

}  // namespace img::io
