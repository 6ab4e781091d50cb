#include "command_simulate.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iostream>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "file_type.h"
#include "format_names.h"
#include "handles.h"
#include "image_output.h"
#include "korvel/korvel.h"
#include "library_error.h"
#include "options.h"
#include "progress_bar.h"
#include "simulated_camera.h"
#include "tool_error.h"

namespace korvel::tools {
namespace {

struct SimulateArguments {
  std::string output;
  std::string format;
  std::string size;
  std::string frames = "1";
  std::string noise = "1";
  std::string hot_pixels = "0";
  std::string seed = "1";
};

// The output itself for a single frame; for more, with the frame's number from 1 on.
std::string FramePath(const std::string& output, uint64_t frame, uint64_t frames) {
  if (frames == 1) return output;
  const size_t digits = std::max<size_t>(4, std::to_string(frames).size());
  std::string number = std::to_string(frame + 1);
  number.insert(0, digits - number.size(), '0');
  return InsertBeforeEnding(output, "_" + number);
}

void Simulate(const SimulateArguments& arguments) {
  constexpr uint64_t kAny = std::numeric_limits<uint64_t>::max();
  const NamedFormat format = FindFormat(arguments.format, "--format");
  const PictureSize size = ParseSensorSize(arguments.size);
  const uint64_t frames = ParseWhole("--frames", arguments.frames, 1, 1000000);
  const double noise = ParseDecimal("--noise", arguments.noise, 0, 1000);
  const uint64_t hot_pixels = ParseWhole("--hot-pixels", arguments.hot_pixels, 0, size.width * size.height);
  const uint64_t seed = ParseWhole("--seed", arguments.seed, 0, kAny);

  if (TypeOfFile(arguments.output) == FileType::kUnknown) {
    throw ToolError("'" + arguments.output + "' has an ending that no file type has",
                    std::string("The output must end in ") + kOutputEndings + ".");
  }

  const SimulatedCamera camera(
      {.format = format, .size = size, .noise = noise, .hot_pixels = hot_pixels, .seed = seed});
  const ProgressBar bar("simulating", frames);
  for (uint64_t frame = 0; frame < frames; ++frame) {
    bar.Show(frame);
    std::vector<uint8_t> bytes = camera.Pack(camera.Expose(frame));
    Image image;
    Require(
        KORVEL_Image_ConstructFromBuffer(format.id, bytes.data(), bytes.size(), size.width, size.height, image.Out()),
        "make an image of " + arguments.size + " pixels", "Check --size.");
    const std::string path = FramePath(arguments.output, frame, frames);
    WriteImage(image, path);
    if (!bar.IsShown()) PrintWritten(path, FactsOf(image));
  }
  bar.Clear();
  if (bar.IsShown()) {
    std::cout << "wrote " << frames << " frames: " << FramePath(arguments.output, 0, frames) << " and so on\n";
  }
}

}  // namespace

void AddSimulateCommand(CLI::App& app) {
  CLI::App* command = app.add_subcommand("simulate", "Make frames of a test scene as a camera would deliver them");
  const auto arguments = std::make_shared<SimulateArguments>();
  command->add_option("OUT", arguments->output, "File to write; with --frames, each name gets a number")
      ->required()
      ->type_name("FILE");
  command->add_option("--format", arguments->format, "Pixel format of the frames; 'korvel formats' lists them")
      ->required()
      ->type_name("FORMAT");
  command->add_option("--size", arguments->size, "Width and height in pixels, such as 1920x1080")
      ->required()
      ->type_name("WxH");
  command->add_option("--frames", arguments->frames, "How many frames, each with noise of its own (1)")->type_name("N");
  command->add_option("--noise", arguments->noise, "Strength of the noise: 0 is none, 1 that of a common sensor (1)")
      ->type_name("S");
  command->add_option("--hot-pixels", arguments->hot_pixels, "How many pixels glow of themselves, in all frames (0)")
      ->type_name("N");
  command
      ->add_option("--seed", arguments->seed, "Picks the noise and the hot pixels; the same seed, the same frames (1)")
      ->type_name("N");
  command->footer(
      "The scene has a colour chart, rings and lines down to single pixels, slanted edges, hues and gradients. A "
      "sensor\n"
      "with 12000 electrons at full light sees it: noise of the light and of reading, then the display's curve.\n"
      "\n"
      "OUT ends in .bin (bare pixels), .raw (the library's own file type), or in .png, .bmp, .jpg or .jpeg where that\n"
      "type takes the format.\n"
      "\n"
      "Examples:\n"
      "  korvel simulate scene.png --format RGB8 --size 1920x1080\n"
      "  korvel simulate camera.bin --format BayerRG12p --size 2592x1536 --noise 2\n"
      "  korvel simulate stream.raw --format BayerGB10g40Qrv --size 640x480 --frames 3\n"
      "  korvel simulate defects.png --format Mono12 --size 640x480 --hot-pixels 50 --seed 7");
  command->callback([arguments] { Simulate(*arguments); });
}

}  // namespace korvel::tools
