#include "processing/conversion/filter_vectors.h"

#include "processing/conversion/colour_vectors-inl.h"
#include "processing/conversion/walk_columns-inl.h"
#include "processing/vector_numbers.h"

namespace img::processing::KORVEL_VECTORS {
namespace {

constexpr hn::ScalableTag<int16_t> kLanesTag;
using Lanes = hn::Vec<hn::ScalableTag<int16_t>>;
constexpr size_t kPairs = KORVEL_VECTOR_BYTES / sizeof(uint16_t);
constexpr size_t kColumns = 2 * kPairs;
static_assert(kColumns <= kFewestFilteredColumns);

Lanes Load(const uint16_t* samples) { return hn::BitCast(kLanesTag, hn::LoadU(kWords, samples)); }

// Gives the first column of each vector of a line to split. The last one overlaps the one before, at an even column as
// well.
template <class Split>
void ForEachSplit(size_t width, Split&& split) {
  size_t x = 0;
  for (; x + kColumns <= width; x += kColumns) split(x);
  if (x < width) split((width & ~size_t{1}) - kColumns);
}

void SplitBytes(const uint8_t* line, size_t width, uint16_t* even, uint16_t* odd) {
  ForEachSplit(width, [=](size_t x) {
    const Words pairs = hn::BitCast(kWords, hn::LoadU(kBytes, line + x));
    hn::StoreU(hn::And(pairs, hn::Set(kWords, uint16_t{0xFF})), kWords, even + x / 2);
    hn::StoreU(hn::ShiftRight<8>(pairs), kWords, odd + x / 2);
  });
  if (width % 2 != 0) even[width / 2] = line[width - 1];
}

// The lower halves of the 32-bit lanes of two vectors, whose upper halves are 0.
template <class Vector32>
Words LowerHalves(Vector32 a, Vector32 b) {
  const Words blocks = LimitedWords(hn::BitCast(kIntegers, a), hn::BitCast(kIntegers, b));
#if KORVEL_VECTOR_BYTES == 32
  return Words{_mm256_permute4x64_epi64(blocks.raw, 0xD8)};
#else
  return blocks;
#endif
}

uint32_t SplitWords(const uint8_t* line, size_t width, uint16_t* even, uint16_t* odd) {
  Words seen = hn::Zero(kWords);
  ForEachSplit(width, [&](size_t x) {
    const Bytes front = hn::LoadU(kBytes, line + x * sizeof(uint16_t));
    const Bytes back = hn::LoadU(kBytes, line + x * sizeof(uint16_t) + KORVEL_VECTOR_BYTES);
    seen = hn::Or(seen, hn::BitCast(kWords, hn::Or(front, back)));
    const auto a = hn::BitCast(kWords32, front);
    const auto b = hn::BitCast(kWords32, back);
    const auto mask = hn::Set(kWords32, 0xFFFFu);
    hn::StoreU(LowerHalves(hn::And(a, mask), hn::And(b, mask)), kWords, even + x / 2);
    hn::StoreU(LowerHalves(hn::ShiftRight<16>(a), hn::ShiftRight<16>(b)), kWords, odd + x / 2);
  });
  uint16_t lanes[kPairs];
  hn::StoreU(seen, kWords, lanes);
  uint32_t bits = 0;
  for (const uint16_t lane : lanes) bits |= lane;
  if (width % 2 != 0) {
    std::memcpy(&even[width / 2], line + (width - 1) * sizeof(uint16_t), sizeof(uint16_t));
    bits |= even[width / 2];
  }
  return bits;
}

// What the sites of a vector lack: half of them have their line's own colour, the others green. Not yet limited to the
// depth.
struct MissingColours {
  Lanes greenAtOwn;
  Lanes otherAtOwn;
  Lanes ownAtGreen;
  Lanes otherAtGreen;
};

// Half of the value, which isn't negative, rounded up.
Lanes HalfUp(Lanes value) {
  return hn::BitCast(kLanesTag, hn::AverageRound(hn::BitCast(kWords, value), hn::Zero(kWords)));
}

// The five lines at pairs of columns: i counts those whose first column has the line's own colour (kOwnFirst) or whose
// first column is green.
//
// The filters' sums have weights of up to 28, for which 16 bits have no room at a depth of 12. They are divided in
// parts. With > for a division that rounds down, as the filter's does as far as results aren't negative:
//
//   (4 own + 2 near - far) > 8                    = (2 own + near - far / 2 rounded up) > 4
//   (12 own + 4 diagonals - 3 far) > 16           = (3 own + diagonals - far + far > 4) > 4
//   (10 green + 8 near - 2 rest + across) > 16    = (green + near + (green - rest + across > 2) > 4) > 2
//
// No part is above 7 or below -6 samples.
template <bool kStartsOwn>
class Sites {
 public:
  Sites(const FilterTask& task, size_t x) {
    const size_t parity = x % 2;
    for (size_t line = 0; line < 5; ++line) first_[line] = task.even[line] + (parity == 0 ? 0 : task.odd) + x / 2;
    second_ = parity == 0 ? task.odd : 1 - task.odd;
  }

