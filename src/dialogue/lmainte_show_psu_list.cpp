#include "include/lmainte.h"

#include "src/dialogue/unit_lines.h"
#include "src/frame/trace.h"
#include "trace_events/dialogue.h"

namespace {

using trace_events::ShowPsuList;

lmainte::Trace trace;
constexpr lmainte::Block kBlock = lmainte::block_of<ShowPsuList>();

constexpr lmainte::UnitsErrors kErrors = {
    .no_units = ShowPsuList::kNoUnits,
    .no_lines = ShowPsuList::kNoLines,
    .table =
        {
            .file =
                {
                    .no_file = ShowPsuList::kNoFile,
                    .pager_failed = ShowPsuList::kPagerFailed,
                    .not_removed = ShowPsuList::kNotRemoved,
                },
            .no_name = ShowPsuList::kNoName,
        },
};

}  // namespace

int32_t lmainte_show_psu_list(int32_t, uint32_t count, const PsuData *psus, const ListLine *lines) {
  lmainte::Call call(trace, kBlock);
  return call.returns(lmainte::show_list(call, kErrors, count, psus, lines));
}
