#include "processing/conversion/copy_converter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/raw_formats.h"
#include "tests/support/test_images.h"

namespace {

using img::ImageFormat;
using img::PixelFormatId;
using img::processing::CopyConverter;
using korvel_test::Bytes;
using korvel_test::Failure;
using korvel_test::FailureOf;
using korvel_test::kUnwritten;
using korvel_test::TestImage;
using testing::Each;
using testing::ElementsAre;

using enum PixelFormatId;

const Failure kEnsureFailed{
    -1009, 9003,
    "Ensure failed @ virtual void img::processing::CopyConverter::Process(const img::IfcImage &, img::IfcImage &)"};

// An image that tells numbers of its own about its bytes.
class CountingImage final : public img::IfcImage {
 public:
  CountingImage(size_t byteCount, size_t lineByteCount) : byteCount_(byteCount), lineByteCount_(lineByteCount) {}

  uint8_t* PixelPointer(size_t, size_t) override { return bytes_.data(); }
  const uint8_t* PixelPointer(size_t, size_t) const override { return bytes_.data(); }
  const img::ImageArea& Area() const override { return area_; }
  size_t ByteCount() const override { return byteCount_; }
  size_t LineByteCount() const override { return lineByteCount_; }
  uint32_t PixelByteCount() const override { return 1; }
  uint32_t NumChannels() const override { return 1; }
  std::shared_ptr<img::buffer::IfcImageBuffer> Buffer() const override { return nullptr; }
  std::unique_ptr<IfcImage> Region(const img::Point2D&, const img::Size2D&) override { return nullptr; }
  PixelFormatId PixelFormat() const override { return Mono8; }
  uint32_t PixelStorageBits() const override { return 8; }
  std::unique_ptr<IfcImage> Clone() const override { return nullptr; }
  std::unique_ptr<IfcImage> Clone(img::buffer::IfcBufferFactory&) const override { return nullptr; }
  void SetSize(const img::Size2D&) override {}

  Bytes bytes_ = Bytes(4, kUnwritten);

 private:
  img::ImageArea area_{{}, {2, 2}};
  size_t byteCount_;
  size_t lineByteCount_;
};

TEST(CopyConverter, TakesAnyFormatAndKeepsIt) {
  CopyConverter copy;
  const img::ImageArea area{{1, 2}, {3, 4}};
  for (const PixelFormatId format : korvel_test::kPublicFormats) {
    EXPECT_TRUE(copy.IsInputFormatSupported(format));
    EXPECT_EQ(copy.GetOutputImageFormat({area, format}), (ImageFormat{area, format}));
  }
  EXPECT_TRUE(copy.IsInputFormatSupported(Invalid));
  EXPECT_TRUE(copy.IsInputFormatSupported(PixelFormatId{77}));
}

TEST(CopyConverter, CopiesEveryByte) {
  CopyConverter copy;
  const TestImage mono(Mono8, 3, 2, Bytes{1, 2, 3, 4, 5, 6});
  const TestImage monoCopy(Mono8, 3, 2);
  copy.Process(*mono, *monoCopy);
  EXPECT_EQ(monoCopy.Content(), mono.Content());
  // A packed format as it stands, with the bits that carry nothing: 3 pixels of 12 bits in 5 bytes.
  const TestImage packed(BayerRG12p, 3, 1, Bytes{1, 2, 3, 4, 0xF5});
  const TestImage packedCopy(BayerRG12p, 3, 1);
  copy.Process(*packed, *packedCopy);
  EXPECT_THAT(packedCopy.Content(), ElementsAre(1, 2, 3, 4, 0xF5));
}

TEST(CopyConverter, RefusesImagesThatDiffer) {
  CopyConverter copy;
  const TestImage input(Mono8, 3, 2);
  for (const auto& [width, height] : {std::pair<size_t, size_t>{2, 2}, {3, 3}, {6, 1}, {2, 3}}) {
    const TestImage output(Mono8, width, height, Bytes(width * height, 1));
    EXPECT_EQ(FailureOf([&] { copy.Process(*input, *output); }), kEnsureFailed);
    EXPECT_THAT(output.Content(), Each(1));
  }
  const TestImage otherFormat(BayerRG8, 3, 2, Bytes(6, 1));
  EXPECT_EQ(FailureOf([&] { copy.Process(*input, *otherFormat); }), kEnsureFailed);
  EXPECT_THAT(otherFormat.Content(), Each(1));
}

TEST(CopyConverter, RefusesImagesWhoseBytesDiffer) {
  CopyConverter copy;
  const CountingImage usual(4, 2);
  CountingImage moreBytes(5, 2);
  CountingImage longerLines(4, 3);
  CountingImage same(4, 2);
  EXPECT_EQ(FailureOf([&] { copy.Process(usual, moreBytes); }), kEnsureFailed);
  EXPECT_EQ(FailureOf([&] { copy.Process(usual, longerLines); }), kEnsureFailed);
  EXPECT_EQ(FailureOf([&] { copy.Process(usual, same); }), std::nullopt);
}

TEST(CopyConverter, LeavesImagesWithoutDataAlone) {
  CopyConverter copy;
  const TestImage none(Invalid, 0, 0);
  const TestImage alsoNone(Invalid, 0, 0);
  copy.Process(*none, *alsoNone);
  CountingImage withData(4, 2);
  CountingImage withoutData(4, 2);
  withoutData.bytes_ = Bytes();
  ASSERT_EQ(withoutData.PixelPointer(0, 0), nullptr);
  copy.Process(withoutData, withData);
  EXPECT_THAT(withData.bytes_, Each(kUnwritten));
  copy.Process(withData, withoutData);
}

}  // namespace
