#include "host/box/advice.h"

#include <cstdlib>

#include "host/base/quoted.h"

namespace box {

std::string spbox_called(const std::string &otherwise) {
  const char *const called = std::getenv("SPBOX_CALLED");  // NOLINT(concurrency-mt-unsafe): nobody changes it
  return called == nullptr || *called == '\0' ? otherwise : called;
}

std::string advice(std::initializer_list<std::string> words) {
  std::string text = spbox_called("spbox");
  for (const std::string &word : words) text += " " + base::quoted(word);
  return "`" + text + "`";
}

}  // namespace box
