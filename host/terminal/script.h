// A script for the player: one step a line, a verb and its words.
#pragma once

#include <istream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace terminal {

struct Step {
  int line;  // counted from 1
  std::string verb;
  std::vector<std::string> words;
};

// Its text begins with the script's name and the line: "demo.play:12: ...".
class ScriptError : public std::runtime_error {
 public:
  ScriptError(std::string_view script, int line, const std::string &text)
      : std::runtime_error(std::string(script) + ":" + std::to_string(line) + ": " + text) {}
};

// Blanks separate words. A word in double quotes keeps its blanks and knows the escapes of C: \n \t \r \e \" \\ \003.
// Empty lines, and lines that begin with '#', are no steps. Throws ScriptError.
std::vector<Step> read_script(std::istream &script, std::string_view name);

// The reverse, for people: "3", Enter, Ctrl-C.
std::string describe_keys(std::string_view keys);

}  // namespace terminal
