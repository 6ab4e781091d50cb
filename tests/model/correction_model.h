// Gain, gamma, colour correction, hot pixels and binning once more, as plainly as they can be said: one sample at a
// time, read from its bytes and written back to them. Tests compare the library with it, so it shares nothing with the
// library, not even the list of formats.
//
// No function looks at whether an operation takes the image's format; the lists at the end tell that.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <ostream>
#include <vector>

#include "tests/model/conversion_model.h"
#include "tests/model/format_table.h"

namespace korvel_test {

// --------------------------------------------------------------------------------------------------------- gain --

struct GainFactors {
  float master = 1.0F;
  float red = 1.0F;
  float green = 1.0F;
  float blue = 1.0F;
};

// What a value of a format with this maximum becomes. A colour's factor is its own times the master's.
uint32_t ModelGainEntry(float factor, uint32_t maximum, uint32_t value);

// Mono and Bayer formats.
ModelImage ModelGain(const ModelImage& input, const GainFactors& factors);

// -------------------------------------------------------------------------------------------------------- gamma --

uint32_t ModelGammaEntry(float gamma, uint32_t maximum, uint32_t value);

// As it comes out in place: the fourth channel keeps its value.
ModelImage ModelGamma(const ModelImage& input, float gamma);

// --------------------------------------------------------------------------------------------- colour correction --

using ColorFactors = std::array<float, 9>;

// Whether there are vector kernels for the format on a processor with these features.
bool ModelHasColorKernel(uint32_t format, ModelFeatures features);

// Colour formats but BGR10p32.
ModelImage ModelColorCorrection(const ModelImage& input, const ColorFactors& factors, ModelFeatures features);

// --------------------------------------------------------------------------------------------------- hot pixels --

struct ModelPoint {
  uint64_t x;
  uint64_t y;

  bool operator==(const ModelPoint&) const = default;
};

std::ostream& operator<<(std::ostream& stream, const ModelPoint& point);

// At construction, as level 3 has it.
struct NoiseModel {
  uint32_t slope = 3;
  uint32_t floor = 16;
  uint32_t gainFactorPercent = 100;
};

// Mono and Bayer formats.
std::vector<ModelPoint> ModelDetectHotpixels(const ModelImage& input, const NoiseModel& noise);
ModelImage ModelCorrectHotpixels(const ModelImage& input, const std::vector<ModelPoint>& hotpixels);

// ------------------------------------------------------------------------------------------------------ binning --

struct BinningSettings {
  uint32_t x = 1;
  uint32_t y = 1;
  bool average = false;
};

struct ModelSize {
  uint64_t width;
  uint64_t height;

  bool operator==(const ModelSize&) const = default;
};

std::ostream& operator<<(std::ostream& stream, const ModelSize& size);

ModelSize ModelExpectedBinnedSize(uint32_t format, ModelSize size, const BinningSettings& settings);

// Nothing if the image is too small. The top bits of words with three channels count as not written.
std::optional<ModelImage> ModelBin(const ModelImage& input, const BinningSettings& settings);

// ------------------------------------------------------------------------------------- formats that are accepted --

// By Gain_Process, GammaCorrector_Process, ColorCorrector_Process, AdaptiveHotpixelCorrector_Detect, Binning_Process.
bool IsFormatOfGain(uint32_t format);
bool IsFormatOfGamma(uint32_t format);
bool IsFormatOfColorCorrection(uint32_t format);
bool IsFormatOfHotpixels(uint32_t format);
bool IsFormatOfBinning(uint32_t format);

}  // namespace korvel_test
