#include "tools/scene.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <tuple>

namespace korvel::tools {
namespace {

using ::testing::ElementsAre;

TEST(DisplayCurve, KeepsBlackAndWhiteAndBrightensTheMiddle) {
  EXPECT_DOUBLE_EQ(DisplayFromLinear(0), 0);
  EXPECT_NEAR(DisplayFromLinear(1), 1, 1e-12);
  EXPECT_NEAR(DisplayFromLinear(0.18), 0.46, 0.01);
}

TEST(DisplayCurve, IsUndoneByItsInverse) {
  for (int step = 0; step <= 100; ++step) {
    const double value = step / 100.0;
    EXPECT_NEAR(DisplayFromLinear(LinearFromDisplay(value)), value, 1e-4) << value;
  }
}

TEST(Scene, ShowsEachPatchWhereTheChartSaysItIs) {
  for (const auto& [width, height] : {std::tuple<size_t, size_t>{1920, 1080}, {640, 480}, {3000, 4096}}) {
    const Scene scene(width, height);
    for (size_t row = 0; row < kPatchRows; ++row) {
      for (size_t column = 0; column < kPatchColumns; ++column) {
        const Patch patch = ChartPatch(scene, column, row);
        EXPECT_EQ(scene.At(patch.x, patch.y), patch.colour) << width << "x" << height << " " << column << "," << row;
        EXPECT_EQ(scene.At(patch.x - 0.49 * patch.width, patch.y + 0.49 * patch.height), patch.colour);
        EXPECT_NE(scene.At(patch.x - 0.51 * patch.width, patch.y), patch.colour);
      }
    }
  }
}

TEST(Scene, HasNeutralPatchesInTheLastRowOfTheChart) {
  const Scene scene(1920, 1080);
  for (size_t column = 0; column < kPatchColumns; ++column) {
    const LinearColour colour = ChartPatch(scene, column, kPatchRows - 1).colour;
    EXPECT_THAT(colour, ElementsAre(colour[0], colour[0], colour[0])) << column;
  }
}

TEST(Scene, TakesThePixelAsTheMeanOverItsArea) {
  // The lines with a period of 3 pixels are 1.5 pixels wide: of each three pixels one lies half on a line.
  const Scene scene(1920, 1080);
  const auto group = static_cast<size_t>((0.79 + 0.18 * 4.5 / 6) * 1920);
  const auto row = static_cast<size_t>(0.10 * 1080);
  size_t between = 0;
  for (size_t column = group; column < group + 12; ++column) {
    const double light = scene.Pixel(column, row)[0];
    if (light > 0.1 && light < 0.7) ++between;
  }
  EXPECT_EQ(between, 4U);
}

TEST(Scene, StaysWithinTheSensorsRange) {
  for (const auto& [width, height] : {std::tuple<size_t, size_t>{320, 180}, {17, 9}, {1, 1}}) {
    const Scene scene(width, height);
    for (size_t row = 0; row < height; ++row) {
      for (size_t column = 0; column < width; ++column) {
        for (const double light : scene.Pixel(column, row)) {
          ASSERT_TRUE(light >= 0 && light <= 1) << column << "," << row << ": " << light;
        }
      }
    }
  }
}

}  // namespace
}  // namespace korvel::tools
