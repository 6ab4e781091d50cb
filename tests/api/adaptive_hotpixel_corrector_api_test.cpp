#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <korvel/korvel.h>

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "tests/model/correction_model.h"
#include "tests/support/exported_objects.h"
#include "tests/support/exported_operations.h"
#include "tests/support/last_error.h"

namespace korvel_test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using Points = std::vector<ModelPoint>;
using Samples = std::vector<uint32_t>;

constexpr KORVEL_POINT_2D kUnwrittenPoint{0x5A5A, 0x5A5A};
constexpr uint64_t kMax = std::numeric_limits<uint64_t>::max();

// The coefficients of the levels 1 to 5.
constexpr NoiseModel kLevels[] = {{20, 36, 100}, {6, 25, 100}, {3, 16, 100}, {2, 9, 100}, {1, 4, 100}};

NoiseModel NoiseOf(uint32_t level, uint32_t percent) {
  NoiseModel noise = kLevels[level - 1];
  noise.gainFactorPercent = percent;
  return noise;
}

std::vector<KORVEL_POINT_2D> ExportedPoints(const Points& points) {
  std::vector<KORVEL_POINT_2D> exported;
  for (const ModelPoint& point : points) exported.push_back({point.x, point.y});
  return exported;
}

// A dark scene with some noise, bright and dark pixels, and groups of them.
ModelImage MakeSensorImage(uint32_t format, size_t width, size_t height, uint64_t seed) {
  ModelRandom random(seed);
  const uint32_t maximum = FormatOf(format).maximum;
  const uint32_t level = random.Below(maximum / 2);
  const uint32_t noise = 1 + random.Below(maximum / 32);
  Samples samples(width * height);
  for (size_t i = 0; i < samples.size(); ++i) {
    const uint32_t kind = random.Below(16);
    samples[i] = std::min(maximum, level + random.Below(noise));
    if (kind == 0) samples[i] = random.Below(maximum + 1);
    if (kind == 1) samples[i] = maximum;
    if (kind == 2) samples[i] = 0;
    if (kind == 3 && i > 0) samples[i] = samples[i - 1];
  }
  return MakeModelImage(format, width, height, EncodeSamples(format, width * height, samples));
}

// Positions in the image, some twice, and some outside.
Points MakeList(size_t width, size_t height, uint64_t seed) {
  ModelRandom random(seed);
  Points points;
  for (size_t i = 0; i < 1 + width * height / 3; ++i) {
    points.push_back({random.Below(static_cast<uint32_t>(width)), random.Below(static_cast<uint32_t>(height))});
    if (i % 7 == 0) points.push_back({width, 0});
    if (i % 7 == 1) points.push_back({0, height + i});
    if (i % 7 == 2) points.push_back({kMax, kMax - i});
    if (i % 7 == 3) points.push_back(points.front());
  }
  return points;
}

// A flat image with one pixel of another value.
ModelImage ImageWithPixel(uint32_t format, size_t width, size_t height, uint32_t level, ModelPoint point,
                          uint32_t value) {
  Samples samples(width * height, level);
  samples.at(point.y * width + point.x) = value;
  return MakeModelImage(format, width, height, EncodeSamples(format, width * height, samples));
}

ModelImage Mono8Image(size_t width, size_t height, const Bytes& bytes) {
  return MakeModelImage(IdOf("Mono8"), width, height, bytes);
}

LastError NotImplemented(uint32_t format) {
  return {7, "error: type=ImageFormatNotSupported[7], module_id=9003, txt=not implemented for format: " +
                 std::string(FormatOf(format).name)};
}

class AdaptiveHotpixelCorrectorApi : public testing::Test {
 protected:
  KORVEL_ADAPTIVE_HOTPIXEL_CORRECTOR_HANDLE Handle() const { return corrector.Handle(); }
  void Set(uint32_t level, uint32_t percent) {
    ASSERT_EQ(KORVEL_AdaptiveHotpixelCorrector_SetSensitivity(Handle(), level), 0u);
    ASSERT_EQ(KORVEL_AdaptiveHotpixelCorrector_SetGainFactorPercent(Handle(), percent), 0u);
  }
  uint32_t Sensitivity() const {
    uint32_t level = 99;
    EXPECT_EQ(KORVEL_AdaptiveHotpixelCorrector_GetSensitivity(Handle(), &level), 0u);
    return level;
  }
  ChangesImage Detect() {
    return [this](auto image) { return KORVEL_AdaptiveHotpixelCorrector_Detect(Handle(), image); };
  }
  MakesImage Correct(const Points& points) {
    return [this, list = ExportedPoints(points)](auto image, auto* output) {
      return KORVEL_AdaptiveHotpixelCorrector_Correct(Handle(), image, list.data(), list.size(), output);
    };
  }
  MakesImage CorrectAdaptive() {
    return [this](auto image, auto* output) {
      return KORVEL_AdaptiveHotpixelCorrector_CorrectAdaptive(Handle(), image, output);
    };
  }
  size_t Count() const {
    size_t size = 99;
    EXPECT_EQ(KORVEL_AdaptiveHotpixelCorrector_GetHotpixels(Handle(), nullptr, &size), 0u);
    return size;
  }
  // What the corrector writes into an array of that size, which must be large enough.
  Points Hotpixels(size_t size) const {
    std::vector<KORVEL_POINT_2D> exported(size + 1, kUnwrittenPoint);
    size_t written = size;
    EXPECT_EQ(KORVEL_AdaptiveHotpixelCorrector_GetHotpixels(Handle(), exported.data(), &written), 0u);
    EXPECT_EQ(written, Count());
    EXPECT_EQ(exported.back().x, kUnwrittenPoint.x);
    Points points;
    for (const KORVEL_POINT_2D& point : exported) {
      if (point.x == kUnwrittenPoint.x && point.y == kUnwrittenPoint.y) break;
      points.push_back({point.x, point.y});
    }
    return points;
  }
  Points Detected(const ModelImage& image) {
    ExpectChangedImage(image, image, Detect());
    return Hotpixels(Count());
  }
  uint32_t CorrectedAt(const ModelImage& image, const Points& list, ModelPoint point) {
    const ExportedImage input(image.format, image.width, image.height, image.bytes);
    KORVEL_IMAGE_HANDLE output = nullptr;
    EXPECT_EQ(Correct(list)(input.Handle(), &output), 0u) << ReadLastError();
    const ExportedImage result(output);
    return DecodeSamples(image.format, image.width * image.height, result.Content())[point.y * image.width + point.x];
  }

