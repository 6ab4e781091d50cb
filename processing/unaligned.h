// Samples in memory without alignment, for pixel loops. Images over the caller's memory begin where the caller likes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace img::processing {

template <class Sample>
Sample LoadSample(const uint8_t* line, size_t index) {
  Sample sample;
  std::memcpy(&sample, line + index * sizeof(Sample), sizeof(Sample));
  return sample;
}

template <class Sample>
void StoreSample(uint8_t* line, size_t index, Sample sample) {
  std::memcpy(line + index * sizeof(Sample), &sample, sizeof(Sample));
}

}  // namespace img::processing
