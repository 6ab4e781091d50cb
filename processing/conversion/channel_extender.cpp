#include "processing/conversion/channel_extender.h"

#include <type_traits>

#include "core/channel_accessor.h"
#include "processing/unaligned.h"

namespace img::processing {
namespace {

// Intended: opaque is 255 at every depth here, where a demosaic writes the depth's maximum.
constexpr unsigned kAlpha = 255;

template <class Sample, unsigned kChannels>
void ExtendLine(const uint8_t* input, size_t width, uint8_t* output) {
  for (size_t x = 0; x < width; ++x) {
    const auto value = LoadSample<Sample>(input, x);
    for (unsigned channel = 0; channel < 3; ++channel) StoreSample<Sample>(output, x * kChannels + channel, value);
    if constexpr (kChannels == 4) StoreSample<Sample>(output, x * kChannels + 3, Sample{kAlpha});
  }
}

template <PixelFormatId formatIdInput, PixelFormatId formatIdOutput>
class TChannelExtender_Impl : public FormatPairModule<formatIdInput, formatIdOutput> {
 public:
  void Process(const IfcImage& input, IfcImage& output) override {
    using Sample = typename pixel_accessor::ChannelAccessor<formatIdInput>::ChannelType;
    const Size2D& size = input.Area().size;
    for (size_t y = 0; y < size.height; ++y) {
      ExtendLine<Sample, kFacts<formatIdOutput>.channels>(input.PixelPointer(0, y), size.width,
                                                          output.PixelPointer(0, y));
    }
  }
};

constexpr bool IsExtension(const FormatFacts& from, const FormatFacts& to) {
  return !from.IsPacked() && !to.IsPacked() && from.channels == 1 && to.channels > 1 &&
         from.significantBits == to.significantBits;
}

template <PixelFormatId in, PixelFormatId out>
class TChannelExtender : public std::conditional_t<IsExtension(kFacts<in>, kFacts<out>), TChannelExtender_Impl<in, out>,
                                                   ConversionModuleNotImplementedForFormat> {};

}  // namespace

bool ChannelExtender::IsInputFormatSupported(PixelFormatId format) {
  return PixelFormatInfo_Class(format) == PixelClass::Mono;
}

ImageFormat ChannelExtender::ExtendTo(PixelClass target, const ImageFormat& input) {
  if (PixelFormatInfo_Class(input.format) != PixelClass::Mono) return {input.area, PixelFormatId::Invalid};
  return {input.area, PixelFormatInfo_FromClassAndBits(static_cast<int32_t>(target),
                                                       PixelFormatInfo_ComponentSignificantBits(input.format))};
}

}  // namespace img::processing

KORVEL_NAME_PAIR_FOR_DISPATCH(img::processing::TChannelExtender, "TChannelExtender");

std::unique_ptr<img::processing::IfcConversionProcessingModule> img::processing::ChannelExtender::CreateImpl(
    PixelFormatId input, PixelFormatId output) {
  return MakeFormatClass_Raw2Raw<TChannelExtender, IfcConversionProcessingModule>(input, output);
}
