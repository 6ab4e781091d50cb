#include "video/avi_repair.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "avi/avi_headers.h"
#include "avi/file64.h"
#include "avi/form_avi_handler.h"
#include "avi/riff_chunk.h"
#include "video/avi_writer.h"

namespace libvideo {
namespace {

using Outcome = AviRepair::Outcome;

using GoesOn = std::function<bool(uint64_t done, uint64_t all)>;

constexpr uint64_t kHeadByteCount = decltype(avi::kChunkHeadLayout)::kByteCount;

struct PictureSize {
  uint32_t width = 0;
  uint32_t height = 0;

  bool operator==(const PictureSize&) const = default;
};

// The size of a JPEG picture by the bytes that it begins with. Nothing if it isn't one, or its size doesn't come early.
std::optional<PictureSize> SizeOfJpeg(std::span<const uint8_t> bytes) {
  constexpr uint8_t kMark = 0xFF;
  const auto number = [&](size_t offset) { return static_cast<uint32_t>(bytes[offset] << 8 | bytes[offset + 1]); };
  // Segments behind the first marker, which is one without a segment: marker, and a length that counts itself.
  for (size_t offset = 2; offset + 9 <= bytes.size() && bytes[offset] == kMark; offset += 2 + number(offset + 2)) {
    const uint8_t kind = bytes[offset + 1];
    const bool isPixels = kind == 0xDA;
    if (isPixels) return std::nullopt;
    // Of the sixteen in this row three don't begin a frame.
    const bool isFrame = kind >= 0xC0 && kind <= 0xCF && kind != 0xC4 && kind != 0xC8 && kind != 0xCC;
    if (!isFrame) continue;
    const PictureSize size{.width = number(offset + 7), .height = number(offset + 5)};
    if (size.width == 0 || size.height == 0) return std::nullopt;
    return size;
  }
  return std::nullopt;
}

struct Frame {
  uint64_t position = 0;  // of the picture
  uint32_t size = 0;
  PictureSize picture{};
};

// The frames of a recording, one behind the other, all of the size of the first.
class FrameSearch {
 public:
  FrameSearch(const avi::CFile64& file, uint64_t position, const GoesOn& goesOn)
      : file_(file), goesOn_(goesOn), position_(position), end_(file.Size()) {}

  uint64_t End() const { return end_; }
  bool IsStopped() const { return isStopped_; }

  // Nothing behind the last one, or where the caller stops. What doesn't belong to a frame is noted.
  std::optional<Frame> Next(AviRepair& repair) {
    const uint64_t begin = position_;
    for (uint64_t place = begin; end_ - place >= kHeadByteCount; place = NextCandidate(place + 1)) {
      const std::optional<avi::ChunkHead> head = HeadAt(place);
      // A recording that died while it was closed has its index, or the beginning of it.
      if (head && place == begin && head->id == avi::kIdx1) {
        position_ = end_;
        return std::nullopt;
      }
      const std::optional<Frame> frame = head ? FrameAt(place, *head) : std::nullopt;
      if (!frame) continue;
      NoteSkipped(begin, place, repair);
      isStopped_ = !goesOn_(frame->position, end_);
      if (isStopped_) return std::nullopt;
      // The last one's padding may be missing.
      position_ = std::min(end_, place + avi::RIFFchunk::LengthOf(frame->size));
      return frame;
    }
    if (IsCutOff(begin)) {
      repair.bytesCutOff = end_ - begin;
    } else {
      NoteSkipped(begin, end_, repair);
    }
    position_ = end_;
    return std::nullopt;
  }

 private:
  // No picture of the encoder is as small: its tables alone take more. So the index stays small beside the file.
  static constexpr uint32_t kSmallestPicture = 128;

  static constexpr std::array<uint8_t, 3> kPictureBegin = {0xFF, 0xD8, 0xFF};
  static constexpr std::array<uint8_t, 2> kPictureEnd = {0xFF, 0xD9};

  std::optional<avi::ChunkHead> HeadAt(uint64_t position) const {
    decltype(avi::kChunkHeadLayout)::Bytes bytes;
    if (end_ - position < bytes.size() || !file_.ReadAt(position, bytes)) return std::nullopt;
    return avi::kChunkHeadLayout.Decode(bytes);
  }

  std::optional<Frame> FrameAt(uint64_t place, const avi::ChunkHead& head) {
    constexpr size_t kMostBytesBeforeSize = 4096;
    Frame frame{.position = place + kHeadByteCount, .size = head.size};
    if (head.id != frameId_ || head.size < kSmallestPicture || head.size > end_ - frame.position) return std::nullopt;
    std::array<uint8_t, kPictureEnd.size()> last;
    if (!file_.ReadAt(frame.position + frame.size - last.size(), last) || last != kPictureEnd) return std::nullopt;
    std::array<uint8_t, kMostBytesBeforeSize> first;
    const auto read = std::span(first).first(std::min<size_t>(first.size(), frame.size));
    if (!file_.ReadAt(frame.position, read)) return std::nullopt;
    if (!std::equal(kPictureBegin.begin(), kPictureBegin.end(), read.begin())) return std::nullopt;
    const std::optional<PictureSize> size = SizeOfJpeg(read);
    if (!size || (size_ && *size != *size_)) return std::nullopt;
    size_ = size;
    frame.picture = *size;
    return frame;
  }

