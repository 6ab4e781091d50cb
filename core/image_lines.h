// The lines of an image whose pixels lie on whole bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "core/image.h"
#include "core/image_buffer.h"

namespace img {

// The lines of an image or of other memory. Addresses are computed in 64 bits, unlike those that an image gives, and so
// are exact beyond 4 GiB.
template <class Byte>
struct ImageLines {
  Byte* first;
  size_t step;  // bytes from one line to the next
  Size2D size;

  Byte* operator[](size_t y) const { return first + y * step; }
};

// No lines for an image without data.
template <class Image>
auto LinesOf(Image& image) {
  auto* first = image.PixelPointer(0, 0);
  const Size2D size = image.ByteCount() == 0 || first == nullptr ? Size2D{} : image.Area().size;
  return ImageLines<std::remove_pointer_t<decltype(first)>>{
      first, image.Buffer()->Size().width * image.PixelByteCount(), size};
}

}  // namespace img
