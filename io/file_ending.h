// The endings that tell file types apart.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "io/image_io.h"

namespace img::io {

// A path's ending, with its dot and in lower case; empty if the file name has none. Only ASCII letters have a case.
std::string LowerCaseEnding(const std::filesystem::path& path);

// The file type that an ending in lower case stands for.
std::optional<FileFormat> FileFormatOfEnding(std::string_view lowerCaseEnding);

}  // namespace img::io
