#include "io/image_reader.h"

#include <filesystem>
#include <optional>

#include "io/bmp/bmp_reader.h"
#include "io/file_ending.h"
#include "io/io_failure.h"
#include "io/jpeg/jpeg_reader.h"
#include "io/png/png_reader.h"
#include "io/raw/raw_reader.h"

namespace img::io {
namespace {

using korvel::internal::ImgStatusCode;

std::unique_ptr<IfcImage> RequireImage(std::unique_ptr<IfcImage> image, const char* location) {
  if (!image) ThrowIo(ImgStatusCode::Io, location, "ImageReader: Invalid file!");
  return image;
}

}  // namespace

std::unique_ptr<IfcImageInput> ImageReader::createImageReader(
    const std::string& path, const std::shared_ptr<buffer::IfcBufferFactory>& bufferFactory) {
  constexpr const char* kLocation =
      "static std::unique_ptr<IfcImageInput> img::io::ImageReader::createImageReader(const std::string &, const "
      "std::shared_ptr<buffer::IfcBufferFactory> &)";
  if (!std::filesystem::path(path).has_filename()) {
    ThrowIo(ImgStatusCode::Io, kLocation, "ImageReader: Filename invalid!");
  }
  if (const std::optional<FileFormat> fileFormat = FileFormatOfEnding(LowerCaseEnding(path))) {
    switch (*fileFormat) {
      case FileFormat::Bmp:
        return std::make_unique<bmp::BMPInput>(path, bufferFactory);
      case FileFormat::Png:
        return std::make_unique<png::PNGInput>(path, bufferFactory);
      case FileFormat::Jpeg:
        return std::make_unique<jpeg::JPEGInput>(path, bufferFactory);
      case FileFormat::Raw:
        return std::make_unique<raw::RAWInput>(path, bufferFactory);
    }
  }
  ThrowIo(ImgStatusCode::Io, kLocation, "ImageReader: Unknown file format!");
}

std::unique_ptr<IfcImage> ImageReader::readImage(const std::string& path,
                                                 const std::shared_ptr<buffer::IfcBufferFactory>& bufferFactory) {
  return RequireImage(createImageReader(path, bufferFactory)->Read(),
                      "static std::unique_ptr<IfcImage> img::io::ImageReader::readImage(const std::string &, const "
                      "std::shared_ptr<buffer::IfcBufferFactory> &)");
}

std::unique_ptr<IfcImage> ImageReader::readImage(const std::string& path,
                                                 const std::shared_ptr<buffer::IfcBufferFactory>& bufferFactory,
                                                 PixelFormatId pixelFormat) {
  return RequireImage(createImageReader(path, bufferFactory)->Read(pixelFormat),
                      "static std::unique_ptr<IfcImage> img::io::ImageReader::readImage(const std::string &, const "
                      "std::shared_ptr<buffer::IfcBufferFactory> &, PixelFormatId)");
}

}  // namespace img::io
