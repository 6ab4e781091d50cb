#include "core/fixed_layout.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <limits>

namespace {

using img::Field;
using img::MakeFixedLayout;

struct Record {
  uint16_t two = 0;
  int32_t four = 0;
  uint64_t eight = 0;

  bool operator==(const Record&) const = default;
};

constexpr auto kLayout = MakeFixedLayout<17>(Field{1, &Record::two}, Field{3, &Record::four}, Field{8, &Record::eight});

TEST(FixedLayout, WritesTheLowByteFirstAndZerosBetweenFields) {
  const std::array<uint8_t, 17> expected = {0,    0x34, 0x12, 0xFE, 0xFF, 0xFF, 0xFF, 0, 0x08,
                                            0x07, 0x06, 0x05, 0x04, 0x03, 0x02, 0x01, 0};
  EXPECT_EQ(kLayout.Encode({.two = 0x1234, .four = -2, .eight = 0x0102030405060708}), expected);
}

TEST(FixedLayout, ReadsWhatItWrote) {
  for (const Record& record :
       {Record{}, Record{0xFFFF, std::numeric_limits<int32_t>::min(), std::numeric_limits<uint64_t>::max()},
        Record{0x8001, std::numeric_limits<int32_t>::max(), 0x8000000000000001}}) {
    EXPECT_EQ(kLayout.Decode(kLayout.Encode(record)), record);
  }
}

TEST(FixedLayout, IgnoresBytesThatNoFieldCovers) {
  std::array<uint8_t, 17> bytes = kLayout.Encode({.two = 7, .four = 8, .eight = 9});
  bytes[0] = bytes[7] = bytes[16] = 0xCD;
  EXPECT_EQ(kLayout.Decode(bytes), (Record{7, 8, 9}));
}

TEST(FixedLayout, IsKnownToTheCompiler) {
  static_assert(kLayout.Decode(kLayout.Encode({.two = 3, .four = -3, .eight = 3})).four == -3);
  static_assert(decltype(kLayout)::kByteCount == 17);
}

}  // namespace
