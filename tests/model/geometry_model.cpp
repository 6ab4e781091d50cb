#include "tests/model/geometry_model.h"

#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

#include "tests/model/format_table.h"

namespace korvel_test {
namespace {

struct Place {
  size_t x;
  size_t y;
};

// Where the pixel at a place of the result comes from. Places past the edges wrap, which keeps whether they are odd.
Place SourceOf(Place place, size_t width, size_t height, ModelMotion motion) {
  switch (motion) {
    case ModelMotion::kMirrorLeftRight:
      return {width - 1 - place.x, place.y};
    case ModelMotion::kMirrorUpDown:
      return {place.x, height - 1 - place.y};
    case ModelMotion::kMirrorBoth:
    case ModelMotion::kRotate180:
      return {width - 1 - place.x, height - 1 - place.y};
    case ModelMotion::kRotate90:
      return {width - 1 - place.y, place.x};
    case ModelMotion::kRotate270:
      return {place.y, height - 1 - place.x};
  }
  throw std::logic_error("no such motion");
}

constexpr std::string_view kBayer = "Bayer";

// What a mosaic has at a place. Its name tells the first two colours of the first line: one of them is green, and so is
// what lies across from it.
char ColourAt(std::string_view pattern, Place place) {
  const bool oddColumn = place.x % 2 == 1;
  const bool oddLine = place.y % 2 == 1;
  if (!oddLine) return pattern.at(oddColumn ? 1 : 0);
  const char across = pattern.at(oddColumn ? 0 : 1);
  if (across == 'G') return 'G';
  return across == 'R' ? 'B' : 'R';
}

uint32_t FormatOfName(const std::string& name) {
  for (const FormatRow& row : kFormatTable) {
    if (row.name == name) return row.id;
  }
  throw std::out_of_range("no such format");
}

}  // namespace

const char* NameOf(ModelMotion motion) {
  switch (motion) {
    case ModelMotion::kMirrorLeftRight:
      return "mirror left-right";
    case ModelMotion::kMirrorUpDown:
      return "mirror up-down";
    case ModelMotion::kMirrorBoth:
      return "mirror both ways";
    case ModelMotion::kRotate90:
      return "rotate by 90";
    case ModelMotion::kRotate180:
      return "rotate by 180";
    case ModelMotion::kRotate270:
      return "rotate by 270";
  }
  throw std::logic_error("no such motion");
}

uint32_t ModelFormatAfter(uint32_t format, size_t width, size_t height, ModelMotion motion) {
  const FormatRow& row = FormatOf(format);
  if (!row.bayer || row.packed) return format;
  const std::string_view pattern = row.name.substr(kBayer.size(), 2);
  std::string name(kBayer);
  name += ColourAt(pattern, SourceOf({0, 0}, width, height, motion));
  name += ColourAt(pattern, SourceOf({1, 0}, width, height, motion));
  name += row.name.substr(kBayer.size() + 2);
  return FormatOfName(name);
}

ModelImage ModelMove(const ModelImage& input, ModelMotion motion) {
  const bool quarter = motion == ModelMotion::kRotate90 || motion == ModelMotion::kRotate270;
  const size_t width = quarter ? input.height : input.width;
  const size_t height = quarter ? input.width : input.height;
  const size_t pixelBytes = FormatOf(input.format).storageBitsPerPixel / 8;
  std::vector<uint8_t> bytes;
  for (size_t y = 0; y < height; ++y) {
    for (size_t x = 0; x < width; ++x) {
      const Place source = SourceOf({x, y}, input.width, input.height, motion);
      for (size_t byte = 0; byte < pixelBytes; ++byte) {
        bytes.push_back(input.bytes.at((source.y * input.width + source.x) * pixelBytes + byte));
      }
    }
  }
  return MakeModelImage(ModelFormatAfter(input.format, input.width, input.height, motion), width, height,
                        std::move(bytes));
}

}  // namespace korvel_test
