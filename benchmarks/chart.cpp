#include "benchmarks/chart.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <fstream>
#include <map>
#include <stdexcept>

namespace korvel::benchmarks {
namespace {

// In pixels.
constexpr int kMargin = 12;
constexpr int kNameWidth = 330;
constexpr int kBarsWidth = 360;  // of one size
constexpr int kGap = 70;         // for the figures beside bars
constexpr int kRowHeight = 26;
constexpr int kBarHeight = 9;
constexpr int kHeadHeight = 64;

constexpr const char* kOurColour = "#1f6fb4";
constexpr const char* kPeerColour = "#a0a0a0";
constexpr const char* kLimitColour = "#c0392b";

std::string Figure(double value) {
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%.3g", value);
  return text.data();
}

class Drawing {
 public:
  explicit Drawing(std::ostream& out) : out_(out) {}

  void Text(int x, int y, const std::string& text, const char* colour = "#222222") {
    out_ << "<text x=\"" << x << "\" y=\"" << y << "\" fill=\"" << colour << "\">" << text << "</text>\n";
  }

  void Bar(int x, int y, double width, int height, const char* colour) {
    out_ << "<rect x=\"" << x << "\" y=\"" << y << "\" width=\"" << Figure(width) << "\" height=\"" << height
         << "\" fill=\"" << colour << "\"/>\n";
  }

 private:
  std::ostream& out_;
};

void DrawResult(Drawing& drawing, const Result& result, int x, int y) {
  const double longest = std::max(result.time, std::max(result.peer.value_or(0), result.limit.value_or(0)));
  const auto width = [&](double time) { return kBarsWidth * time / longest; };
  const auto bar = [&](double time, int top, const char* colour) {
    drawing.Bar(x, top, width(time), kBarHeight, colour);
    drawing.Text(x + static_cast<int>(width(time)) + 4, top + kBarHeight, Figure(time), colour);
  };
  bar(result.time, y, kOurColour);
  if (result.peer) bar(*result.peer, y + kBarHeight + 1, kPeerColour);
  if (result.limit) {
    drawing.Bar(x + static_cast<int>(width(*result.limit)) - 1, y - 2, 2, 2 * kBarHeight + 4, kLimitColour);
  }
}

}  // namespace

void WriteChart(const std::string& path, const std::vector<Result>& results) {
  std::vector<std::string> operations;
  std::vector<std::string> sizes;
  const auto addOnce = [](std::vector<std::string>& names, const std::string& name) {
    if (std::find(names.begin(), names.end(), name) == names.end()) names.push_back(name);
  };
  for (const Result& result : results) {
    addOnce(operations, result.operation);
    addOnce(sizes, result.size);
  }
  const auto columnAt = [](size_t column) {
    return kMargin + kNameWidth + static_cast<int>(column) * (kBarsWidth + kGap);
  };
  const int width = columnAt(sizes.size()) + kMargin;
  const int height = kHeadHeight + static_cast<int>(operations.size()) * kRowHeight + kMargin;

  std::ofstream out(path);
  out << R"(<svg xmlns="http://www.w3.org/2000/svg" font-family="sans-serif" font-size="11" width=")" << width
      << "\" height=\"" << height << "\">\n";
  Drawing drawing(out);
  drawing.Bar(0, 0, width, height, "#ffffff");
  drawing.Text(kMargin, 24, "Nanoseconds per pixel (per call for work without pixels), each row on a scale of its own");
  drawing.Text(kMargin, 44, "libkorvel", kOurColour);
  drawing.Text(kMargin + 60, 44, "fastest peer", "#808080");
  drawing.Text(kMargin + 140, 44, "memory limit", kLimitColour);
  for (size_t i = 0; i < sizes.size(); ++i) drawing.Text(columnAt(i), 44, sizes[i]);
  for (size_t row = 0; row < operations.size(); ++row) {
    const int y = kHeadHeight + static_cast<int>(row) * kRowHeight;
    drawing.Text(kMargin, y + kBarHeight + 4, operations[row]);
    for (const Result& result : results) {
      if (result.operation != operations[row]) continue;
      const auto column = std::find(sizes.begin(), sizes.end(), result.size) - sizes.begin();
      DrawResult(drawing, result, columnAt(static_cast<size_t>(column)), y);
    }
  }
  out << "</svg>\n";
  if (!out.flush()) throw std::runtime_error("cannot write " + path);
}

}  // namespace korvel::benchmarks
