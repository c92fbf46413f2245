#include "host/box/advice.h"

#include <cstdlib>

#include "host/box/place.h"

namespace box {

std::string advice(std::initializer_list<std::string> words) {
  const char *command = std::getenv("SPBOX_CALLED");  // NOLINT(concurrency-mt-unsafe): nobody changes it
  std::string text = command == nullptr ? "spbox" : command;
  for (const std::string &word : words) text += " " + quoted(word);
  return "`" + text + "`";
}

}  // namespace box
