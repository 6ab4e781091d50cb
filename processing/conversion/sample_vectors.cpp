#include "processing/conversion/sample_vectors.h"

#include "processing/block_vectors.h"
#include "processing/vector_numbers.h"

namespace img::processing::KORVEL_VECTORS {
namespace {

constexpr size_t kLanes = KORVEL_VECTOR_BYTES;
constexpr size_t kWordLanes = kLanes / sizeof(uint16_t);

// A step is four blocks of 8 samples, of which a vector of words holds as many as it is long.
constexpr size_t kBlocksPerStep = 4;
constexpr size_t kBlockSamples = kSamplesPerStep / kBlocksPerStep;
constexpr size_t kBlocksPerVector = kLanes / 16;

template <bool kPastCaches, class D, class V>
HWY_INLINE void StoreVector(V vector, D d, uint8_t* to) {
  auto* const lanes = reinterpret_cast<hn::TFromD<D>*>(to);
  if constexpr (kPastCaches) {
    hn::Stream(vector, d, lanes);
  } else {
    hn::StoreU(vector, d, lanes);
  }
}

HWY_INLINE Words LoadWords(const uint8_t* from) { return hn::BitCast(kWords, hn::LoadU(kBytes, from)); }

// Packed layouts. A shuffle puts the two bytes that a sample lies in into a word; a multiplication by a power of two,
// another for each sample of a group, shifts them to where they belong; a mask drops the neighbours' bits. That leaves
// the sample at the top of its word, with zeros below.

// Four or two samples of consecutive bits, lowest first.
template <size_t kBits>
struct NoAlignment {
  static constexpr size_t kBlockBytes = kBits;
  // Sample i of a block begins at bit i * kBits. Its two bytes, in memory order.
  static constexpr size_t FirstByte(size_t i) { return i * kBits / 8; }
  static constexpr size_t SecondByte(size_t i) { return i * kBits / 8 + 1; }
  static constexpr uint16_t Factor(size_t i) { return static_cast<uint16_t>(1u << (16 - kBits - i * kBits % 8)); }
  static constexpr uint16_t kMask = static_cast<uint16_t>(0xFFFFu << (16 - kBits));

  HWY_INLINE static Words ToTop(Words pairs, Words factors) { return hn::And(pairs * factors, hn::Set(kWords, kMask)); }
};

// The high eight bits of each sample of a group in a byte of its own, then a byte with the low bits of all.
template <size_t kBits>
struct Mipi {
  static constexpr size_t kLowBits = kBits - 8;
  static constexpr size_t kGroupSamples = 8 / kLowBits;
  static constexpr size_t kBlockBytes = kBits;
  static constexpr size_t FirstByte(size_t i) { return i / kGroupSamples * (kGroupSamples + 1) + kGroupSamples; }
  static constexpr size_t SecondByte(size_t i) { return i / kGroupSamples * (kGroupSamples + 1) + i % kGroupSamples; }
  static constexpr uint16_t Factor(size_t i) {
    return static_cast<uint16_t>(1u << (8 - kLowBits - i % kGroupSamples * kLowBits));
  }
  static constexpr uint16_t kMask = static_cast<uint8_t>(0xFFu << (8 - kLowBits));

  HWY_INLINE static Words ToTop(Words pairs, Words factors) {
    return hn::Or(hn::And(pairs, hn::Set(kWords, 0xFF00)), hn::And(pairs * factors, hn::Set(kWords, kMask)));
  }
};

// The tables of a layout: its shuffles within 16 bytes that begin with a block, or end with it, and its factors.
template <class Layout>
struct Tables {
  static constexpr size_t kSpare = 16 - Layout::kBlockBytes;
  alignas(32) uint8_t begins[32] = {};
  alignas(32) uint8_t lastEnds[32] = {};
  alignas(32) uint16_t factors[16] = {};

  constexpr Tables() {
    for (size_t block = 0; block < 2; ++block) {
      for (size_t i = 0; i < kBlockSamples; ++i) {
        const size_t at = block * 16 + 2 * i;
        begins[at] = static_cast<uint8_t>(Layout::FirstByte(i));
        begins[at + 1] = static_cast<uint8_t>(Layout::SecondByte(i));
        const size_t spare = block == kBlocksPerVector - 1 ? kSpare : 0;
        lastEnds[at] = static_cast<uint8_t>(Layout::FirstByte(i) + spare);
        lastEnds[at + 1] = static_cast<uint8_t>(Layout::SecondByte(i) + spare);
        factors[block * kBlockSamples + i] = Layout::Factor(i);
      }
    }
  }
};

template <class Layout>
constexpr Tables<Layout> kTables{};

// Reads a step of a packed layout. The last block is loaded from 16 bytes that end with it, so that none is read beyond
// the step.
template <class Layout>
class PackedStep {
 public:
  PackedStep()
      : begins_(hn::Load(kBytes, kTables<Layout>.begins)),
        lastEnds_(hn::Load(kBytes, kTables<Layout>.lastEnds)),
        factors_(hn::Load(kWords, kTables<Layout>.factors)) {}

