#include "include/lmainte.h"

#include "src/dialogue/unit_lines.h"
#include "src/frame/trace.h"
#include "trace_events/dialogue.h"

namespace {

using trace_events::ShowFantrayStatus;

lmainte::Trace trace;
constexpr lmainte::Block kBlock = lmainte::block_of<ShowFantrayStatus>();

constexpr lmainte::UnitsErrors kErrors = {
    .no_units = ShowFantrayStatus::kNoUnit,
    .no_lines = ShowFantrayStatus::kNoLines,
    .table =
        {
            .file =
                {
                    .no_file = ShowFantrayStatus::kNoFile,
                    .pager_failed = ShowFantrayStatus::kPagerFailed,
                    .not_removed = ShowFantrayStatus::kNotRemoved,
                },
            .no_name = ShowFantrayStatus::kNoName,
        },
};

}  // namespace

int32_t lmainte_show_fantray_status(int32_t, const FantrayData *tray, const ListLine *lines) {
  const lmainte::Call call(trace, kBlock);
  return lmainte::show_status(call, kErrors, tray, lines);
}
