// The terminal that the standard output may be.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

namespace korvel::tools {

struct TerminalSize {
  size_t columns = 0;
  size_t lines = 0;
};

// None if the output is no terminal, or one that doesn't tell.
std::optional<TerminalSize> SizeOfTerminal();

// Whether the output is a terminal with colours, and nobody wished for none by NO_COLOR.
bool TakesColours();

// Empty if there is none.
std::string_view EnvironmentVariable(const char* name);

}  // namespace korvel::tools
