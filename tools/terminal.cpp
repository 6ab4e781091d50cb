#include "terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdlib>

namespace korvel::tools {
namespace {

bool IsTerminal() { return ::isatty(STDOUT_FILENO) == 1; }

}  // namespace

std::optional<TerminalSize> SizeOfTerminal() {
  winsize size{};
  if (!IsTerminal() || ::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0 || size.ws_row == 0) {
    return std::nullopt;
  }
  return TerminalSize{.columns = size.ws_col, .lines = size.ws_row};
}

bool TakesColours() {
  const std::string_view terminal = EnvironmentVariable("TERM");
  return IsTerminal() && EnvironmentVariable("NO_COLOR").empty() && !terminal.empty() && terminal != "dumb";
}

std::string_view EnvironmentVariable(const char* name) {
  const char* const value = std::getenv(name);
  return value == nullptr ? std::string_view() : value;
}

}  // namespace korvel::tools
