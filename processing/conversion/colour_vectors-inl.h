// Pixels of colour formats from vectors with one channel each, for sources that are compiled once for each vector
// instruction set.
//
// A layout's class stores a vector of pixels by Store and a single one by StoreOne. first, second and third are the
// channels in the order of memory, or from the lowest bits on in 32-bit words. Addresses have no alignment.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "processing/block_vectors.h"
#include "processing/conversion/colour_layout.h"

namespace img::processing::KORVEL_VECTORS {

inline constexpr hn::ScalableTag<uint32_t> kWords32;

inline void Put(Bytes vector, uint8_t* to) { hn::StoreU(vector, kBytes, to); }

// Writes vectors of which each has results for every block of 16 bytes: in memory their first blocks lie side by side,
// then their second ones.
inline void PutBlocks(Bytes a, Bytes b, uint8_t* to) {
  if constexpr (KORVEL_VECTOR_BYTES == 16) {
    Put(a, to);
    Put(b, to + 16);
  } else {
    Put(hn::ConcatLowerLower(kBytes, b, a), to);
    Put(hn::ConcatUpperUpper(kBytes, b, a), to + 32);
  }
}

inline void PutBlocks(Bytes a, Bytes b, Bytes c, uint8_t* to) {
  const ThreeVectors ordered = InOrder(a, b, c);
  for (size_t i = 0; i < 3; ++i) Put(ordered.at[i], to + i * KORVEL_VECTOR_BYTES);
}

// Shuffles the bytes of each block of 16: result byte i is byte indices[i], or 0 where that is 0x80.
inline Bytes Shuffle(Bytes vector, const uint8_t (&indices)[16]) {
  return hn::TableLookupBytesOr0(vector, hn::LoadDup128(kBytes, indices));
}

// Three-channel pixels. Of the 48 bytes that a block of 16 makes, each 16 take the first two channels from one vector,
// where they lie alternately, and the third from another: two shuffles fill each other's gaps.
struct Bytes3Layout {
  using Sample = uint8_t;
  using Vector = Bytes;
  static constexpr size_t kPixelBytes = 3;
  static constexpr bool kReadsOutput = false;

  explicit Bytes3Layout(uint32_t /*alpha*/) {}

  void Store(Bytes first, Bytes second, Bytes third, uint8_t* to) const {
    alignas(16) static constexpr uint8_t kPairs0[16] = {0, 1, 0x80, 2, 3, 0x80, 4, 5, 0x80, 6, 7, 0x80, 8, 9, 0x80, 10};
    alignas(16) static constexpr uint8_t kThird0[16] = {0x80, 0x80, 0,    0x80, 0x80, 1,    0x80, 0x80,
                                                        2,    0x80, 0x80, 3,    0x80, 0x80, 4,    0x80};
    // The pairs of pixels 5 to 12.
    alignas(16) static constexpr uint8_t kPairs1[16] = {1, 0x80, 2,    3, 0x80, 4,    5,  0x80,
                                                        6, 7,    0x80, 8, 9,    0x80, 10, 11};
    alignas(16) static constexpr uint8_t kThird1[16] = {0x80, 5,    0x80, 0x80, 6,    0x80, 0x80, 7,
                                                        0x80, 0x80, 8,    0x80, 0x80, 9,    0x80, 0x80};
    // The pairs of pixels 8 to 15.
    alignas(16) static constexpr uint8_t kPairs2[16] = {0x80, 6,    7,  0x80, 8,    9,  0x80, 10,
                                                        11,   0x80, 12, 13,   0x80, 14, 15,   0x80};
    alignas(16) static constexpr uint8_t kThird2[16] = {10,   0x80, 0x80, 11,   0x80, 0x80, 12,   0x80,
                                                        0x80, 13,   0x80, 0x80, 14,   0x80, 0x80, 15};
    const Bytes low = hn::InterleaveLower(kBytes, first, second);
    const Bytes high = hn::InterleaveUpper(kBytes, first, second);
    const Bytes middle = hn::CombineShiftRightBytes<10>(kBytes, high, low);
    PutBlocks(hn::Or(Shuffle(low, kPairs0), Shuffle(third, kThird0)),
              hn::Or(Shuffle(middle, kPairs1), Shuffle(third, kThird1)),
              hn::Or(Shuffle(high, kPairs2), Shuffle(third, kThird2)), to);
  }

