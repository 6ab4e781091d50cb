// The path of vector kernels, for every processor on one machine: each feature record decides by itself.
#include "processing/correction/color_correction_optimized.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "buffers/fixed_format_vector_buffer_pool.h"
#include "buffers/multi_format_buffer_pool.h"
#include "processing/correction/color_corrector.h"
#include "tests/model/correction_model.h"
#include "tests/support/raw_formats.h"
#include "tests/support/test_images.h"

namespace {

using img::PixelFormatId;
using img::ProcessorFeatures;
using img::buffer::FixedFormatVectorBufferPool;
using img::buffer::MultiFormatBufferPool;
using img::processing::ColorCorrectionOptimized;
using img::processing::ColorCorrector;
using img::processing::ColorFactors;
using korvel_test::Bytes;
using korvel_test::BytesOf;
using korvel_test::Fill;
using korvel_test::FormatOf;
using korvel_test::IdOf;
using korvel_test::IsFormatOfColorCorrection;
using korvel_test::LocatedFailureOf;
using korvel_test::MakeFilledImage;
using korvel_test::ModelColorCorrection;
using korvel_test::ModelFeatures;
using korvel_test::ModelHasColorKernel;
using korvel_test::ModelImage;
using korvel_test::ModelRandom;
using korvel_test::TestImage;

using enum PixelFormatId;

constexpr std::array<ModelFeatures, 4> kFeatureSets = {{{false, false}, {true, false}, {true, true}, {false, true}}};

// Colours that lie near to each other after it, so that most sums fall between two numbers.
constexpr ColorFactors kCamera = {1.62f, -0.41f, -0.21f, -0.28f, 1.57f, -0.29f, 0.02f, -0.63f, 1.61f};
// Sums that fall halfway between two numbers.
constexpr ColorFactors kHalves = {0.5f, 1.0f, -1.0f, 0.0f, 1.5f, -0.5f, 0.25f, 0.25f, 0.5f};
// Sums that depend on their order.
constexpr ColorFactors kOrder = {1.0f, 0x1p24f, -0x1p24f, -0x1p23f, 0x1p23f, 0.75f, 0x1p22f, 0.3f, -0x1p22f};

ProcessorFeatures RecordOf(ModelFeatures features) {
  ProcessorFeatures record{};
  record.avx = features.avx ? 1 : 0;
  record.avx2 = features.avx2 ? 1 : 0;
  return record;
}

std::string NameOfSet(ModelFeatures features) {
  return std::string(features.avx ? "AVX" : "no AVX") + (features.avx2 ? ", AVX2" : ", no AVX2");
}

TEST(ColorCorrectionOptimized, HasKernelsByFormatAndProcessor) {
  for (const ModelFeatures features : kFeatureSets) {
    const ColorCorrectionOptimized correction(RecordOf(features));
    for (const PixelFormatId format : korvel_test::kPublicFormats) {
      EXPECT_EQ(correction.IsFormatSupported(format), ModelHasColorKernel(static_cast<uint32_t>(format), features))
          << FormatOf(static_cast<uint32_t>(format)).name << ", " << NameOfSet(features);
    }
    EXPECT_FALSE(correction.IsFormatSupported(Invalid));
    EXPECT_FALSE(correction.IsFormatSupported(_RawUnpacked3Ch8));
    EXPECT_FALSE(correction.IsFormatSupported(PixelFormatId{77}));
  }
}

TEST(ColorCorrectionOptimized, LeavesSmallImagesAndOtherFormatsAlone) {
  ColorCorrectionOptimized correction(RecordOf({true, true}));
  correction.SetFactors(kCamera);
  const auto expectDeclined = [&](PixelFormatId format, size_t width, size_t height) {
    const ModelImage input = MakeFilledImage(static_cast<uint32_t>(format), width, height, Fill::kRandom, width);
    const TestImage image(format, width, height, input.bytes);
    const TestImage output(format, width, height);
    const Bytes before = output.Content();
    EXPECT_FALSE(correction.Process(*image, *output));
    EXPECT_FALSE(correction.Process(*image, *image));
    EXPECT_EQ(image.Content(), input.bytes);
    EXPECT_EQ(output.Content(), before);
  };
  expectDeclined(RGB8, 15, 1000);
  expectDeclined(RGB8, 1000, 15);
  expectDeclined(RGBa8, 15, 16);
  expectDeclined(RGB10p32, 16, 15);
  expectDeclined(BGR10, 16, 16);
  expectDeclined(RGBa12, 40, 40);
  expectDeclined(Mono8, 40, 40);
  expectDeclined(BGR10p32, 40, 40);
}

class ColorCorrectionSweep : public testing::TestWithParam<uint32_t> {};

// Every width has its own place at which the rounding changes.
TEST_P(ColorCorrectionSweep, DoesWhatTheModelDoesAtEveryWidth) {
  const uint32_t id = GetParam();
  const auto format = static_cast<PixelFormatId>(id);
  ModelRandom random(id);
  ColorFactors anyFactors{};
  size_t corrected = 0;
  for (const ModelFeatures features : kFeatureSets) {
    const auto pool =
        std::make_shared<MultiFormatBufferPool>(std::make_shared<FixedFormatVectorBufferPool::Factory>(), 1);
    ColorCorrector corrector(pool, RecordOf(features));
    ColorCorrectionOptimized optimized(RecordOf(features));
    for (size_t width = 15; width <= 80; ++width) {
      for (float& factor : anyFactors) factor = static_cast<float>(random.Below(1u << 24)) / 0x1p22f - 2.0f;
      size_t height = 16 + width % 2;
      for (const ColorFactors& factors : {kCamera, kHalves, kOrder, anyFactors}) {
        SCOPED_TRACE(testing::Message() << FormatOf(id).name << ", " << NameOfSet(features) << ", " << width << " x "
                                        << height << ", factor " << factors[0]);
        const Fill fill = height % 2 == 0 ? Fill::kRandom : Fill::kGarbage;
        const ModelImage input = MakeFilledImage(id, width, height, fill, width);
        const ModelImage expected = ModelColorCorrection(input, factors, features);
        const TestImage image(format, width, height, input.bytes);
        corrector.SetFactors(factors);
        const auto output = corrector.Process(*image);
        ASSERT_EQ(BytesOf(*output), expected.bytes);
        ASSERT_EQ(image.Content(), input.bytes);

        optimized.SetFactors(factors);
        const TestImage apart(format, width, height);
        const bool isVector = ModelHasColorKernel(id, features) && width >= 16;
        ASSERT_EQ(optimized.Process(*image, *apart), isVector);
        if (isVector) {
          ASSERT_EQ(apart.Content(), expected.bytes);
          ++corrected;
        }
        corrector.ProcessInPlace(*image);
        ASSERT_EQ(image.Content(), expected.bytes);
        height = 33 - height;
      }
    }
  }
  if (ModelHasColorKernel(id, {true, true})) {
    EXPECT_GE(corrected, 2u * 65 * 4);
  }
}

std::vector<uint32_t> Formats() {
  std::vector<uint32_t> formats;
  for (const uint32_t format : korvel_test::PublicFormats()) {
    if (IsFormatOfColorCorrection(format)) formats.push_back(format);
  }
  return formats;
}

INSTANTIATE_TEST_SUITE_P(Formats, ColorCorrectionSweep, testing::ValuesIn(Formats()),
                         [](const testing::TestParamInfo<uint32_t>& param) {
                           return std::string(FormatOf(param.param).name);
                         });

// By hand: red and blue are 100.5, green 101.5, in the main loop and in the rest.
TEST(ColorCorrectionOptimized, RoundsToEvenInTheMainLoopAndTruncatesInTheRest) {
  ColorCorrectionOptimized correction(RecordOf({true, false}));
  correction.SetFactors({0.5f, 0, 0, 0, 0.5f, 0, 0, 0, 0.5f});
  Bytes bytes;
  for (size_t i = 0; i < 18 * 16; ++i) bytes.insert(bytes.end(), {201, 203, 201, 7});
  const TestImage image(BGRa8, 18, 16, bytes);
  ASSERT_TRUE(correction.Process(*image, *image));
  const Bytes results = image.Content();
  for (size_t i = 0; i < results.size(); i += 4) {
    const bool isRest = i / 4 % 18 >= 16;
    ASSERT_EQ(Bytes(results.begin() + static_cast<ptrdiff_t>(i), results.begin() + static_cast<ptrdiff_t>(i) + 4),
              isRest ? (Bytes{100, 101, 100, 7}) : (Bytes{100, 102, 100, 7}))
        << "pixel " << i / 4;
  }
}

TEST(ColorCorrector, AcceptsTheSameFormatsOnEveryProcessor) {
  for (const ModelFeatures features : kFeatureSets) {
    const ColorCorrector corrector(
        std::make_shared<MultiFormatBufferPool>(std::make_shared<FixedFormatVectorBufferPool::Factory>(), 1),
        RecordOf(features));
    for (const PixelFormatId format : korvel_test::kPublicFormats) {
      EXPECT_EQ(corrector.IsFormatSupported(format), IsFormatOfColorCorrection(static_cast<uint32_t>(format)));
    }
  }
}

TEST(ColorCorrector, DrawsImagesFromItsPool) {
  const auto pool =
      std::make_shared<MultiFormatBufferPool>(std::make_shared<FixedFormatVectorBufferPool::Factory>(), 1);
  ColorCorrector corrector(pool, RecordOf({true, true}));
  corrector.SetFactors(kCamera);
  const TestImage image(RGB8, 20, 20);
  const TestImage other(BGR8, 20, 20);
  for (int i = 0; i < 3; ++i) {
    EXPECT_NE(corrector.Process(*image), nullptr);
    EXPECT_NE(corrector.Process(*other), nullptr);
    corrector.ProcessInPlace(*image);
  }
  EXPECT_EQ(pool->NumBuffersInUse(), 0u);
  EXPECT_EQ(pool->NumBuffers(), 1u) << "one for both formats, which have one size";
}

}  // namespace
