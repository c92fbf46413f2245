// The platform for programs that run on another machine, emulated here: a socket in the box, and a process that stands in for each
// of theirs.
#pragma once

#include <sys/types.h>

#include <csignal>
#include <filesystem>
#include <list>
#include <string>

#include "host/base/descriptor.h"
#include "host/box/place.h"

namespace remote {

inline constexpr std::size_t kMostStandIns = 256;

// What went wrong: how many stand-ins died, or ended because of a message that was none; for how many processes there was no other one.
struct Tally {
  unsigned died = 0, senseless = 0, turned_away = 0;
};

class Server {
 public:
  // Listens under this name in the box's folder of daemons. It counts until its own end. Throws std::system_error.
  Server(const box::Place &place, const std::string &name, Tally &tally);
  // Waits for the stand-ins of processes that have ended, and ends those that do not end soon. Others stay as long as theirs.
  ~Server();
  Server(const Server &) = delete;
  Server &operator=(const Server &) = delete;

  // Waits for what comes next, with these signals let in. A signal ends the wait. A child that stands in for a process never returns.
  void step(const sigset_t &signals);

 private:
  struct StandIn {
    pid_t process;
    base::Descriptor end_of_peer;
  };

  void admit_one(const sigset_t &signals);
  void see_off();
  bool has_to_be_seen_off() const;
  void end_stand_ins_of_the_dead() const;
  static bool is_of_the_dead(const StandIn &stand_in);
  void count(int status);

  std::filesystem::path socket_;
  base::Descriptor listener_;
  std::list<StandIn> stand_ins_;
  Tally &tally_;
};

}  // namespace remote
