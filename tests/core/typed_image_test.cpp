#include "core/typed_image.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "buffers/fixed_format_vector_buffer_pool.h"
#include "buffers/raw_image_buffer.h"
#include "buffers/vector_image_buffer.h"
#include "status/exceptions.h"
#include "tests/support/failure.h"

namespace {

using img::IfcImage;
using img::ImageArea;
using img::PixelFormatId;
using img::Point2D;
using img::Size2D;
using img::TImage;
using img::buffer::FixedFormatVectorBufferPool;
using img::buffer::IfcBufferFactory;
using img::buffer::IfcImageBuffer;
using img::buffer::RawImageBuffer;
using img::buffer::VectorImageBuffer;
using img::buffer::VectorImageBufferFactory;
using korvel::internal::ImgException;
using korvel_test::LocatedFailure;
using korvel_test::LocatedFailureOf;

using enum PixelFormatId;

using BufferPtr = std::shared_ptr<IfcImageBuffer>;

constexpr size_t kMax = std::numeric_limits<size_t>::max();

// The bytes of a buffer are 0, 1, 2, ... modulo 251, so that each line of a small image looks different.
uint8_t PatternAt(size_t index) { return static_cast<uint8_t>(index % 251); }

BufferPtr BufferWithPattern(PixelFormatId format, const Size2D& size) {
  BufferPtr buffer = VectorImageBuffer::AllocBuffer(format, size);
  for (size_t i = 0; i < buffer->ByteCount(); ++i) buffer->Data()[i] = PatternAt(i);
  return buffer;
}

size_t OffsetOf(IfcImage& image, size_t x, size_t y) {
  return static_cast<size_t>(image.PixelPointer(x, y) - image.Buffer()->Data());
}

// ------------------------------------------------------------------------------------------------------ properties --

struct Properties {
  PixelFormatId format;
  uint32_t pixelByteCount;
  uint32_t numChannels;
  uint32_t pixelStorageBits;
};

const std::vector<Properties>& AllProperties() {
  static const std::vector<Properties> properties = {
      {Invalid, 1, 1, 8},
      {Mono8, 1, 1, 8},
      {BayerGR8, 1, 1, 8},
      {BayerRG8, 1, 1, 8},
      {BayerGB8, 1, 1, 8},
      {BayerBG8, 1, 1, 8},
      {Mono10p, 2, 1, 10},
      {BayerBG10p, 2, 1, 10},
      {BayerGB10p, 2, 1, 10},
      {BayerGR10p, 2, 1, 10},
      {BayerRG10p, 2, 1, 10},
      {BayerRG10g40Qrv, 2, 1, 10},
      {BayerGB10g40Qrv, 2, 1, 10},
      {BayerGR10g40Qrv, 2, 1, 10},
      {BayerBG10g40Qrv, 2, 1, 10},
      {Mono10g40Qrv, 2, 1, 10},
      {Mono12p, 2, 1, 12},
      {BayerBG12p, 2, 1, 12},
      {BayerGB12p, 2, 1, 12},
      {BayerGR12p, 2, 1, 12},
      {BayerRG12p, 2, 1, 12},
      {BayerRG12g24Qrv, 2, 1, 12},
      {BayerGB12g24Qrv, 2, 1, 12},
      {BayerGR12g24Qrv, 2, 1, 12},
      {BayerBG12g24Qrv, 2, 1, 12},
      {Mono12g24Qrv, 2, 1, 12},
      {Mono10, 2, 1, 16},
      {Mono12, 2, 1, 16},
      {BayerGR10, 2, 1, 16},
      {BayerRG10, 2, 1, 16},
      {BayerGB10, 2, 1, 16},
      {BayerBG10, 2, 1, 16},
      {BayerGR12, 2, 1, 16},
      {BayerRG12, 2, 1, 16},
      {BayerGB12, 2, 1, 16},
      {BayerBG12, 2, 1, 16},
      {RGB8, 3, 3, 24},
      {BGR8, 3, 3, 24},
      {RGBa8, 4, 4, 32},
      {BGRa8, 4, 4, 32},
      {RGB10p32, 4, 3, 32},
      {BGR10p32, 4, 3, 32},
      {RGB10, 6, 3, 48},
      {BGR10, 6, 3, 48},
      {RGB12, 6, 3, 48},
      {BGR12, 6, 3, 48},
      {RGBa10, 8, 4, 64},
      {BGRa10, 8, 4, 64},
      {RGBa12, 8, 4, 64},
      {BGRa12, 8, 4, 64},
  };
  return properties;
}

bool IsBitStream(const Properties& properties) {
  return properties.pixelStorageBits < 16 && properties.pixelByteCount == 2;
}

TEST(TypedImage, TellsThePropertiesOfEachOfThe50Formats) {
  ASSERT_EQ(AllProperties().size(), 50u);
  for (const Properties& expected : AllProperties()) {
    SCOPED_TRACE(static_cast<uint32_t>(expected.format));
    const auto image = VectorImageBuffer::AllocBuffer(expected.format, {3, 2})->CreateImage();
    EXPECT_EQ(image->PixelFormat(), expected.format);
    EXPECT_EQ(image->PixelByteCount(), expected.pixelByteCount);
    EXPECT_EQ(image->NumChannels(), expected.numChannels);
    EXPECT_EQ(image->PixelStorageBits(), expected.pixelStorageBits);
  }
}

TEST(TypedImage, CountsTheBytesOfItselfAndOfALineInEachFormat) {
  for (const Properties& expected : AllProperties()) {
    SCOPED_TRACE(static_cast<uint32_t>(expected.format));
    const auto image = VectorImageBuffer::AllocBuffer(expected.format, {3, 2})->CreateImage();
    if (!IsBitStream(expected)) {
      EXPECT_EQ(image->ByteCount(), 6 * expected.pixelByteCount);
      EXPECT_EQ(image->LineByteCount(), 3 * expected.pixelByteCount);
    } else {
      // 60 or 72 bits in all, 30 or 36 in a line.
      EXPECT_EQ(image->ByteCount(), expected.pixelStorageBits == 10 ? 8u : 9u);
      EXPECT_EQ(image->LineByteCount(), expected.pixelStorageBits == 10 ? 4u : 5u);
    }
  }
}

TEST(TypedImage, CountsBytesOfItsOwnAreaAndNotOfTheBuffer) {
  const auto image = VectorImageBuffer::AllocBuffer(Mono12p, {8, 8})->CreateImage();
  const auto region = image->Region({1, 1}, {3, 2});
  EXPECT_EQ(region->ByteCount(), 9u);
  EXPECT_EQ(region->LineByteCount(), 5u);
}

TEST(TypedImage, StepsByItsPixelSizeAndByTheLinesOfItsBuffer) {
  for (const Properties& expected : AllProperties()) {
    SCOPED_TRACE(static_cast<uint32_t>(expected.format));
    const auto image = VectorImageBuffer::AllocBuffer(expected.format, {7, 5})->CreateImage();
    EXPECT_EQ(OffsetOf(*image, 0, 0), 0u);
    EXPECT_EQ(OffsetOf(*image, 1, 0), expected.pixelByteCount);
    if (IsBitStream(expected)) continue;  // the pointer is exact at (0, 0) only
    EXPECT_EQ(OffsetOf(*image, 0, 1), 7 * expected.pixelByteCount);
    EXPECT_EQ(OffsetOf(*image, 6, 4), 34 * expected.pixelByteCount);
    EXPECT_EQ(OffsetOf(*image, 7, 4), 35 * expected.pixelByteCount);
  }
}

TEST(TypedImage, GivesTheSameAddressThroughAConstantImage) {
  const auto image = VectorImageBuffer::AllocBuffer(RGB12, {7, 5})->CreateImage();
  const IfcImage& constant = *image;
  EXPECT_EQ(constant.PixelPointer(3, 2), image->PixelPointer(3, 2));
}

TEST(TypedImage, CountsTwoBytesAPixelInABitStream) {
  const auto image = VectorImageBuffer::AllocBuffer(Mono10p, {4, 1})->CreateImage();
  EXPECT_EQ(OffsetOf(*image, 1, 0), 2u);
}

TEST(TypedImage, MayNeedMoreBytesForItsLinesThanForItsWhole) {
  const auto image = VectorImageBuffer::AllocBuffer(Mono12p, {3, 2})->CreateImage();
  EXPECT_EQ(image->LineByteCount(), 5u);
  EXPECT_EQ(image->ByteCount(), 9u);
}

TEST(TypedImage, OverwritesItsSizeUncheckedAndLeavesItsBufferAlone) {
  const BufferPtr buffer = VectorImageBuffer::AllocBuffer(Mono8, {7, 5});
  const auto image = buffer->CreateImage();
  image->SetSize({100, 200});
  EXPECT_EQ(image->Area(), (ImageArea{{0, 0}, {100, 200}}));
  EXPECT_EQ(image->ByteCount(), 20000u);
  EXPECT_EQ(image->LineByteCount(), 100u);
  EXPECT_EQ(buffer->Size(), (Size2D{7, 5}));
}

// ---------------------------------------------------------------------------------------------------- construction --

TEST(TypedImageOverAWholeBuffer, HasItsSizeAndSharesIt) {
  const BufferPtr buffer = VectorImageBuffer::AllocBuffer(Mono10, {7, 5});
  const TImage<Mono10> image(buffer);
  EXPECT_EQ(image.Area(), (ImageArea{{0, 0}, {7, 5}}));
  EXPECT_EQ(image.Buffer(), buffer);
  EXPECT_EQ(buffer.use_count(), 2);
}

TEST(TypedImageOverAWholeBuffer, RefusesABufferOfAnotherFormat) {
  const BufferPtr buffer = VectorImageBuffer::AllocBuffer(Mono10, {7, 5});
  EXPECT_EQ(
      LocatedFailureOf([&] { const TImage<Mono8> image(buffer); }),
      (LocatedFailure{-1009, 9000,
                      "img::TImage<img::PixelFormatId::Mono8>::TImage(const std::shared_ptr<buffer::IfcImageBuffer> &) "
                      "[formatId = img::PixelFormatId::Mono8]",
                      "Image buffer has wrong pixel format."}));
  EXPECT_EQ(buffer.use_count(), 1);
}

const std::string kRectangleLocation =
    "img::TImage<img::PixelFormatId::Mono8>::TImage(const img::Point2D &, const img::Size2D &, const "
    "std::shared_ptr<buffer::IfcImageBuffer> &) [formatId = img::PixelFormatId::Mono8]";

TEST(TypedImageOverARectangle, KeepsItsOffsetAndSize) {
  const BufferPtr buffer = VectorImageBuffer::AllocBuffer(Mono8, {7, 5});
  TImage<Mono8> image({2, 1}, {5, 4}, buffer);
  EXPECT_EQ(image.Area(), (ImageArea{{2, 1}, {5, 4}}));
  EXPECT_EQ(OffsetOf(image, 0, 0), 9u);
  EXPECT_EQ(OffsetOf(image, 4, 3), 34u);
}

TEST(TypedImageOverARectangle, RefusesANullBufferBeforeAnythingElse) {
  EXPECT_EQ(LocatedFailureOf([] {
              const TImage<Mono8> image({9, 9}, {9, 9}, nullptr);
            }),
            (LocatedFailure{-1009, 9000, kRectangleLocation, "Invalid buffer set."}));
}

TEST(TypedImageOverARectangle, RefusesABufferThatIsTooSmall) {
  const BufferPtr buffer = VectorImageBuffer::AllocBuffer(Mono8, {7, 5});
  const LocatedFailure expected{-1009, 9000, kRectangleLocation, "Image buffer is to small."};
  EXPECT_EQ(LocatedFailureOf([&] { const TImage<Mono8> image({2, 1}, {6, 4}, buffer); }), expected);
  EXPECT_EQ(LocatedFailureOf([&] { const TImage<Mono8> image({2, 1}, {5, 5}, buffer); }), expected);
  EXPECT_EQ(LocatedFailureOf([&] { const TImage<Mono8> image({8, 0}, {0, 0}, buffer); }), expected);
  EXPECT_EQ(LocatedFailureOf([&] { const TImage<Mono8> image({0, 6}, {0, 0}, buffer); }), expected);
}

TEST(TypedImageOverARectangle, RefusesARectangleWhoseFarEdgeWraps) {
  const BufferPtr buffer = VectorImageBuffer::AllocBuffer(Mono8, {7, 5});
  const LocatedFailure expected{-1009, 9000, kRectangleLocation, "Image buffer is to small."};
  EXPECT_EQ(LocatedFailureOf([&] { const TImage<Mono8> image({kMax, 0}, {2, 1}, buffer); }), expected);
  EXPECT_EQ(LocatedFailureOf([&] { const TImage<Mono8> image({0, 2}, {1, kMax}, buffer); }), expected);
}

TEST(TypedImageOverARectangle, JudgesTheSizeBeforeTheFormat) {
  const BufferPtr buffer = VectorImageBuffer::AllocBuffer(Mono10, {7, 5});
  EXPECT_EQ(LocatedFailureOf([&] {
              const TImage<Mono8> image({0, 0}, {8, 5}, buffer);
            }),
            (LocatedFailure{-1009, 9000, kRectangleLocation, "Image buffer is to small."}));
  EXPECT_EQ(LocatedFailureOf([&] {
              const TImage<Mono8> image({0, 0}, {7, 5}, buffer);
            }),
            (LocatedFailure{-1009, 9000, kRectangleLocation, "Image buffer has wrong pixel format."}));
}

// --------------------------------------------------------------------------------------------------------- regions --

TEST(Region, MayTouchTheRightAndTheBottomEdge) {
  const auto image = VectorImageBuffer::AllocBuffer(Mono8, {7, 5})->CreateImage();
  const auto region = image->Region({3, 2}, {4, 3});
  EXPECT_EQ(region->Area(), (ImageArea{{3, 2}, {4, 3}}));
}

TEST(Region, MustNotGoOnePixelBeyond) {
  const auto image = VectorImageBuffer::AllocBuffer(BayerGR12p, {7, 5})->CreateImage();
  const LocatedFailure expected{
      -1009, 9000,
      "virtual std::unique_ptr<IfcImage> img::TImage<img::PixelFormatId::BayerGR12p>::Region(const img::Point2D &, "
      "const img::Size2D &) [formatId = img::PixelFormatId::BayerGR12p]",
      "Invalid region!"};
  EXPECT_EQ(LocatedFailureOf([&] { image->Region({3, 2}, {5, 3}); }), expected);
  EXPECT_EQ(LocatedFailureOf([&] { image->Region({3, 2}, {4, 4}); }), expected);
  EXPECT_EQ(LocatedFailureOf([&] { image->Region({8, 0}, {0, 0}); }), expected);
}

TEST(Region, MustNotWrapAround) {
  const auto image = VectorImageBuffer::AllocBuffer(Mono8, {7, 5})->CreateImage();
  EXPECT_THROW(image->Region({kMax, 0}, {1, 1}), ImgException);
  EXPECT_THROW(image->Region({1, 0}, {kMax, 1}), ImgException);
  EXPECT_THROW(image->Region({0, kMax}, {1, 1}), ImgException);
  EXPECT_THROW(image->Region({0, 1}, {1, kMax}), ImgException);
}

TEST(Region, OfARegionAddsTheOffsetsUp) {
  const auto image = VectorImageBuffer::AllocBuffer(RGB8, {9, 8})->CreateImage();
  const auto outer = image->Region({2, 3}, {5, 4});
  const auto inner = outer->Region({1, 2}, {4, 2});
  EXPECT_EQ(inner->Area(), (ImageArea{{3, 5}, {4, 2}}));
  EXPECT_EQ(OffsetOf(*inner, 0, 0), (5 * 9 + 3) * 3u);
}

TEST(Region, OfARegionIsLimitedByThatRegionAndNotByTheBuffer) {
  const auto image = VectorImageBuffer::AllocBuffer(Mono8, {9, 8})->CreateImage();
  const auto outer = image->Region({2, 3}, {5, 4});
  EXPECT_THROW(outer->Region({1, 2}, {5, 2}), ImgException);
  EXPECT_THROW(outer->Region({1, 2}, {4, 3}), ImgException);
}

TEST(Region, SharesThePixelsOfItsParent) {
  const auto image = VectorImageBuffer::AllocBuffer(Mono8, {7, 5})->CreateImage();
  const auto region = image->Region({3, 2}, {4, 3});
  *region->PixelPointer(1, 1) = 0xA5;
  EXPECT_EQ(*image->PixelPointer(4, 3), 0xA5);
  EXPECT_EQ(region->Buffer(), image->Buffer());
}

TEST(Region, KeepsThePixelsAliveAfterItsParent) {
  std::unique_ptr<IfcImage> region;
  {
    const auto image = BufferWithPattern(Mono8, {7, 5})->CreateImage();
    region = image->Region({3, 2}, {4, 3});
  }
  EXPECT_EQ(*region->PixelPointer(0, 0), 17);
}

// ---------------------------------------------------------------------------------------------------------- clones --

TEST(CloneWithAFactory, CopiesAWholeImageOfEveryFormat) {
  VectorImageBufferFactory factory;
  for (const Properties& properties : AllProperties()) {
    SCOPED_TRACE(static_cast<uint32_t>(properties.format));
    const BufferPtr buffer = BufferWithPattern(properties.format, {3, 3});
    const auto clone = buffer->CreateImage()->Clone(factory);
    ASSERT_NE(clone, nullptr);
    EXPECT_EQ(clone->PixelFormat(), properties.format);
    EXPECT_EQ(clone->Area(), (ImageArea{{0, 0}, {3, 3}}));
    EXPECT_EQ(clone->Buffer()->Size(), (Size2D{3, 3}));
    ASSERT_EQ(clone->Buffer()->ByteCount(), buffer->ByteCount());
    EXPECT_NE(clone->Buffer()->Data(), buffer->Data());
    EXPECT_TRUE(std::equal(buffer->Data(), buffer->Data() + buffer->ByteCount(), clone->Buffer()->Data()));
  }
}

TEST(CloneWithAFactory, CopiesARegionOfFullWidthFromItsOwnFirstPixel) {
  VectorImageBufferFactory factory;
  const auto image = BufferWithPattern(RGB8, {4, 5})->CreateImage();
  const auto clone = image->Region({0, 2}, {4, 2})->Clone(factory);
  EXPECT_EQ(clone->Area(), (ImageArea{{0, 0}, {4, 2}}));
  for (size_t i = 0; i < 24; ++i) EXPECT_EQ(clone->Buffer()->Data()[i], PatternAt(24 + i)) << i;
}

TEST(CloneWithAFactory, CopiesANarrowerRegionLineByLine) {
  VectorImageBufferFactory factory;
  const auto image = BufferWithPattern(Mono10, {6, 5})->CreateImage();
  const auto clone = image->Region({2, 1}, {3, 3})->Clone(factory);
  EXPECT_EQ(clone->Area(), (ImageArea{{0, 0}, {3, 3}}));
  for (size_t y = 0; y < 3; ++y) {
    for (size_t i = 0; i < 6; ++i) {
      EXPECT_EQ(clone->PixelPointer(0, y)[i], PatternAt((y + 1) * 12 + 4 + i)) << y << ", " << i;
    }
  }
}

// Makes buffers in the middle of memory that it watches.
class GuardedFactory final : public IfcBufferFactory {
 public:
  static constexpr size_t kBefore = 64;
  static constexpr uint8_t kUntouched = 0xEE;

