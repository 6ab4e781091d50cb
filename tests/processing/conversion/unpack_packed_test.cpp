#include "processing/conversion/unpack_packed.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/raw_formats.h"
#include "tests/support/test_images.h"

namespace {

using img::ImageFormat;
using img::PixelFormatId;
using korvel_test::Bytes;
using korvel_test::Failure;
using korvel_test::FailureOf;
using korvel_test::kUnwritten;
using korvel_test::MemoryBeforeGuard;
using korvel_test::TestImage;
using korvel_test::Words;
using testing::Each;
using testing::ElementsAre;
using testing::StartsWith;

using namespace img::processing;
using enum PixelFormatId;

constexpr uint16_t kUnwrittenWord = 0xCDCD;

using Stream = void (*)(const uint8_t* input, size_t count, uint8_t* output);

// What a stream function makes of bytes whose end is that of a page, in memory that holds exactly the words.
Words Unpack(Stream stream, const Bytes& bytes, size_t count, size_t words) {
  const MemoryBeforeGuard input(bytes);
  const MemoryBeforeGuard output(words * 2);
  stream(input.Data(), count, output.Data());
  return korvel_test::WordsOfBytes<uint16_t>(Bytes(output.Data(), output.Data() + words * 2));
}

Words UnpackAll(Stream stream, const Bytes& bytes, size_t words) { return Unpack(stream, bytes, bytes.size(), words); }

TEST(Unpack10p, TakesFourSamplesFromFiveBytes) {
  EXPECT_THAT(UnpackAll(Unpack10p, {0x01, 0x02, 0x03, 0x04, 0x05}, 4), ElementsAre(513, 192, 64, 20));
  EXPECT_THAT(UnpackAll(Unpack10p, {0xFF, 0xA5, 0x5A, 0xC3, 0x3C}, 4), ElementsAre(511, 681, 53, 243));
  EXPECT_THAT(UnpackAll(Unpack10p, {0xFF, 0xFF, 0xFF, 0xFF, 0xFF}, 4), Each(1023));
}

TEST(Unpack10p, KeepsEverySampleApart) {
  EXPECT_THAT(UnpackAll(Unpack10p, {0xFF, 0x03, 0, 0, 0}, 4), ElementsAre(1023, 0, 0, 0));
  EXPECT_THAT(UnpackAll(Unpack10p, {0, 0xFC, 0x0F, 0, 0}, 4), ElementsAre(0, 1023, 0, 0));
  EXPECT_THAT(UnpackAll(Unpack10p, {0, 0, 0xF0, 0x3F, 0}, 4), ElementsAre(0, 0, 1023, 0));
  EXPECT_THAT(UnpackAll(Unpack10p, {0, 0, 0, 0xC0, 0xFF}, 4), ElementsAre(0, 0, 0, 1023));
}

TEST(Unpack10p, TakesWhatIsLeftOfTheLastGroup) {
  const Bytes stream = {0x01, 0x02, 0x03, 0x04, 0x05, 0xFF, 0xA5, 0x5A, 0xC3};
  EXPECT_THAT(UnpackAll(Unpack10p, Bytes(stream.begin(), stream.begin() + 7), 5), ElementsAre(513, 192, 64, 20, 511));
  EXPECT_THAT(UnpackAll(Unpack10p, Bytes(stream.begin(), stream.begin() + 8), 6),
              ElementsAre(513, 192, 64, 20, 511, 681));
  EXPECT_THAT(UnpackAll(Unpack10p, stream, 7), ElementsAre(513, 192, 64, 20, 511, 681, 53));
  EXPECT_THAT(UnpackAll(Unpack10p, {0xFF, 0xA5}, 1), ElementsAre(511));
  EXPECT_THAT(UnpackAll(Unpack10p, {}, 0), ElementsAre());
}

TEST(Unpack10p, RefusesALastGroupOfOneByteAfterTheSamplesBefore) {
  const MemoryBeforeGuard input(Bytes{0x01, 0x02, 0x03, 0x04, 0x05, 0xFF});
  const MemoryBeforeGuard output(8);
  EXPECT_EQ(FailureOf([&] { Unpack10p(input.Data(), 6, output.Data()); }),
            (Failure{-1013, 9003, "Corrupted input image for 10p format."}));
  EXPECT_THAT(korvel_test::WordsOfBytes<uint16_t>(Bytes(output.Data(), output.Data() + 8)),
              ElementsAre(513, 192, 64, 20));
  EXPECT_EQ(FailureOf([&] { Unpack10p(input.Data() + 5, 1, output.Data()); }),
            (Failure{-1013, 9003, "Corrupted input image for 10p format."}));
}

TEST(Unpack12p, TakesTwoSamplesFromThreeBytes) {
  EXPECT_THAT(UnpackAll(Unpack12p, {0x01, 0x23, 0x45}, 2), ElementsAre(0x301, 0x452));
  EXPECT_THAT(UnpackAll(Unpack12p, {0xFF, 0xA5, 0x5A, 0, 0xF0, 0xFF}, 4), ElementsAre(0x5FF, 0x5AA, 0, 0xFFF));
  // An odd number of groups, beyond any unrolling.
  EXPECT_THAT(UnpackAll(Unpack12p, {1, 0, 0, 2, 0, 0, 3, 0, 0, 4, 0, 0, 5, 0, 0}, 10),
              ElementsAre(1, 0, 2, 0, 3, 0, 4, 0, 5, 0));
}

TEST(Unpack12p, TakesOneSampleFromTwoBytesLeft) {
  EXPECT_THAT(UnpackAll(Unpack12p, {0x01, 0x23, 0x45, 0x67, 0xF8}, 3), ElementsAre(0x301, 0x452, 0x867));
  EXPECT_THAT(UnpackAll(Unpack12p, {0xFF, 0xFF}, 1), ElementsAre(0xFFF));
  EXPECT_THAT(UnpackAll(Unpack12p, {}, 0), ElementsAre());
}

TEST(Unpack12p, RefusesOneByteLeft) {
  const MemoryBeforeGuard input(Bytes{0x01, 0x23, 0x45, 0x67});
  const MemoryBeforeGuard output(4);
  EXPECT_EQ(FailureOf([&] { Unpack12p(input.Data(), 4, output.Data()); }),
            (Failure{-1013, 9003, "Corrupted input image for 12p format."}));
  EXPECT_THAT(korvel_test::WordsOfBytes<uint16_t>(Bytes(output.Data(), output.Data() + 4)), ElementsAre(0x301, 0x452));
  EXPECT_EQ(FailureOf([&] { Unpack12p(input.Data(), 1, output.Data()); }),
            (Failure{-1013, 9003, "Corrupted input image for 12p format."}));
}

TEST(Unpack10p32, TakesThreeChannelsFromAWordAndIgnoresItsTopBits) {
  EXPECT_THAT(UnpackAll(Unpack10p32, {0xFF, 0xA5, 0x5A, 0xC3, 0, 0, 0xF0, 0x3F}, 6),
              ElementsAre(511, 681, 53, 0, 0, 1023));
  EXPECT_THAT(UnpackAll(Unpack10p32, {0, 0, 0, 0xC0}, 3), Each(0));
  EXPECT_THAT(UnpackAll(Unpack10p32, {}, 0), ElementsAre());
}

TEST(Unpack10p32, RefusesAnIncompleteWord) {
  for (size_t left = 1; left < 4; ++left) {
    const MemoryBeforeGuard input(Bytes(4 + left, 0xFF));
    const MemoryBeforeGuard output(6);
    EXPECT_EQ(FailureOf([&] { Unpack10p32(input.Data(), 4 + left, output.Data()); }),
              (Failure{-1013, 9003, "Corrupted input image for 10p32 format."}));
    EXPECT_THAT(korvel_test::WordsOfBytes<uint16_t>(Bytes(output.Data(), output.Data() + 6)), Each(1023));
  }
}

TEST(Unpack10g40, TakesTheLowBitsFromTheFifthByte) {
  EXPECT_THAT(Unpack(Unpack10g40, {1, 2, 3, 4, 0xE4}, 4, 4), ElementsAre(4, 9, 14, 19));
  EXPECT_THAT(Unpack(Unpack10g40, {0, 0, 0, 0, 0x1B, 255, 255, 255, 255, 255}, 8, 8),
              ElementsAre(3, 2, 1, 0, 1023, 1023, 1023, 1023));
}

TEST(Unpack10g40, StopsAtTheLastPixelAndReadsNothingBeyondTheImage) {
  // 10 bits a pixel, rounded up: 2, 3, 4, 7, 8 and 9 bytes.
  EXPECT_THAT(Unpack(Unpack10g40, {7, 0xFF}, 1, 1), ElementsAre(28));
  EXPECT_THAT(Unpack(Unpack10g40, {7, 8, 0xFF}, 2, 2), ElementsAre(28, 32));
  EXPECT_THAT(Unpack(Unpack10g40, {7, 8, 9, 0xFF}, 3, 3), ElementsAre(28, 32, 36));
  EXPECT_THAT(Unpack(Unpack10g40, {1, 2, 3, 4, 0xE4, 5, 0xFF}, 5, 5), ElementsAre(4, 9, 14, 19, 20));
  EXPECT_THAT(Unpack(Unpack10g40, {1, 2, 3, 4, 0xE4, 5, 6, 0xFF}, 6, 6), ElementsAre(4, 9, 14, 19, 20, 24));
  EXPECT_THAT(Unpack(Unpack10g40, {1, 2, 3, 4, 0xE4, 5, 6, 255, 0xFF}, 7, 7), ElementsAre(4, 9, 14, 19, 20, 24, 1020));
  EXPECT_THAT(Unpack(Unpack10g40, {}, 0, 0), ElementsAre());
}

TEST(Unpack12g24, TakesTheLowBitsFromTheThirdByte) {
  EXPECT_THAT(Unpack(Unpack12g24, {0x12, 0x34, 0xAB}, 2, 2), ElementsAre(0x12B, 0x34A));
  EXPECT_THAT(Unpack(Unpack12g24, {0x12, 0x34, 0xAB, 0xFF, 0, 0xF0}, 4, 4), ElementsAre(0x12B, 0x34A, 0xFF0, 0x00F));
}

TEST(Unpack12g24, StopsAtTheLastPixelAndReadsNothingBeyondTheImage) {
  EXPECT_THAT(Unpack(Unpack12g24, {0x12, 0xFF}, 1, 1), ElementsAre(0x120));
  EXPECT_THAT(Unpack(Unpack12g24, {0x12, 0x34, 0xAB, 0x56, 0xFF}, 3, 3), ElementsAre(0x12B, 0x34A, 0x560));
  EXPECT_THAT(Unpack(Unpack12g24, {}, 0, 0), ElementsAre());
}

TEST(UnpackStreams, GiveTheSamplesOfKnownBytes) {
  EXPECT_THAT(UnpackAll(Unpack10p, {0x01, 0x08, 0x30, 0x00, 0x01}, 4), ElementsAre(1, 2, 3, 4));
  EXPECT_THAT(UnpackAll(Unpack12p, {0xBC, 0x3A, 0x12}, 2), ElementsAre(0xABC, 0x123));
  EXPECT_THAT(Unpack(Unpack10g40, {0xFF, 0x00, 0x00, 0x00, 0x03}, 4, 4), ElementsAre(0x3FF, 0, 0, 0));
  EXPECT_THAT(Unpack(Unpack12g24, {0xAB, 0x12, 0x3C}, 2, 2), ElementsAre(0xABC, 0x123));
  EXPECT_THAT(UnpackAll(Unpack10p32, {0xFF, 0x03, 0x00, 0x00}, 3), ElementsAre(0x3FF, 0, 0));
  EXPECT_THAT(UnpackAll(Unpack10p32, {0x00, 0x00, 0xF0, 0x3F}, 3), ElementsAre(0, 0, 0x3FF));
}

TEST(UnpackPacked, TakesPackedFormats) {
  UnpackPacked unpack;
  size_t supported = 0;
  for (const PixelFormatId format : korvel_test::kPublicFormats) supported += unpack.IsInputFormatSupported(format);
  EXPECT_EQ(supported, 22u) << "5 of each of the four layouts of one channel, and 2 of words";
  EXPECT_FALSE(unpack.IsInputFormatSupported(Mono10));
  EXPECT_FALSE(unpack.IsInputFormatSupported(Invalid));
}

TEST(UnpackPacked, NamesTheUnpackedFormatOfTheSamePhaseAndDepth) {
  UnpackPacked unpack;
  const img::ImageArea area{{1, 2}, {3, 4}};
  const std::pair<PixelFormatId, PixelFormatId> expected[] = {
      {Mono10p, Mono10},
      {Mono12p, Mono12},
      {Mono10g40Qrv, Mono10},
      {Mono12g24Qrv, Mono12},
      {BayerRG10p, BayerRG10},
      {BayerGR10p, BayerGR10},
      {BayerGB10p, BayerGB10},
      {BayerBG10p, BayerBG10},
      {BayerRG12p, BayerRG12},
      {BayerGR12p, BayerGR12},
      {BayerGB12p, BayerGB12},
      {BayerBG12p, BayerBG12},
      {BayerRG10g40Qrv, BayerRG10},
      {BayerGR10g40Qrv, BayerGR10},
      {BayerGB10g40Qrv, BayerGB10},
      {BayerBG10g40Qrv, BayerBG10},
      {BayerRG12g24Qrv, BayerRG12},
      {BayerGR12g24Qrv, BayerGR12},
      {BayerGB12g24Qrv, BayerGB12},
      {BayerBG12g24Qrv, BayerBG12},
      {RGB10p32, RGB10},
      {BGR10p32, BGR10},
      {Mono10, Invalid},
      {BayerRG8, Invalid},
      {RGB8, Invalid},
      {Invalid, Invalid},
  };
  for (const auto& [in, out] : expected) {
    EXPECT_EQ(unpack.GetOutputImageFormat({area, in}), (ImageFormat{area, out})) << img::PixelFormatInfo_Name(in);
  }
}

TEST(UnpackPacked, TreatsTheImageAsOneStream) {
  UnpackPacked unpack;
  // 5 pixels over lines of one pixel.
  const TestImage column(Mono10p, 1, 5, Bytes{0x01, 0x02, 0x03, 0x04, 0x05, 0xFF, 0xA5});
  const TestImage columnOut(Mono10, 1, 5);
  unpack.Process(*column, *columnOut);
  EXPECT_THAT(columnOut.ContentWords(), ElementsAre(513, 192, 64, 20, 511));
  const TestImage bayer(BayerRG12p, 3, 1, Bytes{0x01, 0x23, 0x45, 0x67, 0xF8});
  const TestImage bayerOut(BayerRG12, 3, 1);
  unpack.Process(*bayer, *bayerOut);
  EXPECT_THAT(bayerOut.ContentWords(), ElementsAre(0x301, 0x452, 0x867));
  const TestImage mipi10(BayerGB10g40Qrv, 5, 1, Bytes{1, 2, 3, 4, 0xE4, 5, 0xFF});
  const TestImage mipi10Out(BayerGB10, 5, 1);
  unpack.Process(*mipi10, *mipi10Out);
  EXPECT_THAT(mipi10Out.ContentWords(), ElementsAre(4, 9, 14, 19, 20));
  const TestImage mipi12(Mono12g24Qrv, 1, 3, Bytes{0x12, 0x34, 0xAB, 0x56, 0xFF});
  const TestImage mipi12Out(Mono12, 1, 3);
  unpack.Process(*mipi12, *mipi12Out);
  EXPECT_THAT(mipi12Out.ContentWords(), ElementsAre(0x12B, 0x34A, 0x560));
}

TEST(UnpackPacked, KeepsTheOrderOfChannels) {
  UnpackPacked unpack;
  const TestImage rgb(RGB10p32, 1, 1, Bytes{0xFF, 0xA5, 0x5A, 0xC3});
  const TestImage rgbOut(RGB10, 1, 1);
  unpack.Process(*rgb, *rgbOut);
  EXPECT_THAT(rgbOut.ContentWords(), ElementsAre(511, 681, 53));
  const TestImage bgr(BGR10p32, 1, 1, Bytes{0xFF, 0xA5, 0x5A, 0xC3});
  const TestImage bgrOut(BGR10, 1, 1);
  unpack.Process(*bgr, *bgrOut);
  EXPECT_THAT(bgrOut.ContentWords(), ElementsAre(511, 681, 53));
}

TEST(UnpackPacked, HasFiveWorkingCellsOfSeventy) {
  UnpackPacked unpack;
  size_t working = 0;
  size_t cells = 0;
  for (const PixelFormatId in : korvel_test::kRawFormats) {
    for (const PixelFormatId out : korvel_test::kRawFormats) {
      std::unique_ptr<IfcConversionProcessingModule> module;
      const auto failure = FailureOf([&] { module = unpack.CreateImpl(in, out); });
      if (failure) {
        EXPECT_EQ(*failure,
                  (Failure{-1009, 9000, "Unsupported formatId: " + std::to_string(static_cast<uint32_t>(in))}));
      } else {
        ++cells;
        working += korvel_test::Works(*module);
      }
    }
  }
  EXPECT_EQ(cells, 70u);
  EXPECT_EQ(working, 5u);
}

TEST(UnpackPacked, LeavesTheOutputOfOtherCellsAlone) {
  UnpackPacked unpack;
  const TestImage input(Mono10p, 1, 1, Bytes{1, 2});
  const TestImage output(RGB10, 1, 1);
  unpack.Process(*input, *output);
  EXPECT_THAT(output.ContentWords(), Each(kUnwrittenWord));
}

}  // namespace
