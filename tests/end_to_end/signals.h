// Which signals a process has blocked, ignored and caught, as /proc tells.
#pragma once

#include <sys/types.h>

#include <fstream>
#include <ostream>
#include <string>

namespace end_to_end {

struct Signals {
  std::string blocked, ignored, caught;  // masks in hexadecimal

  bool operator==(const Signals &) const = default;
};

inline std::ostream &operator<<(std::ostream &out, const Signals &signals) {
  return out << "blocked " << signals.blocked << ", ignored " << signals.ignored << ", caught " << signals.caught;
}

// `process` is a process id, or "self".
inline Signals signals_of(const std::string &process) {
  std::ifstream status("/proc/" + process + "/status");
  Signals signals;
  for (std::string word; status >> word;) {
    if (word == "SigBlk:") status >> signals.blocked;
    if (word == "SigIgn:") status >> signals.ignored;
    if (word == "SigCgt:") status >> signals.caught;
  }
  return signals;
}

inline Signals signals_of(pid_t pid) {
  return signals_of(std::to_string(pid));
}

}  // namespace end_to_end
