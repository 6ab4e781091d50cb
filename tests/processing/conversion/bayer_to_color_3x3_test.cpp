#include "processing/conversion/bayer_to_color_3x3.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <numeric>

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

const img::ImageArea kArea{{1, 2}, {3, 4}};

using Colour = std::array<unsigned, 3>;  // red, green, blue

// Four lines of four pixels, whose outer ring is a copy of the four colours inside.
std::vector<Colour> WithCopiedBorder(const Colour& a, const Colour& b, const Colour& c, const Colour& d) {
  return {a, a, b, b, a, a, b, b, c, c, d, d, c, c, d, d};
}

template <class Word>
std::vector<Word> Pixels(const std::vector<Colour>& colours, bool blueFirst, int alpha) {
  std::vector<Word> words;
  for (const Colour& colour : colours) {
    words.push_back(static_cast<Word>(colour[blueFirst ? 2 : 0]));
    words.push_back(static_cast<Word>(colour[1]));
    words.push_back(static_cast<Word>(colour[blueFirst ? 0 : 2]));
    if (alpha >= 0) words.push_back(static_cast<Word>(alpha));
  }
  return words;
}

//   1   2   4   8
//  16  32  64 128
//   3   9  27  81
//   5  25 125 250
const Words kSamples = {1, 2, 4, 8, 16, 32, 64, 128, 3, 9, 27, 81, 5, 25, 125, 250};

struct Phase {
  PixelFormatId at8;
  PixelFormatId at10;
  PixelFormatId at12;
  std::vector<Colour> colours;    // of kSamples
  std::vector<Colour> colours4;   // of four times these, at 10 bits
  std::vector<Colour> colours16;  // of sixteen times these, at 12 bits
};

std::vector<Colour> SwapRedAndBlue(std::vector<Colour> colours) {
  for (Colour& colour : colours) std::swap(colour[0], colour[2]);
  return colours;
}

const std::vector<Phase>& Phases() {
  static const auto rg = WithCopiedBorder({8, 22, 32}, {15, 64, 80}, {15, 9, 28}, {27, 69, 108});
  static const auto rg4 = WithCopiedBorder({35, 91, 128}, {62, 256, 320}, {60, 36, 114}, {108, 279, 435});
  static const auto rg16 = WithCopiedBorder({140, 364, 512}, {248, 1024, 1280}, {240, 144, 456}, {432, 1116, 1740});
  static const auto gr = WithCopiedBorder({5, 32, 40}, {25, 47, 64}, {9, 21, 52}, {45, 27, 94});
  static const auto gr4 = WithCopiedBorder({22, 128, 160}, {100, 191, 256}, {36, 87, 210}, {180, 108, 378});
  static const auto gr16 = WithCopiedBorder({88, 512, 640}, {400, 764, 1024}, {144, 348, 840}, {720, 432, 1512});
  static const std::vector<Phase> phases = {
      {BayerRG8, BayerRG10, BayerRG12, rg, rg4, rg16},
      {BayerGR8, BayerGR10, BayerGR12, gr, gr4, gr16},
      {BayerBG8, BayerBG10, BayerBG12, SwapRedAndBlue(rg), SwapRedAndBlue(rg4), SwapRedAndBlue(rg16)},
      {BayerGB8, BayerGB10, BayerGB12, SwapRedAndBlue(gr), SwapRedAndBlue(gr4), SwapRedAndBlue(gr16)},
  };
  return phases;
}

Words Times(const Words& samples, unsigned factor) {
  Words scaled;
  for (const unsigned sample : samples) scaled.push_back(static_cast<uint16_t>(sample * factor));
  return scaled;
}

Bytes Demosaic(PixelFormatId from, PixelFormatId to, size_t width, size_t height, const Bytes& samples) {
  BayerToColor3x3Simple_RGB family;
  const TestImage input(from, width, height, samples);
  const TestImage output(to, width, height);
  family.Process(*input, *output);
  return output.Content();
}

