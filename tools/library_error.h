// Turns the library's return codes into exceptions that carry the library's own text.
#pragma once

#include <string>
#include <string_view>

#include "korvel/korvel.h"
#include "tool_error.h"

namespace korvel::tools {

// The text of the calling thread's last failure.
std::string LastErrorText();

// The error for a call that has just failed with code. doing completes "cannot ..."; advice tells what to do. Make it
// before any other call into the library, which could fail as well and so replace the text.
ToolError LibraryError(KORVEL_RETURN_CODE code, std::string_view doing, std::string_view advice);

// Throws LibraryError unless code is success.
void Require(KORVEL_RETURN_CODE code, std::string_view doing, std::string_view advice);

}  // namespace korvel::tools
