#include "processing/correction/gain.h"

#include <gtest/gtest.h>

#include <memory>
#include <utility>

#include "buffers/fixed_format_vector_buffer_pool.h"
#include "buffers/multi_format_buffer_pool.h"
#include "tests/support/test_images.h"

namespace {

using img::PixelFormatId;
using img::buffer::FixedFormatVectorBufferPool;
using img::buffer::MultiFormatBufferPool;
using img::processing::Gain;
using korvel_test::Bytes;
using korvel_test::BytesOf;
using korvel_test::LocatedFailure;
using korvel_test::LocatedFailureOf;
using korvel_test::TestImage;
using korvel_test::Words;

class GainTest : public testing::Test {
 protected:
  const std::shared_ptr<MultiFormatBufferPool> pool =
      std::make_shared<MultiFormatBufferPool>(std::make_shared<FixedFormatVectorBufferPool::Factory>(), 1);
  Gain gain{pool};
};

TEST_F(GainTest, TellsWhichSetterRefusedAValue) {
  EXPECT_EQ(LocatedFailureOf([&] { gain.SetMasterGainValue(0.5f); }),
            (LocatedFailure{5, 9003, "void img::processing::Gain::SetMasterGainValue(float)",
                            "img::processing::Gain::SetMasterGainValue: gain value not supported!"}));
  EXPECT_EQ(LocatedFailureOf([&] { gain.SetRedGainValue(8.5f); }),
            (LocatedFailure{5, 9003, "void img::processing::Gain::SetRedGainValue(float)",
                            "img::processing::Gain::SetRedGainValue: gain value not supported!"}));
  EXPECT_EQ(LocatedFailureOf([&] { gain.SetGreenGainValue(0.5f); }),
            (LocatedFailure{5, 9003, "void img::processing::Gain::SetGreenGainValue(float)",
                            "img::processing::Gain::SetGreenGainValue: gain value not supported!"}));
  EXPECT_EQ(LocatedFailureOf([&] { gain.SetBlueGainValue(8.5f); }),
            (LocatedFailure{5, 9003, "void img::processing::Gain::SetBlueGainValue(float)",
                            "img::processing::Gain::SetBlueGainValue: gain value not supported!"}));
}

TEST_F(GainTest, RefusesFormatsWithItsSignature) {
  for (const float master : {1.0f, 2.0f}) {
    gain.SetMasterGainValue(master);
    for (const auto& [format, text] : {std::pair{PixelFormatId::RGB8, "Pixel format RGB8 is not supported!"},
                                       std::pair{PixelFormatId::Mono10p, "Pixel format Mono10p is not supported!"},
                                       std::pair{PixelFormatId::RGB10p32, "Pixel format RGB10p32 is not supported!"},
                                       std::pair{PixelFormatId::Invalid, "Pixel format Invalid is not supported!"}}) {
      const TestImage image(format, 4, 2);
      const Bytes before = image.Content();
      EXPECT_EQ(
          LocatedFailureOf([&] { gain.applyGain(*image); }),
          (LocatedFailure{
              7, 9003, "std::shared_ptr<img::IfcImage> img::processing::Gain::applyGain(const img::IfcImage &) const",
              text}));
      EXPECT_EQ(LocatedFailureOf([&] { gain.applyGainInPlace(*image); }),
                (LocatedFailure{7, 9003, "void img::processing::Gain::applyGainInPlace(img::IfcImage &) const", text}));
      EXPECT_EQ(image.Content(), before);
    }
  }
  EXPECT_EQ(pool->NumBuffers(), 0u);
}

TEST_F(GainTest, DrawsImagesFromItsPool) {
  const TestImage image(PixelFormatId::Mono10, 3, 1, Words{1, 2, 0x403});
  for (const float master : {1.0f, 2.0f, 3.0f}) {
    gain.SetMasterGainValue(master);
    const auto output = gain.applyGain(*image);
    EXPECT_EQ(pool->NumBuffersInUse(), 1u);
    EXPECT_EQ(pool->NumBuffers(), 1u);
  }
  EXPECT_EQ(pool->NumBuffersInUse(), 0u);
  const auto first = gain.applyGain(*image);
  const auto second = gain.applyGain(*image);
  EXPECT_EQ(pool->NumBuffers(), 2u);
  EXPECT_EQ(BytesOf(*first), (Bytes{3, 0, 6, 0, 9, 0}));
  gain.applyGainInPlace(*image);
  EXPECT_EQ(image.ContentWords(), (Words{3, 6, 9}));
  EXPECT_EQ(pool->NumBuffers(), 2u);
}

}  // namespace
