// Plots as pictures.
#pragma once

#include <cairo.h>

#include "plot.h"

namespace korvel::tools {

inline constexpr int kPlotWidth = 1000;
inline constexpr int kPlotHeight = 560;

// Draws a plot of this size: title, axes with ticks and labels, a curve for each series, a legend.
void DrawPlot(cairo_t* context, const Plot& plot);

}  // namespace korvel::tools
