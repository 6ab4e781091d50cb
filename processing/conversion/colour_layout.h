// How the pixels of colour formats lie in memory, as the vector kernels tell them apart.
#pragma once

#include <cstddef>
#include <cstdint>

namespace img::processing {

enum class ColourLayout : uint8_t {
  Bytes3,
  Bytes4,
  Words3,
  Words4,
  Word32,      // ten bits of each colour; bits 30 and 31 become 0
  Word32Kept,  // the same, but bits 30 and 31 stay
};
inline constexpr size_t kColourLayouts = 6;

}  // namespace img::processing
