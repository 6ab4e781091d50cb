#include "processing/geometry/image_transformer.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <string>
#include <utility>

#include "buffers/fixed_format_vector_buffer_pool.h"
#include "buffers/multi_format_buffer_pool.h"
#include "tests/model/format_table.h"
#include "tests/model/geometry_model.h"
#include "tests/support/test_images.h"

namespace {

using img::PixelFormatId;
using img::Size2D;
using img::processing::ImageTransformer;
using img::processing::MirrorDirection;
using img::processing::RotationAngle;
using korvel_test::Bytes;
using korvel_test::BytesOf;
using korvel_test::Failure;
using korvel_test::FailureOf;
using korvel_test::Fill;
using korvel_test::kFormatTable;
using korvel_test::LocatedFailure;
using korvel_test::LocatedFailureOf;
using korvel_test::MakeFilledImage;
using korvel_test::ModelImage;
using korvel_test::ModelMotion;
using korvel_test::ModelMove;
using korvel_test::TestImage;

using enum korvel_test::ModelMotion;

PixelFormatId IdOf(uint32_t id) { return static_cast<PixelFormatId>(id); }

class TransformerTest : public testing::Test {
 protected:
  std::shared_ptr<img::IfcImage> Moved(const img::IfcImage& image, ModelMotion motion) {
    switch (motion) {
      case kMirrorLeftRight:
        return transformer.mirrorImage(image, MirrorDirection::LeftRight);
      case kMirrorUpDown:
        return transformer.mirrorImage(image, MirrorDirection::UpDown);
      case kMirrorBoth:
        return transformer.mirrorImage(image, MirrorDirection::UpDownLeftRight);
      case kRotate90:
        return transformer.rotateImage(image, RotationAngle::Degree90);
      case kRotate180:
        return transformer.rotateImage(image, RotationAngle::Degree180);
      case kRotate270:
        return transformer.rotateImage(image, RotationAngle::Degree270);
    }
    return nullptr;
  }
  std::shared_ptr<img::buffer::IfcImageBuffer> MoveInPlace(img::IfcImage& image, ModelMotion motion) {
    switch (motion) {
      case kMirrorLeftRight:
        return transformer.mirrorImageInPlace(image, MirrorDirection::LeftRight);
      case kMirrorUpDown:
        return transformer.mirrorImageInPlace(image, MirrorDirection::UpDown);
      case kMirrorBoth:
        return transformer.mirrorImageInPlace(image, MirrorDirection::UpDownLeftRight);
      case kRotate90:
        return transformer.rotateImageInPlace(image, RotationAngle::Degree90);
      case kRotate180:
        return transformer.rotateImageInPlace(image, RotationAngle::Degree180);
      case kRotate270:
        return transformer.rotateImageInPlace(image, RotationAngle::Degree270);
    }
    return nullptr;
  }

