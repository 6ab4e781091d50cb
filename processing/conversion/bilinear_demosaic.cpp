#include "processing/conversion/bilinear_demosaic.h"

#include <cstring>

namespace img::processing {

void CopyBorder(IfcImage& image) {
  const Size2D& size = image.Area().size;
  if (size.height >= 2) {
    const auto copyLine = [&](size_t to, size_t from) {
      std::memcpy(image.PixelPointer(0, to), image.PixelPointer(0, from), image.LineByteCount());
    };
    copyLine(size.height - 1, size.height - 2);
    copyLine(0, 1);
  }
  if (size.width >= 2) {
    const size_t pixel = image.PixelByteCount();
    for (size_t y = 0; y < size.height; ++y) {
      uint8_t* const line = image.PixelPointer(0, y);
      std::memcpy(line, line + pixel, pixel);
      std::memcpy(line + (size.width - 1) * pixel, line + (size.width - 2) * pixel, pixel);
    }
  }
}

}  // namespace img::processing
