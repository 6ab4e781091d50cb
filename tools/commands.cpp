#include "commands.h"

#include <cstdint>
#include <memory>
#include <string>

#include "command_bin.h"
#include "command_convert.h"
#include "command_correct.h"
#include "command_formats.h"
#include "command_histogram.h"
#include "command_hot_pixels.h"
#include "command_info.h"
#include "command_inspect.h"
#include "command_line.h"
#include "command_mirror.h"
#include "command_record.h"
#include "command_repair_avi.h"
#include "command_rotate.h"
#include "command_simulate.h"
#include "command_view.h"
#include "command_wb.h"
#include "korvel/korvel.h"
#include "library_error.h"

namespace korvel::tools {
namespace {

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

}  // namespace

std::unique_ptr<CLI::App> MakeCommands() {
  auto commands = std::make_unique<CLI::App>("Looks at camera frames and image files with libkorvel.", "korvel");
  CLI::App& app = *commands;
  app.require_subcommand(0, 1);  // that one is needed is tested later, so that a mistyped one is told by its name
  app.set_version_flag("--version", LibraryVersion);
  app.footer(
      "Examples:\n"
      "  korvel formats\n"
      "  korvel info picture.png\n"
      "  korvel view picture.png\n"
      "  korvel inspect dump.bin --size 640x480\n"
      "  korvel convert frame.bin frame.png --format BayerRG12p --size 2592x1536\n"
      "  korvel simulate scene.png --format RGB8 --size 1920x1080\n"
      "  korvel record video.avi --frames 50\n"
      "  korvel correct picture.png lighter.png --gamma 2.2\n"
      "  korvel histogram picture.png\n"
      "'korvel COMMAND --help' tells more.");
  AddFormatsCommand(app);
  AddInfoCommand(app);
  AddInspectCommand(app);
  AddViewCommand(app);
  AddConvertCommand(app);
  AddSimulateCommand(app);
  AddRecordCommand(app);
  AddRepairAviCommand(app);
  AddWbCommand(app);
  AddCorrectCommand(app);
  AddBinCommand(app);
  AddMirrorCommand(app);
  AddRotateCommand(app);
  AddHistogramCommand(app);
  AddLineCommand(app);
  AddHotPixelsCommand(app);
  return commands;
}

}  // namespace korvel::tools
