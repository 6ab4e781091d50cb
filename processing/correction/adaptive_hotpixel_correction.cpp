#include "processing/correction/adaptive_hotpixel_correction.h"

#include <algorithm>
#include <string>

#include "processing/copy_bytes.h"
#include "processing/correction/hotpixel_kernels.h"
#include "processing/pair_signature.h"
#include "status/exceptions.h"

namespace img::processing {
namespace {

using korvel::internal::ImgStatusCode;
using korvel::internal::ThrowStatus;

// The noise of each sensitivity, from Level1.
constexpr struct {
  uint32_t slope;
  uint32_t floor;
} kNoise[] = {{20, 36}, {6, 25}, {3, 16}, {2, 9}, {1, 4}};

// Values grow by a power of two with each bit of depth, and their squares by its square. Products wrap and divisions
// truncate before the shifts.
HotpixelThreshold ThresholdOf(const AdaptiveHotpixelParameters& parameters, const FormatFacts& format) {
  const uint32_t shift = format.significantBits - 8;
  const uint32_t gain = parameters.gainFactorPercent;
  return {.slope = (parameters.noiseSlope * gain / 100) << shift,
          .floor = (parameters.noiseFloor * gain * gain / 10000) << (2 * shift)};
}

void Detect(const IfcImage& image, AdaptiveHotpixelParameters& parameters) {
  const Size2D& size = image.Area().size;
  // In this order, so that a failure leaves the list as it was.
  parameters.hotpixels.reserve(size.width * size.height);
  parameters.hotpixels.clear();
  FindHotpixels(image, ThresholdOf(parameters, FindFacts(image.PixelFormat()).value()), parameters.set,
                parameters.hotpixels);
  parameters.hotpixelCount = parameters.hotpixels.size();
}

}  // namespace

AdaptiveHotpixelCorrection::AdaptiveHotpixelCorrection(const ProcessorFeatures& features)
    : TemplateWrapper_ConversionProcessingModule("AdaptiveHotpixelCorrection") {
  parameters_.set = InstructionSetOf(features);
}

void AdaptiveHotpixelCorrection::SetSensitivity(SensitivityLevel sensitivity) {
  if (sensitivity == SensitivityLevel::Invalid) {
    ThrowStatus<cfg_libimg::Modules::Processing>(ImgStatusCode::InvalidParameterUtilx,
                                                 "void img::processing::AdaptiveHotpixelCorrection::SetSensitivity("
                                                 "img::processing::AdaptiveHotpixelCorrection::SensitivityLevel)",
                                                 "AdaptiveHotpixelCorrection: Invalid sensitivity!");
  }
  parameters_.sensitivity = sensitivity;
  if (sensitivity > SensitivityLevel::Level5) return;
  const auto& noise = kNoise[static_cast<uint32_t>(sensitivity) - 1];
  parameters_.noiseSlope = noise.slope;
  parameters_.noiseFloor = noise.floor;
}

void AdaptiveHotpixelCorrection::Detect(IfcImage& image) {
  parameters_.detectOnly = true;
  Process(image, image);
}

void AdaptiveHotpixelCorrection::Run(const IfcImage& input, IfcImage& output, bool adaptive) {
  parameters_.adaptive = adaptive;
  parameters_.detectOnly = false;
  Process(input, output);
}

bool AdaptiveHotpixelCorrection::IsInputFormatSupported(PixelFormatId format) {
  const auto facts = FindFacts(format);
  return facts && HasHotpixels(*facts);
}

void AdaptiveHotpixelInstance::Process(const IfcImage& input, IfcImage& output) {
  auto& parameters = *static_cast<AdaptiveHotpixelParameters*>(GetParameters());
  if (!parameters.detectOnly) {
    // A pair of formats that share no size must not read beyond the input.
    const size_t byteCount = std::min(input.ByteCount(), output.ByteCount());
    CopyBytes(input.PixelPointer(0, 0), output.PixelPointer(0, 0), byteCount, parameters.set);
  }
  RequireCorrection();
  if (parameters.adaptive || parameters.hotpixels.empty() || parameters.detectOnly) Detect(input, parameters);
  if (!parameters.detectOnly) CorrectHotpixels(output, parameters.hotpixels);
}

void AdaptiveHotpixelInstance::RequireCorrection() const {
  const FormatFacts input = FindFacts(input_).value();
  if (input_ == output_ && HasHotpixels(input)) return;
  ThrowStatus<cfg_libimg::Modules::Processing>(
      ImgStatusCode::ImageFormatNotSupported,
      PairSignature("void", "TAdaptiveHotpixelCorrection",
                    "ProcessRaw(const img::TImage<formatIdInput> &, img::TImage<formatIdOutput> &)", input,
                    FindFacts(output_).value()),
      "not implemented for format: " + std::string(input.name));
}

}  // namespace img::processing
