// Plays an operator and a technician from a script, and prints what they saw.
#pragma once

#include <chrono>
#include <istream>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "host/terminal/script.h"
#include "host/terminal/terminal.h"

namespace terminal {

// Where a script is played.
struct Stage {
  std::string spbox;  // the program
  std::string box;    // the box's folder
};

/*
 * The steps of a script:
 *
 *   start COMMAND...     the operator starts a command in the box, found by the environment variable PATH
 *   wait "text"          until the text is on the screen
 *   type "keys"          "3\n", " ", "\003" for Ctrl-C
 *   screen "caption"     prints the screen as the operator sees it
 *   exit STATUS          waits for the command's end and checks its exit status
 *   spbox VERB ...       the technician works on the box, as in "spbox pull /PSU#3"; prints what spbox says
 *   patience SECONDS     for the waits that follow; 10 at first
 *   say "text"           prints a line of the script's own
 */
class Player {
 public:
  Player(Stage stage, std::ostream &out) : stage_(std::move(stage)), out_(out) {}

  // Throws ScriptError at the first step that fails, with what was awaited and the screen that stood there instead.
  void play(std::istream &script, std::string_view name);

 private:
  struct Verb;
  using Words = std::vector<std::string>;
  void perform(const Step &step);
  void start(const Words &words);
  void wait(const Words &words);
  void type(const Words &words);
  void screen(const Words &words);
  void exit(const Words &words);
  void spbox(const Words &words);
  void patience(const Words &words);
  void say(const Words &words);
  void print_screen(std::ostream &out, std::string_view caption);
  std::string with_screen(const std::string &text);

  Stage stage_;
  std::ostream &out_;
  Terminal terminal_;
  std::chrono::milliseconds patience_{10'000};
};

}  // namespace terminal
