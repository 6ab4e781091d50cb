// Images over memory that the caller owns.
#pragma once

#include <cstdint>
#include <memory>

#include "core/image_buffer.h"

namespace img::buffer {

class RawImageBuffer {
 public:
  // Wraps memory that holds at least the bytes of the image and outlives the buffer and all that is made from it.
  // Nothing is copied or freed. Throws as VectorImageBuffer::AllocBuffer does.
  static std::shared_ptr<IfcImageBuffer> CreateBuffer(PixelFormatId format, uint8_t* data, const Size2D& size);

 protected:
  explicit RawImageBuffer(uint8_t* data) : data_(data) {}
  ~RawImageBuffer() = default;

  uint8_t* data_;
};

}  // namespace img::buffer
