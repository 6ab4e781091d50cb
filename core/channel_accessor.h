// Where the channels of one pixel lie, for code that is compiled for a format.
//
//   format                         memory image of a pixel          channels
//   8 bits per channel             1, 3 or 4 bytes                  one byte each, in the order of the name
//   10 and 12 bits, unpacked       1, 3 or 4 little-endian words    one word each, value in the low bits
//   RGB10p32, BGR10p32             one little-endian 32-bit word    bits 0 to 9, 10 to 19, 20 to 29
//   10p, 12p, 10g40, 12g24         none: unpack the stream first
#pragma once

#include <array>
#include <cstdint>
#include <cstring>
#include <string>
#include <type_traits>

#include "core/pixel_format.h"
#include "status/exceptions.h"

namespace img::pixel_accessor {
namespace detail {

[[noreturn]] void ThrowNotAddressable(std::string_view formatName, const char* function, unsigned channel);

template <PixelFormatId pixelFormat>
struct PixelTypes {
  static constexpr FormatFacts kFormat = kFacts<pixelFormat>;

  using ChannelType = std::conditional_t<kFormat.storageBits == 8, uint8_t, uint16_t>;
  using PixelRepr = std::conditional_t<
      kFormat.layout == PixelLayout::Word32, uint32_t,
      std::conditional_t<kFormat.channels == 1, ChannelType, std::array<ChannelType, kFormat.channels>>>;
};

template <class PixelRepr>
inline constexpr bool kIsArrayOfThree = false;
template <class ChannelType>
inline constexpr bool kIsArrayOfThree<std::array<ChannelType, 3>> = true;

}  // namespace detail

// Get and Set are resolved at compile time and inline to a load or a store.
template <PixelFormatId pixelFormat>
class ChannelAccessor {
 public:
  // Unsigned integer that holds a channel.
  using ChannelType = typename detail::PixelTypes<pixelFormat>::ChannelType;
  // The memory image of one pixel. Pixels in memory have no alignment: use LoadPixel and StorePixel.
  using PixelRepr = typename detail::PixelTypes<pixelFormat>::PixelRepr;

  template <unsigned channel>
  static ChannelType Get(const PixelRepr& pixel) {
    static_assert(channel < kFormat.channels);
    if constexpr (!kAddressable) {
      detail::ThrowNotAddressable(kFormat.name, "Get", channel);
    } else if constexpr (kFormat.layout == PixelLayout::Word32) {
      return static_cast<ChannelType>(pixel >> (channel * kFormat.significantBits) & kFormat.maxValue);
    } else if constexpr (kFormat.channels == 1) {
      return pixel;
    } else {
      return pixel[channel];
    }
  }

  // In 32-bit words a value is cut to the channel's bits, and the bits that carry nothing stay as they were.
  template <unsigned channel>
  static void Set(PixelRepr& pixel, ChannelType value) {
    static_assert(channel < kFormat.channels);
    if constexpr (!kAddressable) {
      detail::ThrowNotAddressable(kFormat.name, "Set", channel);
    } else if constexpr (kFormat.layout == PixelLayout::Word32) {
      constexpr unsigned shift = channel * kFormat.significantBits;
      pixel = (pixel & ~(kFormat.maxValue << shift)) | (value & kFormat.maxValue) << shift;
    } else if constexpr (kFormat.channels == 1) {
      pixel = value;
    } else {
      pixel[channel] = value;
    }
  }

 private:
  static constexpr FormatFacts kFormat = kFacts<pixelFormat>;
  static constexpr bool kAddressable = pixelFormat != PixelFormatId::Invalid && !kFormat.IsBitStream();
};

// A pixel from and to memory of any alignment. The channels of a pixel of three are copied one by one: compilers put a
// copy of all three together on the stack, which is slow to read back.
template <PixelFormatId pixelFormat>
typename ChannelAccessor<pixelFormat>::PixelRepr LoadPixel(const uint8_t* address) {
  typename ChannelAccessor<pixelFormat>::PixelRepr pixel;
  if constexpr (detail::kIsArrayOfThree<decltype(pixel)>) {
    for (size_t i = 0; i < 3; ++i) std::memcpy(&pixel[i], address + i * sizeof pixel[i], sizeof pixel[i]);
  } else {
    std::memcpy(&pixel, address, sizeof pixel);
  }
  return pixel;
}

template <PixelFormatId pixelFormat>
void StorePixel(uint8_t* address, const typename ChannelAccessor<pixelFormat>::PixelRepr& pixel) {
  if constexpr (detail::kIsArrayOfThree<std::remove_cvref_t<decltype(pixel)>>) {
    for (size_t i = 0; i < 3; ++i) std::memcpy(address + i * sizeof pixel[i], &pixel[i], sizeof pixel[i]);
  } else {
    std::memcpy(address, &pixel, sizeof pixel);
  }
}

}  // namespace img::pixel_accessor
