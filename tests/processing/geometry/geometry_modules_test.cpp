// The modules that the transformer holds, each by itself. One object of each serves all formats in turn.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <utility>

#include "processing/geometry/image_mirror.h"
#include "processing/geometry/image_rotation.h"
#include "tests/model/format_table.h"
#include "tests/model/geometry_model.h"
#include "tests/support/test_images.h"

namespace {

using img::PixelFormatId;
using img::Size2D;
using korvel_test::Bytes;
using korvel_test::Fill;
using korvel_test::kFormatTable;
using korvel_test::MakeFilledImage;
using korvel_test::ModelImage;
using korvel_test::ModelMotion;
using korvel_test::ModelMove;
using korvel_test::TestImage;

using namespace img::processing;
using enum korvel_test::ModelMotion;

constexpr std::pair<size_t, size_t> kSizes[] = {{1, 1}, {2, 3}, {7, 1}, {1, 5}, {8, 8}, {33, 20}, {20, 67}, {66, 34}};

// Formats whose pixels lie on whole bytes; packed ones among them.
template <class Check>
void ForEachFormatAndSize(const Check& check) {
  for (const auto& [width, height] : kSizes) {
    for (const auto& row : kFormatTable) {
      const bool isPublic = korvel_test::IsPublicFormat(row) || row.id == 0;
      if (!isPublic || row.storageBitsPerPixel % 8 != 0 || (row.packed && row.channels == 1)) continue;
      SCOPED_TRACE(testing::Message() << row.name << ", " << width << " x " << height);
      check(MakeFilledImage(row.id, width, height, Fill::kGarbage, row.id + width));
    }
  }
}

// As their owner runs them: through their interfaces, which don't ask for the formats' templates.
void RunModule(IfcTransformationProcessingModule& module, const img::IfcImage& input, img::IfcImage& output) {
  module.Process(input, output);
}
void RunModule(IfcInplaceProcessingModule& module, img::IfcImage& image) { module.Process(image); }

template <class Module>
void ExpectIntoAnother(ModelMotion motion) {
  Module module;
  ForEachFormatAndSize([&](const ModelImage& input) {
    const auto format = static_cast<PixelFormatId>(input.format);
    const ModelImage expected = ModelMove(input, motion);
    const TestImage image(format, input.width, input.height, input.bytes);
    const TestImage output(format, expected.width, expected.height);
    RunModule(module, *image, *output);
    EXPECT_EQ(output.Content(), expected.bytes);
    EXPECT_EQ(image.Content(), input.bytes);
  });
}

template <class Module>
void ExpectInPlace(ModelMotion motion) {
  Module module;
  ForEachFormatAndSize([&](const ModelImage& input) {
    const ModelImage expected = ModelMove(input, motion);
    const TestImage image(static_cast<PixelFormatId>(input.format), input.width, input.height, input.bytes);
    RunModule(module, *image);
    EXPECT_EQ(image.Content(), expected.bytes);
    EXPECT_EQ((*image).Area().size, (Size2D{expected.width, expected.height}));
    EXPECT_EQ((*image).Buffer()->Size(), (Size2D{expected.width, expected.height}));
    EXPECT_EQ((*image).PixelFormat(), static_cast<PixelFormatId>(input.format)) << "formats are the transformer's work";
  });
}

TEST(GeometryModules, MirrorIntoAnotherImage) {
  ExpectIntoAnother<ImageMirrorX>(kMirrorLeftRight);
  ExpectIntoAnother<ImageMirrorY>(kMirrorUpDown);
}

TEST(GeometryModules, MirrorInPlace) {
  ExpectInPlace<ImageMirrorX_Inplace>(kMirrorLeftRight);
  ExpectInPlace<ImageMirrorY_Inplace>(kMirrorUpDown);
}

TEST(GeometryModules, RotateIntoAnotherImage) {
  ExpectIntoAnother<ImageRotateCounterClockwise90>(kRotate90);
  ExpectIntoAnother<ImageRotate180>(kRotate180);
  ExpectIntoAnother<ImageRotateClockwise90>(kRotate270);
}

TEST(GeometryModules, RotateInPlace) {
  ExpectInPlace<ImageRotateCounterClockwise90_Inplace>(kRotate90);
  ExpectInPlace<ImageRotate180_Inplace>(kRotate180);
  ExpectInPlace<ImageRotateClockwise90_Inplace>(kRotate270);
}

TEST(GeometryModules, MirrorInPlaceWithinAPartOfAnImage) {
  const TestImage image(PixelFormatId::Mono8, 5, 4,
                        Bytes{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20});
  const auto part = image.Shared()->Region({1, 1}, {3, 2});
  ImageMirrorX_Inplace mirrorX;
  RunModule(mirrorX, *part);
  EXPECT_EQ(image.Content(), (Bytes{1, 2, 3, 4, 5, 6, 9, 8, 7, 10, 11, 14, 13, 12, 15, 16, 17, 18, 19, 20}));
  ImageMirrorY_Inplace mirrorY;
  RunModule(mirrorY, *part);
  EXPECT_EQ(image.Content(), (Bytes{1, 2, 3, 4, 5, 6, 14, 13, 12, 10, 11, 9, 8, 7, 15, 16, 17, 18, 19, 20}));
}

}  // namespace