  ExportedAdaptiveHotpixelCorrector corrector;
};

// ----------------------------------------------------------------------------------------------------- settings --

TEST_F(AdaptiveHotpixelCorrectorApi, StartsAtLevel3And100Percent) {
  const LastError before = MarkLastError();
  EXPECT_EQ(Sensitivity(), 3u);
  uint32_t percent = 1;
  EXPECT_EQ(KORVEL_AdaptiveHotpixelCorrector_GetGainFactorPercent(Handle(), &percent), 0u);
  EXPECT_EQ(percent, 100u);
  EXPECT_EQ(Count(), 0u);
  EXPECT_THAT(Hotpixels(4), IsEmpty());
  EXPECT_EQ(ReadLastError(), before);
}

TEST_F(AdaptiveHotpixelCorrectorApi, TakesAnyGainFactor) {
  for (const uint32_t set : {0u, 1u, 99u, 0xFFFFFFFFu}) {
    uint32_t percent = 7;
    EXPECT_EQ(KORVEL_AdaptiveHotpixelCorrector_SetGainFactorPercent(Handle(), set), 0u);
    EXPECT_EQ(KORVEL_AdaptiveHotpixelCorrector_GetGainFactorPercent(Handle(), &percent), 0u);
    EXPECT_EQ(percent, set);
  }
}

TEST_F(AdaptiveHotpixelCorrectorApi, RefusesTheSensitivity0) {
  ASSERT_EQ(KORVEL_AdaptiveHotpixelCorrector_SetSensitivity(Handle(), 5), 0u);
  EXPECT_EQ(KORVEL_AdaptiveHotpixelCorrector_SetSensitivity(Handle(), 0), 1u);
  EXPECT_EQ(ReadLastError(), (LastError{1,
                                        "error: type=InvalidParameterUtilx[-1009], module_id=9003, "
                                        "txt=AdaptiveHotpixelCorrection: Invalid sensitivity!"}));
  EXPECT_EQ(Sensitivity(), 5u);
  const ModelImage image = MakeSensorImage(IdOf("Mono8"), 30, 20, 1);
  EXPECT_EQ(Detected(image), ModelDetectHotpixels(image, kLevels[4]));
}

// Intended: the number is kept, the coefficients are not changed.
TEST_F(AdaptiveHotpixelCorrectorApi, TakesLargerSensitivitiesWithoutEffect) {
  const ModelImage image = MakeSensorImage(IdOf("BayerRG8"), 30, 20, 1);
  for (const uint32_t level : {1u, 5u}) {
    ASSERT_EQ(KORVEL_AdaptiveHotpixelCorrector_SetSensitivity(Handle(), level), 0u);
    for (const uint32_t large : {6u, 7u, 0xFFFFFFFFu}) {
      EXPECT_EQ(KORVEL_AdaptiveHotpixelCorrector_SetSensitivity(Handle(), large), 0u);
      EXPECT_EQ(Sensitivity(), large);
      EXPECT_EQ(Detected(image), ModelDetectHotpixels(image, kLevels[level - 1]));
    }
  }
  EXPECT_NE(ModelDetectHotpixels(image, kLevels[0]), ModelDetectHotpixels(image, kLevels[4]));
}

TEST_F(AdaptiveHotpixelCorrectorApi, NamesNullPointersInItsOwnWay) {
  EXPECT_EQ(KORVEL_AdaptiveHotpixelCorrector_GetSensitivity(Handle(), nullptr), 5u);
  EXPECT_EQ(ReadLastError(), (LastError{5, "*sensitivityLevel is invalid!"}));
  EXPECT_EQ(KORVEL_AdaptiveHotpixelCorrector_GetGainFactorPercent(Handle(), nullptr), 5u);
  EXPECT_EQ(ReadLastError(), (LastError{5, "*params is invalid!"}));
}