  // The next place from here on that looks like a frame's chunk; the file's end if there is none, or the caller stops.
  uint64_t NextCandidate(uint64_t position) {
    std::array<uint8_t, kHeadByteCount + kPictureBegin.size()> bytes;
    for (; end_ - position >= bytes.size(); ++position) {
      if (!IsInWindow(position, bytes.size()) && !MoveWindow(position)) break;
      const auto place = window_.begin() + static_cast<ptrdiff_t>(position - windowPosition_);
      if (*place != static_cast<uint8_t>(frameId_)) continue;
      std::copy_n(place, bytes.size(), bytes.begin());
      decltype(avi::kChunkHeadLayout)::Bytes head;
      std::copy_n(bytes.begin(), head.size(), head.begin());
      if (avi::kChunkHeadLayout.Decode(head).id == frameId_ &&
          std::equal(kPictureBegin.begin(), kPictureBegin.end(), bytes.begin() + kHeadByteCount)) {
        return position;
      }
    }
    return end_;
  }

  bool IsInWindow(uint64_t position, size_t byteCount) const {
    return position >= windowPosition_ && position + byteCount <= windowPosition_ + window_.size();
  }

  bool MoveWindow(uint64_t position) {
    constexpr uint64_t kWindowByteCount = uint64_t{64} * 1024;
    window_.resize(std::min(kWindowByteCount, end_ - position));
    windowPosition_ = position;
    isStopped_ = !goesOn_(position, end_);
    return !isStopped_ && file_.ReadAt(position, window_);
  }

  // A frame that was being written: its chunk reaches beyond the end.
  bool IsCutOff(uint64_t position) const {
    if (end_ - position < kHeadByteCount) return end_ > position;
    const std::optional<avi::ChunkHead> head = HeadAt(position);
    return head && head->id == frameId_ && head->size > end_ - position - kHeadByteCount;
  }

  static void NoteSkipped(uint64_t begin, uint64_t end, AviRepair& repair) {
    if (begin == end) return;
    if (repair.placesSkipped++ == 0) repair.firstSkipped = begin;
    repair.bytesSkipped += end - begin;
  }

  const avi::CFile64& file_;
  const GoesOn& goesOn_;
  const uint32_t frameId_ = avi::FORMaviHandler::FrameChunkId(0, avi::kVids);
  uint64_t position_;
  uint64_t end_;
  std::optional<PictureSize> size_;
  std::vector<uint8_t> window_;  // of the file, at windowPosition_
  uint64_t windowPosition_ = 0;
  bool isStopped_ = false;
};

// What the headers of an unfinished file tell: where frames begin and how long each is shown.
struct Start {
  uint64_t position = 0;
  uint64_t frameTimeUs = 0;
};

Start StartOf(const avi::CFile64& file) {
  avi::FORMaviHandler tree;
  if (!tree.ReadUnfinishedTree(file)) return {};
  const std::optional<avi::MainHeader> header = tree.GetMainHeader();
  // Every recording has this flag; where it is missing, something else stands in the header's place.
  const bool isUsable = header && (header->flags & avi::MainHeader::kHasIndex) != 0;
  return {tree.FramesPosition(), isUsable ? header->microSecondsPerFrame : 0};
}

// Copies frames to a new file, which is made with the first of them.
Outcome WriteFrames(const avi::CFile64& file, FrameSearch& frames, const std::string& output, AviRepair& repair) {
  // As recordings have it, which open their file before they know what they record.
  constexpr size_t kBytesPerPixel = 4;
  std::unique_ptr<CAvi> writer;
  std::vector<uint8_t> picture;
  while (const std::optional<Frame> frame = frames.Next(repair)) {
    if (repair.frameTimeUs == 0) return Outcome::NoFrameTime;
    if (!writer) {
      SlotStatus status = SlotStatus::Success;
      writer = CAvi::Open(output, repair.frameTimeUs, kBytesPerPixel, &status);
      if (!writer) return Outcome::CannotWrite;
      repair.width = frame->picture.width;
      repair.height = frame->picture.height;
      writer->SetSize(repair.width, repair.height);
    }
    if (!writer->HasRoomFor(frame->size)) {
      repair.bytesTooMany = frames.End() - frame->position;
      break;
    }
    picture.resize(frame->size);
    if (!file.ReadAt(frame->position, picture)) return Outcome::CannotRead;
    if (!writer->Write(picture)) return Outcome::CannotWrite;
    ++repair.frames;
  }
  if (frames.IsStopped()) return Outcome::Stopped;
  if (!writer) return Outcome::NoFrame;
  return writer->Close() ? Outcome::Repaired : Outcome::CannotWrite;
}

}  // namespace

AviRepair RepairAvi(const std::string& path, const std::string& output, uint64_t frameTimeUs, const GoesOn& goesOn) {
  AviRepair repair;
  avi::CFile64 file;
  if (file.Open(path, avi::CFile64::Mode::Read) != 0) return repair;
  avi::FORMaviHandler tree;
  if (tree.ReadTree(file) && tree.HasWholeIndex(file)) {
    repair.outcome = Outcome::Whole;
    repair.frames = tree.FrameCount(0);
    return repair;
  }
  tree.FreeTree();

  const Start start = StartOf(file);
  repair.frameTimeUs = frameTimeUs != 0 ? frameTimeUs : start.frameTimeUs;
  FrameSearch frames(file, start.position, goesOn);
  repair.outcome = WriteFrames(file, frames, output, repair);
  return repair;
}

}  // namespace libvideo
