// Pictures as text, for terminals.
#pragma once

#include <iosfwd>

#include "options.h"
#include "thumbnail.h"

namespace korvel::tools {

// How a terminal shows colours.
enum class TerminalColours { kTrue, k256, kNone };

// The size of the thumbnail that fills so many columns and lines: with colours a character shows two pixels, one above
// the other, and without them one that is twice as high as wide.
PictureSize TerminalBox(size_t columns, size_t lines);

// Each line ends with a line break; with colours, half blocks in UTF-8 between escapes.
void PrintPicture(std::ostream& out, const Thumbnail& picture, TerminalColours colours);

}  // namespace korvel::tools
