#include "include/lmainte.h"

#include "src/dialogue/empty_list.h"
#include "src/frame/trace.h"
#include "trace_events/dialogue.h"

namespace {

using trace_events::ShowIoxList;

lmainte::Trace trace;
// Both empty lists have this block. Nothing in the trace tells them apart.
constexpr lmainte::Block kBlock = lmainte::block_of<ShowIoxList>();

constexpr lmainte::EmptyListErrors kErrors = {
    .no_lines = ShowIoxList::kNoLines,
    .no_file = ShowIoxList::kNoFile,
};

}  // namespace

int32_t lmainte_show_iox_list(int32_t, const void *, const ListLine *lines) {
  const lmainte::Call call(trace, kBlock);
  lmainte::show_empty_list(call, kErrors, lines);
  return LMAINTE_OK;
}
