#include "option_table.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cctype>
#include <memory>
#include <sstream>
#include <string_view>

#include "commands.h"
#include "format_names.h"

namespace korvel::tools {
namespace {

std::vector<std::string> Split(const std::string& text, char separator) {
  std::vector<std::string> parts;
  std::istringstream stream(text);
  for (std::string part; std::getline(stream, part, separator);) parts.push_back(part);
  return parts;
}

bool IsWord(const std::string& text) {
  return !text.empty() && std::all_of(text.begin(), text.end(), [](unsigned char character) {
    return std::islower(character) || std::isdigit(character) || character == '-';
  });
}

// The numbers of a short range such as 1..5.
std::vector<std::string> WordsOfRange(const std::string& value) {
  std::vector<std::string> words;
  const bool is_short_range = value.size() == 4 && value.substr(1, 2) == ".." &&
                              std::isdigit(static_cast<unsigned char>(value[0])) &&
                              std::isdigit(static_cast<unsigned char>(value[3]));
  if (is_short_range) {
    for (char digit = value[0]; digit <= value[3]; ++digit) words.emplace_back(1, digit);
  }
  return words;
}

// The rule is that of MakeCommands.
void SetOffer(ArgumentFacts& argument) {
  const std::string value = argument.value.substr(0, argument.value.find("..."));
  const std::vector<std::string> parts = Split(value, '|');
  const auto has_part = [&](std::string_view part) {
    return std::find(parts.begin(), parts.end(), part) != parts.end();
  };
  if (has_part("FILE") || has_part("FILES") || has_part("OUT")) {
    argument.offer = Offer::kFiles;
  } else if (has_part("FOLDER")) {
    argument.offer = Offer::kFolders;
  } else if (has_part("FORMAT")) {
    argument.offer = Offer::kFormats;
  } else {
    argument.words = parts.size() > 1 && std::all_of(parts.begin(), parts.end(), IsWord) ? parts : WordsOfRange(value);
    if (!argument.words.empty()) argument.offer = Offer::kWords;
  }
}

ArgumentFacts ReadArgument(const CLI::Option& option) {
  ArgumentFacts argument;
  if (option.get_positional()) {
    argument.names = {option.get_name(true)};
  } else {
    for (const std::string& name : option.get_snames()) argument.names.push_back("-" + name);
    for (const std::string& name : option.get_lnames()) argument.names.push_back("--" + name);
  }
  argument.description = option.get_description();
  argument.is_required = option.get_required();
  argument.takes_many = option.get_items_expected_max() > 1;
  if (option.get_items_expected_max() > 0) {
    argument.value = option.get_type_name();
    SetOffer(argument);
  }
  return argument;
}

std::vector<Paragraph> ReadText(const std::string& footer) {
  std::vector<Paragraph> text;
  bool continues = false;
  for (const std::string& line : Split(footer, '\n')) {
    if (line.empty()) {
      continues = false;
      continue;
    }
    const bool stays = line.front() == ' ';
    if (!continues || text.back().stays != stays) text.push_back({{}, stays});
    text.back().lines.push_back(line.substr(std::min(line.find_first_not_of(' '), stays ? size_t{2} : 0)));
    continues = true;
  }
  return text;
}

CommandFacts ReadCommand(const CLI::App& command) {
  CommandFacts facts;
  facts.name = command.get_name();
  facts.description = command.get_description();
  for (const CLI::Option* option : command.get_options()) {
    if (option->get_group().empty()) continue;  // hidden
    (option->get_positional() ? facts.positionals : facts.options).push_back(ReadArgument(*option));
  }
  facts.text = ReadText(command.get_footer());
  return facts;
}

}  // namespace

ProgramFacts ReadProgram() {
  const std::unique_ptr<const CLI::App> app = MakeCommands();
  ProgramFacts program;
  program.version = app->version();
  program.whole = ReadCommand(*app);
  for (const CLI::App* command :
       app->get_subcommands([](const CLI::App* each) { return !each->get_group().empty(); })) {
    program.commands.push_back(ReadCommand(*command));
  }
  for (const NamedFormat& format : AllFormats()) program.formats.emplace_back(format.name);
  return program;
}

}  // namespace korvel::tools
