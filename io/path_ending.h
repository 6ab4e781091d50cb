// The endings that tell file types apart.
#pragma once

#include <filesystem>
#include <string>

namespace img::io {

inline constexpr const char* kPngEnding = ".png";

// A path's ending, with its dot and in lower case; empty if the file name has none. Only ASCII letters have a case.
std::string LowerCaseEnding(const std::filesystem::path& path);

}  // namespace img::io
