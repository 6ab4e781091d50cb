#include "processing/geometry/move_kernels.h"

#include "processing/block_vectors.h"
#include "processing/stream_vectors.h"

namespace img::processing::KORVEL_VECTORS {
namespace {

constexpr size_t kLanes = KORVEL_VECTOR_BYTES;
constexpr size_t Smaller(size_t a, size_t b) { return a < b ? a : b; }

template <size_t kPixel>
void CopyPixel(const uint8_t* from, uint8_t* to) {
  uint8_t pixel[kPixel];
  std::memcpy(pixel, from, kPixel);
  std::memcpy(to, pixel, kPixel);
}

// ------------------------------------------------------------------------------------------------------- reversals

// Where the bytes of a group come from, whose pixels are put in reverse. Groups of pixels that divide a vector have one
// block of 16 bytes, others three; each block of the result takes bytes of up to three.
template <size_t kPixel>
struct ReversingTables {
  static constexpr size_t kBlocks = 16 % kPixel == 0 ? 1 : 3;

  constexpr ReversingTables() {
    for (size_t to = 0; to < kBlocks * 16; ++to) {
      const size_t from = (kBlocks * 16 / kPixel - 1 - to / kPixel) * kPixel + to % kPixel;
      for (size_t block = 0; block < kBlocks; ++block) {
        at[to / 16][block][to % 16] = from / 16 == block ? static_cast<uint8_t>(from % 16) : kNoByte;
      }
    }
  }

  alignas(16) uint8_t at[kBlocks][kBlocks][16] = {};
};
template <size_t kPixel>
constexpr ReversingTables<kPixel> kReversingTables;

// Pixels that are loaded, put in reverse and stored together.
template <size_t kPixel, size_t kBlocks = ReversingTables<kPixel>::kBlocks>
class Group;

template <size_t kPixel>
class Group<kPixel, 1> {
 public:
  static constexpr size_t kSize = kLanes;

  explicit Group(const uint8_t* from) : bytes_(hn::LoadU(kBytes, from)) {}

  void StoreReversed(uint8_t* to) const { hn::StoreU(Reversed(), kBytes, to); }
  void StreamReversed(uint8_t* to) const { hn::Stream(Reversed(), kBytes, to); }

 private:
  Bytes Reversed() const {
    const Bytes table = hn::LoadDup128(kBytes, kReversingTables<kPixel>.at[0][0]);
    return hn::TableLookupBytes(hn::ReverseBlocks(kBytes, bytes_), table);
  }

  Bytes bytes_;
};

template <size_t kPixel>
class Group<kPixel, 3> {
 public:
  static constexpr size_t kSize = 3 * kLanes;

  // The blocks of a vector are those of like place in the halves of the group, the second half first.
  explicit Group(const uint8_t* from)
      : first_(LoadBlocks(from + kSecond, from)),
        middle_(LoadBlocks(from + kSecond + 16, from + 16)),
        last_(LoadBlocks(from + kSecond + 32, from + 32)) {}

  void StoreReversed(uint8_t* to) const {
    const ThreeVectors reversed = Reversed();
    for (size_t i = 0; i < 3; ++i) hn::StoreU(reversed.at[i], kBytes, to + i * kLanes);
  }
  void StreamReversed(uint8_t* to) const {
    const ThreeVectors reversed = Reversed();
    for (size_t i = 0; i < 3; ++i) hn::Stream(reversed.at[i], kBytes, to + i * kLanes);
  }

 private:
  static constexpr size_t kSecond = kSize - 48;

  template <size_t kTo, size_t kFrom>
  static Bytes Take(Bytes block) {
    return hn::TableLookupBytesOr0(block, hn::LoadDup128(kBytes, kReversingTables<kPixel>.at[kTo][kFrom]));
  }

  HWY_INLINE ThreeVectors Reversed() const {
    return InOrder(hn::Or(Take<0, 1>(middle_), Take<0, 2>(last_)),
                   hn::Or(hn::Or(Take<1, 0>(first_), Take<1, 1>(middle_)), Take<1, 2>(last_)),
                   hn::Or(Take<2, 0>(first_), Take<2, 1>(middle_)));
  }