// ---------------------------------------------------------------------------------------------------- detection --

TEST_F(AdaptiveHotpixelCorrectorApi, FindsNothingInAFlatImage) {
  for (uint32_t level = 1; level <= 5; ++level) {
    for (const uint32_t percent : {0u, 100u}) {
      Set(level, percent);
      for (const uint32_t format : {IdOf("Mono8"), IdOf("BayerGB12")}) {
        for (const Fill fill : {Fill::kZero, Fill::kFlat, Fill::kMaximum}) {
          EXPECT_THAT(Detected(MakeFilledImage(format, 9, 8, fill, level)), IsEmpty());
        }
      }
    }
  }
}

struct Threshold {
  uint32_t format;
  uint32_t level;
  uint32_t percent;
  uint32_t value;     // of the pixel
  uint32_t distance;  // the smallest from its neighbours at which it is hot
};

class HotpixelThreshold : public AdaptiveHotpixelCorrectorApi, public testing::WithParamInterface<Threshold> {};

TEST_P(HotpixelThreshold, IsExact) {
  const Threshold& threshold = GetParam();
  Set(threshold.level, threshold.percent);
  const ModelPoint point{4, 4};
  const auto imageAt = [&](uint32_t distance) {
    return ImageWithPixel(threshold.format, 9, 9, threshold.value - distance, point, threshold.value);
  };
  EXPECT_THAT(Detected(imageAt(threshold.distance)), ElementsAre(point));
  EXPECT_THAT(Detected(imageAt(threshold.distance - 1)), IsEmpty());
}

// (2 x distance) squared against value x A + B.
INSTANTIATE_TEST_SUITE_P(ByHand, HotpixelThreshold,
                         testing::Values(Threshold{IdOf("Mono8"), 1, 100, 100, 23},      // 2116 above 2036
                                         Threshold{IdOf("Mono8"), 2, 100, 100, 13},      // 676 above 625
                                         Threshold{IdOf("Mono8"), 3, 100, 100, 9},       // 324 above 316
                                         Threshold{IdOf("Mono8"), 4, 100, 100, 8},       // 256 above 209
                                         Threshold{IdOf("Mono8"), 5, 100, 100, 6},       // 144 above 104
                                         Threshold{IdOf("BayerRG8"), 3, 100, 100, 9},    //
                                         Threshold{IdOf("BayerGR8"), 3, 100, 100, 9},    //
                                         Threshold{IdOf("Mono10"), 3, 100, 400, 36},     // 5184 above 400 x 12 + 256
                                         Threshold{IdOf("BayerBG10"), 3, 100, 400, 36},  //
                                         Threshold{IdOf("Mono12"), 3, 100, 1600, 143},   // 81796 above 1600 x 48 + 4096
                                         Threshold{IdOf("BayerGB12"), 3, 100, 1600, 143},  //
                                         Threshold{IdOf("Mono8"), 3, 200, 100, 13},        // 676 above 100 x 6 + 64
                                         Threshold{IdOf("Mono8"), 3, 50, 100, 6},          // 144 above 100 x 1 + 4
                                         Threshold{IdOf("Mono10"), 3, 50, 400,
                                                   21},  // 1764 above 400 x 4 + 64: shifted after the division
                                         Threshold{IdOf("Mono8"), 5, 0, 100, 1},            // 4 above 0
                                         Threshold{IdOf("Mono8"), 5, 100, 95, 5},           // 100 above 99
                                         Threshold{IdOf("Mono8"), 5, 100, 96, 6},           // 100 isn't above 100
                                         Threshold{IdOf("Mono8"), 1, 0x40000000, 100, 1}),  // both products wrap to 0
                         [](const testing::TestParamInfo<Threshold>& param) {
                           return std::string(FormatOf(param.param.format).name) + "Level" +
                                  std::to_string(param.param.level) + "Percent" + std::to_string(param.param.percent) +
                                  "Value" + std::to_string(param.param.value);
                         });

// Intended: 196 is above 55 x 3 + 16, the threshold of the pixel to the right, and not above the 62 x 3 + 16 of its
// own.
TEST_F(AdaptiveHotpixelCorrectorApi, TakesTheThresholdOfAMonoImagesFirstColumnFromTheNextPixel) {
  for (size_t y = 0; y < 5; ++y) {
    EXPECT_THAT(Detected(ImageWithPixel(IdOf("Mono8"), 5, 5, 55, {0, y}, 62)), ElementsAre(ModelPoint{0, y}));
    EXPECT_THAT(Detected(ImageWithPixel(IdOf("Mono8"), 5, 5, 55, {1, y}, 62)), IsEmpty());
    EXPECT_THAT(Detected(ImageWithPixel(IdOf("Mono8"), 5, 5, 55, {4, y}, 62)), IsEmpty());
  }
  EXPECT_THAT(Detected(ImageWithPixel(IdOf("BayerGR8"), 8, 5, 55, {0, 2}, 62)), IsEmpty());
}

