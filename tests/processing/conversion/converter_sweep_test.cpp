// Every pair of formats through the image converter, compared with the plain model. A fixed sample of sizes and data by
// default; KORVEL_TEST_FULL_SWEEP=1 takes every size from 1 by 1 to 33 by 33 and all the larger ones.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "buffers/fixed_format_vector_buffer_pool.h"
#include "buffers/multi_format_buffer_pool.h"
#include "buffers/raw_image_buffer.h"
#include "core/processor_features.h"
#include "processing/conversion/image_converter.h"
#include "status/exceptions.h"
#include "tests/model/conversion_model.h"
#include "tests/support/guarded_memory.h"

namespace korvel_test {
namespace {

constexpr uint32_t kModeFast = 1;
constexpr uint32_t kModeHighQuality = 2;
constexpr uint32_t kModeClassic = 3;

bool IsFullSweep() {
  const char* value = std::getenv("KORVEL_TEST_FULL_SWEEP");
  return value != nullptr && std::string(value) == "1";
}

// ---------------------------------------------------------------------------------------------------------- cases --

constexpr std::array<ModelFeatures, 4> kFeatureSets = {{{false, false}, {true, false}, {true, true}, {false, true}}};

enum class Form { kImage, kBuffer, kBufferOneTooLarge };

// Where an image begins and ends in memory whose neighbouring pages can't be touched.

struct Case {
  uint32_t input;
  uint32_t target;
  uint32_t mode;
  size_t featureSet;
  size_t width;
  size_t height;
  Fill fill;
  uint64_t seed;
  Form form;
  Placement placement;

  // Into memory of the caller's, so that a signal handler can say it too.
  void Describe(char* text, size_t size) const {
    static constexpr const char* kForms[] = {"image form", "buffer form", "buffer form, one byte too large"};
    static constexpr const char* kPlacements[] = {"ends at a page", "starts at a page", "at an odd address"};
    const FormatRow* targetRow = FindFormat(target);
    std::snprintf(text, size, "%s to %s (0x%08x), %zu x %zu, mode %u, avx %d avx2 %d, %s, data %s, seed %llu, %s",
                  FormatOf(input).name.data(), targetRow == nullptr ? "?" : targetRow->name.data(), target, width,
                  height, mode, kFeatureSets[featureSet].avx ? 1 : 0, kFeatureSets[featureSet].avx2 ? 1 : 0,
                  kForms[static_cast<size_t>(form)], NameOf(fill), static_cast<unsigned long long>(seed),
                  kPlacements[static_cast<size_t>(placement)]);
  }
  std::string Description() const {
    char text[512];
    Describe(text, sizeof text);
    return text;
  }
};

// The case that runs, for the handler below.
const Case* runningCase = nullptr;
struct sigaction previousHandler;

// An access outside an image ends the program; this says in which case.
void ReportRunningCase(int /*signal*/) {
  if (runningCase != nullptr) {
    char text[512];
    runningCase->Describe(text, sizeof text);
    for (const char* line : {"access outside an image: ", static_cast<const char*>(text), "\n"}) {
      [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, line, std::strlen(line));
    }
  }
  // The access is repeated on return and then meets whoever was there before, a sanitizer perhaps.
  sigaction(SIGSEGV, &previousHandler, nullptr);
}

// ---------------------------------------------------------------------------------------------------------- sizes --

struct Size {
  size_t width;
  size_t height;
};

constexpr size_t kSmallest = 33;  // both directions run from 1 to this
constexpr size_t kSmallSizes = kSmallest * kSmallest;
constexpr std::array<Size, 12> kEdgeSizes = {
    {{1, 1}, {2, 2}, {3, 2}, {3, 3}, {4, 4}, {5, 5}, {16, 16}, {18, 16}, {17, 16}, {16, 17}, {15, 16}, {34, 18}}};
// Among them widths around multiples of all vectors, and odd ones, with which lines of packed formats begin within a
// group; and the smallest images that one pass converts.
constexpr std::array<Size, 20> kLargeSizes = {{{64, 48}, {67, 35}, {97, 16}, {130, 18}, {66, 20}, {16, 131}, {98, 34},
                                               {50, 16}, {35, 5},  {36, 4},  {36, 5},   {37, 6},  {38, 7},   {39, 8},
                                               {63, 9},  {68, 16}, {69, 5},  {101, 7},  {132, 6}, {133, 17}}};

Size SmallSize(size_t index) { return {index % kSmallest + 1, index / kSmallest % kSmallest + 1}; }

// The sizes of one configuration. Samples of different configurations differ, so that together they cover all sizes.
std::vector<Size> SizesOf(bool full, uint64_t seed, size_t sample, size_t large) {
  std::vector<Size> sizes;
  if (full) {
    for (size_t i = 0; i < kSmallSizes; ++i) {
      sizes.push_back(SmallSize(i));
    }
    sizes.insert(sizes.end(), kEdgeSizes.begin(), kEdgeSizes.end());
    sizes.insert(sizes.end(), kLargeSizes.begin(), kLargeSizes.end());
    return sizes;
  }
  constexpr size_t kStride = 475;  // no common divisor with the number of sizes
  for (size_t i = 0; i < sample; ++i) {
    sizes.push_back(SmallSize((seed + i * kStride) % kSmallSizes));
  }
  for (size_t i = 0; i < large; ++i) {
    sizes.push_back(kLargeSizes[(seed + i * 3) % kLargeSizes.size()]);
  }
  sizes.insert(sizes.end(), kEdgeSizes.begin(), kEdgeSizes.end());
  return sizes;
}

// ---------------------------------------------------------------------------------------------------------- sweep --

class ConverterSweep : public testing::TestWithParam<uint32_t> {
 protected:
  void SetUp() override {
    struct sigaction action = {};
    action.sa_handler = ReportRunningCase;
    sigaction(SIGSEGV, &action, &previousHandler);
  }
  void TearDown() override {
    runningCase = nullptr;
    sigaction(SIGSEGV, &previousHandler, nullptr);
  }

