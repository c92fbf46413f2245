// The way to the data file of the databases: open for all processes that read, or for one that saves. Neither takes long.
#pragma once

#include "host/box/lock_file.h"

namespace box {

class Gate {
 public:
  enum class For { kReading, kSaving };

  // Waits for some seconds. `readings` counts those of this process.
  Gate(const LockFile &locks, For what, unsigned &readings);
  ~Gate();
  Gate(const Gate &) = delete;
  Gate &operator=(const Gate &) = delete;

  bool is_for_saving() const { return is_for_saving_; }
  int error() const { return error_; }  // 0 when it is open; EAGAIN when another process keeps it busy

 private:
  const LockFile &locks_;
  bool is_for_saving_, is_announced_ = false;
  int error_ = 0;
};

}  // namespace box
