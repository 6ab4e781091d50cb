// The bilinear demosaic of a whole image, for the sources of the demosaic families.
#pragma once

#include "core/image.h"
#include "processing/conversion/bayer_sites.h"

namespace img::processing {

// Makes the outermost lines and columns copies of those next to them: the last line, the first, the first column, the
// last.
void CopyBorder(IfcImage& image);

// An image of two lines has no line with neighbours on both sides. Its pixels take the colours of the 2 by 2 cell that
// ends with their column.
template <PixelFormatId formatIdOutput>
void DemosaicFirstOfTwoLines(const IfcImage& input, IfcImage& output, BayerPhase phase) {
  using Line = SampleLine<SampleOf<formatIdOutput>>;
  const Line redLine(input.PixelPointer(0, phase.redLine));
  const Line blueLine(input.PixelPointer(0, 1 - phase.redLine));
  uint8_t* const target = output.PixelPointer(0, 0);
  for (size_t x = 1; x + 1 < input.Area().size.width; ++x) {
    const size_t redColumn = x % 2 == phase.redColumn ? x : x - 1;
    const size_t blueColumn = redColumn == x ? x - 1 : x;
    const SiteColour colour{redLine[redColumn], (redLine[blueColumn] + blueLine[redColumn]) >> 1, blueLine[blueColumn]};
    StoreColour<formatIdOutput, true, true>(target + x * kFacts<formatIdOutput>.PixelByteCount(), colour);
  }
}

// The bilinear rule on columns first to last - 1 of line y. Neither the line nor a column may be the image's first or
// last.
template <PixelFormatId formatIdOutput>
void DemosaicBilinear(const IfcImage& input, IfcImage& output, BayerPhase phase, size_t y, size_t first, size_t last) {
  using Sample = SampleOf<formatIdOutput>;
  const BilinearRule<Sample> rule{SampleLine<Sample>(input.PixelPointer(0, y - 1)),
                                  SampleLine<Sample>(input.PixelPointer(0, y)),
                                  SampleLine<Sample>(input.PixelPointer(0, y + 1))};
  StoreSites<formatIdOutput>(rule, phase, y, first, last, output.PixelPointer(0, y));
}

// The whole image: the bilinear rule inside, and a border copied from there. Pixels that no rule reaches (in images of
// width 2 or less, or of height 1) keep what the output's memory held.
template <PixelFormatId formatIdOutput>
void Demosaic3x3(const IfcImage& input, IfcImage& output, BayerPhase phase) {
  const Size2D& size = input.Area().size;
  if (size.height == 2) {
    DemosaicFirstOfTwoLines<formatIdOutput>(input, output, phase);
  } else if (size.width >= 3) {
    for (size_t y = 1; y + 1 < size.height; ++y) {
      DemosaicBilinear<formatIdOutput>(input, output, phase, y, 1, size.width - 1);
    }
  }
  CopyBorder(output);
}

}  // namespace img::processing
