#include "host/runner/judge.h"

#include "host/base/signal_name.h"
#include "host/play/layout.h"
#include "host/script/values.h"

namespace runner {
namespace {

// Exit statuses of `spbox play`, and the first one of those that stand for a signal.
constexpr int kStepFailed = 1, kMakesNoSense = 2, kFirstOfSignals = 129;

std::string how_it_ended(int status) {
  if (status >= kFirstOfSignals) return "its process died of " + base::signal_name(status - kFirstOfSignals + 1);
  return "its process ended with exit status " + std::to_string(status);
}

// With the place where it was, as a failure of a step has it.
std::string at_place(const play::Account &account, const std::string &what) {
  if (account.place.empty()) return "before the first step: " + what + ".\n";
  return account.place + ": `" + account.step + "`: " + what + ".\n";
}

std::string screens_of(const play::Account &account) {
  std::string text;
  for (const auto &screen : account.screens) text += play::framed(screen.rows, screen.caption);
  return text;
}

Verdict verdict_of(const JobEnding &ending) {
  if (ending.hung) return Verdict::kHung;
  if (ending.interrupted) return Verdict::kUnplayed;
  if (ending.status == 0) return Verdict::kPassed;
  if (ending.status == kMakesNoSense) return Verdict::kUnreadable;
  return ending.status == kStepFailed ? Verdict::kFailed : Verdict::kDied;
}

// What it printed last, where it gave no account of its failure.
std::string last_lines(const std::string &output) {
  constexpr int kLines = 10;
  std::size_t begin = output.size();
  for (int line = 0; line < kLines && begin > 0; ++line) {
    const auto end_before = begin < 2 ? std::string::npos : output.rfind('\n', begin - 2);
    begin = end_before == std::string::npos ? 0 : end_before + 1;
  }
  return output.substr(begin);
}

std::string reason_of(Verdict verdict, const JobEnding &ending, const play::Account &account,
                      std::chrono::milliseconds limit) {
  switch (verdict) {
    case Verdict::kFailed:
      if (!account.text.empty()) return account.text;
      break;
    case Verdict::kUnreadable:
      return ending.output;
    case Verdict::kHung:
      return at_place(account, "the play was not done in " + script::seconds_text(limit) + ", and was ended") +
             screens_of(account);
    case Verdict::kDied:
      break;
    case Verdict::kUnplayed:
      return account.place.empty() ? "" : at_place(account, "interrupted");
    case Verdict::kPassed:
      return "";
  }
  return at_place(account, how_it_ended(ending.status)) + last_lines(ending.output);
}

}  // namespace

Result judge(const JobEnding &ending, std::chrono::milliseconds limit) {
  Result result;
  result.account = play::read_account(ending.told);
  result.verdict = verdict_of(ending);
  result.time = ending.time;
  result.reason = reason_of(result.verdict, ending, result.account, limit);
  return result;
}

}  // namespace runner
