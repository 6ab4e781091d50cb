// Mirrors and turns with vectors against plain code: the kernels, and the transformer with records that hide
// instruction sets from it.
#include "processing/geometry/move_kernels.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <initializer_list>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "buffers/fixed_format_vector_buffer_pool.h"
#include "buffers/multi_format_buffer_pool.h"
#include "processing/geometry/image_transformer.h"
#include "processing/streaming.h"
#include "tests/support/guarded_memory.h"
#include "tests/support/instruction_sets.h"
#include "tests/support/test_images.h"

namespace {

using img::InstructionSet;
using img::PixelFormatId;
using img::Size2D;
using img::processing::ImageTransformer;
using img::processing::kPlainMoveKernels;
using img::processing::MirrorDirection;
using img::processing::MoveKernels;
using img::processing::MoveKernelsFor;
using img::processing::RotationAngle;
using korvel_test::Bytes;
using korvel_test::GuardedMemory;
using korvel_test::Placement;
using korvel_test::RunnableInstructionSets;
using korvel_test::TestImage;

constexpr size_t kPixelSizes[] = {1, 2, 3, 4, 6, 8};
constexpr Placement kPlacements[] = {Placement::kEndsAtPage, Placement::kStartsAtPage, Placement::kOddAddress};
// Twice the bytes that a kernel takes at a time, and more.
constexpr size_t kMostBytes = 2 * 96 + 130;

void FillAnyhow(uint8_t* first, size_t count, std::mt19937& random) {
  std::generate(first, first + count, [&] { return static_cast<uint8_t>(random()); });
}

// check(kernels) for every set of vector kernels that runs here.
template <class Check>
void ForEachVectorSet(const Check& check) {
  for (const InstructionSet set : RunnableInstructionSets()) {
    if (set == InstructionSet::Baseline) continue;
    SCOPED_TRACE(testing::Message() << set);
    check(MoveKernelsFor(set));
  }
}

// check(pixelSize, byteCount, placement) for lines of every length.
template <class Check>
void ForEachLine(const Check& check) {
  for (const size_t pixelSize : kPixelSizes) {
    for (size_t byteCount = 0; byteCount <= kMostBytes; byteCount += pixelSize) {
      for (const Placement placement : kPlacements) {
        check(pixelSize, byteCount, placement);
        if (testing::Test::HasFatalFailure()) return;
      }
    }
  }
}

// Two lines in exactly as many bytes, copied by kernels and by plain code, with steps of both signs.
void ExpectSameCopy(void (*copy)(const img::processing::LineCopy&), void (*plain)(const img::processing::LineCopy&),
                    size_t byteCount, Placement placement) {
  GuardedMemory from(2 * kMostBytes);
  GuardedMemory to(2 * kMostBytes);
  std::mt19937 random(static_cast<uint32_t>(byteCount));
  uint8_t* const source = from.Place(2 * byteCount, placement);
  uint8_t* const target = to.Place(2 * byteCount, placement);
  FillAnyhow(source, 2 * byteCount, random);
  const auto step = static_cast<ptrdiff_t>(byteCount);
  for (const bool isPastCaches : {false, true}) {
    Bytes expected(2 * byteCount);
    if (byteCount != 0) plain({source + step, -step, expected.data(), step, byteCount, 2, isPastCaches});
    to.Mark(target, 2 * byteCount);
    copy({source + step, -step, target, step, byteCount, 2, isPastCaches});
    ASSERT_TRUE(std::equal(expected.begin(), expected.end(), target)) << byteCount << " " << isPastCaches;
    ASSERT_TRUE(to.IsMarkedOutside(target, 2 * byteCount)) << byteCount << " " << isPastCaches;
  }
}

TEST(MoveKernels, CopyLinesOfEveryLength) {
  ForEachVectorSet([](const MoveKernels& kernels) {
    ForEachLine([&](size_t, size_t byteCount, Placement placement) {
      ExpectSameCopy(kernels.copyLines, kPlainMoveKernels.copyLines, byteCount, placement);
    });
  });
}

TEST(MoveKernels, CopyLinesOfEveryLengthReversed) {
  ForEachVectorSet([](const MoveKernels& kernels) {
    ForEachLine([&](size_t pixelSize, size_t byteCount, Placement placement) {
      SCOPED_TRACE(pixelSize);
      ExpectSameCopy(kernels.copyLinesReversed[pixelSize], kPlainMoveKernels.copyLinesReversed[pixelSize], byteCount,
                     placement);
    });
  });
}

// Lines side by side, each with a part before and after that stays: one is swapped with the other.
void ExpectSameSwap(void (*swap)(const img::processing::LineSwap&), void (*plain)(const img::processing::LineSwap&),
                    size_t byteCount, Placement placement) {
  GuardedMemory memory(2 * kMostBytes + 3);
  const size_t total = 2 * byteCount + 3;
  uint8_t* const lines = memory.Place(total, placement);
  std::mt19937 random(static_cast<uint32_t>(byteCount));
  FillAnyhow(lines, total, random);
  Bytes expected(lines, lines + total);
  const auto offset = static_cast<ptrdiff_t>(byteCount) + 3;
  plain({expected.data(), 0, expected.data() + offset, 0, byteCount, 1});
  swap({lines, 0, lines + offset, 0, byteCount, 1});
  ASSERT_TRUE(std::equal(expected.begin(), expected.end(), lines)) << byteCount;
}

TEST(MoveKernels, SwapLinesOfEveryLength) {
  ForEachVectorSet([](const MoveKernels& kernels) {
    ForEachLine([&](size_t, size_t byteCount, Placement placement) {
      ExpectSameSwap(kernels.swapLines, kPlainMoveKernels.swapLines, byteCount, placement);
    });
  });
}

TEST(MoveKernels, SwapLinesOfEveryLengthReversed) {
  ForEachVectorSet([](const MoveKernels& kernels) {
    ForEachLine([&](size_t pixelSize, size_t byteCount, Placement placement) {
      SCOPED_TRACE(pixelSize);
      ExpectSameSwap(kernels.swapLinesReversed[pixelSize], kPlainMoveKernels.swapLinesReversed[pixelSize], byteCount,
                     placement);
    });
  });
}

class TranspositionTest : public testing::Test {
 protected:
  static constexpr size_t kMostPixels = 140 * 300;

