// KORVEL_Binning_*: smaller images from blocks of pixels.

#include "processing/correction/binning.h"

#include "api/buffer_pools.h"
#include "api/export_frame.h"
#include "api/format_checks.h"
#include "api/handle_registry.h"
#include "korvel/korvel.h"

using img::PixelFormatId;
using img::processing::Binning;
using img::processing::BinningMode;
using korvel::internal::ExportFrame;
using korvel::internal::FindImage;
using korvel::internal::FromExported;
using korvel::internal::HandleRegistry;
using korvel::internal::kSuccess;
using korvel::internal::RegisterImage;
using korvel::internal::ToExported;

namespace {

std::shared_ptr<Binning> FindBinning(KORVEL_BINNING_HANDLE binningHandle) {
  return HandleRegistry::Instance().Binnings().Find(FromExported(binningHandle));
}

KORVEL_RETURN_CODE SetFactor(KORVEL_BINNING_HANDLE binningHandle, const uint8_t* factor,
                             void (Binning::*set)(uint8_t)) {
  return ExportFrame([&] {
    const auto binning = FindBinning(binningHandle);
    KORVEL_REQUIRE_HANDLE(binning, binningHandle);
    KORVEL_REQUIRE_POINTER(factor);
    (*binning.*set)(*factor);
    return kSuccess;
  });
}

KORVEL_RETURN_CODE GetFactor(KORVEL_BINNING_HANDLE binningHandle, uint8_t* factor, uint8_t (Binning::*get)() const) {
  return ExportFrame([&] {
    const auto binning = FindBinning(binningHandle);
    KORVEL_REQUIRE_HANDLE(binning, binningHandle);
    KORVEL_REQUIRE_POINTER(factor);
    *factor = (*binning.*get)();
    return kSuccess;
  });
}

KORVEL_RETURN_CODE GetLimit(KORVEL_BINNING_HANDLE binningHandle, uint8_t* value, uint8_t (Binning::*get)() const) {
  return ExportFrame([&] {
    const auto binning = FindBinning(binningHandle);
    KORVEL_REQUIRE_HANDLE(binning, binningHandle);
    KORVEL_REQUIRE_POINTER(value);
    *value = (*binning.*get)();
    return kSuccess;
  });
}

}  // namespace

KORVEL_RETURN_CODE KORVEL_Binning_Construct(KORVEL_BINNING_HANDLE* binningHandle) {
  return ExportFrame([&] {
    KORVEL_REQUIRE_POINTER(binningHandle);
    *binningHandle = ToExported<KORVEL_BINNING_HANDLE>(HandleRegistry::Instance().Binnings().Add(
        std::make_shared<Binning>(korvel::internal::MakeBufferPool(korvel::internal::kBuffersOfAnOperation))));
    return kSuccess;
  });
}

KORVEL_RETURN_CODE KORVEL_Binning_SetBinningX(KORVEL_BINNING_HANDLE binningHandle, const uint8_t* factor) {
  return SetFactor(binningHandle, factor, &Binning::SetBinningX);
}

KORVEL_RETURN_CODE KORVEL_Binning_SetBinningY(KORVEL_BINNING_HANDLE binningHandle, const uint8_t* factor) {
  return SetFactor(binningHandle, factor, &Binning::SetBinningY);
}

KORVEL_RETURN_CODE KORVEL_Binning_GetBinningX(KORVEL_BINNING_HANDLE binningHandle, uint8_t* factor) {
  return GetFactor(binningHandle, factor, &Binning::GetBinningX);
}

KORVEL_RETURN_CODE KORVEL_Binning_GetBinningY(KORVEL_BINNING_HANDLE binningHandle, uint8_t* factor) {
  return GetFactor(binningHandle, factor, &Binning::GetBinningY);
}

KORVEL_RETURN_CODE KORVEL_Binning_GetBinningMin(KORVEL_BINNING_HANDLE binningHandle, uint8_t* value) {
  return GetLimit(binningHandle, value, &Binning::Min);
}

