#include "host/spbox/trace/phrases.h"

namespace spbox {
namespace {

constexpr Phrase kCommunicate[] = {
    point(2, "ask a daemon", "daemon", "request"),
    point(3, "the reply came", "result"),
    error(1, "an argument is refused"),
    error(2, "the request was not sent", "result"),
    error(3, "the wait for the reply failed", "result"),
    error(4, "no reply within the limit", "status"),
    error(5, "no reply: nothing is ready"),
    error(6, "the reply is another channel's", "channel"),
    error(7, "the reply was not received", "result"),
};
constexpr Phrase kSendEvent[] = {
    point(2, "the log took the event", "result"),
    error(1, "the unit is null"),
    error(2, "no such action", "action"),
    error(3, "the log has no such event", "action", "kind"),
    error(4, "the log did not take the event", "result"),
};
constexpr Phrase kFindCode[] = {
    error(1, "no code for this kind of unit", "kind"),
};

constexpr Phrase kInitList[] = {
    error(1, "the model's data are null"),
    error(2, "there was a list already: it is dropped", "count"),
    error(3, "the system's status was not read", "result"),
    error(4, "no such model", "model"),
    error(5, "the units were not collected", "type", "result"),
};
constexpr Phrase kAddToList[] = {
    point(2, "add the unit to the list", "type", "number"),
    error(1, "the unit was not added", "type", "number"),
};
constexpr Phrase kDeleteFromList[] = {
    error(1, "the unit is not in the list", "type", "number"),
};
constexpr Phrase kCollect[] = {
    error(1, "units of this type are not listed", "type"),
    error(2, "no memory for the units", "errno"),
    error(3, "the units were not read", "type", "result"),
    error(4, "the unit was not inserted", "type", "result"),
};
constexpr Phrase kInsert[] = {
    error(1, "no memory for the list", "errno"),
};

constexpr Phrase kPutInformation[] = {
    point(2, "an item was provided", "result", "place"),
    point(3, "the information was written", "bytes"),
    error(1, "an item was not provided", "result", "place"),
    error(2, "the file was not emptied", "descriptor", "errno"),
    error(3, "the file was not rewound", "descriptor", "errno"),
    error(4, "the information was not written", "descriptor", "errno"),
};
constexpr Phrase kClearInformation[] = {
    error(1, "the file was not emptied", "descriptor", "errno"),
};
constexpr Phrase kGetInformation[] = {
    point(2, "the information was read", "bytes"),
    error(1, "the buffer is null"),
    error(2, "the information was not read", "descriptor", "errno"),
};
constexpr Phrase kInformationFile[] = {
    error(1, "an argument is null"),
    error(2, "the file cannot be opened", "result", "errno"),
    error(3, "the work on the file failed", "result"),
    error(4, "the file was not closed", "result", "errno"),
};

constexpr Function kFunctions[] = {
    {"lmainte_ipc_communicate", Space::kPlain, 0x03D, kCommunicate},
    {"lmainte_send_event", Space::kPlain, 0x050, kSendEvent},
    {"lmainte_send_event (find code)", Space::kPlain, 0x051, kFindCode},
    {"lmainte_init_swap_fru_list", Space::kPlain, 0x060, kInitList},
    {"lmainte_add_swap_fru_to_list", Space::kPlain, 0x061, kAddToList},
    {"lmainte_delete_swap_fru_from_list", Space::kPlain, 0x062, kDeleteFromList},
    {"lmainte_get_swap_fru_list", Space::kPlain, 0x063},
    {"lmainte_check_swap_fru", Space::kPlain, 0x064},
    {"lmainte_free_swap_fru_list", Space::kPlain, 0x065},
    {"lmainte_swap_fru_collect", Space::kPlain, 0x066, kCollect},
    {"lmainte_swap_fru_insert", Space::kPlain, 0x067, kInsert},
    {"lmainte_swap_fru_insert (find order)", Space::kPlain, 0x068},
    {"lmainte_put_pinfo", Space::kPlain, 0x070, kPutInformation},
    {"lmainte_clear_pinfo", Space::kPlain, 0x071, kClearInformation},
    {"lmainte_get_pinfo", Space::kPlain, 0x072, kGetInformation},
    {"lmainte_fput_pinfo", Space::kPlain, 0x073, kInformationFile},
    {"lmainte_fclear_pinfo", Space::kPlain, 0x074, kInformationFile},
    {"lmainte_fget_pinfo", Space::kPlain, 0x075, kInformationFile},
};

}  // namespace

Functions state_functions() {
  return kFunctions;
}

}  // namespace spbox
