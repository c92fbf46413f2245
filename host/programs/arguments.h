// The argument line of a control program: option letters with values, and the words after them.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace programs {

struct Arguments {
  std::map<char, std::string> options;  // an option without a value has an empty one
  std::vector<std::string> words;

  bool has(char option) const { return options.contains(option); }
  // The value of an option, empty where it was not given.
  std::string value(char option) const;
  // True when the options given are exactly these.
  bool only(const std::string &letters) const;
};

// Reads the line as getopt does with these options. Nothing for an option that is unknown, lacks its value or comes twice.
std::optional<Arguments> parse(int argc, char **argv, const char *options);

}  // namespace programs
