// The terminal on which a picture is shown, with its keys and its mouse. It is given back as it was found.
#pragma once

#include <optional>

#include "host/watch/canvas.h"

namespace watch {

class Glass {
 public:
  // Throws std::runtime_error where there is no terminal, or none that can show a picture.
  Glass();
  ~Glass();
  Glass(const Glass &) = delete;
  Glass &operator=(const Glass &) = delete;

  int rows() const;
  int columns() const;

  void show(const Canvas &canvas);
  void say(const char *sentence);  // alone

  // What was typed or clicked; nothing: no more for now.
  struct Input {
    int key = 0;  // as in desk.h; 0: a click or a new size
    bool is_click = false;
    int row = 0, column = 0;
  };
  std::optional<Input> next();

 private:
  struct State;
  State *state_ = nullptr;
};

}  // namespace watch
