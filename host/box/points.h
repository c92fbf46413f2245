// The points of the commands in a box: each thing that a command asks its platform for, and each start of a control program, by kind
// and name. They are counted while the box has a file of points; at each of them, something else than usual can be made to happen: a
// deviation. So a command can be tried at its third reading of one record, which a record that is broken all the time cannot do.
// The format of the file is in points.cpp: Page.
#pragma once

#include <sys/types.h>

#include <array>
#include <atomic>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/box/place.h"

namespace box {

enum class PointKind : std::uint32_t {
  kProgram,  // the start of a control program, by the program's name
  kOpen,     // of a database, by the database's name, as kLock, kUnlock and kClose are
  kLock,
  kRead,  // of a record, by its name
  kWrite,
  kUnlock,
  kClose,
  kFile,  // a call for a file, by that of open, read, write and close which it is, and "make" for a file of its own in /tmp
  kTrace,     // a record for the trace, by its event: "110C0213"
  kLog,       // an event for the log
  kName,      // the name of a unit
  kQuestion,  // to the operator
  kMessage,   // to the daemon, or from it, by that of send, receive and select which it is
  kPager      // its start
};

enum class Way : std::uint32_t {
  kUsual,    // no deviation
  kRefused,  // the call fails
  kBusy,     // somebody else holds the lock for longer than the wait
  kMissing,  // the record is not there
  kShort,    // it is one byte too short
  kLong,     // it is one byte too long
  kEnd,      // the operator's input is at its end
  kExit,     // the control program does nothing and ends with this status
  kHang,     // it never ends
  kSignal,   // the process gets this signal before it goes on
  kFull,     // from here on /tmp has no room
  kMidway    // the pager is killed in the middle of its page
};

// As people write it: "missing".
std::string_view word_of(Way way);

// What happens at a point. The value is that of kExit or kSignal.
struct Turn {
  Way way = Way::kUsual;
  int value = 0;
};

// "missing", "exit 206", "signal SIGKILL"
std::string text_of(const Turn &turn);

// A kind by the word that people write, with the ways that it can go.
struct PointKindRow {
  PointKind kind;
  std::string_view word;
  std::string_view what;    // "the start of a control program"
  std::string_view name;    // what it is called by; empty: it has no name
  std::array<Way, 5> ways;  // filled up with kUsual
  bool can(Way way) const;
};
inline constexpr std::array<PointKindRow, 14> kPointKinds{{
    {PointKind::kProgram, "program", "a control program starts", "PROGRAM", {Way::kExit, Way::kHang, Way::kSignal}},
    {PointKind::kOpen, "open", "a database is opened", "DATABASE", {Way::kRefused, Way::kSignal}},
    {PointKind::kLock, "lock", "a database is locked", "DATABASE", {Way::kRefused, Way::kBusy, Way::kSignal}},
    {PointKind::kRead,
     "read",
     "a record is read",
     "RECORD",
     {Way::kRefused, Way::kMissing, Way::kShort, Way::kLong, Way::kSignal}},
    {PointKind::kWrite, "write", "a record is written", "RECORD", {Way::kRefused, Way::kSignal}},
    {PointKind::kUnlock, "unlock", "a database is unlocked", "DATABASE", {Way::kRefused, Way::kSignal}},
    {PointKind::kClose, "close", "a database is closed", "DATABASE", {Way::kRefused, Way::kSignal}},
    {PointKind::kFile,
     "file",
     "a file is opened, read, written, closed, or made in /tmp",
     "CALL",
     {Way::kRefused, Way::kFull, Way::kSignal}},
    {PointKind::kTrace, "trace", "a record goes into the trace", "FUNCTION EVENT", {Way::kRefused, Way::kSignal}},
    {PointKind::kLog, "log", "an event goes into the log", "", {Way::kRefused, Way::kSignal}},
    {PointKind::kName, "name", "a unit's name is asked for", "", {Way::kRefused, Way::kSignal}},
    {PointKind::kQuestion, "question", "the operator is asked", "", {Way::kRefused, Way::kEnd, Way::kSignal}},
    {PointKind::kMessage, "message", "the daemon is called", "CALL", {Way::kRefused, Way::kSignal}},
    {PointKind::kPager, "pager", "the pager starts", "", {Way::kRefused, Way::kMissing, Way::kMidway, Way::kSignal}},
}};
const PointKindRow &row_of(PointKind kind);

// The names of the points of kFile and kMessage.
inline constexpr std::array<std::string_view, 5> kFileCalls{"open", "read", "write", "close", "make"};
inline constexpr std::array<std::string_view, 3> kMessageCalls{"send", "receive", "select"};

// A deviation: what happens instead at one point, counted from 1 among those of its kind and name.
struct Deviation {
  PointKind kind{};
  std::string name;
  std::uint32_t number = 1;
  Turn turn;
  std::int32_t happened = 0;  // the process in which it did; 0: it has not yet
};

// How often commands have come to points of this kind and name.
struct PointCount {
  PointKind kind{};
  std::string name;
  std::uint32_t count = 0;
};

// What the file of points says. Names are what commands gave: any bytes.
struct Points {
  std::vector<PointCount> counts;  // by kind, and in the order in which they were first reached
  std::vector<Deviation> deviations;
  std::uint32_t lost = 0;  // points that there was no room to count

  // The points one after the other, as they were reached: each by its place in `counts`. Empty where their order is not kept.
  std::vector<std::uint32_t> order;
};

// A process's view of its box's points.
class PointCounter {
 public:
  // Maps the file, for the life of the process. Uses system calls only: may be called in a signal handler and between fork and
  // execve. Keeps errno. False when nothing is counted now. Who calls survive_lost_mappings() before outlives a file that is cut short
  // meanwhile.
  bool map(const char *file) noexcept;

  // Counts a point and says what happens there. Of kSignal it is said when the signal has come, and has been survived. As safe as map.
  Turn reach(PointKind kind, std::string_view name) noexcept;

  // The points are those of another process, which gets a signal by `deliver`.
  void stand_for(pid_t process, void (*deliver)(int signal)) noexcept;

 private:
  void take(void *memory, std::size_t size) noexcept;

  std::atomic<void *> memory_ = nullptr;
  std::atomic<std::size_t> room_ = 0;  // for the order
  pid_t stood_for_ = 0;                // the process whose points these are; 0: this one
  void (*deliver_)(int signal) = nullptr;
};

inline constexpr std::size_t kMostDeviations = 8;     // at a time
inline constexpr std::size_t kLongestPointName = 43;  // longer ones are counted apart, and shown cut
inline constexpr std::size_t kLongestOrder = 262144;  // later points are counted only

// All of these throw BoxError when the file cannot be read or written, or is damaged.
std::optional<Points> points_of(const Place &place);           // none: they are not counted
void count_points(const Place &place);                         // from now on, from 0 and without deviations
void order_points(const Place &place);                         // the same, and keeps their order from now on
void forget_order(const Place &place);                         // and counts on; nobody is at work in the box then
void resume_order(const Place &place);                         // the same, and keeps the order again from now on
void deviate(const Place &place, const Deviation &deviation);  // counts points from now on where nobody did
bool forget_points(const Place &place);                        // false: they were not counted

}  // namespace box
