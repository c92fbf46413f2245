// Work on one unit. What was switched for it is switched back, and the unit put back into operation, at every way out.
#pragma once

#include <cstddef>
#include <cstdint>

#include "include/lmainte_procedure.h"
#include "procedure/condition.h"
#include "procedure/kinds.h"
#include "procedure/marks.h"
#include "procedure/server.h"

struct lmainte_work {
 public:
  lmainte_work(const lmainte::procedure::Server &the_server, const lmainte_procedure &the_procedure,
               const lmainte::procedure::Kind &the_kind, const lmainte::procedure::Unit &the_unit,
               const lmainte::procedure::AnyRecord &the_record);
  lmainte_work(const lmainte_work &) = delete;
  lmainte_work &operator=(const lmainte_work &) = delete;

  const lmainte::procedure::Server &server;
  const lmainte_procedure &procedure;
  const lmainte::procedure::Kind &kind;
  lmainte::procedure::Unit unit;
  lmainte::procedure::AnyRecord record;
  lmainte::procedure::Condition condition;
  lmainte::procedure::Marks marks;
  int32_t division = 0;      // extended system boards into which a board is divided; 0 for what is never divided
  bool is_mirrored = false;  // the memory of a board that is one extended system board

  const char *name() const { return unit.name(); }
  int32_t time(uint32_t program) const { return server.time(program); }
  uint32_t type() const { return static_cast<uint32_t>(unit.record.type); }
  uint32_t number() const { return static_cast<uint32_t>(unit.record.number); }

  // Reads the unit's state anew. Which unit it is was settled when it was chosen: an empty place may not tell.
  int32_t read();
  // The record and the status as they were just seen.
  void take(const lmainte::procedure::AnyRecord &fresh);

  // Out of operation, and a board off the server's links.
  int32_t detach();
  // Tested, set up and in operation.
  int32_t bring_up();

  // How long it may take, in seconds.
  int32_t time_to_detach() const;
  int32_t time_to_bring_up() const;

  // The other unit of its board is in place: only a whole board is tested and divided.
  bool is_whole_board() const;

  // What an author's steps switched.
  int32_t undo_later(const char *what, lmainte_undo undo, void *argument);
  int32_t undo_now(lmainte_undo undo, void *argument);
  void keep(lmainte_undo undo, void *argument);

  // The unit back in operation, or a word on how it is left; what an author's steps switched; then its marks. False where
  // something failed.
  bool take_back();
  // The marks alone, before the way out.
  bool take_marks_back();
  // How many units were still marked for replacement then.
  int32_t marked_units() const { return marked_units_; }

 private:
  struct Undoing {
    const char *what;
    lmainte_undo undo;
    void *argument;
  };

  const SbData &board() const { return record.as<SbData>(); }
  // With how many extended system boards a board is set up; 0: it is not.
  int32_t bring_up_board(int32_t parts);
  int32_t bring_up_unit();
  int32_t do_undo(const Undoing &undoing);
  bool undo_all();
  size_t find(lmainte_undo undo, void *argument) const;
  void forget(size_t place);

  bool leave_unit();
  bool put_back();
  bool leave_place();
  bool leave_empty() const;
  bool leave_as_it_is(int32_t value) const;
  bool leave_unknown(int32_t result) const;

  const bool was_in_place_;
  bool is_in_operation_ = false;  // as the last test, or the last link, of bring_up left it
  bool is_undoing_ = false;
  int32_t marked_units_ = 0;
  Undoing undoings_[LMAINTE_UNDO_MOST] = {};
  size_t undoing_count_ = 0;
};
