// The image converter once more, as plainly as it can be said: samples in vectors, one pixel at a time. Tests compare
// the library with it, so it shares nothing with the library, not even the list of formats.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "tests/model/format_table.h"

namespace korvel_test {

// The two properties of a processor that decide over pixels.
struct ModelFeatures {
  bool avx = false;
  bool avx2 = false;
};

struct ModelImage {
  uint32_t format = 0;
  size_t width = 0;
  size_t height = 0;
  std::vector<uint8_t> bytes;
  // For each byte, the bits that the conversion gave a value. The others hold what the memory held before, so that
  // there is nothing to compare them with.
  std::vector<uint8_t> written;
};

struct ModelOutcome {
  uint32_t code = 0;   // what the exported function returns
  int32_t status = 0;  // of the exception, 0 without one
  std::string text;    // of the exception, without the frame that what() puts around it
  ModelImage image;    // empty after a failure
  // The bytes of the caller's image after the call; swapping red and blue happens in the input.
  std::vector<uint8_t> inputAfter;
};

// An image of the size with every byte given.
ModelImage MakeModelImage(uint32_t format, size_t width, size_t height, std::vector<uint8_t> bytes);

// The input must be of a public format; the target may be any number.
ModelOutcome ModelConvert(const ModelImage& input, uint32_t target, uint32_t mode, ModelFeatures features);

// The same into memory of bufferSize bytes, of which the outcome's image is the first part.
ModelOutcome ModelConvertToBuffer(const ModelImage& input, uint32_t target, uint32_t mode, ModelFeatures features,
                                  size_t bufferSize);

// In the order in which the converter lists them.
std::vector<uint32_t> ModelSupportedOutputs(uint32_t input);

size_t BytesOfImage(uint32_t format, size_t width, size_t height);

// Samples of a run of pixels, in the order of memory: all channels of the first pixel, then of the second, and so on.
std::vector<uint32_t> DecodeSamples(uint32_t format, size_t pixels, const std::vector<uint8_t>& bytes);
std::vector<uint8_t> EncodeSamples(uint32_t format, size_t pixels, const std::vector<uint32_t>& samples);

// A generator that gives the same numbers everywhere, unlike the distributions of the standard library.
class ModelRandom {
 public:
  explicit ModelRandom(uint64_t seed) : state_(seed) {}

  uint64_t Next();
  // Below bound, which isn't 0.
  uint32_t Below(uint32_t bound) { return static_cast<uint32_t>((Next() >> 32) * bound >> 32); }

 private:
  uint64_t state_;
};

enum class Fill {
  kZero,
  kMaximum,
  kAlternating,  // maximum and 0 from pixel to pixel
  kFlat,         // one random sample everywhere
  kRandom,       // random samples up to the maximum
  kGarbage,      // random bytes: 16-bit samples above the maximum, spare bits set
};

inline constexpr Fill kAllFills[] = {Fill::kZero, Fill::kMaximum, Fill::kAlternating,
                                     Fill::kFlat, Fill::kRandom,  Fill::kGarbage};

const char* NameOf(Fill fill);

ModelImage MakeFilledImage(uint32_t format, size_t width, size_t height, Fill fill, uint64_t seed);

}  // namespace korvel_test
