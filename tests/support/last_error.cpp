#include "tests/support/last_error.h"

#include <korvel/korvel.h>

#include <stdexcept>
#include <vector>

namespace korvel_test {

std::ostream& operator<<(std::ostream& stream, const LastError& error) {
  return stream << error.code << " \"" << error.text << "\"";
}

LastError ReadLastError() {
  LastError error{};
  size_t size = 0;
  if (KORVEL_Library_GetLastError(&error.code, nullptr, &size) != KORVEL_RETURN_CODE_Success) {
    throw std::runtime_error("the size of the last error's text can't be read");
  }
  std::vector<char> text(size);
  if (KORVEL_Library_GetLastError(&error.code, text.data(), &size) != KORVEL_RETURN_CODE_Success) {
    throw std::runtime_error("the last error can't be read");
  }
  error.text = text.data();
  return error;
}

LastError MarkLastError() {
  KORVEL_Library_GetVersionMajor(nullptr);
  return ReadLastError();
}

}  // namespace korvel_test
