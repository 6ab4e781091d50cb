// What the documents show, each drawn or written anew from what the library answers. Paths end in a slash.
#pragma once

#include <string>

namespace korvel::tools {

// Where the library fails here, it isn't the one that the figures were written for.
inline constexpr const char* kBuildAdvice = "Build anew.";

// PNG files of the test scene: a frame beside its picture, the conversion modes, their borders, a white balance.
void DrawCameraPictures(const std::string& folder);

// Which colour each pixel of a mosaic sees, for the four phases.
void DrawPhases(const std::string& folder);

// The bits of each packed layout.
void DrawLayouts(const std::string& folder);

// The library's folders.
void DrawArchitecture(const std::string& folder);

// Which formats convert to which and by which stages, as a table of Markdown.
void WriteConversionTable(const std::string& folder);

}  // namespace korvel::tools
