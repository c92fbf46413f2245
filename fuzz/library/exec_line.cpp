// The argument line of a control program: the program gets the line's words, and nothing else.
#include <algorithm>
#include <array>
#include <cctype>

#include "fuzz/library/machine.h"
#include "include/lmainte.h"
#include "tests/unit/doubles/library_test.h"

namespace fuzz {
namespace {

constexpr std::size_t kArgumentsCut = 1023;
constexpr std::int32_t kPrograms = 16;

// One word in each line, as the double writes down what a program got.
std::string words_of(const std::string &line) {
  std::string words;
  bool in_word = false;
  for (const char c : line.substr(0, kArgumentsCut)) {
    const bool is_blank = std::string_view(" \t\n\v\f\r").find(c) != std::string_view::npos;
    if (is_blank && in_word) words += '\n';
    if (!is_blank) words += c;
    in_word = !is_blank;
  }
  return in_word ? words + '\n' : words;
}

}  // namespace

void run_exec_line(Input input) {
  Source source(input);
  const auto program = static_cast<std::int32_t>(source.byte() % (kPrograms + 2)) - 1;
  const int exits_with = source.byte();
  const std::string line = source.text();
  on_machine([&] {
    machine().children_are_real = true;
    machine().child_exits_with = exits_with;
    const std::size_t before = records_so_far();
    const std::int32_t result = lmainte_exec(program, 1, "%s", line.c_str());
    const doubles::Executed &executed = machine().executed();
    if (program < 0 || program >= kPrograms) {
      require(result == LMAINTE_NOT_RUN && !executed.happened && error_recorded_since(before),
              "there are sixteen programs");
      return;
    }
    require(result == exits_with, "the result is the program's exit status");
    require(executed.happened && executed.path + ("\n" + words_of(line)) == executed.arguments,
            "a program gets its path and the words of its line: " + std::string(executed.arguments));
    require(std::string_view(executed.environment).starts_with("LC_ALL=C\n"), "a program speaks no language");
  });
}

}  // namespace fuzz
