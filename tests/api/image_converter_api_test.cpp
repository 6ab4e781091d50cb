#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <korvel/korvel.h>

#include <limits>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/exported_objects.h"
#include "tests/support/last_error.h"

namespace {

using korvel_test::Bytes;
using korvel_test::CallersMemory;
using korvel_test::ExportedConverter;
using korvel_test::ExportedImage;
using korvel_test::LastError;
using korvel_test::MarkLastError;
using korvel_test::ReadLastError;
using testing::Each;
using testing::ElementsAre;
using testing::EndsWith;
using testing::StartsWith;

constexpr size_t kMax = std::numeric_limits<size_t>::max();
constexpr uint32_t kUnknownId = 77;
const auto kNoHandle = reinterpret_cast<KORVEL_IMAGE_HANDLE>(0x5A5A);

const LastError kTooSmall{4, "outputImageBuffer is too small!"};

class ImageConverterApi : public testing::Test {
 protected:
  KORVEL_IMAGE_HANDLE Convert(KORVEL_IMAGE_HANDLE input, uint32_t format) {
    KORVEL_IMAGE_HANDLE output = kNoHandle;
    EXPECT_EQ(KORVEL_ImageConverter_Convert(converter.Handle(), input, format, &output), 0u) << ReadLastError();
    return output;
  }
  Bytes Converted(KORVEL_IMAGE_HANDLE input, uint32_t format) {
    const ExportedImage output(Convert(input, format));
    return output.Content();
  }
  // Both families into memory; a failure leaves the handle unwritten.
  void ExpectFailure(KORVEL_IMAGE_HANDLE input, uint32_t format, Bytes& buffer, const LastError& expected,
                     uint32_t mode = 1) {
    KORVEL_IMAGE_HANDLE output = kNoHandle;
    EXPECT_EQ(KORVEL_ImageConverter_SetConversionMode(converter.Handle(), mode), 0u);
    EXPECT_EQ(
        KORVEL_ImageConverter_ConvertToBuffer(converter.Handle(), input, format, buffer.data(), buffer.size(), &output),
        expected.code);
    EXPECT_EQ(ReadLastError(), expected);
    EXPECT_EQ(KORVEL_Image_ConvertToBuffer(input, format, buffer.data(), buffer.size(), mode, &output), expected.code);
    EXPECT_EQ(ReadLastError(), expected);
    EXPECT_EQ(output, kNoHandle);
  }

