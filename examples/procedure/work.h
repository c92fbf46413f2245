// Work on one unit. What was switched for it is switched back, and the unit put back into operation, at every way out.
#pragma once

#include <cstdint>
#include <string>

#include "../graceful.h"
#include "advice.h"
#include "beside.h"
#include "lmainte.h"
#include "lmainte_host.h"
#include "log_left.h"
#include "marks.h"
#include "results.h"
#include "telling.h"
#include "unit_kinds.h"

namespace procedure {

class Work {
 public:
  Work(const Server &the_server, const Kind &the_kind, const Unit &the_unit, const AnyRecord &the_record,
       int32_t the_action)
      : server(the_server),
        kind(the_kind),
        unit(the_unit),
        record(the_record),
        action(the_action),
        marks_(the_server, the_unit.record),
        was_in_place_(the_unit.is_installed()),
        may_be_in_operation_(the_unit.is_installed()) {
    if (kind.is_board() && server.is_high_end()) division = board().cmu.xsb_mode == 1 ? 1 : 4;
  }
  ~Work() { take_back(); }
  Work(const Work &) = delete;
  Work &operator=(const Work &) = delete;

  const Server &server;
  const Kind &kind;
  Unit unit;
  AnyRecord record;
  const int32_t action;      // LMAINTE_EVENT_...
  int32_t division = 0;      // extended system boards into which a board is divided; 0 for what is never divided
  bool is_mirrored = false;  // the memory of a board that is one extended system board

  int32_t time(size_t program) const { return server.time(program); }
  uint32_t type() const { return static_cast<uint32_t>(unit.record.type); }
  uint32_t number() const { return static_cast<uint32_t>(unit.record.number); }

  // Reads the unit's state anew. Which unit it is was settled when it was chosen: an empty place may not tell.
  int32_t read() {
    const int32_t result = read_one(server, kind, unit.record.number, record);
    if (result == LMAINTE_OK) unit.status = head_of(kind, &record).status;
    return result;
  }

  int32_t mark() { return marks_.set(); }
  int32_t speed_fans_up() { return marks_.speed_fans_up(); }

  // Out of operation, and a board off the server's links.
  int32_t detach() {
    const graceful::Undisturbed undisturbed;
    const int32_t result = lmainte_detach_fru(time(LMAINTE_CMD_DETACHFRU), &unit.record);
    is_detached_ = result == LMAINTE_OK;
    if (is_detached_) may_be_in_operation_ = has_passed_ = false;
    is_in_doubt_ = result == LMAINTE_FAILED;  // stopped at its limit, or never run
    if (result != LMAINTE_OK || !kind.is_board()) return result;
    return lmainte_link_board(LMAINTE_LINK_DOWN, time(LMAINTE_CMD_LINKBOARD), &unit.record);
  }

  // Not safe to pull out.
  bool may_be_in_operation() const { return may_be_in_operation_; }
  // It passed its test, and is in operation, whatever came after that.
  bool has_passed() const { return has_passed_; }

  // From now on what is in the place is another unit.
  void expect_another() {
    is_another_ = true;
    is_in_doubt_ = has_passed_ = false;
    rejection_ = LMAINTE_OK;
  }

  // How long it may take, in seconds.
  int32_t time_to_detach() const { return time(LMAINTE_CMD_DETACHFRU) + (kind.is_board() ? time_to_link() : 0); }
  int32_t time_to_bring_up() const {
    return kind.is_board() ? time(LMAINTE_CMD_TESTSB) + time(LMAINTE_CMD_SETUPFRU) + time_to_link()
                           : time(LMAINTE_CMD_TESTFRU) + time(LMAINTE_CMD_CHKFANSPEED);
  }

  // The other unit of its board is in place: only a whole board is tested and divided.
  bool is_whole_board() const {
    const int32_t both = board().cmu.status & board().iou.status;
    return kind.is_board() && (static_cast<uint32_t>(both) & LMAINTE_STATUS_INSTALLED) != 0;
  }

  // Tested, set up and in operation.
  int32_t bring_up() {
    has_passed_ = false;
    rejection_ = kind.is_board() ? bring_up_board(division) : bring_up_unit();
    return rejection_;
  }

  // What the unit needed is done: whatever comes afterwards, nothing of it is undone.
  void settle() { is_settled_ = true; }
  bool is_settled() const { return is_settled_; }

  // The unit back in operation, or a word on how it is left; then its marks.
  bool take_back() {
    const bool good = is_settled_ || leave_unit();
    is_settled_ = true;
    return marks_.take_back() && good;
  }

