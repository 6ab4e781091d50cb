#include "processing/copy_bytes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "processing/copy_vectors.h"
#include "processing/streaming.h"
#include "tests/support/guarded_memory.h"
#include "tests/support/instruction_sets.h"

namespace {

using korvel_test::GuardedMemory;
using korvel_test::Placement;
using korvel_test::RunnableInstructionSets;

constexpr size_t kMost = 1000;

TEST(CopyBytes, StreamsEveryCountFromAndToEveryAddress) {
  GuardedMemory from(kMost);
  GuardedMemory to(kMost);
  std::mt19937 random(1);
  for (const img::InstructionSet set : RunnableInstructionSets()) {
    const img::processing::CopyKernels* const kernels = img::processing::FindCopyKernels(set);
    if (kernels == nullptr) continue;
    for (const Placement placement : {Placement::kEndsAtPage, Placement::kStartsAtPage, Placement::kOddAddress}) {
      for (size_t count = 0; count <= kMost; count += count < 300 ? 1 : 37) {
        uint8_t* const source = from.Place(count, placement);
        uint8_t* const target = to.Place(count, placement);
        std::generate(source, source + count, [&] { return static_cast<uint8_t>(random()); });
        to.Mark(target, count);
        kernels->stream(source, target, count);
        ASSERT_TRUE(std::equal(source, source + count, target)) << set << " " << count;
        ASSERT_TRUE(to.IsMarkedOutside(target, count)) << set << " " << count;
      }
    }
  }
}

TEST(CopyBytes, CopiesMoreThanTheCachesHold) {
  const size_t count = img::processing::kSmallestStreamedOutput + 77;
  std::vector<uint8_t> from(count);
  std::mt19937 random(2);
  std::generate(from.begin(), from.end(), [&] { return static_cast<uint8_t>(random()); });
  for (const img::InstructionSet set : RunnableInstructionSets()) {
    std::vector<uint8_t> to(count + 2, 0xCD);
    img::processing::CopyBytes(from.data(), to.data() + 1, count, set);
    EXPECT_TRUE(std::equal(from.begin(), from.end(), to.begin() + 1)) << set;
    EXPECT_EQ(to.front(), 0xCD) << set;
    EXPECT_EQ(to.back(), 0xCD) << set;
  }
}

}  // namespace
