// The mode of the terminal on which spbox was started: whether typing is shown, and read line by line.
#pragma once

#include <termios.h>

namespace spbox {

class TerminalMode {
 public:
  // As it is now. Without a terminal on standard input there is none to keep.
  TerminalMode();

  // As it was found. What a killed command left is nobody else's to put right.
  void put_back() const;

 private:
  termios found_{};
  bool is_terminal_;
};

}  // namespace spbox
