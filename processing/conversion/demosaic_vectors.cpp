#include "processing/conversion/demosaic_vectors.h"

#include <hwy/cache_control.h>
#include <immintrin.h>

#include <cstring>

#include "processing/conversion/colour_vectors-inl.h"
#include "processing/conversion/walk_columns-inl.h"
#include "processing/vector_numbers.h"

namespace img::processing::KORVEL_VECTORS {
namespace {

constexpr hn::ScalableTag<int16_t> kSignedWordsTag;
using SignedWords = hn::Vec<hn::ScalableTag<int16_t>>;

Words LoadWords(const uint8_t* from) { return hn::BitCast(kWords, hn::LoadU(kBytes, from)); }

template <class Sample>
uint32_t LoadOne(const uint8_t* line, size_t x) {
  Sample sample;
  std::memcpy(&sample, line + x * sizeof(Sample), sizeof(Sample));
  return sample;
}

// The colours of a vector of columns.
template <class Vector>
struct Colours {
  Vector own;
  Vector green;
  Vector other;
};

// Bytes are summed in 16-bit lanes: those of even columns and those of odd ones, counted from the vector's first.
struct SplitColours {
  Colours<Words> even;
  Colours<Words> odd;
};

Words EvenBytes(Words bytes) { return hn::And(bytes, hn::Set(kWords, uint16_t{0xFF})); }
Words OddBytes(Words bytes) { return hn::ShiftRight<8>(bytes); }
Bytes Merge(Words even, Words odd) { return hn::BitCast(kBytes, hn::Or(even, hn::ShiftLeft<8>(odd))); }

// kStartsOwn: the vector's first column has the line's own colour.
template <bool kStartsOwn>
SplitColours BilinearBytes(const uint8_t* above, const uint8_t* here, const uint8_t* below) {
  const Words aboveLeft = LoadWords(above - 1);
  const Words aboveRight = LoadWords(above + 1);
  const Words hereLeft = LoadWords(here - 1);
  const Words hereRight = LoadWords(here + 1);
  const Words belowLeft = LoadWords(below - 1);
  const Words belowRight = LoadWords(below + 1);
  const Words west = EvenBytes(hereLeft);  // columns -1, 1, ... of the vector
  const Words even = OddBytes(hereLeft);   // columns 0, 2, ...
  const Words odd = EvenBytes(hereRight);  // columns 1, 3, ...
  const Words east = OddBytes(hereRight);  // columns 2, 4, ...
  const Words verticalEven = hn::Add(OddBytes(aboveLeft), OddBytes(belowLeft));
  const Words verticalOdd = hn::Add(EvenBytes(aboveRight), EvenBytes(belowRight));
  if constexpr (kStartsOwn) {
    const Words verticalWest = hn::Add(EvenBytes(aboveLeft), EvenBytes(belowLeft));
    return {{even, hn::ShiftRight<2>(hn::Add(verticalEven, hn::Add(west, odd))),
             hn::ShiftRight<2>(hn::Add(verticalWest, verticalOdd))},
            {hn::ShiftRight<1>(hn::Add(even, east)), odd, hn::ShiftRight<1>(verticalOdd)}};
  } else {
    const Words verticalEast = hn::Add(OddBytes(aboveRight), OddBytes(belowRight));
    return {{hn::ShiftRight<1>(hn::Add(west, odd)), even, hn::ShiftRight<1>(verticalEven)},
            {odd, hn::ShiftRight<2>(hn::Add(verticalOdd, hn::Add(even, east))),
             hn::ShiftRight<2>(hn::Add(verticalEven, verticalEast))}};
  }
}

// The truncated mean of two pairs of words, of which the rounded means and the differing bits are known.
Words MeanOfPairs(Words meanA, Words differenceA, Words meanB, Words differenceB) {
  const Words inexact = hn::Or(hn::Xor(meanA, meanB), hn::Or(differenceA, differenceB));
  return hn::Sub(hn::AverageRound(meanA, meanB), hn::And(inexact, hn::Set(kWords, uint16_t{1})));
}

// The same of 16-bit samples. All 16 bits count, so that sums don't fit their lanes; kLowBitsOnly: the upper bits of
// the results don't matter, so that sums may wrap.
template <bool kStartsOwn, bool kLowBitsOnly>
Colours<Words> BilinearWords(const uint8_t* above, const uint8_t* here, const uint8_t* below) {
  const Words centre = LoadWords(here);
  const Words west = LoadWords(here - 2);
  const Words east = LoadWords(here + 2);
  const Words north = LoadWords(above);
  const Words south = LoadWords(below);
  const Words northWest = LoadWords(above - 2);
  const Words southWest = LoadWords(below - 2);
  const Words northEast = LoadWords(above + 2);
  const Words southEast = LoadWords(below + 2);
  Words cross, diagonal, horizontal, vertical;
  if constexpr (kLowBitsOnly) {
    const Words horizontalSum = hn::Add(west, east);
    const Words verticalSum = hn::Add(north, south);
    cross = hn::ShiftRight<2>(hn::Add(horizontalSum, verticalSum));
    diagonal = hn::ShiftRight<2>(hn::Add(hn::Add(northWest, southWest), hn::Add(northEast, southEast)));
    horizontal = hn::ShiftRight<1>(horizontalSum);
    vertical = hn::ShiftRight<1>(verticalSum);
  } else {
    const Words one = hn::Set(kWords, uint16_t{1});
    const Words horizontalMean = hn::AverageRound(west, east);
    const Words horizontalDifference = hn::Xor(west, east);
    const Words verticalMean = hn::AverageRound(north, south);
    const Words verticalDifference = hn::Xor(north, south);
    cross = MeanOfPairs(horizontalMean, horizontalDifference, verticalMean, verticalDifference);
    diagonal = MeanOfPairs(hn::AverageRound(northWest, southWest), hn::Xor(northWest, southWest),
                           hn::AverageRound(northEast, southEast), hn::Xor(northEast, southEast));
    horizontal = hn::Sub(horizontalMean, hn::And(horizontalDifference, one));
    vertical = hn::Sub(verticalMean, hn::And(verticalDifference, one));
  }
  if constexpr (kStartsOwn) {
    return {hn::OddEven(horizontal, centre), hn::OddEven(centre, cross), hn::OddEven(vertical, diagonal)};
  } else {
    return {hn::OddEven(centre, horizontal), hn::OddEven(cross, centre), hn::OddEven(diagonal, vertical)};
  }
}

Colours<uint32_t> BilinearOne(uint32_t centre, uint32_t west, uint32_t east, uint32_t vertical, uint32_t diagonals,
                              bool isOwn) {
  if (isOwn) return {centre, (vertical + west + east) >> 2, diagonals >> 2};
  return {(west + east) >> 1, centre, vertical >> 1};
}

template <class Sample>
Colours<uint32_t> BilinearOne(const BilinearTask& task, size_t x) {
  const auto vertical = [&](size_t at) { return LoadOne<Sample>(task.above, at) + LoadOne<Sample>(task.below, at); };
  return BilinearOne(LoadOne<Sample>(task.here, x), LoadOne<Sample>(task.here, x - 1),
                     LoadOne<Sample>(task.here, x + 1), vertical(x), vertical(x - 1) + vertical(x + 1),
                     x % 2 == task.ownColumn);
}

template <class Layout>
class Bilinear {
 public:
  static constexpr size_t kLanes = KORVEL_VECTOR_BYTES / sizeof(typename Layout::Sample);
  static constexpr size_t kPixelBytes = Layout::kPixelBytes;
  static constexpr bool kCanStream = !Layout::kReadsOutput;

