#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <korvel/korvel.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <numeric>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "tests/model/format_table.h"
#include "tests/model/measure_model.h"
#include "tests/support/exported_objects.h"
#include "tests/support/exported_operations.h"
#include "tests/support/last_error.h"
#include "tests/support/seen_image.h"

namespace {

using korvel_test::Bytes;
using korvel_test::CallersMemory;
using korvel_test::ExportedImage;
using korvel_test::Fill;
using korvel_test::FormatOf;
using korvel_test::LastError;
using korvel_test::MakeFilledImage;
using korvel_test::MarkLastError;
using korvel_test::ModelHistogram;
using korvel_test::ModelHistogramChannel;
using korvel_test::ModelImage;
using korvel_test::OddImage;
using korvel_test::ReadLastError;
using korvel_test::RefusalAsPacked;
using korvel_test::SeenOf;
using testing::Each;

const auto kNoHandle = reinterpret_cast<KORVEL_HISTOGRAM_HANDLE>(0x5A5A);

class MeasuredHistogram {
 public:
  explicit MeasuredHistogram(KORVEL_IMAGE_HANDLE image) {
    EXPECT_EQ(KORVEL_Histogram_Construct(image, &handle_), 0u) << ReadLastError();
  }
  MeasuredHistogram(const MeasuredHistogram&) = delete;
  MeasuredHistogram& operator=(const MeasuredHistogram&) = delete;
  ~MeasuredHistogram() { EXPECT_EQ(KORVEL_Histogram_Destruct(handle_), 0u); }

  KORVEL_HISTOGRAM_HANDLE Handle() const { return handle_; }

  uint32_t Format() const {
    uint32_t format = 0x5A5A;
    EXPECT_EQ(KORVEL_Histogram_GetPixelFormat(handle_, &format), 0u);
    return format;
  }
  size_t NumChannels() const {
    size_t channels = 0x5A5A;
    EXPECT_EQ(KORVEL_Histogram_GetNumChannels(handle_, &channels), 0u);
    return channels;
  }
  size_t NumBins(size_t channel) const {
    size_t size = 0x5A5A;
    EXPECT_EQ(KORVEL_Histogram_GetBinsForChannel(handle_, channel, nullptr, &size), 0u);
    return size;
  }
  ModelHistogramChannel Channel(size_t channel) const {
    ModelHistogramChannel read;
    EXPECT_EQ(KORVEL_Histogram_GetPixelSumForChannel(handle_, channel, &read.pixelSum), 0u);
    EXPECT_EQ(KORVEL_Histogram_GetPixelCountForChannel(handle_, channel, &read.pixelCount), 0u);
    read.bins.resize(NumBins(channel));
    size_t size = read.bins.size();
    EXPECT_EQ(KORVEL_Histogram_GetBinsForChannel(handle_, channel, read.bins.data(), &size), 0u);
    EXPECT_EQ(size, read.bins.size());
    return read;
  }
  std::vector<ModelHistogramChannel> Channels() const {
    std::vector<ModelHistogramChannel> channels;
    for (size_t channel = 0; channel < NumChannels(); ++channel) channels.push_back(Channel(channel));
    return channels;
  }

