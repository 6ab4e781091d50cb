#include "processing/correction/gain_vectors.h"

#include "processing/vector_numbers.h"

namespace img::processing::KORVEL_VECTORS {
namespace {

// Single precision, as in the tables of the plain code, whose entries are thus met exactly.
struct Factors {
  Factors(float even, float odd) : values(hn::OddEven(hn::Set(kFloats, odd), hn::Set(kFloats, even))) {}

  Integers Products(Words samplesAndZeros) const {
    return Truncated(hn::Mul(hn::ConvertTo(kFloats, hn::BitCast(kIntegers, samplesAndZeros)), values));
  }

  Floats values;
};

// Widening by interleaving with zeros and narrowing both go by 16 bytes, so that samples come back to their places.
size_t MultiplyBytes(const uint8_t* in, uint8_t* out, size_t count, float even, float odd) {
  constexpr size_t kLanes = KORVEL_VECTOR_BYTES;
  const Factors factors(even, odd);
  size_t i = 0;
  for (; i + kLanes <= count; i += kLanes) {
    const Bytes samples = hn::LoadU(kBytes, in + i);
    const Words lower = hn::BitCast(kWords, hn::InterleaveLower(kBytes, samples, hn::Zero(kBytes)));
    const Words upper = hn::BitCast(kWords, hn::InterleaveUpper(kBytes, samples, hn::Zero(kBytes)));
    const Integers a = factors.Products(hn::InterleaveLower(kWords, lower, hn::Zero(kWords)));
    const Integers b = factors.Products(hn::InterleaveUpper(kWords, lower, hn::Zero(kWords)));
    const Integers c = factors.Products(hn::InterleaveLower(kWords, upper, hn::Zero(kWords)));
    const Integers d = factors.Products(hn::InterleaveUpper(kWords, upper, hn::Zero(kWords)));
    hn::StoreU(LimitedBytes(a, b, c, d), kBytes, out + i);
  }
  return i;
}

HWY_INLINE Words InTurn(uint16_t even, uint16_t odd) {
  return hn::OddEven(hn::Set(kWords, odd), hn::Set(kWords, even));
}

size_t MultiplyBytesInIntegers(const uint8_t* in, uint8_t* out, size_t count, const FixedFactor& even,
                               const FixedFactor& odd) {
  constexpr size_t kLanes = KORVEL_VECTOR_BYTES;
  const Words whole = InTurn(even.whole, odd.whole);
  const Words fraction = InTurn(even.fraction, odd.fraction);
  const Words scale = InTurn(even.scale, odd.scale);
  const auto product = [=](Bytes samplesAndZeros) HWY_ATTR {
    const Words samples = hn::BitCast(kWords, samplesAndZeros);
    return hn::MulHigh(hn::Add(hn::Mul(samples, whole), hn::MulHigh(samples, fraction)), scale);
  };
  size_t i = 0;
  for (; i + kLanes <= count; i += kLanes) {
    const Bytes samples = hn::LoadU(kBytes, in + i);
    const Words lower = product(hn::InterleaveLower(kBytes, samples, hn::Zero(kBytes)));
    const Words upper = product(hn::InterleaveUpper(kBytes, samples, hn::Zero(kBytes)));
    hn::StoreU(LimitedBytes(lower, upper), kBytes, out + i);
  }
  return i;
}

size_t MultiplyWords(const uint8_t* in, uint8_t* out, size_t count, float even, float odd, uint16_t maximum) {
  constexpr size_t kLanes = KORVEL_VECTOR_BYTES / 2;
  const Factors factors(even, odd);
  const Words limit = hn::Set(kWords, maximum);
  size_t i = 0;
  for (; i + kLanes <= count; i += kLanes) {
    const Words samples = hn::And(hn::BitCast(kWords, hn::LoadU(kBytes, in + 2 * i)), limit);
    const Integers a = factors.Products(hn::InterleaveLower(kWords, samples, hn::Zero(kWords)));
    const Integers b = factors.Products(hn::InterleaveUpper(kWords, samples, hn::Zero(kWords)));
    hn::StoreU(hn::BitCast(kBytes, hn::Min(LimitedWords(a, b), limit)), kBytes, out + 2 * i);
  }
  return i;
}

}  // namespace

extern const GainKernels kGainKernels = {
    .bytes = MultiplyBytes, .bytesInIntegers = MultiplyBytesInIntegers, .words = MultiplyWords};

}  // namespace img::processing::KORVEL_VECTORS
