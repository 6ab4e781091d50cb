// Finds and corrects hot pixels, by a threshold that follows the noise of the sensor.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "core/instruction_set.h"
#include "processing/module_wrappers.h"

namespace img::processing {

template <PixelFormatId formatIdInput, PixelFormatId formatIdOutput>
class TAdaptiveHotpixelCorrection;

// Its grid is large and has a source of its own.
extern template class TemplateWrapper_ConversionProcessingModule<TAdaptiveHotpixelCorrection>;

enum class SensitivityLevel : uint32_t { Invalid = 0, Level1 = 1, Level2 = 2, Level3 = 3, Level4 = 4, Level5 = 5 };

// Shared by the module and its instance for a pair of formats.
struct AdaptiveHotpixelParameters {
  // The noise that is expected of a pixel, at a gain of 100 percent and a depth of 8 bits: the factor of its value, and
  // the constant.
  uint32_t noiseSlope = 3;
  uint32_t noiseFloor = 16;
  uint32_t gainFactorPercent = 100;
  uint64_t hotpixelCount = 0;  // found by the last detection; hotpixels may hold a list of the caller's since
  std::vector<Point2D> hotpixels;
  bool adaptive = false;    // detect even if there is a list
  bool detectOnly = false;  // leave the output alone
  SensitivityLevel sensitivity = SensitivityLevel::Level3;
  InstructionSet set = InstructionSet::Baseline;
};

// Keeps the memory of its list between runs.
class AdaptiveHotpixelCorrection final
    : public TemplateWrapper_ConversionProcessingModule<TAdaptiveHotpixelCorrection> {
 public:
  explicit AdaptiveHotpixelCorrection(const ProcessorFeatures& features = ProcessorFeatures::OfThisProcessor());

  // Throws InvalidParameterUtilx for Invalid. Intended: a number above the levels is stored, and leaves the expected
  // noise as it was.
  void SetSensitivity(SensitivityLevel sensitivity);

  void* GetParameters() override { return &parameters_; }
  AdaptiveHotpixelParameters& Parameters() { return parameters_; }

  // Lists the hot pixels of an image.
  void Detect(IfcImage& image);

  // Puts a list, whose elements have members x and y, in place of the detected one.
  template <class Points>
  void SetHotpixels(const Points& points) {
    std::vector<Point2D>& hotpixels = parameters_.hotpixels;
    hotpixels.reserve(points.size());
    hotpixels.clear();
    for (const auto& point : points) hotpixels.push_back({point.x, point.y});
  }

  // Copies an image to one of the same format and size, and corrects the listed pixels there. The list isn't empty.
  void Correct(const IfcImage& input, IfcImage& output) { Run(input, output, false); }

  // The same with the hot pixels of the input.
  void CorrectAdaptive(const IfcImage& input, IfcImage& output) { Run(input, output, true); }

  bool IsInputFormatSupported(PixelFormatId format) override;
  ImageFormat GetOutputImageFormat(const ImageFormat& input) override { return input; }

 private:
  void Run(const IfcImage& input, IfcImage& output, bool adaptive);

  AdaptiveHotpixelParameters parameters_;
};

// What all instances for a pair of formats do. A pair that has no correction copies as well, and then fails with
// ImageFormatNotSupported.
class AdaptiveHotpixelInstance : public IfcConversionProcessingModule {
 public:
  void Process(const IfcImage& input, IfcImage& output) override;
  bool IsInputFormatSupported(PixelFormatId format) override { return format == input_; }
  ImageFormat GetOutputImageFormat(const ImageFormat& input) override { return {input.area, output_}; }

 protected:
  AdaptiveHotpixelInstance(PixelFormatId input, PixelFormatId output) : input_(input), output_(output) {}

 private:
  void RequireCorrection() const;

  PixelFormatId input_;
  PixelFormatId output_;
};

}  // namespace img::processing
