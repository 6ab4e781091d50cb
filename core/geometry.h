// Sizes, positions and areas of images, in pixels, and the bytes that an image takes.
#pragma once

#include <cstddef>
#include <optional>

#include "core/pixel_format.h"

namespace img {

struct Size2D {
  size_t width = 0;
  size_t height = 0;

  bool operator==(const Size2D&) const = default;
};

struct Point2D {
  size_t x = 0;
  size_t y = 0;

  bool operator==(const Point2D&) const = default;
};

struct ImageArea {
  Point2D offset;
  Size2D size;

  bool operator==(const ImageArea&) const = default;
};

// What an image is without its pixels.
struct ImageFormat {
  ImageArea area;
  PixelFormatId format = PixelFormatId::Invalid;

  bool operator==(const ImageFormat&) const = default;
};

// True if the rectangle lies within the limits; no sum wraps.
constexpr bool FitsInto(const Size2D& limits, const Point2D& offset, const Size2D& size) {
  return offset.x <= limits.width && size.width <= limits.width - offset.x && offset.y <= limits.height &&
         size.height <= limits.height - offset.y;
}

// Bytes of width * height pixels; nothing if they, or the sum that gives them, don't fit 64 bits. Whoever takes memory
// for an image asks here, since PixelFormatInfo_CalcSizeOfPixels wraps.
constexpr std::optional<size_t> CheckedByteCount(const FormatFacts& facts, const Size2D& size) {
  size_t pixels = 0;
  size_t product = 0;
  if (__builtin_mul_overflow(size.width, size.height, &pixels)) return std::nullopt;
  const size_t factor = facts.IsBitStream() ? facts.pixelStorageBits : facts.pixelStorageBits / 8;
  if (__builtin_mul_overflow(pixels, factor, &product)) return std::nullopt;
  if (facts.IsBitStream() && __builtin_add_overflow(product, size_t{7}, &product)) return std::nullopt;
  return facts.ByteCount(pixels);
}

// As above for an id that is known at run time. Throws as PixelFormatInfo_CalcSizeOfPixels does for an unknown id,
// and std::bad_alloc for a size that doesn't fit 64 bits or exceeds LargestAllocation().
size_t ByteCountToAllocate(PixelFormatId formatId, const Size2D& size);

// Throws OutOfRange, "Width must not be 0!" or "Height must not be 0!". location is the caller's signature.
void RequireNotEmpty(const Size2D& size, const char* location);

}  // namespace img
