// Tells what happens in a play: in the transcript, in the chronicle and, as far as it belongs there, in the picture.
#pragma once

#include <string>
#include <vector>

#include "host/play/chronicle.h"
#include "host/play/picture.h"
#include "host/play/transcript.h"
#include "host/terminal/screen.h"

namespace play {

class Narrator {
 public:
  explicit Narrator(Transcript &transcript, Picture &picture, Chronicle *chronicle = nullptr)
      : transcript_(transcript), picture_(picture), chronicle_(chronicle) {}

  void happens(const std::string &sentence);  // between two screens
  void remarks(const std::string &sentence);  // not for the picture

  // What somebody did, and what was printed at it.
  void happens(const std::string &sentence, const std::string &output);
  void remarks(const std::string &sentence, const std::string &output);

  // The server is for the picture alone.
  void shows(const std::string &caption, const std::vector<std::string> &rows, terminal::Size size,
             const std::vector<std::string> &server = {});

 private:
  Transcript &transcript_;
  Picture &picture_;
  Chronicle *chronicle_;  // null: nobody wants one
};

}  // namespace play
