// A matrix of colour factors applied to pixels, in plain code: the body of the simple path, and of the vector path
// where the processor has no vectors and at the pixels that fill none.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include "core/channel_accessor.h"
#include "core/pixel_format.h"
#include "processing/unaligned.h"

namespace img::processing {

// Line by line: new red from red, green and blue; new green; new blue.
using ColorFactors = std::array<float, 9>;

inline constexpr ColorFactors kIdentityFactors = {1.0f, 0.0f, 0.0f, 0.0f, 1.0f, 0.0f, 0.0f, 0.0f, 1.0f};

enum class Rounding {
  HalfUp,
  ToNearestEven,
  Down,
};

// The order in which the three products of a result are added. Sums in single precision depend on it.
enum class SumOrder {
  RedFirst,
  BlueFirst,
};

// A sum of products, ready for rounding. What is not a number becomes 0.
template <Rounding rounding>
float Limit(float sum, float maximum) {
  if constexpr (rounding == Rounding::HalfUp) sum += 0.5f;
  const float above = sum > 0.0f ? sum : 0.0f;
  return above < maximum ? above : maximum;
}

template <Rounding rounding>
int32_t Round(float limited) {
  if constexpr (rounding == Rounding::ToNearestEven) {
    // The larger number leaves no bits for a fraction, so that the addition rounds as the processor does.
    constexpr float kTwoTo23 = 8388608.0f;
    return static_cast<int32_t>((limited + kTwoTo23) - kTwoTo23);
  } else {
    return static_cast<int32_t>(limited);
  }
}

// The colours of a run of pixels, each for itself, so that compilers compute several pixels at a time. They stay
// limited numbers up to the store: limits and rounding in one loop would keep compilers from it.
template <PixelFormatId format>
class ColorBlock {
 public:
  static constexpr size_t kPixels = 256;

  void Load(const uint8_t* address, size_t count) {
    for (size_t i = 0; i < count; ++i) {
      if constexpr (kIsWord) {
        constexpr uint32_t kColors = (1u << 3 * kBits) - 1;
        const auto word = LoadSample<uint32_t>(address, i);
        red_[i] = static_cast<float>(static_cast<int32_t>(word >> kRed * kBits & kFormat.maxValue));
        green_[i] = static_cast<float>(static_cast<int32_t>(word >> kBits & kFormat.maxValue));
        blue_[i] = static_cast<float>(static_cast<int32_t>(word >> kBlue * kBits & kFormat.maxValue));
        rest_[i] = word & ~kColors;
      } else {
        const auto pixel = pixel_accessor::LoadPixel<format>(address + i * kFormat.PixelByteCount());
        red_[i] = static_cast<float>(Accessor::template Get<kRed>(pixel));
        green_[i] = static_cast<float>(Accessor::template Get<kGreen>(pixel));
        blue_[i] = static_cast<float>(Accessor::template Get<kBlue>(pixel));
        if constexpr (kFormat.channels == 4) rest_[i] = Accessor::template Get<3>(pixel);
      }
    }
  }

  template <Rounding rounding, SumOrder order>
  void Multiply(const ColorFactors& factors, size_t count) {
    const ColorFactors f = factors;
    for (size_t i = 0; i < count; ++i) {
      const float red = red_[i];
      const float green = green_[i];
      const float blue = blue_[i];
      const auto result = [&](size_t line) {
        const float fromRed = f[line] * red;
        const float fromGreen = f[line + 1] * green;
        const float fromBlue = f[line + 2] * blue;
        const float sum =
            order == SumOrder::RedFirst ? (fromRed + fromGreen) + fromBlue : (fromBlue + fromGreen) + fromRed;
        return Limit<rounding>(sum, static_cast<float>(kFormat.maxValue));
      };
      red_[i] = result(0);
      green_[i] = result(3);
      blue_[i] = result(6);
    }
  }

  template <Rounding rounding>
  void Store(uint8_t* address, size_t count) const {
    for (size_t i = 0; i < count; ++i) {
      const int32_t red = Round<rounding>(red_[i]);
      const int32_t green = Round<rounding>(green_[i]);
      const int32_t blue = Round<rounding>(blue_[i]);
      if constexpr (kIsWord) {
        StoreSample<uint32_t>(address, i,
                              rest_[i] | static_cast<uint32_t>(red) << kRed * kBits |
                                  static_cast<uint32_t>(green) << kBits | static_cast<uint32_t>(blue) << kBlue * kBits);
      } else {
        typename Accessor::PixelRepr pixel{};
        Accessor::template Set<kRed>(pixel, static_cast<Channel>(red));
        Accessor::template Set<kGreen>(pixel, static_cast<Channel>(green));
        Accessor::template Set<kBlue>(pixel, static_cast<Channel>(blue));
        if constexpr (kFormat.channels == 4) Accessor::template Set<3>(pixel, static_cast<Channel>(rest_[i]));
        pixel_accessor::StorePixel<format>(address + i * kFormat.PixelByteCount(), pixel);
      }
    }
  }

 private:
  using Accessor = pixel_accessor::ChannelAccessor<format>;
  using Channel = typename Accessor::ChannelType;

  static constexpr FormatFacts kFormat = kFacts<format>;
  static constexpr uint32_t kBits = kFormat.significantBits;
  // Three fields side by side in 32 bits, whatever the type of their channels.
  static constexpr bool kIsWord = kFormat.channels >= 3 && kFormat.pixelStorageBits == 32;
  static constexpr bool kIsBlueFirst = kFormat.pixelClass == PixelClass::BGR || kFormat.pixelClass == PixelClass::BGRa;
  // A mono pixel is all three colours, and becomes what is stored last: blue.
  static constexpr unsigned kRed = kFormat.channels == 1 ? 0 : kIsBlueFirst ? 2 : 0;
  static constexpr unsigned kGreen = kFormat.channels == 1 ? 0 : 1;
  static constexpr unsigned kBlue = kFormat.channels == 1 ? 0 : kIsBlueFirst ? 0 : 2;

  float red_[kPixels];
  float green_[kPixels];
  float blue_[kPixels];
  uint32_t rest_[kPixels];  // alpha, or the bits of a word beside its colours, which stay as they are
};

// in and out are the same or don't overlap.
template <PixelFormatId format, Rounding rounding, SumOrder order>
void CorrectPixels(const uint8_t* in, uint8_t* out, size_t count, const ColorFactors& factors) {
  using Block = ColorBlock<format>;
  for (size_t first = 0; first < count; first += Block::kPixels) {
    Block block;
    const size_t offset = first * kFacts<format>.PixelByteCount();
    const size_t length = std::min(Block::kPixels, count - first);
    block.Load(in + offset, length);
    block.template Multiply<rounding, order>(factors, length);
    block.template Store<rounding>(out + offset, length);
  }
}

}  // namespace img::processing
