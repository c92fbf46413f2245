// What a command writes, before libvterm gets it. A command may write any bytes, and libvterm trusts them: it loops or writes
// outside its memory where a number or a character is repeated too often, a sequence has too many numbers, or a character
// has no width. Whole characters, controls and sequences of sound size pass; other bytes become U+FFFD.
#pragma once

#include <string>
#include <string_view>

namespace terminal {

class Strainer {
 public:
  // What of these bytes, and of those held back before, goes on. What is not whole yet is held back.
  std::string passed(std::string_view bytes);

  // Whether a character was the last that went on: a combining one belongs to it.
  bool ends_in_character() const { return ends_in_character_; }

 private:
  enum class State { kText, kCharacter, kEscape, kSequence, kString, kEndOfString };

  void take(char byte);
  bool take_control(char byte);
  void take_text(char byte);
  void take_continuation(char byte);
  void take_escape(char byte);
  void take_sequence(char byte);
  void end_sequence(char final);
  void pass_character(const std::string &character);
  void pass_other(std::string_view bytes);

  State state_ = State::kText;
  bool ends_in_character_ = false;
  std::string passed_;
  std::string held_;  // of a character or a sequence
  std::string last_;  // the character that was written last, for the sequence that repeats it
};

}  // namespace terminal
