// A play once more, with deviations: the operator follows its steps as long as all goes as the play awaits, and keeps their head
// from there on.
#pragma once

#include <set>
#include <string>
#include <vector>

#include "host/sweep/deviation.h"
#include "host/sweep/good.h"
#include "host/sweep/replay_rules.h"

namespace sweep {

// How a replay went: as the good play, or how the command ended in which it left the good play's way.
struct Course {
  bool happened = false;        // each deviation
  bool is_good = false;         // each step was as in the good play, and what a command left, too
  std::string left_early = {};  // why it went another way before anything was otherwise; empty: it did not

  std::size_t command = 0;                        // the number of the one that is told of here
  CommandEnd end;                                 // what was shown: since its start
  std::vector<std::string> shown_by_killed = {};  // of the one that was killed before it
  std::size_t columns = 80;                       // of the window
  std::size_t typed_at =
      0;  // so many of these lines were there when the operator typed, or somebody changed a unit, last
  std::size_t logged_at = 0;  // so many entries were in the log when somebody changed a unit last
  bool gave_up = false, line_cut = false, was_killed = false;
  std::set<int> signals;       // that came to it: at a point, by a step, by a key
  bool was_unheard = false;    // the operator gave up, and all went on as in the good play
  std::string next_text = {};  // what the good play waits for behind their answer
  std::string failed_line;     // the step that did not go as the good play's, as it is written; empty: all did
  std::string failed_check;    // what of the good play's checks behind the command's end did not hold
  std::set<std::string>
      put_back;  // units that came back while the command went on: it may have said before that they are out
  std::vector<std::string> missing;   // units that are not in place
  std::vector<std::string> switched;  // all that is switched in the hardware, also before the command

  std::vector<std::string> played;  // lines of a play that does the same
  Good sequel = {};                 // what came behind the first deviation, where that is noted and it happened
};

// Throws script::Error where the play is not the good one.
Course replay(const std::vector<play::Step> &steps, const Good &good, const std::vector<Deviation> &deviations,
              const ReplayRules &rules);

}  // namespace sweep
