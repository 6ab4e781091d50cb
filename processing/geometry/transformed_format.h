// What mirroring and rotation do to a Bayer format: pixels stay raw while the mosaic's phase moves with them.
#pragma once

#include <cstdint>

#include "core/geometry.h"
#include "core/pixel_format.h"

namespace img::processing {

enum class MirrorDirection : uint32_t { LeftRight = 1, UpDown = 2, UpDownLeftRight = 3 };

// In degrees, counter-clockwise.
enum class RotationAngle : uint16_t { Degree90 = 90, Degree180 = 180, Degree270 = 270 };

// The format of an image of that format and size after mirroring or rotation. Other formats than unpacked Bayer stay.
PixelFormatId MirroredFormat(PixelFormatId format, const Size2D& size, MirrorDirection direction);
PixelFormatId RotatedFormat(PixelFormatId format, const Size2D& size, RotationAngle angle);

}  // namespace img::processing