  explicit Bilinear(const BilinearTask& task) : task_(task), layout_(task.alpha) {}

  void Vectors(size_t begin, size_t end, uint8_t* to) const {
    if (begin % 2 == task_.ownColumn) {
      Run<true>(begin, end, to);
    } else {
      Run<false>(begin, end, to);
    }
  }

  void One(size_t x, uint8_t* to) const {
    const Colours<uint32_t> colours = BilinearOne<Sample>(task_, x);
    if (task_.isOwnFirst) {
      layout_.StoreOne(colours.own, colours.green, colours.other, to);
    } else {
      layout_.StoreOne(colours.other, colours.green, colours.own, to);
    }
  }

 private:
  using Sample = typename Layout::Sample;

  template <bool kStartsOwn>
  static Colours<typename Layout::Vector> Compute(const uint8_t* above, const uint8_t* here, const uint8_t* below) {
    if constexpr (sizeof(Sample) == 1) {
      const SplitColours split = BilinearBytes<kStartsOwn>(above, here, below);
      return {Merge(split.even.own, split.odd.own), Merge(split.even.green, split.odd.green),
              Merge(split.even.other, split.odd.other)};
    } else {
      constexpr bool kLowBitsOnly = kPixelBytes == 4;
      return BilinearWords<kStartsOwn, kLowBitsOnly>(above, here, below);
    }
  }

