// The library's only log: one line in the system log for each status exception, written when it is built.
#pragma once

#include <string>
#include <string_view>

namespace utilx {

// Sends one record of priority user and error: "|X| ", the module's name in a field of 20, "| ", the thread's
// indentation (four spaces a level; the level is 0 in every thread), the text and a line feed.
void LogStatusException(std::string_view moduleLogName, const std::string& text);

}  // namespace utilx
