#include "processing/conversion/bayer_to_mono_2x2.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/raw_formats.h"
#include "tests/support/test_images.h"

namespace {

using img::ImageFormat;
using img::PixelFormatId;
using korvel_test::Bytes;
using korvel_test::FailureOf;
using korvel_test::kUnwritten;
using korvel_test::TestImage;
using korvel_test::Words;
using testing::Each;
using testing::ElementsAre;

using namespace img::processing;
using enum PixelFormatId;

Bytes ToMono8(PixelFormatId from, size_t width, size_t height, const Bytes& samples) {
  BayerToMono2x2Simple family;
  const TestImage input(from, width, height, samples);
  const TestImage output(Mono8, width, height);
  family.Process(*input, *output);
  return output.Content();
}

Words ToMonoWords(PixelFormatId from, PixelFormatId to, size_t width, size_t height, const Words& samples) {
  BayerToMono2x2Simple family;
  const TestImage input(from, width, height, samples);
  const TestImage output(to, width, height);
  family.Process(*input, *output);
  return output.ContentWords();
}

TEST(BayerToMono2x2Simple, WeighsABlockByTheParityOfItsSamples) {
  const Bytes block = {10, 20, 30, 40};
  EXPECT_THAT(ToMono8(BayerGR8, 2, 2, block), Each(22));  // 10 * 299 + 40 * 114 + 50 * 293 = 22200
  EXPECT_THAT(ToMono8(BayerRG8, 2, 2, block), Each(24));  // 20 * 299 + 30 * 114 + 50 * 293 = 24050
  EXPECT_THAT(ToMono8(BayerGB8, 2, 2, block), Each(27));  // 40 * 299 + 10 * 114 + 50 * 293 = 27750
  EXPECT_THAT(ToMono8(BayerBG8, 2, 2, block), Each(25));  // 30 * 299 + 20 * 114 + 50 * 293 = 25900
}

TEST(BayerToMono2x2Simple, CoversOddSizesAndCopiesTheLastLineAndColumn) {
  EXPECT_THAT(ToMono8(BayerGR8, 3, 3, {10, 20, 30, 40, 50, 60, 70, 80, 90}),
              ElementsAre(26, 38, 38, 61, 73, 73, 61, 73, 73));
  // The third block: 30 * 299 + 65 * 114 + 95 * 293 = 44215.
  EXPECT_THAT(ToMono8(BayerGR8, 4, 2, {10, 20, 30, 35, 40, 50, 60, 65}), ElementsAre(26, 38, 44, 44, 26, 38, 44, 44));
}

TEST(BayerToMono2x2Simple, KeepsAFlatImageAtEveryDepth) {
  for (const PixelFormatId format : {BayerGR8, BayerRG8, BayerGB8, BayerBG8}) {
    for (const uint8_t value : Bytes{0, 1, 128, 255}) EXPECT_THAT(ToMono8(format, 5, 3, Bytes(15, value)), Each(value));
  }
  for (const PixelFormatId format : {BayerGR10, BayerRG10, BayerGB10, BayerBG10}) {
    EXPECT_THAT(ToMonoWords(format, Mono10, 4, 3, Words(12, 1023)), Each(1023));
  }
  for (const PixelFormatId format : {BayerGR12, BayerRG12, BayerGB12, BayerBG12}) {
    EXPECT_THAT(ToMonoWords(format, Mono12, 3, 4, Words(12, 4095)), Each(4095));
  }
}

TEST(BayerToMono2x2Simple, LimitsSamplesAboveTheirDepth) {
  EXPECT_THAT(ToMonoWords(BayerRG10, Mono10, 2, 2, Words(4, 0xFFFF)), Each(1023));
  EXPECT_THAT(ToMonoWords(BayerRG10, Mono10, 2, 2, Words(4, 1024)), Each(1023));  // 1022976
  EXPECT_THAT(ToMonoWords(BayerRG12, Mono12, 2, 2, Words(4, 4096)), Each(4095));
}

TEST(BayerToMono2x2Simple, LeavesImagesOfOneLineOrColumnUnwritten) {
  for (const auto& [width, height] : {std::pair<size_t, size_t>{1, 1}, {3, 1}, {8, 1}, {1, 2}, {1, 5}}) {
    EXPECT_THAT(ToMono8(BayerRG8, width, height, Bytes(width * height, 9)), Each(kUnwritten));
  }
}

TEST(BayerToMono2x2Simple, StaysWithinMemoryThatEndsAtAPage) {
  BayerToMono2x2Simple family;
  for (const auto& [width, height] : {std::pair<size_t, size_t>{2, 2}, {3, 3}, {33, 2}, {1, 4}, {4, 1}}) {
    const korvel_test::MemoryBeforeGuard in(Bytes(width * height, 17));
    const korvel_test::MemoryBeforeGuard out(width * height);
    const auto input = img::buffer::RawImageBuffer::CreateBuffer(BayerGB8, in.Data(), {width, height})->CreateImage();
    const auto output = img::buffer::RawImageBuffer::CreateBuffer(Mono8, out.Data(), {width, height})->CreateImage();
    family.Process(*input, *output);
    if (width > 1 && height > 1) {
      EXPECT_THAT(korvel_test::BytesOf(*output), Each(17));
    }
  }
}

TEST(BayerToMono2x2Simple, TakesUnpackedBayerAndGivesMonoOfItsDepth) {
  BayerToMono2x2Simple family;
  const img::ImageArea area{{1, 2}, {3, 4}};
  size_t supported = 0;
  for (const PixelFormatId format : korvel_test::kPublicFormats) supported += family.IsInputFormatSupported(format);
  EXPECT_EQ(supported, 12u);
  EXPECT_EQ(family.GetOutputImageFormat({area, BayerGB8}), (ImageFormat{area, Mono8}));
  EXPECT_EQ(family.GetOutputImageFormat({area, BayerBG10}), (ImageFormat{area, Mono10}));
  EXPECT_EQ(family.GetOutputImageFormat({area, BayerGR12}), (ImageFormat{area, Mono12}));
  for (const PixelFormatId other : {BayerRG10p, BayerRG12g24Qrv, Mono12, RGB12, Invalid}) {
    EXPECT_EQ(family.GetOutputImageFormat({area, other}), (ImageFormat{area, Mono8}));
    EXPECT_FALSE(family.IsInputFormatSupported(other));
  }
}

TEST(BayerToMono2x2Simple, HasTwelveWorkingCellsAndSixteenOthers) {
  BayerToMono2x2Simple family;
  size_t working = 0;
  size_t others = 0;
  for (const PixelFormatId in : korvel_test::kPublicFormats) {
    for (const PixelFormatId out : korvel_test::kPublicFormats) {
      std::unique_ptr<IfcConversionProcessingModule> module;
      if (FailureOf([&] { module = family.CreateImpl(in, out); })) continue;
      (korvel_test::Works(*module) ? working : others) += 1;
    }
  }
  EXPECT_EQ(working, 12u);
  EXPECT_EQ(others, 16u);
}

}  // namespace
