#include "core/instruction_set.h"

#include <gtest/gtest.h>

#include "tests/support/instruction_sets.h"
#include "tests/support/this_processor.h"

namespace {

using img::InstructionSet;
using img::InstructionSetOf;
using korvel_test::FeaturesOfThisProcessor;

TEST(InstructionSet, IsBaselineWithoutAvx) {
  EXPECT_EQ(InstructionSetOf({}), InstructionSet::Baseline);
  EXPECT_EQ(InstructionSetOf({.sse = 1, .sse2 = 1, .sse3 = 1, .ssse3 = 1, .sse41 = 1, .sse42 = 1}),
            InstructionSet::Baseline);
}

TEST(InstructionSet, IsTheWidestThatRecordAndProcessorHave) {
  const auto processor = FeaturesOfThisProcessor();
  const InstructionSet avx = processor.avx ? InstructionSet::Avx : InstructionSet::Baseline;
  const InstructionSet avx2 = processor.avx2 ? InstructionSet::Avx2 : avx;
  EXPECT_EQ(InstructionSetOf({.avx = 1}), avx);
  EXPECT_EQ(InstructionSetOf({.avx2 = 1}), avx2);
  EXPECT_EQ(InstructionSetOf({.avx = 1, .avx2 = 1}), avx2);
}

}  // namespace
