#include "host/runner/result.h"

#include <algorithm>
#include <array>

namespace runner {
namespace {

constexpr std::array<VerdictRow, 6> kVerdicts{{
    {Verdict::kPassed, "passed", nullptr},
    {Verdict::kFailed, "failed", "failure"},
    {Verdict::kUnreadable, "unreadable", "error"},
    {Verdict::kHung, "hung", "error"},
    {Verdict::kDied, "died", "error"},
    {Verdict::kUnplayed, "unplayed", "skipped"},
}};

}  // namespace

const VerdictRow &row_of(Verdict verdict) {
  return *std::ranges::find(kVerdicts, verdict, &VerdictRow::verdict);
}

bool is_wrong(Verdict verdict) {
  return verdict != Verdict::kPassed && verdict != Verdict::kUnplayed;
}

std::size_t count(std::span<const Result> results, Verdict verdict) {
  return static_cast<std::size_t>(std::ranges::count(results, verdict, &Result::verdict));
}

std::string headline_of(const Result &result) {
  std::string line = result.reason.substr(0, result.reason.find('\n'));
  for (std::size_t i = 0; i < result.account.left.size(); ++i) line += (i == 0 ? " " : ", ") + result.account.left[i];
  return line;
}

}  // namespace runner
