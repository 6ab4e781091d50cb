#include "processing/measure/histogram.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <numeric>
#include <type_traits>
#include <utility>

#include "core/channel_accessor.h"
#include "core/image_lines.h"
#include "processing/unaligned.h"

namespace img::processing {
namespace {

// Counts the values of lines whose channels are samples of 8 or 16 bits, for any number of channels.
//
// Neighbours often have the same value, and counting one must not wait for the store of the last one. So pixels count
// in turns into several tables, as many as the nearest cache has room for.
template <uint32_t bits, uint32_t channels>
class SampleCounter {
 public:
  SampleCounter() : tables_(kTables * channels * kNumBins), bins_(channels * kNumBins) {}

  void CountLine(const uint8_t* line, size_t width) {
    for (size_t x = 0; x < width; x += kPartPixels) {
      CountPart(line + x * channels * sizeof(Sample), std::min(kPartPixels, width - x));
    }
  }

  void AddTo(HistogramRecord& record, uint64_t numPixels) {
    Flush();
    for (uint32_t c = 0; c < channels; ++c) {
      HistogramChannel& channel = record.channels[c];
      channel.pixelCount += numPixels;
      channel.pixelSum += excess_[c];
      for (size_t value = 0; value < kNumBins; ++value) {
        const uint64_t count = bins_[c * kNumBins + value];
        channel.bins[value] += count;
        channel.pixelSum += count * value;
      }
    }
  }

  static constexpr size_t kNumBins = size_t{1} << bits;

 private:
  using Sample = std::conditional_t<bits == 8, uint8_t, uint16_t>;
  static constexpr uint32_t kMaximum = kNumBins - 1;
  // 32-bit tables of at most 32 KB together, and all of them before one of their bins can overflow.
  static constexpr size_t kTables = bits == 8 ? (channels == 1 ? 8 : 4) : bits == 10 || channels == 1 ? 2 : 1;
  static constexpr size_t kMostPixelsOfTables = 0xFFFFFFFF;
  static constexpr size_t kPartPixels = 4096;  // which stay in the nearest cache from one look at them to the next
  static constexpr size_t kGroupSamples = std::lcm(channels * kTables, size_t{8});

  void CountPart(const uint8_t* part, size_t numPixels) {
    if (countedPixels_ > kMostPixelsOfTables - numPixels) Flush();
    countedPixels_ += numPixels;
    if (HasOnlyValuesOfDepth(part, numPixels * channels)) {
      CountSamples<false>(part, numPixels);
    } else {
      CountSamples<true>(part, numPixels);
    }
  }

  static bool HasOnlyValuesOfDepth(const uint8_t* part, size_t numSamples) {
    if constexpr (bits == 8) {
      return true;
    } else {
      uint32_t all = 0;
      for (size_t i = 0; i < numSamples; ++i) all |= LoadSample<Sample>(part, i);
      return all <= kMaximum;
    }
  }

  template <bool mayExceed>
  void CountSamples(const uint8_t* part, size_t numPixels) {
    const size_t numSamples = numPixels * channels;
    uint32_t* const tables = tables_.data();
    size_t i = 0;
    for (; i + kGroupSamples <= numSamples; i += kGroupSamples) {
      CountGroup<mayExceed>(part + i * sizeof(Sample), tables, std::make_index_sequence<kGroupSamples>());
    }
    for (; i < numSamples; ++i) {
      const auto channel = static_cast<uint32_t>(i % channels);
      CountValue<mayExceed>(LoadSample<Sample>(part, i), tables + channel * kNumBins, channel);
    }
  }

  // The tables follow each other pixel by pixel, and in each the channels.
  template <bool mayExceed, size_t... samples>
  void CountGroup(const uint8_t* group, uint32_t* tables, std::index_sequence<samples...>) {
    (CountValue<mayExceed>(LoadSample<Sample>(group, samples), tables + samples % (channels * kTables) * kNumBins,
                           samples % channels),
     ...);
  }

  template <bool mayExceed>
  void CountValue(uint32_t value, uint32_t* bins, uint32_t channel) {
    if constexpr (mayExceed) {
      const uint32_t counted = std::min(value, kMaximum);
      excess_[channel] += value - counted;
      ++bins[counted];
    } else {
      ++bins[value];
    }
  }

  void Flush() {
    for (size_t table = 0; table < kTables; ++table) {
      for (size_t i = 0; i < bins_.size(); ++i) bins_[i] += tables_[table * bins_.size() + i];
    }
    std::fill(tables_.begin(), tables_.end(), 0);
    countedPixels_ = 0;
  }

  std::vector<uint32_t> tables_;
  size_t countedPixels_ = 0;  // in the tables
  std::vector<uint64_t> bins_;
  std::array<uint64_t, channels> excess_{};  // of values above the maximum, over it
};

// Counts pixels of 32-bit words.
template <PixelFormatId formatId>
class WordCounter {
 public:
  static constexpr size_t kNumBins = size_t{kFacts<formatId>.maxValue} + 1;

  void CountLine(const uint8_t* line, size_t width) {
    for (size_t x = 0; x < width; ++x) {
      const auto pixel = pixel_accessor::LoadPixel<formatId>(line + x * kFacts<formatId>.PixelByteCount());
      CountPixel(pixel, std::make_index_sequence<kChannels>());
    }
  }

  void AddTo(HistogramRecord& record, uint64_t numPixels) const {
    for (size_t c = 0; c < kChannels; ++c) {
      record.channels[c].pixelCount += numPixels;
      for (size_t value = 0; value < kNumBins; ++value) {
        record.channels[c].bins[value] += bins_[c][value];
        record.channels[c].pixelSum += bins_[c][value] * value;
      }
    }
  }

 private:
  static constexpr size_t kChannels = kFacts<formatId>.channels;

  template <class Pixel, size_t... channels>
  void CountPixel(const Pixel& pixel, std::index_sequence<channels...>) {
    (++bins_[channels][pixel_accessor::ChannelAccessor<formatId>::template Get<channels>(pixel)], ...);
  }

  std::array<std::array<uint64_t, kNumBins>, kChannels> bins_{};
};

template <PixelFormatId formatId>
using CounterOf = std::conditional_t<kFacts<formatId>.IsPacked() || !kFacts<formatId>.IsPublic(), WordCounter<formatId>,
                                     SampleCounter<kFacts<formatId>.significantBits, kFacts<formatId>.channels>>;

}  // namespace

template <PixelFormatId formatId>
class THistogram final : public HistogramIfc {
 public:
  void Process(const IfcImage& image, HistogramRecord& record) override {
    using Counter = CounterOf<formatId>;
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
