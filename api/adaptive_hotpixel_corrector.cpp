// KORVEL_AdaptiveHotpixelCorrector_*: hot pixels of raw images.

#include <algorithm>
#include <span>

#include "api/export_frame.h"
#include "api/format_checks.h"
#include "api/handle_registry.h"
#include "buffers/vector_image_buffer.h"
#include "korvel/korvel.h"
#include "processing/correction/adaptive_hotpixel_correction.h"

using img::processing::AdaptiveHotpixelCorrection;
using img::processing::SensitivityLevel;
using korvel::internal::ExportFrame;
using korvel::internal::FindImage;
using korvel::internal::FromExported;
using korvel::internal::HandleRegistry;
using korvel::internal::kSuccess;
using korvel::internal::RegisterImage;
using korvel::internal::ToExported;

namespace {

std::shared_ptr<AdaptiveHotpixelCorrection> FindCorrector(
    KORVEL_ADAPTIVE_HOTPIXEL_CORRECTOR_HANDLE adaptiveHotpixelCorrectorHandle) {
  return HandleRegistry::Instance().AdaptiveHotpixelCorrectors().Find(FromExported(adaptiveHotpixelCorrectorHandle));
}

// Calls correct(input, output) for an image and a new one like it, and returns the new one's handle.
template <class Correct>
KORVEL_IMAGE_HANDLE CorrectIntoNewImage(img::buffer::IfcImageBuffer& buffer, const Correct& correct) {
  const auto output = img::buffer::VectorImageBuffer::AllocBuffer(buffer.Format(), buffer.Size());
  correct(*buffer.CreateImage(), *output->CreateImage());
  return RegisterImage(output);
}

}  // namespace

// The checks of a format that all functions which take an image make.
#define KORVEL_REQUIRE_CORRECTABLE(format)                                                              \
  do {                                                                                                  \
    KORVEL_REQUIRE((format) != img::PixelFormatId::Invalid, KORVEL_RETURN_CODE_ImageFormatNotSupported, \
                   "AdaptiveHotpixelCorrector does not support the invalid pixel format!");             \
    KORVEL_REQUIRE_NOT_PACKED(format, "AdaptiveHotpixelCorrector");                                     \
  } while (false)

KORVEL_RETURN_CODE KORVEL_AdaptiveHotpixelCorrector_Construct(
    KORVEL_ADAPTIVE_HOTPIXEL_CORRECTOR_HANDLE* adaptiveHotpixelCorrectorHandle) {
  return ExportFrame([&] {
    KORVEL_REQUIRE_POINTER(adaptiveHotpixelCorrectorHandle);
    *adaptiveHotpixelCorrectorHandle = ToExported<KORVEL_ADAPTIVE_HOTPIXEL_CORRECTOR_HANDLE>(
        HandleRegistry::Instance().AdaptiveHotpixelCorrectors().Add(std::make_shared<AdaptiveHotpixelCorrection>()));
    return kSuccess;
  });
}

KORVEL_RETURN_CODE KORVEL_AdaptiveHotpixelCorrector_SetSensitivity(
    KORVEL_ADAPTIVE_HOTPIXEL_CORRECTOR_HANDLE adaptiveHotpixelCorrectorHandle, uint32_t sensitivityLevel) {
  return ExportFrame([&] {
    const auto corrector = FindCorrector(adaptiveHotpixelCorrectorHandle);
    KORVEL_REQUIRE_HANDLE(corrector, adaptiveHotpixelCorrectorHandle);
    corrector->SetSensitivity(SensitivityLevel{sensitivityLevel});
    return kSuccess;
  });
}

KORVEL_RETURN_CODE KORVEL_AdaptiveHotpixelCorrector_GetSensitivity(
    KORVEL_ADAPTIVE_HOTPIXEL_CORRECTOR_HANDLE adaptiveHotpixelCorrectorHandle, uint32_t* sensitivityLevel) {
  return ExportFrame([&] {
    const auto corrector = FindCorrector(adaptiveHotpixelCorrectorHandle);
    KORVEL_REQUIRE_HANDLE(corrector, adaptiveHotpixelCorrectorHandle);
    // Intended: the texts for null pointers here and in GetGainFactorPercent differ from those of other functions.
    KORVEL_REQUIRE(sensitivityLevel != nullptr, KORVEL_RETURN_CODE_InvalidArgument, "*sensitivityLevel is invalid!");
    *sensitivityLevel = static_cast<uint32_t>(corrector->Parameters().sensitivity);
    return kSuccess;
  });
}

KORVEL_RETURN_CODE KORVEL_AdaptiveHotpixelCorrector_SetGainFactorPercent(
    KORVEL_ADAPTIVE_HOTPIXEL_CORRECTOR_HANDLE adaptiveHotpixelCorrectorHandle, uint32_t gainFactorPercent) {
  return ExportFrame([&] {
    const auto corrector = FindCorrector(adaptiveHotpixelCorrectorHandle);
    KORVEL_REQUIRE_HANDLE(corrector, adaptiveHotpixelCorrectorHandle);
    corrector->Parameters().gainFactorPercent = gainFactorPercent;
    return kSuccess;
  });
}

KORVEL_RETURN_CODE KORVEL_AdaptiveHotpixelCorrector_GetGainFactorPercent(
    KORVEL_ADAPTIVE_HOTPIXEL_CORRECTOR_HANDLE adaptiveHotpixelCorrectorHandle, uint32_t* gainFactorPercent) {
  return ExportFrame([&] {
    const auto corrector = FindCorrector(adaptiveHotpixelCorrectorHandle);
    KORVEL_REQUIRE_HANDLE(corrector, adaptiveHotpixelCorrectorHandle);
    KORVEL_REQUIRE(gainFactorPercent != nullptr, KORVEL_RETURN_CODE_InvalidArgument, "*params is invalid!");
    *gainFactorPercent = corrector->Parameters().gainFactorPercent;
    return kSuccess;
  });
}

