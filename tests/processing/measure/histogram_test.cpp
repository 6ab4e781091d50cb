#include "processing/measure/histogram.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "tests/model/format_table.h"
#include "tests/model/measure_model.h"
#include "tests/support/test_images.h"

namespace {

using img::PixelFormatId;
using img::processing::Histogram;
using img::processing::HistogramChannel;
using img::processing::HistogramRecord;
using img::processing::ModuleTimingRecord;
using img::processing::ModuleTimingRegistry;
using korvel_test::Bytes;
using korvel_test::Failure;
using korvel_test::FailureOf;
using korvel_test::Fill;
using korvel_test::FormatRow;
using korvel_test::kFormatTable;
using korvel_test::MakeFilledImage;
using korvel_test::ModelHistogram;
using korvel_test::ModelHistogramChannel;
using korvel_test::ModelImage;
using korvel_test::TestImage;

bool IsMeasured(const FormatRow& row) { return korvel_test::IsPublicFormat(row) && (!row.packed || row.channels == 3); }

std::vector<ModelHistogramChannel> ChannelsOf(const HistogramRecord& record) {
  std::vector<ModelHistogramChannel> channels;
  for (const HistogramChannel& channel : record.channels) {
    channels.push_back({channel.pixelSum, channel.pixelCount, channel.bins});
  }
  return channels;
}

TEST(Histogram, MeasuresOneFormatAfterTheOther) {
  Histogram histogram;
  size_t measured = 0;
  for (const FormatRow& row : kFormatTable) {
    if (!IsMeasured(row)) continue;
    ++measured;
    SCOPED_TRACE(row.name);
    for (const Fill fill : korvel_test::kAllFills) {
      const ModelImage input = MakeFilledImage(row.id, 13, 7, fill, row.id);
      const TestImage image(static_cast<PixelFormatId>(row.id), 13, 7, input.bytes);
      HistogramRecord record;
      histogram.Process(*image, record);
      EXPECT_EQ(record.format, static_cast<PixelFormatId>(row.id));
      EXPECT_TRUE(ChannelsOf(record) == ModelHistogram(input)) << NameOf(fill);
    }
  }
  EXPECT_EQ(measured, 29u) << "RGB10p32 and BGR10p32 too";
}

TEST(Histogram, CountsThreeFieldsOfAWordWithoutTheSpareBits) {
  Histogram histogram;
  HistogramRecord record;
  const TestImage image(PixelFormatId::BGR10p32, 1, 1, Bytes{0x01, 0x08, 0xF0, 0xFF});
  histogram.Process(*image, record);
  ASSERT_EQ(record.channels.size(), 3u);
  EXPECT_EQ(record.channels[0].pixelSum, 1u);
  EXPECT_EQ(record.channels[1].pixelSum, 2u);
  EXPECT_EQ(record.channels[2].pixelSum, 1023u);
  for (const HistogramChannel& channel : record.channels) EXPECT_EQ(channel.bins.size(), 1024u);
}

TEST(Histogram, AddsToARecordInUse) {
  Histogram histogram;
  const TestImage image(PixelFormatId::Mono8, 2, 1, Bytes{3, 4});
  HistogramRecord record;
  histogram.Process(*image, record);
  histogram.Process(*image, record);
  ASSERT_EQ(record.channels.size(), 1u);
  EXPECT_EQ(record.channels[0].pixelSum, 14u);
  EXPECT_EQ(record.channels[0].pixelCount, 4u);
  EXPECT_EQ(record.channels[0].bins[3], 2u);
}

TEST(Histogram, BringsARecordInUseToItsFormat) {
  Histogram histogram;
  HistogramRecord record;
  const TestImage colour(PixelFormatId::RGBa12, 1, 1, Bytes{1, 0, 2, 0, 3, 0, 4, 0});
  histogram.Process(*colour, record);
  const TestImage mono(PixelFormatId::Mono8, 1, 1, Bytes{9});
  histogram.Process(*mono, record);
  EXPECT_EQ(record.format, PixelFormatId::Mono8);
  ASSERT_EQ(record.channels.size(), 1u);
  EXPECT_EQ(record.channels[0].bins.size(), 256u);
  EXPECT_EQ(record.channels[0].bins[1], 1u);
  EXPECT_EQ(record.channels[0].bins[9], 1u);
  EXPECT_EQ(record.channels[0].pixelSum, 10u);
  const TestImage rgb(PixelFormatId::RGB10, 1, 1, Bytes{5, 0, 6, 0, 7, 0});
  histogram.Process(*rgb, record);
  ASSERT_EQ(record.channels.size(), 3u);
  EXPECT_EQ(record.channels[0].bins.size(), 1024u);
  EXPECT_EQ(record.channels[0].pixelCount, 3u);
  EXPECT_EQ(record.channels[1].pixelCount, 1u);
  EXPECT_EQ(std::count(record.channels[1].bins.begin(), record.channels[1].bins.end(), 0u), 1023);
}

TEST(Histogram, MeasuresAPartOfAnImage) {
  Histogram histogram;
  const TestImage image(PixelFormatId::Mono8, 3, 3, Bytes{1, 2, 3, 4, 5, 6, 7, 8, 9});
  HistogramRecord record;
  histogram.Process(*image.Shared()->Region({1, 1}, {2, 2}), record);
  EXPECT_EQ(record.channels[0].pixelSum, 5u + 6 + 8 + 9);
  EXPECT_EQ(record.channels[0].pixelCount, 4u);
}

TEST(Histogram, RefusesFormatsWhoseChannelsHaveNoAddress) {
  Histogram histogram;
  size_t refused = 0;
  for (const FormatRow& row : kFormatTable) {
    const bool isPublic = korvel_test::IsPublicFormat(row) || row.id == 0;
    if (!isPublic || IsMeasured(row)) continue;
    const TestImage image(static_cast<PixelFormatId>(row.id), 4, 2);
    HistogramRecord record;
    EXPECT_EQ(FailureOf([&] { histogram.Process(*image, record); }),
              (Failure{-1003, 9004, "IMPLEMENT IT!!! format: " + std::string(row.name)}));
    ++refused;
  }
  EXPECT_EQ(refused, 21u);
}

TEST(Histogram, CountsItsRunsUnderItsName) {
  const auto runs = [] {
    for (const ModuleTimingRecord& record : ModuleTimingRegistry::Instance().Records()) {
      if (record.name == "PM_Measure::Histogram") return record.count;
    }
    return uint64_t{0};
  };
  Histogram histogram;
  const uint64_t before = runs();
  const TestImage image(PixelFormatId::Mono8, 1, 1, Bytes{9});
  HistogramRecord record;
  histogram.Process(*image, record);
  Histogram().Process(*image, record);
  EXPECT_EQ(runs(), before + 2);
  const TestImage packed(PixelFormatId::Mono10p, 4, 1);
  EXPECT_ANY_THROW(histogram.Process(*packed, record));
  EXPECT_EQ(runs(), before + 3) << "runs that end by an exception count, too";
}

}  // namespace
