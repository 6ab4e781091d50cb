// A file that is being read, closed on every path.
#pragma once

#include <cstddef>
#include <cstdio>
#include <memory>
#include <string>

namespace img::io {

// Only regular files open: a device or a pipe might never end or never answer. path holds any bytes; a zero byte among
// them is answered like a file that can't be opened, as the system would take the part before it for the whole.
class InputFile {
 public:
  explicit InputFile(const std::string& path);

  bool IsOpen() const { return file_ != nullptr; }

  // For many small reads: takes larger blocks from the system, which cost less. Called before the first read.
  void ReadInBlocks();

  // For codecs that read by themselves. Remaining() then knows nothing of what they read.
  FILE* Get() const { return file_.get(); }

  // Bytes of the whole file as it was opened, and those that Read and Skip have not yet passed.
  size_t Size() const { return size_; }
  size_t Remaining() const { return remaining_; }

  // False, with nothing read, if fewer bytes remain; false too if the system fails to deliver them.
  bool Read(void* bytes, size_t byteCount);
  bool Skip(size_t byteCount);

 private:
  struct Closer {
    void operator()(FILE* file) const { std::fclose(file); }
  };

  std::unique_ptr<char[]> block_;  // outlives the file that uses it
  std::unique_ptr<FILE, Closer> file_;
  size_t size_ = 0;
  size_t remaining_ = 0;
};

}  // namespace img::io
