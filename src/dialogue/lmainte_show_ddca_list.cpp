#include "include/lmainte.h"

#include "src/dialogue/unit_lines.h"
#include "src/frame/trace.h"
#include "trace_events/dialogue.h"

namespace {

using trace_events::ShowDdcaList;

lmainte::Trace trace;
constexpr lmainte::Block kBlock = lmainte::block_of<ShowDdcaList>();

constexpr lmainte::UnitsErrors kErrors = {
    .no_units = ShowDdcaList::kNoUnits,
    .no_lines = ShowDdcaList::kNoLines,
    .table =
        {
            .file =
                {
                    .no_file = ShowDdcaList::kNoFile,
                    .pager_failed = ShowDdcaList::kPagerFailed,
                    .not_removed = ShowDdcaList::kNotRemoved,
                },
            .no_name = ShowDdcaList::kNoName,
        },
};

}  // namespace

int32_t lmainte_show_ddca_list(int32_t, uint32_t count, const BpUnitData *ddcs, const ListLine *lines) {
  lmainte::Call call(trace, kBlock);
  return call.returns(lmainte::show_list(call, kErrors, count, ddcs, lines));
}
