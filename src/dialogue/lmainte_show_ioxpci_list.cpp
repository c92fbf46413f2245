#include "include/lmainte.h"

#include "src/dialogue/pci_slots.h"
#include "src/dialogue/unit_lines.h"
#include "src/frame/trace.h"

namespace {

lmainte::Trace trace;
constexpr lmainte::Block kBlock = lmainte::plain_block(0x017);

constexpr size_t kHeadWords = 11;

}  // namespace

int32_t lmainte_show_ioxpci_list(int32_t, uint32_t slots, const IoxBoatData *boat, const ListLine *lines) {
  lmainte::Call call(trace, kBlock);
  if (!lmainte::is_given(call, 1, boat) || !lmainte::is_given(call, 2, lines)) return call.returns(LMAINTE_FAILED);
  const lmainte::TableEvents events = {.file = {.open = 3, .show = 5, .remove = 6}, .name = 4};
  return call.returns(lmainte::Table(call, events).show(lines, [&](lmainte::Table &table) {
    const uint32_t *first_slot = boat->word + (kHeadWords - (sizeof *boat - sizeof boat->word) / sizeof *boat->word);
    int number = 0;
    // The expansion unit comes first, under its own name, with the number and the power of its first slot.
    return lmainte::write_slot(table, boat->unit_id, first_slot, number) &&
           lmainte::write_installed_slots(table, first_slot, slots, number);
  }));
}
