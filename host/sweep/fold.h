// Which points of a good play are equal: a command cannot tell them apart in kind, so that what goes wrong at one of them goes wrong
// at the others, too. A class of equal points is tried at its first point with each deviation; at its last one and at one between
// them, which a seed draws, with one deviation that the seed draws, too.
//
// Two points are equal that have the same kind and name but for numbers, behind as many questions of the same command, inside the
// same functions of the library, between the same neighbours. Fewer differ in two cases. Between two things
// that a command does to the world outside it (it starts a program, writes a record, a file or an event, asks) a signal tells the same
// at all points: only the first and the last one count, with these things as neighbours, and those at which a database is locked and
// unlocked. And no function sees whether its record came into the trace: the records below one function of the library are equal, in
// whichever command.
#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "host/sweep/deviation.h"
#include "host/sweep/draw.h"
#include "host/sweep/good.h"

namespace sweep {

class Fold {
 public:
  Fold(const Good &good, std::uint64_t seed);

  // The numbers of those that are tried for all at equal points, in their order. Those at a step of the play always are, and those at a
  // point of which the order is not known.
  std::vector<std::size_t> taken(const std::vector<Deviation> &all) const;

  // Of all points, and of those at which a signal can come.
  std::size_t classes() const { return classes_; }
  std::size_t signal_classes() const { return signal_classes_; }

 private:
  using Point = std::pair<std::size_t, std::uint32_t>;  // the number of the kind and name, and that of the point

  // What is tried at a point: all, or what was drawn.
  struct Tried {
    bool is_all = false;
    std::size_t drawn = 0;
  };
  using TriedAt = std::map<Point, Tried>;
  enum class Takes { kNone, kOne, kAll };
  std::pair<Takes, std::size_t> takes(const Deviation &deviation) const;  // and what was drawn
  static TriedAt tried_at(const std::vector<Point> &points, const std::vector<std::string> &places, std::uint64_t seed,
                          std::size_t &classes);

  std::map<std::pair<box::PointKind, std::string>, std::size_t> names_;
  std::set<Point> known_;
  TriedAt calls_, signals_;
  std::size_t classes_ = 0, signal_classes_ = 0;
};

}  // namespace sweep
