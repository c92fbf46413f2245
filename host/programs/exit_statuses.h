// With what the control programs end: the names of the statuses, and which of them the page of each program knows.
#pragma once

#include <algorithm>
#include <array>
#include <span>
#include <string_view>

namespace programs {

// The programs share some and have some of their own.
enum Status : int {
  kDone = 0,
  kUsage = 1,           // an argument line that makes no sense
  kBoardMissing = 6,    // setupfru: the board is not installed
  kFailed = 8,          // the box, or a record that decides, could not be read or written
  kRefused = 128,       // not now: the system or the unit is not in a state for it
  kNoBoard = 131,       // deleteboard: no such board
  kNoPart = 132,        // deleteboard: the board is not divided so
  kPartActive = 133,    // deleteboard: an extended system board is active
  kNoDivision = 136,    // setupfru: no such board, or the model divides none
  kBoardActive = 137,   // setupfru: an extended system board of the board is active
  kNotInMode = 200,     // ctlmainte: not in maintenance mode
  kNoJudgement = 203,   // judgectlfru: no such unit
  kFlagRefused = 204,   // setmainteflag: no such unit, or not under maintenance
  kNotDetached = 205,   // detachfru: no such unit
  kLedFailed = 206,     // ctlled: no such unit
  kTestFailed = 208,    // testfru, testsb: no such unit or board, or one that is faulted
  kFanFailed = 219,     // ctlfan: no such unit
  kNotCleared = 220,    // clearpci: no such slot
  kNoFanSpeed = 225,    // chkfanspeed: no such fan tray, or one that does not turn as it should
  kNotLinked = 226,     // linkboard: no such board unit, or one that is faulted
  kIndispensable = 232  // judgectlfru: the server cannot do without the unit
};

// Beside kDone, kUsage and kFailed, which each program has. Those without a name are a service processor's alone.
struct PageOfStatuses {
  std::string_view program;
  std::array<int, 7> known = {};  // filled up with 0

  constexpr std::span<const int> statuses() const { return {known.begin(), std::ranges::find(known, 0)}; }
};
inline constexpr PageOfStatuses kPagesOfStatuses[] = {
    {"ctlmainte", {kRefused, kNotInMode}},
    {"ctlfan", {kRefused, kFanFailed}},
    {"judgectlfru", {kRefused, kNoJudgement, kIndispensable}},
    {"testfru", {kRefused, kTestFailed}},
    {"detachfru", {kRefused, kNotDetached}},
    {"ctlled", {kRefused, kLedFailed}},
    {"setmainteflag", {kRefused, kFlagRefused}},
    {"setupfru", {kBoardMissing, kNoDivision, kBoardActive}},
    {"ioadm", {kRefused}},
    {"clearpci", {kRefused, kNotCleared}},
    {"testsb", {3, kRefused, kTestFailed}},
    {"deleteboard", {kBoardMissing, 7, kRefused, kNoBoard, kNoPart, kPartActive, kNoDivision}},
    {"chkfanspeed", {kRefused, kNoFanSpeed}},
    {"linkboard", {kRefused, kNotLinked}},
};

// None of a program that has none of its own, or of one that is no control program.
constexpr std::span<const int> own_statuses_of(std::string_view program) {
  const auto *const page = std::ranges::find(kPagesOfStatuses, program, &PageOfStatuses::program);
  return page == std::end(kPagesOfStatuses) ? std::span<const int>{} : page->statuses();
}

}  // namespace programs
