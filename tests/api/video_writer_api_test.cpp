#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <korvel/korvel.h>

#include <array>
#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <limits>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "tests/model/avi_model.h"
#include "tests/support/command_output.h"
#include "tests/support/exported_objects.h"
#include "tests/support/file_bytes.h"
#include "tests/support/held_disk.h"
#include "tests/support/last_error.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/video_frames.h"

namespace {

using korvel_test::AviBytes;
using korvel_test::AviModel;
using korvel_test::BuildAviFile;
using korvel_test::Bytes;
using korvel_test::ClosedGate;
using korvel_test::CompressFrame;
using korvel_test::DiskGate;
using korvel_test::ExportedImage;
using korvel_test::ExportedVideo;
using korvel_test::kRgb24;
using korvel_test::kVideoFormats;
using korvel_test::kY8;
using korvel_test::LastError;
using korvel_test::MakeNoiseFrame;
using korvel_test::MakeSmoothFrame;
using korvel_test::MarkLastError;
using korvel_test::ParseAviFile;
using korvel_test::ReadFileBytes;
using korvel_test::ReadLastError;
using korvel_test::RecordedAvi;
using korvel_test::VideoFormatCase;
using korvel_test::WriteFileBytes;

constexpr uint16_t kAvi = KORVEL_VIDEO_CONTAINER_AVI;
constexpr uint16_t kMjpeg = KORVEL_VIDEO_ENCODER_MJPEG;

class VideoWriterApi : public testing::Test {
 protected:
  // Refused with a code and a text.
  static void ExpectFailure(KORVEL_RETURN_CODE returned, uint32_t code, const std::string& text) {
    EXPECT_EQ(returned, code);
    EXPECT_EQ(ReadLastError(), (LastError{code, text}));
  }

  // 64 x 48 pixels.
  static std::unique_ptr<ExportedImage> MakeImage(const VideoFormatCase& format, uint32_t step = 0) {
    return std::make_unique<ExportedImage>(format.id, 64, 48, MakeSmoothFrame(format, 64, 48, step));
  }
  static AviBytes PictureOf(const VideoFormatCase& format, uint32_t step = 0, int quality = 75) {
    return CompressFrame(format, 64, 48, MakeSmoothFrame(format, 64, 48, step), quality);
  }

  KORVEL_RETURN_CODE Open(const std::string& name, uint16_t container = kAvi, uint16_t encoder = kMjpeg) {
    handle = nullptr;
    return KORVEL_VideoWriter_Video_Open(&handle, name.c_str(), container, encoder);
  }
  void ExpectOpenFailure(const std::string& name, uint32_t code, const std::string& text) {
    ExpectFailure(Open(name), code, text);
    EXPECT_EQ(handle, nullptr);
  }
  size_t FramesInFile() const { return ParseAviFile(ReadFileBytes(path)).frames.size(); }

