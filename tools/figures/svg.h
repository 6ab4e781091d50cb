// Drawings as the text of an SVG file: what a machine draws doesn't depend on its fonts.
#pragma once

#include <string>
#include <string_view>

namespace korvel::tools {

struct Place {
  int x = 0;
  int y = 0;
};

struct Box {
  int x = 0;
  int y = 0;
  int width = 0;
  int height = 0;
};

class SvgDrawing {
 public:
  SvgDrawing(int width, int height);

  void Rectangle(const Box& box, std::string_view fill, std::string_view stroke = "#333333", int stroke_width = 1);
  // centre is that of the line of text.
  void Text(const Place& centre, std::string_view text, int size = 13, std::string_view fill = "#111111");
  void TextFrom(const Place& left, std::string_view text, int size = 13);
  void Arrow(const Place& from, const Place& to);

  void Write(const std::string& path) const;

 private:
  void AddText(const Place& place, std::string_view text, int size, std::string_view fill, std::string_view anchor);

  std::string text_;
};

}  // namespace korvel::tools