TEST_F(AdaptiveHotpixelCorrectorApi, FindsAPixelAnywhereInTheImage) {
  for (const uint32_t format : PublicFormats()) {
    if (!IsFormatOfHotpixels(format)) continue;
    for (const auto& [width, height] : {std::pair<size_t, size_t>{4, 4}, {5, 4}, {4, 5}, {7, 6}, {8, 9}}) {
      for (size_t y = 0; y < height; ++y) {
        for (size_t x = 0; x < width; ++x) {
          const ModelImage image = ImageWithPixel(format, width, height, 5, {x, y}, FormatOf(format).maximum);
          ASSERT_THAT(Detected(image), ElementsAre(ModelPoint{x, y}))
              << FormatOf(format).name << " " << width << " x " << height;
        }
      }
    }
  }
}

// Neighbours of other colours don't count: bright lines and columns of one colour are no hot pixels, and a pixel of one
// colour among bright ones of the others is.
TEST_F(AdaptiveHotpixelCorrectorApi, ComparesBayerPixelsWithTheirOwnColour) {
  Samples samples(10 * 10);
  for (size_t i = 0; i < samples.size(); ++i) samples[i] = i % 10 % 2 == 0 && i / 10 % 2 == 0 ? 250 : 20;
  samples[5 * 10 + 4] = 90;  // green in BayerRG8
  const ModelImage image = MakeModelImage(IdOf("BayerRG8"), 10, 10, EncodeSamples(IdOf("BayerRG8"), 100, samples));
  EXPECT_THAT(Detected(image), ElementsAre(ModelPoint{4, 5}));
}

TEST_F(AdaptiveHotpixelCorrectorApi, ListsNoDarkPixel) {
  const ModelImage image = ImageWithPixel(IdOf("Mono8"), 7, 7, 200, {3, 3}, 0);
  EXPECT_THAT(Detected(image), IsEmpty());
  EXPECT_EQ(CorrectedAt(image, {{3, 3}}, {3, 3}), 200u);
}

TEST_F(AdaptiveHotpixelCorrectorApi, ListsPixelsRowByRow) {
  Samples samples(12 * 9, 10);
  for (const size_t i : {3u * 12 + 8u, 3u * 12 + 2u, 0u * 12 + 11u, 8u * 12 + 0u, 6u * 12 + 5u}) samples[i] = 200;
  const ModelImage image = MakeModelImage(IdOf("Mono8"), 12, 9, EncodeSamples(IdOf("Mono8"), 12 * 9, samples));
  EXPECT_THAT(Detected(image),
              ElementsAre(ModelPoint{11, 0}, ModelPoint{2, 3}, ModelPoint{8, 3}, ModelPoint{5, 6}, ModelPoint{0, 8}));
}

TEST_F(AdaptiveHotpixelCorrectorApi, GivesItsListInTwoCalls) {
  Samples samples(12 * 9, 10);
  for (const size_t i : {5u, 40u, 70u}) samples[i] = 200;
  const ModelImage image = MakeModelImage(IdOf("Mono8"), 12, 9, EncodeSamples(IdOf("Mono8"), 12 * 9, samples));
  ASSERT_EQ(Detected(image).size(), 3u);
  std::vector<KORVEL_POINT_2D> points(3, kUnwrittenPoint);
  size_t size = 2;
  EXPECT_EQ(KORVEL_AdaptiveHotpixelCorrector_GetHotpixels(Handle(), points.data(), &size), 4u);
  EXPECT_EQ(ReadLastError(), (LastError{4, "*hotpixels is too small!"}));
  EXPECT_EQ(size, 2u);
  EXPECT_EQ(points[0].x, kUnwrittenPoint.x);
  EXPECT_EQ(KORVEL_AdaptiveHotpixelCorrector_GetHotpixels(Handle(), points.data(), nullptr), 5u);
  EXPECT_EQ(ReadLastError(), (LastError{5, "detectedHotpixelsSize is not a valid pointer!"}));
  EXPECT_EQ(KORVEL_AdaptiveHotpixelCorrector_GetHotpixels(nullptr, nullptr, nullptr), 2u);
  EXPECT_EQ(ReadLastError(), (LastError{2, "adaptiveHotpixelCorrectorHandle is invalid!"}));
  EXPECT_EQ(Hotpixels(10).size(), 3u);
}

// --------------------------------------------------------------------------------------------------- correction --

TEST_F(AdaptiveHotpixelCorrectorApi, RoundsTowardTheOldValue) {
  const auto imageOf = [](uint8_t value) { return Mono8Image(3, 3, {11, 11, 11, 11, value, 12, 12, 12, 12}); };
  EXPECT_EQ(CorrectedAt(imageOf(13), {{1, 1}}, {1, 1}), 12u);
  EXPECT_EQ(CorrectedAt(imageOf(10), {{1, 1}}, {1, 1}), 11u);
  EXPECT_EQ(CorrectedAt(imageOf(15), {{1, 1}}, {1, 1}), 12u);
  EXPECT_EQ(CorrectedAt(imageOf(0), {{1, 1}}, {1, 1}), 11u);
}

