#include "host/sweep/judge.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <regex>

#include "host/base/signal_name.h"
#include "host/play/script_writer.h"

namespace sweep {
namespace {

using Sentences = std::vector<std::string>;
constexpr int kFirstOfSignals = 128;

bool has(const Sentences &some, const std::string &one) {
  return std::ranges::find(some, one) != some.end();
}

bool fits(const std::string &text, const std::string &pattern) {
  return std::regex_search(text, std::regex(pattern, std::regex::icase));
}

// A unit's name as a regular expression: no other unit's name begins with it.
std::string exactly(const std::string &unit) {
  static const std::regex kSpecial(R"([.^$|()\[\]{}*+?\\])");
  return std::regex_replace(unit, kSpecial, R"(\$&)") + "(?![0-9A-Za-z/#])";
}

// ---- what is left

// How a screen names what a command has left: what the sentence about it looks like, and what the screen has to say; the unit's name
// takes the place of U.
struct Naming {
  const char *left, *named;
};
constexpr std::array<Naming, 6> kNamings{{
    {"^maintenance mode is on$", "maintenance mode"},
    {"^the fans .*run at speed", R"(\bfans?\b)"},
    {R"(^the LED of (\S+) (blinks|is on)$)", R"(\bLEDs? [^.]*U|U[^.]*\bLED\b)"},
    {R"(^(\S+) is under maintenance$)", R"(U[^.]*\b(flag|under maintenance|marked)\b|flag[^.]*U)"},
    {R"(^(\S+) is detached$)",
     R"(U[^.]*\b(out of operation|not in operation|stays empty|is empty|not tested|detached|could not be read|not in place)\b)"
     R"(|place of U[^.]*empty)"},
    {R"(^the file (/tmp/\S+) is left$)", "U"},
}};

bool is_named(const std::string &left, const std::string &text) {
  for (const Naming &naming : kNamings) {
    std::smatch match;
    if (!std::regex_search(left, match, std::regex(naming.left))) continue;
    const std::string unit = match.size() > 1 ? exactly(match[1]) : "";
    return fits(text, std::regex_replace(std::string(naming.named), std::regex("U"), unit));
  }
  return false;
}

// ---- what is said

// What a command says of a unit at its end, and what has to be so then: it is in place, it is out of operation, its marks are off.
enum class Say { kAny, kYes, kNo };
struct Claim {
  const char *said;
  Say in_place, detached, marked;
  Say lit = Say::kAny;  // its LED
};
constexpr std::array<Claim, 8> kClaims{{
    {R"((/\S+) is still out of operation)", Say::kAny, Say::kYes, Say::kAny},
    {R"([Tt]he place of (/\S+) stays empty)", Say::kNo, Say::kAny, Say::kAny},
    {R"((/\S+) is in place and (?:out of operation|was not tested))", Say::kYes, Say::kYes, Say::kAny},
    {R"([Tt]he LED and the maintenance flag of (/\S+) are off)", Say::kAny, Say::kAny, Say::kNo},
    {R"([Tt]he LED of (/\S+) is off)", Say::kAny, Say::kAny, Say::kAny, Say::kNo},
    {R"((/\S+) is replaced\.)", Say::kYes, Say::kNo, Say::kAny},
    {R"((/\S+) is added\.)", Say::kYes, Say::kNo, Say::kAny},
    {R"((/\S+) is removed\.)", Say::kNo, Say::kAny, Say::kAny},
}};

// The same of an entry of the log.
constexpr std::array<Claim, 5> kEntries{{
    {R"(^unit replaced .*(/\S+))", Say::kYes, Say::kAny, Say::kAny},
    {R"(^unit added .*(/\S+))", Say::kYes, Say::kAny, Say::kAny},
    {R"(^unit removed .*(/\S+))", Say::kNo, Say::kAny, Say::kAny},
    {R"(^place left empty .*(/\S+))", Say::kNo, Say::kAny, Say::kAny},
    {R"(^unit left out of operation .*(/\S+))", Say::kAny, Say::kYes, Say::kAny},
}};

// What was done to a unit stays true; how it is left does not, where a technician changes it behind the entry.
bool is_of_change(const std::string &entry) {
  return entry.starts_with("unit replaced ") || entry.starts_with("unit added ") || entry.starts_with("unit removed ");
}

bool is_true(Say said, bool is_so) {
  return said == Say::kAny || (said == Say::kYes) == is_so;
}

bool is_true(const Claim &claim, const std::string &unit, const Course &course) {
  const auto &left = course.switched;
  const bool is_lit = has(left, "the LED of " + unit + " blinks") || has(left, "the LED of " + unit + " is on");
  const bool is_marked = is_lit || has(left, unit + " is under maintenance");
  return is_true(claim.in_place, !has(course.missing, unit)) &&
         is_true(claim.detached, has(left, unit + " is detached")) && is_true(claim.marked, is_marked) &&
         is_true(claim.lit, is_lit);
}

std::size_t columns_of(const std::string &row) {
  return static_cast<std::size_t>(
      std::ranges::count_if(row, [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U; }));
}

// The rows of a screen in one line: a sentence may go on in the next row, and a word where a row is full.
std::string joined(const Sentences &rows, std::size_t columns, std::size_t from = 0) {
  std::string text;
  for (std::size_t i = from; i < rows.size(); ++i) {
    const bool goes_on = i > from && columns_of(rows[i - 1]) == columns;
    text += (text.empty() || goes_on ? "" : " ") + rows[i];
  }
  return text;
}

// A question of the good play with another answer behind it says nothing new: what is left of the row is the answer.
std::string without_question(const std::string &row, const Sentences &known) {
  constexpr std::size_t kLongestAnswer = 16;
  std::size_t asked = 0;
  for (const std::string &other : known) {
    const auto same = static_cast<std::size_t>(std::ranges::mismatch(row, other).in1 - row.begin());
    const auto end = same == 0 ? std::string::npos : row.find_last_of(":?", same - 1);
    if (end != std::string::npos) asked = std::max(asked, end + 1);
  }
  const std::string answer = row.substr(std::min(row.find_first_not_of(' ', asked), row.size()));
  return answer.size() <= kLongestAnswer && answer.find(' ') == std::string::npos ? answer : row;
}

// A file's path for a shell, the same in each play: a number in it may be that of a process.
std::string as_pattern(const std::string &file) {
  const std::string pattern = std::regex_replace(file, std::regex("[^A-Za-z0-9._/-]"), "?");
  return std::regex_replace(pattern, std::regex("[0-9]+"), "*");
}

class Judge {
 public:
  Judge(const Course &course, const Good &good) : course_(course), good_(good.commands.at(course.command)) {
    for (const std::string &row : course_.end.shown) {
      if (!has(good_.shown, row)) new_rows_.push_back(without_question(row, good_.shown));
    }
    text_ = joined(new_rows_, course_.columns);
    last_ = joined(course_.end.shown, course_.columns, course_.typed_at);
  }

