#include "sensor.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <tuple>

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

// What samples(light of the pixel, column, row) gives for each pixel, one after the other.
template <class Samples>
std::vector<float> LightOfPixels(const Scene& scene, Samples&& samples) {
  std::vector<float> light;
  light.reserve(scene.Width() * scene.Height() * std::tuple_size_v<decltype(samples(LinearColour{}, 0, 0))>);
  for (size_t row = 0; row < scene.Height(); ++row) {
    for (size_t column = 0; column < scene.Width(); ++column) {
      for (const double sample : samples(scene.Pixel(column, row), column, row)) {
        light.push_back(static_cast<float>(sample));
      }
    }
  }
  return light;
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

std::vector<float> GreyLight(const Scene& scene) {
  return LightOfPixels(scene, [](const LinearColour& colour, size_t, size_t) {
    return std::array<double, 1>{0.2126 * colour[0] + 0.7152 * colour[1] + 0.0722 * colour[2]};
  });
}

std::vector<float> MosaicLight(const Scene& scene, MosaicPhase phase) {
  return LightOfPixels(scene, [phase](const LinearColour& colour, size_t column, size_t row) {
    return std::array<double, 1>{colour[MosaicChannel(phase, column, row)]};
  });
}

std::vector<float> ColourLight(const Scene& scene) {
  return LightOfPixels(scene, [](const LinearColour& colour, size_t, size_t) { return colour; });
}

void AddHotPixels(std::vector<float>& light, size_t samples_per_pixel, size_t count, uint64_t seed) {
  constexpr uint64_t kDefects = 0x686F742070697865;  // another sequence than that of the noise
  const size_t pixels = light.size() / samples_per_pixel;
  size_t wanted = count;
  for (size_t pixel = 0; pixel < pixels && wanted > 0; ++pixel) {
    // Of the pixels that are left, each is as likely as any other.
    const uint64_t bits = RandomBits(seed ^ kDefects, pixel);
    if ((bits >> 8) % (pixels - pixel) >= wanted) continue;
    --wanted;
    const double glow = 0.35 + 0.6 * static_cast<double>(bits & 0xFF) / 255;
    for (size_t sample = 0; sample < samples_per_pixel; ++sample) {
      light[pixel * samples_per_pixel + sample] += static_cast<float>(glow);
    }
  }
}

std::vector<uint16_t> Expose(const std::vector<float>& light, const Sensor& sensor) {
  const auto maximum = static_cast<double>((1U << sensor.bits) - 1);
  std::vector<uint16_t> samples;
  samples.reserve(light.size());
  for (const float on_sample : light) {
    const double electrons = static_cast<double>(on_sample) * sensor.full_well;
    // Light arrives in grains, whose number varies by its square root; reading adds noise of its own.
    const double deviation = sensor.noise * std::sqrt(electrons + sensor.read_noise * sensor.read_noise);
    const double noisy = electrons + deviation * Gaussian(RandomBits(sensor.seed, samples.size()));
    const double value = DisplayFromLinear(std::clamp(noisy / sensor.full_well, 0.0, 1.0));
    samples.push_back(static_cast<uint16_t>(std::lround(value * maximum)));
  }
  return samples;
}

}  // namespace korvel::tools
