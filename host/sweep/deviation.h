// What can be otherwise than in a good play: a row for each deviation, and each place of the play at which it can be.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "host/play/step.h"
#include "host/sweep/good.h"

namespace sweep {

using script::Words;

// Where a deviation can be: at a point of a command, or at a step of the play.
enum class At { kPoint, kAnswer, kPull, kInsert };

// What a place of the play offers to a deviation of a step: the words of the step, and the model of the server.
struct Occasion {
  const Words &words;
  std::string_view model;
};

struct DeviationRow {
  std::string_view word;  // "missing"
  std::string_view what;  // "a record is not there"
  At at;

  // Of points: the kinds, and what happens there. Where a program ends with an exit status, each of those that its page knows, and
  // one that it does not know.
  std::vector<box::PointKind> kinds = {};
  box::Turn turn = {};

  bool is_choice = false;              // the operator's, who knows why nothing comes of it
  bool is_in_place_of_points = false;  // of a command that comes to no question of the library

  // Of steps: what is done instead; nothing where it cannot be there.
  std::optional<std::vector<Words>> (*instead)(const Occasion &occasion) = nullptr;
};
std::span<const DeviationRow> deviation_rows();

// One deviation at one place.
struct Deviation {
  const DeviationRow *row = nullptr;
  std::size_t command = 0;  // the number of the command that it meets

  std::optional<box::Deviation> point;

  // Or the step that is played otherwise.
  std::size_t step = 0;    // its number in the play
  std::size_t number = 0;  // among the answers, or among the units that are pulled or inserted, from 1
  std::string place = {};  // "walk.play:12"
  std::vector<Words> instead = {};
};

std::string where(const Deviation &deviation);    // "program ctlled 2", "answer 3 at walk.play:12"
std::string what(const Deviation &deviation);     // "exit 206", "missing"
std::string name_of(const Deviation &deviation);  // "program ctlled 2: exit 206"
std::string kind_of(const Deviation &deviation);  // "program", "answer"
std::string sort_of(
    const Deviation &deviation);  // "program ctlled exit", "answer q"; of all that differ in a number only

// The steps of a play that bring it about, as they are written.
std::vector<std::string> lines_of(const Deviation &deviation);

// Each one at each place to which the good play came, in the same order each time.
std::vector<Deviation> all_deviations(const std::vector<play::Step> &steps, const Good &good);

// Whether a signal comes at points of this kind and name. It does not where a control program or the pager starts, nor at the records of the trace
// between the calls of a database.
bool gets_signals(box::PointKind kind, const std::string &name);

// A step of these words. Throws std::invalid_argument.
play::Step step_of(const Words &words);

// The command that a step starts is a control program, and none of an author's.
bool starts_control_program(const play::Step &step);

}  // namespace sweep
