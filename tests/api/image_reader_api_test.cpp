#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <korvel/korvel.h>
#include <malloc.h>
#include <sys/stat.h>

#include <cstring>
#include <filesystem>
#include <functional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "tests/model/file_model.h"
#include "tests/support/exported_files.h"
#include "tests/support/exported_objects.h"
#include "tests/support/jpeg_files.h"
#include "tests/support/last_error.h"
#include "tests/support/syslog_capture.h"
#include "tests/support/temporary_directory.h"

namespace {

using korvel_test::Bytes;
using korvel_test::ContentOf;
using korvel_test::EndingOf;
using korvel_test::ErrorOf;
using korvel_test::ExportedImage;
using korvel_test::FileType;
using korvel_test::Fill;
using korvel_test::Holds;
using korvel_test::IdOf;
using korvel_test::InterpretationError;
using korvel_test::IoError;
using korvel_test::kCannotOpen;
using korvel_test::kFileTypes;
using korvel_test::LastError;
using korvel_test::MakeFilledImage;
using korvel_test::MakeModelImage;
using korvel_test::MarkLastError;
using korvel_test::ModelImage;
using korvel_test::Read;
using korvel_test::ReadAs;
using korvel_test::ReadLastError;
using korvel_test::ReadOutcome;
using korvel_test::TemporaryDirectory;
using korvel_test::WriteAs;
using korvel_test::WriteByEnding;
using korvel_test::WriteFile;

constexpr uint32_t kMono8 = KORVEL_PIXEL_FORMAT_Mono8;
constexpr std::pair<size_t, size_t> kSizes[] = {{1, 1}, {2, 1}, {3, 2}, {4, 3}, {5, 2},
                                                {6, 5}, {7, 4}, {1, 9}, {33, 3}};

const LastError kUnknownType = IoError("ImageReader: Unknown file format!");
const LastError kNoFileName = IoError("ImageReader: Filename invalid!");
const LastError kInvalidRequested = {7, "ImageReader can't interpret image as \"Invalid\" pixel format!"};

// What comes back of an image. Only the bare codec can tell it for JPEG.
ModelImage ComesBack(FileType type, const ModelImage& image) {
  if (type != FileType::kJpeg) return korvel_test::ReadBack(type, image);
  return MakeModelImage(korvel_test::ReadBackFormat(type, image.format), image.width, image.height,
                        korvel_test::DecodeJpeg(korvel_test::EncodeJpeg(image, 75)).samples);
}

class ImageReaderApi : public testing::Test {
 protected:
  std::string File(const std::string& name, FileType type) const { return directory.File(name + EndingOf(type)); }

  // A file of the type as the library writes it.
  std::string Written(FileType type, const ModelImage& model) const {
    const ExportedImage subject(model.format, model.width, model.height, model.bytes);
    std::string path = File("written", type);
    EXPECT_EQ(WriteByEnding(subject.Handle(), path), 0u);
    return path;
  }
  std::string Written(FileType type) const { return Written(type, small); }

