// One AVI file: its bytes and its tree, for one thread at a time or under its mutex.
#pragma once

#include <cstdint>
#include <mutex>
#include <span>
#include <string>

#include "avi/file64.h"
#include "avi/form_avi_handler.h"
#include "avi/qavi_error.h"

namespace avi {

class CAviFile final : public FORMaviHandler, public CFile64 {
 public:
  CAviFile() = default;
  ~CAviFile() override { CAviFile::close(); }

  QAVIError Create(const std::string& path, size_t streams);

  // An existing file, to read from, or to append to as well.
  QAVIError OpenExisting(const std::string& path, bool isWritable);

  // Writes tree and index, where the file is writable, and closes it. False if something may not have arrived.
  bool close() override;

  // Appends a frame; the tree goes first.
  QAVIError SetData(size_t stream, std::span<const uint8_t> frame, uint32_t flags);

  // Only before the first frame: another length moves all that follows.
  QAVIError SetStreamName(size_t stream, const std::string& name);

  // Guards all of the above and the headers. Held by the functions of avi/qavi.h.
  std::mutex& Mutex() { return mutex_; }

 private:
  std::mutex mutex_;
  bool isWritable_ = false;
  bool isTreeWritten_ = false;
};

}  // namespace avi
