// A file that is being written, closed on every path.
#pragma once

#include <cstddef>
#include <cstdio>
#include <memory>
#include <string>

namespace img::io {

class OutputFile {
 public:
  // Opens a file for writing, over one that exists. path holds any bytes; a zero byte among them is answered like a
  // file that can't be opened, as the system would take the part before it for the whole.
  explicit OutputFile(const std::string& path);

  bool IsOpen() const { return file_ != nullptr; }
  FILE* Get() const { return file_.get(); }

  // For many small writes: hands larger blocks to the system, which cost less. Called before the first write.
  void WriteInBlocks();

  // False if the bytes could not be taken; Close then fails as well.
  bool Write(const void* bytes, size_t byteCount);

  // Writes what is left and closes. False if anything of the file may not have arrived.
  bool Close();

 private:
  struct Closer {
    void operator()(FILE* file) const { std::fclose(file); }
  };

  std::unique_ptr<char[]> block_;  // outlives the file that uses it
  std::unique_ptr<FILE, Closer> file_;
};

}  // namespace img::io
