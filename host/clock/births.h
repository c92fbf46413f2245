// Which processes have begun since a look, without a look at all that there are: the system numbers them one after the other.
#pragma once

#include <sys/types.h>

#include <optional>
#include <vector>

#include "host/base/descriptor.h"

namespace box_time {

class Births {
 public:
  Births();

  // The numbers that the system has given to processes and threads since those that are known. Nothing where that cannot be told:
  // then it may be any.
  std::optional<std::vector<pid_t>> look();

  // Who has begun until the last look is known.
  void settle() { known_ = seen_; }

 private:
  std::optional<pid_t> last_number() const;

  base::Descriptor file_;
  std::optional<pid_t> known_, seen_;
};

}  // namespace box_time