  static constexpr size_t kByteCount = kBlocksPerStep * Layout::kBlockBytes;

  // The samples of a block, and of that which is `distance` blocks behind it where vectors hold two.
  template <size_t kBlock, size_t kDistance>
  HWY_INLINE Words ToTop(const uint8_t* step) const {
    constexpr bool kEnds = kBlock + (kBlocksPerVector - 1) * kDistance == kBlocksPerStep - 1;
    constexpr size_t kBack = kEnds ? 16 - Layout::kBlockBytes : 0;
    const uint8_t* const first = step + kBlock * Layout::kBlockBytes;
    const uint8_t* const last = first + (kBlocksPerVector - 1) * kDistance * Layout::kBlockBytes - kBack;
    const Bytes bytes = LoadBlocks(kBlocksPerVector == 1 ? last : first, last);
    const Bytes pairs = hn::TableLookupBytes(bytes, kEnds ? lastEnds_ : begins_);
    return Layout::ToTop(hn::BitCast(kWords, pairs), factors_);
  }

 private:
  Bytes begins_;
  Bytes lastEnds_;
  Words factors_;
};

template <class Layout, bool kPastCaches>
void UnpackToWords(const uint8_t* from, uint8_t* to, size_t stepCount, uint32_t toBits) {
  const auto d = kWords;
  const PackedStep<Layout> step;
  // The high half of the product is the sample at its depth: a shift down by 16 - toBits.
  const Words toDepth = hn::Set(d, static_cast<uint16_t>(1u << toBits));
  for (size_t i = 0; i < stepCount; ++i, from += step.kByteCount, to += kSamplesPerStep * sizeof(uint16_t)) {
    const auto store = [&](size_t vector, Words atTop)
                           HWY_ATTR { StoreVector<kPastCaches>(hn::MulHigh(atTop, toDepth), d, to + vector * kLanes); };
#if KORVEL_VECTOR_BYTES == 32
    store(0, step.template ToTop<0, 1>(from));
    store(1, step.template ToTop<2, 1>(from));
#else
    store(0, step.template ToTop<0, 1>(from));
    store(1, step.template ToTop<1, 1>(from));
    store(2, step.template ToTop<2, 1>(from));
    store(3, step.template ToTop<3, 1>(from));
#endif
  }
}

// At a depth of 8 the high bytes are the samples.
template <class Layout, bool kPastCaches>
void UnpackToBytes(const uint8_t* from, uint8_t* to, size_t stepCount) {
  const auto d = kBytes;
  const PackedStep<Layout> step;
  for (size_t i = 0; i < stepCount; ++i, from += step.kByteCount, to += kSamplesPerStep) {
    const auto store = [&](size_t vector, Words low, Words high) HWY_ATTR {
      StoreVector<kPastCaches>(LimitedBytes(hn::ShiftRight<8>(low), hn::ShiftRight<8>(high)), d, to + vector * kLanes);
    };
#if KORVEL_VECTOR_BYTES == 32
    // Packing goes by blocks, so that every other one sits in the same vector.
    store(0, step.template ToTop<0, 2>(from), step.template ToTop<1, 2>(from));
#else
    store(0, step.template ToTop<0, 1>(from), step.template ToTop<1, 1>(from));
    store(1, step.template ToTop<2, 1>(from), step.template ToTop<3, 1>(from));
#endif
  }
}

template <bool kPastCaches>
void CopyBytesOf(const uint8_t* from, uint8_t* to, size_t byteCount) {
  for (size_t i = 0; i < byteCount; i += kLanes) {
    StoreVector<kPastCaches>(hn::LoadU(kBytes, from + i), kBytes, to + i);
  }
}

template <bool kPastCaches>
void ShiftBytesToWords(const uint8_t* from, uint8_t* to, size_t stepCount, int left) {
  const auto d = kWords;
  const hn::Half<decltype(kBytes)> narrow;
  for (size_t i = 0; i < stepCount * kSamplesPerStep; i += kWordLanes) {
    const Words values = hn::PromoteTo(d, hn::LoadU(narrow, from + i));
    StoreVector<kPastCaches>(hn::ShiftLeftSame(values, left), d, to + i * sizeof(uint16_t));
  }
}

// The low byte of each word shifted down, whatever the word holds.
template <bool kPastCaches>
void ShiftWordsToBytes(const uint8_t* from, uint8_t* to, size_t stepCount, int right) {
  const Words toHighByte = hn::Set(kWords, static_cast<uint16_t>(1u << (8 - right)));
  for (size_t i = 0; i < stepCount * kSamplesPerStep; i += kLanes) {
    const Words low = hn::ShiftRight<8>(LoadWords(from + i * sizeof(uint16_t)) * toHighByte);
    const Words high = hn::ShiftRight<8>(LoadWords(from + i * sizeof(uint16_t) + kLanes) * toHighByte);
    Bytes bytes = LimitedBytes(low, high);
#if KORVEL_VECTOR_BYTES == 32
    bytes.raw = _mm256_permute4x64_epi64(bytes.raw, _MM_SHUFFLE(3, 1, 2, 0));
#endif
    StoreVector<kPastCaches>(bytes, kBytes, to + i);
  }
}

template <bool kPastCaches>
void ShiftWords(const uint8_t* from, uint8_t* to, size_t stepCount, int left, int right) {
  const auto d = kWords;
  for (size_t i = 0; i < stepCount * kSamplesPerStep * sizeof(uint16_t); i += kLanes) {
    StoreVector<kPastCaches>(hn::ShiftRightSame(hn::ShiftLeftSame(LoadWords(from + i), left), right), d, to + i);
  }
}

// From 16 bytes of samples come as many blocks of 16 bytes as a pixel has channels. Every channel is a shuffle away;
// the fourth takes no sample's byte.
template <size_t kSampleBytes, size_t kChannels>
struct ExtensionTables {
  alignas(32) uint8_t shuffles[kChannels][kLanes] = {};
  alignas(32) uint8_t opaque[kLanes] = {};

