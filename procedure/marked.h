// The units that are marked for replacement: they have a maintenance flag, and stand in the list that the library keeps for the
// whole process.
#pragma once

#include "procedure/server.h"

namespace lmainte::procedure {

// The list, from the inventory as it is now.
class Marked {
 public:
  explicit Marked(const Server &server) : server_(server) {}
  ~Marked();
  Marked(const Marked &) = delete;
  Marked &operator=(const Marked &) = delete;

  // Reads the list and names the units. What a procedure that died has left is taken back, as nobody else will do it.
  // Returns the outcome.
  int32_t begin(bool has_died);

  // False where something that was left could not be taken back.
  bool has_all_back() const { return has_all_back_; }

 private:
  bool read() const;
  bool take_back_what_was_left() const;

  const Server &server_;
  bool has_all_back_ = true;
};

}  // namespace lmainte::procedure