  Lanes Own(size_t i) const { return OwnAt(2, i, 0); }
  Lanes Green(size_t i) const { return GreenAt(2, i, 0); }

  MissingColours Missing(size_t i) const {
    using hn::Add;
    using hn::ShiftRight;
    using hn::Sub;
    // Seen from a site of the own colour, the green one of its pair lies on this side, those of the next pair on the
    // other.
    constexpr ptrdiff_t kNext = kStartsOwn ? -1 : 1;
    const Lanes own = Own(i);
    const Lanes green = Green(i);
    const Lanes nextGreen = GreenAt(2, i, kNext);
    const Lanes nextOwn = OwnAt(2, i, -kNext);
    const Lanes onOwnColumn = Add(OwnAt(1, i, 0), OwnAt(3, i, 0));
    const Lanes onGreenColumn = Add(GreenAt(1, i, 0), GreenAt(3, i, 0));

    const Lanes diagonals = Add(onGreenColumn, Add(GreenAt(1, i, kNext), GreenAt(3, i, kNext)));
    const Lanes near = Add(onOwnColumn, Add(green, nextGreen));
    const Lanes far = Add(Add(OwnAt(0, i, 0), OwnAt(4, i, 0)), Add(nextOwn, OwnAt(2, i, kNext)));
    const Lanes twice = Add(own, own);

    const Lanes less = Sub(green, Add(onOwnColumn, Add(OwnAt(1, i, -kNext), OwnAt(3, i, -kNext))));
    const Lanes farOnLine = Add(nextGreen, GreenAt(2, i, -kNext));
    const Lanes farOnColumn = Add(GreenAt(0, i, 0), GreenAt(4, i, 0));
    const auto atGreen = [&](Lanes nearest, Lanes along, Lanes across) {
      return ShiftRight<1>(Add(Add(green, nearest), ShiftRight<2>(Add(Sub(less, along), ShiftRight<1>(across)))));
    };
    return {
        ShiftRight<2>(Sub(Add(twice, near), HalfUp(far))),
        ShiftRight<2>(Add(Sub(Add(Add(twice, own), diagonals), far), ShiftRight<2>(far))),
        atGreen(Add(own, nextOwn), farOnLine, farOnColumn),
        atGreen(onGreenColumn, farOnColumn, farOnLine),
    };
  }

 private:
  Lanes OwnAt(size_t line, size_t i, ptrdiff_t pair) const { return At<kStartsOwn>(line, i, pair); }
  Lanes GreenAt(size_t line, size_t i, ptrdiff_t pair) const { return At<!kStartsOwn>(line, i, pair); }

  template <bool kFirst>
  Lanes At(size_t line, size_t i, ptrdiff_t pair) const {
    return Load(first_[line] + (kFirst ? 0 : second_) + static_cast<ptrdiff_t>(i) + pair);
  }

  const uint16_t* first_[5];
  ptrdiff_t second_;
};

// Makes vectors of pixels of a layout, in which the line's own colour is the first channel (kOwnFirst) or the third.
template <class Layout, bool kOwnFirst>
class FilterKernel {
 public:
  static constexpr size_t kLanes = kColumns;
  static constexpr size_t kPixelBytes = Layout::kPixelBytes;
  // Pixels of bytes take so long that ordinary stores cost nothing beside.
  static constexpr bool kCanStream = !Layout::kReadsOutput && sizeof(typename Layout::Sample) > 1;

  explicit FilterKernel(const FilterTask& task)
      : task_(task), layout_(task.maximum), maximum_(hn::Set(kLanesTag, static_cast<int16_t>(task.maximum))) {}

