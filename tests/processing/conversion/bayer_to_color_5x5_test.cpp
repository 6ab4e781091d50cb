#include "processing/conversion/bayer_to_color_5x5.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <map>
#include <utility>

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
using korvel_test::Words32;
using testing::Each;

using namespace img::processing;
using enum PixelFormatId;

using Colour = std::array<unsigned, 3>;  // red, green, blue
using Place = std::pair<size_t, size_t>;
using Picture = std::map<Place, Colour>;  // what isn't black

Bytes Demosaic(PixelFormatId from, PixelFormatId to, size_t width, size_t height, const Bytes& samples) {
  BayerToColor5x5Simple_RGB family;
  const TestImage input(from, width, height, samples);
  const TestImage output(to, width, height);
  family.Process(*input, *output);
  return output.Content();
}

// An image of 0 with single samples in it.
Bytes Lone(size_t width, size_t height, const std::map<Place, uint8_t>& samples) {
  Bytes bytes(width * height, 0);
  for (const auto& [place, sample] : samples) bytes.at(place.second * width + place.first) = sample;
  return bytes;
}

Bytes RgbOf(size_t width, size_t height, const Picture& picture) {
  Bytes bytes(width * height * 3, 0);
  for (const auto& [place, colour] : picture) {
    for (size_t i = 0; i < 3; ++i) {
      bytes.at((place.second * width + place.first) * 3 + i) = static_cast<uint8_t>(colour.at(i));
    }
  }
  return bytes;
}

TEST(DivideAndClip, TruncatesTowardZeroAndClips) {
  static_assert(DivideAndClip<4, 255>(-16) == 0);
  static_assert(DivideAndClip<4, 255>(-15) == 0);
  static_assert(DivideAndClip<4, 255>(-1) == 0);
  static_assert(DivideAndClip<4, 255>(0) == 0);
  static_assert(DivideAndClip<4, 255>(15) == 0);
  static_assert(DivideAndClip<4, 255>(16) == 1);
  static_assert(DivideAndClip<4, 255>(4095) == 255);
  static_assert(DivideAndClip<4, 255>(4096) == 255);
  static_assert(DivideAndClip<4, 255>(-1000000) == 0);
  static_assert(DivideAndClip<4, 255>(1000000) == 255);
  static_assert(DivideAndClip<3, 255>(-8) == 0);
  static_assert(DivideAndClip<3, 255>(-7) == 0);
  static_assert(DivideAndClip<3, 255>(7) == 0);
  static_assert(DivideAndClip<3, 255>(8) == 1);
  static_assert(DivideAndClip<3, 255>(2047) == 255);
  static_assert(DivideAndClip<3, 255>(2048) == 255);
  static_assert(DivideAndClip<4, 1023>(16383) == 1023);
  static_assert(DivideAndClip<4, 1023>(16384) == 1023);
  static_assert(DivideAndClip<3, 1023>(8191) == 1023);
  static_assert(DivideAndClip<3, 1023>(8192) == 1023);
  static_assert(DivideAndClip<4, 4095>(65535) == 4095);
  static_assert(DivideAndClip<4, 4095>(65536) == 4095);
  static_assert(DivideAndClip<3, 4095>(32767) == 4095);
  static_assert(DivideAndClip<3, 4095>(32768) == 4095);
}

TEST(BayerToColor5x5Simple, KeepsAFlatImage) {
  for (const PixelFormatId format : {BayerRG8, BayerGR8, BayerGB8, BayerBG8}) {
    EXPECT_THAT(Demosaic(format, RGB8, 9, 8, Bytes(72, 255)), Each(255));
    EXPECT_THAT(Demosaic(format, BGR8, 7, 7, Bytes(49, 201)), Each(201));
    EXPECT_THAT(Demosaic(format, RGB8, 7, 7, Bytes(49, 0)), Each(0));
  }
  EXPECT_THAT(korvel_test::WordsOfBytes<uint16_t>(
                  Demosaic(BayerBG12, BGRa12, 6, 5, korvel_test::BytesOfWords(Words(30, 4095)))),
              Each(4095));
}

