// Every exported function that takes a handle or a pointer, with each of them bad in turn.
#include <gtest/gtest.h>
#include <korvel/korvel.h>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "tests/support/exported_objects.h"
#include "tests/support/last_error.h"
#include "tests/support/temporary_directory.h"

namespace {

using korvel_test::ExportedAdaptiveHotpixelCorrector;
using korvel_test::ExportedBinning;
using korvel_test::ExportedColorCorrector;
using korvel_test::ExportedConverter;
using korvel_test::ExportedGain;
using korvel_test::ExportedGammaCorrector;
using korvel_test::ExportedImage;
using korvel_test::ExportedTransformer;
using korvel_test::ExportedVideo;
using korvel_test::LastError;
using korvel_test::ReadLastError;

uint32_t anInt = 0;
size_t aSize = 0;
uint8_t aByte = 0;
const KORVEL_POINT_2D aPoint{};
KORVEL_IMAGE_HANDLE anImage = nullptr;
KORVEL_IMAGE_CONVERTER_HANDLE aConverter = nullptr;
KORVEL_GAIN_HANDLE aGain = nullptr;
KORVEL_GAMMA_CORRECTOR_HANDLE aGammaCorrector = nullptr;
KORVEL_COLOR_CORRECTOR_HANDLE aColorCorrector = nullptr;
KORVEL_BINNING_HANDLE aBinning = nullptr;
KORVEL_ADAPTIVE_HOTPIXEL_CORRECTOR_HANDLE aHotpixelCorrector = nullptr;
KORVEL_IMAGE_TRANSFORMER_HANDLE aTransformer = nullptr;
KORVEL_HISTOGRAM_HANDLE aHistogram = nullptr;
KORVEL_PIXEL_LINE_HANDLE aLine = nullptr;
KORVEL_VIDEO_HANDLE aVideo = nullptr;

using Call = std::function<KORVEL_RETURN_CODE()>;

template <class Handle>
struct TakesHandle {
  const char* argument;
  std::function<KORVEL_RETURN_CODE(Handle)> call;
};

constexpr uint32_t kMono8 = KORVEL_PIXEL_FORMAT_Mono8;

// Every function with an image handle, and as many of its pointers as may be null at once: the handle is told first.
const std::vector<TakesHandle<KORVEL_IMAGE_HANDLE>> kImageCalls = {
    {"imageHandle", [](auto image) { return KORVEL_Image_GetWidth(image, nullptr); }},
    {"imageHandle", [](auto image) { return KORVEL_Image_GetHeight(image, nullptr); }},
    {"imageHandle", [](auto image) { return KORVEL_Image_GetByteCount(image, nullptr); }},
    {"imageHandle", [](auto image) { return KORVEL_Image_GetPixelFormat(image, nullptr); }},
    {"imageHandle", [](auto image) { return KORVEL_Image_GetData(image, nullptr); }},
    {"imageHandle", [](auto image) { return KORVEL_Image_GetPixelPointer(image, 9, 9, nullptr); }},
    {"imageHandle", [](auto image) { return KORVEL_Image_Clone(image, nullptr); }},
    {"imageHandle", [](auto image) { return KORVEL_Image_ConvertTo(image, 77, 9, nullptr); }},
    {"imageHandle", [](auto image) { return KORVEL_Image_ConvertToBuffer(image, 77, nullptr, 0, 9, nullptr); }},
    {"imageHandle", [](auto image) { return KORVEL_Image_Destruct(image); }},
    {"inputImageHandle", [](auto image) { return KORVEL_ImageWriter_WriteAsPNG(image, 0, nullptr, 0); }},
    {"inputImageHandle", [](auto image) { return KORVEL_ImageWriter_WriteAsRAW(image, nullptr, 0); }},
    {"inputImageHandle", [](auto image) { return KORVEL_ImageWriter_WriteAsBMP(image, nullptr, 0); }},
    {"inputImageHandle", [](auto image) { return KORVEL_ImageWriter_WriteAsJPG(image, 0, nullptr, 0); }},
    {"inputImageHandle", [](auto image) { return KORVEL_ImageWriter_Write(image, nullptr, 0); }},
    {"inputImageHandle", [](auto image) { return KORVEL_ImageConverter_Convert(aConverter, image, 77, nullptr); }},
    {"inputImageHandle",
     [](auto image) { return KORVEL_ImageConverter_ConvertToBuffer(aConverter, image, 77, nullptr, 0, nullptr); }},
    {"imageHandle", [](auto image) { return KORVEL_Gain_Process(aGain, image, nullptr); }},
    {"imageHandle", [](auto image) { return KORVEL_Gain_ProcessInPlace(aGain, image); }},
    {"imageHandle", [](auto image) { return KORVEL_GammaCorrector_Process(aGammaCorrector, image, nullptr); }},
    {"imageHandle", [](auto image) { return KORVEL_GammaCorrector_ProcessInPlace(aGammaCorrector, image); }},
    {"imageHandle", [](auto image) { return KORVEL_ColorCorrector_Process(aColorCorrector, image, nullptr); }},
    {"imageHandle", [](auto image) { return KORVEL_ColorCorrector_ProcessInPlace(aColorCorrector, image); }},
    {"imageHandle", [](auto image) { return KORVEL_Binning_Process(aBinning, image, nullptr); }},
    {"imageHandle", [](auto image) { return KORVEL_AdaptiveHotpixelCorrector_Detect(aHotpixelCorrector, image); }},
    {"imageHandle",
     [](auto image) {
       return KORVEL_AdaptiveHotpixelCorrector_Correct(aHotpixelCorrector, image, nullptr, 1, nullptr);
     }},
    {"imageHandle",
     [](auto image) { return KORVEL_AdaptiveHotpixelCorrector_CorrectAdaptive(aHotpixelCorrector, image, nullptr); }},
    {"imageHandle", [](auto image) { return KORVEL_ImageTransformer_MirrorUpDown(aTransformer, image, nullptr); }},
    {"imageHandle", [](auto image) { return KORVEL_ImageTransformer_MirrorLeftRight(aTransformer, image, nullptr); }},
    {"imageHandle",
     [](auto image) { return KORVEL_ImageTransformer_MirrorUpDownLeftRight(aTransformer, image, nullptr); }},
    {"imageHandle", [](auto image) { return KORVEL_ImageTransformer_MirrorUpDownInPlace(aTransformer, image); }},
    {"imageHandle", [](auto image) { return KORVEL_ImageTransformer_MirrorLeftRightInPlace(aTransformer, image); }},
    {"imageHandle",
     [](auto image) { return KORVEL_ImageTransformer_MirrorUpDownLeftRightInPlace(aTransformer, image); }},
    {"imageHandle", [](auto image) { return KORVEL_ImageTransformer_Rotate(aTransformer, image, nullptr, 45); }},
    {"imageHandle", [](auto image) { return KORVEL_ImageTransformer_RotateInPlace(aTransformer, image, 45); }},
    {"imageHandle", [](auto image) { return KORVEL_Histogram_Construct(image, nullptr); }},
    {"imageHandle", [](auto image) { return KORVEL_PixelLine_Construct(image, 0, 9, nullptr); }},
    {"imageHandle", [](auto image) { return KORVEL_VideoWriter_Video_Append(aVideo, image); }},
};

const std::vector<TakesHandle<KORVEL_IMAGE_CONVERTER_HANDLE>> kConverterCalls = {
    {"imageConverterHandle",
     [](auto converter) { return KORVEL_ImageConverter_PreAllocateConversion(converter, 77, 78, 0, 0, 0); }},
    {"imageConverterHandle",
     [](auto converter) { return KORVEL_ImageConverter_GetConversionMode(converter, nullptr); }},
    {"imageConverterHandle", [](auto converter) { return KORVEL_ImageConverter_SetConversionMode(converter, 1); }},
    {"imageConverterHandle",
     [](auto converter) {
       return KORVEL_ImageConverter_GetSupportedOutputPixelFormats(converter, 77, nullptr, nullptr);
     }},
    {"imageConverterHandle",
     [](auto converter) { return KORVEL_ImageConverter_Convert(converter, nullptr, 77, nullptr); }},
    {"imageConverterHandle",
     [](auto converter) { return KORVEL_ImageConverter_ConvertToBuffer(converter, nullptr, 77, nullptr, 0, nullptr); }},
    {"imageConverterHandle", [](auto converter) { return KORVEL_ImageConverter_Destruct(converter); }},
};

// KORVEL_VideoWriter_Video_IsOpen isn't among them: it takes any handle.
const std::vector<TakesHandle<KORVEL_VIDEO_HANDLE>> kVideoCalls = {
    {"videoHandle", [](auto video) { return KORVEL_VideoWriter_Video_Close(video); }},
    {"videoHandle", [](auto video) { return KORVEL_VideoWriter_Video_Append(video, nullptr); }},
    {"videoHandle", [](auto video) { return KORVEL_VideoWriter_Encoder_SetOption(video, 77, nullptr, 0); }},
    {"videoHandle", [](auto video) { return KORVEL_VideoWriter_Container_SetOption(video, 77, nullptr, 0); }},
    {"videoHandle", [](auto video) { return KORVEL_VideoWriter_Encoder_GetOption(video, 77, nullptr, 0, nullptr); }},
    {"videoHandle", [](auto video) { return KORVEL_VideoWriter_Container_GetOption(video, 77, nullptr, 0, nullptr); }},
    {"videoHandle",
     [](auto video) { return KORVEL_VideoWriter_Encoder_OptionRange(video, 77, nullptr, nullptr, nullptr); }},
    {"videoHandle", [](auto video) { return KORVEL_VideoWriter_Video_GetEncodedFrames(video, nullptr); }},
    {"videoHandle", [](auto video) { return KORVEL_VideoWriter_Video_GetDroppedFrames(video, nullptr); }},
    {"videoHandle", [](auto video) { return KORVEL_VideoWriter_Video_GetFileSize(video, nullptr); }},
    {"videoHandle", [](auto video) { return KORVEL_VideoWriter_Video_ResetFrameCounters(video); }},
    {"videoHandle", [](auto video) { return KORVEL_VideoWriter_Queue_SetSize(video, 0); }},
    {"videoHandle", [](auto video) { return KORVEL_VideoWriter_Queue_GetSize(video, nullptr); }},
    {"videoHandle", [](auto video) { return KORVEL_VideoWriter_Queue_GetRange(video, nullptr, nullptr); }},
    {"videoHandle", [](auto video) { return KORVEL_VideoWriter_Queue_GetQueued(video, nullptr); }},
    {"videoHandle", [](auto video) { return KORVEL_VideoWriter_Video_WaitUntilFrameDone(video, 0); }},
    {"videoHandle", [](auto video) { return KORVEL_VideoWriter_Video_WaitUntilQueueEmpty(video, 0); }},
};

const std::vector<TakesHandle<KORVEL_GAIN_HANDLE>> kGainCalls = {
    {"gainHandle", [](auto gain) { return KORVEL_Gain_SetMasterGainValue(gain, nullptr); }},
    {"gainHandle", [](auto gain) { return KORVEL_Gain_SetRedGainValue(gain, nullptr); }},
    {"gainHandle", [](auto gain) { return KORVEL_Gain_SetGreenGainValue(gain, nullptr); }},
    {"gainHandle", [](auto gain) { return KORVEL_Gain_SetBlueGainValue(gain, nullptr); }},
    {"gainHandle", [](auto gain) { return KORVEL_Gain_GetMasterGainValue(gain, nullptr); }},
    {"gainHandle", [](auto gain) { return KORVEL_Gain_GetRedGainValue(gain, nullptr); }},
    {"gainHandle", [](auto gain) { return KORVEL_Gain_GetGreenGainValue(gain, nullptr); }},
    {"gainHandle", [](auto gain) { return KORVEL_Gain_GetBlueGainValue(gain, nullptr); }},
    {"gainHandle", [](auto gain) { return KORVEL_Gain_GetMasterGainMin(gain, nullptr); }},
    {"gainHandle", [](auto gain) { return KORVEL_Gain_GetRedGainMin(gain, nullptr); }},
    {"gainHandle", [](auto gain) { return KORVEL_Gain_GetGreenGainMin(gain, nullptr); }},
    {"gainHandle", [](auto gain) { return KORVEL_Gain_GetBlueGainMin(gain, nullptr); }},
    {"gainHandle", [](auto gain) { return KORVEL_Gain_GetMasterGainMax(gain, nullptr); }},
    {"gainHandle", [](auto gain) { return KORVEL_Gain_GetRedGainMax(gain, nullptr); }},
    {"gainHandle", [](auto gain) { return KORVEL_Gain_GetGreenGainMax(gain, nullptr); }},
    {"gainHandle", [](auto gain) { return KORVEL_Gain_GetBlueGainMax(gain, nullptr); }},
    {"gainHandle", [](auto gain) { return KORVEL_Gain_GetIsPixelFormatSupported(gain, 77, nullptr); }},
    {"gainHandle", [](auto gain) { return KORVEL_Gain_Process(gain, nullptr, nullptr); }},
    {"gainHandle", [](auto gain) { return KORVEL_Gain_ProcessInPlace(gain, nullptr); }},
    // Intended: this function speaks of a colour corrector.
    {"colorCorrectorHandle", [](auto gain) { return KORVEL_Gain_Destruct(gain); }},
};

// Intended: "gammaCorrector" where a function is about the value alone.
const std::vector<TakesHandle<KORVEL_GAMMA_CORRECTOR_HANDLE>> kGammaCorrectorCalls = {
    {"gammaCorrector",
     [](auto corrector) { return KORVEL_GammaCorrector_SetGammaCorrectionValue(corrector, nullptr); }},
    {"gammaCorrector",
     [](auto corrector) { return KORVEL_GammaCorrector_GetGammaCorrectionValue(corrector, nullptr); }},
    {"gammaCorrector", [](auto corrector) { return KORVEL_GammaCorrector_GetGammaCorrectionMin(corrector, nullptr); }},
    {"gammaCorrector", [](auto corrector) { return KORVEL_GammaCorrector_GetGammaCorrectionMax(corrector, nullptr); }},
    {"gammaCorrectorHandle",
     [](auto corrector) { return KORVEL_GammaCorrector_GetIsPixelFormatSupported(corrector, 77, nullptr); }},
    {"gammaCorrectorHandle", [](auto corrector) { return KORVEL_GammaCorrector_Process(corrector, nullptr, nullptr); }},
    {"gammaCorrectorHandle", [](auto corrector) { return KORVEL_GammaCorrector_ProcessInPlace(corrector, nullptr); }},
    {"gammaCorrectorHandle", [](auto corrector) { return KORVEL_GammaCorrector_Destruct(corrector); }},
};

// Intended: "colorCorrector" where a function is about the factors alone.
const std::vector<TakesHandle<KORVEL_COLOR_CORRECTOR_HANDLE>> kColorCorrectorCalls = {
    {"colorCorrector",
     [](auto corrector) { return KORVEL_ColorCorrector_SetColorCorrectionFactors(corrector, nullptr); }},
    {"colorCorrector",
     [](auto corrector) { return KORVEL_ColorCorrector_GetColorCorrectionFactors(corrector, nullptr, nullptr); }},
    {"colorCorrectorHandle",
     [](auto corrector) { return KORVEL_ColorCorrector_GetIsPixelFormatSupported(corrector, 77, nullptr); }},
    {"colorCorrectorHandle", [](auto corrector) { return KORVEL_ColorCorrector_Process(corrector, nullptr, nullptr); }},
    {"colorCorrectorHandle", [](auto corrector) { return KORVEL_ColorCorrector_ProcessInPlace(corrector, nullptr); }},
    {"colorCorrectorHandle", [](auto corrector) { return KORVEL_ColorCorrector_Destruct(corrector); }},
};

const std::vector<TakesHandle<KORVEL_BINNING_HANDLE>> kBinningCalls = {
    {"binningHandle", [](auto binning) { return KORVEL_Binning_SetBinningX(binning, nullptr); }},
    {"binningHandle", [](auto binning) { return KORVEL_Binning_SetBinningY(binning, nullptr); }},
    {"binningHandle", [](auto binning) { return KORVEL_Binning_GetBinningX(binning, nullptr); }},
    {"binningHandle", [](auto binning) { return KORVEL_Binning_GetBinningY(binning, nullptr); }},
    {"binningHandle", [](auto binning) { return KORVEL_Binning_GetBinningMin(binning, nullptr); }},
    {"binningHandle", [](auto binning) { return KORVEL_Binning_GetBinningMax(binning, nullptr); }},
    {"binningHandle",
     [](auto binning) { return KORVEL_Binning_ExpectedOutputSize(binning, nullptr, nullptr, 0, 0, 77); }},
    {"binningHandle", [](auto binning) { return KORVEL_Binning_SetBinningMode(binning, nullptr); }},
    {"binningHandle", [](auto binning) { return KORVEL_Binning_GetBinningMode(binning, nullptr); }},
    {"binningHandle", [](auto binning) { return KORVEL_Binning_IsPixelformatSupported(binning, 77, nullptr); }},
    {"binningHandle", [](auto binning) { return KORVEL_Binning_Process(binning, nullptr, nullptr); }},
    {"binningHandle", [](auto binning) { return KORVEL_Binning_Destruct(binning); }},
};

const std::vector<TakesHandle<KORVEL_ADAPTIVE_HOTPIXEL_CORRECTOR_HANDLE>> kHotpixelCorrectorCalls = {
    {"adaptiveHotpixelCorrectorHandle",
     [](auto corrector) { return KORVEL_AdaptiveHotpixelCorrector_SetSensitivity(corrector, 0); }},
    {"adaptiveHotpixelCorrectorHandle",
     [](auto corrector) { return KORVEL_AdaptiveHotpixelCorrector_GetSensitivity(corrector, nullptr); }},
    {"adaptiveHotpixelCorrectorHandle",
     [](auto corrector) { return KORVEL_AdaptiveHotpixelCorrector_SetGainFactorPercent(corrector, 0); }},
    {"adaptiveHotpixelCorrectorHandle",
     [](auto corrector) { return KORVEL_AdaptiveHotpixelCorrector_GetGainFactorPercent(corrector, nullptr); }},
    {"adaptiveHotpixelCorrectorHandle",
     [](auto corrector) { return KORVEL_AdaptiveHotpixelCorrector_Detect(corrector, nullptr); }},
    {"adaptiveHotpixelCorrectorHandle",
     [](auto corrector) { return KORVEL_AdaptiveHotpixelCorrector_GetHotpixels(corrector, nullptr, nullptr); }},
    {"adaptiveHotpixelCorrectorHandle",
     [](auto corrector) { return KORVEL_AdaptiveHotpixelCorrector_Correct(corrector, nullptr, nullptr, 1, nullptr); }},
    {"adaptiveHotpixelCorrectorHandle",
     [](auto corrector) { return KORVEL_AdaptiveHotpixelCorrector_CorrectAdaptive(corrector, nullptr, nullptr); }},
    {"adaptiveHotpixelCorrectorHandle",
     [](auto corrector) { return KORVEL_AdaptiveHotpixelCorrector_Destruct(corrector); }},
};

const std::vector<TakesHandle<KORVEL_IMAGE_TRANSFORMER_HANDLE>> kTransformerCalls = {
    {"imageTransformerHandle",
     [](auto transformer) { return KORVEL_ImageTransformer_MirrorUpDown(transformer, nullptr, nullptr); }},
    {"imageTransformerHandle",
     [](auto transformer) { return KORVEL_ImageTransformer_MirrorLeftRight(transformer, nullptr, nullptr); }},
    {"imageTransformerHandle",
     [](auto transformer) { return KORVEL_ImageTransformer_MirrorUpDownLeftRight(transformer, nullptr, nullptr); }},
    {"imageTransformerHandle",
     [](auto transformer) { return KORVEL_ImageTransformer_MirrorUpDownInPlace(transformer, nullptr); }},
    {"imageTransformerHandle",
     [](auto transformer) { return KORVEL_ImageTransformer_MirrorLeftRightInPlace(transformer, nullptr); }},
    {"imageTransformerHandle",
     [](auto transformer) { return KORVEL_ImageTransformer_MirrorUpDownLeftRightInPlace(transformer, nullptr); }},
    {"imageTransformerHandle",
     [](auto transformer) { return KORVEL_ImageTransformer_Rotate(transformer, nullptr, nullptr, 45); }},
    {"imageTransformerHandle",
     [](auto transformer) { return KORVEL_ImageTransformer_RotateInPlace(transformer, nullptr, 45); }},
    // Intended: this function speaks of a converter.
    {"imageConverterHandle", [](auto transformer) { return KORVEL_ImageTransformer_Destruct(transformer); }},
};

const std::vector<TakesHandle<KORVEL_HISTOGRAM_HANDLE>> kHistogramCalls = {
    {"histogramHandle", [](auto histogram) { return KORVEL_Histogram_GetPixelFormat(histogram, nullptr); }},
    {"histogramHandle", [](auto histogram) { return KORVEL_Histogram_GetNumChannels(histogram, nullptr); }},
    {"histogramHandle", [](auto histogram) { return KORVEL_Histogram_GetPixelSumForChannel(histogram, 9, nullptr); }},
    {"histogramHandle", [](auto histogram) { return KORVEL_Histogram_GetPixelCountForChannel(histogram, 9, nullptr); }},
    {"histogramHandle",
     [](auto histogram) { return KORVEL_Histogram_GetBinsForChannel(histogram, 9, nullptr, nullptr); }},
    {"histogramHandle", [](auto histogram) { return KORVEL_Histogram_Destruct(histogram); }},
};

const std::vector<TakesHandle<KORVEL_PIXEL_LINE_HANDLE>> kLineCalls = {
    {"pixelLineHandle", [](auto line) { return KORVEL_PixelLine_GetPixelFormat(line, nullptr); }},
    {"pixelLineHandle", [](auto line) { return KORVEL_PixelLine_GetOrientation(line, nullptr); }},
    {"pixelLineHandle", [](auto line) { return KORVEL_PixelLine_GetOffset(line, nullptr); }},
    {"pixelLineHandle", [](auto line) { return KORVEL_PixelLine_GetNumChannels(line, nullptr); }},
    {"pixelLineHandle", [](auto line) { return KORVEL_PixelLine_GetValuesForChannel(line, 9, nullptr, nullptr); }},
    {"pixelLineHandle", [](auto line) { return KORVEL_PixelLine_Destruct(line); }},
};

struct TakesPointer {
  const char* argument;
  Call call;
};

// Every pointer of every function, null, with bad values beside it: pointers are told before values.
const std::vector<TakesPointer> kPointerCalls = {
    {"libraryVersionMajor", [] { return KORVEL_Library_GetVersionMajor(nullptr); }},
    {"libraryVersionMinor", [] { return KORVEL_Library_GetVersionMinor(nullptr); }},
    {"libraryVersionSubminor", [] { return KORVEL_Library_GetVersionSubminor(nullptr); }},
    {"lastErrorCode", [] { return KORVEL_Library_GetLastError(nullptr, nullptr, &aSize); }},
    {"lastErrorDescriptionSize", [] { return KORVEL_Library_GetLastError(&anInt, nullptr, nullptr); }},
    {"numChannels", [] { return KORVEL_PixelFormat_GetNumChannels(77, nullptr); }},
    {"numSignificantBits", [] { return KORVEL_PixelFormat_GetNumSignificantBitsPerChannel(77, nullptr); }},
    {"numStorageBits", [] { return KORVEL_PixelFormat_GetNumStorageBitsPerChannel(77, nullptr); }},
    {"channelMaximumValue", [] { return KORVEL_PixelFormat_GetMaximumValuePerChannel(77, nullptr); }},
    {"numSignificantBits", [] { return KORVEL_PixelFormat_GetNumSignificantBitsPerPixel(77, nullptr); }},
    {"numStorageBits", [] { return KORVEL_PixelFormat_GetNumStorageBitsPerPixel(77, nullptr); }},
    {"endianness", [] { return KORVEL_PixelFormat_GetEndianness(77, nullptr); }},
    {"size", [] { return KORVEL_PixelFormat_CalculateStorageSizeOfPixels(77, 0, nullptr); }},
    {"imageHandle", [] { return KORVEL_Image_Construct(77, 0, 0, nullptr); }},
    {"imageHandle", [] { return KORVEL_Image_ConstructFromBuffer(77, &aByte, 0, 0, 0, nullptr); }},
    {"buffer", [] { return KORVEL_Image_ConstructFromBuffer(77, nullptr, 0, 0, 0, &anImage); }},
    {"width", [] { return KORVEL_Image_GetWidth(anImage, nullptr); }},
    {"height", [] { return KORVEL_Image_GetHeight(anImage, nullptr); }},
    {"byteCount", [] { return KORVEL_Image_GetByteCount(anImage, nullptr); }},
    {"pixelFormat", [] { return KORVEL_Image_GetPixelFormat(anImage, nullptr); }},
    {"data", [] { return KORVEL_Image_GetData(anImage, nullptr); }},
    {"pixelPointer", [] { return KORVEL_Image_GetPixelPointer(anImage, 9, 9, nullptr); }},
    {"outputImageHandle", [] { return KORVEL_Image_Clone(anImage, nullptr); }},
    {"outputImageHandle", [] { return KORVEL_Image_ConvertTo(anImage, 77, 9, nullptr); }},
    {"outputImageBuffer", [] { return KORVEL_Image_ConvertToBuffer(anImage, 77, nullptr, 0, 9, nullptr); }},
    {"outputImageHandle", [] { return KORVEL_Image_ConvertToBuffer(anImage, 77, &aByte, 0, 9, nullptr); }},
    {"imageConverterHandle", [] { return KORVEL_ImageConverter_Construct(nullptr); }},
    {"conversionMode", [] { return KORVEL_ImageConverter_GetConversionMode(aConverter, nullptr); }},
    {"outputPixelFormatsSize",
     [] { return KORVEL_ImageConverter_GetSupportedOutputPixelFormats(aConverter, 77, nullptr, nullptr); }},
    {"outputPixelFormatsSize",
     [] { return KORVEL_ImageConverter_GetSupportedOutputPixelFormats(aConverter, 77, &anInt, nullptr); }},
    {"outputImageHandle", [] { return KORVEL_ImageConverter_Convert(aConverter, anImage, 77, nullptr); }},
    {"outputImageBuffer",
     [] { return KORVEL_ImageConverter_ConvertToBuffer(aConverter, anImage, 77, nullptr, 0, nullptr); }},
    {"outputImageHandle",
     [] { return KORVEL_ImageConverter_ConvertToBuffer(aConverter, anImage, 77, &aByte, 0, nullptr); }},
    {"gainHandle", [] { return KORVEL_Gain_Construct(nullptr); }},
    {"value", [] { return KORVEL_Gain_SetMasterGainValue(aGain, nullptr); }},
    {"value", [] { return KORVEL_Gain_SetRedGainValue(aGain, nullptr); }},
    {"value", [] { return KORVEL_Gain_SetGreenGainValue(aGain, nullptr); }},
    {"value", [] { return KORVEL_Gain_SetBlueGainValue(aGain, nullptr); }},
    {"value", [] { return KORVEL_Gain_GetMasterGainValue(aGain, nullptr); }},
    {"value", [] { return KORVEL_Gain_GetRedGainValue(aGain, nullptr); }},
    {"value", [] { return KORVEL_Gain_GetGreenGainValue(aGain, nullptr); }},
    {"value", [] { return KORVEL_Gain_GetBlueGainValue(aGain, nullptr); }},
    {"value", [] { return KORVEL_Gain_GetMasterGainMin(aGain, nullptr); }},
    {"value", [] { return KORVEL_Gain_GetRedGainMin(aGain, nullptr); }},
    {"value", [] { return KORVEL_Gain_GetGreenGainMin(aGain, nullptr); }},
    {"value", [] { return KORVEL_Gain_GetBlueGainMin(aGain, nullptr); }},
    {"value", [] { return KORVEL_Gain_GetMasterGainMax(aGain, nullptr); }},
    {"value", [] { return KORVEL_Gain_GetRedGainMax(aGain, nullptr); }},
    {"value", [] { return KORVEL_Gain_GetGreenGainMax(aGain, nullptr); }},
    {"value", [] { return KORVEL_Gain_GetBlueGainMax(aGain, nullptr); }},
    {"isPixelFormatSupported", [] { return KORVEL_Gain_GetIsPixelFormatSupported(aGain, 77, nullptr); }},
    {"outputImageHandle", [] { return KORVEL_Gain_Process(aGain, anImage, nullptr); }},
    {"gammaCorrectorHandle", [] { return KORVEL_GammaCorrector_Construct(nullptr); }},
    {"value", [] { return KORVEL_GammaCorrector_SetGammaCorrectionValue(aGammaCorrector, nullptr); }},
    {"value", [] { return KORVEL_GammaCorrector_GetGammaCorrectionValue(aGammaCorrector, nullptr); }},
    {"value", [] { return KORVEL_GammaCorrector_GetGammaCorrectionMin(aGammaCorrector, nullptr); }},
    {"value", [] { return KORVEL_GammaCorrector_GetGammaCorrectionMax(aGammaCorrector, nullptr); }},
    {"isPixelFormatSupported",
     [] { return KORVEL_GammaCorrector_GetIsPixelFormatSupported(aGammaCorrector, 77, nullptr); }},
    {"outputImageHandle", [] { return KORVEL_GammaCorrector_Process(aGammaCorrector, anImage, nullptr); }},
    {"colorCorrectorHandle", [] { return KORVEL_ColorCorrector_Construct(nullptr); }},
    {"colorCorrectorFactors", [] { return KORVEL_ColorCorrector_SetColorCorrectionFactors(aColorCorrector, nullptr); }},
    {"colorCorrectorFactorsSize",
     [] { return KORVEL_ColorCorrector_GetColorCorrectionFactors(aColorCorrector, nullptr, nullptr); }},
    {"isPixelFormatSupported",
     [] { return KORVEL_ColorCorrector_GetIsPixelFormatSupported(aColorCorrector, 77, nullptr); }},
    {"outputImageHandle", [] { return KORVEL_ColorCorrector_Process(aColorCorrector, anImage, nullptr); }},
    {"binningHandle", [] { return KORVEL_Binning_Construct(nullptr); }},
    {"factor", [] { return KORVEL_Binning_SetBinningX(aBinning, nullptr); }},
    {"factor", [] { return KORVEL_Binning_SetBinningY(aBinning, nullptr); }},
    {"factor", [] { return KORVEL_Binning_GetBinningX(aBinning, nullptr); }},
    {"factor", [] { return KORVEL_Binning_GetBinningY(aBinning, nullptr); }},
    {"value", [] { return KORVEL_Binning_GetBinningMin(aBinning, nullptr); }},
    {"value", [] { return KORVEL_Binning_GetBinningMax(aBinning, nullptr); }},
    {"outputWidth", [] { return KORVEL_Binning_ExpectedOutputSize(aBinning, nullptr, nullptr, 0, 0, 77); }},
    {"outputHeight", [] { return KORVEL_Binning_ExpectedOutputSize(aBinning, &aSize, nullptr, 0, 0, 77); }},
    {"mode", [] { return KORVEL_Binning_SetBinningMode(aBinning, nullptr); }},
    {"mode", [] { return KORVEL_Binning_GetBinningMode(aBinning, nullptr); }},
    {"isPixelFormatSupported", [] { return KORVEL_Binning_IsPixelformatSupported(aBinning, 77, nullptr); }},
    {"outputImageHandle", [] { return KORVEL_Binning_Process(aBinning, anImage, nullptr); }},
    {"adaptiveHotpixelCorrectorHandle", [] { return KORVEL_AdaptiveHotpixelCorrector_Construct(nullptr); }},
    {"detectedHotpixelsSize",
     [] { return KORVEL_AdaptiveHotpixelCorrector_GetHotpixels(aHotpixelCorrector, nullptr, nullptr); }},
    {"detectedHotpixels",
     [] { return KORVEL_AdaptiveHotpixelCorrector_Correct(aHotpixelCorrector, anImage, nullptr, 1, nullptr); }},
    {"outputImageHandle",
     [] { return KORVEL_AdaptiveHotpixelCorrector_Correct(aHotpixelCorrector, anImage, &aPoint, 1, nullptr); }},
    {"outputImageHandle",
     [] { return KORVEL_AdaptiveHotpixelCorrector_CorrectAdaptive(aHotpixelCorrector, anImage, nullptr); }},
    {"imageTransformerHandle", [] { return KORVEL_ImageTransformer_Construct(nullptr); }},
    {"outputImageHandle", [] { return KORVEL_ImageTransformer_MirrorUpDown(aTransformer, anImage, nullptr); }},
    {"outputImageHandle", [] { return KORVEL_ImageTransformer_MirrorLeftRight(aTransformer, anImage, nullptr); }},
    {"outputImageHandle", [] { return KORVEL_ImageTransformer_MirrorUpDownLeftRight(aTransformer, anImage, nullptr); }},
    {"outputImageHandle", [] { return KORVEL_ImageTransformer_Rotate(aTransformer, anImage, nullptr, 45); }},
    {"histogramHandle", [] { return KORVEL_Histogram_Construct(anImage, nullptr); }},
    {"pixelFormat", [] { return KORVEL_Histogram_GetPixelFormat(aHistogram, nullptr); }},
    {"numChannels", [] { return KORVEL_Histogram_GetNumChannels(aHistogram, nullptr); }},
    {"pixelSum", [] { return KORVEL_Histogram_GetPixelSumForChannel(aHistogram, 9, nullptr); }},
    {"pixelCount", [] { return KORVEL_Histogram_GetPixelCountForChannel(aHistogram, 9, nullptr); }},
    {"binsSize", [] { return KORVEL_Histogram_GetBinsForChannel(aHistogram, 9, nullptr, nullptr); }},
    {"pixelLineHandle", [] { return KORVEL_PixelLine_Construct(anImage, 0, 9, nullptr); }},
    {"pixelFormat", [] { return KORVEL_PixelLine_GetPixelFormat(aLine, nullptr); }},
    {"orientation", [] { return KORVEL_PixelLine_GetOrientation(aLine, nullptr); }},
    {"offset", [] { return KORVEL_PixelLine_GetOffset(aLine, nullptr); }},
    {"numChannels", [] { return KORVEL_PixelLine_GetNumChannels(aLine, nullptr); }},
    {"valuesSize", [] { return KORVEL_PixelLine_GetValuesForChannel(aLine, 9, nullptr, nullptr); }},
    {"filePath", [] { return KORVEL_ImageWriter_WriteAsPNG(anImage, 0, nullptr, 0); }},
    {"filePath", [] { return KORVEL_ImageWriter_WriteAsRAW(anImage, nullptr, 0); }},
    {"filePath", [] { return KORVEL_ImageWriter_WriteAsBMP(anImage, nullptr, 0); }},
    {"filePath", [] { return KORVEL_ImageWriter_WriteAsJPG(anImage, 0, nullptr, 0); }},
    {"filePath", [] { return KORVEL_ImageWriter_Write(anImage, nullptr, 0); }},
    {"filePath", [] { return KORVEL_ImageReader_Read(nullptr, 0, nullptr); }},
    {"outputImageHandle", [] { return KORVEL_ImageReader_Read("a", 1, nullptr); }},
    {"filePath", [] { return KORVEL_ImageReaderRead_ReadAsPixelFormat(nullptr, 0, 0, nullptr); }},
    {"outputImageHandle", [] { return KORVEL_ImageReaderRead_ReadAsPixelFormat("a", 1, 0, nullptr); }},
    {"videoHandle", [] { return KORVEL_VideoWriter_Video_Open(nullptr, nullptr, 77, 77); }},
};

// The same for the pointers that the video writer words in its own way.
const std::vector<TakesPointer> kVideoPointerCalls = {
    {"isOpen", [] { return KORVEL_VideoWriter_Video_IsOpen(aVideo, nullptr); }},
    {"value", [] { return KORVEL_VideoWriter_Encoder_SetOption(aVideo, 77, nullptr, 0); }},
    {"value", [] { return KORVEL_VideoWriter_Container_SetOption(aVideo, 77, nullptr, 0); }},
    {"value", [] { return KORVEL_VideoWriter_Encoder_GetOption(aVideo, 77, nullptr, 0, &aSize); }},
    {"value", [] { return KORVEL_VideoWriter_Container_GetOption(aVideo, 77, nullptr, 0, &aSize); }},
    {"min", [] { return KORVEL_VideoWriter_Encoder_OptionRange(aVideo, 77, nullptr, &anInt, &anInt); }},
    {"max", [] { return KORVEL_VideoWriter_Encoder_OptionRange(aVideo, 77, &anInt, nullptr, &anInt); }},
    {", max, inc", [] { return KORVEL_VideoWriter_Encoder_OptionRange(aVideo, 77, &anInt, &anInt, nullptr); }},
    {"size", [] { return KORVEL_VideoWriter_GetSupportedEncodersForAContainer(77, nullptr, nullptr); }},
    {"size", [] { return KORVEL_VideoWriter_GetSupportedContainersForAnEncoder(77, nullptr, nullptr); }},
    {"size", [] { return KORVEL_VideoWriter_Encoder_GetSupportedPixelFormats(1, nullptr, nullptr); }},
    {"numFrames", [] { return KORVEL_VideoWriter_Video_GetEncodedFrames(aVideo, nullptr); }},
    {"numFrames", [] { return KORVEL_VideoWriter_Video_GetDroppedFrames(aVideo, nullptr); }},
    {"fileSize_bytes", [] { return KORVEL_VideoWriter_Video_GetFileSize(aVideo, nullptr); }},
    {"size", [] { return KORVEL_VideoWriter_Queue_GetSize(aVideo, nullptr); }},
    {"minSize", [] { return KORVEL_VideoWriter_Queue_GetRange(aVideo, nullptr, &anInt); }},
    {"maxSize", [] { return KORVEL_VideoWriter_Queue_GetRange(aVideo, &anInt, nullptr); }},
    {"queued", [] { return KORVEL_VideoWriter_Queue_GetQueued(aVideo, nullptr); }},
};

// Every function with a path, which is empty, with bad values beside it.
const std::vector<Call> kPathCalls = {
    [] { return KORVEL_ImageWriter_WriteAsRAW(anImage, "a.raw", 0); },
    [] { return KORVEL_ImageWriter_WriteAsBMP(anImage, "a.bmp", 0); },
    [] { return KORVEL_ImageWriter_WriteAsPNG(anImage, 0, "", 0); },
    [] { return KORVEL_ImageWriter_WriteAsJPG(anImage, 0, "a.jpg", 0); },
    [] { return KORVEL_ImageWriter_Write(anImage, "a.png", 0); },
    [] { return KORVEL_ImageReader_Read("a.png", 0, nullptr); },
    [] { return KORVEL_ImageReaderRead_ReadAsPixelFormat("a.png", 0, 0, nullptr); },
};

class AllFunctions : public testing::Test {
 protected:
  void SetUp() override {
    anImage = image.Handle();
    aConverter = converter.Handle();
    aGain = gain.Handle();
    aGammaCorrector = gammaCorrector.Handle();
    aColorCorrector = colorCorrector.Handle();
    aBinning = binning.Handle();
    aHotpixelCorrector = hotpixelCorrector.Handle();
    aTransformer = transformer.Handle();
    aVideo = video.Handle();
    ASSERT_EQ(KORVEL_Histogram_Construct(anImage, &aHistogram), 0u);
    ASSERT_EQ(KORVEL_PixelLine_Construct(anImage, 0, 0, &aLine), 0u);
  }
  void TearDown() override {
    EXPECT_EQ(KORVEL_Histogram_Destruct(aHistogram), 0u);
    EXPECT_EQ(KORVEL_PixelLine_Destruct(aLine), 0u);
  }

