// Binning with vectors against plain code: the kernels, and the class with records that hide instruction sets from it.
#include "processing/correction/binning_vectors.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <initializer_list>
#include <memory>
#include <random>

#include "buffers/fixed_format_vector_buffer_pool.h"
#include "buffers/multi_format_buffer_pool.h"
#include "processing/correction/binning.h"
#include "tests/support/guarded_memory.h"
#include "tests/support/instruction_sets.h"
#include "tests/support/test_images.h"

namespace {

using img::InstructionSet;
using img::PixelFormatId;
using img::processing::Binning;
using img::processing::BinningKernels;
using img::processing::BinningMode;
using korvel_test::Bytes;
using korvel_test::GuardedMemory;
using korvel_test::Placement;
using korvel_test::RunnableInstructionSets;
using korvel_test::TestImage;

constexpr size_t kMostGroups = 80;

// How the samples of a test are made: of any value, all zero, or all ones.
enum class Values { kAny, kZero, kOnes };

struct Case {
  size_t sampleSize;
  size_t groupSize;
  size_t lineCount;
  size_t groupCount;
  BinningMode mode;
  Values values;
  Placement placement;
};

uint32_t SampleAt(const uint8_t* line, size_t index, size_t sampleSize) {
  return sampleSize == 1 ? line[index] : static_cast<uint32_t>(line[2 * index] | line[2 * index + 1] << 8);
}

void ExpectSums(const BinningKernels& kernels, const Case& test) {
  GuardedMemory from(8 * 2 * kMostGroups * 8);
  GuardedMemory to(kMostGroups * 8);
  const uint16_t maximum = test.sampleSize == 1 ? 255 : 4095;
  const size_t groupBytes = test.groupSize * test.sampleSize;
  const size_t step = 2 * test.groupCount * groupBytes;
  uint8_t* const lines = from.Place(test.lineCount * step, test.placement);
  std::mt19937 random(static_cast<uint32_t>(test.groupCount));
  std::generate(lines, lines + test.lineCount * step, [&] {
    return static_cast<uint8_t>(test.values == Values::kAny ? random() : test.values == Values::kOnes ? 0xFF : 0);
  });
  uint8_t* const output = to.Place(test.groupCount * groupBytes, test.placement);
  to.Mark(output, test.groupCount * groupBytes);
  const auto bin = (test.sampleSize == 1 ? kernels.bytes : kernels.words)[test.groupSize];
  const size_t done =
      bin({lines, step, test.lineCount, output, test.groupCount, test.mode == BinningMode::Average, maximum});
  ASSERT_LE(done, test.groupCount);
  ASSERT_GT(done + 40, test.groupCount) << "no more than a step stays";
  for (size_t i = 0; i < done * test.groupSize; ++i) {
    const size_t group = i / test.groupSize;
    uint32_t value = 0;
    for (size_t line = 0; line < test.lineCount; ++line) {
      for (size_t column = 0; column < 2; ++column) {
        const size_t sample = (2 * group + column) * test.groupSize + i % test.groupSize;
        value += SampleAt(lines + line * step, sample, test.sampleSize);
      }
    }
    value = test.mode == BinningMode::Sum ? std::min<uint32_t>(value, maximum)
                                          : value / static_cast<uint32_t>(2 * test.lineCount);
    if (test.groupSize == 4 && i % 4 == 3) value = maximum;
    ASSERT_EQ(SampleAt(output, i, test.sampleSize), value)
        << test.sampleSize << " " << test.groupSize << " " << test.lineCount << " " << test.groupCount << " " << i;
  }
  ASSERT_TRUE(to.IsMarkedOutside(output, test.groupCount * groupBytes));
}

TEST(BinningVectors, AddUpPairsOfEveryLayout) {
  for (const InstructionSet set : RunnableInstructionSets()) {
    const BinningKernels* const kernels = img::processing::FindBinningKernels(set);
    if (kernels == nullptr) continue;
    SCOPED_TRACE(testing::Message() << set);
    for (const size_t sampleSize : {size_t{1}, size_t{2}}) {
      for (const size_t groupSize : std::initializer_list<size_t>{1, 2, 3, 4}) {
        for (size_t groupCount = 0; groupCount <= kMostGroups; ++groupCount) {
          for (size_t lineCount = 1; lineCount <= 8; ++lineCount) {
            for (const BinningMode mode : {BinningMode::Average, BinningMode::Sum}) {
              const auto placement = static_cast<Placement>(groupCount % 3);
              const auto values = static_cast<Values>((groupCount + lineCount) % 5 < 3 ? 0 : groupCount % 3);
              ExpectSums(*kernels, {sampleSize, groupSize, lineCount, groupCount, mode, values, placement});
              if (testing::Test::HasFatalFailure()) return;
            }
          }
        }
      }
    }
  }
}

// Every sum that bytes can have, divided by every divisor.
TEST(BinningVectors, DivideEverySumOfBytes) {
  for (const InstructionSet set : RunnableInstructionSets()) {
    const BinningKernels* const kernels = img::processing::FindBinningKernels(set);
    if (kernels == nullptr) continue;
    for (size_t lineCount = 1; lineCount <= 8; ++lineCount) {
      constexpr size_t kGroups = 64;
      for (size_t sum = 0; sum <= lineCount * 2 * 255; ++sum) {
        Bytes lines(lineCount * 2 * kGroups);
        size_t left = sum;
        for (size_t i = 0; i < 2 * lineCount; ++i) {
          const size_t part = std::min<size_t>(left, 255);
          left -= part;
          lines[i / 2 * 2 * kGroups + i % 2] = static_cast<uint8_t>(part);
        }
        Bytes output(kGroups);
        ASSERT_GT(kernels->bytes[1]({lines.data(), 2 * kGroups, lineCount, output.data(), kGroups, true, 255}), 0u);
        ASSERT_EQ(output[0], sum / (2 * lineCount)) << set << " " << lineCount << " " << sum;
      }
    }
  }
}

TEST(BinningVectors, OfTheClassGiveTheSameForAllRecords) {
  const auto pool = std::make_shared<img::buffer::MultiFormatBufferPool>(
      std::make_shared<img::buffer::FixedFormatVectorBufferPool::Factory>(), 1);
  std::mt19937 random(7);
  for (const PixelFormatId format :
       {PixelFormatId::Mono8, PixelFormatId::Mono10, PixelFormatId::BayerRG8, PixelFormatId::BayerGB12,
        PixelFormatId::RGB8, PixelFormatId::BGR10, PixelFormatId::BGRa8, PixelFormatId::RGBa12}) {
    const size_t width = 301;
    const size_t height = 43;
    Bytes bytes(img::PixelFormatInfo_CalcSizeOfPixels(format, width * height));
    std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<uint8_t>(random()); });
    const TestImage image(format, width, height, bytes);
    for (const BinningMode mode : {BinningMode::Average, BinningMode::Sum}) {
      for (const uint8_t factorX : {uint8_t{2}, uint8_t{3}}) {
        for (uint8_t factorY = 1; factorY <= 8; ++factorY) {
          std::shared_ptr<img::IfcImage> expected;
          for (const img::ProcessorFeatures features : {img::ProcessorFeatures{}, img::ProcessorFeatures{.avx = 1},
                                                        img::ProcessorFeatures{.avx = 1, .avx2 = 1}}) {
            Binning binning(pool, features);
            binning.SetBinningX(factorX);
            binning.SetBinningY(factorY);
            binning.SetMode(mode);
            const auto binned = binning.Process(*image);
            if (expected == nullptr) expected = binned;
            const uint8_t* const first = expected->PixelPointer(0, 0);
            ASSERT_TRUE(std::equal(first, first + expected->ByteCount(), binned->PixelPointer(0, 0)))
                << img::PixelFormatInfo_Name(format) << " " << int{factorX} << " x " << int{factorY};
          }
        }
      }
    }
  }
}

}  // namespace
