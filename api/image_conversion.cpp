// KORVEL_Image_Clone, _ConvertTo and _ConvertToBuffer: conversions of single images, each by a converter of its own.

#include <utility>
#include <vector>

#include "api/buffer_pools.h"
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
using korvel::internal::MakeBufferPool;
using korvel::internal::MakeConverter;
using korvel::internal::RegisterImage;

namespace {

// A copy in memory of its own.
std::shared_ptr<IfcImageBuffer> CopyOutOfPool(const IfcImageBuffer& buffer) {
  return img::buffer::VectorImageBuffer::CreateBuffer(
      buffer.Format(), std::vector<uint8_t>(buffer.Data(), buffer.Data() + buffer.ByteCount()), buffer.Size());
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
    const auto pool = MakeBufferPool(kBuffersOfOneResult);
    img::processing::ImageConverter converter(pool);
    converter.SetConversionMode(conversionMode);
    std::shared_ptr<IfcImageBuffer> result = ConvertBuffer(converter, *buffer, outputPixelFormat);
    // A result keeps its pool alive, which must not keep the memory of intermediates.
    if (pool->NumBuffers() != 1) result = CopyOutOfPool(*result);
    *outputImageHandle = RegisterImage(std::move(result));
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
