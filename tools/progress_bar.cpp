#include "progress_bar.h"

#include <unistd.h>

#include <algorithm>
#include <iostream>
#include <utility>

namespace korvel::tools {
namespace {

constexpr const char* kEmptyLine = "\r\033[K";  // back to the line's begin, and erase to its end

}  // namespace

ProgressBar::ProgressBar(std::string doing, size_t total)
    : doing_(std::move(doing)), total_(total), shown_(total > 1 && ::isatty(STDERR_FILENO) == 1) {}

void ProgressBar::Show(size_t done, const std::string& details) const {
  constexpr size_t kLine = 79;  // a line that is wrapped could not be written again
  constexpr size_t kMostWidth = 40;
  constexpr size_t kLeastWidth = 5;
  if (!shown_) return;
  const std::string numbers = "] " + std::to_string(done) + " of " + std::to_string(total_) + details;
  const size_t taken = std::min(doing_.size() + 2 + numbers.size(), kLine);
  const size_t width = std::clamp(kLine - taken, kLeastWidth, kMostWidth);
  const size_t filled = done * width / total_;
  std::cerr << kEmptyLine << doing_ << " [" << std::string(filled, '#') << std::string(width - filled, '.') << numbers
            << std::flush;
}

void ProgressBar::Clear() const {
  if (shown_) std::cerr << kEmptyLine << std::flush;
}

}  // namespace korvel::tools
