// KORVEL_PixelFormat_*: the properties of a pixel format.

#include "core/pixel_format.h"

#include "api/export_frame.h"
#include "korvel/korvel.h"

using img::PixelFormatId;
using korvel::internal::ExportFrame;
using korvel::internal::kSuccess;

KORVEL_RETURN_CODE KORVEL_PixelFormat_GetNumChannels(uint32_t pixelFormat, size_t* numChannels) {
  return ExportFrame([&] {
    KORVEL_REQUIRE_POINTER(numChannels);
    *numChannels = img::PixelFormatInfo_PixelComponents(PixelFormatId{pixelFormat});
    return kSuccess;
  });
}

KORVEL_RETURN_CODE KORVEL_PixelFormat_GetNumSignificantBitsPerChannel(uint32_t pixelFormat,
                                                                      size_t* numSignificantBits) {
  return ExportFrame([&] {
    KORVEL_REQUIRE_POINTER(numSignificantBits);
    *numSignificantBits = img::PixelFormatInfo_ComponentSignificantBits(PixelFormatId{pixelFormat});
    return kSuccess;
  });
}

KORVEL_RETURN_CODE KORVEL_PixelFormat_GetNumStorageBitsPerChannel(uint32_t pixelFormat, size_t* numStorageBits) {
  return ExportFrame([&] {
    KORVEL_REQUIRE_POINTER(numStorageBits);
    *numStorageBits = img::PixelFormatInfo_ComponentStorageBits(PixelFormatId{pixelFormat});
    return kSuccess;
  });
}

KORVEL_RETURN_CODE KORVEL_PixelFormat_GetMaximumValuePerChannel(uint32_t pixelFormat, uint32_t* channelMaximumValue) {
  return ExportFrame([&] {
    KORVEL_REQUIRE_POINTER(channelMaximumValue);
    *channelMaximumValue = img::PixelFormatInfo_ComponentMaxValue(PixelFormatId{pixelFormat});
    return kSuccess;
  });
}

KORVEL_RETURN_CODE KORVEL_PixelFormat_GetNumSignificantBitsPerPixel(uint32_t pixelFormat, size_t* numSignificantBits) {
  return ExportFrame([&] {
    KORVEL_REQUIRE_POINTER(numSignificantBits);
    *numSignificantBits = img::PixelFormatInfo_PixelSignificantBits(PixelFormatId{pixelFormat});
    return kSuccess;
  });
}

KORVEL_RETURN_CODE KORVEL_PixelFormat_GetNumStorageBitsPerPixel(uint32_t pixelFormat, size_t* numStorageBits) {
  return ExportFrame([&] {
    KORVEL_REQUIRE_POINTER(numStorageBits);
    *numStorageBits = img::PixelFormatInfo_PixelStorageBits(PixelFormatId{pixelFormat});
    return kSuccess;
  });
}

KORVEL_RETURN_CODE KORVEL_PixelFormat_GetEndianness(uint32_t pixelFormat, KORVEL_ENDIANNESS* endianness) {
  return ExportFrame([&] {
    KORVEL_REQUIRE_POINTER(endianness);
    *endianness = static_cast<KORVEL_ENDIANNESS>(img::PixelFormatInfo_ByteOrder(PixelFormatId{pixelFormat}));
    return kSuccess;
  });
}

KORVEL_RETURN_CODE KORVEL_PixelFormat_CalculateStorageSizeOfPixels(uint32_t pixelFormat, size_t numPixels,
                                                                   size_t* size) {
  return ExportFrame([&] {
    KORVEL_REQUIRE_POINTER(size);
    *size = img::PixelFormatInfo_CalcSizeOfPixels(PixelFormatId{pixelFormat}, numPixels);
    return kSuccess;
  });
}
