#include "processing/correction/color_vectors.h"

#include <cstring>

#include "processing/block_vectors.h"
#include "processing/vector_numbers.h"

namespace img::processing::KORVEL_VECTORS {
namespace {

constexpr size_t kBlocks = KORVEL_VECTOR_BYTES / 16;
constexpr size_t kPixels = 4 * kBlocks;  // of a vector of floats

// Whether sums of bytes stay integers of 32 bits, so that the limits that come with narrowing are enough. No factor of
// a camera is larger. False for what is not a number.
bool AreSmall(const float* factors) {
  constexpr float kLargest = 1e6f;
  bool areSmall = true;
  for (size_t i = 0; i < 9; ++i) areSmall = areSmall && factors[i] > -kLargest && factors[i] < kLargest;
  return areSmall;
}

struct Matrix {
  Matrix(const float* f, float maximumValue) : maximum(hn::Set(kFloats, maximumValue)) {
    for (size_t i = 0; i < 9; ++i) factors[i] = hn::Set(kFloats, f[i]);
  }

  // Not limited below yet, and above only if told.
  template <bool isLimited = true>
  HWY_INLINE void Multiply(Integers (&colors)[3]) const {
    const Floats first = hn::ConvertTo(kFloats, colors[0]);
    const Floats second = hn::ConvertTo(kFloats, colors[1]);
    const Floats third = hn::ConvertTo(kFloats, colors[2]);
    for (size_t i = 0; i < 3; ++i) {
      const Floats sum = hn::Add(hn::Add(hn::Mul(factors[3 * i], first), hn::Mul(factors[3 * i + 1], second)),
                                 hn::Mul(factors[3 * i + 2], third));
      colors[i] = Rounded(isLimited ? LimitedAbove(sum, maximum) : sum);
    }
  }

  Floats factors[9];
  Floats maximum;
};

// The same order of bytes for each 16, where none stands for a zero.
constexpr int8_t none = -1;

struct Order {
  explicit Order(const int8_t (&bytes)[16])
      : indices(hn::LoadDup128(kBytes, reinterpret_cast<const uint8_t*>(bytes))) {}

  template <class Vector>
  HWY_INLINE Vector Of(Vector vector) const {
    return hn::TableLookupBytesOr0(vector, hn::BitCast(hn::DFromV<Vector>(), indices));
  }

  Bytes indices;
};

// The lower 12 of each 16 bytes, without gaps.
HWY_INLINE void StoreTwelves(Bytes bytes, uint8_t* address) {
#if KORVEL_VECTOR_BYTES == 32
  const __m256i dense = _mm256_permutevar8x32_epi32(bytes.raw, _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 6, 6));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(address), _mm256_castsi256_si128(dense));
  _mm_storel_epi64(reinterpret_cast<__m128i*>(address + 16), _mm256_extracti128_si256(dense, 1));
#else
  _mm_storel_epi64(reinterpret_cast<__m128i*>(address), bytes.raw);
  const int last = _mm_extract_epi32(bytes.raw, 2);
  std::memcpy(address + 8, &last, sizeof last);
#endif
}

// 24 bytes for each 16 of the first, followed by the lower 8 of each 16 of the second.
HWY_INLINE void StoreTwentyFours(Bytes first, Bytes second, uint8_t* address) {
#if KORVEL_VECTOR_BYTES == 32
  _mm_storeu_si128(reinterpret_cast<__m128i*>(address), _mm256_castsi256_si128(first.raw));
  _mm_storel_epi64(reinterpret_cast<__m128i*>(address + 16), _mm256_castsi256_si128(second.raw));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(address + 24), _mm256_extracti128_si256(first.raw, 1));
  _mm_storel_epi64(reinterpret_cast<__m128i*>(address + 40), _mm256_extracti128_si256(second.raw, 1));
#else
  _mm_storeu_si128(reinterpret_cast<__m128i*>(address), first.raw);
  _mm_storel_epi64(reinterpret_cast<__m128i*>(address + 16), second.raw);
#endif
}

template <bool isLimited>
size_t CorrectTripleBytes(const uint8_t* in, uint8_t* out, size_t count, const float* factors, float maximum) {
  const Matrix matrix(factors, maximum);
  const Order first({0, none, none, none, 3, none, none, none, 6, none, none, none, 9, none, none, none});
  const Order second({1, none, none, none, 4, none, none, none, 7, none, none, none, 10, none, none, none});
  const Order third({2, none, none, none, 5, none, none, none, 8, none, none, none, 11, none, none, none});
  const Order pixels({0, 4, 8, 1, 5, 9, 2, 6, 10, 3, 7, 11, none, none, none, none});
  size_t i = 0;
  for (; i + kPixels <= count; i += kPixels) {
    const Integers bytes = hn::BitCast(kIntegers, LoadBlocks(in + 3 * i, in + 3 * i + 12));
    Integers colors[3] = {first.Of(bytes), second.Of(bytes), third.Of(bytes)};
    matrix.Multiply<isLimited>(colors);
    StoreTwelves(pixels.Of(LimitedBytes(colors[0], colors[1], colors[2], colors[2])), out + 3 * i);
  }
  return i;
}

