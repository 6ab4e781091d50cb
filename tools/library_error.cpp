#include "library_error.h"

#include <cstddef>
#include <cstdint>

namespace korvel::tools {

std::string LastErrorText() {
  uint32_t code = 0;
  size_t size = 0;
  if (KORVEL_Library_GetLastError(&code, nullptr, &size) != KORVEL_RETURN_CODE_Success || size == 0) return {};
  std::string text(size, '\0');
  if (KORVEL_Library_GetLastError(&code, text.data(), &size) != KORVEL_RETURN_CODE_Success || size == 0) return {};
  text.resize(size - 1);  // the size counts the terminating zero
  return text;
}

ToolError LibraryError(KORVEL_RETURN_CODE code, std::string_view doing, std::string_view advice) {
  std::string problem = "cannot ";
  problem += doing;
  problem += ": ";
  problem += LastErrorText();
  problem += " (return code " + std::to_string(code) + ")";
  return {problem, std::string(advice)};
}

void Require(KORVEL_RETURN_CODE code, std::string_view doing, std::string_view advice) {
  if (code != KORVEL_RETURN_CODE_Success) throw LibraryError(code, doing, advice);
}

}  // namespace korvel::tools
