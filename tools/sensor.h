// What a camera's sensor makes of a scene: samples with noise, as a mosaic of colours, and their packing into bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "scene.h"

namespace korvel::tools {

// The colours of the first two pixels of a mosaic's first line, as the names of Bayer formats tell them.
enum class MosaicPhase { kRG, kGR, kGB, kBG };

// The index of the colour (0 red, 1 green, 2 blue) that a pixel of a mosaic sees.
size_t MosaicChannel(MosaicPhase phase, size_t column, size_t row);

// All channels have the same gain, so that grey stays grey without a white balance. The camera applies the display's
// curve itself, so that pictures look natural without further processing.
struct Sensor {
  unsigned bits = 12;
  double full_well = 12000;  // electrons of a saturated pixel
  double read_noise = 4;     // electrons, standard deviation
  uint64_t seed = 1;         // each frame of a stream wants another
};

// One sample per pixel, line by line, in the low bits of each. The same for the same arguments under every compiler.
std::vector<uint16_t> ExposeMosaic(const Scene& scene, MosaicPhase phase, const Sensor& sensor);

// A little-endian bit stream without gaps, as the formats "10p" and "12p" are. The last byte is filled with zeros.
std::vector<uint8_t> PackBitStream(const std::vector<uint16_t>& samples, unsigned bits);

}  // namespace korvel::tools
