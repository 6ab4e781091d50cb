// Memory between pages that can't be touched, for tests that no byte outside an image is read or written.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>

namespace korvel_test {

// Where a block lies in the memory.
enum class Placement { kEndsAtPage, kStartsAtPage, kOddAddress };

class GuardedMemory {
 public:
  explicit GuardedMemory(size_t capacity) : page_(static_cast<size_t>(sysconf(_SC_PAGESIZE))) {
    size_ = (capacity + 1 + page_ - 1) / page_ * page_;
    void* mapped = mmap(nullptr, size_ + 2 * page_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (mapped == MAP_FAILED) {
      throw std::bad_alloc();
    }
    mapped_ = static_cast<uint8_t*>(mapped);
    begin_ = mapped_ + page_;
    if (mprotect(mapped_, page_, PROT_NONE) != 0 || mprotect(begin_ + size_, page_, PROT_NONE) != 0) {
      munmap(mapped_, size_ + 2 * page_);
      throw std::bad_alloc();
    }
  }
  ~GuardedMemory() { munmap(mapped_, size_ + 2 * page_); }
  GuardedMemory(const GuardedMemory&) = delete;
  GuardedMemory& operator=(const GuardedMemory&) = delete;

  // An even number of bytes can't both start at an odd address and end at a page, so that such an image gives up the
  // last byte before it.
  uint8_t* Place(size_t bytes, Placement placement) {
    uint8_t* end = begin_ + size_;
    switch (placement) {
      case Placement::kEndsAtPage:
        return end - bytes;
      case Placement::kStartsAtPage:
        return begin_;
      case Placement::kOddAddress:
        return end - bytes - (bytes % 2 == 0 ? 1 : 0);
    }
    return begin_;
  }

  // Marks the bytes, and those around them as far as they can be touched.
  void Mark(const uint8_t* first, size_t bytes) {
    std::memset(Before(first), kMark, static_cast<size_t>(After(first + bytes) - Before(first)));
  }
  bool IsMarkedOutside(const uint8_t* first, size_t bytes) {
    return AreMarked(Before(first), first) && AreMarked(first + bytes, After(first + bytes));
  }
  static bool AreMarked(const uint8_t* first, const uint8_t* end) {
    return std::all_of(first, end, [](uint8_t byte) { return byte == kMark; });
  }

 private:
  static constexpr uint8_t kMark = 0xA5;
  static constexpr ptrdiff_t kMargin = 64;

  uint8_t* Before(const uint8_t* at) { return begin_ + std::max<ptrdiff_t>(at - begin_ - kMargin, 0); }
  uint8_t* After(const uint8_t* at) {
    return begin_ + std::min<ptrdiff_t>(at - begin_ + kMargin, static_cast<ptrdiff_t>(size_));
  }

  size_t page_;
  size_t size_ = 0;
  uint8_t* mapped_ = nullptr;
  uint8_t* begin_ = nullptr;
};
}  // namespace korvel_test
