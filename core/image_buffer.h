// The memory of an image as run-time code sees it, whoever owns the bytes, and the factory that makes such memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "core/geometry.h"
#include "core/pixel_format.h"

namespace img {
class IfcImage;
}

namespace img::buffer {

class IfcBufferFactory;

// All buffers live in a shared_ptr.
class IfcImageBuffer : public std::enable_shared_from_this<IfcImageBuffer> {
 public:
  IfcImageBuffer(const Size2D& size, PixelFormatId format) : size_(size), format_(format) {}
  IfcImageBuffer(const IfcImageBuffer&) = delete;
  IfcImageBuffer& operator=(const IfcImageBuffer&) = delete;
  virtual ~IfcImageBuffer() = default;

  virtual const Size2D& Size() const { return size_; }

  // Bytes of width * height pixels.
  virtual size_t ByteCount() const = 0;

  // First byte; null for a buffer without storage.
  virtual uint8_t* Data() const = 0;

  // Data() plus (x + y * width) times the format's pixel step. Intended: the offset is computed in 32 bits and wraps
  // at 4 GiB.
  virtual uint8_t* PixelPointer(size_t x, size_t y) const = 0;

  // A buffer of the same kind with its own memory.
  virtual std::shared_ptr<IfcImageBuffer> Clone() const = 0;

  // Hands the memory of a Bayer buffer over to a new buffer that reads it as another format of the same depth and
  // storage. Throws std::runtime_error if the formats don't allow that.
  virtual std::shared_ptr<IfcImageBuffer> ChangeFormat(PixelFormatId newFormat) = 0;

  // An image over the whole of this buffer, which it keeps alive.
  virtual std::unique_ptr<IfcImage> CreateImage() = 0;

  virtual PixelFormatId Format() const { return format_; }

  // Bytes of one line by itself, rounded up.
  virtual size_t LineByteCount() const = 0;

  // The factory that can make buffers like this one; may be null.
  virtual std::shared_ptr<IfcBufferFactory> Factory() const = 0;

  // Overwrites the size; memory stays as it is.
  virtual void SetSize(const Size2D& size) { size_ = size; }

 private:
  Size2D size_;
  PixelFormatId format_;
};

class IfcBufferFactory {
 public:
  IfcBufferFactory() = default;
  IfcBufferFactory(const IfcBufferFactory&) = delete;
  IfcBufferFactory& operator=(const IfcBufferFactory&) = delete;
  virtual ~IfcBufferFactory() = default;

  virtual std::shared_ptr<IfcImageBuffer> AllocBuffer(PixelFormatId format, const Size2D& size) = 0;
};

}  // namespace img::buffer
