// Files that were worked out by hand, so that the model itself stands on something.
#include "tests/model/file_model.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace {

using korvel_test::Bytes;
using korvel_test::FileType;
using korvel_test::FormatWhenReadAs;
using korvel_test::IdOf;
using korvel_test::Joined;
using korvel_test::MakeModelImage;
using korvel_test::MakePng;
using korvel_test::ModelImage;
using korvel_test::ParsePng;
using korvel_test::PngChunk;
using korvel_test::PngContent;
using korvel_test::PngHeaderChunk;
using korvel_test::PngRecipe;
using korvel_test::PngSignature;
using testing::ElementsAre;
using testing::ElementsAreArray;

TEST(FileModel, BuildsBmpFilesAsWorkedOutByHand) {
  // Three pixels of RGB8 take 9 bytes and one byte of padding, red and blue exchanged.
  const ModelImage rgb =
      MakeModelImage(IdOf("RGB8"), 3, 2, {1, 2, 3, 4, 5, 6, 7, 8, 9, 11, 12, 13, 14, 15, 16, 17, 18, 19});
  EXPECT_THAT(korvel_test::BmpFile(rgb),
              ElementsAreArray(Bytes{'B',  'M', 74, 0,  0,  0,    0,  0,  0,  0, 66,   0, 0, 0,         // 54 + 2 * 10
                                     40,   0,   0,  0,  3,  0,    0,  0,  2,  0, 0,    0, 1, 0, 24, 0,  //
                                     0,    0,   0,  0,  20, 0,    0,  0,  0,  0, 0,    0, 0, 0, 0,  0,  //
                                     0,    0,   0,  0,  0,  0,    0,  0,                                //
                                     0xFF, 0,   0,  0,  0,  0xFF, 0,  0,  0,  0, 0xFF, 0,               // masks
                                     13,   12,  11, 16, 15, 14,   19, 18, 17, 0,  // the last line first
                                     3,    2,   1,  6,  5,  4,    9,  8,  7,  0}));
  // Three pixels of Mono8 have a remainder of 3.
  const Bytes grey = korvel_test::BmpFile(MakeModelImage(IdOf("Mono8"), 3, 1, {7, 8, 9}));
  ASSERT_EQ(grey.size(), 54u + 1024 + 6);
  EXPECT_EQ(grey[2], 60);
  EXPECT_THAT(Bytes(grey.begin() + 10, grey.begin() + 12), ElementsAre(1078 % 256, 1078 / 256));
  EXPECT_THAT(Bytes(grey.begin() + 46, grey.begin() + 62), ElementsAre(0, 1, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 1, 1, 1, 0));
  EXPECT_THAT(Bytes(grey.end() - 10, grey.end()), ElementsAre(255, 255, 255, 0, 7, 8, 9, 0, 0, 0));
  // Fields of 1, 2 and 3 become 3, 2 and 1, and the two highest bits go.
  const Bytes fields = korvel_test::BmpFile(MakeModelImage(IdOf("RGB10p32"), 1, 1, {0x01, 0x08, 0x30, 0xC0}));
  EXPECT_THAT(Bytes(fields.end() - 4, fields.end()), ElementsAre(0x03, 0x08, 0x10, 0x00));
  const Bytes twelve = korvel_test::BmpFile(MakeModelImage(IdOf("BayerRG12"), 1, 1, {0xBC, 0xFA}));
  EXPECT_THAT(Bytes(twelve.begin() + 28, twelve.begin() + 34), ElementsAre(16, 0, 3, 0, 0, 0));
  EXPECT_THAT(Bytes(twelve.begin() + 54, twelve.end()),
              ElementsAre(0xFF, 0x0F, 0, 0, 0xFF, 0x0F, 0, 0, 0xFF, 0x0F, 0, 0, 0xBC, 0xFA, 0, 0));
}

TEST(FileModel, BuildsRawFilesAsWorkedOutByHand) {
  EXPECT_THAT(korvel_test::RawFile(MakeModelImage(IdOf("Mono12p"), 3, 1, {1, 2, 3, 4, 5})),
              ElementsAre(0x47, 0, 0x0C, 1, 5, 0, 0, 0, 0, 0, 0, 0, 3, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 1,
                          2, 3, 4, 5));
}

TEST(FileModel, ReadsAPngFileThatWasWorkedOutByHand) {
  // One grey pixel of 42, in a stored block: 2 bytes of zlib, 5 of the block, filter and sample, their Adler sum.
  const Bytes head = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n',                    //
                      0,    0,   0,   13,  'I',  'H',  'D',  'R',  0, 0,    0,    1,  //
                      0,    0,   0,   1,   8,    0,    0,    0,    0, 0x3A, 0x7E, 0x9B, 0x55};
  const Bytes data = {0x78, 1, 1, 2, 0, 0xFD, 0xFF, 0, 42, 0, 0x2C, 0, 0x2B};
  const Bytes end = {0, 0, 0, 0, 'I', 'E', 'N', 'D', 0xAE, 0x42, 0x60, 0x82};
  EXPECT_EQ(Joined({PngSignature(), PngHeaderChunk(1, 1, 8, 0)}), head);
  EXPECT_EQ(PngChunk("IEND", {}), end);
  Bytes whole = Joined({head, PngChunk("IDAT", data), end});
  const PngContent content = ParsePng(whole);
  EXPECT_EQ(content.width, 1u);
  EXPECT_EQ(content.height, 1u);
  EXPECT_EQ(content.depth, 8);
  EXPECT_EQ(content.colourType, 0);
  EXPECT_EQ(content.levelClass, 0);
  EXPECT_THAT(content.samples, ElementsAre(42));
  EXPECT_THAT(content.chunks, ElementsAre("IHDR", "IDAT", "IEND"));
  whole.back() ^= 1;
  EXPECT_THROW(ParsePng(whole), std::runtime_error);
  whole.pop_back();
  EXPECT_THROW(ParsePng(whole), std::runtime_error);
}