TEST(BayerToColor3x3Simple, InterpolatesEachPhaseAt8Bits) {
  for (const Phase& phase : Phases()) {
    SCOPED_TRACE(img::PixelFormatInfo_Name(phase.at8));
    const Bytes samples(kSamples.begin(), kSamples.end());
    EXPECT_EQ(Demosaic(phase.at8, RGB8, 4, 4, samples), Pixels<uint8_t>(phase.colours, false, -1));
    EXPECT_EQ(Demosaic(phase.at8, BGR8, 4, 4, samples), Pixels<uint8_t>(phase.colours, true, -1));
    EXPECT_EQ(Demosaic(phase.at8, RGBa8, 4, 4, samples), Pixels<uint8_t>(phase.colours, false, 255));
    EXPECT_EQ(Demosaic(phase.at8, BGRa8, 4, 4, samples), Pixels<uint8_t>(phase.colours, true, 255));
  }
}

TEST(BayerToColor3x3Simple, InterpolatesEachPhaseAt10And12Bits) {
  const auto demosaic = [](PixelFormatId from, PixelFormatId to, const Words& samples) {
    return korvel_test::WordsOfBytes<uint16_t>(Demosaic(from, to, 4, 4, korvel_test::BytesOfWords(samples)));
  };
  for (const Phase& phase : Phases()) {
    SCOPED_TRACE(img::PixelFormatInfo_Name(phase.at8));
    const Words samples4 = Times(kSamples, 4);
    EXPECT_EQ(demosaic(phase.at10, RGB10, samples4), Pixels<uint16_t>(phase.colours4, false, -1));
    EXPECT_EQ(demosaic(phase.at10, BGR10, samples4), Pixels<uint16_t>(phase.colours4, true, -1));
    EXPECT_EQ(demosaic(phase.at10, RGBa10, samples4), Pixels<uint16_t>(phase.colours4, false, 1023));
    EXPECT_EQ(demosaic(phase.at10, BGRa10, samples4), Pixels<uint16_t>(phase.colours4, true, 1023));
    const Words samples16 = Times(kSamples, 16);
    EXPECT_EQ(demosaic(phase.at12, RGB12, samples16), Pixels<uint16_t>(phase.colours16, false, -1));
    EXPECT_EQ(demosaic(phase.at12, BGR12, samples16), Pixels<uint16_t>(phase.colours16, true, -1));
    EXPECT_EQ(demosaic(phase.at12, RGBa12, samples16), Pixels<uint16_t>(phase.colours16, false, 4095));
    EXPECT_EQ(demosaic(phase.at12, BGRa12, samples16), Pixels<uint16_t>(phase.colours16, true, 4095));
  }
}

TEST(BayerToColor3x3Simple, KeepsTheTopBitsOfWordsAndCopiesThemToTheBorder) {
  BayerToColor3x3Simple_RGB10p30 family;
  for (const Phase& phase : Phases()) {
    const TestImage input(phase.at10, 4, 4, Times(kSamples, 4));
    Words32 before(16, 0xFFFFFFFF);
    before[5] = 0x7FFFFFFF;
    before[6] = 0x3FFFFFFF;
    before[9] = 0xBFFFFFFF;
    const TestImage output(RGB10p32, 4, 4, before);
    family.Process(*input, *output);
    const auto word = [&](size_t i, uint32_t top) {
      const Colour& colour = phase.colours4[i];
      return top << 30 | colour[2] << 20 | colour[1] << 10 | colour[0];
    };
    const uint32_t a = word(5, 1);
    const uint32_t b = word(6, 0);
    const uint32_t c = word(9, 2);
    const uint32_t d = word(10, 3);
    EXPECT_EQ(output.ContentWords32(), (Words32{a, a, b, b, a, a, b, b, c, c, d, d, c, c, d, d}));
  }
}

TEST(BayerToColor3x3Simple, CutsChannelsOfWordsToTenBits) {
  BayerToColor3x3Simple_RGB10p30 family;
  const TestImage input(BayerRG10, 3, 3, Words(9, 0xFC01));
  const TestImage output(RGB10p32, 3, 3, Words32(9, 0));
  family.Process(*input, *output);
  EXPECT_THAT(output.ContentWords32(), Each(1u << 20 | 1u << 10 | 1u));
}

