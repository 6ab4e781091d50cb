#include "command_hot_pixels.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iomanip>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>
#include <numbers>
#include <string>
#include <vector>

#include "cairo_canvas.h"
#include "file_type.h"
#include "handles.h"
#include "image_input.h"
#include "image_output.h"
#include "korvel/korvel.h"
#include "library_error.h"
#include "options.h"
#include "samples.h"
#include "tool_error.h"

namespace korvel::tools {
namespace {

struct HotPixelsArguments {
  std::string input;
  std::string output;
  InputOptions reading;
  std::string level = "3";
  bool as_json = false;
};

std::vector<KORVEL_POINT_2D> Detect(const Image& image, uint32_t level) {
  constexpr const char* kDoing = "detect hot pixels";
  constexpr const char* kAdvice = "Hot pixels are those of a sensor: of mono and Bayer images.";
  HotpixelCorrector corrector;
  Require(KORVEL_AdaptiveHotpixelCorrector_Construct(corrector.Out()), kDoing, kMemoryAdvice);
  Require(KORVEL_AdaptiveHotpixelCorrector_SetSensitivity(corrector.Get(), level), kDoing, "Check --level.");
  Require(KORVEL_AdaptiveHotpixelCorrector_Detect(corrector.Get(), image.Get()), kDoing, kAdvice);
  size_t count = 0;
  Require(KORVEL_AdaptiveHotpixelCorrector_GetHotpixels(corrector.Get(), nullptr, &count), kDoing, kAdvice);
  std::vector<KORVEL_POINT_2D> points(count);
  if (count > 0) {
    Require(KORVEL_AdaptiveHotpixelCorrector_GetHotpixels(corrector.Get(), points.data(), &count), kDoing, kAdvice);
  }
  return points;
}

void PrintText(const std::vector<KORVEL_POINT_2D>& points, const Samples& samples, const std::string& level) {
  std::cout << points.size() << (points.size() == 1 ? " hot pixel" : " hot pixels") << " at level " << level << "\n";
  if (points.empty()) return;
  std::cout << "       x       y   value\n";
  for (const KORVEL_POINT_2D& point : points) {
    std::cout << std::setw(8) << point.x << std::setw(8) << point.y << std::setw(8)
              << samples.values[point.y * samples.width + point.x] << "\n";
  }
}

void PrintJson(const std::vector<KORVEL_POINT_2D>& points, const Samples& samples) {
  auto rows = nlohmann::ordered_json::array();
  for (const KORVEL_POINT_2D& point : points) {
    rows.push_back({{"x", point.x}, {"y", point.y}, {"value", samples.values[point.y * samples.width + point.x]}});
  }
  std::cout << rows.dump(2) << "\n";
}

// A ring around each pixel that leaves it and its neighbours to be seen.
void WriteOverlay(const Image& image, const std::vector<KORVEL_POINT_2D>& points, const std::string& path) {
  constexpr double kRadius = 5;
  Image picture;
  Require(
      KORVEL_Image_ConvertTo(image.Get(), KORVEL_PIXEL_FORMAT_BGRa8, KORVEL_CONVERSION_MODE_HighQuality, picture.Out()),
      "make a picture of the image", "Leave -o out.");
  const ImageFacts facts = FactsOf(picture);
  const CairoSurface surface = SurfaceOver(facts);
  const CairoContext context = ContextOf(surface);
  SetColour(context.get(), {1.0, 0.2, 0.2});
  cairo_set_line_width(context.get(), 1.5);
  for (const KORVEL_POINT_2D& point : points) {
    cairo_new_path(context.get());
    cairo_arc(context.get(), static_cast<double>(point.x) + 0.5, static_cast<double>(point.y) + 0.5, kRadius, 0,
              2 * std::numbers::pi);
    cairo_stroke(context.get());
  }
  Finish(surface, context);
  WriteImage(picture, path);
}

void HotPixels(const HotPixelsArguments& arguments) {
  const uint32_t level = ParseHotPixelLevel("--level", arguments.level);
  if (!arguments.output.empty()) {
    RefuseSameFile(arguments.input, arguments.output);
    if (!IsPicture(TypeOfFile(arguments.output))) {
      throw ToolError("'" + arguments.output + "' has no ending that a picture can have",
                      "Pictures are .png, .jpg, .jpeg and .bmp files.");
    }
  }
  LoadedImage loaded = LoadImage(arguments.input, arguments.reading);
  PrintNotes(arguments.input, loaded);
  Unpack(loaded.image);

  const std::vector<KORVEL_POINT_2D> points = Detect(loaded.image, level);
  const Samples samples = ReadSamples(loaded.image);
  if (!arguments.output.empty()) WriteOverlay(loaded.image, points, arguments.output);
  if (arguments.as_json) {
    PrintJson(points, samples);
  } else {
    PrintText(points, samples, arguments.level);
    if (!arguments.output.empty()) PrintWritten(arguments.output, loaded.facts);
  }
}

}  // namespace

void AddHotPixelsCommand(CLI::App& app) {
  CLI::App* command = app.add_subcommand("hot-pixels", "List the hot pixels of a frame");
  const auto arguments = std::make_shared<HotPixelsArguments>();
  command->add_option("IN", arguments->input, "File to look at, of a mono or Bayer format")
      ->required()
      ->type_name("FILE");
  command->add_option("--level", arguments->level, "1 finds the fewest, 5 the most (3)")->type_name("1..5");
  command->add_flag("--json", arguments->as_json, "Print an array of objects in JSON");
  command->add_option("-o,--output", arguments->output, "Picture to write, with a ring around each hot pixel")
      ->type_name("FILE");
  AddInputOptions(*command, arguments->reading);
  command->footer(std::string("Hot pixels are brighter than all their neighbours of the same colour by more than noise "
                              "explains. 'korvel correct\n"
                              "--hot-pixels LEVEL' replaces them.\n"
                              "\n") +
                  kInputHelp +
                  "\n"
                  "Examples:\n"
                  "  korvel hot-pixels defects.png\n"
                  "  korvel hot-pixels defects.png --level 1 -o marked.png\n"
                  "  korvel hot-pixels frame.bin --format BayerRG12p --size 2592x1536 --json");
  command->callback([arguments] { HotPixels(*arguments); });
}

}  // namespace korvel::tools
