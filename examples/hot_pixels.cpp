// Hot pixels of a sensor, learnt once and corrected from then on:
//
//   hot_pixels learn LIST.json DARK...     finds them in images that were taken with the lens covered
//   hot_pixels correct LIST.json IN OUT    corrects them in an image of the same camera
#include <algorithm>
#include <cstdio>
#include <fstream>
#include <korvel/korvel.hpp>
#include <map>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace {

// Noise makes a pixel hot in one frame; a defect does in most of them.
std::vector<korvel::Point> Learn(const std::vector<std::string>& darkFrames) {
  korvel::AdaptiveHotpixelCorrector corrector;
  corrector.SetSensitivity(4);
  std::map<std::pair<size_t, size_t>, size_t> seen;  // by row and column
  for (const std::string& path : darkFrames) {
    corrector.Detect(korvel::Image::Read(path));
    for (const korvel::Point& point : corrector.Hotpixels()) ++seen[{point.y, point.x}];
  }
  std::vector<korvel::Point> hotpixels;
  for (const auto& [position, count] : seen) {
    if (2 * count > darkFrames.size()) hotpixels.push_back({position.second, position.first});
  }
  return hotpixels;
}

void WriteList(const std::string& path, const std::vector<korvel::Point>& hotpixels) {
  nlohmann::json list = nlohmann::json::array();
  for (const korvel::Point& point : hotpixels) list.push_back({{"x", point.x}, {"y", point.y}});
  std::ofstream file(path);
  file << nlohmann::json{{"hotPixels", list}}.dump(2) << '\n';
  if (!file.flush()) throw std::runtime_error(path + " can't be written");
}

std::vector<korvel::Point> ReadList(const std::string& path) {
  std::ifstream file(path);
  if (!file) throw std::runtime_error(path + " can't be opened");
  std::vector<korvel::Point> hotpixels;
  const nlohmann::json document = nlohmann::json::parse(file);
  for (const nlohmann::json& point : document.at("hotPixels")) {
    hotpixels.push_back({point.at("x"), point.at("y")});
  }
  return hotpixels;
}

}  // namespace

int main(int argc, char** argv) {
  const std::vector<std::string> arguments(argv + 1, argv + argc);
  try {
    if (arguments.size() >= 3 && arguments[0] == "learn") {
      const auto hotpixels = Learn({arguments.begin() + 2, arguments.end()});
      WriteList(arguments[1], hotpixels);
      std::printf("%zu hot pixels\n", hotpixels.size());
    } else if (arguments.size() == 4 && arguments[0] == "correct") {
      korvel::AdaptiveHotpixelCorrector corrector;
      corrector.Correct(korvel::Image::Read(arguments[2]), ReadList(arguments[1])).Write(arguments[3]);
    } else {
      std::fprintf(stderr, "usage: hot_pixels learn LIST.json DARK... | hot_pixels correct LIST.json IN OUT\n");
      return 2;
    }
  } catch (const std::exception& error) {
    std::fprintf(stderr, "hot_pixels: %s\n", error.what());
    return 1;
  }
  return 0;
}
