// The lines of a mosaic at the depth at which it is demosaiced, for code that walks from the first line to the last.
#pragma once

#include <cstddef>
#include <cstdint>

#include "processing/conversion/sample_reader.h"

namespace img::processing {

class MosaicLines {
 public:
  // How many lines, up to the last one asked for, can be looked at.
  static constexpr size_t kWindow = 5;

  // Lines that lie in memory one behind the other.
  MosaicLines(const uint8_t* samples, size_t lineByteCount) : lines_(samples), lineByteCount_(lineByteCount) {}

  // Lines that are read when they are asked for, into memory of RingByteCount.
  MosaicLines(const SampleReader& reader, size_t width, uint8_t* ring)
      : lineByteCount_(RingByteCount(width, reader.BytesPerSample()) / kWindow),
        reader_(&reader),
        width_(width),
        ring_(ring) {}

  static constexpr size_t RingByteCount(size_t width, size_t bytesPerSample) {
    constexpr size_t kCacheLine = 64;
    return kWindow * ((width * bytesPerSample + kCacheLine - 1) / kCacheLine * kCacheLine);
  }

  const uint8_t* operator[](size_t y) {
    if (reader_ == nullptr) return lines_ + y * lineByteCount_;
    for (; linesRead_ <= y; ++linesRead_) {
      reader_->Read(linesRead_ * width_, width_, ring_ + linesRead_ % kWindow * lineByteCount_);
    }
    return ring_ + y % kWindow * lineByteCount_;
  }

 private:
  const uint8_t* lines_ = nullptr;
  size_t lineByteCount_;
  const SampleReader* reader_ = nullptr;
  size_t width_ = 0;
  uint8_t* ring_ = nullptr;
  size_t linesRead_ = 0;
};

}  // namespace img::processing
