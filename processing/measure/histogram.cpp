#include "processing/measure/histogram.h"

#include <algorithm>
#include <array>
#include <utility>

#include "core/channel_accessor.h"
#include "core/image_lines.h"

namespace img::processing {
namespace {

// Neighbours often have the same value, and counting one must not wait for the store of the last one. So the pixels of
// one-channel formats count in turns into several tables, as many as the nearest cache has room for.
template <PixelFormatId formatId>
inline constexpr size_t kTables = kFacts<formatId>.channels != 1          ? 1
                                  : kFacts<formatId>.significantBits == 8 ? 4
                                                                          : 2;

template <PixelFormatId formatId>
class PixelCounter {
 public:
  static constexpr FormatFacts kFormat = kFacts<formatId>;
  static constexpr size_t kNumTables = kTables<formatId>;

  PixelCounter() : bins_(kNumTables * kFormat.channels * kNumBins) {}

  void CountLine(const uint8_t* line, size_t width) {
    // Of its own, as the compiler can't know that the bins lie elsewhere.
    Sums sums{};
    size_t x = 0;
    for (; x + kNumTables <= width; x += kNumTables) {
      for (size_t table = 0; table < kNumTables; ++table) CountPixel(line, x + table, BinsOf(table), sums, kChannels);
    }
    for (; x < width; ++x) CountPixel(line, x, BinsOf(0), sums, kChannels);
    for (size_t c = 0; c < kFormat.channels; ++c) sums_[c] += sums[c];
  }

  void AddTo(HistogramRecord& record, uint64_t numPixels) const {
    for (size_t c = 0; c < kFormat.channels; ++c) {
      HistogramChannel& channel = record.channels[c];
      channel.pixelSum += sums_[c];
      channel.pixelCount += numPixels;
      for (size_t table = 0; table < kNumTables; ++table) {
        const uint64_t* const bins = &bins_[(table * kFormat.channels + c) * kNumBins];
        for (size_t i = 0; i < kNumBins; ++i) channel.bins[i] += bins[i];
      }
    }
  }

  static constexpr size_t kNumBins = size_t{kFormat.maxValue} + 1;

 private:
  using Sums = std::array<uint64_t, kFormat.channels>;
  static constexpr auto kChannels = std::make_index_sequence<kFormat.channels>();

  uint64_t* BinsOf(size_t table) { return bins_.data() + table * kFormat.channels * kNumBins; }

  template <size_t... channels>
  static void CountPixel(const uint8_t* line, size_t x, uint64_t* bins, Sums& sums, std::index_sequence<channels...>) {
    const auto pixel = pixel_accessor::LoadPixel<formatId>(line + x * kFormat.PixelByteCount());
    (CountValue(pixel_accessor::ChannelAccessor<formatId>::template Get<channels>(pixel), bins + channels * kNumBins,
                sums[channels]),
     ...);
  }

  static void CountValue(uint32_t value, uint64_t* bins, uint64_t& sum) {
    sum += value;
    ++bins[std::min(value, kFormat.maxValue)];
  }

  Sums sums_{};
  std::vector<uint64_t> bins_;
};

}  // namespace

template <PixelFormatId formatId>
class THistogram final : public HistogramIfc {
 public:
  void Process(const IfcImage& image, HistogramRecord& record) override {
    using Counter = PixelCounter<formatId>;
    record.format = formatId;
    record.channels.resize(kFacts<formatId>.channels);
    for (HistogramChannel& channel : record.channels) channel.bins.resize(Counter::kNumBins);
    if (image.ByteCount() == 0) return;

    const auto lines = LinesOf(image);
    const Size2D& size = lines.size;
    Counter counter;
    for (size_t y = 0; y < size.height; ++y) counter.CountLine(lines[y], size.width);
    counter.AddTo(record, size.width * size.height);
  }
};

}  // namespace img::processing

KORVEL_NAME_FOR_DISPATCH(img::processing::THistogram, "THistogram");
KORVEL_NAME_TYPE_FOR_DISPATCH(img::processing::HistogramIfc, "img::processing::HistogramIfc");

namespace img::processing {

Histogram::Histogram() : TemplateWrapper_MeasureModule("Histogram") {}

void Histogram::Process(const IfcImage& image, HistogramRecord& record) {
  TemplateWrapper_MeasureModule::Process(image, record);
}

}  // namespace img::processing
