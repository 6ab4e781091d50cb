#include <string>
#include <vector>

#include "benchmarks/exported_calls.h"
#include "benchmarks/image_work.h"
#include "benchmarks/registration.h"
#include "benchmarks/side_by_side.h"
#include "benchmarks/test_frames.h"

namespace korvel::benchmarks {
namespace {

using img::PixelFormatId;
using img::Size2D;

// With the bins of every channel copied out, as an application shows them.
void RunHistogram(benchmark::State& state, const std::string& operation, PixelFormatId format, const Size2D& size) {
  std::vector<uint8_t> picture = MakeFrame(format, size);
  const img::FormatFacts facts = img::FindFacts(format).value();
  const size_t binCount = size_t{facts.maxValue} + 1;
  std::vector<uint64_t> bins(facts.channels * binCount);
  const auto measure = [&] {
    const Image image = ImageOver(picture, format, size);
    tools::Histogram histogram;
    Require(KORVEL_Histogram_Construct(image.Get(), histogram.Out()));
    for (size_t channel = 0; channel < facts.channels; ++channel) {
      size_t count = binCount;
      Require(KORVEL_Histogram_GetBinsForChannel(histogram.Get(), channel, bins.data() + channel * binCount, &count));
    }
  };
  MeasureImageWork(state, {.operation = operation, .picture = picture, .size = size, .run = measure, .result = [&] {
                             return std::span(reinterpret_cast<const uint8_t*>(bins.data()),
                                              bins.size() * sizeof bins[0]);
                           }});
}

}  // namespace

void RegisterMeasure(FrameSizes sizes) {
  using enum PixelFormatId;
  for (const PixelFormatId format : {Mono8, RGB8, Mono12}) {
    const std::string operation = "histogram/" + img::PixelFormatInfo_Name(format);
    for (const FrameSize& frame : sizes) {
      Register(operation, frame.Name(), frame.rounds,
               [=](benchmark::State& state) { RunHistogram(state, operation, format, frame.size); });
    }
  }
}

}  // namespace korvel::benchmarks
