#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <filesystem>
#include <limits>

#include "io/bmp/bmp_header.h"
#include "io/bmp/bmp_writer.h"
#include "tests/model/file_model.h"
#include "tests/support/handmade_files.h"
#include "tests/support/test_images.h"

namespace {

using img::io::bmp::BMPHeader;
using img::io::bmp::BMPWriter;
using korvel_test::AllocationLimit;
using korvel_test::BmpHeaderFields;
using korvel_test::Bytes;
using korvel_test::FileType;
using korvel_test::FirstBytes;
using korvel_test::Holds;
using korvel_test::IdOf;
using korvel_test::InterpretationError;
using korvel_test::IoError;
using korvel_test::Joined;
using korvel_test::kCannotRead;
using korvel_test::LocatedFailure;
using korvel_test::LocatedFailureOf;
using korvel_test::MakeModelImage;
using korvel_test::ModelImage;
using korvel_test::ReadOutcome;
using korvel_test::UnsupportedError;
using testing::ElementsAre;
using testing::HasSubstr;

constexpr uint32_t kMono8 = IdOf("Mono8");
constexpr uint32_t kRgb8 = IdOf("RGB8");
constexpr int32_t kLowest = std::numeric_limits<int32_t>::min();
constexpr int32_t kHighest = std::numeric_limits<int32_t>::max();

using Masks = std::array<uint32_t, 3>;

constexpr Masks kTenBits = {0x3FF, 0x3FF, 0x3FF};
constexpr Masks kTwelveBits = {0xFFF, 0xFFF, 0xFFF};
constexpr Masks kRedFirst = {0xFF, 0xFF00, 0xFF0000};
constexpr Masks kBlueFirst = {0xFF0000, 0xFF00, 0xFF};
constexpr Masks kRedFirstTen = {0x3FF, 0xFFC00, 0x3FF00000};
constexpr Masks kBlueFirstTen = {0x3FF00000, 0xFFC00, 0x3FF};

// Bits per pixel that files may tell.
constexpr uint16_t kBits[] = {0, 1, 2, 4, 8, 15, 16, 23, 24, 25, 32, 48, 65535};

// Two by two pixels of 24 bits without masks, as most programs write them, and of 8 bits with a colour table.
BmpHeaderFields Plain24() {
  BmpHeaderFields fields;
  fields.width = 2;
  fields.height = 2;
  fields.bitsPerPixel = 24;
  fields.fileSize = 54 + 16;
  fields.imageSize = 16;
  return fields;
}

BmpHeaderFields Grey8(int32_t width = 2, int32_t height = 2) {
  BmpHeaderFields fields;
  fields.width = width;
  fields.height = height;
  fields.bitsPerPixel = 8;
  fields.pixelOffset = 1078;
  fields.coloursUsed = 256;
  fields.coloursImportant = 256;
  return fields;
}

BmpHeaderFields BitFields(uint16_t bits) {
  BmpHeaderFields fields = Plain24();
  fields.pixelOffset = 66;
  fields.bitsPerPixel = bits;
  fields.compression = 3;
  return fields;
}

// Lines of 6 bytes and their padding of 2: the lower line first.
const Bytes kPixels24 = {7, 8, 9, 10, 11, 12, 0, 0, 1, 2, 3, 4, 5, 6, 0, 0};
const ModelImage kImage24 = MakeModelImage(kRgb8, 2, 2, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12});

class BmpFiles : public korvel_test::HandmadeFiles {
 protected:
  BmpFiles() : HandmadeFiles(FileType::kBmp) {}

  ReadOutcome Plain(const BmpHeaderFields& fields) const {
    return ReadBytes(Joined({korvel_test::BmpHeader(fields), kPixels24}));
  }
  ReadOutcome Grey(const BmpHeaderFields& fields, const Bytes& pixels) const {
    return ReadBytes(Joined({korvel_test::BmpHeader(fields), korvel_test::GreyColourTable(), pixels}));
  }
  ReadOutcome Masked(const BmpHeaderFields& fields, const Masks& masks) const {
    return ReadBytes(Joined({korvel_test::BmpHeader(fields), korvel_test::BmpMasks(masks), Bytes(64, 9)}));
  }
};

