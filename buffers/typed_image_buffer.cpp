#include "buffers/typed_image_buffer.h"

#include <stdexcept>

namespace img::buffer {

void RequireFormatChange(PixelFormatId oldFormat, PixelFormatId newFormat) {
  if (!PixelFormatInfo_IsBayered(oldFormat)) {
    throw std::runtime_error("Cannot change pixel format since !IsBayered<oldPixelFormat>!");
  }
  if (PixelFormatInfo_PixelComponents(oldFormat) != PixelFormatInfo_PixelComponents(newFormat)) {
    throw std::runtime_error(
        "Cannot change pixel format since NumPixelComponents<oldPixelFormat> != "
        "NumPixelComponents<newPixelFormat>!");
  }
  if (PixelFormatInfo_ComponentSignificantBits(oldFormat) != PixelFormatInfo_ComponentSignificantBits(newFormat)) {
    throw std::runtime_error(
        "Cannot change pixel format since NumSignificantBitsPixelComponent<oldPixelFormat> != "
        "NumSignificantBitsPixelComponent<newPixelFormat>!");
  }
  if (PixelFormatInfo_ComponentStorageBits(oldFormat) != PixelFormatInfo_ComponentStorageBits(newFormat)) {
    throw std::runtime_error(
        "Cannot change pixel format since NumStorageBitsPixelComponent<oldPixelFormat> != "
        "NumStorageBitsPixelComponent<newPixelFormat>!");
  }
}

}  // namespace img::buffer
