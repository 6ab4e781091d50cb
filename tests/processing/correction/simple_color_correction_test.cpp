#include "processing/correction/simple_color_correction.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <utility>

#include "tests/model/correction_model.h"
#include "tests/support/raw_formats.h"
#include "tests/support/test_images.h"

namespace {

using img::PixelFormatId;
using img::processing::ColorFactors;
using img::processing::SimpleColorCorrection_Inplace;
using korvel_test::Bytes;
using korvel_test::Fill;
using korvel_test::FormatOf;
using korvel_test::IsFormatOfColorCorrection;
using korvel_test::LocatedFailure;
using korvel_test::LocatedFailureOf;
using korvel_test::MakeFilledImage;
using korvel_test::ModelColorCorrection;
using korvel_test::ModelFeatures;
using korvel_test::ModelImage;
using korvel_test::TestImage;

TEST(SimpleColorCorrection, RefusesFormatsWithoutColours) {
  SimpleColorCorrection_Inplace correction;
  size_t refused = 0;
  for (const PixelFormatId format : korvel_test::kPublicFormats) {
    if (IsFormatOfColorCorrection(static_cast<uint32_t>(format)) || format == PixelFormatId::Mono8) continue;
    ++refused;
    const TestImage image(format, 5, 3);
    const Bytes before = image.Content();
    const auto failure = LocatedFailureOf([&] { correction.Process(*image); });
    const std::string name(FormatOf(static_cast<uint32_t>(format)).name);
    ASSERT_TRUE(failure) << name;
    EXPECT_EQ(failure->status, -1003);
    EXPECT_EQ(failure->text, "No rgb access for format: " + name);
    EXPECT_NE(failure->location.find("img::pixel_modifier::CorrectColor<img::PixelFormatId::" + name + ">::Process("),
              std::string::npos)
        << failure->location;
    EXPECT_EQ(image.Content(), before);
  }
  EXPECT_EQ(refused, 49u - 13 - 1);
}

// Which the exported functions don't let through. Intended: the new blue is what stays.
TEST(SimpleColorCorrection, GivesMonoPixelsTheirNewBlue) {
  SimpleColorCorrection_Inplace correction;
  correction.SetFactors({9, 9, 9, 9, 9, 9, 0.5f, 0.25f, 0.25f});
  const TestImage same(PixelFormatId::Mono8, 3, 2, Bytes{0, 1, 7, 100, 254, 255});
  correction.Process(*same);
  EXPECT_EQ(same.Content(), (Bytes{0, 1, 7, 100, 254, 255}));
  correction.SetFactors({0, 0, 0, 0, 0, 0, 1.5f, 0.25f, -0.25f});
  const TestImage brighter(PixelFormatId::Mono8, 3, 2, Bytes{0, 1, 3, 100, 169, 255});
  correction.Process(*brighter);
  EXPECT_EQ(brighter.Content(), (Bytes{0, 2, 5, 150, 254, 255}));
  correction.SetFactors({1, 1, 1, 1, 1, 1, -1, 0, 0});
  const TestImage negative(PixelFormatId::Mono8, 2, 1, Bytes{1, 255});
  correction.Process(*negative);
  EXPECT_EQ(negative.Content(), (Bytes{0, 0}));
}

TEST(SimpleColorCorrection, TakesAnySize) {
  SimpleColorCorrection_Inplace correction;
  const ColorFactors factors = {1.6f, -0.4f, -0.2f, -0.3f, 1.6f, -0.3f, 0.0f, -0.6f, 1.6f};
  correction.SetFactors(factors);
  for (const PixelFormatId format : korvel_test::kPublicFormats) {
    const auto id = static_cast<uint32_t>(format);
    if (!IsFormatOfColorCorrection(id)) continue;
    for (const auto& [width, height] : {std::pair<size_t, size_t>{1, 1}, {33, 2}, {20, 20}, {700, 3}}) {
      const ModelImage input = MakeFilledImage(id, width, height, Fill::kGarbage, width);
      const TestImage image(format, width, height, input.bytes);
      correction.Process(*image);
      EXPECT_EQ(image.Content(), ModelColorCorrection(input, factors, ModelFeatures{}).bytes)
          << FormatOf(id).name << " " << width << " x " << height;
    }
  }
}

TEST(SimpleColorCorrection, TakesNoNumberAsZero) {
  SimpleColorCorrection_Inplace correction;
  constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
  constexpr float kInfinity = std::numeric_limits<float>::infinity();
  correction.SetFactors({kNan, 1, 1, kInfinity, 0, 0, -kInfinity, 1, 1});
  const TestImage image(PixelFormatId::RGB8, 2, 1, Bytes{1, 2, 3, 0, 2, 3});
  correction.Process(*image);
  EXPECT_EQ(image.Content(), (Bytes{0, 255, 0, 0, 0, 0}));
}

}  // namespace
