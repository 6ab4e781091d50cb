#include "command_view.h"

#include <algorithm>
#include <cstddef>
#include <iostream>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "image_input.h"
#include "options.h"
#include "terminal.h"
#include "terminal_picture.h"
#include "thumbnail.h"
#include "tool_error.h"

namespace korvel::tools {
namespace {

struct ViewArguments {
  std::string input;
  InputOptions reading;
  std::string mode = "fast";
  std::string width;
  std::string colours = "auto";
};

TerminalColours ColoursOfTerminal() {
  const std::string_view announced = EnvironmentVariable("COLORTERM");
  if (!TakesColours()) return TerminalColours::kNone;
  return announced == "truecolor" || announced == "24bit" ? TerminalColours::kTrue : TerminalColours::k256;
}

TerminalColours ParseColours(const std::string& text) {
  if (text == "auto") return ColoursOfTerminal();
  if (text == "true") return TerminalColours::kTrue;
  if (text == "256") return TerminalColours::k256;
  if (text == "none") return TerminalColours::kNone;
  throw ToolError("--colours: there is no choice '" + text + "'", "The choices are auto, true, 256 and none.");
}

// The room for a picture: the terminal without the line that it asks for the next command on. A width that is asked
// for may take as many lines as it needs, and so may what goes into a file.
PictureSize Room(const std::string& width) {
  constexpr size_t kCommonColumns = 80;
  constexpr size_t kAnyLines = std::numeric_limits<size_t>::max() / 2;
  if (!width.empty()) return TerminalBox(ParseWhole("--width", width, 1, 10000), kAnyLines);
  const std::optional<TerminalSize> terminal = SizeOfTerminal();
  if (!terminal) return TerminalBox(kCommonColumns, kAnyLines);
  return TerminalBox(terminal->columns, std::max<size_t>(1, terminal->lines - 1));
}

void View(const ViewArguments& arguments) {
  const KORVEL_CONVERSION_MODE mode = ParseMode(arguments.mode);
  const TerminalColours colours = ParseColours(arguments.colours);
  const PictureSize room = Room(arguments.width);
  const LoadedImage loaded = LoadImage(arguments.input, arguments.reading);
  PrintNotes(arguments.input, loaded);
  const PictureSize size = FitInto({loaded.facts.width, loaded.facts.height}, room);
  PrintPicture(std::cout, MakeThumbnail(loaded.image, size, mode), colours);
}

}  // namespace

void AddViewCommand(CLI::App& app) {
  CLI::App* command = app.add_subcommand("view", "Show a picture in the terminal");
  const auto arguments = std::make_shared<ViewArguments>();
  command->add_option("IN", arguments->input, "File to show")->required()->type_name("FILE");
  command->add_option("--width", arguments->width, "Columns to fill at most (those of the terminal)")->type_name("N");
  command->add_option("--colours", arguments->colours, "Colours to use (auto)")->type_name("auto|true|256|none");
  command->add_option("--mode", arguments->mode, "How Bayer images become colour (fast)")->type_name("fast|hq|classic");
  AddInputOptions(*command, arguments->reading);
  command->footer(std::string("Each character shows two pixels, one above the other, so that the picture fits the "
                              "terminal. True colours where the\n"
                              "variable COLORTERM announces them, else 256; characters from dark to light where the "
                              "output is no terminal, or\n"
                              "NO_COLOR is set.\n"
                              "\n") +
                  kInputHelp +
                  "\n"
                  "Examples:\n"
                  "  korvel view picture.png\n"
                  "  korvel view frame.bin --format BayerRG12p --size 2592x1536 --mode hq\n"
                  "  korvel view picture.png --width 40 --colours none");
  command->callback([arguments] { View(*arguments); });
}

}  // namespace korvel::tools
