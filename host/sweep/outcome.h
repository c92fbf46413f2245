// What became of a replay, as the process that played it tells the one that counts.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/sweep/judge.h"

namespace sweep {

struct Outcome {
  bool is_told = false;
  bool happened = false;
  std::vector<Fault> faults;
  std::vector<std::string> played;
  std::vector<std::size_t> followers;  // drawn from the deviations of its sequel
};

std::string text_of(const Course &course, const std::vector<Fault> &faults,
                    const std::vector<std::size_t> &followers = {});
Outcome outcome_in(const std::string &text);

// A play that shows a fault: it fails as long as the command has the fault.
std::string finding_of(const std::string &headline, const Outcome &outcome, const Fault &fault);

}  // namespace sweep