// ------------------------------------------------------------------------------------------------- files from
// elsewhere --

TEST_F(BmpFiles, Of24BitsReadAsTheyCome) { EXPECT_TRUE(Holds(Plain(Plain24()), kImage24)); }

TEST_F(BmpFiles, PlayNoPartWithFieldsThatPixelsDoNotDependOn) {
  for (const uint32_t value : {0u, 1u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
    BmpHeaderFields fields = Plain24();
    fields.fileSize = value;
    fields.imageSize = value;
    fields.resolutionX = fields.resolutionY = value;
    fields.reserved1 = fields.reserved2 = static_cast<uint16_t>(value);
    fields.planes = static_cast<uint16_t>(value);
    EXPECT_TRUE(Holds(Plain(fields), kImage24)) << value;
    fields = Plain24();
    fields.coloursUsed = value;
    EXPECT_TRUE(Holds(Plain(fields), kImage24)) << value;
    fields = Plain24();
    fields.coloursImportant = value;
    EXPECT_TRUE(Holds(Plain(fields), kImage24)) << value;
  }
}

TEST_F(BmpFiles, ReadFromTheTopWhereTheHeightIsBelowZero) {
  BmpHeaderFields fields = Plain24();
  fields.height = -2;
  EXPECT_TRUE(Holds(Plain(fields), MakeModelImage(kRgb8, 2, 2, {7, 8, 9, 10, 11, 12, 1, 2, 3, 4, 5, 6})));
  EXPECT_TRUE(Holds(Grey(Grey8(3, -2), {1, 2, 3, 0, 0, 0, 4, 5, 6}), MakeModelImage(kMono8, 3, 2, {1, 2, 3, 4, 5, 6})));
}

TEST_F(BmpFiles, SkipTheRemainderOfEachLine) {
  // Remainders of 1, 2, 3 and 0 by 4, which are the bytes of padding, whatever they hold.
  EXPECT_TRUE(Holds(Grey(Grey8(5, 2), {1, 2, 3, 4, 5, 99, 6, 7, 8, 9, 10, 99}),
                    MakeModelImage(kMono8, 5, 2, {6, 7, 8, 9, 10, 1, 2, 3, 4, 5})));
  EXPECT_TRUE(Holds(Grey(Grey8(2, 2), {1, 2, 99, 99, 3, 4}), MakeModelImage(kMono8, 2, 2, {3, 4, 1, 2})));
  EXPECT_TRUE(
      Holds(Grey(Grey8(3, 2), {1, 2, 3, 99, 99, 99, 4, 5, 6}), MakeModelImage(kMono8, 3, 2, {4, 5, 6, 1, 2, 3})));
  EXPECT_TRUE(
      Holds(Grey(Grey8(4, 2), {1, 2, 3, 4, 5, 6, 7, 8}), MakeModelImage(kMono8, 4, 2, {5, 6, 7, 8, 1, 2, 3, 4})));
}

TEST_F(BmpFiles, GoToTheOffsetOfThePixels) {
  BmpHeaderFields fields = Plain24();
  for (const uint32_t offset : {54u, 55u, 66u, 100u, 122u, 1078u, 1090u, 5000u}) {
    fields.pixelOffset = offset;
    EXPECT_TRUE(
        Holds(ReadBytes(Joined({korvel_test::BmpHeader(fields), Bytes(offset - 54, 0x77), kPixels24})), kImage24))
        << offset;
  }
  for (const uint32_t offset : {0u, 1u, 40u, 53u, 57u, 70u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
    fields.pixelOffset = offset;
    EXPECT_EQ(Plain(fields).error, IoError(kCannotRead)) << offset;
  }
}

TEST_F(BmpFiles, MayHaveALongerInfoHeader) {
  for (const uint32_t infoSize : {40u, 52u, 56u, 108u, 124u, 0x80000000u, 0xFFFFFFFFu}) {
    BmpHeaderFields fields = Plain24();
    fields.infoSize = infoSize;
    fields.pixelOffset = 14 + 124;
    EXPECT_TRUE(Holds(ReadBytes(Joined({korvel_test::BmpHeader(fields), Bytes(84, 0), kPixels24})), kImage24))
        << infoSize;
  }
  for (const uint32_t infoSize : {0u, 1u, 12u, 39u}) {
    BmpHeaderFields fields = Plain24();
    fields.infoSize = infoSize;
    EXPECT_EQ(Plain(fields).error, IoError(kCannotRead)) << infoSize;
  }
}

TEST_F(BmpFiles, BeginWithBM) {
  for (const uint16_t magic : {uint16_t{0}, uint16_t{1}, uint16_t{0x4D00}, uint16_t{0x0042}, uint16_t{0x424D},
                               uint16_t{0x4D43}, uint16_t{0xFFFF}}) {
    BmpHeaderFields fields = Plain24();
    fields.magic = magic;
    EXPECT_EQ(Plain(fields).error, IoError(kCannotRead)) << magic;
  }
}

// ---------------------------------------------------------------------------------------------------------------
// format --

TEST_F(BmpFiles, TellTheirFormatByMasks) {
  const std::pair<Masks, std::pair<uint16_t, uint32_t>> known[] = {
      {kTenBits, {16, IdOf("Mono10")}},       {kTwelveBits, {16, IdOf("Mono12")}},
      {kRedFirst, {32, IdOf("RGBa8")}},       {kBlueFirst, {32, IdOf("BGRa8")}},
      {kRedFirstTen, {32, IdOf("RGB10p32")}}, {kBlueFirstTen, {32, IdOf("BGR10p32")}},
  };
  for (const auto& [masks, expected] : known) {
    for (const uint16_t bits : kBits) {
      const ReadOutcome outcome = Masked(BitFields(bits), masks);
      if (bits == expected.first) {
        EXPECT_EQ(outcome.code, 0u);
        EXPECT_EQ(outcome.format, expected.second);
      } else {
        EXPECT_EQ(outcome.error, UnsupportedError()) << bits << " bits for " << expected.second;
      }
    }
    // Where a colour table follows the masks, these still tell.
    BmpHeaderFields fields = BitFields(expected.first);
    fields.pixelOffset = 1090;
    const ReadOutcome outcome = ReadBytes(Joined(
        {korvel_test::BmpHeader(fields), korvel_test::BmpMasks(masks), korvel_test::GreyColourTable(), Bytes(20, 1)}));
    EXPECT_EQ(outcome.code, 0u);
    EXPECT_EQ(outcome.format, expected.second);
    // One mask that differs in a bit.
    for (size_t i = 0; i < 3; ++i) {
      Masks other = masks;
      other.at(i) ^= 0x80;
      EXPECT_EQ(Masked(BitFields(expected.first), other).error, UnsupportedError());
    }
  }
  const Masks unknown[] = {{0, 0, 0},
                           {0xFFFF, 0xFFFF, 0xFFFF},
                           {0xF800, 0x7E0, 0x1F},
                           {0x7C00, 0x3E0, 0x1F},
                           {0xFF000000, 0xFF0000, 0xFF00},
                           {0xFF, 0xFF, 0xFF}};
  for (const Masks& masks : unknown) {
    for (const uint16_t bits : kBits) EXPECT_EQ(Masked(BitFields(bits), masks).error, UnsupportedError());
  }
}

TEST_F(BmpFiles, WithBitFieldsNeedMasksWhereTheyAreLookedFor) {
  for (const uint32_t offset : {54u, 67u, 122u, 1078u}) {
    BmpHeaderFields fields = BitFields(32);
    fields.pixelOffset = offset;
    EXPECT_EQ(
        ReadBytes(Joined({korvel_test::BmpHeader(fields), korvel_test::BmpMasks(kRedFirst), Bytes(1200, 0)})).error,
        UnsupportedError())
        << offset;
  }
}

TEST_F(BmpFiles, OfOtherCompressionsAreRefused) {
  for (const uint32_t compression : {1u, 2u, 4u, 5u, 6u, 11u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
    BmpHeaderFields fields = Plain24();
    fields.compression = compression;
    EXPECT_EQ(Plain(fields).error, UnsupportedError()) << compression;
    fields = Grey8();
    fields.compression = compression;
    EXPECT_EQ(Grey(fields, Bytes(8, 1)).error, UnsupportedError()) << compression;
  }
}

TEST_F(BmpFiles, OfBitsThatDoNotFitTheFormatAreRefused) {
  for (const uint16_t bits : kBits) {
    BmpHeaderFields fields = Plain24();
    fields.bitsPerPixel = bits;
    if (bits != 24) {
      EXPECT_EQ(Plain(fields).error, UnsupportedError()) << bits << " bits of colour";
    }
    fields = Grey8();
    fields.bitsPerPixel = bits;
    if (bits != 8) {
      EXPECT_EQ(Grey(fields, Bytes(64, 1)).error, UnsupportedError()) << bits << " bits with a colour table";
    }
  }
}

TEST_F(BmpFiles, OfGreyNeed256InBothColourFields) {
  const Bytes pixels = {1, 2, 0, 0, 3, 4, 0, 0};
  const ModelImage expected = MakeModelImage(kMono8, 2, 2, {3, 4, 1, 2});
  EXPECT_TRUE(Holds(Grey(Grey8(), pixels), expected));
  for (const auto& [used, important] :
       {std::pair<uint32_t, uint32_t>{0, 0}, {256, 0}, {0, 256}, {255, 255}, {256, 257}}) {
    BmpHeaderFields fields = Grey8();
    fields.coloursUsed = used;
    fields.coloursImportant = important;
    EXPECT_EQ(Grey(fields, pixels).error, UnsupportedError()) << used << ", " << important;
  }
  // The colours of the table play no part, nor does where the pixels begin.
  EXPECT_TRUE(Holds(ReadBytes(Joined({korvel_test::BmpHeader(Grey8()), Bytes(1024, 0x5A), pixels})), expected));
  for (const uint32_t offset : {54u, 66u, 70u, 1090u}) {
    BmpHeaderFields fields = Grey8();
    fields.pixelOffset = offset;
    EXPECT_TRUE(Holds(ReadBytes(Joined({korvel_test::BmpHeader(fields), Bytes(offset - 54, 1), pixels})), expected))
        << offset;
  }
}

TEST_F(BmpFiles, Of24BitsAreBlueFirstByTheirMasks) {
  BmpHeaderFields fields = Plain24();
  fields.pixelOffset = 66;
  EXPECT_EQ(Masked(fields, kBlueFirst).format, IdOf("BGR8"));
  for (const Masks& masks : {kRedFirst, Masks{0, 0, 0}, Masks{0xFF0000, 0xFF00, 0xFE}, kTenBits, kRedFirstTen}) {
    EXPECT_EQ(Masked(fields, masks).format, kRgb8);
  }
  fields.pixelOffset = 1090;
  EXPECT_EQ(
      ReadBytes(Joined({korvel_test::BmpHeader(fields), korvel_test::BmpMasks(kBlueFirst), Bytes(1100, 0)})).format,
      kRgb8)
      << "only where nothing but the masks comes before the pixels";
}

TEST_F(BmpFiles, AreReadAsBayerWhereTheyAreMono) {
  const Bytes grey = Joined({korvel_test::BmpHeader(Grey8()), korvel_test::GreyColourTable(), Bytes(8, 5)});
  EXPECT_EQ(ReadBytesAs(grey, IdOf("BayerGB8")).format, IdOf("BayerGB8"));
  EXPECT_EQ(ReadBytesAs(grey, IdOf("BayerGB10")).error, InterpretationError());
  const Bytes ten = Joined({korvel_test::BmpHeader(BitFields(16)), korvel_test::BmpMasks(kTenBits), Bytes(8, 5)});
  EXPECT_EQ(ReadBytesAs(ten, IdOf("BayerGB10")).format, IdOf("BayerGB10"));
  EXPECT_EQ(ReadBytesAs(ten, IdOf("BayerGB12")).error, InterpretationError());
  EXPECT_EQ(ReadBytesAs(ten, IdOf("BayerGB10p")).error, InterpretationError());
}

// ----------------------------------------------------------------------------------------------------------------
// sizes --

TEST_F(BmpFiles, OfImpossibleSizesAreRefused) {
  for (const auto& [width, height] : {std::pair<int32_t, int32_t>{0, 2},
                                      {-1, 2},
                                      {-2, -2},
                                      {kLowest, 2},
                                      {2, 0},
                                      {2, kLowest},
                                      {kHighest, 2},
                                      {2, kHighest},
                                      {kHighest, kHighest},
                                      {kHighest, -kHighest},
                                      {2, -kHighest},
                                      {3, 2},
                                      {2, 3},
                                      {2, -3},
                                      {0, 0},
                                      {65536, 65536},
                                      {1 << 30, 4},
                                      {1 << 30, 1 << 2}}) {
    BmpHeaderFields fields = Plain24();
    fields.width = width;
    fields.height = height;
    EXPECT_EQ(Plain(fields).error, IoError(kCannotRead)) << width << "x" << height;
  }
}

TEST_F(BmpFiles, AreCheckedForTheFormatThenTheRequestThenTheSizes) {
  BmpHeaderFields fields = Plain24();
  fields.width = 0;
  fields.compression = 1;
  EXPECT_EQ(ReadBytesAs(Joined({korvel_test::BmpHeader(fields), kPixels24}), kMono8).error, UnsupportedError());
  fields.compression = 0;
  EXPECT_EQ(ReadBytesAs(Joined({korvel_test::BmpHeader(fields), kPixels24}), kMono8).error, InterpretationError());
  EXPECT_EQ(ReadBytesAs(Joined({korvel_test::BmpHeader(fields), kPixels24}), kRgb8).error, IoError(kCannotRead));
}

TEST_F(BmpFiles, AreRefusedWhereverTheyAreCut) {
  const Bytes plain = Joined({korvel_test::BmpHeader(Plain24()), kPixels24});
  const Bytes masked = Joined({korvel_test::BmpHeader(BitFields(32)), korvel_test::BmpMasks(kRedFirst), Bytes(16, 1)});
  const Bytes grey =
      Joined({korvel_test::BmpHeader(Grey8()), korvel_test::GreyColourTable(), {1, 2, 0, 0, 3, 4, 0, 0}});
  BmpHeaderFields both = BitFields(16);
  both.pixelOffset = 1090;
  const Bytes table = Joined(
      {korvel_test::BmpHeader(both), korvel_test::BmpMasks(kTenBits), korvel_test::GreyColourTable(), Bytes(8, 1)});
  const std::pair<Bytes, size_t> files[] = {{plain, 2}, {masked, 0}, {grey, 2}, {table, 0}};
  for (const auto& [file, lastPadding] : files) {
    for (size_t size = 0; size < file.size() - lastPadding; ++size) {
      EXPECT_EQ(ReadBytes(FirstBytes(file, size)).error, IoError(kCannotRead)) << size << " of " << file.size();
    }
    for (size_t size = file.size() - lastPadding; size <= file.size(); ++size) {
      EXPECT_EQ(ReadBytes(FirstBytes(file, size)).code, 0u) << size << " of " << file.size();
    }
    EXPECT_EQ(ReadBytes(Joined({file, {1, 2, 3}})).code, 0u) << "bytes behind the pixels don't count";
  }
}

TEST_F(BmpFiles, AboveTheLimitAreRefused) {
  const AllocationLimit limit(1000);
  EXPECT_EQ(Grey(Grey8(40, 25), Bytes(1000, 1)).code, 0u);
  EXPECT_EQ(Grey(Grey8(40, 26), Bytes(1040, 1)).error, IoError(kCannotRead));
  EXPECT_EQ(Grey(Grey8(40, -26), Bytes(1040, 1)).error, IoError(kCannotRead));
}

// ---------------------------------------------------------------------------------------------------------------
// writer --

class BmpWriter : public BmpFiles {
 protected:
  BMPHeader HeaderOf(img::PixelFormatId format, size_t width, size_t height) const {
    return BMPHeader::imgToHeader(*korvel_test::TestImage(format, width, height));
  }
};

TEST_F(BmpWriter, WritesTheLinesThatItIsGiven) {
  BMPWriter writer(HeaderOf(img::PixelFormatId::Mono8, 3, 2), Path());
  const uint8_t lines[] = {4, 5, 6, 1, 2, 3};
  writer.AppendImageLine(lines, 3);
  writer.AppendImageLine(lines + 3, 3);
  writer.Write();
  EXPECT_EQ(korvel_test::ContentOf(Path()), korvel_test::BmpFile(MakeModelImage(kMono8, 3, 2, {1, 2, 3, 4, 5, 6})));
}

TEST_F(BmpWriter, RefusesALineBeyondTheFile) {
  BMPWriter writer(HeaderOf(img::PixelFormatId::Mono8, 2, 2), Path());
  const Bytes line(100, 1);
  const auto overflow = [&](size_t bytes) {
    const std::optional<LocatedFailure> failure = LocatedFailureOf([&] { writer.AppendImageLine(line.data(), bytes); });
    ASSERT_TRUE(failure.has_value()) << bytes;
    EXPECT_EQ(failure->status, 3);
    EXPECT_EQ(failure->module, 9001);
    EXPECT_EQ(failure->text, "File buffer overflow!");
    EXPECT_THAT(failure->location, HasSubstr("img::io::bmp::BMPWriter::AppendImageLine("));
  };
  overflow(9);
  overflow(100);
  overflow(std::numeric_limits<size_t>::max());
  overflow(std::numeric_limits<size_t>::max() - 1078);
  writer.AppendImageLine(line.data(), 2);
  overflow(3);  // with its padding of 3
  overflow(5);
  writer.AppendImageLine(line.data(), 2);
  overflow(1);
  writer.Write();
}

TEST_F(BmpWriter, TellsWhatIsMissing) {
  BMPWriter writer(HeaderOf(img::PixelFormatId::Mono8, 2, 2), Path());
  const uint8_t line[] = {1, 2};
  writer.AppendImageLine(line, 2);
  const std::optional<LocatedFailure> failure = LocatedFailureOf([&] { writer.Write(); });
  ASSERT_TRUE(failure.has_value());
  EXPECT_EQ(failure->status, 3);
  EXPECT_EQ(failure->module, 9001);
  EXPECT_EQ(failure->text, "Image data incomplete! m_dataOffset=1082 file_size=1086");
  EXPECT_THAT(failure->location, HasSubstr("img::io::bmp::BMPWriter::Write("));
}

TEST_F(BmpWriter, TellsThatTheFileCannotBeOpened) {
  const std::optional<LocatedFailure> failure =
      LocatedFailureOf([&] { BMPWriter(HeaderOf(img::PixelFormatId::Mono8, 2, 2), "/no such directory/a.bmp"); });
  ASSERT_TRUE(failure.has_value());
  EXPECT_EQ(failure->text, korvel_test::kCannotOpen);
  EXPECT_THAT(failure->location, HasSubstr("img::io::bmp::BMPWriter"));
}

}  // namespace
