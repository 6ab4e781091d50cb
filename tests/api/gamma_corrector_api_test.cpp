#include <gtest/gtest.h>
#include <korvel/korvel.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <limits>
#include <vector>

#include "tests/model/correction_model.h"
#include "tests/support/exported_objects.h"
#include "tests/support/exported_operations.h"
#include "tests/support/last_error.h"

namespace korvel_test {
namespace {

constexpr float kMinimum = std::bit_cast<float>(0x3E99999AU);  // 0.3
constexpr float kSkipLow = std::bit_cast<float>(0x3F7FBE77U);
constexpr float kSkipHigh = std::bit_cast<float>(0x3F8020C5U);

using Samples = std::vector<uint32_t>;

// In a new image the fourth channel has no value of its own.
ModelImage WithoutAlpha(ModelImage image) {
  const FormatRow& row = FormatOf(image.format);
  if (row.channels != 4) return image;
  const size_t bytes = row.storageBitsPerChannel / 8;
  for (size_t i = 0; i < image.written.size(); ++i) {
    if (i / bytes % 4 == 3) image.written[i] = 0;
  }
  return image;
}

class GammaCorrectorApi : public testing::Test {
 protected:
  void Set(float gamma) { ASSERT_EQ(KORVEL_GammaCorrector_SetGammaCorrectionValue(corrector.Handle(), &gamma), 0u); }
  float Get() {
    float value = -1;
    EXPECT_EQ(KORVEL_GammaCorrector_GetGammaCorrectionValue(corrector.Handle(), &value), 0u);
    return value;
  }
  MakesImage Process() {
    return
        [this](auto image, auto* output) { return KORVEL_GammaCorrector_Process(corrector.Handle(), image, output); };
  }
  ChangesImage ProcessInPlace() {
    return [this](auto image) { return KORVEL_GammaCorrector_ProcessInPlace(corrector.Handle(), image); };
  }
  void ExpectBothWays(const ModelImage& input, float gamma) {
    const ModelImage expected = ModelGamma(input, gamma);
    const bool isClone = gamma >= kSkipLow && gamma <= kSkipHigh;
    ExpectNewImage(input, isClone ? expected : WithoutAlpha(expected), Process());
    ExpectChangedImage(input, expected, ProcessInPlace());
  }
  void ExpectPassed(const ModelImage& input) {
    ExpectNewImage(input, input, Process());
    ExpectChangedImage(input, input, ProcessInPlace());
  }
  Samples Corrected(uint32_t format, size_t width, const Samples& samples) {
    const ExportedImage image(format, width, 1, EncodeSamples(format, width, samples));
    EXPECT_EQ(KORVEL_GammaCorrector_ProcessInPlace(corrector.Handle(), image.Handle()), 0u) << ReadLastError();
    return DecodeSamples(format, width, image.Content());
  }

