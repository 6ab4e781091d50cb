// The pool of buffers of one byte size, whatever their format.
#pragma once

#include <condition_variable>
#include <list>
#include <map>
#include <memory>
#include <mutex>

#include "buffers/buffer_pool.h"

namespace img::buffer {

// Grows on demand up to its limit and doesn't shrink. Must be held by a shared_ptr, as its buffers keep it alive.
// Memory is zeroed when it is handed out first, unless its taker fills it, and isn't cleared when it is handed out
// again. The memory that came back last goes out first, while it is in the cache.
class FixedFormatVectorBufferPool final : public IfcFixedFormatBufferPool {
 public:
  class Factory;

  FixedFormatVectorBufferPool(size_t bufferByteCount, size_t numBuffers, size_t bufferLimit,
                              std::weak_ptr<IfcBufferFactory> parent);

  // Throws InvalidParameterUtilx, "Pool: Invalid buffer format!", if the image doesn't have the pool's byte size, and
  // ResourceExhaustedUtilx if the limit is reached and nothing is free. Never waits.
  std::shared_ptr<IfcImageBuffer> AllocBuffer(PixelFormatId format, const Size2D& size) override;
  std::shared_ptr<IfcImageBuffer> AllocBufferToFill(PixelFormatId format, const Size2D& size) override;

  void Reset() override;
  void WaitUntilAllFree() override;
  size_t NumBuffers() const override;
  size_t NumBuffersInUse() const override;
  size_t TotalByteCount() const override;
  size_t BufferByteCount() const override { return bufferByteCount_; }
  size_t NumBuffersWanted() const override;
  size_t BufferLimit() const override { return bufferLimit_; }
  void SetNumBuffersWanted(size_t numBuffers) override;
  void ZeroFreeBuffers() override;
  void ReleaseBuffer(size_t key) override;

 private:
  struct Memory {
    std::unique_ptr<uint8_t[]> bytes;  // null for a length of 0
    bool isNew = true;                 // neither zeroed nor handed out
  };

  // All of these want the mutex held, or nobody else to know the pool.
  std::shared_ptr<IfcImageBuffer> AllocBuffer(PixelFormatId format, const Size2D& size, bool isZeroed);
  size_t AllocBuffer();
  void Zero(Memory& memory) const;
  void MakeFreeBuffer();
  void MakeFreeBuffers(size_t numBuffers);
  bool AllFree() const { return freeList_.size() >= storage_.size(); }

  size_t bufferByteCount_;
  size_t numBuffersWanted_;
  size_t bufferLimit_;
  std::weak_ptr<IfcBufferFactory> parent_;
  // By the address of their bytes. All memory of length 0 shares the key 0.
  std::map<size_t, Memory> storage_;
  std::list<size_t> freeList_;
  // The list nodes of buffers in use. A release puts one back with the key, so that it needs no memory and can't fail.
  std::list<size_t> nodesInUse_;
  mutable std::mutex mutex_;
  std::condition_variable allFree_;
};

class FixedFormatVectorBufferPool::Factory final : public IfcFixedFormatBufferPoolFactory {
 public:
  std::shared_ptr<IfcFixedFormatBufferPool> Create(size_t bufferByteCount, size_t numBuffers, size_t bufferLimit,
                                                   std::weak_ptr<IfcBufferFactory> parent) override;
};

}  // namespace img::buffer