  constexpr ExtensionTables() {
    for (size_t i = 0; i < kChannels * kLanes; ++i) {
      const size_t inBlocks = i % (kChannels * 16);
      const size_t sample = inBlocks / (kChannels * kSampleBytes);
      const size_t channel = inBlocks / kSampleBytes % kChannels;
      const size_t byte = inBlocks % kSampleBytes;
      shuffles[i / kLanes][i % kLanes] =
          channel == 3 ? uint8_t{0x80} : static_cast<uint8_t>(sample * kSampleBytes + byte);
      if (i < kLanes && channel == 3 && byte == 0) opaque[i] = 255;
    }
  }
};

template <size_t kSampleBytes, size_t kChannels>
constexpr ExtensionTables<kSampleBytes, kChannels> kExtensionTables{};

template <size_t kSampleBytes, size_t kChannels, bool kPastCaches>
void ExtendSamples(const uint8_t* from, uint8_t* to, size_t stepCount) {
  constexpr const auto& kTables = kExtensionTables<kSampleBytes, kChannels>;
  const auto d = kBytes;
  const Bytes opaque = hn::Load(d, kTables.opaque);
  const uint8_t* const end = from + stepCount * kSamplesPerStep * kSampleBytes;
  for (; from < end; from += kLanes, to += kChannels * kLanes) {
    for (size_t i = 0; i < kChannels; ++i) {
      const size_t first = i * kBlocksPerVector / kChannels;
      const size_t last = (i * kBlocksPerVector + kBlocksPerVector - 1) / kChannels;
      const Bytes samples = LoadBlocks(from + first * 16, from + last * 16);
      Bytes pixels = hn::TableLookupBytesOr0(samples, hn::Load(d, kTables.shuffles[i]));
      if constexpr (kChannels == 4) pixels = hn::Or(pixels, opaque);
      StoreVector<kPastCaches>(pixels, d, to + i * kLanes);
    }
  }
}

// Which of the channels that a vector begins with, 0 to 2, are the first, the second and the third of a pixel, for the
// three vectors after which the pattern comes again.
template <size_t kSampleBytes>
struct SwapMasks {
  alignas(32) uint8_t channels[3][3][kLanes] = {};

