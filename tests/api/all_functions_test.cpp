// Every exported function that takes a handle or a pointer, with each of them bad in turn.
#include <gtest/gtest.h>
#include <korvel/korvel.h>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "tests/support/exported_objects.h"
#include "tests/support/last_error.h"

namespace {

using korvel_test::ExportedConverter;
using korvel_test::ExportedImage;
using korvel_test::LastError;
using korvel_test::ReadLastError;

uint32_t anInt = 0;
size_t aSize = 0;
uint8_t aByte = 0;
KORVEL_IMAGE_HANDLE anImage = nullptr;
KORVEL_IMAGE_CONVERTER_HANDLE aConverter = nullptr;

using ImageCall = std::function<KORVEL_RETURN_CODE(KORVEL_IMAGE_HANDLE)>;
using ConverterCall = std::function<KORVEL_RETURN_CODE(KORVEL_IMAGE_CONVERTER_HANDLE)>;
using Call = std::function<KORVEL_RETURN_CODE()>;

template <class HandleCall>
struct TakesHandle {
  const char* argument;
  HandleCall call;
};

constexpr uint32_t kMono8 = KORVEL_PIXEL_FORMAT_Mono8;

// Every function with an image handle, and as many of its pointers as may be null at once: the handle is told first.
const std::vector<TakesHandle<ImageCall>> kImageCalls = {
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
};

const std::vector<TakesHandle<ConverterCall>> kConverterCalls = {
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
    {"filePath", [] { return KORVEL_ImageWriter_WriteAsPNG(anImage, 0, nullptr, 0); }},
    {"filePath", [] { return KORVEL_ImageWriter_WriteAsRAW(anImage, nullptr, 0); }},
    {"filePath", [] { return KORVEL_ImageWriter_WriteAsBMP(anImage, nullptr, 0); }},
    {"filePath", [] { return KORVEL_ImageWriter_WriteAsJPG(anImage, 0, nullptr, 0); }},
    {"filePath", [] { return KORVEL_ImageWriter_Write(anImage, nullptr, 0); }},
    {"filePath", [] { return KORVEL_ImageReader_Read(nullptr, 0, nullptr); }},
    {"outputImageHandle", [] { return KORVEL_ImageReader_Read("a", 1, nullptr); }},
    {"filePath", [] { return KORVEL_ImageReaderRead_ReadAsPixelFormat(nullptr, 0, 0, nullptr); }},
    {"outputImageHandle", [] { return KORVEL_ImageReaderRead_ReadAsPixelFormat("a", 1, 0, nullptr); }},
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
  }

  ExportedImage image{kMono8, 2, 2};
  ExportedConverter converter;
};

TEST_F(AllFunctions, RefuseBadImageHandles) {
  KORVEL_IMAGE_HANDLE destroyed = nullptr;
  ASSERT_EQ(KORVEL_Image_Construct(kMono8, 2, 2, &destroyed), 0u);
  ASSERT_EQ(KORVEL_Image_Destruct(destroyed), 0u);
  const KORVEL_IMAGE_HANDLE bad[] = {nullptr, destroyed, reinterpret_cast<KORVEL_IMAGE_HANDLE>(uintptr_t{0x1234}),
                                     reinterpret_cast<KORVEL_IMAGE_HANDLE>(converter.Handle()),
                                     reinterpret_cast<KORVEL_IMAGE_HANDLE>(UINTPTR_MAX)};
  for (size_t i = 0; i < kImageCalls.size(); ++i) {
    for (const KORVEL_IMAGE_HANDLE handle : bad) {
      SCOPED_TRACE(testing::Message() << "call " << i << ", handle " << reinterpret_cast<uintptr_t>(handle));
      EXPECT_EQ(kImageCalls[i].call(handle), 2u);
      EXPECT_EQ(ReadLastError(), (LastError{2, std::string(kImageCalls[i].argument) + " is invalid!"}));
    }
  }
}

TEST_F(AllFunctions, RefuseBadConverterHandles) {
  KORVEL_IMAGE_CONVERTER_HANDLE destroyed = nullptr;
  ASSERT_EQ(KORVEL_ImageConverter_Construct(&destroyed), 0u);
  ASSERT_EQ(KORVEL_ImageConverter_Destruct(destroyed), 0u);
  const KORVEL_IMAGE_CONVERTER_HANDLE bad[] = {nullptr, destroyed,
                                               reinterpret_cast<KORVEL_IMAGE_CONVERTER_HANDLE>(uintptr_t{0x1234}),
                                               reinterpret_cast<KORVEL_IMAGE_CONVERTER_HANDLE>(image.Handle()),
                                               reinterpret_cast<KORVEL_IMAGE_CONVERTER_HANDLE>(UINTPTR_MAX)};
  for (size_t i = 0; i < kConverterCalls.size(); ++i) {
    for (const KORVEL_IMAGE_CONVERTER_HANDLE handle : bad) {
      SCOPED_TRACE(testing::Message() << "call " << i << ", handle " << reinterpret_cast<uintptr_t>(handle));
      EXPECT_EQ(kConverterCalls[i].call(handle), 2u);
      EXPECT_EQ(ReadLastError(), (LastError{2, std::string(kConverterCalls[i].argument) + " is invalid!"}));
    }
  }
}

TEST_F(AllFunctions, RefuseNullPointers) {
  for (size_t i = 0; i < kPointerCalls.size(); ++i) {
    SCOPED_TRACE(testing::Message() << "call " << i);
    EXPECT_EQ(kPointerCalls[i].call(), 5u);
    EXPECT_EQ(ReadLastError(), (LastError{5, std::string(kPointerCalls[i].argument) + " is not a valid pointer!"}));
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
