// Writes the script of a play as a person would: what is read again from the text has the same steps with the same words.
#pragma once

#include <string>
#include <string_view>

#include "host/play/step.h"

namespace play {

class ScriptWriter {
 public:
  // A step with its verb in front: {"type", "3\n"}. Throws std::invalid_argument where there is no such step.
  void step(const Words &words);

  void remark(std::string_view text);  // a comment, whose lines may be several
  void part();                         // An empty line stands before what comes next.

  const std::string &text() const { return text_; }

 private:
  void line(std::string_view text);

  std::string text_;
  bool begins_part_ = false;
};

// A word of a script: in quotes where it needs them or where they are wanted, with escapes, and a dollar as "$$".
enum class Quotes { kWhereNeeded, kAlways };
std::string written_word(std::string_view word, Quotes quotes = Quotes::kWhereNeeded);

}  // namespace play
