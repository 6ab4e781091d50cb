// Other programs that tests ask.
#pragma once

#include <stdio.h>
#include <sys/wait.h>

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

namespace korvel_test {

// What a shell command prints. Throws if it fails.
inline std::vector<uint8_t> OutputOf(const std::string& command) {
  FILE* const pipe = popen(command.c_str(), "r");
  if (pipe == nullptr) throw std::runtime_error("can't run " + command);
  std::vector<uint8_t> output;
  uint8_t buffer[65536];
  for (size_t count = 0; (count = fread(buffer, 1, sizeof buffer, pipe)) > 0;) {
    output.insert(output.end(), buffer, buffer + count);
  }
  const int status = pclose(pipe);
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) throw std::runtime_error("failed: " + command);
  return output;
}

inline std::string TextOutputOf(const std::string& command) {
  const std::vector<uint8_t> output = OutputOf(command);
  return {output.begin(), output.end()};
}

}  // namespace korvel_test
