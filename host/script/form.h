// How the statements of a script are written: what a table of them has in each row, whatever else it has there.
#pragma once

#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "host/script/script.h"

namespace script {

inline constexpr std::size_t kAny = static_cast<std::size_t>(-1);

struct Form {
  std::string_view verb;     // "exit"; may be two words: "when led"
  std::size_t fewest, most;  // words behind the verb
  std::string_view written;  // "exit STATUS"
  std::string_view meaning;  // for the help, in lines
};

// Whether the words begin with the verb; then it is taken off them, and what is left is judged by its number. Throws
// std::invalid_argument.
bool take_verb(const Form &form, Words &words);

// "there is no step "jump"; there are box, start and exit"
std::invalid_argument unknown(const std::string &verb, const std::vector<std::string_view> &verbs, const char *what);

// The row of a statement, whose verb is taken off its words. A statement is called `what`. Throws std::invalid_argument.
template <typename Row>
const Row &take_row(std::span<const Row> rows, Words &words, const char *what = "step") {
  std::vector<std::string_view> verbs;
  for (const Row &row : rows) {
    if (take_verb(row, words)) return row;
    verbs.push_back(row.verb);
  }
  throw unknown(words.front(), verbs, what);
}

// One step of a help text: how it is written, and from `column` on what it means.
std::string help_of(const Form &form, std::size_t column);

// All of them, under a headline.
template <typename Row>
std::string help_of(std::span<const Row> rows, std::size_t column) {
  std::string text = "Steps:\n";
  for (const Row &row : rows) text += help_of(row, column);
  return text;
}

}  // namespace script
