// A verb of the command line as data: what it takes, where that goes, its help, and what it does.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <stdexcept>
#include <string>
#include <variant>
#include <vector>

namespace spbox {

// The exit statuses of spbox's own: it could not be done, and what was asked for makes no sense.
inline constexpr int kFailure = 1, kUsage = 2;

// The command line makes no sense. The text is one sentence for the user; the way to the verb's help is added to it.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Where a word of the command line goes, and what it may be.
struct Number {
  std::int64_t least, most;
  std::function<void(std::int64_t)> take;
};
struct Choice {
  std::string *to;
  std::string what;  // "model"
  std::vector<std::string> names;
};
// All that follows, options too: the words of another program.
struct Rest {
  std::vector<std::string> *to;
};
// A path is never empty, a flag takes no value, and a vector takes as many words as there are.
using Target =
    std::variant<bool *, std::filesystem::path *, std::string *, std::vector<std::string> *, Number, Choice, Rest>;

template <typename To>
Number number(To &to, std::int64_t least, std::int64_t most) {
  return {least, most, [&to](std::int64_t value) { to = static_cast<To>(value); }};
}

enum class Need { kOptional, kRequired };

// A word that has its place, such as "UNIT", or an option, which begins with "--".
struct Word {
  std::string name;
  std::string help;
  Target to;
  Need need = Need::kOptional;
  std::string value = {};                  // of an option, what stands behind it: "SECONDS"
  std::vector<std::string> excludes = {};  // options that cannot be given with this one
  bool is_hidden = false;                  // for processes of spbox's own
  bool is_box = false;                     // a path: the folder of the box; without one, it is the box at hand

  bool is_option() const { return name.starts_with('-'); }
};

struct Verb {
  std::string name;
  std::string line;           // what it does, in one line
  bool works_on_box = false;  // one that is there, whose DIR is its first word: a step of a play may take the verb
  std::vector<Word> words;
  std::string footer;                  // of its help: what else there is to know, and examples
  std::function<void()> check = {};    // throws UsageError for what the words' rows cannot tell; may be empty
  std::function<void()> prepare = {};  // what `act` needs from outside the box; may be empty, and throw as `act` does
  std::function<int()> act;            // returns the exit status; may throw: the text is for the user
  bool acts_confined = true;           // to the box that it works on

  // The step of a play in which the verb changes the box, of the words behind DIR; without words where it changes nothing. It is
  // recorded where somebody records. May be empty: it never changes one.
  std::function<std::vector<std::string>(const std::vector<std::string> &words)> as_step = {};
};

// The usual one of a verb that changes a box. It does so where `changes` says so; without one, always.
inline auto step_of_verb(const std::string &name, const std::function<bool()> &changes = {}) {
  return [name, changes](const std::vector<std::string> &words) {
    std::vector<std::string> step;
    if (changes && !changes()) return step;
    step = {"spbox", name};
    step.insert(step.end(), words.begin(), words.end());
    return step;
  };
}

// The words that many verbs take.
inline Word box_word(std::filesystem::path &box) {
  return {.name = "DIR", .help = "Folder of the box", .to = &box, .need = Need::kRequired, .is_box = true};
}
inline Word force_option(bool &force) {
  return {.name = "--force", .help = "Replace the box that is there, and lose what it holds", .to = &force};
}

}  // namespace spbox
