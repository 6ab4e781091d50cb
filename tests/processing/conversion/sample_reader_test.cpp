#include "processing/conversion/sample_reader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

#include "processing/streaming.h"
#include "tests/support/guarded_memory.h"
#include "tests/support/instruction_sets.h"

namespace {

using img::FormatFacts;
using img::InstructionSet;
using img::PixelFormatId;
using img::processing::SampleReader;
using korvel_test::GuardedMemory;
using korvel_test::Placement;
using korvel_test::RunnableInstructionSets;

using Bytes = std::vector<uint8_t>;

const std::vector<PixelFormatId> kFormats = {
    PixelFormatId::Mono8,   PixelFormatId::Mono10,          PixelFormatId::Mono12,       PixelFormatId::BayerRG10p,
    PixelFormatId::Mono12p, PixelFormatId::BayerRG10g40Qrv, PixelFormatId::Mono12g24Qrv,
};

// The samples by their definition, bit by bit.
unsigned SampleOf(const FormatFacts& format, const Bytes& stream, size_t sampleCount, size_t i) {
  const uint32_t bits = format.significantBits;
  if (format.layout == img::PixelLayout::Unpacked) {
    return bits == 8 ? stream[i] : unsigned{stream[2 * i]} | unsigned{stream[2 * i + 1]} << 8;
  }
  unsigned value = 0;
  if (format.layout == img::PixelLayout::NoAlignment) {
    for (size_t bit = 0; bit < bits; ++bit) {
      const size_t at = i * bits + bit;
      value |= static_cast<unsigned>(stream[at / 8] >> at % 8 & 1) << bit;
    }
    return value;
  }
  const uint32_t lowBits = bits - 8;
  const size_t samplesPerGroup = 8 / lowBits;
  const size_t group = i / samplesPerGroup;
  const size_t inGroup = i % samplesPerGroup;
  const size_t start = group * (samplesPerGroup + 1);
  value = static_cast<unsigned>(stream[start + inGroup]) << lowBits;
  if ((group + 1) * samplesPerGroup <= sampleCount) {
    value |= static_cast<unsigned>(stream[start + samplesPerGroup]) >> inGroup * lowBits & ((1u << lowBits) - 1);
  }
  return value;
}

Bytes ExpectedSamples(const FormatFacts& format, const Bytes& stream, size_t sampleCount, uint32_t depth) {
  Bytes expected;
  for (size_t i = 0; i < sampleCount; ++i) {
    const unsigned value = SampleOf(format, stream, sampleCount, i);
    const uint32_t from = format.significantBits;
    const unsigned changed = from < depth ? value << (depth - from) : value >> (from - depth);
    expected.push_back(static_cast<uint8_t>(changed));
    if (depth != 8) expected.push_back(static_cast<uint8_t>(changed >> 8));
  }
  return expected;
}

// Random bytes, and among them runs of all ones and of zeros.
Bytes MakeStream(size_t byteCount, unsigned seed) {
  Bytes stream(byteCount);
  std::mt19937 random(seed);
  for (uint8_t& byte : stream) {
    const auto value = static_cast<unsigned>(random());
    byte = value % 11 == 0 ? 0xFF : value % 11 == 1 ? 0 : static_cast<uint8_t>(value >> 8);
  }
  return stream;
}

template <class Check>
void ForEachCase(Check check) {
  for (const PixelFormatId id : kFormats) {
    for (const uint32_t depth : {8u, 10u, 12u}) {
      for (const InstructionSet set : RunnableInstructionSets()) {
        SCOPED_TRACE(testing::Message() << PixelFormatInfo_Name(id) << " at " << depth << ", " << set);
        check(*img::FindFacts(id), depth, set);
        if (testing::Test::HasFatalFailure()) return;
      }
    }
  }
}

TEST(SampleReader, ReadsEveryCountOfSamplesBetweenGuardPages) {
  constexpr size_t kMost = 140;
  GuardedMemory from(2 * kMost);
  GuardedMemory to(2 * kMost);
  ForEachCase([&](const FormatFacts& format, uint32_t depth, InstructionSet set) {
    for (const Placement placement : {Placement::kEndsAtPage, Placement::kStartsAtPage, Placement::kOddAddress}) {
      for (size_t count = 1; count <= kMost; ++count) {
        const Bytes stream = MakeStream(format.ByteCount(count), static_cast<unsigned>(count));
        uint8_t* const source = from.Place(stream.size(), placement);
        std::copy(stream.begin(), stream.end(), source);
        const Bytes expected = ExpectedSamples(format, stream, count, depth);
        uint8_t* const target = to.Place(expected.size(), placement);
        to.Mark(target, expected.size());
        SampleReader(format, source, count, depth, set).Read(0, count, target);
        ASSERT_TRUE(std::equal(expected.begin(), expected.end(), target)) << count;
        ASSERT_TRUE(to.IsMarkedOutside(target, expected.size())) << count;
      }
    }
  });
}

TEST(SampleReader, ReadsARunFromAnySampleOn) {
  constexpr size_t kSamples = 171;  // an incomplete group at the end of every packed layout
  GuardedMemory from(2 * kSamples);
  GuardedMemory to(2 * kSamples);
  ForEachCase([&](const FormatFacts& format, uint32_t depth, InstructionSet set) {
    const Bytes stream = MakeStream(format.ByteCount(kSamples), 3);
    uint8_t* const source = from.Place(stream.size(), Placement::kEndsAtPage);
    std::copy(stream.begin(), stream.end(), source);
    const Bytes expected = ExpectedSamples(format, stream, kSamples, depth);
    const SampleReader reader(format, source, kSamples, depth, set);
    for (size_t first = 0; first <= kSamples; first += first < 10 || first > 160 ? 1 : 13) {
      for (size_t count = 0; count <= kSamples - first; ++count) {
        const size_t byteCount = count * reader.BytesPerSample();
        uint8_t* const target = to.Place(byteCount, Placement::kEndsAtPage);
        to.Mark(target, byteCount);
        reader.Read(first, count, target);
        const uint8_t* const wanted = expected.data() + first * reader.BytesPerSample();
        ASSERT_TRUE(std::equal(wanted, wanted + byteCount, target)) << first << " " << count;
        ASSERT_TRUE(to.IsMarkedOutside(target, byteCount)) << first << " " << count;
      }
    }
  });
}

TEST(SampleReader, ReadsMoreThanTheCachesHold) {
  const Bytes random = MakeStream(2 * img::processing::kSmallestStreamedOutput + 1000, 4);
  Bytes target(random.size());
  for (const PixelFormatId id : kFormats) {
    for (const uint32_t depth : {8u, 12u}) {
      const FormatFacts format = *img::FindFacts(id);
      const size_t count = img::processing::kSmallestStreamedOutput / (depth == 8 ? 1 : 2) + 91;
      Bytes expected(target.size());
      const SampleReader plain(format, random.data(), count, depth, InstructionSet::Baseline);
      const size_t byteCount = count * plain.BytesPerSample();
      plain.ReadAll(expected.data());
      for (const InstructionSet set : RunnableInstructionSets()) {
        // From an offset of 3 whole groups of words never become aligned.
        for (const size_t offset : {0u, 3u, 16u}) {
          std::fill(target.begin(), target.end(), uint8_t{0xA5});
          SampleReader(format, random.data(), count, depth, set).ReadAll(target.data() + offset);
          ASSERT_TRUE(std::equal(expected.begin(), expected.begin() + static_cast<ptrdiff_t>(byteCount),
                                 target.begin() + static_cast<ptrdiff_t>(offset)))
              << format.name << " " << depth << " " << set << " " << offset;
          ASSERT_EQ(target[offset + byteCount], 0xA5);
        }
      }
    }
  }
}

}  // namespace
