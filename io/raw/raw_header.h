// The head of a RAW file, the library's own dump of an image: 28 bytes, and behind them the image's bytes as they lie
// in memory.
#pragma once

#include <cstddef>
#include <cstdint>

#include "core/fixed_layout.h"

namespace img::io::raw {

struct RAWHeader {
  uint32_t pixelFormat = 0;
  uint64_t byteCount = 0;  // of the pixels
  uint64_t width = 0;
  uint64_t height = 0;
};

inline constexpr auto kRAWHeaderLayout =
    MakeFixedLayout<28>(Field{0, &RAWHeader::pixelFormat}, Field{4, &RAWHeader::byteCount},
                        Field{12, &RAWHeader::width}, Field{20, &RAWHeader::height});

}  // namespace img::io::raw
