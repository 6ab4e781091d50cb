// KORVEL_ColorCorrector_*: colour correction by a matrix.

#include "processing/correction/color_corrector.h"

#include <algorithm>

#include "api/buffer_pools.h"
#include "api/export_frame.h"
#include "api/format_checks.h"
#include "api/handle_registry.h"
#include "korvel/korvel.h"

using img::PixelFormatId;
using img::processing::ColorCorrector;
using img::processing::ColorFactors;
using korvel::internal::ExportFrame;
using korvel::internal::FindImage;
using korvel::internal::FromExported;
using korvel::internal::HandleRegistry;
using korvel::internal::kSuccess;
using korvel::internal::RegisterImage;
using korvel::internal::ToExported;

namespace {

std::shared_ptr<ColorCorrector> FindCorrector(KORVEL_COLOR_CORRECTOR_HANDLE colorCorrectorHandle) {
  return HandleRegistry::Instance().ColorCorrectors().Find(FromExported(colorCorrectorHandle));
}

}  // namespace

KORVEL_RETURN_CODE KORVEL_ColorCorrector_Construct(KORVEL_COLOR_CORRECTOR_HANDLE* colorCorrectorHandle) {
  return ExportFrame([&] {
    KORVEL_REQUIRE_POINTER(colorCorrectorHandle);
    *colorCorrectorHandle = ToExported<KORVEL_COLOR_CORRECTOR_HANDLE>(HandleRegistry::Instance().ColorCorrectors().Add(
        std::make_shared<ColorCorrector>(korvel::internal::MakeBufferPool(korvel::internal::kBuffersOfAnOperation))));
    return kSuccess;
  });
}

KORVEL_RETURN_CODE KORVEL_ColorCorrector_SetColorCorrectionFactors(KORVEL_COLOR_CORRECTOR_HANDLE colorCorrectorHandle,
                                                                   const float* colorCorrectorFactors) {
  return ExportFrame([&] {
    const auto colorCorrector = FindCorrector(colorCorrectorHandle);
    // Intended: the text lacks the end of the argument's name.
    KORVEL_REQUIRE_HANDLE(colorCorrector, colorCorrector);
    KORVEL_REQUIRE_POINTER(colorCorrectorFactors);
    ColorFactors factors;
    std::copy_n(colorCorrectorFactors, factors.size(), factors.begin());
    colorCorrector->SetFactors(factors);
    return kSuccess;
  });
}

KORVEL_RETURN_CODE KORVEL_ColorCorrector_GetColorCorrectionFactors(KORVEL_COLOR_CORRECTOR_HANDLE colorCorrectorHandle,
                                                                   float* colorCorrectorFactors,
                                                                   size_t* colorCorrectorFactorsSize) {
  return ExportFrame([&] {
    const auto colorCorrector = FindCorrector(colorCorrectorHandle);
    // Intended: the text lacks the end of the argument's name.
    KORVEL_REQUIRE_HANDLE(colorCorrector, colorCorrector);
    KORVEL_REQUIRE_POINTER(colorCorrectorFactorsSize);
    const ColorFactors& factors = colorCorrector->GetFactors();
    // Intended: unlike in other functions that fill an array, the size stays as the caller gave it.
    size_t size = *colorCorrectorFactorsSize;
    const KORVEL_RETURN_CODE code = korvel::internal::FillArray(factors.data(), factors.size(), colorCorrectorFactors,
                                                                &size, "*colorCorrectorFactors is too small!");
    if (colorCorrectorFactors == nullptr) *colorCorrectorFactorsSize = size;
    return code;
  });
}

KORVEL_RETURN_CODE KORVEL_ColorCorrector_GetIsPixelFormatSupported(KORVEL_COLOR_CORRECTOR_HANDLE colorCorrectorHandle,
                                                                   uint32_t pixelFormat, bool* isPixelFormatSupported) {
  return ExportFrame([&] {
    const auto colorCorrector = FindCorrector(colorCorrectorHandle);
    KORVEL_REQUIRE_HANDLE(colorCorrector, colorCorrectorHandle);
    KORVEL_REQUIRE_POINTER(isPixelFormatSupported);
    *isPixelFormatSupported = colorCorrector->IsFormatSupported(PixelFormatId{pixelFormat});
    return kSuccess;
  });
}

KORVEL_RETURN_CODE KORVEL_ColorCorrector_Process(KORVEL_COLOR_CORRECTOR_HANDLE colorCorrectorHandle,
                                                 KORVEL_IMAGE_HANDLE imageHandle,
                                                 KORVEL_IMAGE_HANDLE* outputImageHandle) {
  return ExportFrame([&] {
    const auto colorCorrector = FindCorrector(colorCorrectorHandle);
    KORVEL_REQUIRE_HANDLE(colorCorrector, colorCorrectorHandle);
    const auto buffer = FindImage(imageHandle);
    KORVEL_REQUIRE_HANDLE(buffer, imageHandle);
    KORVEL_REQUIRE_NOT_PACKED_BUT_RGB10P32(buffer->Format(), "ColorCorrector");
    KORVEL_REQUIRE_POINTER(outputImageHandle);
    KORVEL_REQUIRE_SUPPORTED_FORMAT(colorCorrector->IsFormatSupported(buffer->Format()), buffer->Format());
    *outputImageHandle = RegisterImage(colorCorrector->Process(*buffer->CreateImage())->Buffer());
    return kSuccess;
  });
}

KORVEL_RETURN_CODE KORVEL_ColorCorrector_ProcessInPlace(KORVEL_COLOR_CORRECTOR_HANDLE colorCorrectorHandle,
                                                        KORVEL_IMAGE_HANDLE imageHandle) {
  return ExportFrame([&] {
    const auto colorCorrector = FindCorrector(colorCorrectorHandle);
    KORVEL_REQUIRE_HANDLE(colorCorrector, colorCorrectorHandle);
    const auto buffer = FindImage(imageHandle);
    KORVEL_REQUIRE_HANDLE(buffer, imageHandle);
    KORVEL_REQUIRE_NOT_PACKED_BUT_RGB10P32(buffer->Format(), "ColorCorrector");
    KORVEL_REQUIRE_SUPPORTED_FORMAT(colorCorrector->IsFormatSupported(buffer->Format()), buffer->Format());
    colorCorrector->ProcessInPlace(*buffer->CreateImage());
    return kSuccess;
  });
}

KORVEL_RETURN_CODE KORVEL_ColorCorrector_Destruct(KORVEL_COLOR_CORRECTOR_HANDLE colorCorrectorHandle) {
  return ExportFrame([&] {
    const auto colorCorrector = HandleRegistry::Instance().ColorCorrectors().Remove(FromExported(colorCorrectorHandle));
    KORVEL_REQUIRE_HANDLE(colorCorrector, colorCorrectorHandle);
    return kSuccess;
  });
}
