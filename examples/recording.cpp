// Records a moving picture in real time, and tells while it runs how many images were written and how many dropped:
//
//   recording OUT.avi FRAMES
//
// The video is in the form that throws nothing: a recorder goes on where a single call fails.
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <korvel/korvel.hpp>
#include <thread>

namespace {

constexpr int kFramesPerSecond = 50;

void Draw(korvel::PixelView<uint8_t> pixels, size_t frame) {
  size_t y = 0;
  for (const auto row : pixels) {
    for (size_t x = 0; x < pixels.Width(); ++x) row[x] = static_cast<uint8_t>((x + 2 * frame) ^ y);
    ++y;
  }
}

void Report(const korvel::nothrow::Video& video) {
  const auto written = video.EncodedFrames();
  const auto dropped = video.DroppedFrames();
  const auto queued = video.Queued();
  if (!written || !dropped || !queued) return;
  std::printf("written %llu, dropped %llu, queued %u\n", static_cast<unsigned long long>(*written),
              static_cast<unsigned long long>(*dropped), *queued);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "usage: recording OUT.avi FRAMES\n");
    return 2;
  }
  const size_t frames = std::strtoul(argv[2], nullptr, 10);
  auto video = korvel::nothrow::Video::Open(argv[1]);
  if (!video) {
    std::fprintf(stderr, "recording: %s\n", video.Failure().what());
    return 1;
  }
  auto image = korvel::nothrow::Image::Make(korvel::PixelFormat::Mono8, 640, 480);
  if (!image || !video->SetFramesPerSecond(kFramesPerSecond) || !video->SetQuality(80)) {
    std::fprintf(stderr, "recording: %s\n", korvel::LastError().what());
    return 1;
  }

  auto next = std::chrono::steady_clock::now();
  for (size_t i = 0; i < frames; ++i) {
    Draw(*image->Pixels<uint8_t>(), i);
    const korvel::Result<bool> queued = video->Append(*image);
    if (!queued) std::fprintf(stderr, "recording: frame %zu: %s\n", i, queued.Failure().what());
    if (queued && !*queued) std::fprintf(stderr, "recording: frame %zu was dropped\n", i);
    if (i % kFramesPerSecond == 0) Report(*video);
    next += std::chrono::milliseconds(1000 / kFramesPerSecond);
    std::this_thread::sleep_until(next);
  }
  if (const auto idle = video->WaitUntilQueueEmpty(std::chrono::seconds(10)); !idle || !*idle) {
    std::fprintf(stderr, "recording: the disk is slow\n");
  }
  Report(*video);
  if (const auto closed = video->Close(); !closed) {
    std::fprintf(stderr, "recording: %s\n", closed.Failure().what());
    return 1;
  }
  return 0;
}
