#include "fuzz/session.h"

#include <fcntl.h>
#include <korvel/korvel.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <utility>

#include "core/memory_limit.h"

namespace korvel_fuzz {

void Fail(const char* condition, const char* file, int line) {
  uint32_t code = 0;
  char text[1024] = "";
  size_t size = sizeof text;
  KORVEL_Library_GetLastError(&code, text, &size);
  std::fprintf(stderr, "%s:%d: does not hold: %s\nlast failure: code %u, %s\n", file, line, condition, code, text);
  std::abort();
}

ScratchFile::ScratchFile(std::string path)
    : path_(std::move(path)), descriptor_(open(path_.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600)) {
  if (descriptor_ < 0) throw std::runtime_error("can't write " + path_);
}

ScratchFile::~ScratchFile() { close(descriptor_); }

void ScratchFile::Rewrite(ByteView content) {
  if (ftruncate(descriptor_, 0) != 0) throw std::runtime_error("can't empty " + path_);
  if (content.empty()) return;
  if (pwrite(descriptor_, content.data(), content.size(), 0) != static_cast<ssize_t>(content.size())) {
    throw std::runtime_error("can't write " + path_);
  }
}

Session::Session(size_t largestAllocation) { img::OverrideLargestAllocation(largestAllocation); }

int DescriptorCheck::LowestFree() {
  const int descriptor = open("/dev/null", O_RDONLY | O_CLOEXEC);
  if (descriptor >= 0) close(descriptor);
  return descriptor;
}

}  // namespace korvel_fuzz

// Both names that a compiled call of syslog can have; the second is that of builds with checked library calls.
extern "C" {

__attribute__((visibility("default"))) void syslog(int, const char*, ...) {}
__attribute__((visibility("default"))) void __syslog_chk(int, int, const char*, ...) {}
}
