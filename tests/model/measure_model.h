// Histograms and lines once more, counted from samples in a plain list.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "tests/model/conversion_model.h"

namespace korvel_test {

struct ModelHistogramChannel {
  uint64_t pixelSum = 0;
  uint64_t pixelCount = 0;
  std::vector<uint64_t> bins;

  bool operator==(const ModelHistogramChannel&) const = default;
};

// Channels in the order of memory. For formats whose samples have a value of their own: not for mono and Bayer streams.
std::vector<ModelHistogramChannel> ModelHistogram(const ModelImage& image);

using ModelLineChannel = std::vector<uint32_t>;

// A row for orientation 0, a column for any other. A line outside the image holds no values.
std::vector<ModelLineChannel> ModelLine(const ModelImage& image, uint32_t orientation, uint64_t offset);

}  // namespace korvel_test
