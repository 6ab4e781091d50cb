#include "processing/conversion/bayer_to_color_3x3.h"

#include "processing/conversion/bilinear_demosaic.h"

namespace img::processing {
namespace {

template <PixelFormatId formatIdInput, PixelFormatId formatIdOutput>
class TBayerToColor3x3Simple_Impl : public FormatPairModule<formatIdInput, formatIdOutput> {
 public:
  void Process(const IfcImage& input, IfcImage& output) override {
    Demosaic3x3<formatIdOutput>(input, output, PhaseOf(kFacts<formatIdInput>.pixelClass));
  }
};

template <PixelFormatId in, PixelFormatId out>
class TBayerToColor3x3Simple
    : public std::conditional_t<IsDemosaicTarget(kFacts<out>), TBayerToColor3x3Simple_Impl<in, out>,
                                ConversionModuleNotImplementedForFormat> {};

}  // namespace
}  // namespace img::processing

KORVEL_NAME_PAIR_FOR_DISPATCH(img::processing::TBayerToColor3x3Simple, "TBayerToColor3x3Simple");

std::unique_ptr<img::processing::IfcConversionProcessingModule> img::processing::BayerToColor3x3Simple::CreateImpl(
    PixelFormatId input, PixelFormatId output) {
  return MakeFormatClass_Bayer2Color<TBayerToColor3x3Simple, IfcConversionProcessingModule>(input, output);
}