  std::vector<Fault> faults() {
    if (!course_.end.ending) {
      add("the command did not end in time", {"exit 0"});
      return faults_;
    }
    judge_death();
    judge_leftovers();
    if (!course_.failed_check.empty() && faults_.empty()) judge_check();
    judge_claims();
    judge_log();
    judge_reason();
    return faults_;
  }

 private:
  void add(const std::string &what, std::vector<std::string> lines) { faults_.push_back({what, std::move(lines)}); }

  int status() const { return course_.end.ending->number; }
  bool is_as_good() const { return course_.end.ending == good_.ending && !course_.was_killed; }

  // Checks of a play that gives up, or is refused, are not for what ended so for another reason.
  void judge_check() {
    if (status() == 0)
      add("exit status 0, but the server is not as the play wants it: " + course_.failed_check, {course_.failed_line});
  }

  // By the signal that came it may die.
  void judge_death() {
    constexpr std::array<int, 6> kCrashes{SIGSEGV, SIGABRT, SIGBUS, SIGFPE, SIGILL, SIGPIPE};
    for (const int signal : kCrashes) {
      if (status() == kFirstOfSignals + signal) add("the command died of " + base::signal_name(signal), {"exit 1"});
    }
  }

  // What the operator cannot see because their line is cut, the log has.
  void judge_leftovers() {
    const std::string named = text_ + (course_.line_cut ? " " + joined(course_.end.logged, 0) : "");
    for (const std::string &sentence : course_.end.left) {
      if (has(good_.left, sentence) && (is_as_good() || is_done(sentence))) continue;
      const bool is_in_log = course_.line_cut && is_of_unit_in_log(sentence);
      if (!is_in_log && !is_named(sentence, named))
        add(sentence + ", and the screen does not say so", in_order(sentence));
    }
  }

