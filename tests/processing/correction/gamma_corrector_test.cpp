#include "processing/correction/gamma_corrector.h"

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
using img::processing::GammaCorrector;
using korvel_test::Bytes;
using korvel_test::BytesOf;
using korvel_test::LocatedFailure;
using korvel_test::LocatedFailureOf;
using korvel_test::TestImage;

class GammaCorrectorTest : public testing::Test {
 protected:
  const std::shared_ptr<MultiFormatBufferPool> pool =
      std::make_shared<MultiFormatBufferPool>(std::make_shared<FixedFormatVectorBufferPool::Factory>(), 1);
  GammaCorrector corrector{pool};
};

TEST_F(GammaCorrectorTest, TellsThatItsSetterRefusedAValue) {
  for (const float value : {0.29f, 3.01f}) {
    EXPECT_EQ(LocatedFailureOf([&] { corrector.SetGammaCorrectionValue(value); }),
              (LocatedFailure{5, 9003, "void img::processing::GammaCorrector::SetGammaCorrectionValue(float)",
                              "img::processing::GammaCorrector::SetGammaCorrectionValue: Gamma value not supported!"}));
  }
}

TEST_F(GammaCorrectorTest, RefusesFormatsWithItsSignature) {
  for (const float gamma : {1.0f, 2.0f}) {
    corrector.SetGammaCorrectionValue(gamma);
    for (const auto& [format, text] :
         {std::pair{PixelFormatId::BGR10p32, "Pixel format BGR10p32 is not supported!"},
          std::pair{PixelFormatId::BayerRG12p, "Pixel format BayerRG12p is not supported!"},
          std::pair{PixelFormatId::Mono12g24Qrv, "Pixel format Mono12g24Qrv is not supported!"},
          std::pair{PixelFormatId::Invalid, "Pixel format Invalid is not supported!"}}) {
      const TestImage image(format, 4, 2);
      const Bytes before = image.Content();
      EXPECT_EQ(LocatedFailureOf([&] { corrector.applyGammaCorrection(*image); }),
                (LocatedFailure{7, 9003,
                                "std::shared_ptr<img::IfcImage> img::processing::GammaCorrector::applyGammaCorrection("
                                "const img::IfcImage &)",
                                text}));
      EXPECT_EQ(
          LocatedFailureOf([&] { corrector.applyGammaCorrectionInPlace(*image); }),
          (LocatedFailure{7, 9003, "void img::processing::GammaCorrector::applyGammaCorrectionInPlace(img::IfcImage &)",
                          text}));
      EXPECT_EQ(image.Content(), before);
    }
  }
  EXPECT_EQ(pool->NumBuffers(), 0u);
}

TEST_F(GammaCorrectorTest, DrawsImagesFromItsPool) {
  const TestImage image(PixelFormatId::BGRa8, 1, 1, Bytes{64, 0, 255, 9});
  for (const float gamma : {1.0f, 2.0f}) {
    corrector.SetGammaCorrectionValue(gamma);
    const auto output = corrector.applyGammaCorrection(*image);
    EXPECT_EQ(pool->NumBuffersInUse(), 1u);
    EXPECT_EQ(pool->NumBuffers(), 1u);
  }
  const auto first = corrector.applyGammaCorrection(*image);
  EXPECT_EQ(BytesOf(*first), (Bytes{127, 0, 255, 9})) << "alpha is what the clone before left";
  corrector.applyGammaCorrectionInPlace(*image);
  EXPECT_EQ(image.Content(), (Bytes{127, 0, 255, 9}));
  EXPECT_EQ(pool->NumBuffers(), 1u);
}

}  // namespace
