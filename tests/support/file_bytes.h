// Whole files, read and written as bytes.
#pragma once

#include <cstdint>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

namespace korvel_test {

inline std::vector<uint8_t> ReadFileBytes(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw std::runtime_error("can't read " + path);
  return {std::istreambuf_iterator<char>(file), {}};
}

// A new file, because some file systems write at once what takes the place of an old one.
inline void WriteFileBytes(const std::string& path, const std::vector<uint8_t>& bytes) {
  std::remove(path.c_str());
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  if (!file.flush()) throw std::runtime_error("can't write " + path);
}

}  // namespace korvel_test
