#include "contact_sheet.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "cairo_canvas.h"
#include "handles.h"
#include "image_facts.h"
#include "image_output.h"
#include "korvel/korvel.h"
#include "library_error.h"
#include "tool_error.h"

namespace korvel::tools {
namespace {

constexpr size_t kMostColumns = 4;
constexpr size_t kGap = 16;
constexpr size_t kTextHeight = 26;
constexpr size_t kTitleHeight = 40;
constexpr double kTextSize = 14;

// The value that so many in a hundred of all are below.
float Percentile(std::vector<float>& values, size_t percent) {
  const auto place = values.begin() + static_cast<std::ptrdiff_t>(values.size() * percent / 100);
  std::nth_element(values.begin(), place, values.end());
  return *place;
}

// The darkest value becomes black and the mean grey; then the brightest white, and the mean a middle grey. Some hot
// pixels and dead ones don't count.
void Brighten(Thumbnail& picture) {
  std::vector<float> values;
  values.reserve(3 * picture.pixels.size());
  for (const auto& pixel : picture.pixels) values.insert(values.end(), pixel.begin(), pixel.end());
  const float black = Percentile(values, 1);

  std::array<double, 3> means{};
  for (auto& pixel : picture.pixels) {
    for (size_t i = 0; i < means.size(); ++i) {
      pixel[i] = std::max(pixel[i] - black, 0.0F);
      means[i] += pixel[i] / static_cast<double>(picture.pixels.size());
    }
  }
  constexpr double kMostGain = 8;
  constexpr double kLeast = 1e-6;  // of what is divided by
  const double grey = std::max(*std::max_element(means.begin(), means.end()), kLeast);
  values.clear();
  for (auto& pixel : picture.pixels) {
    for (size_t i = 0; i < means.size(); ++i)
      pixel[i] *= static_cast<float>(grey / std::max(means[i], grey / kMostGain));
    values.push_back(*std::max_element(pixel.begin(), pixel.end()));
  }
  const double white = std::max(static_cast<double>(Percentile(values, 99)), kLeast);

  constexpr double kMiddleGrey = 0.45;
  const double exponent = std::clamp(std::log(kMiddleGrey) / std::log(std::clamp(grey / white, 0.01, 0.99)), 0.3, 1.0);
  for (auto& pixel : picture.pixels) {
    for (float& value : pixel) {
      value = static_cast<float>(std::pow(std::min(static_cast<double>(value) / white, 1.0), exponent));
    }
  }
}

void CopyTo(const ImageFacts& sheet, const Thumbnail& picture, size_t left, size_t top) {
  for (size_t row = 0; row < picture.height; ++row) {
    uint8_t* to = sheet.bytes + 4 * ((top + row) * sheet.width + left);
    for (size_t column = 0; column < picture.width; ++column) {
      const std::array<float, 3>& pixel = picture.pixels[row * picture.width + column];
      for (const size_t channel : {2U, 1U, 0U}) *to++ = static_cast<uint8_t>(std::lround(pixel[channel] * 255));
      *to++ = 255;
    }
  }
}

void Write(cairo_t* context, size_t left, size_t base, const std::string& text) {
  cairo_move_to(context, static_cast<double>(left), static_cast<double>(base));
  cairo_show_text(context, text.c_str());
}

}  // namespace

void WriteSheet(const std::vector<SheetEntry>& entries, const std::string& title, const std::string& path) {
  const size_t columns = std::min(entries.size(), kMostColumns);
  const size_t rows = (entries.size() + columns - 1) / columns;
  const size_t cell_width = kSheetBox.width + kGap;
  const size_t picture_height = entries.front().picture.height;
  const size_t cell_height = picture_height + kTextHeight + kGap;

  Image image;
  Require(KORVEL_Image_Construct(KORVEL_PIXEL_FORMAT_BGRa8, kGap + columns * cell_width,
                                 kTitleHeight + rows * cell_height, image.Out()),
          "make a picture", kMemoryAdvice);
  const ImageFacts facts = FactsOf(image);
  const FontCache fonts;
  const CairoSurface surface = SurfaceOver(facts);
  const CairoContext context = ContextOf(surface);
  SetColour(context.get(), {1, 1, 1});
  cairo_paint(context.get());
  SetColour(context.get(), {0.15, 0.15, 0.15});
  cairo_select_font_face(context.get(), "sans-serif", CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_BOLD);
  cairo_set_font_size(context.get(), kTextSize);
  Write(context.get(), kGap, kTitleHeight - kGap, DrawableText(title));
  cairo_select_font_face(context.get(), "sans-serif", CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_NORMAL);
  for (size_t i = 0; i < entries.size(); ++i) {
    const size_t left = kGap + i % columns * cell_width;
    const size_t top = kTitleHeight + i / columns * cell_height;
    Write(context.get(), left, top + picture_height + kTextHeight - 8, entries[i].text);
  }
  Finish(surface, context);

  for (size_t i = 0; i < entries.size(); ++i) {
    Thumbnail picture = entries[i].picture;
    Brighten(picture);
    const size_t left = kGap + i % columns * cell_width;
    const size_t top = kTitleHeight + i / columns * cell_height;
    CopyTo(facts, picture, left, top);
  }
  WriteImage(image, path);
}

}  // namespace korvel::tools
