#include "batch.h"

#include <CLI/Error.hpp>
#include <cstddef>

#include "tool_error.h"

namespace korvel::tools {

void ForEachFile(const std::vector<std::string>& paths, const ProgressBar& bar,
                 const std::function<void(const std::string& path)>& work) {
  size_t done = 0;
  size_t failed = 0;
  for (const std::string& path : paths) {
    bar.Show(done++);
    try {
      work(path);
    } catch (const ToolError& error) {
      if (paths.size() == 1) throw;
      bar.Clear();
      PrintError(error);
      ++failed;
    } catch (const CLI::Error& error) {
      // An option that this file alone would need.
      if (paths.size() == 1) throw;
      bar.Clear();
      PrintError(ToolError(path + ": " + error.what(), "Other files don't need it; give it in a call of its own."));
      ++failed;
    }
  }
  bar.Clear();
  if (failed > 0) {
    throw ToolError(std::to_string(failed) + " of " + std::to_string(paths.size()) + " files failed",
                    "The messages above tell why; the other files are done.");
  }
}

}  // namespace korvel::tools
