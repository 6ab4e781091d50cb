// The image that a file's pixels are read into.
#pragma once

#include <memory>
#include <optional>

#include "core/geometry.h"
#include "core/image.h"
#include "core/image_buffer.h"
#include "core/memory_limit.h"
#include "io/io_failure.h"

namespace img::io {

// Throws Io, "Error reading file.", if byteCount exceeds the limit of all allocations, or has no value because it
// doesn't fit 64 bits. Called before memory is taken by what a file claims.
inline void RequireReadable(std::optional<size_t> byteCount, const char* location) {
  if (!byteCount || *byteCount > LargestAllocation()) {
    ThrowIo(korvel::internal::ImgStatusCode::Io, location, kCannotRead);
  }
}

// Null if the factory's buffer makes no image.
inline std::unique_ptr<IfcImage> AllocImage(buffer::IfcBufferFactory& factory, PixelFormatId format,
                                            const Size2D& size) {
  const std::shared_ptr<buffer::IfcImageBuffer> imageBuffer = factory.AllocBuffer(format, size);
  return imageBuffer ? imageBuffer->CreateImage() : nullptr;
}

}  // namespace img::io
