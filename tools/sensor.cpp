#include "sensor.h"

#include <algorithm>
#include <cmath>

namespace korvel::tools {
namespace {

// 64 well-mixed bits for each index: the output function of the SplitMix64 generator. A pixel's noise thus depends on
// its place alone and not on the order in which pixels are computed.
uint64_t RandomBits(uint64_t seed, uint64_t index) {
  constexpr uint64_t kGoldenRatio = 0x9E3779B97F4A7C15;
  uint64_t z = seed * 0xD1342543DE82EF95 + (index + 1) * kGoldenRatio;
  z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9;
  z = (z ^ (z >> 27)) * 0x94D049BB133111EB;
  return z ^ (z >> 31);
}

// Mean 0 and standard deviation 1, near enough to a normal distribution for noise: the sum of four uniform numbers.
// The standard library's distributions differ from one implementation to the next.
double Gaussian(uint64_t bits) {
  constexpr double kMean = 4 * 65535 / 2.0;
  constexpr double kDeviation = 37837.2;  // 65536 * sqrt(4 / 12)
  double sum = 0;
  for (unsigned part = 0; part < 4; ++part) sum += static_cast<double>((bits >> (16 * part)) & 0xFFFF);
  return (sum - kMean) / kDeviation;
}

}  // namespace

size_t MosaicChannel(MosaicPhase phase, size_t column, size_t row) {
  const bool red_column_odd = phase == MosaicPhase::kGR || phase == MosaicPhase::kBG;
  const bool red_row_odd = phase == MosaicPhase::kGB || phase == MosaicPhase::kBG;
  const bool on_red_column = (column % 2 == 1) == red_column_odd;
  const bool on_red_row = (row % 2 == 1) == red_row_odd;
  if (on_red_column != on_red_row) return 1;
  return on_red_row ? 0 : 2;
}

std::vector<uint16_t> ExposeMosaic(const Scene& scene, MosaicPhase phase, const Sensor& sensor) {
  const auto maximum = static_cast<double>((1U << sensor.bits) - 1);
  std::vector<uint16_t> samples;
  samples.reserve(scene.Width() * scene.Height());
  for (size_t row = 0; row < scene.Height(); ++row) {
    for (size_t column = 0; column < scene.Width(); ++column) {
      const double light = scene.Pixel(column, row)[MosaicChannel(phase, column, row)];
      const double electrons = light * sensor.full_well;
      // Light arrives in grains, whose number varies by its square root; reading adds noise of its own.
      const double deviation = std::sqrt(electrons + sensor.read_noise * sensor.read_noise);
      const double noisy = electrons + deviation * Gaussian(RandomBits(sensor.seed, samples.size()));
      const double value = DisplayFromLinear(std::clamp(noisy / sensor.full_well, 0.0, 1.0));
      samples.push_back(static_cast<uint16_t>(std::lround(value * maximum)));
    }
  }
  return samples;
}

std::vector<uint8_t> PackBitStream(const std::vector<uint16_t>& samples, unsigned bits) {
  const uint32_t mask = (1U << bits) - 1;
  std::vector<uint8_t> bytes;
  bytes.reserve((samples.size() * bits + 7) / 8);
  uint32_t pending = 0;
  unsigned pending_bits = 0;
  for (const uint16_t sample : samples) {
    pending |= (sample & mask) << pending_bits;
    pending_bits += bits;
    while (pending_bits >= 8) {
      bytes.push_back(static_cast<uint8_t>(pending & 0xFF));
      pending >>= 8;
      pending_bits -= 8;
    }
  }
  if (pending_bits > 0) bytes.push_back(static_cast<uint8_t>(pending & 0xFF));
  return bytes;
}

}  // namespace korvel::tools