  std::shared_ptr<img::buffer::MultiFormatBufferPool> pool = std::make_shared<img::buffer::MultiFormatBufferPool>(
      std::make_shared<img::buffer::FixedFormatVectorBufferPool::Factory>(), 1);
  ImageTransformer transformer{pool};
};

TEST_F(TransformerTest, HasNumbersForDirectionsAndAngles) {
  EXPECT_EQ(static_cast<int>(MirrorDirection::LeftRight), 1);
  EXPECT_EQ(static_cast<int>(MirrorDirection::UpDown), 2);
  EXPECT_EQ(static_cast<int>(MirrorDirection::UpDownLeftRight), 3);
  EXPECT_EQ(static_cast<int>(RotationAngle::Degree90), 90);
  EXPECT_EQ(static_cast<int>(RotationAngle::Degree180), 180);
  EXPECT_EQ(static_cast<int>(RotationAngle::Degree270), 270);
  EXPECT_EQ(sizeof(RotationAngle), 2u);
}

TEST_F(TransformerTest, RefusesOtherDirectionsBeforeAPixelMoves) {
  for (const uint32_t number : {0u, 4u, 0xFFFFFFFFu}) {
    const TestImage image(PixelFormatId::BayerRG8, 2, 2, Bytes{1, 2, 3, 4});
    const auto direction = static_cast<MirrorDirection>(number);
    EXPECT_EQ(LocatedFailureOf([&] { transformer.mirrorImage(*image.Shared(), direction); }),
              (LocatedFailure{1, 9003,
                              "std::shared_ptr<img::IfcImage> img::processing::ImageTransformer::mirrorImage(const "
                              "img::IfcImage &, const img::processing::MirrorDirection)",
                              "img::ImageTransformer: Mirror mode not supported!"}));
    EXPECT_EQ(LocatedFailureOf([&] { transformer.mirrorImageInPlace(*image.Shared(), direction); }),
              (LocatedFailure{1, 9003,
                              "std::shared_ptr<img::buffer::IfcImageBuffer> "
                              "img::processing::ImageTransformer::mirrorImageInPlace(img::IfcImage &, const "
                              "img::processing::MirrorDirection)",
                              "img::ImageTransformer: Mirror mode not supported!"}));
    EXPECT_EQ(image.Content(), (Bytes{1, 2, 3, 4}));
    EXPECT_EQ(image.Shared()->PixelFormat(), PixelFormatId::BayerRG8);
  }
}

TEST_F(TransformerTest, RefusesOtherAnglesBeforeAPixelMoves) {
  for (const uint16_t number : std::initializer_list<uint16_t>{0, 1, 45, 360, 65535}) {
    const TestImage image(PixelFormatId::BayerRG8, 2, 1, Bytes{1, 2});
    const auto angle = static_cast<RotationAngle>(number);
    EXPECT_EQ(LocatedFailureOf([&] { transformer.rotateImage(*image.Shared(), angle); }),
              (LocatedFailure{1, 9003,
                              "std::shared_ptr<img::IfcImage> img::processing::ImageTransformer::rotateImage(const "
                              "img::IfcImage &, const img::processing::RotationAngle)",
                              "img::ImageTransformer: Rotation mode not supported!"}));
    EXPECT_EQ(LocatedFailureOf([&] { transformer.rotateImageInPlace(*image.Shared(), angle); }),
              (LocatedFailure{1, 9003,
                              "std::shared_ptr<img::buffer::IfcImageBuffer> "
                              "img::processing::ImageTransformer::rotateImageInPlace(img::IfcImage &, const "
                              "img::processing::RotationAngle)",
                              "img::ImageTransformer: Rotation mode not supported!"}));
    EXPECT_EQ(image.Content(), (Bytes{1, 2}));
    EXPECT_EQ(image.Shared()->Area().size, (Size2D{2, 1}));
  }
}

TEST_F(TransformerTest, RotatesNoPackedFormatWhateverTheAngle) {
  size_t refused = 0;
  for (const auto& row : kFormatTable) {
    if (!row.packed || !korvel_test::IsPublicFormat(row)) continue;
    const ModelImage input = MakeFilledImage(row.id, 4, 3, Fill::kGarbage, row.id);
    const TestImage image(IdOf(row.id), 4, 3, input.bytes);
    const Failure expected{7, 9003, "Packed image formats not yet implemented: " + std::string(row.name)};
    for (const uint16_t angle : std::initializer_list<uint16_t>{90, 180, 270, 45}) {
      EXPECT_EQ(FailureOf([&] { transformer.rotateImage(*image.Shared(), RotationAngle{angle}); }), expected);
      EXPECT_EQ(FailureOf([&] { transformer.rotateImageInPlace(*image.Shared(), RotationAngle{angle}); }), expected);
    }
    EXPECT_EQ(image.Content(), input.bytes);
    ++refused;
  }
  EXPECT_EQ(refused, 22u);
}

TEST_F(TransformerTest, MirrorsWordsOfThreeFields) {
  for (const PixelFormatId format : {PixelFormatId::RGB10p32, PixelFormatId::BGR10p32}) {
    for (const auto& [width, height] : {std::pair<size_t, size_t>{1, 1}, {4, 2}, {5, 3}, {34, 16}, {33, 17}}) {
      for (const ModelMotion motion : {kMirrorLeftRight, kMirrorUpDown, kMirrorBoth}) {
        const ModelImage input =
            MakeFilledImage(static_cast<uint32_t>(format), width, height, Fill::kGarbage, width * height);
        const TestImage image(format, width, height, input.bytes);
        const auto output = Moved(*image.Shared(), motion);
        EXPECT_EQ(output->PixelFormat(), format);
        EXPECT_EQ(BytesOf(*output), ModelMove(input, motion).bytes) << NameOf(motion);
        EXPECT_EQ(MoveInPlace(*image.Shared(), motion), nullptr);
        EXPECT_EQ(image.Content(), ModelMove(input, motion).bytes) << NameOf(motion);
      }
    }
  }
}

TEST_F(TransformerTest, GivesABufferWhereTheFormatChangesInPlace) {
  for (const PixelFormatId format : {PixelFormatId::BayerGR8, PixelFormatId::BayerBG12, PixelFormatId::RGB8}) {
    for (const auto& [width, height] : {std::pair<size_t, size_t>{4, 2}, {5, 2}, {4, 3}, {5, 3}}) {
      for (const ModelMotion motion : korvel_test::kAllMotions) {
        SCOPED_TRACE(testing::Message() << NameOf(motion) << ", " << width << " x " << height);
        const ModelImage input =
            MakeFilledImage(static_cast<uint32_t>(format), width, height, Fill::kRandom, width * height);
        const ModelImage expected = ModelMove(input, motion);
        const TestImage image(format, width, height, input.bytes);
        const auto buffer = MoveInPlace(*image.Shared(), motion);
        ASSERT_EQ(buffer != nullptr, expected.format != input.format);
        EXPECT_EQ(image.Content(), expected.bytes);
        const auto result = buffer == nullptr ? image.Shared()->Buffer() : buffer;
        EXPECT_EQ(result->Format(), IdOf(expected.format));
        EXPECT_EQ(result->Size(), (Size2D{expected.width, expected.height}));
        EXPECT_EQ(result->Data(), image.Content().data()) << "no pixel is copied for the format";
        if (buffer == nullptr) {
          EXPECT_EQ(image.Shared()->Area().size, (Size2D{expected.width, expected.height}));
        }
      }
    }
  }
}

TEST_F(TransformerTest, GivesNewImagesTheFormatOfTheirBuffer) {
  const TestImage image(PixelFormatId::BayerGR10, 4, 2);
  for (const ModelMotion motion : korvel_test::kAllMotions) {
    const auto output = Moved(*image.Shared(), motion);
    const auto expected =
        IdOf(korvel_test::ModelFormatAfter(static_cast<uint32_t>(PixelFormatId::BayerGR10), 4, 2, motion));
    EXPECT_EQ(output->PixelFormat(), expected) << NameOf(motion);
    EXPECT_EQ(output->Buffer()->Format(), expected) << NameOf(motion);
    EXPECT_EQ(output->Buffer()->Size(), output->Area().size) << NameOf(motion);
  }
  EXPECT_EQ(pool->NumBuffersInUse(), 0u);
  EXPECT_EQ(pool->NumBuffers(), 1u) << "one buffer serves all of them in turn";
}

TEST_F(TransformerTest, HoldsPoolBuffersAsLongAsTheirImages) {
  const TestImage image(PixelFormatId::BayerGR8, 6, 4);
  auto first = Moved(*image.Shared(), kMirrorLeftRight);
  auto second = Moved(*image.Shared(), kRotate90);
  EXPECT_EQ(pool->NumBuffersInUse(), 2u);
  auto retagged = MoveInPlace(*first, kMirrorLeftRight);
  ASSERT_NE(retagged, nullptr);
  EXPECT_EQ(pool->NumBuffersInUse(), 2u);
  first.reset();
  EXPECT_EQ(pool->NumBuffersInUse(), 2u) << "the memory has its new owner";
  retagged.reset();
  EXPECT_EQ(pool->NumBuffersInUse(), 1u);
  second.reset();
  EXPECT_EQ(pool->NumBuffersInUse(), 0u);
  EXPECT_EQ(pool->NumBuffers(), 2u);
}

TEST_F(TransformerTest, MirrorsAndRotatesAPartOfAnImage) {
  for (const PixelFormatId format : {PixelFormatId::Mono8, PixelFormatId::BayerGR10, PixelFormatId::RGBa8}) {
    const ModelImage whole = MakeFilledImage(static_cast<uint32_t>(format), 24, 12, Fill::kGarbage, 5);
    const size_t pixelBytes = whole.bytes.size() / (24 * 12);
    const TestImage image(format, 24, 12, whole.bytes);
    const auto part = image.Shared()->Region({3, 2}, {18, 8});
    Bytes bytes;
    for (size_t y = 0; y < 8; ++y) {
      const uint8_t* const line = part->PixelPointer(0, y);
      bytes.insert(bytes.end(), line, line + 18 * pixelBytes);
    }
    const ModelImage input = korvel_test::MakeModelImage(whole.format, 18, 8, bytes);
    for (const ModelMotion motion : korvel_test::kAllMotions) {
      EXPECT_EQ(BytesOf(*Moved(*part, motion)), ModelMove(input, motion).bytes) << NameOf(motion);
    }
    EXPECT_EQ(image.Content(), whole.bytes);
  }
}

TEST_F(TransformerTest, ChangesNothingWhereAQuarterTurnFindsNoMemory) {
  uint8_t byte = 7;
  const auto buffer =
      img::buffer::RawImageBuffer::CreateBuffer(PixelFormatId::BayerGR8, &byte, Size2D{size_t{1} << 62, 1});
  const auto image = buffer->CreateImage();
  EXPECT_ANY_THROW(transformer.rotateImageInPlace(*image, RotationAngle::Degree90));
  EXPECT_ANY_THROW(transformer.rotateImageInPlace(*image, RotationAngle::Degree270));
  EXPECT_EQ(buffer->Size(), (Size2D{size_t{1} << 62, 1}));
  EXPECT_EQ(image->Area().size, (Size2D{size_t{1} << 62, 1}));
  EXPECT_EQ(byte, 7);
}

}  // namespace