  // What the good play leaves, too: a unit that is gone for good. The screen says that it is, as it does in the good play, or nobody
  // was left to say so.
  bool is_done(const std::string &sentence) const {
    const std::string unit = sentence.substr(0, sentence.find(' '));
    return has(course_.missing, unit) &&
           (course_.was_killed || fits(joined(course_.end.shown, course_.columns), exactly(unit) + " is removed"));
  }

  bool is_of_unit_in_log(const std::string &sentence) const {
    return std::ranges::any_of(course_.end.logged, [&](const std::string &entry) {
      const auto unit = entry.rfind('/');
      return unit != std::string::npos && sentence.find(entry.substr(unit)) != std::string::npos;
    });
  }

  // A command that begins behind one that was killed finds the other's files, and in_order holds none of them against it.
  static std::vector<std::string> is_gone(const std::string &file) {
    return {play::written_step({"start", "sh", "-c", "! ls " + as_pattern(file)}), "exit 0"};
  }

  // All else that is left is named, and a play has to allow it.
  std::vector<std::string> in_order(const std::string &sentence) const {
    static const std::regex kFile("^the file (/tmp/.+) is left$");
    std::smatch file;
    if (course_.was_killed && std::regex_search(sentence, file, kFile)) return is_gone(file[1]);
    static const std::regex kDetached(R"(^(\S+) is detached$)");
    std::string line = "in_order";
    for (const std::string &other : course_.end.left) {
      std::smatch match;
      const bool is_allowed = other != sentence && std::regex_search(other, match, kDetached);
      if (is_allowed) line += (line == "in_order" ? " but " : " ") + std::string(match[1]);
    }
    return {"patience 2", line};
  }

  void judge_claims() {
    if (course_.was_killed || course_.line_cut) return;
    for (const Claim &claim : kClaims) {
      const std::regex said(claim.said);
      for (std::sregex_iterator at(last_.begin(), last_.end(), said), end; at != end; ++at) {
        if (!is_true(claim, (*at)[1], course_)) {
          add("the screen says \"" + at->str() + "\", which is not true", {play::written_step({"absent", at->str()})});
        }
      }
    }
  }

  void judge_log() {
    for (std::size_t i = 0; i < course_.end.logged.size(); ++i) {
      const std::string &entry = course_.end.logged[i];
      for (const Claim &claim : kEntries) {
        if (i < course_.logged_at && !is_of_change(entry)) continue;
        std::smatch match;
        if (!std::regex_search(entry, match, std::regex(claim.said)) || is_true(claim, match[1], course_)) continue;
        add("the log says \"" + entry + "\", which is not true",
            {"spbox log", play::written_step({"says", "not", "like",
                                              entry.substr(0, entry.find("  ")) + ".*" + std::string(match[1])})});
      }
    }
    if (status() != 0 || !is_as_good()) return;
    for (const std::string &entry : good_.logged) {
      if (has(course_.end.logged, entry) || fits(text_, R"(\blog\b)")) continue;
      add("exit status 0, but the log lacks \"" + entry + "\", and the screen does not say so",
          {"spbox log", play::written_step({"says", "like", entry.substr(0, entry.find("  "))})});
    }
  }

  // Who did not give up is told why nothing comes of it.
  void judge_reason() {
    const bool is_chosen = course_.gave_up || course_.was_killed || course_.line_cut || status() > kFirstOfSignals;
    if (status() == 0 || is_as_good() || is_chosen) return;
    if (fits(text_, R"([a-z]+ .*[a-z]+ .*[a-z]+.*[.:!])")) return;
    add("exit status " + std::to_string(status()) + ", and the screen does not say why",
        {play::written_step({"wait", "like", "[a-z]+ .*[a-z]+ .*[a-z]+.*[.:!]"})});
  }

  const Course &course_;
  const CommandEnd &good_;
  Sentences new_rows_;
  std::string text_, last_;
  std::vector<Fault> faults_;
};

}  // namespace

std::vector<Fault> faults_of(const Course &course, const Good &good) {
  if (course.is_good) return {};
  return Judge(course, good).faults();
}

}  // namespace sweep
