#include "processing/conversion/stream_conversion.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "buffers/fixed_format_vector_buffer_pool.h"
#include "buffers/multi_format_buffer_pool.h"
#include "buffers/raw_image_buffer.h"
#include "buffers/vector_image_buffer.h"
#include "processing/conversion/image_converter.h"
#include "processing/conversion/sample_vectors.h"
#include "processing/streaming.h"
#include "tests/support/guarded_memory.h"
#include "tests/support/instruction_sets.h"

namespace {

using img::FormatFacts;
using img::IfcImage;
using img::InstructionSet;
using img::PixelFormatId;
using img::PixelType;
using img::ProcessorFeatures;
using img::Size2D;
using img::processing::ImageConverter;
using img::processing::SampleKernels;
using img::processing::StreamConversion;
using korvel_test::GuardedMemory;
using korvel_test::Placement;
using korvel_test::RunnableInstructionSets;

using Bytes = std::vector<uint8_t>;

const ProcessorFeatures kRecords[] = {{}, {.avx = 1}, {.avx = 1, .avx2 = 1}};
const Size2D kSizes[] = {{1, 1}, {2, 1}, {3, 1}, {5, 3}, {31, 1}, {32, 1}, {33, 1}, {11, 9}, {64, 65}, {1030, 3}};

std::vector<PixelFormatId> AllFormats() {
  std::vector<PixelFormatId> formats;
#define KORVEL_ADD(name) formats.push_back(PixelFormatId::name);
  KORVEL_FOR_EACH_PUBLIC_FORMAT(KORVEL_ADD)
#undef KORVEL_ADD
  return formats;
}

// Results of demosaics may depend on the record.
bool IsDemosaic(const FormatFacts& from, const FormatFacts& to) {
  return from.type == PixelType::Bayer && to.type != PixelType::Bayer;
}

Bytes RandomBytes(size_t count, unsigned seed) {
  Bytes bytes(count);
  std::mt19937 random(seed);
  std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<uint8_t>(random()); });
  return bytes;
}

std::unique_ptr<ImageConverter> MakeConverter(const ProcessorFeatures& features) {
  auto pool = std::make_shared<img::buffer::MultiFormatBufferPool>(
      std::make_shared<img::buffer::FixedFormatVectorBufferPool::Factory>(), 1);
  return std::make_unique<ImageConverter>(std::move(pool), features);
}

// What a conversion leaves behind: the pixels or the failure, and the input.
struct Outcome {
  Bytes pixels;
  Bytes input;
  std::string failure;

  bool operator==(const Outcome&) const = default;
};

Outcome ConvertImage(const ImageConverter& converter, PixelFormatId from, PixelFormatId to, const Size2D& size,
                     uint8_t* source, size_t byteCount) {
  Outcome outcome;
  try {
    const std::shared_ptr<IfcImage> input =
        img::buffer::RawImageBuffer::CreateBuffer(from, source, size)->CreateImage();
    const auto result = converter.ConvertPixelFormat(input, to);
    EXPECT_EQ(result->PixelFormat(), to);
    EXPECT_EQ(result->Area(), (img::ImageArea{{}, size}));
    outcome.pixels.assign(result->PixelPointer(0, 0), result->PixelPointer(0, 0) + result->ByteCount());
  } catch (const std::exception& exception) {
    outcome.failure = exception.what();
  }
  outcome.input.assign(source, source + byteCount);
  return outcome;
}

Outcome ConvertIntoMemory(const ImageConverter& converter, PixelFormatId from, PixelFormatId to, const Size2D& size,
                          uint8_t* source, size_t byteCount, uint8_t* target, size_t targetSize) {
  Outcome outcome;
  try {
    const std::shared_ptr<IfcImage> input =
        img::buffer::RawImageBuffer::CreateBuffer(from, source, size)->CreateImage();
    converter.ConvertPixelFormat(input, to, target, targetSize);
  } catch (const std::exception& exception) {
    outcome.failure = exception.what();
  }
  outcome.pixels.assign(target, target + targetSize);
  outcome.input.assign(source, source + byteCount);
  return outcome;
}

class StreamConversionOfFormat : public testing::TestWithParam<PixelFormatId> {};

