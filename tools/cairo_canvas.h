// Drawing with cairo, with owners for its objects and its failures as exceptions.
#pragma once

#include <cairo.h>

#include <memory>
#include <string>

#include "colours.h"
#include "image_facts.h"

namespace korvel::tools {

struct CairoDeleter {
  void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
  void operator()(cairo_t* context) const { cairo_destroy(context); }
};
using CairoSurface = std::unique_ptr<cairo_surface_t, CairoDeleter>;
using CairoContext = std::unique_ptr<cairo_t, CairoDeleter>;

// Ends with what cairo and its source of fonts keep for further drawings, which checkers of memory would take for
// leaks. Outlives all surfaces and contexts of its time.
class FontCache {
 public:
  FontCache() = default;
  FontCache(const FontCache&) = delete;
  FontCache& operator=(const FontCache&) = delete;
  ~FontCache();
};

// A surface over the pixels of an opaque image of format BGRa8, which is one of cairo's own. The image outlives it.
// Throws ToolError.
CairoSurface SurfaceOver(const ImageFacts& facts);

// A surface whose drawing becomes the text of an SVG file, which is whole once the surface is finished. Throws
// ToolError.
CairoSurface SvgSurface(double width, double height, std::string& svg);

// Throws ToolError.
CairoContext ContextOf(const CairoSurface& surface);

// What cairo draws of a text, such as the name of a file: all of it if it is UTF-8, else its ASCII characters, and a
// question mark for each other byte. A text that is no UTF-8 would end the drawing.
std::string DrawableText(const std::string& text);

// Ends the drawing. Throws ToolError if anything in it has failed.
void Finish(const CairoSurface& surface, const CairoContext& context);

struct DrawingColour {
  double red;
  double green;
  double blue;
};

// That in which a channel is drawn, on white.
DrawingColour DrawingColourOf(Colour colour);

void SetColour(cairo_t* context, const DrawingColour& colour, double opacity = 1);

}  // namespace korvel::tools
