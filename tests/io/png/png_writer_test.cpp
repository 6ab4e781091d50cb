#include "io/png/png_writer.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <png.h>
#include <unistd.h>

#include <csetjmp>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "io/output_file.h"
#include "io/png/png_header.h"
#include "tests/support/raw_formats.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/test_images.h"

namespace {

using img::PixelFormatId;
using img::io::PNGParameter;
using img::io::png::PNGHeader;
using img::io::png::PNGWriter;
using korvel_test::Bytes;
using korvel_test::Failure;
using korvel_test::FailureOf;
using korvel_test::TemporaryDirectory;
using korvel_test::TestImage;
using korvel_test::Words;
using testing::ElementsAre;
using testing::IsEmpty;

using enum PixelFormatId;

// A file as it stands, read without any transformation.
struct PngFile {
  unsigned width = 0;
  unsigned height = 0;
  int depth = 0;
  int colourType = 0;
  int interlace = 0;
  std::vector<int> significantBits;  // grey, or red, green, blue and alpha; empty without the chunk
  Bytes rows;                        // 16-bit samples with the high byte first
  bool hasOtherChunks = false;
  int zlibLevelClass = 0;  // the second byte of the zlib stream tells it: 0 fastest to 3 slowest
};

PngFile ReadPng(const std::string& path) {
  PngFile result;
  const std::unique_ptr<FILE, int (*)(FILE*)> file(std::fopen(path.c_str(), "rb"), std::fclose);
  if (!file) throw std::runtime_error("no file " + path);
  png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  png_infop info = png_create_info_struct(png);
  std::vector<png_bytep> rows;
  if (setjmp(png_jmpbuf(png)) != 0) {
    png_destroy_read_struct(&png, &info, nullptr);
    throw std::runtime_error("not a png file: " + path);
  }
  png_init_io(png, file.get());
  png_read_info(png, info);
  result.width = png_get_image_width(png, info);
  result.height = png_get_image_height(png, info);
  result.depth = png_get_bit_depth(png, info);
  result.colourType = png_get_color_type(png, info);
  result.interlace = png_get_interlace_type(png, info);
  png_color_8p bits = nullptr;
  if (png_get_sBIT(png, info, &bits) != 0) {
    if (result.colourType == 0) {
      result.significantBits = {bits->gray};
    } else {
      result.significantBits = {bits->red, bits->green, bits->blue};
      if (result.colourType == 6) result.significantBits.push_back(bits->alpha);
    }
  }
  const size_t rowBytes = png_get_rowbytes(png, info);
  result.rows.resize(rowBytes * result.height);
  for (size_t y = 0; y < result.height; ++y) rows.push_back(result.rows.data() + y * rowBytes);
  png_read_image(png, rows.data());
  png_read_end(png, info);
  result.hasOtherChunks = png_get_valid(png, info, PNG_INFO_gAMA | PNG_INFO_tIME | PNG_INFO_pHYs | PNG_INFO_cHRM) != 0;
  png_destroy_read_struct(&png, &info, nullptr);

  std::string raw(std::filesystem::file_size(path), 0);
  std::rewind(file.get());
  if (std::fread(raw.data(), 1, raw.size(), file.get()) != raw.size()) throw std::runtime_error("short file");
  const size_t data = raw.find("IDAT");
  result.zlibLevelClass = static_cast<uint8_t>(raw.at(data + 5)) >> 6;
  return result;
}

class PngWriterTest : public testing::Test {
 protected:
  PngFile Write(const TestImage& image, uint32_t quality = 100) {
    PNGWriter::writeImage(path, *image, PNGParameter(quality));
    return ReadPng(path);
  }
  std::optional<Failure> FailureOfQuality(uint32_t quality) {
    const TestImage image(Mono8, 20, 20, Bytes(400, 7));
    return FailureOf([&] { PNGWriter::writeImage(path, *image, PNGParameter(quality)); });
  }

