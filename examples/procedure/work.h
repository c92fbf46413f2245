// Work on one unit: what was switched for it is switched back at every way out.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

#include "../in_order.h"
#include "lmainte.h"
#include "telling.h"
#include "unit_kinds.h"

namespace procedure {

// The line that mends by hand what a control program did not.
inline std::string by_hand(const char *program, const char *unit, const char *mode) {
  return std::string("/mgb/bin/") + program + " -u " + unit + " -c " + mode;
}

// The unit, and what was switched for it. At the latest the destructor switches it back.
class Work {
 public:
  Work(const Server &the_server, const Kind &the_kind, const Unit &the_unit, const AnyRecord &the_record,
       int32_t the_action)
      : server(the_server), kind(the_kind), unit(the_unit), record(the_record), action(the_action) {
    if (kind.is_board() && server.is_high_end()) division = record.board.cmu.xsb_mode == 1 ? 1 : 4;
  }
  ~Work() { take_back(); }
  Work(const Work &) = delete;
  Work &operator=(const Work &) = delete;

  const Server &server;
  const Kind &kind;
  Unit unit;
  AnyRecord record;
  const int32_t action;  // LMAINTE_EVENT_...
  int32_t division = 0;  // extended system boards into which a board is divided; 0 for what is never divided

  int32_t time(size_t program) const { return server.time(program); }
  bool is_board() const { return kind.is_board(); }
  bool is_fan_tray() const { return kind.type == LMAINTE_TYPE_FANTRAY; }

  // Reads the unit's state anew.
  int32_t read() {
    const int32_t result = read_one(server, kind, unit.record.number, record);
    if (result == LMAINTE_OK) take_unit(kind, &record, unit);
    return result;
  }

  // The flag is set, the LED blinks, and the other fans make up for a tray that is taken out.
  int32_t mark() {
    const in_order::Undisturbed undisturbed;
    int32_t result = lmainte_set_mainteflag(LMAINTE_FLAG_START, time(LMAINTE_CMD_SETMAINTEFLAG), &unit.record);
    has_flag_ = perhaps(result);
    if (result != LMAINTE_OK) return result;
    result = lmainte_control_led(LMAINTE_LED_BLINK, time(LMAINTE_CMD_CTLLED), &unit.record);
    has_led_ = perhaps(result);
    if (result != LMAINTE_OK || !is_fan_tray()) return result;
    result = lmainte_control_fan(LMAINTE_FAN_HIGH, time(LMAINTE_CMD_CTLFAN), nullptr);
    has_fans_ = perhaps(result);
    return result;
  }

  // Out of operation, and a board off the server's links.
  int32_t detach() {
    const in_order::Undisturbed undisturbed;
    const int32_t result = lmainte_detach_fru(time(LMAINTE_CMD_DETACHFRU), &unit.record);
    is_detached_ = perhaps(result);
    if (result != LMAINTE_OK || !is_board()) return result;
    return lmainte_link_board(LMAINTE_LINK_DOWN, time(LMAINTE_CMD_LINKBOARD), &unit.record);
  }

  // Tested and in operation. A board is tested and divided when both its units are there. What fails here is not tried
  // again on the way out.
  int32_t bring_up() {
    is_detached_ = false;
    int32_t result = is_board() ? bring_up_board() : lmainte_test_fru(time(LMAINTE_CMD_TESTFRU), &unit.record);
    if (result == LMAINTE_OK && is_fan_tray())
      result = lmainte_check_fanspeed(time(LMAINTE_CMD_CHKFANSPEED), unit.name());
    return result;
  }

  // What has become of the unit is to stay so: it is not put back into operation.
  void settle() { is_detached_ = false; }

  // In reverse order. What cannot be switched back is named, and the rest is done all the same.
  bool take_back() {
    bool good = !is_detached_ || put_back();
    is_detached_ = false;
    const in_order::Undisturbed undisturbed;
    if (has_fans_) {
      const int32_t result = lmainte_control_fan(LMAINTE_FAN_LOW, time(LMAINTE_CMD_CTLFAN), nullptr);
      good = is_back("makes the fans run fast", result, "/mgb/bin/ctlfan -c low") && good;
    }
    if (has_led_) {
      const int32_t result = lmainte_control_led(LMAINTE_LED_OFF, time(LMAINTE_CMD_CTLLED), &unit.record);
      good = is_back("may still have its LED blinking", result, by_hand("ctlled", unit.name(), "off")) && good;
    }
    if (has_flag_) {
      const int32_t result = lmainte_set_mainteflag(LMAINTE_FLAG_END, time(LMAINTE_CMD_SETMAINTEFLAG), &unit.record);
      good =
          is_back("may still have its maintenance flag", result, by_hand("setmainteflag", unit.name(), "end")) && good;
    }
    has_fans_ = has_flag_ = has_led_ = false;
    return good;
  }

 private:
  // A program that was stopped at its time limit may have done its work all the same.
  static bool perhaps(int32_t result) { return result == LMAINTE_OK || result == LMAINTE_FAILED; }

  bool is_whole_board() const {
    const int32_t both = record.board.cmu.status & record.board.iou.status;
    return (static_cast<uint32_t>(both) & LMAINTE_STATUS_INSTALLED) != 0;
  }

  int32_t bring_up_board() {
    int32_t result = is_whole_board() ? lmainte_test_sb(time(LMAINTE_CMD_TESTSB), &unit.record) : LMAINTE_OK;
    if (result == LMAINTE_OK && is_whole_board() && division != 0)
      result = lmainte_set_xsb(division, 0, time(LMAINTE_CMD_SETUPFRU), &unit.record);
    if (result == LMAINTE_OK) result = lmainte_link_board(LMAINTE_LINK_UP, time(LMAINTE_CMD_LINKBOARD), &unit.record);
    return result;
  }

  // The operator gave up: the unit works again where it is, or its place stays empty.
  bool put_back() {
    int32_t result = read();
    if (result == LMAINTE_OK && !unit.is_installed()) {
      std::printf("The place of %s stays empty. Add a unit with: add_unit %s\n", unit.name(), kind.word.data());
      return true;
    }
    if (result == LMAINTE_OK)
      result =
          with_progress(std::string("Putting ") + unit.name() + " back into operation ", [this] { return bring_up(); });
    return is_back("is still out of operation", result, std::string("add_unit ") + kind.word.data());
  }

  bool is_back(const char *what, int32_t result, const std::string &mend) const {
    if (result != LMAINTE_OK)
      std::printf("%s %s (result %d).\nMend it with: %s\n", unit.name(), what, result, mend.c_str());
    return result == LMAINTE_OK;
  }

  bool has_led_ = false, has_flag_ = false, has_fans_ = false, is_detached_ = false;
};

}  // namespace procedure
