#include "command_histogram.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iomanip>
#include <memory>
#include <numeric>
#include <sstream>
#include <string>
#include <vector>

#include "colours.h"
#include "file_type.h"
#include "handles.h"
#include "image_input.h"
#include "korvel/korvel.h"
#include "library_error.h"
#include "plot.h"
#include "plot_output.h"
#include "samples.h"
#include "tool_error.h"

namespace korvel::tools {
namespace {

constexpr const char* kDoing = "read the histogram";

struct HistogramArguments {
  std::string input;
  std::string output;
  InputOptions reading;
  bool logarithmic = false;
};

std::string Mean(const Histogram& histogram, size_t channel) {
  uint64_t sum = 0;
  uint64_t count = 0;
  Require(KORVEL_Histogram_GetPixelSumForChannel(histogram.Get(), channel, &sum), kDoing, kVersionAdvice);
  Require(KORVEL_Histogram_GetPixelCountForChannel(histogram.Get(), channel, &count), kDoing, kVersionAdvice);
  std::ostringstream text;
  text << "mean " << std::fixed << std::setprecision(1) << static_cast<double>(sum) / static_cast<double>(count);
  return text.str();
}

Series ReadChannel(const Histogram& histogram, const NamedFormat& format, size_t channel) {
  size_t size = 0;
  Require(KORVEL_Histogram_GetBinsForChannel(histogram.Get(), channel, nullptr, &size), kDoing, kVersionAdvice);
  std::vector<uint64_t> bins(size);
  Require(KORVEL_Histogram_GetBinsForChannel(histogram.Get(), channel, bins.data(), &size), kDoing, kVersionAdvice);

  Series series;
  series.colour = ColourOfChannel(format, channel);
  series.name = IsBayer(format) ? "all colours" : NameOfColour(series.colour);
  series.remark = Mean(histogram, channel);
  series.places.resize(size);
  std::iota(series.places.begin(), series.places.end(), size_t{0});
  series.values.assign(bins.begin(), bins.end());
  return series;
}

// Shows the values that occur, with some room around them, unless they fill most of the axis anyway.
void ChoosePlaces(Plot& plot) {
  const size_t end = plot.series.front().places.size();
  size_t least = end;
  size_t greatest = 0;
  for (const Series& series : plot.series) {
    for (size_t value = 0; value < end; ++value) {
      if (series.values[value] <= 0) continue;
      least = std::min(least, value);
      greatest = std::max(greatest, value);
    }
  }
  plot.first_place = 0;
  plot.last_place = end - 1;
  if (least > greatest || greatest - least + 1 > end / 2) return;
  const size_t room = std::max<size_t>((greatest - least) / 16, 2);
  plot.first_place = least - std::min(least, room);
  plot.last_place = std::min(greatest + room, end - 1);
}

void DrawHistogram(const HistogramArguments& arguments) {
  if (!arguments.output.empty()) RefuseSameFile(arguments.input, arguments.output);
  LoadedImage loaded = LoadImage(arguments.input, arguments.reading);
  PrintNotes(arguments.input, loaded);
  Unpack(loaded.image);

  Histogram histogram;
  Require(KORVEL_Histogram_Construct(loaded.image.Get(), histogram.Out()), "make a histogram",
          "Check the input with 'korvel info'.");
  size_t channels = 0;
  Require(KORVEL_Histogram_GetNumChannels(histogram.Get(), &channels), kDoing, kVersionAdvice);

  Plot plot;
  plot.title = NameOfFile(arguments.input) + ", " + Describe(loaded.facts);
  plot.place_label = "value (0 to " + std::to_string((1U << loaded.facts.format.bits) - 1) + ")";
  plot.value_label = arguments.logarithmic ? "number of pixels, logarithmic" : "number of pixels";
  plot.style = PlotStyle::kBars;
  plot.logarithmic = arguments.logarithmic;
  for (size_t channel = 0; channel < channels; ++channel) {
    const NamedFormat format = FactsOf(loaded.image).format;
    if (ColourOfChannel(format, channel) == Colour::kAlpha) continue;  // which is no part of what is seen
    plot.series.push_back(ReadChannel(histogram, format, channel));
    const std::vector<double>& values = plot.series.back().values;
    plot.greatest_value = std::max(plot.greatest_value, *std::max_element(values.begin(), values.end()));
  }
  std::sort(plot.series.begin(), plot.series.end(),
            [](const Series& a, const Series& b) { return a.colour < b.colour; });
  if (!plot.logarithmic) plot.greatest_value *= 1.04;  // so that the highest bar doesn't touch the edge
  ChoosePlaces(plot);
  OutputPlot(plot, arguments.output, "value");
}

}  // namespace

void AddHistogramCommand(CLI::App& app) {
  CLI::App* command = app.add_subcommand("histogram", "Draw how often each value occurs");
  const auto arguments = std::make_shared<HistogramArguments>();
  command->add_option("IN", arguments->input, "File to look at")->required()->type_name("FILE");
  command->add_option("-o,--output", arguments->output, "File to write")->type_name("FILE");
  command->add_flag("--log", arguments->logarithmic, "Draw the numbers on a logarithmic axis, which shows rare values");
  AddInputOptions(*command, arguments->reading);
  command->footer(std::string("Draws one curve for each channel; the colours of a Bayer mosaic are counted together. "
                              "The axis shows the values that\n"
                              "occur.\n"
                              "\n") +
                  kPlotHelp + "\n" + kInputHelp +
                  "\n"
                  "Examples:\n"
                  "  korvel histogram picture.png\n"
                  "  korvel histogram picture.png -o histogram.svg\n"
                  "  korvel histogram frame.bin --format BayerRG12p --size 2592x1536 --log -o histogram.png");
  command->callback([arguments] { DrawHistogram(*arguments); });
}

}  // namespace korvel::tools
