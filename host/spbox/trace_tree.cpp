#include "host/spbox/trace_tree.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <optional>

#include "host/base/shown.h"
#include "host/spbox/standard_output.h"
#include "host/spbox/text.h"

namespace spbox {
namespace {

using trace_book::Moment;

constexpr std::int64_t kNsOfOneSecond = 1'000'000'000;

std::string duration_text(std::int64_t ns) {
  std::array<char, 32> text{};
  constexpr double kMicro = 1e3, kMilli = 1e6;
  const auto value = static_cast<double>(ns);
  if (value < kMilli) {
    std::snprintf(text.data(), text.size(), "%.0f us", value / kMicro);
  } else if (ns < kNsOfOneSecond) {
    std::snprintf(text.data(), text.size(), "%.1f ms", value / kMilli);
  } else {
    std::snprintf(text.data(), text.size(), "%.2f s", value / static_cast<double>(kNsOfOneSecond));
  }
  return text.data();
}

std::string end_text(const trace_book::Run &run, const TraceOptions &options, std::int64_t now) {
  if (run.end_ns) {
    return "ended after " + duration_text(*run.end_ns - run.begin_ns) + " with exit status " +
           std::to_string(run.status);
  }
  if (options.inside.contains(run.pid)) return "still runs, for " + duration_text(now - run.begin_ns);
  return "was killed, or left without an end";
}

// What the tree says of a moment; empty where a line above it has told it.
std::string tree_text(const Moment &moment, const std::string &told, const TraceOptions &options) {
  if (moment.is_end || moment.level == "command") return "";
  if (!moment.is_begin) return moment.function + ": " + told;
  if (moment.is_of_library) return moment.function;
  const std::string end = moment.duration_ns                    ? moment.outcome
                          : options.inside.contains(moment.pid) ? "still runs"
                                                                : "was killed";
  return moment.function + ": " + moment.text + ", process " + std::to_string(moment.pid) + ", " + end;
}

// Returns when the run began.
std::optional<std::int64_t> print_head(const trace_book::History &history, std::size_t run, const TraceOptions &options,
                                       std::int64_t now) {
  if (run >= history.runs().size()) {
    print_in(Ink::kHead, "Of no run that " + options.holder.name + " " + options.holder.remembers + "\n",
             options.window);
    return std::nullopt;
  }
  const trace_book::Run &of = history.runs()[run];
  print_in(Ink::kHead, "Run " + std::to_string(of.number) + ": " + base::shown(of.words) + "\n", options.window);
  const std::string line = "  " + date_and_time(of.begin_ns) + ", process " + std::to_string(of.pid) + ", ";
  print(wrapped(line + end_text(of, options, now), options.window.columns, 2) + "\n");
  return of.begin_ns;
}

std::string right(const std::string &text, std::size_t width) {
  return text.size() < width ? std::string(width - text.size(), ' ') + text : text;
}

}  // namespace

std::vector<const Moment *> in_tree(std::vector<const Moment *> moments, const TraceOptions &options) {
  std::erase_if(moments, [&](const Moment *moment) { return tree_text(*moment, moment->text, options).empty(); });
  return moments;
}

void print_call_tree(const trace_book::History &history, const std::vector<trace_book::Told> &lines,
                     const TraceOptions &options) {
  const std::int64_t now = newest_time(history);
  std::size_t run = trace_book::kNoRun - 1;
  std::int64_t begin = lines.front().moment->time_ns;
  for (const trace_book::Told &line : lines) {
    const Moment &moment = *line.moment;
    if (moment.run != run) {
      run = moment.run;
      begin = print_head(history, run, options, now).value_or(begin);
    }
    std::array<char, 32> since{};
    std::snprintf(since.data(), since.size(), "%10.6f",
                  static_cast<double>(moment.time_ns - begin) / static_cast<double>(kNsOfOneSecond));
    const std::string front = std::string(since.data()) + "  " +
                              right(line.duration_ns ? duration_text(*line.duration_ns) : "", 8) + "  " +
                              std::string(2 * moment.depth, ' ');
    const std::string text = front + (moment.is_error ? "! " : "") + base::shown(tree_text(moment, line.text, options));
    const std::size_t indent = std::min(front.size() + 4, options.window.columns / 2);
    print_in(ink_of(moment), wrapped(text, options.window.columns, indent) + "\n", options.window);
  }
}

}  // namespace spbox
