#include "host/spbox/trace/phrases.h"

namespace spbox {
namespace {

constexpr Phrase kExec[] = {
    point(2, "run a control program", "command", "arguments"),
    point(3, "the child runs the program", "command", "arguments"),
    point(4, "a child was started", "time limit", "child"),
    point(5, "the time limit is spent", "seconds waited"),
    point(6, "the child was stopped", "result", "wait status"),
    point(7, "the program ended", "exit status"),
    error(1, "an argument is refused"),
    error(2, "no memory for the arguments", "errno"),
    error(3, "no child could be made", "errno"),
    error(4, "the program cannot be run", "errno"),
    error(5, "the wait for the child failed", "result", "errno"),
    error(6, "the child could not be stopped", "result"),
    error(7, "the program was killed", "wait status"),
};
constexpr Phrase kTermination[] = {
    point(2, "stop the child", "child"),
    point(3, "a signal was sent", "attempt"),
    error(1, "the wait after SIGTERM failed", "result", "errno"),
    error(2, "the wait after SIGKILL failed", "result", "errno"),
};
constexpr Phrase kSignal[] = {
    point(2, "a handler was set", "result", "signal"),
    error(1, "the table is null"),
    error(2, "the handler was not set", "result", "signal"),
};
constexpr Phrase kSignalMask[] = {
    error(1, "the table is null"),
};
constexpr Phrase kGetPid[] = {
    error(1, "the text is null"),
    error(2, "the text is empty: nobody is named"),
    error(3, "the text is no process id", "number read", "character"),
};

constexpr Function kFunctions[] = {
    {"lmainte_exec", Space::kPlain, 0x002, kExec},
    {"lmainte_exec (termination)", Space::kPlain, 0x069, kTermination},
    {"lmainte_signal", Space::kPlain, 0x039, kSignal},
    {"lmainte_signal_mask", Space::kPlain, 0x039, kSignalMask, {}, 8},
    {"lmainte_put_pinfo (process id)", Space::kPlain, 0x076},
    {"lmainte_get_pid", Space::kPlain, 0x077, kGetPid},
};

}  // namespace

Functions frame_functions() {
  return kFunctions;
}

}  // namespace spbox
