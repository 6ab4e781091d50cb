// One chunk of a RIFF file, and the tree that lists and forms make of them.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "avi/avi_headers.h"

namespace avi {

class RIFFchunk {
 public:
  explicit RIFFchunk(uint32_t chunkId, uint32_t chunkType = 0);
  RIFFchunk(const RIFFchunk&) = delete;
  RIFFchunk& operator=(const RIFFchunk&) = delete;

  bool IsList() const { return id == kList || id == kRiff; }

  // Head, payload and the padding to an even length.
  uint64_t Length() const { return LengthOf(size); }
  static constexpr uint64_t LengthOf(uint32_t payload) { return (uint64_t{payload} + 9) & ~uint64_t{1}; }

  // Appends a child, takes its length into account, and returns it.
  RIFFchunk& AddChild(std::unique_ptr<RIFFchunk> child);

  // Appends a child that a file has; sizes are the file's.
  RIFFchunk& AddReadChild(std::unique_ptr<RIFFchunk> child);

  // Sets size to what the children take, here and in what this chunk lies in.
  void SumSizes();

  uint32_t id;
  uint32_t size = 0;        // of the payload; for lists and forms it includes the type
  uint32_t formType = 0;    // of the file
  uint32_t parentType = 0;  // of a list or form its own type, of others that of the list they lie in
  uint32_t depth = 0;
  uint64_t position = 0;  // of the chunk's head in the file
  RIFFchunk* parent = nullptr;
  std::vector<uint8_t> data;  // the payload, where it is kept
  std::vector<std::unique_ptr<RIFFchunk>> children;
};

}  // namespace avi
