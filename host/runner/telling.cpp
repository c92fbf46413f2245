#include "host/runner/telling.h"

#include <array>
#include <cstdio>

#include "host/base/shown.h"

namespace runner {
namespace {

using std::chrono::milliseconds;

double seconds_of(milliseconds time) {
  return static_cast<double>(time.count()) / 1000;
}

std::string head_of(const Result &result) {
  if (result.verdict == Verdict::kUnplayed) return "unplayed            " + base::shown(result.name) + "\n";
  std::array<char, 64> text{};
  std::snprintf(text.data(), text.size(), "%-10s %5.1f s  ", row_of(result.verdict).word, seconds_of(result.time));
  return text.data() + base::shown(result.name) + "\n";
}

// "1 play", "2 plays"
std::string number_of(std::size_t count, const std::string &what) {
  return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

// The characters that fit.
std::string cut(const std::string &text, std::size_t width) {
  std::string line;
  std::string_view rest = text;
  for (std::size_t column = 0; column < width && !rest.empty(); ++column) {
    const auto size = std::max<std::size_t>(base::character_size(rest), 1);
    line += rest.substr(0, size);
    rest.remove_prefix(size);
  }
  return line;
}

}  // namespace

std::string time_text(milliseconds time) {
  constexpr milliseconds kMinute{60'000};
  std::array<char, 64> text{};
  if (time < kMinute) {
    std::snprintf(text.data(), text.size(), "%.1f s", seconds_of(time));
  } else {
    const auto seconds = time.count() / 1000;
    std::snprintf(text.data(), text.size(), "%lld min %lld s", static_cast<long long>(seconds / 60),
                  static_cast<long long>(seconds % 60));
  }
  return text.data();
}

std::string told_of(const Result &result) {
  std::string text = head_of(result);
  if (!is_wrong(result.verdict)) return text;
  text += result.reason;
  if (!result.reason.ends_with('\n')) text += '\n';
  if (!result.transcript.empty()) text += "The transcript: " + base::shown(result.transcript.string()) + "\n";
  return text + "\n";
}

std::string told_of_all(std::span<const Result> results, milliseconds time) {
  std::string text, wrong, numbers;
  for (const Verdict verdict :
       {Verdict::kPassed, Verdict::kFailed, Verdict::kUnreadable, Verdict::kHung, Verdict::kDied, Verdict::kUnplayed}) {
    const auto number = count(results, verdict);
    if (number > 0 || verdict == Verdict::kPassed)
      numbers += (numbers.empty() ? "" : ", ") + std::to_string(number) + " " + row_of(verdict).word;
  }
  for (const Result &result : results) {
    if (is_wrong(result.verdict))
      wrong += base::shown(result.name) + ": " + row_of(result.verdict).word + "\n    " + headline_of(result) + "\n";
  }
  if (!wrong.empty() && results.size() > 1) text += "What went wrong:\n" + wrong + "\n";
  return text + number_of(results.size(), "play") + " in " + time_text(time) + ": " + numbers + ".\n";
}

std::string told_of(const Progress &progress, std::size_t width) {
  std::string line = std::to_string(progress.done) + " of " + number_of(progress.all, progress.what) + " in " +
                     time_text(progress.time) +
                     (progress.wrong > 0 ? ", " + std::to_string(progress.wrong) + " wrong" : "");
  for (std::size_t i = 0; i < progress.at_work.size(); ++i) line += (i == 0 ? "; now " : ", ") + progress.at_work[i];
  return cut(base::shown(line), width);
}

}  // namespace runner
