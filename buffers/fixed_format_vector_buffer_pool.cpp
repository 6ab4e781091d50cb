#include "buffers/fixed_format_vector_buffer_pool.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstring>
#include <iterator>
#include <utility>

#include "buffers/pooled_image_buffer.h"
#include "status/exceptions.h"

namespace img::buffer {

using korvel::internal::ImgStatusCode;
using korvel::internal::ThrowStatus;

namespace {

// Blocks of this size come from the system anew each time, page by page.
constexpr size_t kSmallestWithLargePages = size_t{32} << 20;

// Asks for pages of 2 MB, of which taking one costs little more than one of 4 KB. The system may not have them.
void AskForLargePages(uint8_t* bytes, size_t byteCount) {
  const auto pageSize = static_cast<uintptr_t>(sysconf(_SC_PAGESIZE));
  const auto address = reinterpret_cast<uintptr_t>(bytes);
  const uintptr_t begin = (address + pageSize - 1) / pageSize * pageSize;
  madvise(bytes + (begin - address), byteCount - (begin - address), MADV_HUGEPAGE);
}

}  // namespace

FixedFormatVectorBufferPool::FixedFormatVectorBufferPool(size_t bufferByteCount, size_t numBuffers, size_t bufferLimit,
                                                         std::weak_ptr<IfcBufferFactory> parent)
    : bufferByteCount_(bufferByteCount),
      numBuffersWanted_(numBuffers),
      bufferLimit_(bufferLimit),
      parent_(std::move(parent)) {
  MakeFreeBuffers(numBuffersWanted_);
}

std::shared_ptr<IfcImageBuffer> FixedFormatVectorBufferPool::AllocBuffer(PixelFormatId format, const Size2D& size) {
  const std::lock_guard lock(mutex_);
  return AllocBuffer(format, size, true);
}

std::shared_ptr<IfcImageBuffer> FixedFormatVectorBufferPool::AllocBufferToFill(PixelFormatId format,
                                                                               const Size2D& size) {
  const std::lock_guard lock(mutex_);
  return AllocBuffer(format, size, false);
}

std::shared_ptr<IfcImageBuffer> FixedFormatVectorBufferPool::AllocBuffer(PixelFormatId format, const Size2D& size,
                                                                         bool isZeroed) {
  const size_t byteCount = PixelFormatInfo_CalcSizeOfPixels(format, size.width * size.height);
  // A size whose bytes are right only because they wrap isn't.
  if (byteCount != bufferByteCount_ || !CheckedByteCount(*FindFacts(format), size)) {
    ThrowStatus<cfg_libimg::Modules::Buffer>(
        ImgStatusCode::InvalidParameterUtilx,
        "virtual std::shared_ptr<IfcImageBuffer> img::buffer::FixedFormatVectorBufferPool::AllocBuffer("
        "img::PixelFormatId, const img::Size2D &)",
        "Pool: Invalid buffer format!");
  }
  std::shared_ptr<IfcFixedFormatBufferPool> self = shared_from_this();
  if (freeList_.empty()) MakeFreeBuffer();
  const size_t key = freeList_.back();
  Memory& memory = storage_.at(key);
  // The memory leaves the free list only once its new holder exists.
  auto made = PooledImageBuffer::CreateBuffer(format, memory.bytes.get(), size, key, std::move(self), parent_.lock());
  if (memory.isNew && isZeroed) Zero(memory);
  memory.isNew = false;
  nodesInUse_.splice(nodesInUse_.end(), freeList_, std::prev(freeList_.end()));
  return made;
}

size_t FixedFormatVectorBufferPool::AllocBuffer() {
  if (storage_.size() == bufferLimit_) {
    ThrowStatus<cfg_libimg::Modules::Buffer>(ImgStatusCode::ResourceExhaustedUtilx,
                                             "size_t img::buffer::FixedFormatVectorBufferPool::AllocBuffer()",
                                             "Buffer pool exhausted! (Reached buffer limit)");
  }
  std::unique_ptr<uint8_t[]> bytes;
  if (bufferByteCount_ != 0) bytes = std::make_unique_for_overwrite<uint8_t[]>(bufferByteCount_);
  if (bufferByteCount_ >= kSmallestWithLargePages) AskForLargePages(bytes.get(), bufferByteCount_);
  const auto key = reinterpret_cast<size_t>(bytes.get());
  storage_.try_emplace(key, Memory{.bytes = std::move(bytes)});
  return key;
}

void FixedFormatVectorBufferPool::Zero(Memory& memory) const {
  if (bufferByteCount_ != 0) std::memset(memory.bytes.get(), 0, bufferByteCount_);
  memory.isNew = false;
}

void FixedFormatVectorBufferPool::MakeFreeBuffer() {
  // The node comes first: memory that is in no list would count as in use for ever.
  std::list<size_t> node(1);
  node.front() = AllocBuffer();
  freeList_.splice(freeList_.end(), node);
}

void FixedFormatVectorBufferPool::MakeFreeBuffers(size_t numBuffers) {
  // Counts buffers made, not entries: memory of length 0 has one entry however often it is made.
  for (size_t made = storage_.size(); made < numBuffers; ++made) MakeFreeBuffer();
}

void FixedFormatVectorBufferPool::Reset() {
  std::unique_lock lock(mutex_);
  allFree_.wait(lock, [this] { return AllFree(); });
  freeList_.clear();
  storage_.clear();
  MakeFreeBuffers(numBuffersWanted_);
}

void FixedFormatVectorBufferPool::WaitUntilAllFree() {
  std::unique_lock lock(mutex_);
  allFree_.wait(lock, [this] { return AllFree(); });
}

size_t FixedFormatVectorBufferPool::NumBuffers() const {
  const std::lock_guard lock(mutex_);
  return storage_.size();
}

size_t FixedFormatVectorBufferPool::NumBuffersInUse() const {
  const std::lock_guard lock(mutex_);
  return AllFree() ? 0 : storage_.size() - freeList_.size();
}

size_t FixedFormatVectorBufferPool::TotalByteCount() const { return BufferByteCount() * NumBuffers(); }

size_t FixedFormatVectorBufferPool::NumBuffersWanted() const {
  const std::lock_guard lock(mutex_);
  return numBuffersWanted_;
}

void FixedFormatVectorBufferPool::SetNumBuffersWanted(size_t numBuffers) {
  const std::lock_guard lock(mutex_);
  numBuffersWanted_ = numBuffers;
  MakeFreeBuffers(numBuffers);
}

void FixedFormatVectorBufferPool::ZeroFreeBuffers() {
  const std::lock_guard lock(mutex_);
  for (const size_t key : freeList_) {
    Memory& memory = storage_.at(key);
    if (memory.isNew) Zero(memory);
  }
}

void FixedFormatVectorBufferPool::ReleaseBuffer(size_t key) {
  const std::lock_guard lock(mutex_);
  if (nodesInUse_.empty()) return;  // nothing is in use
  if (storage_.size() <= bufferLimit_) {
    nodesInUse_.front() = key;
    freeList_.splice(freeList_.end(), nodesInUse_, nodesInUse_.begin());
  } else {
    nodesInUse_.pop_front();
    storage_.erase(key);
  }
  allFree_.notify_all();
}

std::shared_ptr<IfcFixedFormatBufferPool> FixedFormatVectorBufferPool::Factory::Create(
    size_t bufferByteCount, size_t numBuffers, size_t bufferLimit, std::weak_ptr<IfcBufferFactory> parent) {
  return std::make_shared<FixedFormatVectorBufferPool>(bufferByteCount, numBuffers, bufferLimit, std::move(parent));
}

}  // namespace img::buffer
