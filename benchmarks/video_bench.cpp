// Recording: the worker's part beside the bare compressor with the same settings on the same frames, and the caller's
// part beside a copy into new memory that goes through a plain queue. The workers of both queues are held until frames
// wait, so that one part is measured without the other, whatever cores there are.

#include <turbojpeg.h>

#include <algorithm>
#include <condition_variable>
#include <cstring>
#include <deque>
#include <memory>
#include <mutex>
#include <span>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "avi/qavi.h"
#include "benchmarks/exported_calls.h"
#include "benchmarks/registration.h"
#include "benchmarks/side_by_side.h"
#include "benchmarks/temporary_file.h"
#include "benchmarks/test_frames.h"
#include "tests/support/gate.h"
#include "tests/support/held_workers.h"

namespace korvel::benchmarks {
namespace {

using img::PixelFormatId;
using img::Size2D;

// In a turn. Few enough for the memory of any machine, many enough that a file's first frame doesn't count.
constexpr size_t kFramesInTurn = 4;

constexpr int kQuality = 75;

struct VideoFormat {
  PixelFormatId format;
  int pixelFormat;
  int subsampling;
};

constexpr VideoFormat kVideoFormats[] = {
    {PixelFormatId::Mono8, TJPF_GRAY, TJSAMP_GRAY},
    {PixelFormatId::RGB8, TJPF_RGB, TJSAMP_422},
    {PixelFormatId::BGRa8, TJPF_BGRA, TJSAMP_422},
};

// TurboJPEG alone.
class BareCompressor {
 public:
  BareCompressor(const VideoFormat& format, const Size2D& size)
      : format_(format),
        width_(static_cast<int>(size.width)),
        height_(static_cast<int>(size.height)),
        output_(tjBufSize(width_, height_, format.subsampling)),
        compressor_(tjInitCompress()) {}

  std::span<const uint8_t> Compress(const std::vector<uint8_t>& frame) {
    unsigned char* picture = output_.data();
    unsigned long byteCount = output_.size();
    if (tjCompress2(compressor_.get(), frame.data(), width_, 0, height_, format_.pixelFormat, &picture, &byteCount,
                    format_.subsampling, kQuality, TJFLAG_NOREALLOC | TJFLAG_FASTDCT) != 0) {
      throw std::runtime_error("a frame can't be compressed");
    }
    return {picture, byteCount};
  }

 private:
  struct Destroyer {
    void operator()(void* handle) const { tjDestroy(handle); }
  };

  VideoFormat format_;
  int width_;
  int height_;
  std::vector<uint8_t> output_;
  std::unique_ptr<void, Destroyer> compressor_;
};

// A video whose worker waits for its frames' release.
class HeldRecording {
 public:
  HeldRecording() {
    Require(KORVEL_VideoWriter_Video_Open(video_.Out(), file_.Path().c_str(), KORVEL_VIDEO_CONTAINER_AVI,
                                          KORVEL_VIDEO_ENCODER_MJPEG));
    Require(KORVEL_VideoWriter_Queue_SetSize(video_.Get(), kFramesInTurn));
  }

  void Hold() { korvel_test::beforeFrameGate.Close(); }

  void Append(const Image& image) { Require(KORVEL_VideoWriter_Video_Append(video_.Get(), image.Get())); }

  void Fill(const Image& image) {
    while (Queued() < kFramesInTurn) Append(image);
  }

  // Lets the worker go on and waits for it.
  void Drain() {
    constexpr uint32_t kMinute = 60'000;
    worker_.Open();
    while (Queued() != 0) Require(KORVEL_VideoWriter_Video_WaitUntilQueueEmpty(video_.Get(), kMinute));
  }

  // The picture of the first frame; ends the recording.
  std::vector<uint8_t> FirstPicture(size_t mostBytes) {
    Drain();
    video_.Reset();
    avi::QAVIHandle file = 0;
    std::vector<uint8_t> picture(mostBytes);
    size_t byteCount = 0;
    if (avi::QAVIOpenFile(file_.Path(), &file) != avi::QAVIError::Success ||
        avi::QAVIGetData(file, 0, 0, picture, &byteCount) != avi::QAVIError::Success ||
        avi::QAVICloseFile(file) != avi::QAVIError::Success) {
      throw std::runtime_error("cannot read " + file_.Path());
    }
    picture.resize(byteCount);
    return picture;
  }

 private:
  uint32_t Queued() const {
    uint32_t queued = 0;
    Require(KORVEL_VideoWriter_Queue_GetQueued(video_.Get(), &queued));
    return queued;
  }

