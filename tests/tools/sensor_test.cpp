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

TEST(Expose, SeesEachPatchInItsDisplayColour) {
  const Scene scene(960, 540);
  const std::vector<uint16_t> mosaic = Expose(MosaicLight(scene, MosaicPhase::kRG), {});
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

TEST(Expose, AddsNoiseOfTheRightStrength) {
  const Scene scene(960, 540);
  const Sensor sensor;
  const std::vector<uint16_t> mosaic = Expose(MosaicLight(scene, MosaicPhase::kRG), sensor);
  const Patch grey = ChartPatch(scene, 3, 3);
  const double light = grey.colour[1];
  const double electrons = light * sensor.full_well;
  const double deviation = std::sqrt(electrons + sensor.read_noise * sensor.read_noise) / sensor.full_well;
  const double slope = (DisplayFromLinear(light + 1e-4) - DisplayFromLinear(light - 1e-4)) / 2e-4;
  const double expected = deviation * slope * 4095;
  EXPECT_NEAR(Deviation(PatchSamples(scene, mosaic, grey, 1)), expected, 0.1 * expected);
}

TEST(Expose, DependsOnTheSeedAlone) {
  const Scene scene(64, 48);
  const std::vector<float> light = MosaicLight(scene, MosaicPhase::kGR);
  const std::vector<uint16_t> first = Expose(light, {.seed = 7});
  EXPECT_EQ(first, Expose(light, {.seed = 7}));
  EXPECT_NE(first, Expose(light, {.seed = 8}));
}

TEST(Expose, FillsTheBitsThatTheSensorHas) {
  for (const unsigned bits : {8U, 10U, 12U}) {
    const std::vector<uint16_t> mosaic = Expose(MosaicLight(Scene(320, 180), MosaicPhase::kBG), {.bits = bits});
    ASSERT_EQ(mosaic.size(), 320U * 180U);
    EXPECT_THAT(mosaic, Each(Le((1U << bits) - 1)));
    EXPECT_THAT(mosaic, ::testing::Contains(::testing::Gt((1U << (bits - 1)))));
  }
}

TEST(Expose, WithoutNoiseGivesTheDisplaysCurve) {
  const std::vector<uint16_t> samples = Expose({0.0F, 0.18F, 1.0F, 7.0F}, {.bits = 8, .noise = 0});
  EXPECT_THAT(samples, ElementsAre(0, std::lround(DisplayFromLinear(0.18) * 255), 255, 255));
}

TEST(GreyLight, IsTheLuminanceOfTheColours) {
  const Scene scene(40, 30);
  const std::vector<float> grey = GreyLight(scene);
  const std::vector<float> colours = ColourLight(scene);
  ASSERT_EQ(grey.size(), 40U * 30U);
  ASSERT_EQ(colours.size(), 3 * grey.size());
  for (size_t i = 0; i < grey.size(); ++i) {
    EXPECT_NEAR(grey[i], 0.2126 * colours[3 * i] + 0.7152 * colours[3 * i + 1] + 0.0722 * colours[3 * i + 2], 1e-6);
  }
}

TEST(MosaicLight, IsThatOfTheColourWhichAPixelSees) {
  const Scene scene(40, 30);
  const std::vector<float> mosaic = MosaicLight(scene, MosaicPhase::kGB);
  const std::vector<float> colours = ColourLight(scene);
  for (size_t i = 0; i < mosaic.size(); ++i) {
    EXPECT_EQ(mosaic[i], colours[3 * i + MosaicChannel(MosaicPhase::kGB, i % 40, i / 40)]) << i;
  }
}

TEST(AddHotPixels, LetsAsManyPixelsGlowAsAreAskedFor) {
  for (const size_t count : {0U, 1U, 20U, 99U, 100U}) {
    std::vector<float> light(300);
    AddHotPixels(light, 3, count, 5);
    size_t glowing = 0;
    for (size_t first = 0; first < light.size(); first += 3) {
      EXPECT_EQ(light[first], light[first + 1]);
      EXPECT_EQ(light[first], light[first + 2]);
      if (light[first] > 0) {
        EXPECT_GT(light[first], 0.3F);
        ++glowing;
      }
    }
    EXPECT_EQ(glowing, count);
  }
}

TEST(AddHotPixels, DependsOnTheSeed) {
  std::vector<float> first(1000), same(1000), other(1000);
  AddHotPixels(first, 1, 10, 5);
  AddHotPixels(same, 1, 10, 5);
  AddHotPixels(other, 1, 10, 6);
  EXPECT_EQ(first, same);
  EXPECT_NE(first, other);
}

}  // namespace
}  // namespace korvel::tools
