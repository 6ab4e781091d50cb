// That a masked record (tests/support/masked_features.cpp) is the one that objects take.
#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <string_view>

#include "buffers/fixed_format_vector_buffer_pool.h"
#include "buffers/multi_format_buffer_pool.h"
#include "core/processor_features.h"
#include "processing/conversion/image_converter.h"
#include "tests/support/test_images.h"
#include "tests/support/this_processor.h"

namespace {

using img::PixelFormatId;
using img::ProcessorFeatures;
using img::processing::ImageConverter;

ProcessorFeatures ExpectedFeatures() {
  const auto processor = korvel_test::FeaturesOfThisProcessor();
  const char* const value = std::getenv("KORVEL_TEST_FEATURES");
  const std::string_view highest = value == nullptr ? "avx2" : value;
  ProcessorFeatures features;
  features.avx = processor.avx && highest != "none";
  features.avx2 = processor.avx2 && highest == "avx2";
  return features;
}

TEST(MaskedFeatures, AreNoneAboveTheHighest) {
  EXPECT_EQ(ProcessorFeatures::OfThisProcessor().avx, ExpectedFeatures().avx);
  EXPECT_EQ(ProcessorFeatures::OfThisProcessor().avx2, ExpectedFeatures().avx2);
}

// The outermost pixels of the default mode tell whether a converter's record has AVX.
TEST(MaskedFeatures, DecideOverResults) {
  const auto pool = std::make_shared<img::buffer::MultiFormatBufferPool>(
      std::make_shared<img::buffer::FixedFormatVectorBufferPool::Factory>(), 1);
  korvel_test::Bytes mosaic(size_t{32} * 16);
  for (size_t i = 0; i < mosaic.size(); ++i) mosaic[i] = static_cast<uint8_t>(i * i % 251);
  const korvel_test::TestImage image(PixelFormatId::BayerRG8, 32, 16, mosaic);
  const auto convert = [&](ImageConverter& converter) {
    return korvel_test::BytesOf(*converter.ConvertPixelFormat(image.Shared(), PixelFormatId::RGB8));
  };
  ImageConverter asMade(pool);
  ImageConverter expected(pool, ExpectedFeatures());
  EXPECT_EQ(convert(asMade), convert(expected));
  ImageConverter withAvx(pool, ProcessorFeatures{.avx = 1});
  ImageConverter plain(pool, ProcessorFeatures{});
  EXPECT_NE(convert(withAvx), convert(plain));
}

}  // namespace
