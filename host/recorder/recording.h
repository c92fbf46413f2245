// An author operates a command in a box by hand, at the terminal of this process, and a play of it is written meanwhile.
#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "host/box/place.h"
#include "host/play/step.h"
#include "host/recorder/wording.h"
#include "host/terminal/screen.h"

namespace recorder {

struct Wanted {
  box::Place box;
  play::Words command;               // that enters the box
  play::Words start;                 // the same as a play starts it
  std::vector<play::Words> opening;  // the steps that make such a box
  std::function<Lines()> log;        // what each entry of the box's log says
};

// The window of the terminal on standard output, in sizes that a play may have.
terminal::Size window();

// Records to the command's end. The script is given to `keep` each time that it has grown; the last time it is whole. When the
// descriptor `alarm` becomes readable, and when the author's terminal is gone, the command's line is cut. The author's terminal is
// as it was, also where this throws. Returns whether the command has ended.
bool record(const Wanted &wanted, int alarm, const std::function<void(const std::string &script)> &keep);

}  // namespace recorder
