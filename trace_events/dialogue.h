// The trace events of src/dialogue.
#pragma once

#include "trace_events/event.h"

namespace trace_events {

struct Dialogue;

// lmainte_ask_select
struct AskSelect : PlainBlock<Dialogue, 0x000> {
  enum Point : Code { kAnswered = point(2) };
  enum Error : Code { kNoSecond = error(1), kNoFormat, kNotFlushed, kEchoNotOn, kEchoNotOff };
};

// lmainte_tty_control
struct TtyControl : PlainBlock<Dialogue, 0x001> {
  enum Point : Code { kMode = point(2) };
  enum Error : Code { kNotRead = error(1), kNoMode, kNotFlushed, kNotSet };
};

// lmainte_dot_start; its child records the end that a signal asked for, too
struct DotStart : PlainBlock<Dialogue, 0x037> {
  enum Point : Code { kChild = point(2), kMark, kEnded, kSignalCame = point(9) };
  enum Error : Code { kNoRequest = error(1), kRefused, kNoChild, kNoClock, kHandlerNotSet };
};

// lmainte_dot_end
struct DotEnd : PlainBlock<Dialogue, 0x038> {
  enum Point : Code { kHasEnded = point(2), kSignalSent };
  enum Error : Code { kNoChild = error(1) };
};

// lmainte_show_file
struct ShowFile : PlainBlock<Dialogue, 0x02E> {
  enum Point : Code { kChildRuns = point(2) };
  enum Error : Code { kNoPath = error(1), kNoChild, kCannotRun, kWaitFailed, kKilled, kNotStarted };
};

// lmainte_show_menu
struct ShowMenu : SecondBlock<Dialogue, 0x017> {
  enum Error : Code { kNoLines = error(1), kNoFile, kPagerFailed, kNotRemoved };
};

// lmainte_show_psu_list
struct ShowPsuList : PlainBlock<Dialogue, 0x013> {
  enum Error : Code { kNoUnits = error(1), kNoLines, kNoFile, kNoName, kPagerFailed, kNotRemoved };
};

// lmainte_show_fantray_list
struct ShowFantrayList : PlainBlock<Dialogue, 0x012> {
  enum Error : Code { kNoUnits = error(1), kNoLines, kNoFile, kNoName, kPagerFailed, kNotRemoved };
};

// lmainte_show_ddca_list
struct ShowDdcaList : SecondBlock<Dialogue, 0x013> {
  enum Error : Code { kNoUnits = error(1), kNoLines, kNoFile, kNoName, kPagerFailed, kNotRemoved };
};

// lmainte_show_ioupci_list
struct ShowIoupciList : PlainBlock<Dialogue, 0x01A> {
  enum Error : Code { kNoUnit = error(1), kNoLines, kNoFile, kNoName, kPagerFailed, kNotRemoved };
};

// lmainte_show_ioxpci_list
struct ShowIoxpciList : PlainBlock<Dialogue, 0x017> {
  enum Error : Code { kNoUnit = error(1), kNoLines, kNoFile, kNoName, kPagerFailed, kNotRemoved };
};

// lmainte_show_iounit_list
struct ShowIounitList : PlainBlock<Dialogue, 0x019> {
  enum Error : Code { kNoBoards = error(1), kNoExpansions, kNoLines, kNoFile, kNoName, kPagerFailed, kNotRemoved };
};

// lmainte_show_iox_list and lmainte_show_ioxpsu_list: nothing tells their events apart
struct ShowIoxList : PlainBlock<Dialogue, 0x015> {
  enum Error : Code { kNoLines = error(1), kNoFile };
};

// lmainte_show_cmu_iou_list
struct ShowCmuIouList : SecondBlock<Dialogue, 0x015> {
  enum Error : Code { kNoKind = error(1), kNoBoards, kNoXsbs, kNoLines, kNoFile, kNoName, kPagerFailed, kNotRemoved };
};

// lmainte_show_psu_status
struct ShowPsuStatus : PlainBlock<Dialogue, 0x023> {
  enum Error : Code { kNoUnit = error(1), kNoLines, kNoFile, kNoName, kPagerFailed, kNotRemoved };
};

// lmainte_show_fantray_status
struct ShowFantrayStatus : PlainBlock<Dialogue, 0x022> {
  enum Error : Code { kNoUnit = error(1), kNoLines, kNoFile, kNoName, kPagerFailed, kNotRemoved };
};

// lmainte_show_ddca_status
struct ShowDdcaStatus : SecondBlock<Dialogue, 0x014> {
  enum Error : Code { kNoUnit = error(1), kNoLines, kNoFile, kNoName, kPagerFailed, kNotRemoved };
};

// lmainte_show_sb_status
struct ShowSbStatus : SecondBlock<Dialogue, 0x016> {
  enum Error : Code { kNoKind = error(1), kNoUnit, kNoLines, kNoFile, kNoName, kPagerFailed, kNotRemoved };
};

struct Dialogue : Room<AskSelect, TtyControl, DotStart, DotEnd, ShowFile, ShowMenu, ShowPsuList, ShowFantrayList,
                       ShowDdcaList, ShowIoupciList, ShowIoxpciList, ShowIounitList, ShowIoxList, ShowCmuIouList,
                       ShowPsuStatus, ShowFantrayStatus, ShowDdcaStatus, ShowSbStatus> {};

}  // namespace trace_events
