// Video writers that several threads use at once. What has to hold whatever the order of their steps is checked here;
// the thread sanitizer sees the rest.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include "tests/model/avi_model.h"
#include "tests/support/file_bytes.h"
#include "tests/support/held_workers.h"
#include "tests/support/recorder.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/video_frames.h"
#include "video/avi_legacy.h"
#include "video/seams.h"
#include "video/zeno_avi.h"

namespace {

using korvel_test::AviBytes;
using korvel_test::CompressFrame;
using korvel_test::kRgb24;
using korvel_test::MakeSmoothFrame;
using korvel_test::ParseAviFile;
using korvel_test::Pixels;
using korvel_test::ReadFileBytes;
using korvel_test::Recorder;
using korvel_test::SeamValue;
using libvideo::CZenoAvi;
using libvideo::Seams;
using libvideo::SlotStatus;
using libvideo::VideoStatus;

class VideoThreads : public testing::Test {
 protected:
  korvel_test::TemporaryDirectory directory;
  std::string path = directory.File("a.avi");
  const Pixels frame = MakeSmoothFrame(kRgb24, 64, 48, 0);
};

// Lets threads begin together.
class StartLine {
 public:
  explicit StartLine(int runners) : missing_(runners) {}

  void Begin() {
    --missing_;
    while (missing_ > 0) std::this_thread::yield();
  }