TEST(BayerToColor5x5Simple, SpreadsALoneRedSample) {
  // Green 4 * 255 / 8 and blue 12 * 255 / 16 on the site itself; beside it red 8 * 255 / 16, diagonally 4 * 255 / 16;
  // two apart everything is below 0.
  const Picture expected = {
      {{4, 4}, {255, 127, 191}}, {{3, 4}, {127, 0, 0}}, {{5, 4}, {127, 0, 0}},
      {{4, 3}, {127, 0, 0}},     {{4, 5}, {127, 0, 0}}, {{3, 3}, {63, 0, 0}},
      {{5, 3}, {63, 0, 0}},      {{3, 5}, {63, 0, 0}},  {{5, 5}, {63, 0, 0}},
  };
  EXPECT_EQ(Demosaic(BayerRG8, RGB8, 9, 9, Lone(9, 9, {{{4, 4}, 255}})), RgbOf(9, 9, expected));
  // The same of a blue sample.
  EXPECT_EQ(Demosaic(BayerBG8, BGR8, 9, 9, Lone(9, 9, {{{4, 4}, 255}})), RgbOf(9, 9, expected));
}

TEST(BayerToColor5x5Simple, SpreadsALoneGreenSample) {
  // On a line of red: 10 * 255 / 16 for both colours that the site lacks; green 2 * 255 / 8 around; two apart on the
  // line blue 255 / 16, two apart on the column red.
  const Picture onRedLine = {
      {{5, 4}, {159, 255, 159}}, {{4, 4}, {0, 63, 0}}, {{6, 4}, {0, 63, 0}}, {{5, 3}, {0, 63, 0}}, {{5, 5}, {0, 63, 0}},
      {{3, 4}, {0, 0, 15}},      {{7, 4}, {0, 0, 15}}, {{5, 2}, {15, 0, 0}}, {{5, 6}, {15, 0, 0}},
  };
  EXPECT_EQ(Demosaic(BayerRG8, RGB8, 11, 9, Lone(11, 9, {{{5, 4}, 255}})), RgbOf(11, 9, onRedLine));
  EXPECT_EQ(Demosaic(BayerBG8, BGR8, 11, 9, Lone(11, 9, {{{5, 4}, 255}})), RgbOf(11, 9, onRedLine));
  // On a line of blue, red and blue change places.
  EXPECT_EQ(Demosaic(BayerGB8, BGR8, 11, 9, Lone(11, 9, {{{4, 4}, 255}})), RgbOf(11, 9,
                                                                                 {{{4, 4}, {159, 255, 159}},
                                                                                  {{3, 4}, {0, 63, 0}},
                                                                                  {{5, 4}, {0, 63, 0}},
                                                                                  {{4, 3}, {0, 63, 0}},
                                                                                  {{4, 5}, {0, 63, 0}},
                                                                                  {{2, 4}, {0, 0, 15}},
                                                                                  {{6, 4}, {0, 0, 15}},
                                                                                  {{4, 2}, {15, 0, 0}},
                                                                                  {{4, 6}, {15, 0, 0}}}));
}

TEST(BayerToColor5x5Simple, ClipsOvershootToTheDepthsMaximum) {
  // A red site of the maximum in a field of half of it: green (4 * 1023 + 8 * 512 - 4 * 512) / 8 = 767, blue
  // (12 * 1023 + 16 * 512 - 12 * 512) / 16 = 895; with green at the maximum too, green (4 + 8) * 1023 - 4 * 512 clips.
  Words samples(81, 512);
  samples[4 * 9 + 4] = 1023;
  const auto centre = [](const Words& words) {
    const Words output =
        korvel_test::WordsOfBytes<uint16_t>(Demosaic(BayerRG10, RGB10, 9, 9, korvel_test::BytesOfWords(words)));
    return Words(output.begin() + 3 * 40, output.begin() + 3 * 41);
  };
  EXPECT_EQ(centre(samples), (Words{1023, 767, 895}));
  for (const size_t neighbour : {31u, 49u, 39u, 41u}) samples[neighbour] = 1023;
  EXPECT_EQ(centre(samples), (Words{1023, 1023, 895}));
}

TEST(BayerToColor5x5Simple, UsesTheSmallWindowOneFromTheBorderAndCopiesTheRest) {
  // Red at (2, 2) of 7 by 7: the site itself and what lies to its right and below are inside; the others are bilinear.
  Picture expected = {{{2, 2}, {255, 127, 191}}, {{3, 2}, {127, 0, 0}}, {{2, 3}, {127, 0, 0}},
                      {{3, 3}, {63, 0, 0}},      {{1, 1}, {63, 0, 0}},  {{2, 1}, {127, 0, 0}},
                      {{3, 1}, {63, 0, 0}},      {{1, 2}, {127, 0, 0}}, {{1, 3}, {63, 0, 0}}};
  for (size_t i = 1; i < 4; ++i) {
    expected[{0, i}] = expected.at({1, i});
    expected[{i, 0}] = expected.at({i, 1});
  }
  expected[{0, 0}] = expected.at({1, 1});
  EXPECT_EQ(Demosaic(BayerRG8, RGB8, 7, 7, Lone(7, 7, {{{2, 2}, 255}})), RgbOf(7, 7, expected));
}

