#include "include/lmainte.h"

#include "src/dialogue/pci_slots.h"
#include "src/dialogue/unit_lines.h"
#include "src/frame/trace.h"
#include "trace_events/dialogue.h"

namespace {

using trace_events::ShowIoupciList;

lmainte::Trace trace;
constexpr lmainte::Block kBlock = lmainte::block_of<ShowIoupciList>();

constexpr lmainte::TableErrors kErrors = {
    .file =
        {
            .no_file = ShowIoupciList::kNoFile,
            .pager_failed = ShowIoupciList::kPagerFailed,
            .not_removed = ShowIoupciList::kNotRemoved,
        },
    .no_name = ShowIoupciList::kNoName,
};

}  // namespace

int32_t lmainte_show_ioupci_list(int32_t, uint32_t slots, const SbData *board, const ListLine *lines) {
  lmainte::Call call(trace, kBlock);
  if (!lmainte::is_given(call, ShowIoupciList::kNoUnit, board)) return call.returns(LMAINTE_FAILED);
  if (!lmainte::is_given(call, ShowIoupciList::kNoLines, lines)) return call.returns(LMAINTE_FAILED);
  return call.returns(lmainte::Table(call, kErrors).show(lines, [&](lmainte::Table &table) {
    int32_t number = 0;
    return lmainte::write_installed_slots(table, board->iou.reserved, slots, number);
  }));
}