  template <bool kStartsOwn>
  HWY_NOINLINE void Run(size_t begin, size_t end, uint8_t* to) const {
    const BilinearTask task = task_;
    const Layout layout = layout_;
    const auto walk = [&](auto store) {
      for (size_t x = begin; x < end; x += kLanes) {
        const size_t at = x * sizeof(Sample);
        store(Compute<kStartsOwn>(task.above + at, task.here + at, task.below + at));
        to += kLanes * kPixelBytes;
      }
    };
    using Vector = typename Layout::Vector;
    if (task.isOwnFirst) {
      walk([&](const Colours<Vector>& c) { layout.Store(c.own, c.green, c.other, to); });
    } else {
      walk([&](const Colours<Vector>& c) { layout.Store(c.other, c.green, c.own, to); });
    }
  }

  const BilinearTask& task_;
  Layout layout_;
};

template <class Layout>
void ConvertBilinear(const BilinearTask& task) {
  Walk(Bilinear<Layout>(task), task.output, task.first, task.last, task.isStreamed);
}

class Luminance {
 public:
  static constexpr size_t kLanes = KORVEL_VECTOR_BYTES;
  static constexpr size_t kPixelBytes = 1;
  static constexpr bool kCanStream = false;  // takes so long that ordinary stores cost nothing

  explicit Luminance(const BilinearTask& task) : task_(task) {}

  void Vectors(size_t begin, size_t end, uint8_t* to) const {
    if (begin % 2 == task_.ownColumn) {
      Run<true>(begin, end, to);
    } else {
      Run<false>(begin, end, to);
    }
  }

  void One(size_t x, uint8_t* to) const {
    const Colours<uint32_t> colours = BilinearOne<uint8_t>(task_, x);
    const float red = kRedWeight * static_cast<float>(task_.isOwnFirst ? colours.own : colours.other);
    const float green = kGreenWeight * static_cast<float>(colours.green);
    const float blue = kBlueWeight * static_cast<float>(task_.isOwnFirst ? colours.other : colours.own);
    *to = static_cast<uint8_t>((red + green) + blue);
  }

 private:
  static Integers Weigh(Words red, Words green, Words blue) {
    const auto weighed = [](Words channel, float weight) {
      return hn::Mul(hn::ConvertTo(kFloats, hn::BitCast(kIntegers, channel)), hn::Set(kFloats, weight));
    };
    return Truncated(
        hn::Add(hn::Add(weighed(red, kRedWeight), weighed(green, kGreenWeight)), weighed(blue, kBlueWeight)));
  }

  static Words Weigh(Colours<Words> colours, bool isOwnRed) {
    const Words zero = hn::Zero(kWords);
    const Words red = isOwnRed ? colours.own : colours.other;
    const Words blue = isOwnRed ? colours.other : colours.own;
    const auto low = [zero](Words words) { return hn::InterleaveLower(kWords, words, zero); };
    const auto high = [zero](Words words) { return hn::InterleaveUpper(kWords, words, zero); };
    return hn::BitCast(kWords, hn::ReorderDemote2To(kSignedWordsTag, Weigh(low(red), low(colours.green), low(blue)),
                                                    Weigh(high(red), high(colours.green), high(blue))));
  }