TEST(BayerToColor3x3Simple, KeepsAFlatImage) {
  EXPECT_THAT(Demosaic(BayerGB8, RGB8, 7, 5, Bytes(35, 201)), Each(201));
  EXPECT_THAT(korvel_test::WordsOfBytes<uint16_t>(
                  Demosaic(BayerBG12, RGBa12, 5, 6, korvel_test::BytesOfWords(Words(30, 4095)))),
              Each(4095));
}

TEST(BayerToColor3x3Simple, MakesTheWholeOfAThreeByThreeImageFromItsOnePixel) {
  // Blue site: red (1 + 4 + 3 + 27) / 4, green (2 + 16 + 64 + 9) / 4.
  const Bytes output = Demosaic(BayerRG8, RGB8, 3, 3, {1, 2, 4, 16, 32, 64, 3, 9, 27});
  EXPECT_EQ(output, Pixels<uint8_t>(std::vector<Colour>(9, {8, 22, 32}), false, -1));
}

TEST(BayerToColor3x3Simple, CoversOddWidthsAndHeights) {
  // Lone samples in an image of 0: red at (2, 2), blue at (3, 3), of 5 by 5 pixels.
  Bytes samples(25, 0);
  samples[2 * 5 + 2] = 200;
  samples[3 * 5 + 3] = 100;
  // Lines 1 to 3, columns 1 to 3. (3, 1), (1, 3) lie diagonally beside the red one, (3, 2) and (2, 3) between the two.
  const Colour line1[] = {{50, 0, 0}, {100, 0, 0}, {50, 0, 0}};
  const Colour line2[] = {{100, 0, 0}, {200, 0, 25}, {100, 0, 50}};
  const Colour line3[] = {{50, 0, 0}, {100, 0, 50}, {50, 0, 100}};
  std::vector<Colour> expected;
  for (const auto* line : {line1, line1, line2, line3, line3}) {
    for (const size_t x : {0u, 0u, 1u, 2u, 2u}) expected.push_back(line[x]);
  }
  EXPECT_EQ(Demosaic(BayerRG8, RGB8, 5, 5, samples), Pixels<uint8_t>(expected, false, -1));
}

TEST(BayerToColor3x3Simple, MakesTwoEqualLinesOfHeightTwo) {
  const Colour first = {10, 32, 50};   // greens 20 and 45
  const Colour second = {31, 40, 50};  // greens 20 and 61
  const std::vector<Colour> expected = {first, first, second, second, first, first, second, second};
  EXPECT_EQ(Demosaic(BayerRG8, RGB8, 4, 2, {10, 20, 31, 40, 45, 50, 61, 70}), Pixels<uint8_t>(expected, false, -1));
  EXPECT_EQ(Demosaic(BayerBG8, BGR8, 4, 2, {10, 20, 31, 40, 45, 50, 61, 70}), Pixels<uint8_t>(expected, false, -1));
  // Three columns have one computed pixel.
  EXPECT_EQ(Demosaic(BayerRG8, RGB8, 3, 2, {10, 20, 31, 45, 50, 61}),
            Pixels<uint8_t>(std::vector<Colour>(6, first), false, -1));
  // Green first: red 20 and blue 45, greens 10 and 50; then red 20 and blue 61, greens 31 and 50.
  const Colour third = {20, 30, 45};
  const Colour fourth = {20, 40, 61};
  EXPECT_EQ(Demosaic(BayerGR8, RGB8, 4, 2, {10, 20, 31, 40, 45, 50, 61, 70}),
            Pixels<uint8_t>({third, third, fourth, fourth, third, third, fourth, fourth}, false, -1));
}

TEST(BayerToColor3x3Simple, LeavesImagesWithoutAnInsideUnwritten) {
  for (const auto& [width, height] :
       {std::pair<size_t, size_t>{1, 1}, {1, 2}, {1, 7}, {2, 1}, {7, 1}, {2, 2}, {2, 3}, {2, 9}}) {
    SCOPED_TRACE(testing::Message() << width << " x " << height);
    EXPECT_THAT(Demosaic(BayerRG8, RGB8, width, height, Bytes(width * height, 9)), Each(kUnwritten));
    EXPECT_THAT(Demosaic(BayerGB8, BGRa8, width, height, Bytes(width * height, 9)), Each(kUnwritten));
  }
}

