// Corrections that replace each value by an entry of a table: the tables by depth, and the walk over the values.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <utility>

#include "processing/unaligned.h"

namespace img::processing {

// A depth of 8, 10 or 12 bits.
template <uint32_t bits>
struct Depth {
  using Sample = std::conditional_t<bits == 8, uint8_t, uint16_t>;
  using Table = std::array<Sample, size_t{1} << bits>;
  static constexpr uint32_t kMaximum = (1u << bits) - 1;
};

// Calls run with the significant bits of a format as a constant.
template <class Run>
void WithDepth(uint32_t significantBits, Run&& run) {
  switch (significantBits) {
    case 8:
      return run(std::integral_constant<uint32_t, 8>{});
    case 10:
      return run(std::integral_constant<uint32_t, 10>{});
    default:
      return run(std::integral_constant<uint32_t, 12>{});
  }
}

// What each value of each depth becomes.
class ValueTables {
 public:
  // newValue(value, maximum) is computed in single precision, from 0 to maximum; its fraction is dropped.
  template <class NewValue>
  void Build(NewValue&& newValue) {
    Fill<8>(table8_, newValue);
    Fill<10>(table10_, newValue);
    Fill<12>(table12_, newValue);
  }

  template <uint32_t bits>
  const typename Depth<bits>::Table& Of() const {
    if constexpr (bits == 8) {
      return table8_;
    } else if constexpr (bits == 10) {
      return table10_;
    } else {
      static_assert(bits == 12);
      return table12_;
    }
  }

 private:
  template <uint32_t bits, class NewValue>
  static void Fill(typename Depth<bits>::Table& table, NewValue&& newValue) {
    constexpr auto maximum = static_cast<float>(Depth<bits>::kMaximum);
    for (uint32_t i = 0; i < table.size(); ++i) {
      table[i] = static_cast<typename Depth<bits>::Sample>(
          static_cast<int32_t>(newValue(static_cast<float>(static_cast<int32_t>(i)), maximum)));
    }
  }

  Depth<8>::Table table8_;
  Depth<10>::Table table10_;
  Depth<12>::Table table12_;
};

// Whether a factor or an exponent is so near to 1 that images stay as they are.
constexpr bool IsNeutral(float value) {
  constexpr float kLowest = 0.999f;
  constexpr float kHighest = 1.001f;
  static_assert(std::bit_cast<uint32_t>(kLowest) == 0x3F7FBE77);
  static_assert(std::bit_cast<uint32_t>(kHighest) == 0x3F8020C5);
  return value >= kLowest && value <= kHighest;
}

// Walks groups of kStep samples and replaces the first kChanged of each by newValue(position in the group, value). The
// others are neither read nor written. in and out are the same or don't overlap.
template <class Sample, size_t kStep, size_t kChanged, class NewValue>
void MapSamples(const uint8_t* in, uint8_t* out, size_t groups, NewValue&& newValue) {
  for (size_t group = 0; group < groups; ++group) {
    for (size_t i = 0; i < kChanged; ++i) {
      StoreSample<Sample>(out, group * kStep + i, newValue(i, LoadSample<Sample>(in, group * kStep + i)));
    }
  }
}

}  // namespace img::processing
