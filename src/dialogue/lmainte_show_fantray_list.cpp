#include "include/lmainte.h"

#include "src/dialogue/unit_lines.h"
#include "src/frame/trace.h"
#include "trace_events/dialogue.h"

namespace {

using trace_events::ShowFantrayList;

lmainte::Trace trace;
constexpr lmainte::Block kBlock = lmainte::block_of<ShowFantrayList>();

constexpr lmainte::UnitsErrors kErrors = {
    .no_units = ShowFantrayList::kNoUnits,
    .no_lines = ShowFantrayList::kNoLines,
    .table =
        {
            .file =
                {
                    .no_file = ShowFantrayList::kNoFile,
                    .pager_failed = ShowFantrayList::kPagerFailed,
                    .not_removed = ShowFantrayList::kNotRemoved,
                },
            .no_name = ShowFantrayList::kNoName,
        },
};

}  // namespace

int32_t lmainte_show_fantray_list(int32_t, uint32_t count, const FantrayData *trays, const ListLine *lines) {
  lmainte::Call call(trace, kBlock);
  return call.returns(lmainte::show_list(call, kErrors, count, trays, lines));
}
