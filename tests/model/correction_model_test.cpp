// The model against values that were worked out by hand. Everything else is compared with the model, so this is what
// ties the comparison to the ground.
#include "tests/model/correction_model.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <string>
#include <utility>
#include <vector>

namespace korvel_test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using Samples = std::vector<uint32_t>;

constexpr ModelFeatures kNoFeatures{false, false};
constexpr ModelFeatures kAvx{true, false};
constexpr ModelFeatures kAvxAndAvx2{true, true};
constexpr ModelFeatures kAvx2Alone{false, true};

ModelImage ImageOfSamples(uint32_t format, size_t width, size_t height, const Samples& samples) {
  return MakeModelImage(format, width, height, EncodeSamples(format, width * height, samples));
}

Samples SamplesOf(const ModelImage& image) {
  return DecodeSamples(image.format, image.width * image.height, image.bytes);
}

// --------------------------------------------------------------------------------------------------------- gain --

TEST(ModelOfGain, EntriesAreLimitedAndTruncated) {
  EXPECT_EQ(ModelGainEntry(6.0F, 255, 100), 255U);
  EXPECT_EQ(ModelGainEntry(6.0F, 1023, 100), 600U);
  EXPECT_EQ(ModelGainEntry(2.0F, 255, 100), 200U);
  EXPECT_EQ(ModelGainEntry(1.5F, 255, 3), 4U);
  EXPECT_EQ(ModelGainEntry(8.0F, 4095, 4095), 4095U);
  EXPECT_EQ(ModelGainEntry(8.0F, 4095, 0), 0U);
}

TEST(ModelOfGain, SitesHaveTheirColours) {
  const GainFactors factors{1.0F, 2.0F, 3.0F, 4.0F};
  const auto gained = [&](uint32_t format) {
    return SamplesOf(ModelGain(ImageOfSamples(format, 2, 2, {10, 10, 10, 10}), factors));
  };
  EXPECT_EQ(gained(IdOf("BayerGR8")), (Samples{30, 20, 40, 30}));
  EXPECT_EQ(gained(IdOf("BayerRG10")), (Samples{20, 30, 30, 40}));
  EXPECT_EQ(gained(IdOf("BayerGB12")), (Samples{30, 40, 20, 30}));
  EXPECT_EQ(gained(IdOf("BayerBG8")), (Samples{40, 30, 30, 20}));
  EXPECT_EQ(gained(IdOf("Mono8")), (Samples{10, 10, 10, 10}));
}

TEST(ModelOfGain, ColourAndMasterAreMultipliedAsFloats) {
  EXPECT_EQ(SamplesOf(ModelGain(ImageOfSamples(IdOf("BayerRG10"), 2, 2, {100, 100, 100, 100}), {2.0F, 3.0F, 1, 1})),
            (Samples{600, 200, 200, 200}));
  // The exact product of both is below 3, the float is 3.
  const float red = 1.5F - 0x3p-23F;
  const float master = 2.0F + 0x1p-21F;
  ASSERT_EQ(red * master, 3.0F);
  ASSERT_LT(static_cast<double>(red) * static_cast<double>(master), 3.0);
  EXPECT_EQ(SamplesOf(ModelGain(ImageOfSamples(IdOf("BayerRG8"), 1, 1, {11}), {master, red, 1, 1})), (Samples{33}));
}

TEST(ModelOfGain, HighBitsAreMaskedUnlessImagesPass) {
  const ModelImage image = ImageOfSamples(IdOf("Mono10"), 2, 1, {0x0405, 7});
  EXPECT_EQ(SamplesOf(ModelGain(image, {1.0005F, 1.0005F, 1.0005F, 1.0005F})), (Samples{0x0405, 7}));
  EXPECT_EQ(SamplesOf(ModelGain(image, {1.0F, 2.0F, 1.0F, 1.0F})), (Samples{5, 7}));
}

// -------------------------------------------------------------------------------------------------------- gamma --