TEST_F(AdaptiveHotpixelCorrectorApi, TakesTheDirectionThatDeviatesLeast) {
  // The pairs' sums, diagonal from the top left first: 40, 60, 50, 30.
  EXPECT_EQ(CorrectedAt(Mono8Image(3, 3, {10, 20, 30, 10, 90, 20, 20, 40, 30}), {{1, 1}}, {1, 1}), 30u);
  // 80, 60, 50, 30.
  EXPECT_EQ(CorrectedAt(Mono8Image(3, 3, {50, 20, 30, 10, 90, 20, 20, 40, 30}), {{1, 1}}, {1, 1}), 40u);
  // 40, 60, 90, 30, for a dark pixel.
  EXPECT_EQ(CorrectedAt(Mono8Image(3, 3, {10, 20, 70, 10, 1, 20, 20, 40, 30}), {{1, 1}}, {1, 1}), 15u);
}

TEST_F(AdaptiveHotpixelCorrectorApi, KeepsPixelsThatAreNoExtremes) {
  // The column's mean is the pixel's own value.
  EXPECT_EQ(CorrectedAt(Mono8Image(3, 3, {10, 80, 10, 10, 90, 10, 10, 100, 10}), {{1, 1}}, {1, 1}), 90u);
  // Brighter than three pairs and darker than the column.
  EXPECT_EQ(CorrectedAt(Mono8Image(3, 3, {10, 200, 10, 10, 90, 10, 10, 100, 10}), {{1, 1}}, {1, 1}), 90u);
}

TEST_F(AdaptiveHotpixelCorrectorApi, CorrectsWithValuesThatItCorrectedBefore) {
  Samples samples(5 * 5, 10);
  samples[2 * 5 + 1] = samples[2 * 5 + 2] = 100;
  const ModelImage image = MakeModelImage(IdOf("Mono12"), 5, 5, EncodeSamples(IdOf("Mono12"), 25, samples));
  EXPECT_EQ(CorrectedAt(image, {{1, 2}, {2, 2}}, {1, 2}), 55u);
  EXPECT_EQ(CorrectedAt(image, {{1, 2}, {2, 2}}, {2, 2}), 33u);
  EXPECT_EQ(CorrectedAt(image, {{2, 2}, {1, 2}}, {2, 2}), 55u);
  EXPECT_EQ(CorrectedAt(image, {{2, 2}, {1, 2}, {2, 2}}, {2, 2}), 22u);
}

TEST_F(AdaptiveHotpixelCorrectorApi, SkipsPositionsOutsideTheImage) {
  const ModelImage image = ImageWithPixel(IdOf("BayerRG10"), 9, 8, 10, {4, 4}, 900);
  const Points outside = {{9, 0}, {0, 8}, {kMax, 4}, {4, kMax}, {kMax, kMax}, {uint64_t{1} << 32, 4}};
  ExpectNewImage(image, image, Correct(outside));
}

// In an image of four lines the kernel of the third would take pixels from below the image.
TEST_F(AdaptiveHotpixelCorrectorApi, KeepsTheThirdLineOfALowBayerImage) {
  for (const size_t y : {0u, 1u, 2u, 3u}) {
    for (const size_t x : {0u, 1u, 4u, 5u, 8u}) {
      const ModelImage image = ImageWithPixel(IdOf("BayerGB8"), 9, 4, 10, {x, y}, 200);
      EXPECT_EQ(CorrectedAt(image, {{x, y}}, {x, y}), y == 2 ? 200u : 10u) << x << " " << y;
      EXPECT_THAT(Detected(image), ElementsAre(ModelPoint{x, y}));
    }
  }
}

// The third line of a Bayer image takes no neighbours from the first in correction, and does so in detection.
TEST_F(AdaptiveHotpixelCorrectorApi, CorrectsWithOtherLinesThanItDetectsWith) {
  Samples samples(9 * 9, 50);
  for (size_t x = 0; x < 9; ++x) samples[x] = 120;
  samples[2 * 9 + 4] = 100;  // red, between 50 and 120
  const ModelImage image = MakeModelImage(IdOf("BayerRG8"), 9, 9, EncodeSamples(IdOf("BayerRG8"), 81, samples));
  EXPECT_EQ(CorrectedAt(image, {{4, 2}}, {4, 2}), 50u);
  samples[4] = samples[2] = samples[6] = 151;
  const ModelImage brighter = MakeModelImage(IdOf("BayerRG8"), 9, 9, EncodeSamples(IdOf("BayerRG8"), 81, samples));
  EXPECT_THAT(Detected(brighter), testing::Not(testing::Contains(ModelPoint{4, 2})));
  EXPECT_EQ(CorrectedAt(brighter, {{4, 2}}, {4, 2}), 50u);
}

