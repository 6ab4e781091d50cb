// Records for a long time and watches what a short test can't show: that memory and descriptors stay level, that every
// frame is either written or counted as dropped, and that each file is whole to a program that no one here wrote.
#include <korvel/korvel.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "tests/support/command_output.h"
#include "tests/support/temporary_directory.h"
#include "tools/handles.h"

namespace {

using Clock = std::chrono::steady_clock;
using korvel::tools::Image;
using korvel::tools::Video;

// When a new file begins: far below the limit of a file, so that a disk needs little room, and soon enough for every
// format to have its turn while the process warms up.
constexpr uint64_t kBytesOfAFile = uint64_t{1} << 30;
constexpr double kSecondsOfAFile = 15;

constexpr uint32_t kFormats[] = {KORVEL_PIXEL_FORMAT_Mono8, KORVEL_PIXEL_FORMAT_RGB8, KORVEL_PIXEL_FORMAT_BGR8,
                                 KORVEL_PIXEL_FORMAT_RGBa8, KORVEL_PIXEL_FORMAT_BGRa8};

[[noreturn]] void Fail(const std::string& text) { throw std::runtime_error(text); }

void Require(KORVEL_RETURN_CODE code, const char* doing) {
  if (code == KORVEL_RETURN_CODE_Success) return;
  uint32_t recorded = 0;
  char text[512] = "";
  size_t size = sizeof text;
  KORVEL_Library_GetLastError(&recorded, text, &size);
  Fail(std::string(doing) + " failed with code " + std::to_string(code) + ", " + text);
}

template <class Value>
Value Get(KORVEL_RETURN_CODE (*function)(KORVEL_VIDEO_HANDLE, Value*), const Video& video) {
  Value value = 0;
  Require(function(video.Get(), &value), "asking a video");
  return value;
}

double SecondsSince(Clock::time_point start) { return std::chrono::duration<double>(Clock::now() - start).count(); }

// ----------------------------------------------------------------------------------------------------------- levels --

uint64_t ResidentBytes() {
  std::ifstream file("/proc/self/statm");
  uint64_t total = 0;
  uint64_t resident = 0;
  if (!(file >> total >> resident)) Fail("can't read /proc/self/statm");
  return resident * static_cast<uint64_t>(sysconf(_SC_PAGESIZE));
}

constexpr double kMebibyte = 1024.0 * 1024.0;

// Memory may move while the process warms up, and hardly above its highest level then.
class MemoryLevel {
 public:
  void Look(bool isWarmingUp) {
    constexpr uint64_t kPlay = uint64_t{16} << 20;
    now_ = ResidentBytes();
    if (isWarmingUp) warm_ = std::max(warm_, now_);
    highest_ = std::max(highest_, now_);
    if (!isWarmingUp && now_ > warm_ + kPlay) {
      Fail("memory has grown from " + Text(warm_) + " to " + Text(now_) + " MiB");
    }
  }

  double Now() const { return static_cast<double>(now_) / kMebibyte; }

  std::string Summary() const {
    return "memory at most " + Text(warm_) + " MiB while it warmed up and " + Text(highest_) + " MiB in all";
  }

 private:
  static std::string Text(uint64_t bytes) { return std::to_string(bytes >> 20); }

  uint64_t now_ = 0;
  uint64_t warm_ = 0;
  uint64_t highest_ = 0;
};

// Nothing but the file of an open recording may hold a descriptor.
class DescriptorLevel {
 public:
  void Require(size_t recordings) const {
    const size_t now = korvel_test::OpenDescriptors();
    if (now != before_ + recordings) {
      Fail(std::to_string(now) + " descriptors are open, which were " + std::to_string(before_) + " before " +
           std::to_string(recordings) + " recordings");
    }
  }

