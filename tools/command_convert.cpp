#include "command_convert.h"

#include <filesystem>
#include <iostream>
#include <map>
#include <memory>
#include <string>
#include <system_error>
#include <vector>

#include "batch.h"
#include "file_type.h"
#include "image_input.h"
#include "image_output.h"
#include "picture_writer.h"
#include "progress_bar.h"
#include "tool_error.h"

namespace korvel::tools {
namespace {

struct ConvertArguments {
  std::vector<std::string> paths;  // inputs; without an output folder, the last one is the output
  std::string output_folder;
  std::string ending;
  InputOptions input;
  PictureOptions picture;
};

void Convert(const std::string& input, const std::string& output, const InputOptions& options,
             const PictureWriter& writer, const ProgressBar& bar) {
  RefuseSameFile(input, output);
  const LoadedImage loaded = LoadImage(input, options);
  if (loaded.bytes_left > 0) bar.Clear();
  PrintNotes(input, loaded);
  const ImageFacts written = writer.Write(loaded.image, output);
  if (bar.IsShown()) return;  // which tells enough of many files
  PrintWritten(output, written);
  writer.PrintNotes(output, written);
}

void ConvertOne(const ConvertArguments& arguments) {
  if (!arguments.ending.empty()) throw CLI::RequiredError("--as names the files of an output folder, for which -o");
  if (arguments.paths.size() == 1) throw CLI::RequiredError("OUT, or an output folder by -o,");
  if (arguments.paths.size() > 2) throw CLI::RequiredError("For several inputs an output folder, by -o,");
  Convert(arguments.paths[0], arguments.paths[1], arguments.input, PictureWriter(arguments.picture),
          ProgressBar("converting", 1));
}

// The output of each input. Throws ToolError before anything is written if two inputs share one.
std::map<std::string, std::string> OutputPaths(const ConvertArguments& arguments) {
  const std::string ending = arguments.ending.empty() ? "png" : arguments.ending;
  if (TypeOfFile("x." + ending) == FileType::kUnknown) {
    throw ToolError("--as: there is no file type '" + ending + "'",
                    "Give one of the endings png, bmp, jpg, jpeg, raw and bin.");
  }
  std::map<std::string, std::string> inputs;
  std::map<std::string, std::string> outputs;
  for (const std::string& input : arguments.paths) {
    const std::string name = std::filesystem::path(input).stem().string() + "." + ending;
    const std::string output = (std::filesystem::path(arguments.output_folder) / name).string();
    const auto [other, is_new] = inputs.emplace(output, input);
    if (!is_new) {
      std::string problem = "'" + other->second;
      problem += "' and '" + input;
      problem += "' would both become '" + output + "'";
      throw ToolError(problem, "Convert them in two calls, to two folders.");
    }
    outputs.emplace(input, output);
  }
  return outputs;
}

void ConvertMany(const ConvertArguments& arguments) {
  const std::map<std::string, std::string> outputs = OutputPaths(arguments);
  const PictureWriter writer(arguments.picture);
  std::error_code error;
  std::filesystem::create_directories(arguments.output_folder, error);
  if (error) {
    throw ToolError("cannot make the folder '" + arguments.output_folder + "': " + error.message(),
                    "Name a folder that you can write to.");
  }
  const ProgressBar bar("converting", arguments.paths.size());
  ForEachFile(arguments.paths, bar,
              [&](const std::string& input) { Convert(input, outputs.at(input), arguments.input, writer, bar); });
  if (bar.IsShown()) {
    std::cout << "wrote " << arguments.paths.size() << " files to " << arguments.output_folder << "\n";
  }
}

}  // namespace

void AddConvertCommand(CLI::App& app) {
  CLI::App* command = app.add_subcommand("convert", "Convert image files and camera dumps to other types and formats");
  const auto arguments = std::make_shared<ConvertArguments>();
  command->add_option("IN", arguments->paths, "File to read and file to write, or with -o any number of files to read")
      ->required()
      ->type_name("OUT");
  command->add_option("-o,--output-folder", arguments->output_folder, "Where to write; it is made if it does not exist")
      ->type_name("FOLDER");
  command->add_option("--as", arguments->ending, "Type of the files in FOLDER (png)")
      ->type_name("png|bmp|jpg|jpeg|raw|bin");
  AddInputOptions(*command, arguments->input);
  AddPictureOptions(*command, arguments->picture);
  command->footer(
      std::string(
          "Takes IN and OUT; or any number of inputs with -o FOLDER, where each keeps its name but for the ending.\n"
          "\n") +
      kOutputHelp + "\n" + kInputHelp +
      "\n"
      "Modes: fast interpolates, hq is sharper at edges, classic is shifted by half a pixel. Where classic does not "
      "exist\n"
      "for a format or size, hq takes its place.\n"
      "\n"
      "Examples:\n"
      "  korvel convert frame.bin frame.png --format BayerRG12p --size 2592x1536\n"
      "  korvel convert frame.bin frame_hq.png --format BayerRG12p --size 2592x1536 --mode hq\n"
      "  korvel convert frame.bin frame_rgb12.png --format BayerRG12p --size 2592x1536 --to RGB12\n"
      "  korvel convert dump.bin grey.png --format Mono10p --size 640x480 --skip 512\n"
      "  korvel convert /dev/stdin grey.png --format Mono8 --size 640x480 < grey.bin\n"
      "  korvel convert picture.png photo.jpg --quality 90\n"
      "  korvel convert picture.png photo.jpg -o pictures --as bmp");
  command->callback([arguments] {
    if (arguments->output_folder.empty()) {
      ConvertOne(*arguments);
    } else {
      ConvertMany(*arguments);
    }
  });
}

}  // namespace korvel::tools
