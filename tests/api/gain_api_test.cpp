#include <gtest/gtest.h>
#include <korvel/korvel.h>

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <limits>
#include <string>
#include <vector>

#include "tests/model/correction_model.h"
#include "tests/support/exported_objects.h"
#include "tests/support/exported_operations.h"
#include "tests/support/last_error.h"

namespace korvel_test {
namespace {

constexpr float kSkipLow = std::bit_cast<float>(0x3F7FBE77U);
constexpr float kSkipHigh = std::bit_cast<float>(0x3F8020C5U);

struct GainFunctions {
  const char* name;
  KORVEL_RETURN_CODE (*set)(KORVEL_GAIN_HANDLE, const float*);
  KORVEL_RETURN_CODE (*get)(KORVEL_GAIN_HANDLE, float*);
  KORVEL_RETURN_CODE (*getMin)(KORVEL_GAIN_HANDLE, float*);
  KORVEL_RETURN_CODE (*getMax)(KORVEL_GAIN_HANDLE, float*);
};

constexpr std::array<GainFunctions, 4> kGains = {{
    {"Master", KORVEL_Gain_SetMasterGainValue, KORVEL_Gain_GetMasterGainValue, KORVEL_Gain_GetMasterGainMin,
     KORVEL_Gain_GetMasterGainMax},
    {"Red", KORVEL_Gain_SetRedGainValue, KORVEL_Gain_GetRedGainValue, KORVEL_Gain_GetRedGainMin,
     KORVEL_Gain_GetRedGainMax},
    {"Green", KORVEL_Gain_SetGreenGainValue, KORVEL_Gain_GetGreenGainValue, KORVEL_Gain_GetGreenGainMin,
     KORVEL_Gain_GetGreenGainMax},
    {"Blue", KORVEL_Gain_SetBlueGainValue, KORVEL_Gain_GetBlueGainValue, KORVEL_Gain_GetBlueGainMin,
     KORVEL_Gain_GetBlueGainMax},
}};

class GainApi : public testing::Test {
 protected:
  void Set(const GainFactors& factors) {
    const float values[] = {factors.master, factors.red, factors.green, factors.blue};
    for (size_t i = 0; i < 4; ++i) ASSERT_EQ(kGains[i].set(gain.Handle(), &values[i]), 0u);
  }
  float Get(const GainFunctions& functions) {
    float value = -1;
    EXPECT_EQ(functions.get(gain.Handle(), &value), 0u);
    return value;
  }
  MakesImage Process() {
    return [this](auto image, auto* output) { return KORVEL_Gain_Process(gain.Handle(), image, output); };
  }
  ChangesImage ProcessInPlace() {
    return [this](auto image) { return KORVEL_Gain_ProcessInPlace(gain.Handle(), image); };
  }
  void ExpectBothWays(const ModelImage& input, const GainFactors& factors) {
    const ModelImage expected = ModelGain(input, factors);
    ExpectNewImage(input, expected, Process());
    ExpectChangedImage(input, expected, ProcessInPlace());
  }
  // What each sample of a small image becomes.
  std::vector<uint32_t> Processed(uint32_t format, size_t width, size_t height, const std::vector<uint32_t>& samples) {
    const ExportedImage input(format, width, height, EncodeSamples(format, width * height, samples));
    KORVEL_IMAGE_HANDLE output = nullptr;
    EXPECT_EQ(KORVEL_Gain_Process(gain.Handle(), input.Handle(), &output), 0u) << ReadLastError();
    const ExportedImage result(output);
    return DecodeSamples(format, width * height, result.Content());
  }

