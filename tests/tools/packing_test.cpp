#include "tools/packing.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace korvel::tools {
namespace {

using ::testing::ElementsAre;

TEST(PackBytes, KeepsOneByteOfEachSample) { EXPECT_THAT(PackBytes({0x00, 0x7F, 0xFF}), ElementsAre(0x00, 0x7F, 0xFF)); }

TEST(PackWords, PutsTheLowByteFirst) { EXPECT_THAT(PackWords({0x0ABC, 0x0003}), ElementsAre(0xBC, 0x0A, 0x03, 0x00)); }

TEST(PackBitStream, PutsTwoSamplesOf12BitsIntoThreeBytes) {
  EXPECT_THAT(PackBitStream({0xABC, 0x123}, 12), ElementsAre(0xBC, 0x3A, 0x12));
}

TEST(PackBitStream, PutsFourSamplesOf10BitsIntoFiveBytes) {
  EXPECT_THAT(PackBitStream({0x3FF, 0x000, 0x3FF, 0x001}, 10), ElementsAre(0xFF, 0x03, 0xF0, 0x7F, 0x00));
}

TEST(PackBitStream, FillsTheLastByteWithZeros) {
  EXPECT_THAT(PackBitStream({0xFFF}, 12), ElementsAre(0xFF, 0x0F));
  EXPECT_THAT(PackBitStream({}, 12), ElementsAre());
}

TEST(PackMipi, PutsTheLowBitsOfFourSamplesOf10BitsLast) {
  EXPECT_THAT(PackMipi({0x001, 0x3FE, 0x2AB, 0x100}, 10), ElementsAre(0x00, 0xFF, 0xAA, 0x40, 0x39));
}

TEST(PackMipi, PutsTheLowBitsOfTwoSamplesOf12BitsLast) {
  EXPECT_THAT(PackMipi({0xABC, 0x123}, 12), ElementsAre(0xAB, 0x12, 0x3C));
}

TEST(PackMipi, EndsWithTheBitsOfTheLastSample) {
  EXPECT_THAT(PackMipi({0x001, 0x3FE, 0x2AB, 0x100, 0x3FF}, 10), ElementsAre(0x00, 0xFF, 0xAA, 0x40, 0x39, 0xFF, 0x00));
  EXPECT_THAT(PackMipi({0xABC}, 12), ElementsAre(0xAB, 0x00));
  EXPECT_THAT(PackMipi({}, 12), ElementsAre());
}

TEST(PackThreePerWord, PutsTheFirstSampleLowest) {
  EXPECT_THAT(PackThreePerWord({0x001, 0x002, 0x003, 0x3FF, 0x000, 0x3FF}),
              ElementsAre(0x01, 0x08, 0x30, 0x00, 0xFF, 0x03, 0xF0, 0x3F));
}

}  // namespace
}  // namespace korvel::tools
