// What marks a unit that is worked on: its maintenance flag, its LED and, for a fan tray, fans that make up for it.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

#include "../graceful.h"
#include "../server.h"
#include "lmainte.h"
#include "telling.h"

namespace procedure {

// The line that mends by hand what a control program did not.
inline std::string by_hand(const char *program, const char *unit, const char *mode) {
  return std::string("/mgb/bin/") + program + " -u " + unit + " -c " + mode;
}

class Marks {
 public:
  Marks(const Server &server, const UnitRecord &unit) : server_(server), unit_(unit) {}

  // Sets them. What was begun is taken back also where it failed.
  int32_t set() {
    const graceful::Undisturbed undisturbed;
    int32_t result = lmainte_set_mainteflag(LMAINTE_FLAG_START, time(LMAINTE_CMD_SETMAINTEFLAG), &unit_);
    has_flag_ = perhaps_done(result);
    if (result != LMAINTE_OK) return result;
    result = lmainte_control_led(LMAINTE_LED_BLINK, time(LMAINTE_CMD_CTLLED), &unit_);
    has_led_ = perhaps_done(result);
    return result == LMAINTE_OK && is_fan_tray() ? speed_fans_up() : result;
  }

  int32_t speed_fans_up() {
    const graceful::Undisturbed undisturbed;
    const int32_t result = lmainte_control_fan(LMAINTE_FAN_HIGH, time(LMAINTE_CMD_CTLFAN), nullptr);
    has_fans_ = has_fans_ || perhaps_done(result);
    return result;
  }

  // Those of a unit that somebody else has left.
  void take_over() {
    has_flag_ = has_led_ = true;
    has_fans_ = is_fan_tray();
  }

  // In reverse order. What cannot be switched back is named, and the rest is done all the same.
  bool take_back() {
    const graceful::Undisturbed undisturbed;
    bool good = true;
    if (has_fans_) {
      const int32_t result = lmainte_control_fan(LMAINTE_FAN_LOW, time(LMAINTE_CMD_CTLFAN), nullptr);
      good = is_back("may have left the fans fast", result, "/mgb/bin/ctlfan -c low");
    }
    if (has_led_) {
      const int32_t result = lmainte_control_led(LMAINTE_LED_OFF, time(LMAINTE_CMD_CTLLED), &unit_);
      good = is_back("may still have its LED blinking", result, by_hand("ctlled", unit_.name, "off")) && good;
    }
    if (has_flag_) {
      const int32_t result = lmainte_set_mainteflag(LMAINTE_FLAG_END, time(LMAINTE_CMD_SETMAINTEFLAG), &unit_);
      good =
          is_back("may still have its maintenance flag", result, by_hand("setmainteflag", unit_.name, "end")) && good;
    }
    has_fans_ = has_led_ = has_flag_ = false;
    return good;
  }

 private:
  bool is_fan_tray() const { return unit_.type == LMAINTE_TYPE_FANTRAY; }
  int32_t time(size_t program) const { return server_.time(program); }

  bool is_back(const char *what, int32_t result, const std::string &mend) const {
    if (result != LMAINTE_OK)
      std::printf("%s %s (result %d).\nMend it with: %s\n", unit_.name, what, result, mend.c_str());
    return result == LMAINTE_OK;
  }

  const Server &server_;
  UnitRecord unit_;
  bool has_flag_ = false, has_led_ = false, has_fans_ = false;
};

}  // namespace procedure
