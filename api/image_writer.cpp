// KORVEL_ImageWriter_*: images to files.

#include "io/image_writer.h"

#include <string>

#include "api/export_frame.h"
#include "api/handle_registry.h"
#include "korvel/korvel.h"

using korvel::internal::ExportFrame;
using korvel::internal::FindImage;
using korvel::internal::kSuccess;
using korvel::internal::ReturnCode;

namespace {

// The checks that all writers share, and then write(image, path).
template <class Write>
ReturnCode WriteTo(KORVEL_IMAGE_HANDLE inputImageHandle, const char* filePath, size_t filePathSize, Write&& write) {
  return ExportFrame([&] {
    const auto buffer = FindImage(inputImageHandle);
    KORVEL_REQUIRE_HANDLE(buffer, inputImageHandle);
    KORVEL_REQUIRE_POINTER(filePath);
    KORVEL_REQUIRE(filePathSize != 0, KORVEL_RETURN_CODE_InvalidArgument, "filePathSize is 0!");
    write(*buffer->CreateImage(), std::string(filePath, filePathSize));
    return kSuccess;
  });
}

}  // namespace

KORVEL_RETURN_CODE KORVEL_ImageWriter_WriteAsRAW(KORVEL_IMAGE_HANDLE inputImageHandle, const char* filePath,
                                                 size_t filePathSize) {
  return WriteTo(inputImageHandle, filePath, filePathSize, [](const img::IfcImage& image, const std::string& path) {
    img::io::ImageWriter::writeImage(image, path, img::io::RAWParameter());
  });
}

KORVEL_RETURN_CODE KORVEL_ImageWriter_WriteAsBMP(KORVEL_IMAGE_HANDLE inputImageHandle, const char* filePath,
                                                 size_t filePathSize) {
  return WriteTo(inputImageHandle, filePath, filePathSize, [](const img::IfcImage& image, const std::string& path) {
    img::io::ImageWriter::writeImage(image, path, img::io::BMPParameter());
  });
}

KORVEL_RETURN_CODE KORVEL_ImageWriter_WriteAsPNG(KORVEL_IMAGE_HANDLE inputImageHandle, uint32_t quality,
                                                 const char* filePath, size_t filePathSize) {
  return WriteTo(inputImageHandle, filePath, filePathSize, [&](const img::IfcImage& image, const std::string& path) {
    img::io::ImageWriter::writeImage(image, path, img::io::PNGParameter(quality));
  });
}

KORVEL_RETURN_CODE KORVEL_ImageWriter_WriteAsJPG(KORVEL_IMAGE_HANDLE inputImageHandle, uint32_t quality,
                                                 const char* filePath, size_t filePathSize) {
  return WriteTo(inputImageHandle, filePath, filePathSize, [&](const img::IfcImage& image, const std::string& path) {
    img::io::ImageWriter::writeImage(image, path, img::io::JPEGParameter(quality));
  });
}

KORVEL_RETURN_CODE KORVEL_ImageWriter_Write(KORVEL_IMAGE_HANDLE inputImageHandle, const char* filePath,
                                            size_t filePathSize) {
  return WriteTo(inputImageHandle, filePath, filePathSize, [](const img::IfcImage& image, const std::string& path) {
    img::io::ImageWriter::writeImage(image, path);
  });
}
