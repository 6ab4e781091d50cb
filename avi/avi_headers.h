// The headers of an AVI 1.0 file, as in Microsoft's "AVI RIFF File Reference": each is described once, and written and
// read by that description.
#pragma once

#include <cstdint>
#include <limits>

#include "avi/four_cc.h"
#include "core/fixed_layout.h"

namespace avi {

// Of every chunk.
struct ChunkHead {
  uint32_t id = 0;
  uint32_t size = 0;  // of the payload
};

inline constexpr auto kChunkHeadLayout =
    img::MakeFixedLayout<8>(img::Field{0, &ChunkHead::id}, img::Field{4, &ChunkHead::size});

// Of the form that a file is, without its head: headers, frames and index. It is what ends the longest recordings.
inline constexpr uint64_t kLargestForm = std::numeric_limits<uint32_t>::max();

// Of the whole file, "avih".
struct MainHeader {
  static constexpr uint32_t kHasIndex = 0x10;

  uint32_t microSecondsPerFrame = 0;
  uint32_t maxBytesPerSecond = 0;
  uint32_t paddingGranularity = 0;
  uint32_t flags = 0;
  uint32_t totalFrames = 0;
  uint32_t initialFrames = 0;
  uint32_t streams = 0;
  uint32_t suggestedBufferSize = 0;
  uint32_t width = 0;
  uint32_t height = 0;  // four reserved numbers follow

  bool operator==(const MainHeader&) const = default;
};

inline constexpr auto kMainHeaderLayout = img::MakeFixedLayout<56>(
    img::Field{0, &MainHeader::microSecondsPerFrame}, img::Field{4, &MainHeader::maxBytesPerSecond},
    img::Field{8, &MainHeader::paddingGranularity}, img::Field{12, &MainHeader::flags},
    img::Field{16, &MainHeader::totalFrames}, img::Field{20, &MainHeader::initialFrames},
    img::Field{24, &MainHeader::streams}, img::Field{28, &MainHeader::suggestedBufferSize},
    img::Field{32, &MainHeader::width}, img::Field{36, &MainHeader::height});

// Of a stream, "strh". Time is told in units of scale / rate seconds.
struct StreamHeader {
  uint32_t type = 0;
  uint32_t handler = 0;
  uint32_t flags = 0;
  uint16_t priority = 0;
  uint16_t language = 0;
  uint32_t initialFrames = 0;
  uint32_t scale = 0;
  uint32_t rate = 0;
  uint32_t start = 0;
  uint32_t length = 0;  // frames
  uint32_t suggestedBufferSize = 0;
  uint32_t quality = 0;
  uint32_t sampleSize = 0;
  uint16_t frameLeft = 0;
  uint16_t frameTop = 0;
  uint16_t frameRight = 0;
  uint16_t frameBottom = 0;

  bool operator==(const StreamHeader&) const = default;
};

inline constexpr auto kStreamHeaderLayout = img::MakeFixedLayout<56>(
    img::Field{0, &StreamHeader::type}, img::Field{4, &StreamHeader::handler}, img::Field{8, &StreamHeader::flags},
    img::Field{12, &StreamHeader::priority}, img::Field{14, &StreamHeader::language},
    img::Field{16, &StreamHeader::initialFrames}, img::Field{20, &StreamHeader::scale},
    img::Field{24, &StreamHeader::rate}, img::Field{28, &StreamHeader::start}, img::Field{32, &StreamHeader::length},
    img::Field{36, &StreamHeader::suggestedBufferSize}, img::Field{40, &StreamHeader::quality},
    img::Field{44, &StreamHeader::sampleSize}, img::Field{48, &StreamHeader::frameLeft},
    img::Field{50, &StreamHeader::frameTop}, img::Field{52, &StreamHeader::frameRight},
    img::Field{54, &StreamHeader::frameBottom});

// Of the frames of a video stream, "strf".
struct VideoFormat {
  uint32_t size = 0;
  uint32_t width = 0;
  uint32_t height = 0;
  uint16_t planes = 0;
  uint16_t bitCount = 0;
  uint32_t compression = 0;
  uint32_t imageSize = 0;  // four numbers of no use to video follow

  bool operator==(const VideoFormat&) const = default;
};

inline constexpr auto kVideoFormatLayout = img::MakeFixedLayout<40>(
    img::Field{0, &VideoFormat::size}, img::Field{4, &VideoFormat::width}, img::Field{8, &VideoFormat::height},
    img::Field{12, &VideoFormat::planes}, img::Field{14, &VideoFormat::bitCount},
    img::Field{16, &VideoFormat::compression}, img::Field{20, &VideoFormat::imageSize});

// Of the samples of a sound stream, "strf".
struct WaveFormat {
  uint16_t tag = 0;
  uint16_t channels = 0;
  uint32_t samplesPerSecond = 0;
  uint32_t bytesPerSecond = 0;
  uint16_t blockAlign = 0;
  uint16_t bitsPerSample = 0;  // one number of no use to plain samples follows
};

inline constexpr auto kWaveFormatLayout =
    img::MakeFixedLayout<20>(img::Field{0, &WaveFormat::tag}, img::Field{2, &WaveFormat::channels},
                             img::Field{4, &WaveFormat::samplesPerSecond}, img::Field{8, &WaveFormat::bytesPerSecond},
                             img::Field{12, &WaveFormat::blockAlign}, img::Field{14, &WaveFormat::bitsPerSample});

// Of a frame in the index, "idx1".
struct IndexEntry {
  static constexpr uint32_t kKeyFrame = 0x10;

  uint32_t id = 0;
  uint32_t flags = 0;
  uint32_t offset = 0;  // of the frame's chunk, from the type of the "movi" list
  uint32_t size = 0;    // of the frame without padding

  bool operator==(const IndexEntry&) const = default;
};

inline constexpr auto kIndexEntryLayout =
    img::MakeFixedLayout<16>(img::Field{0, &IndexEntry::id}, img::Field{4, &IndexEntry::flags},
                             img::Field{8, &IndexEntry::offset}, img::Field{12, &IndexEntry::size});

// What a frame takes of a file beside its own bytes, at most: its chunk's head, its padding and its place in the index.
inline constexpr uint64_t kMostBytesBesideFrame =
    decltype(kChunkHeadLayout)::kByteCount + 1 + decltype(kIndexEntryLayout)::kByteCount;

}  // namespace avi
