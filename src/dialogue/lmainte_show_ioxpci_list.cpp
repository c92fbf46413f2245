#include "include/lmainte.h"

#include <cstddef>

#include "src/dialogue/pci_slots.h"
#include "src/dialogue/unit_lines.h"
#include "src/frame/trace.h"
#include "trace_events/dialogue.h"

namespace {

using trace_events::ShowIoxpciList;

lmainte::Trace trace;
constexpr lmainte::Block kBlock = lmainte::block_of<ShowIoxpciList>();

constexpr lmainte::TableErrors kErrors = {
    .file =
        {
            .no_file = ShowIoxpciList::kNoFile,
            .pager_failed = ShowIoxpciList::kPagerFailed,
            .not_removed = ShowIoxpciList::kNotRemoved,
        },
    .no_name = ShowIoxpciList::kNoName,
};

// The slots begin at word 11 of the record.
constexpr size_t kFirstSlot = 11 - offsetof(IoxBoatData, word) / sizeof(uint32_t);

}  // namespace

int32_t lmainte_show_ioxpci_list(int32_t, uint32_t slots, const IoxBoatData *boat, const ListLine *lines) {
  lmainte::Call call(trace, kBlock);
  if (!lmainte::is_given(call, ShowIoxpciList::kNoUnit, boat)) return call.returns(LMAINTE_FAILED);
  if (!lmainte::is_given(call, ShowIoxpciList::kNoLines, lines)) return call.returns(LMAINTE_FAILED);
  return call.returns(lmainte::Table(call, kErrors).show(lines, [&](lmainte::Table &table) {
    const uint32_t *first_slot = boat->word + kFirstSlot;
    int32_t number = 0;
    // The expansion unit comes first, under its own name, with the number and the power of its first slot.
    return lmainte::write_slot(table, boat->unit_id, first_slot, number) &&
           lmainte::write_installed_slots(table, first_slot, slots, number);
  }));
}