  Bytes first_;
  Bytes middle_;
  Bytes last_;
};

template <size_t kPixel>
void CopyRunReversed(const uint8_t* from, uint8_t* to, size_t byteCount) {
  constexpr size_t kGroup = Group<kPixel>::kSize;
  if (byteCount < kGroup) {
    for (size_t i = 0; i < byteCount; i += kPixel) CopyPixel<kPixel>(from + i, to + byteCount - i - kPixel);
    return;
  }
  const uint8_t* const end = from + byteCount;
  size_t i = 0;
  for (; i + kGroup <= byteCount; i += kGroup) Group<kPixel>(end - i - kGroup).StoreReversed(to + i);
  // The last group overlaps the one before.
  if (i != byteCount) Group<kPixel>(from).StoreReversed(to + byteCount - kGroup);
}

// The bytes to take from the end of a run so that it ends aligned for streaming; no whole pixels if it can't. At most a
// group.
template <size_t kPixel>
size_t UnalignedEnd(const uint8_t* end) {
  size_t byteCount = reinterpret_cast<uintptr_t>(end) % kLanes;
  while (byteCount % kPixel != 0 && byteCount < kLanes * kPixel) byteCount += kLanes;
  return byteCount;
}

// Ordinary stores had better go forward; with these, reading does, which processors then foresee.
template <size_t kPixel>
void StreamRunReversed(const uint8_t* from, uint8_t* to, size_t byteCount) {
  using Pixels = Group<kPixel>;
  constexpr size_t kGroup = Pixels::kSize;
  const size_t tail = UnalignedEnd<kPixel>(to + byteCount);
  if (tail % kPixel != 0 || byteCount < tail + kGroup) return CopyRunReversed<kPixel>(from, to, byteCount);
  uint8_t group[kGroup];
  Pixels(from).StoreReversed(group);
  std::memcpy(to + byteCount - tail, group + kGroup - tail, tail);
  size_t i = tail;
  for (; i + kGroup <= byteCount; i += kGroup) Pixels(from + i).StreamReversed(to + byteCount - i - kGroup);
  Pixels(from + byteCount - kGroup).StoreReversed(group);
  std::memcpy(to, group, byteCount - i);
}

// copyRun(from, to) copies one line.
template <class CopyRun>
void ForEachLine(const LineCopy& lines, const CopyRun& copyRun) {
  for (size_t i = 0; i < lines.lineCount; ++i) {
    const auto line = static_cast<ptrdiff_t>(i);
    copyRun(lines.from + line * lines.fromStep, lines.to + line * lines.toStep);
  }
}

template <size_t kPixel>
void CopyLinesReversed(const LineCopy& lines) {
  const size_t byteCount = lines.byteCount;
  if (lines.isPastCaches) {
    ForEachLine(lines, [=](const uint8_t* from, uint8_t* to) { StreamRunReversed<kPixel>(from, to, byteCount); });
    hwy::FlushStream();
  } else {
    ForEachLine(lines, [=](const uint8_t* from, uint8_t* to) { CopyRunReversed<kPixel>(from, to, byteCount); });
  }
}

void CopyLines(const LineCopy& lines) {
  const size_t byteCount = lines.byteCount;
  if (byteCount == 0) return;
  if (lines.isPastCaches) {
    ForEachLine(lines, [=](const uint8_t* from, uint8_t* to) { StreamRun(from, to, byteCount); });
    hwy::FlushStream();
  } else {
    ForEachLine(lines, [=](const uint8_t* from, uint8_t* to) { std::memcpy(to, from, byteCount); });
  }
}

template <size_t kPixel>
void SwapRunsReversed(uint8_t* one, uint8_t* other, size_t byteCount) {
  using Pixels = Group<kPixel>;
  constexpr size_t kGroup = Pixels::kSize;
  if (byteCount < kGroup) {
    for (size_t i = 0; i < byteCount; i += kPixel) {
      uint8_t pixel[kPixel];
      std::memcpy(pixel, one + i, kPixel);
      CopyPixel<kPixel>(other + byteCount - i - kPixel, one + i);
      std::memcpy(other + byteCount - i - kPixel, pixel, kPixel);
    }
    return;
  }
  size_t i = 0;
  for (; byteCount - i >= 2 * kGroup; i += kGroup) {
    const Pixels a(one + i);
    const Pixels b(other + byteCount - i - kGroup);
    b.StoreReversed(one + i);
    a.StoreReversed(other + byteCount - i - kGroup);
  }
  // One or two groups are left, as two that may overlap: all is read before the first is written.
  const Pixels a(one + i);
  const Pixels aLast(one + byteCount - kGroup);
  const Pixels b(other + byteCount - i - kGroup);
  const Pixels bLast(other);
  b.StoreReversed(one + i);
  bLast.StoreReversed(one + byteCount - kGroup);
  a.StoreReversed(other + byteCount - i - kGroup);
  aLast.StoreReversed(other);
}

void SwapRuns(uint8_t* one, uint8_t* other, size_t byteCount) {
  size_t i = 0;
  for (; i + 2 * kLanes <= byteCount; i += 2 * kLanes) {
    const Bytes a = hn::LoadU(kBytes, one + i);
    const Bytes b = hn::LoadU(kBytes, one + i + kLanes);
    const Bytes c = hn::LoadU(kBytes, other + i);
    const Bytes d = hn::LoadU(kBytes, other + i + kLanes);
    hn::StoreU(c, kBytes, one + i);
    hn::StoreU(d, kBytes, one + i + kLanes);
    hn::StoreU(a, kBytes, other + i);
    hn::StoreU(b, kBytes, other + i + kLanes);
  }
  for (; i < byteCount; ++i) {
    const uint8_t byte = one[i];
    one[i] = other[i];
    other[i] = byte;
  }
}

template <void (*kSwapRuns)(uint8_t* one, uint8_t* other, size_t byteCount)>
void SwapLines(const LineSwap& lines) {
  for (size_t i = 0; i < lines.lineCount; ++i) {
    const auto line = static_cast<ptrdiff_t>(i);
    kSwapRuns(lines.one + line * lines.oneStep, lines.other + line * lines.otherStep, lines.byteCount);
  }
}

// --------------------------------------------------------------------------------------------------- transpositions

template <size_t kPixel>
struct LaneOf;
template <>
struct LaneOf<1> {
  using Type = uint8_t;
};
template <>
struct LaneOf<2> {
  using Type = uint16_t;
};
template <>
struct LaneOf<4> {
  using Type = uint32_t;
};
template <>
struct LaneOf<8> {
  using Type = uint64_t;
};

// A vector of every line that it fills, of 16 bytes each.
template <size_t kPixel>
constexpr size_t kSquareWidth = 16 / kPixel;
template <size_t kPixel>
constexpr size_t kSquareHeight = kLanes / kPixel;

// Transposes pixels that fill vectors: interleaving the first half of the lines with the second, as often as there are
// halves, leaves a column in each.
template <size_t kPixel>
HWY_INLINE void TransposeSquare(const uint8_t* from, ptrdiff_t fromStep, uint8_t* to, ptrdiff_t toStep) {
  const hn::ScalableTag<typename LaneOf<kPixel>::Type> d;
  constexpr size_t kSide = kSquareWidth<kPixel>;
  hn::Vec<decltype(d)> lines[kSide];
  hn::Vec<decltype(d)> interleaved[kSide];
  for (size_t i = 0; i < kSide; ++i) {
    lines[i] = hn::BitCast(d, LoadBlocks(from + static_cast<ptrdiff_t>(i) * fromStep,
                                         from + static_cast<ptrdiff_t>(i + kSide) * fromStep));
  }
#pragma GCC unroll 4
  for (size_t done = 1; done < kSide; done *= 2) {
#pragma GCC unroll 8
    for (size_t i = 0; i < kSide / 2; ++i) {
      interleaved[2 * i] = hn::InterleaveLower(d, lines[i], lines[i + kSide / 2]);
      interleaved[2 * i + 1] = hn::InterleaveUpper(d, lines[i], lines[i + kSide / 2]);
    }
#pragma GCC unroll 16
    for (size_t i = 0; i < kSide; ++i) lines[i] = interleaved[i];
  }
  for (size_t i = 0; i < kSide; ++i) {
    hn::StoreU(hn::BitCast(kBytes, lines[i]), kBytes, to + static_cast<ptrdiff_t>(i) * toStep);
  }
}

// Transposes at least a square; the last ones overlap those before.
template <size_t kPixel>
void TransposeTile(const uint8_t* from, ptrdiff_t fromStep, uint8_t* to, ptrdiff_t toStep, size_t width,
                   size_t height) {
  for (size_t line = 0; line < height; line += kSquareHeight<kPixel>) {
    const size_t y = Smaller(line, height - kSquareHeight<kPixel>);
    for (size_t column = 0; column < width; column += kSquareWidth<kPixel>) {
      const size_t x = Smaller(column, width - kSquareWidth<kPixel>);
      TransposeSquare<kPixel>(from + static_cast<ptrdiff_t>(y) * fromStep + x * kPixel, fromStep,
                              to + static_cast<ptrdiff_t>(x) * toStep + y * kPixel, toStep);
    }
  }
}

// The work goes by tiles, whose lines stay in the cache on both sides. Large targets are written by runs of this
// length, which are put together in a scratch: their memory wants whole lines of the cache, and lines of sources whose
// width is a power of two push each other out of the cache.
constexpr size_t kRun = 256;

// Pixels lie in cells, whose size divides a vector: 3 bytes in 4, and 6 in 8.
template <size_t kPixel>
struct Tile {
  static constexpr size_t kCell = kPixel == 3 ? 4 : kPixel == 6 ? 8 : kPixel;
  static constexpr size_t kWidth = kPixel == 1 ? 64 : 32;
  static constexpr size_t kHeight = kRun / kCell;
};

// Spreads pixels to cells or gathers them again: 12 bytes and 16.
template <size_t kPixel>
struct CellTables {
  constexpr CellTables() {
    constexpr size_t kCell = Tile<kPixel>::kCell;
    for (size_t i = 0; i < 16; ++i) {
      spread[i] = i % kCell < kPixel ? static_cast<uint8_t>(i / kCell * kPixel + i % kCell) : kNoByte;
      gathered[i] = i < 12 ? static_cast<uint8_t>(i / kPixel * kCell + i % kPixel) : kNoByte;
    }
  }

