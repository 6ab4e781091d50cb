#include "processing/conversion/channel_extender.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/raw_formats.h"
#include "tests/support/test_images.h"

namespace {

using img::ImageFormat;
using img::PixelFormatId;
using korvel_test::Bytes;
using korvel_test::Failure;
using korvel_test::FailureOf;
using korvel_test::kUnwritten;
using korvel_test::TestImage;
using korvel_test::Words;
using testing::Each;
using testing::ElementsAre;

using namespace img::processing;
using enum PixelFormatId;

const img::ImageArea kArea{{1, 2}, {3, 4}};

TEST(ChannelExtender, TakesUnpackedMonoOnly) {
  ChannelExtender_BGR extender;
#define KORVEL_EXPECT(name) \
  EXPECT_EQ(extender.IsInputFormatSupported(name), name == Mono8 || name == Mono10 || name == Mono12) << #name;
  KORVEL_FOR_EACH_PUBLIC_FORMAT_AND_INVALID(KORVEL_EXPECT)
#undef KORVEL_EXPECT
}

template <class Extender>
void ExpectOutputs(PixelFormatId at8, PixelFormatId at10, PixelFormatId at12) {
  Extender extender;
  EXPECT_EQ(extender.GetOutputImageFormat({kArea, Mono8}), (ImageFormat{kArea, at8}));
  EXPECT_EQ(extender.GetOutputImageFormat({kArea, Mono10}), (ImageFormat{kArea, at10}));
  EXPECT_EQ(extender.GetOutputImageFormat({kArea, Mono12}), (ImageFormat{kArea, at12}));
  for (const PixelFormatId other : {BayerRG8, Mono10p, Mono12g24Qrv, RGB8, RGBa12, RGB10p32, Invalid}) {
    EXPECT_EQ(extender.GetOutputImageFormat({kArea, other}), (ImageFormat{kArea, Invalid}));
  }
}

TEST(ChannelExtender, GivesItsClassAtTheInputsDepth) {
  ExpectOutputs<ChannelExtender_BGR>(BGR8, BGR10, BGR12);
  ExpectOutputs<ChannelExtender_RGB>(RGB8, RGB10, RGB12);
  ExpectOutputs<ChannelExtender_BGRa>(BGRa8, BGRa10, BGRa12);
  ExpectOutputs<ChannelExtender_RGBa>(RGBa8, RGBa10, RGBa12);
}

TEST(ChannelExtender, RepeatsTheGreyValue) {
  const TestImage input(Mono8, 2, 2, Bytes{0, 1, 128, 255});
  ChannelExtender_RGB extender;
  const TestImage rgb(RGB8, 2, 2);
  extender.Process(*input, *rgb);
  EXPECT_THAT(rgb.Content(), ElementsAre(0, 0, 0, 1, 1, 1, 128, 128, 128, 255, 255, 255));
  const TestImage bgra(BGRa8, 2, 2);
  extender.Process(*input, *bgra);
  EXPECT_THAT(bgra.Content(), ElementsAre(0, 0, 0, 255, 1, 1, 1, 255, 128, 128, 128, 255, 255, 255, 255, 255));
}

TEST(ChannelExtender, GivesAnAlphaOf255AtEveryDepth) {
  ChannelExtender_RGBa extender;
  const TestImage mono10(Mono10, 2, 1, Words{5, 1023});
  const TestImage rgba10(RGBa10, 2, 1);
  extender.Process(*mono10, *rgba10);
  EXPECT_THAT(rgba10.ContentWords(), ElementsAre(5, 5, 5, 255, 1023, 1023, 1023, 255));
  const TestImage mono12(Mono12, 1, 2, Words{0, 4095});
  const TestImage bgra12(BGRa12, 1, 2);
  extender.Process(*mono12, *bgra12);
  EXPECT_THAT(bgra12.ContentWords(), ElementsAre(0, 0, 0, 255, 4095, 4095, 4095, 255));
  const TestImage bgr12(BGR12, 1, 2);
  extender.Process(*mono12, *bgr12);
  EXPECT_THAT(bgr12.ContentWords(), ElementsAre(0, 0, 0, 4095, 4095, 4095));
}

TEST(ChannelExtender, KeepsBitsAboveTheDepth) {
  ChannelExtender_BGR extender;
  const TestImage mono10(Mono10, 1, 1, Words{0xFFFE});
  const TestImage bgr10(BGR10, 1, 1);
  extender.Process(*mono10, *bgr10);
  EXPECT_THAT(bgr10.ContentWords(), ElementsAre(0xFFFE, 0xFFFE, 0xFFFE));
}

TEST(ChannelExtender, StaysWithinMemoryThatEndsAtAPage) {
  ChannelExtender_RGB extender;
  const korvel_test::MemoryBeforeGuard in(Bytes{7, 8, 9});
  const korvel_test::MemoryBeforeGuard out(9);
  const auto input = img::buffer::RawImageBuffer::CreateBuffer(Mono8, in.Data(), {3, 1})->CreateImage();
  const auto output = img::buffer::RawImageBuffer::CreateBuffer(RGB8, out.Data(), {3, 1})->CreateImage();
  extender.Process(*input, *output);
  EXPECT_THAT(korvel_test::BytesOf(*output), ElementsAre(7, 7, 7, 8, 8, 8, 9, 9, 9));
}

TEST(ChannelExtender, HasSixWorkingCells) {
  ChannelExtender_RGB extender;
  size_t working = 0;
  for (const PixelFormatId in : korvel_test::kRawFormats) {
    for (const PixelFormatId out : korvel_test::kRawFormats)
      working += korvel_test::Works(*extender.CreateImpl(in, out));
  }
  EXPECT_EQ(working, 6u);
  for (const auto& [in, out] : {std::pair{Mono8, RGB8},
                                {Mono8, BGRa8},
                                {Mono10, BGR10},
                                {Mono10, RGBa10},
                                {Mono12, RGB12},
                                {Mono12, BGRa12},
                                {BayerRG8, BGR8}}) {
    EXPECT_TRUE(korvel_test::Works(*extender.CreateImpl(in, out)));
  }
}

TEST(ChannelExtender, LeavesTheOutputOfOtherPairsAlone) {
  ChannelExtender_RGB extender;
  const TestImage mono8(Mono8, 1, 1, Bytes{1});
  for (const PixelFormatId format : {Mono8, RGB10, RGBa12, RGB10p32}) {
    const TestImage output(format, 1, 1);
    extender.Process(*mono8, *output);
    EXPECT_THAT(output.Content(), Each(kUnwritten));
  }
}

TEST(ChannelExtender, RefusesFormatsWithoutALayout) {
  ChannelExtender_RGB extender;
  EXPECT_EQ(FailureOf([&] { extender.CreateImpl(Invalid, RGB8); }), (Failure{-1009, 9000, "Unsupported formatId: 0"}));
  EXPECT_EQ(FailureOf([&] { extender.CreateImpl(PixelFormatId{77}, RGB8); }),
            (Failure{-1009, 9000, "Unknown formatId: 77"}));
}

}  // namespace
