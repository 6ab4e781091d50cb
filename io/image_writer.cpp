#include "io/image_writer.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <system_error>

#include "io/bmp/bmp_output.h"
#include "io/file_ending.h"
#include "io/io_failure.h"
#include "io/jpeg/jpeg_output.h"
#include "io/png/png_output.h"
#include "io/raw/raw_output.h"

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
    case FileFormat::Bmp:
      return bmp::MakeOutput(image.PixelFormat(), path);
    case FileFormat::Png:
      return png::MakeOutput(image.PixelFormat(), path, static_cast<const PNGParameter&>(parameter));
    case FileFormat::Jpeg:
      return jpeg::MakeOutput(image.PixelFormat(), path, static_cast<const JPEGParameter&>(parameter));
    case FileFormat::Raw:
      return raw::MakeOutput(image.PixelFormat(), path);
  }
  ThrowIo(ImgStatusCode::Io, kWithParameter, kUnknownFormat);
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
  if (const std::optional<FileFormat> fileFormat = FileFormatOfEnding(LowerCaseEnding(path))) {
    switch (*fileFormat) {
      case FileFormat::Bmp:
        return writeImage(image, path, BMPParameter());
      case FileFormat::Png:
        return writeImage(image, path, PNGParameter());
      case FileFormat::Jpeg:
        return writeImage(image, path, JPEGParameter());
      case FileFormat::Raw:
        return writeImage(image, path, RAWParameter());
    }
  }
  ThrowIo(ImgStatusCode::Io, kByEnding, kUnknownFormat);
}

}  // namespace img::io
