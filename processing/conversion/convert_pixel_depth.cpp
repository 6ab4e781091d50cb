#include "processing/conversion/convert_pixel_depth.h"

#include <type_traits>

#include "core/channel_accessor.h"
#include "processing/pair_signature.h"
#include "processing/unaligned.h"
#include "status/ensure.h"

namespace img::processing {
namespace {

template <PixelFormatId formatIdInput, PixelFormatId formatIdOutput>
void ShiftSamples(const uint8_t* input, size_t count, uint8_t* output) {
  using Input = typename pixel_accessor::ChannelAccessor<formatIdInput>::ChannelType;
  using Output = typename pixel_accessor::ChannelAccessor<formatIdOutput>::ChannelType;
  constexpr uint32_t kFrom = kFacts<formatIdInput>.significantBits;
  constexpr uint32_t kTo = kFacts<formatIdOutput>.significantBits;
  for (size_t i = 0; i < count; ++i) {
    const unsigned value = LoadSample<Input>(input, i);
    StoreSample(output, i, static_cast<Output>(kFrom < kTo ? value << (kTo - kFrom) : value >> (kFrom - kTo)));
  }
}

template <PixelFormatId formatIdInput, PixelFormatId formatIdOutput>
class TConvertPixelDepth_Impl : public FormatPairModule<formatIdInput, formatIdOutput> {
 public:
  void Process(const IfcImage& input, IfcImage& output) override {
    const Size2D& size = input.Area().size;
    if (size != output.Area().size) {
      korvel::internal::Ensure(
          false,
          PairSignature("virtual void", "TConvertPixelDepth_Impl", "Process(const img::IfcImage &, img::IfcImage &)",
                        kFacts<formatIdInput>, kFacts<formatIdOutput>),
          korvel::internal::ImgStatusCode::InvalidParameterUtilx);
    }
    for (size_t y = 0; y < size.height; ++y) {
      ShiftSamples<formatIdInput, formatIdOutput>(input.PixelPointer(0, y), size.width * kFacts<formatIdInput>.channels,
                                                  output.PixelPointer(0, y));
    }
  }
};

constexpr bool IsDepthChange(const FormatFacts& from, const FormatFacts& to) {
  return !from.IsPacked() && !to.IsPacked() && from.channels == to.channels &&
         from.significantBits != to.significantBits;
}

template <PixelFormatId in, PixelFormatId out>
class TConvertPixelDepth
    : public std::conditional_t<IsDepthChange(kFacts<in>, kFacts<out>), TConvertPixelDepth_Impl<in, out>,
                                ConversionModuleNotImplementedForFormat> {};

}  // namespace
}  // namespace img::processing

KORVEL_NAME_PAIR_FOR_DISPATCH(img::processing::TConvertPixelDepth, "TConvertPixelDepth");

std::unique_ptr<img::processing::IfcConversionProcessingModule> img::processing::ConvertPixelDepth::CreateImpl(
    PixelFormatId input, PixelFormatId output) {
  return MakeFormatClass_Raw2Raw<TConvertPixelDepth, IfcConversionProcessingModule>(input, output);
}
