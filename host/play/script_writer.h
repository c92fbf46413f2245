// Writes the script of a play as a person would: what is read again from the text has the same steps with the same words.
#pragma once

#include <string>
#include <string_view>

#include "host/play/step.h"
#include "host/terminal/session.h"

namespace play {

class ScriptWriter {
 public:
  void step(const Words &words);  // as written_step has it

  void remark(std::string_view text);  // a comment, whose lines may be several
  void part();                         // An empty line stands before what comes next.

  const std::string &text() const { return text_; }

 private:
  void line(std::string_view text);

  std::string text_;
  bool begins_part_ = false;
};

// A step in a line, with its verb in front: `type "3\n"`. Throws std::invalid_argument where there is no such step.
std::string written_step(const Words &words);

// The step that awaits this end of a command: by a signal, also where spbox tells of it as a shell does.
Words step_of(const terminal::Ending &ending);

// A word of a script: in quotes where it needs them or where they are wanted, with escapes, and a dollar as "$$".
enum class Quotes { kWhereNeeded, kAlways };
std::string written_word(std::string_view word, Quotes quotes = Quotes::kWhereNeeded);

}  // namespace play
