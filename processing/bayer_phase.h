// Where the colours of a Bayer mosaic lie.
#pragma once

#include <cstddef>

#include "core/pixel_format.h"

namespace img::processing {

// The Bayer formats whose samples have an address of their own.
inline bool IsUnpackedBayer(PixelFormatId format) {
  return PixelFormatInfo_Type(format) == PixelType::Bayer && !PixelFormatInfo_IsPacked(format);
}

// The phase of a mosaic: the column and the line of red in the 2 by 2 cell at the top left. Blue lies diagonally
// opposite, green on the other two.
struct BayerPhase {
  size_t redColumn;
  size_t redLine;

  constexpr bool IsRedLine(size_t y) const { return y % 2 == redLine; }

  // The parity of the columns at which a line has its own colour.
  constexpr size_t OwnColumn(size_t y) const { return IsRedLine(y) ? redColumn : 1 - redColumn; }
};

constexpr BayerPhase PhaseOf(PixelClass pixelClass) {
  switch (pixelClass) {
    case PixelClass::BayerGR:
      return {1, 0};
    case PixelClass::BayerGB:
      return {0, 1};
    case PixelClass::BayerBG:
      return {1, 1};
    default:
      return {0, 0};
  }
}

// The unpacked class of a phase.
constexpr PixelClass ClassOf(BayerPhase phase) {
  constexpr PixelClass kClasses[2][2] = {{PixelClass::BayerRG, PixelClass::BayerGR},
                                         {PixelClass::BayerGB, PixelClass::BayerBG}};
  return kClasses[phase.redLine][phase.redColumn];
}

}  // namespace img::processing
