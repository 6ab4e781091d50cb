#include "processing/correction/hotpixel_vectors.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

#include "buffers/raw_image_buffer.h"
#include "processing/correction/adaptive_hotpixel_correction.h"
#include "processing/correction/hotpixel_kernels.h"
#include "processing/unaligned.h"
#include "tests/support/feature_records.h"
#include "tests/support/guarded_memory.h"
#include "tests/support/instruction_sets.h"
#include "tests/support/test_images.h"

namespace {

using img::PixelFormatId;
using img::Point2D;
using img::processing::AdaptiveHotpixelCorrection;
using img::processing::FindHotpixels;
using img::processing::HotpixelThreshold;
using korvel_test::Bytes;
using korvel_test::GuardedMemory;
using korvel_test::Placement;
using korvel_test::RunnableInstructionSets;
using korvel_test::TestImage;

using enum PixelFormatId;

constexpr PixelFormatId kFormats[] = {Mono8,    Mono10,    Mono12,    BayerGR8,  BayerRG8, BayerGB8,
                                      BayerBG8, BayerGR10, BayerRG10, BayerGB12, BayerBG12};

// Even noise, some of it bright, so that pixels lie on both sides of every threshold; or any bytes at all.
Bytes MakePixels(PixelFormatId format, size_t pixels, bool isGarbage, std::mt19937& random) {
  const auto below = [&random](uint32_t limit) { return static_cast<uint32_t>(random() % limit); };
  const size_t sampleBytes = img::PixelFormatInfo_CalcSizeOfPixels(format, 1);
  const uint32_t maximum = (1u << PixelFormatInfo_ComponentSignificantBits(format)) - 1;
  Bytes bytes(pixels * sampleBytes);
  const uint32_t level = below(maximum);
  const uint32_t noise = 1 + below(maximum / 4);
  for (size_t i = 0; i < pixels; ++i) {
    const uint32_t bright = below(8) == 0 ? below(maximum) : 0;
    const uint32_t value = isGarbage ? below(65536) : std::min(level + below(noise) + bright, maximum);
    if (sampleBytes == 1) {
      bytes[i] = static_cast<uint8_t>(value);
    } else {
      img::processing::StoreSample<uint16_t>(bytes.data(), i, static_cast<uint16_t>(value));
    }
  }
  return bytes;
}

constexpr HotpixelThreshold kThresholds[] = {{3, 16}, {48, 4096}, {320, 9216},     {0, 0},     {0, 1},         {1, 0},
                                             {0, 99}, {16, 1024}, {0, 0xFFFFFFFF}, {70000, 5}, {0xFFFFFFF, 77}};

TEST(FindHotpixels, FindsTheSameWithEveryInstructionSet) {
  constexpr size_t kHeight = 5;
  constexpr size_t kWidest = 80;
  GuardedMemory memory(2 * kWidest * kHeight);
  std::mt19937 random(1);
  size_t found = 0;
  for (const PixelFormatId format : kFormats) {
    for (size_t width = 2; width <= kWidest; ++width) {
      for (const Placement placement : {Placement::kEndsAtPage, Placement::kStartsAtPage, Placement::kOddAddress}) {
        const Bytes pixels = MakePixels(format, width * kHeight, width % 3 == 0, random);
        uint8_t* const at = memory.Place(pixels.size(), placement);
        std::copy(pixels.begin(), pixels.end(), at);
        const auto image =
            img::buffer::RawImageBuffer::CreateBuffer(format, at, img::Size2D{width, kHeight})->CreateImage();
        for (const HotpixelThreshold& threshold : kThresholds) {
          std::vector<Point2D> expected;
          FindHotpixels(*image, threshold, img::InstructionSet::Baseline, expected);
          for (const img::InstructionSet set : RunnableInstructionSets()) {
            std::vector<Point2D> hotpixels;
            FindHotpixels(*image, threshold, set, hotpixels);
            const auto isSame = [](const Point2D& a, const Point2D& b) { return a.x == b.x && a.y == b.y; };
            ASSERT_TRUE(std::equal(hotpixels.begin(), hotpixels.end(), expected.begin(), expected.end(), isSame))
                << set << ", format " << static_cast<uint32_t>(format) << ", width " << width << ", slope "
                << threshold.slope;
            found += hotpixels.size();
          }
        }
      }
    }
  }
  EXPECT_GT(found, 100000u);
}

// The exact test is left few pixels: none of an even field, whatever its noise below the threshold.
TEST(HotpixelKernels, PassPixelsOverThatDontStandOut) {
  constexpr size_t kWidth = 100;
  std::vector<uint8_t> lines(5 * kWidth, 100);
  for (size_t i = 0; i < lines.size(); i += 3) lines[i] = 104;
  const img::processing::HotpixelLines around = {.farUpper = lines.data(),
                                                 .nearUpper = lines.data() + kWidth,
                                                 .here = lines.data() + 2 * kWidth,
                                                 .nearLower = lines.data() + 3 * kWidth,
                                                 .farLower = lines.data() + 4 * kWidth};
  img::processing::HotpixelBounds bounds{.shift = 4, .lower = {}, .upper = {}};
  std::fill(std::begin(bounds.lower), std::end(bounds.lower), uint8_t{9});
  lines[2 * kWidth + 77] = 160;
  for (const img::InstructionSet set : RunnableInstructionSets()) {
    const auto* const kernels = img::processing::FindHotpixelKernels(set);
    if (kernels == nullptr) continue;
    for (const auto find : {kernels->inMonoBytes, kernels->inBayerBytes}) {
      uint32_t candidates = 0;
      const size_t next = find(around, 2, kWidth - 2, true, bounds, candidates);
      const size_t first = next - kernels->vectorBytes;
      ASSERT_LE(first, 77u);
      EXPECT_EQ(candidates, 1u << (77 - first)) << set;
    }
  }
}

TEST(AdaptiveHotpixelCorrection, CorrectsTheSameForEveryRecord) {
  std::mt19937 random(2);
  for (const PixelFormatId format : kFormats) {
    for (size_t width = 4; width <= 80; ++width) {
      const Bytes pixels = MakePixels(format, width * 6, width % 5 == 0, random);
      const TestImage input(format, width, 6, pixels);
      const TestImage expected(format, width, 6);
      AdaptiveHotpixelCorrection(korvel_test::kPlainRecord).CorrectAdaptive(*input, *expected);
      for (const img::ProcessorFeatures& record : korvel_test::kVectorRecords) {
        const TestImage output(format, width, 6);
        AdaptiveHotpixelCorrection(record).CorrectAdaptive(*input, *output);
        ASSERT_EQ(output.Content(), expected.Content()) << width;
      }
    }
  }
}

}  // namespace
