#include "procedure/work.h"

#include "procedure/beside.h"
#include "procedure/log.h"
#include "procedure/results.h"
#include "procedure/session.h"
#include "procedure/telling.h"
#include "procedure/text.h"
#include "procedure/words.h"

namespace procedure = lmainte::procedure;
using procedure::text_of;
using procedure::words;

lmainte_work::lmainte_work(const procedure::Server &the_server, const lmainte_procedure &the_procedure,
                           const procedure::Kind &the_kind, const procedure::Unit &the_unit,
                           const procedure::AnyRecord &the_record)
    : server(the_server),
      procedure(the_procedure),
      kind(the_kind),
      unit(the_unit),
      record(the_record),
      condition(the_unit.is_installed()),
      marks(the_server, the_unit.record),
      was_in_place_(the_unit.is_installed()) {
  if (kind.is_board() && server.is_high_end()) division = board().cmu.xsb_mode == 1 ? 1 : 4;
}

int32_t lmainte_work::read() {
  procedure::AnyRecord fresh{};
  const int32_t result = procedure::read_one(server, kind, unit.record.number, fresh);
  if (result == LMAINTE_OK) take(fresh);
  return result;
}

void lmainte_work::take(const procedure::AnyRecord &fresh) {
  record = fresh;
  unit.status = procedure::status_of(kind, &record);
}

int32_t lmainte_work::detach() {
  const procedure::Undisturbed undisturbed;
  const int32_t result = lmainte_detach_fru(time(LMAINTE_CMD_DETACHFRU), &unit.record);
  condition.take_out_ended(result);
  if (result != LMAINTE_OK || !kind.is_board()) return result;
  return lmainte_link_board(LMAINTE_LINK_DOWN, time(LMAINTE_CMD_LINKBOARD), &unit.record);
}

int32_t lmainte_work::bring_up() {
  const int32_t result = kind.is_board() ? bring_up_board(division) : bring_up_unit();
  condition.bring_up_ended(result, is_in_operation_);
  return result;
}

// What passes its test is in operation.
int32_t lmainte_work::bring_up_unit() {
  int32_t result = lmainte_test_fru(time(LMAINTE_CMD_TESTFRU), &unit.record);
  is_in_operation_ = result == LMAINTE_OK;
  if (result == LMAINTE_OK && kind.type == LMAINTE_TYPE_FANTRAY)
    result = lmainte_check_fanspeed(time(LMAINTE_CMD_CHKFANSPEED), name());
  return result;
}

int32_t lmainte_work::bring_up_board(int32_t parts) {
  int32_t result = is_whole_board() ? lmainte_test_sb(time(LMAINTE_CMD_TESTSB), &unit.record) : LMAINTE_OK;
  if (result == LMAINTE_OK && is_whole_board() && parts != 0)
    result = lmainte_set_xsb(parts, is_mirrored ? 1 : 0, time(LMAINTE_CMD_SETUPFRU), &unit.record);
  if (result == LMAINTE_OK) result = lmainte_link_board(LMAINTE_LINK_UP, time(LMAINTE_CMD_LINKBOARD), &unit.record);
  is_in_operation_ = result == LMAINTE_OK;
  return result;
}

int32_t lmainte_work::time_to_detach() const {
  return time(LMAINTE_CMD_DETACHFRU) + (kind.is_board() ? time(LMAINTE_CMD_LINKBOARD) : 0);
}

int32_t lmainte_work::time_to_bring_up() const {
  return kind.is_board() ? time(LMAINTE_CMD_TESTSB) + time(LMAINTE_CMD_SETUPFRU) + time(LMAINTE_CMD_LINKBOARD)
                         : time(LMAINTE_CMD_TESTFRU) + time(LMAINTE_CMD_CHKFANSPEED);
}

bool lmainte_work::is_whole_board() const {
  const int32_t both = board().cmu.status & board().iou.status;
  return kind.is_board() && (static_cast<uint32_t>(both) & LMAINTE_STATUS_INSTALLED) != 0;
}

// ---- What an author's steps switched

