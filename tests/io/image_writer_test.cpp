#include "io/image_writer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "io/file_ending.h"
#include "io/png/png_output.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/test_images.h"

namespace {

using img::PixelFormatId;
using img::io::FileFormat;
using img::io::ImageWriter;
using img::io::ImgParameter;
using img::io::LowerCaseEnding;
using img::io::PNGParameter;
using korvel_test::Bytes;
using korvel_test::Failure;
using korvel_test::FailureOf;
using korvel_test::TemporaryDirectory;
using korvel_test::TestImage;

using enum PixelFormatId;

const Failure kNoDirectory{3, 9001, "ImageWriter: FileDirectory invalid!"};
const Failure kUnknownFormat{3, 9001, "ImageWriter: Unknown file format invalid!"};
const Failure kWrongEnding{3, 9001, "ImageWriter: FileFormat is incorrect to file ending!"};
const Failure kCannotOpen{3, 9001, "Error opening file. Check name and file permissions."};
const Failure kUnsupported{7, 9001, "Unsupported pixel format"};

// A parameter of any file type, known or not.
struct OfType : ImgParameter {
  explicit OfType(FileFormat format) : ImgParameter(format) {}
};

class ImageWriterTest : public testing::Test {
 protected:
  std::optional<Failure> Write(const std::string& path, const ImgParameter& parameter = PNGParameter()) {
    return FailureOf([&] { ImageWriter::writeImage(*image, path, parameter); });
  }
  std::optional<Failure> WriteByEnding(const std::string& path) {
    return FailureOf([&] { ImageWriter::writeImage(*image, path); });
  }
  static bool IsPng(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::string first(8, 0);
    file.read(first.data(), 8);
    return first == "\x89PNG\r\n\x1a\n";
  }

