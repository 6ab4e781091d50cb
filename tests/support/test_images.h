// Images for tests of the classes inside: small ones written out byte by byte or word by word, and memory that nothing
// may be read or written beyond.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>
#include <optional>
#include <ostream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "buffers/raw_image_buffer.h"
#include "core/image.h"
#include "core/image_buffer.h"
#include "tests/support/failure.h"

namespace korvel_test {

using Bytes = std::vector<uint8_t>;
using Words = std::vector<uint16_t>;
using Words32 = std::vector<uint32_t>;

template <class Word>
Bytes BytesOfWords(const std::vector<Word>& words) {
  Bytes bytes(words.size() * sizeof(Word));
  if (!words.empty()) std::memcpy(bytes.data(), words.data(), bytes.size());
  return bytes;
}

template <class Word>
std::vector<Word> WordsOfBytes(const Bytes& bytes) {
  std::vector<Word> words(bytes.size() / sizeof(Word));
  if (!words.empty()) std::memcpy(words.data(), bytes.data(), words.size() * sizeof(Word));
  return words;
}

// What memory holds before a test's subject writes to it.
inline constexpr uint8_t kUnwritten = 0xCD;

// An image over bytes of its own, which have exactly the image's size.
class TestImage {
 public:
  TestImage(img::PixelFormatId format, size_t width, size_t height)
      : TestImage(format, width, height,
                  Bytes(img::PixelFormatInfo_CalcSizeOfPixels(format, width * height), kUnwritten)) {}
  TestImage(img::PixelFormatId format, size_t width, size_t height, Bytes bytes)
      : bytes_(std::move(bytes)),
        image_(img::buffer::RawImageBuffer::CreateBuffer(format, bytes_.empty() ? nullptr : bytes_.data(),
                                                         img::Size2D{width, height})
                   ->CreateImage()) {
    if (bytes_.size() != img::PixelFormatInfo_CalcSizeOfPixels(format, width * height)) {
      throw std::invalid_argument("a test image has the wrong number of bytes");
    }
  }
  TestImage(img::PixelFormatId format, size_t width, size_t height, const Words& words)
      : TestImage(format, width, height, BytesOfWords(words)) {}
  TestImage(img::PixelFormatId format, size_t width, size_t height, const Words32& words)
      : TestImage(format, width, height, BytesOfWords(words)) {}
  TestImage(const TestImage&) = delete;
  TestImage& operator=(const TestImage&) = delete;

  img::IfcImage& operator*() const { return *image_; }
  const std::shared_ptr<img::IfcImage>& Shared() const { return image_; }
  const Bytes& Content() const { return bytes_; }
  Words ContentWords() const { return WordsOfBytes<uint16_t>(bytes_); }
  Words32 ContentWords32() const { return WordsOfBytes<uint32_t>(bytes_); }

 private:
  Bytes bytes_;
  std::shared_ptr<img::IfcImage> image_;
};

inline Bytes BytesOf(const img::IfcImage& image) {
  const uint8_t* const first = image.PixelPointer(0, 0);
  return first == nullptr ? Bytes() : Bytes(first, first + image.ByteCount());
}

// Memory that ends where the next page can't be touched.
class MemoryBeforeGuard {
 public:
  explicit MemoryBeforeGuard(size_t size, uint8_t fill = kUnwritten)
      : page_(static_cast<size_t>(sysconf(_SC_PAGESIZE))), usable_((size + page_ - 1) / page_ * page_ + page_) {
    void* const mapped = mmap(nullptr, usable_ + page_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (mapped == MAP_FAILED) throw std::bad_alloc();
    mapped_ = static_cast<uint8_t*>(mapped);
    if (mprotect(mapped_ + usable_, page_, PROT_NONE) != 0) throw std::bad_alloc();
    data_ = mapped_ + usable_ - size;
    std::memset(data_, fill, size);
  }
  explicit MemoryBeforeGuard(const Bytes& content) : MemoryBeforeGuard(content.size()) {
    std::copy(content.begin(), content.end(), data_);
  }
  MemoryBeforeGuard(const MemoryBeforeGuard&) = delete;
  MemoryBeforeGuard& operator=(const MemoryBeforeGuard&) = delete;
  ~MemoryBeforeGuard() { munmap(mapped_, usable_ + page_); }

  uint8_t* Data() const { return data_; }

 private:
  size_t page_;
  size_t usable_;
  uint8_t* mapped_ = nullptr;
  uint8_t* data_ = nullptr;
};

}  // namespace korvel_test
