// The lines of a script: a verb and its words each.
#pragma once

#include <istream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace play {

struct Line {
  int number;        // counted from 1
  std::string text;  // as it was written, without the blanks at both ends
  std::string verb;
  std::vector<std::string> words;
};

// A script that makes no sense. The text begins with the script's name and the line: "demo.play:12: ...".
class ScriptError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
  ScriptError(std::string_view script, int line, const std::string &text)
      : std::runtime_error(std::string(script) + ":" + std::to_string(line) + ": " + text) {}
};

// Blanks separate words. A word in double quotes keeps its blanks and knows the escapes of C: \n \t \r \e \" \\ \003.
// A word that begins with '#' begins a comment. Lines without a word are left out. Throws ScriptError.
std::vector<Line> read_script(std::istream &script, std::string_view name);

// The reverse, for people: "3", Enter, Ctrl-C.
std::string describe_keys(std::string_view keys);

}  // namespace play
