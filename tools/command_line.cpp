#include "command_line.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "colours.h"
#include "file_type.h"
#include "handles.h"
#include "image_input.h"
#include "korvel/korvel.h"
#include "library_error.h"
#include "options.h"
#include "plot.h"
#include "plot_output.h"
#include "samples.h"
#include "tool_error.h"

namespace korvel::tools {
namespace {

struct LineArguments {
  std::string input;
  std::string output;
  InputOptions reading;
  std::string row;
  std::string column;
};

// The line that is asked for.
struct LinePlace {
  bool is_row = true;
  size_t offset = 0;
};

LinePlace ParsePlace(const LineArguments& arguments, const ImageFacts& facts) {
  const bool is_row = !arguments.row.empty();
  const std::string option = is_row ? "--row" : "--column";
  const size_t count = is_row ? facts.height : facts.width;
  return {is_row, ParseWhole(option, is_row ? arguments.row : arguments.column, 0, count - 1)};
}

std::vector<uint32_t> ReadValues(const PixelLine& line, size_t channel) {
  size_t size = 0;
  Require(KORVEL_PixelLine_GetValuesForChannel(line.Get(), channel, nullptr, &size), "read the line", kVersionAdvice);
  std::vector<uint32_t> values(size);
  Require(KORVEL_PixelLine_GetValuesForChannel(line.Get(), channel, values.data(), &size), "read the line",
          kVersionAdvice);
  return values;
}

// One series for each colour; along a line of a mosaic two colours take turns, which would otherwise be one zigzag.
std::vector<Series> ReadLine(const PixelLine& line, const NamedFormat& format, const LinePlace& place) {
  size_t channels = 0;
  Require(KORVEL_PixelLine_GetNumChannels(line.Get(), &channels), "read the line", kVersionAdvice);
  std::array<Series, kColourCount> by_colour;
  for (size_t channel = 0; channel < channels; ++channel) {
    const std::vector<uint32_t> values = ReadValues(line, channel);
    for (size_t i = 0; i < values.size(); ++i) {
      const Colour colour =
          place.is_row ? ColourAt(format, i, place.offset, channel) : ColourAt(format, place.offset, i, channel);
      Series& series = by_colour[static_cast<size_t>(colour)];
      series.colour = colour;
      series.places.push_back(i);
      series.values.push_back(values[i]);
    }
  }
  std::vector<Series> lines;
  for (Series& series : by_colour) {
    if (series.places.empty() || series.colour == Colour::kAlpha) continue;  // alpha is no part of what is seen
    series.name = NameOfColour(series.colour);
    lines.push_back(std::move(series));
  }
  return lines;
}

void DrawLine(const LineArguments& arguments) {
  if (arguments.row.empty() == arguments.column.empty()) throw CLI::RequiredError("Either --row or --column");
  if (!arguments.output.empty()) RefuseSameFile(arguments.input, arguments.output);
  LoadedImage loaded = LoadImage(arguments.input, arguments.reading);
  PrintNotes(arguments.input, loaded);
  Unpack(loaded.image);
  const LinePlace place = ParsePlace(arguments, loaded.facts);

  PixelLine line;
  const uint32_t orientation = place.is_row ? KORVEL_ORIENTATION_Horizontal : KORVEL_ORIENTATION_Vertical;
  Require(KORVEL_PixelLine_Construct(loaded.image.Get(), orientation, place.offset, line.Out()), "take the line",
          "Check the input with 'korvel info'.");

  Plot plot;
  plot.title = NameOfFile(arguments.input) + ", " + Describe(loaded.facts) + ", " +
               (place.is_row ? "row " : "column ") + std::to_string(place.offset);
  plot.place_label = place.is_row ? "column (pixels from the left)" : "row (pixels from the top)";
  plot.last_place = (place.is_row ? loaded.facts.width : loaded.facts.height) - 1;
  const unsigned maximum = (1U << loaded.facts.format.bits) - 1;
  plot.value_label = "value (0 to " + std::to_string(maximum) + ")";
  plot.greatest_value = maximum;
  plot.series = ReadLine(line, FactsOf(loaded.image).format, place);
  OutputPlot(plot, arguments.output, place.is_row ? "column" : "row");
}

}  // namespace

void AddLineCommand(CLI::App& app) {
  CLI::App* command = app.add_subcommand("line", "Draw the values along a row or a column");
  const auto arguments = std::make_shared<LineArguments>();
  command->add_option("IN", arguments->input, "File to look at")->required()->type_name("FILE");
  command->add_option("--row", arguments->row, "The row, from 0 at the top")->type_name("N");
  command->add_option("--column", arguments->column, "The column, from 0 at the left")->type_name("N");
  command->add_option("-o,--output", arguments->output, "File to write")->type_name("FILE");
  AddInputOptions(*command, arguments->reading);
  command->footer(std::string("Draws one curve for each channel, and for each colour that the line of a Bayer mosaic "
                              "has.\n"
                              "\n") +
                  kPlotHelp + "\n" + kInputHelp +
                  "\n"
                  "Examples:\n"
                  "  korvel line picture.png --row 20\n"
                  "  korvel line picture.png --column 7 -o line.csv\n"
                  "  korvel line frame.bin --format BayerRG12p --size 2592x1536 --row 700 -o line.svg");
  command->callback([arguments] { DrawLine(*arguments); });
}

}  // namespace korvel::tools