TEST(ModelOfGamma, EntriesFollowThePowerAndAreTruncated) {
  EXPECT_EQ(ModelGammaEntry(2.0F, 255, 64), 127U);    // 127.75
  EXPECT_EQ(ModelGammaEntry(0.5F, 255, 100), 39U);    // 39.2
  EXPECT_EQ(ModelGammaEntry(2.0F, 1023, 512), 723U);  // 723.7
  EXPECT_EQ(ModelGammaEntry(3.0F, 4095, 0), 0U);
  EXPECT_EQ(ModelGammaEntry(0.3F, 4095, 4095), 4095U);
  EXPECT_EQ(ModelGammaEntry(2.0F, 1023, 0xFFFF), 1023U);
}

TEST(ModelOfGamma, AlphaAndPassedImagesStay) {
  const ModelImage image = ImageOfSamples(IdOf("BGRa8"), 1, 1, {64, 0, 255, 64});
  EXPECT_EQ(SamplesOf(ModelGamma(image, 2.0F)), (Samples{127, 0, 255, 64}));
  EXPECT_EQ(ModelGamma(image, 1.0009F).bytes, image.bytes);
}

TEST(ModelOfGamma, WordsLoseTheirUnusedBits) {
  const ModelImage image = MakeModelImage(IdOf("RGB10p32"), 1, 1, {0xFF, 0xFF, 0xFF, 0xFF});
  EXPECT_EQ(ModelGamma(image, 2.0F).bytes, (std::vector<uint8_t>{0xFF, 0xFF, 0xFF, 0x3F}));
  EXPECT_EQ(ModelGamma(image, 1.0F).bytes, image.bytes);
}

// --------------------------------------------------------------------------------------------- colour correction --

constexpr ColorFactors kHalves = {0.5F, 0, 0, 0, 0.5F, 0, 0, 0, 0.5F};

// The roundings of a line: 'h' adds a half, 'e' is to the nearest and even, 't' truncates. Found with 100.5 and 101.5.
std::string RoundingsOfLine(uint32_t format, size_t width, size_t height, size_t line, ModelFeatures features) {
  const size_t channels = FormatOf(format).channels;
  Samples samples;
  for (size_t i = 0; i < width * height * channels; ++i) samples.push_back(i % channels == 1 ? 203 : 201);
  const Samples results =
      SamplesOf(ModelColorCorrection(ImageOfSamples(format, width, height, samples), kHalves, features));
  std::string roundings;
  for (size_t x = 0; x < width; ++x) {
    const size_t at = (line * width + x) * channels;
    const std::pair<uint32_t, uint32_t> pixel{results[at], results[at + 1]};
    EXPECT_EQ(results[at + 2], results[at]);
    roundings += pixel == std::pair{101U, 102U}   ? 'h'
                 : pixel == std::pair{100U, 102U} ? 'e'
                 : pixel == std::pair{100U, 101U} ? 't'
                                                  : '?';
  }
  return roundings;
}

TEST(ModelOfColorCorrection, TheSimplePathAddsAHalf) {
  EXPECT_EQ(RoundingsOfLine(IdOf("RGB8"), 15, 20, 3, kAvxAndAvx2), std::string(15, 'h'));
  EXPECT_EQ(RoundingsOfLine(IdOf("RGB8"), 20, 15, 3, kAvxAndAvx2), std::string(20, 'h'));
  EXPECT_EQ(RoundingsOfLine(IdOf("RGB8"), 20, 16, 3, kNoFeatures), std::string(20, 'h'));
  EXPECT_EQ(RoundingsOfLine(IdOf("RGB8"), 20, 16, 3, kAvx2Alone), std::string(20, 'h'));
  EXPECT_EQ(RoundingsOfLine(IdOf("BGR12"), 20, 16, 3, kAvxAndAvx2), std::string(20, 'h'));
  EXPECT_EQ(RoundingsOfLine(IdOf("RGBa10"), 20, 16, 3, kAvxAndAvx2), std::string(20, 'h'));
}

TEST(ModelOfColorCorrection, ThreeBytesLeaveTwoToFivePixels) {
  EXPECT_EQ(RoundingsOfLine(IdOf("RGB8"), 16, 16, 0, kAvx), std::string(12, 'e') + "tttt");
  EXPECT_EQ(RoundingsOfLine(IdOf("RGB8"), 17, 16, 15, kAvx), std::string(12, 'e') + "ttttt");
  EXPECT_EQ(RoundingsOfLine(IdOf("BGR8"), 18, 16, 1, kAvx), std::string(16, 'e') + "tt");
  EXPECT_EQ(RoundingsOfLine(IdOf("BGR8"), 19, 16, 1, kAvxAndAvx2), std::string(16, 'e') + "ttt");
}

