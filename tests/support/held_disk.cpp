#include "tests/support/held_disk.h"

#include <dlfcn.h>
#include <sys/statvfs.h>

#include <atomic>

namespace korvel_test {
namespace {

std::atomic<bool> isReplaced = false;
std::atomic<uint64_t> freeBlocks = 0;
std::atomic<uint64_t> blockByteCount = 0;

int AskTheSystem(const char* path, struct statvfs* status) {
  using Function = int (*)(const char*, struct statvfs*);
  static const auto function = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "statvfs"));
  return function(path, status);
}

}  // namespace

Gate& DiskGate() {
  // Never destroyed: videos that are still open when the process ends write their pictures after that.
  static Gate* const gate = new Gate;
  return *gate;
}

void SetFreeBlocks(uint64_t blocks, uint64_t bytesPerBlock) {
  freeBlocks = blocks;
  blockByteCount = bytesPerBlock;
  isReplaced = true;
}

void UseTheDisksOwnBlocks() { isReplaced = false; }

}  // namespace korvel_test

extern "C" __attribute__((visibility("default"))) int statvfs(const char* path, struct statvfs* status) noexcept {
  korvel_test::DiskGate().Pass();
  const int result = korvel_test::AskTheSystem(path, status);
  if (korvel_test::isReplaced) {
    status->f_bfree = korvel_test::freeBlocks;
    status->f_bavail = korvel_test::freeBlocks;
    status->f_bsize = korvel_test::blockByteCount;
    status->f_frsize = korvel_test::blockByteCount;
  }
  return result;
}
