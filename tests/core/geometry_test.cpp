#include "core/geometry.h"

#include <gtest/gtest.h>

#include <limits>
#include <new>
#include <optional>

#include "core/memory_limit.h"
#include "status/exceptions.h"

namespace {

using img::ByteCountToAllocate;
using img::CheckedByteCount;
using img::FitsInto;
using img::ImageArea;
using img::kFacts;
using img::PixelFormatId;
using img::Point2D;
using img::Size2D;
using korvel::internal::ImgException;

using enum PixelFormatId;

constexpr size_t kMax = std::numeric_limits<size_t>::max();
static_assert(kMax == 18446744073709551615u);

TEST(Geometry, IsComparedFieldByField) {
  EXPECT_EQ((Size2D{3, 4}), (Size2D{3, 4}));
  EXPECT_NE((Size2D{3, 4}), (Size2D{4, 3}));
  EXPECT_EQ((Point2D{3, 4}), (Point2D{3, 4}));
  EXPECT_NE((Point2D{3, 4}), (Point2D{3, 5}));
  EXPECT_EQ((ImageArea{{1, 2}, {3, 4}}), (ImageArea{{1, 2}, {3, 4}}));
  EXPECT_NE((ImageArea{{1, 2}, {3, 4}}), (ImageArea{{0, 2}, {3, 4}}));
  EXPECT_NE((ImageArea{{1, 2}, {3, 4}}), (ImageArea{{1, 2}, {3, 5}}));
}

TEST(FitsInto, AcceptsARectangleThatTouchesTheFarEdges) {
  EXPECT_TRUE(FitsInto({10, 20}, {0, 0}, {10, 20}));
  EXPECT_TRUE(FitsInto({10, 20}, {4, 5}, {6, 15}));
  EXPECT_TRUE(FitsInto({10, 20}, {10, 20}, {0, 0}));
}

TEST(FitsInto, RefusesARectangleThatIsOnePixelTooFar) {
  EXPECT_FALSE(FitsInto({10, 20}, {4, 5}, {7, 15}));
  EXPECT_FALSE(FitsInto({10, 20}, {4, 5}, {6, 16}));
  EXPECT_FALSE(FitsInto({10, 20}, {11, 0}, {0, 0}));
  EXPECT_FALSE(FitsInto({10, 20}, {0, 21}, {0, 0}));
}

TEST(FitsInto, RefusesARectangleWhoseFarEdgeWraps) {
  EXPECT_FALSE(FitsInto({10, 20}, {kMax, 0}, {2, 1}));
  EXPECT_FALSE(FitsInto({10, 20}, {0, kMax}, {1, 2}));
  EXPECT_FALSE(FitsInto({10, 20}, {2, 0}, {kMax, 1}));
  EXPECT_FALSE(FitsInto({10, 20}, {0, 2}, {1, kMax}));
  EXPECT_TRUE(FitsInto({kMax, kMax}, {1, 1}, {kMax - 1, kMax - 1}));
}

// Bytes of a line of pixels; nothing if they don't fit.
template <PixelFormatId formatId>
std::optional<size_t> BytesOfLine(size_t pixels) {
  return CheckedByteCount(kFacts<formatId>, Size2D{pixels, 1});
}

TEST(CheckedByteCount, GivesTheBytesOfSmallImages) {
  EXPECT_EQ(CheckedByteCount(kFacts<Mono8>, {5, 3}), 15u);
  EXPECT_EQ(CheckedByteCount(kFacts<Mono10>, {5, 3}), 30u);
  EXPECT_EQ(CheckedByteCount(kFacts<RGB8>, {5, 3}), 45u);
  EXPECT_EQ(CheckedByteCount(kFacts<RGB10p32>, {5, 3}), 60u);
  EXPECT_EQ(CheckedByteCount(kFacts<BGR12>, {5, 3}), 90u);
  EXPECT_EQ(CheckedByteCount(kFacts<RGBa10>, {5, 3}), 120u);
  EXPECT_EQ(CheckedByteCount(kFacts<Invalid>, {5, 3}), 15u);
}

TEST(CheckedByteCount, RoundsABitStreamUpOnceForTheWholeImage) {
  EXPECT_EQ(CheckedByteCount(kFacts<Mono10p>, {3, 1}), 4u);
  EXPECT_EQ(CheckedByteCount(kFacts<Mono10p>, {3, 3}), 12u) << "90 bits";
  EXPECT_EQ(CheckedByteCount(kFacts<Mono10g40Qrv>, {5, 1}), 7u);
  EXPECT_EQ(CheckedByteCount(kFacts<Mono12p>, {3, 2}), 9u);
  EXPECT_EQ(CheckedByteCount(kFacts<Mono12g24Qrv>, {3, 1}), 5u);
}

TEST(CheckedByteCount, IsZeroForAnImageWithoutPixelsHoweverLongItsOtherSide) {
  EXPECT_EQ(CheckedByteCount(kFacts<Mono8>, {0, kMax}), 0u);
  EXPECT_EQ(CheckedByteCount(kFacts<RGBa12>, {kMax, 0}), 0u);
  EXPECT_EQ(CheckedByteCount(kFacts<Mono10p>, {0, 0}), 0u);
}

TEST(CheckedByteCount, GivesTheLargestImagesThatFit64Bits) {
  EXPECT_EQ(BytesOfLine<Mono8>(kMax), kMax);
  EXPECT_EQ(BytesOfLine<Invalid>(kMax), kMax);
  EXPECT_EQ(BytesOfLine<Mono12>(9223372036854775807u), 18446744073709551614u);
  EXPECT_EQ(BytesOfLine<RGB8>(6148914691236517205u), kMax);
  EXPECT_EQ(BytesOfLine<BGRa8>(4611686018427387903u), 18446744073709551612u);
  EXPECT_EQ(BytesOfLine<BGR10p32>(4611686018427387903u), 18446744073709551612u);
  EXPECT_EQ(BytesOfLine<RGB12>(3074457345618258602u), 18446744073709551612u);
  EXPECT_EQ(BytesOfLine<RGBa10>(2305843009213693951u), 18446744073709551608u);
}

TEST(CheckedByteCount, RefusesBytesThatDontFit64Bits) {
  EXPECT_EQ(BytesOfLine<Mono12>(9223372036854775808u), std::nullopt);
  EXPECT_EQ(BytesOfLine<RGB8>(6148914691236517206u), std::nullopt);
  EXPECT_EQ(BytesOfLine<BGRa8>(4611686018427387904u), std::nullopt);
  EXPECT_EQ(BytesOfLine<BGR10p32>(4611686018427387904u), std::nullopt);
  EXPECT_EQ(BytesOfLine<RGB12>(3074457345618258603u), std::nullopt);
  EXPECT_EQ(BytesOfLine<RGBa10>(2305843009213693952u), std::nullopt);
  EXPECT_EQ(BytesOfLine<RGBa10>(kMax), std::nullopt);
}

TEST(CheckedByteCount, RefusesAPixelCountThatDoesntFit64Bits) {
  EXPECT_EQ(CheckedByteCount(kFacts<Mono8>, {size_t{1} << 32, size_t{1} << 32}), std::nullopt);
  EXPECT_EQ(CheckedByteCount(kFacts<Mono8>, {(size_t{1} << 62) + 3, 4}), std::nullopt) << "12 pixels, modulo 2^64";
  EXPECT_EQ(CheckedByteCount(kFacts<Mono8>, {kMax, 2}), std::nullopt);
  EXPECT_EQ(CheckedByteCount(kFacts<Mono10p>, {kMax, kMax}), std::nullopt);
  EXPECT_EQ(CheckedByteCount(kFacts<Mono8>, {4294967295u, 4294967297u}), kMax);
}

TEST(CheckedByteCount, GivesTheLargestBitStreamsWhoseBitsFit64Bits) {
  // 18446744073709551600 bits and the 7 of the rounding are below 2^64.
  EXPECT_EQ(BytesOfLine<Mono10p>(1844674407370955160u), 2305843009213693950u);
  EXPECT_EQ(BytesOfLine<BayerGB10g40Qrv>(1844674407370955160u), 2305843009213693950u);
  EXPECT_EQ(BytesOfLine<BayerRG12p>(1537228672809129300u), 2305843009213693950u);
  EXPECT_EQ(BytesOfLine<Mono12g24Qrv>(1537228672809129300u), 2305843009213693950u);
}

TEST(CheckedByteCount, RefusesABitStreamWhoseRoundingWraps) {
  // 18446744073709551610 and 18446744073709551612 bits fit by themselves, the 7 of the rounding no more.
  EXPECT_EQ(BytesOfLine<Mono10p>(1844674407370955161u), std::nullopt);
  EXPECT_EQ(BytesOfLine<Mono10g40Qrv>(1844674407370955161u), std::nullopt);
  EXPECT_EQ(BytesOfLine<Mono12p>(1537228672809129301u), std::nullopt);
  EXPECT_EQ(BytesOfLine<BayerBG12g24Qrv>(1537228672809129301u), std::nullopt);
}

TEST(CheckedByteCount, RefusesABitStreamWhoseBitsWrap) {
  EXPECT_EQ(BytesOfLine<Mono10p>(1844674407370955162u), std::nullopt);
  EXPECT_EQ(BytesOfLine<Mono12p>(1537228672809129302u), std::nullopt);
  EXPECT_EQ(BytesOfLine<Mono10p>(kMax), std::nullopt);
}

TEST(ByteCountToAllocate, GivesTheBytesOfAnImage) {
  EXPECT_EQ(ByteCountToAllocate(RGB10, {5, 3}), 90u);
  EXPECT_EQ(ByteCountToAllocate(Mono10p, {3, 3}), 12u);
  EXPECT_EQ(ByteCountToAllocate(Invalid, {0, 0}), 0u);
  EXPECT_EQ(ByteCountToAllocate(Mono8, {0, kMax}), 0u);
}

TEST(ByteCountToAllocate, RefusesAnUnknownIdAsTheSizeQueryDoes) {
  try {
    ByteCountToAllocate(PixelFormatId{0x01080002}, {kMax, kMax});
    FAIL() << "nothing was thrown";
  } catch (const ImgException& exception) {
    EXPECT_EQ(static_cast<int>(exception.GetStatus()), -1009);
    EXPECT_EQ(exception.ModuleId(), 9000);
    EXPECT_EQ(exception.Location(), "size_t img::PixelFormatInfo_CalcSizeOfPixels(img::PixelFormatId, size_t)");
    EXPECT_EQ(exception.Text(), "Unknown formatId: 17301506");
  }
}

TEST(ByteCountToAllocate, RefusesASizeThatWraps) {
  EXPECT_THROW(ByteCountToAllocate(Mono8, {(size_t{1} << 62) + 3, 4}), std::bad_alloc);
  EXPECT_THROW(ByteCountToAllocate(RGB8, {6148914691236517206u, 1}), std::bad_alloc);
  EXPECT_THROW(ByteCountToAllocate(Mono10p, {1844674407370955161u, 1}), std::bad_alloc);
}

TEST(ByteCountToAllocate, GoesUpToTheLargestAllocation) {
  const size_t largest = img::LargestAllocation();
  EXPECT_EQ(ByteCountToAllocate(Mono8, {largest, 1}), largest);
  EXPECT_THROW(ByteCountToAllocate(Mono8, {largest + 1, 1}), std::bad_alloc);
  EXPECT_THROW(ByteCountToAllocate(RGBa12, {1, largest / 8 + 1}), std::bad_alloc);
}

}  // namespace
