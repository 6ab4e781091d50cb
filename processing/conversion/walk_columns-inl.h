// Walks over the columns of a line by vectors, into memory or past the caches, for sources that are compiled once for
// each vector instruction set.
#pragma once

#include <hwy/cache_control.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "processing/stream_vectors.h"

namespace img::processing::KORVEL_VECTORS {
namespace {

// Calls a kernel for columns first to last - 1, whose pixels begin at to. It has
//   Vectors(begin, end, to)  a whole number of vectors of columns
//   One(x, to)               a column, unless it is never asked for fewer than kLanes
// A last vector that isn't full covers columns again that are done.
template <class Kernel>
void Convert(const Kernel& kernel, size_t first, size_t last, uint8_t* to) {
  constexpr size_t kLanes = Kernel::kLanes;
  constexpr size_t kPixel = Kernel::kPixelBytes;
  if (last < first + kLanes) {
    if constexpr (requires { kernel.One(first, to); }) {
      for (size_t x = first; x < last; ++x) kernel.One(x, to + (x - first) * kPixel);
    }
    return;
  }
  const size_t end = first + (last - first) / kLanes * kLanes;
  kernel.Vectors(first, end, to);
  if (end != last) kernel.Vectors(last - kLanes, last, to + (last - kLanes - first) * kPixel);
}

// Copies whole cache lines past the caches, between addresses at the start of one.
void StreamLines(const uint8_t* from, uint8_t* to, size_t byteCount) {
  for (size_t i = 0; i < byteCount; i += KORVEL_VECTOR_BYTES) {
    hn::Stream(hn::Load(kBytes, from + i), kBytes, to + i);
  }
}

// The same past the caches, by way of a stage that stays in the nearest one. Streamed stores between the loads of the
// kernel take a quarter longer than when they come in bursts, and so they have their alignment for any pixel and
// address. What lies in cache lines that the columns share with others is stored as usual.
template <class Kernel>
void ConvertStreamed(const Kernel& kernel, uint8_t* output, size_t first, size_t last) {
  constexpr size_t kLanes = Kernel::kLanes;
  constexpr size_t kPixel = Kernel::kPixelBytes;
  constexpr size_t kColumns = 2048 / kPixel / kCacheLine * kCacheLine;
  // The head below and a full number of columns.
  alignas(kCacheLine) uint8_t stage[kCacheLine * (1 + kPixel) + kColumns * kPixel];
  uint8_t* const start = output + first * kPixel;
  size_t begin = reinterpret_cast<uintptr_t>(start) % kCacheLine;  // of what the stage holds
  size_t end = begin;
  uint8_t* to = start - begin;  // where the stage's first byte goes

  // Most vectors shall begin with a cache line: what is stored in one piece is loaded in one, without a wait.
  size_t x = first;
  size_t head = 0;
  while (head < kCacheLine && reinterpret_cast<uintptr_t>(start + head * kPixel) % kCacheLine != 0) ++head;
  if (head < kCacheLine && first + head + kLanes <= last) {
    Convert(kernel, first, first + (head < kLanes ? kLanes : head), stage + begin);
    x += head;
    end += head * kPixel;
  }

  while (x < last) {
    size_t count = last - x;
    if (count > kColumns) count = count < kColumns + kLanes ? kColumns - kLanes : kColumns;  // leaves a full vector
    Convert(kernel, x, x + count, stage + end);
    x += count;
    end += count * kPixel;
    if (begin != 0 && end >= kCacheLine) {
      std::memcpy(to + begin, stage + begin, kCacheLine - begin);
      begin = kCacheLine;
    }
    const size_t whole = end / kCacheLine * kCacheLine;
    if (whole != 0) {
      StreamLines(stage + begin, to + begin, whole - begin);
      std::memcpy(stage, stage + whole, end - whole);
      begin = 0;
      end -= whole;
      to += whole;
    }
  }
  std::memcpy(to + begin, stage + begin, end - begin);
}

template <class Kernel>
void Walk(const Kernel& kernel, uint8_t* output, size_t first, size_t last, bool isStreamed) {
  if constexpr (Kernel::kCanStream) {
    if (isStreamed) {
      ConvertStreamed(kernel, output, first, last);
      return;
    }
  }
  Convert(kernel, first, last, output + first * Kernel::kPixelBytes);
}

}  // namespace
}  // namespace img::processing::KORVEL_VECTORS
