// The kernels in plain code. They are templates over the size of a pixel in bytes and look at nothing else.
#include <algorithm>
#include <array>
#include <cstring>
#include <type_traits>

#include "processing/geometry/move_kernels.h"

namespace img::processing {
namespace {

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

// Copies a run of pixels, the last one first.
template <size_t kBytes>
void CopyReversed(const uint8_t* from, uint8_t* to, size_t count) {
  const uint8_t* const end = from + count * kBytes;
  size_t i = 0;
  const auto copyPixel = [&] { Pixel<kBytes>::Load(end - (i + 1) * kBytes).Store(to + i * kBytes); };
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
      CopyVectorReversed<kBytes>(end - (i + kPixels) * kBytes, to + i * kBytes);
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

// One side is read or written across lines, so the work goes by tiles, of which both sides stay in the cache, and in
// them by squares of pixels that are transposed in registers.
template <size_t kBytes>
void TransposePixels(const Transposition& pixels) {
  constexpr size_t kTile = 64;
  constexpr size_t kSide = kSquare<kBytes>;
  const auto from = [&](size_t column, size_t row) {
    return pixels.from + static_cast<ptrdiff_t>(row) * pixels.fromStep + column * kBytes;
  };
  const auto to = [&](size_t column, size_t row) {
    return pixels.to + static_cast<ptrdiff_t>(column) * pixels.toStep + row * kBytes;
  };
  const auto transposePixels = [&](size_t firstColumn, size_t endColumn, size_t firstRow, size_t endRow) {
    for (size_t column = firstColumn; column < endColumn; ++column) {
      for (size_t row = firstRow; row < endRow; ++row) Pixel<kBytes>::Load(from(column, row)).Store(to(column, row));
    }
  };
  const auto transposeSquare = [&](size_t column, size_t row) {
    std::array<uint64_t, kSide> square;
    for (size_t i = 0; i < kSide; ++i) std::memcpy(&square[i], from(column, row + i), sizeof square[i]);
    Transpose<kBytes>(square);
    for (size_t i = 0; i < kSide; ++i) std::memcpy(to(column + i, row), &square[i], sizeof square[i]);
  };

  for (size_t firstRow = 0; firstRow < pixels.height; firstRow += kTile) {
    const size_t endRow = std::min(firstRow + kTile, pixels.height);
    for (size_t firstColumn = 0; firstColumn < pixels.width; firstColumn += kTile) {
      const size_t endColumn = std::min(firstColumn + kTile, pixels.width);
      if constexpr (kSide == 1) {
        transposePixels(firstColumn, endColumn, firstRow, endRow);
      } else {
        const size_t lastRow = endRow - endRow % kSide;  // of whole squares, and so for columns
        const size_t lastColumn = endColumn - endColumn % kSide;
        for (size_t row = firstRow; row < lastRow; row += kSide) {
          for (size_t column = firstColumn; column < lastColumn; column += kSide) transposeSquare(column, row);
        }
        transposePixels(lastColumn, endColumn, firstRow, lastRow);
        transposePixels(firstColumn, endColumn, lastRow, endRow);
      }
    }
  }
}

void CopyLines(const LineCopy& lines) {
  if (lines.byteCount == 0) return;
  for (size_t i = 0; i < lines.lineCount; ++i) {
    const auto line = static_cast<ptrdiff_t>(i);
    std::memcpy(lines.to + line * lines.toStep, lines.from + line * lines.fromStep, lines.byteCount);
  }
}

template <size_t kBytes>
void CopyLinesReversed(const LineCopy& lines) {
  for (size_t i = 0; i < lines.lineCount; ++i) {
    const auto line = static_cast<ptrdiff_t>(i);
    CopyReversed<kBytes>(lines.from + line * lines.fromStep, lines.to + line * lines.toStep, lines.byteCount / kBytes);
  }
}

void SwapLines(const LineSwap& lines) {
  for (size_t i = 0; i < lines.lineCount; ++i) {
    const auto line = static_cast<ptrdiff_t>(i);
    uint8_t* const one = lines.one + line * lines.oneStep;
    std::swap_ranges(one, one + lines.byteCount, lines.other + line * lines.otherStep);
  }
}

template <size_t kBytes>
void SwapLinesReversed(const LineSwap& lines) {
  for (size_t i = 0; i < lines.lineCount; ++i) {
    const auto line = static_cast<ptrdiff_t>(i);
    SwapReversed<kBytes>(lines.one + line * lines.oneStep, lines.other + line * lines.otherStep,
                         lines.byteCount / kBytes);
  }
}

}  // namespace

extern const MoveKernels kPlainMoveKernels = {
    .copyLines = CopyLines,
    .copyLinesReversed = {nullptr, CopyLinesReversed<1>, CopyLinesReversed<2>, CopyLinesReversed<3>,
                          CopyLinesReversed<4>, nullptr, CopyLinesReversed<6>, nullptr, CopyLinesReversed<8>},
    .transpose = {nullptr, TransposePixels<1>, TransposePixels<2>, TransposePixels<3>, TransposePixels<4>, nullptr,
                  TransposePixels<6>, nullptr, TransposePixels<8>},
    .swapLines = SwapLines,
    .swapLinesReversed = {nullptr, SwapLinesReversed<1>, SwapLinesReversed<2>, SwapLinesReversed<3>,
                          SwapLinesReversed<4>, nullptr, SwapLinesReversed<6>, nullptr, SwapLinesReversed<8>}};

}  // namespace img::processing
