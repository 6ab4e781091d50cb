// A video writer whose operations give their status.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <system_error>
#include <utility>

#include "tests/support/video_frames.h"
#include "video/avi_legacy.h"
#include "video/video_status.h"

namespace korvel_test {

// What an operation writes into its error code.
template <class Operation>
libvideo::VideoStatus StatusOf(Operation&& operation) {
  std::error_code error = std::make_error_code(std::errc::interrupted);
  operation(error);
  EXPECT_STREQ(error.category().name(), "libvideo status code");
  return static_cast<libvideo::VideoStatus>(error.value());
}

class Recorder {
 public:
  using Status = libvideo::VideoStatus;
  using Error = std::error_code&;

  // Frames of 64 x 48 pixels, if nothing else is said.
  explicit Recorder(const VideoFormatCase& source = kRgb24, size_t frameWidth = 64, size_t frameHeight = 48)
      : width(frameWidth), height(frameHeight) {
    EXPECT_EQ(SetFormat(source), Status::Success);
    EXPECT_EQ(SetSize(width, height), Status::Success);
  }

  Status Open(const std::string& path) {
    return StatusOf([&](Error error) { video.openFile(path, error); });
  }
  Status Close() {
    return StatusOf([&](Error error) { video.closeFile(error); });
  }
  Status SetSize(size_t newWidth, size_t newHeight) {
    return StatusOf([&](Error error) { video.setDimensions({newWidth, newHeight}, error); });
  }
  Status SetFormat(const VideoFormatCase& source) {
    return SetFormat({source.name, source.bits, source.channels, libvideo::ChannelOrder{source.order}});
  }
  Status SetFormat(const libvideo::VideoPixelFormat& source) {
    return StatusOf([&](Error error) { video.setSourceFormat(source, error); });
  }
  Status Set(const std::string& name, const libvideo::VideoOptionValue& value) {
    return StatusOf([&](Error error) { video.setOption(name, value, error); });
  }
  Status SetQueueSize(uint32_t size) {
    return StatusOf([&](Error error) { video.setQueueSize(size, error); });
  }
  Status Append(const Pixels& frame) { return Append(frame.data(), frame.size()); }
  Status Append(const uint8_t* data, size_t byteCount) {
    return StatusOf([&](Error error) { video.append(data, byteCount, error); });
  }
  Status WaitUntilDone(uint32_t timeoutMs) {
    return StatusOf([&](Error error) { video.waitUntilDone(timeoutMs, error); });
  }
  Status WaitUntilQueueEmpty(uint32_t timeoutMs) {
    return StatusOf([&](Error error) { video.waitUntilQueueEmpty(timeoutMs, error); });
  }

  // Until the worker has run the queue dry, however long it takes.
  void AwaitDry() {
    while (video.queued() != 0) WaitUntilQueueEmpty(1000);
  }

  libvideo::VideoStatistics Statistics() const {
    libvideo::VideoStatistics statistics;
    EXPECT_TRUE(video.statistics(statistics));
    return statistics;
  }
  uint64_t Written() const { return Statistics().framesWritten; }
  uint64_t Dropped() const { return Statistics().framesDropped; }

  size_t width;
  size_t height;
  libvideo::AviLegacy video{libvideo::Container::Avi, libvideo::Encoder::Mjpeg};
};

}  // namespace korvel_test
