#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <korvel/korvel.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstring>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "tests/model/file_model.h"
#include "tests/support/exported_files.h"
#include "tests/support/exported_objects.h"
#include "tests/support/jpeg_files.h"
#include "tests/support/last_error.h"
#include "tests/support/temporary_directory.h"

namespace {

using korvel_test::Bytes;
using korvel_test::ContentOf;
using korvel_test::EndingOf;
using korvel_test::ErrorOf;
using korvel_test::ExportedImage;
using korvel_test::FileType;
using korvel_test::Fill;
using korvel_test::IoError;
using korvel_test::kCannotOpen;
using korvel_test::kCannotWrite;
using korvel_test::kFileTypes;
using korvel_test::LastError;
using korvel_test::MakeFilledImage;
using korvel_test::MakeModelImage;
using korvel_test::MarkLastError;
using korvel_test::ModelImage;
using korvel_test::ReadLastError;
using korvel_test::TemporaryDirectory;
using korvel_test::UnsupportedError;
using korvel_test::WriteAs;
using korvel_test::WriteByEnding;
using korvel_test::WriteFile;

const LastError kNoDirectory = IoError("ImageWriter: FileDirectory invalid!");
const LastError kUnknownType = IoError("ImageWriter: Unknown file format invalid!");
const LastError kWrongEnding = IoError("ImageWriter: FileFormat is incorrect to file ending!");

// Sizes whose lines leave each remainder by 4, at one, two, three and four bytes to a pixel.
constexpr std::pair<size_t, size_t> kSizes[] = {{1, 1}, {2, 1}, {3, 2}, {4, 3}, {5, 2},
                                                {6, 5}, {7, 4}, {1, 9}, {33, 3}};

LastError CannotOpen(FileType type) {
  return IoError(type == FileType::kRaw ? "ImageWriter: Can't open file for writing!" : kCannotOpen);
}

class ImageWriterApi : public testing::Test {
 protected:
  std::string File(const std::string& name, FileType type) const { return directory.File(name + EndingOf(type)); }

  KORVEL_RETURN_CODE WriteAsPng(const std::string& path, uint32_t quality = 100) {
    return WriteAs(FileType::kPng, image.Handle(), path, quality);
  }

