// KORVEL_Gain_*: digital gain for mono and Bayer images.

#include "processing/correction/gain.h"

#include "api/buffer_pools.h"
#include "api/export_frame.h"
#include "api/format_checks.h"
#include "api/handle_registry.h"
#include "korvel/korvel.h"

using img::PixelFormatId;
using img::processing::Gain;
using korvel::internal::ExportFrame;
using korvel::internal::FindImage;
using korvel::internal::FromExported;
using korvel::internal::HandleRegistry;
using korvel::internal::kSuccess;
using korvel::internal::RegisterImage;
using korvel::internal::ToExported;

namespace {

std::shared_ptr<Gain> FindGain(KORVEL_GAIN_HANDLE gainHandle) {
  return HandleRegistry::Instance().Gains().Find(FromExported(gainHandle));
}

KORVEL_RETURN_CODE Set(KORVEL_GAIN_HANDLE gainHandle, const float* value, void (Gain::*set)(float)) {
  return ExportFrame([&] {
    const auto gain = FindGain(gainHandle);
    KORVEL_REQUIRE_HANDLE(gain, gainHandle);
    KORVEL_REQUIRE_POINTER(value);
    (*gain.*set)(*value);
    return kSuccess;
  });
}

KORVEL_RETURN_CODE Get(KORVEL_GAIN_HANDLE gainHandle, float* value, float (Gain::*get)() const) {
  return ExportFrame([&] {
    const auto gain = FindGain(gainHandle);
    KORVEL_REQUIRE_HANDLE(gain, gainHandle);
    KORVEL_REQUIRE_POINTER(value);
    *value = (*gain.*get)();
    return kSuccess;
  });
}

}  // namespace

KORVEL_RETURN_CODE KORVEL_Gain_Construct(KORVEL_GAIN_HANDLE* gainHandle) {
  return ExportFrame([&] {
    KORVEL_REQUIRE_POINTER(gainHandle);
    *gainHandle = ToExported<KORVEL_GAIN_HANDLE>(HandleRegistry::Instance().Gains().Add(
        std::make_shared<Gain>(korvel::internal::MakeBufferPool(korvel::internal::kBuffersOfAnOperation))));
    return kSuccess;
  });
}

KORVEL_RETURN_CODE KORVEL_Gain_SetMasterGainValue(KORVEL_GAIN_HANDLE gainHandle, const float* value) {
  return Set(gainHandle, value, &Gain::SetMasterGainValue);
}

KORVEL_RETURN_CODE KORVEL_Gain_SetRedGainValue(KORVEL_GAIN_HANDLE gainHandle, const float* value) {
  return Set(gainHandle, value, &Gain::SetRedGainValue);
}

KORVEL_RETURN_CODE KORVEL_Gain_SetGreenGainValue(KORVEL_GAIN_HANDLE gainHandle, const float* value) {
  return Set(gainHandle, value, &Gain::SetGreenGainValue);
}

KORVEL_RETURN_CODE KORVEL_Gain_SetBlueGainValue(KORVEL_GAIN_HANDLE gainHandle, const float* value) {
  return Set(gainHandle, value, &Gain::SetBlueGainValue);
}

KORVEL_RETURN_CODE KORVEL_Gain_GetMasterGainValue(KORVEL_GAIN_HANDLE gainHandle, float* value) {
  return Get(gainHandle, value, &Gain::GetMasterGainValue);
}

KORVEL_RETURN_CODE KORVEL_Gain_GetRedGainValue(KORVEL_GAIN_HANDLE gainHandle, float* value) {
  return Get(gainHandle, value, &Gain::GetRedGainValue);
}

KORVEL_RETURN_CODE KORVEL_Gain_GetGreenGainValue(KORVEL_GAIN_HANDLE gainHandle, float* value) {
  return Get(gainHandle, value, &Gain::GetGreenGainValue);
}

KORVEL_RETURN_CODE KORVEL_Gain_GetBlueGainValue(KORVEL_GAIN_HANDLE gainHandle, float* value) {
  return Get(gainHandle, value, &Gain::GetBlueGainValue);
}

KORVEL_RETURN_CODE KORVEL_Gain_GetMasterGainMin(KORVEL_GAIN_HANDLE gainHandle, float* value) {
  return Get(gainHandle, value, &Gain::Min);
}

KORVEL_RETURN_CODE KORVEL_Gain_GetRedGainMin(KORVEL_GAIN_HANDLE gainHandle, float* value) {
  return Get(gainHandle, value, &Gain::Min);
}

