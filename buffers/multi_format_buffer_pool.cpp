#include "buffers/multi_format_buffer_pool.h"

#include <algorithm>
#include <limits>
#include <new>
#include <utility>

#include "core/memory_limit.h"

namespace img::buffer {
MultiFormatBufferPool::MultiFormatBufferPool(std::shared_ptr<IfcFixedFormatBufferPoolFactory> factory,
                                             size_t defaultNumBuffers)
    : factory_(std::move(factory)), defaultNumBuffers_(defaultNumBuffers) {}

std::shared_ptr<IfcImageBuffer> MultiFormatBufferPool::AllocBuffer(PixelFormatId format, const Size2D& size) {
  return FindOrMakePool(format, size)->AllocBuffer(format, size);
}

std::shared_ptr<IfcImageBuffer> MultiFormatBufferPool::AllocBufferToFill(PixelFormatId format, const Size2D& size) {
  return FindOrMakePool(format, size)->AllocBufferToFill(format, size);
}

std::shared_ptr<IfcFixedFormatBufferPool> MultiFormatBufferPool::FindOrMakePool(PixelFormatId format,
                                                                                const Size2D& size) {
  const size_t byteCount = ByteCountToAllocate(format, size);
  std::shared_ptr<IfcFixedFormatBufferPool> pool = FindPool(byteCount);
  if (!pool) {
    // A number that was meant for small images must not exhaust the memory with large ones.
    const size_t mostBuffers = MostAllocations(byteCount, TotalByteCount());
    pool = MakePool(byteCount, std::min(DefaultNumBuffers(), mostBuffers));
  }
  return pool;
}

std::shared_ptr<IfcFixedFormatBufferPool> MultiFormatBufferPool::FindPool(size_t byteCount) const {
  const std::lock_guard lock(mutex_);
  const auto found = pools_.find(byteCount);
  return found == pools_.end() ? nullptr : found->second;
}

std::shared_ptr<IfcFixedFormatBufferPool> MultiFormatBufferPool::MakePool(size_t byteCount, size_t numBuffers) {
  // Taking memory is slow, so it happens outside the lock. If another thread was faster, its pool is used.
  auto made = factory_->Create(byteCount, numBuffers, std::numeric_limits<size_t>::max(), weak_from_this());
  const std::lock_guard lock(mutex_);
  std::shared_ptr<IfcFixedFormatBufferPool>& entry = pools_[byteCount];
  if (!entry) entry = std::move(made);
  return entry;
}

size_t MultiFormatBufferPool::DefaultNumBuffers() const {
  const std::lock_guard lock(mutex_);
  return defaultNumBuffers_;
}

void MultiFormatBufferPool::Reset() {
  std::map<size_t, std::shared_ptr<IfcFixedFormatBufferPool>> released;
  const std::lock_guard lock(mutex_);
  released.swap(pools_);
}

void MultiFormatBufferPool::WaitUntilAllFree() {
  const std::lock_guard lock(mutex_);
  for (const auto& [byteCount, pool] : pools_) pool->WaitUntilAllFree();
}

size_t MultiFormatBufferPool::NumBuffers() const {
  const std::lock_guard lock(mutex_);
  size_t sum = 0;
  for (const auto& [byteCount, pool] : pools_) sum += pool->NumBuffers();
  return sum;
}

size_t MultiFormatBufferPool::NumBuffersInUse() const {
  const std::lock_guard lock(mutex_);
  size_t sum = 0;
  for (const auto& [byteCount, pool] : pools_) sum += pool->NumBuffersInUse();
  return sum;
}

size_t MultiFormatBufferPool::TotalByteCount() const {
  const std::lock_guard lock(mutex_);
  size_t sum = 0;
  for (const auto& [byteCount, pool] : pools_) sum += pool->TotalByteCount();
  return sum;
}

size_t MultiFormatBufferPool::PreAllocate(PixelFormatId format, const Size2D& size, size_t numBuffers) {
  const size_t byteCount = ByteCountToAllocate(format, size);
  if (numBuffers > MostAllocations(byteCount)) throw std::bad_alloc();
  {
    const std::lock_guard lock(mutex_);
    defaultNumBuffers_ = numBuffers;
  }
  std::shared_ptr<IfcFixedFormatBufferPool> pool = FindPool(byteCount);
  if (!pool) pool = MakePool(byteCount, numBuffers);
  if (pool->NumBuffers() < numBuffers) pool->SetNumBuffersWanted(numBuffers);
  pool->ZeroFreeBuffers();
  return pool->NumBuffers();
}

}  // namespace img::buffer
