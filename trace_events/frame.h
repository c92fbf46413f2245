// The trace events of src/frame.
#pragma once

#include "trace_events/event.h"

namespace trace_events {

struct Frame;

// lmainte_exec
struct Exec : PlainBlock<Frame, 0x002> {
  enum Point : Code { kProgram = point(2), kChildRuns, kStarted, kLimitSpent, kStopped, kEnded };
  enum Error : Code { kRefused = error(1), kNoMemory, kNoChild, kCannotRun, kWaitFailed, kNotStopped, kKilled };
};

// lmainte_exec, where it stops a child that outlived its time limit
struct StopChild : PlainBlock<Frame, 0x069> {
  enum Point : Code { kChild = point(2), kSignalSent };
  enum Error : Code { kWaitFailed = error(1), kLastWaitFailed };
};

// lmainte_signal
struct Signal : PlainBlock<Frame, 0x039> {
  enum Point : Code { kHandlerSet = point(2) };
  enum Error : Code { kNoTable = error(1), kHandlerNotSet };
};

// lmainte_signal_mask, in the block of lmainte_signal
struct SignalMask : PlainBlock<Frame, 0x039, 8> {
  enum Error : Code { kNoTable = error(1) };
};

// lmainte_put_pinfo, where it asks for the process id
struct ProvideProcessId : PlainBlock<Frame, 0x076> {};

// lmainte_get_pid
struct GetPid : PlainBlock<Frame, 0x077> {
  enum Error : Code { kNoText = error(1), kEmptyText, kNoProcessId };
};

struct Frame : Room<Exec, StopChild, Signal, SignalMask, ProvideProcessId, GetPid> {};

}  // namespace trace_events
