// Pixels that change places: the kernels of mirroring and rotation. They are templates over the size of a pixel in
// bytes and look at nothing else, so that all formats of one size share their code. Memory has no alignment. Source and
// target don't overlap.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>
#include <utility>

#include "core/image_lines.h"

namespace img::processing {

namespace detail {

// One pixel in registers. Pixels of 3 and 6 bytes have no type of their size.
template <size_t kBytes>
class Pixel {
 public:
  static Pixel Load(const uint8_t* address) {
    Pixel pixel;
    std::memcpy(&pixel.head_, address, sizeof pixel.head_);
    if constexpr (kHasTail) std::memcpy(&pixel.tail_, address + sizeof pixel.head_, sizeof pixel.tail_);
    return pixel;
  }

  void Store(uint8_t* address) const {
    std::memcpy(address, &head_, sizeof head_);
    if constexpr (kHasTail) std::memcpy(address + sizeof head_, &tail_, sizeof tail_);
  }

 private:
  template <size_t kSize>
  using Unsigned =
      std::conditional_t<kSize == 1, uint8_t,
                         std::conditional_t<kSize == 2, uint16_t, std::conditional_t<kSize == 4, uint32_t, uint64_t>>>;

  static constexpr bool kHasTail = kBytes % 3 == 0;

