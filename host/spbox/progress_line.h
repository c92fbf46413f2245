// A line at the end of what is printed, which is written over as things go on. Only a terminal gets it.
#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <vector>

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

// How far many plays are, on such a line.
class ProgressOfPlays {
 public:
  explicit ProgressOfPlays(std::size_t all, std::string what = "play") : all_(all), what_(std::move(what)) {}

  void awaits(std::size_t all) { all_ = all; }  // more or fewer than was thought
  void begins(const std::string &name) { at_work_.push_back(name); }
  void ends(const std::string &name);
  void counts(bool is_wrong);  // one more is done
  void show();
  void clear() { line_.clear(); }
  std::chrono::milliseconds time() const;  // since the beginning

 private:
  std::chrono::steady_clock::time_point begin_ = std::chrono::steady_clock::now();
  std::size_t all_, done_ = 0, wrong_ = 0;
  std::string what_;  // one of them
  std::vector<std::string> at_work_;
  ProgressLine line_;
};

}  // namespace spbox
