#include "trace_events/dialogue.h"
#include "host/trace_book/phrases.h"

namespace trace_book {

using namespace trace_events;

namespace {

constexpr std::array kSharedOfDialogue{
    SharedPhrase{"no-child", "no child could be made", kErrno},
    SharedPhrase{"no-lines", "the lines are null"},
    SharedPhrase{"no-file", "the list file cannot be created", kErrno},
    SharedPhrase{"pager-failed", "the pager failed", kResult},
    SharedPhrase{"not-removed", "the list file cannot be removed", "result", kErrno},
    SharedPhrase{"no-units", "the records are null"},
    SharedPhrase{"no-name", "a unit has no name", "result"},
    SharedPhrase{"no-unit", "the record is null"},
    SharedPhrase{"no-boards", "the boards' records are null"},
    SharedPhrase{"no-kind", "no such kind of board", "kind"},
};

}  // namespace

template <>
inline constexpr Page kPage<AskSelect>{
    "lmainte_ask_select",
    {
        {AskSelect::kExit, "exit", Value{"result", Form::kAnswer}},
        {AskSelect::kAnswered, "the prompt returned", Value{"result", Form::kAnswer}},
        {AskSelect::kNoSecond, "the second argument is null"},
        {AskSelect::kNoFormat, "the format is null"},
        {AskSelect::kNotFlushed, "typed-ahead input was not discarded", kResult},
        {AskSelect::kEchoNotOn, "echo was not switched on", kResult},
        {AskSelect::kEchoNotOff, "echo was not switched off: the answer does not count", kResult},
    },
};

template <>
inline constexpr Page kPage<TtyControl>{
    "lmainte_tty_control",
    {
        {TtyControl::kMode, "change the terminal", Value{"mode", Form::kTerminalMode}, "setting"},
        {TtyControl::kNotRead, "the terminal's attributes cannot be read", "result", kErrno},
        {TtyControl::kNoMode, "no such mode", "mode", "setting"},
        {TtyControl::kNotFlushed, "the terminal's queue was not discarded", "result", kErrno},
        {TtyControl::kNotSet, "the terminal's attributes cannot be set", "result", kErrno},
    },
};

template <>
inline constexpr Page kPage<DotStart>{
    "lmainte_dot_start",
    {
        {DotStart::kChild, "a child shows the progress", "child"},
        {DotStart::kMark, "a mark was shown", "seconds"},
        {DotStart::kEnded, "the progress is at its end", "signal came"},
        {DotStart::kSignalCame, "the signal to end the progress came"},
        {DotStart::kNoRequest, "the request is null"},
        {DotStart::kRefused, "the request is refused", "enabled", "seconds"},
        {DotStart::kNoClock, "the clock cannot be read", kErrno},
        {DotStart::kHandlerNotSet, "the signal's handler was not set", "result"},
    },
};

template <>
inline constexpr Page kPage<DotEnd>{
    "lmainte_dot_end",
    {
        {DotEnd::kHasEnded, "whether the child has ended", "process"},
        {DotEnd::kSignalSent, "SIGTERM was sent", "child"},
        {DotEnd::kNoChild, "there is no such child", "child"},
    },
};

template <>
inline constexpr Page kPage<ShowFile>{
    "lmainte_show_file",
    {
        {ShowFile::kChildRuns, "the child runs the pager"},
        {ShowFile::kNoPath, "the path is null"},
        {ShowFile::kCannotRun, "the pager cannot be run", kErrno},
        {ShowFile::kWaitFailed, "the wait for the pager failed", "result", kErrno},
        {ShowFile::kKilled, "the pager was killed", kWaitStatus},
        {ShowFile::kNotStarted, "the pager could not be started", kWaitStatus},
    },
};

template <>
inline constexpr Page kPage<ShowMenu>{
    "lmainte_show_menu",
};

template <>
inline constexpr Page kPage<ShowPsuList>{
    "lmainte_show_psu_list",
};

template <>
inline constexpr Page kPage<ShowFantrayList>{
    "lmainte_show_fantray_list",
};

template <>
inline constexpr Page kPage<ShowDdcaList>{
    "lmainte_show_ddca_list",
};

template <>
inline constexpr Page kPage<ShowIoupciList>{
    "lmainte_show_ioupci_list",
};

template <>
inline constexpr Page kPage<ShowIoxpciList>{
    "lmainte_show_ioxpci_list",
};

template <>
inline constexpr Page kPage<ShowIounitList>{
    "lmainte_show_iounit_list",
    {
        {ShowIounitList::kNoExpansions, "the expansion units' records are null"},
    },
};

template <>
inline constexpr Page kPage<ShowIoxList>{
    {"lmainte_show_iox_list", "lmainte_show_ioxpsu_list"},
};

template <>
inline constexpr Page kPage<ShowCmuIouList>{
    "lmainte_show_cmu_iou_list",
    {
        {ShowCmuIouList::kNoXsbs, "the extended system boards' records are null"},
    },
};

template <>
inline constexpr Page kPage<ShowPsuStatus>{
    "lmainte_show_psu_status",
};

template <>
inline constexpr Page kPage<ShowFantrayStatus>{
    "lmainte_show_fantray_status",
};

template <>
inline constexpr Page kPage<ShowDdcaStatus>{
    "lmainte_show_ddca_status",
};

template <>
inline constexpr Page kPage<ShowSbStatus>{
    "lmainte_show_sb_status",
};

Functions dialogue_functions() {
  static constexpr auto kFunctions = functions_of<kSharedOfDialogue>(Dialogue{});
  return kFunctions;
}

}  // namespace trace_book
