#include "command_info.h"

#include <iomanip>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "batch.h"
#include "image_input.h"
#include "progress_bar.h"
#include "samples.h"

namespace korvel::tools {
namespace {

struct InfoArguments {
  std::vector<std::string> files;
  InputOptions input;
  bool as_json = false;
};

// Two decimals, which is what people compare.
std::string Rounded(double value) {
  std::ostringstream text;
  text << std::fixed << std::setprecision(2) << value;
  return text.str();
}

void PrintText(const std::string& path, const LoadedImage& loaded, const std::vector<ColourStatistics>& statistics) {
  std::cout << path << ": " << NameOfFileType(loaded.type) << ", " << Describe(loaded.facts) << ", "
            << loaded.facts.byte_count << " bytes of pixels\n";
  std::cout << "  channel  minimum  maximum       mean\n";
  for (const ColourStatistics& row : statistics) {
    std::cout << "  " << std::left << std::setw(7) << NameOfColour(row.colour) << std::right << std::setw(9)
              << row.minimum << std::setw(9) << row.maximum << std::setw(11) << Rounded(row.mean) << "\n";
  }
}

nlohmann::ordered_json AsJson(const std::string& path, const LoadedImage& loaded,
                              const std::vector<ColourStatistics>& statistics) {
  auto channels = nlohmann::ordered_json::array();
  for (const ColourStatistics& row : statistics) {
    channels.push_back({{"name", NameOfColour(row.colour)},
                        {"samples", row.count},
                        {"minimum", row.minimum},
                        {"maximum", row.maximum},
                        {"mean", row.mean}});
  }
  return {{"file", path},
          {"type", NameOfFileType(loaded.type)},
          {"format", loaded.facts.format.name},
          {"width", loaded.facts.width},
          {"height", loaded.facts.height},
          {"byteCount", loaded.facts.byte_count},
          {"channels", channels}};
}

void Info(const InfoArguments& arguments) {
  auto files = nlohmann::ordered_json::array();
  const auto print_json = [&] {
    // A path may hold bytes that are not UTF-8, which JSON has no place for.
    if (arguments.as_json) std::cout << files.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) << "\n";
  };
  const ProgressBar bar("reading", arguments.files.size());
  try {
    ForEachFile(arguments.files, bar, [&](const std::string& path) {
      LoadedImage loaded = LoadImage(path, arguments.input);
      Unpack(loaded.image);
      const std::vector<ColourStatistics> statistics = Measure(ReadSamples(loaded.image));
      bar.Clear();
      PrintNotes(path, loaded);
      if (arguments.as_json) {
        files.push_back(AsJson(path, loaded, statistics));
      } else {
        PrintText(path, loaded, statistics);
      }
    });
  } catch (...) {
    if (!files.empty()) print_json();  // those that could be read
    throw;
  }
  print_json();
}

}  // namespace

void AddInfoCommand(CLI::App& app) {
  CLI::App* command = app.add_subcommand("info", "Tell what image files hold");
  const auto arguments = std::make_shared<InfoArguments>();
  command->add_option("IN", arguments->files, "Files to look at")->required()->type_name("FILE...");
  AddInputOptions(*command, arguments->input);
  command->add_flag("--json", arguments->as_json, "Print an array of objects in JSON");
  command->footer(std::string("Prints file type, size and pixel format, and the least, greatest and mean value of each "
                              "channel; of a Bayer\n"
                              "mosaic, those of the pixels that see each colour.\n"
                              "\n") +
                  kInputHelp +
                  "\n"
                  "Examples:\n"
                  "  korvel info picture.png\n"
                  "  korvel info picture.png photo.jpg --json\n"
                  "  korvel info frame.bin --format BayerRG12p --size 2592x1536");
  command->callback([arguments] { Info(*arguments); });
}

}  // namespace korvel::tools
