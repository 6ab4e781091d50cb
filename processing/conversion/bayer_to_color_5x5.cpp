#include "processing/conversion/bayer_to_color_5x5.h"

#include "processing/conversion/bayer_sites.h"
#include "processing/conversion/bilinear_demosaic.h"

namespace img::processing {
namespace {

// Five lines around a site, and the filters for what it lacks. Overshoot is clipped to the depth's range.
template <class Sample, int32_t maximum>
struct FilterRule {
  using SampleType = Sample;

  SampleLine<Sample> above2;
  SampleLine<Sample> above;
  SampleLine<Sample> here;
  SampleLine<Sample> below;
  SampleLine<Sample> below2;

  int32_t Diagonals(size_t x) const { return above[x - 1] + above[x + 1] + below[x - 1] + below[x + 1]; }

  SiteColour AtOwn(size_t x) const {
    const int32_t far = above2[x] + below2[x] + here[x - 2] + here[x + 2];
    const int32_t near = above[x] + below[x] + here[x - 1] + here[x + 1];
    return {here[x], DivideAndClip<3, maximum>(4 * here[x] + 2 * near - far),
            DivideAndClip<4, maximum>(12 * here[x] + 4 * Diagonals(x) - 3 * far)};
  }

  SiteColour AtGreen(size_t x) const {
    const int32_t diagonals = Diagonals(x);
    const int32_t farOnLine = here[x - 2] + here[x + 2];
    const int32_t farOnColumn = above2[x] + below2[x];
    const int32_t own = 10 * here[x] + 8 * (here[x - 1] + here[x + 1]) - 2 * (diagonals + farOnLine) + farOnColumn;
    const int32_t other = 10 * here[x] + 8 * (above[x] + below[x]) - 2 * (diagonals + farOnColumn) + farOnLine;
    return {DivideAndClip<4, maximum>(own), here[x], DivideAndClip<4, maximum>(other)};
  }
};

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
