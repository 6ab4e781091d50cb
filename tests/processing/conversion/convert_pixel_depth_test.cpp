#include "processing/conversion/convert_pixel_depth.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <typeinfo>

#include "tests/support/raw_formats.h"
#include "tests/support/test_images.h"

namespace {

using img::ImageFormat;
using img::PixelFormatId;
using img::processing::ConvertPixelDepth;
using korvel_test::Bytes;
using korvel_test::Failure;
using korvel_test::FailureOf;
using korvel_test::kUnwritten;
using korvel_test::TestImage;
using korvel_test::Words;
using testing::Each;
using testing::ElementsAre;

using enum PixelFormatId;

TEST(ConvertPixelDepth, TakesUnpackedFormatsAndLeavesTheFormatToTheCaller) {
  ConvertPixelDepth depth;
  const img::ImageArea area{{1, 2}, {3, 4}};
  size_t supported = 0;
  for (const PixelFormatId format : korvel_test::kPublicFormats) {
    supported += depth.IsInputFormatSupported(format);
    EXPECT_EQ(depth.GetOutputImageFormat({area, format}), (ImageFormat{area, format}));
  }
  EXPECT_EQ(supported, 27u) << "3 mono, 12 Bayer, 12 colour";
  for (const PixelFormatId format : {Mono10p, BayerRG12p, Mono10g40Qrv, RGB10p32, BGR10p32}) {
    EXPECT_FALSE(depth.IsInputFormatSupported(format));
  }
}

Words FromBytes(PixelFormatId from, PixelFormatId to, size_t width, size_t height, const Bytes& samples) {
  ConvertPixelDepth depth;
  const TestImage input(from, width, height, samples);
  const TestImage output(to, width, height);
  depth.Process(*input, *output);
  return output.ContentWords();
}

Words FromWords(PixelFormatId from, PixelFormatId to, size_t width, size_t height, const Words& samples) {
  ConvertPixelDepth depth;
  const TestImage input(from, width, height, samples);
  const TestImage output(to, width, height);
  depth.Process(*input, *output);
  return output.ContentWords();
}

Bytes ToBytes(PixelFormatId from, PixelFormatId to, size_t width, size_t height, const Words& samples) {
  ConvertPixelDepth depth;
  const TestImage input(from, width, height, samples);
  const TestImage output(to, width, height);
  depth.Process(*input, *output);
  return output.Content();
}

TEST(ConvertPixelDepth, ShiftsUpWithoutFillingTheLowBits) {
  EXPECT_THAT(FromBytes(Mono8, Mono10, 2, 2, {0, 1, 128, 255}), ElementsAre(0, 4, 512, 1020));
  EXPECT_THAT(FromBytes(Mono8, Mono12, 2, 2, {0, 1, 128, 255}), ElementsAre(0, 16, 2048, 4080));
  EXPECT_THAT(FromWords(Mono10, Mono12, 2, 2, {0, 1, 512, 1023}), ElementsAre(0, 4, 2048, 4092));
}

TEST(ConvertPixelDepth, ShiftsDownWithoutRounding) {
  EXPECT_THAT(ToBytes(Mono10, Mono8, 2, 2, {3, 4, 1022, 1023}), ElementsAre(0, 1, 255, 255));
  EXPECT_THAT(ToBytes(Mono12, Mono8, 2, 2, {15, 16, 4079, 4095}), ElementsAre(0, 1, 254, 255));
  EXPECT_THAT(FromWords(Mono12, Mono10, 2, 2, {3, 4, 4091, 4095}), ElementsAre(0, 1, 1022, 1023));
}

TEST(ConvertPixelDepth, LosesTheTwoLowBitsOnTheWayDownAndBack) {
  EXPECT_THAT(ToBytes(Mono10, Mono8, 1, 1, {1023}), ElementsAre(255));
  EXPECT_THAT(FromBytes(Mono8, Mono10, 1, 1, {255}), ElementsAre(1020));
}

TEST(ConvertPixelDepth, KeepsHighBitsAsFarAsTheStorageGoes) {
  EXPECT_THAT(FromWords(Mono10, Mono12, 1, 1, {0xC401}), ElementsAre(0x1004));
  EXPECT_THAT(FromWords(Mono12, Mono10, 1, 1, {0xC401}), ElementsAre(0x3100));
  EXPECT_THAT(ToBytes(Mono12, Mono8, 1, 1, {0xC41F}), ElementsAre(0x41));
  EXPECT_THAT(ToBytes(Mono10, Mono8, 1, 1, {0xC41F}), ElementsAre(0x07));
}

TEST(ConvertPixelDepth, ShiftsEveryChannel) {
  EXPECT_THAT(FromBytes(RGB8, RGB12, 1, 1, {1, 2, 255}), ElementsAre(16, 32, 4080));
  EXPECT_THAT(ToBytes(BGR10, BGR8, 2, 1, {4, 8, 1023, 12, 16, 20}), ElementsAre(1, 2, 255, 3, 4, 5));
  EXPECT_THAT(FromWords(RGB12, RGB10, 1, 1, {4, 8, 12}), ElementsAre(1, 2, 3));
  EXPECT_THAT(FromWords(BGR10, BGR12, 1, 1, {1, 2, 3}), ElementsAre(4, 8, 12));
  EXPECT_THAT(FromBytes(BGRa8, BGRa10, 1, 1, {1, 2, 3, 255}), ElementsAre(4, 8, 12, 1020)) << "alpha as well";
  EXPECT_THAT(ToBytes(RGBa10, RGBa8, 1, 1, {4, 8, 12, 1023}), ElementsAre(1, 2, 3, 255));
  EXPECT_THAT(FromBytes(RGBa8, RGBa12, 1, 1, {1, 2, 3, 4}), ElementsAre(16, 32, 48, 64));
  EXPECT_THAT(ToBytes(BGRa12, BGRa8, 1, 1, {16, 32, 48, 4095}), ElementsAre(1, 2, 3, 255));
  EXPECT_THAT(FromWords(RGBa12, RGBa10, 1, 1, {4, 8, 12, 4095}), ElementsAre(1, 2, 3, 1023));
  EXPECT_THAT(FromWords(BGRa10, BGRa12, 1, 1, {1, 2, 3, 4}), ElementsAre(4, 8, 12, 16));
}

TEST(ConvertPixelDepth, TreatsBayerAsOneChannel) {
  EXPECT_THAT(ToBytes(BayerRG12, BayerRG8, 2, 1, {16, 4095}), ElementsAre(1, 255));
  // A layout has no meaning of its channels, so classes may even change on the way.
  EXPECT_THAT(FromBytes(Mono8, BayerRG10, 1, 1, {2}), ElementsAre(8));
}

TEST(ConvertPixelDepth, HasOneWorkingInstanceForALayout) {
  ConvertPixelDepth depth;
  const auto module = depth.CreateImpl(Mono8, BayerRG10);
  EXPECT_TRUE(korvel_test::Works(*module));
  EXPECT_TRUE(module->IsInputFormatSupported(_RawUnpacked1Ch8));
  EXPECT_FALSE(module->IsInputFormatSupported(Mono8));
  EXPECT_EQ(module->GetOutputImageFormat({{}, Mono8}).format, _RawUnpacked1Ch10);
  const auto bayer = depth.CreateImpl(BayerRG12, BayerRG8);
  const auto mono = depth.CreateImpl(Mono12, Mono8);
  const auto& bayerInstance = *bayer;
  const auto& monoInstance = *mono;
  EXPECT_EQ(typeid(bayerInstance), typeid(monoInstance));
}

TEST(ConvertPixelDepth, HasEighteenWorkingCells) {
  ConvertPixelDepth depth;
  size_t working = 0;
  for (const PixelFormatId in : korvel_test::kRawFormats) {
    for (const PixelFormatId out : korvel_test::kRawFormats) working += korvel_test::Works(*depth.CreateImpl(in, out));
  }
  EXPECT_EQ(working, 18u);
}

TEST(ConvertPixelDepth, LeavesTheOutputOfOtherPairsAlone) {
  ConvertPixelDepth depth;
  const TestImage input(Mono8, 1, 1, Bytes{1});
  for (const PixelFormatId format : {Mono8, RGB10, BGRa8, Mono10p}) {
    const TestImage output(format, 1, 1);
    depth.Process(*input, *output);
    EXPECT_THAT(output.Content(), Each(kUnwritten));
  }
}

TEST(ConvertPixelDepth, RefusesImagesOfDifferentSizes) {
  ConvertPixelDepth depth;
  const TestImage input(BayerRG8, 3, 2);
  for (const auto& [width, height] : {std::pair<size_t, size_t>{2, 2}, {3, 1}, {6, 1}, {4, 2}, {3, 3}}) {
    const TestImage output(BayerRG10, width, height);
    const auto failure = FailureOf([&] { depth.Process(*input, *output); });
    ASSERT_TRUE(failure.has_value());
    EXPECT_EQ(failure->status, -1009);
    EXPECT_EQ(failure->module, 9003);
    EXPECT_THAT(failure->text, testing::StartsWith("Ensure failed @ virtual void img::processing::TConvertPixelDepth"));
    EXPECT_THAT(failure->text, testing::HasSubstr("_RawUnpacked1Ch8"));
    EXPECT_THAT(failure->text, testing::HasSubstr("_RawUnpacked1Ch10"));
    EXPECT_THAT(output.Content(), Each(kUnwritten));
  }
}

TEST(ConvertPixelDepth, RefusesFormatsWithoutALayout) {
  ConvertPixelDepth depth;
  EXPECT_EQ(FailureOf([&] { depth.CreateImpl(Invalid, Mono8); }), (Failure{-1009, 9000, "Unsupported formatId: 0"}));
}

TEST(ConvertPixelDepth, StaysWithinMemoryAtOddAddressesThatEndsAtAPage) {
  ConvertPixelDepth depth;
  Bytes samples = korvel_test::BytesOfWords(Words{16, 32, 48});
  samples.insert(samples.begin(), 0);
  const korvel_test::MemoryBeforeGuard in(samples);  // 7 bytes, so that the last word ends at the page
  const korvel_test::MemoryBeforeGuard out(6);
  const auto input = img::buffer::RawImageBuffer::CreateBuffer(Mono12, in.Data() + 1, {3, 1})->CreateImage();
  const auto output = img::buffer::RawImageBuffer::CreateBuffer(Mono10, out.Data(), {3, 1})->CreateImage();
  depth.Process(*input, *output);
  EXPECT_THAT(korvel_test::WordsOfBytes<uint16_t>(korvel_test::BytesOf(*output)), ElementsAre(4, 8, 12));
  const korvel_test::MemoryBeforeGuard oddOut(7);
  const auto odd = img::buffer::RawImageBuffer::CreateBuffer(Mono10, oddOut.Data(), {3, 1})->CreateImage();
  const TestImage source(Mono8, 3, 1, Bytes{1, 2, 3});
  depth.Process(*source, *odd);
  EXPECT_THAT(korvel_test::WordsOfBytes<uint16_t>(korvel_test::BytesOf(*odd)), ElementsAre(4, 8, 12));
}

}  // namespace
