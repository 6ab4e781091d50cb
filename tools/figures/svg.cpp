#include "figures/svg.h"

#include <cstdint>
#include <vector>

#include "pixel_file.h"

namespace korvel::tools {
namespace {

// name="value", with a blank in front.
std::string Attribute(std::string_view name, std::string_view value) {
  std::string text(" ");
  text += name;
  text += "=\"";
  text += value;
  text += '"';
  return text;
}

std::string Attribute(std::string_view name, int value) { return Attribute(name, std::to_string(value)); }

}  // namespace

SvgDrawing::SvgDrawing(int width, int height)
    : text_("<svg xmlns=\"http://www.w3.org/2000/svg\"" + Attribute("width", width) + Attribute("height", height) +
            Attribute("viewBox", "0 0 " + std::to_string(width) + " " + std::to_string(height)) +
            " font-family=\"sans-serif\">\n"
            "<defs><marker id=\"head\" viewBox=\"0 0 8 8\" refX=\"8\" refY=\"4\" markerWidth=\"8\" markerHeight=\"8\" "
            "orient=\"auto\"><path d=\"M0 0L8 4L0 8z\" fill=\"#333333\"/></marker></defs>\n") {
  // Pages may be dark, the drawings' lines are too.
  Rectangle({0, 0, width, height}, "#ffffff", "none");
}

void SvgDrawing::Rectangle(const Box& box, std::string_view fill, std::string_view stroke, int stroke_width) {
  text_ += "<rect" + Attribute("x", box.x) + Attribute("y", box.y) + Attribute("width", box.width) +
           Attribute("height", box.height) + Attribute("fill", fill) + Attribute("stroke", stroke) +
           Attribute("stroke-width", stroke_width) + "/>\n";
}

void SvgDrawing::Text(const Place& centre, std::string_view text, int size, std::string_view fill) {
  AddText(centre, text, size, fill, "middle");
}

void SvgDrawing::TextFrom(const Place& left, std::string_view text, int size) {
  AddText(left, text, size, "#111111", "start");
}

void SvgDrawing::AddText(const Place& place, std::string_view text, int size, std::string_view fill,
                         std::string_view anchor) {
  // The baseline lies about a third of the size below the middle of the letters.
  text_ += "<text" + Attribute("x", place.x) + Attribute("y", place.y + size / 3) + Attribute("font-size", size) +
           Attribute("fill", fill) + Attribute("text-anchor", anchor) + ">";
  text_ += text;
  text_ += "</text>\n";
}

void SvgDrawing::Arrow(const Place& from, const Place& to) {
  text_ += "<line" + Attribute("x1", from.x) + Attribute("y1", from.y) + Attribute("x2", to.x) + Attribute("y2", to.y) +
           Attribute("stroke", "#333333") + Attribute("marker-end", "url(#head)") + "/>\n";
}

void SvgDrawing::Write(const std::string& path) const {
  const std::string whole = text_ + "</svg>\n";
  const std::vector<uint8_t> bytes(whole.begin(), whole.end());
  WriteBytes(path, bytes.data(), bytes.size());
}

}  // namespace korvel::tools
