// KORVEL_ImageReader_*, KORVEL_ImageReaderRead_*: images from files.

#include "io/image_reader.h"

#include <memory>
#include <string>

#include "api/export_frame.h"
#include "api/handle_registry.h"
#include "buffers/vector_image_buffer.h"
#include "korvel/korvel.h"

using img::buffer::VectorImageBufferFactory;
using img::io::ImageReader;
using korvel::internal::ExportFrame;
using korvel::internal::kSuccess;
using korvel::internal::RegisterImage;
using korvel::internal::ReturnCode;

namespace {

// The checks that both readers share, and then read(path).
template <class Read>
ReturnCode ReadFrom(const char* filePath, size_t filePathSize, KORVEL_IMAGE_HANDLE* outputImageHandle, Read&& read) {
  KORVEL_REQUIRE_POINTER(filePath);
  KORVEL_REQUIRE(filePathSize != 0, KORVEL_RETURN_CODE_InvalidArgument, "filePathSize is 0!");
  KORVEL_REQUIRE_POINTER(outputImageHandle);
  return read(std::string(filePath, filePathSize));
}

}  // namespace

KORVEL_RETURN_CODE KORVEL_ImageReader_Read(const char* filePath, size_t filePathSize,
                                           KORVEL_IMAGE_HANDLE* outputImageHandle) {
  return ExportFrame([&] {
    return ReadFrom(filePath, filePathSize, outputImageHandle, [&](const std::string& path) {
      const auto image = ImageReader::readImage(path, std::make_shared<VectorImageBufferFactory>());
      *outputImageHandle = RegisterImage(image->Buffer());
      return kSuccess;
    });
  });
}

KORVEL_RETURN_CODE KORVEL_ImageReaderRead_ReadAsPixelFormat(const char* filePath, size_t filePathSize,
                                                            uint32_t pixelFormat,
                                                            KORVEL_IMAGE_HANDLE* outputImageHandle) {
  return ExportFrame([&] {
    return ReadFrom(filePath, filePathSize, outputImageHandle, [&](const std::string& path) {
      KORVEL_REQUIRE(pixelFormat != KORVEL_PIXEL_FORMAT_Invalid, KORVEL_RETURN_CODE_ImageFormatNotSupported,
                     "ImageReader can't interpret image as \"Invalid\" pixel format!");
      const auto image =
          ImageReader::readImage(path, std::make_shared<VectorImageBufferFactory>(), img::PixelFormatId{pixelFormat});
      *outputImageHandle = RegisterImage(image->Buffer());
      return kSuccess;
    });
  });
}
