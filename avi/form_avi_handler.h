// The tree of an AVI 1.0 file with one RIFF form, without its frames: building, writing and reading it, and appending
// frames behind the tree's back at the end of the "movi" list.
//
// The tree is written before the first frame and once more at the end; only then do sizes, frame counts and the index
// on disk agree with the frames. What a process leaves behind that dies in between is
//
//   - the tree of a file without frames, whose empty index the first frame has overwritten. From the 126th frame on the
//     main header stands 8 bytes too early, over its chunk's head;
//   - all frames that were appended, each whole, since none waits in memory of the process: a frame goes to the system
//     in one call, which returns before the frame counts;
//   - a part of the frame that was being appended, at most.
//
// A machine that dies may lose more: what the system had not brought to the disk yet.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "avi/avi_headers.h"
#include "avi/file64.h"
#include "avi/qavi_error.h"
#include "avi/riff_chunk.h"

namespace avi {

class FORMaviHandler {
 public:
  static constexpr size_t kMostStreams = 4;

  // A new tree with default headers: stream 0 is video, stream 1 sound. Fails with NoSuchStream for a number of streams
  // outside 1 to 4.
  QAVIError BuildTree(size_t streams);

  // The tree of a file; frames are not read. False if the file isn't one of this kind, or is damaged.
  bool ReadTree(const CFile64& file);

  // The tree of a file with one stream that nobody closed, with the headers that it has on disk. False if the file
  // doesn't begin like one.
  bool ReadUnfinishedTree(const CFile64& file);

  // Whether the index of the file that was read has all its frames, each where it is.
  bool HasWholeIndex(const CFile64& file) const;

  // Where the first frame's chunk is, or would be; for a tree that was read.
  uint64_t FramesPosition() const;

  std::optional<MainHeader> GetMainHeader() const;

  // Frames of a stream, as the index has them.
  size_t FrameCount(size_t stream) const;

  // The id of the chunks that hold a stream's frames: "00dc" for those of video stream 0.
  static uint32_t FrameChunkId(size_t stream, uint32_t streamType);

  // Whether the frames' list comes last, or right before the index at the end: other chunks would be in the way.
  bool CanGrow() const;

  // Writes the tree and the index from the file's start on, around the frames. False if something may not have arrived.
  bool WriteTree(CFile64& file);

  void FreeTree();

  // Whether the sizes of the file, in 32 bits, have room for one more frame.
  bool HasRoomFor(size_t frameSize) const;

  // Appends a frame. Every 126th, and at the tree's writing, frame counts and buffer sizes go up to the main header.
  QAVIError WriteFrame(CFile64& file, size_t stream, std::span<const uint8_t> frame, uint32_t flags);

  // Copies a frame's payload.
  QAVIError ReadFrame(const CFile64& file, size_t stream, size_t frame, std::span<uint8_t> buffer, size_t* size) const;

  // Whether the file has frames, of whatever stream, also such that the index doesn't have.
  bool HasFrames() const;

  // The payload of a header, null if the file has none or a shorter one.
  std::vector<uint8_t>* MainHeaderData();
  std::vector<uint8_t>* StreamHeaderData(size_t stream);
  std::vector<uint8_t>* StreamFormatData(size_t stream);
  RIFFchunk* StreamName(size_t stream);

 private:
  struct Stream {
    RIFFchunk* header = nullptr;
    RIFFchunk* format = nullptr;
    RIFFchunk* name = nullptr;
    std::vector<IndexEntry> index;
  };

  void NoteChunk(RIFFchunk& chunk);
  bool ReadChildren(const CFile64& file, RIFFchunk& list, uint64_t position, uint64_t end);
  bool ReadIndex(const CFile64& file, RIFFchunk& chunk);
  bool ReadUnfinishedChunk(const CFile64& file, RIFFchunk& chunk, uint64_t position);
  bool WriteChunk(CFile64& file, RIFFchunk& chunk, uint64_t position);
  bool WriteIndex(CFile64& file, uint64_t position) const;
  void FixUp();

  std::unique_ptr<RIFFchunk> root_;
  RIFFchunk* mainHeader_ = nullptr;
  RIFFchunk* movi_ = nullptr;
  RIFFchunk* idx1_ = nullptr;
  std::array<Stream, kMostStreams> streams_;
  size_t chunkCount_ = 0;
  uint32_t pendingOffset_ = 0;  // where the next frame's chunk goes, from the type of "movi"
  uint64_t frameCount_ = 0;
};

}  // namespace avi
