// Images in memory of a pool, which takes it back when the buffer goes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "buffers/buffer_pool.h"
#include "core/image_buffer.h"

namespace img::buffer {

class PooledImageBuffer {
 public:
  PooledImageBuffer(const PooledImageBuffer&) = delete;
  PooledImageBuffer& operator=(const PooledImageBuffer&) = delete;

  // key names the memory to the pool. factory makes clones; the pool does where factory is null.
  static std::shared_ptr<IfcImageBuffer> CreateBuffer(PixelFormatId format, uint8_t* data, const Size2D& size,
                                                      size_t key, std::shared_ptr<IfcFixedFormatBufferPool> pool,
                                                      std::shared_ptr<IfcBufferFactory> factory);

 protected:
  PooledImageBuffer(uint8_t* data, size_t key, std::shared_ptr<IfcFixedFormatBufferPool> pool,
                    std::shared_ptr<IfcBufferFactory> factory);

  // Gives the memory back to the pool, unless another buffer has taken it over.
  ~PooledImageBuffer();

  size_t key_;
  std::shared_ptr<IfcFixedFormatBufferPool> pool_;
  // True while the memory's claim is another buffer's: before this buffer is complete, and once another has taken it.
  bool detached_ = true;
  uint8_t* data_;
  std::shared_ptr<IfcBufferFactory> factory_;
};

}  // namespace img::buffer