int32_t lmainte_work::undo_later(const char *what, lmainte_undo undo, void *argument) {
  if (what == nullptr || undo == nullptr || undoing_count_ == LMAINTE_UNDO_MOST || is_undoing_) return LMAINTE_FAILED;
  undoings_[undoing_count_++] = {what, undo, argument};
  return LMAINTE_OK;
}

size_t lmainte_work::find(lmainte_undo undo, void *argument) const {
  size_t place = undoing_count_;
  while (place > 0 && (undoings_[place - 1].undo != undo || undoings_[place - 1].argument != argument)) --place;
  return place == 0 ? LMAINTE_UNDO_MOST : place - 1;
}

void lmainte_work::forget(size_t place) {
  for (--undoing_count_; place < undoing_count_; ++place) undoings_[place] = undoings_[place + 1];
}

int32_t lmainte_work::do_undo(const Undoing &undoing) {
  constexpr int32_t kLongest = 60;  // seconds for which the operator sees that time passes
  is_undoing_ = true;
  const int32_t result = procedure::with_late_progress(procedure::Text(words("Taking back what was switched ")),
                                                       kLongest, [&] { return undoing.undo(this, undoing.argument); });
  is_undoing_ = false;
  if (result == LMAINTE_OK) return result;
  procedure::tell(text_of(words("%s (result %d)."), undoing.what, result).view());
  procedure::log_left(LMAINTE_LEFT_MARKED, &unit.record);
  return result;
}

int32_t lmainte_work::undo_now(lmainte_undo undo, void *argument) {
  const size_t place = find(undo, argument);
  if (place == LMAINTE_UNDO_MOST) return LMAINTE_FAILED;
  const Undoing undoing = undoings_[place];
  forget(place);
  return do_undo(undoing);
}

void lmainte_work::keep(lmainte_undo undo, void *argument) {
  const size_t place = find(undo, argument);
  if (place != LMAINTE_UNDO_MOST) forget(place);
}

bool lmainte_work::undo_all() {
  bool good = true;
  while (undoing_count_ > 0) good = do_undo(undoings_[--undoing_count_]) == LMAINTE_OK && good;
  return good;
}

// ---- The way out

bool lmainte_work::take_back() {
  const bool is_unit_good = leave_unit();
  const bool is_undone = undo_all();
  return take_marks_back() && is_undone && is_unit_good;
}

bool lmainte_work::take_marks_back() {
  if (!marks.are_set()) return true;
  const bool is_good = marks.take_back();
  if (is_good) marked_units_ = lmainte_delete_swap_fru_from_list(type(), number());
  return is_good;
}

// The procedure ends before its time. The unit that was taken out of operation, and no other, goes back as it was, a
// board not divided anew. What is not in order then is told and logged. False where an operation failed on the way.
bool lmainte_work::leave_unit() {
  const int32_t value = condition.value();
  if (value == LMAINTE_CONDITION_UNTOUCHED || value == LMAINTE_CONDITION_GOOD) return true;
  const int32_t result = read();
  if (result != LMAINTE_OK) return leave_unknown(result);
  if (!unit.is_installed()) return leave_place();
  return value == LMAINTE_CONDITION_OUT ? put_back() : leave_as_it_is(value);
}

