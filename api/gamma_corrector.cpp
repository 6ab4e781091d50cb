// KORVEL_GammaCorrector_*: gamma correction.

#include "processing/correction/gamma_corrector.h"

#include "api/buffer_pools.h"
#include "api/export_frame.h"
#include "api/format_checks.h"
#include "api/handle_registry.h"
#include "korvel/korvel.h"

using img::PixelFormatId;
using img::processing::GammaCorrector;
using korvel::internal::ExportFrame;
using korvel::internal::FindImage;
using korvel::internal::FromExported;
using korvel::internal::HandleRegistry;
using korvel::internal::kSuccess;
using korvel::internal::RegisterImage;
using korvel::internal::ToExported;

namespace {

std::shared_ptr<GammaCorrector> FindCorrector(KORVEL_GAMMA_CORRECTOR_HANDLE gammaCorrectorHandle) {
  return HandleRegistry::Instance().GammaCorrectors().Find(FromExported(gammaCorrectorHandle));
}

KORVEL_RETURN_CODE Get(KORVEL_GAMMA_CORRECTOR_HANDLE gammaCorrectorHandle, float* value,
                       float (GammaCorrector::*get)() const) {
  return ExportFrame([&] {
    const auto gammaCorrector = FindCorrector(gammaCorrectorHandle);
    // Intended: the text lacks the end of the argument's name.
    KORVEL_REQUIRE_HANDLE(gammaCorrector, gammaCorrector);
    KORVEL_REQUIRE_POINTER(value);
    *value = (*gammaCorrector.*get)();
    return kSuccess;
  });
}

}  // namespace

KORVEL_RETURN_CODE KORVEL_GammaCorrector_Construct(KORVEL_GAMMA_CORRECTOR_HANDLE* gammaCorrectorHandle) {
  return ExportFrame([&] {
    KORVEL_REQUIRE_POINTER(gammaCorrectorHandle);
    *gammaCorrectorHandle = ToExported<KORVEL_GAMMA_CORRECTOR_HANDLE>(HandleRegistry::Instance().GammaCorrectors().Add(
        std::make_shared<GammaCorrector>(korvel::internal::MakeBufferPool(korvel::internal::kBuffersOfAnOperation))));
    return kSuccess;
  });
}

KORVEL_RETURN_CODE KORVEL_GammaCorrector_SetGammaCorrectionValue(KORVEL_GAMMA_CORRECTOR_HANDLE gammaCorrectorHandle,
                                                                 const float* value) {
  return ExportFrame([&] {
    const auto gammaCorrector = FindCorrector(gammaCorrectorHandle);
    // Intended: the text lacks the end of the argument's name.
    KORVEL_REQUIRE_HANDLE(gammaCorrector, gammaCorrector);
    KORVEL_REQUIRE_POINTER(value);
    gammaCorrector->SetGammaCorrectionValue(*value);
    return kSuccess;
  });
}

KORVEL_RETURN_CODE KORVEL_GammaCorrector_GetGammaCorrectionValue(KORVEL_GAMMA_CORRECTOR_HANDLE gammaCorrectorHandle,
                                                                 float* value) {
  return Get(gammaCorrectorHandle, value, &GammaCorrector::GetGammaCorrectionValue);
}

KORVEL_RETURN_CODE KORVEL_GammaCorrector_GetGammaCorrectionMin(KORVEL_GAMMA_CORRECTOR_HANDLE gammaCorrectorHandle,
                                                               float* value) {
  return Get(gammaCorrectorHandle, value, &GammaCorrector::GetGammaCorrectionMin);
}

KORVEL_RETURN_CODE KORVEL_GammaCorrector_GetGammaCorrectionMax(KORVEL_GAMMA_CORRECTOR_HANDLE gammaCorrectorHandle,
                                                               float* value) {
  return Get(gammaCorrectorHandle, value, &GammaCorrector::GetGammaCorrectionMax);
}

KORVEL_RETURN_CODE KORVEL_GammaCorrector_GetIsPixelFormatSupported(KORVEL_GAMMA_CORRECTOR_HANDLE gammaCorrectorHandle,
                                                                   uint32_t pixelFormat, bool* isPixelFormatSupported) {
  return ExportFrame([&] {
    const auto gammaCorrector = FindCorrector(gammaCorrectorHandle);
    KORVEL_REQUIRE_HANDLE(gammaCorrector, gammaCorrectorHandle);
    KORVEL_REQUIRE_POINTER(isPixelFormatSupported);
    *isPixelFormatSupported = GammaCorrector::IsFormatSupported(PixelFormatId{pixelFormat});
    return kSuccess;
  });
}

KORVEL_RETURN_CODE KORVEL_GammaCorrector_Process(KORVEL_GAMMA_CORRECTOR_HANDLE gammaCorrectorHandle,
                                                 KORVEL_IMAGE_HANDLE imageHandle,
                                                 KORVEL_IMAGE_HANDLE* outputImageHandle) {
  return ExportFrame([&] {
    const auto gammaCorrector = FindCorrector(gammaCorrectorHandle);
    KORVEL_REQUIRE_HANDLE(gammaCorrector, gammaCorrectorHandle);
    const auto buffer = FindImage(imageHandle);
    KORVEL_REQUIRE_HANDLE(buffer, imageHandle);
    KORVEL_REQUIRE_NOT_PACKED_BUT_RGB10P32(buffer->Format(), "GammaCorrector");
    KORVEL_REQUIRE_POINTER(outputImageHandle);
    *outputImageHandle = RegisterImage(gammaCorrector->applyGammaCorrection(*buffer->CreateImage())->Buffer());
    return kSuccess;
  });
}

KORVEL_RETURN_CODE KORVEL_GammaCorrector_ProcessInPlace(KORVEL_GAMMA_CORRECTOR_HANDLE gammaCorrectorHandle,
                                                        KORVEL_IMAGE_HANDLE imageHandle) {
  return ExportFrame([&] {
    const auto gammaCorrector = FindCorrector(gammaCorrectorHandle);
    KORVEL_REQUIRE_HANDLE(gammaCorrector, gammaCorrectorHandle);
    const auto buffer = FindImage(imageHandle);
    KORVEL_REQUIRE_HANDLE(buffer, imageHandle);
    KORVEL_REQUIRE_NOT_PACKED_BUT_RGB10P32(buffer->Format(), "GammaCorrector");
    gammaCorrector->applyGammaCorrectionInPlace(*buffer->CreateImage());
    return kSuccess;
  });
}

KORVEL_RETURN_CODE KORVEL_GammaCorrector_Destruct(KORVEL_GAMMA_CORRECTOR_HANDLE gammaCorrectorHandle) {
  return ExportFrame([&] {
    const auto gammaCorrector = HandleRegistry::Instance().GammaCorrectors().Remove(FromExported(gammaCorrectorHandle));
    KORVEL_REQUIRE_HANDLE(gammaCorrector, gammaCorrectorHandle);
    return kSuccess;
  });
}
