// What the kernel sends signals for, in words: a file that cannot grow any more, one that cannot be read through memory, and
// one that holds what led its reader astray.
#pragma once

namespace spbox {

// From now on the first is an error of the call, and the others end spbox with a sentence and the exit status of a failure.
void tell_of_damaged_files();

}  // namespace spbox
