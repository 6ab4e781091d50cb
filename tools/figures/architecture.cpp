#include "figures/figures.h"
#include "figures/svg.h"

namespace korvel::tools {
namespace {

struct Folder {
  Box box;
  const char* name;
  const char* purpose;
  const char* fill;
};

// Each box stands on those that it depends on.
constexpr Folder kFolders[] = {
    {{20, 64, 680, 52}, "api/", "exported functions, handles, the last error", "#f3c98b"},
    {{20, 124, 330, 52}, "processing/", "conversion, correction, geometry, measure", "#b6dda0"},
    {{358, 124, 166, 52}, "io/", "BMP, PNG, JPEG, RAW", "#b6dda0"},
    {{532, 124, 168, 52}, "video/", "queue, worker, MJPEG", "#b6dda0"},
    {{20, 184, 504, 52}, "buffers/", "memory of images, pools", "#9ec9f0"},
    {{532, 184, 168, 52}, "avi/", "chunks, headers, index", "#9ec9f0"},
    {{20, 244, 680, 52}, "core/", "pixel formats, images, the way from a format to compiled code", "#9ec9f0"},
    {{20, 304, 680, 52}, "status/", "status codes, exceptions, the system log", "#dddddd"},
};

}  // namespace

void DrawArchitecture(const std::string& folder) {
  SvgDrawing drawing(720, 372);
  drawing.Rectangle({20, 12, 680, 36}, "#ffffff");
  drawing.Text({360, 30}, "applications, tools/, examples/: korvel.h and korvel.hpp");
  drawing.Arrow({360, 48}, {360, 64});
  for (const Folder& each : kFolders) {
    drawing.Rectangle(each.box, each.fill);
    const int middle = each.box.x + each.box.width / 2;
    drawing.Text({middle, each.box.y + 18}, each.name, 15);
    drawing.Text({middle, each.box.y + 37}, each.purpose, 12);
  }
  drawing.Write(folder + "architecture.svg");
}

}  // namespace korvel::tools
