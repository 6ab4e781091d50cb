#include "man_page.h"

#include <algorithm>
#include <cctype>
#include <sstream>
#include <string>
#include <vector>

#include "commands.h"

namespace korvel::tools {
namespace {

// Text in which troff sees no command. Hyphens become the character that is typed, so that options can be copied.
std::string Escaped(const std::string& text) {
  std::string escaped;
  for (const char character : text) {
    switch (character) {
      case '\\':
        escaped += "\\e";
        break;
      case '-':
        escaped += "\\-";
        break;
      case '\'':
        escaped += "\\(aq";
        break;
      case '`':
        escaped += "\\(ga";
        break;
      case '^':
        escaped += "\\(ha";
        break;
      case '~':
        escaped += "\\(ti";
        break;
      default:
        escaped += character;
    }
  }
  if (escaped.starts_with('.')) escaped.insert(0, "\\&");
  return escaped;
}

std::string Bold(const std::string& text) { return "\\fB" + Escaped(text) + "\\fR"; }
std::string Italic(const std::string& text) { return "\\fI" + Escaped(text) + "\\fR"; }

// Filled text in lines that an editor shows whole.
void WriteFilled(std::ostream& out, const std::string& text) {
  constexpr size_t kWidth = 72;
  std::istringstream words(text);
  std::string line;
  for (std::string word; words >> word;) {
    if (!line.empty() && line.size() + 1 + word.size() > kWidth) {
      out << Escaped(line) << '\n';
      line.clear();
    }
    line += (line.empty() ? "" : " ") + word;
  }
  if (!line.empty()) out << Escaped(line) << '\n';
}

void WriteParagraph(std::ostream& out, const Paragraph& paragraph) {
  if (paragraph.stays) {
    out << ".RS 4\n.nf\n";
    for (const std::string& line : paragraph.lines) out << Escaped(line) << '\n';
    out << ".fi\n.RE\n";
    return;
  }
  std::string text;
  for (const std::string& line : paragraph.lines) text += line + " ";
  WriteFilled(out, text);
}

void WriteArgument(std::ostream& out, const ArgumentFacts& argument, bool is_positional) {
  out << ".TP\n";
  for (size_t i = 0; i < argument.names.size(); ++i) {
    out << (i == 0 ? "" : ", ") << (is_positional ? Italic(argument.names[i]) : Bold(argument.names[i]));
  }
  if (!is_positional && !argument.value.empty()) out << ' ' << Italic(argument.value);
  out << '\n';
  std::string text = argument.description;
  if (!is_positional && argument.is_required) text += "; required";
  WriteFilled(out, text + ".");
}

// Paragraphs that many commands have stand once, at the end.
bool IsShared(const Paragraph& paragraph, const ProgramFacts& program) {
  return std::count_if(program.commands.begin(), program.commands.end(), [&](const CommandFacts& command) {
           return std::find(command.text.begin(), command.text.end(), paragraph) != command.text.end();
         }) > 2;
}

bool IsHeading(const Paragraph& paragraph) {
  return !paragraph.stays && paragraph.lines.size() == 1 && paragraph.lines.front().ends_with(':');
}

void WriteUsage(std::ostream& out, const CommandFacts& command) {
  out << ".PP\n" << Bold("korvel " + command.name) << " [" << Italic("OPTION") << "]...";
  for (const ArgumentFacts& positional : command.positionals) {
    std::string name = Italic(positional.names.front());
    if (positional.takes_many) name += "...";
    out << ' ' << (positional.is_required ? name : "[" + name + "]");
  }
  out << '\n';
}

void WriteCommand(std::ostream& out, const CommandFacts& command, const ProgramFacts& program) {
  out << ".SS " << Escaped(command.name) << '\n';
  WriteFilled(out, command.description + ".");
  WriteUsage(out, command);
  for (const ArgumentFacts& positional : command.positionals) WriteArgument(out, positional, true);
  for (const ArgumentFacts& option : command.options) {
    if (option.names.back() != "--help") WriteArgument(out, option, false);
  }
  for (const Paragraph& paragraph : command.text) {
    if (!IsHeading(paragraph) && IsShared(paragraph, program)) continue;
    out << ".PP\n";
    WriteParagraph(out, paragraph);
  }
}

void WriteNotes(std::ostream& out, const ProgramFacts& program) {
  std::vector<Paragraph> written;
  for (const CommandFacts& command : program.commands) {
    for (const Paragraph& paragraph : command.text) {
      const bool is_new = std::find(written.begin(), written.end(), paragraph) == written.end();
      if (IsHeading(paragraph) || !is_new || !IsShared(paragraph, program)) continue;
      out << (written.empty() ? ".SH NOTES\n" : ".PP\n");
      WriteParagraph(out, paragraph);
      written.push_back(paragraph);
    }
  }
}

}  // namespace

void WriteManPage(std::ostream& out, const ProgramFacts& program) {
  const CommandFacts& whole = program.whole;
  std::string summary = whole.description.substr(0, whole.description.find_last_not_of('.') + 1);
  if (!summary.empty()) summary[0] = static_cast<char>(std::tolower(static_cast<unsigned char>(summary[0])));

  out << ".\\\" Written from the options of the command itself.\n"
      << ".TH KORVEL 1 \"\" \"" << program.version << "\" \"User Commands\"\n"
      << ".SH NAME\nkorvel \\- " << Escaped(summary) << '\n'
      << ".SH SYNOPSIS\n"
      << Bold("korvel") << ' ' << Italic("COMMAND") << " [" << Italic("OPTION") << "]... [" << Italic("ARGUMENT")
      << "]...\n"
      << ".SH DESCRIPTION\n";
  WriteFilled(out, whole.description);
  for (const Paragraph& paragraph : whole.text) {
    out << ".PP\n";
    WriteParagraph(out, paragraph);
  }
  out << ".SH OPTIONS\n";
  for (const ArgumentFacts& option : whole.options) WriteArgument(out, option, false);
  out << ".SH COMMANDS\n";
  for (const CommandFacts& command : program.commands) WriteCommand(out, command, program);
  WriteNotes(out, program);
  out << ".SH EXIT STATUS\n"
      << ".TP\n0\nEverything was done.\n"
      << ".TP\n"
      << kFailure << "\nSomething could not be done; the message tells what, and what helps.\n"
      << ".TP\n"
      << kWrongUse << "\nThe command line is wrong.\n";
}

}  // namespace korvel::tools
