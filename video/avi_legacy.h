// The one video writer: MJPEG in AVI files.
#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

#include "video/slot_status.h"
#include "video/video_library.h"
#include "video/video_status.h"
#include "video/zeno_avi.h"

namespace libvideo {

// How the pipeline's statuses are told.
VideoStatus ToVideoStatus(SlotStatus status);

// One of the places for recordings at a time; given back at the end. Throws std::system_error if all are taken.
class RecordingSlot {
 public:
  static constexpr int kSlots = 48;

  RecordingSlot();
  RecordingSlot(const RecordingSlot&) = delete;
  RecordingSlot& operator=(const RecordingSlot&) = delete;
  ~RecordingSlot();
};

// Any thread may call any function at any time.
class AviLegacy final : public VideoLibrary {
 public:
  // Throws std::system_error, "AviLegacy: ...", for anything but Avi with Mjpeg, and beyond 48 recordings at a time.
  AviLegacy(Container container, Encoder encoder);
  ~AviLegacy() override;

  void openFile(const std::string& path, std::error_code& error) override;
  void closeFile(std::error_code& error) override;
  bool isOpen() const override { return isOpen_; }
  void setDimensions(const img::Size2D& size, std::error_code& error) override;
  img::Size2D dimensions() const override;
  void setSourceFormat(const VideoPixelFormat& format, std::error_code& error) override;
  VideoPixelFormat sourceFormat() const override;
  void setOption(const std::string& name, const VideoOptionValue& value, std::error_code& error) override;
  void option(const std::string& name, VideoOptionValue& value, std::error_code& error) const override;
  void optionRange(const std::string& name, VideoOptionValue& minimum, VideoOptionValue& maximum,
                   VideoOptionValue& increment, std::error_code& error) const override;
  std::vector<VideoOptionInfo> options() const override;
  void append(const uint8_t* data, size_t byteCount, std::error_code& error) override;
  uint64_t fileSize() const override { return pipeline_.BytesWritten(); }
  bool statistics(VideoStatistics& statistics) const override;
  void resetFrameCounters() override { pipeline_.ResetCounters(); }
  void waitUntilDone(uint32_t timeoutMs, std::error_code& error) override;
  void waitUntilQueueEmpty(uint32_t timeoutMs, std::error_code& error) override;
  uint32_t queued() const override { return pipeline_.Queued(); }
  uint32_t queueSize() const override { return pipeline_.QueueSize(); }
  void queueSizeRange(uint32_t& minimum, uint32_t& maximum, std::error_code& error) const override;
  void setQueueSize(uint32_t size, std::error_code& error) override;
  using VideoLibrary::setQueueSize;

 private:
  SlotStatus StartOnce();

  RecordingSlot slot_;
  CZenoAvi pipeline_;
  std::atomic<int32_t> quality_ = 75;
  std::atomic<double> framesPerSecond_ = 25.0;
  std::atomic<bool> isOpen_ = false;
  std::atomic<bool> isStarted_ = false;

  std::mutex fileMutex_;            // one of opening, starting and closing at a time
  mutable std::mutex sourceMutex_;  // guards what the base holds of the source
};

class AviLegacyFactory final : public VideoLibraryFactory {
 public:
  std::string name() const override { return "avi_legacy"; }
  std::vector<Container> supportedContainers() const override { return {Container::Avi}; }
  std::vector<Encoder> supportedEncoders() const override { return {Encoder::Mjpeg}; }
  std::vector<VideoPixelFormat> supportedPixelFormats(Encoder encoder) const override;
  std::unique_ptr<VideoLibrary> create(Container container, Encoder encoder) const override;
};

}  // namespace libvideo
