// A line at the end of what is printed, which is written over as things go on. Only a terminal gets it.
#pragma once

#include <cstddef>
#include <string>

namespace spbox {

class ProgressLine {
 public:
  ProgressLine();
  ~ProgressLine() { clear(); }
  ProgressLine(const ProgressLine &) = delete;
  ProgressLine &operator=(const ProgressLine &) = delete;

  std::size_t width() const;  // 0: nobody sees it
  void show(const std::string &line);
  void clear();  // before something else is printed

 private:
  bool is_seen_;
  bool is_shown_ = false;
};

}  // namespace spbox
