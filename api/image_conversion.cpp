// KORVEL_Image_Clone, _ConvertTo and _ConvertToBuffer: conversions of single images, each by a converter of its own.

#include <cstring>

#include "api/converters.h"
#include "api/export_frame.h"
#include "api/handle_registry.h"
#include "buffers/vector_image_buffer.h"
#include "korvel/korvel.h"

using img::buffer::IfcImageBuffer;
using korvel::internal::ConvertBuffer;
using korvel::internal::ConvertIntoMemory;
using korvel::internal::ExportFrame;
using korvel::internal::FindImage;
using korvel::internal::HoldsResult;
using korvel::internal::kBuffersOfAConverter;
using korvel::internal::kBuffersOfOneResult;
using korvel::internal::kSuccess;
using korvel::internal::MakeConverter;
using korvel::internal::RegisterImage;

namespace {

// A copy in memory of its own, so that a result doesn't keep a throw-away pool alive.
std::shared_ptr<IfcImageBuffer> CopyOutOfPool(const IfcImageBuffer& buffer) {
  auto copy = img::buffer::VectorImageBuffer::AllocBuffer(buffer.Format(), buffer.Size());
  if (buffer.ByteCount() != 0) std::memcpy(copy->Data(), buffer.Data(), buffer.ByteCount());
  return copy;
}

}  // namespace

KORVEL_RETURN_CODE KORVEL_Image_Clone(KORVEL_IMAGE_HANDLE imageHandle, KORVEL_IMAGE_HANDLE* outputImageHandle) {
  return ExportFrame([&] {
    const auto buffer = FindImage(imageHandle);
    KORVEL_REQUIRE_HANDLE(buffer, imageHandle);
    KORVEL_REQUIRE_POINTER(outputImageHandle);
    *outputImageHandle = RegisterImage(
        ConvertBuffer(*MakeConverter(kBuffersOfOneResult), *buffer, static_cast<uint32_t>(buffer->Format())));
    return kSuccess;
  });
}

KORVEL_RETURN_CODE KORVEL_Image_ConvertTo(KORVEL_IMAGE_HANDLE imageHandle, uint32_t outputPixelFormat,
                                          uint32_t conversionMode, KORVEL_IMAGE_HANDLE* outputImageHandle) {
  return ExportFrame([&] {
    const auto buffer = FindImage(imageHandle);
    KORVEL_REQUIRE_HANDLE(buffer, imageHandle);
    KORVEL_REQUIRE_POINTER(outputImageHandle);
    const auto converter = MakeConverter(kBuffersOfOneResult);
    converter->SetConversionMode(conversionMode);
    *outputImageHandle = RegisterImage(CopyOutOfPool(*ConvertBuffer(*converter, *buffer, outputPixelFormat)));
    return kSuccess;
  });
}

KORVEL_RETURN_CODE KORVEL_Image_ConvertToBuffer(KORVEL_IMAGE_HANDLE imageHandle, uint32_t outputPixelFormat,
                                                uint8_t* outputImageBuffer, size_t outputImageBufferSize,
                                                uint32_t conversionMode, KORVEL_IMAGE_HANDLE* outputImageHandle) {
  return ExportFrame([&] {
    const auto buffer = FindImage(imageHandle);
    KORVEL_REQUIRE_HANDLE(buffer, imageHandle);
    KORVEL_REQUIRE_POINTER(outputImageBuffer);
    KORVEL_REQUIRE_POINTER(outputImageHandle);
    KORVEL_REQUIRE(HoldsResult(*buffer, outputPixelFormat, outputImageBufferSize), KORVEL_RETURN_CODE_BufferToSmall,
                   "outputImageBuffer is too small!");
    const auto converter = MakeConverter(kBuffersOfAConverter);
    converter->SetConversionMode(conversionMode);
    *outputImageHandle = RegisterImage(
        ConvertIntoMemory(*converter, *buffer, outputPixelFormat, outputImageBuffer, outputImageBufferSize));
    return kSuccess;
  });
}
