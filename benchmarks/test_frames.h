// Frames to measure with: sizes, pixels as a camera delivers them, and the comparison of two results.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "core/geometry.h"
#include "core/pixel_format.h"

namespace korvel::benchmarks {

// A frame's size, and the rounds that give a steady median in little time.
struct FrameSize {
  img::Size2D size;
  int rounds;

  std::string Name() const { return std::to_string(size.width) + "x" + std::to_string(size.height); }
};

inline constexpr FrameSize kFrameSizes[] = {{{1920, 1080}, 25}, {{4096, 3000}, 15}};

// Where the work beside the pixels shows.
inline constexpr FrameSize kSmallSize{{64, 64}, 3};

size_t ByteCount(img::PixelFormatId format, const img::Size2D& size);

// The pixels of a frame of any public format: gradients, edges and noise. Some kernels branch on what they compute, so
// that neither a flat nor a random frame would show their speed.
std::vector<uint8_t> MakeFrame(img::PixelFormatId format, const img::Size2D& size);

// What two results for one frame may differ in.
struct Agreement {
  size_t margin = 0;     // pixels at each border that are not compared
  unsigned maximum = 0;  // largest difference of bytes
};

// Where two images of a format whose pixels lie on whole bytes differ more than that; nothing if they agree.
std::optional<std::string> FindDifference(const uint8_t* actual, const uint8_t* expected, img::PixelFormatId format,
                                          const img::Size2D& size, const Agreement& agreement);

}  // namespace korvel::benchmarks
