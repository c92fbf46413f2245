#include "host/spbox/trace_choice.h"

#include <algorithm>
#include <array>
#include <ctime>
#include <string_view>
#include <utility>

#include "host/base/number.h"
#include "host/box/box_error.h"
#include "host/box/call_ring.h"
#include "host/box/program_list.h"
#include "host/box/trace_ring.h"
#include "host/spbox/verb.h"
#include "host/trace_book/call_words.h"
#include "host/trace_book/pages.h"

namespace spbox {
namespace {

using trace_book::History;
using trace_book::Moment;

constexpr std::int64_t kNsOfASecond = 1'000'000'000;

// A time of day of the box's last day, or so long before now.
struct Since {
  bool is_ago = false;
  int seconds = 0;
};

std::optional<Since> since_in(std::string text) {
  const std::size_t first_colon = text.find(':');
  if (first_colon == std::string::npos) {
    constexpr std::array<std::pair<char, int>, 3> kUnits{{{'s', 1}, {'m', 60}, {'h', 3600}}};
    for (const auto &[letter, seconds] : kUnits) {
      if (text.empty() || text.back() != letter) continue;
      text.pop_back();
      const auto count = base::number_in<std::uint32_t>(text);
      constexpr std::uint32_t kMost = 100'000;
      if (!count || *count > kMost) return std::nullopt;
      return Since{true, static_cast<int>(*count) * seconds};
    }
    return std::nullopt;
  }
  constexpr std::array<std::uint32_t, 3> kRoom{24, 60, 60};
  int seconds = 0, parts = 0;
  for (std::size_t at = 0; parts < 3; ++parts) {
    const std::size_t end = std::min(text.find(':', at), text.size());
    const auto part = base::number_in<std::uint32_t>(text.substr(at, end - at));
    if (!part || *part >= kRoom.at(static_cast<std::size_t>(parts))) return std::nullopt;
    seconds = seconds * 60 + static_cast<int>(*part);
    at = end + 1;
    if (end == text.size())
      return parts == 0 ? std::nullopt : std::optional(Since{false, parts == 1 ? seconds * 60 : seconds});
  }
  return std::nullopt;
}

std::int64_t begin_of(const Since &since, std::int64_t now) {
  if (since.is_ago) return now - since.seconds * kNsOfASecond;
  const auto seconds = static_cast<std::time_t>(now / kNsOfASecond);
  std::tm day{};
  localtime_r(&seconds, &day);
  day.tm_hour = since.seconds / 3600;
  day.tm_min = since.seconds / 60 % 60;
  day.tm_sec = since.seconds % 60;
  return static_cast<std::int64_t>(std::mktime(&day)) * kNsOfASecond;
}

// "lmainte_exec" also means its internal steps, and one of two functions whose events are the same.
bool is_of_function(const std::string &function, const std::string &wanted) {
  if (function == wanted || function.starts_with(wanted + ":")) return true;
  const std::size_t other = function.find(" or ");
  return other != std::string::npos && (function.substr(0, other) == wanted || function.substr(other + 4) == wanted);
}

bool is_known_function(const std::string &wanted) {
  const auto of_platform = trace_book::call_rows();
  if (std::ranges::find(of_platform, wanted, &trace_book::CallRow::function) != of_platform.end()) return true;
  if (std::ranges::find(box::kPrograms, wanted, &box::Program::name) != box::kPrograms.end()) return true;
  return std::ranges::any_of(trace_book::all_functions(), [&](const trace_book::Function &function) {
    return is_of_function(std::string(function.name), wanted) || function.other == wanted;
  });
}

std::size_t run_named(const std::string &wanted, const History &history, const Holder &holder) {
  const auto &runs = history.runs();
  const auto number = base::number_in<std::uint32_t>(wanted);
  for (std::size_t at = runs.size(); at > 0; --at) {
    const trace_book::Run &run = runs[at - 1];
    if (wanted == "last" || run.name() == wanted || (number && run.number == *number)) return at - 1;
  }
  std::string known;
  constexpr std::size_t kMost = 8;
  for (std::size_t at = runs.size() > kMost ? runs.size() - kMost : 0; at < runs.size(); ++at) {
    known += (known.empty() ? "" : ", ") + std::to_string(runs[at].number) + " (" + runs[at].name() + ")";
  }
  throw box::BoxError(holder.name + " " + holder.remembers + " no run `" + wanted + "`. " +
                      (known.empty() ? "It " + holder.remembers + " none." : "The last ones are " + known + "."));
}

}  // namespace

std::int64_t newest_time(const trace_book::History &history) {
  std::int64_t newest = box::call_time();
  if (!history.moments().empty()) newest = std::max(newest, history.moments().back().time_ns);
  return newest;
}

Ink ink_of(const Moment &moment) {
  if (moment.is_error) return Ink::kError;
  if (moment.level == "operator") return Ink::kCare;
  return moment.level == "program" || moment.level == "command" ? Ink::kGood : Ink::kPlain;
}

std::vector<Word> choosing_words(TraceOptions &options) {
  return {{.name = "--last",
           .help = "Only so many, the newest",
           .to = number(options.last, 1, box::TraceRing::kSlots),
           .value = "COUNT"},
          {.name = "--errors", .help = "Only errors", .to = &options.errors},
          {.name = "--run",
           .help = "Of one run of a command: last, its number, or the\ncommand's name for its last run",
           .to = &options.run,
           .value = "RUN"},
          {.name = "--pid", .help = "Of one process", .to = number(options.pid, 1, INT32_MAX), .value = "PROCESS"},
          {.name = "--function",
           .help = "Of one function, with its internal steps, or one control\nprogram",
           .to = &options.function,
           .value = "NAME"}};
}

void check(const TraceOptions &options) {
  if (!options.since.empty() && !since_in(options.since)) {
    throw UsageError("--since takes a time such as 14:05, 14:05:30, 30s, 5m or 2h, not `" + options.since + "`.");
  }
  if (!options.function.empty() && !is_known_function(options.function)) {
    throw UsageError("neither the library nor the platform has a function `" + options.function +
                     "`, and there is no such control program. docs/trace-events.md lists the library's.");
  }
}

Wanted::Wanted(const TraceOptions &options, const trace_book::History &history) : options_(options) {
  if (!options.run.empty()) run_ = run_named(options.run, history, options.holder);
  if (!options.since.empty()) begin_ = begin_of(*since_in(options.since), newest_time(history));
}

bool Wanted::has(const trace_book::Moment &moment) const {
  if (options_.pid != 0 && moment.pid != options_.pid) return false;
  if (run_ && moment.run != *run_) return false;
  if (moment.time_ns < begin_) return false;
  if (!options_.function.empty() && !is_of_function(moment.function, options_.function)) return false;
  return !options_.errors || moment.is_error;
}

}  // namespace spbox
