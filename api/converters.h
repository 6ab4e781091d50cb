// Converters as exported functions make them, and what the families that run one share.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "api/export_frame.h"
#include "core/image_buffer.h"
#include "korvel/korvel.h"
#include "processing/conversion/image_converter.h"

namespace korvel::internal {

// The buffers of each size that a converter's pool starts with: enough for an application that holds a few results, and
// what a single result takes.
inline constexpr size_t kBuffersOfAConverter = 5;
inline constexpr size_t kBuffersOfOneResult = 1;

// A converter on a pool of its own.
std::shared_ptr<img::processing::ImageConverter> MakeConverter(size_t numBuffers);

// Converts a whole buffer. The result keeps the converter's pool alive.
std::shared_ptr<img::buffer::IfcImageBuffer> ConvertBuffer(const img::processing::ImageConverter& converter,
                                                           img::buffer::IfcImageBuffer& input,
                                                           uint32_t outputPixelFormat);

// Whether the caller's memory holds the result of a conversion. Throws for an id that no format has, and for a
// result whose bytes don't fit 64 bits.
bool HoldsResult(const img::buffer::IfcImageBuffer& input, uint32_t outputPixelFormat, size_t outputImageBufferSize);

// Converts into the caller's memory, which HoldsResult, and makes an image over it.
std::shared_ptr<img::buffer::IfcImageBuffer> ConvertIntoMemory(const img::processing::ImageConverter& converter,
                                                               img::buffer::IfcImageBuffer& input,
                                                               uint32_t outputPixelFormat, uint8_t* outputImageBuffer,
                                                               size_t outputImageBufferSize);

}  // namespace korvel::internal
