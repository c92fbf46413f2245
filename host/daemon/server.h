// The daemon's connections: requests come in, answers go out, some of them later.
#pragma once

#include <poll.h>

#include <chrono>
#include <csignal>
#include <deque>
#include <filesystem>
#include <list>
#include <vector>

#include "host/base/descriptor.h"
#include "host/daemon/monitor.h"

namespace monitor {

class Server {
 public:
  // Listens in the box's folder of daemons. Throws std::system_error.
  explicit Server(const box::Place &place);
  ~Server();
  Server(const Server &) = delete;
  Server &operator=(const Server &) = delete;

  // Waits for what comes next, with these signals let in, and deals with it. A signal ends the wait.
  void step(const sigset_t &signals);

 private:
  using Clock = std::chrono::steady_clock;
  struct Later {
    Clock::time_point due;
    box::Bytes reply;
  };
  struct Peer {
    int fd;
    std::deque<Later> replies;  // in the order of their requests
  };

  std::vector<pollfd> watched() const;
  void accept_peers();
  bool admit_one();
  bool turn_one_away();
  bool hear(Peer &peer);  // false: the peer is gone, or is left
  static bool speak(Peer &peer);
  int milliseconds_left() const;

  std::filesystem::path socket_;
  base::Descriptor listener_;
  base::Descriptor spare_;  // given up for a moment where there is no other one to turn a peer away with
  Monitor monitor_;
  std::list<Peer> peers_;
  Clock::time_point closed_until_{};  // nobody can even be turned away
};

}  // namespace monitor
