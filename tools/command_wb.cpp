#include "command_wb.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <iomanip>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "colours.h"
#include "image_input.h"
#include "options.h"
#include "samples.h"
#include "tool_error.h"

namespace korvel::tools {
namespace {

constexpr unsigned kMostGain = 8;  // that the library applies

struct WbArguments {
  std::string input;
  InputOptions reading;
  std::string patch;
  bool grey_world = false;
  bool as_json = false;
};

// A rectangle of pixels.
struct Area {
  size_t left = 0;
  size_t top = 0;
  size_t width = 0;
  size_t height = 0;
};

Area ParsePatch(const std::string& text, const ImageFacts& facts) {
  const ToolError error("--patch: '" + text + "' is not a part of the " + std::to_string(facts.width) + " x " +
                            std::to_string(facts.height) + " pixels",
                        "Give the left and top edge from 0 on, width and height, such as --patch 40,30,16,16; width "
                        "and height are 2 at least.");
  std::array<size_t, 4> numbers{};
  std::istringstream words(text);
  std::string word;
  size_t count = 0;
  while (std::getline(words, word, ',')) {
    const bool is_whole =
        !word.empty() && word.size() < 10 && word.find_first_not_of("0123456789") == std::string::npos;
    if (!is_whole || count == numbers.size()) throw error;
    numbers[count++] = std::stoul(word);
  }
  if (text.ends_with(',')) throw error;
  const Area area{numbers[0], numbers[1], numbers[2], numbers[3]};
  if (count != numbers.size() || area.width < 2 || area.height < 2 || area.left + area.width > facts.width ||
      area.top + area.height > facts.height) {
    throw error;
  }
  return area;
}

// Red, green and blue.
using Gains = std::array<double, 3>;

struct Balance {
  Gains gains{};
  size_t cells = 0;          // of 2 x 2 pixels, that were counted
  size_t clipped_cells = 0;  // and that were left out, since a value that is cut off tells nothing of the colour
};

Balance Measure(const Samples& mosaic, const Area& area) {
  const unsigned maximum = (1U << mosaic.format.bits) - 1;
  std::array<uint64_t, kColourCount> sums{};
  Balance balance;
  for (size_t row = area.top; row + 2 <= area.top + area.height; row += 2) {
    for (size_t column = area.left; column + 2 <= area.left + area.width; column += 2) {
      const uint16_t* const upper = mosaic.values.data() + row * mosaic.width + column;
      const uint16_t* const lower = upper + mosaic.width;
      if (std::max({upper[0], upper[1], lower[0], lower[1]}) >= maximum) {
        ++balance.clipped_cells;
        continue;
      }
      ++balance.cells;
      const auto add = [&](uint16_t value, size_t x, size_t y) {
        sums[static_cast<size_t>(ColourAt(mosaic.format, column + x, row + y, 0))] += value;
      };
      add(upper[0], 0, 0);
      add(upper[1], 1, 0);
      add(lower[0], 0, 1);
      add(lower[1], 1, 1);
    }
  }
  if (balance.cells + balance.clipped_cells == 0) {
    throw ToolError("the image has no cell of 2 x 2 pixels", "Check --size.");
  }
  if (balance.cells == 0) {
    throw ToolError("all of it is as bright as can be, which tells no colours",
                    "Choose a darker part by --patch, or take a frame with a shorter exposure.");
  }
  const auto sum = [&](Colour colour) { return static_cast<double>(sums[static_cast<size_t>(colour)]); };
  const std::array<double, 3> means{sum(Colour::kRed), sum(Colour::kGreen) / 2, sum(Colour::kBlue)};
  const double brightest = *std::max_element(means.begin(), means.end());
  const double darkest = *std::min_element(means.begin(), means.end());
  if (darkest == 0 || brightest > kMostGain * darkest) {
    throw ToolError("one colour is more than " + std::to_string(kMostGain) +
                        " times as bright as another one, beyond what gains make up for",
                    "Choose a grey part that is neither black nor coloured, and check --format: a wrong mosaic looks "
                    "like this.");
  }
  for (size_t i = 0; i < means.size(); ++i) balance.gains[i] = brightest / means[i];
  return balance;
}

// As 'korvel correct' takes them: of all, red, green and blue.
std::string GainText(const Gains& gains) {
  std::ostringstream text;
  text << "1" << std::fixed << std::setprecision(3);
  for (const double gain : gains) text << "," << gain;
  return text.str();
}

std::string CorrectCommand(const WbArguments& arguments, const Gains& gains) {
  std::string command = "korvel correct " + ShellWord(arguments.input) + " balanced.png --to BGRa8";
  if (!arguments.reading.format.empty()) command += " --format " + arguments.reading.format;
  if (!arguments.reading.size.empty()) command += " --size " + arguments.reading.size;
  if (!arguments.reading.skip.empty()) command += " --skip " + arguments.reading.skip;
  return command + " --gain " + GainText(gains);
}

void PrintBalance(const WbArguments& arguments, const Balance& balance) {
  std::cout << std::fixed << std::setprecision(3) << "red " << balance.gains[0] << ", green " << balance.gains[1]
            << ", blue " << balance.gains[2] << " from " << balance.cells << " cells of 2 x 2 pixels";
  if (balance.clipped_cells > 0) std::cout << "; " << balance.clipped_cells << " clipped ones are left out";
  std::cout << "\n" << CorrectCommand(arguments, balance.gains) << "\n";
}

void PrintJson(const WbArguments& arguments, const Balance& balance) {
  const nlohmann::ordered_json report{{"red", balance.gains[0]},
                                      {"green", balance.gains[1]},
                                      {"blue", balance.gains[2]},
                                      {"gain", GainText(balance.gains)},
                                      {"cells", balance.cells},
                                      {"clippedCells", balance.clipped_cells},
                                      {"command", CorrectCommand(arguments, balance.gains)}};
  std::cout << report.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) << "\n";
}

void FindBalance(const WbArguments& arguments) {
  if (arguments.patch.empty() == !arguments.grey_world) throw CLI::RequiredError("Either --patch or --grey-world");
  LoadedImage loaded = LoadImage(arguments.input, arguments.reading);
  PrintNotes(arguments.input, loaded);
  if (!IsBayer(loaded.facts.format)) {
    throw ToolError("'" + arguments.input + "' is " + std::string(loaded.facts.format.name) +
                        ", and gains of colours are for Bayer images",
                    "Take the frame as the camera delivers it; --format takes a grey file for a mosaic.");
  }
  Unpack(loaded.image);
  const Area area = arguments.grey_world ? Area{0, 0, loaded.facts.width, loaded.facts.height}
                                         : ParsePatch(arguments.patch, loaded.facts);
  const Balance balance = Measure(ReadSamples(loaded.image), area);
  arguments.as_json ? PrintJson(arguments, balance) : PrintBalance(arguments, balance);
}

}  // namespace