namespace {

using procedure::noted;

// How a unit is left, by its condition.
struct Leaving {
  int32_t condition;
  uint8_t left;         // in the log
  const char *says;     // behind the unit's name
  bool is_failure;      // of the procedure; else the operator chose it, or was told why before
  const char *advised;  // the procedure that comes next; null: none
};

constexpr Leaving kLeavings[] = {
    {LMAINTE_CONDITION_IN_DOUBT, LMAINTE_LEFT_IN_DOUBT, noted("%s may be out of operation"), true, "add_unit"},
    {LMAINTE_CONDITION_EXCHANGED, LMAINTE_LEFT_UNTESTED, noted("%s is in place and was not tested"), false, "add_unit"},
    {LMAINTE_CONDITION_REJECTED, LMAINTE_LEFT_REJECTED, noted("%s is in place and out of operation"), false,
     "add_unit"},
    {LMAINTE_CONDITION_HALF_PASSED, LMAINTE_LEFT_UNCHECKED, noted("%s is in operation, but was not checked to the end"),
     false, nullptr},
    {LMAINTE_CONDITION_OUT, LMAINTE_LEFT_OUT, noted("%s is still out of operation"), true, "add_unit"},
};

const Leaving &leaving_of(int32_t condition) {
  const Leaving *row = kLeavings;
  while (row->condition != condition) ++row;
  return *row;
}

constexpr Leaving kUnknown = {LMAINTE_CONDITION_OUT, LMAINTE_LEFT_UNKNOWN,
                              noted("%s is in a state that could not be read"), true, "add_unit"};

// A unit with a fault is exchanged. Every other one is tested once more.
bool leave(const lmainte_work &work, const Leaving &leaving, int32_t result) {
  procedure::Text text = text_of(words(leaving.says), work.name());
  if (result != LMAINTE_OK) text.add(": ").add(procedure::reason_of(result).view());
  procedure::tell(text.add(".").view());
  if (procedure::meaning_of(result).is_fault_of_unit)
    procedure::advise(words("To exchange it for another one, start:"),
                      procedure::procedure_command("replace_unit", work.kind.word));
  else if (leaving.advised != nullptr)
    procedure::advise(words("To test it and put it into operation, start:"),
                      procedure::procedure_command(leaving.advised, work.kind.word));
  procedure::log_left(leaving.left, &work.unit.record);
  return !leaving.is_failure;
}

}  // namespace

bool lmainte_work::leave_as_it_is(int32_t value) const {
  const int32_t reason = value == LMAINTE_CONDITION_IN_DOUBT   ? LMAINTE_FAILED
                         : value == LMAINTE_CONDITION_REJECTED ? condition.reason()
                                                               : LMAINTE_OK;
  return leave(*this, leaving_of(value), reason);
}

bool lmainte_work::leave_unknown(int32_t result) const {
  return leave(*this, kUnknown, result);
}

bool lmainte_work::put_back() {
  const int32_t result =
      procedure::with_progress(text_of(words("Putting %s back into operation "), name()), time_to_bring_up(),
                               [this] { return kind.is_board() ? bring_up_board(0) : bring_up_unit(); });
  if (result == LMAINTE_OK) {
    condition.is_put_back();
    return true;
  }
  const bool is_pulled_meanwhile = read() == LMAINTE_OK && !unit.is_installed();
  return is_pulled_meanwhile ? leave_place() : leave(*this, leaving_of(LMAINTE_CONDITION_OUT), result);
}

bool lmainte_work::leave_place() {
  return !was_in_place_ || leave_empty();
}

bool lmainte_work::leave_empty() const {
  procedure::advise(text_of(words("The place of %s stays empty. When you have a unit for it, start:"), name()).view(),
                    procedure::procedure_command("add_unit", kind.word));
  procedure::log_left(LMAINTE_LEFT_EMPTY, &unit.record);
  return true;
}

// ---- What an author's step asks and says

int32_t lmainte_work_condition(const lmainte_work *work) {
  return work->condition.value();
}

const UnitRecord *lmainte_work_unit(const lmainte_work *work) {
  return &work->unit.record;
}

uint32_t lmainte_work_status(const lmainte_work *work) {
  return work->unit.status;
}

const void *lmainte_work_record(const lmainte_work *work) {
  return &work->record;
}

int32_t lmainte_work_read(lmainte_work *work) {
  return work->read();
}

const lmainte_model_data *lmainte_work_server(const lmainte_work *work) {
  return &work->server.data();
}

int32_t lmainte_work_limit(const lmainte_work *work, uint32_t cmd_id) {
  return work->time(cmd_id);
}

void *lmainte_work_data(const lmainte_work *work) {
  return work->procedure.data;
}

int32_t lmainte_work_undo_later(lmainte_work *work, const char *what, lmainte_undo undo, void *argument) {
  return work->undo_later(what, undo, argument);
}

int32_t lmainte_work_undo_now(lmainte_work *work, lmainte_undo undo, void *argument) {
  return work->undo_now(undo, argument);
}

void lmainte_work_keep(lmainte_work *work, lmainte_undo undo, void *argument) {
  work->keep(undo, argument);
}
