// Work on pictures: measured beside the memory limit and beside every library that does the same.
#pragma once

#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

#include "benchmarks/peers.h"
#include "core/geometry.h"
#include "core/pixel_format.h"

namespace korvel::benchmarks {

struct ImageWork {
  std::string operation;
  std::vector<uint8_t>& picture;  // what run works on
  img::Size2D size;
  std::function<void()> run;
  // A picture that is changed is made anew before each call: in place, gains and curves would saturate it.
  bool changesPicture = false;
  size_t writtenBytes = 0;  // to other memory than the picture's
  // The last call's result; none where there is nothing that a peer could have otherwise.
  std::function<std::span<const uint8_t>()> result = nullptr;
  // Of a result that is an image and no list of numbers.
  img::PixelFormatId resultFormat = img::PixelFormatId::Invalid;
  img::Size2D resultSize = {};
  std::vector<PeerMethod> morePeers = {};
};

void MeasureImageWork(benchmark::State& state, const ImageWork& work);

}  // namespace korvel::benchmarks
