// The server in maintenance mode, from the beginning of a procedure to its end, and the remote service told of it.
#pragma once

#include <cstdint>

#include "procedure/server.h"

namespace lmainte::procedure {

class Maintenance {
 public:
  explicit Maintenance(const Server &server) : server_(server) {}
  ~Maintenance() { end(); }
  Maintenance(const Maintenance &) = delete;
  Maintenance &operator=(const Maintenance &) = delete;

  // Returns the outcome.
  int32_t begin(bool is_taken_over);
  // False where the server may still be in the mode; the operator was told, and the log has it.
  bool end();

 private:
  int32_t longest() const;
  int32_t set_mode(int32_t mode) const;
  int32_t report(int32_t mode) const;

  const Server &server_;
  bool is_begun_ = false;
  bool is_reported_ = false;  // that it began
};

}  // namespace lmainte::procedure
