#include "video/avi_legacy.h"

#include <unistd.h>

#include <codecvt>
#include <locale>
#include <mutex>
#include <stdexcept>

#include "video/color_mode.h"

namespace libvideo {
namespace {

constexpr const char* kQuality = "quality";
constexpr const char* kFramesPerSecond = "fps";
constexpr const char* kContext = "AviLegacy";

std::atomic<int> slotsTaken = 0;

// Held from the look for a file to its making, so that of two videos with one path one finds the other's.
std::mutex newFileMutex;

[[noreturn]] void Throw(VideoStatus status) { throw std::system_error(MakeErrorCode(status), kContext); }

std::error_code ToErrorCode(SlotStatus status) { return MakeErrorCode(ToVideoStatus(status)); }

// Throws std::runtime_error for bytes that are not UTF-8.
void RequireUtf8(const std::string& path) {
  std::wstring_convert<std::codecvt_utf8<wchar_t>> converter;
  converter.from_bytes(path);
  // A character that is cut off at the end is no error to the converter.
  if (converter.converted() != path.size()) throw std::runtime_error("incomplete conversion");
}

// Before a slot is taken.
Container RequireWritable(Container container, Encoder encoder) {
  if (container != Container::Avi || encoder != Encoder::Mjpeg) Throw(VideoStatus::InvalidParameter);
  return container;
}

bool Exists(const std::string& path) { return access(path.c_str(), F_OK) == 0; }

}  // namespace

VideoStatus ToVideoStatus(SlotStatus status) {
  switch (status) {
    case SlotStatus::Success:
      return VideoStatus::Success;
    case SlotStatus::InvalidArgument:
    case SlotStatus::OptionOutOfRange:
    case SlotStatus::UnknownColorMode:
    case SlotStatus::InvalidSize:
      return VideoStatus::InvalidParameter;
    case SlotStatus::WaitTimedOut:
      return VideoStatus::Timeout;
    case SlotStatus::QueueFull:
      return VideoStatus::QueueIsFull;
    default:
      return VideoStatus::NoSuccess;
  }
}

RecordingSlot::RecordingSlot() {
  int taken = slotsTaken;
  do {
    if (taken >= kSlots) Throw(ToVideoStatus(SlotStatus::NoFreeSlot));
  } while (!slotsTaken.compare_exchange_weak(taken, taken + 1));
}

RecordingSlot::~RecordingSlot() { --slotsTaken; }

AviLegacy::AviLegacy(Container container, Encoder encoder)
    : VideoLibrary(RequireWritable(container, encoder), encoder) {
  std::error_code neverFails;
  VideoLibrary::setSourceFormat(
      {.name = "RGB24", .bitsPerPixel = 24, .channels = 3, .channelOrder = ChannelOrder::RedFirst}, neverFails);
  pipeline_.EnableEvent(CZenoAvi::Event::FrameDone);
  pipeline_.EnableEvent(CZenoAvi::Event::QueueEmpty);
}

AviLegacy::~AviLegacy() {
  pipeline_.DisableEvent(CZenoAvi::Event::FrameDone);
  pipeline_.DisableEvent(CZenoAvi::Event::QueueEmpty);
}

void AviLegacy::openFile(const std::string& path, std::error_code& error) {
  const std::scoped_lock lock(fileMutex_, newFileMutex);  // in no order
  if (Exists(path)) {
    error = MakeErrorCode(VideoStatus::CouldNotAccess);
    return;
  }
  RequireUtf8(path);
  error = ToErrorCode(pipeline_.Open(path));
  if (error) return;
  isOpen_ = true;
}

void AviLegacy::closeFile(std::error_code& error) {
  const std::lock_guard lock(fileMutex_);
  pipeline_.Stop();
  isStarted_ = false;
  error = ToErrorCode(pipeline_.Close());
  isOpen_ = false;
}

void AviLegacy::setDimensions(const img::Size2D& size, std::error_code& error) {
  const std::lock_guard lock(sourceMutex_);
  if (isStarted_ && size != VideoLibrary::dimensions()) {
    error = MakeErrorCode(VideoStatus::CouldNotAccess);
    return;
  }
  VideoLibrary::setDimensions(size, error);
}

img::Size2D AviLegacy::dimensions() const {
  const std::lock_guard lock(sourceMutex_);
  return VideoLibrary::dimensions();
}

void AviLegacy::setSourceFormat(const VideoPixelFormat& format, std::error_code& error) {
  const std::lock_guard lock(sourceMutex_);
  if (isStarted_ && !format.IsLike(VideoLibrary::sourceFormat())) {
    error = MakeErrorCode(VideoStatus::CouldNotAccess);
    return;
  }
  VideoLibrary::setSourceFormat(format, error);
}

VideoPixelFormat AviLegacy::sourceFormat() const {
  const std::lock_guard lock(sourceMutex_);
  return VideoLibrary::sourceFormat();
}

void AviLegacy::setOption(const std::string& name, const VideoOptionValue& value, std::error_code& error) {
  if (name == kFramesPerSecond) {
    const double framesPerSecond = std::get<double>(value);
    error = ToErrorCode(pipeline_.SetFrameRate(framesPerSecond));
    if (!error) framesPerSecond_ = framesPerSecond;
  } else if (name == kQuality) {
    const int32_t quality = std::get<int32_t>(value);
    error = ToErrorCode(pipeline_.SetQuality(quality));
    if (!error) quality_ = quality;
  } else {
    error = MakeErrorCode(VideoStatus::NotSupported);
  }
}

void AviLegacy::option(const std::string& name, VideoOptionValue& value, std::error_code& error) const {
  error = MakeErrorCode(VideoStatus::Success);
  if (name == kFramesPerSecond) {
    value = framesPerSecond_.load();
  } else if (name == kQuality) {
    value = quality_.load();
  } else {
    error = MakeErrorCode(VideoStatus::NotSupported);
  }
}

void AviLegacy::optionRange(const std::string& name, VideoOptionValue& minimum, VideoOptionValue& maximum,
                            VideoOptionValue& increment, std::error_code& error) const {
  if (name != kQuality) {
    error = MakeErrorCode(VideoStatus::NotSupported);
    return;
  }
  minimum = CZenoAvi::kLowestQuality;
  maximum = CZenoAvi::kHighestQuality;
  increment = int32_t{1};
  error = MakeErrorCode(VideoStatus::Success);
}

std::vector<VideoOptionInfo> AviLegacy::options() const {
  return {{kFramesPerSecond, VideoOptionType::Double}, {kQuality, VideoOptionType::Int32}};
}

void AviLegacy::append(const uint8_t* data, size_t byteCount, std::error_code& error) {
  SlotStatus status = SlotStatus::Success;
  if (!isStarted_) status = StartOnce();
  if (status == SlotStatus::Success) status = pipeline_.AddFrame(data, byteCount);
  error = ToErrorCode(status);
}

SlotStatus AviLegacy::StartOnce() {
  const std::lock_guard lock(fileMutex_);
  if (isStarted_) return SlotStatus::Success;
  // What is started with is what later frames are compared with.
  const std::lock_guard source(sourceMutex_);
  const VideoPixelFormat format = VideoLibrary::sourceFormat();
  const SlotStatus status =
      pipeline_.Start(VideoLibrary::dimensions(), ColorModeOf(format.channels, format.channelOrder));
  if (status == SlotStatus::Success) isStarted_ = true;
  return status;
}

bool AviLegacy::statistics(VideoStatistics& statistics) const {
  statistics = {.framesWritten = pipeline_.FramesWritten(),
                .framesDropped = pipeline_.FramesDropped(),
                .bytesWritten = pipeline_.BytesWritten()};
  return true;
}

void AviLegacy::waitUntilDone(uint32_t timeoutMs, std::error_code& error) {
  error = ToErrorCode(pipeline_.WaitEvent(CZenoAvi::Event::FrameDone, timeoutMs));
}

void AviLegacy::waitUntilQueueEmpty(uint32_t timeoutMs, std::error_code& error) {
  error = ToErrorCode(pipeline_.WaitEvent(CZenoAvi::Event::QueueEmpty, timeoutMs));
}

void AviLegacy::queueSizeRange(uint32_t& minimum, uint32_t& maximum, std::error_code& error) const {
  minimum = CZenoAvi::kSmallestQueue;
  maximum = CZenoAvi::kLargestQueue;
  error = MakeErrorCode(VideoStatus::Success);
}

void AviLegacy::setQueueSize(uint32_t size, std::error_code& error) {
  error = ToErrorCode(pipeline_.SetQueueSize(size));
}

std::vector<VideoPixelFormat> AviLegacyFactory::supportedPixelFormats(Encoder encoder) const {
  if (encoder != Encoder::Mjpeg) return {};
  return {{"BGR24", 24, 3, ChannelOrder::BlueFirst},
          {"BGR32", 32, 4, ChannelOrder::BlueFirst},
          {"RGB24", 24, 3, ChannelOrder::RedFirst},
          {"RGB32", 32, 4, ChannelOrder::RedFirst},
          {"Y8", 8, 1, ChannelOrder::Single}};
}

std::unique_ptr<VideoLibrary> AviLegacyFactory::create(Container container, Encoder encoder) const {
  return std::make_unique<AviLegacy>(container, encoder);
}

}  // namespace libvideo
