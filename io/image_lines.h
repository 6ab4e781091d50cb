// The lines of an image as files hold them, for formats whose lines begin on whole bytes.
#pragma once

#include <cstddef>
#include <cstdint>

#include "core/image.h"
#include "core/image_buffer.h"

namespace img::io {

// Counts in 64 bits, where pixel pointers wrap at 4 GiB.
inline const uint8_t* LineOf(const IfcImage& image, size_t y) {
  return image.PixelPointer(0, 0) + y * image.Buffer()->LineByteCount();
}

inline uint8_t* LineOf(IfcImage& image, size_t y) {
  return image.PixelPointer(0, 0) + y * image.Buffer()->LineByteCount();
}

}  // namespace img::io
