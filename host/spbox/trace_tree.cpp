#include "host/spbox/trace_tree.h"

#include <array>
#include <cstdint>
#include <cstdio>

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
std::string tree_text(const Moment &moment, const TraceOptions &options) {
  if (moment.is_end || moment.level == "command") return "";
  if (!moment.is_begin) return moment.function + ": " + moment.text;
  if (moment.is_of_library) return moment.function;
  const std::string end = moment.duration_ns                    ? moment.outcome
                          : options.inside.contains(moment.pid) ? "still runs"
                                                                : "was killed";
  return moment.function + ": " + moment.text + ", process " + std::to_string(moment.pid) + ", " + end;
}

std::string right(const std::string &text, std::size_t width) {
  return text.size() < width ? std::string(width - text.size(), ' ') + text : text;
}

}  // namespace

std::vector<const Moment *> in_tree(std::vector<const Moment *> moments, const TraceOptions &options) {
  std::erase_if(moments, [&](const Moment *moment) { return tree_text(*moment, options).empty(); });
  return moments;
}

std::string call_tree(const trace_book::History &history, const std::vector<const Moment *> &moments,
                      const TraceOptions &options) {
  const std::int64_t now = newest_time(history);
  std::size_t run = trace_book::kNoRun - 1;
  std::int64_t begin = moments.front()->time_ns;
  std::string text;
  for (const Moment *moment : moments) {
    if (moment->run != run) {
      run = moment->run;
      if (run < history.runs().size()) {
        const trace_book::Run &of = history.runs()[run];
        begin = of.begin_ns;
        text += "Run " + std::to_string(of.number) + ": " + of.words + "\n  " + date_and_time(of.begin_ns) +
                ", process " + std::to_string(of.pid) + ", " + end_text(of, options, now) + "\n";
      } else {
        text += "Of no run that the box remembers\n";
      }
    }
    std::array<char, 32> since{};
    std::snprintf(since.data(), since.size(), "%10.6f",
                  static_cast<double>(moment->time_ns - begin) / static_cast<double>(kNsOfOneSecond));
    text += std::string(since.data()) + "  " +
            right(moment->duration_ns ? duration_text(*moment->duration_ns) : "", 8) + "  " +
            std::string(2 * moment->depth, ' ') + (moment->is_error ? "! " : "") + tree_text(*moment, options) + "\n";
  }
  return text;
}

}  // namespace spbox
