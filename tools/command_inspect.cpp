#include "command_inspect.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <iomanip>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>
#include <set>
#include <sstream>
#include <string>
#include <system_error>
#include <vector>

#include "contact_sheet.h"
#include "file_type.h"
#include "format_guess.h"
#include "image_input.h"
#include "korvel/korvel.h"
#include "options.h"
#include "progress_bar.h"
#include "thumbnail.h"
#include "tool_error.h"

namespace korvel::tools {
namespace {

constexpr size_t kMostShown = 8;  // on the sheet and in the table

struct InspectArguments {
  std::string input;
  std::string size;
  std::string skip;
  std::string output;
  bool as_json = false;
};

std::string SizeText(const PictureSize& size) { return std::to_string(size.width) + "x" + std::to_string(size.height); }

Dump OpenDump(const InspectArguments& arguments) {
  std::error_code error;
  const uint64_t bytes = std::filesystem::file_size(arguments.input, error);
  if (error) {
    throw ToolError("cannot tell the size of '" + arguments.input + "': " + error.message(),
                    "Name a file that exists; what comes from a pipe or a device has to be saved first.");
  }
  return {.path = arguments.input,
          .bytes = bytes,
          .size = ParseSize(arguments.size),
          .skip = arguments.skip.empty() ? 0 : ParseSkip(arguments.skip),
          .skip_is_known = !arguments.skip.empty()};
}

// Sizes with the same width, or the same height, of which a frame takes exactly the bytes that there are. Strips that
// no sensor has the shape of would be many, and are left out.
std::string SizesThatFit(const Dump& dump) {
  const uint64_t available = dump.bytes - std::min(dump.bytes, dump.skip);
  std::set<uint64_t> tried;
  std::string sizes;
  for (const NamedFormat& format : AllFormats()) {
    const uint64_t bits = FrameBytes(format, {.width = 8, .height = 1});  // of a pixel
    if (!tried.insert(bits).second || available * 8 % bits != 0) continue;
    const uint64_t pixels = available * 8 / bits;
    for (const PictureSize& size : {PictureSize{dump.size.width, pixels / dump.size.width},
                                    PictureSize{pixels / dump.size.height, dump.size.height}}) {
      if (size.width * size.height != pixels || size.width > 4 * size.height || size.height > 4 * size.width) continue;
      sizes += (sizes.empty() ? "" : ", ") + SizeText(size) + " at " + std::to_string(bits) + " bits a pixel";
    }
  }
  if (sizes.empty()) return "No size of this width or height takes all bytes; check both, or give a header by --skip.";
  return "These sizes take all bytes: " + sizes + ".";
}

// In percent of the greatest value.
std::string Percent(double fraction) {
  std::ostringstream text;
  text << std::fixed << std::setprecision(3) << 100 * fraction;
  return text.str();
}

std::string NameAndSkip(const Guess& guess) {
  return std::string(guess.format.name) + (guess.skip > 0 ? " --skip " + std::to_string(guess.skip) : "");
}

std::string ConvertCommand(const Dump& dump, const Guess& guess) {
  return "korvel convert " + ShellWord(dump.path) + " picture.png --to " +
         std::string(PictureFormat(guess.format).name) + " --size " + SizeText(dump.size) + " --format " +
         NameAndSkip(guess);
}

void PrintTable(const Dump& dump, const Findings& findings) {
  std::cout << dump.path << ": " << dump.bytes << " bytes, " << SizeText(dump.size) << "\n\n";
  std::cout << (findings.guesses.empty() ? "No format is possible.\n" : "Rank   Score  Roughness  Format\n");
  for (size_t i = 0; i < std::min(findings.guesses.size(), kMostShown); ++i) {
    const Guess& guess = findings.guesses[i];
    std::cout << std::setw(4) << guess.rank << std::setw(8) << Percent(guess.score) << std::setw(11)
              << Percent(guess.roughness.Mean()) << "  " << NameAndSkip(guess) << "\n";
  }
  if (findings.guesses.size() > kMostShown) {
    std::cout << "      and " << findings.guesses.size() - kMostShown << " more\n";
  }
  if (!findings.refusals.empty()) std::cout << "\nNot possible:\n";
  for (const Refusal& refusal : findings.refusals) {
    std::cout << "  " << refusal.reason << ":";
    for (const NamedFormat& format : refusal.formats) std::cout << " " << format.name;
    std::cout << "\n";
  }
  if (!findings.doubts.empty()) std::cout << "\n";
  for (const std::string& doubt : findings.doubts) std::cout << doubt << "\n";
}

void PrintJson(const Dump& dump, const Findings& findings) {
  auto guesses = nlohmann::ordered_json::array();
  for (const Guess& guess : findings.guesses) {
    guesses.push_back({{"rank", guess.rank},
                       {"format", guess.format.name},
                       {"skip", guess.skip},
                       {"score", guess.score},
                       {"roughness", guess.roughness.Mean()}});
  }
  auto excluded = nlohmann::ordered_json::array();
  for (const Refusal& refusal : findings.refusals) {
    for (const NamedFormat& format : refusal.formats) {
      excluded.push_back({{"format", format.name}, {"reason", refusal.reason}});
    }
  }
  const nlohmann::ordered_json report{{"file", dump.path},          {"bytes", dump.bytes}, {"width", dump.size.width},
                                      {"height", dump.size.height}, {"guesses", guesses},  {"excluded", excluded},
                                      {"doubts", findings.doubts}};
  std::cout << report.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) << "\n";
}

void DrawSheet(const Dump& dump, const Findings& findings, const std::string& path) {
  std::vector<SheetEntry> entries;
  const size_t count = std::min(findings.guesses.size(), kMostShown);
  const ProgressBar bar("drawing", count);
  for (size_t i = 0; i < count; ++i) {
    bar.Show(i);
    const Guess& guess = findings.guesses[i];
    const LoadedImage loaded = LoadImage(
        dump.path,
        {.format = std::string(guess.format.name), .size = SizeText(dump.size), .skip = std::to_string(guess.skip)});
    entries.push_back(
        {.picture = MakeThumbnail(loaded.image, FitInto(dump.size, kSheetBox), KORVEL_CONVERSION_MODE_Fast),
         .text = std::to_string(guess.rank) + ": " + NameAndSkip(guess) + " (" + Percent(guess.score) + ")"});
  }
  bar.Clear();
  WriteSheet(entries, NameOfFile(dump.path) + ", " + SizeText(dump.size), path);
}

void Inspect(const InspectArguments& arguments) {
  if (!arguments.output.empty()) {
    RefuseSameFile(arguments.input, arguments.output);
    if (!IsPicture(TypeOfFile(arguments.output))) {
      throw ToolError("'" + arguments.output + "' has no ending of a picture",
                      "Pictures are .png, .jpg, .jpeg and .bmp files.");
    }
  }
  const Dump dump = OpenDump(arguments);
  Findings findings = GuessFormat(dump);
  const bool some_were_tried = findings.size_fits || !findings.guesses.empty();
  if (!some_were_tried) {
    throw ToolError("'" + dump.path + "' is too short for " + SizeText(dump.size) + " pixels of any format",
                    SizesThatFit(dump));
  }
  if (!findings.size_fits) {
    findings.doubts.push_back("No frame of this size takes exactly the bytes that are there. " + SizesThatFit(dump));
  }
  if (const FileType type = TypeOfFile(dump.path); IsPicture(type)) {
    findings.doubts.push_back("The name is that of a " + std::string(NameOfFileType(type)) +
                              " file, which tells its format; 'korvel info' reads it.");
  }
  arguments.as_json ? PrintJson(dump, findings) : PrintTable(dump, findings);
  if (findings.guesses.empty()) return;
  if (!arguments.output.empty()) {
    DrawSheet(dump, findings, arguments.output);
    if (!arguments.as_json) std::cout << "\nwrote " << arguments.output << "\n";
  } else if (!arguments.as_json) {
    std::cout << "\nTo see the best side by side, add -o sheet.png; to convert it:\n  "
              << ConvertCommand(dump, findings.guesses.front()) << "\n";
  }
}

}  // namespace