  TemporaryDirectory directory;
  TestImage image{Mono8, 2, 2, Bytes{1, 2, 3, 4}};
};

TEST(LowerCaseEnding, TakesTheLastDotOfTheFileName) {
  EXPECT_EQ(LowerCaseEnding("a.png"), ".png");
  EXPECT_EQ(LowerCaseEnding("a.PnG"), ".png");
  EXPECT_EQ(LowerCaseEnding("a.b.PNG"), ".png");
  EXPECT_EQ(LowerCaseEnding("dir.png/a"), "");
  EXPECT_EQ(LowerCaseEnding("a"), "");
  EXPECT_EQ(LowerCaseEnding(".png"), "") << "a hidden file without an ending";
  EXPECT_EQ(LowerCaseEnding("a."), ".");
  EXPECT_EQ(LowerCaseEnding(""), "");
  EXPECT_EQ(LowerCaseEnding("a.\xC4\xFF"), ".\xC4\xFF");
  EXPECT_EQ(LowerCaseEnding(std::string("a.png\0", 6)), std::string(".png\0", 5));
}

TEST_F(ImageWriterTest, PicksTheTypeFromTheEnding) {
  EXPECT_EQ(WriteByEnding(directory.File("a.png")), std::nullopt);
  EXPECT_EQ(WriteByEnding(directory.File("b.PNG")), std::nullopt);
  EXPECT_TRUE(IsPng(directory.File("a.png")));
  EXPECT_TRUE(IsPng(directory.File("b.PNG")));
  for (const char* name : {"a", "a.tif", "a.png.", "a.pn", ".png", "a.png "}) {
    EXPECT_EQ(WriteByEnding(directory.File(name)), kUnknownFormat) << name;
    EXPECT_FALSE(std::filesystem::exists(directory.File(name))) << name;
  }
}

TEST_F(ImageWriterTest, WantsTheEndingOfTheGivenType) {
  EXPECT_EQ(Write(directory.File("a.Png")), std::nullopt);
  for (const char* name : {"a.bmp", "a", "a.raw", "a.jpg", ".png"}) {
    EXPECT_EQ(Write(directory.File(name)), kWrongEnding) << name;
    EXPECT_FALSE(std::filesystem::exists(directory.File(name))) << name;
  }
}

TEST_F(ImageWriterTest, WantsADirectoryThatExists) {
  for (const std::string& path :
       {directory.File("missing/a.png"), directory.File("missing/a"), std::string("/no such directory/a.png")}) {
    EXPECT_EQ(Write(path), kNoDirectory) << path;
    EXPECT_EQ(WriteByEnding(path), kNoDirectory) << path;
  }
  std::ofstream(directory.File("file")) << "x";
  EXPECT_EQ(Write(directory.File("file/a.png")), kNoDirectory) << "a file is no directory";
}

TEST_F(ImageWriterTest, ChecksTheDirectoryThenTheTypeThenTheFormatThenTheEnding) {
  const OfType unknownType{FileFormat{9}};
  EXPECT_EQ(Write(directory.File("missing/a.png"), unknownType), kNoDirectory);
  EXPECT_EQ(Write(directory.File("a.bmp"), unknownType), kUnknownFormat);
  EXPECT_EQ(Write(directory.File("a.png"), OfType{FileFormat{0}}), kUnknownFormat);
  EXPECT_EQ(Write(directory.File("a.png"), OfType{FileFormat{5}}), kUnknownFormat);
  const TestImage packed(Mono10p, 2, 2);
  EXPECT_EQ(FailureOf([&] { ImageWriter::writeImage(*packed, directory.File("a.bmp"), PNGParameter()); }),
            kWrongEnding);
  EXPECT_EQ(FailureOf([&] { ImageWriter::writeImage(*packed, directory.File("a.png"), PNGParameter()); }),
            kUnsupported);
  EXPECT_EQ(FailureOf([&] { ImageWriter::writeImage(*packed, directory.File("a.png")); }), kUnsupported);
  EXPECT_FALSE(std::filesystem::exists(directory.File("a.png")));
  EXPECT_EQ(FailureOf([&] { img::io::png::MakeOutput(_RawUnpacked1Ch8, "a.png", PNGParameter()); }),
            (Failure{-1009, 9000, "Unsupported formatId: 4294902024"}));
}

TEST_F(ImageWriterTest, TakesPathsOfAnyBytes) {
  for (const std::string name : {"with spaces in it.png", "\xC3\xA4\xE2\x82\xAC.png", "\xFF\xFE\x80.png", "a\nb.png",
                                 "%s%n.png", "-a.png", "'\"\\.png"}) {
    EXPECT_EQ(WriteByEnding(directory.File(name)), std::nullopt) << name;
    EXPECT_TRUE(IsPng(directory.File(name))) << name;
  }
}

TEST_F(ImageWriterTest, AnswersAZeroByteLikeAFileThatCannotBeOpened) {
  const std::string zero(1, '\0');
  EXPECT_EQ(Write(directory.File("a" + zero + "b.png")), kCannotOpen);
  EXPECT_EQ(WriteByEnding(directory.File("a.png" + zero + ".png")), kCannotOpen);
  EXPECT_FALSE(std::filesystem::exists(directory.File("a")));
  EXPECT_FALSE(std::filesystem::exists(directory.File("a.png")));
  EXPECT_EQ(Write(directory.File("a.png" + zero)), kWrongEnding) << "the zero counts as part of the ending";
  EXPECT_EQ(WriteByEnding(directory.File("a.png" + zero)), kUnknownFormat);
  const TestImage packed(Mono10p, 2, 2);
  EXPECT_EQ(FailureOf([&] { ImageWriter::writeImage(*packed, directory.File(zero + ".png")); }), kUnsupported);
}

TEST_F(ImageWriterTest, TakesTheWorkingDirectoryForAPathWithoutADirectory) {
  const auto before = std::filesystem::current_path();
  std::filesystem::current_path(directory.Path());
  EXPECT_EQ(WriteByEnding("here.png"), std::nullopt);
  EXPECT_EQ(Write("./there.png"), std::nullopt);
  std::filesystem::current_path(before);
  EXPECT_TRUE(IsPng(directory.File("here.png")));
  EXPECT_TRUE(IsPng(directory.File("there.png")));
}

TEST_F(ImageWriterTest, OverwritesAFile) {
  std::ofstream(directory.File("a.png")) << std::string(100000, 'x');
  EXPECT_EQ(WriteByEnding(directory.File("a.png")), std::nullopt);
  EXPECT_TRUE(IsPng(directory.File("a.png")));
  EXPECT_LT(std::filesystem::file_size(directory.File("a.png")), 1000u);
}

TEST_F(ImageWriterTest, AnswersADirectoryOfTheFilesName) {
  std::filesystem::create_directory(directory.File("a.png"));
  EXPECT_EQ(WriteByEnding(directory.File("a.png")), kCannotOpen);
}

}  // namespace