void AddWbCommand(CLI::App& app) {
  CLI::App* command = app.add_subcommand("wb", "Find the gains for a white balance");
  const auto arguments = std::make_shared<WbArguments>();
  command->add_option("IN", arguments->input, "Bayer image to look at")->required()->type_name("FILE");
  command->add_option("--patch", arguments->patch, "A part that is grey in truth: left, top, width, height in pixels")
      ->type_name("X,Y,W,H");
  command->add_flag("--grey-world", arguments->grey_world, "Take the mean of the whole scene for grey");
  AddInputOptions(*command, arguments->reading);
  command->add_flag("--json", arguments->as_json, "Print an object in JSON");
  command->footer(std::string("Prints gains of red, green and blue that make them equal, and the command that applies "
                              "them. None is below 1, so\n"
                              "that what is white stays white. Cells of the mosaic with a value at the limit don't "
                              "count. The more of the\n"
                              "picture is of one colour, the less --grey-world is worth; a patch of paper is better.\n"
                              "\n") +
                  kInputHelp +
                  "\n"
                  "Examples:\n"
                  "  korvel wb frame.bin --format BayerRG12p --size 2592x1536 --patch 40,30,64,64\n"
                  "  korvel wb dump.bin --format BayerGB10g40Qrv --size 640x480 --skip 512 --grey-world");
  command->callback([arguments] { FindBalance(*arguments); });
}

}  // namespace korvel::tools
