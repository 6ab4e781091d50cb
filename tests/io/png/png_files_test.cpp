#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <zlib.h>

#include <cstdint>
#include <fstream>
#include <string>
#include <vector>

#include "tests/model/file_model.h"
#include "tests/support/handmade_files.h"
#include "tests/support/test_images.h"

namespace {

using korvel_test::AllocationLimit;
using korvel_test::Bytes;
using korvel_test::FileType;
using korvel_test::FirstBytes;
using korvel_test::Holds;
using korvel_test::IdOf;
using korvel_test::IoError;
using korvel_test::Joined;
using korvel_test::kCannotRead;
using korvel_test::LastError;
using korvel_test::MakeModelImage;
using korvel_test::MakePng;
using korvel_test::ModelImage;
using korvel_test::PngChunk;
using korvel_test::PngHeaderChunk;
using korvel_test::PngRecipe;
using korvel_test::PngSignature;
using korvel_test::ReadOutcome;
using korvel_test::UnsupportedError;
using testing::ElementsAre;

using Samples = std::vector<uint16_t>;

constexpr uint32_t kMono8 = IdOf("Mono8");

const LastError kNoSignature = IoError("Error reading header of png file.");
const LastError kBadInfo = IoError("Error during png io init.");
const LastError kBadRows = IoError("Error during png file read.");

size_t ChannelsOf(uint8_t colourType) { return colourType == 0 ? 1 : colourType == 2 ? 3 : 4; }

// A recipe with samples of all values up to the depth's maximum.
PngRecipe Recipe(uint8_t colourType, uint8_t depth, uint32_t width, uint32_t height) {
  PngRecipe recipe{.width = width, .height = height, .depth = depth, .colourType = colourType};
  korvel_test::ModelRandom random(colourType * 1000u + depth * 10u + width);
  for (size_t i = 0; i < width * height * ChannelsOf(colourType); ++i) {
    recipe.samples.push_back(static_cast<uint16_t>(random.Below(1u << depth)));
  }
  return recipe;
}

Bytes LowByteFirst(const Samples& samples) { return korvel_test::BytesOfWords(samples); }

// The nearest of 256 values.
Bytes ReducedTo8Bits(const Samples& samples) {
  Bytes bytes;
  for (const uint16_t sample : samples) bytes.push_back(static_cast<uint8_t>((sample * 510u + 65535u) / 131070u));
  return bytes;
}

Bytes ExpandedTo8Bits(const Samples& samples, uint8_t depth) {
  Bytes bytes;
  for (const uint16_t sample : samples) bytes.push_back(static_cast<uint8_t>(sample * 255 / ((1 << depth) - 1)));
  return bytes;
}

Samples ShiftedDown(Samples samples, int bits) {
  for (uint16_t& sample : samples) sample = static_cast<uint16_t>(sample >> bits);
  return samples;
}

class PngFiles : public korvel_test::HandmadeFiles {
 protected:
  PngFiles() : HandmadeFiles(FileType::kPng) {}
};

TEST_F(PngFiles, OfEightBitsReadAsTheyAre) {
  for (const bool interlaced : {false, true}) {
    for (const auto& [width, height] : {std::pair<uint32_t, uint32_t>{1, 1}, {2, 3}, {5, 5}, {9, 17}, {3, 8}}) {
      for (const auto& [colourType, format] :
           {std::pair<uint8_t, uint32_t>{0, kMono8}, {2, IdOf("RGB8")}, {6, IdOf("RGBa8")}}) {
        PngRecipe recipe = Recipe(colourType, 8, width, height);
        recipe.interlaced = interlaced;
        const Bytes pixels(recipe.samples.begin(), recipe.samples.end());
        EXPECT_TRUE(Holds(ReadBytes(MakePng(recipe)), MakeModelImage(format, width, height, pixels)))
            << width << "x" << height << ", colour type " << int{colourType} << (interlaced ? ", interlaced" : "");
      }
    }
  }
}

TEST_F(PngFiles, OfSixteenBitsAreShiftedDownByTheirSignificantBits) {
  const std::pair<uint8_t, std::pair<uint32_t, uint32_t>> types[] = {{0, {IdOf("Mono10"), IdOf("Mono12")}},
                                                                     {2, {IdOf("RGB10"), IdOf("RGB12")}},
                                                                     {6, {IdOf("RGBa10"), IdOf("RGBa12")}}};
  for (const auto& [colourType, formats] : types) {
    for (const bool interlaced : {false, true}) {
      for (const uint8_t bits : {uint8_t{10}, uint8_t{12}}) {
        PngRecipe recipe = Recipe(colourType, 16, 7, 9);
        recipe.interlaced = interlaced;
        recipe.significantBits = Bytes(ChannelsOf(colourType), bits);
        const uint32_t format = bits == 10 ? formats.first : formats.second;
        EXPECT_TRUE(Holds(ReadBytes(MakePng(recipe)),
                          MakeModelImage(format, 7, 9, LowByteFirst(ShiftedDown(recipe.samples, 16 - bits)))))
            << korvel_test::FormatOf(format).name << (interlaced ? ", interlaced" : "");
      }
    }
  }
}

TEST_F(PngFiles, OfSixteenBitsWithoutSignificantBitsAreReducedToEight) {
  for (const auto& [colourType, format] :
       {std::pair<uint8_t, uint32_t>{0, kMono8}, {2, IdOf("RGB8")}, {6, IdOf("RGBa8")}}) {
    for (const bool interlaced : {false, true}) {
      PngRecipe recipe = Recipe(colourType, 16, 64, 64);
      recipe.interlaced = interlaced;
      EXPECT_TRUE(Holds(ReadBytes(MakePng(recipe)), MakeModelImage(format, 64, 64, ReducedTo8Bits(recipe.samples))));
    }
  }
  PngRecipe edges{.width = 6, .height = 1, .depth = 16, .samples = {0, 128, 129, 0x80FF, 0xFF7E, 0xFFFF}};
  EXPECT_THAT(ReadBytes(MakePng(edges)).bytes, ElementsAre(0, 0, 1, 128, 254, 255));
}

TEST_F(PngFiles, OfGreyBelowEightBitsAreExpanded) {
  for (const uint8_t depth : {uint8_t{1}, uint8_t{2}, uint8_t{4}}) {
    for (const uint32_t width : {1u, 3u, 8u, 13u}) {
      for (const bool interlaced : {false, true}) {
        PngRecipe recipe = Recipe(0, depth, width, 11);
        recipe.interlaced = interlaced;
        EXPECT_TRUE(Holds(ReadBytes(MakePng(recipe)),
                          MakeModelImage(kMono8, width, 11, ExpandedTo8Bits(recipe.samples, depth))))
            << int{depth} << " bits, width " << width << (interlaced ? ", interlaced" : "");
      }
    }
  }
}

TEST_F(PngFiles, OfOtherSignificantBitsAreRefused) {
  for (const uint8_t bits : Bytes{1, 8, 9, 11, 13, 14, 15, 16}) {
    PngRecipe recipe = Recipe(0, 16, 3, 2);
    recipe.significantBits = {bits};
    EXPECT_EQ(ReadBytes(MakePng(recipe)).error, UnsupportedError()) << int{bits};
  }
  const Bytes mixed[] = {{10, 10, 12},     {10, 12, 10},     {12, 10, 10},    {12, 12, 10},
                         {8, 8, 8},        {16, 16, 16},     {5, 6, 5},       {10, 10, 10, 12},
                         {12, 12, 12, 10}, {12, 12, 12, 16}, {10, 12, 10, 12}};
  for (const Bytes& bits : mixed) {
    PngRecipe recipe = Recipe(bits.size() == 3 ? 2 : 6, 16, 3, 2);
    recipe.significantBits = bits;
    EXPECT_EQ(ReadBytes(MakePng(recipe)).error, UnsupportedError()) << testing::PrintToString(bits);
  }
  PngRecipe eight = Recipe(0, 8, 3, 2);
  eight.significantBits = {8};
  EXPECT_EQ(ReadBytes(MakePng(eight)).error, UnsupportedError());
  PngRecipe four = Recipe(0, 4, 3, 2);
  four.significantBits = {3};
  EXPECT_EQ(ReadBytes(MakePng(four)).error, UnsupportedError());
}

TEST_F(PngFiles, OfPalettesAndOfGreyWithAlphaAreRefused) {
  for (const uint8_t depth : {uint8_t{1}, uint8_t{2}, uint8_t{4}, uint8_t{8}}) {
    PngRecipe recipe{.width = 3, .height = 2, .depth = depth, .colourType = 3, .palette = Bytes(6, 5)};
    recipe.samples = {0, 1, 0, 1, 1, 1};
    EXPECT_EQ(ReadBytes(MakePng(recipe)).error, UnsupportedError()) << int{depth};
  }
  for (const uint8_t depth : {uint8_t{8}, uint8_t{16}}) {
    PngRecipe recipe{.width = 1, .height = 2, .depth = depth, .colourType = 4, .samples = {1, 2, 3, 4}};
    EXPECT_EQ(ReadBytes(MakePng(recipe)).error, UnsupportedError()) << int{depth};
    recipe.significantBits = depth == 16 ? Bytes{12, 12} : Bytes{8, 8};
    EXPECT_EQ(ReadBytes(MakePng(recipe)).error, UnsupportedError()) << int{depth};
  }
}

TEST_F(PngFiles, IgnoreTransparentColours) {
  PngRecipe grey{.width = 3, .height = 1, .transparency = {0, 2}, .samples = {1, 2, 3}};
  EXPECT_TRUE(Holds(ReadBytes(MakePng(grey)), MakeModelImage(kMono8, 3, 1, {1, 2, 3})));
  grey.depth = 2;
  EXPECT_TRUE(Holds(ReadBytes(MakePng(grey)), MakeModelImage(kMono8, 3, 1, {85, 170, 255})));
  PngRecipe colour{.width = 1, .height = 1, .colourType = 2, .transparency = {0, 1, 0, 2, 0, 3}, .samples = {1, 2, 3}};
  EXPECT_TRUE(Holds(ReadBytes(MakePng(colour)), MakeModelImage(IdOf("RGB8"), 1, 1, {1, 2, 3})));
  PngRecipe deep{.width = 1, .height = 1, .depth = 16, .colourType = 0, .significantBits = {12}, .samples = {0xABCD}};
  deep.transparency = {0xAB, 0xCD};
  EXPECT_TRUE(Holds(ReadBytes(MakePng(deep)), MakeModelImage(IdOf("Mono12"), 1, 1, {0xBC, 0x0A})));
}

TEST_F(PngFiles, AreReadAsBayerWhereTheyAreMono) {
  PngRecipe recipe = Recipe(0, 16, 2, 2);
  recipe.significantBits = {10};
  EXPECT_EQ(ReadBytesAs(MakePng(recipe), IdOf("BayerBG10")).format, IdOf("BayerBG10"));
  EXPECT_EQ(ReadBytesAs(MakePng(recipe), IdOf("BayerBG12")).error, korvel_test::InterpretationError());
  const PngRecipe grey = Recipe(0, 1, 2, 2);
  EXPECT_EQ(ReadBytesAs(MakePng(grey), IdOf("BayerBG8")).format, IdOf("BayerBG8"));
}

TEST_F(PngFiles, OfSeveralDataChunksAreWhole) {
  const Bytes file = MakePng(Recipe(0, 8, 20, 20));
  const size_t data = 8 + 25;  // behind signature and header
  const size_t length = file.size() - data - 12 - 12;
  const auto begin = file.begin() + static_cast<ptrdiff_t>(data + 8);
  Bytes split = FirstBytes(file, data);
  for (size_t i = 0; i < length; ++i) {
    split = Joined({split, PngChunk("IDAT", {begin[static_cast<ptrdiff_t>(i)]})});
  }
  split = Joined({split, PngChunk("IEND", {})});
  EXPECT_EQ(ReadBytes(split).bytes, ReadBytes(file).bytes);
  EXPECT_EQ(ReadBytes(split).code, 0u);
}

// ------------------------------------------------------------------------------------------------------- damaged files
// --

TEST_F(PngFiles, AreRefusedWhereverTheyAreCut) {
  for (const bool interlaced : {false, true}) {
    PngRecipe recipe = Recipe(2, 16, 4, 5);
    recipe.significantBits = {12, 12, 12};
    recipe.interlaced = interlaced;
    const Bytes file = MakePng(recipe);
    ASSERT_EQ(ReadBytes(file).code, 0u);
    const size_t data = 8 + 25 + 15;  // behind signature, header and significant bits
    for (size_t size = 0; size < file.size(); ++size) {
      LastError expected = kBadRows;
      if (size < data + 8) expected = kBadInfo;
      if (size < 8) expected = kNoSignature;
      EXPECT_EQ(ReadBytes(FirstBytes(file, size)).error, expected) << size << " of " << file.size();
    }
  }
}

TEST_F(PngFiles, BeginWithTheirSignature) {
  const Bytes file = MakePng(Recipe(0, 8, 2, 2));
  for (size_t i = 0; i < 8; ++i) {
    Bytes damaged = file;
    damaged[i] ^= 0x20;
    EXPECT_EQ(ReadBytes(damaged).error, kNoSignature) << i;
  }
  EXPECT_EQ(ReadBytes(PngSignature()).error, kBadInfo);
}

TEST_F(PngFiles, OfImpossibleHeadersAreRefused) {
  const Bytes rest = Joined({PngChunk("IDAT", {0x78, 1, 3, 0, 0, 0, 0, 1}), PngChunk("IEND", {})});
  const Bytes headers[] = {PngHeaderChunk(0, 1, 8, 0),          PngHeaderChunk(1, 0, 8, 0),
                           PngHeaderChunk(0x80000000, 1, 8, 0), PngHeaderChunk(1, 0xFFFFFFFF, 8, 0),
                           PngHeaderChunk(0x7FFFFFFF, 1, 8, 0), PngHeaderChunk(1, 1000001, 8, 0),
                           PngHeaderChunk(1, 1, 3, 0),          PngHeaderChunk(1, 1, 0, 0),
                           PngHeaderChunk(1, 1, 32, 0),         PngHeaderChunk(1, 1, 4, 2),
                           PngHeaderChunk(1, 1, 8, 1),          PngHeaderChunk(1, 1, 8, 7),
                           PngHeaderChunk(1, 1, 8, 0, 2),       PngChunk("IHDR", {}),
                           PngChunk("IHDR", Bytes(14, 1))};
  for (const Bytes& header : headers) {
    EXPECT_EQ(ReadBytes(Joined({PngSignature(), header, rest})).error, kBadInfo) << testing::PrintToString(header);
  }
  EXPECT_EQ(ReadBytes(Joined({PngSignature(), rest})).error, kBadInfo) << "no header";
  EXPECT_EQ(ReadBytes(Joined({PngSignature(), PngHeaderChunk(1, 1, 8, 0), PngChunk("IEND", {})})).error, kBadInfo);
}

TEST_F(PngFiles, OfWrongChecksumsAreRefused) {
  const Bytes file = MakePng(Recipe(0, 8, 6, 6));
  for (const size_t crc : {size_t{8 + 8 + 13}, file.size() - 12 - 4}) {
    Bytes damaged = file;
    damaged[crc] ^= 1;
    EXPECT_EQ(ReadBytes(damaged).error, crc < 33 ? kBadInfo : kBadRows);
  }
  Bytes adler = file;
  adler[file.size() - 12 - 4 - 1] ^= 1;  // the compressed data's own sum, and with it the chunk's
  EXPECT_NE(ReadBytes(adler).code, 0u);
}

TEST_F(PngFiles, OfWhichTheSignificantBitsAreDamagedAreRefused) {
  // Without them the samples would be read as others.
  PngRecipe recipe = Recipe(0, 16, 4, 4);
  recipe.significantBits = {12};
  const Bytes file = MakePng(recipe);
  ASSERT_EQ(ReadBytes(file).code, 0u);
  constexpr size_t kEndOfHeader = 8 + 25;
  constexpr size_t kChunkByteCount = 13;  // length, id, one byte, checksum
  for (size_t i = kEndOfHeader + 8; i < kEndOfHeader + kChunkByteCount; ++i) {
    Bytes damaged = file;
    damaged[i] ^= 1;
    EXPECT_EQ(ReadBytes(damaged).error, kBadInfo) << "byte " << i;
  }
}

TEST_F(PngFiles, OfTooFewRowsAreRefused) {
  const Bytes small = MakePng(Recipe(0, 8, 4, 3));
  const Bytes data(small.begin() + 33, small.end());
  EXPECT_EQ(ReadBytes(Joined({PngSignature(), PngHeaderChunk(4, 4, 8, 0), data})).error, kBadRows);
  EXPECT_EQ(ReadBytes(Joined({PngSignature(), PngHeaderChunk(5, 3, 8, 0), data})).error, kBadRows);
  EXPECT_EQ(ReadBytes(Joined({PngSignature(), PngHeaderChunk(4, 3, 16, 0), data})).error, kBadRows);
}

TEST_F(PngFiles, LargerThanDeflateCanHoldAreRefused) {
  // Padded to a length of exactly 100 bytes: 110,000 row bytes are the most, at the file's own depth.
  const auto file = [](uint32_t width, uint32_t height, uint8_t depth, uint8_t colourType) {
    Bytes bytes = Joined({PngSignature(), PngHeaderChunk(width, height, depth, colourType)});
    return Joined({bytes, PngChunk("IDAT", Bytes(100 - bytes.size() - 12 - 12, 0x78)), PngChunk("IEND", {})});
  };
  ASSERT_EQ(file(1, 1, 8, 0).size(), 100u);
  const struct {
    uint32_t width;  // of 10 row bytes
    uint8_t depth;
    uint8_t colourType;
  } rows[] = {{10, 8, 0}, {80, 1, 0}, {73, 1, 0}, {20, 4, 0}, {5, 16, 0}};
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::Message() << row.width << " of " << int{row.depth} << " bits");
    EXPECT_EQ(ReadBytes(file(row.width, 11000, row.depth, row.colourType)).error, kBadRows) << "plausible, but damaged";
    EXPECT_EQ(ReadBytes(file(row.width, 11001, row.depth, row.colourType)).error, IoError(kCannotRead));
  }
  EXPECT_EQ(ReadBytes(file(1000000, 1000000, 16, 6)).error, IoError(kCannotRead));
  // A picture that deflate shrinks as far as it can reads.
  const PngRecipe flat{.width = 1000, .height = 1000, .samples = Samples(1000000, 0)};
  EXPECT_EQ(ReadBytes(MakePng(flat)).bytes, Bytes(1000000, 0));
}

