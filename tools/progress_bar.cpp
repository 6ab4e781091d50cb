#include "progress_bar.h"

#include <unistd.h>

#include <iostream>
#include <utility>

namespace korvel::tools {

ProgressBar::ProgressBar(std::string doing, size_t total)
    : doing_(std::move(doing)), total_(total), shown_(total > 1 && ::isatty(STDERR_FILENO) == 1) {}

void ProgressBar::Show(size_t done) const {
  constexpr size_t kWidth = 40;
  if (!shown_) return;
  const size_t filled = done * kWidth / total_;
  std::cerr << "\r" << doing_ << " [" << std::string(filled, '#') << std::string(kWidth - filled, '.') << "] " << done
            << " of " << total_ << std::flush;
}

void ProgressBar::Clear() const {
  if (shown_) std::cerr << "\r\033[K" << std::flush;  // back to the line's begin, and erase to its end
}

}  // namespace korvel::tools
