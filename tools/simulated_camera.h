// A camera for those who have none: frames of the test scene in any pixel format.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "format_names.h"
#include "handles.h"
#include "options.h"

namespace korvel::tools {

struct CameraSettings {
  NamedFormat format{};
  PictureSize size{};
  double noise = 1;
  uint64_t hot_pixels = 0;  // at most the number of pixels
  uint64_t seed = 1;
};

class SimulatedCamera {
 public:
  explicit SimulatedCamera(const CameraSettings& settings);

  const CameraSettings& Settings() const noexcept { return settings_; }

  // The channels of each pixel side by side.
  size_t SamplesPerPixel() const;

  // The samples of a frame line by line. Each frame has noise of its own, and the same each time.
  std::vector<uint16_t> Expose(uint64_t frame) const;

  // Samples as bytes of the format.
  std::vector<uint8_t> Pack(const std::vector<uint16_t>& samples) const;

 private:
  CameraSettings settings_;
  std::vector<float> light_;
};

// What a camera delivers that turns slowly. Noise takes long to compute, so that few exposures are made beforehand, and
// moved sideways from frame to frame.
class CameraStream {
 public:
  // The width is even, for the sake of mosaics.
  explicit CameraStream(SimulatedCamera camera);

  // Counted from 0. The image stays until the next one.
  const Image& Frame(uint64_t number);

 private:
  SimulatedCamera camera_;
  std::vector<std::vector<uint16_t>> exposures_;
  std::vector<uint16_t> samples_;
  // In this order: what an image lies over outlives it.
  std::vector<uint8_t> bytes_;
  Image image_;
};

}  // namespace korvel::tools
