// What the buffers of one format share, whoever owns their memory. For the sources of this folder.
#pragma once

#include <cstdint>
#include <memory>

#include "core/format_dispatch.h"
#include "core/image_buffer.h"
#include "core/typed_image.h"

namespace img::buffer {

// The base is virtual, so that size and format exist once in a class that derives from this and from its storage.
template <PixelFormatId formatId>
class TIfcImageBuffer : public virtual IfcImageBuffer {
 public:
  size_t ByteCount() const override { return kFacts<formatId>.ByteCount(Size().width * Size().height); }

  uint8_t* PixelPointer(size_t x, size_t y) const override {
    // Intended: all of the offset is computed in 32 bits.
    const auto pixel = static_cast<uint32_t>(x + y * Size().width);
    return Data() + static_cast<uint32_t>(pixel * kFacts<formatId>.PixelByteCount());
  }

  std::unique_ptr<IfcImage> CreateImage() override { return std::make_unique<TImage<formatId>>(shared_from_this()); }

  size_t LineByteCount() const override { return kFacts<formatId>.ByteCount(Size().width); }
};

// Throws std::runtime_error, which names the first property in the way, if memory of the old format can't be read as
// the new one: the old must be Bayer, and channels, significant bits and storage bits must agree.
void RequireFormatChange(PixelFormatId oldFormat, PixelFormatId newFormat);

}  // namespace img::buffer

KORVEL_NAME_TYPE_FOR_DISPATCH(img::buffer::IfcImageBuffer, "img::buffer::IfcImageBuffer");
KORVEL_NAME_TYPE_FOR_DISPATCH(img::Size2D, "img::Size2D");
KORVEL_NAME_TYPE_FOR_DISPATCH(uint8_t*, "unsigned char *");