  ExportedImage image{KORVEL_PIXEL_FORMAT_Mono8, 2, 2, Bytes{1, 2, 3, 4}};
  TemporaryDirectory directory;
};

// ------------------------------------------------------------------------------------------------ bytes of the files
// --

// Samples that the file takes as they are: where it shifts them, none may exceed the format's maximum.
ModelImage ImageFor(FileType type, uint32_t format, std::pair<size_t, size_t> size) {
  const Fill fill = type == FileType::kPng ? Fill::kRandom : Fill::kGarbage;
  return MakeFilledImage(format, size.first, size.second, fill, size.first * 100 + size.second);
}

void ExpectPngOf(const Bytes& file, const ModelImage& image) {
  const korvel_test::FormatInPng& place = korvel_test::PlaceInFiles(image.format).png;
  const korvel_test::PngContent content = korvel_test::ParsePng(file);
  EXPECT_EQ(content.width, image.width);
  EXPECT_EQ(content.height, image.height);
  EXPECT_EQ(content.depth, place.depth);
  EXPECT_EQ(content.colourType, place.colourType);
  const size_t channels = place.colourType == 0 ? 1 : place.colourType == 2 ? 3 : 4;
  std::vector<std::string> chunks = {"IHDR", "IDAT", "IEND"};
  if (place.significantBits != 0) chunks.insert(chunks.begin() + 1, "sBIT");
  EXPECT_EQ(content.chunks, chunks);
  EXPECT_EQ(content.significantBits, Bytes(place.significantBits == 0 ? 0 : channels, place.significantBits));
  const std::vector<uint16_t> expected = korvel_test::PngSamples(image);
  ASSERT_EQ(content.samples.size(), expected.size());
  // Below the significant bits a writer may put what it likes.
  const int shift = place.significantBits == 0 ? 0 : 16 - place.significantBits;
  for (size_t i = 0; i < expected.size(); ++i) ASSERT_EQ(content.samples[i] >> shift, expected[i]) << "sample " << i;
}

void ExpectFileOf(FileType type, const Bytes& file, const ModelImage& image) {
  switch (type) {
    case FileType::kBmp:
      EXPECT_EQ(file, korvel_test::BmpFile(image));
      break;
    case FileType::kPng:
      ExpectPngOf(file, image);
      break;
    case FileType::kJpeg:
      EXPECT_EQ(file, korvel_test::EncodeJpeg(image, 75));
      break;
    case FileType::kRaw:
      EXPECT_EQ(file, korvel_test::RawFile(image));
      break;
  }
}

class EveryWrittenFormat : public ImageWriterApi, public testing::WithParamInterface<FileType> {};

TEST_P(EveryWrittenFormat, IsWrittenOrRefused) {
  const FileType type = GetParam();
  size_t written = 0;
  for (const uint32_t format : korvel_test::PublicFormats()) {
    for (const auto& size : kSizes) {
      SCOPED_TRACE(testing::Message() << korvel_test::FormatOf(format).name << " " << size.first << "x" << size.second);
      const ModelImage model = ImageFor(type, format, size);
      const ExportedImage subject(format, model.width, model.height, model.bytes);
      const std::string path = File("given", type);
      const std::string byEnding = File("by ending", type);
      if (!korvel_test::HasPlace(type, format)) {
        EXPECT_EQ(ErrorOf(WriteAs(type, subject.Handle(), path)), UnsupportedError());
        EXPECT_EQ(ErrorOf(WriteByEnding(subject.Handle(), byEnding)), UnsupportedError());
        EXPECT_FALSE(std::filesystem::exists(path));
        EXPECT_FALSE(std::filesystem::exists(byEnding));
        continue;
      }
      ++written;
      const LastError before = MarkLastError();
      ASSERT_EQ(WriteAs(type, subject.Handle(), path), 0u);
      ASSERT_EQ(WriteByEnding(subject.Handle(), byEnding), 0u);
      EXPECT_EQ(ReadLastError(), before);
      EXPECT_EQ(subject.Content(), model.bytes) << "the image stays as it was";
      const Bytes file = ContentOf(path);
      ExpectFileOf(type, file, model);
      EXPECT_EQ(ContentOf(byEnding), file);
      std::filesystem::remove(path);
      std::filesystem::remove(byEnding);
    }
  }
  const size_t formats[] = {21, 27, 9, 49};
  EXPECT_EQ(written, formats[static_cast<size_t>(type)] * std::size(kSizes));
}

TEST_P(EveryWrittenFormat, ButInvalid) {
  const FileType type = GetParam();
  for (const auto& [width, height] : {std::pair<size_t, size_t>{4, 2}, {0, 0}, {0, 3}}) {
    const ExportedImage none(KORVEL_PIXEL_FORMAT_Invalid, width, height);
    EXPECT_EQ(ErrorOf(WriteAs(type, none.Handle(), File("a", type))), UnsupportedError());
    EXPECT_EQ(ErrorOf(WriteByEnding(none.Handle(), File("a", type))), UnsupportedError());
    EXPECT_FALSE(std::filesystem::exists(File("a", type)));
  }
}

TEST_P(EveryWrittenFormat, ThatIsRefusedLeavesAFileAlone) {
  const FileType type = GetParam();
  WriteFile(File("a", type), {1, 2, 3});
  const ExportedImage none(KORVEL_PIXEL_FORMAT_Invalid, 4, 2);
  EXPECT_EQ(ErrorOf(WriteAs(type, none.Handle(), File("a", type))), UnsupportedError());
  EXPECT_EQ(ContentOf(File("a", type)), (Bytes{1, 2, 3}));
}

INSTANTIATE_TEST_SUITE_P(ImageWriterApi, EveryWrittenFormat, testing::ValuesIn(kFileTypes),
                         [](const auto& type) { return EndingOf(type.param).substr(1); });

TEST_F(ImageWriterApi, KeepsTheWorkedExamplesOfPixels) {
  const ExportedImage mono12(KORVEL_PIXEL_FORMAT_Mono12, 1, 1, Bytes{0xBC, 0x0A});
  ASSERT_EQ(WriteByEnding(mono12.Handle(), directory.File("a.png")), 0u);
  const korvel_test::PngContent png = korvel_test::ParsePng(ContentOf(directory.File("a.png")));
  EXPECT_EQ(png.samples.at(0) & 0xFFF0, 0xABC0);
  // 3 pixels of 3 bytes and their padding are 10 bytes, 5 pixels are 15 and 3.
  const ExportedImage three(KORVEL_PIXEL_FORMAT_RGB8, 3, 2);
  ASSERT_EQ(WriteByEnding(three.Handle(), directory.File("a.bmp")), 0u);
  EXPECT_EQ(ContentOf(directory.File("a.bmp")).size(), 66u + 2 * 10);
  const ExportedImage five(KORVEL_PIXEL_FORMAT_RGB8, 5, 2);
  ASSERT_EQ(WriteByEnding(five.Handle(), directory.File("a.bmp")), 0u);
  EXPECT_EQ(ContentOf(directory.File("a.bmp")).size(), 66u + 2 * 18);
  // 3 pixels of 12 bits as one run are 5 bytes.
  const ExportedImage packed(KORVEL_PIXEL_FORMAT_Mono12p, 3, 1, Bytes{1, 2, 3, 4, 5});
  ASSERT_EQ(WriteByEnding(packed.Handle(), directory.File("a.raw")), 0u);
  const Bytes raw = ContentOf(directory.File("a.raw"));
  EXPECT_EQ(raw.size(), 28u + 5);
  EXPECT_EQ(raw.at(4), 5);
  EXPECT_EQ(raw.at(12), 3);
}

TEST_F(ImageWriterApi, WritesTheCallersMemoryAndReadsNothingBeyondIt) {
  const auto expectFiles = [&](uint32_t format, size_t width, size_t height) {
    const ModelImage model = MakeFilledImage(format, width, height, Fill::kRandom, 7);
    const korvel_test::CallersMemory memory(model.bytes.size());
    std::memcpy(memory.Data(), model.bytes.data(), model.bytes.size());
    KORVEL_IMAGE_HANDLE handle = nullptr;
    ASSERT_EQ(KORVEL_Image_ConstructFromBuffer(format, memory.Data(), model.bytes.size(), width, height, &handle), 0u);
    const ExportedImage overMemory(handle);
    for (const FileType type : kFileTypes) {
      if (!korvel_test::HasPlace(type, format)) continue;
      SCOPED_TRACE(testing::Message() << korvel_test::FormatOf(format).name << EndingOf(type));
      ASSERT_EQ(WriteByEnding(handle, File("a", type)), 0u);
      ExpectFileOf(type, ContentOf(File("a", type)), model);
    }
  };
  for (const uint32_t format : korvel_test::PublicFormats()) expectFiles(format, 3, 5);
}

// --------------------------------------------------------------------------------------------------------- qualities
// --

TEST_F(ImageWriterApi, TakesAQualityForPng) {
  const ExportedImage flat(KORVEL_PIXEL_FORMAT_Mono8, 64, 64, Bytes(4096, 7));
  // The classes that zlib notes: 0 for levels 0 and 1, 1 for 2 to 5, 2 for 6, 3 for 7 to 9.
  const std::pair<uint32_t, int> classes[] = {{109, 0}, {100, 0}, {91, 0}, {90, 0}, {89, 1}, {80, 1}, {55, 1}, {50, 1},
                                              {49, 2},  {40, 2},  {39, 3}, {30, 3}, {10, 3}, {5, 3},  {1, 3}};
  for (const auto& [quality, expected] : classes) {
    SCOPED_TRACE(quality);
    ASSERT_EQ(WriteAs(FileType::kPng, flat.Handle(), directory.File("a.png"), quality), 0u);
    const korvel_test::PngContent content = korvel_test::ParsePng(ContentOf(directory.File("a.png")));
    EXPECT_EQ(content.levelClass, expected);
    EXPECT_EQ(content.samples, std::vector<uint16_t>(4096, 7));
    EXPECT_EQ(std::filesystem::file_size(directory.File("a.png")) > 4096, quality >= 100) << "level 0 stores";
  }
  for (const uint32_t quality : {0u, 120u, 300u, 0x80000000u, 0xFFFFFFFFu}) {
    EXPECT_EQ(ErrorOf(WriteAsPng(directory.File("a.png"), quality)), IoError("Could not write png image data."));
  }
}

TEST_F(ImageWriterApi, TakesAQualityForJpeg) {
  const ModelImage model = MakeFilledImage(KORVEL_PIXEL_FORMAT_BGR8, 40, 30, Fill::kRandom, 3);
  const ExportedImage subject(model.format, 40, 30, model.bytes);
  const std::pair<uint32_t, int> qualities[] = {
      {0, 0},     {1, 1},     {10, 10},          {50, 50},          {75, 75},          {99, 99},         {100, 100},
      {101, 100}, {200, 100}, {0x7FFFFFFF, 100}, {0x80000000, 100}, {0x80000001, 100}, {0xFFFFFFFF, 100}};
  for (const auto& [quality, expected] : qualities) {
    ASSERT_EQ(WriteAs(FileType::kJpeg, subject.Handle(), directory.File("a.jpg"), quality), 0u) << quality;
    EXPECT_EQ(ContentOf(directory.File("a.jpg")), korvel_test::EncodeJpeg(model, expected)) << quality;
  }
}

// ------------------------------------------------------------------------------------------------------------- checks
// --

TEST_F(ImageWriterApi, ChecksTheDirectoryThenTheEndingThenTheFormat) {
  const ExportedImage none(KORVEL_PIXEL_FORMAT_Invalid, 4, 2);
  for (const FileType type : kFileTypes) {
    SCOPED_TRACE(EndingOf(type));
    const std::string otherEnding = type == FileType::kPng ? ".bmp" : ".png";
    EXPECT_EQ(ErrorOf(WriteAs(type, none.Handle(), directory.File("missing/a" + otherEnding))), kNoDirectory);
    EXPECT_EQ(ErrorOf(WriteAs(type, none.Handle(), directory.File("a" + otherEnding))), kWrongEnding);
    EXPECT_EQ(ErrorOf(WriteByEnding(none.Handle(), directory.File("missing/a.unknown"))), kNoDirectory);
    EXPECT_EQ(ErrorOf(WriteByEnding(none.Handle(), directory.File("a.unknown"))), kUnknownType);
    // The format comes before the file is opened.
    std::filesystem::create_directory(File("folder", type));
    EXPECT_EQ(ErrorOf(WriteAs(type, none.Handle(), File("folder", type))), UnsupportedError());
  }
}

TEST_F(ImageWriterApi, WantsTheEndingOfTheType) {
  const std::pair<const char*, FileType> endings[] = {
      {".bmp", FileType::kBmp},   {".png", FileType::kPng}, {".jpg", FileType::kJpeg}, {".jpeg", FileType::kJpeg},
      {".raw", FileType::kRaw},   {".BMP", FileType::kBmp}, {".Png", FileType::kPng},  {".JPG", FileType::kJpeg},
      {".jPEg", FileType::kJpeg}, {".RAW", FileType::kRaw}};
  for (const auto& [ending, fitting] : endings) {
    for (const FileType type : kFileTypes) {
      const std::string path = directory.File(std::string("a.b") + ending);
      SCOPED_TRACE(path + " as " + EndingOf(type));
      if (type == fitting) {
        EXPECT_EQ(WriteAs(type, image.Handle(), path), 0u);
        const Bytes given = ContentOf(path);
        std::filesystem::remove(path);
        EXPECT_EQ(WriteByEnding(image.Handle(), path), 0u);
        EXPECT_EQ(ContentOf(path), given);
        std::filesystem::remove(path);
      } else {
        EXPECT_EQ(ErrorOf(WriteAs(type, image.Handle(), path)), kWrongEnding);
        EXPECT_FALSE(std::filesystem::exists(path));
      }
    }
  }
  for (const char* name : {"a", "a.", "a.tif", "a.jp", "a.jpe", "a.jpegs", "a.png ", "a.png.", ".png", ".bmp",
                           "a.pn\xC7", "png", "a.png/"}) {
    const std::string path = directory.File(name);
    const bool isDirectory = path.back() == '/';
    if (isDirectory) std::filesystem::create_directory(path);
    for (const FileType type : kFileTypes) {
      EXPECT_EQ(ErrorOf(WriteAs(type, image.Handle(), path)), kWrongEnding) << path;
    }
    EXPECT_EQ(ErrorOf(WriteByEnding(image.Handle(), path)), kUnknownType) << path;
    EXPECT_EQ(std::filesystem::exists(path), isDirectory) << path;
  }
}

TEST_F(ImageWriterApi, WantsADirectoryThatExists) {
  WriteFile(directory.File("file"), {1});
  for (const FileType type : kFileTypes) {
    for (const std::string& path :
         {File("missing/a", type), File("file/a", type), "/no such directory/a" + EndingOf(type)}) {
      EXPECT_EQ(ErrorOf(WriteAs(type, image.Handle(), path)), kNoDirectory) << path;
      EXPECT_EQ(ErrorOf(WriteByEnding(image.Handle(), path)), kNoDirectory) << path;
    }
    EXPECT_EQ(ErrorOf(WriteAs(type, image.Handle(), std::string(5000, 'd') + "/a" + EndingOf(type))), kNoDirectory);
  }
}

TEST_F(ImageWriterApi, TakesTheWorkingDirectoryForAPathWithoutADirectory) {
  const auto before = std::filesystem::current_path();
  std::filesystem::current_path(directory.Path());
  for (const FileType type : kFileTypes) {
    EXPECT_EQ(WriteAs(type, image.Handle(), "here" + EndingOf(type)), 0u);
    EXPECT_EQ(WriteByEnding(image.Handle(), "./there" + EndingOf(type)), 0u);
  }
  std::filesystem::current_path(before);
  for (const FileType type : kFileTypes) EXPECT_EQ(ContentOf(File("here", type)), ContentOf(File("there", type)));
}

// -------------------------------------------------------------------------------------------------------------- paths
// --

TEST_F(ImageWriterApi, TakesExactlyTheBytesOfThePath) {
  for (const FileType type : kFileTypes) {
    const std::string longer = File("a", type) + "XYZ";
    EXPECT_EQ(KORVEL_ImageWriter_Write(image.Handle(), longer.data(), longer.size() - 3), 0u);
    EXPECT_TRUE(std::filesystem::exists(File("a", type)));
    EXPECT_FALSE(std::filesystem::exists(longer));
    for (const std::string name :
         {"with spaces in it", "\xC3\xA4\xE2\x82\xAC", "\xFF\xFE\x80", "a\nb", "%s%n", "-a", "'\"\\", "$(x) ; rm"}) {
      EXPECT_EQ(WriteAs(type, image.Handle(), File(name, type)), 0u) << name;
      EXPECT_EQ(ContentOf(File(name, type)), ContentOf(File("a", type))) << name;
    }
  }
}

TEST_F(ImageWriterApi, AnswersAZeroByteLikeAFileThatCannotBeOpened) {
  const std::string zero(1, '\0');
  const ExportedImage none(KORVEL_PIXEL_FORMAT_Invalid, 4, 2);
  for (const FileType type : kFileTypes) {
    SCOPED_TRACE(EndingOf(type));
    EXPECT_EQ(ErrorOf(WriteAs(type, image.Handle(), File("a" + zero + "b", type))), CannotOpen(type));
    EXPECT_EQ(ErrorOf(WriteByEnding(image.Handle(), File("a" + EndingOf(type) + zero, type))), CannotOpen(type));
    EXPECT_FALSE(std::filesystem::exists(directory.File("a")));
    EXPECT_FALSE(std::filesystem::exists(File("a", type)));
    // The steps before that one come first, and the zero counts as part of the ending.
    EXPECT_EQ(ErrorOf(WriteAs(type, image.Handle(), File("a", type) + zero)), kWrongEnding);
    EXPECT_EQ(ErrorOf(WriteByEnding(image.Handle(), File("a", type) + zero)), kUnknownType);
    EXPECT_EQ(ErrorOf(WriteAs(type, none.Handle(), File("a" + zero, type))), UnsupportedError());
    EXPECT_EQ(ErrorOf(WriteAs(type, image.Handle(), File("missing/a" + zero, type))), kNoDirectory);
  }
}

TEST_F(ImageWriterApi, TellsThatAFileCannotBeOpened) {
  for (const FileType type : kFileTypes) {
    SCOPED_TRACE(EndingOf(type));
    std::filesystem::create_directory(File("folder", type));
    EXPECT_EQ(ErrorOf(WriteByEnding(image.Handle(), File("folder", type))), CannotOpen(type));
    EXPECT_EQ(ErrorOf(WriteAs(type, image.Handle(), "/proc/a" + EndingOf(type))), CannotOpen(type));
    EXPECT_EQ(ErrorOf(WriteAs(type, image.Handle(), File(std::string(300, 'n'), type))), CannotOpen(type));
  }
  if (geteuid() == 0) return;  // who may write everywhere
  std::filesystem::permissions(directory.Path(),
                               std::filesystem::perms::owner_read | std::filesystem::perms::owner_exec);
  for (const FileType type : kFileTypes) {
    EXPECT_EQ(ErrorOf(WriteByEnding(image.Handle(), File("a", type))), CannotOpen(type));
  }
}

TEST_F(ImageWriterApi, OverwritesAFileAndWhatALinkLeadsTo) {
  for (const FileType type : kFileTypes) {
    ASSERT_EQ(WriteByEnding(image.Handle(), File("plain", type)), 0u);
    const Bytes expected = ContentOf(File("plain", type));
    WriteFile(File("long", type), Bytes(100000, 'x'));
    EXPECT_EQ(WriteByEnding(image.Handle(), File("long", type)), 0u);
    EXPECT_EQ(ContentOf(File("long", type)), expected);

    WriteFile(directory.File("target"), {1, 2, 3});
    std::filesystem::create_symlink(directory.File("target"), File("link", type));
    EXPECT_EQ(WriteAs(type, image.Handle(), File("link", type)), 0u);
    EXPECT_TRUE(std::filesystem::is_symlink(File("link", type)));
    EXPECT_EQ(ContentOf(directory.File("target")), expected);
  }
}

// ---------------------------------------------------------------------------------------------------------- full disks
// --

// What a file too small to be written before it is closed says, and one that is large.
LastError DiskFull(FileType type, bool small) {
  if (type == FileType::kJpeg) return IoError("Output file write error --- out of disk space?");
  if (type == FileType::kPng && !small) return IoError("Could not write png image data.");
  return IoError(kCannotWrite);
}

TEST_F(ImageWriterApi, TellsThatADeviceIsFull) {
  const ModelImage model = MakeFilledImage(KORVEL_PIXEL_FORMAT_RGB8, 400, 300, Fill::kRandom, 1);
  const ExportedImage large(model.format, 400, 300, model.bytes);
  for (const FileType type : kFileTypes) {
    SCOPED_TRACE(EndingOf(type));
    std::filesystem::create_symlink("/dev/full", File("full", type));
    EXPECT_EQ(ErrorOf(WriteAs(type, image.Handle(), File("full", type))), DiskFull(type, true));
    EXPECT_EQ(ErrorOf(WriteByEnding(image.Handle(), File("full", type))), DiskFull(type, true));
    EXPECT_EQ(ErrorOf(WriteAs(type, large.Handle(), File("full", type))), DiskFull(type, false));
    std::filesystem::create_symlink("/dev/null", File("null", type));
    EXPECT_EQ(WriteAs(type, large.Handle(), File("null", type)), 0u) << "devices are opened as they are";
  }
}

// A small file system of a name space of its own, so that nothing of it outlives the process.
class SmallFileSystem {
 public:
  explicit SmallFileSystem(const std::string& path) : path_(path) {
    isMounted_ = unshare(CLONE_NEWNS) == 0 && mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
                 mount("none", path.c_str(), "tmpfs", 0, "size=64k") == 0;
  }
  SmallFileSystem(const SmallFileSystem&) = delete;
  SmallFileSystem& operator=(const SmallFileSystem&) = delete;
  ~SmallFileSystem() {
    if (isMounted_) umount(path_.c_str());
  }

