// A video that images of any pixel format go into.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "format_names.h"
#include "handles.h"
#include "image_facts.h"

namespace korvel::tools {

struct RecordingOptions {
  std::string path;
  uint32_t frames_per_second = 25;
  int32_t quality = 75;
  std::optional<uint32_t> queue{};      // how many frames it holds; without, the library decides
  std::optional<NamedFormat> format{};  // that all frames get; without, the first decides
};

struct RecordingCounts {
  uint64_t appended = 0;  // with those that were dropped
  uint64_t refused = 0;   // dropped because the queue was full
  uint64_t written = 0;
  uint64_t dropped = 0;  // for whatever reason
  uint32_t queued = 0;
  uint64_t bytes = 0;  // of what is written, without what the file adds
};

class Recording {
 public:
  // Makes the file, which must not exist. Throws ToolError.
  explicit Recording(const RecordingOptions& options);

  // Converts the image to a format that videos take, that of the first image, and appends it; a full queue drops it.
  // False if the file is as long as it can get, and takes no more. Throws ToolError.
  bool Append(const Image& image);

  // What became of the first image.
  const ImageFacts& Facts() const noexcept { return facts_; }

  // What a frame takes before it is compressed, and so at most.
  uint64_t FrameByteCount() const noexcept { return frame_byte_count_; }

  RecordingCounts Counts() const;
  bool HasRoom() const;

  // Until the queue has run dry, and for a moment at most.
  void WaitForWorker() const;

  // Ends the file, with all that is queued. Throws ToolError.
  void Close();

 private:
  const Image& Recordable(const Image& image);
  uint32_t QueueSize() const;

  std::optional<NamedFormat> format_;
  ImageConverter converter_;
  Image converted_;
  ImageFacts facts_;
  uint64_t frame_byte_count_ = 0;
  uint64_t appended_ = 0;
  uint64_t refused_ = 0;
  Video video_;
};

}  // namespace korvel::tools
