// The manual page of the korvel command.
#pragma once

#include <ostream>

#include "option_table.h"

namespace korvel::tools {

// Writes it for the macros "man" of troff.
void WriteManPage(std::ostream& out, const ProgramFacts& program);

}  // namespace korvel::tools
