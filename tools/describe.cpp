// Writes the manual of the korvel command, or its completion in a shell, to the standard output. Part of the build, not
// of what is installed.

#include <exception>
#include <iostream>
#include <map>
#include <string>

#include "man_page.h"
#include "option_table.h"
#include "shell_completion.h"

int main(int argc, char** argv) {
  using namespace korvel::tools;
  const std::map<std::string, void (*)(std::ostream&, const ProgramFacts&)> writers = {
      {"man", WriteManPage}, {"bash", WriteBashCompletion}, {"zsh", WriteZshCompletion}, {"fish", WriteFishCompletion}};
  try {
    const auto writer = argc == 2 ? writers.find(argv[1]) : writers.end();
    if (writer == writers.end()) {
      std::cerr << "Usage: korvel-describe man|bash|zsh|fish\n";
      return 2;
    }
    writer->second(std::cout, ReadProgram());
    return std::cout.flush() ? 0 : 1;
  } catch (const std::exception& error) {
    std::cerr << "korvel-describe: " << error.what() << '\n';
    return 1;
  }
}
