#include "host/sweep/careful.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <string_view>

#include "host/clock/hours.h"

namespace sweep {
namespace {

using box_time::Clock;
using std::chrono::milliseconds;

constexpr milliseconds kLook{1000};           // A question that has stood for so long is one.
constexpr milliseconds kLongestLook{60'000};  // at what stands there
constexpr int kLongestWay = 4;                // limits, however much it shows meanwhile
constexpr int kAsked = 20;                    // times, until the operator interrupts
constexpr std::size_t kLongest = 40;          // of a question, for a play

// What the end of a question is, and the keys for it.
struct Answer {
  std::string_view end, keys;
};
constexpr std::array<Answer, 5> kAnswers{{
    {"--More--", "q"},
    {"Press Enter", "\n"},
    {"press Enter", "\n"},
    {":", "q\n"},
    {"?", "q\n"},
}};

std::string last_line(const std::vector<std::string> &rows) {
  const auto last = std::find_if(rows.rbegin(), rows.rend(), [](const std::string &row) { return !row.empty(); });
  return last == rows.rend() ? "" : *last;
}

bool ends_so(const std::string &line, std::string_view end) {
  const bool is_sign = end.size() == 1;
  return is_sign ? line.ends_with(end) : line.find(end) != std::string::npos;
}

// The last words of a question, which a play can wait for.
std::string end_of(const std::string &line) {
  if (line.size() <= kLongest) return line;
  const auto blank = line.find(' ', line.size() - kLongest);
  return blank == std::string::npos ? line : line.substr(blank + 1);
}

class Careful {
 public:
  Careful(play::Operator &op, milliseconds limit) : op_(op), limit_(limit) {}

  CarefulEnd bring_to_end() {
    if (op_.terminal().hung_up()) {
      end_.ended = op_.terminal().wait_for_exit(limit_).has_value();
      return end_;
    }
    auto &terminal = op_.line();
    auto deadline = Clock::now() + limit_;
    const auto end = Clock::now() + kLongestWay * limit_;
    std::vector<std::string> seen;
    milliseconds look = kLook;
    while (terminal.runs() && Clock::now() < std::min(deadline, end)) {
      auto rows = terminal.screen();
      const bool stands = rows == seen;
      if (!stands) deadline = Clock::now() + limit_;
      seen = std::move(rows);
      const std::string keys = careful_keys(seen);
      if (stands && !keys.empty()) {
        answer(last_line(seen), keys);
        seen.clear();
      } else if (stands && look == kLongestLook && may_ask(last_line(seen))) {
        ask_back(last_line(seen));
        look = kLook;
      } else {
        look = stands ? std::min(2 * look, kLongestLook) : kLook;
        op_.watch(look);
      }
    }
    end_.ended = !terminal.runs();
    return end_;
  }

 private:
  void answer(const std::string &question, const std::string &keys) {
    const bool is_let_go = ++asked_ <= kAsked;
    end_.steps.push_back({"wait", end_of(question)});
    type(is_let_go ? keys : "\003");
  }
  void type(const std::string &keys) {
    end_.gave_up = end_.gave_up || keys != "\n";
    end_.steps.push_back({"type", keys});
    end_.typed_at = lines_in(op_.terminal().everything_shown());
    op_.line().type(keys, limit_);
  }

  // It may be a question without a sign, such as "Go on (y/n) ": then it comes again, in a row of its own.
  bool may_ask(const std::string &line) {
    if (tried_ == 0) return !line.empty() && !line.ends_with('.');
    return line == asked_back_ && lines_in(op_.terminal().everything_shown()) > shown_then_;
  }
  void ask_back(const std::string &line) {
    constexpr std::array<const char *, 3> kKeys{"q\n", "n\n", "\003"};
    asked_back_ = line;
    shown_then_ = lines_in(op_.terminal().everything_shown());
    end_.steps.push_back({"pause", "120"});
    type(kKeys.at(std::min(tried_++, kKeys.size() - 1)));
  }

  play::Operator &op_;
  milliseconds limit_;
  CarefulEnd end_;
  std::size_t tried_ = 0, shown_then_ = 0;  // keys, and lines when they were typed
  std::string asked_back_;
  int asked_ = 0;
};

}  // namespace

std::size_t lines_in(const std::vector<std::string> &rows) {
  auto end = rows.end();
  while (end != rows.begin() && std::prev(end)->empty()) --end;
  return static_cast<std::size_t>(end - rows.begin());
}

std::string careful_keys(const std::vector<std::string> &rows) {
  const std::string line = last_line(rows);
  const auto *const row =
      std::ranges::find_if(kAnswers, [&](const Answer &answer) { return ends_so(line, answer.end); });
  return row == kAnswers.end() ? "" : std::string(row->keys);
}

CarefulEnd bring_to_end(play::Operator &op, milliseconds limit) {
  return Careful(op, limit).bring_to_end();
}

}  // namespace sweep
