// A failure as the user of a command sees it: what was wrong, and what to do about it.
#pragma once

#include <iostream>
#include <stdexcept>
#include <string>
#include <utility>

namespace korvel::tools {

class ToolError : public std::runtime_error {
 public:
  ToolError(const std::string& problem, std::string advice) : std::runtime_error(problem), advice_(std::move(advice)) {}

  const std::string& Advice() const noexcept { return advice_; }

 private:
  std::string advice_;
};

// What to do about failures that could come with any call.
inline constexpr const char* kVersionAdvice =
    "The korvel command and the library are of different versions; install both anew.";
inline constexpr const char* kMemoryAdvice = "Close other programs and try again.";

// On the standard error stream, as all commands do.
inline void PrintError(const ToolError& error) {
  std::cerr << "korvel: " << error.what() << "\n  " << error.Advice() << "\n";
}

}  // namespace korvel::tools
