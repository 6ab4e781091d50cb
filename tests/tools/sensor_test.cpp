#include "tools/sensor.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace korvel::tools {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::Le;

TEST(MosaicChannel, FollowsTheNameOfThePhase) {
  const auto first_square = [](MosaicPhase phase) {
    return std::vector<size_t>{MosaicChannel(phase, 0, 0), MosaicChannel(phase, 1, 0), MosaicChannel(phase, 0, 1),
                               MosaicChannel(phase, 1, 1)};
  };
  EXPECT_THAT(first_square(MosaicPhase::kRG), ElementsAre(0, 1, 1, 2));
  EXPECT_THAT(first_square(MosaicPhase::kGR), ElementsAre(1, 0, 2, 1));
  EXPECT_THAT(first_square(MosaicPhase::kGB), ElementsAre(1, 2, 0, 1));
  EXPECT_THAT(first_square(MosaicPhase::kBG), ElementsAre(2, 1, 1, 0));
  EXPECT_EQ(MosaicChannel(MosaicPhase::kRG, 6, 4), 0U);
  EXPECT_EQ(MosaicChannel(MosaicPhase::kRG, 7, 5), 2U);
}

// Samples of one colour within a patch of the chart, from its middle.
std::vector<double> PatchSamples(const Scene& scene, const std::vector<uint16_t>& mosaic, const Patch& patch,
                                 size_t channel) {
  std::vector<double> samples;
  for (auto row = static_cast<size_t>(patch.y - patch.height / 3);
       row < static_cast<size_t>(patch.y + patch.height / 3); ++row) {
    for (auto column = static_cast<size_t>(patch.x - patch.width / 3);
         column < static_cast<size_t>(patch.x + patch.width / 3); ++column) {
      if (MosaicChannel(MosaicPhase::kRG, column, row) == channel) {
        samples.push_back(mosaic[row * scene.Width() + column]);
      }
    }
  }
  return samples;
}

double Mean(const std::vector<double>& values) {
  double sum = 0;
  for (const double value : values) sum += value;
  return sum / static_cast<double>(values.size());
}

double Deviation(const std::vector<double>& values) {
  const double mean = Mean(values);
  double sum = 0;
  for (const double value : values) sum += (value - mean) * (value - mean);
  return std::sqrt(sum / static_cast<double>(values.size()));
}

TEST(ExposeMosaic, SeesEachPatchInItsDisplayColour) {
  const Scene scene(960, 540);
  const std::vector<uint16_t> mosaic = ExposeMosaic(scene, MosaicPhase::kRG, {});
  for (size_t row = 0; row < kPatchRows; ++row) {
    for (size_t column = 0; column < kPatchColumns; ++column) {
      const Patch patch = ChartPatch(scene, column, row);
      for (size_t channel = 0; channel < 3; ++channel) {
        const double mean = Mean(PatchSamples(scene, mosaic, patch, channel));
        EXPECT_NEAR(mean, DisplayFromLinear(patch.colour[channel]) * 4095, 16)
            << column << "," << row << " channel " << channel;
      }
    }
  }
}

TEST(ExposeMosaic, AddsNoiseOfTheRightStrength) {
  const Scene scene(960, 540);
  const Sensor sensor;
  const std::vector<uint16_t> mosaic = ExposeMosaic(scene, MosaicPhase::kRG, sensor);
  const Patch grey = ChartPatch(scene, 3, 3);
  const double light = grey.colour[1];
  const double electrons = light * sensor.full_well;
  const double deviation = std::sqrt(electrons + sensor.read_noise * sensor.read_noise) / sensor.full_well;
  const double slope = (DisplayFromLinear(light + 1e-4) - DisplayFromLinear(light - 1e-4)) / 2e-4;
  const double expected = deviation * slope * 4095;
  EXPECT_NEAR(Deviation(PatchSamples(scene, mosaic, grey, 1)), expected, 0.1 * expected);
}

TEST(ExposeMosaic, DependsOnTheSeedAlone) {
  const Scene scene(64, 48);
  const std::vector<uint16_t> first = ExposeMosaic(scene, MosaicPhase::kGR, {.seed = 7});
  EXPECT_EQ(first, ExposeMosaic(scene, MosaicPhase::kGR, {.seed = 7}));
  EXPECT_NE(first, ExposeMosaic(scene, MosaicPhase::kGR, {.seed = 8}));
}

TEST(ExposeMosaic, FillsTheBitsThatTheSensorHas) {
  for (const unsigned bits : {8U, 10U, 12U}) {
    const std::vector<uint16_t> mosaic = ExposeMosaic(Scene(320, 180), MosaicPhase::kBG, {.bits = bits});
    ASSERT_EQ(mosaic.size(), 320U * 180U);
    EXPECT_THAT(mosaic, Each(Le((1U << bits) - 1)));
    EXPECT_THAT(mosaic, ::testing::Contains(::testing::Gt((1U << (bits - 1)))));
  }
}

TEST(PackBitStream, PutsTwoSamplesOf12BitsIntoThreeBytes) {
  EXPECT_THAT(PackBitStream({0xABC, 0x123}, 12), ElementsAre(0xBC, 0x3A, 0x12));
}

TEST(PackBitStream, PutsFourSamplesOf10BitsIntoFiveBytes) {
  EXPECT_THAT(PackBitStream({0x3FF, 0x000, 0x3FF, 0x001}, 10), ElementsAre(0xFF, 0x03, 0xF0, 0x7F, 0x00));
}

TEST(PackBitStream, FillsTheLastByteWithZeros) {
  EXPECT_THAT(PackBitStream({0xFFF}, 12), ElementsAre(0xFF, 0x0F));
  EXPECT_THAT(PackBitStream({}, 12), ElementsAre());
}

}  // namespace
}  // namespace korvel::tools
