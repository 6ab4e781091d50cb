#include "processing/correction/hotpixel_vectors.h"

#include "processing/vector_numbers.h"

namespace img::processing::KORVEL_VECTORS {
namespace {

// The bounds of bytes.
class ByteBounds {
 public:
  explicit ByteBounds(const HotpixelBounds& bounds) : lower_(hn::LoadDup128(kBytes, bounds.lower)) {}

  HWY_INLINE Bytes Of(Bytes values) const { return hn::TableLookupBytes(lower_, hn::ShiftRight<4>(values)); }

 private:
  Bytes lower_;
};

// The bounds of samples of 16 bits, whose bytes come from a table each. An index whose highest bit is set gives a zero
// where the other table's byte goes.
class WordBounds {
 public:
  explicit WordBounds(const HotpixelBounds& bounds)
      : shift_(static_cast<int>(bounds.shift)),
        lower_(hn::BitCast(kWords, hn::LoadDup128(kBytes, bounds.lower))),
        upper_(hn::BitCast(kWords, hn::LoadDup128(kBytes, bounds.upper))) {}

  HWY_INLINE Words Of(Words values) const {
    const Words part = hn::Min(hn::ShiftRightSame(values, shift_), hn::Set(kWords, HotpixelBounds::kParts - 1));
    const Words lower = hn::TableLookupBytesOr0(lower_, hn::Or(part, hn::Set(kWords, 0x8000)));
    const Words upper = hn::TableLookupBytesOr0(upper_, hn::Or(hn::ShiftLeft<8>(part), hn::Set(kWords, 0x0080)));
    return hn::Or(lower, upper);
  }

 private:
  int shift_;
  Words lower_;
  Words upper_;
};

HWY_INLINE uint32_t HighestBits(Bytes bytes) {
#if KORVEL_VECTOR_BYTES == 32
  return static_cast<uint32_t>(_mm256_movemask_epi8(bytes.raw));
#else
  return static_cast<uint32_t>(_mm_movemask_epi8(bytes.raw));
#endif
}

// A pixel c deviates from neighbours a and b by 2c - a - b, half of which, rounded down, is c less the mean of a and b,
// rounded up. The least deviation is that from the pair of the highest mean.
template <class Tag, class Bounds, bool kIsBayer>
size_t Find(const HotpixelLines& lines, size_t first, size_t end, bool isFirstNear, const HotpixelBounds& bounds,
            uint32_t& candidates) {
  constexpr Tag kTag;
  using Sample = hn::TFromD<Tag>;
  using Samples = hn::Vec<Tag>;
  constexpr size_t kLanes = KORVEL_VECTOR_BYTES / sizeof(Sample);
  const auto load = [kTag](const uint8_t* line, size_t x)
                        HWY_ATTR { return hn::BitCast(kTag, hn::LoadU(kBytes, line + x * sizeof(Sample))); };
  const auto mean = [load](const uint8_t* one, size_t x, const uint8_t* other, size_t otherX)
                        HWY_ATTR { return hn::AverageRound(load(one, x), load(other, otherX)); };
  const auto diagonalMean = [mean, &lines](size_t x, bool isNear) HWY_ATTR {
    const uint8_t* const upper = isNear ? lines.nearUpper : lines.farUpper;
    const uint8_t* const lower = isNear ? lines.nearLower : lines.farLower;
    const size_t distance = isNear ? 1 : 2;
    return hn::Max(mean(upper, x - distance, lower, x + distance), mean(lower, x - distance, upper, x + distance));
  };
  constexpr size_t kReach = kIsBayer ? 2 : 1;
  constexpr Sample kAll = static_cast<Sample>(~Sample{0});
  const Samples nearLanes =
      hn::OddEven(hn::Set(kTag, isFirstNear ? Sample{0} : kAll), hn::Set(kTag, isFirstNear ? kAll : Sample{0}));
  const Bounds boundOf(bounds);
  candidates = 0;
  size_t x = first;
  while (candidates == 0 && x + kLanes <= end) {
    Samples highest =
        hn::Max(mean(lines.farUpper, x, lines.farLower, x), mean(lines.here, x - kReach, lines.here, x + kReach));
    if constexpr (kIsBayer) {
      const Samples nearMean = hn::And(nearLanes, diagonalMean(x, true));
      const Samples farMean = hn::AndNot(nearLanes, diagonalMean(x, false));
      highest = hn::Max(highest, hn::Or(nearMean, farMean));
    } else {
      highest = hn::Max(highest, diagonalMean(x, true));
    }
    const Samples values = load(lines.here, x);
    const Samples half = hn::SaturatedSub(values, highest);
    const auto isCandidate = hn::Eq(hn::Max(half, boundOf.Of(values)), half);
    candidates = HighestBits(hn::BitCast(kBytes, hn::VecFromMask(kTag, isCandidate)));
    x += kLanes;
  }
  if constexpr (sizeof(Sample) == 2) candidates &= 0x55555555;
  return x;
}

}  // namespace

extern const HotpixelKernels kHotpixelKernels = {.vectorBytes = KORVEL_VECTOR_BYTES,
                                                 .inMonoBytes = Find<decltype(kBytes), ByteBounds, false>,
                                                 .inMonoWords = Find<decltype(kWords), WordBounds, false>,
                                                 .inBayerBytes = Find<decltype(kBytes), ByteBounds, true>,
                                                 .inBayerWords = Find<decltype(kWords), WordBounds, true>};

}  // namespace img::processing::KORVEL_VECTORS