TEST(BayerToColor3x3Simple, StaysWithinMemoryThatEndsAtAPage) {
  BayerToColor3x3Simple_BGR family;
  for (const auto& [width, height] :
       {std::pair<size_t, size_t>{3, 3}, {4, 2}, {5, 4}, {1, 9}, {9, 1}, {2, 2}, {33, 3}}) {
    const korvel_test::MemoryBeforeGuard in(Bytes(width * height, 17));
    const korvel_test::MemoryBeforeGuard out(width * height * 3);
    const auto input = img::buffer::RawImageBuffer::CreateBuffer(BayerGR8, in.Data(), {width, height})->CreateImage();
    const auto output = img::buffer::RawImageBuffer::CreateBuffer(BGR8, out.Data(), {width, height})->CreateImage();
    family.Process(*input, *output);
    if (width > 2 && height > 1) {
      EXPECT_THAT(korvel_test::BytesOf(*output), Each(17));
    }
  }
}

TEST(BayerToColor3x3Simple, TakesUnpackedBayer) {
  BayerToColor3x3Simple_RGB family;
  size_t supported = 0;
  for (const PixelFormatId format : korvel_test::kPublicFormats) supported += family.IsInputFormatSupported(format);
  EXPECT_EQ(supported, 12u);
  EXPECT_FALSE(family.IsInputFormatSupported(BayerRG10p));
  EXPECT_FALSE(family.IsInputFormatSupported(BayerRG12g24Qrv));
  EXPECT_FALSE(family.IsInputFormatSupported(Mono8));
}

template <class Family>
void ExpectOutputs(PixelFormatId at8, PixelFormatId at10, PixelFormatId at12) {
  Family family;
  for (const Phase& phase : Phases()) {
    EXPECT_EQ(family.GetOutputImageFormat({kArea, phase.at8}), (ImageFormat{kArea, at8}));
    EXPECT_EQ(family.GetOutputImageFormat({kArea, phase.at10}), (ImageFormat{kArea, at10}));
    EXPECT_EQ(family.GetOutputImageFormat({kArea, phase.at12}), (ImageFormat{kArea, at12}));
  }
  for (const PixelFormatId other : {Mono8, BayerRG10p, BayerRG12g24Qrv, RGB8, RGB10p32, Invalid}) {
    EXPECT_EQ(family.GetOutputImageFormat({kArea, other}), (ImageFormat{kArea, Invalid}));
  }
}

TEST(BayerToColor3x3Simple, GivesItsClassAtTheInputsDepth) {
  ExpectOutputs<BayerToColor3x3Simple_RGB>(RGB8, RGB10, RGB12);
  ExpectOutputs<BayerToColor3x3Simple_BGR>(BGR8, BGR10, BGR12);
  ExpectOutputs<BayerToColor3x3Simple_RGBa>(RGBa8, RGBa10, RGBa12);
  ExpectOutputs<BayerToColor3x3Simple_BGRa>(BGRa8, BGRa10, BGRa12);
  ExpectOutputs<BayerToColor3x3Simple_RGB10p30>(RGB10p32, RGB10p32, RGB10p32);
}

TEST(BayerToColor3x3Simple, HasFiftyTwoWorkingCellsAndFourOthers) {
  BayerToColor3x3Simple_RGB family;
  size_t working = 0;
  size_t others = 0;
  for (const PixelFormatId in : korvel_test::kPublicFormats) {
    for (const PixelFormatId out : korvel_test::kPublicFormats) {
      std::unique_ptr<IfcConversionProcessingModule> module;
      const auto failure = FailureOf([&] { module = family.CreateImpl(in, out); });
      if (failure) {
        ASSERT_EQ(*failure,
                  (Failure{-1009, 9000, "Unsupported formatId: " + std::to_string(static_cast<uint32_t>(in))}));
      } else if (korvel_test::Works(*module)) {
        ++working;
        EXPECT_TRUE(module->IsInputFormatSupported(in));
        EXPECT_EQ(module->GetOutputImageFormat({kArea, in}), (ImageFormat{kArea, out}));
      } else {
        ++others;
        EXPECT_EQ(out, BGR10p32);
      }
    }
  }
  EXPECT_EQ(working, 52u);
  EXPECT_EQ(others, 4u);
}

}  // namespace
