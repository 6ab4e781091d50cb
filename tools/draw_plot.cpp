#include "draw_plot.h"

#include <algorithm>
#include <numbers>
#include <string>

#include "cairo_canvas.h"

namespace korvel::tools {
namespace {

constexpr DrawingColour kWhite{1, 1, 1};
constexpr DrawingColour kInk{0.15, 0.15, 0.15};
constexpr DrawingColour kGrid{0.88, 0.88, 0.88};
constexpr double kTextSize = 14;

// The area inside of the axes.
constexpr double kLeft = 92;
constexpr double kRight = kPlotWidth - 28;
constexpr double kTop = 52;
constexpr double kBottom = kPlotHeight - 66;

double Vertical(double value, const Plot& plot) { return kBottom - HeightOf(value, plot) * (kBottom - kTop); }

// Where places lie: each has a cell of its own, which bars fill and lines pass in the middle.
class PlaceAxis {
 public:
  explicit PlaceAxis(const Plot& plot)
      : first_(static_cast<double>(plot.first_place)),
        cell_((kRight - kLeft) / (static_cast<double>(plot.last_place) - first_ + 1)) {}

  double Middle(double place) const { return kLeft + (place - first_ + 0.5) * cell_; }
  double Cell() const { return cell_; }

 private:
  double first_;
  double cell_;
};

enum class Align { kBegin, kMiddle, kEnd };

void Text(cairo_t* context, double x, double y, const std::string& text, Align align) {
  cairo_text_extents_t extents{};
  cairo_text_extents(context, text.c_str(), &extents);
  const double shift = align == Align::kBegin ? 0 : align == Align::kMiddle ? extents.x_advance / 2 : extents.x_advance;
  cairo_move_to(context, x - shift, y);
  cairo_show_text(context, text.c_str());
}

void Stroke(cairo_t* context, double x1, double y1, double x2, double y2) {
  cairo_move_to(context, x1, y1);
  cairo_line_to(context, x2, y2);
  cairo_stroke(context);
}

void DrawAxes(cairo_t* context, const Plot& plot, const PlaceAxis& axis) {
  cairo_set_line_width(context, 1);
  for (const double tick : ValueTicks(plot, 6)) {
    const double y = Vertical(tick, plot);
    SetColour(context, kGrid);
    Stroke(context, kLeft, y, kRight, y);
    SetColour(context, kInk);
    Text(context, kLeft - 10, y + kTextSize / 3, TickText(tick), Align::kEnd);
  }
  for (const double tick : RoundTicks(static_cast<double>(plot.first_place), static_cast<double>(plot.last_place), 8)) {
    const double x = axis.Middle(tick);
    SetColour(context, kGrid);
    Stroke(context, x, kTop, x, kBottom);
    SetColour(context, kInk);
    Stroke(context, x, kBottom, x, kBottom + 6);
    Text(context, x, kBottom + 22, TickText(tick), Align::kMiddle);
  }
  SetColour(context, kInk);
  Stroke(context, kLeft, kTop, kLeft, kBottom);
  Stroke(context, kLeft, kBottom, kRight, kBottom);

  Text(context, (kLeft + kRight) / 2, kBottom + 50, plot.place_label, Align::kMiddle);
  cairo_save(context);
  cairo_translate(context, 22, (kTop + kBottom) / 2);
  cairo_rotate(context, -std::numbers::pi / 2);
  Text(context, 0, 0, plot.value_label, Align::kMiddle);
  cairo_restore(context);
}

bool IsShown(const Plot& plot, size_t place) { return place >= plot.first_place && place <= plot.last_place; }

void DrawBars(cairo_t* context, const Plot& plot, const PlaceAxis& axis, const Series& series) {
  cairo_new_path(context);
  cairo_move_to(context, kLeft, kBottom);
  for (size_t i = 0; i < series.places.size(); ++i) {
    if (!IsShown(plot, series.places[i])) continue;
    const double x = axis.Middle(static_cast<double>(series.places[i]));
    const double y = Vertical(series.values[i], plot);
    cairo_line_to(context, x - axis.Cell() / 2, y);
    cairo_line_to(context, x + axis.Cell() / 2, y);
  }
  cairo_line_to(context, kRight, kBottom);
  SetColour(context, DrawingColourOf(series.colour), 0.22);
  cairo_fill_preserve(context);
  SetColour(context, DrawingColourOf(series.colour));
  cairo_set_line_width(context, 1.2);
  cairo_stroke(context);
}

void DrawLine(cairo_t* context, const Plot& plot, const PlaceAxis& axis, const Series& series) {
  cairo_new_path(context);
  for (size_t i = 0; i < series.places.size(); ++i) {
    cairo_line_to(context, axis.Middle(static_cast<double>(series.places[i])), Vertical(series.values[i], plot));
  }
  SetColour(context, DrawingColourOf(series.colour));
  cairo_set_line_width(context, 1.2);
  cairo_stroke(context);
}

// To the right of the title, from the last series on the right to the first.
void DrawLegend(cairo_t* context, const Plot& plot) {
  double right = kRight;
  for (auto series = plot.series.rbegin(); series != plot.series.rend(); ++series) {
    const std::string text = series->remark.empty() ? series->name : series->name + " (" + series->remark + ")";
    cairo_text_extents_t extents{};
    cairo_text_extents(context, text.c_str(), &extents);
    SetColour(context, kInk);
    Text(context, right, kTop - 12, text, Align::kEnd);
    const double mark = right - extents.x_advance - 20;
    SetColour(context, DrawingColourOf(series->colour));
    cairo_rectangle(context, mark, kTop - 22, 13, 11);
    cairo_fill(context);
    right = mark - 18;
  }
}

}  // namespace

void DrawPlot(cairo_t* context, const Plot& plot) {
  SetColour(context, kWhite);
  cairo_paint(context);
  cairo_set_line_join(context, CAIRO_LINE_JOIN_ROUND);
  cairo_select_font_face(context, "sans-serif", CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_NORMAL);
  cairo_set_font_size(context, kTextSize);

  const PlaceAxis axis(plot);
  DrawAxes(context, plot, axis);
  for (const Series& series : plot.series) {
    if (plot.style == PlotStyle::kBars) {
      DrawBars(context, plot, axis, series);
    } else {
      DrawLine(context, plot, axis, series);
    }
  }
  DrawLegend(context, plot);
  SetColour(context, kInk);
  cairo_select_font_face(context, "sans-serif", CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_BOLD);
  Text(context, kLeft, 22, DrawableText(plot.title), Align::kBegin);
}

}  // namespace korvel::tools
