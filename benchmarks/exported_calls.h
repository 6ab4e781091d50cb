// Calls of the exported functions that are expected to succeed.
#pragma once

#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include "core/geometry.h"
#include "core/pixel_format.h"
#include "korvel/korvel.h"
#include "tools/handles.h"

namespace korvel::benchmarks {

using tools::Image;
using tools::ImageConverter;

inline void Require(KORVEL_RETURN_CODE code) {
  if (code != KORVEL_RETURN_CODE_Success) throw std::runtime_error("a call failed with code " + std::to_string(code));
}

constexpr uint32_t Id(img::PixelFormatId format) { return static_cast<uint32_t>(format); }

inline Image ImageOver(std::vector<uint8_t>& memory, img::PixelFormatId format, const img::Size2D& size) {
  Image image;
  Require(
      KORVEL_Image_ConstructFromBuffer(Id(format), memory.data(), memory.size(), size.width, size.height, image.Out()));
  return image;
}

inline std::span<const uint8_t> BytesOf(const Image& image) {
  uint8_t* data = nullptr;
  size_t byteCount = 0;
  Require(KORVEL_Image_GetData(image.Get(), &data));
  Require(KORVEL_Image_GetByteCount(image.Get(), &byteCount));
  return {data, byteCount};
}

inline img::Size2D SizeOf(const Image& image) {
  img::Size2D size;
  Require(KORVEL_Image_GetWidth(image.Get(), &size.width));
  Require(KORVEL_Image_GetHeight(image.Get(), &size.height));
  return size;
}

}  // namespace korvel::benchmarks
