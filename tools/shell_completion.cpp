#include "shell_completion.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

namespace korvel::tools {
namespace {

constexpr const char* kOrigin = "# Written from the options of the command itself.\n";

std::string Joined(const std::vector<std::string>& words, std::string_view separator) {
  std::string text;
  for (const std::string& word : words) {
    if (!text.empty()) text += separator;
    text += word;
  }
  return text;
}

std::string Between(std::string_view before, std::string_view text, std::string_view after) {
  std::string whole(before);
  whole += text;
  whole += after;
  return whole;
}

// With a backslash before each of these characters.
std::string Escaped(const std::string& text, std::string_view characters) {
  std::string escaped;
  for (const char character : text) {
    if (characters.find(character) != std::string_view::npos) escaped += '\\';
    escaped += character;
  }
  return escaped;
}

// As one word of bash and zsh.
std::string Quoted(const std::string& text) {
  std::string quoted = "'";
  for (const char character : text) quoted += character == '\'' ? std::string("'\\''") : std::string(1, character);
  return quoted + "'";
}

std::vector<std::string> NamesOfOptions(const CommandFacts& command) {
  std::vector<std::string> names;
  for (const ArgumentFacts& option : command.options) {
    names.insert(names.end(), option.names.begin(), option.names.end());
  }
  return names;
}

std::vector<std::string> NamesOfCommands(const ProgramFacts& program) {
  std::vector<std::string> names;
  for (const CommandFacts& command : program.commands) names.push_back(command.name);
  return names;
}

// What stands where no option does: of positionals, the first one that has something to offer. Most are files, and
// counting them would go wrong with options whose values begin with a hyphen.
ArgumentFacts Positional(const CommandFacts& command) {
  const auto found = std::find_if(command.positionals.begin(), command.positionals.end(),
                                  [](const ArgumentFacts& argument) { return argument.offer != Offer::kNothing; });
  return found == command.positionals.end() ? ArgumentFacts{} : *found;
}

// --- bash

std::string BashAction(const ArgumentFacts& argument) {
  switch (argument.offer) {
    case Offer::kFiles:
      return "_korvel_paths -f; ";
    case Offer::kFolders:
      return "_korvel_paths -d; ";
    case Offer::kFormats:
      return "_korvel_words \"$formats\"; ";
    case Offer::kWords:
      return "_korvel_words " + Quoted(Joined(argument.words, " ")) + "; ";
    case Offer::kNothing:
      break;
  }
  return "";
}

// --- zsh

std::string ZshAction(const ArgumentFacts& argument) {
  switch (argument.offer) {
    case Offer::kFiles:
      return "_files";
    case Offer::kFolders:
      return "_files -/";
    case Offer::kFormats:
      return "_korvel_formats";
    case Offer::kWords:
      return Between("(", Joined(argument.words, " "), ")");
    case Offer::kNothing:
      break;
  }
  return " ";  // asks for the argument, and offers none
}

// One argument of _arguments for each name of an option, which excludes its other names.
std::string ZshSpecifications(const ArgumentFacts& option) {
  std::string text;
  for (const std::string& name : option.names) {
    std::string entry = Between("(", Joined(option.names, " "), ")") + name;
    if (!option.value.empty()) entry += name.starts_with("--") ? "=" : "+";
    entry += Between("[", Escaped(option.description, "[]\\"), "]");
    if (!option.value.empty()) entry += Between(":", Escaped(option.value, ":\\"), ":") + ZshAction(option);
    text += " \\\n          " + Quoted(entry);
  }
  return text;
}

std::string ZshArguments(const CommandFacts& command) {
  std::string text = "_arguments";
  for (const ArgumentFacts& option : command.options) text += ZshSpecifications(option);
  const ArgumentFacts positional = Positional(command);
  if (positional.offer != Offer::kNothing) {
    text += " \\\n          " +
            Quoted(Between("*:", Escaped(positional.names.front(), ":\\"), ":") + ZshAction(positional));
  }
  return text;
}

// --- fish

// As one word of fish, whose quoting knows the backslash.
std::string FishQuoted(const std::string& text) { return Between("'", Escaped(text, "'\\"), "'"); }

std::string FishAction(const ArgumentFacts& argument, const ProgramFacts& program) {
  switch (argument.offer) {
    case Offer::kFiles:
      return " -r -F";
    case Offer::kFolders:
      return " -x -a '(__fish_complete_directories)'";
    case Offer::kFormats:
      return " -x -a " + FishQuoted(Joined(program.formats, " "));
    case Offer::kWords:
      return " -x -a " + FishQuoted(Joined(argument.words, " "));
    case Offer::kNothing:
      break;
  }
  return argument.value.empty() ? "" : " -x";
}

void WriteFishOptions(std::ostream& out, const CommandFacts& command, const std::string& condition,
                      const ProgramFacts& program) {
  for (const ArgumentFacts& option : command.options) {
    out << "complete -c korvel -n " << FishQuoted(condition);
    for (const std::string& name : option.names) {
      const bool is_long = name.starts_with("--");
      out << (is_long ? " -l " : " -s ") << name.substr(is_long ? 2 : 1);
    }
    out << FishAction(option, program) << " -d " << FishQuoted(option.description) << '\n';
  }
}

}  // namespace

void WriteBashCompletion(std::ostream& out, const ProgramFacts& program) {
  out << "# Completion of korvel in bash.\n"
      << kOrigin << R"(
_korvel_words() {
  mapfile -t COMPREPLY < <(compgen -W "$1" -- "$current")
}

_korvel_paths() {
  compopt -o filenames 2>/dev/null
  mapfile -t COMPREPLY < <(compgen "$1" -- "$current")
}

_korvel() {
  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]} command='' word
  COMPREPLY=()

