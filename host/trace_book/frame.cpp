#include "trace_events/frame.h"
#include "host/trace_book/phrases.h"

namespace trace_book {

using namespace trace_events;

namespace {

constexpr std::array kSharedOfFrame{
    SharedPhrase{"no-table", "the table is null"},
};

}  // namespace

template <>
inline constexpr Page kPage<Exec>{
    "lmainte_exec",
    {
        {Exec::kProgram, "run a control program", kCommand, "arguments"},
        {Exec::kChildRuns, "the child runs the program", kCommand, "arguments"},
        {Exec::kStarted, "a child was started", "time limit", "child"},
        {Exec::kLimitSpent, "the time limit is spent", "seconds waited"},
        {Exec::kStopped, "the child was stopped", "result", kWaitStatus},
        {Exec::kEnded, "the program ended", "exit status"},
        {Exec::kRefused, "an argument is refused"},
        {Exec::kNoMemory, "no memory for the arguments", kErrno},
        {Exec::kNoChild, "no child could be made", kErrno},
        {Exec::kCannotRun, "the program cannot be run", kErrno},
        {Exec::kWaitFailed, "the wait for the child failed", "result", kErrno},
        {Exec::kNotStopped, "the child could not be stopped", "result"},
        {Exec::kKilled, "the program was killed", kWaitStatus},
    },
};

template <>
inline constexpr Page kPage<StopChild>{
    "lmainte_exec:stop-child",
    {
        {StopChild::kChild, "stop the child", "child"},
        {StopChild::kSignalSent, "a signal was sent", "attempt"},
        {StopChild::kWaitFailed, "the wait after SIGTERM failed", "result", kErrno},
        {StopChild::kLastWaitFailed, "the wait after SIGKILL failed", "result", kErrno},
    },
};

template <>
inline constexpr Page kPage<Signal>{
    "lmainte_signal",
    {
        {Signal::kHandlerSet, "a handler was set", "result", kSignal},
        {Signal::kHandlerNotSet, "the handler was not set", "result", kSignal},
    },
};

template <>
inline constexpr Page kPage<SignalMask>{
    "lmainte_signal_mask",
};

template <>
inline constexpr Page kPage<ProvideProcessId>{
    "lmainte_put_pinfo:process-id",
};

template <>
inline constexpr Page kPage<GetPid>{
    "lmainte_get_pid",
    {
        {GetPid::kNoText, "the text is null"},
        {GetPid::kEmptyText, "the text is empty: nobody is named"},
        {GetPid::kNoProcessId, "the text is no process id", "number read", "character"},
    },
};

Functions frame_functions() {
  static constexpr auto kFunctions = functions_of<kSharedOfFrame>(Frame{});
  return kFunctions;
}

}  // namespace trace_book
