#include "api/converters.h"

#include "api/buffer_pools.h"
#include "buffers/raw_image_buffer.h"
#include "status/exceptions.h"

namespace korvel::internal {

using img::PixelFormatId;
using img::buffer::IfcImageBuffer;
using img::processing::ImageConverter;

std::shared_ptr<ImageConverter> MakeConverter(size_t numBuffers) {
  return std::make_shared<ImageConverter>(MakeBufferPool(numBuffers));
}

std::shared_ptr<IfcImageBuffer> ConvertBuffer(const ImageConverter& converter, IfcImageBuffer& input,
                                              uint32_t outputPixelFormat) {
  return converter.ConvertPixelFormat(input.CreateImage(), PixelFormatId{outputPixelFormat})->Buffer();
}

bool HoldsResult(const IfcImageBuffer& input, uint32_t outputPixelFormat, size_t outputImageBufferSize) {
  const PixelFormatId format{outputPixelFormat};
  const size_t needed = img::PixelFormatInfo_CalcSizeOfPixels(format, input.Size().width * input.Size().height);
  if (!img::CheckedByteCount(*img::FindFacts(format), input.Size())) {
    ThrowStatus<cfg_libimg::Modules::Default>(
        ImgStatusCode::Error, "bool korvel::internal::HoldsResult(const IfcImageBuffer &, uint32_t, size_t)",
        "The size of the output image does not fit 64 bits!");
  }
  return needed <= outputImageBufferSize;
}

std::shared_ptr<IfcImageBuffer> ConvertIntoMemory(const ImageConverter& converter, IfcImageBuffer& input,
                                                  uint32_t outputPixelFormat, uint8_t* outputImageBuffer,
                                                  size_t outputImageBufferSize) {
  const PixelFormatId format{outputPixelFormat};
  converter.ConvertPixelFormat(input.CreateImage(), format, outputImageBuffer, outputImageBufferSize);
  return img::buffer::RawImageBuffer::CreateBuffer(format, outputImageBuffer, input.Size());
}

}  // namespace korvel::internal
