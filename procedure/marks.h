// What marks a unit that is worked on: its maintenance flag, its LED and, for a fan tray, fans that make up for it.
#pragma once

#include <cstdint>

#include "include/lmainte.h"
#include "procedure/server.h"

namespace lmainte::procedure {

class Marks {
 public:
  Marks(const Server &server, const UnitRecord &unit) : server_(server), unit_(unit) {}

  bool are_set() const { return has_flag_ || has_led_ || has_fans_; }

  // Sets them. What was begun is taken back also where it failed.
  int32_t set();

  // Those of a unit that somebody else has left.
  void take_over();

  // In reverse order. What cannot be switched back is named, and the rest is done all the same.
  bool take_back();

 private:
  struct Results {
    int32_t fans = LMAINTE_OK, led = LMAINTE_OK, flag = LMAINTE_OK;
  };

  int32_t set_all();
  Results switch_back() const;
  bool tell_what_stays(const Results &results) const;

  bool is_fan_tray() const { return unit_.type == LMAINTE_TYPE_FANTRAY; }
  int32_t time(uint32_t program) const { return server_.time(program); }
  int32_t longest() const {
    return time(LMAINTE_CMD_SETMAINTEFLAG) + time(LMAINTE_CMD_CTLLED) + time(LMAINTE_CMD_CTLFAN);
  }

  const Server &server_;
  UnitRecord unit_;
  bool has_flag_ = false, has_led_ = false, has_fans_ = false;
  bool is_taken_over_ = false;  // from a procedure that died
};

}  // namespace lmainte::procedure
