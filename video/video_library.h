// What a video writer is, whoever writes the file, and where writers come from.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <system_error>
#include <variant>
#include <vector>

#include "core/geometry.h"

namespace libvideo {

// Containers and encoders by the numbers that are used inside. Only Avi with Mjpeg can be written.
enum class Container : uint32_t { Avi = 1, Mp4 = 2, Mkv = 3 };
enum class Encoder : uint32_t { Avi = 1, Mjpeg = 2, Mpeg2 = 3, Mpeg4 = 4, Avc = 5, Hevc = 6, Av1 = 7 };

// "AVI", "MJPEG"; "Unknown" for a number that has no name.
const char* NameOf(Container container);
const char* NameOf(Encoder encoder);

enum class ChannelOrder : uint32_t { BlueFirst = 1, RedFirst = 2, Single = 3 };

// The pixels of the frames that are appended.
struct VideoPixelFormat {
  std::string name;
  uint32_t bitsPerPixel = 0;
  uint16_t channels = 0;
  ChannelOrder channelOrder = ChannelOrder::Single;

  // Names don't matter.
  bool IsLike(const VideoPixelFormat& other) const {
    return bitsPerPixel == other.bitsPerPixel && channels == other.channels && channelOrder == other.channelOrder;
  }
};

// In the order of VideoOptionType.
using VideoOptionValue = std::variant<std::string, uint32_t, int32_t, double>;

enum class VideoOptionType : uint32_t { String = 0, Uint32 = 1, Int32 = 2, Double = 3 };

const char* NameOf(VideoOptionType type);

struct VideoOptionInfo {
  std::string name;
  VideoOptionType type;
};

struct VideoStatistics {
  static constexpr uint64_t kUnknown = ~uint64_t{0};

  uint64_t framesWritten = kUnknown;
  uint64_t framesDropped = kUnknown;
  uint64_t bytesWritten = kUnknown;  // of compressed frames, without what the container adds
};

// Operations report through an error code of the video category; what a writer doesn't have is NotSupported.
class VideoLibrary {
 public:
  VideoLibrary(Container container, Encoder encoder) : container_(container), encoder_(encoder) {}
  VideoLibrary(const VideoLibrary&) = delete;
  VideoLibrary& operator=(const VideoLibrary&) = delete;
  virtual ~VideoLibrary() = default;

  virtual void openFile(const std::string& path, std::error_code& error) = 0;
  virtual void closeFile(std::error_code& error) = 0;
  virtual bool isOpen() const = 0;
  virtual void setDimensions(const img::Size2D& size, std::error_code& error);
  virtual img::Size2D dimensions() const;
  virtual void setSourceFormat(const VideoPixelFormat& format, std::error_code& error);
  virtual VideoPixelFormat sourceFormat() const;
  virtual void setOption(const std::string& name, const VideoOptionValue& value, std::error_code& error);
  virtual void option(const std::string& name, VideoOptionValue& value, std::error_code& error) const;
  virtual void optionRange(const std::string& name, VideoOptionValue& minimum, VideoOptionValue& maximum,
                           VideoOptionValue& increment, std::error_code& error) const;
  virtual std::vector<VideoOptionInfo> options() const;
  virtual void append(const uint8_t* data, size_t byteCount, std::error_code& error);
  virtual uint64_t fileSize() const;
  virtual bool statistics(VideoStatistics& statistics) const;
  virtual void resetFrameCounters();
  virtual void waitUntilDone(uint32_t timeoutMs, std::error_code& error);
  virtual void waitUntilQueueEmpty(uint32_t timeoutMs, std::error_code& error);
  virtual uint32_t queued() const;
  virtual uint32_t queueSize() const;
  virtual void queueSizeRange(uint32_t& minimum, uint32_t& maximum, std::error_code& error) const;
  virtual void setQueueSize(uint32_t size, std::error_code& error);

  // Throws std::system_error where the function above fails.
  void setQueueSize(uint32_t size);

  Container GetContainer() const { return container_; }
  Encoder GetEncoder() const { return encoder_; }

 private:
  Container container_;
  Encoder encoder_;
  img::Size2D dimensions_;
  VideoPixelFormat sourceFormat_;
};

class VideoLibraryFactory {
 public:
  VideoLibraryFactory() = default;
  VideoLibraryFactory(const VideoLibraryFactory&) = delete;
  VideoLibraryFactory& operator=(const VideoLibraryFactory&) = delete;
  virtual ~VideoLibraryFactory() = default;

  virtual std::string name() const = 0;
  virtual std::vector<Container> supportedContainers() const = 0;
  virtual std::vector<Encoder> supportedEncoders() const = 0;
  virtual std::vector<VideoPixelFormat> supportedPixelFormats(Encoder encoder) const = 0;

  // Throws std::system_error, "AviLegacy: ...", for a pair that can't be written or beyond the number of recordings.
  virtual std::unique_ptr<VideoLibrary> create(Container container, Encoder encoder) const = 0;
};

// All factories, made anew.
std::vector<std::unique_ptr<VideoLibraryFactory>> MakeFactories();

// A writer of the first factory that offers both. Throws std::system_error, "CreateFirstAvailable: ...".
std::unique_ptr<VideoLibrary> CreateFirstAvailable(Container container, Encoder encoder);

}  // namespace libvideo
