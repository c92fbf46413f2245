// What the kernel sends signals for, in words: a file that cannot grow any more, and one that cannot be read through memory.
#pragma once

namespace spbox {

// From now on the first is an error of the call, and the second ends spbox with a sentence and the exit status of a failure.
void tell_of_damaged_files();

}  // namespace spbox
