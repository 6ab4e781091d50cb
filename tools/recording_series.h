// A recording that goes on in another file when one is full: video.avi, video-0002.avi, video-0003.avi.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "handles.h"
#include "image_facts.h"
#include "recording.h"

namespace korvel::tools {

class RecordingSeries {
 public:
  // Makes the first file. Without file_size there is no other; with it none is to get larger, but by frames that take
  // more than is likely, and none longer than an AVI file can be. Throws ToolError if a file is there already that
  // could become one of them.
  RecordingSeries(RecordingOptions options, std::optional<uint64_t> file_size);

  // Whether the file could get too large by one frame more: larger than wanted if all that wait take as much as is
  // likely, or longer than it can be if they take as much as without compression. A file takes one frame at least.
  bool IsFileFull() const;

  // Ends the file with all that is queued, and goes on in another. Throws ToolError.
  void StartNextFile();

  // As in Recording.
  bool Append(const Image& image);
  bool HasRoom() const { return recording_->HasRoom(); }
  bool HasQueued() const { return recording_->Counts().queued > 0; }
  void WaitForWorker() const { recording_->WaitForWorker(); }
  void Close() { recording_->Close(); }

  // Of all files.
  RecordingCounts Counts() const;

  const ImageFacts& Facts() const noexcept { return recording_->Facts(); }
  const std::vector<std::string>& Paths() const noexcept { return paths_; }

  // Removes all files.
  void Remove() noexcept;

 private:
  // Twice the mean of what frames took so far; as without compression while there are none.
  uint64_t LikelyFrameByteCount() const;

  RecordingOptions options_;
  std::optional<uint64_t> file_size_;
  std::string first_path_;
  std::vector<std::string> paths_;
  RecordingCounts ended_;               // files
  std::optional<Recording> recording_;  // none if the next file could not be made
};

}  // namespace korvel::tools
