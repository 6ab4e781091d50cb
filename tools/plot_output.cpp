#include "plot_output.h"

#include <cstddef>
#include <cstdint>
#include <iostream>
#include <optional>

#include "cairo_canvas.h"
#include "draw_plot.h"
#include "file_type.h"
#include "handles.h"
#include "image_output.h"
#include "korvel/korvel.h"
#include "library_error.h"
#include "pixel_file.h"
#include "terminal.h"
#include "terminal_plot.h"
#include "tool_error.h"

namespace korvel::tools {
namespace {

void WriteText(const std::string& path, const std::string& text) {
  WriteBytes(path, reinterpret_cast<const uint8_t*>(text.data()), text.size());
  std::cout << "wrote " << path << "\n";
}

void WriteSvg(const Plot& plot, const std::string& path) {
  std::string svg;
  const CairoSurface surface = SvgSurface(kPlotWidth, kPlotHeight, svg);
  const CairoContext context = ContextOf(surface);
  DrawPlot(context.get(), plot);
  Finish(surface, context);
  WriteText(path, svg);
}

void WritePlotPicture(const Plot& plot, const std::string& path) {
  Image image;
  Require(KORVEL_Image_Construct(KORVEL_PIXEL_FORMAT_BGRa8, kPlotWidth, kPlotHeight, image.Out()), "make a picture",
          kMemoryAdvice);
  const ImageFacts facts = FactsOf(image);
  const CairoSurface surface = SurfaceOver(facts);
  const CairoContext context = ContextOf(surface);
  DrawPlot(context.get(), plot);
  Finish(surface, context);
  WriteImage(image, path);
  PrintWritten(path, facts);
}

}  // namespace

void OutputPlot(const Plot& plot, const std::string& path, const std::string& place_name) {
  if (path.empty()) {
    constexpr size_t kCommonColumns = 80;
    const std::optional<TerminalSize> terminal = SizeOfTerminal();
    PrintPlot(std::cout, plot, terminal ? terminal->columns : kCommonColumns, TakesColours());
    return;
  }
  const FontCache fonts;
  const std::string ending = EndingOf(path);
  if (ending == ".svg") {
    WriteSvg(plot, path);
  } else if (ending == ".csv") {
    WriteText(path, AsCsv(plot, place_name));
  } else if (IsPicture(TypeOfFile(path))) {
    WritePlotPicture(plot, path);
  } else {
    throw ToolError("'" + path + "' has no ending that a plot can have",
                    "Plots are .svg, .png, .jpg, .jpeg, .bmp and .csv files.");
  }
}

}  // namespace korvel::tools
