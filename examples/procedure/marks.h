// What marks a unit that is worked on: its maintenance flag, its LED and, for a fan tray, fans that make up for it.
#pragma once

#include <cstdint>
#include <string>

#include "../graceful.h"
#include "../server.h"
#include "advice.h"
#include "beside.h"
#include "lmainte.h"
#include "log_left.h"
#include "results.h"
#include "telling.h"

namespace procedure {

class Marks {
 public:
  Marks(const Server &server, const UnitRecord &unit) : server_(server), unit_(unit) {}

  // Sets them. What was begun is taken back also where it failed.
  int32_t set() {
    return with_late_progress(std::string("Marking ") + unit_.name + " ", longest(), [this] { return set_all(); });
  }

  int32_t speed_fans_up() {
    const graceful::Undisturbed undisturbed;
    const int32_t result = lmainte_control_fan(LMAINTE_FAN_HIGH, time(LMAINTE_CMD_CTLFAN), nullptr);
    has_fans_ = has_fans_ || perhaps_done(result);
    return result;
  }

  // Those of a unit that somebody else has left.
  void take_over() {
    is_taken_over_ = true;
    has_flag_ = has_led_ = true;
    has_fans_ = is_fan_tray();
  }

  // In reverse order. What cannot be switched back is named, and the rest is done all the same.
  bool take_back() {
    if (!has_fans_ && !has_led_ && !has_flag_) return true;
    Results results;
    with_late_progress(std::string("Taking back the marks of ") + unit_.name + " ", longest(), [&] {
      results = switch_back();
      return LMAINTE_OK;
    });
    has_fans_ = has_led_ = has_flag_ = false;
    bool good = is_back("The fans may still run fast", results.fans, "/mgb/bin/ctlfan -c low");
    good = is_back(text_of("The LED of %s may still blink", unit_.name), results.led,
                   program_command("ctlled", unit_.name, "off")) &&
           good;
    good = is_back(text_of("%s may still have its maintenance flag", unit_.name), results.flag,
                   program_command("setmainteflag", unit_.name, "end")) &&
           good;
    if (!good) log_left(LMAINTE_HOST_LEFT_MARKED, unit_);
    return good;
  }

 private:
  struct Results {
    int32_t fans = LMAINTE_OK, led = LMAINTE_OK, flag = LMAINTE_OK;
  };

  int32_t set_all() {
    int32_t result = lmainte_set_mainteflag(LMAINTE_FLAG_START, time(LMAINTE_CMD_SETMAINTEFLAG), &unit_);
    has_flag_ = perhaps_done(result);
    if (result != LMAINTE_OK) return result;
    result = lmainte_control_led(LMAINTE_LED_BLINK, time(LMAINTE_CMD_CTLLED), &unit_);
    has_led_ = perhaps_done(result);
    return result == LMAINTE_OK && is_fan_tray() ? speed_fans_up() : result;
  }

  Results switch_back() const {
    Results results;
    if (has_fans_) results.fans = lmainte_control_fan(LMAINTE_FAN_LOW, time(LMAINTE_CMD_CTLFAN), nullptr);
    if (has_led_) results.led = lmainte_control_led(LMAINTE_LED_OFF, time(LMAINTE_CMD_CTLLED), &unit_);
    // By its flag the next procedure finds what this one could not take back for the one that died.
    const bool is_rest_back = results.fans == LMAINTE_OK && results.led == LMAINTE_OK;
    if (has_flag_ && (is_rest_back || !is_taken_over_))
      results.flag = lmainte_set_mainteflag(LMAINTE_FLAG_END, time(LMAINTE_CMD_SETMAINTEFLAG), &unit_);
    return results;
  }

  bool is_fan_tray() const { return unit_.type == LMAINTE_TYPE_FANTRAY; }
  int32_t time(size_t program) const { return server_.time(program); }
  int32_t longest() const {
    return time(LMAINTE_CMD_SETMAINTEFLAG) + time(LMAINTE_CMD_CTLLED) + time(LMAINTE_CMD_CTLFAN);
  }

  static bool is_back(const std::string &what, int32_t result, const std::string &command) {
    if (result != LMAINTE_OK)
      advise(text_of("%s: %s.\nSwitch it back by hand with:", what.c_str(), reason_of(result).c_str()), command);
    return result == LMAINTE_OK;
  }

  const Server &server_;
  UnitRecord unit_;
  bool has_flag_ = false, has_led_ = false, has_fans_ = false;
  bool is_taken_over_ = false;  // from a procedure that died
};

}  // namespace procedure
