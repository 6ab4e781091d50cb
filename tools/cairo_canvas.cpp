#include "cairo_canvas.h"

#include <cairo-svg.h>
#include <fontconfig/fontconfig.h>

#include <algorithm>
#include <array>

#include "tool_error.h"

namespace korvel::tools {
namespace {

void RequireCairo(cairo_status_t status) {
  if (status == CAIRO_STATUS_SUCCESS) return;
  throw ToolError(std::string("cannot draw: ") + cairo_status_to_string(status),
                  "Choose a smaller image, or close other programs and try again.");
}

cairo_status_t Append(void* svg, const unsigned char* bytes, unsigned count) {
  // No exception may pass through cairo.
  try {
    static_cast<std::string*>(svg)->append(reinterpret_cast<const char*>(bytes), count);
    return CAIRO_STATUS_SUCCESS;
  } catch (...) {
    return CAIRO_STATUS_NO_MEMORY;
  }
}

}  // namespace

FontCache::~FontCache() {
  cairo_debug_reset_static_data();
  FcFini();
}

CairoSurface SurfaceOver(const ImageFacts& facts) {
  constexpr size_t kLongestSide = 32767;  // cairo's own limit
  if (facts.width > kLongestSide || facts.height > kLongestSide) RequireCairo(CAIRO_STATUS_INVALID_SIZE);
  const auto width = static_cast<int>(facts.width);
  CairoSurface surface(cairo_image_surface_create_for_data(facts.bytes, CAIRO_FORMAT_ARGB32, width,
                                                           static_cast<int>(facts.height), 4 * width));
  RequireCairo(cairo_surface_status(surface.get()));
  return surface;
}

CairoSurface SvgSurface(double width, double height, std::string& svg) {
  CairoSurface surface(cairo_svg_surface_create_for_stream(Append, &svg, width, height));
  RequireCairo(cairo_surface_status(surface.get()));
  return surface;
}

CairoContext ContextOf(const CairoSurface& surface) {
  CairoContext context(cairo_create(surface.get()));
  RequireCairo(cairo_status(context.get()));
  return context;
}

std::string DrawableText(const std::string& text) {
  const CairoSurface surface(cairo_image_surface_create(CAIRO_FORMAT_A8, 1, 1));
  const CairoContext context = ContextOf(surface);
  cairo_text_extents_t extents{};
  cairo_text_extents(context.get(), text.c_str(), &extents);
  if (cairo_status(context.get()) != CAIRO_STATUS_INVALID_STRING) return text;
  std::string drawable = text;
  std::replace_if(
      drawable.begin(), drawable.end(), [](char c) { return static_cast<unsigned char>(c) >= 0x80; }, '?');
  return drawable;
}

void Finish(const CairoSurface& surface, const CairoContext& context) {
  RequireCairo(cairo_status(context.get()));
  cairo_surface_finish(surface.get());
  RequireCairo(cairo_surface_status(surface.get()));
}

DrawingColour DrawingColourOf(Colour colour) {
  constexpr std::array<DrawingColour, kColourCount> kColours{{
      {0.25, 0.25, 0.25},
      {0.84, 0.15, 0.16},
      {0.13, 0.59, 0.20},
      {0.12, 0.38, 0.80},
      {0.58, 0.40, 0.74},
  }};
  return kColours[static_cast<size_t>(colour)];
}

void SetColour(cairo_t* context, const DrawingColour& colour, double opacity) {
  cairo_set_source_rgba(context, colour.red, colour.green, colour.blue, opacity);
}

}  // namespace korvel::tools
