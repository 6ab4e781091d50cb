#include <gtest/gtest.h>
#include <korvel/korvel.h>

#include <cstdint>
#include <limits>
#include <optional>
#include <utility>
#include <vector>

#include "tests/model/correction_model.h"
#include "tests/support/exported_objects.h"
#include "tests/support/exported_operations.h"
#include "tests/support/last_error.h"

namespace korvel_test {
namespace {

using Samples = std::vector<uint32_t>;

const LastError kTooSmall{
    5,
    "error: type=InvalidArgument[5], module_id=9003, txt=img::processing::Binning::Process: The image is too small!"};

class BinningApi : public testing::Test {
 protected:
  void Set(const BinningSettings& settings) {
    const auto x = static_cast<uint8_t>(settings.x);
    const auto y = static_cast<uint8_t>(settings.y);
    const uint16_t mode = settings.average ? 0 : 1;
    ASSERT_EQ(KORVEL_Binning_SetBinningX(binning.Handle(), &x), 0u);
    ASSERT_EQ(KORVEL_Binning_SetBinningY(binning.Handle(), &y), 0u);
    ASSERT_EQ(KORVEL_Binning_SetBinningMode(binning.Handle(), &mode), 0u);
  }
  uint32_t X() const { return GetByte(KORVEL_Binning_GetBinningX); }
  uint32_t Y() const { return GetByte(KORVEL_Binning_GetBinningY); }
  uint32_t Mode() const {
    uint16_t mode[2] = {0x5A5A, 0x5A5A};
    EXPECT_EQ(KORVEL_Binning_GetBinningMode(binning.Handle(), mode), 0u);
    EXPECT_EQ(mode[1], 0x5A5A);
    return mode[0];
  }
  uint32_t GetByte(KORVEL_RETURN_CODE (*get)(KORVEL_BINNING_HANDLE, uint8_t*)) const {
    uint8_t value[2] = {0x5A, 0x5A};
    EXPECT_EQ(get(binning.Handle(), value), 0u);
    EXPECT_EQ(value[1], 0x5A);
    return value[0];
  }
  MakesImage Process() {
    return [this](auto image, auto* output) { return KORVEL_Binning_Process(binning.Handle(), image, output); };
  }
  ModelSize Expected(uint32_t format, size_t width, size_t height) {
    size_t outputWidth = 99;
    size_t outputHeight = 99;
    EXPECT_EQ(KORVEL_Binning_ExpectedOutputSize(binning.Handle(), &outputWidth, &outputHeight, width, height, format),
              0u)
        << ReadLastError();
    return {outputWidth, outputHeight};
  }
  Samples Binned(uint32_t format, size_t width, size_t height, const Samples& samples) {
    const ExportedImage input(format, width, height, EncodeSamples(format, width * height, samples));
    KORVEL_IMAGE_HANDLE output = nullptr;
    EXPECT_EQ(KORVEL_Binning_Process(binning.Handle(), input.Handle(), &output), 0u) << ReadLastError();
    const ExportedImage result(output);
    return DecodeSamples(format, result.Width() * result.Height(), result.Content());
  }
  void ExpectBinned(const ModelImage& input, const BinningSettings& settings) {
    const std::optional<ModelImage> expected = ModelBin(input, settings);
    if (expected) {
      ExpectNewImage(input, *expected, Process());
    } else {
      ExpectNoImage(input, kTooSmall, Process());
    }
  }