  // Converters with new pools: a pool keeps memory of every size that it has seen.
  void MakeConverters() {
    for (size_t i = 0; i < kFeatureSets.size(); ++i) {
      img::ProcessorFeatures features{};
      features.avx = kFeatureSets[i].avx ? 1 : 0;
      features.avx2 = kFeatureSets[i].avx2 ? 1 : 0;
      converters_[i] = std::make_unique<img::processing::ImageConverter>(
          std::make_shared<img::buffer::MultiFormatBufferPool>(
              std::make_shared<img::buffer::FixedFormatVectorBufferPool::Factory>(), 1),
          features);
    }
  }

  // Empty if the library did what the model does.
  std::string Difference(const Case& c) {
    const ModelImage input = MakeFilledImage(c.input, c.width, c.height, c.fill, c.seed);
    const ModelFeatures features = kFeatureSets[c.featureSet];
    const FormatRow* targetRow = FindFormat(c.target);
    const size_t bytes = targetRow == nullptr ? 1 : BytesOfImage(c.target, c.width, c.height);
    const size_t bufferSize = c.form == Form::kBufferOneTooLarge ? bytes + 1 : bytes;
    const ModelOutcome expected = c.form == Form::kImage
                                      ? ModelConvert(input, c.target, c.mode, features)
                                      : ModelConvertToBuffer(input, c.target, c.mode, features, bufferSize);

    uint8_t* const inputBytes = inputMemory_.Place(input.bytes.size(), c.placement);
    inputMemory_.Mark(inputBytes, input.bytes.size());
    std::memcpy(inputBytes, input.bytes.data(), input.bytes.size());
    uint8_t* const outputBytes = outputMemory_.Place(bufferSize, c.placement);
    outputMemory_.Mark(outputBytes, bufferSize);

    const auto inputFormat = static_cast<img::PixelFormatId>(c.input);
    const auto target = static_cast<img::PixelFormatId>(c.target);
    const auto inputBuffer =
        img::buffer::RawImageBuffer::CreateBuffer(inputFormat, inputBytes, img::Size2D{c.width, c.height});
    const std::shared_ptr<img::IfcImage> image = inputBuffer->CreateImage();
    img::processing::ImageConverter& converter = *converters_[c.featureSet];
    converter.SetConversionMode(c.mode);

    int32_t status = 0;
    std::string text;
    std::shared_ptr<img::IfcImage> result;
    try {
      if (c.form == Form::kImage) {
        result = converter.ConvertPixelFormat(image, target);
      } else {
        converter.ConvertPixelFormat(image, target, outputBytes, bufferSize);
      }
    } catch (const korvel::internal::ImgException& failure) {
      status = static_cast<int32_t>(failure.GetStatus());
      text = failure.Text();
    } catch (const std::exception& failure) {
      return std::string("an exception of another kind: ") + failure.what();
    }

    if (status != expected.status || text != expected.text) {
      return "status " + std::to_string(status) + " with \"" + text + "\" instead of " +
             std::to_string(expected.status) + " with \"" + expected.text + "\"";
    }
    if (const auto difference = FirstDifference(inputBytes, expected.inputAfter, nullptr)) {
      return "the input afterwards: " + *difference;
    }
    if (!inputMemory_.IsMarkedOutside(inputBytes, input.bytes.size())) {
      return "wrote beside the input";
    }
    if (!outputMemory_.IsMarkedOutside(outputBytes, bufferSize)) {
      return "wrote beside the output";
    }
    if (expected.code != 0) {
      return GuardedMemory::AreMarked(outputBytes, outputBytes + bufferSize) ? "" : "wrote to the output and failed";
    }
    const uint8_t* actualBytes = outputBytes;
    if (c.form == Form::kImage) {
      if (result == nullptr || result == image) {
        return "no new image";
      }
      const img::IfcImage& converted = *result;
      if (converted.PixelFormat() != target || converted.ByteCount() != expected.image.bytes.size()) {
        return "an image of another format or size";
      }
      actualBytes = converted.PixelPointer(0, 0);
    } else if (!GuardedMemory::AreMarked(outputBytes + bytes, outputBytes + bufferSize)) {
      return "wrote behind the image";
    }
    if (const auto difference = FirstDifference(actualBytes, expected.image.bytes, &expected.image.written)) {
      return *difference;
    }
    return "";
  }

