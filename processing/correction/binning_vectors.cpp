#include "processing/correction/binning_vectors.h"

#include <immintrin.h>

#include "processing/block_vectors.h"

namespace img::processing::KORVEL_VECTORS {
namespace {

constexpr hn::ScalableTag<uint16_t> kWordsTag;
constexpr hn::ScalableTag<int32_t> kIntegersTag;
constexpr hn::ScalableTag<float> kFloatsTag;
using Words = hn::Vec<hn::ScalableTag<uint16_t>>;
using Integers = hn::Vec<hn::ScalableTag<int32_t>>;

// Sums and means of samples, from vectors in which those to be added up are neighbours.
template <size_t kSample>
struct Sums;

template <>
struct Sums<1> {
  using Vector = Words;

  explicit Sums(const BinnedLines& lines)
      : isMean(lines.isMean),
        // Exact, since a sum is at most 16 times 255.
        reciprocal(hn::Set(kWordsTag, static_cast<uint16_t>(65535 / (2 * lines.count) + 1))) {}

  static Vector Zero() { return hn::Zero(kWordsTag); }
  static Vector OfPairs(Bytes samples) {
#if KORVEL_VECTOR_BYTES == 32
    return Words{_mm256_maddubs_epi16(samples.raw, _mm256_set1_epi8(1))};
#else
    return Words{_mm_maddubs_epi16(samples.raw, _mm_set1_epi8(1))};
#endif
  }

  Bytes Finish(Vector lower, Vector upper) const {
    if (isMean) {
      lower = hn::MulHigh(lower, reciprocal);
      upper = hn::MulHigh(upper, reciprocal);
    }
#if KORVEL_VECTOR_BYTES == 32
    return Bytes{_mm256_packus_epi16(lower.raw, upper.raw)};
#else
    return Bytes{_mm_packus_epi16(lower.raw, upper.raw)};
#endif
  }

  bool isMean;
  Words reciprocal;
};

template <>
struct Sums<2> {
  using Vector = Integers;

  explicit Sums(const BinnedLines& lines)
      : isMean(lines.isMean),
        divisor(hn::Set(kFloatsTag, static_cast<float>(2 * lines.count))),
        maximum(hn::Set(kIntegersTag, lines.maximum)) {}

  static Vector Zero() { return hn::Zero(kIntegersTag); }
  static Vector OfPairs(Bytes samples) {
    const hn::ScalableTag<uint32_t> d;
    const auto pairs = hn::BitCast(d, samples);
    return hn::BitCast(kIntegersTag, hn::Add(hn::And(pairs, hn::Set(d, 0xFFFF)), hn::ShiftRight<16>(pairs)));
  }

  Bytes Finish(Vector lower, Vector upper) const {
    lower = Finish(lower);
    upper = Finish(upper);
#if KORVEL_VECTOR_BYTES == 32
    return Bytes{_mm256_packus_epi32(lower.raw, upper.raw)};
#else
    return Bytes{_mm_packus_epi32(lower.raw, upper.raw)};
#endif
  }

  Vector Finish(Vector sums) const {
    if (!isMean) return hn::Min(sums, maximum);
    // Exact, as in plain code.
    return hn::ConvertTo(kIntegersTag, hn::Div(hn::ConvertTo(kFloatsTag, sums), divisor));
  }

  bool isMean;
  hn::Vec<hn::ScalableTag<float>> divisor;
  Integers maximum;
};

// Pairs of groups that are loaded as a block of 16 bytes: groups of three samples fill 12 of them.
template <size_t kSample, size_t kGroup>
struct Blocks {
  static constexpr size_t kBytes = kGroup == 3 ? 12 : 16;
  static constexpr size_t kOutputGroups = kBytes / kSample / kGroup / 2;

  constexpr Blocks() {
    for (size_t i = 0; i < 16; ++i) {
      const size_t sum = i / kSample / 2;
      const size_t sample = (sum / kGroup * 2 + i / kSample % 2) * kGroup + sum % kGroup;
      neighbours[i] = i < kBytes ? static_cast<uint8_t>(sample * kSample + i % kSample) : kNoByte;
      gathered[i] = i < kBytes ? static_cast<uint8_t>(i / (kBytes / 2) * 8 + i % (kBytes / 2)) : kNoByte;
      // Which bytes aren't alpha, as a mask.
      binned[i] = kGroup == 4 && i / kSample % 4 == 3 ? 0 : 0xFF;
    }
  }

  alignas(16) uint8_t neighbours[16] = {};  // where samples come from that are to be added up
  alignas(16) uint8_t gathered[16] = {};    // where the samples are that came from two blocks
  alignas(16) uint8_t binned[16] = {};
};
template <size_t kSample, size_t kGroup>
constexpr Blocks<kSample, kGroup> kBlocks;

template <size_t kSample, size_t kGroup>
size_t BinPairs(const BinnedLines& lines) {
  using Block = Blocks<kSample, kGroup>;
  using Sum = Sums<kSample>;
  constexpr const Block& kTables = kBlocks<kSample, kGroup>;
  constexpr size_t kPlaces = KORVEL_VECTOR_BYTES / 16;
  constexpr size_t kGroupsPerStep = 2 * kPlaces * Block::kOutputGroups;
  const Bytes neighbours = hn::LoadDup128(kBytesTag, kTables.neighbours);
  const Bytes gathered = hn::LoadDup128(kBytesTag, kTables.gathered);
  const Bytes binned = hn::LoadDup128(kBytesTag, kTables.binned);
  const Bytes alpha =
      hn::AndNot(binned, hn::BitCast(kBytesTag, hn::Set(kWordsTag, kSample == 1 ? 0xFFFF : lines.maximum)));
  const auto pairSums = [&](const uint8_t* block) {
    Bytes samples = LoadBlocks(block, block + 2 * Block::kBytes);
    if constexpr (kGroup != 1) samples = hn::TableLookupBytesOr0(samples, neighbours);
    return Sum::OfPairs(samples);
  };
  const Sum sum(lines);
  // Blocks of 12 bytes reach 4 bytes into what follows them.
  constexpr size_t kGroupsBeyond = kGroup == 3 ? 2 : 0;
  size_t done = 0;
  for (; done + kGroupsPerStep + kGroupsBeyond <= lines.groupCount; done += kGroupsPerStep) {
    const uint8_t* from = lines.from + done * 2 * kGroup * kSample;
    auto lower = pairSums(from);
    auto upper = pairSums(from + Block::kBytes);
    for (size_t line = 1; line < lines.count; ++line) {
      from += lines.step;
      lower = hn::Add(lower, pairSums(from));
      upper = hn::Add(upper, pairSums(from + Block::kBytes));
    }
    Bytes samples = sum.Finish(lower, upper);
    if constexpr (kGroup == 3) samples = hn::TableLookupBytesOr0(samples, gathered);
    if constexpr (kGroup == 4) samples = hn::Or(hn::And(samples, binned), alpha);
    uint8_t* const to = lines.to + done * kGroup * kSample;
    StoreBlocks(samples, to, to + Block::kBytes, [](auto block, uint8_t* at) { hn::StoreU(block, kBlockTag, at); });
  }
  return done;
}

}  // namespace

extern const BinningKernels kBinningKernels = {
    .bytes = {nullptr, BinPairs<1, 1>, BinPairs<1, 2>, BinPairs<1, 3>, BinPairs<1, 4>},
    .words = {nullptr, BinPairs<2, 1>, BinPairs<2, 2>, BinPairs<2, 3>, BinPairs<2, 4>}};

}  // namespace img::processing::KORVEL_VECTORS
