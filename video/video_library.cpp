#include "video/video_library.h"

#include <algorithm>

#include "avi/qavi.h"
#include "video/avi_legacy.h"
#include "video/seams.h"
#include "video/video_status.h"

namespace libvideo {
namespace {

constexpr uint32_t kNoNumber = 0xFFFFFFFF;

std::error_code NotSupported() { return MakeErrorCode(VideoStatus::NotSupported); }

template <class Number>
bool Contains(const std::vector<Number>& numbers, Number number) {
  return std::find(numbers.begin(), numbers.end(), number) != numbers.end();
}

}  // namespace

const char* NameOf(Container container) {
  switch (container) {
    case Container::Avi:
      return "AVI";
    case Container::Mp4:
      return "MP4";
    case Container::Mkv:
      return "MKV";
  }
  return "Unknown";
}

const char* NameOf(Encoder encoder) {
  switch (encoder) {
    case Encoder::Avi:
      return "AVI";
    case Encoder::Mjpeg:
      return "MJPEG";
    case Encoder::Mpeg2:
      return "MPEG2";
    case Encoder::Mpeg4:
      return "MPEG4";
    case Encoder::Avc:
      return "AVC";
    case Encoder::Hevc:
      return "HEVC";
    case Encoder::Av1:
      return "AV1";
  }
  return "Unknown";
}

const char* NameOf(VideoOptionType type) {
  switch (type) {
    case VideoOptionType::String:
      return "String";
    case VideoOptionType::Uint32:
      return "Uint32";
    case VideoOptionType::Int32:
      return "Int32";
    case VideoOptionType::Double:
      return "Double";
  }
  return "Unknown";
}

void VideoLibrary::setDimensions(const img::Size2D& size, std::error_code& error) {
  dimensions_ = size;
  error = MakeErrorCode(VideoStatus::Success);
}

img::Size2D VideoLibrary::dimensions() const { return dimensions_; }

void VideoLibrary::setSourceFormat(const VideoPixelFormat& format, std::error_code& error) {
  sourceFormat_ = format;
  error = MakeErrorCode(VideoStatus::Success);
}

VideoPixelFormat VideoLibrary::sourceFormat() const { return sourceFormat_; }

void VideoLibrary::setOption(const std::string&, const VideoOptionValue&, std::error_code& error) {
  error = NotSupported();
}

void VideoLibrary::option(const std::string&, VideoOptionValue&, std::error_code& error) const {
  error = NotSupported();
}

void VideoLibrary::optionRange(const std::string&, VideoOptionValue&, VideoOptionValue&, VideoOptionValue&,
                               std::error_code& error) const {
  error = NotSupported();
}

std::vector<VideoOptionInfo> VideoLibrary::options() const { return {}; }

void VideoLibrary::append(const uint8_t*, size_t, std::error_code& error) { error = NotSupported(); }

uint64_t VideoLibrary::fileSize() const { return 0; }

bool VideoLibrary::statistics(VideoStatistics&) const { return false; }

void VideoLibrary::resetFrameCounters() {}

void VideoLibrary::waitUntilDone(uint32_t, std::error_code& error) { error = NotSupported(); }

void VideoLibrary::waitUntilQueueEmpty(uint32_t, std::error_code& error) { error = NotSupported(); }

uint32_t VideoLibrary::queued() const { return kNoNumber; }

uint32_t VideoLibrary::queueSize() const { return kNoNumber; }

void VideoLibrary::queueSizeRange(uint32_t&, uint32_t&, std::error_code& error) const { error = NotSupported(); }

void VideoLibrary::setQueueSize(uint32_t, std::error_code& error) { error = NotSupported(); }

void VideoLibrary::setQueueSize(uint32_t size) {
  std::error_code error;
  setQueueSize(size, error);
  ThrowOnFailure(error, "setQueueSize");
}

std::vector<std::unique_ptr<VideoLibraryFactory>> MakeFactories() {
  std::vector<std::unique_ptr<VideoLibraryFactory>> factories;
  factories.push_back(std::make_unique<AviLegacyFactory>());
  return factories;
}

std::unique_ptr<VideoLibrary> CreateFirstAvailable(Container container, Encoder encoder) {
  const auto factories = MakeFactories();
  for (const auto& factory : factories) {
    if (Contains(factory->supportedContainers(), container) && Contains(factory->supportedEncoders(), encoder)) {
      return factory->create(container, encoder);
    }
  }
  throw std::system_error(MakeErrorCode(factories.empty() ? VideoStatus::NotAvailable : VideoStatus::NotSupported),
                          "CreateFirstAvailable");
}

}  // namespace libvideo