  ExportedGain gain;
};

using Samples = std::vector<uint32_t>;

TEST_F(GainApi, StartsWithGainsOfOne) {
  for (const GainFunctions& functions : kGains) EXPECT_EQ(Get(functions), 1.0F) << functions.name;
}

TEST_F(GainApi, TellsTheSameLimitsForAllFour) {
  for (const GainFunctions& functions : kGains) {
    float minimum = -1;
    float maximum = -1;
    EXPECT_EQ(functions.getMin(gain.Handle(), &minimum), 0u);
    EXPECT_EQ(functions.getMax(gain.Handle(), &maximum), 0u);
    EXPECT_EQ(minimum, 1.0F) << functions.name;
    EXPECT_EQ(maximum, 8.0F) << functions.name;
  }
}

TEST_F(GainApi, KeepsEachGainByItself) {
  const LastError before = MarkLastError();
  Set({1.0F, 8.0F, 2.5F, 1.25F});
  EXPECT_EQ(Get(kGains[0]), 1.0F);
  EXPECT_EQ(Get(kGains[1]), 8.0F);
  EXPECT_EQ(Get(kGains[2]), 2.5F);
  EXPECT_EQ(Get(kGains[3]), 1.25F);
  EXPECT_EQ(ReadLastError(), before);
}

TEST_F(GainApi, RefusesGainsOutsideTheLimitsAndKeepsAllState) {
  constexpr float kInfinity = std::numeric_limits<float>::infinity();
  const GainFactors factors{1.5F, 2.0F, 3.0F, 4.0F};
  Set(factors);
  const ModelImage image = MakeFilledImage(IdOf("BayerGB10"), 9, 7, Fill::kRandom, 1);
  for (const GainFunctions& functions : kGains) {
    const float kept = Get(functions);
    for (const float value : {0.5F, 8.5F, std::nextafter(1.0F, 0.0F), std::nextafter(8.0F, 9.0F), 0.0F, -2.0F,
                              kInfinity, -kInfinity, std::numeric_limits<float>::quiet_NaN()}) {
      EXPECT_EQ(functions.set(gain.Handle(), &value), 5u) << functions.name << " " << value;
      EXPECT_EQ(ReadLastError(),
                (LastError{5, "error: type=InvalidArgument[5], module_id=9003, txt=img::processing::Gain::Set" +
                                  std::string(functions.name) + "GainValue: gain value not supported!"}));
      EXPECT_EQ(Get(functions), kept);
    }
  }
  ExpectBothWays(image, factors);
}

TEST_F(GainApi, LeavesImagesOfANewObjectUnchanged) {
  for (const uint32_t format : PublicFormats()) {
    if (!IsFormatOfGain(format)) continue;
    const ModelImage image = MakeFilledImage(format, 6, 5, Fill::kGarbage, format);
    ExpectNewImage(image, image, Process());
    ExpectChangedImage(image, image, ProcessInPlace());
  }
}

TEST_F(GainApi, MultipliesLimitsAndTruncates) {
  Set({1.5F, 1.0F, 1.0F, 1.0F});
  EXPECT_EQ(Processed(IdOf("Mono8"), 5, 1, {0, 3, 5, 170, 171}), (Samples{0, 4, 7, 255, 255}));
  Set({2.0F, 3.0F, 1.0F, 1.0F});
  EXPECT_EQ(Processed(IdOf("BayerRG8"), 2, 2, {100, 100, 100, 100}), (Samples{255, 200, 200, 200}));
  EXPECT_EQ(Processed(IdOf("BayerRG10"), 2, 2, {100, 100, 100, 100}), (Samples{600, 200, 200, 200}));
  EXPECT_EQ(Processed(IdOf("BayerRG12"), 2, 2, {1000, 1000, 2047, 2048}), (Samples{4095, 2000, 4094, 4095}));
}

TEST_F(GainApi, TakesTheColourOfEachSite) {
  Set({1.0F, 2.0F, 3.0F, 4.0F});
  EXPECT_EQ(Processed(IdOf("BayerGR8"), 2, 2, {10, 10, 10, 10}), (Samples{30, 20, 40, 30}));
  EXPECT_EQ(Processed(IdOf("BayerRG8"), 2, 2, {10, 10, 10, 10}), (Samples{20, 30, 30, 40}));
  EXPECT_EQ(Processed(IdOf("BayerGB8"), 2, 2, {10, 10, 10, 10}), (Samples{30, 40, 20, 30}));
  EXPECT_EQ(Processed(IdOf("BayerBG8"), 2, 2, {10, 10, 10, 10}), (Samples{40, 30, 30, 20}));
}

TEST_F(GainApi, TakesTheColourOfEachSiteAtOddSizes) {
  Set({1.0F, 2.0F, 3.0F, 4.0F});
  EXPECT_EQ(Processed(IdOf("BayerRG10"), 3, 3, Samples(9, 10)), (Samples{20, 30, 20, 30, 40, 30, 20, 30, 20}));
  EXPECT_EQ(Processed(IdOf("BayerBG12"), 1, 3, Samples(3, 10)), (Samples{40, 30, 40}));
  EXPECT_EQ(Processed(IdOf("BayerGR8"), 3, 1, Samples(3, 10)), (Samples{30, 20, 30}));
}

TEST_F(GainApi, LeavesMonoImagesToTheMasterGain) {
  Set({2.0F, 8.0F, 8.0F, 8.0F});
  EXPECT_EQ(Processed(IdOf("Mono8"), 2, 2, {10, 10, 10, 10}), (Samples{20, 20, 20, 20}));
  EXPECT_EQ(Processed(IdOf("Mono12"), 2, 2, {10, 10, 10, 10}), (Samples{20, 20, 20, 20}));
}

TEST_F(GainApi, IgnoresBitsAboveTheDepth) {
  Set({2.0F, 1.0F, 1.0F, 1.0F});
  EXPECT_EQ(Processed(IdOf("Mono10"), 3, 1, {0xFC00 + 5, 0x0400, 0xFFFF}), (Samples{10, 0, 1023}));
  EXPECT_EQ(Processed(IdOf("BayerGB12"), 3, 1, {0xF000 + 5, 0x1000, 0xFFFF}), (Samples{10, 0, 4095}));
}

TEST_F(GainApi, PassesImagesWhileAllGainsAreNearOne) {
  const Samples samples = {2000, 4000, 0xFFFF, 1};
  const auto isPassed = [&] { return Processed(IdOf("BayerRG12"), 2, 2, samples) == samples; };
  Set({1.0005F, 1.0005F, 1.0005F, 1.0005F});
  EXPECT_TRUE(isPassed());
  // The product of both is above the limit that each keeps.
  Set({kSkipHigh, kSkipHigh, kSkipHigh, kSkipHigh});
  EXPECT_TRUE(isPassed());
  const float above = std::nextafter(kSkipHigh, 2.0F);
  for (const GainFunctions& functions : kGains) {
    Set({1.0F, 1.0F, 1.0F, 1.0F});
    ASSERT_EQ(functions.set(gain.Handle(), &above), 0u);
    EXPECT_FALSE(isPassed()) << functions.name;
  }
  EXPECT_LT(kSkipLow, 1.0F);
}

// A colour gain away from one ends the skip for mono as well; its table is then the identity on values of the depth.
TEST_F(GainApi, LooksAtAllGainsAlsoForMono) {
  Set({1.0F, 1.0F, 1.0F, 2.0F});
  EXPECT_EQ(Processed(IdOf("Mono10"), 2, 1, {0x0401, 77}), (Samples{1, 77}));
}

TEST_F(GainApi, HoldsEveryEntryOfEveryTable) {
  ModelRandom random(4);
  const auto randomGain = [&] { return 1.0F + static_cast<float>(random.Below(1U << 24)) * (7.0F / 0x1p24F); };
  std::vector<GainFactors> all = {{1.0F, 1.0F, 1.0F, 8.0F}, {8.0F, 8.0F, 8.0F, 8.0F}, {1.1F, 1.3F, 1.7F, 1.9F}};
  for (int i = 0; i < 12; ++i) all.push_back({randomGain(), randomGain(), randomGain(), randomGain()});
  for (const GainFactors& factors : all) {
    SCOPED_TRACE(testing::Message() << factors.master << " " << factors.red << " " << factors.green << " "
                                    << factors.blue);
    Set(factors);
    for (const uint32_t format :
         {IdOf("Mono8"), IdOf("Mono10"), IdOf("Mono12"), IdOf("BayerGR8"), IdOf("BayerRG10"), IdOf("BayerBG12")}) {
      // Each value stands once at each of the four sites.
      const uint32_t values = FormatOf(format).maximum + 1;
      Samples samples;
      for (uint32_t i = 0; i < values * 4; ++i) samples.push_back(i % (values * 2) / 2);
      ExpectBothWays(MakeModelImage(format, values * 2, 2, EncodeSamples(format, values * 4, samples)), factors);
    }
    if (HasFailure()) return;
  }
}

// The master gain is set last and first: either way all tables follow.
TEST_F(GainApi, RebuildsTheColoursWithTheMasterGain) {
  const ModelImage image = MakeFilledImage(IdOf("BayerRG12"), 8, 8, Fill::kRandom, 3);
  const float two = 2.0F;
  const float three = 3.0F;
  ASSERT_EQ(KORVEL_Gain_SetGreenGainValue(gain.Handle(), &three), 0u);
  ASSERT_EQ(KORVEL_Gain_SetMasterGainValue(gain.Handle(), &two), 0u);
  ExpectBothWays(image, {2.0F, 1.0F, 3.0F, 1.0F});
  ASSERT_EQ(KORVEL_Gain_SetBlueGainValue(gain.Handle(), &two), 0u);
  ExpectBothWays(image, {2.0F, 1.0F, 3.0F, 2.0F});
}

TEST_F(GainApi, DoesWhatTheModelDoesOnEveryFormat) {
  const GainFactors all[] = {
      {1.0F, 1.0F, 1.0F, 1.0F}, {1.37F, 2.11F, 1.0F, 7.9F}, {8.0F, 1.5F, 1.0F, 1.0F}, {1.0F, 1.001F, 1.9F, 1.0F}};
  for (const uint32_t format : PublicFormats()) {
    if (!IsFormatOfGain(format)) continue;
    ForEachSample(format, [&](const ModelImage& image, uint64_t seed) {
      const GainFactors& factors = all[seed % std::size(all)];
      Set(factors);
      ExpectBothWays(image, factors);
    });
  }
}

TEST_F(GainApi, RefusesAllOtherFormats) {
  Set({2.0F, 2.0F, 2.0F, 2.0F});
  for (const uint32_t format : PublicFormats()) {
    if (IsFormatOfGain(format)) continue;
    SCOPED_TRACE(FormatOf(format).name);
    const ModelImage image = MakeFilledImage(format, 5, 3, Fill::kGarbage, format);
    const LastError refusal = FormatOf(format).packed ? RefusalAsPacked("gain") : RefusalOfFormat(format);
    ExpectNoImage(image, refusal, Process());
    // Intended: of the packed formats, this one meets the test of the format in place.
    ExpectUnchangedImage(image, format == IdOf("RGB10p32") ? RefusalOfFormat(format) : refusal, ProcessInPlace());
  }
  const ModelImage image = MakeFilledImage(IdOf("Invalid"), 5, 3, Fill::kGarbage, 1);
  ExpectNoImage(image, {7, "Pixel format Invalid is not supported!"}, Process());
  ExpectUnchangedImage(image, {7, "Pixel format Invalid is not supported!"}, ProcessInPlace());
}

TEST_F(GainApi, TellsWhichFormatsItTakes) {
  const LastError before = MarkLastError();
  for (const FormatRow& row : kFormatTable) {
    bool isSupported = !IsFormatOfGain(row.id);
    EXPECT_EQ(KORVEL_Gain_GetIsPixelFormatSupported(gain.Handle(), row.id, &isSupported), 0u);
    EXPECT_EQ(isSupported, IsFormatOfGain(row.id)) << row.name;
  }
  for (const uint32_t unknown : {77U, 0x01080002U, 0xFFFFFFFFU}) {
    bool isSupported = true;
    EXPECT_EQ(KORVEL_Gain_GetIsPixelFormatSupported(gain.Handle(), unknown, &isSupported), 0u);
    EXPECT_FALSE(isSupported) << unknown;
  }
  EXPECT_EQ(ReadLastError(), before);
}

TEST_F(GainApi, ChecksInOrder) {
  const ExportedImage rgb(IdOf("RGB8"), 2, 2);
  const ExportedImage packed(IdOf("Mono10p"), 4, 1);
  EXPECT_EQ(KORVEL_Gain_Process(nullptr, nullptr, nullptr), 2u);
  EXPECT_EQ(ReadLastError(), (LastError{2, "gainHandle is invalid!"}));
  EXPECT_EQ(KORVEL_Gain_Process(gain.Handle(), nullptr, nullptr), 2u);
  EXPECT_EQ(ReadLastError(), (LastError{2, "imageHandle is invalid!"}));
  EXPECT_EQ(KORVEL_Gain_Process(gain.Handle(), packed.Handle(), nullptr), 7u);
  EXPECT_EQ(ReadLastError(), (LastError{7, "gain does not support packed pixel formats!"}));
  EXPECT_EQ(KORVEL_Gain_Process(gain.Handle(), rgb.Handle(), nullptr), 5u);
  EXPECT_EQ(ReadLastError(), (LastError{5, "outputImageHandle is not a valid pointer!"}));
  EXPECT_EQ(KORVEL_Gain_ProcessInPlace(nullptr, nullptr), 2u);
  EXPECT_EQ(ReadLastError(), (LastError{2, "gainHandle is invalid!"}));
  EXPECT_EQ(KORVEL_Gain_ProcessInPlace(gain.Handle(), nullptr), 2u);
  EXPECT_EQ(ReadLastError(), (LastError{2, "imageHandle is invalid!"}));
}

TEST_F(GainApi, NamesAnotherHandleInItsDestruct) {
  EXPECT_EQ(KORVEL_Gain_Destruct(nullptr), 2u);
  EXPECT_EQ(ReadLastError(), (LastError{2, "colorCorrectorHandle is invalid!"}));
}

TEST_F(GainApi, UsesTheMemoryOfDestroyedImagesAgain) {
  for (const GainFactors& factors : {GainFactors{}, GainFactors{2.0F, 1.0F, 1.0F, 1.0F}}) {
    Set(factors);
    const ExportedImage input(IdOf("Mono12"), 40, 30);
    const uint8_t* first = nullptr;
    for (int i = 0; i < 5; ++i) {
      KORVEL_IMAGE_HANDLE output = nullptr;
      ASSERT_EQ(KORVEL_Gain_Process(gain.Handle(), input.Handle(), &output), 0u);
      const ExportedImage result(output);
      if (i == 0) first = result.Data();
      EXPECT_EQ(result.Data(), first);
    }
  }
}

TEST_F(GainApi, MakesImagesThatOutliveIt) {
  const ModelImage image = MakeFilledImage(IdOf("BayerGR8"), 7, 5, Fill::kRandom, 1);
  Set({2.0F, 1.0F, 1.0F, 1.0F});
  const ExportedImage input(image.format, 7, 5, image.bytes);
  KORVEL_IMAGE_HANDLE output = nullptr;
  ASSERT_EQ(KORVEL_Gain_Process(gain.Handle(), input.Handle(), &output), 0u);
  gain.Destruct();
  const ExportedImage result(output);
  EXPECT_EQ(result.Content(), ModelGain(image, {2.0F, 1.0F, 1.0F, 1.0F}).bytes);
}

}  // namespace
}  // namespace korvel_test