 private:
  KORVEL_HISTOGRAM_HANDLE handle_ = nullptr;
};

void ExpectFailure(KORVEL_RETURN_CODE code, const LastError& expected) {
  EXPECT_EQ(code, expected.code);
  EXPECT_EQ(ReadLastError(), expected);
}

constexpr std::pair<size_t, size_t> kSizes[] = {{1, 1},  {2, 1},   {1, 2},   {7, 1},   {1, 9},    {3, 3},  {16, 16},
                                                {17, 5}, {32, 31}, {65, 33}, {96, 64}, {1000, 1}, {1, 999}};

TEST(HistogramApi, MeasuresEveryFormatThatIsNotPacked) {
  size_t measured = 0;
  for (const uint32_t id : korvel_test::PublicFormats()) {
    if (FormatOf(id).packed) continue;
    ++measured;
    uint64_t seed = id;
    for (const auto& [width, height] : kSizes) {
      for (const Fill fill : korvel_test::kAllFills) {
        const ModelImage input = MakeFilledImage(id, width, height, fill, ++seed);
        SCOPED_TRACE(testing::Message() << FormatOf(id).name << ", " << width << " x " << height << ", " << NameOf(fill)
                                        << ", seed " << seed);
        const OddImage image(input);
        const LastError before = MarkLastError();
        const MeasuredHistogram histogram(image.Handle());
        EXPECT_EQ(histogram.Format(), id);
        const std::vector<ModelHistogramChannel> expected = ModelHistogram(input);
        ASSERT_EQ(histogram.NumChannels(), expected.size());
        for (size_t channel = 0; channel < expected.size(); ++channel) {
          const ModelHistogramChannel seen = histogram.Channel(channel);
          EXPECT_EQ(seen.pixelSum, expected[channel].pixelSum);
          EXPECT_EQ(seen.pixelCount, width * height);
          EXPECT_TRUE(seen.bins == expected[channel].bins) << "channel " << channel;
        }
        EXPECT_EQ(ReadLastError(), before);
        EXPECT_EQ(SeenOf(image.Handle()), SeenOf(input));
        EXPECT_TRUE(image.IsMarkedOutside());
        if (testing::Test::HasFailure()) return;
      }
    }
  }
  EXPECT_EQ(measured, 27u);
}

TEST(HistogramApi, ReadsNothingBehindTheImage) {
  for (const uint32_t id : korvel_test::PublicFormats()) {
    if (FormatOf(id).packed) continue;
    for (const auto& [width, height] : kSizes) {
      const ModelImage input = MakeFilledImage(id, width, height, Fill::kRandom, id);
      const CallersMemory memory(input.bytes.size());
      std::memcpy(memory.Data(), input.bytes.data(), input.bytes.size());
      KORVEL_IMAGE_HANDLE handle = nullptr;
      ASSERT_EQ(KORVEL_Image_ConstructFromBuffer(id, memory.Data(), input.bytes.size(), width, height, &handle), 0u);
      const ExportedImage image(handle);
      EXPECT_EQ(MeasuredHistogram(handle).Channels(), ModelHistogram(input));
    }
  }
}

struct Shape {
  uint32_t format;
  size_t channels;
  size_t bins;
};

TEST(HistogramApi, HasChannelsAndBinsByFormat) {
  const Shape shapes[] = {
      {KORVEL_PIXEL_FORMAT_Mono8, 1, 256},      {KORVEL_PIXEL_FORMAT_BayerGR8, 1, 256},
      {KORVEL_PIXEL_FORMAT_BayerRG8, 1, 256},   {KORVEL_PIXEL_FORMAT_BayerGB8, 1, 256},
      {KORVEL_PIXEL_FORMAT_BayerBG8, 1, 256},   {KORVEL_PIXEL_FORMAT_Mono10, 1, 1024},
      {KORVEL_PIXEL_FORMAT_BayerGR10, 1, 1024}, {KORVEL_PIXEL_FORMAT_BayerRG10, 1, 1024},
      {KORVEL_PIXEL_FORMAT_BayerGB10, 1, 1024}, {KORVEL_PIXEL_FORMAT_BayerBG10, 1, 1024},
      {KORVEL_PIXEL_FORMAT_Mono12, 1, 4096},    {KORVEL_PIXEL_FORMAT_BayerGR12, 1, 4096},
      {KORVEL_PIXEL_FORMAT_BayerRG12, 1, 4096}, {KORVEL_PIXEL_FORMAT_BayerGB12, 1, 4096},
      {KORVEL_PIXEL_FORMAT_BayerBG12, 1, 4096}, {KORVEL_PIXEL_FORMAT_RGB8, 3, 256},
      {KORVEL_PIXEL_FORMAT_BGR8, 3, 256},       {KORVEL_PIXEL_FORMAT_RGB10, 3, 1024},
      {KORVEL_PIXEL_FORMAT_BGR10, 3, 1024},     {KORVEL_PIXEL_FORMAT_RGB12, 3, 4096},
      {KORVEL_PIXEL_FORMAT_BGR12, 3, 4096},     {KORVEL_PIXEL_FORMAT_RGBa8, 4, 256},
      {KORVEL_PIXEL_FORMAT_BGRa8, 4, 256},      {KORVEL_PIXEL_FORMAT_RGBa10, 4, 1024},
      {KORVEL_PIXEL_FORMAT_BGRa10, 4, 1024},    {KORVEL_PIXEL_FORMAT_RGBa12, 4, 4096},
      {KORVEL_PIXEL_FORMAT_BGRa12, 4, 4096},
  };
  for (const Shape& shape : shapes) {
    SCOPED_TRACE(FormatOf(shape.format).name);
    const ExportedImage image(shape.format, 3, 2);
    const MeasuredHistogram histogram(image.Handle());
    EXPECT_EQ(histogram.Format(), shape.format);
    EXPECT_EQ(histogram.NumChannels(), shape.channels);
    for (size_t channel = 0; channel < shape.channels; ++channel) EXPECT_EQ(histogram.NumBins(channel), shape.bins);
  }
}

TEST(HistogramApi, CountsAByHandCountedImage) {
  const ExportedImage image(KORVEL_PIXEL_FORMAT_Mono8, 2, 2, Bytes{0, 0, 255, 1});
  const ModelHistogramChannel channel = MeasuredHistogram(image.Handle()).Channel(0);
  EXPECT_EQ(channel.pixelCount, 4u);
  EXPECT_EQ(channel.pixelSum, 256u);
  EXPECT_EQ(channel.bins[0], 2u);
  EXPECT_EQ(channel.bins[1], 1u);
  EXPECT_EQ(channel.bins[255], 1u);
  EXPECT_EQ(std::accumulate(channel.bins.begin(), channel.bins.end(), uint64_t{0}), 4u);
}

TEST(HistogramApi, CountsBlueFirstAndAlphaLast) {
  const ExportedImage image(KORVEL_PIXEL_FORMAT_BGRa8, 1, 1, Bytes{10, 20, 30, 40});
  const MeasuredHistogram histogram(image.Handle());
  for (size_t channel = 0; channel < 4; ++channel) {
    const ModelHistogramChannel counted = histogram.Channel(channel);
    EXPECT_EQ(counted.pixelSum, 10 * (channel + 1));
    EXPECT_EQ(counted.bins[10 * (channel + 1)], 1u);
  }
}

TEST(HistogramApi, CountsStoredValuesAboveTheMaximumInTheLastBin) {
  const ExportedImage image(KORVEL_PIXEL_FORMAT_Mono12, 4, 1, Bytes{0xFF, 0x0F, 0x00, 0x10, 0xFF, 0xFF, 0xFE, 0x0F});
  const ModelHistogramChannel channel = MeasuredHistogram(image.Handle()).Channel(0);
  EXPECT_EQ(channel.pixelSum, 4095u + 4096 + 65535 + 4094) << "the sum takes what is stored";
  EXPECT_EQ(channel.pixelCount, 4u);
  EXPECT_EQ(channel.bins[4095], 3u);
  EXPECT_EQ(channel.bins[4094], 1u);
}

TEST(HistogramApi, SumsBeyond32Bits) {
  constexpr size_t kPixels = 70000;
  const ExportedImage image(KORVEL_PIXEL_FORMAT_Mono12, kPixels, 1, Bytes(kPixels * 2, 0xFF));
  const ModelHistogramChannel channel = MeasuredHistogram(image.Handle()).Channel(0);
  EXPECT_EQ(channel.pixelSum, uint64_t{65535} * kPixels);
  EXPECT_EQ(channel.bins[4095], kPixels);
}

TEST(HistogramApi, RefusesPackedFormats) {
  size_t refused = 0;
  for (const uint32_t id : korvel_test::PublicFormats()) {
    if (!FormatOf(id).packed) continue;
    SCOPED_TRACE(FormatOf(id).name);
    const ModelImage input = MakeFilledImage(id, 6, 4, Fill::kGarbage, id);
    const ExportedImage image(id, 6, 4, input.bytes);
    KORVEL_HISTOGRAM_HANDLE handle = kNoHandle;
    ExpectFailure(KORVEL_Histogram_Construct(image.Handle(), &handle), RefusalAsPacked("Histogram"));
    EXPECT_EQ(handle, kNoHandle);
    ExpectFailure(KORVEL_Histogram_Construct(image.Handle(), nullptr), RefusalAsPacked("Histogram"));
    EXPECT_EQ(SeenOf(image.Handle()), SeenOf(input));
    ++refused;
  }
  EXPECT_EQ(refused, 22u);
}

TEST(HistogramApi, RefusesPixelsOfNoFormat) {
  const ExportedImage image(KORVEL_PIXEL_FORMAT_Invalid, 2, 2);
  KORVEL_HISTOGRAM_HANDLE handle = kNoHandle;
  ExpectFailure(KORVEL_Histogram_Construct(image.Handle(), &handle),
                {1, "error: type=NotImplementedUtilx[-1003], module_id=9004, txt=IMPLEMENT IT!!! format: Invalid"});
  EXPECT_EQ(handle, kNoHandle);
}

TEST(HistogramApi, ChecksImageThenFormatThenPointer) {
  ExpectFailure(KORVEL_Histogram_Construct(nullptr, nullptr), {2, "imageHandle is invalid!"});
  const ExportedImage image(KORVEL_PIXEL_FORMAT_Mono8, 1, 1);
  ExpectFailure(KORVEL_Histogram_Construct(image.Handle(), nullptr), {5, "histogramHandle is not a valid pointer!"});
  const ExportedImage invalid(KORVEL_PIXEL_FORMAT_Invalid, 1, 1);
  ExpectFailure(KORVEL_Histogram_Construct(invalid.Handle(), nullptr), {5, "histogramHandle is not a valid pointer!"});
}

TEST(HistogramApi, ChecksHandleThenPointerThenChannel) {
  const LastError badHandle{2, "histogramHandle is invalid!"};
  ExpectFailure(KORVEL_Histogram_GetPixelFormat(nullptr, nullptr), badHandle);
  ExpectFailure(KORVEL_Histogram_GetNumChannels(nullptr, nullptr), badHandle);
  ExpectFailure(KORVEL_Histogram_GetPixelSumForChannel(nullptr, 9, nullptr), badHandle);
  ExpectFailure(KORVEL_Histogram_GetPixelCountForChannel(nullptr, 9, nullptr), badHandle);
  ExpectFailure(KORVEL_Histogram_GetBinsForChannel(nullptr, 9, nullptr, nullptr), badHandle);
  ExpectFailure(KORVEL_Histogram_Destruct(nullptr), badHandle);

  const ExportedImage image(KORVEL_PIXEL_FORMAT_Mono8, 1, 1);
  const MeasuredHistogram histogram(image.Handle());
  ExpectFailure(KORVEL_Histogram_GetPixelFormat(histogram.Handle(), nullptr),
                {5, "pixelFormat is not a valid pointer!"});
  ExpectFailure(KORVEL_Histogram_GetNumChannels(histogram.Handle(), nullptr),
                {5, "numChannels is not a valid pointer!"});
  ExpectFailure(KORVEL_Histogram_GetPixelSumForChannel(histogram.Handle(), 9, nullptr),
                {5, "pixelSum is not a valid pointer!"});
  ExpectFailure(KORVEL_Histogram_GetPixelCountForChannel(histogram.Handle(), 9, nullptr),
                {5, "pixelCount is not a valid pointer!"});
  uint64_t bins[256] = {};
  ExpectFailure(KORVEL_Histogram_GetBinsForChannel(histogram.Handle(), 9, bins, nullptr),
                {5, "binsSize is not a valid pointer!"});
}

TEST(HistogramApi, RefusesChannelsThatItHasNot) {
  for (const uint32_t format : {KORVEL_PIXEL_FORMAT_Mono8, KORVEL_PIXEL_FORMAT_BGR10, KORVEL_PIXEL_FORMAT_RGBa12}) {
    const ExportedImage image(format, 1, 1);
    const MeasuredHistogram histogram(image.Handle());
    for (const size_t channel : {size_t{FormatOf(format).channels}, size_t{1} << 32, SIZE_MAX}) {
      const LastError outOfRange{6, "channelIndex is out of range!"};
      uint64_t value = 7;
      uint64_t bins[4096] = {7};
      size_t size = 0;
      ExpectFailure(KORVEL_Histogram_GetPixelSumForChannel(histogram.Handle(), channel, &value), outOfRange);
      ExpectFailure(KORVEL_Histogram_GetPixelCountForChannel(histogram.Handle(), channel, &value), outOfRange);
      ExpectFailure(KORVEL_Histogram_GetBinsForChannel(histogram.Handle(), channel, nullptr, &size), outOfRange);
      ExpectFailure(KORVEL_Histogram_GetBinsForChannel(histogram.Handle(), channel, bins, &size), outOfRange);
      EXPECT_EQ(value, 7u);
      EXPECT_EQ(bins[0], 7u);
      EXPECT_EQ(size, 0u);
    }
  }
}

TEST(HistogramApi, GivesBinsInTwoCalls) {
  const ExportedImage image(KORVEL_PIXEL_FORMAT_RGB10, 1, 1, Bytes{1, 0, 2, 0, 3, 0});
  const MeasuredHistogram histogram(image.Handle());
  const LastError before = MarkLastError();
  size_t size = 0;
  EXPECT_EQ(KORVEL_Histogram_GetBinsForChannel(histogram.Handle(), 1, nullptr, &size), 0u);
  EXPECT_EQ(size, 1024u);
  std::vector<uint64_t> bins(1026, 7);
  size = bins.size();
  EXPECT_EQ(KORVEL_Histogram_GetBinsForChannel(histogram.Handle(), 1, bins.data(), &size), 0u);
  EXPECT_EQ(size, 1024u) << "how many were written";
  EXPECT_EQ(bins[2], 1u);
  EXPECT_EQ(std::count(bins.begin(), bins.begin() + 1024, 0u), 1023);
  EXPECT_EQ(bins[1024], 7u);
  EXPECT_EQ(bins[1025], 7u);
  EXPECT_EQ(ReadLastError(), before);
  std::fill(bins.begin(), bins.end(), 7);
  for (const size_t tooSmall : {1023u, 1u, 0u}) {
    size = tooSmall;
    ExpectFailure(KORVEL_Histogram_GetBinsForChannel(histogram.Handle(), 1, bins.data(), &size),
                  {4, "*bins is too small!"});
    EXPECT_EQ(size, tooSmall);
  }
  EXPECT_THAT(bins, Each(7u));
}

TEST(HistogramApi, OutlivesTheImage) {
  std::optional<ExportedImage> image(std::in_place, uint32_t{KORVEL_PIXEL_FORMAT_Mono8}, size_t{2}, size_t{1},
                                     Bytes{4, 5});
  const MeasuredHistogram histogram(image->Handle());
  image->Data()[0] = 77;
  image.reset();
  EXPECT_EQ(histogram.Channel(0).pixelSum, 9u) << "counted at construction";
}

TEST(HistogramApi, IsGoneAfterItsEnd) {
  const ExportedImage image(KORVEL_PIXEL_FORMAT_Mono8, 1, 1);
  KORVEL_HISTOGRAM_HANDLE handle = nullptr;
  ASSERT_EQ(KORVEL_Histogram_Construct(image.Handle(), &handle), 0u);
  ASSERT_EQ(KORVEL_Histogram_Destruct(handle), 0u);
  ExpectFailure(KORVEL_Histogram_Destruct(handle), {2, "histogramHandle is invalid!"});
  uint32_t format = 7;
  ExpectFailure(KORVEL_Histogram_GetPixelFormat(handle, &format), {2, "histogramHandle is invalid!"});
  EXPECT_EQ(format, 7u);
}

TEST(HistogramApi, CountsAMosaicThatChangedItsFormatUnderTheNewOne) {
  const ExportedImage image(KORVEL_PIXEL_FORMAT_BayerGR8, 2, 1, Bytes{3, 4});
  const korvel_test::ExportedTransformer transformer;
  ASSERT_EQ(KORVEL_ImageTransformer_MirrorLeftRightInPlace(transformer.Handle(), image.Handle()), 0u);
  const MeasuredHistogram histogram(image.Handle());
  EXPECT_EQ(histogram.Format(), uint32_t{KORVEL_PIXEL_FORMAT_BayerRG8});
  EXPECT_EQ(histogram.Channel(0).pixelSum, 7u);
}

TEST(HistogramApi, ServesSeveralThreads) {
  const ModelImage input = MakeFilledImage(KORVEL_PIXEL_FORMAT_RGB12, 40, 30, Fill::kRandom, 3);
  const ExportedImage image(input.format, 40, 30, input.bytes);
  const MeasuredHistogram shared(image.Handle());
  const std::vector<ModelHistogramChannel> expected = ModelHistogram(input);
  const auto work = [&] {
    for (int i = 0; i < 50; ++i) {
      ASSERT_EQ(shared.Channels(), expected);
      ASSERT_EQ(MeasuredHistogram(image.Handle()).Channels(), expected);
    }
  };
  std::thread first(work);
  std::thread second(work);
  first.join();
  second.join();
}

}  // namespace