  void StoreOne(uint32_t first, uint32_t second, uint32_t third, uint8_t* to) const {
    to[0] = static_cast<uint8_t>(first);
    to[1] = static_cast<uint8_t>(second);
    to[2] = static_cast<uint8_t>(third);
  }
};

// Orders the groups of four bytes of a vector so that blocks which are interleaved twice come out side by side.
template <class Vector>
Vector Ordered(Vector channel) {
  if constexpr (KORVEL_VECTOR_BYTES == 16) {
    return channel;
  } else {
    alignas(32) static constexpr int32_t kOrder[8] = {0, 2, 4, 6, 1, 3, 5, 7};
    const auto groups = hn::BitCast(kWords32, channel);
    return hn::BitCast(hn::DFromV<Vector>(), hn::TableLookupLanes(groups, hn::SetTableIndices(kWords32, kOrder)));
  }
}

struct Bytes4Layout {
  using Sample = uint8_t;
  using Vector = Bytes;
  static constexpr size_t kPixelBytes = 4;
  static constexpr bool kReadsOutput = false;

  explicit Bytes4Layout(uint32_t alpha) : alpha_(static_cast<uint8_t>(alpha)) {}

  void Store(Bytes first, Bytes second, Bytes third, uint8_t* to) const {
    const auto words = [](Bytes pairs) { return hn::BitCast(kWords, pairs); };
    const auto front = [&](Bytes a, Bytes b) { return words(hn::InterleaveLower(kBytes, a, b)); };
    const auto back = [&](Bytes a, Bytes b) { return words(hn::InterleaveUpper(kBytes, a, b)); };
    const auto put = [to](Words a, Words b, size_t at) {
      Put(hn::BitCast(kBytes, hn::InterleaveLower(kWords, a, b)), to + at);
      Put(hn::BitCast(kBytes, hn::InterleaveUpper(kWords, a, b)), to + at + KORVEL_VECTOR_BYTES);
    };
    const Bytes alpha = hn::Set(kBytes, alpha_);
    const Bytes a = Ordered(first);
    const Bytes b = Ordered(second);
    const Bytes c = Ordered(third);
    put(front(a, b), front(c, alpha), 0);
    put(back(a, b), back(c, alpha), 2 * KORVEL_VECTOR_BYTES);
  }

  void StoreOne(uint32_t first, uint32_t second, uint32_t third, uint8_t* to) const {
    to[0] = static_cast<uint8_t>(first);
    to[1] = static_cast<uint8_t>(second);
    to[2] = static_cast<uint8_t>(third);
    to[3] = alpha_;
  }

 private:
  uint8_t alpha_;
};

// As Bytes3Layout, in words.
struct Words3Layout {
  using Sample = uint16_t;
  using Vector = Words;
  static constexpr size_t kPixelBytes = 6;
  static constexpr bool kReadsOutput = false;

  explicit Words3Layout(uint32_t /*alpha*/) {}

  void Store(Words first, Words second, Words third, uint8_t* to) const {
    alignas(16) static constexpr uint8_t kPairs0[16] = {0, 1, 2, 3, 0x80, 0x80, 4, 5, 6, 7, 0x80, 0x80, 8, 9, 10, 11};
    alignas(16) static constexpr uint8_t kThird0[16] = {0x80, 0x80, 0x80, 0x80, 0,    1,    0x80, 0x80,
                                                        0x80, 0x80, 2,    3,    0x80, 0x80, 0x80, 0x80};
    // The pairs of pixels 3 to 6.
    alignas(16) static constexpr uint8_t kPairs1[16] = {0x80, 0x80, 0, 1, 2,    3,    0x80, 0x80,
                                                        4,    5,    6, 7, 0x80, 0x80, 8,    9};
    alignas(16) static constexpr uint8_t kThird1[16] = {4,    5,    0x80, 0x80, 0x80, 0x80, 6,    7,
                                                        0x80, 0x80, 0x80, 0x80, 8,    9,    0x80, 0x80};
    // The pairs of pixels 4 to 7.
    alignas(16) static constexpr uint8_t kPairs2[16] = {6,    7,    0x80, 0x80, 8,  9,  10,   11,
                                                        0x80, 0x80, 12,   13,   14, 15, 0x80, 0x80};
    alignas(16) static constexpr uint8_t kThird2[16] = {0x80, 0x80, 10,   11,   0x80, 0x80, 0x80, 0x80,
                                                        12,   13,   0x80, 0x80, 0x80, 0x80, 14,   15};
    const Bytes low = hn::BitCast(kBytes, hn::InterleaveLower(kWords, first, second));
    const Bytes high = hn::BitCast(kBytes, hn::InterleaveUpper(kWords, first, second));
    const Bytes middle = hn::CombineShiftRightBytes<12>(kBytes, high, low);
    const Bytes single = hn::BitCast(kBytes, third);
    PutBlocks(hn::Or(Shuffle(low, kPairs0), Shuffle(single, kThird0)),
              hn::Or(Shuffle(middle, kPairs1), Shuffle(single, kThird1)),
              hn::Or(Shuffle(high, kPairs2), Shuffle(single, kThird2)), to);
  }