TEST(BayerToColor5x5Simple, KnowsTheRingOfOddAndEvenSizes) {
  // A red sample one from the right and bottom border, where no pixel is inside: bilinear around, copied outward.
  // 6 by 6, BayerBG: red at (5, 5), (3, 3), ...; the ring is column 4 and line 4.
  EXPECT_EQ(Demosaic(BayerBG8, RGB8, 6, 6, Lone(6, 6, {{{5, 5}, 200}})),
            RgbOf(6, 6, {{{4, 4}, {50, 0, 0}}, {{5, 4}, {50, 0, 0}}, {{4, 5}, {50, 0, 0}}, {{5, 5}, {50, 0, 0}}}));
  // 7 by 7, BayerBG: red at (5, 5), on the ring itself. (3, 5), (5, 3) and the like are two apart, and inside is only
  // (4, 4), with diagonal weight 4 / 16.
  EXPECT_EQ(Demosaic(BayerBG8, RGB8, 7, 7, Lone(7, 7, {{{5, 5}, 200}})), RgbOf(7, 7,
                                                                               {{{4, 4}, {50, 0, 0}},
                                                                                {{5, 4}, {100, 0, 0}},
                                                                                {{6, 4}, {100, 0, 0}},
                                                                                {{4, 5}, {100, 0, 0}},
                                                                                {{4, 6}, {100, 0, 0}},
                                                                                {{5, 5}, {200, 0, 0}},
                                                                                {{6, 5}, {200, 0, 0}},
                                                                                {{5, 6}, {200, 0, 0}},
                                                                                {{6, 6}, {200, 0, 0}}}));
}

// A bilinear picture of red at (2, 2), with the border copied.
Picture Bilinear(size_t width, size_t height) {
  const Colour side{127, 0, 0};
  const Colour corner{63, 0, 0};
  Picture picture;
  for (size_t y = 0; y < height; ++y) {
    for (size_t x = 0; x < width; ++x) {
      const size_t dx = std::clamp<size_t>(x, 1, width - 2) - 1;
      const size_t dy = std::clamp<size_t>(y, 1, height - 2) - 1;
      if (dx > 2 || dy > 2) continue;
      picture[{x, y}] = dx == 1 && dy == 1 ? Colour{255, 0, 0} : dx == 1 || dy == 1 ? side : corner;
    }
  }
  return picture;
}

TEST(BayerToColor5x5Simple, IsBilinearThroughoutBelowFiveLinesOrColumns) {
  EXPECT_EQ(Demosaic(BayerRG8, RGB8, 100, 4, Lone(100, 4, {{{2, 2}, 255}})), RgbOf(100, 4, Bilinear(100, 4)));
  EXPECT_EQ(Demosaic(BayerRG8, RGB8, 4, 100, Lone(4, 100, {{{2, 2}, 255}})), RgbOf(4, 100, Bilinear(4, 100)));
  EXPECT_EQ(Demosaic(BayerRG8, RGB8, 4, 4, Lone(4, 4, {{{2, 2}, 255}})), RgbOf(4, 4, Bilinear(4, 4)));
  // Three columns: one of them is computed, the others are its copies. Red (2, 2) is then on the border.
  const Bytes narrow = Demosaic(BayerRG8, RGB8, 3, 6, Lone(3, 6, {{{2, 2}, 255}}));
  Picture expected;
  for (size_t x = 0; x < 3; ++x) {
    for (const size_t y : {0u, 1u, 3u}) expected[{x, y}] = {63, 0, 0};
    expected[{x, 2}] = {127, 0, 0};
  }
  EXPECT_EQ(narrow, RgbOf(3, 6, expected));
  // Height 2 has its own rule.
  EXPECT_EQ(Demosaic(BayerRG8, RGB8, 3, 2, {10, 20, 31, 45, 50, 61}),
            (Bytes{10, 32, 50, 10, 32, 50, 10, 32, 50, 10, 32, 50, 10, 32, 50, 10, 32, 50}));
}

