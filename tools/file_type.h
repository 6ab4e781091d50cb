// The types of files that the command reads and writes, told by the ending of a path.
#pragma once

#include <string>
#include <string_view>

namespace korvel::tools {

enum class FileType { kBmp, kJpeg, kPng, kRaw, kBarePixels, kUnknown };

// The ending counts in upper and lower case.
FileType TypeOfFile(const std::string& path);

// A path without its folder.
std::string NameOfFile(const std::string& path);

// The ending of a path with its point, in lower case.
std::string EndingOf(const std::string& path);

// Whether files of this type are made to be looked at.
bool IsPicture(FileType type);

// As people call it: "PNG", "bare pixels".
std::string_view NameOfFileType(FileType type);

// For messages: the endings of all types that can be written.
inline constexpr const char* kOutputEndings = ".png, .bmp, .jpg, .jpeg, .raw or .bin";

// The path with a text before its ending.
std::string InsertBeforeEnding(const std::string& path, const std::string& text);

// Throws ToolError if both paths lead to one file, which would be overwritten while it is needed.
void RefuseSameFile(const std::string& input, const std::string& output);

}  // namespace korvel::tools
