#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <korvel/korvel.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "tests/support/exported_objects.h"
#include "tests/support/last_error.h"
#include "tests/support/temporary_directory.h"

namespace {

using korvel_test::Bytes;
using korvel_test::ExportedImage;
using korvel_test::LastError;
using korvel_test::MarkLastError;
using korvel_test::ReadLastError;
using korvel_test::TemporaryDirectory;

class ImageWriterApi : public testing::Test {
 protected:
  KORVEL_RETURN_CODE WriteAsPng(const std::string& path, uint32_t quality = 100) {
    return KORVEL_ImageWriter_WriteAsPNG(image.Handle(), quality, path.data(), path.size());
  }
  KORVEL_RETURN_CODE Write(const std::string& path) {
    return KORVEL_ImageWriter_Write(image.Handle(), path.data(), path.size());
  }
  static LastError Io(const std::string& text) { return {3, "error: type=Io[3], module_id=9001, txt=" + text}; }

  ExportedImage image{KORVEL_PIXEL_FORMAT_Mono8, 2, 2, Bytes{1, 2, 3, 4}};
  TemporaryDirectory directory;
};

std::string ContentOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

TEST_F(ImageWriterApi, WritesAFileAndLeavesTheRecordAlone) {
  const LastError before = MarkLastError();
  EXPECT_EQ(WriteAsPng(directory.File("a.png")), 0u);
  EXPECT_EQ(Write(directory.File("b.PNG")), 0u);
  EXPECT_EQ(ReadLastError(), before);
  const std::string content = ContentOf(directory.File("a.png"));
  EXPECT_EQ(content.substr(1, 3), "PNG");
  EXPECT_EQ(content.substr(content.size() - 8, 4), "IEND");
  EXPECT_EQ(ContentOf(directory.File("b.PNG")), content) << "the ending means a quality of 100";
}

TEST_F(ImageWriterApi, TakesExactlyTheBytesOfThePath) {
  const std::string longer = directory.File("a.pngXYZ");
  EXPECT_EQ(KORVEL_ImageWriter_Write(image.Handle(), longer.data(), longer.size() - 3), 0u);
  EXPECT_TRUE(std::filesystem::exists(directory.File("a.png")));
  EXPECT_FALSE(std::filesystem::exists(longer));
  const std::string bytes = directory.File("\xFF\xFE \xC3\xA4.png");
  EXPECT_EQ(Write(bytes), 0u);
  EXPECT_TRUE(std::filesystem::exists(bytes));
  EXPECT_EQ(Write(directory.File(std::string("a\0.png", 6))), 3u);
  EXPECT_EQ(ReadLastError(), Io("Error opening file. Check name and file permissions."));
}

TEST_F(ImageWriterApi, TellsWhatFailed) {
  EXPECT_EQ(WriteAsPng(directory.File("missing/a.png")), 3u);
  EXPECT_EQ(ReadLastError(), Io("ImageWriter: FileDirectory invalid!"));
  EXPECT_EQ(Write(directory.File("missing/a.png")), 3u);
  EXPECT_EQ(ReadLastError(), Io("ImageWriter: FileDirectory invalid!"));
  EXPECT_EQ(WriteAsPng(directory.File("a.bmp")), 3u);
  EXPECT_EQ(ReadLastError(), Io("ImageWriter: FileFormat is incorrect to file ending!"));
  EXPECT_EQ(Write(directory.File("a.unknown")), 3u);
  EXPECT_EQ(ReadLastError(), Io("ImageWriter: Unknown file format invalid!"));
  EXPECT_EQ(WriteAsPng("/proc/a.png"), 3u);
  EXPECT_EQ(ReadLastError(), Io("Error opening file. Check name and file permissions."));
  for (const uint32_t quality : {0u, 300u, 0x80000000u, 0xFFFFFFFFu}) {
    EXPECT_EQ(WriteAsPng(directory.File("a.png"), quality), 3u);
    EXPECT_EQ(ReadLastError(), Io("Could not write png image data."));
  }
  std::filesystem::create_symlink("/dev/full", directory.File("full.png"));
  EXPECT_EQ(Write(directory.File("full.png")), 3u);
  EXPECT_EQ(ReadLastError(), Io("Error writing file."));
}

TEST_F(ImageWriterApi, RefusesFormatsWithoutAPlaceInTheFile) {
  for (const uint32_t format : {uint32_t{KORVEL_PIXEL_FORMAT_Mono10p}, uint32_t{KORVEL_PIXEL_FORMAT_RGB10p32},
                                uint32_t{KORVEL_PIXEL_FORMAT_BayerRG12g24Qrv}, uint32_t{KORVEL_PIXEL_FORMAT_Invalid}}) {
    const ExportedImage packed(format, 4, 2);
    const std::string path = directory.File("packed.png");
    EXPECT_EQ(KORVEL_ImageWriter_WriteAsPNG(packed.Handle(), 100, path.data(), path.size()), 7u);
    EXPECT_EQ(ReadLastError(),
              (LastError{7, "error: type=ImageFormatNotSupported[7], module_id=9001, txt=Unsupported pixel format"}));
    EXPECT_FALSE(std::filesystem::exists(path));
  }
  const ExportedImage empty(KORVEL_PIXEL_FORMAT_Invalid, 0, 0);
  const std::string path = directory.File("empty.png");
  EXPECT_EQ(KORVEL_ImageWriter_Write(empty.Handle(), path.data(), path.size()), 7u);
}

TEST_F(ImageWriterApi, LeavesNoDescriptorBehind) {
  const size_t before = korvel_test::OpenDescriptors();
  for (int i = 0; i < 1000; ++i) {
    ASSERT_EQ(WriteAsPng(directory.File("a.png"), 300), 3u);
    ASSERT_EQ(WriteAsPng("/proc/a.png"), 3u);
  }
  EXPECT_EQ(korvel_test::OpenDescriptors(), before);
}

TEST_F(ImageWriterApi, ReadsNothingBeyondTheCallersMemory) {
  const korvel_test::CallersMemory memory(3 * 5 * 6 + 0);
  KORVEL_IMAGE_HANDLE handle = nullptr;
  ASSERT_EQ(KORVEL_Image_ConstructFromBuffer(KORVEL_PIXEL_FORMAT_BGR12, memory.Data(), 90, 3, 5, &handle), 0u);
  const ExportedImage overMemory(handle);
  const std::string path = directory.File("guard.png");
  EXPECT_EQ(KORVEL_ImageWriter_Write(handle, path.data(), path.size()), 0u);
}

}  // namespace