KORVEL_RETURN_CODE KORVEL_AdaptiveHotpixelCorrector_Detect(
    KORVEL_ADAPTIVE_HOTPIXEL_CORRECTOR_HANDLE adaptiveHotpixelCorrectorHandle, KORVEL_IMAGE_HANDLE imageHandle) {
  return ExportFrame([&] {
    const auto corrector = FindCorrector(adaptiveHotpixelCorrectorHandle);
    KORVEL_REQUIRE_HANDLE(corrector, adaptiveHotpixelCorrectorHandle);
    const auto image = FindImage(imageHandle);
    KORVEL_REQUIRE_HANDLE(image, imageHandle);
    KORVEL_REQUIRE_CORRECTABLE(image->Format());
    corrector->Detect(*image->CreateImage());
    return kSuccess;
  });
}

KORVEL_RETURN_CODE KORVEL_AdaptiveHotpixelCorrector_GetHotpixels(
    KORVEL_ADAPTIVE_HOTPIXEL_CORRECTOR_HANDLE adaptiveHotpixelCorrectorHandle, KORVEL_POINT_2D* detectedHotpixels,
    size_t* detectedHotpixelsSize) {
  return ExportFrame([&] {
    const auto corrector = FindCorrector(adaptiveHotpixelCorrectorHandle);
    KORVEL_REQUIRE_HANDLE(corrector, adaptiveHotpixelCorrectorHandle);
    KORVEL_REQUIRE_POINTER(detectedHotpixelsSize);
    const auto& parameters = corrector->Parameters();
    if (detectedHotpixels != nullptr) {
      KORVEL_REQUIRE(*detectedHotpixelsSize >= parameters.hotpixelCount, KORVEL_RETURN_CODE_BufferToSmall,
                     "*hotpixels is too small!");
      // Intended: the size told is that of the last detection, while the list may be another one since, of another
      // size.
      const size_t copied = std::min(parameters.hotpixels.size(), *detectedHotpixelsSize);
      std::transform(parameters.hotpixels.begin(), parameters.hotpixels.begin() + static_cast<std::ptrdiff_t>(copied),
                     detectedHotpixels, [](const img::Point2D& point) {
                       return KORVEL_POINT_2D{point.x, point.y};
                     });
    }
    *detectedHotpixelsSize = parameters.hotpixelCount;
    return kSuccess;
  });
}

KORVEL_RETURN_CODE KORVEL_AdaptiveHotpixelCorrector_Correct(
    KORVEL_ADAPTIVE_HOTPIXEL_CORRECTOR_HANDLE adaptiveHotpixelCorrectorHandle, KORVEL_IMAGE_HANDLE imageHandle,
    const KORVEL_POINT_2D* detectedHotpixels, size_t detectedHotpixelsSize, KORVEL_IMAGE_HANDLE* outputImageHandle) {
  return ExportFrame([&] {
    // Intended: without pixels to correct, nothing is checked and there is no output.
    if (detectedHotpixelsSize == 0) return kSuccess;
    const auto corrector = FindCorrector(adaptiveHotpixelCorrectorHandle);
    KORVEL_REQUIRE_HANDLE(corrector, adaptiveHotpixelCorrectorHandle);
    const auto image = FindImage(imageHandle);
    KORVEL_REQUIRE_HANDLE(image, imageHandle);
    KORVEL_REQUIRE_CORRECTABLE(image->Format());
    KORVEL_REQUIRE_POINTER(detectedHotpixels);
    KORVEL_REQUIRE_POINTER(outputImageHandle);
    corrector->SetHotpixels(std::span(detectedHotpixels, detectedHotpixelsSize));
    *outputImageHandle = CorrectIntoNewImage(
        *image, [&](const img::IfcImage& input, img::IfcImage& output) { corrector->Correct(input, output); });
    return kSuccess;
  });
}

KORVEL_RETURN_CODE KORVEL_AdaptiveHotpixelCorrector_CorrectAdaptive(
    KORVEL_ADAPTIVE_HOTPIXEL_CORRECTOR_HANDLE adaptiveHotpixelCorrectorHandle, KORVEL_IMAGE_HANDLE imageHandle,
    KORVEL_IMAGE_HANDLE* outputImageHandle) {
  return ExportFrame([&] {
    const auto corrector = FindCorrector(adaptiveHotpixelCorrectorHandle);
    KORVEL_REQUIRE_HANDLE(corrector, adaptiveHotpixelCorrectorHandle);
    const auto image = FindImage(imageHandle);
    KORVEL_REQUIRE_HANDLE(image, imageHandle);
    KORVEL_REQUIRE_CORRECTABLE(image->Format());
    KORVEL_REQUIRE_POINTER(outputImageHandle);
    *outputImageHandle = CorrectIntoNewImage(
        *image, [&](const img::IfcImage& input, img::IfcImage& output) { corrector->CorrectAdaptive(input, output); });
    return kSuccess;
  });
}

KORVEL_RETURN_CODE KORVEL_AdaptiveHotpixelCorrector_Destruct(
    KORVEL_ADAPTIVE_HOTPIXEL_CORRECTOR_HANDLE adaptiveHotpixelCorrectorHandle) {
  return ExportFrame([&] {
    const auto corrector =
        HandleRegistry::Instance().AdaptiveHotpixelCorrectors().Remove(FromExported(adaptiveHotpixelCorrectorHandle));
    KORVEL_REQUIRE_HANDLE(corrector, adaptiveHotpixelCorrectorHandle);
    return kSuccess;
  });
}