  // The source's lines are taken from the bottom.
  void ExpectSame(const MoveKernels& kernels, size_t pixelSize, size_t width, size_t height, Placement placement) {
    const size_t byteCount = width * height * pixelSize;
    uint8_t* const source = from.Place(byteCount, placement);
    uint8_t* const target = to.Place(byteCount, placement);
    FillAnyhow(source, byteCount, random);
    const auto fromStep = static_cast<ptrdiff_t>(width * pixelSize);
    const auto toStep = static_cast<ptrdiff_t>(height * pixelSize);
    const uint8_t* const last = source + (static_cast<ptrdiff_t>(height) - 1) * fromStep;
    Bytes expected(byteCount);
    kPlainMoveKernels.transpose[pixelSize]({last, -fromStep, expected.data(), toStep, width, height, false});
    for (const bool isPastCaches : {false, true}) {
      to.Mark(target, byteCount);
      kernels.transpose[pixelSize]({last, -fromStep, target, toStep, width, height, isPastCaches});
      ASSERT_TRUE(std::equal(expected.begin(), expected.end(), target))
          << pixelSize << ": " << width << " x " << height << ", " << isPastCaches;
      ASSERT_TRUE(to.IsMarkedOutside(target, byteCount)) << pixelSize << ": " << width << " x " << height;
    }
  }

