// The operations of the conversion modules, one pixel after the other from their formulas, without a thought of speed:
// what a kernel has to beat. They leave out borders that a rule of their own governs.
//
// All have one form: input and output hold an image of the template's formats and of the given size, aligned for their
// samples. Mosaics have red at the top left.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "core/geometry.h"
#include "core/pixel_format.h"

namespace korvel::benchmarks {

using PlainKernel = void (*)(const uint8_t* input, const img::Size2D& size, uint8_t* output);

template <img::PixelFormatId format>
using PlainSample = std::conditional_t<img::kFacts<format>.storageBits == 8, uint8_t, uint16_t>;

template <img::PixelFormatId format>
void PlainCopy(const uint8_t* input, const img::Size2D& size, uint8_t* output) {
  std::memcpy(output, input, img::kFacts<format>.ByteCount(size.width * size.height));
}

template <img::PixelFormatId in, img::PixelFormatId out>
void PlainExtend(const uint8_t* input, const img::Size2D& size, uint8_t* output) {
  using Sample = PlainSample<in>;
  const auto* const source = reinterpret_cast<const Sample*>(input);
  auto* target = reinterpret_cast<Sample*>(output);
  for (size_t i = 0; i < size.width * size.height; ++i) {
    for (int channel = 0; channel < 3; ++channel) *target++ = source[i];
    if (img::kFacts<out>.channels == 4) *target++ = 255;
  }
}

// Of three channels, the first and the last are exchanged; of four, the first three change places in a round.
template <img::PixelFormatId format>
void PlainFlip(const uint8_t* input, const img::Size2D& size, uint8_t* output) {
  using Sample = PlainSample<format>;
  constexpr size_t kChannels = img::kFacts<format>.channels;
  for (size_t i = 0; i < size.width * size.height; ++i) {
    const auto* const source = reinterpret_cast<const Sample*>(input) + i * kChannels;
    auto* const target = reinterpret_cast<Sample*>(output) + i * kChannels;
    target[0] = source[2];
    target[1] = kChannels == 4 ? source[0] : source[1];
    target[2] = kChannels == 4 ? source[1] : source[0];
    if (kChannels == 4) target[3] = source[3];
  }
}

template <img::PixelFormatId in, img::PixelFormatId out>
void PlainDepth(const uint8_t* input, const img::Size2D& size, uint8_t* output) {
  constexpr unsigned kFrom = img::kFacts<in>.significantBits;
  constexpr unsigned kTo = img::kFacts<out>.significantBits;
  const auto* const source = reinterpret_cast<const PlainSample<in>*>(input);
  auto* const target = reinterpret_cast<PlainSample<out>*>(output);
  for (size_t i = 0; i < size.width * size.height * img::kFacts<in>.channels; ++i) {
    const unsigned value = source[i];
    target[i] = static_cast<PlainSample<out>>(kFrom < kTo ? value << (kTo - kFrom) : value >> (kFrom - kTo));
  }
}

// Sample i of a packed stream.
template <img::PixelFormatId format>
unsigned PackedSample(const uint8_t* stream, size_t i) {
  constexpr img::FormatFacts kFormat = img::kFacts<format>;
  constexpr unsigned kBits = kFormat.significantBits;
  if (kFormat.layout == img::PixelLayout::Mipi) {
    constexpr size_t kGroup = kBits == 10 ? 4 : 2;
    const uint8_t* const group = stream + i / kGroup * (kGroup + 1);
    const unsigned low = group[kGroup] >> (i % kGroup * (kBits - 8)) & ((1u << (kBits - 8)) - 1);
    return unsigned{group[i % kGroup]} << (kBits - 8) | low;
  }
  const size_t bit = kFormat.layout == img::PixelLayout::Word32 ? i / 3 * 32 + i % 3 * 10 : i * kBits;
  return (stream[bit / 8] | unsigned{stream[bit / 8 + 1]} << 8) >> bit % 8 & kFormat.maxValue;
}

template <img::PixelFormatId format>
void PlainUnpack(const uint8_t* input, const img::Size2D& size, uint8_t* output) {
  auto* const target = reinterpret_cast<uint16_t*>(output);
  for (size_t i = 0; i < size.width * size.height * img::kFacts<format>.channels; ++i) {
    target[i] = static_cast<uint16_t>(PackedSample<format>(input, i));
  }
}

// An RG mosaic.
template <class Sample>
struct PlainMosaic {
  const Sample* samples;
  img::Size2D size;