TEST(ModelOfColorCorrection, WordsComeInWholeGroups) {
  for (const uint32_t format : {IdOf("RGBa8"), IdOf("BGRa8"), IdOf("RGB10p32")}) {
    EXPECT_EQ(RoundingsOfLine(format, 16, 16, 0, kAvx), std::string(16, 'e'));
    EXPECT_EQ(RoundingsOfLine(format, 23, 16, 15, kAvx), std::string(20, 'e') + "ttt");
    EXPECT_EQ(RoundingsOfLine(format, 23, 16, 15, kAvxAndAvx2), std::string(16, 'e') + "ttttttt");
    EXPECT_EQ(RoundingsOfLine(format, 23, 16, 15, kAvx2Alone), std::string(16, 'e') + "ttttttt");
  }
}

TEST(ModelOfColorCorrection, WordsOf16BitsAreOneStreamBeforeTheLastLine) {
  for (const uint32_t format : {IdOf("RGB10"), IdOf("RGB12")}) {
    EXPECT_EQ(RoundingsOfLine(format, 17, 16, 13, kAvx), std::string(17, 'e'));
    EXPECT_EQ(RoundingsOfLine(format, 17, 16, 14, kAvx), std::string(16, 'e') + "t");
    EXPECT_EQ(RoundingsOfLine(format, 17, 16, 15, kAvx), std::string(17, 't'));
    EXPECT_EQ(RoundingsOfLine(format, 17, 17, 15, kAvx), std::string(17, 'e'));
    EXPECT_EQ(RoundingsOfLine(format, 17, 17, 16, kAvx), std::string(17, 't'));
  }
}

TEST(ModelOfColorCorrection, FactorsBelongToColours) {
  const ColorFactors factors = {0, 1, 0, 0, 0, 2, 1, 1, 1};
  const auto corrected = [&](uint32_t format, const Samples& pixel) {
    return SamplesOf(ModelColorCorrection(ImageOfSamples(format, 1, 1, pixel), factors, kAvx));
  };
  EXPECT_EQ(corrected(IdOf("RGB8"), {10, 20, 30}), (Samples{20, 60, 60}));
  EXPECT_EQ(corrected(IdOf("BGR10"), {30, 20, 10}), (Samples{60, 60, 20}));
  EXPECT_EQ(corrected(IdOf("BGRa12"), {30, 20, 10, 5}), (Samples{60, 60, 20, 5}));
}

// 2^24 + 1 is no float: whether 1 + 2^24 - 2^24 gives 0 or 1 tells the order of the sum.
TEST(ModelOfColorCorrection, SumsAreFormedInTheOrderOfMemory) {
  const ColorFactors factors = {1, 0x1p24F, -0x1p24F, 0, 1, 0, 0, 0, 1};
  const auto redOf = [&](uint32_t format, ModelFeatures features) {
    Samples samples;
    for (size_t i = 0; i < 16 * 16; ++i) samples.insert(samples.end(), {1, 1, 1});
    const Samples results = SamplesOf(ModelColorCorrection(ImageOfSamples(format, 16, 16, samples), factors, features));
    return results[format == IdOf("RGB8") ? 0 : 2];
  };
  EXPECT_EQ(redOf(IdOf("RGB8"), kAvx), 0U);
  EXPECT_EQ(redOf(IdOf("BGR8"), kAvx), 1U);
  EXPECT_EQ(redOf(IdOf("BGR8"), kNoFeatures), 0U);
}

TEST(ModelOfColorCorrection, ResultsAreLimitedAndNoNumberIsZero) {
  constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
  constexpr float kInfinity = std::numeric_limits<float>::infinity();
  const ModelImage pixel = ImageOfSamples(IdOf("RGB10"), 1, 1, {1000, 1000, 1000});
  EXPECT_EQ(SamplesOf(ModelColorCorrection(pixel, {2, 0, 0, 0, -2, 0, 0, 0, kNan}, kAvx)), (Samples{1023, 0, 0}));
  EXPECT_EQ(SamplesOf(ModelColorCorrection(pixel, {kInfinity, 0, 0, 0, -kInfinity, 0, 1e30F, 0, 0}, kAvx)),
            (Samples{1023, 0, 1023}));
}

