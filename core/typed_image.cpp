#include "core/typed_image.h"

#include <algorithm>
#include <cstring>
#include <string>

#include "status/exceptions.h"

namespace img {
namespace {

// "img::TImage<img::PixelFormatId::X>", for the locations of failures.
template <PixelFormatId formatId>
std::string ClassName() {
  return "img::TImage<img::PixelFormatId::" + PixelFormatInfo_Name(formatId) + ">";
}

template <PixelFormatId formatId>
[[noreturn]] void ThrowInvalid(const std::string& function, const char* text) {
  korvel::internal::ThrowStatus<cfg_libimg::Modules::Default>(
      korvel::internal::ImgStatusCode::InvalidParameterUtilx,
      function + " [formatId = img::PixelFormatId::" + PixelFormatInfo_Name(formatId) + "]", text);
}

// Bytes from an address in a buffer to the buffer's end; 0 beyond it, and in a buffer that has lost its memory.
size_t BytesLeft(const buffer::IfcImageBuffer& imageBuffer, const uint8_t* address) {
  if (imageBuffer.Data() == nullptr) return 0;
  const auto offset = static_cast<size_t>(address - imageBuffer.Data());
  return offset < imageBuffer.ByteCount() ? imageBuffer.ByteCount() - offset : 0;
}

// Copies bytes between two images. The pixel pointers of bit streams don't lie where their pixels do, so that a part of
// such an image may reach beyond the memory: what lies there is left out.
void CopyBytes(IfcImage& to, const IfcImage& from, size_t line, size_t byteCount) {
  uint8_t* const target = to.PixelPointer(0, line);
  const uint8_t* const source = from.PixelPointer(0, line);
  const size_t left = std::min(BytesLeft(*to.Buffer(), target), BytesLeft(*from.Buffer(), source));
  if (left != 0) std::memcpy(target, source, std::min(byteCount, left));
}

constexpr const char* kWrongFormat = "Image buffer has wrong pixel format.";

}  // namespace

template <PixelFormatId formatId>
TImage<formatId>::TImage(const std::shared_ptr<buffer::IfcImageBuffer>& imageBuffer)
    : area_{{}, imageBuffer->Size()}, buffer_(imageBuffer) {
  if (imageBuffer->Format() != formatId) {
    ThrowInvalid<formatId>(ClassName<formatId>() + "::TImage(const std::shared_ptr<buffer::IfcImageBuffer> &)",
                           kWrongFormat);
  }
}

template <PixelFormatId formatId>
TImage<formatId>::TImage(const Point2D& offset, const Size2D& size,
                         const std::shared_ptr<buffer::IfcImageBuffer>& imageBuffer)
    : area_{offset, size}, buffer_(imageBuffer) {
  const char* failure = nullptr;
  if (!imageBuffer) {
    failure = "Invalid buffer set.";
  } else if (!FitsInto(imageBuffer->Size(), offset, size)) {
    failure = "Image buffer is to small.";
  } else if (imageBuffer->Format() != formatId) {
    failure = kWrongFormat;
  }
  if (failure != nullptr) {
    ThrowInvalid<formatId>(ClassName<formatId>() +
                               "::TImage(const img::Point2D &, const img::Size2D &, const "
                               "std::shared_ptr<buffer::IfcImageBuffer> &)",
                           failure);
  }
}

template <PixelFormatId formatId>
uint8_t* TImage<formatId>::Address(size_t x, size_t y) const {
  return buffer_->PixelPointer(0, y + area_.offset.y) + (x + area_.offset.x) * kFacts<formatId>.PixelByteCount();
}

template <PixelFormatId formatId>
uint8_t* TImage<formatId>::PixelPointer(size_t x, size_t y) {
  return Address(x, y);
}

template <PixelFormatId formatId>
const uint8_t* TImage<formatId>::PixelPointer(size_t x, size_t y) const {
  return Address(x, y);
}

template <PixelFormatId formatId>
size_t TImage<formatId>::ByteCount() const {
  return kFacts<formatId>.ByteCount(area_.size.width * area_.size.height);
}

template <PixelFormatId formatId>
size_t TImage<formatId>::LineByteCount() const {
  return kFacts<formatId>.ByteCount(area_.size.width);
}

template <PixelFormatId formatId>
std::unique_ptr<IfcImage> TImage<formatId>::Region(const Point2D& offset, const Size2D& size) {
  if (!FitsInto(area_.size, offset, size)) {
    ThrowInvalid<formatId>("virtual std::unique_ptr<IfcImage> " + ClassName<formatId>() +
                               "::Region(const img::Point2D &, const img::Size2D &)",
                           "Invalid region!");
  }
  return std::make_unique<TImage>(Point2D{offset.x + area_.offset.x, offset.y + area_.offset.y}, size, buffer_);
}

template <PixelFormatId formatId>
std::unique_ptr<IfcImage> TImage<formatId>::Clone() const {
  if (const std::shared_ptr<buffer::IfcBufferFactory> factory = buffer_->Factory()) return Clone(*factory);
  if (buffer_->ByteCount() != ByteCount()) return nullptr;
  const std::shared_ptr<buffer::IfcImageBuffer> copy = buffer_->Clone();
  return copy ? std::make_unique<TImage>(copy) : nullptr;
}

template <PixelFormatId formatId>
std::unique_ptr<IfcImage> TImage<formatId>::Clone(buffer::IfcBufferFactory& factory) const {
  auto clone = std::make_unique<TImage>(factory.AllocBuffer(formatId, area_.size));
  if (ByteCount() == 0) return clone;
  if (area_.size.width == buffer_->Size().width) {
    CopyBytes(*clone, *this, 0, ByteCount());
  } else {
    for (size_t y = 0; y < area_.size.height; ++y) CopyBytes(*clone, *this, y, LineByteCount());
  }
  return clone;
}

#define KORVEL_INSTANTIATE(name) template class TImage<PixelFormatId::name>;
KORVEL_FOR_EACH_PUBLIC_FORMAT_AND_INVALID(KORVEL_INSTANTIATE)
#undef KORVEL_INSTANTIATE

}  // namespace img
