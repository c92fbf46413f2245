#include "trace_events/state.h"
#include "host/trace_book/phrases.h"

namespace trace_book {

using namespace trace_events;

namespace {

constexpr std::array kSharedOfState{
    SharedPhrase{"not-emptied", "the file was not emptied", "descriptor", kErrno},
    SharedPhrase{"null-argument", "an argument is null"},
    SharedPhrase{"not-opened", "the file cannot be opened", "result", kErrno},
    SharedPhrase{"failed", "the work on the file failed", "result"},
    SharedPhrase{"not-closed", "the file was not closed", "result", kErrno},
};

}  // namespace

template <>
inline constexpr Page kPage<IpcCommunicate>{
    "lmainte_ipc_communicate",
    {
        {IpcCommunicate::kRequest, "ask a daemon", "daemon", "request"},
        {IpcCommunicate::kReply, "the reply came", "result"},
        {IpcCommunicate::kRefused, "an argument is refused"},
        {IpcCommunicate::kNotSent, "the request was not sent", "result"},
        {IpcCommunicate::kWaitFailed, "the wait for the reply failed", "result"},
        {IpcCommunicate::kLimitSpent, "no reply within the limit", "status"},
        {IpcCommunicate::kNothingReady, "no reply: nothing is ready"},
        {IpcCommunicate::kOtherChannel, "the reply is another channel's", "channel"},
        {IpcCommunicate::kNotReceived, "the reply was not received", "result"},
    },
};

template <>
inline constexpr Page kPage<SendEvent>{
    "lmainte_send_event",
    {
        {SendEvent::kSaved, "the log took the event", "result"},
        {SendEvent::kNoUnit, "the unit is null"},
        {SendEvent::kNoAction, "no such action", "action"},
        {SendEvent::kNoEvent, "the log has no such event", "action", "kind"},
        {SendEvent::kNotSaved, "the log did not take the event", "result"},
    },
};

template <>
inline constexpr Page kPage<FindEventCode>{
    "lmainte_send_event:find-code",
    {
        {FindEventCode::kNoCode, "no code for this kind of unit", "kind"},
    },
};

template <>
inline constexpr Page kPage<InitSwapFruList>{
    "lmainte_init_swap_fru_list",
    {
        {InitSwapFruList::kNoModelData, "the model's data are null"},
        {InitSwapFruList::kListDropped, "there was a list already: it is dropped", "count"},
        {InitSwapFruList::kNoSystemStatus, "the system's status was not read", kResult},
        {InitSwapFruList::kNoModel, "no such model", kModel},
        {InitSwapFruList::kNotCollected, "the units were not collected", "type", kResult},
    },
};

template <>
inline constexpr Page kPage<AddSwapFruToList>{
    "lmainte_add_swap_fru_to_list",
    {
        {AddSwapFruToList::kUnit, "add the unit to the list", "type", "number"},
        {AddSwapFruToList::kNotAdded, "the unit was not added", "type", "number"},
    },
};

template <>
inline constexpr Page kPage<DeleteSwapFruFromList>{
    "lmainte_delete_swap_fru_from_list",
    {
        {DeleteSwapFruFromList::kNotListed, "the unit is not in the list", "type", "number"},
    },
};

template <>
inline constexpr Page kPage<GetSwapFruList>{
    "lmainte_get_swap_fru_list",
};

template <>
inline constexpr Page kPage<CheckSwapFru>{
    "lmainte_check_swap_fru",
};

template <>
inline constexpr Page kPage<FreeSwapFruList>{
    "lmainte_free_swap_fru_list",
};

template <>
inline constexpr Page kPage<SwapFruCollect>{
    "lmainte_swap_fru_collect",
    {
        {SwapFruCollect::kNoReader, "units of this type are not listed", "type"},
        {SwapFruCollect::kNoMemory, "no memory for the units", kErrno},
        {SwapFruCollect::kNotRead, "the units were not read", "type", kResult},
        {SwapFruCollect::kNotInserted, "the unit was not inserted", "type", "result"},
    },
};

template <>
inline constexpr Page kPage<SwapFruInsert>{
    "lmainte_swap_fru_insert",
    {
        {SwapFruInsert::kNoMemory, "no memory for the list", kErrno},
    },
};

template <>
inline constexpr Page kPage<SwapFruOrder>{
    "lmainte_swap_fru_insert:find-order",
};

template <>
inline constexpr Page kPage<PutPinfo>{
    "lmainte_put_pinfo",
    {
        {PutPinfo::kItem, "an item was provided", "result", "place"},
        {PutPinfo::kWritten, "the information was written", "bytes"},
        {PutPinfo::kNoItem, "an item was not provided", "result", "place"},
        {PutPinfo::kNotRewound, "the file was not rewound", "descriptor", kErrno},
        {PutPinfo::kNotWritten, "the information was not written", "descriptor", kErrno},
    },
};

template <>
inline constexpr Page kPage<ClearPinfo>{
    "lmainte_clear_pinfo",
};

template <>
inline constexpr Page kPage<GetPinfo>{
    "lmainte_get_pinfo",
    {
        {GetPinfo::kRead, "the information was read", "bytes"},
        {GetPinfo::kNoBuffer, "the buffer is null"},
        {GetPinfo::kNotRead, "the information was not read", "descriptor", kErrno},
    },
};

template <>
inline constexpr Page kPage<FputPinfo>{
    "lmainte_fput_pinfo",
};

template <>
inline constexpr Page kPage<FclearPinfo>{
    "lmainte_fclear_pinfo",
};

template <>
inline constexpr Page kPage<FgetPinfo>{
    "lmainte_fget_pinfo",
};

Functions state_functions() {
  static constexpr auto kFunctions = functions_of<kSharedOfState>(State{});
  return kFunctions;
}

}  // namespace trace_book
