// The mode of the terminal on which this process was started: whether typing is shown, and read line by line.
#pragma once

#include <termios.h>

namespace terminal {

class OwnMode {
 public:
  // As it is now. Without a terminal on standard input there is none to keep.
  OwnMode();

  // As it was found. What a killed command left is nobody else's to put right.
  void put_back() const;

  // Each key comes as it is and at once, and is not shown; what is written goes to the terminal as it is.
  void make_raw() const;

 private:
  void set(const termios &attributes) const;

  termios found_{};
  bool is_terminal_;
};

}  // namespace terminal
