// How an operation refuses a value of a parameter.
#pragma once

namespace img::processing {

// Throws InvalidArgument unless isValid. location is the caller's signature.
void RequireArgument(bool isValid, const char* location, const char* text);

}  // namespace img::processing