  template <bool kStartsOwn>
  HWY_NOINLINE void Run(size_t begin, size_t end, uint8_t* to) const {
    const BilinearTask task = task_;
    const auto walk = [&](auto isOwnRed) {
      for (size_t x = begin; x < end; x += kLanes) {
        const SplitColours split = BilinearBytes<kStartsOwn>(task.above + x, task.here + x, task.below + x);
        Put(Merge(Weigh(split.even, isOwnRed()), Weigh(split.odd, isOwnRed())), to);
        to += kLanes;
      }
    };
    if (task.isOwnFirst) {
      walk([] { return true; });
    } else {
      walk([] { return false; });
    }
  }

  const BilinearTask& task_;
};

void ConvertLuminance(const BilinearTask& task) {
  Walk(Luminance(task), task.output, task.first, task.last, task.isStreamed);
}

// Sums of two bytes each, multiplied by a pair of factors: the lower byte of factors goes to the even bytes.
Words MultiplyPairs(Bytes bytes, uint16_t factors) {
  const Words pairs = hn::Set(kWords, factors);
#if KORVEL_VECTOR_BYTES == 32
  return Words{_mm256_maddubs_epi16(bytes.raw, pairs.raw)};
#else
  return Words{_mm_maddubs_epi16(bytes.raw, pairs.raw)};
#endif
}

// Both planes of colours lie two columns apart. A column on a plane takes three parts of its own sample and one of the
// next; a column beside it three of the next and one of the one before.
template <class Layout>
class Classic {
 public:
  static constexpr size_t kLanes = KORVEL_VECTOR_BYTES;
  static constexpr size_t kPixelBytes = Layout::kPixelBytes;
  static constexpr bool kCanStream = true;

  explicit Classic(const ClassicTask& task) : task_(task), layout_(task.alpha) {}

  HWY_NOINLINE void Vectors(size_t begin, size_t end, uint8_t* to) const {
    const size_t start = begin % 2;
    const ClassicTask::Plane even = task_.planes[start];
    const ClassicTask::Plane odd = task_.planes[1 - start];
    const uint8_t* const greenEven = task_.green[start];
    const uint8_t* const greenOdd = task_.green[1 - start];
    const Layout layout = layout_;
    const auto walk = [&](auto store) {
      for (size_t x = begin; x < end; x += kLanes) {
        const Bytes green = Merge(
            hn::ShiftRight<1>(hn::Add(EvenBytes(LoadWords(greenEven + x)), OddBytes(LoadWords(greenOdd + x)))),
            hn::ShiftRight<1>(hn::Add(OddBytes(LoadWords(greenEven + x + 1)), OddBytes(LoadWords(greenOdd + x)))));
        store(EvenPlane(even, x), green, OddPlane(odd, x));
        to += kLanes * kPixelBytes;
      }
    };
    if (task_.isEvenFirst == (start == 0)) {
      walk([&](Bytes a, Bytes green, Bytes b) { layout.Store(a, green, b, to); });
    } else {
      walk([&](Bytes a, Bytes green, Bytes b) { layout.Store(b, green, a, to); });
    }
  }

  void One(size_t x, uint8_t* to) const {
    const auto sum = [](const ClassicTask::Plane& plane, size_t at) { return 3u * plane.near[at] + plane.far[at]; };
    const size_t start = x % 2;
    const ClassicTask::Plane& on = task_.planes[start];
    const ClassicTask::Plane& beside = task_.planes[1 - start];
    const uint32_t onValue = (3 * sum(on, x) + sum(on, x + 2)) >> 4;
    const uint32_t besideValue = (3 * sum(beside, x + 1) + sum(beside, x - 1)) >> 4;
    const uint32_t green = (uint32_t{task_.green[start][x]} + task_.green[1 - start][x + 1]) >> 1;
    if (task_.isEvenFirst == (start == 0)) {
      layout_.StoreOne(onValue, green, besideValue, to);
    } else {
      layout_.StoreOne(besideValue, green, onValue, to);
    }
  }

 private:
  // Three parts of the near line and one of the far line, in even columns or in odd ones.
  static Words EvenColumns(const ClassicTask::Plane& plane, size_t x) {
    return hn::Add(MultiplyPairs(hn::LoadU(kBytes, plane.near + x), 0x0003), EvenBytes(LoadWords(plane.far + x)));
  }
  static Words OddColumns(const ClassicTask::Plane& plane, size_t x) {
    return hn::Add(MultiplyPairs(hn::LoadU(kBytes, plane.near + x), 0x0300), OddBytes(LoadWords(plane.far + x)));
  }

