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

class Server {
 public:
  // Listens under this name in the box's folder of daemons. Throws std::system_error.
  Server(const box::Place &place, const std::string &name);
  // Waits for the stand-ins of processes that have ended, and ends those that do not end soon. Others stay as long as theirs.
  ~Server();
  Server(const Server &) = delete;
  Server &operator=(const Server &) = delete;

  // Waits for what comes next, with these signals let in. A signal ends the wait. A child that stands in for a process never returns.
  void step(const sigset_t &signals);

  // How many stand-ins ended because of a message that was none, and how many died.
  unsigned senseless() const { return senseless_; }
  unsigned died() const { return died_; }

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
  unsigned senseless_ = 0, died_ = 0;
};

}  // namespace remote