 private:
  size_t before_ = korvel_test::OpenDescriptors();
};

// ------------------------------------------------------------------------------------------------------- recordings --

struct Size {
  size_t width;
  size_t height;
};

// A gradient that moves from frame to frame, and noise.
class Frames {
 public:
  Frames(uint32_t format, const Size& size) {
    constexpr size_t kCount = 4;
    size_t byteCount = 0;
    Require(KORVEL_PixelFormat_CalculateStorageSizeOfPixels(format, size.width * size.height, &byteCount),
            "computing a size");
    const size_t lineByteCount = byteCount / size.height;
    std::minstd_rand random(format);
    for (size_t i = 0; i < kCount; ++i) {
      std::vector<uint8_t>& bytes = memory_.emplace_back(byteCount);
      for (size_t k = 0; k < byteCount; ++k) {
        const size_t x = k % lineByteCount;
        const size_t y = k / lineByteCount;
        bytes[k] = static_cast<uint8_t>(x * 120 / lineByteCount + y * 100 / size.height + 8 * i + random() % 8);
      }
      Image image;
      ::Require(KORVEL_Image_ConstructFromBuffer(format, bytes.data(), byteCount, size.width, size.height, image.Out()),
                "making an image");
      images_.push_back(std::move(image));
    }
  }

  KORVEL_IMAGE_HANDLE Next() { return images_[next_++ % images_.size()].Get(); }

 private:
  std::vector<std::vector<uint8_t>> memory_;
  std::vector<Image> images_;
  size_t next_ = 0;
};

struct Counts {
  uint64_t appended = 0;
  uint64_t written = 0;
  uint64_t dropped = 0;

  Counts& operator+=(const Counts& other) {
    appended += other.appended;
    written += other.written;
    dropped += other.dropped;
    return *this;
  }
};

class Recording {
 public:
  explicit Recording(const std::string& path) : path_(path) {
    Require(KORVEL_VideoWriter_Video_Open(video_.Out(), path.c_str(), KORVEL_VIDEO_CONTAINER_AVI,
                                          KORVEL_VIDEO_ENCODER_MJPEG),
            "opening a video");
  }

  // False if the queue was full.
  bool Append(KORVEL_IMAGE_HANDLE image) {
    const KORVEL_RETURN_CODE code = KORVEL_VideoWriter_Video_Append(video_.Get(), image);
    ++appended_;
    if (code == KORVEL_RETURN_CODE_QueueFull) return false;
    Require(code, "appending");
    return true;
  }

  uint32_t Queued() const { return Get(KORVEL_VideoWriter_Queue_GetQueued, video_); }
  uint64_t ByteCount() const { return Get(KORVEL_VideoWriter_Video_GetFileSize, video_); }

  Counts CountsNow() const {
    return {.appended = appended_,
            .written = Get(KORVEL_VideoWriter_Video_GetEncodedFrames, video_),
            .dropped = Get(KORVEL_VideoWriter_Video_GetDroppedFrames, video_)};
  }

  // Closes the file, checks it, and removes it.
  Counts End() {
    constexpr uint32_t kLongMs = 60'000;
    while (Queued() != 0) Require(KORVEL_VideoWriter_Video_WaitUntilQueueEmpty(video_.Get(), kLongMs), "waiting");
    const Counts counts = CountsNow();
    if (counts.written + counts.dropped != counts.appended) {
      Fail(std::to_string(counts.written) + " frames written and " + std::to_string(counts.dropped) + " dropped, but " +
           std::to_string(counts.appended) + " appended");
    }
    Require(KORVEL_VideoWriter_Video_Close(video_.Release()), "closing a video");
    const std::string frames = korvel_test::TextOutputOf(
        "ffprobe -v error -select_streams v:0 -count_packets -show_entries stream=nb_read_packets -of csv=p=0 '" +
        path_ + "'");
    if (frames != std::to_string(counts.written) + "\n") {
      Fail("ffprobe counts " + frames + " frames where " + std::to_string(counts.written) + " were written");
    }
    std::filesystem::remove(path_);
    return counts;
  }

