// Shows how far a command has come, on a terminal; anywhere else it shows nothing.
#pragma once

#include <cstddef>
#include <string>

namespace korvel::tools {

class ProgressBar {
 public:
  // doing is one word, such as "converting". With total 1 there is nothing worth showing.
  ProgressBar(std::string doing, size_t total);
  ProgressBar(const ProgressBar&) = delete;
  ProgressBar& operator=(const ProgressBar&) = delete;
  ~ProgressBar() { Clear(); }

  // Whether it is shown at all.
  bool IsShown() const noexcept { return shown_; }

  // details stand behind the numbers.
  void Show(size_t done, const std::string& details = "") const;

  // Makes room for a line of text.
  void Clear() const;

 private:
  std::string doing_;
  size_t total_;
  bool shown_;
};

}  // namespace korvel::tools