  # --option=value comes as three words.
  if [[ $current == = ]]; then
    current=''
  elif [[ $previous == = ]]; then
    previous=${COMP_WORDS[COMP_CWORD - 2]}
  fi
  for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
    if [[ $word != -* ]]; then
      command=$word
      break
    fi
  done

)";
  out << "  local formats=" << Quoted(Joined(program.formats, " ")) << "\n\n"
      << "  case $command:$previous in\n";
  for (const CommandFacts& command : program.commands) {
    for (const ArgumentFacts& option : command.options) {
      if (option.value.empty()) continue;
      std::vector<std::string> patterns;
      for (const std::string& name : option.names) patterns.push_back(command.name + ":" + name);
      out << "    " << Joined(patterns, " | ") << ") " << BashAction(option) << "return ;;\n";
    }
  }
  out << "  esac\n"
      << "  case $command:$current in\n"
      << "    :*) _korvel_words "
      << Quoted(Joined(NamesOfCommands(program), " ") + " " + Joined(NamesOfOptions(program.whole), " ")) << " ;;\n";
  for (const CommandFacts& command : program.commands) {
    out << "    " << command.name << ":-*) _korvel_words " << Quoted(Joined(NamesOfOptions(command), " ")) << " ;;\n";
    const ArgumentFacts positional = Positional(command);
    if (positional.offer != Offer::kNothing) {
      out << "    " << command.name << ":*) " << BashAction(positional) << "return ;;\n";
    }
  }
  out << "  esac\n}\n\ncomplete -F _korvel korvel\n";
}

void WriteZshCompletion(std::ostream& out, const ProgramFacts& program) {
  out << "#compdef korvel\n"
      << kOrigin << "\n_korvel_formats() {\n  local -a formats=(" << Joined(program.formats, " ") << ")\n"
      << "  compadd \"$@\" -a formats\n}\n\n"
      << "_korvel() {\n"
      << "  local curcontext=$curcontext state line\n"
      << "  typeset -A opt_args\n"
      << "  _arguments -C";
  for (const ArgumentFacts& option : program.whole.options) out << ZshSpecifications(option);
  out << " \\\n          '1:command:->command' '*::argument:->argument'\n\n"
      << "  case $state in\n"
      << "    command)\n      local -a commands=(\n";
  for (const CommandFacts& command : program.commands) {
    out << "        " << Quoted(command.name + ":" + Escaped(command.description, ":\\")) << '\n';
  }
  out << "      )\n      _describe command commands\n      ;;\n"
      << "    argument)\n      case $words[1] in\n";
  for (const CommandFacts& command : program.commands) {
    out << "        " << command.name << ") " << ZshArguments(command) << " ;;\n";
  }
  out << "      esac\n      ;;\n  esac\n}\n\n_korvel \"$@\"\n";
}

void WriteFishCompletion(std::ostream& out, const ProgramFacts& program) {
  out << "# Completion of korvel in fish.\n" << kOrigin << "\ncomplete -c korvel -f\n";
  WriteFishOptions(out, program.whole, "__fish_use_subcommand", program);
  for (const CommandFacts& command : program.commands) {
    const std::string condition = "__fish_seen_subcommand_from " + command.name;
    out << "\ncomplete -c korvel -n __fish_use_subcommand -a " << command.name << " -d "
        << FishQuoted(command.description) << '\n';
    WriteFishOptions(out, command, condition, program);
    const ArgumentFacts positional = Positional(command);
    if (positional.offer == Offer::kFiles) {
      out << "complete -c korvel -n " << FishQuoted(condition) << " -F\n";
    } else if (positional.offer != Offer::kNothing) {
      out << "complete -c korvel -n " << FishQuoted(condition) << FishAction(positional, program) << '\n';
    }
  }
}

}  // namespace korvel::tools