  korvel_test::TemporaryDirectory directory;
  std::string path = directory.File("a.avi");
  KORVEL_VIDEO_HANDLE handle = nullptr;
};

uint64_t EncodedOf(KORVEL_VIDEO_HANDLE video) {
  uint64_t frames = 0;
  EXPECT_EQ(KORVEL_VideoWriter_Video_GetEncodedFrames(video, &frames), 0u);
  return frames;
}

uint64_t DroppedOf(KORVEL_VIDEO_HANDLE video) {
  uint64_t frames = 0;
  EXPECT_EQ(KORVEL_VideoWriter_Video_GetDroppedFrames(video, &frames), 0u);
  return frames;
}

uint64_t FileSizeOf(KORVEL_VIDEO_HANDLE video) {
  uint64_t size = 0;
  EXPECT_EQ(KORVEL_VideoWriter_Video_GetFileSize(video, &size), 0u);
  return size;
}

uint32_t QueuedOf(KORVEL_VIDEO_HANDLE video) {
  uint32_t queued = 77;
  EXPECT_EQ(KORVEL_VideoWriter_Queue_GetQueued(video, &queued), 0u);
  return queued;
}

uint32_t QueueSizeOf(KORVEL_VIDEO_HANDLE video) {
  uint32_t size = 0;
  EXPECT_EQ(KORVEL_VideoWriter_Queue_GetSize(video, &size), 0u);
  return size;
}

uint8_t IsOpen(KORVEL_VIDEO_HANDLE video) {
  uint8_t isOpen = 77;
  EXPECT_EQ(KORVEL_VideoWriter_Video_IsOpen(video, &isOpen), 0u);
  return isOpen;
}

// However long it takes.
void AwaitDry(KORVEL_VIDEO_HANDLE video) {
  while (QueuedOf(video) != 0) KORVEL_VideoWriter_Video_WaitUntilQueueEmpty(video, 1000);
}

// -------------------------------------------------------------------------------------------------------- recording --

TEST_F(VideoWriterApi, RecordsAndLeavesTheLastErrorAlone) {
  const LastError before = MarkLastError();
  const auto image = MakeImage(kRgb24);
  ASSERT_EQ(Open(path), 0u);
  ASSERT_NE(handle, nullptr);
  EXPECT_EQ(IsOpen(handle), 1);
  EXPECT_EQ(KORVEL_VideoWriter_Video_Append(handle, image->Handle()), 0u);
  EXPECT_EQ(KORVEL_VideoWriter_Video_WaitUntilFrameDone(handle, 600'000), 0u);
  EXPECT_EQ(KORVEL_VideoWriter_Video_WaitUntilQueueEmpty(handle, 600'000), 0u);
  EXPECT_EQ(EncodedOf(handle), 1u);
  EXPECT_EQ(KORVEL_VideoWriter_Video_Close(handle), 0u);
  EXPECT_EQ(IsOpen(handle), 0);
  EXPECT_EQ(ReadLastError(), before);
  EXPECT_EQ(ReadFileBytes(path), BuildAviFile(RecordedAvi(64, 48, {PictureOf(kRgb24)})));
}

TEST_F(VideoWriterApi, RecordsEachFormatToTheLastByte) {
  for (const VideoFormatCase& format : kVideoFormats) {
    SCOPED_TRACE(format.name);
    std::filesystem::remove(path);
    ExportedVideo video(path);
    std::vector<AviBytes> pictures;
    for (uint32_t i = 0; i < 130; ++i) {
      const auto image = MakeImage(format, i);
      ASSERT_EQ(KORVEL_VideoWriter_Video_Append(video.Handle(), image->Handle()), 0u);
      pictures.push_back(PictureOf(format, i));
    }
    video.Close();
    EXPECT_EQ(ReadFileBytes(path), BuildAviFile(RecordedAvi(64, 48, pictures)));
  }
}

TEST_F(VideoWriterApi, LosesNoMoreThanJpegDoes) {
  for (const VideoFormatCase& format : kVideoFormats) {
    SCOPED_TRACE(format.name);
    std::filesystem::remove(path);
    ExportedVideo video(path);
    const int32_t quality = 100;
    ASSERT_EQ(KORVEL_VideoWriter_Encoder_SetOption(video.Handle(), 0, &quality, sizeof quality), 0u);
    ASSERT_EQ(KORVEL_VideoWriter_Video_Append(video.Handle(), MakeImage(format, 5)->Handle()), 0u);
    video.Close();
    const AviModel file = ParseAviFile(ReadFileBytes(path));
    ASSERT_EQ(file.frames.size(), 1u);
    EXPECT_LE(korvel_test::LargestDifference(format, korvel_test::DecodePicture(format, file.frames[0]).pixels,
                                             MakeSmoothFrame(format, 64, 48, 5)),
              8);
  }
}

TEST_F(VideoWriterApi, LeavesHeadersAndAnEmptyIndexWithoutAnImage) {
  ExportedVideo(path).Close();
  EXPECT_EQ(ReadFileBytes(path), BuildAviFile(RecordedAvi(0, 0, {})));
}

TEST_F(VideoWriterApi, ReadsNothingBeyondTheCallersMemory) {
  const korvel_test::CallersMemory memory(64 * 48 * 3);
  KORVEL_IMAGE_HANDLE overMemory = nullptr;
  ASSERT_EQ(KORVEL_Image_ConstructFromBuffer(KORVEL_PIXEL_FORMAT_RGB8, memory.Data(), 64 * 48 * 3, 64, 48, &overMemory),
            0u);
  const ExportedImage image(overMemory);
  ExportedVideo video(path);
  EXPECT_EQ(KORVEL_VideoWriter_Video_Append(video.Handle(), image.Handle()), 0u);
  video.Close();
  EXPECT_EQ(FramesInFile(), 1u);
}

TEST_F(VideoWriterApi, CopiesImages) {
  ExportedVideo video(path);
  {
    ClosedGate disk(DiskGate());
    auto image = MakeImage(kRgb24);
    ASSERT_EQ(KORVEL_VideoWriter_Video_Append(video.Handle(), image->Handle()), 0u);
    ASSERT_EQ(KORVEL_VideoWriter_Video_Append(video.Handle(), image->Handle()), 0u);
    disk.AwaitArrivals(1);
    std::memset(image->Data(), 0, image->ByteCount());
    image.reset();
  }
  video.Close();
  EXPECT_EQ(ParseAviFile(ReadFileBytes(path)).frames, (std::vector<AviBytes>(2, PictureOf(kRgb24))));
}

// --------------------------------------------------------------------------------------------------------- opening --

TEST_F(VideoWriterApi, LooksAtTheHandleFirstWhenItOpens) {
  ExpectFailure(KORVEL_VideoWriter_Video_Open(nullptr, nullptr, 77, 78), 5, "videoHandle is not a valid pointer!");
  const ExportedVideo video(path);
  KORVEL_VIDEO_HANDLE open = video.Handle();
  ExpectFailure(KORVEL_VideoWriter_Video_Open(&open, nullptr, 77, 78), 5, "The video writer is already open!");
  ExpectFailure(KORVEL_VideoWriter_Video_Open(&open, directory.File("b.avi").c_str(), kAvi, kMjpeg), 5,
                "The video writer is already open!");
  EXPECT_EQ(open, video.Handle());
  EXPECT_FALSE(std::filesystem::exists(directory.File("b.avi")));
}

TEST_F(VideoWriterApi, KnowsContainersAndEncodersByTheirNumbers) {
  for (const uint16_t number : {uint16_t{1}, uint16_t{2}, uint16_t{0xFFFF}}) {
    ExpectFailure(Open(path, number, kMjpeg), 1, "map::at");
    ExpectFailure(KORVEL_VideoWriter_Video_Open(&handle, nullptr, number, kMjpeg), 1, "map::at");
  }
  for (const uint16_t number : {uint16_t{2}, uint16_t{3}, uint16_t{0xFFFF}}) {
    ExpectFailure(Open(path, kAvi, number), 1, "map::at");
  }
  ExpectFailure(Open(path, kAvi, KORVEL_VIDEO_ENCODER_AVI), 5, "AviLegacy: Invalid parameter");
  ExpectFailure(KORVEL_VideoWriter_Video_Open(&handle, nullptr, kAvi, KORVEL_VIDEO_ENCODER_AVI), 5,
                "AviLegacy: Invalid parameter");
  EXPECT_EQ(handle, nullptr);
  EXPECT_FALSE(std::filesystem::exists(path));
}

TEST_F(VideoWriterApi, NeverOverwritesAFile) {
  WriteFileBytes(path, {1, 2, 3});
  ExpectOpenFailure(path, 10, "openFile: Could not access");
  EXPECT_EQ(ReadFileBytes(path), (AviBytes{1, 2, 3}));
  ExpectOpenFailure(directory.Path(), 10, "openFile: Could not access");
}

TEST_F(VideoWriterApi, TellsThatAFileCannotBeMade) {
  ExpectOpenFailure(directory.File("missing/a.avi"), 1, "openFile: No success");
  ExpectOpenFailure("", 1, "openFile: No success");
  ExpectFailure(KORVEL_VideoWriter_Video_Open(&handle, nullptr, kAvi, kMjpeg), 1,
                "basic_string: construction from null is not valid");
  for (const char* const name : {"\xFF", "\xC3", "a\x80z", "\xC0\xAF"}) {
    MarkLastError();
    EXPECT_EQ(Open(directory.File(name)), 1u);
    EXPECT_EQ(ReadLastError().code, 1u);
    EXPECT_NE(ReadLastError().text, "");
    EXPECT_EQ(handle, nullptr);
  }
  EXPECT_TRUE(std::filesystem::is_empty(directory.Path()));
}

TEST_F(VideoWriterApi, HoldsNothingAfterAFailureToOpen) {
  WriteFileBytes(path, {1});
  const size_t before = korvel_test::OpenDescriptors();
  for (int i = 0; i < 100; ++i) {
    ASSERT_EQ(Open(path), 10u);
    ASSERT_EQ(Open(directory.File("missing/a.avi")), 1u);
    ASSERT_EQ(Open(directory.File("\xFF")), 1u);
    ASSERT_EQ(Open(path, kAvi, KORVEL_VIDEO_ENCODER_AVI), 5u);
    ASSERT_EQ(KORVEL_VideoWriter_Video_Open(&handle, nullptr, kAvi, kMjpeg), 1u);
  }
  EXPECT_EQ(korvel_test::OpenDescriptors(), before);
  EXPECT_EQ(Open(directory.File("b.avi")), 0u) << "all of its places are free";
  EXPECT_EQ(KORVEL_VideoWriter_Video_Close(handle), 0u);
}

TEST_F(VideoWriterApi, TakesHandlesThatAreNoVideos) {
  const ExportedImage image(KORVEL_PIXEL_FORMAT_Mono8, 16, 16);
  uintptr_t number = 0;
  for (const uintptr_t stale :
       {uintptr_t{0}, uintptr_t{0x1234}, UINTPTR_MAX, reinterpret_cast<uintptr_t>(image.Handle())}) {
    KORVEL_VIDEO_HANDLE video = reinterpret_cast<KORVEL_VIDEO_HANDLE>(stale);
    ASSERT_EQ(KORVEL_VideoWriter_Video_Open(&video, directory.File(std::to_string(++number)).c_str(), kAvi, kMjpeg),
              0u);
    EXPECT_EQ(KORVEL_VideoWriter_Video_Close(video), 0u);
  }
}

TEST_F(VideoWriterApi, TakesLongPathsAndAnyScript) {
  std::string folder = directory.Path();
  while (folder.size() < 400) {
    folder += "/\xC3\xA4\xE6\xBC\xA2\xF0\x9F\x8E\xA5 0123456789 0123456789 0123456789 0123456789 0123456789";
    std::filesystem::create_directory(folder);
  }
  path = folder + "/\xC3\xBC.avi";
  ExportedVideo video(path);
  ASSERT_EQ(KORVEL_VideoWriter_Video_Append(video.Handle(), MakeImage(kRgb24)->Handle()), 0u);
  video.Close();
  EXPECT_EQ(FramesInFile(), 1u);
}

TEST_F(VideoWriterApi, HasUpTo48VideosOpen) {
  const auto image = MakeImage(kRgb24);
  std::vector<std::unique_ptr<ExportedVideo>> videos;
  for (int i = 0; i < 48; ++i) {
    videos.push_back(std::make_unique<ExportedVideo>(directory.File(std::to_string(i))));
    ASSERT_EQ(KORVEL_VideoWriter_Video_Append(videos.back()->Handle(), image->Handle()), 0u);
  }
  ExpectOpenFailure(path, 1, "AviLegacy: No success");
  EXPECT_FALSE(std::filesystem::exists(path));
  videos[20]->Close();
  ASSERT_EQ(Open(path), 0u);
  EXPECT_EQ(KORVEL_VideoWriter_Video_Close(handle), 0u);
  videos.clear();
  for (int i = 0; i < 48; ++i) {
    EXPECT_EQ(ReadFileBytes(directory.File(std::to_string(i))), BuildAviFile(RecordedAvi(64, 48, {PictureOf(kRgb24)})));
  }
}

// --------------------------------------------------------------------------------------------- closing and handles --

TEST_F(VideoWriterApi, ClosesOnce) {
  ASSERT_EQ(Open(path), 0u);
  EXPECT_EQ(KORVEL_VideoWriter_Video_Close(handle), 0u);
  ExpectFailure(KORVEL_VideoWriter_Video_Close(handle), 2, "videoHandle is invalid!");
}

TEST_F(VideoWriterApi, TellsWhatIsOpen) {
  ExpectFailure(KORVEL_VideoWriter_Video_IsOpen(nullptr, nullptr), 5, "The isOpen parameter is an invalid pointer!");
  const ExportedVideo video(path);
  ExpectFailure(KORVEL_VideoWriter_Video_IsOpen(video.Handle(), nullptr), 5,
                "The isOpen parameter is an invalid pointer!");
  const auto image = MakeImage(kRgb24);
  EXPECT_EQ(IsOpen(video.Handle()), 1);
  EXPECT_EQ(IsOpen(nullptr), 0);
  EXPECT_EQ(IsOpen(reinterpret_cast<KORVEL_VIDEO_HANDLE>(uintptr_t{0x1234})), 0);
  EXPECT_EQ(IsOpen(reinterpret_cast<KORVEL_VIDEO_HANDLE>(image->Handle())), 0);
}

// --------------------------------------------------------------------------------------------------------- append --

TEST_F(VideoWriterApi, RefusesEveryOtherFormat) {
  const ExportedVideo video(path);
  size_t refused = 0;
#define KORVEL_TEST_FORMAT(name, id)                                                                      \
  if (id != 0x01080001 && id != 0x02180014 && id != 0x02200016 && id != 0x02180015 && id != 0x02200017) { \
    const ExportedImage image(id, 64, 48);                                                                \
    ExpectFailure(KORVEL_VideoWriter_Video_Append(video.Handle(), image.Handle()), 7,                     \
                  "Pixel format " #name " is not supported!");                                            \
    ++refused;                                                                                            \
  }
  KORVEL_PIXEL_FORMATS(KORVEL_TEST_FORMAT)
#undef KORVEL_TEST_FORMAT
  EXPECT_EQ(refused, 44u);
  const ExportedImage invalid(KORVEL_PIXEL_FORMAT_Invalid, 64, 48);
  ExpectFailure(KORVEL_VideoWriter_Video_Append(video.Handle(), invalid.Handle()), 7,
                "Pixel format Invalid is not supported!");
  EXPECT_EQ(DroppedOf(video.Handle()), 0u);
  EXPECT_EQ(KORVEL_VideoWriter_Video_Append(video.Handle(), MakeImage(kY8)->Handle()), 0u)
      << "the first image that is taken decides";
}

TEST_F(VideoWriterApi, LooksAtVideoThenImageThenItsDataThenItsFormat) {
  const ExportedVideo video(path);
  const ExportedImage empty(KORVEL_PIXEL_FORMAT_Invalid, 0, 0);
  ExpectFailure(KORVEL_VideoWriter_Video_Append(nullptr, nullptr), 2, "videoHandle is invalid!");
  ExpectFailure(KORVEL_VideoWriter_Video_Append(video.Handle(), nullptr), 2, "imageHandle is invalid!");
  ExpectFailure(KORVEL_VideoWriter_Video_Append(video.Handle(), empty.Handle()), 5, "imageHandle has no data!");
}

TEST_F(VideoWriterApi, WantsImagesLikeTheFirst) {
  ExportedVideo video(path);
  ASSERT_EQ(KORVEL_VideoWriter_Video_Append(video.Handle(), MakeImage(kRgb24)->Handle()), 0u);
  for (const VideoFormatCase& format : kVideoFormats) {
    if (format.id == kRgb24.id) continue;
    const ExportedImage other(format.id, 72, 48);  // of another size, too
    ExpectFailure(KORVEL_VideoWriter_Video_Append(video.Handle(), other.Handle()), 10,
                  "setSourceFormat: Could not access");
  }
  for (const auto& [width, height] : {std::pair<size_t, size_t>(72, 48), std::pair<size_t, size_t>(64, 49)}) {
    const ExportedImage other(kRgb24.id, width, height);
    ExpectFailure(KORVEL_VideoWriter_Video_Append(video.Handle(), other.Handle()), 10,
                  "setDimensions: Could not access");
  }
  EXPECT_EQ(DroppedOf(video.Handle()), 0u) << "what is refused isn't dropped";
  ASSERT_EQ(KORVEL_VideoWriter_Video_Append(video.Handle(), MakeImage(kRgb24)->Handle()), 0u);
  video.Close();
  EXPECT_EQ(FramesInFile(), 2u);
}

TEST_F(VideoWriterApi, WantsSizesThatCanBeRecorded) {
  ExportedVideo video(path);
  for (const auto& [width, height] :
       {std::pair<size_t, size_t>(20, 16), std::pair<size_t, size_t>(8, 16), std::pair<size_t, size_t>(16, 15)}) {
    const ExportedImage image(kRgb24.id, width, height);
    ExpectFailure(KORVEL_VideoWriter_Video_Append(video.Handle(), image.Handle()), 5, "append: Invalid parameter");
  }
  const ExportedImage image(kRgb24.id, 24, 17);
  EXPECT_EQ(KORVEL_VideoWriter_Video_Append(video.Handle(), image.Handle()), 0u);
  video.Close();
  const AviModel file = ParseAviFile(ReadFileBytes(path));
  EXPECT_EQ(file.width, 24u);
  EXPECT_EQ(file.height, 17u);
  EXPECT_EQ(file.frames.size(), 1u);
}

TEST_F(VideoWriterApi, DropsPicturesThatAreLargerThanTheirImages) {
  ExportedVideo video(path);
  const int32_t quality = 100;
  ASSERT_EQ(KORVEL_VideoWriter_Encoder_SetOption(video.Handle(), 0, &quality, sizeof quality), 0u);
  const ExportedImage noise(kY8.id, 64, 48, MakeNoiseFrame(kY8, 64, 48, 1));
  const auto smooth = MakeImage(kY8);
  EXPECT_EQ(KORVEL_VideoWriter_Video_Append(video.Handle(), noise.Handle()), 0u);
  EXPECT_EQ(KORVEL_VideoWriter_Video_Append(video.Handle(), smooth->Handle()), 0u);
  AwaitDry(video.Handle());
  EXPECT_EQ(EncodedOf(video.Handle()), 1u);
  EXPECT_EQ(DroppedOf(video.Handle()), 1u);
  video.Close();
  EXPECT_EQ(ParseAviFile(ReadFileBytes(path)).frames, (std::vector<AviBytes>{PictureOf(kY8, 0, 100)}));
}

// -------------------------------------------------------------------------------------------------------- options --

TEST_F(VideoWriterApi, HasDefaultsForItsOptions) {
  const ExportedVideo video(path);
  int32_t quality = 0;
  double fps = 0;
  size_t written = 77;
  EXPECT_EQ(KORVEL_VideoWriter_Encoder_GetOption(video.Handle(), 0, &quality, 4, &written), 0u);
  EXPECT_EQ(quality, 75);
  EXPECT_EQ(written, 4u);
  EXPECT_EQ(KORVEL_VideoWriter_Container_GetOption(video.Handle(), 0, &fps, 8, &written), 0u);
  EXPECT_EQ(fps, 25.0);
  EXPECT_EQ(written, 8u);
  EXPECT_EQ(KORVEL_VideoWriter_Encoder_GetOption(video.Handle(), 0, &quality, 4, nullptr), 0u);
  EXPECT_EQ(KORVEL_VideoWriter_Container_GetOption(video.Handle(), 0, &fps, 8, nullptr), 0u);
}

TEST_F(VideoWriterApi, KeepsOptionsBeforeAndWhileRecording) {
  ExportedVideo video(path);
  const auto image = MakeImage(kRgb24);
  for (const int32_t wanted : {1, 100, 60}) {
    int32_t quality = 0;
    EXPECT_EQ(KORVEL_VideoWriter_Encoder_SetOption(video.Handle(), 0, &wanted, 4), 0u);
    EXPECT_EQ(KORVEL_VideoWriter_Encoder_GetOption(video.Handle(), 0, &quality, 4, nullptr), 0u);
    EXPECT_EQ(quality, wanted);
    const double rate = wanted + 0.5;
    double fps = 0;
    EXPECT_EQ(KORVEL_VideoWriter_Container_SetOption(video.Handle(), 0, &rate, 8), 0u);
    EXPECT_EQ(KORVEL_VideoWriter_Container_GetOption(video.Handle(), 0, &fps, 8, nullptr), 0u);
    EXPECT_EQ(fps, rate);
    EXPECT_EQ(KORVEL_VideoWriter_Video_Append(video.Handle(), image->Handle()), 0u);
    AwaitDry(video.Handle());
  }
  video.Close();
  EXPECT_EQ(ReadFileBytes(path),
            BuildAviFile(RecordedAvi(
                64, 48, {PictureOf(kRgb24, 0, 1), PictureOf(kRgb24, 0, 100), PictureOf(kRgb24, 0, 60)}, 16528, 60)));
}

TEST_F(VideoWriterApi, TakesValuesFromAnyAddress) {
  const ExportedVideo video(path);
  std::array<uint8_t, 9> bytes{};
  const double fps = 12.5;
  std::memcpy(&bytes[1], &fps, sizeof fps);
  EXPECT_EQ(KORVEL_VideoWriter_Container_SetOption(video.Handle(), 0, &bytes[1], 8), 0u);
  bytes.fill(0);
  EXPECT_EQ(KORVEL_VideoWriter_Container_GetOption(video.Handle(), 0, &bytes[1], 8, nullptr), 0u);
  EXPECT_EQ(std::memcmp(&bytes[1], &fps, sizeof fps), 0);
}

TEST_F(VideoWriterApi, RefusesOptionsThatAreOutOfRange) {
  const ExportedVideo video(path);
  for (const int32_t wanted : {0, 101, -1, std::numeric_limits<int32_t>::min()}) {
    ExpectFailure(KORVEL_VideoWriter_Encoder_SetOption(video.Handle(), 0, &wanted, 4), 5,
                  "setOption: Invalid parameter");
  }
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  for (const double wanted : {0.0, -1.0, kInfinity, -kInfinity, std::numeric_limits<double>::quiet_NaN()}) {
    ExpectFailure(KORVEL_VideoWriter_Container_SetOption(video.Handle(), 0, &wanted, 8), 5,
                  "setOption: Invalid parameter");
  }
  int32_t quality = 0;
  double fps = 0;
  EXPECT_EQ(KORVEL_VideoWriter_Encoder_GetOption(video.Handle(), 0, &quality, 4, nullptr), 0u);
  EXPECT_EQ(KORVEL_VideoWriter_Container_GetOption(video.Handle(), 0, &fps, 8, nullptr), 0u);
  EXPECT_EQ(quality, 75);
  EXPECT_EQ(fps, 25.0);
}

// Handle, pointer, number, size: in this order.
TEST_F(VideoWriterApi, ChecksTheArgumentsOfOptionsInOrder) {
  const ExportedVideo video(path);
  const KORVEL_VIDEO_HANDLE open = video.Handle();
  std::array<uint8_t, 16> value{};
  size_t written = 77;
  constexpr char kNoPointer[] = "The value parameter is an invalid pointer!";
  ExpectFailure(KORVEL_VideoWriter_Encoder_SetOption(nullptr, 77, nullptr, 0), 2, "videoHandle is invalid!");
  ExpectFailure(KORVEL_VideoWriter_Container_SetOption(nullptr, 77, nullptr, 0), 2, "videoHandle is invalid!");
  ExpectFailure(KORVEL_VideoWriter_Encoder_GetOption(nullptr, 77, nullptr, 0, &written), 2, "videoHandle is invalid!");
  ExpectFailure(KORVEL_VideoWriter_Container_GetOption(nullptr, 77, nullptr, 0, &written), 2,
                "videoHandle is invalid!");
  ExpectFailure(KORVEL_VideoWriter_Encoder_SetOption(open, 77, nullptr, 0), 5, kNoPointer);
  ExpectFailure(KORVEL_VideoWriter_Container_SetOption(open, 77, nullptr, 0), 5, kNoPointer);
  ExpectFailure(KORVEL_VideoWriter_Encoder_GetOption(open, 77, nullptr, 0, &written), 5, kNoPointer);
  ExpectFailure(KORVEL_VideoWriter_Container_GetOption(open, 77, nullptr, 0, &written), 5, kNoPointer);
  for (const uint32_t option : {1u, 77u, 65536u, 0xFFFFFFFFu}) {
    ExpectFailure(KORVEL_VideoWriter_Encoder_SetOption(open, option, value.data(), 0), 1, "map::at");
    ExpectFailure(KORVEL_VideoWriter_Container_SetOption(open, option, value.data(), 0), 1, "map::at");
    ExpectFailure(KORVEL_VideoWriter_Encoder_GetOption(open, option, value.data(), 0, &written), 1, "map::at");
    ExpectFailure(KORVEL_VideoWriter_Container_GetOption(open, option, value.data(), 0, &written), 1, "map::at");
  }
  constexpr char kWrongSize[] = "The Parameter count does not match the actual size of value!";
  for (const size_t size : {size_t{0}, size_t{1}, size_t{3}, size_t{5}, size_t{8}, SIZE_MAX}) {
    ExpectFailure(KORVEL_VideoWriter_Encoder_SetOption(open, 0, value.data(), size), 5, kWrongSize);
    ExpectFailure(KORVEL_VideoWriter_Encoder_GetOption(open, 0, value.data(), size, &written), 5, kWrongSize);
  }
  for (const size_t size : {size_t{0}, size_t{4}, size_t{7}, size_t{9}, SIZE_MAX}) {
    ExpectFailure(KORVEL_VideoWriter_Container_SetOption(open, 0, value.data(), size), 5, kWrongSize);
    ExpectFailure(KORVEL_VideoWriter_Container_GetOption(open, 0, value.data(), size, &written), 5, kWrongSize);
  }
  EXPECT_EQ(written, 77u);
  EXPECT_EQ(value, (std::array<uint8_t, 16>{}));
}

TEST_F(VideoWriterApi, HasARangeForQualityAlone) {
  const ExportedVideo video(path);
  const KORVEL_VIDEO_HANDLE open = video.Handle();
  int32_t values[6] = {7, 7, 7, 7, 7, 7};
  EXPECT_EQ(KORVEL_VideoWriter_Encoder_OptionRange(open, 0, &values[0], &values[2], &values[4]), 0u);
  EXPECT_THAT(values, testing::ElementsAre(1, 7, 100, 7, 1, 7)) << "four bytes each";

  ExpectFailure(KORVEL_VideoWriter_Encoder_OptionRange(nullptr, 77, nullptr, nullptr, nullptr), 2,
                "videoHandle is invalid!");
  ExpectFailure(KORVEL_VideoWriter_Encoder_OptionRange(open, 77, nullptr, nullptr, nullptr), 5,
                "The min parameter is an invalid pointer!");
  ExpectFailure(KORVEL_VideoWriter_Encoder_OptionRange(open, 77, values, nullptr, nullptr), 5,
                "The max parameter is an invalid pointer!");
  // Worded differently on purpose.
  ExpectFailure(KORVEL_VideoWriter_Encoder_OptionRange(open, 77, values, values, nullptr), 5,
                "The , max, inc parameter is an invalid pointer!");
  for (const uint32_t option : {1u, 65536u, 0xFFFFFFFFu}) {
    ExpectFailure(KORVEL_VideoWriter_Encoder_OptionRange(open, option, values, values, values), 1, "map::at");
  }
}

TEST_F(VideoWriterApi, HasNoRangesForContainersAndLooksAtNothing) {
  const LastError before = MarkLastError();
  const ExportedVideo video(path);
  int32_t value = 7;
  EXPECT_EQ(KORVEL_VideoWriter_Container_OptionRange(nullptr, 77, nullptr, nullptr, nullptr), 9u);
  EXPECT_EQ(KORVEL_VideoWriter_Container_OptionRange(video.Handle(), 0, &value, &value, &value), 9u);
  EXPECT_EQ(value, 7);
  EXPECT_EQ(ReadLastError(), before) << "nothing is recorded";
}

// ---------------------------------------------------------------------------------------------------------- lists --

TEST_F(VideoWriterApi, ListsWhatCanBeCombined) {
  constexpr char kNoPointer[] = "The size parameter is an invalid pointer!";
  // The number that is asked about doesn't matter.
  for (const uint16_t number : {uint16_t{0}, uint16_t{1}, uint16_t{0xFFFF}}) {
    std::array<uint16_t, 3> array = {7, 7, 7};
    size_t size = 77;
    EXPECT_EQ(KORVEL_VideoWriter_GetSupportedEncodersForAContainer(number, nullptr, &size), 0u);
    EXPECT_EQ(size, 1u);
    size = 0;  // not looked at
    EXPECT_EQ(KORVEL_VideoWriter_GetSupportedEncodersForAContainer(number, array.data(), &size), 0u);
    EXPECT_EQ(size, 1u);
    EXPECT_THAT(array, testing::ElementsAre(kMjpeg, 7, 7));
    ExpectFailure(KORVEL_VideoWriter_GetSupportedEncodersForAContainer(number, array.data(), nullptr), 5, kNoPointer);

    array.fill(7);
    EXPECT_EQ(KORVEL_VideoWriter_GetSupportedContainersForAnEncoder(number, nullptr, &size), 0u);
    EXPECT_EQ(size, 1u);
    size = 0;
    EXPECT_EQ(KORVEL_VideoWriter_GetSupportedContainersForAnEncoder(number, array.data(), &size), 0u);
    EXPECT_EQ(size, 1u);
    EXPECT_THAT(array, testing::ElementsAre(kAvi, 7, 7));
    ExpectFailure(KORVEL_VideoWriter_GetSupportedContainersForAnEncoder(number, array.data(), nullptr), 5, kNoPointer);
  }
}

TEST_F(VideoWriterApi, ListsPixelFormatsOfAnEncoder) {
  std::array<uint32_t, 6> formats{};
  size_t size = 77;
  EXPECT_EQ(KORVEL_VideoWriter_Encoder_GetSupportedPixelFormats(kMjpeg, nullptr, &size), 0u);
  EXPECT_EQ(size, 5u);
  size = 0;
  EXPECT_EQ(KORVEL_VideoWriter_Encoder_GetSupportedPixelFormats(kMjpeg, formats.data(), &size), 0u);
  EXPECT_EQ(size, 5u);
  EXPECT_THAT(formats, testing::ElementsAre(0x02180015, 0x02200017, 0x02180014, 0x02200016, 0x01080001, 0));
  EXPECT_EQ(KORVEL_VideoWriter_Encoder_GetSupportedPixelFormats(KORVEL_VIDEO_ENCODER_AVI, nullptr, &size), 0u);
  EXPECT_EQ(size, 0u);
  for (const uint16_t encoder : {uint16_t{2}, uint16_t{0xFFFF}}) {
    ExpectFailure(KORVEL_VideoWriter_Encoder_GetSupportedPixelFormats(encoder, nullptr, nullptr), 1, "map::at");
  }
  ExpectFailure(KORVEL_VideoWriter_Encoder_GetSupportedPixelFormats(kMjpeg, formats.data(), nullptr), 5,
                "The size parameter is an invalid pointer!");
}

// ---------------------------------------------------------------------------------------------- queue and counters --

TEST_F(VideoWriterApi, TakesTheQueuesSizeBeforeTheFirstImage) {
  const ExportedVideo video(path);
  const KORVEL_VIDEO_HANDLE open = video.Handle();
  uint32_t least = 0;
  uint32_t most = 0;
  EXPECT_EQ(KORVEL_VideoWriter_Queue_GetRange(open, &least, &most), 0u);
  EXPECT_EQ(least, 1u);
  EXPECT_EQ(most, 1000u);
  EXPECT_EQ(QueueSizeOf(open), 16u);
  for (const uint32_t size : {0u, 1001u}) {
    ExpectFailure(KORVEL_VideoWriter_Queue_SetSize(open, size), 5, "setQueueSize: Invalid parameter");
  }
  EXPECT_EQ(QueueSizeOf(open), 16u);
  for (const uint32_t size : {1u, 1000u, 5u}) {
    EXPECT_EQ(KORVEL_VideoWriter_Queue_SetSize(open, size), 0u);
    EXPECT_EQ(QueueSizeOf(open), size);
  }
  ASSERT_EQ(KORVEL_VideoWriter_Video_Append(open, MakeImage(kRgb24)->Handle()), 0u);
  EXPECT_EQ(QueueSizeOf(open), 5u);
  ExpectFailure(KORVEL_VideoWriter_Queue_SetSize(open, 6), 1, "setQueueSize: No success");
  ExpectFailure(KORVEL_VideoWriter_Queue_SetSize(open, 0), 1, "setQueueSize: No success");
}

TEST_F(VideoWriterApi, MakesTheQueueAsLongAsMemoryIsMeantToHold) {
  const ExportedVideo video(path);
  const ExportedImage image(KORVEL_PIXEL_FORMAT_Mono8, 1920, 1080);
  ASSERT_EQ(KORVEL_VideoWriter_Video_Append(video.Handle(), image.Handle()), 0u);
  EXPECT_EQ(QueueSizeOf(video.Handle()), 25u);
}

TEST_F(VideoWriterApi, DropsTheNewestImageWhenTheQueueIsFull) {
  ExportedVideo video(path);
  const KORVEL_VIDEO_HANDLE open = video.Handle();
  ASSERT_EQ(KORVEL_VideoWriter_Queue_SetSize(open, 2), 0u);
  {
    ClosedGate disk(DiskGate());
    for (uint32_t i = 0; i < 2; ++i)
      ASSERT_EQ(KORVEL_VideoWriter_Video_Append(open, MakeImage(kRgb24, i)->Handle()), 0u);
    ExpectFailure(KORVEL_VideoWriter_Video_Append(open, MakeImage(kRgb24, 2)->Handle()), 11, "append: Queue is full");
    EXPECT_EQ(QueuedOf(open), 2u);
    EXPECT_EQ(EncodedOf(open), 0u);
    EXPECT_EQ(DroppedOf(open), 1u);
    disk.Release();
    disk.AwaitArrivals(2);
    EXPECT_EQ(QueuedOf(open), 1u);
    EXPECT_EQ(EncodedOf(open), 1u);
    EXPECT_EQ(FileSizeOf(open), PictureOf(kRgb24, 0).size());
    ASSERT_EQ(KORVEL_VideoWriter_Video_Append(open, MakeImage(kRgb24, 3)->Handle()), 0u);
  }
  AwaitDry(open);
  const std::vector<AviBytes> pictures = {PictureOf(kRgb24, 0), PictureOf(kRgb24, 1), PictureOf(kRgb24, 3)};
  const uint64_t size = pictures[0].size() + pictures[1].size() + pictures[2].size();
  EXPECT_EQ(EncodedOf(open), 3u);
  EXPECT_EQ(FileSizeOf(open), size);
  EXPECT_EQ(KORVEL_VideoWriter_Video_ResetFrameCounters(open), 0u);
  EXPECT_EQ(EncodedOf(open), 0u);
  EXPECT_EQ(DroppedOf(open), 0u);
  EXPECT_EQ(FileSizeOf(open), size);
  video.Close();
  EXPECT_EQ(ParseAviFile(ReadFileBytes(path)).frames, pictures);
}

// 8192 x 6408 pixels of four bytes are more than 200 MiB, so that not one fits.
TEST_F(VideoWriterApi, DropsEveryImageThatIsTooLargeForTheQueue) {
  const ExportedVideo video(path);
  const ExportedImage image(KORVEL_PIXEL_FORMAT_Mono8, 8192, 6408);
  for (uint64_t i = 1; i <= 3; ++i) {
    ExpectFailure(KORVEL_VideoWriter_Video_Append(video.Handle(), image.Handle()), 11, "append: Queue is full");
    EXPECT_EQ(DroppedOf(video.Handle()), i);
  }
  EXPECT_EQ(QueueSizeOf(video.Handle()), 0u);
}

TEST_F(VideoWriterApi, WaitsUntilTheQueueIsEmptyOrTimeRunsOut) {
  const ExportedVideo video(path);
  const KORVEL_VIDEO_HANDLE open = video.Handle();
  EXPECT_EQ(KORVEL_VideoWriter_Video_WaitUntilFrameDone(open, 0), 0u);
  EXPECT_EQ(KORVEL_VideoWriter_Video_WaitUntilQueueEmpty(open, 0), 0u);
  std::vector<std::thread> waiters;
  {
    ClosedGate disk(DiskGate());
    ASSERT_EQ(KORVEL_VideoWriter_Video_Append(open, MakeImage(kRgb24)->Handle()), 0u);
    for (const uint32_t timeout : {0u, 20u}) {
      ExpectFailure(KORVEL_VideoWriter_Video_WaitUntilFrameDone(open, timeout), 12, "waitUntilDone: Timeout");
      ExpectFailure(KORVEL_VideoWriter_Video_WaitUntilQueueEmpty(open, timeout), 12, "waitUntilQueueEmpty: Timeout");
    }
    waiters.emplace_back([=] { EXPECT_EQ(KORVEL_VideoWriter_Video_WaitUntilFrameDone(open, 0xFFFFFFFF), 0u); });
    waiters.emplace_back([=] { EXPECT_EQ(KORVEL_VideoWriter_Video_WaitUntilQueueEmpty(open, 0xFFFFFFFF), 0u); });
  }
  for (std::thread& waiter : waiters) waiter.join();
}

TEST_F(VideoWriterApi, DropsImagesWhenTheDiskIsNearlyFull) {
  struct DiskCase {
    uint64_t blocks;
    uint64_t bytesPerBlock;
    bool isRoom;
  };
  const ExportedVideo video(path);
  const auto image = MakeImage(kRgb24);
  // 5025 KiB are enough; the sizes of large disks don't fit 32 bits.
  for (const DiskCase& disk :
       {DiskCase{0, 4096, false}, DiskCase{5024, 1024, false}, DiskCase{5025, 1024, true}, DiskCase{10049, 512, false},
        DiskCase{10050, 512, true}, DiskCase{uint64_t{1} << 32, 4096, true}, DiskCase{uint64_t{1} << 52, 4096, true},
        DiskCase{uint64_t{1} << 60, 4096, true}}) {
    SCOPED_TRACE(testing::Message() << disk.blocks << " blocks of " << disk.bytesPerBlock);
    korvel_test::SetFreeBlocks(disk.blocks, disk.bytesPerBlock);
    EXPECT_EQ(KORVEL_VideoWriter_Video_ResetFrameCounters(video.Handle()), 0u);
    EXPECT_EQ(KORVEL_VideoWriter_Video_Append(video.Handle(), image->Handle()), 0u);
    AwaitDry(video.Handle());
    EXPECT_EQ(EncodedOf(video.Handle()), disk.isRoom ? 1u : 0u);
    EXPECT_EQ(DroppedOf(video.Handle()), disk.isRoom ? 0u : 1u);
  }
  korvel_test::UseTheDisksOwnBlocks();
}

TEST_F(VideoWriterApi, LeavesNoDescriptorBehind) {
  const auto image = MakeImage(kY8);
  const auto record = [&] {
    ExportedVideo video(path);
    EXPECT_EQ(KORVEL_VideoWriter_Video_Append(video.Handle(), image->Handle()), 0u);
    video.Close();
    std::filesystem::remove(path);
  };
  record();
  const size_t before = korvel_test::OpenDescriptors();
  for (int i = 0; i < 100; ++i) record();
  EXPECT_EQ(korvel_test::OpenDescriptors(), before);
}

// ---------------------------------------------------------------------------------------------- process and threads --

TEST_F(VideoWriterApi, ClosesWhatIsStillOpenWhenTheProcessEnds) {
  const std::string other = directory.File("b.avi");
  EXPECT_EXIT(
      {
        ExportedVideo video(path);
        KORVEL_VIDEO_HANDLE open[2] = {};
        KORVEL_VideoWriter_Video_Open(&open[0], other.c_str(), kAvi, kMjpeg);
        KORVEL_VideoWriter_Video_Open(&open[1], directory.File("c.avi").c_str(), kAvi, kMjpeg);
        for (uint32_t i = 0; i < 150; ++i) {
          KORVEL_VideoWriter_Video_Append(video.Handle(), MakeImage(kRgb24, i)->Handle());
          KORVEL_VideoWriter_Video_Append(open[0], MakeImage(kY8, i)->Handle());
        }
        std::exit(0);
      },
      testing::ExitedWithCode(0), "");
  for (const auto& [name, format] : {std::pair(path, kRgb24), std::pair(other, kY8)}) {
    std::vector<AviBytes> pictures;
    for (uint32_t i = 0; i < 150; ++i) pictures.push_back(PictureOf(format, i));
    EXPECT_EQ(ReadFileBytes(name), BuildAviFile(RecordedAvi(64, 48, pictures)));
  }
  EXPECT_EQ(ReadFileBytes(directory.File("c.avi")), BuildAviFile(RecordedAvi(0, 0, {})));
}

TEST_F(VideoWriterApi, LosesNoImageOfTwoThreads) {
  ExportedVideo video(path);
  const KORVEL_VIDEO_HANDLE open = video.Handle();
  const auto image = MakeImage(kRgb24);
  ASSERT_EQ(KORVEL_VideoWriter_Queue_SetSize(open, 10), 0u);
  constexpr uint64_t kImages = 200;
  std::atomic<int> appending = 2;
  std::vector<std::thread> threads;
  for (int i = 0; i < 2; ++i) {
    threads.emplace_back([&] {
      for (uint64_t k = 0; k < kImages; ++k) {
        const KORVEL_RETURN_CODE code = KORVEL_VideoWriter_Video_Append(open, image->Handle());
        EXPECT_TRUE(code == 0 || code == 11) << code;
      }
      --appending;
    });
  }
  threads.emplace_back([&] {
    for (int32_t k = 0; appending > 0; ++k) {
      const int32_t quality = 1 + k % 100;
      const double fps = 1.0 + k % 50;
      EXPECT_EQ(KORVEL_VideoWriter_Encoder_SetOption(open, 0, &quality, 4), 0u);
      EXPECT_EQ(KORVEL_VideoWriter_Container_SetOption(open, 0, &fps, 8), 0u);
    }
  });
  threads.emplace_back([&] {
    while (appending > 0) {
      const KORVEL_RETURN_CODE done = KORVEL_VideoWriter_Video_WaitUntilFrameDone(open, 1);
      const KORVEL_RETURN_CODE empty = KORVEL_VideoWriter_Video_WaitUntilQueueEmpty(open, 1);
      EXPECT_TRUE((done == 0 || done == 12) && (empty == 0 || empty == 12));
      EXPECT_LE(EncodedOf(open), 2 * kImages);
      EXPECT_LE(QueuedOf(open), 11u);
    }
  });
  for (std::thread& thread : threads) thread.join();
  AwaitDry(open);
  const uint64_t written = EncodedOf(open);
  EXPECT_EQ(written + DroppedOf(open), 2 * kImages);
  video.Close();
  EXPECT_EQ(FramesInFile(), written);
}

TEST_F(VideoWriterApi, ClosesWhileOtherThreadsAppendAndWait) {
  const auto image = MakeImage(kRgb24);
  for (int round = 0; round < 30; ++round) {
    std::filesystem::remove(path);
    ASSERT_EQ(Open(path), 0u);
    const KORVEL_VIDEO_HANDLE open = handle;
    ASSERT_EQ(KORVEL_VideoWriter_Queue_SetSize(open, 20), 0u);
    std::atomic<int> ready = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 2; ++i) {
      threads.emplace_back([&] {
        ++ready;
        KORVEL_RETURN_CODE code = 0;
        while (code != 2) {
          code = KORVEL_VideoWriter_Video_Append(open, image->Handle());
          // Between the end of the file and that of the handle there is nothing to append to.
          EXPECT_TRUE(code == 0 || code == 1 || code == 2 || code == 11) << code;
        }
      });
    }
    threads.emplace_back([&] {
      ++ready;
      KORVEL_RETURN_CODE code = 0;
      while (code != 2) {
        code = KORVEL_VideoWriter_Video_WaitUntilQueueEmpty(open, 1000);
        EXPECT_TRUE(code == 0 || code == 2 || code == 12) << code;
      }
    });
    threads.emplace_back([&] {
      while (ready < 3) std::this_thread::yield();
      const KORVEL_RETURN_CODE code = KORVEL_VideoWriter_Video_Close(open);
      EXPECT_TRUE(code == 0 || code == 2) << code;
    });
    while (ready < 3) std::this_thread::yield();
    const KORVEL_RETURN_CODE code = KORVEL_VideoWriter_Video_Close(open);
    EXPECT_TRUE(code == 0 || code == 2) << code;
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(IsOpen(open), 0);
    EXPECT_NO_THROW(ParseAviFile(ReadFileBytes(path))) << "the file is whole";
  }
}

TEST_F(VideoWriterApi, TakesImagesThatAreDestroyedMeanwhile) {
  ExportedVideo video(path);
  for (int round = 0; round < 50; ++round) {
    KORVEL_IMAGE_HANDLE image = nullptr;
    ASSERT_EQ(KORVEL_Image_Construct(KORVEL_PIXEL_FORMAT_RGB8, 64, 48, &image), 0u);
    std::thread appender([&] {
      KORVEL_RETURN_CODE code = 0;
      while (code == 0) code = KORVEL_VideoWriter_Video_Append(video.Handle(), image);
      EXPECT_TRUE(code == 2 || code == 11) << code;
    });
    EXPECT_EQ(KORVEL_Image_Destruct(image), 0u);
    appender.join();
  }
}

TEST_F(VideoWriterApi, RecordsInManyThreadsAtOnce) {
  const auto image = MakeImage(kRgb24);
  std::vector<std::thread> threads;
  for (int i = 0; i < 48; ++i) {
    threads.emplace_back([&, i] {
      ExportedVideo video(directory.File(std::to_string(i)));
      for (int k = 0; k < 5; ++k) EXPECT_EQ(KORVEL_VideoWriter_Video_Append(video.Handle(), image->Handle()), 0u);
    });
  }
  for (std::thread& thread : threads) thread.join();
  const AviBytes expected = BuildAviFile(RecordedAvi(64, 48, std::vector<AviBytes>(5, PictureOf(kRgb24))));
  for (int i = 0; i < 48; ++i) EXPECT_EQ(ReadFileBytes(directory.File(std::to_string(i))), expected) << i;
}

// --------------------------------------------------------------------------------------------------- other programs --

TEST_F(VideoWriterApi, IsReadByOtherPrograms) {
  constexpr VideoFormatCase kDecoded = kRgb24;
  for (const VideoFormatCase& format : kVideoFormats) {
    for (const uint32_t count : {1u, 127u}) {
      SCOPED_TRACE(testing::Message() << format.name << ", " << count << " frames");
      std::filesystem::remove(path);
      ExportedVideo video(path);
      const int32_t quality = 100;
      const double fps = 30;
      ASSERT_EQ(KORVEL_VideoWriter_Encoder_SetOption(video.Handle(), 0, &quality, 4), 0u);
      ASSERT_EQ(KORVEL_VideoWriter_Container_SetOption(video.Handle(), 0, &fps, 8), 0u);
      for (uint32_t i = 0; i < count; ++i) {
        ASSERT_EQ(KORVEL_VideoWriter_Video_Append(video.Handle(), MakeImage(format, i)->Handle()), 0u);
      }
      video.Close();

      EXPECT_EQ(korvel_test::TextOutputOf("ffprobe -v error -select_streams v:0 -count_frames -show_entries "
                                          "stream=codec_name,width,height,r_frame_rate,nb_frames,nb_read_frames "
                                          "-of default=noprint_wrappers=1 '" +
                                          path + "'"),
                "codec_name=mjpeg\nwidth=64\nheight=48\nr_frame_rate=30/1\nnb_frames=" + std::to_string(count) +
                    "\nnb_read_frames=" + std::to_string(count) + "\n");

      const Bytes decoded = korvel_test::OutputOf("ffmpeg -v error -nostdin -i '" + path +
                                                  "' -vsync passthrough -f rawvideo -pix_fmt rgb24 -");
      const size_t frameByteCount = size_t{64} * 48 * 3;
      ASSERT_EQ(decoded.size(), count * frameByteCount);
      for (uint32_t i = 0; i < count; ++i) {
        Bytes expected = MakeSmoothFrame(kDecoded, 64, 48, i);
        if (format.channels == 1) {
          const Bytes grey = MakeSmoothFrame(format, 64, 48, i);
          for (size_t k = 0; k < expected.size(); ++k) expected[k] = grey[k / 3];
        }
        const auto first = decoded.begin() + static_cast<ptrdiff_t>(i * frameByteCount);
        EXPECT_LE(
            korvel_test::LargestDifference(kDecoded, {first, first + static_cast<ptrdiff_t>(frameByteCount)}, expected),
            10)
            << "frame " << i;
      }
    }
  }
}

}  // namespace
