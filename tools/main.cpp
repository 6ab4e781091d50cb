// The korvel command: the library from a shell, through its exported functions alone.

#include <CLI/CLI.hpp>
#include <cstdint>
#include <exception>
#include <iostream>
#include <new>
#include <string>

#include "command_bin.h"
#include "command_convert.h"
#include "command_correct.h"
#include "command_formats.h"
#include "command_histogram.h"
#include "command_hot_pixels.h"
#include "command_info.h"
#include "command_line.h"
#include "command_mirror.h"
#include "command_record.h"
#include "command_rotate.h"
#include "command_simulate.h"
#include "korvel/korvel.h"
#include "library_error.h"
#include "tool_error.h"

namespace korvel::tools {
namespace {

constexpr int kFailure = 1;
constexpr int kWrongUse = 2;

std::string LibraryVersion() {
  uint32_t major = 0;
  uint32_t minor = 0;
  uint32_t subminor = 0;
  const std::string advice = "Install the library anew.";
  Require(KORVEL_Library_GetVersionMajor(&major), "read the library's version", advice);
  Require(KORVEL_Library_GetVersionMinor(&minor), "read the library's version", advice);
  Require(KORVEL_Library_GetVersionSubminor(&subminor), "read the library's version", advice);
  return "korvel " + std::to_string(major) + "." + std::to_string(minor) + "." + std::to_string(subminor);
}

int Run(int argc, char** argv) {
  CLI::App app("Looks at camera frames and image files with libkorvel.", "korvel");
  app.require_subcommand(0, 1);  // that one is needed is tested below, so that a mistyped one is told by its name
  app.set_version_flag("--version", LibraryVersion);
  app.footer(
      "Examples:\n"
      "  korvel formats\n"
      "  korvel info picture.png\n"
      "  korvel convert frame.bin frame.png --format BayerRG12p --size 2592x1536\n"
      "  korvel simulate scene.png --format RGB8 --size 1920x1080\n"
      "  korvel record video.avi --frames 50\n"
      "  korvel correct picture.png lighter.png --gamma 2.2\n"
      "  korvel histogram picture.png\n"
      "'korvel COMMAND --help' tells more.");
  AddFormatsCommand(app);
  AddInfoCommand(app);
  AddConvertCommand(app);
  AddSimulateCommand(app);
  AddRecordCommand(app);
  AddCorrectCommand(app);
  AddBinCommand(app);
  AddMirrorCommand(app);
  AddRotateCommand(app);
  AddHistogramCommand(app);
  AddLineCommand(app);
  AddHotPixelsCommand(app);

  try {
    app.parse(argc, argv);
    if (app.get_subcommands().empty()) throw CLI::RequiredError("A command");
  } catch (const CLI::ParseError& error) {
    // Asking for help is not a failure, and neither here nor there does a code of the parser's own mean anything.
    return app.exit(error) == 0 ? 0 : kWrongUse;
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
