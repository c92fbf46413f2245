// What /proc tells of processes and threads.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/base/descriptor.h"
#include "host/clock/pace.h"

namespace box_time {

struct ProcessFile {
  char state;
  pid_t parent;
  nanoseconds processor;  // its own time and that of its children that have ended
  long threads;
};

std::optional<ProcessFile> process_file(pid_t process);  // nothing where it has ended
std::optional<char> state_of_thread(pid_t process, pid_t thread);
std::vector<pid_t> threads_of(pid_t process);
std::vector<pid_t> processes();
bool is_there(pid_t number);  // a process or a thread
bool lists_children();        // whether the kernel can tell the children of a thread

// Its open descriptors; and the kernel's number of the pipe behind one of them, nothing where it is something else.
std::vector<int> descriptors_of(pid_t process);
std::optional<std::uint64_t> pipe_behind(pid_t process, int fd);

// Whether this signal was sent to the process, or to the thread of this number, and was not taken yet.
bool is_pending(pid_t process, pid_t thread, int signal);

// How often the thread has had the processor.
std::uint64_t times_on_processor(pid_t process, pid_t thread);

// A process that is looked at again and again.
class Watched {
 public:
  explicit Watched(pid_t process);
  pid_t id() const { return process_; }
  std::optional<ProcessFile> file() const;
  std::uint64_t times_on_processor() const;  // of a process with one thread
  std::vector<pid_t> children() const;  // where the kernel lists them; dead ones, too, that nobody has asked for yet

 private:
  pid_t process_;
  base::Descriptor stat_, times_, children_;
};

// Whether it waits in the kernel with a limit, by a call that the box's time does not know; or does not wait.
enum class Wait { kForOthers, kForWall, kGoesOn, kUnknown };
Wait wait_of(pid_t process, pid_t thread);

}  // namespace box_time
