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
  const char *denied;  // how a screen says that it is not so
};
constexpr const char *kIsOff = R"(\b(off|dark|cleared|removed|reset|taken back)\b|\bout\b(?! of))";
constexpr std::array<Naming, 6> kNamings{{
    {"^maintenance mode is on$", "maintenance mode", R"(\b(off|over|ended|cleared|finished)\b)"},
    {"^the fans .*run at speed", R"(\bfans?\b)", R"(\b(normal|low|slow|reset|back)\b)"},
    {R"(^the LED of (\S+) (blinks|is on)$)", R"(\bLEDs? [^.]*U|U[^.]*\bLED\b)", kIsOff},
    {R"(^(\S+) is under maintenance$)", R"(U[^.]*\b(flag|under maintenance|marked)\b|flag[^.]*U)", kIsOff},
    {R"(^(\S+) is detached$)",
     R"(U[^.]*\b(out of operation|not in operation|stays empty|is empty|not tested|detached|could not be read|not in place)\b)"
     R"(|place of U[^.]*empty)",
     R"(\b(attached|back in operation|in operation again)\b)"},
    {R"(^the (?:empty file|empty folder|file) (/tmp/\S+) is left$)", "U", R"(\b(removed|deleted|gone|cleared)\b)"},
}};

Sentences sentences_of(const std::string &text) {
  Sentences sentences;
  for (std::size_t begin = 0; begin < text.size();) {
    std::size_t end = begin;
    do end = std::min(text.find_first_of(".!?;", end) + 1, text.size());
    while (end != 0 && end < text.size() && text[end] != ' ');
    if (end == 0) end = text.size();
    sentences.push_back(text.substr(begin, end - begin));
    begin = end;
  }
  return sentences;
}

// "has been switched off" denies it; "could not be switched off" does not.
bool denies(const std::string &sentence, const char *denied) {
  static constexpr const char *kInDoubt =
      R"(\b(not|no|never|may|might|must|still|cannot|failed|fails|unless|until|unknown|before)\b|n't\b)";
  return fits(sentence, R"(\b(is|are|was|were|has been|have been|now)\b)") && fits(sentence, denied) &&
         !fits(sentence, kInDoubt);
}

bool is_named(const std::string &left, const std::string &text) {
  for (const Naming &naming : kNamings) {
    std::smatch match;
    if (!std::regex_search(left, match, std::regex(naming.left))) continue;
    const std::string unit = match.size() > 1 ? exactly(match[1]) : "";
    const std::string named = std::regex_replace(std::string(naming.named), std::regex("U"), unit);
    return std::ranges::any_of(sentences_of(text), [&](const std::string &sentence) {
      return fits(sentence, named) && !denies(sentence, naming.denied);
    });
  }
  return false;
}

// ---- what is said

// What a command says of a unit at its end, and what has to be so then: it is in place, it is out of
// operation.
enum class Say { kAny, kYes, kNo };
struct Claim {
  const char *said;
  Say in_place, detached;
  bool is_of_its_time = false;  // of a unit that came back meanwhile, it may have been so before
};
constexpr std::array<Claim, 6> kClaims{{
    {R"((/\S+) is still out of operation)", Say::kAny, Say::kYes},
    {R"([Tt]he place of (/\S+) stays empty)", Say::kNo, Say::kAny, true},
    {R"((/\S+) is in place and (?:out of operation|was not tested))", Say::kYes, Say::kYes},
    {R"((/\S+) is replaced\.)", Say::kYes, Say::kNo},
    {R"((/\S+) is added\.)", Say::kYes, Say::kNo},
    {R"((/\S+) is removed\.)", Say::kNo, Say::kAny},
}};

