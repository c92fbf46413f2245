// The children of spbox: those that it starts and, when their parents end, the processes that those have started. Nobody
// else would know of these any more.
#pragma once

#include <sys/types.h>

#include <map>
#include <optional>

namespace spbox {

class Children {
 public:
  // From now on the orphans among the descendants of this process become its children. Throws.
  Children();

  // A child that was started, and whose end is asked for later.
  void expect(pid_t child) { expected_.emplace(child, std::nullopt); }
  bool has_ended(pid_t child) const;

  // Waits for its end, and sees orphans off meanwhile. The exit status, or 128 + n where signal n ended it. Throws.
  int exit_status_of(pid_t child);

  // Ends the orphans that are there, and those that they leave. Throws.
  void end_orphans() const;

 private:
  std::map<pid_t, std::optional<int>> expected_;  // with the wait status
};

}  // namespace spbox
