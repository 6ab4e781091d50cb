#include "processing/conversion/bayer_to_mono_2x2.h"

#include <cstring>

#include "processing/conversion/bayer_sites.h"
#include "processing/conversion/mono_line.h"

namespace img::processing {
namespace {

// The weights of a block's samples, which add up to 999.
constexpr uint32_t kHeavy = 299;
constexpr uint32_t kMiddle = 293;
constexpr uint32_t kLight = 114;
constexpr uint32_t kWeights = kHeavy + kLight + 2 * kMiddle;
static_assert(kWeights == 999);

// Division by 999 through the high word of a product, exact for every 32-bit sum.
constexpr uint32_t DivideByWeights(uint32_t sum) {
  const auto high = static_cast<uint32_t>(uint64_t{sum} * 107481665 >> 32);
  return (((sum - high) >> 1) + high) >> 9;
}

// One line of blocks. heavyLine is the one of the two that holds the heavy samples, at columns of parity heavyColumn;
// lightLine holds the light ones, at the other columns.
template <class Sample, uint32_t maximum>
void WeighLine(const SampleLine<Sample>& heavyLine, const SampleLine<Sample>& lightLine, size_t heavyColumn,
               size_t width, uint8_t* output) {
  const auto store = [output](size_t x, uint32_t sum) {
    // Samples within their depth can't reach the limit; garbage in the caller's words can.
    const uint32_t value = sum > kWeights * (maximum + 1) - 1 ? maximum : DivideByWeights(sum);
    StoreSample(output, x, static_cast<Sample>(value));
  };
  const auto weigh = [&](size_t x, uint32_t heavyLeft, uint32_t heavyRight, uint32_t lightLeft, uint32_t lightRight) {
    const auto sample = [](int32_t value) { return static_cast<uint32_t>(value); };
    return heavyLeft * sample(heavyLine[x]) + heavyRight * sample(heavyLine[x + 1]) + lightLeft * sample(lightLine[x]) +
           lightRight * sample(lightLine[x + 1]);
  };
  const auto atHeavy = [&](size_t x) { return weigh(x, kHeavy, kMiddle, kMiddle, kLight); };
  const auto atLight = [&](size_t x) { return weigh(x, kMiddle, kHeavy, kLight, kMiddle); };

  size_t x = 0;
  if (x + 1 < width && heavyColumn != 0) store(x++, atLight(0));
  for (; x + 2 < width; x += 2) {
    store(x, atHeavy(x));
    store(x + 1, atLight(x + 1));
  }
  if (x + 1 < width) store(x, atHeavy(x));
}

template <PixelFormatId formatIdInput, PixelFormatId formatIdOutput>
class TBayerToMono2x2Simple_Impl : public FormatPairModule<formatIdInput, formatIdOutput> {
 public:
  void Process(const IfcImage& input, IfcImage& output) override {
    using Sample = SampleOf<formatIdInput>;
    constexpr HeavySample kHeavySample = HeavySampleOf(kFacts<formatIdInput>.pixelClass);
    const auto [width, height] = input.Area().size;
    for (size_t y = 0; y + 1 < height; ++y) {
      const SampleLine<Sample> upper(input.PixelPointer(0, y));
      const SampleLine<Sample> lower(input.PixelPointer(0, y + 1));
      const bool upperIsHeavy = y % 2 == kHeavySample.line;
      WeighLine<Sample, kFacts<formatIdInput>.maxValue>(upperIsHeavy ? upper : lower, upperIsHeavy ? lower : upper,
                                                        kHeavySample.column, width, output.PixelPointer(0, y));
    }
    // Blocks reach to the right and downward, so the last line and column have none.
    if (height >= 2) {
      std::memcpy(output.PixelPointer(0, height - 1), output.PixelPointer(0, height - 2), output.LineByteCount());
    }
    if (width >= 2) {
      for (size_t y = 0; y < height; ++y) {
        uint8_t* const line = output.PixelPointer(0, y);
        StoreSample(line, width - 1, LoadSample<Sample>(line, width - 2));
      }
    }
  }
};

constexpr bool IsUnpacked(const FormatFacts& in) { return !in.IsPacked(); }

// The grid has cells for the MIPI formats too, but there is no work on them.
template <PixelFormatId in, PixelFormatId out>
class TBayerToMono2x2Simple : public std::conditional_t<IsUnpacked(kFacts<in>), TBayerToMono2x2Simple_Impl<in, out>,
                                                        ConversionModuleNotImplementedForFormat> {};

}  // namespace

bool BayerToMono2x2Simple::IsInputFormatSupported(PixelFormatId format) { return IsUnpackedBayer(format); }

ImageFormat BayerToMono2x2Simple::GetOutputImageFormat(const ImageFormat& input) {
  if (!IsInputFormatSupported(input.format)) return {input.area, PixelFormatId::Mono8};
  return {input.area, PixelFormatInfo_FromClassAndBits(static_cast<int32_t>(PixelClass::Mono),
                                                       PixelFormatInfo_ComponentSignificantBits(input.format))};
}

}  // namespace img::processing

KORVEL_NAME_PAIR_FOR_DISPATCH(img::processing::TBayerToMono2x2Simple, "TBayerToMono2x2Simple");

std::unique_ptr<img::processing::IfcConversionProcessingModule> img::processing::BayerToMono2x2Simple::CreateImpl(
    PixelFormatId input, PixelFormatId output) {
  return MakeFormatClass_Bayer2Mono<TBayerToMono2x2Simple, IfcConversionProcessingModule>(input, output);
}
