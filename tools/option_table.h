// What the commands and their options tell about themselves, for the manual and for completions in shells.
#pragma once

#include <string>
#include <vector>

namespace korvel::tools {

// What a shell offers where an argument is typed.
enum class Offer { kNothing, kFiles, kFolders, kFormats, kWords };

struct ArgumentFacts {
  std::vector<std::string> names;  // as typed, such as -o and --output; for what has no option before it, its own name
  std::string value;               // what stands behind an option; none behind a flag
  std::string description;
  bool is_required = false;
  bool takes_many = false;
  Offer offer = Offer::kNothing;
  std::vector<std::string> words;  // for Offer::kWords
};

// Lines that belong together: text that can be filled, or lines that stay as they are.
struct Paragraph {
  std::vector<std::string> lines;
  bool stays = false;

  bool operator==(const Paragraph&) const = default;
};

struct CommandFacts {
  std::string name;
  std::string description;
  std::vector<ArgumentFacts> positionals;
  std::vector<ArgumentFacts> options;
  std::vector<Paragraph> text;
};

struct ProgramFacts {
  std::string version;  // "korvel 1.5.0"
  CommandFacts whole;
  std::vector<CommandFacts> commands;
  std::vector<std::string> formats;
};

// Reads them from the commands that the program parses.
ProgramFacts ReadProgram();

}  // namespace korvel::tools
