// The processes in a box: those whose root `spbox run` has made for it.
#pragma once

#include <sys/types.h>

#include <array>
#include <cstdint>
#include <optional>
#include <set>

#include "host/box/place.h"

namespace box {

struct ProcessState {
  pid_t parent;
  std::uint64_t start;  // clock ticks since the machine was started
};

// None where the process has ended, whether or not somebody has waited for its end.
std::optional<ProcessState> state_of(pid_t process);

// Who is in a box, for who asks of many. False also where the process has ended, and where it is another user's.
class Inside {
 public:
  explicit Inside(const Place &place);
  bool has(pid_t process) const;

 private:
  std::optional<std::array<std::uint64_t, 2>> databases_;
};
bool is_inside(pid_t process, const Place &place);

// All of them.
std::set<pid_t> inhabitants(const Place &place);

// The processes of the whole machine.
std::set<pid_t> all_processes();

}  // namespace box