 private:
  std::atomic<int> missing_;
};

TEST_F(VideoThreads, StartOnceWithTheirFirstFrames) {
  for (int round = 0; round < 50; ++round) {
    std::filesystem::remove(path);
    Recorder recorder;
    ASSERT_EQ(recorder.Open(path), VideoStatus::Success);
    StartLine line(2);
    std::vector<std::thread> threads;
    for (int i = 0; i < 2; ++i) {
      threads.emplace_back([&] {
        line.Begin();
        EXPECT_EQ(recorder.SetSize(64, 48), VideoStatus::Success);
        EXPECT_EQ(recorder.SetFormat(kRgb24), VideoStatus::Success);
        EXPECT_EQ(recorder.Append(frame), VideoStatus::Success);
      });
    }
    for (std::thread& thread : threads) thread.join();
    ASSERT_EQ(recorder.Close(), VideoStatus::Success);
    ASSERT_EQ(recorder.Written(), 2u);
    ASSERT_EQ(ParseAviFile(ReadFileBytes(path)).frames.size(), 2u);
  }
}

TEST_F(VideoThreads, MakeAFileOnceWithOneName) {
  Recorder one;
  Recorder two;
  for (int round = 0; round < 200; ++round) {
    std::filesystem::remove(path);
    StartLine line(2);
    VideoStatus other{};
    std::thread thread([&] {
      line.Begin();
      other = two.Open(path);
    });
    line.Begin();
    const VideoStatus mine = one.Open(path);
    thread.join();
    ASSERT_EQ(std::min(mine, other), VideoStatus::Success) << round;
    ASSERT_EQ(std::max(mine, other), VideoStatus::CouldNotAccess) << round;
    ASSERT_EQ(one.Close(), VideoStatus::Success);
    ASSERT_EQ(two.Close(), VideoStatus::Success);
  }
}

// A frame whose copying takes until the next recording has begun belongs to neither, and is too short for that one.
TEST_F(VideoThreads, TakeNoFrameIntoTheNextRecording) {
  constexpr size_t kWidth = 2048;
  constexpr size_t kHeight = 1024;
  const Pixels first = MakeSmoothFrame(kRgb24, kWidth, kHeight, 0);
  const Pixels second = MakeSmoothFrame(kRgb24, kWidth, kHeight + 8, 0);
  const AviBytes picture = CompressFrame(kRgb24, kWidth, kHeight + 8, second, 75);
  for (int round = 0; round < 20; ++round) {
    std::filesystem::remove(path);
    const std::string next = directory.File("b.avi");
    std::filesystem::remove(next);
    Recorder recorder(kRgb24, kWidth, kHeight);
    ASSERT_EQ(recorder.Open(path), VideoStatus::Success);
    // Too short to be recorded, it starts the recording all the same.
    ASSERT_EQ(recorder.Append(first.data(), 1), VideoStatus::InvalidParameter);
    StartLine line(2);
    std::thread appender([&] {
      line.Begin();
      recorder.Append(first);
    });
    line.Begin();
    ASSERT_EQ(recorder.Close(), VideoStatus::Success);
    ASSERT_EQ(recorder.SetSize(kWidth, kHeight + 8), VideoStatus::Success);
    ASSERT_EQ(recorder.Open(next), VideoStatus::Success);
    ASSERT_EQ(recorder.Append(second), VideoStatus::Success);
    appender.join();
    ASSERT_EQ(recorder.Close(), VideoStatus::Success);
    ASSERT_EQ(ParseAviFile(ReadFileBytes(next)).frames, (std::vector<AviBytes>{picture})) << round;
  }
}

TEST_F(VideoThreads, QueueNoFrameThatNoWorkerTakes) {
  const SeamValue fails(Seams::Instance().failsToStart, true);
  CZenoAvi pipeline;
  ASSERT_EQ(pipeline.Open(path), SlotStatus::Success);
  std::atomic<bool> isOver = false;
  std::thread appender([&] {
    while (!isOver) pipeline.AddFrame(frame.data(), frame.size());
  });
  for (int i = 0; i < 2000; ++i) EXPECT_EQ(pipeline.Start({64, 48}, 1), SlotStatus::Failed);
  isOver = true;
  appender.join();
  EXPECT_EQ(pipeline.Queued(), 0u);
}

// Whichever size wins, frames of the other are refused or cut, and no byte beyond a frame is read.
TEST_F(VideoThreads, MayDisagreeAboutTheSizeOfTheFirstFrame) {
  const Pixels small = MakeSmoothFrame(kRgb24, 32, 32, 0);
  for (int round = 0; round < 50; ++round) {
    std::filesystem::remove(path);
    Recorder recorder;
    ASSERT_EQ(recorder.Open(path), VideoStatus::Success);
    StartLine line(2);
    const auto append = [&](size_t width, size_t height, const Pixels& pixels) {
      line.Begin();
      recorder.SetSize(width, height);
      recorder.Append(pixels);
    };
    std::thread one(append, 64, 48, std::cref(frame));
    std::thread two(append, 32, 32, std::cref(small));
    one.join();
    two.join();
    ASSERT_EQ(recorder.Close(), VideoStatus::Success);
    EXPECT_EQ(recorder.Written() + recorder.Dropped(), 2u);
    EXPECT_EQ(ParseAviFile(ReadFileBytes(path)).frames.size(), recorder.Written());
  }
}

TEST_F(VideoThreads, LoseNoFrameBetweenThem) {
  constexpr uint64_t kFrames = 300;
  Recorder recorder;
  ASSERT_EQ(recorder.SetQueueSize(20), VideoStatus::Success);
  ASSERT_EQ(recorder.Open(path), VideoStatus::Success);
  std::atomic<uint64_t> refused = 0;
  std::atomic<int> appending = 2;
  std::vector<std::thread> threads;
  for (int i = 0; i < 2; ++i) {
    threads.emplace_back([&] {
      for (uint64_t k = 0; k < kFrames; ++k) {
        const VideoStatus status = recorder.Append(frame);
        if (status == VideoStatus::QueueIsFull) ++refused;
        EXPECT_TRUE(status == VideoStatus::Success || status == VideoStatus::QueueIsFull);
      }
      --appending;
    });
  }
  threads.emplace_back([&] {
    for (int32_t k = 0; appending > 0; ++k) {
      EXPECT_EQ(recorder.Set("quality", 1 + k % 100), VideoStatus::Success);
      EXPECT_EQ(recorder.Set("fps", 1.0 + k), VideoStatus::Success);
    }
  });
  threads.emplace_back([&] {
    while (appending > 0) {
      const VideoStatus done = recorder.WaitUntilDone(1);
      const VideoStatus empty = recorder.WaitUntilQueueEmpty(1);
      EXPECT_TRUE(done == VideoStatus::Success || done == VideoStatus::Timeout);
      EXPECT_TRUE(empty == VideoStatus::Success || empty == VideoStatus::Timeout);
    }
  });
  threads.emplace_back([&] {
    while (appending > 0) {
      EXPECT_LE(recorder.video.queued(), 21u) << "two callers may exceed the limit by one each";
      EXPECT_LE(recorder.Written(), 2 * kFrames);
      EXPECT_EQ(recorder.video.queueSize(), 20u);
      EXPECT_TRUE(recorder.video.isOpen());
      recorder.video.fileSize();
    }
  });
  for (std::thread& thread : threads) thread.join();
  ASSERT_EQ(recorder.Close(), VideoStatus::Success);
  EXPECT_EQ(recorder.Written() + recorder.Dropped(), 2 * kFrames);
  EXPECT_EQ(recorder.Dropped(), refused);
  EXPECT_EQ(ParseAviFile(ReadFileBytes(path)).frames.size(), recorder.Written());
}

TEST_F(VideoThreads, MayCloseWhileOthersAppendAndWait) {
  for (int round = 0; round < 30; ++round) {
    std::filesystem::remove(path);
    Recorder recorder;
    ASSERT_EQ(recorder.SetQueueSize(20), VideoStatus::Success);
    ASSERT_EQ(recorder.Open(path), VideoStatus::Success);
    ASSERT_EQ(recorder.Append(frame), VideoStatus::Success);
    std::atomic<uint64_t> appended = 1;
    std::atomic<bool> isClosed = false;
    StartLine line(3);
    std::thread appender([&] {
      line.Begin();
      while (!isClosed) {
        const VideoStatus status = recorder.Append(frame);
        // After closing there is no file to start with.
        if (status == VideoStatus::NoSuccess) break;
        EXPECT_TRUE(status == VideoStatus::Success || status == VideoStatus::QueueIsFull);
        ++appended;
      }
    });
    std::thread waiter([&] {
      line.Begin();
      while (!isClosed) EXPECT_EQ(recorder.WaitUntilQueueEmpty(600'000), VideoStatus::Success);
    });
    line.Begin();
    ASSERT_EQ(recorder.Close(), VideoStatus::Success);
    isClosed = true;
    appender.join();
    waiter.join();
    EXPECT_EQ(recorder.Written() + recorder.Dropped(), appended);
    EXPECT_EQ(ParseAviFile(ReadFileBytes(path)).frames.size(), recorder.Written());
  }
}

TEST_F(VideoThreads, RecordUpTo48VideosAtOnce) {
  std::vector<std::unique_ptr<Recorder>> recorders;
  for (int i = 0; i < 48; ++i) recorders.push_back(std::make_unique<Recorder>());
  const auto expectNoPlace = [] {
    try {
      libvideo::AviLegacy(libvideo::Container::Avi, libvideo::Encoder::Mjpeg);
      ADD_FAILURE() << "a 49th video";
    } catch (const std::system_error& error) {
      EXPECT_EQ(error.code(), libvideo::MakeErrorCode(VideoStatus::NoSuccess));
      EXPECT_STREQ(error.what(), "AviLegacy: No success");
    }
  };
  expectNoPlace();
  EXPECT_THROW(libvideo::AviLegacy(libvideo::Container::Avi, libvideo::Encoder::Avi), std::system_error);
  recorders.pop_back();
  recorders.push_back(std::make_unique<Recorder>());
  expectNoPlace();

  std::vector<std::thread> threads;
  for (size_t i = 0; i < recorders.size(); ++i) {
    threads.emplace_back([&, i] {
      ASSERT_EQ(recorders[i]->Open(directory.File(std::to_string(i))), VideoStatus::Success);
      for (size_t k = 0; k <= i % 5; ++k) ASSERT_EQ(recorders[i]->Append(frame), VideoStatus::Success);
    });
  }
  for (std::thread& thread : threads) thread.join();
  expectNoPlace();
  for (const auto& recorder : recorders) EXPECT_EQ(recorder->Close(), VideoStatus::Success);
  for (size_t i = 0; i < recorders.size(); ++i) {
    EXPECT_EQ(ParseAviFile(ReadFileBytes(directory.File(std::to_string(i)))).frames.size(), i % 5 + 1);
  }
}

TEST_F(VideoThreads, GiveTheirPlacesBack) {
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&, i] {
      for (int k = 0; k < 100; ++k) {
        std::vector<std::unique_ptr<Recorder>> recorders;
        for (int n = 0; n < 12; ++n) recorders.push_back(std::make_unique<Recorder>());
        // Neither a video that can't be made nor one without a file keeps a place.
        EXPECT_THROW(libvideo::AviLegacy(libvideo::Container::Mp4, libvideo::Encoder::Mjpeg), std::system_error);
        EXPECT_EQ(recorders[0]->Open(directory.File("missing/" + std::to_string(i))), VideoStatus::NoSuccess);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
}

}  // namespace