 private:
  std::string path_;
  Video video_;
  uint64_t appended_ = 0;
};

// ------------------------------------------------------------------------------------------------------------- soak --

class Soak {
 public:
  // As fast as the worker goes, and at times faster; each file in the next format.
  void RecordFor(double seconds, const Size& size) {
    constexpr double kWarmUp = 0.2;
    const double secondsOfAFile = std::min(kSecondsOfAFile, kWarmUp * seconds / std::size(kFormats));
    std::printf("%8s %8s %10s %10s %10s %11s %12s\n", "seconds", "files", "appended", "written", "dropped",
                "memory MiB", "descriptors");
    const Clock::time_point start = Clock::now();
    MemoryLevel memory;
    Counts total;
    size_t files = 0;
    double nextLine = 0;
    while (SecondsSince(start) < seconds) {
      Frames frames(kFormats[files % std::size(kFormats)], size);
      Recording recording(directory_.File("soak.avi"));
      const Clock::time_point startOfFile = Clock::now();
      while (SecondsSince(startOfFile) < secondsOfAFile && recording.ByteCount() < kBytesOfAFile) {
        Burst(recording, frames);
        descriptors_.Require(1);
        // Once round and one more, since the first file of all had nothing before it.
        memory.Look(files <= std::size(kFormats));
        if (SecondsSince(start) >= nextLine) {
          Counts now = total;
          now += recording.CountsNow();
          std::printf("%8.0f %8zu %10llu %10llu %10llu %11.1f %12zu\n", SecondsSince(start), files + 1,
                      static_cast<unsigned long long>(now.appended), static_cast<unsigned long long>(now.written),
                      static_cast<unsigned long long>(now.dropped), memory.Now(), korvel_test::OpenDescriptors());
          std::fflush(stdout);
          nextLine += seconds / 20;
        }
      }
      total += recording.End();
      descriptors_.Require(0);
      ++files;
    }
    if (total.dropped == 0) Fail("no frame was dropped, so that dropping was not tried");
    std::printf("%zu files whole, %llu frames appended = %llu written + %llu dropped; %s\n\n", files,
                static_cast<unsigned long long>(total.appended), static_cast<unsigned long long>(total.written),
                static_cast<unsigned long long>(total.dropped), memory.Summary().c_str());
  }

  // Recordings of a few small frames, one after the other.
  void Cycle(size_t cycles) {
    constexpr Size kSize = {64, 48};
    constexpr size_t kFrames = 5;
    MemoryLevel memory;
    Counts total;
    for (size_t cycle = 0; cycle < cycles; ++cycle) {
      Frames frames(kFormats[cycle % std::size(kFormats)], kSize);
      Recording recording(directory_.File("cycle.avi"));
      for (size_t i = 0; i < kFrames; ++i) recording.Append(frames.Next());
      descriptors_.Require(1);
      total += recording.End();
      descriptors_.Require(0);
      memory.Look(cycle < cycles / 5);
    }
    std::printf("%zu cycles, %llu frames appended = %llu written + %llu dropped; %s\n", cycles,
                static_cast<unsigned long long>(total.appended), static_cast<unsigned long long>(total.written),
                static_cast<unsigned long long>(total.dropped), memory.Summary().c_str());
  }

 private:
  // Fills the queue until frames are dropped, then lets the worker have all but the last of them.
  static void Burst(Recording& recording, Frames& frames) {
    constexpr int kDrops = 3;
    constexpr uint32_t kLeft = 2;
    for (int drops = 0; drops < kDrops;) drops += recording.Append(frames.Next()) ? 0 : 1;
    while (recording.Queued() > kLeft) std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }

  korvel_test::TemporaryDirectory directory_;
  DescriptorLevel descriptors_;
};

}  // namespace

int main(int argumentCount, char** arguments) try {
  double seconds = 600;
  size_t cycles = 1000;
  Size size = {1920, 1080};
  CLI::App app("Records for a long time and watches memory, descriptors, counters and files.");
  app.add_option("--seconds", seconds, "Length of the recording")->check(CLI::PositiveNumber)->capture_default_str();
  app.add_option("--cycles", cycles, "Short recordings after it")->check(CLI::PositiveNumber)->capture_default_str();
  app.add_option("--width", size.width, "Of the frames, a multiple of 8")->capture_default_str();
  app.add_option("--height", size.height, "Of the frames")->capture_default_str();
  CLI11_PARSE(app, argumentCount, arguments);

  Soak soak;
  soak.RecordFor(seconds, size);
  soak.Cycle(cycles);
  return 0;
} catch (const std::exception& failure) {
  std::fprintf(stderr, "soak: %s\n", failure.what());
  return 1;
}