  ExportedConverter converter;
};

TEST_F(ImageConverterApi, KeepsAModeOfAnyNumber) {
  uint32_t mode = 99;
  EXPECT_EQ(KORVEL_ImageConverter_GetConversionMode(converter.Handle(), &mode), 0u);
  EXPECT_EQ(mode, 1u);
  for (const uint32_t set : {0u, 3u, 7u, 0xFFFFFFFFu}) {
    EXPECT_EQ(KORVEL_ImageConverter_SetConversionMode(converter.Handle(), set), 0u);
    EXPECT_EQ(KORVEL_ImageConverter_GetConversionMode(converter.Handle(), &mode), 0u);
    EXPECT_EQ(mode, set);
  }
}

TEST_F(ImageConverterApi, ListsSupportedFormatsInTwoCalls) {
  const LastError before = MarkLastError();
  size_t size = 99;
  EXPECT_EQ(KORVEL_ImageConverter_GetSupportedOutputPixelFormats(converter.Handle(), KORVEL_PIXEL_FORMAT_RGBa10,
                                                                 nullptr, &size),
            0u);
  EXPECT_EQ(size, 3u);
  uint32_t formats[5] = {1, 1, 1, 1, 1};
  size = 5;
  EXPECT_EQ(KORVEL_ImageConverter_GetSupportedOutputPixelFormats(converter.Handle(), KORVEL_PIXEL_FORMAT_RGBa10,
                                                                 formats, &size),
            0u);
  EXPECT_EQ(size, 3u);
  EXPECT_THAT(formats, ElementsAre(0x02200016, 0x0240005F, 0x02400061, 1, 1));
  EXPECT_EQ(ReadLastError(), before);
  size = 2;
  formats[0] = 1;
  EXPECT_EQ(KORVEL_ImageConverter_GetSupportedOutputPixelFormats(converter.Handle(), KORVEL_PIXEL_FORMAT_RGBa10,
                                                                 formats, &size),
            4u);
  EXPECT_EQ(size, 2u);
  EXPECT_EQ(formats[0], 1u);
  EXPECT_EQ(ReadLastError(), (LastError{4, "*outputPixelFormats is too small!"}));
  EXPECT_EQ(KORVEL_ImageConverter_GetSupportedOutputPixelFormats(converter.Handle(), kUnknownId, formats, &size), 1u);
  EXPECT_EQ(ReadLastError(),
            (LastError{1, "error: type=InvalidParameterUtilx[-1009], module_id=9000, txt=Unknown formatId: 77"}));
}

TEST_F(ImageConverterApi, ListsEveryFormatForItselfAndConvertsToAllThatItLists){
#define KORVEL_EXPECT_LISTED(name, id)                                                                             \
  {                                                                                                                \
    SCOPED_TRACE(#name);                                                                                           \
    std::vector<uint32_t> formats(32);                                                                             \
    size_t size = formats.size();                                                                                  \
    ASSERT_EQ(KORVEL_ImageConverter_GetSupportedOutputPixelFormats(converter.Handle(), id, formats.data(), &size), \
              0u);                                                                                                 \
    formats.resize(size);                                                                                          \
    EXPECT_THAT(formats, testing::Contains(id));                                                                   \
    const ExportedImage input(id, 18, 16);                                                                         \
    for (const uint32_t format : formats) {                                                                        \
      const ExportedImage output(Convert(input.Handle(), format));                                                 \
      EXPECT_EQ(output.Format(), format);                                                                          \
    }                                                                                                              \
  }
    KORVEL_PIXEL_FORMATS(KORVEL_EXPECT_LISTED)
#undef KORVEL_EXPECT_LISTED
}

TEST_F(ImageConverterApi, PreallocatesWithinReason) {
  const auto preallocate = [&](uint32_t from, uint32_t to, size_t width, size_t height, size_t count) {
    return KORVEL_ImageConverter_PreAllocateConversion(converter.Handle(), from, to, width, height, count);
  };
  constexpr uint32_t kFrom = KORVEL_PIXEL_FORMAT_BayerRG12p;
  constexpr uint32_t kTo = KORVEL_PIXEL_FORMAT_BGRa8;
  EXPECT_EQ(preallocate(kFrom, kTo, 64, 48, 3), 0u);
  EXPECT_EQ(preallocate(kFrom, kTo, 64, 48, 0), 0u);
  EXPECT_EQ(preallocate(kFrom, kTo, 0, 48, 1), 6u);
  EXPECT_EQ(ReadLastError(), (LastError{6, "error: type=OutOfRange[6], module_id=9000, txt=Width must not be 0!"}));
  EXPECT_EQ(preallocate(kFrom, kTo, 64, 0, 1), 6u);
  EXPECT_EQ(ReadLastError(), (LastError{6, "error: type=OutOfRange[6], module_id=9000, txt=Height must not be 0!"}));
  EXPECT_EQ(preallocate(kUnknownId, kTo, 0, 0, 1), 1u);
  EXPECT_THAT(ReadLastError().text, EndsWith("txt=Unknown formatId: 77"));
  EXPECT_EQ(preallocate(kFrom, kUnknownId, 0, 0, 1), 1u);
  EXPECT_THAT(ReadLastError().text, EndsWith("txt=Unknown formatId: 77"));
  EXPECT_EQ(preallocate(kFrom, KORVEL_PIXEL_FORMAT_BayerGB8, 0, 0, 1), 1u);
  EXPECT_THAT(ReadLastError().text, EndsWith("No bayer converter for conversion from 17301513 to 17301514"));
  for (const size_t count : {kMax, kMax / 2, size_t{1} << 40}) {
    EXPECT_EQ(preallocate(kFrom, kTo, 1920, 1080, count), 1u);
    EXPECT_NE(ReadLastError().text, "");
  }
  EXPECT_EQ(preallocate(kFrom, kTo, kMax, kMax, 1), 1u);
  EXPECT_EQ(preallocate(kFrom, kTo, size_t{1} << 32, size_t{1} << 32, 0), 1u);
  const ExportedImage input(kFrom, 20, 18);
  EXPECT_EQ(Converted(input.Handle(), kTo).size(), 20u * 18 * 4) << "the converter stays usable";
}

TEST_F(ImageConverterApi, ConvertsIntoImagesThatOutliveTheConverter) {
  const ExportedImage input(KORVEL_PIXEL_FORMAT_Mono8, 2, 1, Bytes{1, 2});
  const ExportedImage output(Convert(input.Handle(), KORVEL_PIXEL_FORMAT_RGB8));
  const ExportedImage copy(Convert(input.Handle(), KORVEL_PIXEL_FORMAT_Mono8));
  converter.Destruct();
  EXPECT_THAT(output.Content(), ElementsAre(1, 1, 1, 2, 2, 2));
  output.Data()[0] = 9;
  KORVEL_IMAGE_HANDLE clone = nullptr;
  ASSERT_EQ(KORVEL_Image_Clone(output.Handle(), &clone), 0u);
  EXPECT_THAT(ExportedImage(clone).Content(), ElementsAre(9, 1, 1, 2, 2, 2));
  EXPECT_THAT(copy.Content(), ElementsAre(1, 2));
}

TEST_F(ImageConverterApi, ClonesOutliveTheCallersMemory) {
  KORVEL_IMAGE_HANDLE clone = nullptr;
  {
    const auto memory = std::make_unique<CallersMemory>(5);
    std::memcpy(memory->Data(), "\1\2\3\4\xF5", 5);
    KORVEL_IMAGE_HANDLE handle = nullptr;
    ASSERT_EQ(KORVEL_Image_ConstructFromBuffer(KORVEL_PIXEL_FORMAT_BayerRG12p, memory->Data(), 5, 3, 1, &handle), 0u);
    const ExportedImage input(handle);
    ASSERT_EQ(KORVEL_Image_Clone(handle, &clone), 0u);
  }
  const ExportedImage image(clone);
  EXPECT_EQ(image.Format(), uint32_t{KORVEL_PIXEL_FORMAT_BayerRG12p});
  EXPECT_THAT(image.Content(), ElementsAre(1, 2, 3, 4, 0xF5));
}

TEST_F(ImageConverterApi, ClonesAnImageWithoutData) {
  const ExportedImage none(KORVEL_PIXEL_FORMAT_Invalid, 0, 0);
  KORVEL_IMAGE_HANDLE clone = nullptr;
  ASSERT_EQ(KORVEL_Image_Clone(none.Handle(), &clone), 0u);
  const ExportedImage image(clone);
  EXPECT_EQ(image.ByteCount(), 0u);
  EXPECT_EQ(image.Data(), nullptr);
}

TEST_F(ImageConverterApi, ChangesTheInputWhereTheFlipComesFirst) {
  const ExportedImage bgr(KORVEL_PIXEL_FORMAT_BGR8, 2, 1, Bytes{1, 2, 3, 4, 5, 6});
  EXPECT_THAT(Converted(bgr.Handle(), KORVEL_PIXEL_FORMAT_RGB8), ElementsAre(3, 2, 1, 6, 5, 4));
  EXPECT_THAT(bgr.Content(), ElementsAre(3, 2, 1, 6, 5, 4));
  EXPECT_THAT(Converted(bgr.Handle(), KORVEL_PIXEL_FORMAT_RGB8), ElementsAre(1, 2, 3, 4, 5, 6));
}

TEST_F(ImageConverterApi, ConvertsSingleImages) {
  const LastError before = MarkLastError();
  const ExportedImage input(KORVEL_PIXEL_FORMAT_Mono8, 2, 1, Bytes{1, 255});
  for (const uint32_t mode : {0u, 1u, 2u, 3u, 99u}) {
    KORVEL_IMAGE_HANDLE handle = nullptr;
    ASSERT_EQ(KORVEL_Image_ConvertTo(input.Handle(), KORVEL_PIXEL_FORMAT_Mono10, mode, &handle), 0u);
    EXPECT_THAT(ExportedImage(handle).Content(), ElementsAre(4, 0, 0xFC, 3));
  }
  EXPECT_EQ(ReadLastError(), before);
  KORVEL_IMAGE_HANDLE handle = kNoHandle;
  EXPECT_EQ(KORVEL_Image_ConvertTo(input.Handle(), kUnknownId, 1, &handle), 1u);
  EXPECT_THAT(ReadLastError().text, EndsWith("Unknown formatId: 77"));
  EXPECT_EQ(handle, kNoHandle);
}

TEST_F(ImageConverterApi, TellsWhyAConversionFails) {
  const auto failure = [&](uint32_t from, uint32_t to) {
    const ExportedImage input(from, 4, 4);
    KORVEL_IMAGE_HANDLE output = kNoHandle;
    EXPECT_EQ(KORVEL_ImageConverter_Convert(converter.Handle(), input.Handle(), to, &output), 1u);
    EXPECT_EQ(output, kNoHandle);
    return ReadLastError().text;
  };
  EXPECT_EQ(failure(KORVEL_PIXEL_FORMAT_RGBa8, KORVEL_PIXEL_FORMAT_BGRa8),
            "error: type=NotImplementedUtilx[-1003], module_id=9003, txt=Conversion from RGBa8 to BGRa8 not "
            "implemented.");
  EXPECT_EQ(failure(KORVEL_PIXEL_FORMAT_Mono8, KORVEL_PIXEL_FORMAT_RGB10p32),
            "error: type=Error[1], module_id=9003, txt=ImageConverter: No extension converter for conversion from "
            "17825795 to 35651613");
  EXPECT_EQ(failure(KORVEL_PIXEL_FORMAT_BGR10, KORVEL_PIXEL_FORMAT_BGR10p32),
            "error: type=Error[1], module_id=9003, txt=ImageConverter: packed output not supported!");
  EXPECT_EQ(failure(KORVEL_PIXEL_FORMAT_Mono8, kUnknownId),
            "error: type=InvalidParameterUtilx[-1009], module_id=9000, txt=Unknown formatId: 77");
  EXPECT_NE(failure(KORVEL_PIXEL_FORMAT_Mono8, 0xFFFF0108), "");
  EXPECT_NE(failure(KORVEL_PIXEL_FORMAT_RGBa8, 0xFFFF0408), "");
  EXPECT_NE(failure(KORVEL_PIXEL_FORMAT_Mono8, KORVEL_PIXEL_FORMAT_Invalid), "");
  EXPECT_NE(failure(KORVEL_PIXEL_FORMAT_Invalid, KORVEL_PIXEL_FORMAT_Mono10), "");
}

TEST_F(ImageConverterApi, WritesIntoTheCallersMemoryAndMakesAnImageOfIt) {
  const ExportedImage input(KORVEL_PIXEL_FORMAT_Mono8, 2, 1, Bytes{1, 2});
  Bytes buffer(6, 0);
  KORVEL_IMAGE_HANDLE handle = nullptr;
  ASSERT_EQ(KORVEL_ImageConverter_ConvertToBuffer(converter.Handle(), input.Handle(), KORVEL_PIXEL_FORMAT_BGR8,
                                                  buffer.data(), 6, &handle),
            0u);
  {
    const ExportedImage output(handle);
    EXPECT_EQ(output.Data(), buffer.data());
    EXPECT_EQ(output.Format(), uint32_t{KORVEL_PIXEL_FORMAT_BGR8});
  }
  EXPECT_THAT(buffer, ElementsAre(1, 1, 1, 2, 2, 2)) << "the handle's end leaves the memory alone";
  Bytes other(6, 0);
  ASSERT_EQ(KORVEL_Image_ConvertToBuffer(input.Handle(), KORVEL_PIXEL_FORMAT_BGR8, other.data(), 6, 1, &handle), 0u);
  EXPECT_EQ(ExportedImage(handle).Data(), other.data());
  EXPECT_EQ(other, buffer);
}

TEST_F(ImageConverterApi, RefusesMemoryThatIsTooSmallBeforeThePairIsJudged) {
  const ExportedImage input(KORVEL_PIXEL_FORMAT_RGBa8, 4, 4);
  Bytes buffer(63, 7);
  ExpectFailure(input.Handle(), KORVEL_PIXEL_FORMAT_BGRa8, buffer, kTooSmall);
  ExpectFailure(input.Handle(), KORVEL_PIXEL_FORMAT_BGRa8, buffer, kTooSmall, 3);
  ExpectFailure(input.Handle(), kUnknownId, buffer,
                {1, "error: type=InvalidParameterUtilx[-1009], module_id=9000, txt=Unknown formatId: 77"});
  EXPECT_THAT(buffer, Each(7));
}

TEST_F(ImageConverterApi, RefusesOneByteTooManyWhereThereIsNoFastPath) {
  const ExportedImage input(KORVEL_PIXEL_FORMAT_Mono8, 2, 2);
  Bytes buffer(5, 7);
  ExpectFailure(input.Handle(), KORVEL_PIXEL_FORMAT_Mono8, buffer,
                {1,
                 "error: type=Error[1], module_id=9003, txt=ImageConverter: conversion failed with buffer size "
                 "mismatch! provided: 5, required : 4."});
  EXPECT_THAT(buffer, Each(7));
  // The classic kernel needs no special processor.
  const ExportedImage bayer(KORVEL_PIXEL_FORMAT_BayerRG8, 16, 16, Bytes(256, 9));
  Bytes picture(16 * 16 * 3 + 1, 7);
  KORVEL_IMAGE_HANDLE handle = nullptr;
  ASSERT_EQ(KORVEL_Image_ConvertToBuffer(bayer.Handle(), KORVEL_PIXEL_FORMAT_RGB8, picture.data(), picture.size(), 3,
                                         &handle),
            0u);
  EXPECT_EQ(ExportedImage(handle).ByteCount(), 768u);
  EXPECT_EQ(picture[767], 9);
  EXPECT_EQ(picture[768], 7);
}

TEST_F(ImageConverterApi, SwapsTheInputsChannelsEvenIfTheMemoryThenDoesNotFit) {
  const ExportedImage input(KORVEL_PIXEL_FORMAT_RGB8, 1, 1, Bytes{1, 2, 3});
  Bytes buffer(4, 7);
  KORVEL_IMAGE_HANDLE handle = nullptr;
  EXPECT_EQ(KORVEL_Image_ConvertToBuffer(input.Handle(), KORVEL_PIXEL_FORMAT_BGR8, buffer.data(), 4, 1, &handle), 1u);
  EXPECT_THAT(buffer, Each(7));
  EXPECT_THAT(Bytes(input.Data(), input.Data() + 3), ElementsAre(3, 2, 1));
}

TEST_F(ImageConverterApi, TakesTheFiltersWhereClassicDoesNotExist) {
  Bytes mosaic(20 * 16);
  for (size_t i = 0; i < mosaic.size(); ++i) mosaic[i] = static_cast<uint8_t>(i * i % 251);
  const ExportedImage bayer(KORVEL_PIXEL_FORMAT_BayerGB8, 20, 16, mosaic);
  KORVEL_IMAGE_HANDLE classic = nullptr;
  KORVEL_IMAGE_HANDLE filtered = nullptr;
  ASSERT_EQ(KORVEL_Image_ConvertTo(bayer.Handle(), KORVEL_PIXEL_FORMAT_RGB8, 3, &classic), 0u);
  ASSERT_EQ(KORVEL_Image_ConvertTo(bayer.Handle(), KORVEL_PIXEL_FORMAT_RGB8, 2, &filtered), 0u);
  const ExportedImage first(classic);
  const ExportedImage second(filtered);
  EXPECT_EQ(Bytes(first.Data(), first.Data() + first.ByteCount()),
            Bytes(second.Data(), second.Data() + second.ByteCount()));
}

TEST_F(ImageConverterApi, RefusesOtherFormatsInClassicModeIntoMemory) {
  Bytes buffer(16 * 16 * 8, 7);
  const ExportedImage otherPhase(KORVEL_PIXEL_FORMAT_BayerGB8, 16, 16);
  const ExportedImage bayer(KORVEL_PIXEL_FORMAT_BayerRG8, 16, 16);
  ExpectFailure(otherPhase.Handle(), KORVEL_PIXEL_FORMAT_BGRa8, buffer,
                {1,
                 "error: type=Error[1], module_id=9003, txt=ImageConverter: the input pixel format does not support "
                 "the classic conversion mode."},
                3);
  ExpectFailure(bayer.Handle(), KORVEL_PIXEL_FORMAT_Mono8, buffer,
                {1,
                 "error: type=Error[1], module_id=9003, txt=ImageConverter: the output pixel format does not "
                 "support the classic conversion mode."},
                3);
  ExpectFailure(bayer.Handle(), KORVEL_PIXEL_FORMAT_BayerRG8, buffer,
                {1,
                 "error: type=Error[1], module_id=9003, txt=ImageConverter: the output pixel format does not "
                 "support the classic conversion mode."},
                3);
  EXPECT_THAT(buffer, Each(7));
}

TEST_F(ImageConverterApi, RefusesAResultWhoseBytesWrap) {
  // That the memory is as large as the caller says is trusted; nothing of it is touched here.
  uint8_t byte = 7;
  KORVEL_IMAGE_HANDLE handle = nullptr;
  ASSERT_EQ(KORVEL_Image_ConstructFromBuffer(KORVEL_PIXEL_FORMAT_Mono8, &byte, kMax, size_t{1} << 62, 1, &handle), 0u);
  const ExportedImage huge(handle);
  KORVEL_IMAGE_HANDLE output = kNoHandle;
  EXPECT_EQ(KORVEL_Image_ConvertToBuffer(handle, KORVEL_PIXEL_FORMAT_BGRa8, &byte, 1, 1, &output), 1u);
  EXPECT_NE(ReadLastError().text, "");
  EXPECT_EQ(
      KORVEL_ImageConverter_ConvertToBuffer(converter.Handle(), handle, KORVEL_PIXEL_FORMAT_BGRa8, &byte, 1, &output),
      1u);
  EXPECT_EQ(KORVEL_Image_ConvertTo(handle, KORVEL_PIXEL_FORMAT_BGRa8, 1, &output), 1u);
  EXPECT_NE(ReadLastError().text, "");
  EXPECT_EQ(KORVEL_Image_Clone(handle, &output), 1u);
  EXPECT_EQ(output, kNoHandle);
  EXPECT_EQ(byte, 7);
}

TEST_F(ImageConverterApi, StaysWithinMemoryAtAnyAddress) {
  struct Pair {
    uint32_t from;
    uint32_t to;
  };
  const Pair pairs[] = {
      {KORVEL_PIXEL_FORMAT_BayerRG8, KORVEL_PIXEL_FORMAT_RGB8},
      {KORVEL_PIXEL_FORMAT_BayerGR8, KORVEL_PIXEL_FORMAT_BGRa8},
      {KORVEL_PIXEL_FORMAT_BayerRG10, KORVEL_PIXEL_FORMAT_RGB10p32},
      {KORVEL_PIXEL_FORMAT_BayerGB12, KORVEL_PIXEL_FORMAT_BGR12},
      {KORVEL_PIXEL_FORMAT_BayerRG12p, KORVEL_PIXEL_FORMAT_Mono12},
      {KORVEL_PIXEL_FORMAT_Mono10g40Qrv, KORVEL_PIXEL_FORMAT_RGBa10},
      {KORVEL_PIXEL_FORMAT_Mono12g24Qrv, KORVEL_PIXEL_FORMAT_Mono8},
      {KORVEL_PIXEL_FORMAT_Mono12, KORVEL_PIXEL_FORMAT_BGRa12},
      {KORVEL_PIXEL_FORMAT_RGB10p32, KORVEL_PIXEL_FORMAT_BGR8},
      {KORVEL_PIXEL_FORMAT_RGB12, KORVEL_PIXEL_FORMAT_BGR12},
      {KORVEL_PIXEL_FORMAT_RGBa10, KORVEL_PIXEL_FORMAT_RGBa12},
      {KORVEL_PIXEL_FORMAT_BayerBG8, KORVEL_PIXEL_FORMAT_BayerBG8},
  };
  for (const auto& [from, to] : pairs) {
    for (const auto& [width, height] : {std::pair<size_t, size_t>{16, 16}, {18, 20}, {33, 17}, {5, 3}, {1, 1}}) {
      for (const uint32_t mode : {1u, 2u}) {
        size_t inputSize = 0;
        size_t outputSize = 0;
        ASSERT_EQ(KORVEL_PixelFormat_CalculateStorageSizeOfPixels(from, width * height, &inputSize), 0u);
        ASSERT_EQ(KORVEL_PixelFormat_CalculateStorageSizeOfPixels(to, width * height, &outputSize), 0u);
        for (const size_t unused : {size_t{0}, size_t{1}}) {  // bytes between the image and the page's end
          const CallersMemory in(inputSize + unused);
          const CallersMemory out(outputSize + unused);
          KORVEL_IMAGE_HANDLE input = nullptr;
          KORVEL_IMAGE_HANDLE output = nullptr;
          ASSERT_EQ(KORVEL_Image_ConstructFromBuffer(from, in.Data(), inputSize, width, height, &input), 0u);
          ASSERT_EQ(KORVEL_Image_ConvertToBuffer(input, to, out.Data(), outputSize, mode, &output), 0u);
          EXPECT_EQ(KORVEL_Image_Destruct(output), 0u);
          EXPECT_EQ(KORVEL_Image_Destruct(input), 0u);
        }
      }
    }
  }
}

TEST(ImageConverterApiThreads, ServeConvertersOfTheirOwn) {
  const auto work = [](uint8_t value) {
    const ExportedConverter converter;
    for (int i = 0; i < 200; ++i) {
      const ExportedImage input(KORVEL_PIXEL_FORMAT_BayerRG8, 16, 16, Bytes(256, value));
      KORVEL_IMAGE_HANDLE handle = nullptr;
      ASSERT_EQ(
          KORVEL_ImageConverter_Convert(converter.Handle(), input.Handle(),
                                        i % 2 == 0 ? KORVEL_PIXEL_FORMAT_RGB8 : KORVEL_PIXEL_FORMAT_Mono10, &handle),
          0u);
      const ExportedImage output(handle);
      ASSERT_EQ(output.Data()[0], i % 2 == 0 ? value : static_cast<uint8_t>(value << 2));
    }
  };
  std::thread first(work, 10);
  std::thread second(work, 33);
  first.join();
  second.join();
}

TEST(ImageConverterApiThreads, KeepAConverterThatAnotherDestroys) {
  for (int round = 0; round < 20; ++round) {
    KORVEL_IMAGE_CONVERTER_HANDLE converter = nullptr;
    ASSERT_EQ(KORVEL_ImageConverter_Construct(&converter), 0u);
    std::thread destroyer([converter] { EXPECT_EQ(KORVEL_ImageConverter_Destruct(converter), 0u); });
    const ExportedImage input(KORVEL_PIXEL_FORMAT_BayerRG8, 64, 64);
    for (int i = 0; i < 10; ++i) {
      KORVEL_IMAGE_HANDLE handle = nullptr;
      const auto code = KORVEL_ImageConverter_Convert(converter, input.Handle(), KORVEL_PIXEL_FORMAT_RGB8, &handle);
      ASSERT_TRUE(code == 0 || code == 2) << code;
      if (code == 0) {
        EXPECT_EQ(KORVEL_Image_Destruct(handle), 0u);
      }
    }
    destroyer.join();
  }
}

}  // namespace
