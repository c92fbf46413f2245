// A transcript: what a technician does to a box, and what an operator then sees of each command, word for word.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace end_to_end {

/*
 * A transcript is a text file of one model's box:
 *
 *   # remark
 *   ! pull /PSU#0             the technician: spbox pull BOX /PSU#0
 *   ! xsb 4-7 9 23 0          extended system boards 4 to 7 run in domain 9, are set up for domain 23, are not active
 *   ! board 0-3 4             system boards 0 to 3 are divided into four extended system boards (or 1: are one)
 *   $ show_units psu          the operator's command; the lines up to the next mark are all that it shows
 *   (exit status 2)           its exit status, where that is not 0
 *
 * Blank lines at the end of what a command shows do not count.
 */
struct Step {
  int line;
  bool by_technician;
  std::vector<std::string> words;
  std::vector<std::string> shown;
  int exit_status = 0;
};

std::vector<Step> read_transcript(const std::filesystem::path &file);  // Throws.

}  // namespace end_to_end
