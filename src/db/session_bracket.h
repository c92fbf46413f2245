// A piece of work between opening and locking databases and releasing them again, when the release can fail too.
#pragma once

#include <cstddef>

#include "include/lmainte.h"
#include "src/frame/trace.h"

namespace lmainte {

// The error events of a bracket; each carries the failing result and the database id, or these the other way round.
struct BracketEvents {
  Point open, lock, unlock, close;
  bool database_first = false;
};

// How the bracket holds its databases. Some work only needs them open.
enum class Hold { kOpen, kLocked };

// The databases, in ascending order, that one piece of work uses.
template <size_t N>
class SessionBracket {
 public:
  SessionBracket(const Call &call, const BracketEvents &events, const uint32_t (&db_ids)[N], Hold hold)
      : call_(call), events_(events), db_ids_(db_ids), hold_(hold) {}

  // Opens the databases and locks them, runs the work, unlocks and closes in descending order, whatever happened in
  // between. True when everything succeeded: a failure of the work stands, a failed release spoils its success.
  template <class Work>
  bool run(Work work) {
    bool good = take(lmainte_scdb_open, events_.open, opened_);
    if (good && hold_ == Hold::kLocked) good = take(lmainte_scdb_lock, events_.lock, locked_);
    if (good) good = work();
    const bool unlocked = release(lmainte_scdb_unlock, events_.unlock, locked_);
    const bool closed = release(lmainte_scdb_close, events_.close, opened_);
    return good && unlocked && closed;
  }

 private:
  bool take(int32_t (*step)(uint32_t), const Point &event, size_t &held) {
    while (held < N) {
      const int32_t result = step(db_ids_[held]);
      if (result != LMAINTE_OK) {
        record(event, result, db_ids_[held]);
        return false;
      }
      ++held;
    }
    return true;
  }

  bool release(int32_t (*step)(uint32_t), const Point &event, size_t &held) {
    bool good = true;
    while (held > 0) {
      const uint32_t db_id = db_ids_[--held];
      const int32_t result = step(db_id);
      if (result != LMAINTE_OK) {
        record(event, result, db_id);
        good = false;
      }
    }
    return good;
  }

  void record(const Point &event, int32_t result, uint32_t db_id) const {
    if (events_.database_first)
      call_.error(event, db_id, result);
    else
      call_.error(event, result, db_id);
  }

  const Call &call_;
  const BracketEvents &events_;
  const uint32_t (&db_ids_)[N];
  const Hold hold_;
  size_t opened_ = 0;
  size_t locked_ = 0;
};

}  // namespace lmainte