TEST_F(PngFiles, AboveTheLimitAreRefused) {
  const AllocationLimit limit(1000);
  EXPECT_EQ(ReadBytes(MakePng(Recipe(0, 8, 40, 25))).code, 0u);
  EXPECT_EQ(ReadBytes(MakePng(Recipe(0, 8, 40, 26))).error, IoError(kCannotRead));
  EXPECT_EQ(ReadBytes(MakePng(Recipe(0, 1, 40, 26))).error, IoError(kCannotRead)) << "as they are in memory";
  EXPECT_EQ(ReadBytes(MakePng(Recipe(0, 16, 40, 25))).code, 0u) << "reduced to 8 bits";
}

// Chunks of text that unpack to nearly the most that the codec takes for one of them.
Bytes TextChunks(const std::string& name, const Bytes& head, int count) {
  const Bytes text(7900000, 'a');
  Bytes packed(compressBound(text.size()));
  uLongf size = packed.size();
  EXPECT_EQ(compress(packed.data(), &size, text.data(), text.size()), Z_OK);
  packed.resize(size);
  const Bytes chunk = PngChunk(name, Joined({head, packed}));
  Bytes chunks;
  for (int i = 0; i < count; ++i) chunks = Joined({chunks, chunk});
  return chunks;
}

// The most memory that the process has held since the last call, in KiB; 0 where the system doesn't tell.
size_t PeakMemorySinceLastCall() {
  std::ifstream status("/proc/self/status");
  size_t peak = 0;
  for (std::string line; std::getline(status, line);) {
    if (line.rfind("VmHWM:", 0) == 0) peak = std::stoul(line.substr(6));
  }
  std::ofstream reset("/proc/self/clear_refs");
  return (reset << "5").flush() ? peak : 0;
}

