// What a camera's sensor makes of a scene: samples with noise, as grey, as a mosaic of colours or as whole colours.
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

// The light on each sample, line by line: one sample per pixel that sees all colours, or that of the mosaic, or three
// per pixel (red, green, blue).
std::vector<float> GreyLight(const Scene& scene);
std::vector<float> MosaicLight(const Scene& scene, MosaicPhase phase);
std::vector<float> ColourLight(const Scene& scene);

// Lets count pixels glow of themselves, as the defects of a sensor do. Which ones and how much depends on the seed.
// count is at most the number of pixels.
void AddHotPixels(std::vector<float>& light, size_t samples_per_pixel, size_t count, uint64_t seed);

// All channels have the same gain, so that grey stays grey without a white balance. The camera applies the display's
// curve itself, so that pictures look natural without further processing.
struct Sensor {
  unsigned bits = 12;
  double full_well = 12000;  // electrons of a saturated pixel
  double read_noise = 4;     // electrons, standard deviation
  double noise = 1;          // what all noise is multiplied by; 0 for a sensor without any
  uint64_t seed = 1;         // each frame of a stream wants another
};

// One sample for each that light falls on, in the low bits of each. The same for the same arguments under every
// compiler.
std::vector<uint16_t> Expose(const std::vector<float>& light, const Sensor& sensor);

}  // namespace korvel::tools
