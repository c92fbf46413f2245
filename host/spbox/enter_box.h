// What `spbox run` starts first inside the box's root.
#pragma once

namespace spbox {

inline constexpr const char *kEnter = "enter-box";

// Gives the command its signals back and becomes it. Arguments: the descriptor that waits for the process id, a letter
// for each signal, and the command. Returns an exit status where it cannot.
int enter_box(int argc, char **argv);

}  // namespace spbox