  static Words Weigh(Words near, Words far) {
    return hn::ShiftRight<4>(hn::Add(hn::Mul(near, hn::Set(kWords, uint16_t{3})), far));
  }

  // The plane with samples in the vector's even columns.
  static Bytes EvenPlane(const ClassicTask::Plane& plane, size_t x) {
    const Words here = EvenColumns(plane, x);
    const Words next = OddColumns(plane, x + 1);
    return Merge(Weigh(here, next), Weigh(next, here));
  }

  static Bytes OddPlane(const ClassicTask::Plane& plane, size_t x) {
    const Words before = EvenColumns(plane, x - 1);
    const Words here = OddColumns(plane, x);
    const Words next = OddColumns(plane, x + 2);
    return Merge(Weigh(here, before), Weigh(here, next));
  }

  const ClassicTask& task_;
  Layout layout_;
};

template <class Layout>
void ConvertClassic(const ClassicTask& task) {
  Walk(Classic<Layout>(task), task.output, task.first, task.last, task.isStreamed);
}

// The weights of a 2 by 2 block's samples.
constexpr int16_t kHeavy = 299;
constexpr int16_t kMiddle = 293;
constexpr int16_t kLight = 114;
constexpr int32_t kWeights = kHeavy + kLight + 2 * kMiddle;

// Weights of a column's sample and the next one's, on two lines.
struct PairWeights {
  SignedWords heavyLine;
  SignedWords lightLine;
};

SignedWords WeightPair(int16_t left, int16_t right) {
  return hn::OddEven(hn::Set(kSignedWordsTag, right), hn::Set(kSignedWordsTag, left));
}

Integers WeighPairs(SignedWords heavyLine, SignedWords lightLine, const PairWeights& weights) {
#if KORVEL_VECTOR_BYTES == 32
  return Integers{_mm256_add_epi32(_mm256_madd_epi16(heavyLine.raw, weights.heavyLine.raw),
                                   _mm256_madd_epi16(lightLine.raw, weights.lightLine.raw))};
#else
  return Integers{_mm_add_epi32(_mm_madd_epi16(heavyLine.raw, weights.heavyLine.raw),
                                _mm_madd_epi16(lightLine.raw, weights.lightLine.raw))};
#endif
}

// Exact for sums below 999 * 4096 in every rounding mode, as trying them all shows: single precision holds them, and
// the factor lies a little above 1 / 999.
Integers DivideByWeights(Integers sums) {
  return Truncated(hn::Mul(hn::ConvertTo(kFloats, sums), hn::Set(kFloats, 0x1.06680cp-10f)));
}

template <class Sample>
class Mono {
 public:
  static constexpr size_t kLanes = KORVEL_VECTOR_BYTES / sizeof(Sample);
  static constexpr size_t kPixelBytes = sizeof(Sample);
  static constexpr bool kCanStream = true;

  explicit Mono(const MonoTask& task) : task_(task) {}

  HWY_NOINLINE void Vectors(size_t begin, size_t end, uint8_t* to) const {
    const PairWeights atHeavy = {WeightPair(kHeavy, kMiddle), WeightPair(kMiddle, kLight)};
    const PairWeights atLight = {WeightPair(kMiddle, kHeavy), WeightPair(kLight, kMiddle)};
    const bool startsHeavy = begin % 2 == task_.heavyColumn;
    const PairWeights even = startsHeavy ? atHeavy : atLight;
    const PairWeights odd = startsHeavy ? atLight : atHeavy;
    const MonoTask task = task_;
    const Integers limit = hn::Set(kIntegers, static_cast<int32_t>(Limit()));
    for (size_t x = begin; x < end; x += kLanes) {
      const uint8_t* const heavyLine = task.heavyLine + x * sizeof(Sample);
      const uint8_t* const lightLine = task.lightLine + x * sizeof(Sample);
      Put(Convert(heavyLine, lightLine, even, odd, limit), to);
      to += KORVEL_VECTOR_BYTES;
    }
  }