  alignas(16) uint8_t spread[16] = {};
  alignas(16) uint8_t gathered[16] = {};
};
template <size_t kPixel>
constexpr CellTables<kPixel> kCellTables;

template <size_t kPixel>
void SpreadToCells(const uint8_t* from, uint8_t* cells, size_t pixelCount) {
  constexpr size_t kCell = Tile<kPixel>::kCell;
  const auto table = hn::Load(kBlockTag, kCellTables<kPixel>.spread);
  size_t i = 0;
  for (; i * kPixel + 16 <= pixelCount * kPixel; i += 12 / kPixel) {
    hn::StoreU(hn::TableLookupBytesOr0(hn::LoadU(kBlockTag, from + i * kPixel), table), kBlockTag, cells + i * kCell);
  }
  for (; i < pixelCount; ++i) CopyPixel<kPixel>(from + i * kPixel, cells + i * kCell);
}

// There is room for 4 bytes more.
template <size_t kPixel>
void GatherFromCells(const uint8_t* cells, uint8_t* to, size_t pixelCount) {
  constexpr size_t kCell = Tile<kPixel>::kCell;
  const auto table = hn::Load(kBlockTag, kCellTables<kPixel>.gathered);
  for (size_t i = 0; i < pixelCount; i += 12 / kPixel) {
    hn::StoreU(hn::TableLookupBytesOr0(hn::LoadU(kBlockTag, cells + i * kCell), table), kBlockTag, to + i * kPixel);
  }
}

// Memory that transpositions of large or odd-sized pixels put a tile together in.
template <size_t kPixel>
class Transposer {
 public:
  explicit Transposer(const Transposition& pixels) : pixels_(pixels) {}

