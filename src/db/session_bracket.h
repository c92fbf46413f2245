// A piece of work between opening and locking databases and releasing them again, when the release can fail too.
#pragma once

#include <cstddef>

#include "include/lmainte.h"
#include "src/frame/trace.h"

namespace lmainte {

// The errors of a bracket. Each carries the failing result and the database id, or the database id first.
struct BracketErrors {
  Error not_opened, not_locked, not_unlocked, not_closed;
  bool database_first = false;
};

// How the bracket holds its databases. Some work only needs them open.
enum class Hold { kOpen, kLocked };

// The databases, in ascending order, that one piece of work uses.
class SessionBracket {
 public:
  template <size_t N>
  SessionBracket(const Call &call, const BracketErrors &errors, const uint32_t (&db_ids)[N], Hold hold)
      : call_(call), errors_(errors), db_ids_(db_ids), count_(N), hold_(hold) {}

  // Opens and locks the databases, runs the work, then unlocks and closes them in descending order, also after a failure.
  // True when all of it succeeded.
  template <class Work>
  bool run(Work work) {
    const bool good = take() && work();
    return release() && good;
  }

 private:
  LMAINTE_ONE_COPY bool take() {
    return take(lmainte_scdb_open, errors_.not_opened, opened_) &&
           (hold_ != Hold::kLocked || take(lmainte_scdb_lock, errors_.not_locked, locked_));
  }

  LMAINTE_ONE_COPY bool release() {
    const bool unlocked = release(lmainte_scdb_unlock, errors_.not_unlocked, locked_);
    const bool closed = release(lmainte_scdb_close, errors_.not_closed, opened_);
    return unlocked && closed;
  }

  bool take(int32_t (*step)(uint32_t), const Error &error, size_t &held) {
    while (held < count_) {
      const int32_t result = step(db_ids_[held]);
      if (result != LMAINTE_OK) {
        record(error, result, db_ids_[held]);
        return false;
      }
      ++held;
    }
    return true;
  }

  bool release(int32_t (*step)(uint32_t), const Error &error, size_t &held) {
    bool good = true;
    while (held > 0) {
      const uint32_t db_id = db_ids_[--held];
      const int32_t result = step(db_id);
      if (result != LMAINTE_OK) {
        record(error, result, db_id);
        good = false;
      }
    }
    return good;
  }

  void record(const Error &error, int32_t result, uint32_t db_id) const {
    if (errors_.database_first)
      call_.error(error, db_id, result);
    else
      call_.error(error, result, db_id);
  }

  const Call &call_;
  const BracketErrors &errors_;
  const uint32_t *const db_ids_;
  const size_t count_;
  const Hold hold_;
  size_t opened_ = 0;
  size_t locked_ = 0;
};

}  // namespace lmainte
