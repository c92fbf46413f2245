// The machine that the library sees in a unit test: databases, files, a trace, a terminal, child processes and a clock.
//
// Everything is in memory. Every call of the library is written down as a line of text and can be made to fail. What
// the library must give back is counted. It can also really fork: trace, calls and execve of such a child are kept
// in shared memory, where the test reads them.
#pragma once

#include <sys/types.h>
#include <termios.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "tests/unit/doubles/programs.h"

namespace doubles {

using Lines = std::vector<std::string>;
using Bytes = std::vector<uint8_t>;

// A call that fails: the nth whose line begins with these words, or each of them where nth is 0.
struct Failure {
  std::string call;
  int nth = 1;
  int error = EIO;
  int result = -1;
  int seen = 0;
};

// The result of a call that fails, with errno set.
inline int failed(const Failure &failure) {
  errno = failure.error;
  return failure.result;
}

// A record in a database, and what the client does when it is asked for it.
struct StoredRecord {
  Bytes bytes;
  int32_t result = 0;
  bool hands_over = true;  // false: no buffer comes with the result
};

struct TraceRecord {
  uint32_t module, level, kind, event, length;
  uint32_t words[4];
  bool in_child;
};

// What a child process leaves for the test to read.
struct Executed {
  bool happened;
  char path[64];
  char arguments[4096];    // one a line
  char environment[4096];  // one a line
  uint32_t arguments_end;  // place of the null entry
};

// A daemon at the other end of a descriptor of the common interface.
struct Daemon {
  std::set<int32_t> ready;  // descriptors, once the wait is over
  uint8_t status_1 = 0;     // of the wait
  uint8_t status_2 = 0;
  Bytes reply;                 // what a receipt writes
  int32_t result = 0;          // of a call that succeeds
  const void *sent = nullptr;  // where the message that was sent lies
};

// An event in the log.
struct Saved {
  uint32_t head;
  Bytes event;
};

struct Asked {
  int32_t first = 0;
  void *second = nullptr;
  std::string prompt;
};

class Machine {
 public:
  static Machine &instance();

  void start();  // a new machine, seen by the library from now on
  void stop();   // from now on the library sees the real one

  // ---- what the test arranges
  std::map<std::pair<uint32_t, std::string>, StoredRecord> records;
  std::map<std::string, Bytes> files;                          // read through the common helpers
  std::set<std::string> markers;                               // paths that exist
  std::map<std::pair<uint32_t, uint32_t>, std::string> names;  // of unit ids
  std::map<std::string, std::string> catalogue;                // translated messages
  bool catalogue_is_real = false;
  std::deque<Program> programs;    // what the next children are; else they exit with 0
  bool children_are_real = false;  // they run as far as execve
  int child_exits_with = 0;        // what a real child's program does
  bool terminal_is_real = false;
  bool is_terminal[3] = {true, true, true};
  termios terminal = {};
  int32_t answer = 0;            // of the operator
  bool speaks = false;           // the prompt and the terminal leave marks on standard output
  int32_t trace_result = 0;      // of the trace facility
  int32_t read_at_most = 65536;  // bytes that one read gives, and one write takes
  int32_t write_at_most = 65536;
  bool files_are_real = false;  // those of the common helpers
  Daemon daemon;
  int32_t log_result = 0;  // of an event that is saved
  pid_t pid = 4711;
  std::function<void()> interruption;  // a signal handler that runs once, when the process id is asked for next
  std::function<void()> interruption_of_trace;  // the same, when a record is handed over next, before it is looked at
  std::function<int64_t(int)> wall_clock = [](int seconds) { return 1000000 + seconds; };  // at a second of `clock`
  std::function<void()> asleep = [] {};                                          // what happens in each second of sleep
  std::function<void(const std::string &call)> meanwhile = [](const auto &) {};  // what happens before each call
  std::vector<Failure> failures;
  int fail_at = 0;            // the place of a call, counted from 1, that fails whatever it is
  int fail_in_child_at = 0;   // the same among the calls of a child
  Failure way;                // how it fails
  bool keeps_output = false;  // what is printed arrives when the library flushes

  void fail(const std::string &call, int nth = 1, int error = EIO, int result = -1) {
    failures.push_back({call, nth, error, result});
  }

  // ---- what the library did
  Lines calls;                 // in order
  Lines pages;                 // the list file's content at each fork
  std::string pages_path;      // and its path
  std::vector<Asked> asked;    // prompts
  Lines looked_up;             // in the message catalogue
  std::vector<Saved> saved;    // in the log
  std::vector<int> seen_pids;  // g_show_file_pid, at each wait
  int steps = 0;               // calls that could have failed
  std::string failed_call;     // the one at fail_at
  int clock = 0;               // seconds

  Lines calls_of(const std::set<std::string> &verbs) const;
  Lines child_calls() const;
  std::vector<TraceRecord> trace_records(bool of_child = false) const;
  const Executed &executed() const;
  std::string failed_in_child() const;
  bool child_left_by_exit() const;  // without running the caller's exit handlers
  uint32_t blocks_left_in_child() const;

  // One sentence for each thing that the library did not give back.
  Lines left_behind() const;
  void forget_children() { children.clear(); }
  void forget_records();  // of the trace, and what children of the library left

  // ---- for the doubles
  const Failure *enter(const std::string &call);  // notes a call; the failure that it has to show, or null
  const Failure *step(const std::string &call);   // the same for the one at fail_at, without a note
  void begin_child();
  void note(const std::string &call);
  void add_trace(const TraceRecord &record);
  void own(void *block);
  void disown(void *block);
  size_t blocks() const { return owned; }

  struct Stream {
    std::string path, text;
    bool can_fail;
  };
  struct Child {
    Program program;
    int ends_at;
    int status;
  };
  struct Descriptor {
    std::string path;
    size_t position;
  };
  struct Database {
    bool open = false;
    bool locked = false;
  };

  bool active = false;
  bool in_child = false;
  Database databases[6];
  std::map<int32_t, Descriptor> descriptors;
  std::map<FILE *, std::unique_ptr<Stream>> streams;
  bool has_forked = false;                  // in earnest
  FILE *paper = nullptr;                    // standard output, where it is in memory
  std::map<std::string, std::string> disk;  // files written
  std::map<pid_t, Child> children;
  pid_t next_child = 500;

 private:
  static constexpr size_t kMostBlocks = 1024;
  void *owned_blocks[kMostBlocks] = {};  // no container: these are counted inside calloc and free
  size_t owned = 0;
};

inline Machine &machine() {
  return Machine::instance();
}

}  // namespace doubles
