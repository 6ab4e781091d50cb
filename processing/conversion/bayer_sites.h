// The Bayer mosaic: where its colours lie, the walk over the sites of a line, and the bilinear rule for one site.
//
// A line of a mosaic holds one colour besides green: red lines and blue lines alternate, and in each the colour's own
// sites alternate with green. Everything here speaks of the line's own colour and of the other one, so that red and
// blue lines share their code.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "core/channel_accessor.h"
#include "core/pixel_format.h"
#include "processing/bayer_phase.h"
#include "processing/conversion/colour_layout.h"
#include "processing/unaligned.h"

namespace img::processing {

template <PixelFormatId formatId>
using SampleOf = typename pixel_accessor::ChannelAccessor<formatId>::ChannelType;

// A line's samples, from memory without alignment.
template <class Sample>
class SampleLine {
 public:
  explicit SampleLine(const uint8_t* line) : line_(line) {}
  int32_t operator[](size_t x) const { return LoadSample<Sample>(line_, x); }

 private:
  const uint8_t* line_;
};

// A pixel with all its colours.
struct SiteColour {
  int32_t own;  // the colour of the line: red on a red line
  int32_t green;
  int32_t other;  // blue on a red line
};

// Three lines around a site, and the bilinear rule: what a site lacks is the mean of its nearest neighbours of that
// colour. Means truncate. Sites at the border of the image lack some of them.
template <class Sample>
struct BilinearRule {
  using SampleType = Sample;

  SampleLine<Sample> above;
  SampleLine<Sample> here;
  SampleLine<Sample> below;

  SiteColour AtOwn(size_t x) const {
    return {here[x], (above[x] + below[x] + here[x - 1] + here[x + 1]) >> 2,
            (above[x - 1] + above[x + 1] + below[x - 1] + below[x + 1]) >> 2};
  }

  SiteColour AtGreen(size_t x) const { return {(here[x - 1] + here[x + 1]) >> 1, here[x], (above[x] + below[x]) >> 1}; }
};

// Gives the colours of columns first to last - 1 of a line to store(x, colour). rule has the colours that a site takes
// if it has the line's own colour, AtOwn(x), and if it is green, AtGreen(x).
//
// Both are computed for every column, a block at a time into local memory, and a mask picks one: without a question in
// the loop, and without stores that could change what it reads, compilers turn it into vector code.
template <class Rule, class Store>
void ForEachSite(const Rule& rule, size_t ownColumn, size_t first, size_t last, Store&& store) {
  using Sample = typename Rule::SampleType;
  constexpr size_t kBlock = 128;
  const Rule lines = rule;
  for (size_t begin = first; begin < last; begin += kBlock) {
    const size_t count = std::min(kBlock, last - begin);
    const auto isOwnOdd = static_cast<uint32_t>((begin + ownColumn) % 2);
    Sample own[kBlock];
    Sample green[kBlock];
    Sample other[kBlock];
    for (uint32_t i = 0; i < count; ++i) {
      const SiteColour atOwn = lines.AtOwn(begin + i);
      const SiteColour atGreen = lines.AtGreen(begin + i);
      const int32_t isGreen = -static_cast<int32_t>((i ^ isOwnOdd) & 1);  // all bits or none
      const auto pick = [isGreen](int32_t a, int32_t b) { return static_cast<Sample>(a ^ ((a ^ b) & isGreen)); };
      own[i] = pick(atOwn.own, atGreen.own);
      green[i] = pick(atOwn.green, atGreen.green);
      other[i] = pick(atOwn.other, atGreen.other);
    }
    for (size_t i = 0; i < count; ++i) store(begin + i, SiteColour{own[i], green[i], other[i]});
  }
}

constexpr bool IsBlueFirst(const FormatFacts& colour) {
  return colour.pixelClass == PixelClass::BGR || colour.pixelClass == PixelClass::BGRa ||
         colour.pixelClass == PixelClass::BGR10p32;
}

constexpr ColourLayout ColourLayoutOf(const FormatFacts& colour) {
  if (colour.layout == PixelLayout::Word32) return ColourLayout::Word32;
  if (colour.storageBits == 8) return colour.channels == 3 ? ColourLayout::Bytes3 : ColourLayout::Bytes4;
  return colour.channels == 3 ? ColourLayout::Words3 : ColourLayout::Words4;
}

// Writes a pixel of a colour format. Alpha is the maximum of the depth. kKeepUnusedBits leaves the bits of a 32-bit
// word that carry nothing as they were; otherwise they become 0.
template <PixelFormatId format, bool kRedLine, bool kKeepUnusedBits>
void StoreColour(uint8_t* address, const SiteColour& colour) {
  using Accessor = pixel_accessor::ChannelAccessor<format>;
  using Channel = typename Accessor::ChannelType;
  constexpr FormatFacts kFormat = kFacts<format>;
  // The line's own colour comes first in the pixel where both are red or both are blue.
  constexpr unsigned kOwnChannel = kRedLine == IsBlueFirst(kFormat) ? 2 : 0;

  typename Accessor::PixelRepr pixel{};
  if constexpr (kKeepUnusedBits && kFormat.layout == PixelLayout::Word32) {
    pixel = pixel_accessor::LoadPixel<format>(address);
  }
  Accessor::template Set<kOwnChannel>(pixel, static_cast<Channel>(colour.own));
  Accessor::template Set<1>(pixel, static_cast<Channel>(colour.green));
  Accessor::template Set<2 - kOwnChannel>(pixel, static_cast<Channel>(colour.other));
  if constexpr (kFormat.channels == 4) Accessor::template Set<3>(pixel, static_cast<Channel>(kFormat.maxValue));
  pixel_accessor::StorePixel<format>(address, pixel);
}

// Writes the colours that a rule gives to columns first to last - 1 of an output line, whose line in the mosaic is red
// or blue. Bits of a 32-bit word that carry nothing stay as they were.
template <PixelFormatId formatIdOutput, class Rule>
void StoreSites(const Rule& rule, BayerPhase phase, size_t y, size_t first, size_t last, uint8_t* line) {
  const auto walk = [&]<bool kRedLine>(std::bool_constant<kRedLine>) {
    ForEachSite(rule, phase.OwnColumn(y), first, last, [line](size_t x, const SiteColour& colour) {
      StoreColour<formatIdOutput, kRedLine, true>(line + x * kFacts<formatIdOutput>.PixelByteCount(), colour);
    });
  };
  if (phase.IsRedLine(y)) {
    walk(std::true_type{});
  } else {
    walk(std::false_type{});
  }
}

}  // namespace img::processing
