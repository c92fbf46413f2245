// Tells what happens in a play: in the transcript and, as far as it belongs there, in the picture.
#pragma once

#include <string>
#include <vector>

#include "host/play/picture.h"
#include "host/play/transcript.h"
#include "host/terminal/screen.h"

namespace play {

class Narrator {
 public:
  explicit Narrator(Transcript &transcript, Picture &picture) : transcript_(transcript), picture_(picture) {}

  void happens(const std::string &sentence);  // between two screens
  void remarks(const std::string &sentence);  // not for the picture

  // What somebody did, and what was printed at it.
  void happens(const std::string &sentence, const std::string &output);
  void remarks(const std::string &sentence, const std::string &output);

  void shows(const std::string &caption, const std::vector<std::string> &rows, terminal::Size size);

 private:
  Transcript &transcript_;
  Picture &picture_;
};

}  // namespace play
