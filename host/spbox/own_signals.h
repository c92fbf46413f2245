// Whom the signals of a command in a box reach.
#pragma once

namespace spbox {

// From now on this process, and all that it starts, send signals to each other only, and have no sockets without a file in
// common with others. Where the kernel cannot do that, before Linux 6.12, all stays as it is.
void keep_signals_among_own();

}  // namespace spbox