  Unsigned<kHasTail ? kBytes / 3 * 2 : kBytes> head_;
  Unsigned<kHasTail ? kBytes / 3 : 1> tail_;
};

// Pixels that fill a vector of 16 bytes, in reverse. Steps of its size need no shuffle of bytes, which not every
// processor has.
template <size_t kBytes>
void CopyVectorReversed(const uint8_t* from, uint8_t* to) {
  using Words __attribute__((vector_size(16))) = uint32_t;
  using HalfWords __attribute__((vector_size(16))) = uint16_t;
  Words words;
  std::memcpy(&words, from, sizeof words);
  if constexpr (kBytes == 8) {
    words = __builtin_shufflevector(words, words, 2, 3, 0, 1);
  } else {
    words = __builtin_shufflevector(words, words, 3, 2, 1, 0);
  }
  if constexpr (kBytes <= 2) words = words << 16 | words >> 16;
  if constexpr (kBytes == 1) {
    const auto halves = reinterpret_cast<HalfWords>(words);
    words = reinterpret_cast<Words>(halves << 8 | halves >> 8);
  }
  std::memcpy(to, &words, sizeof words);
}

// The side of a square of pixels whose rows fill a word each; 1 for pixels that don't divide a word.
template <size_t kBytes>
inline constexpr size_t kSquare = 8 % kBytes == 0 ? 8 / kBytes : 1;

// Exchanges the rows and columns of a square: by halves, then each half by halves, and so on.
template <size_t kBytes>
void Transpose(std::array<uint64_t, kSquare<kBytes>>& rows) {
  uint64_t mask = ~uint64_t{0};  // the lower half of each part
  for (size_t half = kSquare<kBytes> / 2; half != 0; half /= 2) {
    const size_t shift = half * kBytes * 8;
    mask ^= mask << shift;
    for (size_t row = 0; row < rows.size(); ++row) {
      if ((row & half) != 0) continue;
      const uint64_t exchanged = (rows[row] >> shift ^ rows[row + half]) & mask;
      rows[row] ^= exchanged << shift;
      rows[row + half] ^= exchanged;
    }
  }
}

}  // namespace detail

// Copies a run of pixels, the last one first.
template <size_t kBytes>
void CopyReversed(const uint8_t* from, uint8_t* to, size_t count) {
  const uint8_t* const end = from + count * kBytes;
  size_t i = 0;
  const auto copyPixel = [&] { detail::Pixel<kBytes>::Load(end - (i + 1) * kBytes).Store(to + i * kBytes); };
  if constexpr (kBytes % 3 == 0) {
    // All but the first and the last pixel together with some of their neighbour, which the next step overwrites: one
    // load and one store.
    using Wide = std::conditional_t<kBytes == 3, uint32_t, uint64_t>;
    if (count != 0) copyPixel();
    for (i = 1; i + 1 < count; ++i) {
      Wide pixel;
      std::memcpy(&pixel, end - (i + 1) * kBytes, sizeof pixel);
      std::memcpy(to + i * kBytes, &pixel, sizeof pixel);
    }
  } else {
    constexpr size_t kPixels = 16 / kBytes;
    for (; i + kPixels <= count; i += kPixels) {
      detail::CopyVectorReversed<kBytes>(end - (i + kPixels) * kBytes, to + i * kBytes);
    }
  }
  for (; i < count; ++i) copyPixel();
}

// Exchanges two runs of pixels that don't overlap, the first one of each with the last one of the other.
template <size_t kBytes>
void SwapReversed(uint8_t* one, uint8_t* other, size_t count) {
  constexpr size_t kBlock = 512;
  uint8_t copy[kBlock * kBytes];
  for (size_t i = 0; i < count; i += kBlock) {
    const size_t length = std::min(kBlock, count - i);
    uint8_t* const left = one + i * kBytes;
    uint8_t* const right = other + (count - i - length) * kBytes;
    std::memcpy(copy, left, length * kBytes);
    CopyReversed<kBytes>(right, left, length);
    CopyReversed<kBytes>(copy, right, length);
  }
}

// Reverses a run of pixels in place.
template <size_t kBytes>
void Reverse(uint8_t* line, size_t count) {
  SwapReversed<kBytes>(line, line + (count - count / 2) * kBytes, count / 2);
}

// A quarter turn. The target has the source's height as its width, and its width as its height.
//
//   counter-clockwise   target (x, y) takes source (width - 1 - y, x)
//   clockwise           target (x, y) takes source (y, height - 1 - x)
//
// One side is read or written across lines, so the work goes by tiles, of which both sides stay in the cache, and in
// them by squares of pixels that are turned in registers.
template <size_t kBytes, bool kClockwise>
void TurnQuarter(const ImageLines<const uint8_t>& source, const ImageLines<uint8_t>& target) {
  constexpr size_t kTile = 64;
  constexpr size_t kSide = detail::kSquare<kBytes>;
  const Size2D& size = source.size;
  // Where a column and a row of the source go.
  const auto targetOf = [&](size_t column, size_t row) {
    return target[kClockwise ? column : size.width - 1 - column] + (kClockwise ? size.height - 1 - row : row) * kBytes;
  };
  const auto turnPixels = [&](size_t firstColumn, size_t endColumn, size_t firstRow, size_t endRow) {
    for (size_t column = firstColumn; column < endColumn; ++column) {
      for (size_t row = firstRow; row < endRow; ++row) {
        detail::Pixel<kBytes>::Load(source[row] + column * kBytes).Store(targetOf(column, row));
      }
    }
  };
  const auto turnSquare = [&](size_t column, size_t row) {
    std::array<uint64_t, kSide> square;
    for (size_t i = 0; i < kSide; ++i) {
      // Clockwise, the last row comes first.
      std::memcpy(&square[kClockwise ? kSide - 1 - i : i], source[row + i] + column * kBytes, sizeof square[i]);
    }
    detail::Transpose<kBytes>(square);
    for (size_t i = 0; i < kSide; ++i) {
      std::memcpy(targetOf(column + i, kClockwise ? row + kSide - 1 : row), &square[i], sizeof square[i]);
    }
  };

  for (size_t firstRow = 0; firstRow < size.height; firstRow += kTile) {
    const size_t endRow = std::min(firstRow + kTile, size.height);
    for (size_t firstColumn = 0; firstColumn < size.width; firstColumn += kTile) {
      const size_t endColumn = std::min(firstColumn + kTile, size.width);
      if constexpr (kSide == 1) {
        turnPixels(firstColumn, endColumn, firstRow, endRow);
      } else {
        const size_t lastRow = endRow - endRow % kSide;  // of whole squares, and so for columns
        const size_t lastColumn = endColumn - endColumn % kSide;
        for (size_t row = firstRow; row < lastRow; row += kSide) {
          for (size_t column = firstColumn; column < lastColumn; column += kSide) turnSquare(column, row);
        }
        turnPixels(lastColumn, endColumn, firstRow, lastRow);
        turnPixels(firstColumn, endColumn, lastRow, endRow);
      }
    }
  }
}

}  // namespace img::processing
