// The model against pixels that were worked out by hand. Everything else is compared with the model, so this is what
// ties the comparison to the ground.
#include "tests/model/conversion_model.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace korvel_test {
namespace {

using Bytes = std::vector<uint8_t>;
using Samples = std::vector<uint32_t>;

constexpr uint32_t kFast = 1;
constexpr uint32_t kHighQuality = 2;
constexpr uint32_t kClassic = 3;
constexpr ModelFeatures kNoFeatures{false, false};
constexpr ModelFeatures kAvx{true, false};
constexpr ModelFeatures kAvxAndAvx2{true, true};
constexpr ModelFeatures kAvx2Alone{false, true};

ModelImage ImageOfSamples(uint32_t format, size_t width, size_t height, const Samples& samples) {
  return MakeModelImage(format, width, height, EncodeSamples(format, width * height, samples));
}

// An image of one channel with the sample of each pixel computed from its place.
ModelImage ImageFrom(uint32_t format, size_t width, size_t height,
                     const std::function<uint32_t(size_t x, size_t y)>& sampleAt) {
  Samples samples;
  for (size_t y = 0; y < height; ++y) {
    for (size_t x = 0; x < width; ++x) {
      samples.push_back(sampleAt(x, y));
    }
  }
  return ImageOfSamples(format, width, height, samples);
}

// A sample that tells where it stands.
uint32_t Uneven(size_t x, size_t y) { return static_cast<uint32_t>((x * 37 + y * 59 + x * y * 11) % 256); }

Samples SamplesOf(const ModelImage& image) {
  return DecodeSamples(image.format, image.width * image.height, image.bytes);
}

Samples PixelOf(const ModelImage& image, size_t x, size_t y) {
  const Samples samples = SamplesOf(image);
  const size_t channels = FormatOf(image.format).channels;
  const size_t first = (y * image.width + x) * channels;
  Samples pixel;
  for (size_t channel = 0; channel < channels; ++channel) {
    pixel.push_back(samples.at(first + channel));
  }
  return pixel;
}

Samples Repeat(const Samples& pixel, size_t times) {
  Samples samples;
  for (size_t i = 0; i < times; ++i) {
    samples.insert(samples.end(), pixel.begin(), pixel.end());
  }
  return samples;
}

ModelImage Converted(const ModelImage& input, uint32_t target, uint32_t mode = kFast,
                     ModelFeatures features = kNoFeatures) {
  const ModelOutcome outcome = ModelConvert(input, target, mode, features);
  EXPECT_EQ(outcome.code, 0U) << outcome.text;
  EXPECT_EQ(outcome.image.format, target);
  EXPECT_EQ(outcome.image.width, input.width);
  EXPECT_EQ(outcome.image.height, input.height);
  return outcome.image;
}

std::string TextOf(uint32_t format, uint32_t target, uint32_t mode = kFast) {
  const ModelImage input = MakeFilledImage(format, 4, 4, Fill::kRandom, 1);
  const ModelOutcome outcome = ModelConvert(input, target, mode, kAvxAndAvx2);
  EXPECT_EQ(outcome.code, 1U);
  EXPECT_TRUE(outcome.image.bytes.empty());
  EXPECT_EQ(outcome.inputAfter, input.bytes);
  return outcome.text;
}

bool AllBytes(const Bytes& bytes, uint8_t value) {
  return std::all_of(bytes.begin(), bytes.end(), [value](uint8_t byte) { return byte == value; });
}

// ------------------------------------------------------------------------------------------------- format table --

TEST(FormatTable, HoldsEveryIdOnceInOrder) {
  EXPECT_TRUE(std::is_sorted(kFormatTable.begin(), kFormatTable.end(),
                             [](const FormatRow& a, const FormatRow& b) { return a.id < b.id; }));
  EXPECT_EQ(PublicFormats().front(), 0x01080001U);
  EXPECT_EQ(PublicFormats().back(), 0x4000001FU);
  EXPECT_EQ(FindFormat(0x01080002), nullptr);
}

TEST(FormatTable, RunsRoundUpOnce) {
  EXPECT_EQ(BytesOfImage(IdOf("Mono12p"), 1, 1), 2U);
  EXPECT_EQ(BytesOfImage(IdOf("Mono12p"), 3, 1), 5U);
  EXPECT_EQ(BytesOfImage(IdOf("Mono10p"), 3, 1), 4U);
  EXPECT_EQ(BytesOfImage(IdOf("Mono10p"), 5, 1), 7U);
  EXPECT_EQ(BytesOfImage(IdOf("Mono10p"), 3, 3), 12U);
  EXPECT_EQ(BytesOfImage(IdOf("RGBa12"), 3, 3), 72U);
  EXPECT_EQ(BytesOfImage(IdOf("_RawUnpacked4Ch8"), 3, 1), 9U);
  for (const FormatRow& row : kFormatTable) {
    EXPECT_EQ(BytesOfRun(row.runBytes, 0), 0U) << row.name;
  }
}

// ------------------------------------------------------------------------------------------------------- layouts --

TEST(ModelLayouts, EncodeAndDecodeKnownBytes) {
  const auto expect = [](uint32_t format, const Samples& samples, const Bytes& bytes) {
    const size_t pixels = samples.size() / FormatOf(format).channels;
    EXPECT_EQ(EncodeSamples(format, pixels, samples), bytes) << FormatOf(format).name;
    EXPECT_EQ(DecodeSamples(format, pixels, bytes), samples) << FormatOf(format).name;
  };
  expect(IdOf("Mono10p"), {1, 2, 3, 4}, {0x01, 0x08, 0x30, 0x00, 0x01});
  expect(IdOf("Mono10p"), {0x3FF, 0, 0x3FF}, {0xFF, 0x03, 0xF0, 0x3F});
  expect(IdOf("Mono12p"), {0xABC, 0x123}, {0xBC, 0x3A, 0x12});
  expect(IdOf("Mono12p"), {0xABC, 0x123, 0x456}, {0xBC, 0x3A, 0x12, 0x56, 0x04});
  expect(IdOf("Mono10g40Qrv"), {0x3FF, 0, 0, 0}, {0xFF, 0x00, 0x00, 0x00, 0x03});
  expect(IdOf("Mono10g40Qrv"), {0, 1, 2, 3}, {0x00, 0x00, 0x00, 0x00, 0xE4});
  expect(IdOf("Mono12g24Qrv"), {0xABC, 0x123}, {0xAB, 0x12, 0x3C});
  expect(IdOf("RGB10p32"), {0x3FF, 0, 0}, {0xFF, 0x03, 0x00, 0x00});
  expect(IdOf("RGB10p32"), {0, 0, 0x3FF}, {0x00, 0x00, 0xF0, 0x3F});
  expect(IdOf("Mono10"), {1023}, {0xFF, 0x03});
  expect(IdOf("RGBa8"), {1, 2, 3, 4}, {1, 2, 3, 4});
}

TEST(ModelLayouts, SpareBitsOfAWordCarryNothing) {
  EXPECT_EQ(DecodeSamples(IdOf("RGB10p32"), 1, {0x01, 0x08, 0x30, 0xC0}), (Samples{1, 2, 3}));
}

TEST(ModelLayouts, LowBitsBeyondAnImageAreZero) {
  EXPECT_EQ(DecodeSamples(IdOf("Mono10g40Qrv"), 1, {0xAB, 0xFF}), (Samples{0x2AC}));
  EXPECT_EQ(DecodeSamples(IdOf("Mono10g40Qrv"), 2, {0xAB, 0x01, 0xFF}), (Samples{0x2AC, 0x004}));
  EXPECT_EQ(DecodeSamples(IdOf("Mono10g40Qrv"), 3, {0xAB, 0x01, 0x80, 0xFF}), (Samples{0x2AC, 0x004, 0x200}));
  EXPECT_EQ(DecodeSamples(IdOf("Mono12g24Qrv"), 1, {0xAB, 0xFF}), (Samples{0xAB0}));
  EXPECT_EQ(DecodeSamples(IdOf("Mono12g24Qrv"), 3, {0xAB, 0x12, 0x3C, 0xDE, 0xFF}), (Samples{0xABC, 0x123, 0xDE0}));
}

// ------------------------------------------------------------------------------------------------- small modules --

TEST(ModelSmallModules, UnpackKeepsTheOrderOfChannels) {
  const ModelImage rgb = ImageOfSamples(IdOf("RGB10p32"), 2, 1, {1, 2, 3, 1021, 1022, 1023});
  EXPECT_EQ(SamplesOf(Converted(rgb, IdOf("RGB10"))), (Samples{1, 2, 3, 1021, 1022, 1023}));
  const ModelImage bgr = ImageOfSamples(IdOf("BGR10p32"), 1, 1, {1, 2, 3});
  EXPECT_EQ(SamplesOf(Converted(bgr, IdOf("BGR10"))), (Samples{1, 2, 3}));
  EXPECT_EQ(SamplesOf(Converted(bgr, IdOf("RGB10"))), (Samples{3, 2, 1}));
  const ModelImage bayer = ImageOfSamples(IdOf("BayerRG12p"), 3, 1, {0xABC, 0x123, 0x456});
  EXPECT_EQ(SamplesOf(Converted(bayer, IdOf("BayerRG12"))), (Samples{0xABC, 0x123, 0x456}));
}

TEST(ModelSmallModules, DepthIsABareShift) {
  const ModelImage white = ImageOfSamples(IdOf("Mono8"), 1, 1, {255});
  EXPECT_EQ(SamplesOf(Converted(white, IdOf("Mono10"))), (Samples{1020}));
  EXPECT_EQ(SamplesOf(Converted(white, IdOf("Mono12"))), (Samples{4080}));
  const ModelImage ten = ImageOfSamples(IdOf("Mono10"), 2, 1, {1023, 7});
  EXPECT_EQ(SamplesOf(Converted(ten, IdOf("Mono8"))), (Samples{255, 1}));
  EXPECT_EQ(SamplesOf(Converted(ten, IdOf("Mono12"))), (Samples{4092, 28}));
  const ModelImage twelve = ImageOfSamples(IdOf("BayerGB12"), 2, 1, {4095, 0x123});
  EXPECT_EQ(SamplesOf(Converted(twelve, IdOf("BayerGB8"))), (Samples{255, 0x12}));
  EXPECT_EQ(SamplesOf(Converted(twelve, IdOf("BayerGB10"))), (Samples{1023, 0x48}));
  const ModelImage alpha = ImageOfSamples(IdOf("BGRa8"), 1, 1, {1, 2, 3, 255});
  EXPECT_EQ(SamplesOf(Converted(alpha, IdOf("BGRa10"))), (Samples{4, 8, 12, 1020}));
}

TEST(ModelSmallModules, DepthCutsSamplesAboveTheMaximumByStorageAlone) {
  const ModelImage beyond = ImageOfSamples(IdOf("Mono10"), 2, 1, {0xFFFF, 0x0404});
  EXPECT_EQ(SamplesOf(Converted(beyond, IdOf("Mono8"))), (Samples{0xFF, 0x01}));
  EXPECT_EQ(SamplesOf(Converted(beyond, IdOf("Mono12"))), (Samples{0xFFFC, 0x1010}));
}

TEST(ModelSmallModules, ExtensionHasTheSameAlphaAtEveryDepth) {
  const ModelImage grey = ImageOfSamples(IdOf("Mono8"), 1, 1, {0x12});
  EXPECT_EQ(SamplesOf(Converted(grey, IdOf("RGBa12"))), (Samples{0x120, 0x120, 0x120, 255}));
  EXPECT_EQ(SamplesOf(Converted(grey, IdOf("BGRa8"))), (Samples{0x12, 0x12, 0x12, 255}));
  EXPECT_EQ(SamplesOf(Converted(grey, IdOf("BGR10"))), (Samples{0x48, 0x48, 0x48}));
}

TEST(ModelSmallModules, SwappingRedAndBlueChangesTheInputWhereItIsTheFirstStage) {
  const ModelImage input = MakeModelImage(IdOf("BGR8"), 2, 1, {1, 2, 3, 4, 5, 6});
  const ModelOutcome first = ModelConvert(input, IdOf("RGB8"), kFast, kNoFeatures);
  EXPECT_EQ(first.image.bytes, (Bytes{3, 2, 1, 6, 5, 4}));
  EXPECT_EQ(first.inputAfter, first.image.bytes);

  const ModelOutcome second = ModelConvert(input, IdOf("RGB10"), kFast, kNoFeatures);
  EXPECT_EQ(SamplesOf(second.image), (Samples{12, 8, 4, 24, 20, 16}));
  EXPECT_EQ(second.inputAfter, input.bytes);

  const ModelOutcome tooLarge = ModelConvertToBuffer(input, IdOf("RGB8"), kFast, kNoFeatures, 7);
  EXPECT_EQ(tooLarge.code, 1U);
  EXPECT_EQ(tooLarge.inputAfter, first.image.bytes);
}

TEST(ModelSmallModules, CopyKeepsPackedBytesAsTheyAre) {
  const ModelImage input = MakeModelImage(IdOf("RGB10p32"), 1, 1, {0xFF, 0xFF, 0xFF, 0xFF});
  const ModelImage copy = Converted(input, IdOf("RGB10p32"));
  EXPECT_EQ(copy.bytes, input.bytes);
  EXPECT_EQ(copy.written, Bytes(4, 0xFF));
}

// ----------------------------------------------------------------------------------------------------- 3x3 module --

// One computed pixel, which all nine become.
const Samples kNine = {10, 200, 30, 41, 77, 62, 50, 83, 97};

TEST(Model3x3, EverySiteRule) {
  const auto centre = [](uint32_t format, uint32_t target) {
    const ModelImage output = Converted(ImageOfSamples(format, 3, 3, kNine), target);
    Samples pixel = PixelOf(output, 1, 1);
    EXPECT_EQ(SamplesOf(output), Repeat(pixel, 9));
    return pixel;
  };
  EXPECT_EQ(centre(IdOf("BayerRG8"), IdOf("RGB8")), (Samples{46, 96, 77})) << "at blue";
  EXPECT_EQ(centre(IdOf("BayerBG8"), IdOf("RGB8")), (Samples{77, 96, 46})) << "at red";
  EXPECT_EQ(centre(IdOf("BayerGR8"), IdOf("RGB8")), (Samples{141, 77, 51})) << "at green on a line of blue";
  EXPECT_EQ(centre(IdOf("BayerGB8"), IdOf("RGB8")), (Samples{51, 77, 141})) << "at green on a line of red";
  EXPECT_EQ(centre(IdOf("BayerRG8"), IdOf("BGR8")), (Samples{77, 96, 46}));
  EXPECT_EQ(centre(IdOf("BayerRG8"), IdOf("RGBa8")), (Samples{46, 96, 77, 255}));
  EXPECT_EQ(centre(IdOf("BayerRG10"), IdOf("BGRa10")), (Samples{77, 96, 46, 1023}));
  EXPECT_EQ(centre(IdOf("BayerRG12"), IdOf("RGBa12")), (Samples{46, 96, 77, 4095}));
  EXPECT_EQ(centre(IdOf("BayerRG10"), IdOf("RGB10p32")), (Samples{46, 96, 77}));
}

TEST(Model3x3, HeightOfTwoTakesBlocks) {
  const ModelImage input = ImageOfSamples(IdOf("BayerRG8"), 4, 2, {10, 20, 30, 40, 51, 60, 70, 80});
  const Samples line = {10, 35, 60, 10, 35, 60, 30, 45, 60, 30, 45, 60};
  EXPECT_EQ(SamplesOf(Converted(input, IdOf("RGB8"))), Repeat(line, 2));
}

TEST(Model3x3, SizesBelowTheKernelStayUnwritten) {
  for (const uint32_t mode : {kFast, kHighQuality}) {
    for (const auto& [width, height] :
         {std::pair<size_t, size_t>{1, 1}, {1, 9}, {2, 2}, {2, 9}, {9, 1}, {2, 1}, {1, 2}}) {
      const ModelImage input = MakeFilledImage(IdOf("BayerRG8"), width, height, Fill::kRandom, 3);
      const ModelImage output = Converted(input, IdOf("RGBa8"), mode);
      EXPECT_TRUE(AllBytes(output.written, 0)) << width << " x " << height;
    }
    const ModelImage input = MakeFilledImage(IdOf("BayerRG8"), 3, 2, Fill::kRandom, 3);
    EXPECT_TRUE(AllBytes(Converted(input, IdOf("RGBa8"), mode).written, 0xFF));
  }
}

TEST(Model3x3, TheModuleKeepsTheSpareBitsOfAWord) {
  const ModelImage input = MakeFilledImage(IdOf("BayerGR10"), 16, 16, Fill::kRandom, 3);
  const ModelImage output = Converted(input, IdOf("RGB10p32"), kFast, kAvxAndAvx2);
  EXPECT_EQ(output.written[2], 0xFF);
  EXPECT_EQ(output.written[3], 0x3F);
}

TEST(Model3x3, FlatImagesStayFlat) {
  constexpr size_t kPixels = 360;
  const ModelImage input = MakeModelImage(IdOf("BayerGB8"), 20, 18, Bytes(kPixels, 201));
  for (const uint32_t mode : {kFast, kHighQuality, kClassic}) {
    EXPECT_EQ(Converted(input, IdOf("RGB8"), mode).bytes, Bytes(kPixels * 3, 201));
  }
  EXPECT_EQ(Converted(input, IdOf("Mono8")).bytes, Bytes(kPixels, 201));
}

// ----------------------------------------------------------------------------------------------------- 5x5 module --

TEST(Model5x5, ALoneSample) {
  const ModelImage input =
      ImageFrom(IdOf("BayerRG8"), 11, 11, [](size_t x, size_t y) { return x == 4 && y == 4 ? 255U : 0U; });
  const ModelImage output = Converted(input, IdOf("RGB8"), kHighQuality);
  EXPECT_EQ(PixelOf(output, 4, 4), (Samples{255, 127, 191}));
  EXPECT_EQ(PixelOf(output, 6, 4), (Samples{0, 0, 0}));
  EXPECT_EQ(PixelOf(output, 2, 4), (Samples{0, 0, 0}));
  EXPECT_EQ(PixelOf(output, 5, 4), (Samples{127, 0, 0}));
  EXPECT_EQ(PixelOf(output, 4, 5), (Samples{127, 0, 0}));
  EXPECT_EQ(PixelOf(output, 5, 5), (Samples{63, 0, 0}));
  EXPECT_EQ(PixelOf(output, 7, 7), (Samples{0, 0, 0}));
}

TEST(Model5x5, GreenSitesSeeBothDirections) {
  // At (4, 3), green on a line of blue in this phase: red comes from the column and blue from the line.
  const ModelImage input = ImageFrom(IdOf("BayerRG12"), 9, 9,
                                     [](size_t x, size_t y) { return static_cast<uint32_t>(100 * x + 10 * y * y); });
  const ModelImage output = Converted(input, IdOf("RGB12"), kHighQuality);
  // C 490, N and S 440 and 560, W and E 390 and 590, diagonals 340, 540, 460, 660, far 410, 650 and 290, 690.
  const uint32_t red = (10 * 490 + 8 * (440 + 560) - 2 * (2000 + 1060) + 980) / 16;
  const uint32_t blue = (10 * 490 + 8 * (390 + 590) - 2 * (2000 + 980) + 1060) / 16;
  EXPECT_EQ(PixelOf(output, 4, 3), (Samples{red, 490, blue}));
}

TEST(Model5x5, ResultsAreClipped) {
  // White at a site and at its sides, black two away: 4 * 255 + 2 * 1020 is 3060, above 8 * 256 - 1.
  const ModelImage input = ImageFrom(IdOf("BayerRG8"), 9, 9,
                                     [](size_t x, size_t y) { return (x > 2 && x < 6 && y > 2 && y < 6) ? 255U : 0U; });
  EXPECT_EQ(PixelOf(Converted(input, IdOf("RGB8"), kHighQuality), 4, 4), (Samples{255, 255, 255}));
}

TEST(Model5x5, LowAndNarrowImagesAreThoseOf3x3) {
  for (const auto& [width, height] : {std::pair<size_t, size_t>{100, 4}, {4, 100}, {3, 7}, {100, 3}, {100, 2}}) {
    const ModelImage input = MakeFilledImage(IdOf("BayerGB12"), width, height, Fill::kRandom, width);
    const ModelImage quality = Converted(input, IdOf("BGR12"), kHighQuality);
    const ModelImage fast = Converted(input, IdOf("BGR12"), kFast);
    EXPECT_EQ(quality.bytes, fast.bytes) << width << " x " << height;
    EXPECT_EQ(quality.written, fast.written);
  }
}

TEST(Model5x5, RingsAreThoseOf3x3) {
  const ModelImage input = MakeFilledImage(IdOf("BayerGR10"), 9, 7, Fill::kRandom, 5);
  const ModelImage quality = Converted(input, IdOf("RGB10"), kHighQuality);
  const ModelImage fast = Converted(input, IdOf("RGB10"), kFast);
  size_t different = 0;
  for (size_t y = 0; y < 7; ++y) {
    for (size_t x = 0; x < 9; ++x) {
      const bool same = PixelOf(quality, x, y) == PixelOf(fast, x, y);
      if (x < 2 || x > 6 || y < 2 || y > 4) {
        EXPECT_TRUE(same) << x << ", " << y;
      }
      different += same ? 0 : 1;
    }
  }
  EXPECT_GT(different, 10U);
}

TEST(Model5x5, AnyOtherModeIsHighQuality) {
  const ModelImage input = MakeFilledImage(IdOf("BayerRG8"), 20, 20, Fill::kRandom, 5);
  const Bytes quality = Converted(input, IdOf("RGB8"), kHighQuality, kAvxAndAvx2).bytes;
  EXPECT_EQ(Converted(input, IdOf("RGB8"), 0, kAvxAndAvx2).bytes, quality);
  EXPECT_EQ(Converted(input, IdOf("RGB8"), 7, kAvxAndAvx2).bytes, quality);
  EXPECT_NE(Converted(input, IdOf("RGB8"), kFast, kAvxAndAvx2).bytes, quality);
}

// -------------------------------------------------------------------------------------------------------- mono 2x2 --

TEST(ModelMono2x2, WeightsGoByPosition) {
  const Samples block = {10, 20, 30, 40};
  const auto mono = [&block](uint32_t format) {
    const ModelImage output = Converted(ImageOfSamples(format, 2, 2, block), IdOf("Mono8"));
    EXPECT_EQ(SamplesOf(output), Repeat({SamplesOf(output).front()}, 4));
    EXPECT_EQ(output.written, Bytes(4, 0xFF));
    return SamplesOf(output).front();
  };
  EXPECT_EQ(mono(IdOf("BayerGR8")), 22U);  // 10 * 299 + 40 * 114 + 50 * 293 = 22200
  EXPECT_EQ(mono(IdOf("BayerRG8")), 24U);  // 20 * 299 + 30 * 114 + 50 * 293 = 24050
  EXPECT_EQ(mono(IdOf("BayerGB8")), 27U);  // 40 * 299 + 10 * 114 + 50 * 293 = 27750
  EXPECT_EQ(mono(IdOf("BayerBG8")), 25U);  // 30 * 299 + 20 * 114 + 50 * 293 = 25900
}

TEST(ModelMono2x2, TheWeightStaysWithItsSample) {
  // 255 at (1, 1), an odd column of an odd line, which BayerGR weighs with 114 in each of the four blocks around it.
  const ModelImage input =
      ImageFrom(IdOf("BayerGR8"), 3, 3, [](size_t x, size_t y) { return x == 1 && y == 1 ? 255U : 0U; });
  EXPECT_EQ(SamplesOf(Converted(input, IdOf("Mono8"))), Repeat({255 * 114 / 999}, 9));
}

TEST(ModelMono2x2, OneLineOrColumnStaysUnwritten) {
  for (const auto& [width, height] : {std::pair<size_t, size_t>{1, 1}, {1, 5}, {5, 1}}) {
    const ModelImage input = MakeFilledImage(IdOf("BayerRG12"), width, height, Fill::kRandom, 1);
    EXPECT_TRUE(AllBytes(Converted(input, IdOf("Mono12")).written, 0)) << width << " x " << height;
  }
}

TEST(ModelMono2x2, SamplesAboveTheMaximumAreClipped) {
  const ModelImage input = ImageOfSamples(IdOf("BayerRG10"), 2, 2, {0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF});
  EXPECT_EQ(SamplesOf(Converted(input, IdOf("Mono10"))), Repeat({1023}, 4));
}

// -------------------------------------------------------------------------------------------------------- fast path --

TEST(ModelFastPath, BordersAreMeansOfWhatIsThere) {
  const ModelImage input = ImageFrom(IdOf("BayerRG8"), 16, 16, Uneven);
  const ModelImage output = Converted(input, IdOf("RGB8"), kFast, kAvx);
  const auto v = Uneven;
  EXPECT_EQ(PixelOf(output, 0, 0), (Samples{v(0, 0), (v(1, 0) + v(0, 1)) / 2, v(1, 1)}));
  EXPECT_EQ(PixelOf(output, 2, 0), (Samples{v(2, 0), (v(1, 0) + v(3, 0) + v(2, 1)) / 3, (v(1, 1) + v(3, 1)) / 2}));
  EXPECT_EQ(PixelOf(output, 1, 0), (Samples{(v(0, 0) + v(2, 0)) / 2, v(1, 0), v(1, 1)}));
  EXPECT_EQ(PixelOf(output, 0, 1), (Samples{(v(0, 0) + v(0, 2)) / 2, v(0, 1), v(1, 1)}));
  EXPECT_EQ(PixelOf(output, 15, 15), (Samples{v(14, 14), (v(14, 15) + v(15, 14)) / 2, v(15, 15)}));
}

TEST(ModelFastPath, TheInteriorIsThatOfTheModule) {
  const ModelImage input = MakeFilledImage(IdOf("BayerGR8"), 18, 20, Fill::kRandom, 9);
  const ModelImage fast = Converted(input, IdOf("BGRa8"), kFast, kAvx2Alone);
  const ModelImage module = Converted(input, IdOf("BGRa8"), kFast, kNoFeatures);
  for (size_t y = 1; y < 19; ++y) {
    for (size_t x = 1; x < 17; ++x) {
      EXPECT_EQ(PixelOf(fast, x, y), PixelOf(module, x, y));
    }
  }
  EXPECT_NE(fast.bytes, module.bytes);
}

// Whether a conversion goes another way with features than without.
bool DependsOnFeatures(uint32_t format, uint32_t target, size_t width, size_t height, uint32_t mode,
                       ModelFeatures features) {
  const ModelImage input = MakeFilledImage(format, width, height, Fill::kRandom, 77);
  const ModelImage with = Converted(input, target, mode, features);
  const ModelImage without = Converted(input, target, mode, kNoFeatures);
  return with.bytes != without.bytes || with.written != without.written;
}

TEST(ModelFastPath, Gates) {
  const uint32_t rg8 = IdOf("BayerRG8");
  const uint32_t rgb8 = IdOf("RGB8");
  EXPECT_TRUE(DependsOnFeatures(rg8, rgb8, 16, 16, kFast, kAvx));
  EXPECT_FALSE(DependsOnFeatures(rg8, rgb8, 15, 16, kFast, kAvx));
  EXPECT_FALSE(DependsOnFeatures(rg8, rgb8, 16, 15, kFast, kAvx));
  EXPECT_FALSE(DependsOnFeatures(rg8, rgb8, 17, 16, kFast, kAvx)) << "odd width";
  EXPECT_FALSE(DependsOnFeatures(rg8, rgb8, 16, 17, kFast, kAvx)) << "odd height";
  EXPECT_FALSE(DependsOnFeatures(rg8, rgb8, 16, 16, kFast, kAvx2Alone)) << "three channels take AVX alone";
  EXPECT_TRUE(DependsOnFeatures(rg8, IdOf("BGRa8"), 16, 16, kFast, kAvx2Alone));
  EXPECT_TRUE(DependsOnFeatures(rg8, IdOf("Mono8"), 16, 16, kFast, kAvx2Alone));
  EXPECT_TRUE(DependsOnFeatures(IdOf("BayerGR8"), rgb8, 16, 16, kFast, kAvx));
  EXPECT_FALSE(DependsOnFeatures(IdOf("BayerGB8"), rgb8, 16, 16, kFast, kAvx));
  EXPECT_FALSE(DependsOnFeatures(IdOf("BayerBG8"), IdOf("Mono8"), 16, 16, kFast, kAvxAndAvx2));
  EXPECT_FALSE(DependsOnFeatures(rg8, rgb8, 16, 16, kHighQuality, kAvxAndAvx2));
  EXPECT_FALSE(DependsOnFeatures(rg8, rgb8, 16, 16, kClassic, kAvxAndAvx2));
  EXPECT_TRUE(DependsOnFeatures(IdOf("BayerRG10"), IdOf("RGB10p32"), 16, 16, kFast, kAvx2Alone));
  EXPECT_FALSE(DependsOnFeatures(IdOf("BayerGR10"), IdOf("RGB10p32"), 16, 16, kFast, kAvxAndAvx2));
  EXPECT_FALSE(DependsOnFeatures(IdOf("BayerRG10"), IdOf("RGB10"), 16, 16, kFast, kAvxAndAvx2));
  EXPECT_TRUE(DependsOnFeatures(IdOf("BayerRG12p"), IdOf("BGRa8"), 16, 16, kFast, kAvx)) << "after other stages too";
}

TEST(ModelFastPath, WordsHaveTheirSpareBitsCleared) {
  const ModelImage input = MakeFilledImage(IdOf("BayerRG10"), 16, 16, Fill::kGarbage, 4);
  const ModelImage output = Converted(input, IdOf("RGB10p32"), kFast, kAvx);
  EXPECT_TRUE(AllBytes(output.written, 0xFF));
  for (size_t i = 3; i < output.bytes.size(); i += 4) {
    EXPECT_EQ(output.bytes[i] & 0xC0, 0);
  }
  // Red at (0, 0) is the sample itself, cut to ten bits.
  EXPECT_EQ(PixelOf(output, 0, 0)[0], SamplesOf(input)[0] & 0x3FF);
}

TEST(ModelFastPath, LuminanceWeights) {
  EXPECT_EQ(std::bit_cast<uint32_t>(0.299f), 0x3E991687U);
  EXPECT_EQ(std::bit_cast<uint32_t>(0.587f), 0x3F1645A2U);
  EXPECT_EQ(std::bit_cast<uint32_t>(0.114f), 0x3DE978D5U);
  const ModelImage input = ImageFrom(IdOf("BayerRG8"), 16, 16, Uneven);
  const ModelImage output = Converted(input, IdOf("Mono8"), kFast, kAvx);
  const uint32_t green = (Uneven(1, 0) + Uneven(0, 1)) / 2;
  const double expected = 0.299 * Uneven(0, 0) + 0.587 * green + 0.114 * Uneven(1, 1);
  EXPECT_EQ(PixelOf(output, 0, 0), (Samples{static_cast<uint32_t>(expected)}));
}

TEST(ModelFastPath, LuminanceRoundsDifferentlyInVectorColumns) {
  // A flat 34 comes out as 33 where the products are added in double precision, and as 34 in single.
  const auto columns = [](size_t width, ModelFeatures features, size_t firstScalar) {
    const ModelImage input = MakeModelImage(IdOf("BayerGR8"), width, 16, Bytes(width * 16, 34));
    const ModelImage output = Converted(input, IdOf("Mono8"), kFast, features);
    for (size_t y = 0; y < 16; ++y) {
      for (size_t x = 0; x < width; ++x) {
        const bool vector = y > 0 && y < 15 && x > 0 && x < firstScalar;
        EXPECT_EQ(PixelOf(output, x, y), (Samples{vector ? 34U : 33U})) << x << ", " << y << " of width " << width;
      }
    }
  };
  columns(16, kAvx, 1);
  columns(18, kAvx, 17);
  columns(32, kAvx, 17);
  columns(34, kAvx, 33);
  columns(32, kAvx2Alone, 1);
  columns(34, kAvxAndAvx2, 33);
  columns(64, kAvxAndAvx2, 33);
  columns(66, kAvxAndAvx2, 65);
}

// ---------------------------------------------------------------------------------------------------------- classic --

TEST(ModelClassic, HalfAPixelToTheRightAndBelow) {
  const ModelImage input = ImageFrom(IdOf("BayerRG8"), 16, 18, Uneven);
  const ModelImage output = Converted(input, IdOf("BGRa8"), kClassic);
  const auto v = Uneven;
  EXPECT_EQ(PixelOf(output, 0, 0),
            (Samples{v(1, 1), (v(1, 0) + v(0, 1)) / 2, (9 * v(0, 0) + 3 * (v(2, 0) + v(0, 2)) + v(2, 2)) / 16, 255}));
  EXPECT_EQ(PixelOf(output, 1, 0), (Samples{(12 * v(1, 1) + 4 * v(3, 1)) / 16, (v(1, 0) + v(2, 1)) / 2,
                                            (9 * v(2, 0) + 3 * (v(0, 0) + v(2, 2)) + v(0, 2)) / 16, 255}));
  EXPECT_EQ(PixelOf(output, 15, 17), (Samples{v(15, 17), (v(15, 16) + v(14, 17)) / 2, v(14, 16), 255}));
  EXPECT_EQ(PixelOf(output, 14, 4), (Samples{(9 * v(15, 5) + 3 * (v(13, 5) + v(15, 3)) + v(13, 3)) / 16,
                                             (v(15, 4) + v(14, 5)) / 2, (12 * v(14, 4) + 4 * v(14, 6)) / 16, 255}));
}

TEST(ModelClassic, TheOtherPhaseHasItsPlanesAside) {
  const ModelImage input = ImageFrom(IdOf("BayerGR8"), 16, 16, Uneven);
  const ModelImage output = Converted(input, IdOf("RGB8"), kClassic);
  const auto v = Uneven;
  EXPECT_EQ(PixelOf(output, 0, 0),
            (Samples{(12 * v(1, 0) + 4 * v(1, 2)) / 16, (v(0, 0) + v(1, 1)) / 2, (12 * v(0, 1) + 4 * v(2, 1)) / 16}));
}

TEST(ModelClassic, ElsewhereHighQualityTakesItsPlace) {
  const auto same = [](uint32_t format, uint32_t target, size_t width, size_t height) {
    const ModelImage input = MakeFilledImage(format, width, height, Fill::kRandom, 6);
    return Converted(input, target, kClassic).bytes == Converted(input, target, kHighQuality).bytes;
  };
  EXPECT_FALSE(same(IdOf("BayerRG8"), IdOf("RGB8"), 16, 16));
  EXPECT_FALSE(same(IdOf("BayerGR12"), IdOf("RGB8"), 16, 16)) << "after the depth stage the kernel fits";
  EXPECT_TRUE(same(IdOf("BayerRG8"), IdOf("RGB8"), 14, 16));
  EXPECT_TRUE(same(IdOf("BayerRG8"), IdOf("RGB8"), 17, 16));
  EXPECT_TRUE(same(IdOf("BayerGB8"), IdOf("RGB8"), 16, 16));
  EXPECT_TRUE(same(IdOf("BayerRG8"), IdOf("RGB10"), 16, 16));
  EXPECT_TRUE(same(IdOf("BayerRG8"), IdOf("Mono8"), 16, 16));
}

// ------------------------------------------------------------------------------------------------------------ chain --

TEST(ModelChain, Messages) {
  EXPECT_EQ(TextOf(IdOf("Mono8"), IdOf("RGB10p32")),
            "ImageConverter: No extension converter for conversion from 17825795 to 35651613");
  EXPECT_EQ(TextOf(IdOf("BGR10"), IdOf("BGR10p32")), "ImageConverter: packed output not supported!");
  EXPECT_EQ(TextOf(IdOf("Mono8"), IdOf("Mono10p")), "ImageConverter: packed output not supported!");
  EXPECT_EQ(TextOf(IdOf("RGBa8"), IdOf("BGRa8")), "Conversion from RGBa8 to BGRa8 not implemented.");
  EXPECT_EQ(TextOf(IdOf("RGBa8"), IdOf("BGRa10")), "Conversion from RGBa10 to BGRa10 not implemented.");
  EXPECT_EQ(TextOf(IdOf("BayerRG8"), IdOf("BayerGR8")),
            "ImageConverter: conversion failed with pixel format mismatch! desired: 1080008, result: 1080009.");
  EXPECT_EQ(TextOf(IdOf("BayerRG12p"), IdOf("BayerGR8")),
            "ImageConverter: conversion failed with pixel format mismatch! desired: 1080008, result: 1080009.");
  EXPECT_EQ(TextOf(IdOf("RGB8"), IdOf("Mono8")),
            "ImageConverter: conversion failed with pixel format mismatch! desired: 1080001, result: 2180014.");
  EXPECT_EQ(TextOf(IdOf("RGB10p32"), IdOf("RGBa10")),
            "ImageConverter: conversion failed with pixel format mismatch! desired: 240005f, result: 2300018.");
  EXPECT_EQ(TextOf(IdOf("BayerRG8"), 0), "ImageConverter: No bayer converter for conversion from 17301513 to 0");
  EXPECT_EQ(TextOf(IdOf("Mono8"), 0x01080002), "Unknown formatId: 17301506");
}

TEST(ModelChain, StatusOfFailures) {
  const ModelImage alpha = MakeFilledImage(IdOf("RGBa8"), 2, 2, Fill::kRandom, 1);
  EXPECT_EQ(ModelConvert(alpha, IdOf("BGRa8"), kFast, kNoFeatures).status, -1003);
  EXPECT_EQ(ModelConvert(alpha, IdOf("Mono8"), kFast, kNoFeatures).status, 1);
}

TEST(ModelChain, ClassicRefusalsOfTheBufferForm) {
  const auto text = [](uint32_t format, uint32_t target) {
    const ModelImage input = MakeFilledImage(format, 16, 16, Fill::kRandom, 1);
    return ModelConvertToBuffer(input, target, kClassic, kAvxAndAvx2, BytesOfImage(target, 16, 16)).text;
  };
  EXPECT_EQ(text(IdOf("BayerRG8"), IdOf("BGRa8")), "");
  EXPECT_EQ(text(IdOf("BayerRG12"), IdOf("BGRa8")),
            "ImageConverter: the input pixel format does not support the classic conversion mode.");
  EXPECT_EQ(text(IdOf("BayerRG8"), IdOf("Mono8")),
            "ImageConverter: the output pixel format does not support the classic conversion mode.");
  EXPECT_EQ(text(IdOf("Mono8"), IdOf("Mono8")),
            "ImageConverter: the input pixel format does not support the classic conversion mode.");
  const ModelImage small = MakeFilledImage(IdOf("BayerRG8"), 15, 15, Fill::kRandom, 1);
  EXPECT_EQ(ModelConvertToBuffer(small, IdOf("RGB8"), kClassic, kNoFeatures, 675).image.bytes,
            Converted(small, IdOf("RGB8"), kHighQuality).bytes);
}

TEST(ModelChain, ABufferMustHaveTheExactSizeExceptOnTheFastPath) {
  const ModelImage bayer = MakeFilledImage(IdOf("BayerRG8"), 16, 16, Fill::kRandom, 1);
  EXPECT_EQ(ModelConvertToBuffer(bayer, IdOf("RGB8"), kFast, kAvx, 769).code, 0U);
  const ModelOutcome refused = ModelConvertToBuffer(bayer, IdOf("RGB8"), kFast, kNoFeatures, 769);
  EXPECT_EQ(refused.code, 1U);
  EXPECT_EQ(refused.text,
            "ImageConverter: conversion failed with buffer size mismatch! provided: 769, required : 768.");
}

TEST(ModelChain, DepthComesBeforeTheBayerStage) {
  // Samples of 0 and 15, which nothing is left of at 8 bits.
  const ModelImage input = ImageFrom(IdOf("BayerRG12"), 16, 16, [](size_t x, size_t y) { return (x + y) % 2 * 0xFU; });
  EXPECT_TRUE(AllBytes(Converted(input, IdOf("RGB8"), kFast, kAvx).bytes, 0));
  const ModelImage up = ImageOfSamples(IdOf("BayerRG8"), 3, 3, {1, 0, 0, 0, 0, 0, 0, 0, 0});
  EXPECT_EQ(PixelOf(Converted(up, IdOf("RGB12")), 1, 1), (Samples{4, 0, 0})) << "16 / 4, not (1 / 4) << 4";
}

TEST(ModelChain, SupportedOutputs) {
  const std::vector<uint32_t> mono = ModelSupportedOutputs(IdOf("Mono10p"));
  ASSERT_EQ(mono.size(), 16U);
  EXPECT_EQ(mono[0], IdOf("Mono8"));
  EXPECT_EQ(mono[1], IdOf("BGR8"));
  EXPECT_EQ(mono[4], IdOf("RGBa8"));
  EXPECT_EQ(mono[15], IdOf("Mono10p"));
  const std::vector<uint32_t> bayer = ModelSupportedOutputs(IdOf("BayerGB12g24Qrv"));
  ASSERT_EQ(bayer.size(), 20U);
  EXPECT_EQ(bayer[0], IdOf("BayerGB8"));
  EXPECT_EQ(bayer[6], IdOf("BayerGB10"));
  EXPECT_EQ(bayer[18], IdOf("RGB10p32"));
  EXPECT_EQ(bayer[19], IdOf("BayerGB12g24Qrv"));
  EXPECT_EQ(ModelSupportedOutputs(IdOf("RGBa10")),
            (std::vector<uint32_t>{IdOf("RGBa8"), IdOf("RGBa10"), IdOf("RGBa12")}));
  EXPECT_EQ(ModelSupportedOutputs(IdOf("BGR10p32")),
            (std::vector<uint32_t>{IdOf("BGR8"), IdOf("RGB8"), IdOf("BGR10"), IdOf("RGB10"), IdOf("BGR12"),
                                   IdOf("RGB12"), IdOf("BGR10p32")}));
}

TEST(ModelChain, ListedOutputsConvertAndOthersDont) {
  for (const uint32_t input : PublicFormats()) {
    const std::vector<uint32_t> listed = ModelSupportedOutputs(input);
    const ModelImage image = MakeFilledImage(input, 6, 6, Fill::kRandom, input);
    for (const uint32_t target : PublicFormats()) {
      const bool converts = ModelConvert(image, target, kFast, kNoFeatures).code == 0;
      const bool isListed = std::find(listed.begin(), listed.end(), target) != listed.end();
      EXPECT_EQ(converts, isListed) << FormatOf(input).name << " to " << FormatOf(target).name;
    }
  }
}

// ------------------------------------------------------------------------------------------------------------ fills --

TEST(ModelFills, AreWhatTheirNamesSay) {
  EXPECT_EQ(MakeFilledImage(IdOf("Mono10p"), 4, 1, Fill::kMaximum, 0).bytes, Bytes(5, 0xFF));
  EXPECT_EQ(SamplesOf(MakeFilledImage(IdOf("RGB12"), 2, 1, Fill::kAlternating, 0)),
            (Samples{4095, 4095, 4095, 0, 0, 0}));
  const ModelImage random = MakeFilledImage(IdOf("Mono10"), 50, 50, Fill::kRandom, 8);
  const Samples samples = SamplesOf(random);
  EXPECT_LE(*std::max_element(samples.begin(), samples.end()), 1023U);
  EXPECT_GT(*std::max_element(samples.begin(), samples.end()), 1000U);
  EXPECT_EQ(MakeFilledImage(IdOf("Mono10"), 50, 50, Fill::kRandom, 8).bytes, random.bytes);
  const Samples garbage = SamplesOf(MakeFilledImage(IdOf("Mono10"), 50, 50, Fill::kGarbage, 8));
  EXPECT_GT(*std::max_element(garbage.begin(), garbage.end()), 60000U);
}

}  // namespace
}  // namespace korvel_test