// A zlib stream of one stored block.
Bytes Stored(const Bytes& bytes) {
  uint32_t a = 1;
  uint32_t b = 0;
  for (const uint8_t byte : bytes) {
    a = (a + byte) % 65521;
    b = (b + a) % 65521;
  }
  const auto size = static_cast<uint8_t>(bytes.size());
  return Joined(
      {{0x78, 1, 1, size, 0, static_cast<uint8_t>(~size), 0xFF},
       bytes,
       {static_cast<uint8_t>(b >> 8), static_cast<uint8_t>(b), static_cast<uint8_t>(a >> 8), static_cast<uint8_t>(a)}});
}

TEST(FileModel, UndoesEveryFilter) {
  // The first four lines stand for 10, 20, 40 behind the filters none, left, above and average.
  const Bytes filtered = {0, 10, 20, 40, 1, 10, 10, 20, 2, 0, 0, 0, 3, 5, 5, 10, 4, 0, 10, 20};
  const Bytes file =
      Joined({PngSignature(), PngHeaderChunk(3, 5, 8, 0), PngChunk("IDAT", Stored(filtered)), PngChunk("IEND", {})});
  // The last one is Paeth's: its estimates, 10, 10 + 20 - 10 and 30 + 40 - 20, are each nearest to the value above.
  EXPECT_THAT(ParsePng(file).samples, ElementsAre(10, 20, 40, 10, 20, 40, 10, 20, 40, 10, 20, 40, 10, 30, 60));
}

TEST(FileModel, MakesPngFilesThatItReads) {
  PngRecipe recipe{.width = 2, .height = 2, .depth = 16, .colourType = 0, .samples = {0xABC0, 1, 2, 0xFFFF}};
  recipe.significantBits = {12};
  const PngContent content = ParsePng(MakePng(recipe));
  EXPECT_THAT(content.samples, ElementsAre(0xABC0, 1, 2, 0xFFFF));
  EXPECT_THAT(content.significantBits, ElementsAre(12));
  EXPECT_THAT(content.chunks, ElementsAre("IHDR", "sBIT", "IDAT", "IEND"));
}

TEST(FileModel, ReadsBackWithTheOrderOfTheFile) {
  const ModelImage bgr = MakeModelImage(IdOf("BGR10"), 1, 1, {1, 0, 2, 0, 3, 1});
  const ModelImage png = korvel_test::ReadBack(FileType::kPng, bgr);
  EXPECT_EQ(png.format, IdOf("RGB10"));
  EXPECT_THAT(png.bytes, ElementsAre(3, 1, 2, 0, 1, 0));
  EXPECT_THAT(korvel_test::PngSamples(bgr), ElementsAre(0x103, 2, 1));
  const ModelImage bmp = korvel_test::ReadBack(FileType::kBmp, MakeModelImage(IdOf("RGB8"), 1, 1, {1, 2, 3}));
  EXPECT_EQ(bmp.format, IdOf("RGB8"));
  EXPECT_THAT(bmp.bytes, ElementsAre(3, 2, 1));
}

TEST(FileModel, TakesFormatsForOthersInOneDirectionOnly) {
  EXPECT_EQ(FormatWhenReadAs(FileType::kBmp, IdOf("Mono10"), IdOf("BayerGB10")), IdOf("BayerGB10"));
  EXPECT_EQ(FormatWhenReadAs(FileType::kBmp, IdOf("Mono10"), IdOf("BayerGB12")), std::nullopt);
  EXPECT_EQ(FormatWhenReadAs(FileType::kRaw, IdOf("Mono10"), IdOf("BayerGB10")), std::nullopt);
  EXPECT_EQ(FormatWhenReadAs(FileType::kRaw, IdOf("BayerGB10"), IdOf("Mono10")), IdOf("BayerGB10"));
  EXPECT_EQ(FormatWhenReadAs(FileType::kRaw, IdOf("BayerGB10g40Qrv"), IdOf("Mono10g40Qrv")), std::nullopt);
  EXPECT_EQ(FormatWhenReadAs(FileType::kRaw, IdOf("BayerGB10g40Qrv"), IdOf("Mono10p")), std::nullopt);
  EXPECT_EQ(FormatWhenReadAs(FileType::kPng, IdOf("RGB8"), IdOf("RGB8")), IdOf("RGB8"));
  EXPECT_EQ(FormatWhenReadAs(FileType::kPng, IdOf("RGB8"), IdOf("BGR8")), std::nullopt);
}

}  // namespace