  BufferPtr AllocBuffer(PixelFormatId format, const Size2D& size) override {
    memory_.assign(4096, kUntouched);
    BufferPtr buffer = RawImageBuffer::CreateBuffer(format, memory_.data() + kBefore, size);
    byteCount_ = buffer->ByteCount();
    return buffer;
  }

  // Bytes outside the last buffer that somebody wrote to.
  size_t BytesHit() const {
    size_t hit = 0;
    for (size_t i = 0; i < memory_.size(); ++i) {
      const bool inside = i >= kBefore && i < kBefore + byteCount_;
      if (!inside && memory_[i] != kUntouched) ++hit;
    }
    return hit;
  }

 private:
  std::vector<uint8_t> memory_;
  size_t byteCount_ = 0;
};

TEST(CloneWithAFactory, StaysWithinTheMemoryOfTheCopyOfANarrowerRegionInEveryFormat) {
  for (const Properties& properties : AllProperties()) {
    SCOPED_TRACE(static_cast<uint32_t>(properties.format));
    GuardedFactory factory;
    std::vector<uint8_t> memory(4096, 1);
    const BufferPtr buffer = RawImageBuffer::CreateBuffer(properties.format, memory.data(), {8, 8});
    buffer->CreateImage()->Region({0, 0}, {4, 8})->Clone(factory);
    EXPECT_EQ(factory.BytesHit(), 0u);
  }
}

TEST(CloneWithAFactory, ReadsNoByteBeyondTheSourceOfAnyFormat) {
  for (const Properties& properties : AllProperties()) {
    SCOPED_TRACE(static_cast<uint32_t>(properties.format));
    GuardedFactory factory;
    constexpr uint8_t kInside = 1;
    constexpr uint8_t kOutside = 2;
    std::vector<uint8_t> memory(4096, kOutside);
    const BufferPtr buffer = RawImageBuffer::CreateBuffer(properties.format, memory.data(), {8, 8});
    std::fill_n(memory.begin(), buffer->ByteCount(), kInside);
    const auto clone = buffer->CreateImage()->Region({0, 4}, {8, 4})->Clone(factory);
    const uint8_t* const copied = clone->Buffer()->Data();
    EXPECT_EQ(std::count(copied, copied + clone->ByteCount(), kOutside), 0);
  }
}

TEST(CloneWithAFactory, TakesItsMemoryFromThatFactory) {
  const auto pool = std::make_shared<FixedFormatVectorBufferPool>(35, 1, 1, std::weak_ptr<IfcBufferFactory>());
  const auto image = BufferWithPattern(Mono8, {7, 5})->CreateImage();
  const auto clone = image->Clone(*pool);
  EXPECT_EQ(pool->NumBuffersInUse(), 1u);
  EXPECT_EQ(*clone->PixelPointer(6, 4), 34);
}

TEST(CloneWithAFactory, LetsTheFactorysFailureThrough) {
  const auto pool = std::make_shared<FixedFormatVectorBufferPool>(34, 1, 1, std::weak_ptr<IfcBufferFactory>());
  const auto image = BufferWithPattern(Mono8, {7, 5})->CreateImage();
  EXPECT_THROW(image->Clone(*pool), ImgException);
}

TEST(CloneWithAFactory, CopiesAnImageWithoutPixels) {
  VectorImageBufferFactory factory;
  const auto clone = VectorImageBuffer::AllocBuffer(Invalid, {0, 0})->CreateImage()->Clone(factory);
  EXPECT_EQ(clone->Area(), (ImageArea{{0, 0}, {0, 0}}));
  EXPECT_EQ(clone->Buffer()->Data(), nullptr);
}

TEST(Clone, OfAnImageWhoseMemoryWasHandedOverCopiesNothing) {
  const BufferPtr buffer = BufferWithPattern(PixelFormatId::BayerRG8, {4, 4});
  const BufferPtr changed = buffer->ChangeFormat(PixelFormatId::BayerGR8);
  const auto clone = std::as_const(*buffer->CreateImage()).Clone();
  ASSERT_NE(clone, nullptr);
  EXPECT_EQ(*clone->PixelPointer(3, 3), 0);
}

TEST(Clone, OfAnImageOverAVectorSharesNoMemory) {
  const auto image = BufferWithPattern(Mono12, {4, 3})->CreateImage();
  const auto clone = std::as_const(*image).Clone();
  ASSERT_NE(clone, nullptr);
  EXPECT_NE(clone->Buffer(), image->Buffer());
  *clone->PixelPointer(0, 0) = 99;
  EXPECT_EQ(*image->PixelPointer(0, 0), 0);
  EXPECT_EQ(*clone->PixelPointer(1, 2), PatternAt(18));
}

TEST(Clone, OfARegionOverAVectorIsTheRegionAlone) {
  const auto image = BufferWithPattern(Mono8, {7, 5})->CreateImage();
  const auto clone = image->Region({3, 2}, {4, 3})->Clone();
  ASSERT_NE(clone, nullptr);
  EXPECT_EQ(clone->Buffer()->Size(), (Size2D{4, 3}));
  EXPECT_EQ(*clone->PixelPointer(0, 0), 17);
  EXPECT_EQ(*clone->PixelPointer(3, 2), 34);
}

TEST(Clone, OfAnImageInAPoolWithoutAParentTakesTheWholeBufferFromThatPool) {
  const auto pool = std::make_shared<FixedFormatVectorBufferPool>(35, 1, 2, std::weak_ptr<IfcBufferFactory>());
  const auto image = pool->AllocBuffer(Mono8, {7, 5})->CreateImage();
  *image->PixelPointer(6, 4) = 77;
  const auto clone = image->Clone();
  ASSERT_NE(clone, nullptr);
  EXPECT_EQ(pool->NumBuffersInUse(), 2u);
  EXPECT_NE(clone->Buffer()->Data(), image->Buffer()->Data());
  EXPECT_EQ(*clone->PixelPointer(6, 4), 77);
}

TEST(Clone, OfAPartOfABufferWithoutAFactoryIsNull) {
  const auto pool = std::make_shared<FixedFormatVectorBufferPool>(35, 1, 2, std::weak_ptr<IfcBufferFactory>());
  const auto image = pool->AllocBuffer(Mono8, {7, 5})->CreateImage();
  EXPECT_EQ(image->Region({0, 0}, {7, 4})->Clone(), nullptr);
  EXPECT_EQ(pool->NumBuffersInUse(), 1u);
}

TEST(Clone, OfAnImageOverTheCallersMemoryFails) {
  std::vector<uint8_t> memory(35);
  const auto image = RawImageBuffer::CreateBuffer(Mono8, memory.data(), {7, 5})->CreateImage();
  const auto failure = LocatedFailureOf([&] { image->Clone(); });
  ASSERT_TRUE(failure.has_value());
  EXPECT_EQ(failure->status, -1003);
  EXPECT_EQ(failure->text, "");
}

}  // namespace
