#include "processing/conversion/image_converter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <new>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "buffers/fixed_format_vector_buffer_pool.h"
#include "buffers/multi_format_buffer_pool.h"
#include "buffers/vector_image_buffer.h"
#include "core/memory_limit.h"
#include "tests/support/raw_formats.h"
#include "tests/support/test_images.h"

namespace {

using img::IfcImage;
using img::PixelFormatId;
using img::ProcessorFeatures;
using img::Size2D;
using img::processing::ImageConverter;
using korvel_test::Bytes;
using korvel_test::BytesOf;
using korvel_test::Failure;
using korvel_test::FailureOf;
using korvel_test::kUnwritten;
using korvel_test::TestImage;
using korvel_test::Words;
using testing::Each;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

using enum PixelFormatId;

constexpr size_t kMax = std::numeric_limits<size_t>::max();

ProcessorFeatures NoFeatures() { return {}; }
ProcessorFeatures WithAvx() {
  ProcessorFeatures features;
  features.avx = 1;
  return features;
}

// Takes note of what it is asked for. Its memory is new each time and filled with kUnwritten.
class RecordingPool final : public img::buffer::IfcMultiFormatBufferPool {
 public:
  using Reservation = std::tuple<PixelFormatId, size_t, size_t, size_t>;

  std::shared_ptr<img::buffer::IfcImageBuffer> AllocBuffer(PixelFormatId format, const Size2D& size) override {
    allocated.push_back(format);
    auto buffer = img::buffer::VectorImageBuffer::AllocBuffer(format, size);
    if (buffer->ByteCount() != 0) std::memset(buffer->Data(), kUnwritten, buffer->ByteCount());
    made.push_back(buffer);
    return buffer;
  }
  void Reset() override {}
  void WaitUntilAllFree() override {}
  size_t NumBuffers() const override { return 0; }
  size_t NumBuffersInUse() const override {
    size_t inUse = 0;
    for (const auto& buffer : made) inUse += !buffer.expired();
    return inUse;
  }
  size_t TotalByteCount() const override { return 0; }
  size_t PreAllocate(PixelFormatId format, const Size2D& size, size_t numBuffers) override {
    img::ByteCountToAllocate(format, size);  // a pool fails for what it can't have
    reserved.emplace_back(format, size.width, size.height, numBuffers);
    return numBuffers;
  }

  std::vector<PixelFormatId> allocated;
  std::vector<std::weak_ptr<img::buffer::IfcImageBuffer>> made;
  std::vector<Reservation> reserved;
};

class ImageConverterTest : public testing::Test {
 protected:
  std::vector<PixelFormatId> StagesOf(PixelFormatId from, PixelFormatId to, size_t width = 20, size_t height = 18) {
    pool->allocated.clear();
    const TestImage input(from, width, height);
    // With vectors one pass may do what several stages do.
    ImageConverter(pool, NoFeatures()).ConvertPixelFormat(input.Shared(), to);
    return pool->allocated;
  }

  std::optional<Failure> FailureOfPair(PixelFormatId from, PixelFormatId to, size_t width = 4, size_t height = 4) {
    const TestImage input(from, width, height);
    auto failure = FailureOf([&] { converter.ConvertPixelFormat(input.Shared(), to); });
    EXPECT_EQ(pool->NumBuffersInUse(), 0u) << "intermediates are released";
    return failure;
  }

