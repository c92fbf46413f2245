// An operator who keeps their head: the command has left the way that the play knows, and has to come to its end.
#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "host/play/operator.h"
#include "host/script/script.h"

namespace sweep {

struct CarefulEnd {
  bool ended = true;                 // false: it did not end, also where it was interrupted
  bool gave_up = false;              // the operator gave up at a question
  std::size_t typed_at = 0;          // so many lines were shown when the operator typed last
  std::vector<script::Words> steps;  // of a play that does the same
};

// Answers the command with care until it ends: Enter where it asks for it, q at every question, Ctrl-C where it does not let the
// operator go. Gives up where the screen has not changed for `limit`, and after four times `limit`.
CarefulEnd bring_to_end(play::Operator &op, std::chrono::milliseconds limit);

// How many lines stand there, without the empty ones behind them.
std::size_t lines_in(const std::vector<std::string> &rows);

// The keys for what stands last on a screen; empty where nothing is asked.
std::string careful_keys(const std::vector<std::string> &rows);

}  // namespace sweep
