// Every conversion by way of the exported functions, compared with the plain model of a processor like this one.
#include <gtest/gtest.h>
#include <korvel/korvel.h>

#include <cstdint>
#include <cstdlib>
#include <string>
#include <utility>

#include "tests/model/conversion_model.h"
#include "tests/support/exported_objects.h"
#include "tests/support/exported_operations.h"
#include "tests/support/last_error.h"
#include "tests/support/this_processor.h"

namespace korvel_test {
namespace {

class ConversionsApi : public testing::TestWithParam<uint32_t> {
 protected:
  void ExpectIntoImage(const ModelImage& input, const ModelOutcome& expected, uint32_t target) {
    const OddImage image(input);
    KORVEL_IMAGE_HANDLE output = kUnwrittenHandle;
    ASSERT_EQ(KORVEL_ImageConverter_Convert(converter_.Handle(), image.Handle(), target, &output), expected.code);
    EXPECT_EQ(image.Content(), expected.inputAfter);
    EXPECT_TRUE(image.IsMarkedOutside());
    if (expected.code != 0) return;
    const ExportedImage result(output);
    EXPECT_EQ(result.Format(), target);
    EXPECT_EQ(Difference(expected.image, result.Content()), "");
  }

  void ExpectIntoMemory(const ModelImage& input, const ModelOutcome& expected, uint32_t target, uint32_t mode) {
    const OddImage image(input);
    const OddImage memory(MakeFilledImage(target, input.width, input.height, Fill::kZero, 0));
    const Bytes before = memory.Content();
    KORVEL_IMAGE_HANDLE output = kUnwrittenHandle;
    ASSERT_EQ(KORVEL_Image_ConvertToBuffer(image.Handle(), target, memory.Data(), before.size(), mode, &output),
              expected.code);
    EXPECT_EQ(image.Content(), expected.inputAfter);
    EXPECT_TRUE(image.IsMarkedOutside());
    EXPECT_TRUE(memory.IsMarkedOutside());
    if (expected.code != 0) return;
    const ExportedImage result(output);
    EXPECT_EQ(result.Data(), memory.Data());
    EXPECT_EQ(Difference(expected.image, memory.Content()), "");
  }

  const ModelFeatures features_ = FeaturesOfThisProcessor();
  ExportedConverter converter_;
};

TEST_P(ConversionsApi, DoWhatTheModelDoes) {
  // The smallest of the default mode, one that fills vectors and has all their remainders, and one too small for any.
  const std::pair<size_t, size_t> sizes[] = {{16, 16}, {67, 19}, {5, 3}};
  uint64_t seed = GetParam();
  for (const uint32_t target : ModelSupportedOutputs(GetParam())) {
    for (const uint32_t mode :
         {KORVEL_CONVERSION_MODE_Fast, KORVEL_CONVERSION_MODE_HighQuality, KORVEL_CONVERSION_MODE_Classic}) {
      ASSERT_EQ(KORVEL_ImageConverter_SetConversionMode(converter_.Handle(), mode), 0u);
      for (const auto& [width, height] : sizes) {
        const Fill fill = ++seed % 3 == 0 ? Fill::kGarbage : Fill::kRandom;
        SCOPED_TRACE(std::string(FormatOf(GetParam()).name) + " to " + std::string(FormatOf(target).name) + ", " +
                     std::to_string(width) + " x " + std::to_string(height) + ", mode " + std::to_string(mode) + ", " +
                     NameOf(fill) + ", seed " + std::to_string(seed));
        const ModelImage input = MakeFilledImage(GetParam(), width, height, fill, seed);
        ExpectIntoImage(input, ModelConvert(input, target, mode, features_), target);
        const size_t bytes = BytesOfImage(target, width, height);
        ExpectIntoMemory(input, ModelConvertToBuffer(input, target, mode, features_, bytes), target, mode);
        if (HasFailure()) return;
      }
    }
  }
}

// Expectations follow the processor. Where the suite runs on one that somebody chose, it has to be that one.
TEST(ThisProcessor, IsTheOneThatWasAskedFor) {
  const char* const asked = std::getenv("KORVEL_TEST_PROCESSOR");
  if (asked == nullptr) GTEST_SKIP() << "KORVEL_TEST_PROCESSOR isn't set";
  const ModelFeatures features = FeaturesOfThisProcessor();
  EXPECT_STREQ(features.avx2 ? "avx2" : features.avx ? "avx" : "none", asked);
}

INSTANTIATE_TEST_SUITE_P(Inputs, ConversionsApi, testing::ValuesIn(PublicFormats()),
                         [](const testing::TestParamInfo<uint32_t>& param) {
                           return std::string(FormatOf(param.param).name);
                         });

}  // namespace
}  // namespace korvel_test
