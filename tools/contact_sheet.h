// A page of small pictures with a line of text below each.
#pragma once

#include <string>
#include <vector>

#include "options.h"
#include "thumbnail.h"

namespace korvel::tools {

// The box that a picture of the sheet has.
inline constexpr PictureSize kSheetBox{.width = 320, .height = 240};

struct SheetEntry {
  Thumbnail picture{};
  std::string text{};
};

// Writes the sheet as a picture. There is an entry at least, and their pictures have one size. Each entry is
// brightened, and its colours balanced, on its own, so that dark frames and those without white balance can be judged.
// Throws ToolError.
void WriteSheet(const std::vector<SheetEntry>& entries, const std::string& title, const std::string& path);

}  // namespace korvel::tools
