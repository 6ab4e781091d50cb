// What the memory allows: a kernel that moves bytes and computes nothing, as the measure for kernels that move as many.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace korvel::benchmarks {

// Reads every byte of input and writes every byte of output once, both in step from front to back, as a kernel that
// works line by line does. As many bytes as both have are copied with memcpy; the rest of the longer one is read or
// set. The result depends on what was read and has no meaning.
uint64_t Stream(std::span<const uint8_t> input, std::span<uint8_t> output);

}  // namespace korvel::benchmarks
