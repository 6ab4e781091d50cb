// A plot of values over numbers, as data: what is drawn, printed or written as a table.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "colours.h"

namespace korvel::tools {

// The values of one channel at places along the horizontal axis, which are whole numbers and ascend.
struct Series {
  std::string name{};
  std::string remark{};  // what the legend adds to the name
  Colour colour{};
  std::vector<size_t> places{};
  std::vector<double> values{};
};

enum class PlotStyle { kBars, kLine };

struct Plot {
  std::string title{};
  std::string place_label{};  // of the axes, with units
  std::string value_label{};
  PlotStyle style = PlotStyle::kLine;
  bool logarithmic = false;  // the values' axis
  size_t first_place = 0;    // the part of the horizontal axis that is shown, both included
  size_t last_place = 0;
  double greatest_value = 0;  // the upper end of the values' axis
  std::vector<Series> series{};
};

// Of an axis of values: where a value lies, from 0 at the lower end to 1 at the upper one. On a logarithmic axis the
// values below 1 lie at the lower end, and 1 a step above it.
double HeightOf(double value, const Plot& plot);

// Round numbers for an axis from least to greatest, about as many as wanted.
std::vector<double> RoundTicks(double least, double greatest, size_t wanted);

// Those of the values' axis: powers of ten on a logarithmic one.
std::vector<double> ValueTicks(const Plot& plot, size_t wanted);

// The number without needless digits.
std::string TickText(double value);

// A table with a line for each place and a column for each series.
std::string AsCsv(const Plot& plot, const std::string& place_name);

}  // namespace korvel::tools