  // Returns false when there have been so many failures that more would tell nothing new.
  bool Run(const Case& c) {
    runningCase = &c;
    const std::string difference = Difference(c);
    runningCase = nullptr;
    ++cases_;
    if (!difference.empty()) {
      ADD_FAILURE() << c.Description() << "\n  " << difference;
      ++failures_;
    }
    return failures_ < kMaximumFailures;
  }

  static constexpr size_t kMaximumFailures = 8;

  size_t cases_ = 0;
  size_t failures_ = 0;

 private:
  static std::optional<std::string> FirstDifference(const uint8_t* actual, const std::vector<uint8_t>& expected,
                                                    const std::vector<uint8_t>* mask) {
    for (size_t i = 0; i < expected.size(); ++i) {
      const unsigned bits = mask == nullptr ? 0xFFU : (*mask)[i];
      if (((static_cast<unsigned>(actual[i]) ^ expected[i]) & bits) != 0) {
        return "byte " + std::to_string(i) + " of " + std::to_string(expected.size()) + " is " +
               std::to_string(actual[i]) + " instead of " + std::to_string(expected[i]) + " (compared bits " +
               std::to_string(bits) + ")";
      }
    }
    return std::nullopt;
  }

  static constexpr size_t kCapacity = 32768;  // above the largest size at the largest pixel
  GuardedMemory inputMemory_{kCapacity};
  GuardedMemory outputMemory_{kCapacity};
  std::array<std::unique_ptr<img::processing::ImageConverter>, kFeatureSets.size()> converters_;
};

// What to run for a pair of formats: a mode, and the feature sets to take in turn.
struct Configuration {
  uint32_t mode;
  std::vector<size_t> featureSets;
};

// Form, data and placement go through all their values from case to case. They turn at different rates, so that over
// the sizes each meets each.
Case MakeCase(uint32_t input, uint32_t target, const Configuration& configuration, Size size, uint64_t count) {
  constexpr Form kForms[] = {Form::kImage, Form::kBuffer, Form::kImage, Form::kBuffer, Form::kBufferOneTooLarge};
  constexpr Placement kPlacements[] = {Placement::kEndsAtPage, Placement::kOddAddress, Placement::kEndsAtPage,
                                       Placement::kStartsAtPage};
  constexpr Fill kFills[] = {Fill::kRandom, Fill::kMaximum, Fill::kGarbage, Fill::kAlternating,
                             Fill::kRandom, Fill::kZero,    Fill::kFlat};
  Case c{};
  c.input = input;
  c.target = target;
  c.mode = configuration.mode;
  c.featureSet = configuration.featureSets[count % configuration.featureSets.size()];
  c.width = size.width;
  c.height = size.height;
  c.fill = kFills[count % std::size(kFills)];
  c.seed = count;
  c.form = kForms[count % std::size(kForms)];
  c.placement = kPlacements[count / 2 % std::size(kPlacements)];
  return c;
}

TEST_P(ConverterSweep, DoesWhatTheModelDoes) {
  const uint32_t input = GetParam();
  const bool full = IsFullSweep();
  const size_t passes = full ? 3 : 1;
  const FormatRow& inputRow = FormatOf(input);
  const ModelImage probe = MakeFilledImage(input, 3, 3, Fill::kRandom, 0);

  for (const uint32_t target : PublicFormats()) {
    MakeConverters();
    const FormatRow& targetRow = FormatOf(target);
    const bool converts = ModelConvert(probe, target, kModeHighQuality, kFeatureSets[0]).code == 0;
    const bool hasBayerStage = converts && inputRow.bayer && !targetRow.bayer;

    std::vector<Configuration> configurations;
    size_t sample = 0;
    size_t large = 0;
    if (hasBayerStage) {
      // The fast paths depend on the features; that nothing else does is seen well enough with one set after another.
      configurations = {{kModeFast, {0}},
                        {kModeFast, {1}},
                        {kModeFast, {2}},
                        {kModeFast, {3}},
                        {kModeHighQuality, {0, 1, 2, 3}},
                        {kModeClassic, {0, 1, 2, 3}},
                        {0, {2}},
                        {7, {1, 3}}};
      sample = 28;
      large = 5;
    } else {
      configurations = {{kModeFast, {0, 1, 2, 3}}, {kModeHighQuality, {2, 3}}, {kModeClassic, {2, 1}}, {7, {2, 0}}};
      sample = converts ? 20 : 2;
      large = converts ? 2 : 0;
    }

    for (const Configuration& configuration : configurations) {
      const bool unusualMode = configuration.mode == 0 || configuration.mode == 7;
      ModelRandom random((uint64_t{input} << 32 | target) * 31 + uint64_t{configuration.mode} * 7 +
                         configuration.featureSets[0]);
      const bool allSizes = full && converts && !unusualMode;
      const std::vector<Size> sizes = SizesOf(allSizes, random.Below(kSmallSizes), unusualMode ? 4 : sample, large);
      for (size_t pass = 0; pass < (allSizes ? passes : 1); ++pass) {
        uint64_t count = random.Below(1U << 20);
        for (const Size& size : sizes) {
          ASSERT_TRUE(Run(MakeCase(input, target, configuration, size, count++)));
        }
      }
    }
  }
  RecordProperty("cases", std::to_string(cases_));
}

TEST_P(ConverterSweep, RefusesTargetsThatAreNoPublicFormat) {
  MakeConverters();
  for (const uint32_t target : {0U, 0x01080002U, 0xFFFFFFFFU}) {
    for (const uint32_t mode : {kModeFast, kModeHighQuality, kModeClassic}) {
      Case c = MakeCase(GetParam(), target, {mode, {2}}, {4, 3}, 0);
      c.form = Form::kImage;
      ASSERT_TRUE(Run(c));
    }
  }
}

TEST_P(ConverterSweep, ListsTheOutputsOfTheModel) {
  MakeConverters();
  std::vector<uint32_t> listed;
  const img::ProcessorFeatures features{};
  const img::processing::ImageConverter converter(
      std::make_shared<img::buffer::MultiFormatBufferPool>(
          std::make_shared<img::buffer::FixedFormatVectorBufferPool::Factory>(), 1),
      features);
  for (const img::PixelFormatId output :
       converter.GetSupportedOutputPixelFormats(static_cast<img::PixelFormatId>(GetParam()))) {
    listed.push_back(static_cast<uint32_t>(output));
  }
  EXPECT_EQ(listed, ModelSupportedOutputs(GetParam()));
}

// One test for each input format, so that they can run side by side.
INSTANTIATE_TEST_SUITE_P(Inputs, ConverterSweep, testing::ValuesIn(PublicFormats()),
                         [](const testing::TestParamInfo<uint32_t>& param) {
                           return std::string(FormatOf(param.param).name);
                         });

}  // namespace
}  // namespace korvel_test
