// One piece of work for each of many files, where one that fails doesn't hold up the others.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "progress_bar.h"

namespace korvel::tools {

// Calls work for each path. A single path's ToolError is passed on. Of several, each is printed and the rest goes on;
// in the end ToolError tells how many failed.
void ForEachFile(const std::vector<std::string>& paths, const ProgressBar& bar,
                 const std::function<void(const std::string& path)>& work);

}  // namespace korvel::tools
