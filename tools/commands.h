// All commands of the korvel command with their options: what the program parses, and what its manual and its
// completions in shells are written from.
#pragma once

#include <CLI/CLI.hpp>
#include <memory>

namespace korvel::tools {

// What the program exits with, but for 0.
constexpr int kFailure = 1;
constexpr int kWrongUse = 2;

// The type name of an option tells what it takes, to people and to completions: FILE, FILES, FOLDER, OUT and FORMAT,
// words with bars between them (fast|hq|classic), a range of numbers (1..5); others are told to people alone.
std::unique_ptr<CLI::App> MakeCommands();

}  // namespace korvel::tools
