// The korvel command: the library from a shell, through its exported functions; only AVI files it knows from within.

#include <CLI/CLI.hpp>
#include <exception>
#include <iostream>
#include <memory>
#include <new>

#include "commands.h"
#include "tool_error.h"

namespace korvel::tools {
namespace {

int Run(int argc, char** argv) {
  const std::unique_ptr<CLI::App> app = MakeCommands();
  try {
    app->parse(argc, argv);
    if (app->get_subcommands().empty()) throw CLI::RequiredError("A command");
  } catch (const CLI::ParseError& error) {
    // Asking for help is not a failure, and neither here nor there does a code of the parser's own mean anything.
    if (app->exit(error) != 0) return kWrongUse;
  }
  if (!std::cout.flush()) {
    throw ToolError("cannot write to the standard output", "Check what it is connected to, and the space there.");
  }
  return 0;
}

}  // namespace
}  // namespace korvel::tools

int main(int argc, char** argv) {
  using korvel::tools::kFailure;
  try {
    return korvel::tools::Run(argc, argv);
  } catch (const korvel::tools::ToolError& error) {
    korvel::tools::PrintError(error);
  } catch (const std::bad_alloc&) {
    std::cerr << "korvel: not enough memory\n  Check --size, or use a machine with more memory.\n";
  } catch (const std::exception& error) {
    std::cerr << "korvel: " << error.what() << "\n  This was not foreseen; please report it with the command line.\n";
  }
  return kFailure;
}