  constexpr SwapMasks() {
    for (size_t i = 0; i < 3 * kLanes; ++i) channels[i / kLanes][i / kSampleBytes % 3][i % kLanes] = 0xFF;
  }
};

template <size_t kSampleBytes>
constexpr SwapMasks<kSampleBytes> kSwapMasks{};

// A first channel comes from two samples further on, a third one from two before. All loads of three vectors come
// before their stores, which may be to where they came from; what the loads reach beyond whole pixels isn't used.
template <size_t kSampleBytes, bool kPastCaches, bool kTwice>
void SwapChannels(const uint8_t* from, uint8_t* to, uint8_t* also, size_t stepCount) {
  constexpr const auto& kMasks = kSwapMasks<kSampleBytes>.channels;
  constexpr size_t kDistance = 2 * kSampleBytes;
  const auto d = kBytes;
  for (size_t i = 0; i < stepCount * kSamplesPerStep * 3 * kSampleBytes; i += 3 * kLanes) {
    Bytes pixels[3];
    for (size_t k = 0; k < 3; ++k) {
      const uint8_t* const at = from + i + k * kLanes;
      const Bytes first = hn::And(hn::LoadU(d, at + kDistance), hn::Load(d, kMasks[k][0]));
      const Bytes second = hn::And(hn::LoadU(d, at), hn::Load(d, kMasks[k][1]));
      const Bytes third = hn::And(hn::LoadU(d, at - kDistance), hn::Load(d, kMasks[k][2]));
      pixels[k] = hn::Or(hn::Or(first, second), third);
    }
    for (size_t k = 0; k < 3; ++k) {
      StoreVector<kPastCaches>(pixels[k], d, to + i + k * kLanes);
      if constexpr (kTwice) hn::StoreU(pixels[k], d, also + i + k * kLanes);
    }
  }
}

// The kernels as their callers know them.

template <class Layout>
void ReadPackedAsWords(const uint8_t* from, uint8_t* to, size_t stepCount, uint32_t, uint32_t toBits, bool pastCaches) {
  const auto unpack = pastCaches ? UnpackToWords<Layout, true> : UnpackToWords<Layout, false>;
  unpack(from, to, stepCount, toBits);
}

template <class Layout>
void ReadPackedAsBytes(const uint8_t* from, uint8_t* to, size_t stepCount, uint32_t, uint32_t, bool pastCaches) {
  const auto unpack = pastCaches ? UnpackToBytes<Layout, true> : UnpackToBytes<Layout, false>;
  unpack(from, to, stepCount);
}

void ReadBytesAsBytes(const uint8_t* from, uint8_t* to, size_t stepCount, uint32_t, uint32_t, bool pastCaches) {
  const auto copy = pastCaches ? CopyBytesOf<true> : CopyBytesOf<false>;
  copy(from, to, stepCount * kSamplesPerStep);
}

void ReadBytesAsWords(const uint8_t* from, uint8_t* to, size_t stepCount, uint32_t fromBits, uint32_t toBits,
                      bool pastCaches) {
  const auto shift = pastCaches ? ShiftBytesToWords<true> : ShiftBytesToWords<false>;
  shift(from, to, stepCount, static_cast<int>(toBits - fromBits));
}

void ReadWordsAsBytes(const uint8_t* from, uint8_t* to, size_t stepCount, uint32_t fromBits, uint32_t toBits,
                      bool pastCaches) {
  const auto shift = pastCaches ? ShiftWordsToBytes<true> : ShiftWordsToBytes<false>;
  shift(from, to, stepCount, static_cast<int>(fromBits - toBits));
}

void ReadWordsAsWords(const uint8_t* from, uint8_t* to, size_t stepCount, uint32_t fromBits, uint32_t toBits,
                      bool pastCaches) {
  const auto shift = pastCaches ? ShiftWords<true> : ShiftWords<false>;
  const int left = toBits > fromBits ? static_cast<int>(toBits - fromBits) : 0;
  const int right = toBits < fromBits ? static_cast<int>(fromBits - toBits) : 0;
  shift(from, to, stepCount, left, right);
}

template <size_t kSampleBytes, size_t kChannels>
void Extend(const uint8_t* from, uint8_t* to, size_t stepCount, bool pastCaches) {
  const auto extend =
      pastCaches ? ExtendSamples<kSampleBytes, kChannels, true> : ExtendSamples<kSampleBytes, kChannels, false>;
  extend(from, to, stepCount);
}

template <size_t kSampleBytes>
void Swap(const uint8_t* from, uint8_t* to, uint8_t* also, size_t stepCount, bool pastCaches) {
  const auto once = pastCaches ? SwapChannels<kSampleBytes, true, false> : SwapChannels<kSampleBytes, false, false>;
  const auto twice = pastCaches ? SwapChannels<kSampleBytes, true, true> : SwapChannels<kSampleBytes, false, true>;
  (also == nullptr ? once : twice)(from, to, also, stepCount);
}

}  // namespace

// The readers in the order of SampleLayout.
extern const SampleKernels kSampleKernels = {
    .readBytes = {ReadBytesAsBytes, ReadWordsAsBytes, ReadPackedAsBytes<NoAlignment<10>>,
                  ReadPackedAsBytes<NoAlignment<12>>, ReadPackedAsBytes<Mipi<10>>, ReadPackedAsBytes<Mipi<12>>},
    .readWords = {ReadBytesAsWords, ReadWordsAsWords, ReadPackedAsWords<NoAlignment<10>>,
                  ReadPackedAsWords<NoAlignment<12>>, ReadPackedAsWords<Mipi<10>>, ReadPackedAsWords<Mipi<12>>},
    .extendBytes = {Extend<1, 3>, Extend<1, 4>},
    .extendWords = {Extend<2, 3>, Extend<2, 4>},
    .swapBytes = Swap<1>,
    .swapWords = Swap<2>,
};

}  // namespace img::processing::KORVEL_VECTORS
