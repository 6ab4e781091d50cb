#include "core/processor_features.h"

#include <gtest/gtest.h>

#include <cstddef>

namespace {

using img::ProcessorFeatures;

TEST(ProcessorFeatures, AreEightBytesInOrderOfTheirAge) {
  static_assert(sizeof(ProcessorFeatures) == 8);
  EXPECT_EQ(offsetof(ProcessorFeatures, sse), 0u);
  EXPECT_EQ(offsetof(ProcessorFeatures, sse2), 1u);
  EXPECT_EQ(offsetof(ProcessorFeatures, sse3), 2u);
  EXPECT_EQ(offsetof(ProcessorFeatures, ssse3), 3u);
  EXPECT_EQ(offsetof(ProcessorFeatures, sse41), 4u);
  EXPECT_EQ(offsetof(ProcessorFeatures, sse42), 5u);
  EXPECT_EQ(offsetof(ProcessorFeatures, avx), 6u);
  EXPECT_EQ(offsetof(ProcessorFeatures, avx2), 7u);
}

TEST(ProcessorFeatures, AreNoneInARecordThatNobodyFilled) {
  const ProcessorFeatures none;
  EXPECT_EQ(none.sse + none.sse2 + none.sse3 + none.ssse3 + none.sse41 + none.sse42 + none.avx + none.avx2, 0);
}

TEST(ProcessorFeatures, AreReadOnce) {
  EXPECT_EQ(&ProcessorFeatures::OfThisProcessor(), &ProcessorFeatures::OfThisProcessor());
}

TEST(ProcessorFeatures, AgreeWithTheCompilersForTheRegistersThatEverySystemSupports) {
  const ProcessorFeatures& features = ProcessorFeatures::OfThisProcessor();
  EXPECT_EQ(features.sse, __builtin_cpu_supports("sse") ? 1 : 0);
  EXPECT_EQ(features.sse2, __builtin_cpu_supports("sse2") ? 1 : 0);
  EXPECT_EQ(features.sse3, __builtin_cpu_supports("sse3") ? 1 : 0);
  EXPECT_EQ(features.ssse3, __builtin_cpu_supports("ssse3") ? 1 : 0);
  EXPECT_EQ(features.sse41, __builtin_cpu_supports("sse4.1") ? 1 : 0);
  EXPECT_EQ(features.sse42, __builtin_cpu_supports("sse4.2") ? 1 : 0);
}

TEST(ProcessorFeatures, HoldWhatTheCompilerFindsUsableInTheWiderRegisters) {
  // The compiler's answer also asks the operating system, so it may be no where the record says yes.
  const ProcessorFeatures& features = ProcessorFeatures::OfThisProcessor();
  if (__builtin_cpu_supports("avx")) {
    EXPECT_EQ(features.avx, 1);
  }
  if (__builtin_cpu_supports("avx2")) {
    EXPECT_EQ(features.avx2, 1);
  }
  EXPECT_LE(features.avx, 1);
  EXPECT_LE(features.avx2, 1);
}

TEST(ProcessorFeatures, HaveTheTwoThatEvery64BitProcessorHas) {
  EXPECT_EQ(ProcessorFeatures::OfThisProcessor().sse, 1);
  EXPECT_EQ(ProcessorFeatures::OfThisProcessor().sse2, 1);
}

}  // namespace
