#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "benchmarks/plain_kernels.h"
#include "benchmarks/registration.h"
#include "benchmarks/side_by_side.h"
#include "benchmarks/test_frames.h"
#include "buffers/raw_image_buffer.h"
#include "processing/measure/collect_line.h"
#include "processing/measure/histogram.h"

namespace korvel::benchmarks {
namespace {

using img::IfcImage;
using img::PixelFormatId;
using img::Size2D;
using img::processing::HistogramRecord;
using img::processing::LineRecord;

std::unique_ptr<IfcImage> ImageOver(std::vector<uint8_t>& memory, PixelFormatId format, const Size2D& size) {
  return img::buffer::RawImageBuffer::CreateBuffer(format, memory.data(), size)->CreateImage();
}

// One value after the other, each into its bin.
template <PixelFormatId format>
HistogramRecord PlainHistogram(const std::vector<uint8_t>& frame) {
  constexpr img::FormatFacts kFormat = img::kFacts<format>;
  using Sample = PlainSample<format>;
  const auto* const samples = reinterpret_cast<const Sample*>(frame.data());
  HistogramRecord record{format, std::vector<img::processing::HistogramChannel>(kFormat.channels)};
  for (auto& channel : record.channels) channel.bins.resize(kFormat.maxValue + 1);
  for (size_t i = 0; i < frame.size() / sizeof(Sample); ++i) {
    auto& channel = record.channels[i % kFormat.channels];
    channel.pixelSum += samples[i];
    channel.pixelCount += 1;
    channel.bins[std::min<uint32_t>(samples[i], kFormat.maxValue)] += 1;
  }
  return record;
}

bool AreEqual(const HistogramRecord& one, const HistogramRecord& other) {
  return std::equal(one.channels.begin(), one.channels.end(), other.channels.begin(), other.channels.end(),
                    [](const auto& a, const auto& b) {
                      return a.pixelSum == b.pixelSum && a.pixelCount == b.pixelCount && a.bins == b.bins;
                    });
}

template <PixelFormatId format>
void RunHistogram(benchmark::State& state, std::vector<uint8_t> frame, const Size2D& size) {
  const std::unique_ptr<IfcImage> image = ImageOver(frame, format, size);
  const auto measure = [&] {
    HistogramRecord record;
    img::processing::Histogram().Process(*image, record);
    return record;
  };
  if (!AreEqual(measure(), PlainHistogram<format>(frame))) {
    state.SkipWithError("differs from its peer");
    return;
  }
  Measure(state, {.subject = [&] { benchmark::DoNotOptimize(measure()); },
                  .peer = [&] { benchmark::DoNotOptimize(PlainHistogram<format>(frame)); },
                  .read = frame,
                  .pixels = size.width * size.height});
}

template <PixelFormatId format>
void AddHistogram() {
  for (const FrameSize& frame : kFrameSizes) {
    const std::string suffix = img::PixelFormatInfo_Name(format) + "/" + frame.Name();
    Register("histogram/" + suffix, frame.rounds,
             [=](benchmark::State& state) { RunHistogram<format>(state, MakeFrame(format, frame.size), frame.size); });
    // All values alike, as in a dark or an overexposed frame: each waits for the count of the one before.
    Register("histogram_flat/" + suffix, frame.rounds, [=](benchmark::State& state) {
      RunHistogram<format>(state, std::vector<uint8_t>(ByteCount(format, frame.size), 1), frame.size);
    });
  }
}

template <PixelFormatId format>
LineRecord PlainLine(const std::vector<uint8_t>& frame, const Size2D& size, bool isHorizontal, size_t offset) {
  constexpr size_t kChannels = img::kFacts<format>.channels;
  const auto* const samples = reinterpret_cast<const PlainSample<format>*>(frame.data());
  LineRecord record{std::vector<std::vector<uint32_t>>(kChannels), format, isHorizontal, offset};
  for (size_t i = 0; i < (isHorizontal ? size.width : size.height); ++i) {
    const size_t pixel = isHorizontal ? offset * size.width + i : i * size.width + offset;
    for (size_t channel = 0; channel < kChannels; ++channel) {
      record.channels[channel].push_back(samples[pixel * kChannels + channel]);
    }
  }
  return record;
}

template <PixelFormatId format>
void AddLine(const std::string& name, bool isHorizontal) {
  constexpr size_t kCalls = 100;
  for (const FrameSize& frame : kFrameSizes) {
    Register(name + "/" + img::PixelFormatInfo_Name(format) + "/" + frame.Name(), frame.rounds,
             [=](benchmark::State& state) {
               std::vector<uint8_t> memory = MakeFrame(format, frame.size);
               const std::unique_ptr<IfcImage> image = ImageOver(memory, format, frame.size);
               const size_t offset = frame.size.height / 2;
               const auto collect = [&] {
                 LineRecord record;
                 img::processing::CollectLine().Process(*image, isHorizontal, offset, record);
                 return record;
               };
               const auto plain = [&] { return PlainLine<format>(memory, frame.size, isHorizontal, offset); };
               if (collect().channels != plain().channels) {
                 state.SkipWithError("differs from its peer");
                 return;
               }
               const auto repeat = [](const auto& work) {
                 for (size_t i = 0; i < kCalls; ++i) benchmark::DoNotOptimize(work());
               };
               Measure(state, {.subject = [&] { repeat(collect); },
                               .peer = [&] { repeat(plain); },
                               .pixels = isHorizontal ? frame.size.width : frame.size.height,
                               .calls = kCalls});
             });
  }
}

}  // namespace

void RegisterMeasure() {
  AddHistogram<PixelFormatId::Mono8>();
  AddHistogram<PixelFormatId::BayerRG12>();
  AddHistogram<PixelFormatId::BGR8>();
  AddHistogram<PixelFormatId::BGRa12>();
  AddLine<PixelFormatId::Mono8>("row", true);
  AddLine<PixelFormatId::BGRa8>("row", true);
  AddLine<PixelFormatId::Mono8>("column", false);
  AddLine<PixelFormatId::BGRa8>("column", false);
}

}  // namespace korvel::benchmarks