  void One(size_t x, uint8_t* to) const {
    const bool isHeavy = x % 2 == task_.heavyColumn;
    const auto at = [](const uint8_t* line, size_t column) { return LoadOne<Sample>(line, column); };
    const uint32_t left = isHeavy ? kHeavy * at(task_.heavyLine, x) + kMiddle * at(task_.lightLine, x)
                                  : kMiddle * at(task_.heavyLine, x) + kLight * at(task_.lightLine, x);
    const uint32_t right = isHeavy ? kMiddle * at(task_.heavyLine, x + 1) + kLight * at(task_.lightLine, x + 1)
                                   : kHeavy * at(task_.heavyLine, x + 1) + kMiddle * at(task_.lightLine, x + 1);
    const uint32_t sum = left + right;
    const auto value = static_cast<Sample>((sum > Limit() ? Limit() : sum) / kWeights);
    std::memcpy(to, &value, sizeof(value));
  }

 private:
  // The largest sum whose quotient is the maximum. Larger ones, which garbage in the samples can make, give it too.
  uint32_t Limit() const { return kWeights * (task_.maximum + 1) - 1; }

  static Bytes Convert(const uint8_t* heavyLine, const uint8_t* lightLine, const PairWeights& even,
                       const PairWeights& odd, Integers limit) {
    if constexpr (sizeof(Sample) == 1) {
      // No sum of bytes reaches the limit.
      const auto columns = [](const uint8_t* heavy, const uint8_t* light, const PairWeights& weights) {
        const Bytes zero = hn::Zero(kBytes);
        const Bytes heavyBytes = hn::LoadU(kBytes, heavy);
        const Bytes lightBytes = hn::LoadU(kBytes, light);
        const auto words = [](Bytes bytes) { return hn::BitCast(kSignedWordsTag, bytes); };
        const Integers low = DivideByWeights(WeighPairs(words(hn::InterleaveLower(kBytes, heavyBytes, zero)),
                                                        words(hn::InterleaveLower(kBytes, lightBytes, zero)), weights));
        const Integers high =
            DivideByWeights(WeighPairs(words(hn::InterleaveUpper(kBytes, heavyBytes, zero)),
                                       words(hn::InterleaveUpper(kBytes, lightBytes, zero)), weights));
        return hn::BitCast(kWords, hn::ReorderDemote2To(kSignedWordsTag, low, high));
      };
      return Merge(columns(heavyLine, lightLine, even), columns(heavyLine + 1, lightLine + 1, odd));
    } else {
      // The products take signed words: the samples are lowered by half their range, the sums raised again.
      const auto columns = [&](const uint8_t* heavy, const uint8_t* light, const PairWeights& weights) {
        const auto lowered = [](const uint8_t* from) {
          return hn::BitCast(kSignedWordsTag, hn::Xor(LoadWords(from), hn::Set(kWords, uint16_t{0x8000})));
        };
        const Integers raise = hn::Set(kIntegers, kWeights * 0x8000);
        const Integers sums = hn::Add(WeighPairs(lowered(heavy), lowered(light), weights), raise);
        return DivideByWeights(hn::Min(sums, limit));
      };
      const Integers evenValues = columns(heavyLine, lightLine, even);
      const Integers oddValues = columns(heavyLine + 2, lightLine + 2, odd);
      return hn::BitCast(kBytes, hn::Or(evenValues, hn::ShiftLeft<16>(oddValues)));
    }
  }

  const MonoTask& task_;
};

template <class Sample>
void ConvertMono(const MonoTask& task) {
  Walk(Mono<Sample>(task), task.output, task.first, task.last, task.isStreamed);
}

}  // namespace

extern const DemosaicKernels kDemosaicKernels = {
    .bilinear = {ConvertBilinear<Bytes3Layout>, ConvertBilinear<Bytes4Layout>, ConvertBilinear<Words3Layout>,
                 ConvertBilinear<Words4Layout>, ConvertBilinear<Word32Layout>, ConvertBilinear<Word32KeptLayout>},
    .luminance = ConvertLuminance,
    .classic3 = ConvertClassic<Bytes3Layout>,
    .classic4 = ConvertClassic<Bytes4Layout>,
    .mono8 = ConvertMono<uint8_t>,
    .mono16 = ConvertMono<uint16_t>};

}  // namespace img::processing::KORVEL_VECTORS