  void StoreOne(uint32_t first, uint32_t second, uint32_t third, uint8_t* to) const {
    const uint16_t pixel[] = {static_cast<uint16_t>(first), static_cast<uint16_t>(second),
                              static_cast<uint16_t>(third)};
    std::memcpy(to, pixel, sizeof(pixel));
  }
};

struct Words4Layout {
  using Sample = uint16_t;
  using Vector = Words;
  static constexpr size_t kPixelBytes = 8;
  static constexpr bool kReadsOutput = false;

  explicit Words4Layout(uint32_t alpha) : alpha_(static_cast<uint16_t>(alpha)) {}

  void Store(Words first, Words second, Words third, uint8_t* to) const {
    const auto front = [](Words a, Words b) { return hn::BitCast(kWords32, hn::InterleaveLower(kWords, a, b)); };
    const auto back = [](Words a, Words b) { return hn::BitCast(kWords32, hn::InterleaveUpper(kWords, a, b)); };
    const auto put = [to](auto a, auto b, size_t at) {
      Put(hn::BitCast(kBytes, hn::InterleaveLower(kWords32, a, b)), to + at);
      Put(hn::BitCast(kBytes, hn::InterleaveUpper(kWords32, a, b)), to + at + KORVEL_VECTOR_BYTES);
    };
    const Words alpha = hn::Set(kWords, alpha_);
    const Words a = Ordered(first);
    const Words b = Ordered(second);
    const Words c = Ordered(third);
    put(front(a, b), front(c, alpha), 0);
    put(back(a, b), back(c, alpha), 2 * KORVEL_VECTOR_BYTES);
  }

  void StoreOne(uint32_t first, uint32_t second, uint32_t third, uint8_t* to) const {
    const uint16_t pixel[] = {static_cast<uint16_t>(first), static_cast<uint16_t>(second), static_cast<uint16_t>(third),
                              alpha_};
    std::memcpy(to, pixel, sizeof(pixel));
  }

 private:
  uint16_t alpha_;
};

// Ten bits of each channel; bits above them in the samples don't count.
template <bool kKeepsUnusedBits>
struct Word32LayoutOf {
  using Sample = uint16_t;
  using Vector = Words;
  static constexpr size_t kPixelBytes = 4;
  static constexpr bool kReadsOutput = kKeepsUnusedBits;  // so it can't make its pixels anywhere else
  static constexpr uint32_t kUnusedBits = 0xC0000000;

  explicit Word32LayoutOf(uint32_t /*alpha*/) {}

  // Both halves of the words are made in 16-bit lanes.
  void Store(Words first, Words second, Words third, uint8_t* to) const {
    const Words mask = hn::Set(kWords, uint16_t{0x3FF});
    const Words low = hn::Or(hn::And(first, mask), hn::ShiftLeft<10>(second));
    const Words high = hn::Or(hn::ShiftRight<6>(hn::And(second, mask)), hn::ShiftLeft<4>(hn::And(third, mask)));
    const auto kept = [](Words pixels, [[maybe_unused]] const uint8_t* at) {
      const Bytes bytes = hn::BitCast(kBytes, pixels);
      if constexpr (kKeepsUnusedBits) {
        const Bytes unused = hn::BitCast(kBytes, hn::Set(kWords32, kUnusedBits));
        return hn::Or(bytes, hn::And(hn::LoadU(kBytes, at), unused));
      } else {
        return bytes;
      }
    };
    if constexpr (KORVEL_VECTOR_BYTES == 16) {
      Put(kept(hn::InterleaveLower(kWords, low, high), to), to);
      Put(kept(hn::InterleaveUpper(kWords, low, high), to + 16), to + 16);
    } else {
      const Words a = hn::InterleaveLower(kWords, low, high);
      const Words b = hn::InterleaveUpper(kWords, low, high);
      Put(kept(hn::ConcatLowerLower(kWords, b, a), to), to);
      Put(kept(hn::ConcatUpperUpper(kWords, b, a), to + 32), to + 32);
    }
  }

  void StoreOne(uint32_t first, uint32_t second, uint32_t third, uint8_t* to) const {
    uint32_t unused = 0;
    if constexpr (kKeepsUnusedBits) {
      std::memcpy(&unused, to, sizeof(unused));
      unused &= kUnusedBits;
    }
    const uint32_t pixel = unused | (first & 0x3FF) | (second & 0x3FF) << 10 | (third & 0x3FF) << 20;
    std::memcpy(to, &pixel, sizeof(pixel));
  }
};
using Word32Layout = Word32LayoutOf<false>;
using Word32KeptLayout = Word32LayoutOf<true>;

}  // namespace img::processing::KORVEL_VECTORS