  std::shared_ptr<RecordingPool> pool = std::make_shared<RecordingPool>();
  ImageConverter converter{pool, WithAvx()};
};

// ------------------------------------------------------------------------------------------------------- the chain --

TEST_F(ImageConverterTest, CopiesAnImageOfTheTargetsFormat) {
  const TestImage input(BayerRG12p, 3, 1, Bytes{1, 2, 3, 4, 0xF5});
  const auto output = converter.ConvertPixelFormat(input.Shared(), BayerRG12p);
  EXPECT_NE(output, input.Shared());
  EXPECT_NE((*output).PixelPointer(0, 0), (*input).PixelPointer(0, 0));
  EXPECT_THAT(BytesOf(*output), ElementsAre(1, 2, 3, 4, 0xF5));
  EXPECT_THAT(pool->allocated, ElementsAre(BayerRG12p));
}

TEST_F(ImageConverterTest, CopiesEveryFormatInEveryModeOfTheImageForm) {
  for (const uint32_t mode : {1u, 2u, 3u, 7u}) {
    converter.SetConversionMode(mode);
    for (const PixelFormatId format : korvel_test::kPublicFormats) {
      Bytes bytes(img::PixelFormatInfo_CalcSizeOfPixels(format, 35));
      for (size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<uint8_t>(i * 37 + 1);
      const TestImage input(format, 7, 5, bytes);
      EXPECT_EQ(BytesOf(*converter.ConvertPixelFormat(input.Shared(), format)), bytes);
    }
  }
}

TEST_F(ImageConverterTest, CopiesAnImageWithoutData) {
  const TestImage input(Invalid, 0, 0);
  const auto output = converter.ConvertPixelFormat(input.Shared(), Invalid);
  EXPECT_EQ(output->PixelFormat(), Invalid);
  EXPECT_EQ(output->ByteCount(), 0u);
}

TEST_F(ImageConverterTest, WalksItsStagesInOrder) {
  EXPECT_THAT(StagesOf(BayerRG12, BGRa8, 640, 480), ElementsAre(BayerRG8, BGRa8));
  EXPECT_THAT(StagesOf(BayerRG12p, BGRa8), ElementsAre(BayerRG12, BayerRG8, BGRa8));
  EXPECT_THAT(StagesOf(BayerGB8, RGB12), ElementsAre(BayerGB12, RGB12));
  EXPECT_THAT(StagesOf(BayerGB8, RGB10p32), ElementsAre(BayerGB10, RGB10p32));
  EXPECT_THAT(StagesOf(BayerGB12g24Qrv, RGB10p32), ElementsAre(BayerGB12, BayerGB10, RGB10p32));
  EXPECT_THAT(StagesOf(BayerBG10g40Qrv, Mono8), ElementsAre(BayerBG10, BayerBG8, Mono8));
  EXPECT_THAT(StagesOf(BayerRG12, BayerRG10), ElementsAre(BayerRG10));
  EXPECT_THAT(StagesOf(Mono12p, Mono12), ElementsAre(Mono12));
  EXPECT_THAT(StagesOf(Mono8, RGBa12), ElementsAre(Mono12, RGBa12));
  EXPECT_THAT(StagesOf(Mono10, BGR10), ElementsAre(BGR10));
  EXPECT_THAT(StagesOf(RGB8, BGR8), ElementsAre(BGR8));
  EXPECT_THAT(StagesOf(BGR12, RGB8), ElementsAre(BGR8, RGB8));
  EXPECT_THAT(StagesOf(RGB10p32, BGR8), ElementsAre(RGB10, RGB8, BGR8));
  EXPECT_THAT(StagesOf(BGR10p32, BGR12), ElementsAre(BGR10, BGR12));
  EXPECT_THAT(StagesOf(BGRa8, BGRa10), ElementsAre(BGRa10));
}

TEST_F(ImageConverterTest, ReleasesIntermediates) {
  const TestImage input(BayerRG12p, 20, 18);
  const auto output = converter.ConvertPixelFormat(input.Shared(), BGRa8);
  EXPECT_EQ(pool->made.size(), 3u);
  EXPECT_EQ(pool->NumBuffersInUse(), 1u);
  EXPECT_EQ(output->Area().size, (Size2D{20, 18}));
}

TEST_F(ImageConverterTest, ExtendsWithAnAlphaOf255AfterTheDepth) {
  const TestImage input(Mono8, 2, 1, Bytes{1, 255});
  EXPECT_THAT(korvel_test::WordsOfBytes<uint16_t>(BytesOf(*converter.ConvertPixelFormat(input.Shared(), RGBa12))),
              ElementsAre(16, 16, 16, 255, 4080, 4080, 4080, 255));
}

TEST_F(ImageConverterTest, ChangesTheInputWhereTheFlipComesFirst) {
  const TestImage bgr(BGR8, 2, 1, Bytes{1, 2, 3, 4, 5, 6});
  const auto rgb = converter.ConvertPixelFormat(bgr.Shared(), RGB8);
  EXPECT_THAT(BytesOf(*rgb), ElementsAre(3, 2, 1, 6, 5, 4));
  EXPECT_THAT(bgr.Content(), ElementsAre(3, 2, 1, 6, 5, 4));
  EXPECT_THAT(BytesOf(*converter.ConvertPixelFormat(bgr.Shared(), RGB8)), ElementsAre(1, 2, 3, 4, 5, 6));
  const TestImage deep(BGR10, 1, 1, Words{4, 8, 12});
  EXPECT_THAT(BytesOf(*converter.ConvertPixelFormat(deep.Shared(), RGB8)), ElementsAre(3, 2, 1));
  EXPECT_THAT(deep.ContentWords(), ElementsAre(4, 8, 12)) << "a flip of an intermediate leaves the input alone";
}

// ----------------------------------------------------------------------------------------------------------- modes --

// BayerRG8 of zeros with a red sample at (2, 2) and a blue one in the last corner.
Bytes TwoSamples(size_t side) {
  Bytes samples(side * side, 0);
  samples[2 * side + 2] = 255;
  samples[side * side - 1] = 100;
  return samples;
}

Bytes PixelAt(const IfcImage& image, size_t x, size_t y) {
  const uint8_t* const first = image.PixelPointer(x, y);
  return Bytes(first, first + image.PixelByteCount());
}

TEST_F(ImageConverterTest, StartsInTheFastMode) { EXPECT_EQ(converter.GetConversionMode(), 1u); }

TEST_F(ImageConverterTest, TakesAnyNumberAsAMode) {
  for (const uint32_t mode : {0u, 2u, 7u, 0xFFFFFFFFu, 1u}) {
    converter.SetConversionMode(mode);
    EXPECT_EQ(converter.GetConversionMode(), mode);
  }
}

TEST_F(ImageConverterTest, TakesTheFastPathFromSixteenPixelsOn) {
  const auto corner = [&](size_t side) {
    const TestImage input(BayerRG8, side, side, TwoSamples(side));
    const auto output = converter.ConvertPixelFormat(input.Shared(), RGB8);
    return PixelAt(*output, side - 1, side - 1);
  };
  EXPECT_EQ(corner(16), (Bytes{0, 0, 100})) << "computed";
  EXPECT_EQ(corner(14), (Bytes{0, 0, 25})) << "a copy of the pixel beside";
  // 15 by 15: (14, 14) is red, and its copy comes from the blue (13, 13), of which it is one of four neighbours.
  EXPECT_EQ(corner(15), (Bytes{25, 0, 0}));
  // 16 by 16 without a processor for the fast path.
  const ImageConverter plain(pool, NoFeatures());
  const TestImage input(BayerRG8, 16, 16, TwoSamples(16));
  EXPECT_EQ(PixelAt(*plain.ConvertPixelFormat(input.Shared(), RGB8), 15, 15), (Bytes{0, 0, 25}));
}

TEST_F(ImageConverterTest, HasTheLargeWindowInEveryOtherMode) {
  const TestImage input(BayerRG8, 16, 16, TwoSamples(16));
  for (const uint32_t mode : {0u, 2u, 4u, 7u, 0xFFFFFFFFu}) {
    converter.SetConversionMode(mode);
    const auto output = converter.ConvertPixelFormat(input.Shared(), RGB8);
    EXPECT_EQ(PixelAt(*output, 2, 2), (Bytes{255, 127, 191}));
    EXPECT_EQ(PixelAt(*output, 15, 15), (Bytes{0, 0, 25}));
  }
}

TEST_F(ImageConverterTest, FallsBackFromClassicInTheImageForm) {
  converter.SetConversionMode(3);
  const TestImage classic(BayerRG8, 16, 16, TwoSamples(16));
  EXPECT_EQ(PixelAt(*converter.ConvertPixelFormat(classic.Shared(), RGB8), 2, 2), (Bytes{143, 0, 0}));  // 9 * 255 / 16
  // Another phase, and a smaller image, take the large window, without a shift.
  const TestImage otherPhase(BayerBG8, 16, 16, TwoSamples(16));
  EXPECT_EQ(PixelAt(*converter.ConvertPixelFormat(otherPhase.Shared(), BGR8), 2, 2), (Bytes{255, 127, 191}));
  const TestImage small(BayerRG8, 15, 15, TwoSamples(15));
  EXPECT_EQ(PixelAt(*converter.ConvertPixelFormat(small.Shared(), RGB8), 2, 2), (Bytes{255, 127, 191}));
  // To Mono8 there is no kernel, and the module weighs (2, 2) with 293 of 999 on (1, 1) to (2, 2).
  const auto mono = converter.ConvertPixelFormat(classic.Shared(), Mono8);
  EXPECT_EQ(PixelAt(*mono, 1, 1), (Bytes{74}));  // 255 * 293 / 999
}

TEST_F(ImageConverterTest, HasModulesByModeAndTarget) {
  const auto bayer = [&](PixelFormatId in, PixelFormatId out) { return &converter.GetBayerConverter(in, out); };
  for (const auto& [target, fast] :
       {std::pair{RGB8, true}, {BGR10, true}, {RGBa12, true}, {BGRa8, true}, {RGB10p32, true}, {Mono8, false}}) {
    converter.SetConversionMode(1);
    const auto* const inFast = bayer(BayerRG8, target);
    EXPECT_EQ(bayer(BayerGB12, target), inFast);
    converter.SetConversionMode(2);
    EXPECT_EQ(bayer(BayerRG8, target) != inFast, fast);
    const auto* const other = bayer(BayerRG8, target);
    for (const uint32_t mode : {0u, 3u, 9u}) {
      converter.SetConversionMode(mode);
      EXPECT_EQ(bayer(BayerRG8, target), other);
    }
  }
  EXPECT_NE(&converter.GetExtensionConverter(Mono8, RGB8), &converter.GetExtensionConverter(Mono8, BGR8));
  EXPECT_NE(&converter.GetExtensionConverter(Mono8, RGBa8), &converter.GetExtensionConverter(Mono8, BGRa8));
}

// -------------------------------------------------------------------------------------------------------- failures --

TEST_F(ImageConverterTest, HasNoBayerModuleForOtherPairs) {
  EXPECT_EQ(FailureOf([&] { converter.GetBayerConverter(BayerRG10, BGR10p32); }),
            (Failure{1, 9003, "ImageConverter: No bayer converter for conversion from 17825805 to 35651614"}));
  EXPECT_EQ(FailureOf([&] { converter.GetBayerConverter(Mono8, RGB8); }),
            (Failure{1, 9003, "ImageConverter: No bayer converter for conversion from 17301505 to 35127316"}));
  EXPECT_EQ(FailureOf([&] { converter.GetBayerConverter(BayerRG8, Invalid); }),
            (Failure{1, 9003, "ImageConverter: No bayer converter for conversion from 17301513 to 0"}));
}

TEST_F(ImageConverterTest, HasNoExtensionForOtherPairs) {
  EXPECT_EQ(FailureOf([&] { converter.GetExtensionConverter(Mono10p, RGB10); }),
            (Failure{1, 9003, "ImageConverter: No extension converter for conversion from 17432646 to 36700184"}));
  EXPECT_EQ(FailureOf([&] { converter.GetExtensionConverter(RGB8, BGR8); }),
            (Failure{1, 9003, "ImageConverter: No extension converter for conversion from 35127316 to 35127317"}));
  // The depth stage comes first, so the text names Mono10.
  EXPECT_EQ(FailureOfPair(Mono8, RGB10p32),
            (Failure{1, 9003, "ImageConverter: No extension converter for conversion from 17825795 to 35651613"}));
  EXPECT_EQ(FailureOfPair(Mono8, BayerRG8),
            (Failure{1, 9003, "ImageConverter: No extension converter for conversion from 17301505 to 17301513"}));
}

TEST_F(ImageConverterTest, RefusesPackedTargets) {
  const Failure refused{1, 9003, "ImageConverter: packed output not supported!"};
  EXPECT_EQ(FailureOfPair(BGR10, BGR10p32), refused);
  EXPECT_EQ(FailureOfPair(Mono10, Mono10p), refused);
  EXPECT_EQ(FailureOfPair(BayerRG12, BayerRG12g24Qrv), refused);
  EXPECT_EQ(FailureOfPair(RGB10p32, BGR10p32), refused);
  EXPECT_EQ(FailureOfPair(Mono8, _RawPacked10p32), refused);
  EXPECT_THAT(pool->allocated, IsEmpty());
}

TEST_F(ImageConverterTest, RefusesToSwapFourChannels) {
  EXPECT_EQ(FailureOfPair(RGBa8, BGRa8), (Failure{-1003, 9003, "Conversion from RGBa8 to BGRa8 not implemented."}));
  EXPECT_EQ(FailureOfPair(BGRa12, RGBa12), (Failure{-1003, 9003, "Conversion from BGRa12 to RGBa12 not implemented."}));
  // The depth stage has made RGBa10 of it.
  EXPECT_EQ(FailureOfPair(RGBa8, BGRa10), (Failure{-1003, 9003, "Conversion from RGBa10 to BGRa10 not implemented."}));
}

TEST_F(ImageConverterTest, FailsAtTheEndOfAChainThatLeadsElsewhere) {
  EXPECT_EQ(FailureOfPair(BayerRG8, BayerGB8),
            (Failure{1, 9003,
                     "ImageConverter: conversion failed with pixel format mismatch! desired: 108000a, result: "
                     "1080009."}));
  EXPECT_EQ(FailureOfPair(RGB8, RGBa8),
            (Failure{1, 9003,
                     "ImageConverter: conversion failed with pixel format mismatch! desired: 2200016, result: "
                     "2180014."}));
  EXPECT_EQ(FailureOfPair(RGB8, Mono8),
            (Failure{1, 9003,
                     "ImageConverter: conversion failed with pixel format mismatch! desired: 1080001, result: "
                     "2180014."}));
  EXPECT_EQ(FailureOfPair(RGB12, RGBa8),
            (Failure{1, 9003,
                     "ImageConverter: conversion failed with pixel format mismatch! desired: 2200016, result: "
                     "2180014."}));
  EXPECT_EQ(FailureOfPair(RGB10, RGB10p32),
            (Failure{1, 9003,
                     "ImageConverter: conversion failed with pixel format mismatch! desired: 220001d, result: "
                     "2300018."}));
}

TEST_F(ImageConverterTest, RefusesAnUnknownTarget) {
  EXPECT_EQ(FailureOfPair(Mono8, PixelFormatId{77}), (Failure{-1009, 9000, "Unknown formatId: 77"}));
  EXPECT_EQ(
      FailureOfPair(RGB8, Invalid),
      (Failure{1, 9003, "ImageConverter: conversion failed with pixel format mismatch! desired: 0, result: 2180014."}));
}

TEST_F(ImageConverterTest, RefusesAStageWhoseModuleDoesNotTakeTheFormat) {
  const TestImage input(Mono10p, 4, 1);
  img::processing::ConvertPixelDepth depth;
  EXPECT_EQ(FailureOf([&] {
              converter.Convert(input.Shared(), depth, {{{}, {4, 1}}, Mono8});
            }),
            (Failure{-1014, 9003, "img::ImageConverter: invalid conversion"}));
  EXPECT_THAT(pool->allocated, IsEmpty());
}

// ----------------------------------------------------------------------------------------------------- buffer form --

TEST_F(ImageConverterTest, WritesIntoMemoryWithoutAnIntermediateOnTheFastPath) {
  const TestImage input(BayerRG8, 16, 16, Bytes(256, 9));
  Bytes buffer(16 * 16 * 3 + 1, kUnwritten);
  converter.ConvertPixelFormat(input.Shared(), RGB8, buffer.data(), buffer.size());
  EXPECT_THAT(pool->allocated, IsEmpty());
  EXPECT_EQ(buffer.front(), 9);
  EXPECT_EQ(buffer[767], 9);
  EXPECT_EQ(buffer[768], kUnwritten);
}

TEST_F(ImageConverterTest, RefusesALargerBufferElsewhere) {
  const TestImage input(Mono8, 2, 2, Bytes{1, 2, 3, 4});
  Bytes buffer(9, kUnwritten);
  EXPECT_EQ(
      FailureOf([&] { converter.ConvertPixelFormat(input.Shared(), Mono10, buffer.data(), 9); }),
      (Failure{1, 9003, "ImageConverter: conversion failed with buffer size mismatch! provided: 9, required : 8."}));
  EXPECT_THAT(buffer, Each(kUnwritten));
  converter.ConvertPixelFormat(input.Shared(), Mono10, buffer.data(), 8);
  EXPECT_THAT(buffer, ElementsAre(4, 0, 8, 0, 12, 0, 16, 0, kUnwritten));
}

TEST_F(ImageConverterTest, FlipsTheInputEvenIfTheBufferIsRefused) {
  const TestImage input(RGB8, 1, 1, Bytes{1, 2, 3});
  Bytes buffer(4, kUnwritten);
  EXPECT_TRUE(FailureOf([&] { converter.ConvertPixelFormat(input.Shared(), BGR8, buffer.data(), 4); }).has_value());
  EXPECT_THAT(input.Content(), ElementsAre(3, 2, 1));
}

TEST_F(ImageConverterTest, RefusesOtherFormatsInTheBufferFormOfClassic) {
  converter.SetConversionMode(3);
  Bytes buffer(4096);
  const auto failure = [&](PixelFormatId from, PixelFormatId to) {
    const TestImage input(from, 16, 16);
    return FailureOf([&] {
      converter.ConvertPixelFormat(input.Shared(), to, buffer.data(), img::PixelFormatInfo_CalcSizeOfPixels(to, 256));
    });
  };
  const Failure badInput{1, 9003,
                         "ImageConverter: the input pixel format does not support the classic conversion mode."};
  const Failure badOutput{1, 9003,
                          "ImageConverter: the output pixel format does not support the classic conversion mode."};
  EXPECT_EQ(failure(BayerGB8, RGB8), badInput);
  EXPECT_EQ(failure(BayerRG12, RGB8), badInput);
  EXPECT_EQ(failure(Mono8, Mono8), badInput);
  EXPECT_EQ(failure(Mono8, Mono10p), badInput);
  EXPECT_EQ(failure(BayerRG8, Mono8), badOutput);
  EXPECT_EQ(failure(BayerRG8, BayerRG8), badOutput) << "even copies";
  EXPECT_EQ(failure(BayerGR8, RGB10), badOutput);
  EXPECT_THAT(pool->allocated, IsEmpty());
  EXPECT_EQ(failure(BayerGR8, RGBa8), std::nullopt);
  EXPECT_THAT(pool->allocated, IsEmpty());
  // A small image goes to the large window without a message.
  const TestImage small(BayerRG8, 15, 15, TwoSamples(15));
  converter.ConvertPixelFormat(small.Shared(), RGB8, buffer.data(), 15 * 15 * 3);
  EXPECT_EQ(buffer[(2 * 15 + 2) * 3 + 1], 127);
}

// ------------------------------------------------------------------------------------------- supported output formats
// --

TEST_F(ImageConverterTest, ListsTheFormatsThatAFormatConvertsTo) {
  using List = std::vector<PixelFormatId>;
  const List mono = {Mono8,  BGR8,   RGB8,   BGRa8, RGBa8, Mono10, BGR10, RGB10,
                     BGRa10, RGBa10, Mono12, BGR12, RGB12, BGRa12, RGBa12};
  const List rg = {BayerRG8, Mono8,  BGR8,      RGB8,   BGRa8, RGBa8, BayerRG10, Mono10, BGR10,   RGB10,
                   BGRa10,   RGBa10, BayerRG12, Mono12, BGR12, RGB12, BGRa12,    RGBa12, RGB10p32};
  const List gb = {BayerGB8, Mono8,  BGR8,      RGB8,   BGRa8, RGBa8, BayerGB10, Mono10, BGR10,   RGB10,
                   BGRa10,   RGBa10, BayerGB12, Mono12, BGR12, RGB12, BGRa12,    RGBa12, RGB10p32};
  const List gr = {BayerGR8, Mono8,  BGR8,      RGB8,   BGRa8, RGBa8, BayerGR10, Mono10, BGR10,   RGB10,
                   BGRa10,   RGBa10, BayerGR12, Mono12, BGR12, RGB12, BGRa12,    RGBa12, RGB10p32};
  const List bg = {BayerBG8, Mono8,  BGR8,      RGB8,   BGRa8, RGBa8, BayerBG10, Mono10, BGR10,   RGB10,
                   BGRa10,   RGBa10, BayerBG12, Mono12, BGR12, RGB12, BGRa12,    RGBa12, RGB10p32};
  const List rgb = {RGB8, BGR8, RGB10, BGR10, RGB12, BGR12};
  const List bgr = {BGR8, RGB8, BGR10, RGB10, BGR12, RGB12};
  const List rgba = {RGBa8, RGBa10, RGBa12};
  const List bgra = {BGRa8, BGRa10, BGRa12};
  const auto expectLists = [&](const List& expected, const List& members, const List& appended) {
    for (const PixelFormatId input : members) {
      EXPECT_EQ(converter.GetSupportedOutputPixelFormats(input), expected) << img::PixelFormatInfo_Name(input);
    }
    for (const PixelFormatId input : appended) {
      List list = expected;
      list.push_back(input);
      EXPECT_EQ(converter.GetSupportedOutputPixelFormats(input), list) << img::PixelFormatInfo_Name(input);
    }
  };
  for (const uint32_t mode : {1u, 3u, 9u}) {
    converter.SetConversionMode(mode);
    expectLists(mono, {Mono8, Mono10, Mono12}, {Mono10p, Mono12p, Mono10g40Qrv, Mono12g24Qrv});
    expectLists(rg, {BayerRG8, BayerRG10, BayerRG12}, {BayerRG10p, BayerRG12p, BayerRG10g40Qrv, BayerRG12g24Qrv});
    expectLists(gb, {BayerGB8, BayerGB10, BayerGB12}, {BayerGB10p, BayerGB12p, BayerGB10g40Qrv, BayerGB12g24Qrv});
    expectLists(gr, {BayerGR8, BayerGR10, BayerGR12}, {BayerGR10p, BayerGR12p, BayerGR10g40Qrv, BayerGR12g24Qrv});
    expectLists(bg, {BayerBG8, BayerBG10, BayerBG12}, {BayerBG10p, BayerBG12p, BayerBG10g40Qrv, BayerBG12g24Qrv});
    expectLists(rgb, {RGB8, RGB10, RGB12}, {RGB10p32});
    expectLists(bgr, {BGR8, BGR10, BGR12}, {BGR10p32});
    expectLists(rgba, {RGBa8, RGBa10, RGBa12}, {});
    expectLists(bgra, {BGRa8, BGRa10, BGRa12}, {});
    expectLists({}, {}, {Invalid, _RawUnpacked1Ch8});
  }
  EXPECT_EQ(FailureOf([&] { converter.GetSupportedOutputPixelFormats(PixelFormatId{77}); }),
            (Failure{-1009, 9000, "Unknown formatId: 77"}));
}

TEST_F(ImageConverterTest, ConvertsToWhatItLists) {
  for (const PixelFormatId input : korvel_test::kPublicFormats) {
    for (const PixelFormatId output : converter.GetSupportedOutputPixelFormats(input)) {
      EXPECT_EQ(FailureOfPair(input, output), std::nullopt)
          << img::PixelFormatInfo_Name(input) << " to " << img::PixelFormatInfo_Name(output);
    }
  }
}

// --------------------------------------------------------------------------------------------------- preallocation --

using Reservations = std::vector<RecordingPool::Reservation>;

TEST_F(ImageConverterTest, ReservesTheIntermediatesAndTheResults) {
  const auto reserved = [&](PixelFormatId from, PixelFormatId to) {
    pool->reserved.clear();
    converter.PreAllocateConversion(from, to, {8, 6}, 3);
    std::vector<std::pair<PixelFormatId, size_t>> list;
    for (const auto& [format, width, height, count] : pool->reserved) {
      EXPECT_EQ(width, 8u);
      EXPECT_EQ(height, 6u);
      list.emplace_back(format, count);
    }
    return list;
  };
  using P = std::pair<PixelFormatId, size_t>;
  EXPECT_THAT(reserved(BayerRG12p, BGRa8), ElementsAre(P{BayerRG12, 1}, P{BayerRG8, 1}, P{BGRa8, 1}, P{BGRa8, 3}));
  EXPECT_THAT(reserved(BayerRG8, BayerRG8), ElementsAre(P{BayerRG8, 3}));
  EXPECT_THAT(reserved(BayerRG12p, BayerRG12p), ElementsAre(P{BayerRG12p, 3}));
  EXPECT_THAT(reserved(Mono8, RGBa12), ElementsAre(P{Mono12, 1}, P{RGBa12, 1}, P{RGBa12, 3}));
  EXPECT_THAT(reserved(RGB8, BGR8), ElementsAre(P{RGB8, 3})) << "a flip isn't walked";
  EXPECT_THAT(reserved(RGB10p32, BGR8), ElementsAre(P{RGB10, 1}, P{RGB8, 1}, P{RGB8, 3}));
  EXPECT_THAT(reserved(BayerGB8, RGB10p32), ElementsAre(P{BayerGB10, 1}, P{RGB10p32, 1}, P{RGB10p32, 3}));
  EXPECT_THAT(reserved(Mono10p, Mono10), ElementsAre(P{Mono10, 1}, P{Mono10, 3}));
}

TEST_F(ImageConverterTest, JudgesIdsAndThePairBeforeTheSize) {
  const auto failure = [&](PixelFormatId from, PixelFormatId to, const Size2D& size, size_t count) {
    auto result = FailureOf([&] { converter.PreAllocateConversion(from, to, size, count); });
    EXPECT_THAT(pool->reserved, IsEmpty());
    pool->reserved.clear();
    return result;
  };
  EXPECT_EQ(failure(PixelFormatId{77}, Mono8, {0, 0}, 1), (Failure{-1009, 9000, "Unknown formatId: 77"}));
  EXPECT_EQ(failure(Mono8, PixelFormatId{78}, {0, 0}, 1), (Failure{-1009, 9000, "Unknown formatId: 78"}));
  EXPECT_EQ(failure(BayerRG8, BayerGB8, {0, 5}, 1),
            (Failure{1, 9003, "ImageConverter: No bayer converter for conversion from 17301513 to 17301514"}));
  EXPECT_EQ(failure(Mono8, RGB10p32, {5, 0}, 1),
            (Failure{1, 9003, "ImageConverter: No extension converter for conversion from 17825795 to 35651613"}));
  EXPECT_EQ(failure(Mono8, RGB8, {0, 5}, 1), (Failure{6, 9000, "Width must not be 0!"}));
  EXPECT_EQ(failure(Mono8, RGB8, {0, 0}, 1), (Failure{6, 9000, "Width must not be 0!"}));
  EXPECT_EQ(failure(Mono8, RGB8, {5, 0}, 0), (Failure{6, 9000, "Height must not be 0!"}));
}

TEST_F(ImageConverterTest, TakesNothingIfTheResultsExceedTheMemory) {
  const auto fails = [&](PixelFormatId from, PixelFormatId to, const Size2D& size, size_t count) {
    pool->reserved.clear();
    EXPECT_ANY_THROW(converter.PreAllocateConversion(from, to, size, count));
    EXPECT_THAT(pool->reserved, IsEmpty());
  };
  fails(BayerRG12p, BGRa8, {1920, 1080}, kMax);
  fails(BayerRG12p, BGRa8, {1920, 1080}, kMax / (1920 * 1080 * 4) + 1);
  fails(BayerRG12p, BGRa8, {1920, 1080}, img::LargestAllocation() / (1920 * 1080 * 4) + 1);
  fails(BayerRG12p, BGRa8, {size_t{1} << 32, size_t{1} << 32}, 1);
  fails(BayerRG12p, BGRa8, {size_t{1} << 62, 1}, 1);
  fails(BayerRG12p, BGRa8, {size_t{1} << 32, size_t{1} << 32}, 0);
  fails(Mono8, Mono8, {kMax, kMax}, 1);
}

TEST_F(ImageConverterTest, TakesNothingIfOneResultAloneExceedsTheMemory) {
  // The first intermediate fits and the result does not; a count of 0 makes no difference.
  const size_t pixels = img::LargestAllocation() / 8 + 1;
  EXPECT_ANY_THROW(converter.PreAllocateConversion(BayerRG8, RGBa12, {pixels, 1}, 0));
  EXPECT_THAT(pool->reserved, IsEmpty());
}

TEST_F(ImageConverterTest, RefusesACountWhoseBookkeepingAloneExceedsTheMemory) {
  // Each buffer takes far more than its one byte of pixels.
  EXPECT_ANY_THROW(converter.PreAllocateConversion(Mono8, Mono8, {1, 1}, img::LargestAllocation()));
  EXPECT_THAT(pool->reserved, IsEmpty());
}

TEST(ImageConverterWithPool, StaysUsableAfterACountOfZero) {
  const auto pool = std::make_shared<img::buffer::MultiFormatBufferPool>(
      std::make_shared<img::buffer::FixedFormatVectorBufferPool::Factory>(), 5);
  const ImageConverter converter(pool, NoFeatures());
  converter.PreAllocateConversion(Mono8, RGB8, {2, 1}, 0);
  const TestImage input(Mono8, 2, 1, Bytes{1, 2});
  EXPECT_THAT(BytesOf(*converter.ConvertPixelFormat(input.Shared(), RGB8)), ElementsAre(1, 1, 1, 2, 2, 2));
  const TestImage larger(Mono8, 3, 1, Bytes{1, 2, 3});
  EXPECT_THAT(BytesOf(*converter.ConvertPixelFormat(larger.Shared(), RGB8)), ElementsAre(1, 1, 1, 2, 2, 2, 3, 3, 3));
}

TEST(ImageConverterWithPool, TakesNoFurtherMemoryAfterPreallocation) {
  const auto pool = std::make_shared<img::buffer::MultiFormatBufferPool>(
      std::make_shared<img::buffer::FixedFormatVectorBufferPool::Factory>(), 5);
  const ImageConverter converter(pool, NoFeatures());
  converter.PreAllocateConversion(BayerRG12p, BGRa8, {20, 18}, 3);
  const size_t buffers = pool->NumBuffers();
  const size_t bytes = pool->TotalByteCount();
  EXPECT_EQ(bytes, 20u * 18 * (2 + 1 + 3 * 4));
  const TestImage input(BayerRG12p, 20, 18);
  std::vector<std::shared_ptr<IfcImage>> results;
  for (int i = 0; i < 3; ++i) results.push_back(converter.ConvertPixelFormat(input.Shared(), BGRa8));
  EXPECT_EQ(pool->NumBuffers(), buffers);
  EXPECT_EQ(pool->TotalByteCount(), bytes);
  EXPECT_EQ(pool->NumBuffersInUse(), 3u);
}

}  // namespace
