#include "io/output_file.h"

#include "io/file_block.h"

namespace img::io {

OutputFile::OutputFile(const std::string& path) {
  // "e": the file isn't handed on to programs that the application starts meanwhile.
  if (path.find('\0') == std::string::npos) file_.reset(std::fopen(path.c_str(), "wbe"));
}

void OutputFile::WriteInBlocks() {
  block_.reset(new char[kFileBlockByteCount]);
  std::setvbuf(file_.get(), block_.get(), _IOFBF, kFileBlockByteCount);
}

bool OutputFile::Write(const void* bytes, size_t byteCount) {
  return byteCount == 0 || std::fwrite(bytes, 1, byteCount, file_.get()) == byteCount;
}

bool OutputFile::Close() {
  const bool failedBefore = std::ferror(file_.get()) != 0;
  const bool closed = std::fclose(file_.release()) == 0;
  return closed && !failedBefore;
}

}  // namespace img::io