// --------------------------------------------------------------------------------------------------- hot pixels --

ModelImage ImageWithPixel(uint32_t format, size_t width, size_t height, uint32_t level, ModelPoint point,
                          uint32_t value) {
  Samples samples(width * height, level);
  samples.at(point.y * width + point.x) = value;
  return ImageOfSamples(format, width, height, samples);
}

TEST(ModelOfHotpixels, ThresholdsFollowLevelDepthAndGain) {
  const ModelPoint point{3, 3};
  const auto found = [&](uint32_t format, uint32_t value, uint32_t distance, const NoiseModel& noise) {
    return ModelDetectHotpixels(ImageWithPixel(format, 7, 7, value - distance, point, value), noise);
  };
  EXPECT_THAT(found(IdOf("Mono8"), 100, 9, {}), ElementsAre(point));
  EXPECT_THAT(found(IdOf("Mono8"), 100, 8, {}), IsEmpty());
  EXPECT_THAT(found(IdOf("BayerGR10"), 400, 36, {}), ElementsAre(point));
  EXPECT_THAT(found(IdOf("BayerGR10"), 400, 35, {}), IsEmpty());
  EXPECT_THAT(found(IdOf("Mono12"), 1600, 143, {}), ElementsAre(point));
  EXPECT_THAT(found(IdOf("Mono12"), 1600, 142, {}), IsEmpty());
  EXPECT_THAT(found(IdOf("Mono8"), 96, 5, {1, 4, 100}), IsEmpty());
  EXPECT_THAT(found(IdOf("Mono8"), 95, 5, {1, 4, 100}), ElementsAre(point));
  EXPECT_THAT(found(IdOf("Mono8"), 100, 1, {3, 16, 0}), ElementsAre(point));
}

TEST(ModelOfHotpixels, TheFirstColumnTakesItsThresholdFromTheNext) {
  EXPECT_THAT(ModelDetectHotpixels(ImageWithPixel(IdOf("Mono8"), 5, 5, 55, {0, 2}, 62), {}),
              ElementsAre(ModelPoint{0, 2}));
  EXPECT_THAT(ModelDetectHotpixels(ImageWithPixel(IdOf("Mono8"), 5, 5, 55, {2, 2}, 62), {}), IsEmpty());
}

// Pixels of a mosaic that the kernel of the middle must look at, and no others: each in turn is made as bright as the
// middle, which ends the detection.
std::vector<std::pair<size_t, size_t>> NeighboursOf(uint32_t format, size_t width, size_t height, ModelPoint point) {
  std::vector<std::pair<size_t, size_t>> neighbours;
  for (size_t y = 0; y < height; ++y) {
    for (size_t x = 0; x < width; ++x) {
      if (x == point.x && y == point.y) continue;
      Samples samples(width * height, 10);
      samples[point.y * width + point.x] = 100;
      samples[y * width + x] = 250;
      const std::vector<ModelPoint> found = ModelDetectHotpixels(ImageOfSamples(format, width, height, samples), {});
      if (std::find(found.begin(), found.end(), point) == found.end()) neighbours.emplace_back(x, y);
    }
  }
  return neighbours;
}

using Places = std::vector<std::pair<size_t, size_t>>;

TEST(ModelOfHotpixels, BayerKernelsLookAtTheirOwnColour) {
  // In BayerGR8 the middle is green, in BayerRG8 red; (3, 4) is blue in the one and green in the other.
  EXPECT_EQ(NeighboursOf(IdOf("BayerGR8"), 9, 9, {4, 4}),
            (Places{{4, 2}, {3, 3}, {5, 3}, {2, 4}, {6, 4}, {3, 5}, {5, 5}, {4, 6}}));
  EXPECT_EQ(NeighboursOf(IdOf("BayerRG8"), 9, 9, {4, 4}),
            (Places{{2, 2}, {4, 2}, {6, 2}, {2, 4}, {6, 4}, {2, 6}, {4, 6}, {6, 6}}));
  EXPECT_EQ(NeighboursOf(IdOf("BayerGR8"), 9, 9, {3, 4}),
            (Places{{1, 2}, {3, 2}, {5, 2}, {1, 4}, {5, 4}, {1, 6}, {3, 6}, {5, 6}}));
  EXPECT_EQ(NeighboursOf(IdOf("BayerRG8"), 9, 9, {3, 4}),
            (Places{{3, 2}, {2, 3}, {4, 3}, {1, 4}, {5, 4}, {2, 5}, {4, 5}, {3, 6}}));
}