template <bool isLimited>
size_t CorrectQuadBytes(const uint8_t* in, uint8_t* out, size_t count, const float* factors, float maximum) {
  const Matrix matrix(factors, maximum);
  const Order second({1, none, none, none, 5, none, none, none, 9, none, none, none, 13, none, none, none});
  const Order third({2, none, none, none, 6, none, none, none, 10, none, none, none, 14, none, none, none});
  const Order pixels({0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15});
  const Integers lowest = hn::Set(kIntegers, 0xFF);
  size_t i = 0;
  for (; i + kPixels <= count; i += kPixels) {
    const Integers bytes = hn::BitCast(kIntegers, hn::LoadU(kBytes, in + 4 * i));
    Integers colors[3] = {hn::And(bytes, lowest), second.Of(bytes), third.Of(bytes)};
    matrix.Multiply<isLimited>(colors);
    const hn::RebindToUnsigned<decltype(kIntegers)> unsignedIntegers;
    const Integers alpha = hn::BitCast(kIntegers, hn::ShiftRight<24>(hn::BitCast(unsignedIntegers, bytes)));
    hn::StoreU(pixels.Of(LimitedBytes(colors[0], colors[1], colors[2], alpha)), kBytes, out + 4 * i);
  }
  return i;
}

// The 24 bytes of four pixels are read as two overlapping 16: bytes 0 to 15 and bytes 8 to 23.
size_t CorrectTripleWords(const uint8_t* in, uint8_t* out, size_t count, const float* factors, float maximum) {
  const Matrix matrix(factors, maximum);
  const Order firstLower({0, 1, none, none, 6, 7, none, none, 12, 13, none, none, none, none, none, none});
  const Order firstUpper({none, none, none, none, none, none, none, none, none, none, none, none, 10, 11, none, none});
  const Order secondLower({2, 3, none, none, 8, 9, none, none, 14, 15, none, none, none, none, none, none});
  const Order secondUpper({none, none, none, none, none, none, none, none, none, none, none, none, 12, 13, none, none});
  const Order thirdLower({4, 5, none, none, 10, 11, none, none, none, none, none, none, none, none, none, none});
  const Order thirdUpper({none, none, none, none, none, none, none, none, 8, 9, none, none, 14, 15, none, none});
  // From the words of the first and second colours, and from those of the third.
  const Order pixels01({0, 1, 8, 9, none, none, 2, 3, 10, 11, none, none, 4, 5, 12, 13});
  const Order pixels2({none, none, none, none, 0, 1, none, none, none, none, 2, 3, none, none, none, none});
  const Order rest01({none, none, 6, 7, 14, 15, none, none, none, none, none, none, none, none, none, none});
  const Order rest2({4, 5, none, none, none, none, 6, 7, none, none, none, none, none, none, none, none});
  size_t i = 0;
  for (; i + kPixels <= count; i += kPixels) {
    const Integers lower = hn::BitCast(kIntegers, LoadBlocks(in + 6 * i, in + 6 * i + 24));
    const Integers upper = hn::BitCast(kIntegers, LoadBlocks(in + 6 * i + 8, in + 6 * i + 32));
    Integers colors[3] = {hn::Or(firstLower.Of(lower), firstUpper.Of(upper)),
                          hn::Or(secondLower.Of(lower), secondUpper.Of(upper)),
                          hn::Or(thirdLower.Of(lower), thirdUpper.Of(upper))};
    matrix.Multiply(colors);
    const Bytes words01 = hn::BitCast(kBytes, LimitedWords(colors[0], colors[1]));
    const Bytes words2 = hn::BitCast(kBytes, LimitedWords(colors[2], colors[2]));
    StoreTwentyFours(hn::Or(pixels01.Of(words01), pixels2.Of(words2)), hn::Or(rest01.Of(words01), rest2.Of(words2)),
                     out + 6 * i);
  }
  return i;
}

size_t CorrectTripleTens(const uint8_t* in, uint8_t* out, size_t count, const float* factors, float maximum) {
  const Matrix matrix(factors, maximum);
  const Integers lowest = hn::Set(kIntegers, 0x3FF);
  const Integers highest = hn::Set(kIntegers, static_cast<int32_t>(0xC0000000u));
  size_t i = 0;
  for (; i + kPixels <= count; i += kPixels) {
    const Integers words = hn::BitCast(kIntegers, hn::LoadU(kBytes, in + 4 * i));
    Integers colors[3] = {hn::And(words, lowest), hn::And(hn::ShiftRight<10>(words), lowest),
                          hn::And(hn::ShiftRight<20>(words), lowest)};
    matrix.Multiply(colors);
    for (Integers& color : colors) color = hn::Max(color, hn::Zero(kIntegers));
    const Integers two = hn::Or(colors[0], hn::ShiftLeft<10>(colors[1]));
    const Integers rest = hn::Or(hn::ShiftLeft<20>(colors[2]), hn::And(words, highest));
    hn::StoreU(hn::BitCast(kBytes, hn::Or(two, rest)), kBytes, out + 4 * i);
  }
  return i;
}

using OfBytes = size_t(const uint8_t* in, uint8_t* out, size_t count, const float* factors, float maximum);

template <OfBytes limited, OfBytes unlimited>
size_t CorrectBytes(const uint8_t* in, uint8_t* out, size_t count, const float* factors, float maximum) {
  return (AreSmall(factors) ? unlimited : limited)(in, out, count, factors, maximum);
}

}  // namespace

extern const ColorKernels kColorKernels = {
    .tripleBytes = CorrectBytes<CorrectTripleBytes<true>, CorrectTripleBytes<false>>,
    .quadBytes = CorrectBytes<CorrectQuadBytes<true>, CorrectQuadBytes<false>>,
    .tripleWords = CorrectTripleWords,
    .tripleTens = CorrectTripleTens};

}  // namespace img::processing::KORVEL_VECTORS