  // Columns begin to end - 1, whole vectors of them.
  void Vectors(size_t begin, size_t end, uint8_t* to) const {
    if (begin % 2 == task_.ownColumn) {
      Make<true>(begin, end, to);
    } else {
      Make<false>(begin, end, to);
    }
  }

 private:
  template <bool kStartsOwn>
  HWY_NOINLINE void Make(size_t begin, size_t end, uint8_t* to) const {
    const FilterKernel kernel = *this;  // no store can change it
    const Sites<kStartsOwn> sites(task_, begin);
    const size_t pairs = (end - begin) / 2;
    for (size_t i = 0; i < pairs; i += kPairs) {
      kernel.template PutPixels<kStartsOwn>(sites.Own(i), sites.Green(i), sites.Missing(i), to + 2 * i * kPixelBytes);
    }
  }

  template <bool kStartsOwn>
  void PutPixels(Lanes own, Lanes green, const MissingColours& missing, uint8_t* to) const {
    if constexpr (sizeof(typename Layout::Sample) == 1) {
      Store(Join<kStartsOwn>(own, missing.ownAtGreen), Join<kStartsOwn>(missing.greenAtOwn, green),
            Join<kStartsOwn>(missing.otherAtOwn, missing.otherAtGreen), to);
    } else {
      const Columns owns = JoinWords<kStartsOwn>(own, Limit(missing.ownAtGreen));
      const Columns greens = JoinWords<kStartsOwn>(Limit(missing.greenAtOwn), green);
      const Columns others = JoinWords<kStartsOwn>(Limit(missing.otherAtOwn), Limit(missing.otherAtGreen));
      Store(owns.front, greens.front, others.front, to);
      Store(owns.back, greens.back, others.back, to + kPairs * kPixelBytes);
    }
  }

  template <class Vector>
  void Store(Vector own, Vector green, Vector other, uint8_t* to) const {
    layout_.Store(kOwnFirst ? own : other, green, kOwnFirst ? other : own, to);
  }

  Lanes Limit(Lanes value) const { return hn::Min(hn::Max(value, hn::Zero(kLanesTag)), maximum_); }

  // All columns of a vector, saturated to bytes.
  template <bool kStartsOwn>
  static Bytes Join(Lanes atOwn, Lanes atGreen) {
    alignas(16) static constexpr uint8_t kAlternate[16] = {0, 8, 1, 9, 2, 10, 3, 11, 4, 12, 5, 13, 6, 14, 7, 15};
    const Words first = hn::BitCast(kWords, kStartsOwn ? atOwn : atGreen);
    const Words second = hn::BitCast(kWords, kStartsOwn ? atGreen : atOwn);
    return hn::TableLookupBytes(LimitedBytes(first, second), hn::LoadDup128(kBytes, kAlternate));
  }

  struct Columns {
    Words front;
    Words back;
  };

  template <bool kStartsOwn>
  static Columns JoinWords(Lanes atOwn, Lanes atGreen) {
    const Words first = hn::BitCast(kWords, kStartsOwn ? atOwn : atGreen);
    const Words second = hn::BitCast(kWords, kStartsOwn ? atGreen : atOwn);
    const Words lower = hn::InterleaveLower(kWords, first, second);
    const Words upper = hn::InterleaveUpper(kWords, first, second);
    if constexpr (KORVEL_VECTOR_BYTES == 16) return {lower, upper};
    return {hn::ConcatLowerLower(kWords, upper, lower), hn::ConcatUpperUpper(kWords, upper, lower)};
  }

  const FilterTask& task_;
  Layout layout_;
  Lanes maximum_;
};

template <class Layout>
void Filter(const FilterTask& task) {
  if (task.isOwnFirst) {
    Walk(FilterKernel<Layout, true>(task), task.output, task.first, task.last, task.isStreamed);
  } else {
    Walk(FilterKernel<Layout, false>(task), task.output, task.first, task.last, task.isStreamed);
  }
}

}  // namespace

extern const FilterKernels kFilterKernels = {
    .splitBytes = SplitBytes,
    .splitWords = SplitWords,
    .filter = {Filter<Bytes3Layout>, Filter<Bytes4Layout>, Filter<Words3Layout>, Filter<Words4Layout>, nullptr,
               Filter<Word32KeptLayout>},
};

}  // namespace img::processing::KORVEL_VECTORS
