#include "plot.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <sstream>

namespace korvel::tools {
namespace {

// How many steps of ten lie between the lower end of a logarithmic axis and a value.
double Decades(double value) { return value < 1 ? 0 : 1 + std::log10(value); }

}  // namespace

double HeightOf(double value, const Plot& plot) {
  if (plot.greatest_value <= 0) return 0;
  const double height = plot.logarithmic ? Decades(value) / Decades(plot.greatest_value) : value / plot.greatest_value;
  return std::clamp(height, 0.0, 1.0);
}

std::vector<double> RoundTicks(double least, double greatest, size_t wanted) {
  const double rough = (greatest - least) / static_cast<double>(wanted);
  if (!(rough > 0)) return {least};
  const double decade = std::pow(10, std::floor(std::log10(rough)));
  double step = decade;
  for (const double factor : {2.0, 5.0, 10.0}) {
    if (step < rough) step = factor * decade;
  }
  step = std::max(step, 1.0);  // what is plotted are whole numbers
  std::vector<double> ticks;
  for (double tick = std::ceil(least / step) * step; tick <= greatest + 1e-9 * step; tick += step)
    ticks.push_back(tick);
  return ticks;
}

std::vector<double> ValueTicks(const Plot& plot, size_t wanted) {
  if (!plot.logarithmic) return RoundTicks(0, plot.greatest_value, wanted);
  std::vector<double> ticks{0};
  for (double tick = 1; tick <= plot.greatest_value; tick *= 10) ticks.push_back(tick);
  return ticks;
}

std::string TickText(double value) {
  std::ostringstream text;
  text.precision(15);
  text << value;
  return text.str();
}

std::string AsCsv(const Plot& plot, const std::string& place_name) {
  std::ostringstream table;
  table.precision(15);
  table << place_name;
  std::map<size_t, std::vector<std::string>> lines;
  for (size_t column = 0; column < plot.series.size(); ++column) {
    const Series& series = plot.series[column];
    table << "," << series.name;
    for (size_t i = 0; i < series.places.size(); ++i) {
      std::vector<std::string>& line = lines[series.places[i]];
      line.resize(plot.series.size());
      line[column] = TickText(series.values[i]);
    }
  }
  table << "\n";
  for (const auto& [place, cells] : lines) {
    table << place;
    for (const std::string& cell : cells) table << "," << cell;
    table << "\n";
  }
  return table.str();
}

}  // namespace korvel::tools
