#include "processing/correction/adaptive_hotpixel_correction.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "processing/module_timing.h"
#include "tests/model/correction_model.h"
#include "tests/support/raw_formats.h"
#include "tests/support/test_images.h"

namespace {

using img::PixelFormatId;
using img::Point2D;
using img::processing::AdaptiveHotpixelCorrection;
using img::processing::ModuleTimingRegistry;
using img::processing::SensitivityLevel;
using korvel_test::Bytes;
using korvel_test::FormatOf;
using korvel_test::IsFormatOfHotpixels;
using korvel_test::kUnwritten;
using korvel_test::LocatedFailure;
using korvel_test::LocatedFailureOf;
using korvel_test::TestImage;
using testing::Each;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

using enum PixelFormatId;

// Seven by seven pixels of 10 with one of 200 in the middle.
const Bytes kHotMiddle = [] {
  Bytes bytes(49, 10);
  bytes[24] = 200;
  return bytes;
}();
const std::vector<Point2D> kMiddle = {{3, 3}};

std::string NameOf(PixelFormatId format) { return std::string(FormatOf(static_cast<uint32_t>(format)).name); }

TEST(AdaptiveHotpixelCorrection, StartsAsLevel3) {
  AdaptiveHotpixelCorrection correction;
  const auto& parameters = correction.Parameters();
  EXPECT_EQ(parameters.noiseSlope, 3u);
  EXPECT_EQ(parameters.noiseFloor, 16u);
  EXPECT_EQ(parameters.gainFactorPercent, 100u);
  EXPECT_EQ(parameters.hotpixelCount, 0u);
  EXPECT_THAT(parameters.hotpixels, IsEmpty());
  EXPECT_FALSE(parameters.adaptive);
  EXPECT_FALSE(parameters.detectOnly);
  EXPECT_EQ(parameters.sensitivity, SensitivityLevel::Level3);
}

TEST(AdaptiveHotpixelCorrection, StoresTheCoefficientsOfEachLevel) {
  struct Level {
    uint32_t number;
    uint32_t slope;
    uint32_t floor;
  };
  AdaptiveHotpixelCorrection correction;
  // A number above the levels leaves the coefficients of the level before.
  for (const Level& level :
       {Level{1, 20, 36}, {6, 20, 36}, {2, 6, 25}, {3, 3, 16}, {0xFFFFFFFF, 3, 16}, {4, 2, 9}, {5, 1, 4}, {6, 1, 4}}) {
    correction.SetSensitivity(SensitivityLevel{level.number});
    EXPECT_EQ(correction.Parameters().sensitivity, SensitivityLevel{level.number});
    EXPECT_EQ(correction.Parameters().noiseSlope, level.slope) << level.number;
    EXPECT_EQ(correction.Parameters().noiseFloor, level.floor) << level.number;
  }
  const auto failure = LocatedFailureOf([&] { correction.SetSensitivity(SensitivityLevel::Invalid); });
  ASSERT_TRUE(failure);
  EXPECT_EQ(failure->status, -1009);
  EXPECT_EQ(failure->text, "AdaptiveHotpixelCorrection: Invalid sensitivity!");
  EXPECT_THAT(failure->location, HasSubstr("img::processing::AdaptiveHotpixelCorrection::SetSensitivity("));
  EXPECT_EQ(correction.Parameters().sensitivity, SensitivityLevel{6});
  EXPECT_EQ(correction.Parameters().noiseSlope, 1u);
}

TEST(AdaptiveHotpixelCorrection, HasWorkingMembersForEqualRawFormatsAlone) {
  AdaptiveHotpixelCorrection correction;
  size_t working = 0;
  for (const PixelFormatId in : korvel_test::kPublicFormats) {
    for (const PixelFormatId out : korvel_test::kPublicFormats) {
      const TestImage input(in, 4, 4);
      const TestImage output(out, 4, 4);
      const auto failure = LocatedFailureOf([&] { correction.CorrectAdaptive(*input, *output); });
      if (in == out && IsFormatOfHotpixels(static_cast<uint32_t>(in))) {
        EXPECT_FALSE(failure);
        ++working;
        continue;
      }
      ASSERT_TRUE(failure) << NameOf(in) << " to " << NameOf(out);
      EXPECT_EQ(failure->status, 7);
      EXPECT_EQ(failure->module, 9003);
      EXPECT_THAT(failure->text, StartsWith("not implemented for format: "));
      EXPECT_THAT(failure->location, HasSubstr("img::processing::TAdaptiveHotpixelCorrection<img::PixelFormatId::" +
                                               NameOf(in) + ", img::PixelFormatId::" + NameOf(out) + ">::ProcessRaw("));
      if (in == out) {
        EXPECT_EQ(failure->text, "not implemented for format: " + NameOf(in));
      }
    }
  }
  EXPECT_EQ(working, 15u);
}

TEST(AdaptiveHotpixelCorrection, CopiesBeforeItFindsThatAFormatHasNone) {
  AdaptiveHotpixelCorrection correction;
  const TestImage input(RGB8, 1, 2, Bytes{1, 2, 3, 4, 5, 6});
  const TestImage output(RGB8, 1, 2);
  EXPECT_TRUE(LocatedFailureOf([&] { correction.CorrectAdaptive(*input, *output); }));
  EXPECT_EQ(output.Content(), input.Content());

  const TestImage untouched(RGB8, 1, 2);
  correction.Parameters().detectOnly = true;
  EXPECT_TRUE(LocatedFailureOf([&] { correction.Process(*input, *untouched); }));
  EXPECT_THAT(untouched.Content(), Each(kUnwritten));
}

TEST(AdaptiveHotpixelCorrection, WritesNothingWhenItOnlyDetects) {
  AdaptiveHotpixelCorrection correction;
  const TestImage input(Mono8, 7, 7, kHotMiddle);
  const TestImage output(Mono8, 7, 7);
  correction.Parameters().detectOnly = true;
  correction.Process(*input, *output);
  EXPECT_THAT(output.Content(), Each(kUnwritten));
  EXPECT_EQ(correction.Parameters().hotpixels, kMiddle);
  EXPECT_EQ(correction.Parameters().hotpixelCount, 1u);
  EXPECT_TRUE(correction.Parameters().detectOnly);
}

TEST(AdaptiveHotpixelCorrection, DetectsOnlyWithoutAListUnlessItIsAdaptive) {
  AdaptiveHotpixelCorrection correction;
  auto& parameters = correction.Parameters();
  const TestImage input(Mono8, 7, 7, kHotMiddle);
  const std::vector<Point2D> elsewhere = {{1, 1}};

  parameters.hotpixels = elsewhere;
  const TestImage kept(Mono8, 7, 7);
  correction.Process(*input, *kept);
  EXPECT_EQ(parameters.hotpixels, elsewhere);
  EXPECT_EQ(kept.Content(), kHotMiddle);

  parameters.adaptive = true;
  const TestImage adapted(Mono8, 7, 7);
  correction.Process(*input, *adapted);
  EXPECT_EQ(parameters.hotpixels, kMiddle);
  EXPECT_THAT(adapted.Content(), Each(10));

  parameters.adaptive = false;
  parameters.hotpixels.clear();
  const TestImage found(Mono8, 7, 7);
  correction.Process(*input, *found);
  EXPECT_EQ(parameters.hotpixels, kMiddle);
  EXPECT_THAT(found.Content(), Each(10));
}

TEST(AdaptiveHotpixelCorrection, SetsItsFlagsByTheCall) {
  AdaptiveHotpixelCorrection correction;
  const auto& parameters = correction.Parameters();
  const TestImage input(Mono8, 7, 7, kHotMiddle);
  const TestImage output(Mono8, 7, 7);
  correction.CorrectAdaptive(*input, *output);
  EXPECT_TRUE(parameters.adaptive);
  EXPECT_FALSE(parameters.detectOnly);
  correction.Detect(*input);
  EXPECT_TRUE(parameters.adaptive) << "as it was";
  EXPECT_TRUE(parameters.detectOnly);
  correction.SetHotpixels(kMiddle);
  correction.Correct(*input, *output);
  EXPECT_FALSE(parameters.adaptive);
  EXPECT_FALSE(parameters.detectOnly);
  correction.Detect(*input);
  EXPECT_FALSE(parameters.adaptive) << "as it was";
}

TEST(AdaptiveHotpixelCorrection, KeepsTheMemoryOfItsList) {
  AdaptiveHotpixelCorrection correction;
  const auto& hotpixels = correction.Parameters().hotpixels;
  const TestImage large(Mono8, 7, 7, kHotMiddle);
  const TestImage small(Mono8, 5, 2, Bytes(10, 3));
  const TestImage output(Mono8, 7, 7);
  correction.Detect(*large);
  EXPECT_GE(hotpixels.capacity(), 49u);
  const Point2D* const memory = hotpixels.data();
  for (int i = 0; i < 3; ++i) {
    correction.Detect(*small);
    correction.CorrectAdaptive(*large, *output);
    correction.SetHotpixels(kMiddle);
    correction.Correct(*large, *output);
  }
  EXPECT_EQ(hotpixels.data(), memory);
}

TEST(AdaptiveHotpixelCorrection, IsTimedUnderItsName) {
  AdaptiveHotpixelCorrection correction;
  const auto runs = [] {
    for (const auto& record : ModuleTimingRegistry::Instance().Records()) {
      if (record.name == "PM_Conversion::AdaptiveHotpixelCorrection") return static_cast<int64_t>(record.count);
    }
    return int64_t{-1};
  };
  const int64_t before = runs();
  ASSERT_GE(before, 0);
  const TestImage input(Mono8, 7, 7, kHotMiddle);
  const TestImage colors(RGB8, 2, 2);
  correction.Detect(*input);
  EXPECT_TRUE(LocatedFailureOf([&] { correction.Detect(*colors); }));
  EXPECT_EQ(runs(), before + 2);
}

}  // namespace