TEST_F(AdaptiveHotpixelCorrectorApi, CopiesImagesThatAreTooSmall) {
  for (const uint32_t format : PublicFormats()) {
    if (!IsFormatOfHotpixels(format)) continue;
    const size_t limit = FormatOf(format).bayer ? 4 : 2;
    for (size_t small = 1; small < limit; ++small) {
      for (const auto& [width, height] : {std::pair<size_t, size_t>{small, small}, {small, 9}, {9, small}}) {
        const ModelImage image = MakeFilledImage(format, width, height, Fill::kGarbage, format);
        EXPECT_THAT(Detected(image), IsEmpty());
        Points all;
        for (size_t i = 0; i < width * height; ++i) all.push_back({i % width, i / width});
        ExpectNewImage(image, image, Correct(all));
        ExpectNewImage(image, image, CorrectAdaptive());
      }
    }
  }
}

TEST_F(AdaptiveHotpixelCorrectorApi, SucceedsAtOnceWithAnEmptyList) {
  const LastError before = MarkLastError();
  const ExportedImage packed(IdOf("Mono10p"), 4, 1);
  const KORVEL_POINT_2D point{0, 0};
  KORVEL_IMAGE_HANDLE output = kUnwrittenHandle;
  EXPECT_EQ(KORVEL_AdaptiveHotpixelCorrector_Correct(nullptr, nullptr, nullptr, 0, nullptr), 0u);
  EXPECT_EQ(KORVEL_AdaptiveHotpixelCorrector_Correct(nullptr, nullptr, &point, 0, &output), 0u);
  EXPECT_EQ(KORVEL_AdaptiveHotpixelCorrector_Correct(Handle(), packed.Handle(), &point, 0, &output), 0u);
  EXPECT_EQ(output, kUnwrittenHandle);
  EXPECT_EQ(ReadLastError(), before);
}

// -------------------------------------------------------------------------------------------------------- state --

TEST_F(AdaptiveHotpixelCorrectorApi, KeepsTheCountOfTheLastDetectionBesideACallersList) {
  const ModelImage image = ImageWithPixel(IdOf("Mono8"), 7, 7, 10, {3, 3}, 200);
  ASSERT_THAT(Detected(image), ElementsAre(ModelPoint{3, 3}));
  ExpectNewImage(image, image, Correct({{1, 1}, {2, 2}, {9, 9}}));
  EXPECT_EQ(Count(), 1u);
  EXPECT_THAT(Hotpixels(1), ElementsAre(ModelPoint{1, 1}));
  EXPECT_THAT(Hotpixels(2), ElementsAre(ModelPoint{1, 1}, ModelPoint{2, 2}));
  EXPECT_THAT(Hotpixels(5), ElementsAre(ModelPoint{1, 1}, ModelPoint{2, 2}, ModelPoint{9, 9}));
}

// A list that is shorter than the count is all that there is to give.
TEST_F(AdaptiveHotpixelCorrectorApi, GivesNoMoreThanTheListHas) {
  Samples samples(12 * 9, 10);
  for (const size_t i : {5u, 40u, 70u}) samples[i] = 200;
  const ModelImage image = MakeModelImage(IdOf("Mono8"), 12, 9, EncodeSamples(IdOf("Mono8"), 12 * 9, samples));
  ASSERT_EQ(Detected(image).size(), 3u);
  ExpectNewImage(image, image, Correct({{1, 1}}));
  EXPECT_EQ(Count(), 3u);
  EXPECT_THAT(Hotpixels(3), ElementsAre(ModelPoint{1, 1}));
}

TEST_F(AdaptiveHotpixelCorrectorApi, KeepsTheCallersListOfACallThatFails) {
  const ModelImage rgb = MakeFilledImage(IdOf("RGB8"), 5, 5, Fill::kRandom, 1);
  ExpectNoImage(rgb, NotImplemented(rgb.format), Correct({{1, 2}, {3, 4}}));
  EXPECT_EQ(Count(), 0u);
  EXPECT_THAT(Hotpixels(2), ElementsAre(ModelPoint{1, 2}, ModelPoint{3, 4}));
  // The guard comes before the list is looked at.
  ExpectNoImage(MakeFilledImage(IdOf("Mono10p"), 5, 5, Fill::kRandom, 1), RefusalAsPacked("AdaptiveHotpixelCorrector"),
                Correct({{7, 7}}));
  EXPECT_THAT(Hotpixels(2), ElementsAre(ModelPoint{1, 2}, ModelPoint{3, 4}));
}

// No memory holds so many positions, and none is read.
TEST_F(AdaptiveHotpixelCorrectorApi, RefusesAListBeyondAllMemory) {
  const ModelImage image = ImageWithPixel(IdOf("Mono8"), 7, 7, 10, {3, 3}, 200);
  ASSERT_THAT(Detected(image), ElementsAre(ModelPoint{3, 3}));
  const ExportedImage input(image.format, image.width, image.height, image.bytes);
  const KORVEL_POINT_2D point{1, 1};
  for (const size_t size : {std::numeric_limits<size_t>::max(), std::numeric_limits<size_t>::max() / 16 + 1}) {
    KORVEL_IMAGE_HANDLE output = kUnwrittenHandle;
    EXPECT_EQ(KORVEL_AdaptiveHotpixelCorrector_Correct(Handle(), input.Handle(), &point, size, &output), 1u);
    EXPECT_EQ(ReadLastError().code, 1u);
    EXPECT_EQ(output, kUnwrittenHandle);
  }
  EXPECT_THAT(Hotpixels(1), ElementsAre(ModelPoint{3, 3}));
}

