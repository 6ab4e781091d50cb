#include "video/zeno_avi.h"

#include <pthread.h>
#include <sched.h>

#include <chrono>
#include <cmath>
#include <cstring>
#include <exception>
#include <limits>
#include <system_error>
#include <utility>

#include "video/color_mode.h"
#include "video/seams.h"

namespace libvideo {
namespace {

using Clock = std::chrono::system_clock;

// As high as the policy allows that the thread has anyway.
void RaisePriority(std::thread& thread) {
  int policy = 0;
  sched_param parameters{};
  if (pthread_getschedparam(thread.native_handle(), &policy, &parameters) != 0) return;
  parameters.sched_priority = sched_get_priority_max(policy);
  pthread_setschedparam(thread.native_handle(), policy, &parameters);
}

}  // namespace

SlotStatus CZenoAvi::Open(const std::string& path) {
  const std::lock_guard control(controlMutex_);
  if (isRunning_ || avi_) return SlotStatus::NotAllowed;
  if (path.empty()) return SlotStatus::Failed;
  {
    const std::lock_guard lock(queueMutex_);
    isLimitReached_ = false;
  }
  ResetCounters();
  SlotStatus status = SlotStatus::Success;
  avi_ = CAvi::Open(path, frameTimeUs_, ColorModeOf(colorMode_).bytesPerPixel, &status);
  return status;
}

SlotStatus CZenoAvi::Close() {
  const std::lock_guard control(controlMutex_);
  StopWorker();
  if (!avi_) return SlotStatus::Success;
  avi_->SetFrameTime(frameTimeUs_);
  const bool isClosed = avi_->Close();
  avi_.reset();
  bytesWritten_ = 0;
  return isClosed ? SlotStatus::Success : SlotStatus::Failed;
}

SlotStatus CZenoAvi::Start(const img::Size2D& size, int32_t colorMode) {
  const std::lock_guard control(controlMutex_);
  if (const SlotStatus status = SetSize(size); status != SlotStatus::Success) return status;
  if (ColorModeOf(colorMode).bytesPerPixel == 0) return SlotStatus::UnknownColorMode;
  const int32_t colorModeBefore = std::exchange(colorMode_, colorMode);
  const SlotStatus status = StartWorker();
  // The next try finds everything as this one did.
  if (status != SlotStatus::Success) colorMode_ = colorModeBefore;
  return status;
}

SlotStatus CZenoAvi::SetSize(const img::Size2D& size) {
  constexpr size_t kSmallestSide = 16;
  constexpr size_t kLargestSide = std::numeric_limits<int32_t>::max();
  constexpr size_t kWidthStep = 8;
  if (size.width < kSmallestSide || size.width > kLargestSide || size.width % kWidthStep != 0) {
    return SlotStatus::InvalidSize;
  }
  if (isRunning_) return SlotStatus::NotAllowed;
  width_ = static_cast<uint32_t>(size.width);
  if (size.height < kSmallestSide || size.height > kLargestSide) return SlotStatus::InvalidSize;
  height_ = static_cast<uint32_t>(size.height);
  SetDefaultQueueSize();
  if (avi_) avi_->SetSize(width_, height_);
  return SlotStatus::Success;
}

// Intended: before the first start, when the colour mode is not known yet, a pixel counts four bytes.
void CZenoAvi::SetDefaultQueueSize() {
  constexpr double kMebibytesOfFrames = 200.0;
  if (isQueueSizeManual_) return;
  const size_t byteCount = ColorModeOf(colorMode_).bytesPerPixel * height_ * width_;
  queueLimit_ = static_cast<uint32_t>(kMebibytesOfFrames / (static_cast<double>(byteCount) / 1024 / 1024));
}

SlotStatus CZenoAvi::StartWorker() {
  if (isRunning_) return SlotStatus::NotAllowed;
  if (!avi_) return SlotStatus::Failed;
  const ColorMode mode = ColorModeOf(colorMode_);
  try {
    codec_.Prepare(width_, height_, mode);
    // The worker waits for the lock, and no frame is queued until there is a worker to take it.
    const std::lock_guard lock(queueMutex_);
    spareFrames_.reserve(kMostSpareFrames);
    if (Seams::Instance().failsToStart) {
      throw std::system_error(std::make_error_code(std::errc::resource_unavailable_try_again));
    }
    worker_ = std::thread(&CZenoAvi::Work, this);
    frameByteCount_ = mode.bytesPerPixel * height_ * width_;
    ++recording_;
    isWorkerLive_ = true;
    wasLastFrameGood_ = true;
  } catch (const std::exception&) {
    return SlotStatus::Failed;
  }
  RaisePriority(worker_);
  isRunning_ = true;
  return SlotStatus::Success;
}

SlotStatus CZenoAvi::Stop() {
  const std::lock_guard control(controlMutex_);
  return StopWorker();
}

SlotStatus CZenoAvi::StopWorker() {
  if (!isRunning_) return SlotStatus::NotRunning;
  {
    const std::lock_guard lock(queueMutex_);
    isWorkerLive_ = false;
  }
  workAvailable_.notify_all();
  worker_.join();
  {
    const std::lock_guard lock(queueMutex_);
    spareFrames_.clear();
  }
  isRunning_ = false;
  codec_.Release();
  return SlotStatus::Success;
}

SlotStatus CZenoAvi::Drop(SlotStatus status) {
  ++framesDropped_;
  return status;
}

SlotStatus CZenoAvi::AddFrame(const uint8_t* data, size_t byteCount) {
  size_t frameByteCount = 0;
  uint64_t recording = 0;
  Frame frame;
  {
    const std::lock_guard lock(queueMutex_);
    if (isLimitReached_) {
      // Intended: counted only while no frame waits.
      return queue_.empty() ? Drop(SlotStatus::LimitReached) : SlotStatus::LimitReached;
    }
    if (data == nullptr) return Drop(wasLastFrameGood_ ? SlotStatus::Success : SlotStatus::CompressionFailed);
    if (!isWorkerLive_) return Drop(SlotStatus::Success);
    if (queue_.size() >= queueLimit_) return Drop(SlotStatus::QueueFull);
    frameByteCount = frameByteCount_;
    recording = recording_;
    if (byteCount < frameByteCount) return Drop(SlotStatus::InvalidSize);
    if (!spareFrames_.empty()) {
      frame = std::move(spareFrames_.back());
      spareFrames_.pop_back();
    }
  }
  try {
    if (!frame) frame.reset(new uint8_t[frameByteCount]);
    std::memcpy(frame.get(), data, frameByteCount);
    const std::lock_guard lock(queueMutex_);
    // The worker may have been told to end meanwhile, and may be gone; the next one takes frames of another size.
    if (!isWorkerLive_ || recording != recording_) return Drop(SlotStatus::Success);
    queue_.push_back(std::move(frame));
  } catch (const std::exception&) {
    return Drop(SlotStatus::CompressionFailed);
  }
  workAvailable_.notify_one();
  return SlotStatus::Success;
}

SlotStatus CZenoAvi::SetFrameRate(double framesPerSecond) {
  constexpr double kMicroSeconds = 1e6;
  constexpr double kLongest = std::numeric_limits<uint32_t>::max();  // what a file's header holds
  if (!std::isfinite(framesPerSecond) || framesPerSecond <= 0) return SlotStatus::OptionOutOfRange;
  const double frameTime = std::trunc(kMicroSeconds / framesPerSecond);
  const std::lock_guard control(controlMutex_);
  frameTimeUs_ = static_cast<uint64_t>(std::fmin(frameTime, kLongest));
  if (avi_) avi_->SetFrameTime(frameTimeUs_);
  return SlotStatus::Success;
}

SlotStatus CZenoAvi::SetQuality(int32_t quality) {
  if (quality < kLowestQuality || quality > kHighestQuality) return SlotStatus::OptionOutOfRange;
  codec_.SetQuality(quality);
  return SlotStatus::Success;
}

SlotStatus CZenoAvi::SetQueueSize(uint32_t size) {
  const std::lock_guard control(controlMutex_);
  if (isRunning_) return SlotStatus::NotAllowed;
  if (size < kSmallestQueue || size > kLargestQueue) return SlotStatus::InvalidArgument;
  queueLimit_ = size;
  isQueueSizeManual_ = true;
  return SlotStatus::Success;
}

uint32_t CZenoAvi::Queued() const {
  const std::lock_guard lock(queueMutex_);
  return static_cast<uint32_t>(queue_.size());
}

void CZenoAvi::ResetCounters() { framesWritten_ = framesDropped_ = 0; }

void CZenoAvi::SetEvent(Event event, bool isEnabled) {
  WaitPoint& point = PointOf(event);
  {
    const std::lock_guard lock(queueMutex_);
    point.isEnabled = isEnabled;
  }
  point.condition.notify_all();
}

void CZenoAvi::Signal(Event event) {
  WaitPoint& point = PointOf(event);
  {
    const std::lock_guard lock(queueMutex_);
    if (!point.isEnabled) return;
  }
  point.condition.notify_all();
}

SlotStatus CZenoAvi::WaitEvent(Event event, uint32_t timeoutMs) {
  const Clock::time_point deadline = Clock::now() + std::chrono::milliseconds(timeoutMs);
  WaitPoint& point = PointOf(event);
  std::unique_lock lock(queueMutex_);
  if (!point.isEnabled) return SlotStatus::InvalidArgument;
  if (queue_.empty()) return SlotStatus::Success;
  point.condition.wait_until(lock, deadline);
  return Clock::now() < deadline ? SlotStatus::Success : SlotStatus::WaitTimedOut;
}

bool CZenoAvi::IsQueueEmpty() const {
  const std::lock_guard lock(queueMutex_);
  return queue_.empty();
}

void CZenoAvi::Work() noexcept {
  for (;;) {
    {
      std::unique_lock lock(queueMutex_);
      workAvailable_.wait(lock, [this] { return !queue_.empty() || !isWorkerLive_; });
      // A frame that is queued is never lost: the thread ends with an empty queue only.
      if (queue_.empty()) return;
    }
    Drain();
    Signal(Event::FrameDone);
  }
}

void CZenoAvi::Drain() {
  do {
    const uint8_t* frame = nullptr;
    {
      // The frame counts as queued until it is done.
      const std::lock_guard lock(queueMutex_);
      frame = queue_.front().get();
    }
    ++(Record(frame) ? framesWritten_ : framesDropped_);
    RemoveFirstFrame();
  } while (!IsQueueEmpty());
  Signal(Event::QueueEmpty);
}

// Memory that comes fresh from the system costs the caller several times the copy, so a little of it is kept.
void CZenoAvi::RemoveFirstFrame() {
  Frame surplus;  // given back without the lock
  const std::lock_guard lock(queueMutex_);
  Frame& first = queue_.front();
  if (spareFrames_.size() < kMostSpareFrames) {
    spareFrames_.push_back(std::move(first));  // which has room
  } else {
    surplus = std::move(first);
  }
  queue_.pop_front();
}

// Compresses and writes a frame. False if it has to be dropped.
bool CZenoAvi::Record(const uint8_t* frame) {
  const Seams& seams = Seams::Instance();
  if (void (*const beforeFrame)() = seams.beforeFrame) beforeFrame();
  const CCodec::Result result = codec_.Compress(frame);
  wasLastFrameGood_ = result.status == SlotStatus::Success;
  if (!wasLastFrameGood_) return false;

  const uint64_t limit = seams.mostFrameBytes;
  if (result.byteCount + bytesWritten_ > limit || !avi_->HasRoomFor(result.byteCount)) {
    const std::lock_guard lock(queueMutex_);
    isLimitReached_ = true;
    bytesWritten_ = limit;
  }
  {
    const std::lock_guard lock(queueMutex_);
    if (isLimitReached_) return false;
  }
  if (!avi_->Write({result.picture, result.byteCount})) return false;
  bytesWritten_ += result.byteCount;
  return true;
}

}  // namespace libvideo
