// What the memory allows: a kernel that moves bytes and computes nothing, as the measure for kernels that move as many.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace korvel::benchmarks {

// Moves as many bytes as a piece of work that reads a picture once, writes a result once, or writes its picture back.
// It goes from front to back, in step, as a kernel does that works line by line.
class MemoryLimit {
 public:
  // How bytes are written: through the caches, or around them. Which one is faster depends on sizes and machine.
  enum class Stores { Ordinary, NonTemporal };

  MemoryLimit(size_t readBytes, bool writesBack, size_t writtenBytes);

  // Brings the picture into the caches as the restored picture of work in place is.
  void Restore(std::span<const uint8_t> frame);

  void Run(Stores stores);

 private:
  std::vector<uint8_t> pictureMemory_;
  std::vector<uint8_t> resultMemory_;
  std::span<uint8_t> picture_;
  bool writesBack_;
  std::span<uint8_t> result_;
};

}  // namespace korvel::benchmarks