// Any sequence of calls, beside a record of what the object must hold.
TEST_F(AdaptiveHotpixelCorrectorApi, KeepsItsStateThroughAnySequence) {
  ModelRandom random(20);
  const uint32_t formats[] = {IdOf("Mono8"), IdOf("BayerGR8"), IdOf("Mono12"), IdOf("BayerBG10"), IdOf("RGB8")};
  NoiseModel noise;
  Points list;
  size_t count = 0;
  for (int step = 0; step < 600 && !HasFailure(); ++step) {
    const uint32_t format = formats[random.Below(5)];
    const size_t width = 1 + random.Below(12);
    const size_t height = 1 + random.Below(12);
    const bool works = IsFormatOfHotpixels(format);
    const ModelImage image = works ? MakeSensorImage(format, width, height, random.Next())
                                   : MakeFilledImage(format, width, height, Fill::kRandom, random.Next());
    const uint32_t operation = random.Below(6);
    SCOPED_TRACE(testing::Message() << "step " << step << ", operation " << operation << ", " << FormatOf(format).name
                                    << " " << width << " x " << height);
    if (operation == 0) {
      const uint32_t level = 1 + random.Below(7);
      ASSERT_EQ(KORVEL_AdaptiveHotpixelCorrector_SetSensitivity(Handle(), level), 0u);
      if (level <= 5) noise = NoiseOf(level, noise.gainFactorPercent);
    } else if (operation == 1) {
      noise.gainFactorPercent = random.Below(300);
      ASSERT_EQ(KORVEL_AdaptiveHotpixelCorrector_SetGainFactorPercent(Handle(), noise.gainFactorPercent), 0u);
    } else if (operation == 2) {
      if (works) {
        ExpectChangedImage(image, image, Detect());
        list = ModelDetectHotpixels(image, noise);
        count = list.size();
      } else {
        ExpectUnchangedImage(image, NotImplemented(format), Detect());
      }
    } else if (operation == 3) {
      if (works) {
        list = ModelDetectHotpixels(image, noise);
        count = list.size();
        ExpectNewImage(image, ModelCorrectHotpixels(image, list), CorrectAdaptive());
      } else {
        ExpectNoImage(image, NotImplemented(format), CorrectAdaptive());
      }
    } else if (operation == 4) {
      list = MakeList(width, height, random.Next());
      if (works) {
        ExpectNewImage(image, ModelCorrectHotpixels(image, list), Correct(list));
      } else {
        ExpectNoImage(image, NotImplemented(format), Correct(list));
      }
    }
    EXPECT_EQ(Count(), count);
    EXPECT_EQ(Hotpixels(std::max(count, list.size())), list);
  }
}

TEST_F(AdaptiveHotpixelCorrectorApi, MakesImagesThatOutliveIt) {
  const ModelImage image = ImageWithPixel(IdOf("BayerRG12"), 9, 8, 10, {4, 4}, 900);
  const ExportedImage input(image.format, image.width, image.height, image.bytes);
  KORVEL_IMAGE_HANDLE output = nullptr;
  ASSERT_EQ(CorrectAdaptive()(input.Handle(), &output), 0u);
  corrector.Destruct();
  const ExportedImage result(output);
  EXPECT_EQ(result.Content(), Bytes(ImageWithPixel(image.format, 9, 8, 10, {4, 4}, 10).bytes));
}

// ------------------------------------------------------------------------------------------------------ formats --

TEST_F(AdaptiveHotpixelCorrectorApi, DoesWhatTheModelDoesOnEveryFormat) {
  constexpr uint32_t kPercents[] = {100, 0, 37, 250, 100, 1000, 0xFFFFFFFF, 70000};
  size_t found = 0;
  for (const uint32_t format : PublicFormats()) {
    if (!IsFormatOfHotpixels(format)) continue;
    ForEachSample(format, [&](const ModelImage& filled, uint64_t seed) {
      const uint32_t level = 1 + static_cast<uint32_t>(seed % 5);
      const uint32_t percent = kPercents[seed % std::size(kPercents)];
      Set(level, percent);
      for (const ModelImage& image : {filled, MakeSensorImage(format, filled.width, filled.height, seed)}) {
        const Points hotpixels = ModelDetectHotpixels(image, NoiseOf(level, percent));
        found += hotpixels.size();
        EXPECT_EQ(Detected(image), hotpixels);
        ExpectNewImage(image, ModelCorrectHotpixels(image, hotpixels), CorrectAdaptive());
        EXPECT_EQ(Hotpixels(Count()), hotpixels);
        const Points list = MakeList(image.width, image.height, seed);
        ExpectNewImage(image, ModelCorrectHotpixels(image, list), Correct(list));
      }
    });
  }
  EXPECT_GT(found, 10000u);
}