TEST(ModelOfHotpixels, BorderKernelsAreCompletedFromInside) {
  EXPECT_EQ(NeighboursOf(IdOf("BayerGR8"), 9, 9, {0, 0}), (Places{{2, 0}, {1, 1}, {0, 2}}));
  EXPECT_EQ(NeighboursOf(IdOf("BayerRG8"), 9, 9, {0, 0}), (Places{{2, 0}, {0, 2}, {2, 2}}));
  EXPECT_EQ(NeighboursOf(IdOf("BayerRG8"), 9, 9, {8, 8}), (Places{{6, 6}, {8, 6}, {6, 8}}));
  EXPECT_EQ(NeighboursOf(IdOf("BayerRG8"), 9, 9, {7, 1}), (Places{{5, 1}, {5, 3}, {7, 3}}));
  EXPECT_EQ(NeighboursOf(IdOf("BayerGR8"), 9, 9, {1, 7}), (Places{{1, 5}, {2, 6}, {3, 7}, {2, 8}}));
  EXPECT_EQ(NeighboursOf(IdOf("Mono8"), 9, 9, {0, 0}), (Places{{1, 0}, {0, 1}, {1, 1}}));
  EXPECT_EQ(NeighboursOf(IdOf("Mono8"), 9, 9, {8, 4}), (Places{{7, 3}, {8, 3}, {7, 4}, {7, 5}, {8, 5}}));
}

TEST(ModelOfHotpixels, CorrectionRoundsTowardTheOldValue) {
  const auto corrected = [](uint32_t value) {
    const ModelImage image = ImageOfSamples(IdOf("Mono8"), 3, 3, {11, 11, 11, 11, value, 12, 12, 12, 12});
    return SamplesOf(ModelCorrectHotpixels(image, {{1, 1}}))[4];
  };
  EXPECT_EQ(corrected(13), 12U);
  EXPECT_EQ(corrected(10), 11U);
  EXPECT_EQ(corrected(0), 11U);
}

TEST(ModelOfHotpixels, CorrectionGoesOnWithItsOwnValues) {
  Samples samples(25, 10);
  samples[11] = samples[12] = 100;
  const ModelImage image = ImageOfSamples(IdOf("Mono10"), 5, 5, samples);
  const Samples corrected = SamplesOf(ModelCorrectHotpixels(image, {{1, 2}, {7, 7}, {2, 2}}));
  EXPECT_EQ(corrected[11], 55U);
  EXPECT_EQ(corrected[12], 33U);
}

TEST(ModelOfHotpixels, CorrectionTakesOtherLines) {
  Samples samples(81, 50);
  for (size_t x = 0; x < 9; ++x) samples[x] = 151;
  samples[2 * 9 + 4] = 100;
  const ModelImage image = ImageOfSamples(IdOf("BayerRG8"), 9, 9, samples);
  EXPECT_EQ(SamplesOf(ModelCorrectHotpixels(image, {{4, 2}}))[22], 50U);
  EXPECT_THAT(ModelDetectHotpixels(image, {}), testing::Not(testing::Contains(ModelPoint{4, 2})));
  const ModelImage low = ImageWithPixel(IdOf("BayerRG8"), 6, 4, 10, {3, 2}, 200);
  EXPECT_EQ(ModelCorrectHotpixels(low, {{3, 2}}).bytes, low.bytes);
}

TEST(ModelOfHotpixels, SmallImagesHaveNone) {
  const std::vector<ModelPoint> list = {{0, 0}, {1, 1}};
  for (const ModelImage& image :
       {ImageWithPixel(IdOf("Mono8"), 1, 9, 0, {0, 0}, 200), ImageWithPixel(IdOf("BayerGB12"), 3, 9, 0, {1, 1}, 200)}) {
    EXPECT_THAT(ModelDetectHotpixels(image, {}), IsEmpty());
    EXPECT_EQ(ModelCorrectHotpixels(image, list).bytes, image.bytes);
  }
}

