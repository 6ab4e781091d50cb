#include "processing/conversion/convert_pixel_depth.h"

#include <algorithm>
#include <string>
#include <type_traits>

#include "processing/conversion/unaligned.h"
#include "status/ensure.h"

namespace img::processing {
namespace {

template <unsigned bits>
using SampleOf = std::conditional_t<bits == 8, uint8_t, uint16_t>;

template <unsigned fromBits, unsigned toBits>
void ShiftSamples(const uint8_t* input, size_t count, uint8_t* output) {
  for (size_t i = 0; i < count; ++i) {
    const unsigned value = LoadSample<SampleOf<fromBits>>(input, i);
    const unsigned shifted = fromBits < toBits ? value << (toBits - fromBits) : value >> (fromBits - toBits);
    StoreSample(output, i, static_cast<SampleOf<toBits>>(shifted));
  }
}

// The locations of failures name the instance.
std::string ProcessSignature(const FormatFacts& in, const FormatFacts& out) {
  const std::string input = "img::PixelFormatId::" + std::string(in.name);
  const std::string output = "img::PixelFormatId::" + std::string(out.name);
  return "virtual void img::processing::TConvertPixelDepth_Impl<" + input + ", " + output +
         ">::Process(const img::IfcImage &, img::IfcImage &) [formatIdInput = " + input +
         ", formatIdOutput = " + output + "]";
}

template <PixelFormatId formatIdInput, PixelFormatId formatIdOutput>
class TConvertPixelDepth_Impl : public FormatPairModule<formatIdInput, formatIdOutput> {
 public:
  void Process(const IfcImage& input, IfcImage& output) override {
    const Size2D& size = input.Area().size;
    if (size != output.Area().size) {
      korvel::internal::Ensure(false, ProcessSignature(kFacts<formatIdInput>, kFacts<formatIdOutput>),
                               korvel::internal::ImgStatusCode::InvalidParameterUtilx);
    }
    for (size_t y = 0; y < size.height; ++y) {
      ShiftSamples<kFacts<formatIdInput>.significantBits, kFacts<formatIdOutput>.significantBits>(
          input.PixelPointer(0, y), size.width * kFacts<formatIdInput>.channels, output.PixelPointer(0, y));
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
