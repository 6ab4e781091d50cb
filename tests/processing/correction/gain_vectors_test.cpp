#include "processing/correction/gain_vectors.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>
#include <vector>

#include "buffers/fixed_format_vector_buffer_pool.h"
#include "buffers/multi_format_buffer_pool.h"
#include "processing/correction/gain.h"
#include "processing/unaligned.h"
#include "tests/support/feature_records.h"
#include "tests/support/guarded_memory.h"
#include "tests/support/instruction_sets.h"
#include "tests/support/test_images.h"

namespace {

using img::PixelFormatId;
using img::processing::Gain;
using img::processing::GainKernels;
using img::processing::LoadSample;
using img::processing::StoreSample;
using korvel_test::Bytes;
using korvel_test::GuardedMemory;
using korvel_test::Placement;
using korvel_test::RunnableInstructionSets;
using korvel_test::TestImage;

using enum PixelFormatId;

constexpr Placement kPlacements[] = {Placement::kEndsAtPage, Placement::kStartsAtPage, Placement::kOddAddress};
constexpr float kFactors[] = {1.0f, 1.001f, 1.01f, 1.1f, 1.3f, 1.5f, 1.999999f, 2.2f, 3.0f, 7.77f, 8.0f, 12.1f, 64.0f};

template <class Sample>
Sample Multiplied(uint32_t value, float factor, uint32_t maximum) {
  const float product = factor * static_cast<float>(value & maximum);
  return static_cast<Sample>(std::min(product, static_cast<float>(maximum)));
}

template <class Sample>
size_t Run(const GainKernels& kernels, const uint8_t* in, uint8_t* out, size_t count, float even, float odd,
           uint32_t maximum) {
  if constexpr (sizeof(Sample) == 1) {
    return kernels.bytes(in, out, count, even, odd);
  } else {
    return kernels.words(in, out, count, even, odd, static_cast<uint16_t>(maximum));
  }
}

template <class Sample>
void TestEveryCount(uint32_t maximum) {
  constexpr size_t kMost = 70;
  GuardedMemory from(kMost * sizeof(Sample));
  GuardedMemory to(kMost * sizeof(Sample));
  std::mt19937 random(1);
  for (const img::InstructionSet set : RunnableInstructionSets()) {
    const GainKernels* const kernels = img::processing::FindGainKernels(set);
    if (kernels == nullptr) continue;
    for (const Placement placement : kPlacements) {
      for (size_t count = 0; count <= kMost; ++count) {
        SCOPED_TRACE(testing::Message() << set << ", " << count << " samples to " << maximum);
        const size_t bytes = count * sizeof(Sample);
        uint8_t* const in = from.Place(bytes, placement);
        uint8_t* const out = to.Place(bytes, placement);
        std::generate(in, in + bytes, [&] { return static_cast<uint8_t>(random()); });
        const Bytes before(in, in + bytes);
        to.Mark(out, bytes);
        const float even = kFactors[random() % std::size(kFactors)];
        const float odd = kFactors[random() % std::size(kFactors)];
        const size_t done = Run<Sample>(*kernels, in, out, count, even, odd, maximum);
        ASSERT_LE(done, count);
        ASSERT_LT(count - done, 32 / sizeof(Sample));
        ASSERT_EQ(done % 2, 0u);
        for (size_t i = 0; i < done; ++i) {
          ASSERT_EQ(LoadSample<Sample>(out, i),
                    Multiplied<Sample>(LoadSample<Sample>(in, i), i % 2 == 0 ? even : odd, maximum));
        }
        ASSERT_TRUE(to.IsMarkedOutside(out, done * sizeof(Sample)));
        ASSERT_TRUE(std::equal(before.begin(), before.end(), in));
        ASSERT_EQ(Run<Sample>(*kernels, in, in, count, even, odd, maximum), done);
        ASSERT_TRUE(std::equal(in, in + done * sizeof(Sample), out)) << "in place";
      }
    }
  }
}

TEST(GainKernels, TakeWholeVectorsFromEveryCountAndAddress) {
  TestEveryCount<uint8_t>(255);
  TestEveryCount<uint16_t>(1023);
  TestEveryCount<uint16_t>(4095);
}

TEST(GainKernels, MultiplyBytesInIntegers) {
  constexpr size_t kMost = 70;
  GuardedMemory from(kMost);
  GuardedMemory to(kMost);
  std::mt19937 random(4);
  const auto randomFactor = [&random] {
    return img::processing::FixedFactor{.whole = static_cast<uint16_t>(128 + random() % 128),
                                        .fraction = static_cast<uint16_t>(random()),
                                        .scale = static_cast<uint16_t>(1u << (9 + random() % 7))};
  };
  for (const img::InstructionSet set : RunnableInstructionSets()) {
    const GainKernels* const kernels = img::processing::FindGainKernels(set);
    if (kernels == nullptr) continue;
    for (const Placement placement : kPlacements) {
      for (size_t count = 0; count <= kMost; ++count) {
        SCOPED_TRACE(testing::Message() << set << ", " << count);
        uint8_t* const in = from.Place(count, placement);
        uint8_t* const out = to.Place(count, placement);
        std::generate(in, in + count, [&] { return static_cast<uint8_t>(random()); });
        to.Mark(out, count);
        const img::processing::FixedFactor factors[] = {randomFactor(), randomFactor()};
        const size_t done = kernels->bytesInIntegers(in, out, count, factors[0], factors[1]);
        ASSERT_LE(done, count);
        ASSERT_LT(count - done, 32u);
        for (size_t i = 0; i < done; ++i) {
          const auto& factor = factors[i % 2];
          const uint32_t product =
              ((in[i] * factor.whole + (in[i] * uint32_t{factor.fraction} >> 16)) * factor.scale) >> 16;
          ASSERT_EQ(out[i], std::min(product, 255u));
        }
        ASSERT_TRUE(to.IsMarkedOutside(out, done));
        ASSERT_EQ(kernels->bytesInIntegers(in, in, count, factors[0], factors[1]), done);
        ASSERT_TRUE(std::equal(in, in + done, out)) << "in place";
      }
    }
  }
}

TEST(GainKernels, MultiplyEveryValueAsATableDoes) {
  std::vector<float> factors(std::begin(kFactors), std::end(kFactors));
  std::mt19937 random(2);
  for (int i = 0; i < 200; ++i) factors.push_back(1.0f + static_cast<float>(random() % 6300000) / 100000.0f);
  for (int i = 100; i <= 800; ++i) factors.push_back(static_cast<float>(i) / 100.0f);
  Bytes bytes(256);
  for (size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<uint8_t>(i);
  Bytes words(2 * 65536);
  for (size_t i = 0; i < 65536; ++i) StoreSample<uint16_t>(words.data(), i, static_cast<uint16_t>(i));
  for (const img::InstructionSet set : RunnableInstructionSets()) {
    const GainKernels* const kernels = img::processing::FindGainKernels(set);
    if (kernels == nullptr) continue;
    for (const float factor : factors) {
      Bytes out(bytes.size());
      ASSERT_EQ(kernels->bytes(bytes.data(), out.data(), 256, factor, factor), 256u);
      for (uint32_t i = 0; i < 256; ++i) ASSERT_EQ(out[i], Multiplied<uint8_t>(i, factor, 255)) << i << " * " << factor;
    }
    for (const float factor : kFactors) {
      for (const uint16_t maximum : {uint16_t{1023}, uint16_t{4095}}) {
        Bytes out(words.size());
        ASSERT_EQ(kernels->words(words.data(), out.data(), 65536, factor, factor, maximum), 65536u);
        for (uint32_t i = 0; i < 65536; ++i) {
          ASSERT_EQ(LoadSample<uint16_t>(out.data(), i), Multiplied<uint16_t>(i, factor, maximum))
              << i << " * " << factor;
        }
      }
    }
  }
}

std::unique_ptr<Gain> MakeGain(const img::ProcessorFeatures& record) {
  return std::make_unique<Gain>(std::make_shared<img::buffer::MultiFormatBufferPool>(
                                    std::make_shared<img::buffer::FixedFormatVectorBufferPool::Factory>(), 1),
                                record);
}

// Some factors have integers, and some need floats.
TEST(Gain, MultipliesEveryByteByEveryFactor) {
  Bytes bytes(256);
  for (size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<uint8_t>(i);
  const auto gain = MakeGain(img::ProcessorFeatures::OfThisProcessor());
  for (int hundredths = 101; hundredths <= 800; ++hundredths) {
    const float factor = static_cast<float>(hundredths) / 100.0f;
    const float red = std::clamp(factor * 0.7f, 1.0f, 8.0f);
    gain->SetMasterGainValue(factor);
    gain->SetRedGainValue(red);
    const TestImage mono(Mono8, 256, 1, bytes);
    gain->applyGainInPlace(*mono);
    const TestImage bayer(BayerRG8, 256, 1, bytes);
    gain->applyGainInPlace(*bayer);
    for (uint32_t i = 0; i < 256; ++i) {
      ASSERT_EQ(mono.Content()[i], Multiplied<uint8_t>(i, factor, 255)) << i << " * " << factor;
      ASSERT_EQ(bayer.Content()[i], Multiplied<uint8_t>(i, i % 2 == 0 ? red * factor : factor, 255))
          << i << " * " << factor << ", red " << red;
    }
  }
}

TEST(Gain, GivesTheSameForEveryRecord) {
  const auto makeGain = [](const img::ProcessorFeatures& record) {
    auto gain = MakeGain(record);
    gain->SetMasterGainValue(1.3f);
    gain->SetRedGainValue(1.7f);
    gain->SetBlueGainValue(2.9f);
    return gain;
  };
  const auto plain = makeGain(korvel_test::kPlainRecord);
  std::mt19937 random(3);
  for (const img::ProcessorFeatures& record : korvel_test::kVectorRecords) {
    const auto gain = makeGain(record);
    for (const PixelFormatId format : {Mono8, Mono10, Mono12, BayerGR8, BayerRG8, BayerGB8, BayerBG8, BayerGR10,
                                       BayerRG10, BayerGR12, BayerGB12, BayerBG12}) {
      for (size_t width = 1; width <= 70; ++width) {
        Bytes bytes(img::PixelFormatInfo_CalcSizeOfPixels(format, width * 3));
        std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<uint8_t>(random()); });
        const TestImage image(format, width, 3, bytes);
        const Bytes expected = korvel_test::BytesOf(*plain->applyGain(*image));
        ASSERT_EQ(korvel_test::BytesOf(*gain->applyGain(*image)), expected) << width;
        gain->applyGainInPlace(*image);
        ASSERT_EQ(image.Content(), expected) << width;
      }
    }
  }
}

}  // namespace