KORVEL_RETURN_CODE KORVEL_Gain_GetGreenGainMin(KORVEL_GAIN_HANDLE gainHandle, float* value) {
  return Get(gainHandle, value, &Gain::Min);
}

KORVEL_RETURN_CODE KORVEL_Gain_GetBlueGainMin(KORVEL_GAIN_HANDLE gainHandle, float* value) {
  return Get(gainHandle, value, &Gain::Min);
}

KORVEL_RETURN_CODE KORVEL_Gain_GetMasterGainMax(KORVEL_GAIN_HANDLE gainHandle, float* value) {
  return Get(gainHandle, value, &Gain::Max);
}

KORVEL_RETURN_CODE KORVEL_Gain_GetRedGainMax(KORVEL_GAIN_HANDLE gainHandle, float* value) {
  return Get(gainHandle, value, &Gain::Max);
}

KORVEL_RETURN_CODE KORVEL_Gain_GetGreenGainMax(KORVEL_GAIN_HANDLE gainHandle, float* value) {
  return Get(gainHandle, value, &Gain::Max);
}

KORVEL_RETURN_CODE KORVEL_Gain_GetBlueGainMax(KORVEL_GAIN_HANDLE gainHandle, float* value) {
  return Get(gainHandle, value, &Gain::Max);
}

KORVEL_RETURN_CODE KORVEL_Gain_GetIsPixelFormatSupported(KORVEL_GAIN_HANDLE gainHandle, uint32_t pixelFormat,
                                                         bool* isPixelFormatSupported) {
  return ExportFrame([&] {
    const auto gain = FindGain(gainHandle);
    KORVEL_REQUIRE_HANDLE(gain, gainHandle);
    KORVEL_REQUIRE_POINTER(isPixelFormatSupported);
    *isPixelFormatSupported = Gain::IsFormatSupported(PixelFormatId{pixelFormat});
    return kSuccess;
  });
}

KORVEL_RETURN_CODE KORVEL_Gain_Process(KORVEL_GAIN_HANDLE gainHandle, KORVEL_IMAGE_HANDLE imageHandle,
                                       KORVEL_IMAGE_HANDLE* outputImageHandle) {
  return ExportFrame([&] {
    const auto gain = FindGain(gainHandle);
    KORVEL_REQUIRE_HANDLE(gain, gainHandle);
    const auto buffer = FindImage(imageHandle);
    KORVEL_REQUIRE_HANDLE(buffer, imageHandle);
    KORVEL_REQUIRE_NOT_PACKED(buffer->Format(), "gain");
    KORVEL_REQUIRE_POINTER(outputImageHandle);
    KORVEL_REQUIRE_SUPPORTED_FORMAT(Gain::IsFormatSupported(buffer->Format()), buffer->Format());
    *outputImageHandle = RegisterImage(gain->applyGain(*buffer->CreateImage())->Buffer());
    return kSuccess;
  });
}

KORVEL_RETURN_CODE KORVEL_Gain_ProcessInPlace(KORVEL_GAIN_HANDLE gainHandle, KORVEL_IMAGE_HANDLE imageHandle) {
  return ExportFrame([&] {
    const auto gain = FindGain(gainHandle);
    KORVEL_REQUIRE_HANDLE(gain, gainHandle);
    const auto buffer = FindImage(imageHandle);
    KORVEL_REQUIRE_HANDLE(buffer, imageHandle);
    // Intended: RGB10p32 is refused as an unsupported format here, and as a packed one above.
    KORVEL_REQUIRE_NOT_PACKED_BUT_RGB10P32(buffer->Format(), "gain");
    KORVEL_REQUIRE_SUPPORTED_FORMAT(Gain::IsFormatSupported(buffer->Format()), buffer->Format());
    gain->applyGainInPlace(*buffer->CreateImage());
    return kSuccess;
  });
}

KORVEL_RETURN_CODE KORVEL_Gain_Destruct(KORVEL_GAIN_HANDLE gainHandle) {
  return ExportFrame([&] {
    const auto gain = HandleRegistry::Instance().Gains().Remove(FromExported(gainHandle));
    // Intended: the text names the handle of another family.
    KORVEL_REQUIRE(gain != nullptr, KORVEL_RETURN_CODE_InvalidHandle, "colorCorrectorHandle is invalid!");
    return kSuccess;
  });
}
