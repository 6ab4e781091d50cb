// Writing images for all commands that make one: the files that the library writes, and bare pixels.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "handles.h"
#include "image_facts.h"
#include "korvel/korvel.h"
#include "tool_error.h"

namespace korvel::tools {

// Writes the file that the path's ending asks for and returns the library's code; ".bin" is written here, and throws
// ToolError where that fails. quality is for PNG and JPEG files, whose own it replaces.
KORVEL_RETURN_CODE TryWriteImage(const Image& image, const std::string& path, std::optional<uint32_t> quality);

// The error for code, which TryWriteImage has just returned.
ToolError WriteError(KORVEL_RETURN_CODE code, const std::string& path);

// TryWriteImage, with an exception for a failure.
void WriteImage(const Image& image, const std::string& path, std::optional<uint32_t> quality = std::nullopt);

// Tells on the standard output what was written.
void PrintWritten(const std::string& path, const ImageFacts& facts);

}  // namespace korvel::tools
