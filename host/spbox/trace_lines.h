// A history as lines: what `spbox trace` prints of a box, and `spbox replay` of a recording.
#pragma once

#include <cstddef>
#include <vector>

#include "host/spbox/trace_choice.h"
#include "host/trace_book/history.h"

namespace spbox {

template <typename Entry>
void keep_last(std::vector<Entry> &entries, std::size_t last) {
  if (last > 0 && entries.size() > last) entries.erase(entries.begin(), entries.end() - static_cast<long>(last));
}

// Those of these moments that are asked for, and say something that holds.
std::vector<const trace_book::Moment *> shown_of(const std::vector<const trace_book::Moment *> &moments,
                                                 const trace_book::History &history, const TraceOptions &options);

enum class Head { kShown, kNone };
void print_lines(const std::vector<trace_book::Told> &lines, const TraceOptions &options, Head head);

// All that is asked for, as lines or as a tree; a sentence where that is nothing.
void print_history(const trace_book::History &history, const TraceOptions &options);

}  // namespace spbox
