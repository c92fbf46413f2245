#include "host/technician/old_spelling.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "host/script/form.h"
#include "host/trace_book/event_names.h"

namespace technician {
namespace {

struct OldFunction {
  std::string_view old, name;
};

constexpr std::array<OldFunction, 21> kFunctions{{
    {"lmainte_chk_fru_install (await)", "lmainte_chk_fru_install:await"},
    {"lmainte_chk_fru_install (test)", "lmainte_chk_fru_install:test"},
    {"lmainte_exec (termination)", "lmainte_exec:stop-child"},
    {"lmainte_get_emgb_data_all or _pair", "lmainte_get_emgb_data_all"},
    {"lmainte_get_emgbu_data (local record)", "lmainte_get_emgbu_data:local-record"},
    {"lmainte_get_emgbu_data (read)", "lmainte_get_emgbu_data:read"},
    {"lmainte_get_fantray_data (read)", "lmainte_get_fantray_data:read"},
    {"lmainte_get_model_data (find model)", "lmainte_get_model_data:find-model"},
    {"lmainte_get_model_data (read time file)", "lmainte_get_model_data:read-time-file"},
    {"lmainte_get_psu_data (fetch)", "lmainte_get_psu_data:fetch"},
    {"lmainte_get_psu_data (read)", "lmainte_get_psu_data:read"},
    {"lmainte_get_sb_data (CMU)", "lmainte_get_sb_data:cmu"},
    {"lmainte_get_sb_data (CPU modules)", "lmainte_get_sb_data:cpu-modules"},
    {"lmainte_get_sb_data (DIMMs)", "lmainte_get_sb_data:dimms"},
    {"lmainte_get_sb_data (IOU)", "lmainte_get_sb_data:iou"},
    {"lmainte_get_unit_position_id (find ids)", "lmainte_get_unit_position_id:find-ids"},
    {"lmainte_get_unit_position_id (split)", "lmainte_get_unit_position_id:split"},
    {"lmainte_put_pinfo (process id)", "lmainte_put_pinfo:process-id"},
    {"lmainte_send_event (find code)", "lmainte_send_event:find-code"},
    {"lmainte_show_iox_list or lmainte_show_ioxpsu_list", "lmainte_show_iox_list"},
    {"lmainte_swap_fru_insert (find order)", "lmainte_swap_fru_insert:find-order"},
}};

// Words that the trace book does not have any more. All others are its phrases to this day.
struct OldWords {
  std::string_view function, words, name;
};

constexpr std::array<OldWords, 2> kReworded{{
    {"lmainte_detach_fru", "no such mode", "refused"},
    {"lmainte_test_fru", "no such mode", "refused"},
}};

}  // namespace

std::string take_old_function(script::Words &words) {
  for (const OldFunction &row : kFunctions) {
    if (script::take_verb({row.old, 0, script::kAny, "", ""}, words)) return std::string(row.name);
  }
  return "";
}

std::optional<std::uint32_t> event_of_old_words(const std::string &function, const std::string &words) {
  for (const OldWords &row : kReworded) {
    if (row.function == function && row.words == words) return trace_book::event_named(function, row.name);
  }
  return trace_book::event_in_words(function, words);
}

}  // namespace technician
