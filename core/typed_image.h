// The image of one format: the one implementation of IfcImage, and the parameter type of pixel code that is compiled
// for a format.
#pragma once

#include <memory>

#include "core/image.h"
#include "core/image_buffer.h"

namespace img {

template <PixelFormatId formatId>
class TImage final : public IfcImage {
 public:
  // An image over the whole of a buffer, which must not be null. Throws InvalidParameterUtilx if the buffer has
  // another format.
  explicit TImage(const std::shared_ptr<buffer::IfcImageBuffer>& imageBuffer);

  // An image over a rectangle of a buffer. Throws InvalidParameterUtilx if the buffer is null, smaller than the
  // rectangle or of another format.
  TImage(const Point2D& offset, const Size2D& size, const std::shared_ptr<buffer::IfcImageBuffer>& imageBuffer);

  uint8_t* PixelPointer(size_t x, size_t y) override;
  const uint8_t* PixelPointer(size_t x, size_t y) const override;
  const ImageArea& Area() const override { return area_; }
  size_t ByteCount() const override;
  size_t LineByteCount() const override;
  uint32_t PixelByteCount() const override { return kFacts<formatId>.PixelByteCount(); }
  uint32_t NumChannels() const override { return kFacts<formatId>.channels; }
  std::shared_ptr<buffer::IfcImageBuffer> Buffer() const override { return buffer_; }
  std::unique_ptr<IfcImage> Region(const Point2D& offset, const Size2D& size) override;
  PixelFormatId PixelFormat() const override { return formatId_; }
  uint32_t PixelStorageBits() const override { return kFacts<formatId>.pixelStorageBits; }
  std::unique_ptr<IfcImage> Clone() const override;
  std::unique_ptr<IfcImage> Clone(buffer::IfcBufferFactory& factory) const override;
  void SetSize(const Size2D& size) override { area_.size = size; }

 private:
  uint8_t* Address(size_t x, size_t y) const;

  ImageArea area_;  // relative to the buffer
  PixelFormatId formatId_ = formatId;
  std::shared_ptr<buffer::IfcImageBuffer> buffer_;
};

}  // namespace img