  TemporaryDirectory directory;
  std::string path = directory.File("image.png");
};

struct Row {
  PixelFormatId format;
  int colourType;
  int depth;
  int significant;  // 0 without the chunk
  bool blueFirst;
};

const Row kRows[] = {
    {Mono8, 0, 8, 0, false},       {BayerRG8, 0, 8, 0, false},    {BayerGR8, 0, 8, 0, false},
    {BayerGB8, 0, 8, 0, false},    {BayerBG8, 0, 8, 0, false},    {Mono10, 0, 16, 10, false},
    {BayerRG10, 0, 16, 10, false}, {BayerGR10, 0, 16, 10, false}, {BayerGB10, 0, 16, 10, false},
    {BayerBG10, 0, 16, 10, false}, {Mono12, 0, 16, 12, false},    {BayerRG12, 0, 16, 12, false},
    {BayerGR12, 0, 16, 12, false}, {BayerGB12, 0, 16, 12, false}, {BayerBG12, 0, 16, 12, false},
    {RGB8, 2, 8, 0, false},        {BGR8, 2, 8, 0, true},         {RGBa8, 6, 8, 0, false},
    {BGRa8, 6, 8, 0, true},        {RGB10, 2, 16, 10, false},     {RGB12, 2, 16, 12, false},
    {BGR10, 2, 16, 10, true},      {BGR12, 2, 16, 12, true},      {RGBa10, 6, 16, 10, false},
    {RGBa12, 6, 16, 12, false},    {BGRa10, 6, 16, 10, true},     {BGRa12, 6, 16, 12, true},
};

TEST_F(PngWriterTest, HasAHeaderForEachFormat) {
  for (const Row& row : kRows) {
    SCOPED_TRACE(img::PixelFormatInfo_Name(row.format));
    const TestImage image(row.format, 3, 2, Bytes(img::PixelFormatInfo_CalcSizeOfPixels(row.format, 6), 0));
    const PNGHeader header = PNGHeader::imgToHeader(*image);
    EXPECT_EQ(header.width, 3u);
    EXPECT_EQ(header.height, 2u);
    EXPECT_EQ(header.bitDepth, row.depth);
    EXPECT_EQ(header.colourType, row.colourType);
    EXPECT_EQ(header.isBlueFirst, row.blueFirst);
    EXPECT_EQ(header.hasSignificantBits, row.significant != 0);
    const PngFile file = Write(image);
    EXPECT_EQ(file.width, 3u);
    EXPECT_EQ(file.height, 2u);
    EXPECT_EQ(file.depth, row.depth);
    EXPECT_EQ(file.colourType, row.colourType);
    EXPECT_EQ(file.interlace, PNG_INTERLACE_NONE);
    EXPECT_FALSE(file.hasOtherChunks);
    const size_t channels = row.colourType == 0 ? 1 : row.colourType == 2 ? 3 : 4;
    EXPECT_EQ(file.significantBits, std::vector<int>(row.significant == 0 ? 0 : channels, row.significant));
  }
}

TEST_F(PngWriterTest, RefusesEveryOtherFormat) {
  size_t refused = 0;
  for (const PixelFormatId format : korvel_test::kPublicFormats) {
    bool isRow = false;
    for (const Row& row : kRows) isRow = isRow || row.format == format;
    if (isRow) continue;
    ++refused;
    const TestImage image(format, 3, 2);
    EXPECT_EQ(FailureOf([&] { PNGWriter::writeImage(path, *image, PNGParameter()); }),
              (Failure{7, 9001, "Unsupported pixel format"}));
  }
  EXPECT_EQ(refused, 22u);
  const TestImage none(Invalid, 3, 2);
  EXPECT_EQ(FailureOf([&] { PNGWriter::writeImage(path, *none, PNGParameter()); }),
            (Failure{7, 9001, "Unsupported pixel format"}));
  EXPECT_FALSE(std::filesystem::exists(path)) << "nothing is opened before";
}

TEST_F(PngWriterTest, WritesSamplesOf8BitsAsTheyAre) {
  EXPECT_THAT(Write(TestImage(Mono8, 2, 2, Bytes{0, 1, 128, 255})).rows, ElementsAre(0, 1, 128, 255));
  EXPECT_THAT(Write(TestImage(BayerGB8, 3, 1, Bytes{1, 2, 3})).rows, ElementsAre(1, 2, 3));
  EXPECT_THAT(Write(TestImage(RGB8, 2, 1, Bytes{1, 2, 3, 4, 5, 6})).rows, ElementsAre(1, 2, 3, 4, 5, 6));
  EXPECT_THAT(Write(TestImage(BGR8, 2, 1, Bytes{1, 2, 3, 4, 5, 6})).rows, ElementsAre(3, 2, 1, 6, 5, 4));
  EXPECT_THAT(Write(TestImage(RGBa8, 1, 1, Bytes{1, 2, 3, 4})).rows, ElementsAre(1, 2, 3, 4));
  EXPECT_THAT(Write(TestImage(BGRa8, 1, 1, Bytes{1, 2, 3, 4})).rows, ElementsAre(3, 2, 1, 4));
}

// The samples of the file, without the bits below the significant ones.
Words TopBits(const PngFile& file) {
  const int significant = file.significantBits.at(0);
  Words samples;
  for (size_t i = 0; i < file.rows.size(); i += 2) {
    samples.push_back(static_cast<uint16_t>((file.rows[i] << 8 | file.rows[i + 1]) >> (16 - significant)));
  }
  return samples;
}

TEST_F(PngWriterTest, ShiftsSamplesToTheTopOf16Bits) {
  const PngFile mono = Write(TestImage(Mono12, 1, 1, Words{0xABC}));
  EXPECT_EQ(mono.rows.at(0), 0xAB);
  EXPECT_EQ(mono.rows.at(1) >> 4, 0xC);
  EXPECT_THAT(TopBits(mono), ElementsAre(0xABC));
  EXPECT_THAT(TopBits(Write(TestImage(Mono10, 2, 2, Words{0, 1, 0x2AB, 1023}))), ElementsAre(0, 1, 0x2AB, 1023));
  EXPECT_THAT(TopBits(Write(TestImage(BayerRG12, 2, 1, Words{1, 4095}))), ElementsAre(1, 4095));
  EXPECT_THAT(TopBits(Write(TestImage(RGB12, 1, 1, Words{0x123, 0x456, 0x789}))), ElementsAre(0x123, 0x456, 0x789));
  EXPECT_THAT(TopBits(Write(TestImage(BGR10, 1, 1, Words{1, 2, 1023}))), ElementsAre(1023, 2, 1));
  EXPECT_THAT(TopBits(Write(TestImage(RGBa10, 1, 1, Words{1, 2, 3, 1023}))), ElementsAre(1, 2, 3, 1023));
  EXPECT_THAT(TopBits(Write(TestImage(BGRa12, 1, 1, Words{1, 2, 3, 255}))), ElementsAre(3, 2, 1, 255));
}

TEST_F(PngWriterTest, TurnsTheQualityIntoACompressionLevel) {
  const TestImage image(Mono8, 64, 64, Bytes(4096, 7));
  Write(image, 100);
  EXPECT_GT(std::filesystem::file_size(path), 4096u) << "level 0 stores";
  // The classes that zlib writes: 0 for levels 0 and 1, 1 for 2 to 5, 2 for 6, 3 for 7 to 9.
  const std::pair<uint32_t, int> classes[] = {{100, 0}, {91, 0}, {90, 0}, {89, 1}, {80, 1}, {55, 1}, {50, 1},
                                              {49, 2},  {40, 2}, {39, 3}, {30, 3}, {10, 3}, {5, 3},  {1, 3}};
  for (const auto& [quality, expected] : classes) {
    const PngFile file = Write(image, quality);
    EXPECT_EQ(file.rows, Bytes(4096, 7));
    EXPECT_EQ(file.zlibLevelClass, expected) << "quality " << quality;
    if (quality < 100) {
      EXPECT_LT(std::filesystem::file_size(path), 4096u);
    }
  }
}

TEST_F(PngWriterTest, RefusesAQualityWithoutALevel) {
  const Failure failure{3, 9001, "Could not write png image data."};
  for (const uint32_t quality : {0u, 120u, 300u, 0x7FFFFFFFu, 0x80000000u, 0x80000001u, 0xFFFFFFFFu, 0xFFFFFFF6u}) {
    EXPECT_EQ(FailureOfQuality(quality), failure) << quality;
  }
  for (const uint32_t quality : {1u, 9u, 10u, 100u, 109u})
    EXPECT_EQ(FailureOfQuality(quality), std::nullopt) << quality;
}

TEST_F(PngWriterTest, RefusesAnImageThatTheHeaderHasNoRoomFor) {
  const TestImage wide(Mono8, 1000001, 1, Bytes(1000001, 0));
  EXPECT_EQ(FailureOf([&] { PNGWriter::writeImage(path, *wide, PNGParameter()); }),
            (Failure{3, 9001, "Error during writing png header."}));
}

TEST_F(PngWriterTest, TellsThatAFileCannotBeOpened) {
  const Failure failure{3, 9001, "Error opening file. Check name and file permissions."};
  const TestImage image(Mono8, 1, 1, Bytes{1});
  for (const std::string& where : {directory.File("missing/a.png"), directory.Path(), std::string("/proc/a.png"),
                                   std::string(), std::string("a\0b.png", 7)}) {
    EXPECT_EQ(FailureOf([&] { PNGWriter::writeImage(where, *image, PNGParameter()); }), failure) << where;
  }
  if (geteuid() == 0) return;  // who may write everywhere
  std::filesystem::permissions(directory.Path(), std::filesystem::perms::owner_read);
  EXPECT_EQ(FailureOf([&] { PNGWriter::writeImage(path, *image, PNGParameter()); }), failure);
}

TEST_F(PngWriterTest, TellsThatADiskIsFull) {
  std::filesystem::create_symlink("/dev/full", path);
  // So little that it waits in the file's buffer until the end.
  const TestImage small(Mono8, 1, 1, Bytes{1});
  EXPECT_EQ(FailureOf([&] { PNGWriter::writeImage(path, *small, PNGParameter()); }),
            (Failure{3, 9001, "Error writing file."}));
  const TestImage large(Mono8, 1000, 1000, Bytes(1000000, 1));
  EXPECT_EQ(FailureOf([&] { PNGWriter::writeImage(path, *large, PNGParameter()); }),
            (Failure{3, 9001, "Could not write png image data."}));
}

TEST_F(PngWriterTest, LeavesNoDescriptorBehind) {
  const TestImage image(Mono8, 20, 20, Bytes(400, 7));
  const TestImage packed(Mono10p, 4, 1);
  std::filesystem::create_symlink("/dev/full", directory.File("full.png"));
  const size_t before = korvel_test::OpenDescriptors();
  for (int i = 0; i < 1000; ++i) {
    EXPECT_TRUE(FailureOf([&] { PNGWriter::writeImage(path, *image, PNGParameter(0)); }).has_value());
    EXPECT_TRUE(
        FailureOf([&] { PNGWriter::writeImage(directory.File("full.png"), *image, PNGParameter()); }).has_value());
    EXPECT_TRUE(FailureOf([&] { PNGWriter::writeImage(path, *packed, PNGParameter()); }).has_value());
    EXPECT_TRUE(FailureOf([&] { PNGWriter::writeImage("/proc/a.png", *image, PNGParameter()); }).has_value());
  }
  for (int i = 0; i < 20; ++i) PNGWriter::writeImage(path, *image, PNGParameter());
  EXPECT_EQ(korvel_test::OpenDescriptors(), before);
}

TEST_F(PngWriterTest, PrintsNothing) {
  testing::internal::CaptureStderr();
  testing::internal::CaptureStdout();
  EXPECT_TRUE(FailureOfQuality(0).has_value());
  const TestImage wide(Mono8, 1000001, 1, Bytes(1000001, 0));
  EXPECT_TRUE(FailureOf([&] { PNGWriter::writeImage(path, *wide, PNGParameter()); }).has_value());
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(OutputFile, IsNotHandedOnToOtherPrograms) {
  const TemporaryDirectory directory;
  img::io::OutputFile file(directory.File("a"));
  ASSERT_TRUE(file.IsOpen());
  EXPECT_NE(fcntl(fileno(file.Get()), F_GETFD) & FD_CLOEXEC, 0);
  EXPECT_TRUE(file.Close());
}

TEST(PngCompressionLevel, FollowsTheQualityAsASignedNumber) {
  EXPECT_EQ(img::io::png::PNGWriter::CompressionLevel(100), 0);
  EXPECT_EQ(img::io::png::PNGWriter::CompressionLevel(55), 5);
  EXPECT_EQ(img::io::png::PNGWriter::CompressionLevel(10), 9);
  EXPECT_EQ(img::io::png::PNGWriter::CompressionLevel(1), 9) << "divisions truncate toward zero";
  EXPECT_EQ(img::io::png::PNGWriter::CompressionLevel(0), 10);
  EXPECT_EQ(img::io::png::PNGWriter::CompressionLevel(300), -20);
  EXPECT_EQ(img::io::png::PNGWriter::CompressionLevel(0xFFFFFFFF), 10);
  EXPECT_EQ(img::io::png::PNGWriter::CompressionLevel(0x80000000), 214748374);
  EXPECT_EQ(img::io::png::PNGWriter::CompressionLevel(0x7FFFFFFF), -214748354);
}

}  // namespace
