#include "recording_series.h"

#include <algorithm>
#include <filesystem>
#include <iomanip>
#include <sstream>
#include <system_error>
#include <utility>

#include "avi/avi_headers.h"
#include "file_type.h"
#include "tool_error.h"

namespace korvel::tools {
namespace {

constexpr int kDigits = 4;

std::string NumberedPath(const std::string& path, size_t number) {
  if (number == 1) return path;
  std::ostringstream text;
  text << '-' << std::setfill('0') << std::setw(kDigits) << number;
  return InsertBeforeEnding(path, text.str());
}

// Whether NumberedPath gives such a name to a file other than the first.
bool IsNumbered(const std::string& name, const std::filesystem::path& first) {
  const std::string begin = first.stem().string() + "-";
  const std::string end = first.extension().string();
  if (name.size() < begin.size() + size_t{kDigits} + end.size() || !name.starts_with(begin) || !name.ends_with(end)) {
    return false;
  }
  return std::all_of(name.begin() + static_cast<ptrdiff_t>(begin.size()),
                     name.end() - static_cast<ptrdiff_t>(end.size()), [](char c) { return c >= '0' && c <= '9'; });
}

// Now rather than when the recording gets that far.
void RefuseNumberedFiles(const std::filesystem::path& first) {
  const std::filesystem::path folder = first.has_parent_path() ? first.parent_path() : ".";
  std::error_code unreachable;  // of which opening the file tells
  for (const auto& entry : std::filesystem::directory_iterator(folder, unreachable)) {
    if (IsNumbered(entry.path().filename().string(), first)) {
      throw ToolError("'" + (first.parent_path() / entry.path().filename()).string() + "' is there already",
                      "A video never replaces a file; remove it, or choose another name.");
    }
  }
}

RecordingCounts Sum(const RecordingCounts& a, const RecordingCounts& b) {
  return {.appended = a.appended + b.appended,
          .refused = a.refused + b.refused,
          .written = a.written + b.written,
          .dropped = a.dropped + b.dropped,
          .queued = a.queued + b.queued,
          .bytes = a.bytes + b.bytes};
}

}  // namespace

RecordingSeries::RecordingSeries(RecordingOptions options, std::optional<uint64_t> file_size)
    : options_(std::move(options)), file_size_(file_size), first_path_(options_.path) {
  if (file_size_) RefuseNumberedFiles(first_path_);
  recording_.emplace(options_);
  paths_.push_back(options_.path);
}

bool RecordingSeries::IsFileFull() const {
  constexpr uint64_t kHeaders = 1024;  // they take less
  if (!file_size_) return false;
  const RecordingCounts counts = recording_->Counts();
  if (counts.appended == 0) return false;
  const uint64_t waiting = uint64_t{counts.queued} + 1;
  const uint64_t present = kHeaders + counts.bytes + (counts.written + waiting) * avi::kMostBytesBesideFrame;
  return present + waiting * recording_->FrameByteCount() > avi::kLargestForm ||
         present + waiting * LikelyFrameByteCount() > *file_size_;
}

uint64_t RecordingSeries::LikelyFrameByteCount() const {
  const uint64_t most = recording_->FrameByteCount();
  const RecordingCounts counts = Counts();
  return counts.written == 0 ? most : std::min(most, 2 * counts.bytes / counts.written);
}

void RecordingSeries::StartNextFile() {
  while (recording_->Counts().queued > 0) recording_->WaitForWorker();
  const RecordingCounts counts = recording_->Counts();
  options_.format = recording_->Facts().format;
  recording_->Close();
  recording_.reset();
  ended_ = Sum(ended_, counts);
  options_.path = NumberedPath(first_path_, paths_.size() + 1);
  recording_.emplace(options_);
  paths_.push_back(options_.path);
}

bool RecordingSeries::Append(const Image& image) { return recording_->Append(image); }

RecordingCounts RecordingSeries::Counts() const { return recording_ ? Sum(ended_, recording_->Counts()) : ended_; }

void RecordingSeries::Remove() noexcept {
  std::error_code error;
  for (const std::string& path : paths_) std::filesystem::remove(path, error);
}

}  // namespace korvel::tools