  ExportedGammaCorrector corrector;
};

TEST_F(GammaCorrectorApi, StartsWithOneAndTellsItsLimits) {
  const LastError before = MarkLastError();
  EXPECT_EQ(Get(), 1.0F);
  float value = -1;
  EXPECT_EQ(KORVEL_GammaCorrector_GetGammaCorrectionMin(corrector.Handle(), &value), 0u);
  EXPECT_EQ(value, kMinimum);
  EXPECT_EQ(KORVEL_GammaCorrector_GetGammaCorrectionMax(corrector.Handle(), &value), 0u);
  EXPECT_EQ(value, 3.0F);
  Set(0.3F);
  EXPECT_EQ(Get(), 0.3F);
  Set(3.0F);
  EXPECT_EQ(Get(), 3.0F);
  EXPECT_EQ(ReadLastError(), before);
}

TEST_F(GammaCorrectorApi, RefusesValuesOutsideTheLimitsAndKeepsAllState) {
  constexpr float kInfinity = std::numeric_limits<float>::infinity();
  const ModelImage image = MakeFilledImage(IdOf("RGB10"), 9, 7, Fill::kRandom, 1);
  Set(2.2F);
  for (const float value : {0.29F, 3.01F, std::nextafter(kMinimum, 0.0F), std::nextafter(3.0F, 4.0F), 0.0F, -1.0F,
                            kInfinity, -kInfinity, std::numeric_limits<float>::quiet_NaN()}) {
    EXPECT_EQ(KORVEL_GammaCorrector_SetGammaCorrectionValue(corrector.Handle(), &value), 5u) << value;
    EXPECT_EQ(ReadLastError(), (LastError{5,
                                          "error: type=InvalidArgument[5], module_id=9003, txt="
                                          "img::processing::GammaCorrector::SetGammaCorrectionValue: Gamma value not "
                                          "supported!"}));
    EXPECT_EQ(Get(), 2.2F);
  }
  ExpectBothWays(image, 2.2F);
}

TEST_F(GammaCorrectorApi, RaisesToThePowerAndTruncates) {
  Set(2.0F);
  EXPECT_EQ(Corrected(IdOf("Mono8"), 5, {0, 64, 100, 254, 255}), (Samples{0, 127, 159, 254, 255}));
  Set(0.5F);
  EXPECT_EQ(Corrected(IdOf("Mono8"), 5, {0, 64, 100, 254, 255}), (Samples{0, 16, 39, 253, 255}));
  EXPECT_EQ(Corrected(IdOf("Mono10"), 3, {0, 512, 1023}), (Samples{0, 256, 1023}));
  EXPECT_EQ(Corrected(IdOf("Mono12"), 3, {0, 2048, 4095}), (Samples{0, 1024, 4095}));
}

// In double precision, each of these comes out one less.
TEST_F(GammaCorrectorApi, ComputesInSinglePrecision) {
  Set(0.301F);
  EXPECT_EQ(Corrected(IdOf("Mono12"), 2, {3696, 3909}), (Samples{2913, 3509}));
  Set(0.327F);
  EXPECT_EQ(Corrected(IdOf("BayerGR12"), 1, {2373}), (Samples{772}));
}

TEST_F(GammaCorrectorApi, KeepsTheEndsForAnyValue) {
  for (int step = 0; step <= 38; ++step) {
    const float gamma = 0.3F + 0.07F * static_cast<float>(step);
    Set(gamma);
    EXPECT_EQ(Corrected(IdOf("Mono8"), 2, {0, 255}), (Samples{0, 255})) << gamma;
    EXPECT_EQ(Corrected(IdOf("Mono10"), 2, {0, 1023}), (Samples{0, 1023})) << gamma;
    EXPECT_EQ(Corrected(IdOf("Mono12"), 2, {0, 4095}), (Samples{0, 4095})) << gamma;
  }
}

TEST_F(GammaCorrectorApi, HoldsEveryEntryOfEveryTable) {
  ModelRandom random(9);
  std::vector<float> gammas = {
      0.3F, 0.301F, 0.307F, 0.45F, 0.998F, std::nextafter(kSkipLow, 0.0F), std::nextafter(kSkipHigh, 2.0F),
      1.8F, 2.2F,   2.4F,   3.0F};
  for (int i = 0; i < 10; ++i) gammas.push_back(0.301F + static_cast<float>(random.Below(2698)) / 1000.0F);
  for (const float gamma : gammas) {
    SCOPED_TRACE(gamma);
    Set(gamma);
    for (const uint32_t format : {IdOf("Mono8"), IdOf("Mono10"), IdOf("Mono12")}) {
      Samples samples(FormatOf(format).maximum + 1);
      for (uint32_t i = 0; i < samples.size(); ++i) samples[i] = i;
      ExpectBothWays(MakeModelImage(format, samples.size(), 1, EncodeSamples(format, samples.size(), samples)), gamma);
    }
    if (HasFailure()) return;
  }
}

TEST_F(GammaCorrectorApi, PassesImagesWhileGammaIsNearOne) {
  const ModelImage images[] = {MakeFilledImage(IdOf("RGBa8"), 20, 3, Fill::kRandom, 1),
                               MakeFilledImage(IdOf("Mono12"), 20, 3, Fill::kGarbage, 2),
                               MakeFilledImage(IdOf("RGB10p32"), 20, 3, Fill::kGarbage, 3)};
  for (const ModelImage& image : images) ExpectPassed(image);
  for (const float gamma : {kSkipLow, 0.9995F, 1.0F, 1.0005F, kSkipHigh}) {
    Set(gamma);
    for (const ModelImage& image : images) ExpectPassed(image);
  }
  for (const float gamma : {std::nextafter(kSkipLow, 0.0F), std::nextafter(kSkipHigh, 2.0F)}) {
    Set(gamma);
    EXPECT_NE(ModelGamma(images[1], gamma).bytes, images[1].bytes);
    for (const ModelImage& image : images) ExpectBothWays(image, gamma);
  }
}

TEST_F(GammaCorrectorApi, TakesValuesAboveTheMaximumAsTheMaximum) {
  Set(2.0F);
  EXPECT_EQ(Corrected(IdOf("Mono10"), 3, {1023, 1024, 0xFFFF}), (Samples{1023, 1023, 1023}));
  EXPECT_EQ(Corrected(IdOf("BGR12"), 1, {4096, 0xFFFF, 0}), (Samples{4095, 4095, 0}));
}

TEST_F(GammaCorrectorApi, LeavesAlphaAloneInPlace) {
  Set(2.0F);
  EXPECT_EQ(Corrected(IdOf("RGBa8"), 2, {64, 64, 64, 64, 64, 64, 64, 7}),
            (Samples{127, 127, 127, 64, 127, 127, 127, 7}));
  EXPECT_EQ(Corrected(IdOf("BGRa12"), 1, {0, 4095, 0, 0xFFFF}), (Samples{0, 4095, 0, 0xFFFF}));
}

// Intended: alpha of a new image is what the memory held before.
TEST_F(GammaCorrectorApi, LeavesAlphaOfANewImageUnwritten) {
  const ModelImage first = MakeFilledImage(IdOf("RGBa8"), 8, 4, Fill::kRandom, 5);
  const ModelImage second = MakeFilledImage(IdOf("RGBa8"), 8, 4, Fill::kRandom, 6);
  ExpectNewImage(first, first, Process());
  Set(2.0F);
  ModelImage expected = ModelGamma(second, 2.0F);
  for (size_t i = 3; i < expected.bytes.size(); i += 4) expected.bytes[i] = first.bytes[i];
  ExpectNewImage(second, expected, Process());
}

TEST_F(GammaCorrectorApi, ClearsTheUnusedBitsOfWords) {
  Set(2.0F);
  const ExportedImage image(IdOf("RGB10p32"), 2, 1, {0xFF, 0xFF, 0xFF, 0xFF, 0x00, 0x00, 0x00, 0xC0});
  EXPECT_EQ(KORVEL_GammaCorrector_ProcessInPlace(corrector.Handle(), image.Handle()), 0u);
  EXPECT_EQ(image.Content(), (Bytes{0xFF, 0xFF, 0xFF, 0x3F, 0, 0, 0, 0}));
}

TEST_F(GammaCorrectorApi, DoesWhatTheModelDoesOnEveryFormat) {
  const float gammas[] = {2.2F, 0.45F, 1.0F, 3.0F, 0.3F};
  for (const uint32_t format : PublicFormats()) {
    if (!IsFormatOfGamma(format)) continue;
    ForEachSample(format, [&](const ModelImage& image, uint64_t seed) {
      const float gamma = gammas[seed % std::size(gammas)];
      Set(gamma);
      ExpectBothWays(image, gamma);
    });
  }
}

TEST_F(GammaCorrectorApi, RefusesAllOtherFormats) {
  for (const float gamma : {1.0F, 2.0F}) {
    Set(gamma);
    for (const uint32_t format : PublicFormats()) {
      if (IsFormatOfGamma(format)) continue;
      SCOPED_TRACE(FormatOf(format).name);
      const ModelImage image = MakeFilledImage(format, 5, 3, Fill::kGarbage, format);
      ExpectNoImage(image, RefusalAsPacked("GammaCorrector"), Process());
      ExpectUnchangedImage(image, RefusalAsPacked("GammaCorrector"), ProcessInPlace());
    }
    const LastError refusal{
        7, "error: type=ImageFormatNotSupported[7], module_id=9003, txt=Pixel format Invalid is not supported!"};
    const ModelImage image = MakeFilledImage(IdOf("Invalid"), 5, 3, Fill::kGarbage, 1);
    ExpectNoImage(image, refusal, Process());
    ExpectUnchangedImage(image, refusal, ProcessInPlace());
  }
}

TEST_F(GammaCorrectorApi, TellsWhichFormatsItTakes) {
  const LastError before = MarkLastError();
  for (const FormatRow& row : kFormatTable) {
    // Intended: Invalid isn't packed.
    const bool expected = IsFormatOfGamma(row.id) || row.id == 0;
    bool isSupported = !expected;
    EXPECT_EQ(KORVEL_GammaCorrector_GetIsPixelFormatSupported(corrector.Handle(), row.id, &isSupported), 0u);
    EXPECT_EQ(isSupported, expected) << row.name;
  }
  for (const uint32_t unknown : {77U, 0x01080002U, 0xFFFFFFFFU}) {
    bool isSupported = true;
    EXPECT_EQ(KORVEL_GammaCorrector_GetIsPixelFormatSupported(corrector.Handle(), unknown, &isSupported), 0u);
    EXPECT_FALSE(isSupported) << unknown;
  }
  EXPECT_EQ(ReadLastError(), before);
}

TEST_F(GammaCorrectorApi, ChecksInOrder) {
  const ExportedImage packed(IdOf("BGR10p32"), 4, 1);
  const ExportedImage word(IdOf("RGB10p32"), 4, 1);
  const ExportedImage invalid(IdOf("Invalid"), 4, 1);
  EXPECT_EQ(KORVEL_GammaCorrector_Process(nullptr, nullptr, nullptr), 2u);
  EXPECT_EQ(ReadLastError(), (LastError{2, "gammaCorrectorHandle is invalid!"}));
  EXPECT_EQ(KORVEL_GammaCorrector_Process(corrector.Handle(), nullptr, nullptr), 2u);
  EXPECT_EQ(ReadLastError(), (LastError{2, "imageHandle is invalid!"}));
  EXPECT_EQ(KORVEL_GammaCorrector_Process(corrector.Handle(), packed.Handle(), nullptr), 7u);
  EXPECT_EQ(ReadLastError(), RefusalAsPacked("GammaCorrector"));
  for (const KORVEL_IMAGE_HANDLE image : {word.Handle(), invalid.Handle()}) {
    EXPECT_EQ(KORVEL_GammaCorrector_Process(corrector.Handle(), image, nullptr), 5u);
    EXPECT_EQ(ReadLastError(), (LastError{5, "outputImageHandle is not a valid pointer!"}));
  }
  EXPECT_EQ(KORVEL_GammaCorrector_ProcessInPlace(nullptr, nullptr), 2u);
  EXPECT_EQ(ReadLastError(), (LastError{2, "gammaCorrectorHandle is invalid!"}));
  EXPECT_EQ(KORVEL_GammaCorrector_ProcessInPlace(corrector.Handle(), nullptr), 2u);
  EXPECT_EQ(ReadLastError(), (LastError{2, "imageHandle is invalid!"}));
}

TEST_F(GammaCorrectorApi, UsesTheMemoryOfDestroyedImagesAgain) {
  for (const float gamma : {1.0F, 2.0F}) {
    Set(gamma);
    const ExportedImage input(IdOf("BGRa8"), 40, 30);
    const uint8_t* first = nullptr;
    for (int i = 0; i < 5; ++i) {
      KORVEL_IMAGE_HANDLE output = nullptr;
      ASSERT_EQ(KORVEL_GammaCorrector_Process(corrector.Handle(), input.Handle(), &output), 0u);
      const ExportedImage result(output);
      if (i == 0) first = result.Data();
      EXPECT_EQ(result.Data(), first);
    }
  }
}

TEST_F(GammaCorrectorApi, MakesImagesThatOutliveIt) {
  const ModelImage image = MakeFilledImage(IdOf("BGR10"), 7, 5, Fill::kRandom, 1);
  Set(2.0F);
  const ExportedImage input(image.format, 7, 5, image.bytes);
  KORVEL_IMAGE_HANDLE output = nullptr;
  ASSERT_EQ(KORVEL_GammaCorrector_Process(corrector.Handle(), input.Handle(), &output), 0u);
  corrector.Destruct();
  const ExportedImage result(output);
  EXPECT_EQ(result.Content(), ModelGamma(image, 2.0F).bytes);
}

}  // namespace
}  // namespace korvel_test
