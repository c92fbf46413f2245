// Which function called which, and how long it took: runs of commands as trees.
#pragma once

#include <string>
#include <vector>

#include "host/spbox/trace_choice.h"
#include "host/trace_book/history.h"

namespace spbox {

// Those that have a line of their own: the end of what lasts stands at its beginning.
std::vector<const trace_book::Moment *> in_tree(std::vector<const trace_book::Moment *> moments,
                                                const TraceOptions &options);

void print_call_tree(const trace_book::History &history, const std::vector<trace_book::Told> &lines,
                     const TraceOptions &options);

}  // namespace spbox