// ------------------------------------------------------------------------------------------------------ binning --

TEST(ModelOfBinning, SizesAreRoundedDown) {
  EXPECT_EQ(ModelExpectedBinnedSize(IdOf("Mono8"), {100, 50}, {2, 2}), (ModelSize{48, 24}));
  EXPECT_EQ(ModelExpectedBinnedSize(IdOf("BayerRG8"), {100, 50}, {2, 2}), (ModelSize{48, 24}));
  EXPECT_EQ(ModelExpectedBinnedSize(IdOf("BayerRG8"), {103, 51}, {1, 1}), (ModelSize{96, 48}));
  EXPECT_EQ(ModelExpectedBinnedSize(IdOf("RGBa12"), {7, 3}, {2, 2}), (ModelSize{0, 0}));
}

TEST(ModelOfBinning, BlocksAreSummedOrAveraged) {
  const ModelImage image = ImageOfSamples(IdOf("Mono8"), 8, 4, {100, 100, 1, 1, 60, 60, 0, 255,  //
                                                                100, 100, 1, 2, 60, 60, 0, 0,    //
                                                                0,   0,   0, 0, 0,  0,  0, 3,    //
                                                                0,   1,   0, 0, 9,  9,  0, 0});
  EXPECT_EQ(SamplesOf(ModelBin(image, {2, 2, false}).value()), (Samples{255, 5, 240, 255, 1, 0, 18, 3}));
  EXPECT_EQ(SamplesOf(ModelBin(image, {2, 2, true}).value()), (Samples{100, 1, 60, 63, 0, 0, 4, 0}));
}

TEST(ModelOfBinning, BayerBlocksAreOfOneColour) {
  Samples samples(16 * 4);
  for (size_t i = 0; i < samples.size(); ++i) samples[i] = static_cast<uint32_t>(i % 16);
  const ModelImage binned = ModelBin(ImageOfSamples(IdOf("BayerBG12"), 16, 4, samples), {2, 1, false}).value();
  EXPECT_EQ(binned.height, 4U);
  const Samples sums = SamplesOf(binned);
  EXPECT_EQ(Samples(sums.begin(), sums.begin() + 8),
            (Samples{0 + 2, 1 + 3, 4 + 6, 5 + 7, 8 + 10, 9 + 11, 12 + 14, 13 + 15}));
}

TEST(ModelOfBinning, AlphaIsTheMaximum) {
  const ModelImage binned = ModelBin(ImageOfSamples(IdOf("BGRa10"), 8, 2, Samples(64, 5)), {2, 1, false}).value();
  EXPECT_EQ(SamplesOf(binned), (Samples{10, 10, 10, 1023, 10, 10, 10, 1023, 10, 10, 10, 1023, 10, 10, 10, 1023,  //
                                        10, 10, 10, 1023, 10, 10, 10, 1023, 10, 10, 10, 1023, 10, 10, 10, 1023}));
}

TEST(ModelOfBinning, FactorsOfOneCopyAndSmallImagesHaveNoResult) {
  const ModelImage image = MakeFilledImage(IdOf("RGB8"), 7, 3, Fill::kRandom, 1);
  EXPECT_EQ(ModelBin(image, {1, 1}).value().bytes, image.bytes);
  EXPECT_EQ(ModelBin(image, {2, 2}), std::nullopt);
}

// ------------------------------------------------------------------------------------- formats that are accepted --

TEST(ModelOfCorrections, TakesAsManyFormatsAsTheListsHave) {
  std::array<int, 5> counts{};
  for (const uint32_t format : PublicFormats()) {
    counts[0] += IsFormatOfGain(format) ? 1 : 0;
    counts[1] += IsFormatOfGamma(format) ? 1 : 0;
    counts[2] += IsFormatOfColorCorrection(format) ? 1 : 0;
    counts[3] += IsFormatOfHotpixels(format) ? 1 : 0;
    counts[4] += IsFormatOfBinning(format) ? 1 : 0;
  }
  EXPECT_THAT(counts, ElementsAre(15, 28, 13, 15, 27));
}

}  // namespace
}  // namespace korvel_test