// Every target, every record, both forms, beside the modules that a record without vectors gets.
TEST_P(StreamConversionOfFormat, MakesWhatTheChainOfModulesMakes) {
  const FormatFacts from = *img::FindFacts(GetParam());
  constexpr size_t kRoom = size_t{64} * 65 * 8;
  GuardedMemory sources(kRoom);
  GuardedMemory targets(kRoom);
  const auto modules = MakeConverter({});
  for (const ProcessorFeatures& features : kRecords) {
    const auto converter = MakeConverter(features);
    for (const PixelFormatId id : AllFormats()) {
      const FormatFacts to = *img::FindFacts(id);
      if (IsDemosaic(from, to)) continue;
      for (const Size2D& size : kSizes) {
        const std::string trace = std::string(from.name) + " to " + std::string(to.name) + ", " +
                                  std::to_string(size.width) + " x " + std::to_string(size.height) + ", " +
                                  std::to_string(features.avx) + std::to_string(features.avx2);
        const Bytes frame = RandomBytes(from.ByteCount(size.width * size.height), 1);
        const size_t targetSize = to.ByteCount(size.width * size.height);
        for (const Placement placement : {Placement::kEndsAtPage, Placement::kStartsAtPage, Placement::kOddAddress}) {
          uint8_t* const source = sources.Place(frame.size(), placement);
          const auto fill = [&] { std::copy(frame.begin(), frame.end(), source); };
          fill();
          const Outcome expected = ConvertImage(*modules, from.id, id, size, source, frame.size());
          fill();
          ASSERT_EQ(ConvertImage(*converter, from.id, id, size, source, frame.size()), expected) << trace;

          uint8_t* const target = targets.Place(targetSize, placement);
          const auto intoMemory = [&](const ImageConverter& used, size_t count) {
            fill();
            targets.Mark(target, targetSize);
            const Outcome outcome = ConvertIntoMemory(used, from.id, id, size, source, frame.size(), target, count);
            EXPECT_TRUE(targets.IsMarkedOutside(target, targetSize)) << trace;
            return outcome;
          };
          const Outcome exact = intoMemory(*converter, targetSize);
          ASSERT_EQ(exact, intoMemory(*modules, targetSize)) << trace;
          if (exact.failure.empty()) {
            ASSERT_EQ(exact.pixels, expected.pixels) << trace;
          }
          ASSERT_EQ(intoMemory(*converter, targetSize - 1), intoMemory(*modules, targetSize - 1)) << trace;
        }
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Inputs, StreamConversionOfFormat, testing::ValuesIn(AllFormats()),
                         [](const auto& format) { return img::PixelFormatInfo_Name(format.param); });

struct Pair {
  PixelFormatId from;
  PixelFormatId to;
};
const Pair kKindsOfConversion[] = {
    {PixelFormatId::Mono12, PixelFormatId::Mono12},
    {PixelFormatId::Mono12p, PixelFormatId::Mono12},
    {PixelFormatId::BayerRG10g40Qrv, PixelFormatId::BayerRG8},
    {PixelFormatId::RGB8, PixelFormatId::RGB12},
    {PixelFormatId::Mono8, PixelFormatId::BGRa8},
    {PixelFormatId::Mono8, PixelFormatId::RGB8},
    {PixelFormatId::Mono12, PixelFormatId::RGBa12},
    {PixelFormatId::Mono12p, PixelFormatId::BGR8},
    {PixelFormatId::RGB8, PixelFormatId::BGR8},
    {PixelFormatId::BGR12, PixelFormatId::RGB12},
    {PixelFormatId::RGB12, PixelFormatId::BGR8},
    {PixelFormatId::RGB8, PixelFormatId::BGR10},
};

TEST(StreamConversion, TakesEveryKindOfConversion) {
  for (const Pair& pair : kKindsOfConversion) {
    const auto buffer = img::buffer::VectorImageBuffer::AllocBuffer(pair.from, {6, 4});
    for (const ProcessorFeatures& features : kRecords) {
      EXPECT_EQ(StreamConversion(features).Takes(*buffer->CreateImage(), pair.to),
                img::InstructionSetOf(features) != InstructionSet::Baseline)
          << PixelFormatInfo_Name(pair.from) << " to " << PixelFormatInfo_Name(pair.to);
    }
  }
}

TEST(StreamConversion, MakesTheSameOfImagesThatTheCachesDontHold) {
  const auto modules = MakeConverter({});
  for (const Pair& pair : kKindsOfConversion) {
    const size_t lineSize = img::FindFacts(pair.to)->ByteCount(4001);
    const Size2D size{4001, img::processing::kSmallestStreamedOutput / lineSize + 1};
    const Bytes frame = RandomBytes(img::FindFacts(pair.from)->ByteCount(size.width * size.height), 2);
    Bytes source = frame;
    const size_t targetSize = img::FindFacts(pair.to)->ByteCount(size.width * size.height);
    ASSERT_TRUE(img::processing::ShouldStream(targetSize));
    Bytes target(targetSize + 3);
    const Outcome expected =
        ConvertIntoMemory(*modules, pair.from, pair.to, size, source.data(), source.size(), target.data(), targetSize);
    for (const ProcessorFeatures& features : kRecords) {
      const auto converter = MakeConverter(features);
      for (const size_t offset : {size_t{0}, size_t{2}, size_t{3}}) {
        source = frame;
        target.assign(target.size(), 0xA5);
        const Outcome seen = ConvertIntoMemory(*converter, pair.from, pair.to, size, source.data(), source.size(),
                                               target.data() + offset, targetSize);
        ASSERT_TRUE(seen == expected) << PixelFormatInfo_Name(pair.from) << " to " << PixelFormatInfo_Name(pair.to)
                                      << " at " << offset;
        ASSERT_EQ(target[targetSize + offset == target.size() ? 0 : targetSize + offset], 0xA5);
      }
    }
  }
}

// The chain copies its result into the caller's memory last of all, so that the two may overlap.
TEST(StreamConversion, LeavesToTheModulesWhatOverlapsItsInput) {
  const Size2D size{40, 10};
  for (const Pair& pair : kKindsOfConversion) {
    const size_t inputSize = img::FindFacts(pair.from)->ByteCount(size.width * size.height);
    const size_t outputSize = img::FindFacts(pair.to)->ByteCount(size.width * size.height);
    const Bytes memory = RandomBytes(inputSize + outputSize, 3);
    const auto convert = [&](const ProcessorFeatures& features, size_t from, size_t to) {
      Bytes used = memory;
      ConvertIntoMemory(*MakeConverter(features), pair.from, pair.to, size, used.data() + from, inputSize,
                        used.data() + to, outputSize);
      return used;
    };
    for (const ProcessorFeatures& features : kRecords) {
      EXPECT_EQ(convert(features, 0, 0), convert({}, 0, 0));
      EXPECT_EQ(convert(features, 0, inputSize - 1), convert({}, 0, inputSize - 1));
      EXPECT_EQ(convert(features, outputSize - 1, 0), convert({}, outputSize - 1, 0));
    }
  }
}

TEST(StreamConversion, MakesTheSameOfPartsOfImages) {
  for (const Pair& pair : kKindsOfConversion) {
    const auto convert = [&](const ProcessorFeatures& features) {
      const auto buffer = img::buffer::VectorImageBuffer::AllocBuffer(pair.from, {50, 20});
      const Bytes frame = RandomBytes(buffer->ByteCount(), 4);
      std::copy(frame.begin(), frame.end(), buffer->Data());
      const std::shared_ptr<IfcImage> part = buffer->CreateImage()->Region({2, 1}, {40, 9});
      const auto result = MakeConverter(features)->ConvertPixelFormat(part, pair.to);
      Bytes outcome(result->PixelPointer(0, 0), result->PixelPointer(0, 0) + result->ByteCount());
      outcome.insert(outcome.end(), buffer->Data(), buffer->Data() + buffer->ByteCount());
      return outcome;
    };
    for (const ProcessorFeatures& features : kRecords) {
      EXPECT_EQ(convert(features), convert({}))
          << PixelFormatInfo_Name(pair.from) << " to " << PixelFormatInfo_Name(pair.to);
    }
  }
}

// The kernels by themselves, at every count of steps and between guard pages.
template <class Sample>
void CheckExtension(const SampleKernels::Extend extend, size_t channels) {
  constexpr size_t kMostSteps = 5;
  constexpr size_t kMost = kMostSteps * img::processing::kSamplesPerStep;
  GuardedMemory from(kMost * sizeof(Sample));
  GuardedMemory to(kMost * channels * sizeof(Sample));
  for (const Placement placement : {Placement::kEndsAtPage, Placement::kStartsAtPage, Placement::kOddAddress}) {
    for (size_t steps = 0; steps <= kMostSteps; ++steps) {
      const size_t count = steps * img::processing::kSamplesPerStep;
      const Bytes samples = RandomBytes(count * sizeof(Sample), 5);
      Bytes expected;
      for (size_t i = 0; i < count * channels; ++i) {
        for (size_t byte = 0; byte < sizeof(Sample); ++byte) {
          const uint8_t alpha = byte == 0 ? 255 : 0;
          expected.push_back(i % channels == 3 ? alpha : samples[i / channels * sizeof(Sample) + byte]);
        }
      }
      uint8_t* const source = from.Place(samples.size(), placement);
      std::copy(samples.begin(), samples.end(), source);
      uint8_t* const target = to.Place(expected.size(), placement);
      to.Mark(target, expected.size());
      extend(source, target, steps, false);
      ASSERT_TRUE(std::equal(expected.begin(), expected.end(), target)) << steps;
      ASSERT_TRUE(to.IsMarkedOutside(target, expected.size())) << steps;
    }
  }
}

TEST(StreamConversion, ExtendsWholeStepsOnly) {
  for (const InstructionSet set : RunnableInstructionSets()) {
    const SampleKernels* const kernels = img::processing::FindSampleKernels(set);
    if (kernels == nullptr) continue;
    SCOPED_TRACE(testing::Message() << set);
    CheckExtension<uint8_t>(kernels->extendBytes[0], 3);
    CheckExtension<uint8_t>(kernels->extendBytes[1], 4);
    CheckExtension<uint16_t>(kernels->extendWords[0], 3);
    CheckExtension<uint16_t>(kernels->extendWords[1], 4);
  }
}

}  // namespace
