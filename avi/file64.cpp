#include "avi/file64.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

#include <array>
#include <cerrno>

namespace avi {

int CFile64::Open(const std::string& path, Mode mode) {
  close();
  if (path.find('\0') != std::string::npos) return EINVAL;
  int flags = O_CLOEXEC;
  switch (mode) {
    case Mode::Read:
      flags |= O_RDONLY | O_NONBLOCK;  // a pipe without a writer would hold the call up
      break;
    case Mode::Write:
      flags |= O_WRONLY | O_CREAT | O_TRUNC;
      break;
    case Mode::Both:
      flags |= O_RDWR | O_NONBLOCK;
      break;
  }
  const int descriptor = open(path.c_str(), flags, 0666);
  if (descriptor < 0) return errno;
  struct stat status {};
  if (mode != Mode::Write && (fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode))) {
    ::close(descriptor);
    return EINVAL;
  }
  descriptor_ = descriptor;
  return 0;
}

bool CFile64::close() {
  if (descriptor_ < 0) return true;
  const bool isClosed = ::close(descriptor_) == 0;
  descriptor_ = -1;
  return isClosed;
}

uint64_t CFile64::Size() const {
  struct stat status {};
  if (descriptor_ < 0 || fstat(descriptor_, &status) != 0 || status.st_size < 0) return 0;
  return static_cast<uint64_t>(status.st_size);
}

bool CFile64::ReadAt(uint64_t position, std::span<uint8_t> bytes) const {
  while (!bytes.empty()) {
    const ssize_t count = pread(descriptor_, bytes.data(), bytes.size(), static_cast<off_t>(position));
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return false;
    bytes = bytes.subspan(static_cast<size_t>(count));
    position += static_cast<uint64_t>(count);
  }
  return true;
}

bool CFile64::WriteAt(uint64_t position, std::initializer_list<std::span<const uint8_t>> parts) {
  constexpr size_t kMostParts = 4;
  std::array<iovec, kMostParts> vectors{};
  size_t count = 0;
  for (const std::span<const uint8_t>& part : parts) {
    if (part.empty()) continue;
    if (count == kMostParts) return false;
    // The system only reads, though its declaration doesn't say so.
    vectors[count++] = {const_cast<uint8_t*>(part.data()), part.size()};
  }
  iovec* next = vectors.data();
  while (count > 0) {
    const ssize_t result = pwritev(descriptor_, next, static_cast<int>(count), static_cast<off_t>(position));
    if (result < 0 && errno == EINTR) continue;
    if (result <= 0) return false;
    position += static_cast<uint64_t>(result);
    for (auto left = static_cast<size_t>(result); left > 0;) {
      const size_t step = left < next->iov_len ? left : next->iov_len;
      next->iov_base = static_cast<uint8_t*>(next->iov_base) + step;
      next->iov_len -= step;
      left -= step;
      if (next->iov_len == 0) {
        ++next;
        --count;
      }
    }
  }
  return true;
}

bool CFile64::Truncate(uint64_t byteCount) { return ftruncate(descriptor_, static_cast<off_t>(byteCount)) == 0; }

}  // namespace avi
