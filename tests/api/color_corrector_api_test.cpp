#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <korvel/korvel.h>

#include <array>
#include <cstdint>
#include <limits>
#include <utility>
#include <vector>

#include "tests/model/correction_model.h"
#include "tests/support/exported_objects.h"
#include "tests/support/exported_operations.h"
#include "tests/support/last_error.h"
#include "tests/support/this_processor.h"

namespace korvel_test {
namespace {

using testing::Each;
using testing::ElementsAreArray;

using Samples = std::vector<uint32_t>;

constexpr ColorFactors kIdentity = {1, 0, 0, 0, 1, 0, 0, 0, 1};
constexpr ColorFactors kCamera = {1.62F, -0.41F, -0.21F, -0.28F, 1.57F, -0.29F, 0.02F, -0.63F, 1.61F};

class ColorCorrectorApi : public testing::Test {
 protected:
  void Set(const ColorFactors& factors) {
    ASSERT_EQ(KORVEL_ColorCorrector_SetColorCorrectionFactors(corrector.Handle(), factors.data()), 0u);
  }
  MakesImage Process() {
    return
        [this](auto image, auto* output) { return KORVEL_ColorCorrector_Process(corrector.Handle(), image, output); };
  }
  ChangesImage ProcessInPlace() {
    return [this](auto image) { return KORVEL_ColorCorrector_ProcessInPlace(corrector.Handle(), image); };
  }
  void ExpectBothWays(const ModelImage& input, const ColorFactors& factors) {
    const ModelImage expected = ModelColorCorrection(input, factors, features);
    ExpectNewImage(input, expected, Process());
    ExpectChangedImage(input, expected, ProcessInPlace());
  }
  // The first pixel of an image too small for vector kernels.
  Samples Corrected(uint32_t format, const Samples& pixel) {
    const ExportedImage image(format, 1, 1, EncodeSamples(format, 1, pixel));
    EXPECT_EQ(KORVEL_ColorCorrector_ProcessInPlace(corrector.Handle(), image.Handle()), 0u) << ReadLastError();
    return DecodeSamples(format, 1, image.Content());
  }

