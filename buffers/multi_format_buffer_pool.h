// The pool that processing objects draw their images from: any format, any size.
#pragma once

#include <map>
#include <mutex>

#include "buffers/buffer_pool.h"

namespace img::buffer {

class MultiFormatBufferPool final : public IfcMultiFormatBufferPool {
 public:
  // defaultNumBuffers is the number of buffers that the fixed pool of each byte size starts with, or fewer where all
  // of them would exceed LargestAllocation().
  MultiFormatBufferPool(std::shared_ptr<IfcFixedFormatBufferPoolFactory> factory, size_t defaultNumBuffers);

  // Throws as PixelFormatInfo_CalcSizeOfPixels does for an unknown id, std::bad_alloc if the memory can't be had.
  std::shared_ptr<IfcImageBuffer> AllocBuffer(PixelFormatId format, const Size2D& size) override;
  std::shared_ptr<IfcImageBuffer> AllocBufferToFill(PixelFormatId format, const Size2D& size) override;

  // Lets the fixed pools go; buffers in use live on, each keeping its pool alive.
  void Reset() override;
  void WaitUntilAllFree() override;
  size_t NumBuffers() const override;
  size_t NumBuffersInUse() const override;
  size_t TotalByteCount() const override;
  size_t PreAllocate(PixelFormatId format, const Size2D& size, size_t numBuffers) override;

 private:
  std::shared_ptr<IfcFixedFormatBufferPool> FindOrMakePool(PixelFormatId format, const Size2D& size);
  // Null if there is none yet.
  std::shared_ptr<IfcFixedFormatBufferPool> FindPool(size_t byteCount) const;
  std::shared_ptr<IfcFixedFormatBufferPool> MakePool(size_t byteCount, size_t numBuffers);
  size_t DefaultNumBuffers() const;

  std::shared_ptr<IfcFixedFormatBufferPoolFactory> factory_;
  std::map<size_t, std::shared_ptr<IfcFixedFormatBufferPool>> pools_;  // by byte size
  mutable std::mutex mutex_;                                           // guards pools_ and defaultNumBuffers_
  size_t defaultNumBuffers_;
};

}  // namespace img::buffer
