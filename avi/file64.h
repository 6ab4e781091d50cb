// A binary file whose bytes are read and written at given places, beyond 4 GiB too.
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <span>
#include <string>

namespace avi {

class CFile64 {
 public:
  enum class Mode { Read, Write, Both };

  CFile64() = default;
  CFile64(const CFile64&) = delete;
  CFile64& operator=(const CFile64&) = delete;
  virtual ~CFile64() { close(); }

  // Write makes a new file, or empties one that exists; the other modes want a regular file. Returns 0 or the error
  // number of the system.
  int Open(const std::string& path, Mode mode);

  // False if the system reports that something may not have arrived.
  virtual bool close();

  bool IsOpen() const { return descriptor_ >= 0; }
  uint64_t Size() const;

  // All bytes or none: false if fewer are there, or at a failure.
  bool ReadAt(uint64_t position, std::span<uint8_t> bytes) const;

  // Writes the parts one behind the other. False if they could not all be written.
  bool WriteAt(uint64_t position, std::initializer_list<std::span<const uint8_t>> parts);

  // Makes the file this long. False at a failure.
  bool Truncate(uint64_t byteCount);

 private:
  int descriptor_ = -1;
};

}  // namespace avi
