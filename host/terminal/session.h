// A command as an operator's shell starts it: in a session of its own, in the foreground of a terminal.
#pragma once

#include <sys/types.h>

#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "host/base/descriptor.h"

namespace terminal {

// How a command ended: by itself with an exit status, or by a signal.
struct Ending {
  bool by_signal;
  int number;

  bool operator==(const Ending &) const = default;
};

// "exit status 0", "signal 2 (Interrupt)"
std::string text(const Ending &ending);
inline std::ostream &operator<<(std::ostream &out, const Ending &ending) {
  return out << text(ending);
}

struct Process {
  pid_t pid;
  pid_t parent;
  std::string name;
};

// The one of this name that none of this name has forked. Ids do not tell it: they begin anew where they have run out.
std::optional<pid_t> eldest(const std::vector<Process> &processes, std::string_view name);

// A small process leads the session in the shell's place. It lives until the Session is destroyed, so that what the
// command leaves behind stays visible: the end of a session's leader would take it along.
class Session {
 public:
  // Starts `command`, found by the environment variable PATH. Throws std::system_error when it cannot be run.
  Session(const std::string &terminal_path, const std::vector<std::string> &command);
  ~Session();  // Kills what is left.
  Session(const Session &) = delete;
  Session &operator=(const Session &) = delete;

  std::optional<Ending> ending();              // Nothing while the command runs.
  int news() const { return reports_.get(); }  // A descriptor that becomes readable when the command ends or stops.
  bool take_stop();                            // Whether it was stopped since this was asked last: by Ctrl-Z, mostly.
  void go_on() const;  // All of the command that was stopped goes on, as a shell lets it in the foreground.
  pid_t command() const { return command_; }
  // The command, its children, and what they left behind. Throws std::system_error when /proc cannot be read.
  std::vector<Process> processes() const;

 private:
  struct Report;
  Report next_report() const;
  void take_reports();
  void kill_all() const;
  void end() const noexcept;

  pid_t leader_ = -1;
  pid_t command_ = -1;
  base::Descriptor reports_;
  std::optional<Ending> ending_;
  bool is_stopped_ = false;
};

}  // namespace terminal
