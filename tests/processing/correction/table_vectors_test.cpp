#include "processing/correction/table_vectors.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>
#include <vector>

#include "buffers/fixed_format_vector_buffer_pool.h"
#include "buffers/multi_format_buffer_pool.h"
#include "processing/correction/gamma_corrector.h"
#include "processing/unaligned.h"
#include "tests/support/feature_records.h"
#include "tests/support/guarded_memory.h"
#include "tests/support/instruction_sets.h"
#include "tests/support/test_images.h"

namespace {

using img::PixelFormatId;
using img::processing::GammaCorrector;
using img::processing::LoadSample;
using img::processing::TableKernels;
using korvel_test::Bytes;
using korvel_test::GuardedMemory;
using korvel_test::Placement;
using korvel_test::RunnableInstructionSets;
using korvel_test::TestImage;

using enum PixelFormatId;

constexpr Placement kPlacements[] = {Placement::kEndsAtPage, Placement::kStartsAtPage, Placement::kOddAddress};

// Calls test(kernels, in, out, count) for every count of groups, which have random bytes in both memories.
template <class Test>
void ForEveryCount(size_t groupBytes, const Test& test) {
  constexpr size_t kMost = 200;
  GuardedMemory from(kMost * groupBytes);
  GuardedMemory to(kMost * groupBytes);
  std::mt19937 random(1);
  for (const img::InstructionSet set : RunnableInstructionSets()) {
    const TableKernels* const kernels = img::processing::FindTableKernels(set);
    if (kernels == nullptr) continue;
    for (const Placement placement : kPlacements) {
      for (size_t count = 0; count <= kMost; ++count) {
        SCOPED_TRACE(testing::Message() << set << ", " << count << " groups of " << groupBytes);
        const size_t bytes = count * groupBytes;
        uint8_t* const in = from.Place(bytes, placement);
        uint8_t* const out = to.Place(bytes, placement);
        std::generate(in, in + bytes, [&] { return static_cast<uint8_t>(random()); });
        to.Mark(out, bytes);
        test(*kernels, in, out, count);
        ASSERT_TRUE(to.IsMarkedOutside(out, bytes));
        if (testing::Test::HasFatalFailure()) return;
      }
    }
  }
}

Bytes RandomTable() {
  Bytes table(256);
  std::mt19937 random(2);
  std::generate(table.begin(), table.end(), [&] { return static_cast<uint8_t>(random()); });
  return table;
}

TEST(TableKernels, LookEveryByteUp) {
  const Bytes table = RandomTable();
  Bytes values(256);
  for (size_t i = 0; i < values.size(); ++i) values[i] = static_cast<uint8_t>(i);
  for (const img::InstructionSet set : RunnableInstructionSets()) {
    const TableKernels* const kernels = img::processing::FindTableKernels(set);
    if (kernels == nullptr || kernels->bytes == nullptr) continue;
    Bytes out(256);
    ASSERT_EQ(kernels->bytes(values.data(), out.data(), 256, table.data()), 256u);
    EXPECT_EQ(out, table) << set;
  }
}

TEST(TableKernels, LookBytesUpInWholeVectors) {
  const Bytes table = RandomTable();
  ForEveryCount(1, [&](const TableKernels& kernels, uint8_t* in, uint8_t* out, size_t count) {
    if (kernels.bytes == nullptr) return;
    const size_t done = kernels.bytes(in, out, count, table.data());
    ASSERT_LE(done, count);
    ASSERT_LT(count - done, 32u);
    for (size_t i = 0; i < done; ++i) ASSERT_EQ(out[i], table[in[i]]);
    ASSERT_TRUE(GuardedMemory::AreMarked(out + done, out + count));
    ASSERT_EQ(kernels.bytes(in, in, count, table.data()), done);
    ASSERT_TRUE(std::equal(in, in + done, out)) << "in place";
  });
}

TEST(TableKernels, LookWordsUpBelowTheMaximum) {
  std::vector<uint16_t> table(4096);
  std::mt19937 random(3);
  std::generate(table.begin(), table.end(), [&] { return static_cast<uint16_t>(random()); });
  for (const uint16_t maximum : {uint16_t{1023}, uint16_t{4095}}) {
    ForEveryCount(2, [&](const TableKernels& kernels, uint8_t* in, uint8_t* out, size_t count) {
      const size_t done = kernels.words(in, out, count, table.data(), maximum);
      ASSERT_LE(done, count);
      ASSERT_LT(count - done, 16u);
      for (size_t i = 0; i < done; ++i) {
        ASSERT_EQ(LoadSample<uint16_t>(out, i), table[std::min(LoadSample<uint16_t>(in, i), maximum)]);
      }
      ASSERT_TRUE(GuardedMemory::AreMarked(out + 2 * done, out + 2 * count));
      ASSERT_EQ(kernels.words(in, in, count, table.data(), maximum), done);
      ASSERT_TRUE(std::equal(in, in + 2 * done, out)) << "in place";
    });
  }
}

TEST(GammaCorrector, GivesTheSameForEveryRecord) {
  const auto makeCorrector = [](const img::ProcessorFeatures& record) {
    auto corrector =
        std::make_unique<GammaCorrector>(std::make_shared<img::buffer::MultiFormatBufferPool>(
                                             std::make_shared<img::buffer::FixedFormatVectorBufferPool::Factory>(), 1),
                                         record);
    corrector->SetGammaCorrectionValue(2.2f);
    return corrector;
  };
  const auto plain = makeCorrector(korvel_test::kPlainRecord);
  std::mt19937 random(4);
  for (const img::ProcessorFeatures& record : korvel_test::kVectorRecords) {
    const auto corrector = makeCorrector(record);
    for (const PixelFormatId format :
         {Mono8, Mono10, Mono12, BayerRG8, BayerRG12, RGB8, BGRa8, RGB10, BGR12, RGBa10, BGRa12, RGB10p32}) {
      for (size_t width = 1; width <= 140; ++width) {
        Bytes bytes(img::PixelFormatInfo_CalcSizeOfPixels(format, width * 2));
        std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<uint8_t>(random()); });
        const TestImage expected(format, width, 2, bytes);
        plain->applyGammaCorrectionInPlace(*expected);
        const TestImage image(format, width, 2, bytes);
        const auto apart = corrector->applyGammaCorrection(*image);
        ASSERT_EQ(image.Content(), bytes);
        corrector->applyGammaCorrectionInPlace(*image);
        ASSERT_EQ(image.Content(), expected.Content()) << width;
        // The alpha of a new image is what its memory held.
        if (apart->NumChannels() != 4) {
          ASSERT_EQ(korvel_test::BytesOf(*apart), expected.Content()) << width;
        }
      }
    }
  }
}

}  // namespace
