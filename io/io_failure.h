// Failures of file input and output.
#pragma once

#include <string>
#include <utility>

#include "status/exceptions.h"

namespace img::io {

// location is the throwing function's signature.
[[noreturn]] inline void ThrowIo(korvel::internal::ImgStatusCode status, const char* location, std::string text) {
  korvel::internal::ThrowStatus<cfg_libimg::Modules::Io>(status, location, std::move(text));
}

inline constexpr const char* kCannotOpen = "Error opening file. Check name and file permissions.";
inline constexpr const char* kCannotWrite = "Error writing file.";
inline constexpr const char* kCannotRead = "Error reading file.";
inline constexpr const char* kUnsupportedPixelFormat = "Unsupported pixel format";
inline constexpr const char* kCannotInterpret = "Can not interpret image with this pixel format";

}  // namespace img::io
