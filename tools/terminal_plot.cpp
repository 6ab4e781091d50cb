#include "terminal_plot.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iomanip>
#include <ostream>
#include <string>
#include <string_view>

namespace korvel::tools {
namespace {

constexpr size_t kMostColumns = 64;
constexpr size_t kLeastColumns = 8;
constexpr size_t kRows = 6;
constexpr size_t kMargin = 9;  // in front of the values' axis
constexpr size_t kAxis = 2;

// A cell from empty to full, in eighths.
constexpr std::array<std::string_view, 9> kBlocks{" ", "▁", "▂", "▃", "▄", "▅", "▆", "▇", "█"};

std::string_view Escape(Colour colour) {
  constexpr std::array<std::string_view, kColourCount> kEscapes{"", "\033[31m", "\033[32m", "\033[34m", "\033[35m"};
  return kEscapes[static_cast<size_t>(colour)];
}

// The mean of the values that fall on each column; what has none takes that of the column before.
std::vector<double> ColumnMeans(const Plot& plot, const Series& series, size_t most_columns) {
  const size_t places = plot.last_place - plot.first_place + 1;
  const size_t columns = std::min(most_columns, places);
  std::vector<double> sums(columns);
  std::vector<size_t> counts(columns);
  for (size_t i = 0; i < series.places.size(); ++i) {
    if (series.places[i] < plot.first_place || series.places[i] > plot.last_place) continue;
    const size_t column = (series.places[i] - plot.first_place) * columns / places;
    sums[column] += series.values[i];
    ++counts[column];
  }
  std::vector<double> means(columns);
  for (size_t column = 0; column < columns; ++column) {
    means[column] = counts[column] > 0 ? sums[column] / static_cast<double>(counts[column])
                    : column > 0       ? means[column - 1]
                                       : 0;
  }
  return means;
}

void PrintSeries(std::ostream& out, const Plot& plot, const Series& series, size_t columns, bool in_colour) {
  const std::vector<double> means = ColumnMeans(plot, series, columns);
  Plot scale = plot;  // each series has its own, so that none is crushed by another
  scale.greatest_value = std::max(1.0, std::ceil(*std::max_element(means.begin(), means.end())));
  if (plot.style == PlotStyle::kLine) scale.greatest_value = plot.greatest_value;

  out << series.name << (series.remark.empty() ? "" : ", " + series.remark) << "\n";
  for (size_t row = 0; row < kRows; ++row) {
    const std::string label = row == 0 ? TickText(scale.greatest_value) : row + 1 == kRows ? "0" : "";
    out << std::setw(kMargin) << label << (label.empty() ? " │" : " ┤") << (in_colour ? Escape(series.colour) : "");
    for (const double mean : means) {
      const double eighths = HeightOf(mean, scale) * kRows * 8 - static_cast<double>(8 * (kRows - 1 - row));
      out << kBlocks[static_cast<size_t>(std::lround(std::clamp(eighths, 0.0, 8.0)))];
    }
    out << (in_colour ? "\033[0m" : "") << "\n";
  }
  const std::string first = std::to_string(plot.first_place);
  const std::string last = std::to_string(plot.last_place);
  out << std::string(kMargin + kAxis, ' ') << first
      << std::string(std::max<size_t>(means.size(), first.size() + last.size() + 1) - first.size() - last.size(), ' ')
      << last << "\n";
}

}  // namespace

void PrintPlot(std::ostream& out, const Plot& plot, size_t columns, bool in_colour) {
  const size_t room = columns - std::min(columns, kMargin + kAxis);
  out << plot.title << "\n" << plot.value_label << " over " << plot.place_label << "\n\n";
  const size_t width = std::clamp(room, kLeastColumns, kMostColumns);
  for (const Series& series : plot.series) PrintSeries(out, plot, series, width, in_colour);
}

}  // namespace korvel::tools
