#include "host/sweep/careful.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "host/clock/hours.h"

namespace sweep {
namespace {

using box_time::Clock;
using std::chrono::milliseconds;

constexpr milliseconds kLook{1000};           // A question that has stood for so long is one.
constexpr milliseconds kLongestLook{60'000};  // at what stands there
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
    std::vector<std::string> seen;
    milliseconds look = kLook;
    while (terminal.runs() && Clock::now() < deadline) {
      auto rows = terminal.screen();
      const bool stands = rows == seen;
      if (!stands) deadline = Clock::now() + limit_;
      seen = std::move(rows);
      const std::string keys = careful_keys(seen);
      if (stands && !keys.empty()) {
        answer(last_line(seen), keys);
        seen.clear();
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
    const std::string typed = is_let_go ? keys : "\003";
    end_.gave_up = end_.gave_up || typed != "\n";
    end_.steps.push_back({"wait", end_of(question)});
    end_.steps.push_back({"type", typed});
    end_.typed_at = op_.terminal().everything_shown().size();
    op_.line().type(typed, limit_);
  }

  play::Operator &op_;
  milliseconds limit_;
  CarefulEnd end_;
  int asked_ = 0;
};

}  // namespace

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
