// Completion of the korvel command in shells.
#pragma once

#include <ostream>

#include "option_table.h"

namespace korvel::tools {

void WriteBashCompletion(std::ostream& out, const ProgramFacts& program);
void WriteZshCompletion(std::ostream& out, const ProgramFacts& program);
void WriteFishCompletion(std::ostream& out, const ProgramFacts& program);

}  // namespace korvel::tools