  ModelImage small = MakeModelImage(kMono8, 3, 2, {10, 20, 30, 40, 50, 60});
  TemporaryDirectory directory;
};

class EveryReadFormat : public ImageReaderApi, public testing::WithParamInterface<FileType> {};

TEST_P(EveryReadFormat, ComesBack) {
  const FileType type = GetParam();
  // Samples above the format's maximum lose their spare bits in a PNG file, and nowhere else.
  const Fill fill = type == FileType::kPng ? Fill::kRandom : Fill::kGarbage;
  for (const uint32_t format : korvel_test::PublicFormats()) {
    if (!korvel_test::HasPlace(type, format)) continue;
    for (const auto& [width, height] : kSizes) {
      SCOPED_TRACE(testing::Message() << korvel_test::FormatOf(format).name << " " << width << "x" << height);
      const ModelImage model = MakeFilledImage(format, width, height, fill, width * 100 + height);
      const std::string path = Written(type, model);
      const LastError before = MarkLastError();
      EXPECT_TRUE(Holds(Read(path), ComesBack(type, model)));
      EXPECT_EQ(ReadLastError(), before);
    }
  }
}

TEST_P(EveryReadFormat, IsReadAsEveryFormat) {
  const FileType type = GetParam();
  size_t allowed = 0;
  for (const uint32_t format : korvel_test::PublicFormats()) {
    if (!korvel_test::HasPlace(type, format)) continue;
    const ModelImage model = MakeFilledImage(format, 3, 2, Fill::kRandom, format);
    const std::string path = Written(type, model);
    ModelImage expected = ComesBack(type, model);
    const uint32_t found = expected.format;
    for (const uint32_t requested : korvel_test::PublicFormats()) {
      SCOPED_TRACE(testing::Message() << korvel_test::FormatOf(format).name << " as "
                                      << korvel_test::FormatOf(requested).name);
      const std::optional<uint32_t> answer = korvel_test::FormatWhenReadAs(type, found, requested);
      if (answer) {
        ++allowed;
        expected.format = *answer;
        EXPECT_TRUE(Holds(ReadAs(path, requested), expected));
      } else {
        EXPECT_EQ(ReadAs(path, requested).error, InterpretationError());
      }
    }
    for (const uint32_t unknown : {1u, 0x01080002u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu, 0xFFFF0108u, 0xFFFF110Du}) {
      EXPECT_EQ(ReadAs(path, unknown).error, InterpretationError()) << unknown;
    }
    EXPECT_EQ(ReadAs(path, KORVEL_PIXEL_FORMAT_Invalid).error, kInvalidRequested);
  }
  // BMP: 15 mono and Bayer formats come back as mono, each for 5 requests, and 6 as themselves; PNG has 12 of colour,
  // JPEG 5 and 4; RAW takes the 20 Bayer formats of the table for 2 requests each and the other 29 for one.
  const size_t counts[] = {15 * 5 + 6, 15 * 5 + 12, 5 * 5 + 4, 20 * 2 + 29};
  EXPECT_EQ(allowed, counts[static_cast<size_t>(type)]);
}

INSTANTIATE_TEST_SUITE_P(ImageReaderApi, EveryReadFormat, testing::ValuesIn(kFileTypes),
                         [](const auto& type) { return EndingOf(type.param).substr(1); });

TEST_F(ImageReaderApi, KeepsTheWorkedExamplesOfPixels) {
  const std::string png = Written(FileType::kPng, MakeModelImage(IdOf("Mono12"), 1, 1, {0xBC, 0x0A}));
  EXPECT_THAT(Read(png).bytes, testing::ElementsAre(0xBC, 0x0A));
  const std::string bmp = Written(FileType::kBmp, MakeModelImage(IdOf("RGB8"), 1, 1, {1, 2, 3}));
  EXPECT_EQ(Read(bmp).format, IdOf("RGB8"));
  EXPECT_THAT(Read(bmp).bytes, testing::ElementsAre(3, 2, 1)) << "red and blue come back exchanged";
  const std::string raw = Written(FileType::kRaw, MakeModelImage(IdOf("BayerRG8"), 1, 2, {5, 6}));
  EXPECT_EQ(Read(raw).format, IdOf("BayerRG8"));
  EXPECT_EQ(ReadAs(raw, kMono8).format, IdOf("BayerRG8")) << "the file's format is what the image has";
  EXPECT_EQ(ReadAs(raw, IdOf("BayerGR8")).error, InterpretationError());
  const std::string jpeg = Written(FileType::kJpeg);
  EXPECT_EQ(ReadAs(jpeg, IdOf("BayerRG8")).bytes, Read(jpeg).bytes);
}

TEST_F(ImageReaderApi, GivesAnImageLikeAnyOther) {
  for (const FileType type : kFileTypes) {
    const std::string path = Written(type);
    KORVEL_IMAGE_HANDLE first = nullptr;
    KORVEL_IMAGE_HANDLE second = nullptr;
    ASSERT_EQ(KORVEL_ImageReader_Read(path.data(), path.size(), &first), 0u);
    ASSERT_EQ(KORVEL_ImageReader_Read(path.data(), path.size(), &second), 0u);
    std::filesystem::remove(path);
    const ExportedImage one(first);
    const ExportedImage two(second);
    EXPECT_NE(first, second);
    const Bytes content = one.Content();
    two.Data()[0] = static_cast<uint8_t>(~two.Data()[0]);
    EXPECT_EQ(one.Content(), content) << "two images of one file share nothing";
    KORVEL_IMAGE_HANDLE converted = nullptr;
    ASSERT_EQ(KORVEL_Image_ConvertTo(first, KORVEL_PIXEL_FORMAT_BGRa8, 1, &converted), 0u);
    EXPECT_EQ(ExportedImage(converted).ByteCount(), 24u);
    KORVEL_IMAGE_HANDLE clone = nullptr;
    ASSERT_EQ(KORVEL_Image_Clone(first, &clone), 0u);
    EXPECT_EQ(ExportedImage(clone).Content(), content);
  }
}

// ------------------------------------------------------------------------------------------------------------ checks
// --

TEST_F(ImageReaderApi, ChecksThePointersInTurnBeforeTheRequest) {
  KORVEL_IMAGE_HANDLE handle = nullptr;
  const LastError path = {5, "filePath is not a valid pointer!"};
  const LastError size = {5, "filePathSize is 0!"};
  const LastError output = {5, "outputImageHandle is not a valid pointer!"};
  EXPECT_EQ(ErrorOf(KORVEL_ImageReader_Read(nullptr, 0, nullptr)), path);
  EXPECT_EQ(ErrorOf(KORVEL_ImageReader_Read("a", 0, nullptr)), size);
  EXPECT_EQ(ErrorOf(KORVEL_ImageReader_Read("a", 1, nullptr)), output);
  EXPECT_EQ(ErrorOf(KORVEL_ImageReaderRead_ReadAsPixelFormat(nullptr, 0, 0, nullptr)), path);
  EXPECT_EQ(ErrorOf(KORVEL_ImageReaderRead_ReadAsPixelFormat("a", 0, 0, nullptr)), size);
  EXPECT_EQ(ErrorOf(KORVEL_ImageReaderRead_ReadAsPixelFormat("a", 1, 0, nullptr)), output);
  EXPECT_EQ(ErrorOf(KORVEL_ImageReaderRead_ReadAsPixelFormat("a", 1, 0, &handle)), kInvalidRequested);
}

TEST_F(ImageReaderApi, RefusesInvalidWithoutTouchingTheFile) {
  ASSERT_EQ(mkfifo(directory.File("pipe.png").c_str(), 0600), 0);
  for (const std::string& path : {directory.File("missing.png"), directory.File("pipe.png"), std::string("a.unknown"),
                                  std::string("/"), std::string(1, '\0')}) {
    EXPECT_EQ(ReadAs(path, KORVEL_PIXEL_FORMAT_Invalid).error, kInvalidRequested) << path;
  }
}

TEST_F(ImageReaderApi, PicksTheTypeFromTheEnding) {
  for (const FileType type : kFileTypes) {
    const std::string written = Written(type);
    const ModelImage expected = ComesBack(type, small);
    std::string upper = EndingOf(type);
    for (char& letter : upper) letter = static_cast<char>(std::toupper(static_cast<unsigned char>(letter)));
    for (const std::string& name : {"a.b" + EndingOf(type), "a" + upper}) {
      std::filesystem::copy(written, directory.File(name));
      EXPECT_TRUE(Holds(Read(directory.File(name)), expected)) << name;
      EXPECT_TRUE(Holds(ReadAs(directory.File(name), kMono8), expected)) << name;
    }
  }
  std::filesystem::copy(File("written", FileType::kJpeg), directory.File("a.jPeG"));
  EXPECT_TRUE(Holds(Read(directory.File("a.jPeG")), ComesBack(FileType::kJpeg, small)));
  // The ending alone counts, not what the file holds.
  for (const FileType type : kFileTypes) {
    for (const FileType other : kFileTypes) {
      if (type == other) continue;
      std::filesystem::copy(File("written", other), File("wrong", type),
                            std::filesystem::copy_options::overwrite_existing);
      const ReadOutcome outcome = Read(File("wrong", type));
      EXPECT_NE(outcome.code, 0u) << EndingOf(other) << " as " << EndingOf(type);
    }
  }
}

TEST_F(ImageReaderApi, WantsAFileNameAndAKnownEnding) {
  for (const std::string& path : {directory.Path() + "/", directory.File("a.png/"), std::string("/"), std::string("./"),
                                  std::string("missing/")}) {
    EXPECT_EQ(Read(path).error, kNoFileName) << path;
    EXPECT_EQ(ReadAs(path, kMono8).error, kNoFileName) << path;
  }
  for (const std::string name : {"a", "a.", "a.tif", "a.jpe", "a.png ", "a.png.", ".png", ".raw", "a.pngx", "png"}) {
    WriteFile(directory.File(name), {1, 2, 3});
    EXPECT_EQ(Read(directory.File(name)).error, kUnknownType) << name;
    EXPECT_EQ(ReadAs(directory.File(name), kMono8).error, kUnknownType) << name;
    EXPECT_EQ(Read("/missing directory/" + name).error, kUnknownType) << name;
  }
}

TEST_F(ImageReaderApi, TellsThatAFileCannotBeOpened) {
  for (const FileType type : kFileTypes) {
    SCOPED_TRACE(EndingOf(type));
    EXPECT_EQ(Read(File("missing", type)).error, IoError(kCannotOpen));
    EXPECT_EQ(ReadAs(File("missing", type), kMono8).error, IoError(kCannotOpen));
    EXPECT_EQ(Read(File("missing/a", type)).error, IoError(kCannotOpen));
    EXPECT_EQ(Read(File(std::string(300, 'n'), type)).error, IoError(kCannotOpen));
    std::filesystem::create_symlink(directory.File("nowhere"), File("dangling", type));
    EXPECT_EQ(Read(File("dangling", type)).error, IoError(kCannotOpen));
    std::filesystem::create_symlink(File("loop", type), File("loop", type));
    EXPECT_EQ(Read(File("loop", type)).error, IoError(kCannotOpen));
  }
}

TEST_F(ImageReaderApi, OpensNothingButFiles) {
  for (const FileType type : kFileTypes) {
    SCOPED_TRACE(EndingOf(type));
    const size_t descriptors = korvel_test::OpenDescriptors();
    std::filesystem::create_directory(File("folder", type));
    EXPECT_EQ(Read(File("folder", type)).error, IoError(kCannotOpen));
    ASSERT_EQ(mkfifo(File("pipe", type).c_str(), 0600), 0);
    EXPECT_EQ(Read(File("pipe", type)).error, IoError(kCannotOpen)) << "and waits for nobody";
    for (const char* device : {"/dev/zero", "/dev/full", "/dev/urandom"}) {
      std::filesystem::remove(File("device", type));
      std::filesystem::create_symlink(device, File("device", type));
      EXPECT_EQ(Read(File("device", type)).error, IoError(kCannotOpen)) << device;
    }
    EXPECT_EQ(korvel_test::OpenDescriptors(), descriptors);
  }
}

TEST_F(ImageReaderApi, AnswersAZeroByteLikeAFileThatCannotBeOpened) {
  const std::string zero(1, '\0');
  for (const FileType type : kFileTypes) {
    SCOPED_TRACE(EndingOf(type));
    const std::string written = Written(type);
    std::filesystem::copy(written, directory.File("a"), std::filesystem::copy_options::overwrite_existing);
    EXPECT_EQ(Read(written + zero + EndingOf(type)).error, IoError(kCannotOpen));
    EXPECT_EQ(Read(directory.File("a") + zero + EndingOf(type)).error, IoError(kCannotOpen));
    EXPECT_EQ(Read(written + zero).error, kUnknownType) << "the zero counts as part of the ending";
  }
}

TEST_F(ImageReaderApi, TakesPathsOfAnyBytes) {
  for (const FileType type : kFileTypes) {
    const std::string written = Written(type);
    const ModelImage expected = ComesBack(type, small);
    for (const std::string name : {"with spaces in it", "\xC3\xA4\xE2\x82\xAC", "\xFF\xFE\x80", "a\nb", "%s%n", "-a"}) {
      std::filesystem::copy(written, File(name, type));
      EXPECT_TRUE(Holds(Read(File(name, type)), expected)) << name;
    }
    std::filesystem::create_symlink(written, File("link", type));
    EXPECT_TRUE(Holds(Read(File("link", type)), expected)) << "a link leads to a file";
    const std::string longer = written + "XYZ";
    KORVEL_IMAGE_HANDLE handle = nullptr;
    ASSERT_EQ(KORVEL_ImageReader_Read(longer.data(), longer.size() - 3, &handle), 0u);
    const ExportedImage owned(handle);
    const auto before = std::filesystem::current_path();
    std::filesystem::current_path(directory.Path());
    EXPECT_TRUE(Holds(Read("written" + EndingOf(type)), expected));
    EXPECT_TRUE(Holds(Read("./written" + EndingOf(type)), expected));
    std::filesystem::current_path(before);
  }
}

// ---------------------------------------------------------------------------------------------------- damaged files --

TEST_F(ImageReaderApi, FailsForEveryTruncation) {
  for (const FileType type : kFileTypes) {
    for (const uint32_t format : {IdOf("BayerGR12"), IdOf("BGR8"), IdOf("Mono8")}) {
      if (!korvel_test::HasPlace(type, format)) continue;
      const ModelImage model = MakeFilledImage(format, 5, 3, Fill::kRandom, 4);
      const Bytes whole = ContentOf(Written(type, model));
      size_t pixelBytes = 1;
      if (format == IdOf("BayerGR12")) pixelBytes = 2;
      if (format == IdOf("BGR8")) pixelBytes = 3;
      // The padding of the line that a BMP file ends with may be missing.
      const size_t needed = whole.size() - (type == FileType::kBmp ? korvel_test::BmpPadding(5 * pixelBytes) : 0);
      for (size_t size = 0; size <= whole.size(); ++size) {
        SCOPED_TRACE(testing::Message() << size << " of " << whole.size() << " bytes" << EndingOf(type));
        WriteFile(File("cut", type), Bytes(whole.begin(), whole.begin() + static_cast<ptrdiff_t>(size)));
        const ReadOutcome outcome = Read(File("cut", type));
        if (size >= needed) {
          EXPECT_TRUE(Holds(outcome, ComesBack(type, model)));
        } else {
          EXPECT_EQ(outcome.code, 3u);
          EXPECT_EQ(outcome.error.text.rfind(IoError("").text, 0), 0u) << outcome.error;
          EXPECT_GT(outcome.error.text.size(), IoError("").text.size());
        }
      }
    }
  }
}

TEST_F(ImageReaderApi, SurvivesEveryByteChanged) {
  for (const FileType type : kFileTypes) {
    const Bytes whole = ContentOf(Written(type));
    // A BMP file's colour table tells a reader nothing.
    for (size_t at = 0; at < whole.size(); at = type == FileType::kBmp && at == 70 ? 1070 : at + 1) {
      for (const uint8_t value : {uint8_t{0}, uint8_t{1}, uint8_t{0x7F}, uint8_t{0x80}, uint8_t{0xFF}}) {
        Bytes damaged = whole;
        damaged[at] = value;
        WriteFile(File("damaged", type), damaged);
        const ReadOutcome outcome = Read(File("damaged", type));
        if (outcome.code != 0) {
          EXPECT_FALSE(outcome.error.text.empty());
        } else {
          EXPECT_NE(outcome.width * outcome.height, 0u);
        }
      }
    }
    EXPECT_TRUE(Holds(Read(File("written", type)), ComesBack(type, small))) << "the process stays usable";
  }
}

// ------------------------------------------------------------------------------------------------------ long running
// --

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kCountsMemory = false;  // sanitizers have an allocator of their own
#else
constexpr bool kCountsMemory = true;
#endif

size_t MemoryInUse() {
  korvel_test::TakeLogRecords();
  const struct mallinfo2 info = mallinfo2();
  return info.uordblks + info.hblkhd;
}

// Reads and writes of every type that fail at each of their stages.
std::vector<std::function<KORVEL_RETURN_CODE()>> FailingCalls(const TemporaryDirectory& directory,
                                                              KORVEL_IMAGE_HANDLE image, KORVEL_IMAGE_HANDLE packed) {
  std::vector<std::function<KORVEL_RETURN_CODE()>> calls;
  for (const FileType type : kFileTypes) {
    const std::string whole = directory.File("whole" + EndingOf(type));
    EXPECT_EQ(WriteByEnding(image, whole), 0u);
    const Bytes content = ContentOf(whole);
    std::vector<Bytes> damaged = {{}, Bytes(content.begin(), content.begin() + 9)};
    for (const size_t part : {1u, 2u, 3u}) {
      damaged.emplace_back(content.begin(), content.begin() + static_cast<ptrdiff_t>(content.size() * part / 4));
    }
    damaged.emplace_back(content.begin(), content.end() - 4);
    if (type == FileType::kPng) {
      damaged.push_back(content);
      damaged.back()[content.size() / 2] ^= 0x55;
    }
    for (size_t i = 0; i < damaged.size(); ++i) {
      const std::string path = directory.File(std::to_string(i) + EndingOf(type));
      WriteFile(path, damaged[i]);
      calls.push_back([path] { return Read(path).code; });
    }
    calls.push_back([whole] { return ReadAs(whole, KORVEL_PIXEL_FORMAT_RGB12).code; });
    calls.push_back([path = directory.File("missing" + EndingOf(type))] { return Read(path).code; });
    const std::string full = directory.File("full" + EndingOf(type));
    std::filesystem::create_symlink("/dev/full", full);
    calls.push_back([full] { return Read(full).code; });
    calls.push_back([full, image] { return WriteByEnding(image, full); });
    if (type != FileType::kRaw) calls.push_back([full, packed] { return WriteByEnding(packed, full); });
    calls.push_back([image, path = "/proc/a" + EndingOf(type)] { return WriteByEnding(image, path); });
  }
  calls.push_back([image, path = directory.File("quality.png")] { return WriteAs(FileType::kPng, image, path, 300); });
  return calls;
}

TEST_F(ImageReaderApi, LeavesNothingBehindAfterThousandsOfFailures) {
  const ModelImage model = MakeFilledImage(IdOf("RGB8"), 40, 30, Fill::kRandom, 5);
  const ExportedImage image(model.format, 40, 30, model.bytes);
  const ExportedImage packed(KORVEL_PIXEL_FORMAT_Mono10p, 4, 1);
  const auto calls = FailingCalls(directory, image.Handle(), packed.Handle());
  const auto round = [&] {
    for (size_t i = 0; i < calls.size(); ++i) ASSERT_NE(calls[i](), 0u) << "call " << i;
    for (const FileType type : kFileTypes) ASSERT_EQ(Read(File("whole", type)).code, 0u);
  };
  for (int i = 0; i < 5; ++i) round();
  const size_t descriptors = korvel_test::OpenDescriptors();
  const size_t memory = MemoryInUse();
  for (int i = 0; i < 100; ++i) round();
  EXPECT_GE(calls.size() * 100, 4000u);
  EXPECT_EQ(korvel_test::OpenDescriptors(), descriptors);
  if (kCountsMemory) {
    EXPECT_LT(MemoryInUse(), memory + 4096) << "less than a byte for each of the failures";
  }
}

TEST_F(ImageReaderApi, ReadsAndWritesInSeveralThreads) {
  std::vector<std::thread> threads;
  for (int thread = 0; thread < 4; ++thread) {
    threads.emplace_back([this, thread] {
      const FileType type = kFileTypes[thread];
      for (size_t i = 0; i < 30; ++i) {
        const ModelImage model = MakeFilledImage(IdOf("BGR8"), 20 + i, 9, Fill::kRandom, i);
        const std::string path = Written(type, model);
        EXPECT_TRUE(Holds(Read(path), ComesBack(type, model)));
        EXPECT_EQ(ReadAs(path, IdOf("RGB12")).error, InterpretationError());
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
}

}  // namespace
