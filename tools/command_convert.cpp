#include "command_convert.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <iostream>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

#include "batch.h"
#include "file_type.h"
#include "format_names.h"
#include "handles.h"
#include "image_input.h"
#include "image_output.h"
#include "korvel/korvel.h"
#include "library_error.h"
#include "options.h"
#include "progress_bar.h"

namespace korvel::tools {
namespace {

struct ConvertArguments {
  std::vector<std::string> paths;  // inputs; without an output folder, the last one is the output
  std::string output_folder;
  std::string ending;
  InputOptions input;
  std::string to;
  std::string mode = "fast";
  std::string quality;
};

// "Mono8, BGR8, ...": what a format converts to. Empty where the library has no answer.
std::string OutputFormats(const ImageConverter& converter, const NamedFormat& input) {
  size_t count = 0;
  if (KORVEL_ImageConverter_GetSupportedOutputPixelFormats(converter.Get(), input.id, nullptr, &count) !=
      KORVEL_RETURN_CODE_Success) {
    return {};
  }
  std::vector<uint32_t> ids(count);
  if (ids.empty() || KORVEL_ImageConverter_GetSupportedOutputPixelFormats(converter.Get(), input.id, ids.data(),
                                                                          &count) != KORVEL_RETURN_CODE_Success) {
    return {};
  }
  std::string names;
  for (const uint32_t id : ids) names += (names.empty() ? "" : ", ") + NameOfFormat(id);
  return names;
}

// What is written of an image whose own format the file type doesn't take: 8 bits, and colour where it has colour.
NamedFormat PictureFormat(const NamedFormat& format) {
  return UnpackedFormat(IsBayer(format) ? PixelFamily::kBGRa : format.family, 8);
}

// Whether files of this type are made to be looked at.
bool IsPicture(FileType type) { return type == FileType::kBmp || type == FileType::kJpeg || type == FileType::kPng; }

// Converts files, one after the other, and keeps what they can share.
class FileConverter {
 public:
  explicit FileConverter(const ConvertArguments& arguments) : arguments_(arguments) {
    if (!arguments.to.empty()) to_ = FindFormat(arguments.to, "--to");
    if (!arguments.quality.empty()) {
      quality_ = static_cast<uint32_t>(ParseWhole("--quality", arguments.quality, 0, 100));
    }
    Require(KORVEL_ImageConverter_Construct(converter_.Out()), "make a converter",
            "Close other programs and try again.");
    Require(KORVEL_ImageConverter_SetConversionMode(converter_.Get(), ParseMode(arguments.mode)), "set the mode",
            "Check --mode.");
  }

  void Convert(const std::string& input, const std::string& output, const ProgressBar& bar) const {
    RefuseSameFile(input, output);
    const LoadedImage loaded = LoadImage(input, arguments_.input);
    if (loaded.bytes_left > 0) bar.Clear();
    PrintNotes(input, loaded);

    if (!to_) {
      const KORVEL_RETURN_CODE code = TryWriteImage(loaded.image, output, quality_);
      if (code == KORVEL_RETURN_CODE_Success) {
        Tell(output, loaded.facts, bar);
        if (IsBayer(loaded.facts.format) && IsPicture(TypeOfFile(output))) {
          bar.Clear();
          std::cerr << "korvel: note: '" << output << "' shows the bare mosaic of " << loaded.facts.format.name
                    << "; --to BGRa8 makes colours of it\n";
        }
        return;
      }
      if (code != KORVEL_RETURN_CODE_ImageFormatNotSupported) throw WriteError(code, output);
    }
    const Image picture = ConvertTo(to_.value_or(PictureFormat(loaded.facts.format)), loaded);
    WriteImage(picture, output, quality_);
    Tell(output, FactsOf(picture), bar);
  }

 private:
  Image ConvertTo(const NamedFormat& format, const LoadedImage& loaded) const {
    Image picture;
    const KORVEL_RETURN_CODE code =
        KORVEL_ImageConverter_Convert(converter_.Get(), loaded.image.Get(), format.id, picture.Out());
    if (code == KORVEL_RETURN_CODE_Success) return picture;
    const NamedFormat& from = loaded.facts.format;
    const ToolError error =
        LibraryError(code, "convert " + std::string(from.name) + " to " + std::string(format.name), "");
    const std::string formats = OutputFormats(converter_, from);
    throw ToolError(error.what(),
                    formats.empty() ? "Choose another format by --to." : "Choose by --to: " + formats + ".");
  }

  // A bar tells enough of many files.
  static void Tell(const std::string& output, const ImageFacts& facts, const ProgressBar& bar) {
    if (!bar.IsShown()) PrintWritten(output, facts);
  }

  const ConvertArguments& arguments_;
  std::optional<NamedFormat> to_;
  std::optional<uint32_t> quality_;
  ImageConverter converter_;
};

void ConvertOne(const ConvertArguments& arguments) {
  if (!arguments.ending.empty()) throw CLI::RequiredError("--as names the files of an output folder, for which -o");
  if (arguments.paths.size() == 1) throw CLI::RequiredError("OUT, or an output folder by -o,");
  if (arguments.paths.size() > 2) throw CLI::RequiredError("For several inputs an output folder, by -o,");
  FileConverter(arguments).Convert(arguments.paths[0], arguments.paths[1], ProgressBar("converting", 1));
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
  const FileConverter converter(arguments);
  std::error_code error;
  std::filesystem::create_directories(arguments.output_folder, error);
  if (error) {
    throw ToolError("cannot make the folder '" + arguments.output_folder + "': " + error.message(),
                    "Name a folder that you can write to.");
  }
  const ProgressBar bar("converting", arguments.paths.size());
  ForEachFile(arguments.paths, bar,
              [&](const std::string& input) { converter.Convert(input, outputs.at(input), bar); });
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
  command->add_option("--as", arguments->ending, "Type of the files in FOLDER: png, bmp, jpg, jpeg, raw or bin (png)")
      ->type_name("ENDING");
  AddInputOptions(*command, arguments->input);
  command->add_option("--to", arguments->to, "Pixel format of OUT (that of IN where the file type takes it)")
      ->type_name("FORMAT");
  command->add_option("--mode", arguments->mode, "How Bayer images become colour: fast, hq or classic (fast)")
      ->type_name("MODE");
  command
      ->add_option("--quality", arguments->quality,
                   "JPEG: 0 smallest to 100 best (75); PNG: 10 smallest to 100 fastest, the same picture (100)")
      ->type_name("0..100");
  command->footer(
      std::string(
          "The ending of OUT tells its type: .png, .bmp, .jpg, .jpeg, .raw (the library's own, with any format) "
          "or .bin\n"
          "(bare pixels). Without --to, a format that the type doesn't take becomes 8 bits: BGRa8 from Bayer, "
          "Mono8 from\n"
          "mono. A Bayer format that it takes stays a mosaic, which looks like a grey picture; --to BGRa8 makes "
          "colours.\n"
          "\n") +
      kInputHelp +
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
