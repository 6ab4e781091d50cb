#include "io/input_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "io/file_block.h"

namespace img::io {

InputFile::InputFile(const std::string& path) {
  if (path.find('\0') != std::string::npos) return;
  // Opening anything but a regular file may have effects of its own, so it is looked at first.
  struct stat status {};
  if (stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) return;
  // It may be another file by now: without O_NONBLOCK, opening a pipe would wait for its writer.
  const int descriptor = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
  if (descriptor < 0) return;
  if (fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode)) file_.reset(fdopen(descriptor, "rb"));
  if (file_ == nullptr) {
    close(descriptor);
    return;
  }
  size_ = remaining_ = static_cast<size_t>(status.st_size);
}

void InputFile::ReadInBlocks() {
  block_.reset(new char[kFileBlockByteCount]);
  std::setvbuf(file_.get(), block_.get(), _IOFBF, kFileBlockByteCount);
}

bool InputFile::Read(void* bytes, size_t byteCount) {
  if (byteCount > remaining_) return false;
  remaining_ -= byteCount;
  return byteCount == 0 || std::fread(bytes, 1, byteCount, file_.get()) == byteCount;
}

bool InputFile::Skip(size_t byteCount) {
  if (byteCount > remaining_) return false;
  remaining_ -= byteCount;
  return byteCount == 0 || fseeko(file_.get(), static_cast<off_t>(byteCount), SEEK_CUR) == 0;
}

}  // namespace img::io
