// The corrections of pixel values and binning, one pixel after the other from their formulas, without a thought of
// speed: what a kernel has to beat.
//
// input and output hold images of the template's format, aligned for their samples. Mosaics have red at the top left.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "benchmarks/plain_kernels.h"

namespace korvel::benchmarks {

// The channels of an image's pixels; those of a 32-bit word with three of them as well.
template <img::PixelFormatId format>
struct PlainPixels {
  static constexpr img::FormatFacts kFormat = img::kFacts<format>;
  static constexpr bool kIsWord = kFormat.layout == img::PixelLayout::Word32;

  static unsigned Get(const uint8_t* pixels, size_t i, size_t channel) {
    if constexpr (kIsWord) {
      return reinterpret_cast<const uint32_t*>(pixels)[i] >> 10 * channel & kFormat.maxValue;
    } else {
      return reinterpret_cast<const PlainSample<format>*>(pixels)[i * kFormat.channels + channel];
    }
  }

  static void Put(uint8_t* pixels, size_t i, size_t channel, unsigned value) {
    if constexpr (kIsWord) {
      uint32_t& word = reinterpret_cast<uint32_t*>(pixels)[i];
      word = (word & ~(kFormat.maxValue << 10 * channel)) | value << 10 * channel;
    } else {
      reinterpret_cast<PlainSample<format>*>(pixels)[i * kFormat.channels + channel] =
          static_cast<PlainSample<format>>(value);
    }
  }
};

struct PlainGains {
  float master;
  float red;
  float green;
  float blue;
};

template <img::PixelFormatId format>
void PlainGain(const uint8_t* input, const img::Size2D& size, const PlainGains& gains, uint8_t* output) {
  using Pixels = PlainPixels<format>;
  using Mosaic = PlainMosaic<PlainSample<format>>;
  constexpr auto kMaximum = static_cast<float>(img::kFacts<format>.maxValue);
  for (size_t y = 0; y < size.height; ++y) {
    for (size_t x = 0; x < size.width; ++x) {
      const float colour = Mosaic::IsRed(x, y) ? gains.red : Mosaic::IsBlue(x, y) ? gains.blue : gains.green;
      const float factor = img::kFacts<format>.IsBayered() ? colour * gains.master : gains.master;
      const size_t i = y * size.width + x;
      const float value = factor * static_cast<float>(Pixels::Get(input, i, 0));
      Pixels::Put(output, i, 0, static_cast<unsigned>(std::min(value, kMaximum)));
    }
  }
}

// Leaves a fourth channel alone.
template <img::PixelFormatId format>
void PlainGamma(const uint8_t* input, const img::Size2D& size, float gamma, uint8_t* output) {
  using Pixels = PlainPixels<format>;
  constexpr auto kMaximum = static_cast<float>(img::kFacts<format>.maxValue);
  std::vector<unsigned> table;
  for (unsigned i = 0; i <= img::kFacts<format>.maxValue; ++i) {
    table.push_back(static_cast<unsigned>(std::pow(static_cast<float>(i) / kMaximum, 1.0f / gamma) * kMaximum));
  }
  for (size_t i = 0; i < size.width * size.height; ++i) {
    for (size_t channel = 0; channel < std::min<size_t>(img::kFacts<format>.channels, 3); ++channel) {
      Pixels::Put(output, i, channel, table[Pixels::Get(input, i, channel)]);
    }
  }
}

// Rounds to the nearest, or half up. A fourth channel is copied.
template <img::PixelFormatId format, bool kToNearest>
void PlainColorCorrection(const uint8_t* input, const img::Size2D& size, const std::array<float, 9>& factors,
                          uint8_t* output) {
  using Pixels = PlainPixels<format>;
  constexpr img::FormatFacts kFormat = img::kFacts<format>;
  constexpr bool kBlueFirst = kFormat.pixelClass == img::PixelClass::BGR || kFormat.pixelClass == img::PixelClass::BGRa;
  constexpr size_t kRed = kBlueFirst ? 2 : 0;
  for (size_t i = 0; i < size.width * size.height; ++i) {
    const auto red = static_cast<float>(Pixels::Get(input, i, kRed));
    const auto green = static_cast<float>(Pixels::Get(input, i, 1));
    const auto blue = static_cast<float>(Pixels::Get(input, i, 2 - kRed));
    const auto value = [&](size_t line) {
      const float fromRed = factors[line] * red;
      const float fromGreen = factors[line + 1] * green;
      const float fromBlue = factors[line + 2] * blue;
      const float sum = kToNearest && kBlueFirst ? (fromBlue + fromGreen) + fromRed : (fromRed + fromGreen) + fromBlue;
      const float limited = std::clamp(kToNearest ? sum : sum + 0.5f, 0.0f, static_cast<float>(kFormat.maxValue));
      return static_cast<unsigned>(kToNearest ? std::lrint(limited) : static_cast<long>(limited));
    };
    Pixels::Put(output, i, kRed, value(0));
    Pixels::Put(output, i, 1, value(3));
    Pixels::Put(output, i, 2 - kRed, value(6));
    if constexpr (kFormat.channels == 4) Pixels::Put(output, i, 3, Pixels::Get(input, i, 3));
  }
}

struct PlainBinningFactors {
  size_t x;
  size_t y;
  bool isSum;
};

// size is that of the input, outputSize that of the output.
template <img::PixelFormatId format>
void PlainBinning(const uint8_t* input, const img::Size2D& size, const PlainBinningFactors& factors,
                  const img::Size2D& outputSize, uint8_t* output) {
  using Pixels = PlainPixels<format>;
  constexpr img::FormatFacts kFormat = img::kFacts<format>;
  constexpr size_t kStep = kFormat.IsBayered() ? 2 : 1;  // between pixels of a block
  for (size_t y = 0; y < outputSize.height; ++y) {
    for (size_t x = 0; x < outputSize.width; ++x) {
      const size_t left = x / kStep * kStep * factors.x + x % kStep;
      const size_t top = y / kStep * kStep * factors.y + y % kStep;
      for (size_t channel = 0; channel < std::min<size_t>(kFormat.channels, 3); ++channel) {
        size_t sum = 0;
        for (size_t j = 0; j < factors.y; ++j) {
          for (size_t i = 0; i < factors.x; ++i) {
            sum += Pixels::Get(input, (top + j * kStep) * size.width + left + i * kStep, channel);
          }
        }
        const size_t value = factors.isSum ? std::min<size_t>(sum, kFormat.maxValue) : sum / (factors.x * factors.y);
        Pixels::Put(output, y * outputSize.width + x, channel, static_cast<unsigned>(value));
      }
      if constexpr (kFormat.channels == 4) Pixels::Put(output, y * outputSize.width + x, 3, kFormat.maxValue);
    }
  }
}

}  // namespace korvel::benchmarks
