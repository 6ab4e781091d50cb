#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <limits>

#include "tests/model/file_model.h"
#include "tests/support/handmade_files.h"

namespace {

using korvel_test::AllocationLimit;
using korvel_test::Bytes;
using korvel_test::FileType;
using korvel_test::FirstBytes;
using korvel_test::Holds;
using korvel_test::IdOf;
using korvel_test::InterpretationError;
using korvel_test::IoError;
using korvel_test::Joined;
using korvel_test::kCannotRead;
using korvel_test::LastError;
using korvel_test::MakeFilledImage;
using korvel_test::MakeModelImage;
using korvel_test::ModelImage;
using korvel_test::RawFile;
using korvel_test::RawHeader;

constexpr uint32_t kMono8 = IdOf("Mono8");
constexpr uint64_t kHuge = std::numeric_limits<uint64_t>::max();

LastError OutOfRange(const std::string& text) { return {6, "error: type=OutOfRange[6], module_id=9000, txt=" + text}; }

LastError UnknownFormat(uint32_t id) {
  return {1,
          "error: type=InvalidParameterUtilx[-1009], module_id=9000, txt=Unsupported formatId: " + std::to_string(id)};
}

class RawFiles : public korvel_test::HandmadeFiles {
 protected:
  RawFiles() : HandmadeFiles(FileType::kRaw) {}
};

TEST_F(RawFiles, HoldTheirPixelsInEveryFormat) {
  for (const uint32_t format : korvel_test::PublicFormats()) {
    SCOPED_TRACE(korvel_test::FormatOf(format).name);
    const ModelImage image = MakeFilledImage(format, 5, 3, korvel_test::Fill::kGarbage, format);
    const Bytes file = RawFile(image);
    EXPECT_TRUE(Holds(ReadBytes(file), image));
    EXPECT_EQ(ReadBytes(FirstBytes(file, file.size() - 1)).error, IoError(kCannotRead)) << "a byte is missing";
    EXPECT_TRUE(Holds(ReadBytes(Joined({file, {1, 2, 3}})), image)) << "bytes behind the pixels don't count";
    const size_t bytes = image.bytes.size();
    for (const uint64_t wrong : {uint64_t{0}, uint64_t{bytes - 1}, uint64_t{bytes + 1}, kHuge}) {
      EXPECT_EQ(ReadBytes(Joined({RawHeader(format, wrong, 5, 3), image.bytes, {1, 2, 3}})).error,
                IoError(kCannotRead));
    }
    EXPECT_EQ(ReadBytes(Joined({RawHeader(format, bytes, 5, 4), image.bytes})).error, IoError(kCannotRead));
    EXPECT_EQ(ReadBytes(Joined({RawHeader(format, bytes, 4, 3), image.bytes})).error, IoError(kCannotRead));
  }
}

TEST_F(RawFiles, AreRefusedWithoutTheirHead) {
  const Bytes file = RawFile(MakeModelImage(kMono8, 1, 1, {7}));
  for (size_t size = 0; size < file.size(); ++size) {
    EXPECT_EQ(ReadBytes(FirstBytes(file, size)).error, IoError(kCannotRead)) << size;
  }
}

TEST_F(RawFiles, AreRefusedWithSizesOfZero) {
  EXPECT_EQ(ReadBytes(RawHeader(kMono8, 0, 0, 3)).error, OutOfRange("Width must not be 0!"));
  EXPECT_EQ(ReadBytes(RawHeader(kMono8, 0, 3, 0)).error, OutOfRange("Height must not be 0!"));
  EXPECT_EQ(ReadBytes(RawHeader(IdOf("BGRa12"), 0, 0, 0)).error, OutOfRange("Width must not be 0!"));
  EXPECT_EQ(ReadBytes(RawHeader(kMono8, 0, kHuge, 0)).error, OutOfRange("Height must not be 0!"));
}

TEST_F(RawFiles, AreRefusedWhereSizesOverflow) {
  for (const uint32_t format : korvel_test::PublicFormats()) {
    SCOPED_TRACE(korvel_test::FormatOf(format).name);
    // Products and byte counts that are 0 or small when they wrap at 64 bits.
    const uint64_t half = uint64_t{1} << 32;
    for (const auto& [width, height] : {std::pair<uint64_t, uint64_t>{half, half},
                                        {half * 2, half / 2},
                                        {half, half + 1},
                                        {kHuge, 1},
                                        {1, kHuge},
                                        {kHuge, kHuge},
                                        {uint64_t{1} << 63, 2},
                                        {uint64_t{1} << 61, 1},
                                        {uint64_t{1} << 61, 8},
                                        {kHuge / 10 + 1, 1},
                                        {kHuge / 12 + 1, 1},
                                        {kHuge / 3 + 1, 1},
                                        {kHuge / 6 + 1, 1}}) {
      for (const uint64_t bytes : {uint64_t{0}, uint64_t{1}, width * height, kHuge}) {
        EXPECT_EQ(ReadBytes(Joined({RawHeader(format, bytes, width, height), Bytes(64, 1)})).error,
                  IoError(kCannotRead))
            << width << "x" << height << " in " << bytes;
      }
    }
  }
}

TEST_F(RawFiles, AreRefusedWithFormatsThatAreNotPublic) {
  for (const korvel_test::FormatRow& row : korvel_test::kFormatTable) {
    if (korvel_test::IsPublicFormat(row) || row.id == 0) continue;
    EXPECT_EQ(ReadBytes(Joined({RawHeader(row.id, 24, 2, 2), Bytes(24, 1)})).error, UnknownFormat(row.id));
    EXPECT_EQ(ReadBytes(RawHeader(row.id, kHuge, kHuge, kHuge)).error, UnknownFormat(row.id)) << "before any size";
    EXPECT_EQ(ReadBytes(RawHeader(row.id, 0, 0, 0)).error, UnknownFormat(row.id));
  }
  for (const uint32_t unknown : {1u, 0x01080002u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
    EXPECT_EQ(ReadBytes(RawHeader(unknown, 4, 2, 2)).error, UnknownFormat(unknown));
  }
  EXPECT_EQ(ReadBytes(Joined({RawHeader(0, 4, 2, 2), Bytes(4, 1)})).error, IoError(kCannotRead)) << "Invalid";
  EXPECT_EQ(ReadBytes(RawHeader(0, 0, 0, 0)).error, IoError(kCannotRead));
}

TEST_F(RawFiles, OfMipiLayoutsAreNotTakenForMono) {
  const ModelImage image = MakeFilledImage(IdOf("BayerGB10g40Qrv"), 4, 1, korvel_test::Fill::kRandom, 1);
  EXPECT_TRUE(Holds(ReadBytesAs(RawFile(image), image.format), image));
  EXPECT_EQ(ReadBytesAs(RawFile(image), IdOf("Mono10g40Qrv")).error, InterpretationError());
  EXPECT_EQ(ReadBytesAs(RawFile(image), IdOf("Mono10p")).error, InterpretationError());
}

TEST_F(RawFiles, AboveTheLimitAreRefused) {
  const AllocationLimit limit(1000);
  const ModelImage fits = MakeFilledImage(kMono8, 40, 25, korvel_test::Fill::kRandom, 1);
  EXPECT_TRUE(Holds(ReadBytes(RawFile(fits)), fits));
  const ModelImage above = MakeFilledImage(kMono8, 1001, 1, korvel_test::Fill::kRandom, 1);
  EXPECT_EQ(ReadBytes(RawFile(above)).error, IoError(kCannotRead));
}

TEST_F(RawFiles, OfManyEmptyBytesAreRefusedBeforeMemoryIsTaken) {
  // A terabyte that takes no room on the disk.
  const uint64_t bytes = uint64_t{1} << 40;
  korvel_test::WriteFile(Path(), RawHeader(kMono8, bytes, bytes, 1));
  std::error_code tooLarge;
  std::filesystem::resize_file(Path(), bytes + korvel_test::kRawHeaderBytes, tooLarge);
  if (tooLarge) GTEST_SKIP() << "the file system has no files of this size";
  EXPECT_EQ(korvel_test::Read(Path()).error, IoError(kCannotRead));
}

}  // namespace
