#include "processing/conversion/channel_flipper.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/raw_formats.h"
#include "tests/support/test_images.h"

namespace {

using img::ImageFormat;
using img::PixelFormatId;
using img::processing::ChannelFlipper;
using korvel_test::Bytes;
using korvel_test::Failure;
using korvel_test::FailureOf;
using korvel_test::TestImage;
using korvel_test::Words;
using korvel_test::Words32;
using testing::ElementsAre;

using enum PixelFormatId;

const img::ImageArea kArea{{1, 2}, {3, 4}};

TEST(ChannelFlipper, TakesUnpackedColour) {
  ChannelFlipper flipper;
  size_t supported = 0;
  for (const PixelFormatId format : korvel_test::kPublicFormats) supported += flipper.IsInputFormatSupported(format);
  EXPECT_EQ(supported, 12u);
  for (const PixelFormatId format : {RGB8, BGR10, RGBa12, BGRa8}) EXPECT_TRUE(flipper.IsInputFormatSupported(format));
  for (const PixelFormatId format : {RGB10p32, BGR10p32, Mono8, BayerRG8, Invalid}) {
    EXPECT_FALSE(flipper.IsInputFormatSupported(format));
  }
}

TEST(ChannelFlipper, NamesTheOtherOrder) {
  ChannelFlipper flipper;
  const std::pair<PixelFormatId, PixelFormatId> expected[] = {
      {RGB8, BGR8},        {RGB10, BGR10},     {RGB12, BGR12},     {BGR8, RGB8},        {BGR10, RGB10},
      {BGR12, RGB12},      {BGRa8, RGBa8},     {BGRa10, RGBa10},   {BGRa12, RGBa12},    {RGBa8, BGR8},
      {RGBa10, BGR10},     {RGBa12, BGR12},    {Mono8, Invalid},   {BayerRG8, Invalid}, {RGB10p32, Invalid},
      {BGR10p32, Invalid}, {Mono10p, Invalid}, {Invalid, Invalid},
  };
  for (const auto& [in, out] : expected) {
    EXPECT_EQ(flipper.GetOutputImageFormat({kArea, in}), (ImageFormat{kArea, out})) << img::PixelFormatInfo_Name(in);
  }
}

// Flips a pixel and a second one after it, and returns the output. The input has changed likewise.
template <class Words>
Words Flip(PixelFormatId from, PixelFormatId to, const Words& pixels, size_t width, size_t height) {
  ChannelFlipper flipper;
  const TestImage input(from, width, height, pixels);
  const TestImage output(to, width, height);
  flipper.Process(*input, *output);
  EXPECT_EQ(input.Content(), output.Content());
  if constexpr (sizeof(typename Words::value_type) == 1) {
    return output.Content();
  } else {
    return korvel_test::WordsOfBytes<typename Words::value_type>(output.Content());
  }
}

TEST(ChannelFlipper, SwapsTheOuterOfThreeChannels) {
  EXPECT_THAT(Flip(RGB8, BGR8, Bytes{1, 2, 3, 4, 5, 6, 7, 8, 9}, 3, 1), ElementsAre(3, 2, 1, 6, 5, 4, 9, 8, 7));
  EXPECT_THAT(Flip(BGR8, RGB8, Bytes{1, 2, 3, 4, 5, 6}, 1, 2), ElementsAre(3, 2, 1, 6, 5, 4));
  EXPECT_THAT(Flip(RGB10, BGR10, Words{1, 2, 1023, 0x8001, 0, 7}, 2, 1), ElementsAre(1023, 2, 1, 7, 0, 0x8001));
  EXPECT_THAT(Flip(BGR10, RGB10, Words{1, 2, 3}, 1, 1), ElementsAre(3, 2, 1));
  EXPECT_THAT(Flip(RGB12, BGR12, Words{4095, 2, 3}, 1, 1), ElementsAre(3, 2, 4095));
  EXPECT_THAT(Flip(BGR12, RGB12, Words{1, 2, 3}, 1, 1), ElementsAre(3, 2, 1));
}

TEST(ChannelFlipper, RotatesTheFirstThreeOfFourChannels) {
  EXPECT_THAT(Flip(RGBa8, BGRa8, Bytes{1, 2, 3, 4}, 1, 1), ElementsAre(3, 1, 2, 4));
  EXPECT_THAT(Flip(BGRa8, RGBa8, Bytes{1, 2, 3, 4, 5, 6, 7, 8}, 2, 1), ElementsAre(3, 1, 2, 4, 7, 5, 6, 8));
  EXPECT_THAT(Flip(RGBa10, BGRa10, Words{1, 2, 3, 4}, 1, 1), ElementsAre(3, 1, 2, 4));
  EXPECT_THAT(Flip(BGRa10, RGBa10, Words{1, 2, 3, 4}, 1, 1), ElementsAre(3, 1, 2, 4));
  EXPECT_THAT(Flip(RGBa12, RGBa12, Words{1, 2, 3, 4}, 1, 1), ElementsAre(3, 1, 2, 4));
  EXPECT_THAT(Flip(BGRa12, RGBa12, Words{1, 2, 3, 4}, 1, 1), ElementsAre(3, 1, 2, 4));
}

TEST(ChannelFlipper, SwapsTheOuterTenBitsOfWords) {
  // 0x3FF00000 and 0x000003FF change places, 0xC00FFC00 stay.
  EXPECT_THAT(Flip(RGB10p32, BGR10p32, Words32{0x00000001, 0x3FF00000, 0xC00FFC00, 0xFFFFFFFF, 0x92345678}, 5, 1),
              ElementsAre(0x00100000, 0x000003FF, 0xC00FFC00, 0xFFFFFFFF, 0xA7845523));
  // More than a vector's worth of words, and a rest.
  Words32 words;
  Words32 swapped;
  for (uint32_t i = 0; i < 19; ++i) {
    words.push_back(i | (100 + i) << 10 | (1000 - i) << 20 | (i & 3) << 30);
    swapped.push_back((1000 - i) | (100 + i) << 10 | i << 20 | (i & 3) << 30);
  }
  EXPECT_EQ(Flip(BGR10p32, RGB10p32, words, 19, 1), swapped);
}

TEST(ChannelFlipper, CopiesFormatsThatItDoesNotFlip) {
  EXPECT_THAT(Flip(Mono8, Mono8, Bytes{1, 2, 3, 4}, 2, 2), ElementsAre(1, 2, 3, 4));

  EXPECT_THAT(Flip(Mono10p, BayerRG10p, Bytes{1, 2, 3, 4, 5}, 4, 1), ElementsAre(1, 2, 3, 4, 5));
}

TEST(ChannelFlipper, GoesByTheInputFormatAlone) {
  EXPECT_THAT(Flip(RGB8, RGB8, Bytes{1, 2, 3}, 1, 1), ElementsAre(3, 2, 1));
}

TEST(ChannelFlipper, ChangesTheImagesOwnRegionOnly) {
  // The middle column of three.
  const TestImage whole(RGB8, 3, 1, Bytes{1, 2, 3, 4, 5, 6, 7, 8, 9});
  const auto middle = (*whole).Region({1, 0}, {1, 1});
  const TestImage output(BGR8, 1, 1);
  ChannelFlipper flipper;
  flipper.Process(*middle, *output);
  EXPECT_THAT(output.Content(), ElementsAre(6, 5, 4));
  EXPECT_THAT(whole.Content(), ElementsAre(1, 2, 3, 6, 5, 4, 7, 8, 9));
}

TEST(ChannelFlipper, HasACellForEveryPairOfPublicFormats) {
  ChannelFlipper flipper;
  for (const PixelFormatId in : korvel_test::kPublicFormats) {
    for (const PixelFormatId out : korvel_test::kPublicFormats) {
      const auto module = flipper.CreateImpl(in, out);
      ASSERT_TRUE(korvel_test::Works(*module));
      ASSERT_TRUE(module->IsInputFormatSupported(in));
    }
  }
  EXPECT_EQ(FailureOf([&] { flipper.CreateImpl(Invalid, RGB8); }), (Failure{-1009, 9000, "Unsupported formatId: 0"}));
  EXPECT_EQ(FailureOf([&] { flipper.CreateImpl(RGB8, Invalid); }), (Failure{-1009, 9000, "Unsupported formatId: 0"}));
}

}  // namespace
