// The model of histograms and lines against numbers that were counted by hand.
#include "tests/model/measure_model.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "tests/model/format_table.h"

namespace korvel_test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

ModelImage ImageOfSamples(uint32_t format, size_t width, size_t height, const std::vector<uint32_t>& samples) {
  return MakeModelImage(format, width, height, EncodeSamples(format, width * height, samples));
}

TEST(MeasureModel, CountsOneChannel) {
  const auto channels = ModelHistogram(ImageOfSamples(IdOf("Mono8"), 2, 2, {0, 0, 255, 1}));
  ASSERT_EQ(channels.size(), 1u);
  EXPECT_EQ(channels[0].pixelCount, 4u);
  EXPECT_EQ(channels[0].pixelSum, 256u);
  ASSERT_EQ(channels[0].bins.size(), 256u);
  EXPECT_EQ(channels[0].bins[0], 2u);
  EXPECT_EQ(channels[0].bins[1], 1u);
  EXPECT_EQ(channels[0].bins[2], 0u);
  EXPECT_EQ(channels[0].bins[255], 1u);
}

TEST(MeasureModel, CountsChannelsInTheOrderOfMemory) {
  const auto channels = ModelHistogram(ImageOfSamples(IdOf("BGRa12"), 2, 1, {1, 20, 300, 4095, 1, 21, 300, 0}));
  ASSERT_EQ(channels.size(), 4u);
  const uint64_t sums[] = {2, 41, 600, 4095};
  for (size_t channel = 0; channel < 4; ++channel) {
    EXPECT_EQ(channels[channel].pixelCount, 2u);
    EXPECT_EQ(channels[channel].pixelSum, sums[channel]);
    EXPECT_EQ(channels[channel].bins.size(), 4096u);
  }
  EXPECT_EQ(channels[0].bins[1], 2u);
  EXPECT_EQ(channels[1].bins[20], 1u);
  EXPECT_EQ(channels[3].bins[4095], 1u);
}

TEST(MeasureModel, CountsWhatIsTooLargeInTheLastBin) {
  const auto channels = ModelHistogram(MakeModelImage(IdOf("Mono10"), 3, 1, {0xFF, 0x03, 0x00, 0x04, 0xFF, 0xFF}));
  EXPECT_EQ(channels[0].bins[1023], 3u);
  EXPECT_EQ(channels[0].pixelSum, 1023u + 1024 + 65535);
}

TEST(MeasureModel, CountsThreeFieldsOfAWord) {
  const auto channels = ModelHistogram(MakeModelImage(IdOf("RGB10p32"), 1, 1, {0x01, 0x08, 0xF0, 0xFF}));
  ASSERT_EQ(channels.size(), 3u);
  EXPECT_EQ(channels[0].bins[1], 1u);
  EXPECT_EQ(channels[1].bins[2], 1u);
  EXPECT_EQ(channels[2].bins[1023], 1u);
}

TEST(MeasureModel, ReadsRowsAndColumns) {
  const ModelImage mono = ImageOfSamples(IdOf("Mono8"), 4, 2, {1, 2, 3, 4, 5, 6, 7, 8});
  EXPECT_THAT(ModelLine(mono, 0, 0), ElementsAre(ElementsAre(1, 2, 3, 4)));
  EXPECT_THAT(ModelLine(mono, 0, 1), ElementsAre(ElementsAre(5, 6, 7, 8)));
  EXPECT_THAT(ModelLine(mono, 1, 3), ElementsAre(ElementsAre(4, 8)));
  EXPECT_THAT(ModelLine(mono, 9, 0), ElementsAre(ElementsAre(1, 5)));
  const ModelImage colour = ImageOfSamples(IdOf("RGB10"), 2, 2, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 1012});
  EXPECT_THAT(ModelLine(colour, 0, 1), ElementsAre(ElementsAre(7, 10), ElementsAre(8, 11), ElementsAre(9, 1012)));
  EXPECT_THAT(ModelLine(colour, 1, 1), ElementsAre(ElementsAre(4, 10), ElementsAre(5, 11), ElementsAre(6, 1012)));
}

TEST(MeasureModel, ReadsNothingOutside) {
  const ModelImage image = ImageOfSamples(IdOf("BGR8"), 1, 1, {1, 2, 3});
  EXPECT_THAT(ModelLine(image, 0, 1), ElementsAre(IsEmpty(), IsEmpty(), IsEmpty()));
  EXPECT_THAT(ModelLine(image, 1, 1), ElementsAre(IsEmpty(), IsEmpty(), IsEmpty()));
  EXPECT_THAT(ModelLine(image, 2, UINT64_MAX), ElementsAre(IsEmpty(), IsEmpty(), IsEmpty()));
}

}  // namespace
}  // namespace korvel_test
