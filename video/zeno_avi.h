// The pipeline of one recording: frames are copied into a bounded queue on the caller's thread, and one worker thread
// compresses them and appends them to the file. The caller never waits for either; a frame that doesn't fit is dropped
// and counted.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "core/geometry.h"
#include "video/avi_writer.h"
#include "video/codec.h"
#include "video/slot_status.h"

namespace libvideo {

// Any thread may call any function at any time.
class CZenoAvi {
 public:
  enum class Event { FrameDone = 1, QueueEmpty = 2 };

  static constexpr int32_t kLowestQuality = 1;
  static constexpr int32_t kHighestQuality = 100;
  static constexpr uint32_t kSmallestQueue = 1;
  static constexpr uint32_t kLargestQueue = 1000;

  CZenoAvi() = default;
  CZenoAvi(const CZenoAvi&) = delete;
  CZenoAvi& operator=(const CZenoAvi&) = delete;
  ~CZenoAvi() { Close(); }

  SlotStatus Open(const std::string& path);

  // Writes the frames that are queued, and then the rest of the file.
  SlotStatus Close();

  // Frames of one size and kind from now on; starts the worker. If anything is refused, no worker runs and a later call
  // may try again.
  SlotStatus Start(const img::Size2D& size, int32_t colorMode);

  // Ends the worker when the queue is empty.
  SlotStatus Stop();

  SlotStatus AddFrame(const uint8_t* data, size_t byteCount);

  // Frames per second, above 0; and JPEG quality, 1 to 100. Both at any time.
  SlotStatus SetFrameRate(double framesPerSecond);
  SlotStatus SetQuality(int32_t quality);

  // Before the start only.
  SlotStatus SetQueueSize(uint32_t size);
  uint32_t QueueSize() const { return queueLimit_; }

  // Frames that wait, the one at work included.
  uint32_t Queued() const;

  uint64_t FramesWritten() const { return framesWritten_; }
  uint64_t FramesDropped() const { return framesDropped_; }
  uint64_t BytesWritten() const { return bytesWritten_; }
  void ResetCounters();

  void EnableEvent(Event event) { SetEvent(event, true); }
  void DisableEvent(Event event) { SetEvent(event, false); }

  // Both events come when the queue has run dry. An empty queue answers at once; otherwise the clock decides after one
  // sleep, from which any wake-up counts as the event.
  SlotStatus WaitEvent(Event event, uint32_t timeoutMs);

 private:
  using Frame = std::unique_ptr<uint8_t[]>;

  // Enough for a stream that the worker keeps up with, and no more than a burst of it may hold for the time after.
  static constexpr size_t kMostSpareFrames = 8;

  // A condition that may be waited for.
  struct WaitPoint {
    std::condition_variable condition;
    bool isEnabled = false;
  };

  WaitPoint& PointOf(Event event) { return event == Event::FrameDone ? frameDone_ : queueEmpty_; }
  void SetEvent(Event event, bool isEnabled);
  void Signal(Event event);

  SlotStatus SetSize(const img::Size2D& size);
  void SetDefaultQueueSize();
  SlotStatus StartWorker();
  SlotStatus StopWorker();
  SlotStatus Drop(SlotStatus status);

  void Work() noexcept;
  void Drain();
  void RemoveFirstFrame();
  bool Record(const uint8_t* frame);
  bool IsQueueEmpty() const;

  // Guards what only changes while no worker runs, and held while one is started or ended.
  std::mutex controlMutex_;
  bool isRunning_ = false;
  bool isQueueSizeManual_ = false;
  uint32_t width_ = 0;
  uint32_t height_ = 0;
  int32_t colorMode_ = 0;
  uint64_t frameTimeUs_ = 40000;
  std::unique_ptr<CAvi> avi_;
  CCodec codec_;
  std::thread worker_;

  // Guards the queue's ends and what is decided with them; never held during compression or writing.
  mutable std::mutex queueMutex_;
  std::condition_variable workAvailable_;
  WaitPoint frameDone_;
  WaitPoint queueEmpty_;
  std::deque<Frame> queue_;
  std::vector<Frame> spareFrames_;  // to be used again; all of frameByteCount_
  size_t frameByteCount_ = 0;
  uint64_t recording_ = 0;  // counts starts of the worker
  bool isWorkerLive_ = false;
  bool isLimitReached_ = false;

  std::atomic<uint32_t> queueLimit_ = 16;
  std::atomic<bool> wasLastFrameGood_ = true;
  std::atomic<uint64_t> framesWritten_ = 0;
  std::atomic<uint64_t> framesDropped_ = 0;
  std::atomic<uint64_t> bytesWritten_ = 0;
};

}  // namespace libvideo
