// A check of what the caller inside the library has promised.
#pragma once

#include <string>

#include "status/status_code.h"

namespace korvel::internal {

// Does nothing when condition holds. Otherwise throws an ImgException of the Processing module with the given status
// and the text "Ensure failed @ " followed by where, the name of the caller's function.
void Ensure(bool condition, const std::string& where, ImgStatusCode status);

}  // namespace korvel::internal
