// Pools: factories that take memory back and hand it out again, so that a stream of like images allocates nothing.
#pragma once

#include <cstddef>
#include <memory>

#include "core/image_buffer.h"

namespace img::buffer {

class IfcBufferPool : public IfcBufferFactory {
 public:
  // Lets the pool's memory go and starts anew. On a fixed pool this waits for every buffer to come back, without a
  // time limit: a caller that keeps one waits for ever.
  virtual void Reset() = 0;
  virtual void WaitUntilAllFree() = 0;

  // As AllocBuffer, for a taker that writes every byte: memory that is new isn't zeroed first.
  virtual std::shared_ptr<IfcImageBuffer> AllocBufferToFill(PixelFormatId format, const Size2D& size) {
    return AllocBuffer(format, size);
  }

  virtual size_t NumBuffers() const = 0;
  virtual size_t NumBuffersInUse() const = 0;
  virtual size_t TotalByteCount() const = 0;
};

// Serves any format and size, from one fixed pool for each byte size.
class IfcMultiFormatBufferPool : public IfcBufferPool, public std::enable_shared_from_this<IfcBufferPool> {
 public:
  // Sees to it that numBuffers buffers for this format and size exist, and makes numBuffers the number that the fixed
  // pool of any other byte size starts with. Returns the number that then exist.
  virtual size_t PreAllocate(PixelFormatId format, const Size2D& size, size_t numBuffers) = 0;
};

// Serves any format and size whose bytes are exactly those of the pool.
class IfcFixedFormatBufferPool : public IfcBufferPool, public std::enable_shared_from_this<IfcFixedFormatBufferPool> {
 public:
  virtual size_t BufferByteCount() const = 0;
  virtual size_t NumBuffersWanted() const = 0;
  virtual size_t BufferLimit() const = 0;

  // Makes buffers until there are that many; never fewer.
  virtual void SetNumBuffersWanted(size_t numBuffers) = 0;

  // Zeroes what is free and new, so that whoever takes it later finds memory that the system has already given.
  virtual void ZeroFreeBuffers() {}

  // Called by a pooled buffer at its end, with the key of its memory.
  virtual void ReleaseBuffer(size_t key) = 0;
};

class IfcFixedFormatBufferPoolFactory : public std::enable_shared_from_this<IfcFixedFormatBufferPoolFactory> {
 public:
  IfcFixedFormatBufferPoolFactory() = default;
  IfcFixedFormatBufferPoolFactory(const IfcFixedFormatBufferPoolFactory&) = delete;
  IfcFixedFormatBufferPoolFactory& operator=(const IfcFixedFormatBufferPoolFactory&) = delete;
  virtual ~IfcFixedFormatBufferPoolFactory() = default;

  // parent is the pool that this one belongs to, handed to buffers as their factory; may be empty.
  virtual std::shared_ptr<IfcFixedFormatBufferPool> Create(size_t bufferByteCount, size_t numBuffers,
                                                           size_t bufferLimit,
                                                           std::weak_ptr<IfcBufferFactory> parent) = 0;
};

}  // namespace img::buffer
