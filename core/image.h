// An image as run-time code sees it: a view of a rectangle of an image buffer, whatever its format.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "core/geometry.h"
#include "core/pixel_format.h"

namespace img {

namespace buffer {
class IfcBufferFactory;
class IfcImageBuffer;
}  // namespace buffer

// An image is made for one operation and used by one thread; its buffer is what lasts. Two images over one buffer see
// each other's pixels.
class IfcImage {
 public:
  virtual ~IfcImage() = default;

  // Address of a pixel, relative to the image's own area. Neither argument is checked; x may be the width, which gives
  // the end of the line. Exact only where pixels begin on whole bytes: code that works on a bit stream starts at (0, 0)
  // and walks ByteCount() bytes.
  virtual uint8_t* PixelPointer(size_t x, size_t y) = 0;
  virtual const uint8_t* PixelPointer(size_t x, size_t y) const = 0;

  virtual const ImageArea& Area() const = 0;

  // Bytes of the area's pixels, and of one line of them. For bit streams each is rounded up to a whole byte by itself,
  // so height times LineByteCount may exceed ByteCount.
  virtual size_t ByteCount() const = 0;
  virtual size_t LineByteCount() const = 0;
  virtual uint32_t PixelByteCount() const = 0;

  virtual uint32_t NumChannels() const = 0;
  virtual std::shared_ptr<buffer::IfcImageBuffer> Buffer() const = 0;

  // A view of a part of this image. Throws InvalidParameterUtilx, "Invalid region!", if the part exceeds it.
  virtual std::unique_ptr<IfcImage> Region(const Point2D& offset, const Size2D& size) = 0;

  virtual PixelFormatId PixelFormat() const = 0;
  virtual uint32_t PixelStorageBits() const = 0;

  // A copy in new memory: from the buffer's own factory, or of the whole buffer where it has none. Null for a part of
  // a buffer without a factory.
  virtual std::unique_ptr<IfcImage> Clone() const = 0;
  virtual std::unique_ptr<IfcImage> Clone(buffer::IfcBufferFactory& factory) const = 0;

  // Overwrites the area's size, unchecked; the buffer stays as it is.
  virtual void SetSize(const Size2D& size) = 0;
};

}  // namespace img