  int operator()(size_t x, size_t y) const { return samples[y * size.width + x]; }
  static bool IsRed(size_t x, size_t y) { return x % 2 == 0 && y % 2 == 0; }
  static bool IsBlue(size_t x, size_t y) { return x % 2 == 1 && y % 2 == 1; }
  static bool IsRedLine(size_t y) { return y % 2 == 0; }
};

struct PlainColour {
  int red;
  int green;
  int blue;
};

template <img::PixelFormatId out>
void PutColour(const PlainColour& colour, size_t index, uint8_t* output) {
  constexpr img::FormatFacts kFormat = img::kFacts<out>;
  if constexpr (kFormat.layout == img::PixelLayout::Word32) {
    reinterpret_cast<uint32_t*>(output)[index] = static_cast<uint32_t>(colour.red) |
                                                 static_cast<uint32_t>(colour.green) << 10 |
                                                 static_cast<uint32_t>(colour.blue) << 20;
  } else if constexpr (kFormat.channels == 1) {
    const float luminance = (0.299f * static_cast<float>(colour.red) + 0.587f * static_cast<float>(colour.green)) +
                            0.114f * static_cast<float>(colour.blue);
    output[index] = static_cast<uint8_t>(luminance);
  } else {
    using Sample = PlainSample<out>;
    constexpr bool kIsBlueFirst =
        kFormat.pixelClass == img::PixelClass::BGR || kFormat.pixelClass == img::PixelClass::BGRa;
    auto* const pixel = reinterpret_cast<Sample*>(output) + index * kFormat.channels;
    pixel[0] = static_cast<Sample>(kIsBlueFirst ? colour.blue : colour.red);
    pixel[1] = static_cast<Sample>(colour.green);
    pixel[2] = static_cast<Sample>(kIsBlueFirst ? colour.red : colour.blue);
    if constexpr (kFormat.channels == 4) pixel[3] = static_cast<Sample>(kFormat.maxValue);
  }
}

// Gives every pixel at least margin pixels from the border the colour that colourAt(mosaic, x, y) finds. Mono8 gets the
// colour's luminance.
template <img::PixelFormatId in, img::PixelFormatId out, class ColourAt>
void PlainDemosaic(const uint8_t* input, const img::Size2D& size, uint8_t* output, size_t margin, ColourAt colourAt) {
  const PlainMosaic<PlainSample<in>> mosaic{reinterpret_cast<const PlainSample<in>*>(input), size};
  for (size_t y = margin; y + margin < size.height; ++y) {
    for (size_t x = margin; x + margin < size.width; ++x) {
      PutColour<out>(colourAt(mosaic, x, y), y * size.width + x, output);
    }
  }
}

// The mean of the neighbours that have the colour. Margin 1.
template <img::PixelFormatId in, img::PixelFormatId out>
void PlainDemosaic3x3(const uint8_t* input, const img::Size2D& size, uint8_t* output) {
  PlainDemosaic<in, out>(input, size, output, 1, [](const auto& m, size_t x, size_t y) {
    const int cross = (m(x, y - 1) + m(x, y + 1) + m(x - 1, y) + m(x + 1, y)) / 4;
    const int diagonal = (m(x - 1, y - 1) + m(x + 1, y - 1) + m(x - 1, y + 1) + m(x + 1, y + 1)) / 4;
    const int horizontal = (m(x - 1, y) + m(x + 1, y)) / 2;
    const int vertical = (m(x, y - 1) + m(x, y + 1)) / 2;
    if (m.IsRed(x, y)) return PlainColour{m(x, y), cross, diagonal};
    if (m.IsBlue(x, y)) return PlainColour{diagonal, cross, m(x, y)};
    if (m.IsRedLine(y)) return PlainColour{horizontal, m(x, y), vertical};
    return PlainColour{vertical, m(x, y), horizontal};
  });
}

// The linear filters. Margin 2.
template <img::PixelFormatId in, img::PixelFormatId out>
void PlainDemosaic5x5(const uint8_t* input, const img::Size2D& size, uint8_t* output) {
  PlainDemosaic<in, out>(input, size, output, 2, [](const auto& m, size_t x, size_t y) {
    const auto clip = [](int value) { return std::clamp(value, 0, static_cast<int>(img::kFacts<in>.maxValue)); };
    const int here = m(x, y);
    const int cross = m(x, y - 1) + m(x, y + 1) + m(x - 1, y) + m(x + 1, y);
    const int diagonal = m(x - 1, y - 1) + m(x + 1, y - 1) + m(x - 1, y + 1) + m(x + 1, y + 1);
    const int farHorizontal = m(x - 2, y) + m(x + 2, y);
    const int farVertical = m(x, y - 2) + m(x, y + 2);
    const int far = farHorizontal + farVertical;
    const int green = clip((4 * here + 2 * cross - far) / 8);
    const int opposite = clip((12 * here + 4 * diagonal - 3 * far) / 16);
    const int alongLine =
        clip((10 * here + 8 * (m(x - 1, y) + m(x + 1, y)) - 2 * (diagonal + farHorizontal) + farVertical) / 16);
    const int alongColumn =
        clip((10 * here + 8 * (m(x, y - 1) + m(x, y + 1)) - 2 * (diagonal + farVertical) + farHorizontal) / 16);
    if (m.IsRed(x, y)) return PlainColour{here, green, opposite};
    if (m.IsBlue(x, y)) return PlainColour{opposite, green, here};
    if (m.IsRedLine(y)) return PlainColour{alongLine, here, alongColumn};
    return PlainColour{alongColumn, here, alongLine};
  });
}

// Bilinear, half a pixel to the right and below. Margin 2.
template <img::PixelFormatId in, img::PixelFormatId out>
void PlainClassic(const uint8_t* input, const img::Size2D& size, uint8_t* output) {
  PlainDemosaic<in, out>(input, size, output, 2, [](const auto& m, size_t x, size_t y) {
    const auto plane = [&](size_t column, size_t line) {
      const bool isOnColumn = x % 2 == column;
      const bool isOnLine = y % 2 == line;
      const size_t nearX = isOnColumn ? x : x + 1;
      const size_t farX = isOnColumn ? x + 2 : x - 1;
      const size_t nearY = isOnLine ? y : y + 1;
      const size_t farY = isOnLine ? y + 2 : y - 1;
      return (9 * m(nearX, nearY) + 3 * m(farX, nearY) + 3 * m(nearX, farY) + m(farX, farY)) / 16;
    };
    const bool isGreen = x % 2 != y % 2;
    const int green = isGreen ? (m(x, y) + m(x + 1, y + 1)) / 2 : (m(x + 1, y) + m(x, y + 1)) / 2;
    return PlainColour{plane(0, 0), green, plane(1, 1)};
  });
}

// Weighted 2 by 2 blocks. Margin 1 at the right and below.
template <img::PixelFormatId in, img::PixelFormatId out>
void PlainMono2x2(const uint8_t* input, const img::Size2D& size, uint8_t* output) {
  using Sample = PlainSample<in>;
  const auto* const samples = reinterpret_cast<const Sample*>(input);
  auto* const target = reinterpret_cast<Sample*>(output);
  const auto weighted = [&](size_t x, size_t y) {
    const unsigned weight = x % 2 == y % 2 ? 293 : (x % 2 == 1 ? 299 : 114);
    return weight * samples[y * size.width + x];
  };
  for (size_t y = 0; y + 1 < size.height; ++y) {
    for (size_t x = 0; x + 1 < size.width; ++x) {
      const unsigned sum = weighted(x, y) + weighted(x + 1, y) + weighted(x, y + 1) + weighted(x + 1, y + 1);
      target[y * size.width + x] = static_cast<Sample>(std::min(sum / 999, img::kFacts<in>.maxValue));
    }
  }
}

}  // namespace korvel::benchmarks
