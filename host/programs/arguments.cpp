#include "host/programs/arguments.h"

#include <unistd.h>

#include <algorithm>

namespace programs {

std::string Arguments::value(char option) const {
  const auto found = options.find(option);
  return found == options.end() ? "" : found->second;
}

bool Arguments::only(const std::string &letters) const {
  return options.size() == letters.size() && std::ranges::all_of(letters, [this](char letter) { return has(letter); });
}

std::optional<Arguments> parse(int argc, char **argv, const char *options) {
  const std::string strict = "+" + std::string(options);  // options end at the first word
  Arguments arguments;
  opterr = 0;  // there is nobody to read a message
  optind = 0;
  // NOLINTNEXTLINE(concurrency-mt-unsafe): one thread
  for (int letter = 0; (letter = getopt(argc, argv, strict.c_str())) != -1;) {
    if (letter == '?') return std::nullopt;
    const bool first = arguments.options.emplace(static_cast<char>(letter), optarg == nullptr ? "" : optarg).second;
    if (!first) return std::nullopt;
  }
  arguments.words.assign(argv + optind, argv + argc);
  return arguments;
}

}  // namespace programs