TEST_F(AdaptiveHotpixelCorrectorApi, RefusesAllOtherFormats) {
  for (const uint32_t format : PublicFormats()) {
    if (IsFormatOfHotpixels(format)) continue;
    SCOPED_TRACE(FormatOf(format).name);
    const ModelImage image = MakeFilledImage(format, 5, 6, Fill::kGarbage, format);
    const LastError refusal =
        FormatOf(format).packed ? RefusalAsPacked("AdaptiveHotpixelCorrector") : NotImplemented(format);
    ExpectUnchangedImage(image, refusal, Detect());
    ExpectNoImage(image, refusal, Correct({{1, 1}}));
    ExpectNoImage(image, refusal, CorrectAdaptive());
  }
  const LastError refusal{7, "AdaptiveHotpixelCorrector does not support the invalid pixel format!"};
  const ModelImage image = MakeFilledImage(IdOf("Invalid"), 5, 6, Fill::kGarbage, 1);
  ExpectUnchangedImage(image, refusal, Detect());
  ExpectNoImage(image, refusal, Correct({{1, 1}}));
  ExpectNoImage(image, refusal, CorrectAdaptive());
}

TEST_F(AdaptiveHotpixelCorrectorApi, ChecksInOrder) {
  const ExportedImage mono(IdOf("Mono8"), 4, 4);
  const ExportedImage rgb(IdOf("RGB8"), 4, 4);
  const ExportedImage packed(IdOf("RGB10p32"), 4, 4);
  const ExportedImage invalid(IdOf("Invalid"), 4, 4);
  const KORVEL_POINT_2D point{1, 1};
  const auto correct = [&](auto handle, auto image, const KORVEL_POINT_2D* points) {
    return KORVEL_AdaptiveHotpixelCorrector_Correct(handle, image, points, 1, nullptr);
  };
  const LastError badHandle{2, "adaptiveHotpixelCorrectorHandle is invalid!"};
  const LastError badImage{2, "imageHandle is invalid!"};
  const LastError invalidFormat{7, "AdaptiveHotpixelCorrector does not support the invalid pixel format!"};
  EXPECT_EQ(correct(nullptr, nullptr, nullptr), 2u);
  EXPECT_EQ(ReadLastError(), badHandle);
  EXPECT_EQ(correct(Handle(), nullptr, nullptr), 2u);
  EXPECT_EQ(ReadLastError(), badImage);
  EXPECT_EQ(correct(Handle(), invalid.Handle(), nullptr), 7u);
  EXPECT_EQ(ReadLastError(), invalidFormat);
  EXPECT_EQ(correct(Handle(), packed.Handle(), nullptr), 7u);
  EXPECT_EQ(ReadLastError(), RefusalAsPacked("AdaptiveHotpixelCorrector"));
  EXPECT_EQ(correct(Handle(), rgb.Handle(), nullptr), 5u);
  EXPECT_EQ(ReadLastError(), (LastError{5, "detectedHotpixels is not a valid pointer!"}));
  EXPECT_EQ(correct(Handle(), rgb.Handle(), &point), 5u);
  EXPECT_EQ(ReadLastError(), (LastError{5, "outputImageHandle is not a valid pointer!"}));
  EXPECT_EQ(correct(Handle(), mono.Handle(), &point), 5u);
  EXPECT_EQ(ReadLastError(), (LastError{5, "outputImageHandle is not a valid pointer!"}));
  EXPECT_THAT(Hotpixels(1), IsEmpty());

  const auto correctAdaptive = [&](auto handle, auto image) {
    return KORVEL_AdaptiveHotpixelCorrector_CorrectAdaptive(handle, image, nullptr);
  };
  EXPECT_EQ(correctAdaptive(nullptr, nullptr), 2u);
  EXPECT_EQ(ReadLastError(), badHandle);
  EXPECT_EQ(correctAdaptive(Handle(), nullptr), 2u);
  EXPECT_EQ(ReadLastError(), badImage);
  EXPECT_EQ(correctAdaptive(Handle(), invalid.Handle()), 7u);
  EXPECT_EQ(ReadLastError(), invalidFormat);
  EXPECT_EQ(correctAdaptive(Handle(), packed.Handle()), 7u);
  EXPECT_EQ(ReadLastError(), RefusalAsPacked("AdaptiveHotpixelCorrector"));
  EXPECT_EQ(correctAdaptive(Handle(), rgb.Handle()), 5u);
  EXPECT_EQ(ReadLastError(), (LastError{5, "outputImageHandle is not a valid pointer!"}));

  EXPECT_EQ(KORVEL_AdaptiveHotpixelCorrector_Detect(nullptr, nullptr), 2u);
  EXPECT_EQ(ReadLastError(), badHandle);
  EXPECT_EQ(KORVEL_AdaptiveHotpixelCorrector_Detect(Handle(), nullptr), 2u);
  EXPECT_EQ(ReadLastError(), badImage);
}

}  // namespace
}  // namespace korvel_test
