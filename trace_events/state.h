// The trace events of src/state.
#pragma once

#include "trace_events/event.h"

namespace trace_events {

struct State;

// lmainte_ipc_communicate
struct IpcCommunicate : PlainBlock<State, 0x03D> {
  enum Point : Code { kRequest = point(2), kReply };
  enum Error : Code {
    kRefused = error(1),
    kNotSent,
    kWaitFailed,
    kLimitSpent,
    kNothingReady,
    kOtherChannel,
    kNotReceived
  };
};

// lmainte_send_event
struct SendEvent : PlainBlock<State, 0x050> {
  enum Point : Code { kSaved = point(2) };
  enum Error : Code { kNoUnit = error(1), kNoAction, kNoEvent, kNotSaved };
};

// lmainte_send_event, where it looks for the event's code
struct FindEventCode : PlainBlock<State, 0x051> {
  enum Error : Code { kNoCode = error(1) };
};

// lmainte_init_swap_fru_list
struct InitSwapFruList : PlainBlock<State, 0x060> {
  enum Error : Code { kNoModelData = error(1), kListDropped, kNoSystemStatus, kNoModel, kNotCollected };
};

// lmainte_add_swap_fru_to_list
struct AddSwapFruToList : PlainBlock<State, 0x061> {
  enum Point : Code { kUnit = point(2) };
  enum Error : Code { kNotAdded = error(1) };
};

// lmainte_delete_swap_fru_from_list
struct DeleteSwapFruFromList : PlainBlock<State, 0x062> {
  enum Error : Code { kNotListed = error(1) };
};

// lmainte_get_swap_fru_list
struct GetSwapFruList : PlainBlock<State, 0x063> {};

// lmainte_check_swap_fru
struct CheckSwapFru : PlainBlock<State, 0x064> {};

// lmainte_free_swap_fru_list
struct FreeSwapFruList : PlainBlock<State, 0x065> {};

// What fills the list: the units of a type are read, each is inserted at its place in the order of types.
struct SwapFruCollect : PlainBlock<State, 0x066> {
  enum Error : Code { kNoReader = error(1), kNoMemory, kNotRead, kNotInserted };
};
struct SwapFruInsert : PlainBlock<State, 0x067> {
  enum Error : Code { kNoMemory = error(1) };
};
struct SwapFruOrder : PlainBlock<State, 0x068> {};

// lmainte_put_pinfo
struct PutPinfo : PlainBlock<State, 0x070> {
  enum Point : Code { kItem = point(2), kWritten };
  enum Error : Code { kNoItem = error(1), kNotEmptied, kNotRewound, kNotWritten };
};

// lmainte_clear_pinfo
struct ClearPinfo : PlainBlock<State, 0x071> {
  enum Error : Code { kNotEmptied = error(1) };
};

// lmainte_get_pinfo
struct GetPinfo : PlainBlock<State, 0x072> {
  enum Point : Code { kRead = point(2) };
  enum Error : Code { kNoBuffer = error(1), kNotRead };
};

// lmainte_fput_pinfo
struct FputPinfo : PlainBlock<State, 0x073> {
  enum Error : Code { kNullArgument = error(1), kNotOpened, kFailed, kNotClosed };
};

// lmainte_fclear_pinfo
struct FclearPinfo : PlainBlock<State, 0x074> {
  enum Error : Code { kNullArgument = error(1), kNotOpened, kFailed, kNotClosed };
};

// lmainte_fget_pinfo
struct FgetPinfo : PlainBlock<State, 0x075> {
  enum Error : Code { kNullArgument = error(1), kNotOpened, kFailed, kNotClosed };
};

struct State : Room<IpcCommunicate, SendEvent, FindEventCode, InitSwapFruList, AddSwapFruToList, DeleteSwapFruFromList,
                    GetSwapFruList, CheckSwapFru, FreeSwapFruList, SwapFruCollect, SwapFruInsert, SwapFruOrder,
                    PutPinfo, ClearPinfo, GetPinfo, FputPinfo, FclearPinfo, FgetPinfo> {};

}  // namespace trace_events