  // other is a handle of another kind.
  template <class Handle, class OtherHandle>
  void ExpectBadHandlesRefused(const std::vector<TakesHandle<Handle>>& calls, Handle destroyed, OtherHandle other) {
    const Handle bad[] = {nullptr, destroyed, reinterpret_cast<Handle>(uintptr_t{0x1234}),
                          reinterpret_cast<Handle>(other), reinterpret_cast<Handle>(UINTPTR_MAX)};
    for (size_t i = 0; i < calls.size(); ++i) {
      for (const Handle handle : bad) {
        SCOPED_TRACE(testing::Message() << "call " << i << ", handle " << reinterpret_cast<uintptr_t>(handle));
        EXPECT_EQ(calls[i].call(handle), 2u);
        EXPECT_EQ(ReadLastError(), (LastError{2, std::string(calls[i].argument) + " is invalid!"}));
      }
    }
  }

  ExportedImage image{kMono8, 2, 2};
  ExportedConverter converter;
  ExportedGain gain;
  ExportedGammaCorrector gammaCorrector;
  ExportedColorCorrector colorCorrector;
  ExportedBinning binning;
  ExportedAdaptiveHotpixelCorrector hotpixelCorrector;
  ExportedTransformer transformer;
  korvel_test::TemporaryDirectory directory;
  ExportedVideo video{directory.File("a.avi")};
};

TEST_F(AllFunctions, RefuseBadImageHandles) {
  KORVEL_IMAGE_HANDLE destroyed = nullptr;
  ASSERT_EQ(KORVEL_Image_Construct(kMono8, 2, 2, &destroyed), 0u);
  ASSERT_EQ(KORVEL_Image_Destruct(destroyed), 0u);
  ExpectBadHandlesRefused(kImageCalls, destroyed, converter.Handle());
}

TEST_F(AllFunctions, RefuseBadConverterHandles) {
  KORVEL_IMAGE_CONVERTER_HANDLE destroyed = nullptr;
  ASSERT_EQ(KORVEL_ImageConverter_Construct(&destroyed), 0u);
  ASSERT_EQ(KORVEL_ImageConverter_Destruct(destroyed), 0u);
  ExpectBadHandlesRefused(kConverterCalls, destroyed, image.Handle());
}

TEST_F(AllFunctions, RefuseBadGainHandles) {
  KORVEL_GAIN_HANDLE destroyed = nullptr;
  ASSERT_EQ(KORVEL_Gain_Construct(&destroyed), 0u);
  ASSERT_EQ(KORVEL_Gain_Destruct(destroyed), 0u);
  ExpectBadHandlesRefused(kGainCalls, destroyed, gammaCorrector.Handle());
}

TEST_F(AllFunctions, RefuseBadGammaCorrectorHandles) {
  KORVEL_GAMMA_CORRECTOR_HANDLE destroyed = nullptr;
  ASSERT_EQ(KORVEL_GammaCorrector_Construct(&destroyed), 0u);
  ASSERT_EQ(KORVEL_GammaCorrector_Destruct(destroyed), 0u);
  ExpectBadHandlesRefused(kGammaCorrectorCalls, destroyed, gain.Handle());
}

TEST_F(AllFunctions, RefuseBadColorCorrectorHandles) {
  KORVEL_COLOR_CORRECTOR_HANDLE destroyed = nullptr;
  ASSERT_EQ(KORVEL_ColorCorrector_Construct(&destroyed), 0u);
  ASSERT_EQ(KORVEL_ColorCorrector_Destruct(destroyed), 0u);
  ExpectBadHandlesRefused(kColorCorrectorCalls, destroyed, gammaCorrector.Handle());
}

TEST_F(AllFunctions, RefuseBadBinningHandles) {
  KORVEL_BINNING_HANDLE destroyed = nullptr;
  ASSERT_EQ(KORVEL_Binning_Construct(&destroyed), 0u);
  ASSERT_EQ(KORVEL_Binning_Destruct(destroyed), 0u);
  ExpectBadHandlesRefused(kBinningCalls, destroyed, gain.Handle());
}

TEST_F(AllFunctions, RefuseBadHotpixelCorrectorHandles) {
  KORVEL_ADAPTIVE_HOTPIXEL_CORRECTOR_HANDLE destroyed = nullptr;
  ASSERT_EQ(KORVEL_AdaptiveHotpixelCorrector_Construct(&destroyed), 0u);
  ASSERT_EQ(KORVEL_AdaptiveHotpixelCorrector_Destruct(destroyed), 0u);
  ExpectBadHandlesRefused(kHotpixelCorrectorCalls, destroyed, converter.Handle());
}

TEST_F(AllFunctions, RefuseBadTransformerHandles) {
  KORVEL_IMAGE_TRANSFORMER_HANDLE destroyed = nullptr;
  ASSERT_EQ(KORVEL_ImageTransformer_Construct(&destroyed), 0u);
  ASSERT_EQ(KORVEL_ImageTransformer_Destruct(destroyed), 0u);
  ExpectBadHandlesRefused(kTransformerCalls, destroyed, converter.Handle());
}

TEST_F(AllFunctions, RefuseBadHistogramHandles) {
  KORVEL_HISTOGRAM_HANDLE destroyed = nullptr;
  ASSERT_EQ(KORVEL_Histogram_Construct(anImage, &destroyed), 0u);
  ASSERT_EQ(KORVEL_Histogram_Destruct(destroyed), 0u);
  ExpectBadHandlesRefused(kHistogramCalls, destroyed, aLine);
}

TEST_F(AllFunctions, RefuseBadLineHandles) {
  KORVEL_PIXEL_LINE_HANDLE destroyed = nullptr;
  ASSERT_EQ(KORVEL_PixelLine_Construct(anImage, 0, 0, &destroyed), 0u);
  ASSERT_EQ(KORVEL_PixelLine_Destruct(destroyed), 0u);
  ExpectBadHandlesRefused(kLineCalls, destroyed, aHistogram);
}

TEST_F(AllFunctions, RefuseBadVideoHandles) {
  KORVEL_VIDEO_HANDLE closed = nullptr;
  ASSERT_EQ(KORVEL_VideoWriter_Video_Open(&closed, directory.File("closed.avi").c_str(), 0, 1), 0u);
  ASSERT_EQ(KORVEL_VideoWriter_Video_Close(closed), 0u);
  ExpectBadHandlesRefused(kVideoCalls, closed, image.Handle());
}

TEST_F(AllFunctions, RefuseNullPointers) {
  for (size_t i = 0; i < kPointerCalls.size(); ++i) {
    SCOPED_TRACE(testing::Message() << "call " << i);
    EXPECT_EQ(kPointerCalls[i].call(), 5u);
    EXPECT_EQ(ReadLastError(), (LastError{5, std::string(kPointerCalls[i].argument) + " is not a valid pointer!"}));
  }
  for (size_t i = 0; i < kVideoPointerCalls.size(); ++i) {
    SCOPED_TRACE(testing::Message() << "video call " << i);
    EXPECT_EQ(kVideoPointerCalls[i].call(), 5u);
    EXPECT_EQ(ReadLastError(), (LastError{5, "The " + std::string(kVideoPointerCalls[i].argument) +
                                                 " parameter is an invalid pointer!"}));
  }
}

TEST_F(AllFunctions, RefuseEmptyPaths) {
  for (size_t i = 0; i < kPathCalls.size(); ++i) {
    SCOPED_TRACE(testing::Message() << "call " << i);
    EXPECT_EQ(kPathCalls[i](), 5u);
    EXPECT_EQ(ReadLastError(), (LastError{5, "filePathSize is 0!"}));
  }
}

}  // namespace