 private:
  const SbData &board() const { return record.as<SbData>(); }

  int32_t bring_up_unit() {
    int32_t result = lmainte_test_fru(time(LMAINTE_CMD_TESTFRU), &unit.record);
    if (result == LMAINTE_OK) be_in_operation();  // what passes is
    if (result == LMAINTE_OK && kind.type == LMAINTE_TYPE_FANTRAY)
      result = lmainte_check_fanspeed(time(LMAINTE_CMD_CHKFANSPEED), unit.name());
    return result;
  }

  int32_t bring_up_board(int32_t parts) {
    int32_t result = is_whole_board() ? lmainte_test_sb(time(LMAINTE_CMD_TESTSB), &unit.record) : LMAINTE_OK;
    if (result == LMAINTE_OK && is_whole_board() && parts != 0)
      result = lmainte_set_xsb(parts, is_mirrored ? 1 : 0, time(LMAINTE_CMD_SETUPFRU), &unit.record);
    if (result == LMAINTE_OK) result = lmainte_link_board(LMAINTE_LINK_UP, time(LMAINTE_CMD_LINKBOARD), &unit.record);
    if (result == LMAINTE_OK) be_in_operation();
    return result;
  }

  void be_in_operation() {
    may_be_in_operation_ = has_passed_ = true;
    is_detached_ = is_in_doubt_ = false;
  }

  int32_t time_to_link() const { return time(LMAINTE_CMD_LINKBOARD); }

  // The procedure ends before its time. The unit that was taken out of operation, and no other, goes back as it was, a
  // board not divided anew. What is not in order then is told and logged. False where an operation failed on the way.
  bool leave_unit() {
    if (!is_detached_ && !is_in_doubt_ && rejection_ == LMAINTE_OK && !is_another_) return true;
    int32_t result = read();
    if (result != LMAINTE_OK) return leave(LMAINTE_HOST_LEFT_UNKNOWN, "is in a state that could not be read", result);
    if (!unit.is_installed()) return !was_in_place_ || leave_empty();
    if (has_passed_) return leave_unchecked();
    if (rejection_ != LMAINTE_OK) {
      leave(LMAINTE_HOST_LEFT_REJECTED, "is in place and out of operation", rejection_);
      return true;
    }
    if (is_another_) return leave(LMAINTE_HOST_LEFT_UNTESTED, "is in place and was not tested", LMAINTE_OK);
    if (is_in_doubt_) return leave(LMAINTE_HOST_LEFT_IN_DOUBT, "may be out of operation", LMAINTE_FAILED);
    result = with_progress(std::string("Putting ") + unit.name() + " back into operation ", time_to_bring_up(),
                           [this] { return kind.is_board() ? bring_up_board(0) : bring_up_unit(); });
    return result == LMAINTE_OK || leave(LMAINTE_HOST_LEFT_OUT, "is still out of operation", result);
  }

  bool leave_empty() const {
    advise(text_of("The place of %s stays empty. When you have a unit for it, start:", unit.name()),
           procedure_command("add_unit", kind.word));
    log_left(LMAINTE_HOST_LEFT_EMPTY, unit.record);
    return true;
  }

  bool leave_unchecked() const {
    tell("%s is in operation, but was not checked to the end.", unit.name());
    log_left(LMAINTE_HOST_LEFT_UNCHECKED, unit.record);
    return true;
  }

  // A unit with a fault is exchanged. Every other one is tested once more.
  bool leave(uint8_t what, const char *how, int32_t result) const {
    const std::string reason = result == LMAINTE_OK ? "" : ": " + reason_of(result);
    tell("%s %s%s.", unit.name(), how, reason.c_str());
    if (meaning_of(result).is_fault_of_unit)
      advise("To exchange it for another one, start:", procedure_command("replace_unit", kind.word));
    else
      advise("To test it and put it into operation, start:", procedure_command("add_unit", kind.word));
    log_left(what, unit.record);
    return result == LMAINTE_OK;
  }

  Marks marks_;
  const bool was_in_place_;
  bool may_be_in_operation_;  // what was in place may be, until it is taken out of operation here
  bool is_detached_ = false;  // taken out of operation, and not back since
  bool is_in_doubt_ = false;  // the program that should have taken it out did not end well
  bool is_another_ = false;   // the one that was there is gone
  bool has_passed_ = false;   // its test, and is in operation
  bool is_settled_ = false;
  int32_t rejection_ = LMAINTE_OK;  // why it could not be brought up
};

}  // namespace procedure
