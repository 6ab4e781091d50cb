#include "processing/geometry/transformed_format.h"

#include "processing/bayer_phase.h"

namespace img::processing {
namespace {

// The place of a line or column, of the mosaic's two, once their order is reversed. It changes with an even count.
size_t Reversed(size_t place, size_t count) { return count % 2 == 0 ? 1 - place : place; }

template <class Move>
PixelFormatId WithMovedPhase(PixelFormatId format, const Move& move) {
  if (!IsUnpackedBayer(format)) return format;
  const PixelClass moved = ClassOf(move(PhaseOf(PixelFormatInfo_Class(format))));
  return PixelFormatInfo_FromClassAndBits(static_cast<int32_t>(moved),
                                          PixelFormatInfo_ComponentSignificantBits(format));
}

}  // namespace

PixelFormatId MirroredFormat(PixelFormatId format, const Size2D& size, MirrorDirection direction) {
  return WithMovedPhase(format, [&](BayerPhase phase) {
    if (direction != MirrorDirection::UpDown) phase.redColumn = Reversed(phase.redColumn, size.width);
    if (direction != MirrorDirection::LeftRight) phase.redLine = Reversed(phase.redLine, size.height);
    return phase;
  });
}

PixelFormatId RotatedFormat(PixelFormatId format, const Size2D& size, RotationAngle angle) {
  return WithMovedPhase(format, [&](BayerPhase phase) {
    // The last column becomes the first line, or the last line the first column.
    if (angle == RotationAngle::Degree90) return BayerPhase{phase.redLine, Reversed(phase.redColumn, size.width)};
    if (angle == RotationAngle::Degree270) return BayerPhase{Reversed(phase.redLine, size.height), phase.redColumn};
    return BayerPhase{Reversed(phase.redColumn, size.width), Reversed(phase.redLine, size.height)};
  });
}

}  // namespace img::processing