KORVEL_RETURN_CODE KORVEL_Binning_GetBinningMax(KORVEL_BINNING_HANDLE binningHandle, uint8_t* value) {
  return GetLimit(binningHandle, value, &Binning::Max);
}

KORVEL_RETURN_CODE KORVEL_Binning_ExpectedOutputSize(KORVEL_BINNING_HANDLE binningHandle, size_t* outputWidth,
                                                     size_t* outputHeight, size_t width, size_t height,
                                                     uint32_t pixelFormat) {
  return ExportFrame([&] {
    const auto binning = FindBinning(binningHandle);
    KORVEL_REQUIRE_HANDLE(binning, binningHandle);
    KORVEL_REQUIRE_POINTER(outputWidth);
    KORVEL_REQUIRE_POINTER(outputHeight);
    const img::Size2D size = binning->ExpectedOutputSize({width, height}, PixelFormatId{pixelFormat});
    *outputWidth = size.width;
    *outputHeight = size.height;
    return kSuccess;
  });
}

KORVEL_RETURN_CODE KORVEL_Binning_SetBinningMode(KORVEL_BINNING_HANDLE binningHandle, const KORVEL_BINNING_MODE* mode) {
  return ExportFrame([&] {
    const auto binning = FindBinning(binningHandle);
    KORVEL_REQUIRE_HANDLE(binning, binningHandle);
    KORVEL_REQUIRE_POINTER(mode);
    binning->SetMode(BinningMode{*mode});
    return kSuccess;
  });
}

KORVEL_RETURN_CODE KORVEL_Binning_GetBinningMode(KORVEL_BINNING_HANDLE binningHandle, KORVEL_BINNING_MODE* mode) {
  return ExportFrame([&] {
    const auto binning = FindBinning(binningHandle);
    KORVEL_REQUIRE_HANDLE(binning, binningHandle);
    KORVEL_REQUIRE_POINTER(mode);
    *mode = static_cast<KORVEL_BINNING_MODE>(binning->GetMode());
    return kSuccess;
  });
}

KORVEL_RETURN_CODE KORVEL_Binning_IsPixelformatSupported(KORVEL_BINNING_HANDLE binningHandle, uint32_t pixelFormat,
                                                         bool* isPixelFormatSupported) {
  return ExportFrame([&] {
    const auto binning = FindBinning(binningHandle);
    KORVEL_REQUIRE_HANDLE(binning, binningHandle);
    KORVEL_REQUIRE_POINTER(isPixelFormatSupported);
    *isPixelFormatSupported = Binning::IsFormatSupported(PixelFormatId{pixelFormat});
    return kSuccess;
  });
}

KORVEL_RETURN_CODE KORVEL_Binning_Process(KORVEL_BINNING_HANDLE binningHandle, KORVEL_IMAGE_HANDLE imageHandle,
                                          KORVEL_IMAGE_HANDLE* outputImageHandle) {
  return ExportFrame([&] {
    const auto binning = FindBinning(binningHandle);
    KORVEL_REQUIRE_HANDLE(binning, binningHandle);
    const auto buffer = FindImage(imageHandle);
    KORVEL_REQUIRE_HANDLE(buffer, imageHandle);
    // Intended: this refuses RGB10p32, which binning itself has.
    KORVEL_REQUIRE_NOT_PACKED(buffer->Format(), "binning");
    KORVEL_REQUIRE_POINTER(outputImageHandle);
    KORVEL_REQUIRE_SUPPORTED_FORMAT(Binning::IsFormatSupported(buffer->Format()), buffer->Format());
    *outputImageHandle = RegisterImage(binning->Process(*buffer->CreateImage())->Buffer());
    return kSuccess;
  });
}

KORVEL_RETURN_CODE KORVEL_Binning_Destruct(KORVEL_BINNING_HANDLE binningHandle) {
  return ExportFrame([&] {
    const auto binning = HandleRegistry::Instance().Binnings().Remove(FromExported(binningHandle));
    KORVEL_REQUIRE_HANDLE(binning, binningHandle);
    return kSuccess;
  });
}
