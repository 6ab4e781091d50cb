#include "pixel_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <new>
#include <system_error>
#include <utility>
#include <vector>

#include "tool_error.h"

namespace korvel::tools {
namespace {

class Descriptor {
 public:
  Descriptor(const std::string& path, int flags) : value_(::open(path.c_str(), flags | O_CLOEXEC, 0666)) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() {
    if (value_ >= 0) ::close(value_);
  }

  int Get() const noexcept { return value_; }

  // Some file systems tell only here that a file could not be written. Returns whether all went well.
  bool Close() noexcept { return ::close(std::exchange(value_, -1)) == 0; }

 private:
  int value_;
};

ToolError SystemError(const std::string& doing, const std::string& path, const std::string& advice) {
  return {"cannot " + doing + " '" + path + "': " + std::generic_category().message(errno), advice};
}

constexpr size_t kMostAtOnce = size_t{1} << 30;  // a single call of the system takes no more than 2 GiB

// Reads until count bytes are there or the file ends; returns how many it read.
size_t ReadUpTo(const Descriptor& file, uint8_t* bytes, size_t count, const std::string& path) {
  size_t done = 0;
  while (done < count) {
    const ssize_t got = ::read(file.Get(), bytes + done, std::min(count - done, kMostAtOnce));
    if (got == 0) break;
    if (got < 0) {
      if (errno == EINTR) continue;
      throw SystemError("read", path, "Check the file and the medium that it lies on.");
    }
    done += static_cast<size_t>(got);
  }
  return done;
}

// Passes over the first bytes by reading them, which pipes allow as well. Returns how many there were.
uint64_t Skip(const Descriptor& file, uint64_t count, const std::string& path) {
  std::vector<uint8_t> discarded(static_cast<size_t>(std::min<uint64_t>(count, 65536)));
  uint64_t done = 0;
  while (done < count) {
    const auto wanted = static_cast<size_t>(std::min<uint64_t>(count - done, discarded.size()));
    const size_t got = ReadUpTo(file, discarded.data(), wanted, path);
    done += got;
    if (got < wanted) break;
  }
  return done;
}

ToolError TooShort(const PixelFileRequest& request, uint64_t found) {
  std::string problem = "'" + request.path + "' is too short: " + request.pixels + " take " +
                        std::to_string(request.byte_count) + " bytes";
  if (request.skip > 0) problem += " behind the " + std::to_string(request.skip) + " that are skipped";
  const uint64_t usable = found > request.skip ? found - request.skip : 0;
  problem += ", and " + std::to_string(usable) + (usable == 1 ? " byte is" : " bytes are") + " there";
  return {problem, "Check --format, --size and --skip against what the camera was set to."};
}

}  // namespace

PixelFile ReadPixelFile(const PixelFileRequest& request) {
  const Descriptor file(request.path, O_RDONLY);
  if (file.Get() < 0) throw SystemError("open", request.path, "Check the path and the permissions of the file.");

  struct stat status {};
  if (::fstat(file.Get(), &status) != 0) throw SystemError("look at", request.path, "Check the file system.");
  if (S_ISDIR(status.st_mode)) {
    throw ToolError("'" + request.path + "' is a folder", "Name a file that holds the bare pixels.");
  }

  // Some files of the kernel call themselves regular with a size of 0, so that alone doesn't tell that one is empty.
  const bool has_size = S_ISREG(status.st_mode) && status.st_size > 0;
  const uint64_t file_size = has_size ? static_cast<uint64_t>(status.st_size) : 0;
  if (has_size && (file_size < request.skip || file_size - request.skip < request.byte_count)) {
    throw TooShort(request, file_size);
  }

  PixelFile result;
  try {
    result.bytes = std::make_unique_for_overwrite<uint8_t[]>(request.byte_count);
  } catch (const std::bad_alloc&) {
    throw ToolError(request.pixels + " take " + std::to_string(request.byte_count) +
                        " bytes, and this machine has not enough memory for them",
                    "Check --size, or use a machine with more memory.");
  }

  uint64_t found = Skip(file, request.skip, request.path);
  if (found == request.skip) found += ReadUpTo(file, result.bytes.get(), request.byte_count, request.path);
  if (found - std::min(found, request.skip) < request.byte_count) throw TooShort(request, found);
  if (has_size && file_size > found) result.bytes_left = file_size - found;
  return result;
}

void WriteBytes(const std::string& path, const uint8_t* bytes, size_t count) {
  const std::string advice = "Check the folder, its permissions and the space there.";
  Descriptor file(path, O_WRONLY | O_CREAT | O_TRUNC);
  if (file.Get() < 0) throw SystemError("open", path, advice);
  size_t done = 0;
  while (done < count) {
    const ssize_t written = ::write(file.Get(), bytes + done, std::min(count - done, kMostAtOnce));
    if (written < 0 && errno != EINTR) throw SystemError("write", path, advice);
    if (written > 0) done += static_cast<size_t>(written);
  }
  if (!file.Close()) throw SystemError("write", path, advice);
}

}  // namespace korvel::tools
