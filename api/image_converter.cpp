// KORVEL_ImageConverter_*: converters that an application keeps for a stream of images.

#include "api/converters.h"
#include "api/export_frame.h"
#include "api/handle_registry.h"
#include "korvel/korvel.h"

using img::PixelFormatId;
using korvel::internal::ConvertBuffer;
using korvel::internal::ConvertIntoMemory;
using korvel::internal::ExportFrame;
using korvel::internal::FindImage;
using korvel::internal::FromExported;
using korvel::internal::HandleRegistry;
using korvel::internal::HoldsResult;
using korvel::internal::kSuccess;
using korvel::internal::MakeConverter;
using korvel::internal::RegisterImage;
using korvel::internal::ToExported;

namespace {

std::shared_ptr<img::processing::ImageConverter> FindConverter(KORVEL_IMAGE_CONVERTER_HANDLE imageConverterHandle) {
  return HandleRegistry::Instance().ImageConverters().Find(FromExported(imageConverterHandle));
}

}  // namespace

KORVEL_RETURN_CODE KORVEL_ImageConverter_Construct(KORVEL_IMAGE_CONVERTER_HANDLE* imageConverterHandle) {
  return ExportFrame([&] {
    KORVEL_REQUIRE_POINTER(imageConverterHandle);
    *imageConverterHandle = ToExported<KORVEL_IMAGE_CONVERTER_HANDLE>(
        HandleRegistry::Instance().ImageConverters().Add(MakeConverter(korvel::internal::kBuffersOfAConverter)));
    return kSuccess;
  });
}

KORVEL_RETURN_CODE KORVEL_ImageConverter_PreAllocateConversion(KORVEL_IMAGE_CONVERTER_HANDLE imageConverterHandle,
                                                               uint32_t inputPixelFormat, uint32_t outputPixelFormat,
                                                               size_t imageWidth, size_t imageHeight,
                                                               size_t imageCount) {
  return ExportFrame([&] {
    const auto converter = FindConverter(imageConverterHandle);
    KORVEL_REQUIRE_HANDLE(converter, imageConverterHandle);
    converter->PreAllocateConversion(PixelFormatId{inputPixelFormat}, PixelFormatId{outputPixelFormat},
                                     img::Size2D{imageWidth, imageHeight}, imageCount);
    return kSuccess;
  });
}

KORVEL_RETURN_CODE KORVEL_ImageConverter_GetConversionMode(KORVEL_IMAGE_CONVERTER_HANDLE imageConverterHandle,
                                                           uint32_t* conversionMode) {
  return ExportFrame([&] {
    const auto converter = FindConverter(imageConverterHandle);
    KORVEL_REQUIRE_HANDLE(converter, imageConverterHandle);
    KORVEL_REQUIRE_POINTER(conversionMode);
    *conversionMode = converter->GetConversionMode();
    return kSuccess;
  });
}

KORVEL_RETURN_CODE KORVEL_ImageConverter_SetConversionMode(KORVEL_IMAGE_CONVERTER_HANDLE imageConverterHandle,
                                                           uint32_t conversionMode) {
  return ExportFrame([&] {
    const auto converter = FindConverter(imageConverterHandle);
    KORVEL_REQUIRE_HANDLE(converter, imageConverterHandle);
    converter->SetConversionMode(conversionMode);
    return kSuccess;
  });
}

KORVEL_RETURN_CODE KORVEL_ImageConverter_GetSupportedOutputPixelFormats(
    KORVEL_IMAGE_CONVERTER_HANDLE imageConverterHandle, uint32_t inputPixelFormat, uint32_t* outputPixelFormats,
    size_t* outputPixelFormatsSize) {
  return ExportFrame([&] {
    const auto converter = FindConverter(imageConverterHandle);
    KORVEL_REQUIRE_HANDLE(converter, imageConverterHandle);
    KORVEL_REQUIRE_POINTER(outputPixelFormatsSize);
    const auto formats = converter->GetSupportedOutputPixelFormats(PixelFormatId{inputPixelFormat});
    return korvel::internal::FillArray(formats.data(), formats.size(), outputPixelFormats, outputPixelFormatsSize,
                                       "*outputPixelFormats is too small!");
  });
}

KORVEL_RETURN_CODE KORVEL_ImageConverter_Convert(KORVEL_IMAGE_CONVERTER_HANDLE imageConverterHandle,
                                                 KORVEL_IMAGE_HANDLE inputImageHandle, uint32_t outputPixelFormat,
                                                 KORVEL_IMAGE_HANDLE* outputImageHandle) {
  return ExportFrame([&] {
    const auto converter = FindConverter(imageConverterHandle);
    KORVEL_REQUIRE_HANDLE(converter, imageConverterHandle);
    const auto input = FindImage(inputImageHandle);
    KORVEL_REQUIRE_HANDLE(input, inputImageHandle);
    KORVEL_REQUIRE_POINTER(outputImageHandle);
    *outputImageHandle = RegisterImage(ConvertBuffer(*converter, *input, outputPixelFormat));
    return kSuccess;
  });
}

KORVEL_RETURN_CODE KORVEL_ImageConverter_ConvertToBuffer(KORVEL_IMAGE_CONVERTER_HANDLE imageConverterHandle,
                                                         KORVEL_IMAGE_HANDLE inputImageHandle,
                                                         uint32_t outputPixelFormat, uint8_t* outputImageBuffer,
                                                         size_t outputImageBufferSize,
                                                         KORVEL_IMAGE_HANDLE* outputImageHandle) {
  return ExportFrame([&] {
    const auto converter = FindConverter(imageConverterHandle);
    KORVEL_REQUIRE_HANDLE(converter, imageConverterHandle);
    const auto input = FindImage(inputImageHandle);
    KORVEL_REQUIRE_HANDLE(input, inputImageHandle);
    KORVEL_REQUIRE_POINTER(outputImageBuffer);
    KORVEL_REQUIRE_POINTER(outputImageHandle);
    KORVEL_REQUIRE(HoldsResult(*input, outputPixelFormat, outputImageBufferSize), KORVEL_RETURN_CODE_BufferToSmall,
                   "outputImageBuffer is too small!");
    *outputImageHandle = RegisterImage(
        ConvertIntoMemory(*converter, *input, outputPixelFormat, outputImageBuffer, outputImageBufferSize));
    return kSuccess;
  });
}

KORVEL_RETURN_CODE KORVEL_ImageConverter_Destruct(KORVEL_IMAGE_CONVERTER_HANDLE imageConverterHandle) {
  return ExportFrame([&] {
    const auto converter = HandleRegistry::Instance().ImageConverters().Remove(FromExported(imageConverterHandle));
    KORVEL_REQUIRE_HANDLE(converter, imageConverterHandle);
    return kSuccess;
  });
}
