#include "processing/correction/binning_vectors.h"

#include <immintrin.h>

#include "processing/block_vectors.h"
#include "processing/vector_numbers.h"

namespace img::processing::KORVEL_VECTORS {
namespace {

// Sums and means of samples, from vectors in which those to be added up are neighbours.
template <size_t kSample>
struct Sums;

template <>
struct Sums<1> {
  using Vector = Words;

  explicit Sums(const BinnedLines& lines)
      : isMean(lines.isMean),
        // Exact, since a sum is at most 16 times 255.
        reciprocal(hn::Set(kWords, static_cast<uint16_t>(65535 / (2 * lines.count) + 1))) {}

  static Vector Zero() { return hn::Zero(kWords); }
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
    return LimitedBytes(lower, upper);
  }

  bool isMean;
  Words reciprocal;
};

template <>
struct Sums<2> {
  using Vector = Integers;

  explicit Sums(const BinnedLines& lines)
      : isMean(lines.isMean),
        divisor(hn::Set(kFloats, static_cast<float>(2 * lines.count))),
        maximum(hn::Set(kIntegers, lines.maximum)) {}

  static Vector Zero() { return hn::Zero(kIntegers); }
  static Vector OfPairs(Bytes samples) {
    const hn::ScalableTag<uint32_t> d;
    const auto pairs = hn::BitCast(d, samples);
    return hn::BitCast(kIntegers, hn::Add(hn::And(pairs, hn::Set(d, 0xFFFF)), hn::ShiftRight<16>(pairs)));
  }

  Bytes Finish(Vector lower, Vector upper) const {
    return hn::BitCast(kBytes, LimitedWords(Finish(lower), Finish(upper)));
  }

  Vector Finish(Vector sums) const {
    if (!isMean) return hn::Min(sums, maximum);
    // Exact, as in plain code.
    return hn::ConvertTo(kIntegers, hn::Div(hn::ConvertTo(kFloats, sums), divisor));
  }

  bool isMean;
  Floats divisor;
  Integers maximum;
};

// Pairs of groups that are loaded as a block of 16 bytes: groups of three samples fill 12 of them.
template <size_t kSample, size_t kGroup>
struct Blocks {
  static constexpr size_t kByteCount = kGroup == 3 ? 12 : 16;
  static constexpr size_t kOutputGroups = kByteCount / kSample / kGroup / 2;

  constexpr Blocks() {
    for (size_t i = 0; i < 16; ++i) {
      const size_t sum = i / kSample / 2;
      const size_t sample = (sum / kGroup * 2 + i / kSample % 2) * kGroup + sum % kGroup;
      neighbours[i] = i < kByteCount ? static_cast<uint8_t>(sample * kSample + i % kSample) : kNoByte;
      gathered[i] = i < kByteCount ? static_cast<uint8_t>(i / (kByteCount / 2) * 8 + i % (kByteCount / 2)) : kNoByte;
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
  const Bytes neighbours = hn::LoadDup128(kBytes, kTables.neighbours);
  const Bytes gathered = hn::LoadDup128(kBytes, kTables.gathered);
  const Bytes binned = hn::LoadDup128(kBytes, kTables.binned);
  const Bytes alpha = hn::AndNot(binned, hn::BitCast(kBytes, hn::Set(kWords, kSample == 1 ? 0xFFFF : lines.maximum)));
  const auto pairSums = [&](const uint8_t* block) {
    Bytes samples = LoadBlocks(block, block + 2 * Block::kByteCount);
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
    auto upper = pairSums(from + Block::kByteCount);
    for (size_t line = 1; line < lines.count; ++line) {
      from += lines.step;
      lower = hn::Add(lower, pairSums(from));
      upper = hn::Add(upper, pairSums(from + Block::kByteCount));
    }
    Bytes samples = sum.Finish(lower, upper);
    if constexpr (kGroup == 3) samples = hn::TableLookupBytesOr0(samples, gathered);
    if constexpr (kGroup == 4) samples = hn::Or(hn::And(samples, binned), alpha);
    uint8_t* const to = lines.to + done * kGroup * kSample;
    StoreBlocks(samples, to, to + Block::kByteCount, [](auto block, uint8_t* at) { hn::StoreU(block, kBlockTag, at); });
  }
  return done;
}

}  // namespace

extern const BinningKernels kBinningKernels = {
    .bytes = {nullptr, BinPairs<1, 1>, BinPairs<1, 2>, BinPairs<1, 3>, BinPairs<1, 4>},
    .words = {nullptr, BinPairs<2, 1>, BinPairs<2, 2>, BinPairs<2, 3>, BinPairs<2, 4>}};

}  // namespace img::processing::KORVEL_VECTORS
