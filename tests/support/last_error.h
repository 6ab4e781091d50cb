// The calling thread's last failure, read through the exported functions as an application does.
#pragma once

#include <cstdint>
#include <ostream>
#include <string>

namespace korvel_test {

struct LastError {
  uint32_t code;
  std::string text;

  bool operator==(const LastError&) const = default;
};

std::ostream& operator<<(std::ostream& stream, const LastError& error);

LastError ReadLastError();

// Leaves a known failure in the record, so that a test sees whether a call changes it.
LastError MarkLastError();

}  // namespace korvel_test
