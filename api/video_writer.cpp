// KORVEL_VideoWriter_*: recording images to a video file.

#include <cstring>
#include <map>
#include <stdexcept>
#include <string>
#include <system_error>
#include <variant>
#include <vector>

#include "api/export_frame.h"
#include "api/handle_registry.h"
#include "core/pixel_format.h"
#include "korvel/korvel.h"
#include "video/video_library.h"
#include "video/video_status.h"

using korvel::internal::ExportFrame;
using korvel::internal::FindImage;
using korvel::internal::FromExported;
using korvel::internal::HandleRegistry;
using korvel::internal::kSuccess;
using korvel::internal::ReturnCode;
using korvel::internal::ToExported;
using libvideo::Container;
using libvideo::Encoder;
using libvideo::VideoLibrary;
using libvideo::VideoOptionInfo;
using libvideo::VideoOptionType;
using libvideo::VideoOptionValue;
using libvideo::VideoPixelFormat;
using libvideo::VideoStatistics;

// The family's wording for pointers.
#define KORVEL_REQUIRE_VIDEO_POINTER(argument)                              \
  KORVEL_REQUIRE((argument) != nullptr, KORVEL_RETURN_CODE_InvalidArgument, \
                 "The " #argument " parameter is an invalid pointer!")

namespace {

const std::map<uint16_t, Container>& Containers() {
  static const std::map<uint16_t, Container> containers = {{KORVEL_VIDEO_CONTAINER_AVI, Container::Avi}};
  return containers;
}

const std::map<uint16_t, Encoder>& Encoders() {
  static const std::map<uint16_t, Encoder> encoders = {{KORVEL_VIDEO_ENCODER_AVI, Encoder::Avi},
                                                       {KORVEL_VIDEO_ENCODER_MJPEG, Encoder::Mjpeg}};
  return encoders;
}

// The options of one kind, by the number that the application knows them by.
using OptionNames = std::map<uint32_t, std::string>;

const OptionNames& EncoderOptions() {
  static const OptionNames options = {{KORVEL_VIDEO_ENCODER_OPTION_Quality, "quality"}};
  return options;
}

const OptionNames& ContainerOptions() {
  static const OptionNames options = {{KORVEL_VIDEO_CONTAINER_OPTION_FramesPerSecond, "fps"}};
  return options;
}

// The formats that can be recorded, as the video writer calls them.
struct RecordedFormat {
  img::PixelFormatId format;
  const char* name;
};

constexpr RecordedFormat kRecordedFormats[] = {{img::PixelFormatId::Mono8, "Y8"},
                                               {img::PixelFormatId::RGB8, "RGB24"},
                                               {img::PixelFormatId::RGBa8, "RGB32"},
                                               {img::PixelFormatId::BGR8, "BGR24"},
                                               {img::PixelFormatId::BGRa8, "BGR32"}};

libvideo::ChannelOrder OrderOf(img::PixelClass pixelClass) {
  switch (pixelClass) {
    case img::PixelClass::RGB:
    case img::PixelClass::RGBa:
      return libvideo::ChannelOrder::RedFirst;
    case img::PixelClass::BGR:
    case img::PixelClass::BGRa:
      return libvideo::ChannelOrder::BlueFirst;
    default:
      return libvideo::ChannelOrder::Single;
  }
}

// Null for a format that can't be recorded.
const RecordedFormat* FindRecorded(img::PixelFormatId format) {
  for (const RecordedFormat& row : kRecordedFormats) {
    if (row.format == format) return &row;
  }
  return nullptr;
}

img::PixelFormatId FormatOfName(const std::string& name) {
  for (const RecordedFormat& row : kRecordedFormats) {
    if (name == row.name) return row.format;
  }
  throw std::out_of_range("no pixel format is called " + name);
}

std::shared_ptr<VideoLibrary> FindVideo(KORVEL_VIDEO_HANDLE videoHandle) {
  return HandleRegistry::Instance().Videos().Find(FromExported(videoHandle));
}

// The bodies that start with a video.
template <class Body>
ReturnCode OnVideo(KORVEL_VIDEO_HANDLE videoHandle, Body&& body) {
  return ExportFrame([&] {
    const auto video = FindVideo(videoHandle);
    KORVEL_REQUIRE_HANDLE(video, videoHandle);
    return body(*video);
  });
}

// Runs an operation that reports by an error code; a failure is an exception in the operation's name.
template <class Operation>
ReturnCode Run(const char* name, Operation&& operation) {
  std::error_code error;
  operation(error);
  libvideo::ThrowOnFailure(error, name);
  return kSuccess;
}

constexpr const char* kNoSuchOption = "The specified option is invalid!";
constexpr const char* kWrongSize = "The Parameter count does not match the actual size of value!";

// The option of a number, null if the video doesn't have it. Throws for a number that no option has.
const VideoOptionInfo* FindOption(const std::vector<VideoOptionInfo>& options, const OptionNames& names,
                                  uint32_t option) {
  const std::string& name = names.at(option);
  for (const VideoOptionInfo& info : options) {
    if (info.name == name) return &info;
  }
  return nullptr;
}

template <class Number>
Number Load(const void* address) {
  Number number;
  std::memcpy(&number, address, sizeof number);
  return number;
}

// Bytes of an option's value; a text has no fixed size.
size_t ByteCountOf(VideoOptionType type) { return type == VideoOptionType::Double ? 8 : 4; }

VideoOptionValue LoadValue(VideoOptionType type, const void* value) {
  switch (type) {
    case VideoOptionType::String:
      return std::string(static_cast<const char*>(value));
    case VideoOptionType::Uint32:
      return Load<uint32_t>(value);
    case VideoOptionType::Int32:
      return Load<int32_t>(value);
    case VideoOptionType::Double:
      break;
  }
  return Load<double>(value);
}

// Stores a number with the width of its type.
void StoreNumber(const VideoOptionValue& number, void* value) {
  std::visit(
      [value](const auto& alternative) {
        if constexpr (std::is_arithmetic_v<std::remove_cvref_t<decltype(alternative)>>) {
          std::memcpy(value, &alternative, sizeof alternative);
        }
      },
      number);
}

ReturnCode SetOption(KORVEL_VIDEO_HANDLE videoHandle, const OptionNames& names, uint32_t option, const void* value,
                     size_t valueSize) {
  return OnVideo(videoHandle, [&](VideoLibrary& video) {
    KORVEL_REQUIRE_VIDEO_POINTER(value);
    const std::vector<VideoOptionInfo> options = video.options();
    const VideoOptionInfo* const info = FindOption(options, names, option);
    KORVEL_REQUIRE(info != nullptr, KORVEL_RETURN_CODE_InvalidArgument, kNoSuchOption);
    KORVEL_REQUIRE(info->type == VideoOptionType::String || valueSize == ByteCountOf(info->type),
                   KORVEL_RETURN_CODE_InvalidArgument, kWrongSize);
    return Run("setOption",
               [&](std::error_code& error) { video.setOption(info->name, LoadValue(info->type, value), error); });
  });
}

ReturnCode GetOption(KORVEL_VIDEO_HANDLE videoHandle, const OptionNames& names, uint32_t option, void* value,
                     size_t valueSize, size_t* sizeWritten) {
  return OnVideo(videoHandle, [&](VideoLibrary& video) {
    KORVEL_REQUIRE_VIDEO_POINTER(value);
    const std::vector<VideoOptionInfo> options = video.options();
    const VideoOptionInfo* const info = FindOption(options, names, option);
    KORVEL_REQUIRE(info != nullptr, KORVEL_RETURN_CODE_InvalidArgument, kNoSuchOption);
    VideoOptionValue current;
    Run("option", [&](std::error_code& error) { video.option(info->name, current, error); });
    KORVEL_REQUIRE(valueSize == ByteCountOf(info->type), KORVEL_RETURN_CODE_InvalidArgument, kWrongSize);
    if (sizeWritten != nullptr) *sizeWritten = valueSize;
    StoreNumber(current, value);
    return kSuccess;
  });
}

// Tells how many elements there are, and copies them where there is an array for them.
template <class Element>
ReturnCode List(const std::vector<Element>& elements, Element* array, size_t* size) {
  KORVEL_REQUIRE_VIDEO_POINTER(size);
  *size = elements.size();
  if (array != nullptr) {
    for (size_t i = 0; i < elements.size(); ++i) array[i] = elements[i];
  }
  return kSuccess;
}

// The application's numbers for those used inside.
template <class Internal>
std::vector<uint16_t> ToPublic(const std::vector<Internal>& numbers, const std::map<uint16_t, Internal>& names) {
  std::vector<uint16_t> result;
  for (const Internal number : numbers) {
    for (const auto& [publicNumber, internalNumber] : names) {
      if (internalNumber == number) result.push_back(publicNumber);
    }
  }
  return result;
}

ReturnCode GetStatistic(const VideoLibrary& video, uint64_t VideoStatistics::*field, uint64_t* value) {
  VideoStatistics statistics;
  KORVEL_REQUIRE(video.statistics(statistics), KORVEL_RETURN_CODE_Error, "Error getting statistics from the backend!");
  *value = statistics.*field == VideoStatistics::kUnknown ? 0 : statistics.*field;
  return kSuccess;
}

}  // namespace

KORVEL_RETURN_CODE KORVEL_VideoWriter_Video_Open(KORVEL_VIDEO_HANDLE* videoHandle, const char* fileName,
                                                 uint16_t container, uint16_t encoder) {
  return ExportFrame([&] {
    KORVEL_REQUIRE_POINTER(videoHandle);
    KORVEL_REQUIRE(FindVideo(*videoHandle) == nullptr, KORVEL_RETURN_CODE_InvalidArgument,
                   "The video writer is already open!");
    const auto factories = libvideo::MakeFactories();
    std::shared_ptr<VideoLibrary> video = factories.at(0)->create(Containers().at(container), Encoders().at(encoder));
    if (fileName == nullptr) throw std::logic_error("basic_string: construction from null is not valid");
    Run("openFile", [&](std::error_code& error) { video->openFile(fileName, error); });
    *videoHandle = ToExported<KORVEL_VIDEO_HANDLE>(HandleRegistry::Instance().Videos().Add(std::move(video)));
    return kSuccess;
  });
}

KORVEL_RETURN_CODE KORVEL_VideoWriter_Video_IsOpen(KORVEL_VIDEO_HANDLE videoHandle, uint8_t* isOpen) {
  return ExportFrame([&] {
    KORVEL_REQUIRE_VIDEO_POINTER(isOpen);
    const auto video = FindVideo(videoHandle);
    *isOpen = video != nullptr && video->isOpen() ? 1 : 0;
    return kSuccess;
  });
}

KORVEL_RETURN_CODE KORVEL_VideoWriter_Video_Close(KORVEL_VIDEO_HANDLE videoHandle) {
  return OnVideo(videoHandle, [&](VideoLibrary& video) {
    Run("closeFile", [&](std::error_code& error) { video.closeFile(error); });
    HandleRegistry::Instance().Videos().Remove(FromExported(videoHandle));
    return kSuccess;
  });
}

KORVEL_RETURN_CODE KORVEL_VideoWriter_Video_Append(KORVEL_VIDEO_HANDLE videoHandle, KORVEL_IMAGE_HANDLE imageHandle) {
  return OnVideo(videoHandle, [&](VideoLibrary& video) {
    const auto image = FindImage(imageHandle);
    KORVEL_REQUIRE_HANDLE(image, imageHandle);
    KORVEL_REQUIRE(image->Data() != nullptr, KORVEL_RETURN_CODE_InvalidArgument, "imageHandle has no data!");
    const RecordedFormat* const recorded = FindRecorded(image->Format());
    KORVEL_REQUIRE(recorded != nullptr, KORVEL_RETURN_CODE_ImageFormatNotSupported,
                   "Pixel format " + img::PixelFormatInfo_Name(image->Format()) + " is not supported!");
    const img::FormatFacts facts = img::FindFacts(recorded->format).value();
    Run("setSourceFormat", [&](std::error_code& error) {
      video.setSourceFormat({.name = recorded->name,
                             .bitsPerPixel = facts.pixelStorageBits,
                             .channels = static_cast<uint16_t>(facts.channels),
                             .channelOrder = OrderOf(facts.pixelClass)},
                            error);
    });
    Run("setDimensions", [&](std::error_code& error) { video.setDimensions(image->Size(), error); });
    return Run("append", [&](std::error_code& error) { video.append(image->Data(), image->ByteCount(), error); });
  });
}

KORVEL_RETURN_CODE KORVEL_VideoWriter_Encoder_SetOption(KORVEL_VIDEO_HANDLE videoHandle, uint32_t option,
                                                        const void* value, size_t valueSize) {
  return SetOption(videoHandle, EncoderOptions(), option, value, valueSize);
}

KORVEL_RETURN_CODE KORVEL_VideoWriter_Container_SetOption(KORVEL_VIDEO_HANDLE videoHandle, uint32_t option,
                                                          const void* value, size_t valueSize) {
  return SetOption(videoHandle, ContainerOptions(), option, value, valueSize);
}

KORVEL_RETURN_CODE KORVEL_VideoWriter_Encoder_GetOption(KORVEL_VIDEO_HANDLE videoHandle, uint32_t option, void* value,
                                                        size_t valueSize, size_t* sizeWritten) {
  return GetOption(videoHandle, EncoderOptions(), option, value, valueSize, sizeWritten);
}

KORVEL_RETURN_CODE KORVEL_VideoWriter_Container_GetOption(KORVEL_VIDEO_HANDLE videoHandle, uint32_t option, void* value,
                                                          size_t valueSize, size_t* sizeWritten) {
  return GetOption(videoHandle, ContainerOptions(), option, value, valueSize, sizeWritten);
}

KORVEL_RETURN_CODE KORVEL_VideoWriter_Encoder_OptionRange(KORVEL_VIDEO_HANDLE videoHandle, uint32_t option, void* min,
                                                          void* max, void* inc) {
  return OnVideo(videoHandle, [&](const VideoLibrary& video) {
    KORVEL_REQUIRE_VIDEO_POINTER(min);
    KORVEL_REQUIRE_VIDEO_POINTER(max);
    // Intended: the text's slip.
    KORVEL_REQUIRE(inc != nullptr, KORVEL_RETURN_CODE_InvalidArgument,
                   "The , max, inc parameter is an invalid pointer!");
    const std::vector<VideoOptionInfo> options = video.options();
    const VideoOptionInfo* const info = FindOption(options, EncoderOptions(), option);
    KORVEL_REQUIRE(info != nullptr, KORVEL_RETURN_CODE_InvalidArgument, kNoSuchOption);
    VideoOptionValue minimum;
    VideoOptionValue maximum;
    VideoOptionValue increment;
    Run("optionRange",
        [&](std::error_code& error) { video.optionRange(info->name, minimum, maximum, increment, error); });
    StoreNumber(minimum, min);
    StoreNumber(maximum, max);
    StoreNumber(increment, inc);
    return kSuccess;
  });
}

KORVEL_RETURN_CODE KORVEL_VideoWriter_Container_OptionRange(KORVEL_VIDEO_HANDLE, uint32_t, void*, void*, void*) {
  // Intended: nothing is looked at, and nothing recorded.
  return KORVEL_RETURN_CODE_NotSupported;
}

KORVEL_RETURN_CODE KORVEL_VideoWriter_GetSupportedEncodersForAContainer(uint16_t /*container*/, uint16_t* encoders,
                                                                        size_t* size) {
  return ExportFrame(
      [&] { return List(ToPublic(libvideo::MakeFactories().at(0)->supportedEncoders(), Encoders()), encoders, size); });
}

KORVEL_RETURN_CODE KORVEL_VideoWriter_GetSupportedContainersForAnEncoder(uint16_t /*encoder*/, uint16_t* containers,
                                                                         size_t* size) {
  return ExportFrame([&] {
    return List(ToPublic(libvideo::MakeFactories().at(0)->supportedContainers(), Containers()), containers, size);
  });
}

KORVEL_RETURN_CODE KORVEL_VideoWriter_Encoder_GetSupportedPixelFormats(uint16_t encoder, uint32_t* pixelFormats,
                                                                       size_t* size) {
  return ExportFrame([&] {
    std::vector<uint32_t> formats;
    for (const VideoPixelFormat& format :
         libvideo::MakeFactories().at(0)->supportedPixelFormats(Encoders().at(encoder))) {
      formats.push_back(static_cast<uint32_t>(FormatOfName(format.name)));
    }
    return List(formats, pixelFormats, size);
  });
}

KORVEL_RETURN_CODE KORVEL_VideoWriter_Video_GetEncodedFrames(KORVEL_VIDEO_HANDLE videoHandle, uint64_t* numFrames) {
  return OnVideo(videoHandle, [&](const VideoLibrary& video) {
    KORVEL_REQUIRE_VIDEO_POINTER(numFrames);
    return GetStatistic(video, &VideoStatistics::framesWritten, numFrames);
  });
}

KORVEL_RETURN_CODE KORVEL_VideoWriter_Video_GetDroppedFrames(KORVEL_VIDEO_HANDLE videoHandle, uint64_t* numFrames) {
  return OnVideo(videoHandle, [&](const VideoLibrary& video) {
    KORVEL_REQUIRE_VIDEO_POINTER(numFrames);
    return GetStatistic(video, &VideoStatistics::framesDropped, numFrames);
  });
}

KORVEL_RETURN_CODE KORVEL_VideoWriter_Video_GetFileSize(KORVEL_VIDEO_HANDLE videoHandle, uint64_t* fileSize_bytes) {
  return OnVideo(videoHandle, [&](const VideoLibrary& video) {
    KORVEL_REQUIRE_VIDEO_POINTER(fileSize_bytes);
    return GetStatistic(video, &VideoStatistics::bytesWritten, fileSize_bytes);
  });
}

KORVEL_RETURN_CODE KORVEL_VideoWriter_Video_ResetFrameCounters(KORVEL_VIDEO_HANDLE videoHandle) {
  return OnVideo(videoHandle, [](VideoLibrary& video) {
    video.resetFrameCounters();
    return kSuccess;
  });
}

KORVEL_RETURN_CODE KORVEL_VideoWriter_Queue_SetSize(KORVEL_VIDEO_HANDLE videoHandle, uint32_t size) {
  return OnVideo(videoHandle, [&](VideoLibrary& video) {
    video.setQueueSize(size);
    return kSuccess;
  });
}

KORVEL_RETURN_CODE KORVEL_VideoWriter_Queue_GetSize(KORVEL_VIDEO_HANDLE videoHandle, uint32_t* size) {
  return OnVideo(videoHandle, [&](const VideoLibrary& video) {
    KORVEL_REQUIRE_VIDEO_POINTER(size);
    *size = video.queueSize();
    return kSuccess;
  });
}

KORVEL_RETURN_CODE KORVEL_VideoWriter_Queue_GetRange(KORVEL_VIDEO_HANDLE videoHandle, uint32_t* minSize,
                                                     uint32_t* maxSize) {
  return OnVideo(videoHandle, [&](const VideoLibrary& video) {
    KORVEL_REQUIRE_VIDEO_POINTER(minSize);
    KORVEL_REQUIRE_VIDEO_POINTER(maxSize);
    return Run("queueSizeRange", [&](std::error_code& error) { video.queueSizeRange(*minSize, *maxSize, error); });
  });
}

KORVEL_RETURN_CODE KORVEL_VideoWriter_Queue_GetQueued(KORVEL_VIDEO_HANDLE videoHandle, uint32_t* queued) {
  return OnVideo(videoHandle, [&](const VideoLibrary& video) {
    KORVEL_REQUIRE_VIDEO_POINTER(queued);
    *queued = video.queued();
    return kSuccess;
  });
}

KORVEL_RETURN_CODE KORVEL_VideoWriter_Video_WaitUntilFrameDone(KORVEL_VIDEO_HANDLE videoHandle, uint32_t timeoutMs) {
  return OnVideo(videoHandle, [&](VideoLibrary& video) {
    return Run("waitUntilDone", [&](std::error_code& error) { video.waitUntilDone(timeoutMs, error); });
  });
}

KORVEL_RETURN_CODE KORVEL_VideoWriter_Video_WaitUntilQueueEmpty(KORVEL_VIDEO_HANDLE videoHandle, uint32_t timeoutMs) {
  return OnVideo(videoHandle, [&](VideoLibrary& video) {
    return Run("waitUntilQueueEmpty", [&](std::error_code& error) { video.waitUntilQueueEmpty(timeoutMs, error); });
  });
}
