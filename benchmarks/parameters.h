// What operations are set to, for the subject and for its peers.
#pragma once

#include <array>

namespace korvel::benchmarks {

struct Gains {
  float master;
  float red;
  float green;
  float blue;
};

inline constexpr Gains kGains{1.5f, 1.25f, 1.0f, 1.75f};
inline constexpr float kGamma = 2.2f;
// New red, green and blue, each from all three.
inline constexpr std::array<float, 9> kFactors{1.6f, -0.4f, -0.2f, -0.3f, 1.5f, -0.2f, 0.1f, -0.6f, 1.5f};

}  // namespace korvel::benchmarks
