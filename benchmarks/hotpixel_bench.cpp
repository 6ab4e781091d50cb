#include <algorithm>
#include <cstring>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "benchmarks/plain_kernels.h"
#include "benchmarks/registration.h"
#include "benchmarks/side_by_side.h"
#include "benchmarks/test_frames.h"
#include "buffers/raw_image_buffer.h"
#include "processing/correction/adaptive_hotpixel_correction.h"

namespace korvel::benchmarks {
namespace {

using img::IfcImage;
using img::PixelFormatId;
using img::Point2D;
using img::Size2D;
using img::processing::AdaptiveHotpixelCorrection;

// Pixels this close to the border follow rules of their own, which the plain search leaves out.
constexpr size_t kMargin = 2;

std::unique_ptr<IfcImage> ImageOver(std::vector<uint8_t>& memory, PixelFormatId format, const Size2D& size) {
  return img::buffer::RawImageBuffer::CreateBuffer(format, memory.data(), size)->CreateImage();
}

// All four deviations of every pixel, at sensitivity 3. Mosaics have red at the top left.
template <PixelFormatId format>
std::vector<Point2D> PlainSearch(const std::vector<uint8_t>& frame, const Size2D& size) {
  constexpr img::FormatFacts kFormat = img::kFacts<format>;
  constexpr unsigned kShift = kFormat.significantBits - 8;
  const auto* const samples = reinterpret_cast<const PlainSample<format>*>(frame.data());
  const auto at = [&](size_t x, size_t y) { return int64_t{samples[y * size.width + x]}; };
  std::vector<Point2D> found;
  for (size_t y = kMargin; y < size.height - kMargin; ++y) {
    for (size_t x = kMargin; x < size.width - kMargin; ++x) {
      const size_t straight = kFormat.IsBayered() ? 2 : 1;
      const size_t diagonal = kFormat.IsBayered() && (x + y) % 2 == 0 ? 2 : 1;
      const int64_t twice = 2 * at(x, y);
      const int64_t deviations[] = {twice - at(x - diagonal, y - diagonal) - at(x + diagonal, y + diagonal),
                                    twice - at(x, y - straight) - at(x, y + straight),
                                    twice - at(x - diagonal, y + diagonal) - at(x + diagonal, y - diagonal),
                                    twice - at(x - straight, y) - at(x + straight, y)};
      const int64_t threshold = at(x, y) * (3 << kShift) + (16 << 2 * kShift);
      if (std::all_of(std::begin(deviations), std::end(deviations),
                      [&](int64_t deviation) { return deviation > 0 && deviation * deviation > threshold; })) {
        found.push_back({x, y});
      }
    }
  }
  return found;
}

std::vector<Point2D> Inside(std::vector<Point2D> points, const Size2D& size) {
  std::erase_if(points, [&](const Point2D& point) {
    return point.x < kMargin || point.y < kMargin || point.x >= size.width - kMargin ||
           point.y >= size.height - kMargin;
  });
  return points;
}

template <PixelFormatId format>
void Run(benchmark::State& state, const Size2D& size, bool isCorrection) {
  std::vector<uint8_t> frame = MakeFrame(format, size);
  std::vector<uint8_t> corrected(frame.size());
  const std::unique_ptr<IfcImage> input = ImageOver(frame, format, size);
  const std::unique_ptr<IfcImage> output = ImageOver(corrected, format, size);
  AdaptiveHotpixelCorrection correction;
  const auto subject = [&] {
    if (isCorrection) {
      correction.CorrectAdaptive(*input, *output);
    } else {
      correction.Detect(*input);
    }
  };
  const auto peer = [&] {
    if (isCorrection) std::memcpy(corrected.data(), frame.data(), frame.size());
    benchmark::DoNotOptimize(PlainSearch<format>(frame, size));
  };

  subject();
  if (Inside(correction.Parameters().hotpixels, size) != PlainSearch<format>(frame, size)) {
    state.SkipWithError("differs from its peer");
    return;
  }
  std::span<uint8_t> written;
  if (isCorrection) written = corrected;
  Measure(state,
          {.subject = subject, .peer = peer, .read = frame, .written = written, .pixels = size.width * size.height});
}

template <PixelFormatId format>
void Add() {
  for (const bool isCorrection : {false, true}) {
    for (const FrameSize& frame : kFrameSizes) {
      const std::string name = std::string(isCorrection ? "correct_hotpixels/" : "detect_hotpixels/") +
                               img::PixelFormatInfo_Name(format) + "/" + frame.Name();
      Register(name, frame.rounds, [=](benchmark::State& state) { Run<format>(state, frame.size, isCorrection); });
    }
  }
}

}  // namespace

void RegisterHotpixels() {
  Add<PixelFormatId::Mono8>();
  Add<PixelFormatId::Mono12>();
  Add<PixelFormatId::BayerRG8>();
  Add<PixelFormatId::BayerRG12>();
}

}  // namespace korvel::benchmarks