void AddInspectCommand(CLI::App& app) {
  CLI::App* command = app.add_subcommand("inspect", "Guess the pixel format of a dump of bare pixels");
  const auto arguments = std::make_shared<InspectArguments>();
  command->add_option("FILE", arguments->input, "File to look at")->required()->type_name("FILE");
  command->add_option("--size", arguments->size, "Width and height of the frame, such as 2592x1536")
      ->required()
      ->type_name("WxH");
  command
      ->add_option("--skip", arguments->skip, "Bytes before the first pixel (0; bytes too many are tried at both ends)")
      ->type_name("BYTES");
  command->add_option("-o,--output", arguments->output, "Picture to write, with the best guesses side by side")
      ->type_name("FILE");
  command->add_flag("--json", arguments->as_json, "Print an object in JSON");
  command->footer(
      "Reads the bytes in each format whose frames have the size of the file, and ranks these. The score is the mean\n"
      "step between neighbours of one colour, in percent of the greatest value, and what else doesn't fit: colours in\n"
      "a grey picture, or greens of a mosaic that differ. Wrong layouts give noise, and so high scores. Formats of\n"
      "one rank can't be told from each other by the bytes alone; a look at the sheet tells more, where each picture\n"
      "is brightened and its colours balanced.\n"
      "\n"
      "Examples:\n"
      "  korvel inspect dump.bin --size 640x480\n"
      "  korvel inspect dump.bin --size 640x480 --skip 512 -o sheet.png\n"
      "  korvel inspect frame.bin --size 2592x1536 --json");
  command->callback([arguments] { Inspect(*arguments); });
}

}  // namespace korvel::tools
