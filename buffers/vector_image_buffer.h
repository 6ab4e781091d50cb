// Images in memory of their own.
#pragma once

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "core/image_buffer.h"

namespace img::buffer {

class VectorImageBuffer {
 public:
  // New memory, all zero. Throws OutOfRange for a width or height of 0 (format Invalid may be empty),
  // InvalidParameterUtilx for an id that isn't public, std::bad_alloc if the memory can't be had.
  static std::shared_ptr<IfcImageBuffer> AllocBuffer(PixelFormatId format, const Size2D& size);

  // Takes a vector over, which must hold at least the bytes of the image; that isn't checked. Throws as above; a
  // failure leaves the vector as it was.
  static std::shared_ptr<IfcImageBuffer> CreateBuffer(PixelFormatId format, std::vector<uint8_t>&& storage,
                                                      const Size2D& size);

 protected:
  explicit VectorImageBuffer(std::vector<uint8_t>&& storage) : storage_(std::move(storage)) {}
  ~VectorImageBuffer() = default;

  std::vector<uint8_t> storage_;
};

class VectorImageBufferFactory final : public IfcBufferFactory {
 public:
  std::shared_ptr<IfcImageBuffer> AllocBuffer(PixelFormatId format, const Size2D& size) override {
    return VectorImageBuffer::AllocBuffer(format, size);
  }
};

}  // namespace img::buffer