// The same of an entry of the log.
constexpr std::array<Claim, 5> kEntries{{
    {R"(^unit replaced .*(/\S+))", Say::kYes, Say::kAny},
    {R"(^unit added .*(/\S+))", Say::kYes, Say::kAny},
    {R"(^unit removed .*(/\S+))", Say::kNo, Say::kAny},
    {R"(^place left empty .*(/\S+))", Say::kNo, Say::kAny, true},
    {R"(^unit left out of operation .*(/\S+))", Say::kAny, Say::kYes},
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
  const bool was_so = claim.is_of_its_time && course.put_back.contains(unit);
  return (was_so || is_true(claim.in_place, !has(course.missing, unit))) &&
         is_true(claim.detached, has(left, unit + " is detached"));
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

// A time says nothing: it is another one each time.
std::string without_times(const std::string &row) {
  static const std::regex kTime(
      R"([0-9]{4}-[0-9]{2}-[0-9]{2}|[0-9]{1,2}:[0-9]{2}(:[0-9]{2})?([.,][0-9]+)?|\[[0-9]+\])");
  return std::regex_replace(row, kTime, "#");
}

Sentences without_times(Sentences rows) {
  for (std::string &row : rows) row = without_times(row);
  return rows;
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
    const Sentences known = without_times(good_.shown);
    for (const std::string &shown : course_.shown_by_killed) {
      const std::string row = without_times(shown);
      if (!has(known, row)) named_before_ += row + " ";
    }
    for (const std::string &shown : course_.end.shown) {
      const std::string row = without_times(shown);
      const bool is_new = course_.was_killed || !has(known, row);  // another command says it then
      if (is_new) new_rows_.push_back(without_question(row, known));
    }
    text_ = joined(new_rows_, course_.columns);
    // A full row may end a word, too.
    const std::string as_words = joined(new_rows_, 0);
    if (as_words != text_) text_ += " . " + as_words;
    last_ = joined(course_.end.shown, course_.columns, course_.typed_at);
  }

  bool gives_reason() const { return fits(text_, kReason); }

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

  // Another exit status than 0 may be true where the play's checks do not hold.
  void judge_check() {
    if (status() == 0)
      add("exit status 0, but the server is not as the play wants it: " + course_.failed_check, {course_.failed_line});
  }

  // By a signal that came it may die.
  bool ended_by_what_came() const { return course_.signals.contains(status() - kFirstOfSignals); }

  bool ended_by_signal() const {
    constexpr int kLastSignal = 64;
    return status() > kFirstOfSignals && status() <= kFirstOfSignals + kLastSignal;
  }

  void judge_death() {
    if (!ended_by_signal() || is_as_good() || ended_by_what_came()) return;
    add("the command died of " + base::signal_name(status() - kFirstOfSignals), {"exit 1"});
  }

  // What the operator cannot see because their line is cut, the log has.
  void judge_leftovers() {
    const std::string in_log = course_.line_cut ? " . " + joined(course_.end.logged, 0) : "";
    const std::string named = named_before_ + " . " + text_ + in_log;
    for (const std::string &sentence : course_.end.left) {
      if (has(good_.left, sentence) && is_named(sentence, joined(course_.end.shown, course_.columns))) continue;
      if (has(good_.left, sentence) && (is_as_good() || is_done(sentence))) continue;
      const bool is_in_log = course_.line_cut && is_detached_in_log(sentence);
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

  bool is_detached_in_log(const std::string &sentence) const {
    constexpr std::array<std::string_view, 4> kEntriesOfIt{"unit left out of operation ", "unit left untested ",
                                                           "place left empty ", "unit removed "};
    return std::ranges::any_of(course_.end.logged, [&](const std::string &entry) {
      const bool is_of_it = std::ranges::any_of(kEntriesOfIt, [&](auto begin) { return entry.starts_with(begin); });
      const std::string unit = entry.substr(std::min(entry.find(" /"), entry.size() - 1) + 1);
      return is_of_it && sentence == unit.substr(0, unit.find(' ')) + " is detached";
    });
  }

  // in_order holds no empty file against a command. One that begins behind a killed one finds the other's files, too.
  static std::vector<std::string> is_gone(const std::string &file) {
    return {play::written_step({"start", "sh", "-c", "! ls " + as_pattern(file)}), "exit 0"};
  }

  // All else that is left is named, and a play has to allow it.
  std::vector<std::string> in_order(const std::string &sentence) const {
    static const std::regex kFile("^the (empty )?(?:file|folder) (/tmp/.+) is left$");
    std::smatch file;
    const bool is_file = std::regex_search(sentence, file, kFile);
    if (is_file && (course_.was_killed || file[1].matched)) return is_gone(file[2]);
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
    const bool is_chosen = course_.gave_up || course_.line_cut || ended_by_signal();
    if (status() == 0 || is_as_good() || is_chosen) return;
    if (gives_reason()) return;
    add("exit status " + std::to_string(status()) + ", and the screen does not say why", lines_without_reason());
  }

  // The rows of the good way may look like a reason, too.
  std::vector<std::string> lines_without_reason() const {
    for (const char *like : {kReason, "([nN]ot|cannot|fail|refuse|error|wrong|missing|busy|stop).*[.:!]"}) {
      if (std::ranges::none_of(course_.end.shown, [&](const std::string &row) { return fits(row, like); })) {
        return {play::written_step({"wait", "like", like})};
      }
    }
    return {"exit 0"};
  }

  static constexpr const char *kReason = "[a-z]+ .*[a-z]+ .*[a-z]+.*[.:!]";

  const Course &course_;
  const CommandEnd &good_;
  Sentences new_rows_;
  std::string text_, last_;
  std::string named_before_;  // by a command that was killed then
  std::vector<Fault> faults_;
};

}  // namespace

bool gives_reason(const Course &course, const Good &good) {
  return Judge(course, good).gives_reason();
}

std::vector<Fault> faults_of(const Course &course, const Good &good) {
  if (course.was_unheard) {
    return {{"the operator gave up, and the command went on as if they had not",
             {"pause 5", play::written_step({"absent", course.next_text})}}};
  }
  if (course.is_good) return {};
  return Judge(course, good).faults();
}

}  // namespace sweep