  const ModelFeatures features = FeaturesOfThisProcessor();
  ExportedColorCorrector corrector;
};

TEST_F(ColorCorrectorApi, StartsWithTheIdentity) {
  const LastError before = MarkLastError();
  ColorFactors factors{};
  size_t size = 9;
  EXPECT_EQ(KORVEL_ColorCorrector_GetColorCorrectionFactors(corrector.Handle(), factors.data(), &size), 0u);
  EXPECT_THAT(factors, ElementsAreArray(kIdentity));
  for (const uint32_t format : PublicFormats()) {
    if (!IsFormatOfColorCorrection(format)) continue;
    for (const auto& [width, height] : {std::pair<size_t, size_t>{16, 16}, {15, 20}, {37, 17}}) {
      const ModelImage image = MakeFilledImage(format, width, height, Fill::kRandom, format);
      ExpectNewImage(image, image, Process());
      ExpectChangedImage(image, image, ProcessInPlace());
    }
  }
  EXPECT_EQ(ReadLastError(), before);
}

TEST_F(ColorCorrectorApi, GivesItsFactorsInTwoCalls) {
  const LastError before = MarkLastError();
  Set(kCamera);
  size_t size = 77;
  EXPECT_EQ(KORVEL_ColorCorrector_GetColorCorrectionFactors(corrector.Handle(), nullptr, &size), 0u);
  EXPECT_EQ(size, 9u);
  std::array<float, 12> factors{};
  factors.fill(-5.0F);
  EXPECT_EQ(KORVEL_ColorCorrector_GetColorCorrectionFactors(corrector.Handle(), factors.data(), &size), 0u);
  EXPECT_EQ(size, 9u);
  EXPECT_THAT(std::vector<float>(factors.begin(), factors.begin() + 9), ElementsAreArray(kCamera));
  EXPECT_THAT(std::vector<float>(factors.begin() + 9, factors.end()), Each(-5.0F));
  // Intended: the size stays as it is given.
  factors.fill(-5.0F);
  size = 12;
  EXPECT_EQ(KORVEL_ColorCorrector_GetColorCorrectionFactors(corrector.Handle(), factors.data(), &size), 0u);
  EXPECT_EQ(size, 12u);
  EXPECT_THAT(std::vector<float>(factors.begin(), factors.begin() + 9), ElementsAreArray(kCamera));
  EXPECT_THAT(std::vector<float>(factors.begin() + 9, factors.end()), Each(-5.0F));
  EXPECT_EQ(ReadLastError(), before);
}

TEST_F(ColorCorrectorApi, RefusesAnArrayThatIsTooSmall) {
  std::array<float, 9> factors{};
  factors.fill(-5.0F);
  for (const size_t given : {size_t{8}, size_t{0}}) {
    size_t size = given;
    EXPECT_EQ(KORVEL_ColorCorrector_GetColorCorrectionFactors(corrector.Handle(), factors.data(), &size), 4u);
    EXPECT_EQ(ReadLastError(), (LastError{4, "*colorCorrectorFactors is too small!"}));
    EXPECT_EQ(size, given);
    EXPECT_THAT(factors, Each(-5.0F));
  }
  EXPECT_EQ(KORVEL_ColorCorrector_GetColorCorrectionFactors(corrector.Handle(), factors.data(), nullptr), 5u);
  EXPECT_EQ(ReadLastError(), (LastError{5, "colorCorrectorFactorsSize is not a valid pointer!"}));
  EXPECT_EQ(KORVEL_ColorCorrector_GetColorCorrectionFactors(nullptr, nullptr, nullptr), 2u);
  EXPECT_EQ(ReadLastError(), (LastError{2, "colorCorrector is invalid!"}));
  EXPECT_EQ(KORVEL_ColorCorrector_SetColorCorrectionFactors(nullptr, nullptr), 2u);
  EXPECT_EQ(ReadLastError(), (LastError{2, "colorCorrector is invalid!"}));
}

TEST_F(ColorCorrectorApi, MultipliesColoursByName) {
  // Red becomes green, green twice blue, and blue the sum of all.
  Set({0, 1, 0, 0, 0, 2, 1, 1, 1});
  EXPECT_EQ(Corrected(IdOf("RGB8"), {10, 20, 30}), (Samples{20, 60, 60}));
  EXPECT_EQ(Corrected(IdOf("BGR8"), {30, 20, 10}), (Samples{60, 60, 20}));
  EXPECT_EQ(Corrected(IdOf("RGBa8"), {10, 20, 30, 7}), (Samples{20, 60, 60, 7}));
  EXPECT_EQ(Corrected(IdOf("BGRa8"), {30, 20, 10, 7}), (Samples{60, 60, 20, 7}));
  EXPECT_EQ(Corrected(IdOf("RGB10p32"), {10, 20, 30}), (Samples{20, 60, 60}));
  EXPECT_EQ(Corrected(IdOf("BGR10"), {30, 20, 10}), (Samples{60, 60, 20}));
  EXPECT_EQ(Corrected(IdOf("RGBa12"), {10, 20, 30, 0xFFFF}), (Samples{20, 60, 60, 0xFFFF}));
  EXPECT_EQ(Corrected(IdOf("BGRa10"), {30, 20, 10, 9}), (Samples{60, 60, 20, 9}));
}

TEST_F(ColorCorrectorApi, LimitsResultsToTheDepth) {
  Set({2, 0, 0, 0, -1, 0, 0, 0, 1});
  EXPECT_EQ(Corrected(IdOf("RGB8"), {128, 9, 255}), (Samples{255, 0, 255}));
  EXPECT_EQ(Corrected(IdOf("RGB10"), {600, 9, 1023}), (Samples{1023, 0, 1023}));
  EXPECT_EQ(Corrected(IdOf("RGB12"), {600, 9, 4095}), (Samples{1200, 0, 4095}));
  EXPECT_EQ(Corrected(IdOf("BGRa12"), {4095, 0, 3000, 1}), (Samples{4095, 0, 4095, 1}));
}

TEST_F(ColorCorrectorApi, AddsAHalfAndTruncatesOnSmallImages) {
  Set({0.5F, 0, 0, 0, 0.25F, 0, 0, 0, -0.5F});
  EXPECT_EQ(Corrected(IdOf("RGB8"), {201, 3, 1}), (Samples{101, 1, 0}));
  EXPECT_EQ(Corrected(IdOf("RGB8"), {203, 2, 2}), (Samples{102, 1, 0}));
  EXPECT_EQ(Corrected(IdOf("RGB8"), {0, 1, 255}), (Samples{0, 0, 0}));
}

// By hand: lines of 17 pixels have 51 bytes, of which the main loop takes 36. Red is 100.5 everywhere, green 101.5 and
// blue 35.75.
TEST_F(ColorCorrectorApi, RoundsByPlaceInTheLineFrom16By16PixelsOn) {
  if (!features.avx) GTEST_SKIP() << "needs AVX";
  Set({0.5F, 0, 0, 0, 0.5F, 0, 0, 0, 0.25F});
  Samples samples;
  Samples expected;
  Samples expectedOfLow;
  for (size_t i = 0; i < 17 * 16; ++i) {
    samples.insert(samples.end(), {201, 203, 143});
    const Samples corrected = i % 17 < 12 ? Samples{100, 102, 36} : Samples{100, 101, 35};
    expected.insert(expected.end(), corrected.begin(), corrected.end());
    expectedOfLow.insert(expectedOfLow.end(), {101, 102, 36});
  }
  const ExportedImage image(IdOf("RGB8"), 17, 16, EncodeSamples(IdOf("RGB8"), 17 * 16, samples));
  EXPECT_EQ(KORVEL_ColorCorrector_ProcessInPlace(corrector.Handle(), image.Handle()), 0u);
  EXPECT_EQ(DecodeSamples(IdOf("RGB8"), 17 * 16, image.Content()), expected);
  samples.resize(17 * 15 * 3);
  expectedOfLow.resize(17 * 15 * 3);
  const ExportedImage low(IdOf("RGB8"), 17, 15, EncodeSamples(IdOf("RGB8"), 17 * 15, samples));
  EXPECT_EQ(KORVEL_ColorCorrector_ProcessInPlace(corrector.Handle(), low.Handle()), 0u);
  EXPECT_EQ(DecodeSamples(IdOf("RGB8"), 17 * 15, low.Content()), expectedOfLow);
}

TEST_F(ColorCorrectorApi, KeepsTheUnusedBitsOfWords) {
  Set({0.5F, 0, 0, 0, 1, 0, 0, 0, 2});
  for (const size_t side : {size_t{3}, size_t{19}}) {
    const ModelImage image = MakeFilledImage(IdOf("RGB10p32"), side, side, Fill::kGarbage, side);
    const ExportedImage exported(image.format, side, side, image.bytes);
    EXPECT_EQ(KORVEL_ColorCorrector_ProcessInPlace(corrector.Handle(), exported.Handle()), 0u);
    const Bytes result = exported.Content();
    for (size_t i = 3; i < result.size(); i += 4)
      ASSERT_EQ(result[i] & 0xC0, image.bytes[i] & 0xC0) << side << " " << i;
  }
}

TEST_F(ColorCorrectorApi, DoesWhatTheModelDoesOnEveryFormat) {
  for (const uint32_t format : PublicFormats()) {
    if (!IsFormatOfColorCorrection(format)) continue;
    ForEachSample(format, [&](const ModelImage& image, uint64_t seed) {
      ModelRandom random(seed);
      ColorFactors factors = kCamera;
      if (seed % 3 == 1) {
        for (float& factor : factors) factor = static_cast<float>(random.Below(513)) / 128.0F - 2.0F;
      } else if (seed % 3 == 2) {
        for (float& factor : factors) factor = static_cast<float>(random.Below(1U << 24)) / 0x1p22F - 2.0F;
      }
      Set(factors);
      ExpectBothWays(image, factors);
    });
  }
}

// Sums beyond every integer, infinite ones and those that are no number at all.
TEST_F(ColorCorrectorApi, TakesAnyFactors) {
  constexpr float kInfinity = std::numeric_limits<float>::infinity();
  constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
  constexpr float kLargest = std::numeric_limits<float>::max();
  const ColorFactors all[] = {{1e10F, 0, 0, -1e10F, 0, 0, 3e9F, 0, 0},
                              {kInfinity, 0, 0, -kInfinity, 1, 1, kInfinity, -kInfinity, 0},
                              {kNan, 0, 0, 1, kNan, 1, 0, 0, -kNan},
                              {kLargest, kLargest, kLargest, -kLargest, -kLargest, 0, kLargest, -kLargest, 1},
                              {1e-40F, 0, 0, -0.0F, -0.0F, -0.0F, 1e4F, -1e4F, 0.5F}};
  for (const uint32_t format : PublicFormats()) {
    if (!IsFormatOfColorCorrection(format)) continue;
    for (const ColorFactors& factors : all) {
      Set(factors);
      for (const size_t side : {size_t{5}, size_t{19}}) {
        SCOPED_TRACE(testing::Message() << FormatOf(format).name << ", " << side << ", " << factors[0]);
        ExpectBothWays(MakeFilledImage(format, side, side, Fill::kRandom, side), factors);
      }
    }
  }
}

TEST_F(ColorCorrectorApi, RefusesAllOtherFormats) {
  Set(kCamera);
  for (const uint32_t format : PublicFormats()) {
    if (IsFormatOfColorCorrection(format)) continue;
    SCOPED_TRACE(FormatOf(format).name);
    const LastError refusal = FormatOf(format).packed ? RefusalAsPacked("ColorCorrector") : RefusalOfFormat(format);
    for (const size_t side : {size_t{5}, size_t{16}}) {
      const ModelImage image = MakeFilledImage(format, side, side, Fill::kGarbage, format);
      ExpectNoImage(image, refusal, Process());
      ExpectUnchangedImage(image, refusal, ProcessInPlace());
    }
  }
  const ModelImage image = MakeFilledImage(IdOf("Invalid"), 5, 3, Fill::kGarbage, 1);
  ExpectNoImage(image, {7, "Pixel format Invalid is not supported!"}, Process());
  ExpectUnchangedImage(image, {7, "Pixel format Invalid is not supported!"}, ProcessInPlace());
}

TEST_F(ColorCorrectorApi, TellsWhichFormatsItTakes) {
  const LastError before = MarkLastError();
  for (const FormatRow& row : kFormatTable) {
    bool isSupported = !IsFormatOfColorCorrection(row.id);
    EXPECT_EQ(KORVEL_ColorCorrector_GetIsPixelFormatSupported(corrector.Handle(), row.id, &isSupported), 0u);
    EXPECT_EQ(isSupported, IsFormatOfColorCorrection(row.id)) << row.name;
  }
  for (const uint32_t unknown : {77U, 0x01080002U, 0xFFFFFFFFU}) {
    bool isSupported = true;
    EXPECT_EQ(KORVEL_ColorCorrector_GetIsPixelFormatSupported(corrector.Handle(), unknown, &isSupported), 0u);
    EXPECT_FALSE(isSupported) << unknown;
  }
  EXPECT_EQ(ReadLastError(), before);
}

TEST_F(ColorCorrectorApi, ChecksInOrder) {
  const ExportedImage mono(IdOf("Mono8"), 2, 2);
  const ExportedImage packed(IdOf("BGR10p32"), 4, 1);
  const ExportedImage word(IdOf("RGB10p32"), 4, 1);
  EXPECT_EQ(KORVEL_ColorCorrector_Process(nullptr, nullptr, nullptr), 2u);
  EXPECT_EQ(ReadLastError(), (LastError{2, "colorCorrectorHandle is invalid!"}));
  EXPECT_EQ(KORVEL_ColorCorrector_Process(corrector.Handle(), nullptr, nullptr), 2u);
  EXPECT_EQ(ReadLastError(), (LastError{2, "imageHandle is invalid!"}));
  EXPECT_EQ(KORVEL_ColorCorrector_Process(corrector.Handle(), packed.Handle(), nullptr), 7u);
  EXPECT_EQ(ReadLastError(), RefusalAsPacked("ColorCorrector"));
  for (const KORVEL_IMAGE_HANDLE image : {mono.Handle(), word.Handle()}) {
    EXPECT_EQ(KORVEL_ColorCorrector_Process(corrector.Handle(), image, nullptr), 5u);
    EXPECT_EQ(ReadLastError(), (LastError{5, "outputImageHandle is not a valid pointer!"}));
  }
  EXPECT_EQ(KORVEL_ColorCorrector_ProcessInPlace(nullptr, nullptr), 2u);
  EXPECT_EQ(ReadLastError(), (LastError{2, "colorCorrectorHandle is invalid!"}));
  EXPECT_EQ(KORVEL_ColorCorrector_ProcessInPlace(corrector.Handle(), nullptr), 2u);
  EXPECT_EQ(ReadLastError(), (LastError{2, "imageHandle is invalid!"}));
}

TEST_F(ColorCorrectorApi, UsesTheMemoryOfDestroyedImagesAgain) {
  Set(kCamera);
  const ExportedImage input(IdOf("BGRa8"), 40, 30);
  const uint8_t* first = nullptr;
  for (int i = 0; i < 5; ++i) {
    KORVEL_IMAGE_HANDLE output = nullptr;
    ASSERT_EQ(KORVEL_ColorCorrector_Process(corrector.Handle(), input.Handle(), &output), 0u);
    const ExportedImage result(output);
    if (i == 0) first = result.Data();
    EXPECT_EQ(result.Data(), first);
  }
}

TEST_F(ColorCorrectorApi, MakesImagesThatOutliveIt) {
  const ModelImage image = MakeFilledImage(IdOf("BGR10"), 7, 5, Fill::kRandom, 1);
  Set(kCamera);
  const ExportedImage input(image.format, 7, 5, image.bytes);
  KORVEL_IMAGE_HANDLE output = nullptr;
  ASSERT_EQ(KORVEL_ColorCorrector_Process(corrector.Handle(), input.Handle(), &output), 0u);
  corrector.Destruct();
  const ExportedImage result(output);
  EXPECT_EQ(result.Content(), ModelColorCorrection(image, kCamera, features).bytes);
}

}  // namespace
}  // namespace korvel_test
