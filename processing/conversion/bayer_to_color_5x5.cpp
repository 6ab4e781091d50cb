#include "processing/conversion/bayer_to_color_5x5.h"

#include "processing/conversion/bilinear_demosaic.h"
#include "processing/conversion/filter_rule.h"

namespace img::processing {
namespace {

template <PixelFormatId formatIdOutput>
void FilterLine(const IfcImage& input, IfcImage& output, BayerPhase phase, size_t y) {
  using Line = SampleLine<SampleOf<formatIdOutput>>;
  const FilterRule<SampleOf<formatIdOutput>, static_cast<int32_t>(kFacts<formatIdOutput>.maxValue)> rule{
      Line(input.PixelPointer(0, y - 2)), Line(input.PixelPointer(0, y - 1)), Line(input.PixelPointer(0, y)),
      Line(input.PixelPointer(0, y + 1)), Line(input.PixelPointer(0, y + 2))};
  StoreSites<formatIdOutput>(rule, phase, y, 2, input.Area().size.width - 2, output.PixelPointer(0, y));
}

// The filters inside, the bilinear rule one pixel from the border, and a border copied from there. Images of fewer than
// five lines are bilinear throughout.
template <PixelFormatId formatIdOutput>
void Demosaic5x5(const IfcImage& input, IfcImage& output, BayerPhase phase) {
  const auto [width, height] = input.Area().size;
  if (height < 5) {
    Demosaic3x3<formatIdOutput>(input, output, phase);
    return;
  }
  if (width >= 5) {
    for (size_t y = 2; y + 2 < height; ++y) FilterLine<formatIdOutput>(input, output, phase, y);
  }
  if (width >= 3) {
    DemosaicBilinear<formatIdOutput>(input, output, phase, 1, 1, width - 1);
    DemosaicBilinear<formatIdOutput>(input, output, phase, height - 2, 1, width - 1);
    for (size_t y = 1; y + 1 < height; ++y) {
      DemosaicBilinear<formatIdOutput>(input, output, phase, y, 1, 2);
      DemosaicBilinear<formatIdOutput>(input, output, phase, y, width - 2, width - 1);
    }
  }
  CopyBorder(output);
}

template <PixelFormatId formatIdInput, PixelFormatId formatIdOutput>
class TBayerToColor5x5Simple_Impl : public FormatPairModule<formatIdInput, formatIdOutput> {
 public:
  void Process(const IfcImage& input, IfcImage& output) override {
    Demosaic5x5<formatIdOutput>(input, output, PhaseOf(kFacts<formatIdInput>.pixelClass));
  }
};

template <PixelFormatId in, PixelFormatId out>
class TBayerToColor5x5Simple
    : public std::conditional_t<IsDemosaicTarget(kFacts<out>), TBayerToColor5x5Simple_Impl<in, out>,
                                ConversionModuleNotImplementedForFormat> {};

}  // namespace
}  // namespace img::processing

KORVEL_NAME_PAIR_FOR_DISPATCH(img::processing::TBayerToColor5x5Simple, "TBayerToColor5x5Simple");

std::unique_ptr<img::processing::IfcConversionProcessingModule> img::processing::BayerToColor5x5Simple::CreateImpl(
    PixelFormatId input, PixelFormatId output) {
  return MakeFormatClass_Bayer2Color<TBayerToColor5x5Simple, IfcConversionProcessingModule>(input, output);
}