  void TransposeAll() {
    constexpr size_t kWidth = Tile<kPixel>::kWidth;
    constexpr size_t kHeight = Tile<kPixel>::kHeight;
    if (pixels_.width < kSquareWidth<kCell> || pixels_.height < kSquareHeight<kCell>) return TransposeByPixels();
    if (pixels_.isPastCaches) {
      for (size_t y = 0; y < pixels_.height; y += kHeight) {
        for (size_t x = 0; x < pixels_.width; x += kWidth) TransposeAt(x, y);
      }
      hwy::FlushStream();
    } else {
      for (size_t x = 0; x < pixels_.width; x += kWidth) {
        for (size_t y = 0; y < pixels_.height; y += kHeight) TransposeAt(x, y);
      }
    }
  }

 private:
  static constexpr size_t kCell = Tile<kPixel>::kCell;
  static constexpr bool kHasCells = kCell != kPixel;

  const uint8_t* From(size_t x, size_t y) const {
    return pixels_.from + static_cast<ptrdiff_t>(y) * pixels_.fromStep + x * kPixel;
  }
  uint8_t* To(size_t x, size_t y) const { return pixels_.to + static_cast<ptrdiff_t>(x) * pixels_.toStep + y * kPixel; }

  void TransposeByPixels() {
    for (size_t y = 0; y < pixels_.height; ++y) {
      for (size_t x = 0; x < pixels_.width; ++x) CopyPixel<kPixel>(From(x, y), To(x, y));
    }
  }