TEST_F(PngFiles, TakeNothingForChunksThatPlayNoPart) {
  const Bytes small = MakePng(Recipe(0, 8, 2, 2));
  const Bytes rest(small.begin() + 33, small.end());
  const Bytes texts[] = {TextChunks("zTXt", {'k', 0, 0}, 20), TextChunks("iTXt", {'k', 0, 1, 0, 0, 0}, 20),
                         TextChunks("iCCP", {'k', 0, 0}, 1)};
  for (const Bytes& text : texts) {
    const Bytes file = Joined({FirstBytes(small, 33), text, rest});
    korvel_test::WriteFile(Path(), file);
    if (PeakMemorySinceLastCall() == 0) GTEST_SKIP() << "the system doesn't tell how much memory is held";
    const size_t before = PeakMemorySinceLastCall();
    const ReadOutcome outcome = korvel_test::Read(Path());
    EXPECT_LT(PeakMemorySinceLastCall(), before + 4096);
    EXPECT_EQ(outcome.bytes, ReadBytes(small).bytes);
  }
  // Nor for those behind the pixels.
  const Bytes head = FirstBytes(small, small.size() - 12);
  korvel_test::WriteFile(Path(), Joined({head, texts[0], PngChunk("IEND", {})}));
  PeakMemorySinceLastCall();
  const size_t before = PeakMemorySinceLastCall();
  EXPECT_EQ(korvel_test::Read(Path()).code, 0u);
  EXPECT_LT(PeakMemorySinceLastCall(), before + 4096);
}

TEST_F(PngFiles, PrintNothing) {
  const Bytes file = MakePng(Recipe(0, 8, 6, 6));
  PngRecipe wrongBits = Recipe(0, 8, 6, 6);
  wrongBits.significantBits = {9};  // more than there are, of which codecs warn
  testing::internal::CaptureStderr();
  testing::internal::CaptureStdout();
  const ReadOutcome cut = ReadBytes(FirstBytes(file, file.size() - 20));
  const ReadOutcome warned = ReadBytes(MakePng(wrongBits));
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  EXPECT_EQ(cut.error, kBadRows);
  EXPECT_EQ(warned.format, kMono8) << "a chunk that can't be is none";
}

}  // namespace