  bool IsMounted() const { return isMounted_; }

 private:
  std::string path_;
  bool isMounted_ = false;
};

TEST_F(ImageWriterApi, TellsThatADiskIsFullAndGoesOn) {
  const SmallFileSystem disk(directory.Path());
  if (!disk.IsMounted()) GTEST_SKIP() << "no right to mount";
  const ModelImage model = MakeFilledImage(KORVEL_PIXEL_FORMAT_RGB8, 400, 300, Fill::kRandom, 1);
  const ExportedImage large(model.format, 400, 300, model.bytes);
  for (const FileType type : kFileTypes) {
    SCOPED_TRACE(EndingOf(type));
    const size_t descriptors = korvel_test::OpenDescriptors();
    EXPECT_EQ(ErrorOf(WriteByEnding(large.Handle(), File("large", type))), DiskFull(type, false));
    EXPECT_EQ(korvel_test::OpenDescriptors(), descriptors);
    std::filesystem::remove(File("large", type));
    EXPECT_EQ(WriteByEnding(image.Handle(), File("small", type)), 0u);
    std::filesystem::remove(File("small", type));
  }
}

TEST_F(ImageWriterApi, TellsWhatTheCodecsHaveNoRoomFor) {
  const ExportedImage wide(KORVEL_PIXEL_FORMAT_Mono8, 1000001, 1);
  EXPECT_EQ(ErrorOf(WriteByEnding(wide.Handle(), directory.File("a.png"))),
            IoError("Error during writing png header."));
  const std::string tooBig = "Maximum supported image dimension is %u pixels";
  EXPECT_EQ(ErrorOf(WriteByEnding(wide.Handle(), directory.File("a.jpg"))), IoError(tooBig));
  const ExportedImage high(KORVEL_PIXEL_FORMAT_Mono8, 1, 65501);
  EXPECT_EQ(ErrorOf(WriteByEnding(high.Handle(), directory.File("a.jpg"))), IoError(tooBig));
  const ExportedImage fits(KORVEL_PIXEL_FORMAT_Mono8, 65500, 1);
  EXPECT_EQ(WriteByEnding(fits.Handle(), directory.File("a.jpg")), 0u);
  const ExportedImage widest(KORVEL_PIXEL_FORMAT_Mono8, 1000000, 1);
  EXPECT_EQ(WriteByEnding(widest.Handle(), directory.File("a.png")), 0u);
}

}  // namespace
