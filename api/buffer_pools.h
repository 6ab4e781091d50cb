// The pools that objects of the exported interface draw their images from.
#pragma once

#include <cstddef>
#include <memory>

#include "buffers/buffer_pool.h"

namespace korvel::internal {

// The buffers of each size that the pool of an operation (a gain, say) starts with. It grows with the images that an
// application keeps, and most keep one.
inline constexpr size_t kBuffersOfAnOperation = 1;

std::shared_ptr<img::buffer::IfcMultiFormatBufferPool> MakeBufferPool(size_t numBuffers);

}  // namespace korvel::internal