  GuardedMemory from{8 * kMostPixels};
  GuardedMemory to{8 * kMostPixels};
  std::mt19937 random{1};
};

TEST_F(TranspositionTest, PlainCodeExchangesRowsAndColumns) {
  for (const size_t pixelSize : kPixelSizes) {
    constexpr size_t kWidth = 67;
    constexpr size_t kHeight = 70;
    Bytes pixels(kWidth * kHeight * pixelSize);
    FillAnyhow(pixels.data(), pixels.size(), random);
    Bytes transposed(pixels.size());
    kPlainMoveKernels.transpose[pixelSize]({pixels.data(), static_cast<ptrdiff_t>(kWidth * pixelSize),
                                            transposed.data(), static_cast<ptrdiff_t>(kHeight * pixelSize), kWidth,
                                            kHeight, false});
    for (size_t i = 0; i < pixels.size(); ++i) {
      const size_t pixel = i / pixelSize;
      const size_t moved = pixel % kWidth * kHeight + pixel / kWidth;
      ASSERT_EQ(transposed[moved * pixelSize + i % pixelSize], pixels[i]) << pixelSize;
    }
  }
}

TEST_F(TranspositionTest, OfEverySmallSize) {
  ForEachVectorSet([this](const MoveKernels& kernels) {
    for (const size_t pixelSize : kPixelSizes) {
      for (size_t width = 1; width <= 35; ++width) {
        for (size_t height = 1; height <= 67; height += height < 36 ? 1 : 3) {
          ExpectSame(kernels, pixelSize, width, height, kPlacements[(width + height) % 3]);
          if (HasFatalFailure()) return;
        }
      }
    }
  });
}

TEST_F(TranspositionTest, OfSeveralTiles) {
  ForEachVectorSet([this](const MoveKernels& kernels) {
    for (const size_t pixelSize : kPixelSizes) {
      for (const size_t width : std::initializer_list<size_t>{64, 65, 96, 131, 140}) {
        for (const size_t height : std::initializer_list<size_t>{32, 63, 64, 129, 256, 260, 300}) {
          for (const Placement placement : kPlacements) {
            ExpectSame(kernels, pixelSize, width, height, placement);
            if (HasFatalFailure()) return;
          }
        }
      }
    }
  });
}

// ---------------------------------------------------------------------------------------------------- transformer --

struct Motion {
  std::string name;
  std::function<std::shared_ptr<img::IfcImage>(ImageTransformer&, const img::IfcImage&)> move;
  std::function<void(ImageTransformer&, img::IfcImage&)> moveInPlace;
};

std::vector<Motion> AllMotions() {
  std::vector<Motion> motions;
  for (const auto direction : {MirrorDirection::LeftRight, MirrorDirection::UpDown, MirrorDirection::UpDownLeftRight}) {
    motions.push_back({"mirror " + std::to_string(static_cast<uint32_t>(direction)),
                       [=](ImageTransformer& transformer, const img::IfcImage& image) {
                         return transformer.mirrorImage(image, direction);
                       },
                       [=](ImageTransformer& transformer, img::IfcImage& image) {
                         transformer.mirrorImageInPlace(image, direction);
                       }});
  }
  for (const auto angle : {RotationAngle::Degree90, RotationAngle::Degree180, RotationAngle::Degree270}) {
    motions.push_back(
        {"angle " + std::to_string(static_cast<uint16_t>(angle)),
         [=](ImageTransformer& transformer, const img::IfcImage& image) {
           return transformer.rotateImage(image, angle);
         },
         [=](ImageTransformer& transformer, img::IfcImage& image) { transformer.rotateImageInPlace(image, angle); }});
  }
  return motions;
}

class TransformerRecordsTest : public testing::Test {
 protected:
  // Formats that mirrors leave as they are, so that the image keeps its bytes in place.
  void ExpectSameForAllRecords(PixelFormatId format, const Size2D& size) {
    ImageTransformer plain(pool, img::ProcessorFeatures{});
    Bytes bytes(img::PixelFormatInfo_CalcSizeOfPixels(format, size.width * size.height));
    FillAnyhow(bytes.data(), bytes.size(), random);
    const TestImage image(format, size.width, size.height, bytes);
    for (const Motion& motion : AllMotions()) {
      const auto expected = motion.move(plain, *image);
      const uint8_t* const first = expected->PixelPointer(0, 0);
      for (const img::ProcessorFeatures features :
           {img::ProcessorFeatures{}, img::ProcessorFeatures{.avx = 1}, img::ProcessorFeatures{.avx = 1, .avx2 = 1}}) {
        SCOPED_TRACE(testing::Message() << motion.name << " " << img::PixelFormatInfo_Name(format) << " " << size.width
                                        << " x " << size.height << " " << img::InstructionSetOf(features));
        ImageTransformer transformer(pool, features);
        const auto moved = motion.move(transformer, *image);
        ASSERT_TRUE(std::equal(first, first + bytes.size(), moved->PixelPointer(0, 0)));
        const TestImage inPlace(format, size.width, size.height, bytes);
        motion.moveInPlace(transformer, *inPlace);
        ASSERT_TRUE(std::equal(first, first + bytes.size(), inPlace.Content().begin()));
      }
    }
  }

  std::shared_ptr<img::buffer::MultiFormatBufferPool> pool = std::make_shared<img::buffer::MultiFormatBufferPool>(
      std::make_shared<img::buffer::FixedFormatVectorBufferPool::Factory>(), 1);
  std::mt19937 random{3};
};

TEST_F(TransformerRecordsTest, MoveAlike) {
  for (const PixelFormatId format : {PixelFormatId::Mono8, PixelFormatId::Mono12, PixelFormatId::RGB8,
                                     PixelFormatId::BGRa8, PixelFormatId::BGR12, PixelFormatId::RGBa12}) {
    for (const Size2D size : {Size2D{1, 1}, {2, 3}, {64, 64}, {67, 33}, {130, 71}, {71, 130}}) {
      ExpectSameForAllRecords(format, size);
    }
  }
}

TEST_F(TransformerRecordsTest, MoveLargeImagesAlike) {
  for (const PixelFormatId format : {PixelFormatId::RGB8, PixelFormatId::BGRa8}) {
    const Size2D size{2011, 2100};
    ASSERT_TRUE(img::processing::ShouldStream(img::PixelFormatInfo_CalcSizeOfPixels(format, size.width * size.height)));
    ExpectSameForAllRecords(format, size);
  }
}

}  // namespace