  ExportedBinning binning;
};

TEST_F(BinningApi, StartsWithFactorsOfOneThatSum) {
  const LastError before = MarkLastError();
  EXPECT_EQ(X(), 1u);
  EXPECT_EQ(Y(), 1u);
  EXPECT_EQ(Mode(), 1u);
  EXPECT_EQ(GetByte(KORVEL_Binning_GetBinningMin), 1u);
  EXPECT_EQ(GetByte(KORVEL_Binning_GetBinningMax), 8u);
  EXPECT_EQ(ReadLastError(), before);
}

TEST_F(BinningApi, TakesFactorsFromOneToEight) {
  const LastError before = MarkLastError();
  for (uint32_t factor = 1; factor <= 8; ++factor) {
    Set({factor, 9 - factor, factor % 2 == 0});
    EXPECT_EQ(X(), factor);
    EXPECT_EQ(Y(), 9 - factor);
    EXPECT_EQ(Mode(), factor % 2);
  }
  EXPECT_EQ(ReadLastError(), before);
}

TEST_F(BinningApi, RefusesOtherFactors) {
  // Intended: both say X.
  const LastError refusal{5,
                          "error: type=InvalidArgument[5], module_id=9003, txt=img::processing::Binning::SetBinningX: "
                          "binning value not supported!"};
  Set({3, 5, true});
  for (uint32_t i = 0; i < 256; i = i == 0 ? 9 : i + 1) {
    const auto factor = static_cast<uint8_t>(i);
    EXPECT_EQ(KORVEL_Binning_SetBinningX(binning.Handle(), &factor), 5u) << i;
    EXPECT_EQ(ReadLastError(), refusal);
    EXPECT_EQ(KORVEL_Binning_SetBinningY(binning.Handle(), &factor), 5u) << i;
    EXPECT_EQ(ReadLastError(), refusal);
  }
  EXPECT_EQ(X(), 3u);
  EXPECT_EQ(Y(), 5u);
}

TEST_F(BinningApi, RefusesOtherModes) {
  Set({3, 5, true});
  for (const uint16_t mode : {uint16_t{2}, uint16_t{256}, uint16_t{257}, uint16_t{0xFFFF}}) {
    EXPECT_EQ(KORVEL_Binning_SetBinningMode(binning.Handle(), &mode), 5u) << mode;
    EXPECT_EQ(ReadLastError(), (LastError{5,
                                          "error: type=InvalidArgument[5], module_id=9003, "
                                          "txt=img::processing::Binning::SetMode: mode not supported!"}));
    EXPECT_EQ(Mode(), 0u);
  }
}

TEST_F(BinningApi, TellsTheOutputsSize) {
  Set({2, 2, false});
  EXPECT_EQ(Expected(IdOf("Mono8"), 100, 50), (ModelSize{48, 24}));
  EXPECT_EQ(Expected(IdOf("BayerRG8"), 100, 50), (ModelSize{48, 24}));
  EXPECT_EQ(Expected(IdOf("BayerRG8"), 106, 54), (ModelSize{48, 24}));
  EXPECT_EQ(Expected(IdOf("RGB8"), 106, 54), (ModelSize{52, 26}));
  EXPECT_EQ(Expected(IdOf("RGB10p32"), 106, 54), (ModelSize{52, 26}));
  EXPECT_EQ(Expected(IdOf("Mono8"), 7, 3), (ModelSize{0, 0}));
  EXPECT_EQ(Expected(IdOf("Mono8"), 0, 0), (ModelSize{0, 0}));
  Set({1, 1, false});
  EXPECT_EQ(Expected(IdOf("Mono8"), 103, 51), (ModelSize{100, 50}));
  EXPECT_EQ(Expected(IdOf("BayerGB12"), 103, 51), (ModelSize{96, 48}));
  Set({8, 3, true});
  EXPECT_EQ(Expected(IdOf("Mono12"), 1000, 1000), (ModelSize{124, 332}));
  constexpr size_t kMax = std::numeric_limits<size_t>::max();
  EXPECT_EQ(Expected(IdOf("Mono12"), kMax, kMax), (ModelSize{kMax / 8 / 4 * 4, kMax / 3 / 2 * 2}));
}

TEST_F(BinningApi, TellsTheOutputsSizeOfEveryFormat) {
  const LastError refusal{5,
                          "error: type=InvalidArgument[5], module_id=9003, "
                          "txt=img::processing::Binning::ExpectedOutputSize: pixelFormat value not supported!"};
  const BinningSettings settings{3, 2, false};
  Set(settings);
  std::vector<uint32_t> ids = {77, 0x01080002, 0xFFFFFFFF};
  for (const FormatRow& row : kFormatTable) ids.push_back(row.id);
  for (const uint32_t id : ids) {
    if (FindFormat(id) != nullptr && (IsFormatOfBinning(id) || id == IdOf("RGB10p32"))) {
      for (size_t side = 0; side < 70; ++side) {
        EXPECT_EQ(Expected(id, side, 70 - side), ModelExpectedBinnedSize(id, {side, 70 - side}, settings)) << id;
      }
      continue;
    }
    size_t width = 11;
    size_t height = 12;
    EXPECT_EQ(KORVEL_Binning_ExpectedOutputSize(binning.Handle(), &width, &height, 64, 64, id), 5u);
    EXPECT_EQ(ReadLastError(), refusal) << id;
    EXPECT_EQ(width, 11u);
    EXPECT_EQ(height, 12u);
  }
}

TEST_F(BinningApi, CopiesAtFactorsOfOne) {
  for (const uint32_t format : PublicFormats()) {
    if (!IsFormatOfBinning(format)) continue;
    for (const auto& [width, height] : {std::pair<size_t, size_t>{1, 1}, {7, 3}, {13, 11}}) {
      const ModelImage image = MakeFilledImage(format, width, height, Fill::kGarbage, format);
      ExpectNewImage(image, image, Process());
    }
  }
}

TEST_F(BinningApi, SumsUpToTheMaximumAndAveragesDown) {
  const Samples samples = {100, 100, 1, 1, 60, 60, 0, 255,  //
                           100, 100, 1, 2, 60, 60, 0, 0,    //
                           0,   0,   0, 0, 0,  0,  0, 3,    //
                           0,   1,   0, 0, 9,  9,  0, 0};
  Set({2, 2, false});
  EXPECT_EQ(Binned(IdOf("Mono8"), 8, 4, samples), (Samples{255, 5, 240, 255, 1, 0, 18, 3}));
  EXPECT_EQ(Binned(IdOf("Mono10"), 8, 4, samples), (Samples{400, 5, 240, 255, 1, 0, 18, 3}));
  Set({2, 2, true});
  EXPECT_EQ(Binned(IdOf("Mono8"), 8, 4, samples), (Samples{100, 1, 60, 63, 0, 0, 4, 0}));
  EXPECT_EQ(Binned(IdOf("Mono12"), 8, 4, samples), (Samples{100, 1, 60, 63, 0, 0, 4, 0}));
}

// Eight by four pixels of a mosaic from sixteen by eight: the first block of each colour has values of its own.
TEST_F(BinningApi, CombinesBayerPixelsOfOneColour) {
  Samples samples(16 * 8);
  for (size_t y = 0; y < 8; ++y) {
    for (size_t x = 0; x < 16; ++x) samples[y * 16 + x] = static_cast<uint32_t>((x % 2) * 50 + (y % 2) * 100 + 1);
  }
  samples[0] = 2;           // (0, 0)
  samples[2] = 4;           // (2, 0)
  samples[2 * 16 + 2] = 6;  // (2, 2)
  samples[4] = 8;           // (4, 0), of the next block
  Set({2, 2, true});
  const Samples averages = Binned(IdOf("BayerGR8"), 16, 8, samples);
  ASSERT_EQ(averages.size(), 32u);
  EXPECT_EQ(averages[0], 3u);  // (2 + 4 + 1 + 6) / 4
  EXPECT_EQ(averages[1], 51u);
  EXPECT_EQ(averages[2], 2u);  // (8 + 1 + 1 + 1) / 4
  EXPECT_EQ(averages[8], 101u);
  EXPECT_EQ(averages[9], 151u);
  Set({2, 2, false});
  const Samples sums = Binned(IdOf("BayerGR8"), 16, 8, samples);
  EXPECT_EQ(sums[0], 13u);
  EXPECT_EQ(sums[1], 204u);
  EXPECT_EQ(sums[2], 11u);
  EXPECT_EQ(sums[9], 255u);
}

TEST_F(BinningApi, SetsAlphaToTheMaximum) {
  Set({2, 2, true});
  for (const uint32_t format :
       {IdOf("RGBa8"), IdOf("BGRa8"), IdOf("RGBa10"), IdOf("BGRa10"), IdOf("RGBa12"), IdOf("BGRa12")}) {
    const Samples binned = Binned(format, 8, 4, Samples(8 * 4 * 4, 7));
    const uint32_t alpha = FormatOf(format).maximum;
    EXPECT_EQ(binned, (Samples{7, 7, 7, alpha, 7, 7, 7, alpha, 7, 7, 7, alpha, 7, 7, 7, alpha,  //
                               7, 7, 7, alpha, 7, 7, 7, alpha, 7, 7, 7, alpha, 7, 7, 7, alpha}));
  }
}

TEST_F(BinningApi, RefusesImagesThatAreTooSmall) {
  Set({2, 2, false});
  for (const auto& [width, height] : {std::pair<size_t, size_t>{7, 3}, {7, 50}, {50, 3}, {1, 1}}) {
    ExpectNoImage(MakeFilledImage(IdOf("Mono8"), width, height, Fill::kRandom, 1), kTooSmall, Process());
  }
  for (const auto& [width, height] : {std::pair<size_t, size_t>{15, 50}, {50, 7}}) {
    ExpectNoImage(MakeFilledImage(IdOf("BayerRG10"), width, height, Fill::kRandom, 1), kTooSmall, Process());
  }
  Set({1, 2, false});
  ExpectNoImage(MakeFilledImage(IdOf("RGB12"), 3, 50, Fill::kRandom, 1), kTooSmall, Process());
}

TEST_F(BinningApi, DoesWhatTheModelDoesOnEveryFormat) {
  for (const uint32_t format : PublicFormats()) {
    if (!IsFormatOfBinning(format)) continue;
    ForEachSample(format, [&](const ModelImage& image, uint64_t seed) {
      ModelRandom random(seed);
      const BinningSettings settings{1 + random.Below(4), 1 + random.Below(4), seed % 2 == 0};
      SCOPED_TRACE(testing::Message() << settings.x << " by " << settings.y << (settings.average ? ", mean" : ""));
      Set(settings);
      ExpectBinned(image, settings);
    });
  }
}

TEST_F(BinningApi, DoesWhatTheModelDoesAtAllFactors) {
  for (const uint32_t format :
       {IdOf("Mono8"), IdOf("Mono12"), IdOf("BayerGB8"), IdOf("BayerRG10"), IdOf("BGR8"), IdOf("RGBa10")}) {
    for (uint32_t x = 1; x <= 8; ++x) {
      for (uint32_t y = 1; y <= 8; ++y) {
        for (const bool average : {false, true}) {
          const BinningSettings settings{x, y, average};
          const uint64_t seed = x * 8 + y;
          const size_t width = 16 * x + seed % 11;
          const size_t height = 8 * y + seed % 5;
          SCOPED_TRACE(testing::Message() << FormatOf(format).name << ", " << width << " x " << height << ", " << x
                                          << " by " << y << (average ? ", mean" : ""));
          Set(settings);
          ExpectBinned(MakeFilledImage(format, width, height, seed % 3 == 0 ? Fill::kMaximum : Fill::kGarbage, seed),
                       settings);
        }
        if (HasFailure()) return;
      }
    }
  }
}

// Lines of any length.
TEST_F(BinningApi, DoesWhatTheModelDoesOnWideImages) {
  for (const uint32_t format :
       {IdOf("Mono8"), IdOf("Mono10"), IdOf("BayerGR8"), IdOf("BayerBG12"), IdOf("RGB8"), IdOf("BGRa12")}) {
    for (uint32_t factor = 2; factor <= 8; factor += 3) {
      for (const size_t width : {size_t{2047}, size_t{4097}, size_t{10240}}) {
        SCOPED_TRACE(testing::Message() << FormatOf(format).name << ", " << width << ", " << factor);
        const BinningSettings settings{factor, 2, width % 3 == 0};
        Set(settings);
        ExpectBinned(MakeFilledImage(format, width, 9, Fill::kRandom, width), settings);
      }
    }
  }
}

TEST_F(BinningApi, RefusesAllOtherFormats) {
  for (const uint32_t factor : {1u, 2u}) {
    Set({factor, factor, false});
    for (const uint32_t format : PublicFormats()) {
      if (IsFormatOfBinning(format)) continue;
      SCOPED_TRACE(FormatOf(format).name);
      ExpectNoImage(MakeFilledImage(format, 17, 13, Fill::kGarbage, format), RefusalAsPacked("binning"), Process());
    }
    ExpectNoImage(MakeFilledImage(IdOf("Invalid"), 17, 13, Fill::kGarbage, 1),
                  {7, "Pixel format Invalid is not supported!"}, Process());
  }
}

TEST_F(BinningApi, TellsWhichFormatsItTakes) {
  const LastError before = MarkLastError();
  for (const FormatRow& row : kFormatTable) {
    // Intended: true for RGB10p32, whose images the function refuses as packed.
    const bool expected = IsFormatOfBinning(row.id) || row.id == IdOf("RGB10p32");
    bool isSupported = !expected;
    EXPECT_EQ(KORVEL_Binning_IsPixelformatSupported(binning.Handle(), row.id, &isSupported), 0u);
    EXPECT_EQ(isSupported, expected) << row.name;
  }
  for (const uint32_t unknown : {77U, 0x01080002U, 0xFFFFFFFFU}) {
    bool isSupported = true;
    EXPECT_EQ(KORVEL_Binning_IsPixelformatSupported(binning.Handle(), unknown, &isSupported), 0u);
    EXPECT_FALSE(isSupported) << unknown;
  }
  EXPECT_EQ(ReadLastError(), before);
}

TEST_F(BinningApi, ChecksInOrder) {
  const ExportedImage mono(IdOf("Mono8"), 1, 1);
  const ExportedImage packed(IdOf("RGB10p32"), 4, 1);
  const ExportedImage invalid(IdOf("Invalid"), 4, 1);
  Set({2, 2, false});
  EXPECT_EQ(KORVEL_Binning_Process(nullptr, nullptr, nullptr), 2u);
  EXPECT_EQ(ReadLastError(), (LastError{2, "binningHandle is invalid!"}));
  EXPECT_EQ(KORVEL_Binning_Process(binning.Handle(), nullptr, nullptr), 2u);
  EXPECT_EQ(ReadLastError(), (LastError{2, "imageHandle is invalid!"}));
  EXPECT_EQ(KORVEL_Binning_Process(binning.Handle(), packed.Handle(), nullptr), 7u);
  EXPECT_EQ(ReadLastError(), RefusalAsPacked("binning"));
  for (const KORVEL_IMAGE_HANDLE image : {mono.Handle(), invalid.Handle()}) {
    EXPECT_EQ(KORVEL_Binning_Process(binning.Handle(), image, nullptr), 5u);
    EXPECT_EQ(ReadLastError(), (LastError{5, "outputImageHandle is not a valid pointer!"}));
  }
  size_t side = 0;
  EXPECT_EQ(KORVEL_Binning_ExpectedOutputSize(nullptr, nullptr, nullptr, 1, 1, 77), 2u);
  EXPECT_EQ(ReadLastError(), (LastError{2, "binningHandle is invalid!"}));
  EXPECT_EQ(KORVEL_Binning_ExpectedOutputSize(binning.Handle(), nullptr, nullptr, 1, 1, 77), 5u);
  EXPECT_EQ(ReadLastError(), (LastError{5, "outputWidth is not a valid pointer!"}));
  EXPECT_EQ(KORVEL_Binning_ExpectedOutputSize(binning.Handle(), &side, nullptr, 1, 1, 77), 5u);
  EXPECT_EQ(ReadLastError(), (LastError{5, "outputHeight is not a valid pointer!"}));
}

TEST_F(BinningApi, UsesTheMemoryOfDestroyedImagesAgain) {
  for (const uint32_t factor : {1u, 2u}) {
    Set({factor, factor, false});
    const ExportedImage input(IdOf("BayerBG12"), 48, 32);
    const uint8_t* first = nullptr;
    for (int i = 0; i < 5; ++i) {
      KORVEL_IMAGE_HANDLE output = nullptr;
      ASSERT_EQ(KORVEL_Binning_Process(binning.Handle(), input.Handle(), &output), 0u);
      const ExportedImage result(output);
      if (i == 0) first = result.Data();
      EXPECT_EQ(result.Data(), first);
    }
  }
}

TEST_F(BinningApi, MakesImagesThatOutliveIt) {
  const ModelImage image = MakeFilledImage(IdOf("BGR10"), 17, 9, Fill::kRandom, 1);
  Set({2, 3, false});
  const ExportedImage input(image.format, 17, 9, image.bytes);
  KORVEL_IMAGE_HANDLE output = nullptr;
  ASSERT_EQ(KORVEL_Binning_Process(binning.Handle(), input.Handle(), &output), 0u);
  binning.Destruct();
  const ExportedImage result(output);
  EXPECT_EQ(result.Content(), ModelBin(image, {2, 3, false}).value().bytes);
}

}  // namespace
}  // namespace korvel_test
