#include "host/spbox/trace_lines.h"

#include <utility>

#include "host/spbox/standard_output.h"
#include "host/spbox/text.h"
#include "host/spbox/trace_tree.h"

namespace spbox {
namespace {

using trace_book::History;
using trace_book::Moment;
using trace_book::Told;

// In a window that is narrower, a line has the time, the process and what happened.
constexpr std::size_t kWide = 132;

// Columns that stay where they are from one look to the next.
std::vector<std::string> widest_cells() {
  return {std::string(15, 'x'), std::string(7, 'x'), std::string(12, 'x'), std::string(30, 'x'), ""};
}

std::vector<std::string> cells_of(const Told &line, bool is_narrow) {
  const Moment &moment = *line.moment;
  const std::string pid = std::to_string(moment.pid), sign = moment.is_error ? "! " : "";
  if (is_narrow) return {time_of_day(moment.time_ns).substr(0, 12), pid, sign + moment.function + ": " + line.text};
  return {time_of_day(moment.time_ns), pid, moment.level, moment.function, sign + line.text};
}

std::vector<const Moment *> all_shown_of(const History &history, const TraceOptions &options) {
  std::vector<const Moment *> moments;
  for (const Moment &moment : history.moments()) moments.push_back(&moment);
  return shown_of(moments, history, options);
}

bool is_narrowed(const TraceOptions &options) {
  return options.pid != 0 || !options.run.empty() || !options.function.empty() || !options.since.empty();
}

void tell_of_none(const History &history, const TraceOptions &options) {
  if (history.moments().empty() && !options.errors) {
    print_line(options.holder.is_empty);
  } else if (is_narrowed(options)) {
    print_line(options.holder.title + (options.errors ? " holds no such error." : " holds nothing of this."));
  } else {
    print_line(options.holder.title + " holds no error.");
  }
}

}  // namespace

std::vector<const Moment *> shown_of(const std::vector<const Moment *> &moments, const History &history,
                                     const TraceOptions &options) {
  const Wanted wanted(options, history);
  std::vector<const Moment *> shown;
  for (const Moment *moment : moments) {
    if (!moment->is_void && wanted.has(*moment)) shown.push_back(moment);
  }
  return shown;
}

void print_lines(const std::vector<Told> &lines, const TraceOptions &options, Head head) {
  const std::size_t width = options.window.columns;
  const bool is_narrow = width != kNoWidth && width < kWide;
  std::vector<std::vector<std::string>> cells;
  if (options.follow && !is_narrow) cells.push_back(widest_cells());
  if (options.follow && is_narrow) cells.push_back({std::string(12, 'x'), std::string(7, 'x'), ""});
  const std::size_t unshown = cells.size();
  if (head == Head::kShown && is_narrow) cells.push_back({"Time", "Pid", "Event"});
  if (head == Head::kShown && !is_narrow) cells.push_back({"Time", "Pid", "Level", "Function", "Event"});
  const std::size_t first = cells.size();
  for (const Told &line : lines) cells.push_back(cells_of(line, is_narrow));
  const std::vector<std::string> texts = aligned_lines(std::move(cells), width, 2);
  for (std::size_t i = unshown; i < texts.size(); ++i) {
    print_in(i < first ? Ink::kHead : ink_of(*lines[i - first].moment), texts[i] + "\n", options.window);
  }
}

void print_history(const History &history, const TraceOptions &options) {
  std::vector<const Moment *> moments = all_shown_of(history, options);
  if (options.calls) moments = in_tree(std::move(moments), options);
  std::vector<Told> lines = told(moments, options.names());
  keep_last(lines, options.last);
  if (lines.empty()) {
    tell_of_none(history, options);
  } else if (options.calls) {
    print_call_tree(history, lines, options);
  } else {
    print_lines(lines, options, Head::kShown);
  }
}

}  // namespace spbox
