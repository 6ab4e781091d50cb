#include "processing/conversion/debayering_optimized.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <map>
#include <set>
#include <tuple>
#include <utility>

#include "tests/support/raw_formats.h"
#include "tests/support/test_images.h"

namespace {

using img::PixelFormatId;
using img::ProcessorFeatures;
using img::processing::DebayeringOptimized;
using korvel_test::Bytes;
using korvel_test::kUnwritten;
using korvel_test::MemoryBeforeGuard;
using korvel_test::Words;
using korvel_test::Words32;
using testing::Each;

using enum PixelFormatId;

using Place = std::pair<size_t, size_t>;

ProcessorFeatures Features(bool avx, bool avx2) {
  ProcessorFeatures features;
  features.avx = avx ? 1 : 0;
  features.avx2 = avx2 ? 1 : 0;
  return features;
}

const ProcessorFeatures kNone = Features(false, false);
const ProcessorFeatures kAvx = Features(true, false);
const ProcessorFeatures kAvx2 = Features(true, true);
const ProcessorFeatures kAvx2Only = Features(false, true);

Bytes Lone(size_t width, size_t height, const std::map<Place, uint8_t>& samples) {
  Bytes bytes(width * height, 0);
  for (const auto& [place, sample] : samples) bytes.at(place.second * width + place.first) = sample;
  return bytes;
}

// Converts between memory that ends at pages. The result is empty if the conversion is declined, and nothing is
// written then.
Bytes Convert(const ProcessorFeatures& features, PixelFormatId from, PixelFormatId to, size_t width, size_t height,
              uint32_t mode, const Bytes& samples) {
  const MemoryBeforeGuard input(samples);
  const size_t size = img::PixelFormatInfo_CalcSizeOfPixels(to, width * height);
  const MemoryBeforeGuard output(size);
  const bool converted =
      DebayeringOptimized(features).Convert(input.Data(), width, height, from, output.Data(), size, to, mode);
  const Bytes result(output.Data(), output.Data() + size);
  if (converted) return result;
  EXPECT_THAT(result, Each(kUnwritten));
  return {};
}

bool Takes(const ProcessorFeatures& features, PixelFormatId from, PixelFormatId to, size_t width, size_t height,
           uint32_t mode) {
  return !Convert(features, from, to, width, height, mode,
                  Bytes(img::PixelFormatInfo_CalcSizeOfPixels(from, width * height), 0))
              .empty();
}

using Gate = std::tuple<PixelFormatId, PixelFormatId, uint32_t>;

std::set<Gate> TakenBy(const ProcessorFeatures& features) {
  std::set<Gate> taken;
  for (const PixelFormatId from : korvel_test::kPublicFormats) {
    for (const PixelFormatId to : korvel_test::kPublicFormats) {
      for (const uint32_t mode : {0u, 1u, 2u, 3u, 4u, 0xFFFFFFFFu}) {
        if (Takes(features, from, to, 16, 16, mode)) taken.insert({from, to, mode});
      }
    }
  }
  return taken;
}

TEST(DebayeringOptimized, TakesWhatTheProcessorAllows) {
  std::set<Gate> expected;
  for (const PixelFormatId from : {BayerGR8, BayerRG8}) {
    for (const PixelFormatId to : {RGB8, BGR8, RGBa8, BGRa8}) expected.insert({from, to, 3});
  }
  EXPECT_EQ(TakenBy(kNone), expected);
  for (const PixelFormatId from : {BayerGR8, BayerRG8}) {
    for (const PixelFormatId to : {Mono8, RGBa8, BGRa8}) expected.insert({from, to, 1});
  }
  expected.insert({BayerRG10, RGB10p32, 1});
  EXPECT_EQ(TakenBy(kAvx2Only), expected);
  for (const PixelFormatId from : {BayerGR8, BayerRG8}) {
    for (const PixelFormatId to : {RGB8, BGR8}) expected.insert({from, to, 1});
  }
  EXPECT_EQ(TakenBy(kAvx), expected);
  EXPECT_EQ(TakenBy(kAvx2), expected);
}

TEST(DebayeringOptimized, DeclinesSmallAndOddSizes) {
  for (const uint32_t mode : {1u, 3u}) {
    for (const auto& [width, height] :
         {Place{15, 15}, {15, 16}, {16, 15}, {14, 16}, {16, 14}, {17, 16}, {16, 17}, {33, 33}, {0, 16}, {16, 0}}) {
      EXPECT_FALSE(Takes(kAvx2, BayerRG8, BGRa8, width, height, mode)) << width << " x " << height;
    }
    EXPECT_TRUE(Takes(kAvx2, BayerRG8, BGRa8, 16, 16, mode));
    EXPECT_TRUE(Takes(kAvx2, BayerRG8, BGRa8, 16, 18, mode));
    EXPECT_TRUE(Takes(kAvx2, BayerRG8, BGRa8, 50, 16, mode));
  }
}

TEST(DebayeringOptimized, DoesNotReadTheOutputSize) {
  const Bytes input(256, 7);
  Bytes output(1024, 0);
  EXPECT_TRUE(DebayeringOptimized(kAvx).Convert(input.data(), 16, 16, BayerRG8, output.data(), 0, BGRa8, 1));
  EXPECT_EQ(output[0], 7);
}

// ------------------------------------------------------------------------------------------------------------- Fast --

using Pixel = std::array<unsigned, 4>;

Pixel BgraAt(const Bytes& image, size_t width, size_t x, size_t y) {
  const uint8_t* const at = image.data() + (y * width + x) * 4;
  return {at[0], at[1], at[2], at[3]};
}

const std::map<Place, uint8_t> kBorderSamples = {
    {{0, 0}, 200}, {{1, 0}, 101},   {{0, 1}, 50},   {{1, 1}, 77},   {{2, 0}, 90},   {{2, 1}, 30},
    {{3, 1}, 20},  {{15, 15}, 240}, {{14, 15}, 11}, {{15, 14}, 30}, {{14, 14}, 99}, {{14, 0}, 33},
    {{15, 0}, 55}, {{15, 1}, 44},   {{0, 15}, 66},  {{1, 15}, 70},  {{0, 14}, 81},
};

TEST(DebayeringOptimized, FastComputesTheBorderFromTheNeighboursThatExist) {
  for (const ProcessorFeatures& features : {kAvx, kAvx2, kAvx2Only}) {
    const Bytes image = Convert(features, BayerRG8, BGRa8, 16, 16, 1, Lone(16, 16, kBorderSamples));
    ASSERT_FALSE(image.empty());
    EXPECT_EQ(BgraAt(image, 16, 0, 0), (Pixel{77, 75, 200, 255}));    // (101 + 50) / 2
    EXPECT_EQ(BgraAt(image, 16, 2, 0), (Pixel{48, 43, 90, 255}));     // (77 + 20) / 2, (101 + 0 + 30) / 3
    EXPECT_EQ(BgraAt(image, 16, 15, 15), (Pixel{240, 20, 99, 255}));  // (11 + 30) / 2
    EXPECT_EQ(BgraAt(image, 16, 15, 0), (Pixel{44, 55, 33, 255}));
    EXPECT_EQ(BgraAt(image, 16, 0, 15), (Pixel{70, 66, 81, 255}));
    // Inside: the blue site (1, 1) has red (200 + 90) / 4 and green (101 + 50 + 30) / 4.
    EXPECT_EQ(BgraAt(image, 16, 1, 1), (Pixel{77, 45, 72, 255}));
    // (0, 2) is red: green (50 + 0 + 0) / 3, blue (77 + 0) / 2.
    EXPECT_EQ(BgraAt(image, 16, 0, 2), (Pixel{38, 16, 0, 255}));
  }
}

TEST(DebayeringOptimized, FastKnowsBothPhasesAndAllOrders) {
  // BayerGR: red at (1, 0), blue at (0, 1).
  const Bytes samples = Lone(16, 16, {{{0, 0}, 10}, {{1, 0}, 20}, {{0, 1}, 30}, {{1, 1}, 40}});
  const auto first = [&](PixelFormatId to, size_t channels) {
    const Bytes image = Convert(kAvx, BayerGR8, to, 16, 16, 1, samples);
    return Bytes(image.begin(), image.begin() + static_cast<ptrdiff_t>(channels));
  };
  EXPECT_EQ(first(RGB8, 3), (Bytes{20, 10, 30}));
  EXPECT_EQ(first(BGR8, 3), (Bytes{30, 10, 20}));
  EXPECT_EQ(first(RGBa8, 4), (Bytes{20, 10, 30, 255}));
  EXPECT_EQ(first(BGRa8, 4), (Bytes{30, 10, 20, 255}));
}

TEST(DebayeringOptimized, FastWritesWordsWithoutTheirTopBits) {
  Words samples(256, 0xFC05);
  samples[0] = 1023;
  samples[1] = 6;
  const Bytes image = Convert(kAvx2, BayerRG10, RGB10p32, 16, 16, 1, korvel_test::BytesOfWords(samples));
  const Words32 words = korvel_test::WordsOfBytes<uint32_t>(image);
  // (0, 0): green (6 + 0xFC05) / 2 = 0x7E05, blue 0xFC05, each cut to ten bits.
  EXPECT_EQ(words.at(0), 0x005u << 20 | 0x205u << 10 | 1023u);
  EXPECT_EQ(words.at(5 * 16 + 5), 5u << 20 | 5u << 10 | 5u);
  for (const uint32_t word : words) EXPECT_EQ(word >> 30, 0u);
}

TEST(DebayeringOptimized, KeepsAFlatImage) {
  for (const uint8_t value : Bytes{0, 1, 85, 254, 255}) {
    for (const auto& [width, height] : {Place{16, 16}, {50, 18}, {66, 20}}) {
      const Bytes samples(width * height, value);
      EXPECT_THAT(Convert(kAvx, BayerGR8, RGB8, width, height, 1, samples), Each(value));
      EXPECT_THAT(Convert(kNone, BayerRG8, BGR8, width, height, 3, samples), Each(value));
    }
  }
  EXPECT_THAT(korvel_test::WordsOfBytes<uint32_t>(
                  Convert(kAvx, BayerRG10, RGB10p32, 18, 16, 1, korvel_test::BytesOfWords(Words(288, 1023)))),
              Each(0x3FFFFFFF));
}

// -------------------------------------------------------------------------------------------------------- Luminance --

// A mosaic whose pixels all have the same three colours.
Bytes Uniform(size_t width, size_t height, PixelFormatId format, uint8_t red, uint8_t green, uint8_t blue) {
  Bytes samples;
  const size_t redColumn = format == BayerRG8 ? 0 : 1;
  for (size_t y = 0; y < height; ++y) {
    for (size_t x = 0; x < width; ++x) {
      const bool own = x % 2 == (y % 2 == 0 ? redColumn : 1 - redColumn);
      samples.push_back(!own ? green : y % 2 == 0 ? red : blue);
    }
  }
  return samples;
}

TEST(DebayeringOptimized, LuminanceWeighsTheColours) {
  // 0.299 * 200 + 0.587 * 100 + 0.114 * 50 = 124.2
  EXPECT_THAT(Convert(kAvx, BayerRG8, Mono8, 18, 16, 1, Uniform(18, 16, BayerRG8, 200, 100, 50)), Each(124));
  EXPECT_THAT(Convert(kAvx2, BayerGR8, Mono8, 34, 16, 1, Uniform(34, 16, BayerGR8, 200, 100, 50)), Each(124));
  // 0.114 * 255 = 29.07, 0.299 * 255 = 76.2, 0.587 * 255 = 149.7: all truncated.
  EXPECT_THAT(Convert(kAvx, BayerRG8, Mono8, 16, 16, 1, Uniform(16, 16, BayerRG8, 0, 0, 255)), Each(29));
  EXPECT_THAT(Convert(kAvx, BayerRG8, Mono8, 16, 16, 1, Uniform(16, 16, BayerRG8, 255, 0, 0)), Each(76));
  EXPECT_THAT(Convert(kAvx, BayerRG8, Mono8, 16, 16, 1, Uniform(16, 16, BayerRG8, 0, 255, 0)), Each(149));
}

// 0.587 * 6 + 0.114 * 127 lies at 18: just below it as a sum of doubles, on it in single precision.
void ExpectVectorColumns(const ProcessorFeatures& features, size_t width, size_t endOfVectors) {
  SCOPED_TRACE(testing::Message() << "width " << width);
  constexpr size_t kHeight = 16;
  const Bytes image =
      Convert(features, BayerRG8, Mono8, width, kHeight, 1, Uniform(width, kHeight, BayerRG8, 0, 6, 127));
  ASSERT_FALSE(image.empty());
  for (size_t y = 0; y < kHeight; ++y) {
    for (size_t x = 0; x < width; ++x) {
      const bool isVector = y > 0 && y + 1 < kHeight && x > 0 && x < endOfVectors;
      ASSERT_EQ(image[y * width + x], isVector ? 18 : 17) << x << ", " << y;
    }
  }
}

TEST(DebayeringOptimized, LuminanceDiffersBetweenVectorAndScalarColumns) {
  ExpectVectorColumns(kAvx, 16, 1);
  ExpectVectorColumns(kAvx, 18, 17);
  ExpectVectorColumns(kAvx, 32, 17);
  ExpectVectorColumns(kAvx, 34, 33);
  ExpectVectorColumns(kAvx, 50, 49);
  ExpectVectorColumns(kAvx2, 18, 1);
  ExpectVectorColumns(kAvx2, 32, 1);
  ExpectVectorColumns(kAvx2, 34, 33);
  ExpectVectorColumns(kAvx2, 50, 33);
  ExpectVectorColumns(kAvx2, 66, 65);
  ExpectVectorColumns(kAvx2Only, 34, 33);
}

TEST(DebayeringOptimized, LuminanceMayFallBelowAFlatValue) {
  // The weights add up to a little less than 1 in the sum of doubles.
  const Bytes image = Convert(kAvx, BayerRG8, Mono8, 18, 16, 1, Bytes(18 * 16, 255));
  EXPECT_EQ(image.at(0), 254);
  EXPECT_EQ(image.at(18 + 1), 255);
}

// ---------------------------------------------------------------------------------------------------------- Classic --

TEST(DebayeringOptimized, ClassicSamplesHalfAPixelToTheRightAndBelow) {
  const std::map<Place, uint8_t> samples = {
      {{0, 0}, 200},  {{2, 0}, 40},   {{0, 2}, 80},  {{2, 2}, 16},  {{1, 0}, 100}, {{0, 1}, 51},    {{1, 1}, 77},
      {{2, 1}, 30},   {{3, 1}, 20},   {{14, 0}, 33}, {{15, 0}, 55}, {{15, 1}, 44}, {{15, 15}, 240}, {{14, 15}, 11},
      {{15, 14}, 30}, {{14, 14}, 99}, {{0, 14}, 81}, {{1, 15}, 70}, {{0, 15}, 66},
  };
  for (const ProcessorFeatures& features : {kNone, kAvx, kAvx2, kAvx2Only}) {
    const Bytes image = Convert(features, BayerRG8, BGRa8, 16, 16, 3, Lone(16, 16, samples));
    ASSERT_FALSE(image.empty());
    // Blue (1, 1); green (100 + 51) / 2; red (9 * 200 + 3 * (40 + 80) + 16) / 16.
    EXPECT_EQ(BgraAt(image, 16, 0, 0), (Pixel{77, 75, 136, 255}));
    // Blue (9 * 77 + 3 * 20) / 16; green (30 + 0) / 2; red (9 * 16 + 3 * (80 + 40) + 200) / 16.
    EXPECT_EQ(BgraAt(image, 16, 1, 1), (Pixel{47, 15, 44, 255}));
    // Blue (12 * 77) / 16; green (51 + 0) / 2; red (9 * 80 + 3 * (200 + 16) + 40) / 16.
    EXPECT_EQ(BgraAt(image, 16, 0, 1), (Pixel{57, 25, 88, 255}));
    // Blue (15, 1); green (55 + 0) / 2; red (12 * 33) / 16.
    EXPECT_EQ(BgraAt(image, 16, 15, 0), (Pixel{44, 27, 24, 255}));
    // The corner has one blue and one red sample, and the greens of the last block.
    EXPECT_EQ(BgraAt(image, 16, 15, 15), (Pixel{240, 20, 99, 255}));
    // Blue (1, 15); green of the block of lines 14 and 15, (66 + 0) / 2; red (12 * 81) / 16.
    EXPECT_EQ(BgraAt(image, 16, 0, 15), (Pixel{70, 33, 60, 255}));
  }
}

TEST(DebayeringOptimized, ClassicKnowsTheOtherPhase) {
  // BayerGR: red at odd columns of even lines, blue at even columns of odd lines.
  const Bytes image = Convert(
      kNone, BayerGR8, RGB8, 16, 16, 3,
      Lone(16, 16,
           {{{0, 0}, 10}, {{1, 1}, 31}, {{1, 0}, 160}, {{1, 2}, 32}, {{0, 1}, 64}, {{2, 1}, 16}, {{0, 3}, 48}}));
  ASSERT_FALSE(image.empty());
  // (0, 0): red has column 1 alone, (12 * 160 + 4 * 32) / 16 = 128; green (10 + 31) / 2; blue has line 1 alone,
  // (12 * 64 + 4 * 16) / 16 = 52.
  EXPECT_EQ(Bytes(image.begin(), image.begin() + 3), (Bytes{128, 20, 52}));
}

TEST(DebayeringOptimized, ClassicIsTheSameOnEveryProcessorAndInEveryOrder) {
  Bytes samples;
  for (unsigned i = 0; i < 34 * 18; ++i) samples.push_back(static_cast<uint8_t>(i * i * 31 + i * 7));
  for (const PixelFormatId from : {BayerRG8, BayerGR8}) {
    const Bytes rgb = Convert(kNone, from, RGB8, 34, 18, 3, samples);
    const Bytes bgra = Convert(kAvx2, from, BGRa8, 34, 18, 3, samples);
    ASSERT_EQ(rgb.size() / 3, bgra.size() / 4);
    for (size_t i = 0; i < rgb.size() / 3; ++i) {
      ASSERT_EQ((std::array{rgb[3 * i], rgb[3 * i + 1], rgb[3 * i + 2], uint8_t{255}}),
                (std::array{bgra[4 * i + 2], bgra[4 * i + 1], bgra[4 * i], bgra[4 * i + 3]}));
    }
  }
}

}  // namespace