TEST(BayerToColor5x5Simple, FiltersTheOnePixelInsideFiveByFive) {
  Picture expected = Bilinear(5, 5);
  expected[{2, 2}] = {255, 127, 191};
  EXPECT_EQ(Demosaic(BayerRG8, RGB8, 5, 5, Lone(5, 5, {{{2, 2}, 255}})), RgbOf(5, 5, expected));
}

TEST(BayerToColor5x5Simple, LeavesImagesWithoutAnInsideUnwritten) {
  for (const auto& [width, height] : {Place{1, 1}, {1, 9}, {9, 1}, {2, 2}, {2, 9}, {1, 5}, {2, 5}}) {
    SCOPED_TRACE(testing::Message() << width << " x " << height);
    EXPECT_THAT(Demosaic(BayerRG8, RGB8, width, height, Bytes(width * height, 9)), Each(kUnwritten));
  }
}

TEST(BayerToColor5x5Simple, KeepsTheTopBitsOfWords) {
  BayerToColor5x5Simple_RGB10p30 family;
  const TestImage input(BayerRG10, 7, 7, Words(49, 1000));
  Words32 before(49, 0xC0000000);
  before[3 * 7 + 3] = 0x40000000;
  const TestImage output(RGB10p32, 7, 7, before);
  family.Process(*input, *output);
  constexpr uint32_t kGrey = 1000u << 20 | 1000u << 10 | 1000u;
  Words32 expected(49, 0xC0000000 | kGrey);
  expected[3 * 7 + 3] = 0x40000000 | kGrey;
  EXPECT_EQ(output.ContentWords32(), expected);
}

TEST(BayerToColor5x5Simple, StaysWithinMemoryThatEndsAtAPage) {
  BayerToColor5x5Simple_RGB family;
  for (const auto& [width, height] : {Place{5, 5}, {3, 9}, {9, 3}, {4, 5}, {5, 4}, {1, 9}, {9, 1}, {33, 6}}) {
    const korvel_test::MemoryBeforeGuard in(Bytes(width * height, 17));
    const korvel_test::MemoryBeforeGuard out(width * height * 3);
    const auto input = img::buffer::RawImageBuffer::CreateBuffer(BayerGB8, in.Data(), {width, height})->CreateImage();
    const auto output = img::buffer::RawImageBuffer::CreateBuffer(RGB8, out.Data(), {width, height})->CreateImage();
    family.Process(*input, *output);
    if (width > 2 && height > 2) {
      EXPECT_THAT(korvel_test::BytesOf(*output), Each(17));
    }
  }
}

TEST(BayerToColor5x5Simple, GivesItsClassAtTheInputsDepth) {
  const img::ImageArea area{{1, 2}, {3, 4}};
  BayerToColor5x5Simple_BGR bgr;
  BayerToColor5x5Simple_RGBa rgba;
  BayerToColor5x5Simple_BGRa bgra;
  BayerToColor5x5Simple_RGB10p30 words;
  EXPECT_EQ(bgr.GetOutputImageFormat({area, BayerGB12}), (ImageFormat{area, BGR12}));
  EXPECT_EQ(rgba.GetOutputImageFormat({area, BayerBG8}), (ImageFormat{area, RGBa8}));
  EXPECT_EQ(bgra.GetOutputImageFormat({area, BayerGR10}), (ImageFormat{area, BGRa10}));
  EXPECT_EQ(words.GetOutputImageFormat({area, BayerGR10}), (ImageFormat{area, RGB10p32}));
  EXPECT_EQ(words.GetOutputImageFormat({area, BayerGR10p}), (ImageFormat{area, Invalid}));
  EXPECT_EQ(bgr.GetOutputImageFormat({area, Mono8}), (ImageFormat{area, Invalid}));
  EXPECT_TRUE(bgr.IsInputFormatSupported(BayerBG12));
  EXPECT_FALSE(bgr.IsInputFormatSupported(BayerBG12p));
}

TEST(BayerToColor5x5Simple, HasFiftyTwoWorkingCellsAndFourOthers) {
  BayerToColor5x5Simple_RGB family;
  size_t working = 0;
  size_t others = 0;
  for (const PixelFormatId in : korvel_test::kPublicFormats) {
    for (const PixelFormatId out : korvel_test::kPublicFormats) {
      std::unique_ptr<IfcConversionProcessingModule> module;
      if (FailureOf([&] { module = family.CreateImpl(in, out); })) continue;
      (korvel_test::Works(*module) ? working : others) += 1;
    }
  }
  EXPECT_EQ(working, 52u);
  EXPECT_EQ(others, 4u);
}

}  // namespace
