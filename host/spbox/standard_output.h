// What a verb prints has to arrive where it should, and nowhere else.
#pragma once

namespace spbox {

// Without it, a file of the box could take the place of a standard output that is closed, and get what is printed.
void keep_standard_descriptors();

// Judges what was printed: a verb that could not print what it was asked for has failed, and says so. Returns the exit
// status.
int with_output_judged(int status);

}  // namespace spbox