  // A tile, which starts earlier if there is not a square left.
  void TransposeAt(size_t column, size_t line) {
    const size_t x = Smaller(column, pixels_.width - kSquareWidth<kCell>);
    const size_t y = Smaller(line, pixels_.height - kSquareHeight<kCell>);
    const size_t width = Smaller(Tile<kPixel>::kWidth, pixels_.width - x);
    const size_t height = Smaller(Tile<kPixel>::kHeight, pixels_.height - y);
    if constexpr (kHasCells) {
      Prefetch(pixels_.isPastCaches ? x + Tile<kPixel>::kWidth : x,
               pixels_.isPastCaches ? y : y + Tile<kPixel>::kHeight);
      for (size_t i = 0; i < height; ++i) SpreadToCells<kPixel>(From(x, y + i), cells_ + i * kCellStep, width);
      TransposeTile<kCell>(cells_, kCellStep, runs_, kRun, width, height);
      for (size_t i = 0; i < width; ++i) {
        uint8_t run[kRun + 4];
        GatherFromCells<kPixel>(runs_ + i * kRun, run, height);
        StoreRun(run, To(x + i, y), height * kPixel);
      }
    } else if (pixels_.isPastCaches) {
      Prefetch(x + Tile<kPixel>::kWidth, y);
      TransposeTile<kPixel>(From(x, y), pixels_.fromStep, runs_, kRun, width, height);
      for (size_t i = 0; i < width; ++i) StreamRun(runs_ + i * kRun, To(x + i, y), height * kPixel);
    } else {
      Prefetch(x, y + Tile<kPixel>::kHeight);
      TransposeTile<kPixel>(From(x, y), pixels_.fromStep, To(x, y), pixels_.toStep, width, height);
    }
  }

  // A whole tile of the source. Every line of it lies on another page, so that processors don't foresee it.
  void Prefetch(size_t x, size_t y) const {
    if (x + Tile<kPixel>::kWidth > pixels_.width || y + Tile<kPixel>::kHeight > pixels_.height) return;
    for (size_t i = 0; i < Tile<kPixel>::kHeight; ++i) {
      const uint8_t* const line = From(x, y + i);
      for (size_t part = 0; part < Tile<kPixel>::kWidth * kPixel; part += kCacheLine) hwy::Prefetch(line + part);
    }
  }

  void StoreRun(const uint8_t* run, uint8_t* to, size_t byteCount) const {
    if (pixels_.isPastCaches) {
      StreamRun(run, to, byteCount);
    } else {
      std::memcpy(to, run, byteCount);
    }
  }

  static constexpr size_t kCellStep = Tile<kPixel>::kWidth * kCell;

  const Transposition& pixels_;
  alignas(64) uint8_t cells_[kHasCells ? Tile<kPixel>::kHeight * kCellStep : 1];
  alignas(64) uint8_t runs_[Tile<kPixel>::kWidth * kRun];
};

template <size_t kPixel>
void Transpose(const Transposition& pixels) {
  Transposer<kPixel>(pixels).TransposeAll();
}

}  // namespace

extern const MoveKernels kMoveKernels = {
    .copyLines = CopyLines,
    .copyLinesReversed = {nullptr, CopyLinesReversed<1>, CopyLinesReversed<2>, CopyLinesReversed<3>,
                          CopyLinesReversed<4>, nullptr, CopyLinesReversed<6>, nullptr, CopyLinesReversed<8>},
    .transpose = {nullptr, Transpose<1>, Transpose<2>, Transpose<3>, Transpose<4>, nullptr, Transpose<6>, nullptr,
                  Transpose<8>},
    .swapLines = SwapLines<SwapRuns>,
    .swapLinesReversed = {nullptr, SwapLines<SwapRunsReversed<1>>, SwapLines<SwapRunsReversed<2>>,
                          SwapLines<SwapRunsReversed<3>>, SwapLines<SwapRunsReversed<4>>, nullptr,
                          SwapLines<SwapRunsReversed<6>>, nullptr, SwapLines<SwapRunsReversed<8>>}};

}  // namespace img::processing::KORVEL_VECTORS
