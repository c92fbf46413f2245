// What a terminal showed, as a recording for the players of asciinema: version 2 of its format, a line of JSON for each event.
#pragma once

#include <chrono>
#include <string>
#include <string_view>

#include "host/terminal/screen.h"

namespace report {

class Cast {
 public:
  Cast(terminal::Size size, std::string title) : size_(size), title_(std::move(title)) {}

  // What a program wrote so long after the beginning: any bytes. What is no UTF-8 becomes a question mark of Unicode's.
  void wrote(std::chrono::milliseconds time, std::string_view bytes);
  void marks(std::chrono::milliseconds time, std::string_view label);  // a place that players go to
  void resized(std::chrono::milliseconds time, terminal::Size size);

  bool is_empty() const { return events_.empty(); }
  std::string text() const;  // all of it

 private:
  void event(std::chrono::milliseconds time, const char *kind, std::string_view data);

  terminal::Size size_;
  std::string title_, events_;
  std::string cut_;  // the front of a character whose end has not come
};

}  // namespace report