  TemporaryFile file_{".avi"};
  tools::Video video_;
  korvel_test::HeldWorkers worker_;
};

// What a queue of frames can't do without: new memory for each, a lock, and a thread that is woken.
class PlainQueue {
 public:
  PlainQueue() : worker_([this] { Work(); }) {}
  PlainQueue(const PlainQueue&) = delete;
  PlainQueue& operator=(const PlainQueue&) = delete;
  ~PlainQueue() {
    gate_.Open();
    {
      const std::lock_guard lock(mutex_);
      isEnding_ = true;
    }
    changed_.notify_all();
    worker_.join();
  }

  void Hold() { gate_.Close(); }

  void Append(const std::vector<uint8_t>& bytes) {
    std::unique_ptr<uint8_t[]> block(new uint8_t[bytes.size()]);
    std::memcpy(block.get(), bytes.data(), bytes.size());
    {
      const std::lock_guard lock(mutex_);
      queue_.push_back(std::move(block));
    }
    changed_.notify_one();
  }

  void Drain() {
    gate_.Open();
    std::unique_lock lock(mutex_);
    emptied_.wait(lock, [this] { return queue_.empty(); });
  }

 private:
  void Work() {
    std::unique_lock lock(mutex_);
    for (;;) {
      changed_.wait(lock, [this] { return !queue_.empty() || isEnding_; });
      if (queue_.empty()) return;
      lock.unlock();
      gate_.Pass();
      lock.lock();
      queue_.pop_front();
      if (queue_.empty()) emptied_.notify_all();
    }
  }

  korvel_test::Gate gate_;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::condition_variable emptied_;
  std::deque<std::unique_ptr<uint8_t[]>> queue_;
  bool isEnding_ = false;
  std::thread worker_;
};

void RunEncode(benchmark::State& state, const VideoFormat& format, const Size2D& size) {
  std::vector<uint8_t> frame = MakeFrame(format.format, size);
  const Image image = ImageOver(frame, format.format, size);
  // The worker has each frame in memory of its own, and so has its peer.
  const std::vector<std::vector<uint8_t>> frames(kFramesInTurn, frame);
  BareCompressor compressor(format, size);
  HeldRecording recording;
  Measure(state, {.run = [&] { recording.Drain(); },
                  .prepare =
                      [&] {
                        recording.Hold();
                        recording.Fill(image);
                      },
                  .peers = {{.name = "TurboJPEG",
                             .run =
                                 [&] {
                                   for (const std::vector<uint8_t>& each : frames) compressor.Compress(each);
                                 }}},
                  .pixels = size.width * size.height,
                  .callsInRun = kFramesInTurn});
  const std::span<const uint8_t> expected = compressor.Compress(frame);
  if (recording.FirstPicture(expected.size()) != std::vector<uint8_t>(expected.begin(), expected.end())) {
    state.SkipWithError("differs from the picture of its peer");
  }
}

void RunAppend(benchmark::State& state, const VideoFormat& format, const Size2D& size) {
  std::vector<uint8_t> frame = MakeFrame(format.format, size);
  const Image image = ImageOver(frame, format.format, size);
  HeldRecording recording;
  PlainQueue queue;
  Measure(state, {.run =
                      [&] {
                        for (size_t i = 0; i < kFramesInTurn; ++i) recording.Append(image);
                      },
                  .prepare =
                      [&] {
                        recording.Drain();
                        recording.Hold();
                      },
                  .peers = {{.name = "a copy through a plain queue",
                             .run =
                                 [&] {
                                   for (size_t i = 0; i < kFramesInTurn; ++i) queue.Append(frame);
                                 },
                             .prepare =
                                 [&] {
                                   queue.Drain();
                                   queue.Hold();
                                 }}},
                  .pixels = size.width * size.height,
                  .callsInRun = kFramesInTurn});
}

}  // namespace

void RegisterVideo(FrameSizes sizes) {
  constexpr int kMostRounds = 9;  // each compresses some frames
  for (const VideoFormat& format : kVideoFormats) {
    const std::string name = img::PixelFormatInfo_Name(format.format);
    for (const FrameSize& frame : sizes) {
      const int rounds = std::min(frame.rounds, kMostRounds);
      Register("record_encode/" + name, frame.Name(), rounds,
               [=](benchmark::State& state) { RunEncode(state, format, frame.size); });
      Register("record_append/" + name, frame.Name(), rounds,
               [=](benchmark::State& state) { RunAppend(state, format, frame.size); });
    }
  }
}

}  // namespace korvel::benchmarks
