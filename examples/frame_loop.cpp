// A loop over frames, as a live view runs it: memory is taken before the loop, and each frame is timed.
//
//   frame_loop WIDTH HEIGHT FRAMES
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <korvel/korvel.hpp>
#include <vector>

namespace {

// Stands for the camera: a gradient that moves.
void FillFrame(std::vector<uint8_t>& buffer, size_t frame) {
  for (size_t i = 0; i < buffer.size(); ++i) buffer[i] = static_cast<uint8_t>(i / 3 + frame);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) {
    std::fprintf(stderr, "usage: frame_loop WIDTH HEIGHT FRAMES\n");
    return 2;
  }
  using Clock = std::chrono::steady_clock;
  using Milliseconds = std::chrono::duration<double, std::milli>;
  using korvel::PixelFormat;
  try {
    const size_t width = std::strtoul(argv[1], nullptr, 10);
    const size_t height = std::strtoul(argv[2], nullptr, 10);
    const size_t frames = std::max(1ul, std::strtoul(argv[3], nullptr, 10));

    // One converter for the whole stream: it keeps its memory. Two results are alive at once: the one that is shown and
    // the next one.
    korvel::ImageConverter converter;
    converter.PreAllocate(PixelFormat::BayerRG12p, PixelFormat::BGRa8, width, height, 2);

    std::vector<uint8_t> buffer(korvel::FormatQueries::StorageSizeOfPixels(PixelFormat::BayerRG12p, width * height));
    korvel::Image shown(nullptr);
    std::vector<double> times;
    for (size_t i = 0; i < frames; ++i) {
      FillFrame(buffer, i);
      const auto begin = Clock::now();
      const korvel::Image frame(PixelFormat::BayerRG12p, buffer.data(), buffer.size(), width, height);
      // The image that was shown before gives its memory back to the converter here.
      shown = converter.Convert(frame, PixelFormat::BGRa8);
      times.push_back(Milliseconds(Clock::now() - begin).count());
    }
    std::sort(times.begin(), times.end());
    std::printf("%zu frames of %zu by %zu: median %.3f ms, slowest %.3f ms\n", frames, width, height,
                times[times.size() / 2], times.back());
  } catch (const std::exception& error) {
    std::fprintf(stderr, "frame_loop: %s\n", error.what());
    return 1;
  }
  return 0;
}
