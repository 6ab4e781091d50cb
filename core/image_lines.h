// The lines of an image whose pixels lie on whole bytes.
#pragma once

#include <cstddef>
#include <cstdint>

#include "core/image.h"
#include "core/image_buffer.h"

namespace img {

// Addresses are computed in 64 bits, unlike those that an image gives, and so are exact in images above 4 GiB.
template <class Byte>
class ImageLines {
 public:
  ImageLines(Byte* first, size_t step) : first_(first), step_(step) {}
  Byte* operator[](size_t y) const { return first_ + y * step_; }

 private:
  Byte* first_;
  size_t step_;
};

inline ImageLines<uint8_t> LinesOf(IfcImage& image) {
  return {image.PixelPointer(0, 0), image.Buffer()->Size().width * image.PixelByteCount()};
}

inline ImageLines<const uint8_t> LinesOf(const IfcImage& image) {
  return {image.PixelPointer(0, 0), image.Buffer()->Size().width * image.PixelByteCount()};
}

}  // namespace img
