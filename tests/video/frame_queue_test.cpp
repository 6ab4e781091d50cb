// The queue between the caller and the worker: what fits, what is dropped and how it is counted, and waiting for it. A
// gate before the worker decides what it has done, so that nothing depends on its speed.
#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "tests/model/avi_model.h"
#include "tests/support/file_bytes.h"
#include "tests/support/held_workers.h"
#include "tests/support/recorder.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/video_frames.h"
#include "video/zeno_avi.h"

namespace {

using korvel_test::AviBytes;
using korvel_test::CompressFrame;
using korvel_test::HeldWorkers;
using korvel_test::kRgb24;
using korvel_test::kVideoFormats;
using korvel_test::kY8;
using korvel_test::MakeSmoothFrame;
using korvel_test::ParseAviFile;
using korvel_test::Pixels;
using korvel_test::ReadFileBytes;
using korvel_test::Recorder;
using korvel_test::SeamValue;
using korvel_test::VideoFormatCase;
using libvideo::CZenoAvi;
using libvideo::Seams;
using libvideo::SlotStatus;
using libvideo::VideoStatus;

constexpr uint32_t kLong = 600'000;

class FrameQueue : public testing::Test {
 protected:
  korvel_test::TemporaryDirectory directory;
  std::string path = directory.File("a.avi");
  const Pixels frame = MakeSmoothFrame(kRgb24, 64, 48, 0);
  const uint64_t pictureSize = CompressFrame(kRgb24, 64, 48, frame, 75).size();
};

TEST_F(FrameQueue, DropsTheNewestFrameWhenItIsFull) {
  Recorder recorder;
  HeldWorkers held;
  ASSERT_EQ(recorder.SetQueueSize(2), VideoStatus::Success);
  ASSERT_EQ(recorder.Open(path), VideoStatus::Success);
  std::vector<AviBytes> expected;
  for (uint32_t i = 0; i < 2; ++i) {
    const Pixels next = MakeSmoothFrame(kRgb24, 64, 48, i);
    EXPECT_EQ(recorder.Append(next), VideoStatus::Success);
    expected.push_back(CompressFrame(kRgb24, 64, 48, next, 75));
  }
  // The frame at work counts as queued.
  held.AwaitArrivals(1);
  EXPECT_EQ(recorder.video.queued(), 2u);
  EXPECT_EQ(recorder.Append(MakeSmoothFrame(kRgb24, 64, 48, 77)), VideoStatus::QueueIsFull);
  EXPECT_EQ(recorder.Append(MakeSmoothFrame(kRgb24, 64, 48, 78)), VideoStatus::QueueIsFull);
  EXPECT_EQ(recorder.video.queued(), 2u);
  EXPECT_EQ(recorder.Written(), 0u);
  EXPECT_EQ(recorder.Dropped(), 2u);

  // One done, one place free.
  held.Release();
  held.AwaitArrivals(2);
  EXPECT_EQ(recorder.video.queued(), 1u);
  EXPECT_EQ(recorder.Written(), 1u);
  const Pixels last = MakeSmoothFrame(kRgb24, 64, 48, 79);
  EXPECT_EQ(recorder.Append(last), VideoStatus::Success);
  expected.push_back(CompressFrame(kRgb24, 64, 48, last, 75));
  EXPECT_EQ(recorder.Append(last), VideoStatus::QueueIsFull);

  held.Open();
  ASSERT_EQ(recorder.Close(), VideoStatus::Success);
  EXPECT_EQ(recorder.video.queued(), 0u);
  EXPECT_EQ(recorder.Written(), 3u);
  EXPECT_EQ(recorder.Dropped(), 3u);
  EXPECT_EQ(ParseAviFile(ReadFileBytes(path)).frames, expected);
}

TEST_F(FrameQueue, CopiesFrames) {
  Recorder recorder;
  HeldWorkers held;
  ASSERT_EQ(recorder.Open(path), VideoStatus::Success);
  Pixels mine = frame;
  ASSERT_EQ(recorder.Append(mine), VideoStatus::Success);
  mine.assign(mine.size(), 0);
  held.Open();
  ASSERT_EQ(recorder.Close(), VideoStatus::Success);
  EXPECT_EQ(ParseAviFile(ReadFileBytes(path)).frames,
            (std::vector<AviBytes>{CompressFrame(kRgb24, 64, 48, frame, 75)}));
}

TEST_F(FrameQueue, IsFullBeforeAFrameIsLookedAt) {
  Recorder recorder;
  HeldWorkers held;
  ASSERT_EQ(recorder.SetQueueSize(1), VideoStatus::Success);
  ASSERT_EQ(recorder.Open(path), VideoStatus::Success);
  ASSERT_EQ(recorder.Append(frame), VideoStatus::Success);
  EXPECT_EQ(recorder.Append(frame.data(), 1), VideoStatus::QueueIsFull);
  EXPECT_EQ(recorder.Append(nullptr, 0), VideoStatus::Success) << "no frame needs no place";
  EXPECT_EQ(recorder.Dropped(), 2u);
  held.Open();
  recorder.AwaitDry();
  EXPECT_EQ(recorder.Append(frame.data(), frame.size() - 1), VideoStatus::InvalidParameter);
  EXPECT_EQ(recorder.Dropped(), 3u);
}

// 200 MiB at four bytes a pixel, rounded down, whatever the format.
TEST_F(FrameQueue, GetsItsSizeFromTheFirstFrame) {
  struct QueueCase {
    size_t width;
    size_t height;
    uint32_t frames;
  };
  for (const auto& [width, height, frames] :
       {QueueCase{1920, 1080, 25}, QueueCase{64, 48, 17066}, QueueCase{16, 16, 204800}, QueueCase{4096, 3072, 4},
        QueueCase{8192, 6400, 1}, QueueCase{8192, 6401, 0}}) {
    for (const VideoFormatCase& format : kVideoFormats) {
      SCOPED_TRACE(testing::Message() << width << " x " << height << ", " << format.name);
      std::filesystem::remove(path);
      Recorder recorder(format, width, height);
      ASSERT_EQ(recorder.Open(path), VideoStatus::Success);
      EXPECT_EQ(recorder.video.queueSize(), 16u) << "until the first frame";
      // A frame that is too short starts the recording as well.
      EXPECT_EQ(recorder.Append(frame.data(), 1),
                frames == 0 ? VideoStatus::QueueIsFull : VideoStatus::InvalidParameter);
      EXPECT_EQ(recorder.video.queueSize(), frames);
      EXPECT_EQ(recorder.Dropped(), 1u);
    }
  }
}

TEST_F(FrameQueue, TakesItsSizeBeforeTheFirstFrameOnly) {
  Recorder recorder;
  for (const uint32_t size : {0u, 1001u, 0xFFFFFFFFu}) {
    EXPECT_EQ(recorder.SetQueueSize(size), VideoStatus::InvalidParameter);
    EXPECT_EQ(recorder.video.queueSize(), 16u);
  }
  ASSERT_EQ(recorder.Open(path), VideoStatus::Success);
  for (const uint32_t size : {1u, 1000u, 7u}) {
    EXPECT_EQ(recorder.SetQueueSize(size), VideoStatus::Success);
    EXPECT_EQ(recorder.video.queueSize(), size);
  }
  EXPECT_EQ(recorder.SetQueueSize(0), VideoStatus::InvalidParameter);
  ASSERT_EQ(recorder.Append(frame), VideoStatus::Success);
  EXPECT_EQ(recorder.video.queueSize(), 7u) << "what was set stands";
  EXPECT_EQ(recorder.SetQueueSize(8), VideoStatus::NoSuccess);
  EXPECT_EQ(recorder.SetQueueSize(0), VideoStatus::NoSuccess);
  ASSERT_EQ(recorder.Close(), VideoStatus::Success);
  EXPECT_EQ(recorder.video.queueSize(), 7u);
  EXPECT_EQ(recorder.SetQueueSize(9), VideoStatus::Success);
}

TEST_F(FrameQueue, CountsFramesAfterTheLimitOnlyWhileItIsEmpty) {
  Recorder recorder;
  HeldWorkers held;
  const SeamValue limit(Seams::Instance().mostFrameBytes, pictureSize - 1);
  ASSERT_EQ(recorder.Open(path), VideoStatus::Success);
  ASSERT_EQ(recorder.Append(frame), VideoStatus::Success);
  ASSERT_EQ(recorder.Append(frame), VideoStatus::Success);
  held.Release();
  held.AwaitArrivals(2);
  EXPECT_EQ(recorder.Dropped(), 1u) << "the first frame crosses the limit";
  EXPECT_EQ(recorder.Append(frame), VideoStatus::NoSuccess);
  EXPECT_EQ(recorder.Append(frame), VideoStatus::NoSuccess);
  EXPECT_EQ(recorder.Dropped(), 1u);
  held.Open();
  recorder.AwaitDry();
  EXPECT_EQ(recorder.Dropped(), 2u);
  EXPECT_EQ(recorder.Append(frame), VideoStatus::NoSuccess);
  EXPECT_EQ(recorder.Dropped(), 3u);
  EXPECT_EQ(recorder.Written(), 0u);
  ASSERT_EQ(recorder.Close(), VideoStatus::Success);
  EXPECT_EQ(ParseAviFile(ReadFileBytes(path)).frames.size(), 0u);
}

TEST_F(FrameQueue, AnswersWaitsAtOnceWhenItIsEmpty) {
  Recorder recorder;
  EXPECT_EQ(recorder.WaitUntilDone(0), VideoStatus::Success);
  EXPECT_EQ(recorder.WaitUntilQueueEmpty(0), VideoStatus::Success);
  ASSERT_EQ(recorder.Open(path), VideoStatus::Success);
  ASSERT_EQ(recorder.Append(frame), VideoStatus::Success);
  recorder.AwaitDry();
  EXPECT_EQ(recorder.WaitUntilDone(0), VideoStatus::Success);
  EXPECT_EQ(recorder.WaitUntilQueueEmpty(0xFFFFFFFF), VideoStatus::Success);
}

TEST_F(FrameQueue, LetsWaitsRunOutWhileItIsBusy) {
  Recorder recorder;
  HeldWorkers held;
  ASSERT_EQ(recorder.Open(path), VideoStatus::Success);
  ASSERT_EQ(recorder.Append(frame), VideoStatus::Success);
  for (const uint32_t timeout : {0u, 1u, 20u}) {
    EXPECT_EQ(recorder.WaitUntilDone(timeout), VideoStatus::Timeout);
    EXPECT_EQ(recorder.WaitUntilQueueEmpty(timeout), VideoStatus::Timeout);
  }
}

TEST_F(FrameQueue, WakesAllWhoWaitWhenItHasRunDry) {
  Recorder recorder;
  HeldWorkers held;
  ASSERT_EQ(recorder.Open(path), VideoStatus::Success);
  for (int i = 0; i < 3; ++i) ASSERT_EQ(recorder.Append(frame), VideoStatus::Success);
  std::atomic<int> begun = 0;
  std::vector<std::thread> waiters;
  for (const uint32_t timeout : {kLong, 0xFFFFFFFFu}) {
    waiters.emplace_back([&, timeout] {
      ++begun;
      EXPECT_EQ(recorder.WaitUntilDone(timeout), VideoStatus::Success);
      EXPECT_EQ(recorder.Written(), 3u) << "not before the last frame";
    });
    waiters.emplace_back([&, timeout] {
      ++begun;
      EXPECT_EQ(recorder.WaitUntilQueueEmpty(timeout), VideoStatus::Success);
      EXPECT_EQ(recorder.Written(), 3u);
    });
  }
  while (begun != 4) std::this_thread::yield();
  held.Release();
  held.AwaitArrivals(2);
  held.Open();
  for (std::thread& waiter : waiters) waiter.join();
}

TEST_F(FrameQueue, IsDrainedByClosing) {
  Recorder recorder;
  HeldWorkers held;
  ASSERT_EQ(recorder.Open(path), VideoStatus::Success);
  for (int i = 0; i < 10; ++i) ASSERT_EQ(recorder.Append(frame), VideoStatus::Success);
  std::thread closer([&] { EXPECT_EQ(recorder.Close(), VideoStatus::Success); });
  held.AwaitArrivals(1);
  EXPECT_EQ(recorder.Written(), 0u);
  held.Open();
  closer.join();
  EXPECT_EQ(recorder.Written(), 10u);
  EXPECT_EQ(ParseAviFile(ReadFileBytes(path)).frames.size(), 10u);
}

TEST_F(FrameQueue, IsNotWaitedForByOptionsAndQueries) {
  Recorder recorder;
  HeldWorkers held;
  ASSERT_EQ(recorder.Open(path), VideoStatus::Success);
  ASSERT_EQ(recorder.Append(frame), VideoStatus::Success);
  held.AwaitArrivals(1);
  // Each of these would hang if it waited for the worker.
  EXPECT_EQ(recorder.Set("quality", int32_t{10}), VideoStatus::Success);
  EXPECT_EQ(recorder.Set("fps", 10.0), VideoStatus::Success);
  EXPECT_EQ(recorder.Append(frame), VideoStatus::Success);
  EXPECT_EQ(recorder.SetSize(64, 48), VideoStatus::Success);
  EXPECT_EQ(recorder.SetFormat(kRgb24), VideoStatus::Success);
  EXPECT_EQ(recorder.SetQueueSize(3), VideoStatus::NoSuccess);
  EXPECT_EQ(recorder.video.queued(), 2u);
  EXPECT_EQ(recorder.video.queueSize(), 17066u);
  EXPECT_TRUE(recorder.video.isOpen());
  EXPECT_EQ(recorder.video.fileSize(), 0u);
}

// The pipeline itself, where the video writer above it takes care that it never happens.
TEST_F(FrameQueue, RefusesWaitsForAnEventThatIsDisabled) {
  CZenoAvi pipeline;
  for (const CZenoAvi::Event event : {CZenoAvi::Event::FrameDone, CZenoAvi::Event::QueueEmpty}) {
    EXPECT_EQ(pipeline.WaitEvent(event, 0), SlotStatus::InvalidArgument);
    pipeline.EnableEvent(event);
    EXPECT_EQ(pipeline.WaitEvent(event, 0), SlotStatus::Success);
    pipeline.DisableEvent(event);
    EXPECT_EQ(pipeline.WaitEvent(event, 0), SlotStatus::InvalidArgument);
  }
}

TEST_F(FrameQueue, TellsThePipelinesStatuses) {
  CZenoAvi pipeline;
  EXPECT_EQ(pipeline.Stop(), SlotStatus::NotRunning);
  EXPECT_EQ(pipeline.Close(), SlotStatus::Success);
  EXPECT_EQ(pipeline.Open(""), SlotStatus::Failed);
  EXPECT_EQ(pipeline.Open(directory.File("missing/a.avi")), SlotStatus::OpenFailed);
  EXPECT_EQ(pipeline.Start({64, 48}, 1), SlotStatus::Failed);
  ASSERT_EQ(pipeline.Open(path), SlotStatus::Success);
  EXPECT_EQ(pipeline.Open(directory.File("b.avi")), SlotStatus::NotAllowed);
  EXPECT_EQ(pipeline.Open(""), SlotStatus::NotAllowed);
  EXPECT_EQ(pipeline.Start({20, 48}, 1), SlotStatus::InvalidSize);
  EXPECT_EQ(pipeline.Start({64, 15}, 1), SlotStatus::InvalidSize);
  for (const int32_t mode : {-1, 4, 5, 7}) {
    EXPECT_EQ(pipeline.Start({64, 48}, mode), SlotStatus::UnknownColorMode) << mode;
  }
  EXPECT_EQ(pipeline.AddFrame(frame.data(), frame.size()), SlotStatus::Success) << "dropped: no worker takes it";
  EXPECT_EQ(pipeline.FramesDropped(), 1u);
  EXPECT_EQ(pipeline.Start({64, 48}, 1), SlotStatus::Success);
  EXPECT_EQ(pipeline.Start({20, 15}, 1), SlotStatus::InvalidSize) << "the width is looked at first";
  EXPECT_EQ(pipeline.Start({64, 15}, 1), SlotStatus::NotAllowed);
  EXPECT_EQ(pipeline.SetQueueSize(0), SlotStatus::NotAllowed);
  EXPECT_EQ(pipeline.AddFrame(frame.data(), frame.size() - 1), SlotStatus::InvalidSize);
  EXPECT_EQ(pipeline.SetQuality(0), SlotStatus::OptionOutOfRange);
  EXPECT_EQ(pipeline.SetFrameRate(0), SlotStatus::OptionOutOfRange);
  EXPECT_EQ(pipeline.Stop(), SlotStatus::Success);
  EXPECT_EQ(pipeline.SetQueueSize(0), SlotStatus::InvalidArgument);
  EXPECT_EQ(pipeline.Stop(), SlotStatus::NotRunning);
  EXPECT_EQ(pipeline.Close(), SlotStatus::Success);
}

}  // namespace
