// The video writer on one thread: opening, options, the rules of sizes and formats, and every byte of what it records.
#include "video/avi_legacy.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <limits>
#include <memory>
#include <string>
#include <system_error>
#include <variant>
#include <vector>

#include "tests/model/avi_model.h"
#include "tests/support/file_bytes.h"
#include "tests/support/held_workers.h"
#include "tests/support/recorder.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/video_frames.h"
#include "video/seams.h"

namespace {

using korvel_test::AviBytes;
using korvel_test::AviModel;
using korvel_test::BuildAviFile;
using korvel_test::CompressFrame;
using korvel_test::HeldWorkers;
using korvel_test::kRgb24;
using korvel_test::kVideoFormats;
using korvel_test::kY8;
using korvel_test::MakeNoiseFrame;
using korvel_test::MakeSmoothFrame;
using korvel_test::ParseAviFile;
using korvel_test::Pixels;
using korvel_test::ReadFileBytes;
using korvel_test::RecordedAvi;
using korvel_test::Recorder;
using korvel_test::SeamValue;
using korvel_test::StatusOf;
using korvel_test::VideoFormatCase;
using korvel_test::WriteFileBytes;
using libvideo::AviLegacy;
using libvideo::ChannelOrder;
using libvideo::Seams;
using libvideo::VideoOptionValue;
using libvideo::VideoStatus;

class AviLegacyTest : public testing::Test {
 protected:
  korvel_test::TemporaryDirectory directory;
  std::string path = directory.File("a.avi");
};

// Pictures of 64 x 48 pixels.
AviBytes PictureOf(const VideoFormatCase& format, const Pixels& frame, int quality = 75) {
  return CompressFrame(format, 64, 48, frame, quality);
}

TEST_F(AviLegacyTest, RecordsEachByteOfAFileInEachFormat) {
  for (const VideoFormatCase& format : kVideoFormats) {
    for (const uint32_t count : {1u, 2u, 125u, 126u, 127u, 300u}) {
      SCOPED_TRACE(testing::Message() << format.name << ", " << count << " frames");
      std::filesystem::remove(path);
      Recorder recorder(format);
      ASSERT_EQ(recorder.Open(path), VideoStatus::Success);
      std::vector<AviBytes> pictures;
      for (uint32_t i = 0; i < count; ++i) {
        const Pixels frame = MakeSmoothFrame(format, 64, 48, i);
        ASSERT_EQ(recorder.Append(frame), VideoStatus::Success);
        pictures.push_back(PictureOf(format, frame));
      }
      ASSERT_EQ(recorder.Close(), VideoStatus::Success);
      EXPECT_EQ(recorder.Written(), count);
      EXPECT_EQ(recorder.Dropped(), 0u);
      ASSERT_EQ(ReadFileBytes(path), BuildAviFile(RecordedAvi(64, 48, pictures)));
    }
  }
}

TEST_F(AviLegacyTest, LeavesHeadersAndAnEmptyIndexWithoutAFrame) {
  Recorder recorder;
  ASSERT_EQ(recorder.Open(path), VideoStatus::Success);
  EXPECT_EQ(recorder.Close(), VideoStatus::Success);
  const AviBytes file = ReadFileBytes(path);
  EXPECT_EQ(file.size(), 252u);
  EXPECT_EQ(file, BuildAviFile(RecordedAvi(0, 0, {})));
}

TEST_F(AviLegacyTest, LosesNoMoreThanJpegDoes) {
  for (const VideoFormatCase& format : kVideoFormats) {
    SCOPED_TRACE(format.name);
    std::filesystem::remove(path);
    Recorder recorder(format);
    ASSERT_EQ(recorder.Open(path), VideoStatus::Success);
    ASSERT_EQ(recorder.Set("quality", int32_t{100}), VideoStatus::Success);
    const Pixels frame = MakeSmoothFrame(format, 64, 48, 3);
    ASSERT_EQ(recorder.Append(frame), VideoStatus::Success);
    ASSERT_EQ(recorder.Close(), VideoStatus::Success);
    const AviModel file = ParseAviFile(ReadFileBytes(path));
    ASSERT_EQ(file.frames.size(), 1u);
    const auto decoded = korvel_test::DecodePicture(format, file.frames[0]);
    EXPECT_EQ(decoded.width, 64u);
    EXPECT_EQ(decoded.height, 48u);
    EXPECT_EQ(decoded.subsampling, format.channels == 1 ? TJSAMP_GRAY : TJSAMP_422);
    EXPECT_LE(korvel_test::LargestDifference(format, decoded.pixels, frame), 8);
  }
}

TEST_F(AviLegacyTest, HasItsDefaults) {
  const AviLegacy video(libvideo::Container::Avi, libvideo::Encoder::Mjpeg);
  EXPECT_FALSE(video.isOpen());
  EXPECT_EQ(video.sourceFormat().name, "RGB24");
  EXPECT_TRUE(video.sourceFormat().IsLike({"", 24, 3, ChannelOrder::RedFirst}));
  EXPECT_EQ(video.dimensions(), (img::Size2D{0, 0}));
  EXPECT_EQ(video.queueSize(), 16u);
  EXPECT_EQ(video.queued(), 0u);
  EXPECT_EQ(video.fileSize(), 0u);
  uint32_t least = 0;
  uint32_t most = 0;
  EXPECT_EQ(StatusOf([&](std::error_code& error) { video.queueSizeRange(least, most, error); }), VideoStatus::Success);
  EXPECT_EQ(least, 1u);
  EXPECT_EQ(most, 1000u);
}

TEST_F(AviLegacyTest, OpensAndCloses) {
  Recorder recorder;
  EXPECT_EQ(recorder.Close(), VideoStatus::Success) << "nothing is open";
  ASSERT_EQ(recorder.Open(path), VideoStatus::Success);
  EXPECT_TRUE(recorder.video.isOpen());
  EXPECT_TRUE(std::filesystem::exists(path));
  EXPECT_EQ(recorder.Open(directory.File("b.avi")), VideoStatus::NoSuccess) << "one file at a time";
  EXPECT_FALSE(std::filesystem::exists(directory.File("b.avi")));
  EXPECT_TRUE(recorder.video.isOpen());
  EXPECT_EQ(recorder.Close(), VideoStatus::Success);
  EXPECT_FALSE(recorder.video.isOpen());
  EXPECT_EQ(recorder.Close(), VideoStatus::Success);
}

TEST_F(AviLegacyTest, RecordsOneFileAfterTheOther) {
  Recorder recorder;
  const Pixels frame = MakeSmoothFrame(kRgb24, 64, 48, 0);
  for (const char* const name : {"a.avi", "b.avi"}) {
    ASSERT_EQ(recorder.Open(directory.File(name)), VideoStatus::Success);
    EXPECT_EQ(recorder.Written(), 0u);
    EXPECT_EQ(recorder.video.fileSize(), 0u);
    ASSERT_EQ(recorder.Append(frame), VideoStatus::Success);
    ASSERT_EQ(recorder.Close(), VideoStatus::Success);
    EXPECT_EQ(recorder.Written(), 1u);
    EXPECT_EQ(ParseAviFile(ReadFileBytes(directory.File(name))).frames.size(), 1u);
  }
}

TEST_F(AviLegacyTest, NeverOverwritesAFile) {
  WriteFileBytes(path, {1, 2, 3});
  Recorder recorder;
  EXPECT_EQ(recorder.Open(path), VideoStatus::CouldNotAccess);
  EXPECT_FALSE(recorder.video.isOpen());
  EXPECT_EQ(ReadFileBytes(path), (AviBytes{1, 2, 3}));
  EXPECT_EQ(recorder.Open(directory.Path()), VideoStatus::CouldNotAccess) << "a directory can be opened as well";
}

TEST_F(AviLegacyTest, TellsThatAFileCannotBeMade) {
  Recorder recorder;
  EXPECT_EQ(recorder.Open(""), VideoStatus::NoSuccess);
  EXPECT_EQ(recorder.Open(directory.File("missing/a.avi")), VideoStatus::NoSuccess);
  EXPECT_FALSE(recorder.video.isOpen());
  EXPECT_EQ(recorder.Open(path), VideoStatus::Success) << "a failure leaves nothing behind";
}

TEST_F(AviLegacyTest, TakesLongPathsAndAnyScript) {
  std::string folder = directory.Path();
  while (folder.size() < 400) {
    folder += "/\xC3\xA4\xE6\xBC\xA2\xF0\x9F\x8E\xA5 0123456789 0123456789 0123456789 0123456789 0123456789";
    std::filesystem::create_directory(folder);
  }
  path = folder + "/\xC3\xBC.avi";
  Recorder recorder;
  ASSERT_EQ(recorder.Open(path), VideoStatus::Success);
  ASSERT_EQ(recorder.Append(MakeSmoothFrame(kRgb24, 64, 48, 0)), VideoStatus::Success);
  ASSERT_EQ(recorder.Close(), VideoStatus::Success);
  EXPECT_EQ(recorder.Written(), 1u);
  EXPECT_EQ(ParseAviFile(ReadFileBytes(path)).frames.size(), 1u);
}

TEST_F(AviLegacyTest, RefusesPathsThatAreNotUtf8) {
  Recorder recorder;
  for (const char* const name : {"\xFF", "\xC3", "a\x80", "\xC0\xAF", "\xF8\x88\x80\x80\x80"}) {
    std::error_code error;
    EXPECT_THROW(recorder.video.openFile(directory.File(name), error), std::exception);
    EXPECT_FALSE(recorder.video.isOpen());
  }
  EXPECT_TRUE(std::filesystem::is_empty(directory.Path()));
}

TEST_F(AviLegacyTest, FindsAFileThatExistsByAnyPath) {
  const std::string notUtf8 = directory.File("\xFF");
  WriteFileBytes(notUtf8, {1, 2, 3});
  Recorder recorder;
  EXPECT_EQ(recorder.Open(notUtf8), VideoStatus::CouldNotAccess);
  EXPECT_EQ(ReadFileBytes(notUtf8), (AviBytes{1, 2, 3}));
}

TEST_F(AviLegacyTest, ListsItsOptions) {
  const Recorder recorder;
  const auto options = recorder.video.options();
  ASSERT_EQ(options.size(), 2u);
  EXPECT_EQ(options[0].name, "fps");
  EXPECT_EQ(options[0].type, libvideo::VideoOptionType::Double);
  EXPECT_EQ(options[1].name, "quality");
  EXPECT_EQ(options[1].type, libvideo::VideoOptionType::Int32);
}

VideoOptionValue OptionOf(const AviLegacy& video, const char* name) {
  VideoOptionValue value;
  EXPECT_EQ(StatusOf([&](std::error_code& error) { video.option(name, value, error); }), VideoStatus::Success);
  return value;
}

TEST_F(AviLegacyTest, KeepsOptionsAndRefusesWhatIsOutOfRange) {
  Recorder recorder;
  EXPECT_EQ(OptionOf(recorder.video, "fps"), VideoOptionValue(25.0));
  EXPECT_EQ(OptionOf(recorder.video, "quality"), VideoOptionValue(int32_t{75}));

  for (const int32_t quality : {1, 50, 100}) {
    EXPECT_EQ(recorder.Set("quality", quality), VideoStatus::Success);
    EXPECT_EQ(OptionOf(recorder.video, "quality"), VideoOptionValue(quality));
  }
  for (const int32_t quality : {0, 101, -1, std::numeric_limits<int32_t>::min(), std::numeric_limits<int32_t>::max()}) {
    EXPECT_EQ(recorder.Set("quality", quality), VideoStatus::InvalidParameter) << quality;
    EXPECT_EQ(OptionOf(recorder.video, "quality"), VideoOptionValue(int32_t{100}));
  }

  for (const double fps : {0.5, 29.97, 1e-300, 1e300}) {
    EXPECT_EQ(recorder.Set("fps", fps), VideoStatus::Success);
    EXPECT_EQ(OptionOf(recorder.video, "fps"), VideoOptionValue(fps));
  }
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  for (const double fps : {0.0, -0.0, -1.0, kInfinity, -kInfinity, std::nan("")}) {
    EXPECT_EQ(recorder.Set("fps", fps), VideoStatus::InvalidParameter) << fps;
    EXPECT_EQ(OptionOf(recorder.video, "fps"), VideoOptionValue(1e300));
  }
}

TEST_F(AviLegacyTest, KnowsNoOtherOptions) {
  Recorder recorder;
  VideoOptionValue value;
  for (const char* const name : {"", "Quality", "fps ", "bitrate"}) {
    EXPECT_EQ(recorder.Set(name, int32_t{1}), VideoStatus::NotSupported);
    EXPECT_EQ(StatusOf([&](std::error_code& error) { recorder.video.option(name, value, error); }),
              VideoStatus::NotSupported);
  }
}

TEST_F(AviLegacyTest, ThrowsForAValueOfAnotherType) {
  Recorder recorder;
  std::error_code error;
  EXPECT_THROW(recorder.video.setOption("fps", int32_t{25}, error), std::bad_variant_access);
  EXPECT_THROW(recorder.video.setOption("fps", std::string("25"), error), std::bad_variant_access);
  EXPECT_THROW(recorder.video.setOption("quality", 75.0, error), std::bad_variant_access);
  EXPECT_THROW(recorder.video.setOption("quality", uint32_t{75}, error), std::bad_variant_access);
}

TEST_F(AviLegacyTest, HasARangeForQualityAlone) {
  const Recorder recorder;
  VideoOptionValue least;
  VideoOptionValue most;
  VideoOptionValue step;
  const auto ask = [&](const char* name) {
    return StatusOf([&](std::error_code& error) { recorder.video.optionRange(name, least, most, step, error); });
  };
  EXPECT_EQ(ask("quality"), VideoStatus::Success);
  EXPECT_EQ(least, VideoOptionValue(int32_t{1}));
  EXPECT_EQ(most, VideoOptionValue(int32_t{100}));
  EXPECT_EQ(step, VideoOptionValue(int32_t{1}));
  EXPECT_EQ(ask("fps"), VideoStatus::NotSupported);
  EXPECT_EQ(ask("other"), VideoStatus::NotSupported);
}

struct RateCase {
  double framesPerSecond;
  uint32_t microSecondsPerFrame;
  uint32_t rate;
};

constexpr RateCase kRates[] = {{25.0, 40000, 25}, {30.0, 33333, 30},  {29.97, 33366, 29},
                               {60.0, 16666, 60}, {0.5, 2000000, 0},  {1.0, 1000000, 1},
                               {1e6, 1, 1000000}, {1e6 + 1, 1000, 1}, {1e-9, 0xFFFFFFFF, 0}};

TEST_F(AviLegacyTest, PutsTheFrameRateIntoTheHeaders) {
  const Pixels frame = MakeSmoothFrame(kRgb24, 64, 48, 0);
  for (const RateCase& rate : kRates) {
    // Before the file is open, before the first frame, and while recording.
    for (int when = 0; when < 3; ++when) {
      SCOPED_TRACE(testing::Message() << rate.framesPerSecond << ", " << when);
      std::filesystem::remove(path);
      Recorder recorder;
      const auto set = [&] { ASSERT_EQ(recorder.Set("fps", rate.framesPerSecond), VideoStatus::Success); };
      if (when == 0) set();
      ASSERT_EQ(recorder.Open(path), VideoStatus::Success);
      if (when == 1) set();
      ASSERT_EQ(recorder.Append(frame), VideoStatus::Success);
      if (when == 2) set();
      ASSERT_EQ(recorder.Close(), VideoStatus::Success);
      EXPECT_EQ(ReadFileBytes(path),
                BuildAviFile(RecordedAvi(64, 48, {PictureOf(kRgb24, frame)}, rate.microSecondsPerFrame, rate.rate)));
    }
  }
}

TEST_F(AviLegacyTest, CompressesTheNextFrameWithANewQuality) {
  Recorder recorder;
  const Pixels first = MakeSmoothFrame(kRgb24, 64, 48, 1);
  const Pixels second = MakeSmoothFrame(kRgb24, 64, 48, 2);
  {
    HeldWorkers held;
    ASSERT_EQ(recorder.Open(path), VideoStatus::Success);
    ASSERT_EQ(recorder.Append(first), VideoStatus::Success);
    ASSERT_EQ(recorder.Append(second), VideoStatus::Success);
    held.Release();
    held.AwaitArrivals(2);
    ASSERT_EQ(recorder.Set("quality", int32_t{5}), VideoStatus::Success);
  }
  ASSERT_EQ(recorder.Close(), VideoStatus::Success);
  EXPECT_EQ(ParseAviFile(ReadFileBytes(path)).frames,
            (std::vector<AviBytes>{PictureOf(kRgb24, first, 75), PictureOf(kRgb24, second, 5)}));
}

TEST_F(AviLegacyTest, ChecksTheSizeAtTheFirstFrame) {
  struct SizeCase {
    size_t width;
    size_t height;
    VideoStatus status;
  };
  constexpr auto kGood = VideoStatus::Success;
  constexpr auto kBad = VideoStatus::InvalidParameter;
  constexpr size_t kBeyond32Bits = size_t{1} << 32;
  for (const SizeCase& size : {SizeCase{16, 16, kGood}, SizeCase{24, 17, kGood}, SizeCase{8, 16, kBad},
                               SizeCase{15, 16, kBad}, SizeCase{20, 16, kBad}, SizeCase{25, 16, kBad},
                               SizeCase{16, 15, kBad}, SizeCase{0, 0, kBad}, SizeCase{kBeyond32Bits + 16, 16, kBad},
                               SizeCase{16, kBeyond32Bits + 16, kBad}, SizeCase{SIZE_MAX - 7, SIZE_MAX, kBad}}) {
    SCOPED_TRACE(testing::Message() << size.width << " x " << size.height);
    std::filesystem::remove(path);
    Recorder recorder(kRgb24, size.width, size.height);
    ASSERT_EQ(recorder.Open(path), VideoStatus::Success);
    EXPECT_EQ(recorder.Append(Pixels(24 * 17 * 3)), size.status);
    // A size that is refused stays no size for good.
    EXPECT_EQ(recorder.SetSize(64, 48), size.status == kGood ? VideoStatus::CouldNotAccess : VideoStatus::Success);
    if (size.status == kBad) {
      EXPECT_EQ(recorder.Append(MakeSmoothFrame(kRgb24, 64, 48, 0)), VideoStatus::Success);
    }
    EXPECT_EQ(recorder.Close(), VideoStatus::Success);
    EXPECT_EQ(recorder.Written(), 1u);
    EXPECT_EQ(ParseAviFile(ReadFileBytes(path)).width, size.status == kGood ? size.width : 64);
  }
}

TEST_F(AviLegacyTest, TakesAnotherSizeAndFormatUntilTheFirstFrame) {
  Recorder recorder;
  ASSERT_EQ(recorder.Open(path), VideoStatus::Success);
  ASSERT_EQ(recorder.SetSize(32, 16), VideoStatus::Success);
  ASSERT_EQ(recorder.SetFormat(kY8), VideoStatus::Success);
  ASSERT_EQ(recorder.SetSize(64, 48), VideoStatus::Success);
  ASSERT_EQ(recorder.SetFormat(kRgb24), VideoStatus::Success);
  ASSERT_EQ(recorder.Append(MakeSmoothFrame(kRgb24, 64, 48, 0)), VideoStatus::Success);

  EXPECT_EQ(recorder.SetSize(64, 48), VideoStatus::Success);
  EXPECT_EQ(recorder.SetSize(72, 48), VideoStatus::CouldNotAccess);
  EXPECT_EQ(recorder.SetSize(64, 49), VideoStatus::CouldNotAccess);
  EXPECT_EQ(recorder.video.dimensions(), (img::Size2D{64, 48}));
  EXPECT_EQ(recorder.SetFormat({"another name", 24, 3, ChannelOrder::RedFirst}), VideoStatus::Success);
  EXPECT_EQ(recorder.SetFormat({"RGB24", 32, 3, ChannelOrder::RedFirst}), VideoStatus::CouldNotAccess);
  EXPECT_EQ(recorder.SetFormat({"RGB24", 24, 4, ChannelOrder::RedFirst}), VideoStatus::CouldNotAccess);
  EXPECT_EQ(recorder.SetFormat({"RGB24", 24, 3, ChannelOrder::BlueFirst}), VideoStatus::CouldNotAccess);
  EXPECT_TRUE(recorder.video.sourceFormat().IsLike({"", 24, 3, ChannelOrder::RedFirst}));

  ASSERT_EQ(recorder.Close(), VideoStatus::Success);
  EXPECT_EQ(recorder.SetSize(72, 48), VideoStatus::Success) << "the recording is over";
  EXPECT_EQ(recorder.SetFormat(kY8), VideoStatus::Success);
}

// A pixel counts as many bytes as its channels tell: 1, 3 or 4, and 4 for any other number.
TEST_F(AviLegacyTest, TakesTheColourModeFromChannelsAndOrder) {
  struct ModeCase {
    uint16_t channels;
    ChannelOrder order;
    const VideoFormatCase& like;
  };
  for (const ModeCase& mode :
       {ModeCase{1, ChannelOrder::RedFirst, kVideoFormats[4]}, ModeCase{3, ChannelOrder::Single, kVideoFormats[0]},
        ModeCase{4, ChannelOrder::Single, kVideoFormats[1]}, ModeCase{2, ChannelOrder::BlueFirst, kVideoFormats[3]},
        ModeCase{0, ChannelOrder::BlueFirst, kVideoFormats[3]}}) {
    SCOPED_TRACE(mode.channels);
    std::filesystem::remove(path);
    Recorder recorder;
    ASSERT_EQ(recorder.SetFormat({"any", 5, mode.channels, mode.order}), VideoStatus::Success);
    ASSERT_EQ(recorder.Open(path), VideoStatus::Success);
    const Pixels frame = MakeSmoothFrame(mode.like, 64, 48, 0);
    ASSERT_EQ(recorder.Append(frame), VideoStatus::Success);
    EXPECT_EQ(recorder.Append(frame.data(), frame.size() - 1), VideoStatus::InvalidParameter);
    ASSERT_EQ(recorder.Close(), VideoStatus::Success);
    EXPECT_EQ(ParseAviFile(ReadFileBytes(path)).frames, (std::vector<AviBytes>{PictureOf(mode.like, frame)}));
  }
}

TEST_F(AviLegacyTest, NeedsAnOpenFileToStart) {
  Recorder recorder;
  const Pixels frame = MakeSmoothFrame(kRgb24, 64, 48, 0);
  EXPECT_EQ(recorder.Append(frame), VideoStatus::NoSuccess);
  EXPECT_EQ(recorder.Dropped(), 0u);
  ASSERT_EQ(recorder.Open(path), VideoStatus::Success);
  EXPECT_EQ(recorder.Append(frame), VideoStatus::Success);
  ASSERT_EQ(recorder.Close(), VideoStatus::Success);
  EXPECT_EQ(recorder.Append(frame), VideoStatus::NoSuccess) << "a closed file takes no frame";
  EXPECT_EQ(recorder.Written(), 1u);
}

TEST_F(AviLegacyTest, StaysAsItWasIfTheWorkerCannotBeStarted) {
  Recorder recorder(kY8, 1920, 1080);
  const Pixels frame = MakeSmoothFrame(kY8, 1920, 1080, 0);
  ASSERT_EQ(recorder.Open(path), VideoStatus::Success);
  {
    const SeamValue fails(Seams::Instance().failsToStart, true);
    EXPECT_EQ(recorder.Append(frame), VideoStatus::NoSuccess);
    EXPECT_EQ(recorder.Append(frame), VideoStatus::NoSuccess);
  }
  EXPECT_EQ(recorder.SetSize(16, 16), VideoStatus::Success);
  EXPECT_EQ(recorder.SetFormat(kRgb24), VideoStatus::Success);
  EXPECT_EQ(recorder.SetSize(1920, 1080), VideoStatus::Success);
  EXPECT_EQ(recorder.SetFormat(kY8), VideoStatus::Success);
  EXPECT_EQ(recorder.Append(frame), VideoStatus::Success);
  EXPECT_EQ(recorder.video.queueSize(), 25u);
  EXPECT_EQ(recorder.SetSize(16, 16), VideoStatus::CouldNotAccess);
  ASSERT_EQ(recorder.Close(), VideoStatus::Success);
  EXPECT_EQ(recorder.Written(), 1u);
  EXPECT_EQ(ReadFileBytes(path), BuildAviFile(RecordedAvi(1920, 1080, {CompressFrame(kY8, 1920, 1080, frame, 75)})));
}

TEST_F(AviLegacyTest, WritesWhatIsQueuedWhenItIsDestroyed) {
  const Pixels frame = MakeSmoothFrame(kRgb24, 64, 48, 0);
  auto recorder = std::make_unique<Recorder>();
  ASSERT_EQ(recorder->Open(path), VideoStatus::Success);
  for (int i = 0; i < 20; ++i) ASSERT_EQ(recorder->Append(frame), VideoStatus::Success);
  recorder.reset();
  EXPECT_EQ(ReadFileBytes(path),
            BuildAviFile(RecordedAvi(64, 48, std::vector<AviBytes>(20, PictureOf(kRgb24, frame)))));
}

TEST_F(AviLegacyTest, CountsFramesAndBytes) {
  Recorder recorder;
  ASSERT_EQ(recorder.Open(path), VideoStatus::Success);
  const Pixels frame = MakeSmoothFrame(kRgb24, 64, 48, 0);
  const uint64_t size = PictureOf(kRgb24, frame).size();
  for (uint64_t count = 1; count <= 3; ++count) {
    ASSERT_EQ(recorder.Append(frame), VideoStatus::Success);
    recorder.AwaitDry();
    EXPECT_EQ(recorder.Written(), count);
    EXPECT_EQ(recorder.Statistics().bytesWritten, count * size) << "compressed frames alone";
    EXPECT_EQ(recorder.video.fileSize(), count * size);
  }
  ASSERT_EQ(recorder.Append(frame.data(), frame.size() - 1), VideoStatus::InvalidParameter);
  EXPECT_EQ(recorder.Dropped(), 1u);
  recorder.video.resetFrameCounters();
  EXPECT_EQ(recorder.Written(), 0u);
  EXPECT_EQ(recorder.Dropped(), 0u);
  EXPECT_EQ(recorder.video.fileSize(), 3 * size);
  ASSERT_EQ(recorder.Close(), VideoStatus::Success);
  EXPECT_EQ(recorder.video.fileSize(), 0u);
}

TEST_F(AviLegacyTest, TakesNoMoreThanAFramesBytes) {
  Recorder recorder;
  ASSERT_EQ(recorder.Open(path), VideoStatus::Success);
  const Pixels frame = MakeSmoothFrame(kRgb24, 64, 48, 0);
  Pixels longer = frame;
  longer.resize(frame.size() + 1000, 9);
  ASSERT_EQ(recorder.Append(longer), VideoStatus::Success);
  ASSERT_EQ(recorder.Close(), VideoStatus::Success);
  EXPECT_EQ(ParseAviFile(ReadFileBytes(path)).frames, (std::vector<AviBytes>{PictureOf(kRgb24, frame)}));
}

TEST_F(AviLegacyTest, DropsPicturesThatAreLargerThanTheirFrames) {
  Recorder recorder(kY8);
  ASSERT_EQ(recorder.Open(path), VideoStatus::Success);
  ASSERT_EQ(recorder.Set("quality", int32_t{100}), VideoStatus::Success);
  const Pixels noise = MakeNoiseFrame(kY8, 64, 48, 1);
  ASSERT_GT(PictureOf(kY8, noise, 100).size(), noise.size());
  const Pixels smooth = MakeSmoothFrame(kY8, 64, 48, 0);

  EXPECT_EQ(recorder.Append(noise), VideoStatus::Success);
  recorder.AwaitDry();
  EXPECT_EQ(recorder.Dropped(), 1u);
  EXPECT_EQ(recorder.Append(nullptr, 0), VideoStatus::NoSuccess) << "no frame tells how the last one went";
  EXPECT_EQ(recorder.Dropped(), 2u);

  EXPECT_EQ(recorder.Append(smooth), VideoStatus::Success);
  recorder.AwaitDry();
  EXPECT_EQ(recorder.Written(), 1u);
  EXPECT_EQ(recorder.Append(nullptr, 0), VideoStatus::Success);
  EXPECT_EQ(recorder.Dropped(), 3u);
  ASSERT_EQ(recorder.Close(), VideoStatus::Success);
  EXPECT_EQ(ParseAviFile(ReadFileBytes(path)).frames, (std::vector<AviBytes>{PictureOf(kY8, smooth, 100)}));
}

// Noise makes the largest pictures; small frames of it make pictures that are much larger than the frame.
TEST_F(AviLegacyTest, DecidesOverEachFrameOfNoiseByThePicturesSize) {
  size_t dropped = 0;
  size_t written = 0;
  for (const VideoFormatCase& format : kVideoFormats) {
    for (const int32_t quality : {75, 100}) {
      for (const size_t side : {16u, 24u, 64u}) {
        SCOPED_TRACE(testing::Message() << format.name << ", quality " << quality << ", side " << side);
        std::filesystem::remove(path);
        Recorder recorder(format, side, side);
        ASSERT_EQ(recorder.Open(path), VideoStatus::Success);
        ASSERT_EQ(recorder.Set("quality", quality), VideoStatus::Success);
        std::vector<AviBytes> expected;
        for (uint32_t seed = 0; seed < 3; ++seed) {
          const Pixels noise = MakeNoiseFrame(format, side, side, seed);
          ASSERT_EQ(recorder.Append(noise), VideoStatus::Success);
          const AviBytes picture = CompressFrame(format, side, side, noise, quality);
          if (picture.size() <= noise.size()) expected.push_back(picture);
        }
        ASSERT_EQ(recorder.Close(), VideoStatus::Success);
        EXPECT_EQ(ParseAviFile(ReadFileBytes(path)).frames, expected);
        EXPECT_EQ(recorder.Written(), expected.size());
        EXPECT_EQ(recorder.Dropped(), 3 - expected.size());
        written += recorder.Written();
        dropped += recorder.Dropped();
      }
    }
  }
  EXPECT_GT(written, 0u);
  EXPECT_GT(dropped, 0u);
}

// The JPEG headers alone take more than 256 bytes.
TEST_F(AviLegacyTest, DropsEveryFrameThatIsTooSmallForAJpegHeader) {
  Recorder recorder(kY8, 16, 16);
  ASSERT_EQ(recorder.Open(path), VideoStatus::Success);
  for (int i = 0; i < 3; ++i) EXPECT_EQ(recorder.Append(Pixels(256)), VideoStatus::Success);
  ASSERT_EQ(recorder.Close(), VideoStatus::Success);
  EXPECT_EQ(recorder.Written(), 0u);
  EXPECT_EQ(recorder.Dropped(), 3u);
  EXPECT_EQ(ReadFileBytes(path), BuildAviFile(RecordedAvi(16, 16, {})));
}

// JPEG has no pictures of more than 65500 pixels in a line.
TEST_F(AviLegacyTest, DropsFramesThatJpegCannotHold) {
  Recorder recorder(kY8, 65544, 16);
  ASSERT_EQ(recorder.Open(path), VideoStatus::Success);
  EXPECT_EQ(recorder.Append(Pixels(65544 * 16)), VideoStatus::Success);
  ASSERT_EQ(recorder.Close(), VideoStatus::Success);
  EXPECT_EQ(recorder.Dropped(), 1u);
}

TEST_F(AviLegacyTest, DropsFramesWhenTheDiskIsNearlyFull) {
  uint64_t free = 5024;
  Recorder recorder;
  const Pixels frame = MakeSmoothFrame(kRgb24, 64, 48, 0);
  ASSERT_EQ(recorder.Open(path), VideoStatus::Success);
  {
    const SeamValue disk(Seams::Instance().freeKibibytes, static_cast<const uint64_t*>(&free));
    EXPECT_EQ(recorder.Append(frame), VideoStatus::Success);
    recorder.AwaitDry();
    EXPECT_EQ(recorder.Written(), 0u);
    EXPECT_EQ(recorder.Dropped(), 1u);
    EXPECT_EQ(recorder.video.fileSize(), 0u);
    free = 5025;
    EXPECT_EQ(recorder.Append(frame), VideoStatus::Success);
    recorder.AwaitDry();
    EXPECT_EQ(recorder.Written(), 1u);
    // Beyond what 32 bits hold.
    free = (uint64_t{1} << 32) + 1;
    EXPECT_EQ(recorder.Append(frame), VideoStatus::Success);
    recorder.AwaitDry();
    EXPECT_EQ(recorder.Written(), 2u);
  }
  ASSERT_EQ(recorder.Close(), VideoStatus::Success);
  EXPECT_EQ(ParseAviFile(ReadFileBytes(path)).frames.size(), 2u);
}

TEST_F(AviLegacyTest, DropsFramesWhenItsFolderVanishes) {
  const std::string folder = directory.File("folder");
  std::filesystem::create_directory(folder);
  Recorder recorder;
  const Pixels frame = MakeSmoothFrame(kRgb24, 64, 48, 0);
  ASSERT_EQ(recorder.Open(folder + "/a.avi"), VideoStatus::Success);
  ASSERT_EQ(recorder.Append(frame), VideoStatus::Success);
  recorder.AwaitDry();
  std::filesystem::rename(folder, directory.File("elsewhere"));
  EXPECT_EQ(recorder.Append(frame), VideoStatus::Success);
  EXPECT_EQ(recorder.Close(), VideoStatus::Success);
  EXPECT_EQ(recorder.Written(), 1u);
  EXPECT_EQ(recorder.Dropped(), 1u);
  EXPECT_EQ(ParseAviFile(ReadFileBytes(directory.File("elsewhere/a.avi"))).frames.size(), 1u);
}

TEST_F(AviLegacyTest, FillsAFileUpToItsLimit) {
  const Pixels frame = MakeSmoothFrame(kRgb24, 64, 48, 0);
  const uint64_t size = PictureOf(kRgb24, frame).size();
  for (const uint64_t spare : {uint64_t{0}, size - 1}) {
    SCOPED_TRACE(spare);
    std::filesystem::remove(path);
    Recorder recorder;
    const SeamValue limit(Seams::Instance().mostFrameBytes, 2 * size + spare);
    ASSERT_EQ(recorder.Open(path), VideoStatus::Success);
    for (int i = 0; i < 3; ++i) {
      EXPECT_EQ(recorder.Append(frame), VideoStatus::Success);
      recorder.AwaitDry();
    }
    EXPECT_EQ(recorder.Written(), 2u);
    EXPECT_EQ(recorder.Dropped(), 1u) << "the frame that would cross the limit";
    EXPECT_EQ(recorder.Append(frame), VideoStatus::NoSuccess);
    EXPECT_EQ(recorder.Append(nullptr, 0), VideoStatus::NoSuccess);
    EXPECT_EQ(recorder.Dropped(), 3u);
    ASSERT_EQ(recorder.Close(), VideoStatus::Success);
    EXPECT_EQ(ParseAviFile(ReadFileBytes(path)).frames.size(), 2u);

    // The next file begins anew.
    ASSERT_EQ(recorder.Open(directory.File(std::to_string(spare))), VideoStatus::Success);
    EXPECT_EQ(recorder.Append(frame), VideoStatus::Success);
    ASSERT_EQ(recorder.Close(), VideoStatus::Success);
    EXPECT_EQ(recorder.Written(), 1u);
  }
}

TEST_F(AviLegacyTest, HasTheLimitOf4GiB) { EXPECT_EQ(Seams::Instance().mostFrameBytes, 0x100000000u); }

}  // namespace
