// Who has started whom, for one look.
#pragma once

#include <sys/types.h>

#include <map>
#include <vector>

#include "host/clock/process_files.h"

namespace box_time {

// The kernel lists the children of each thread. Where it was built without that, all processes are asked for their parents.
class Offspring {
 public:
  explicit Offspring(bool is_listed = lists_children());

  std::vector<pid_t> of(const Watched &process) const;

 private:
  bool is_listed_;
  std::multimap<pid_t, pid_t> by_parent_;
};

}  // namespace box_time
