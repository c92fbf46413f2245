// The screens of a play as a picture that moves: an SVG of a terminal window.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/terminal/screen.h"

namespace play {

class Picture {
 public:
  // A screen, and what happens until the next one.
  // Beside it the server, in lines of which none is longer than `kServerColumns`; none: it is not drawn.
  static constexpr int kServerColumns = 80;
  void add(std::string_view caption, std::vector<std::string> rows, terminal::Size size,
           std::vector<std::string> server = {});
  void note(std::string_view sentence);

  // The same screens give the same text. Each is shown the longer the more is new on it.
  std::string svg() const;

 private:
  struct Frame {
    std::string caption;
    std::vector<std::string> rows;
    std::vector<std::string> notes;
    std::vector<std::string> server = {};
  };

  std::string style() const;
  std::string window(double width, double height) const;

  std::vector<std::string> opening_;  // what happens before the first screen
  std::vector<Frame> frames_;
  terminal::Size size_{0, 0};  // the largest
  bool has_server_ = false;
};

}  // namespace play
