// What may end a command in the box, and the way of a signal from spbox to the command.
//
// The terminal sends these signals to every process of its foreground group, spbox and bwrap included: those two stay
// until the command has ended in its own way. A signal for spbox alone is passed on.
#pragma once

#include <sys/types.h>

#include <csignal>
#include <string>

namespace spbox {

// SIGINT, SIGQUIT, SIGTERM and SIGHUP.
sigset_t ending_signals();

// In the process that becomes bwrap: it stays.
void ignore_ending_signals();

// The signals that were ignored already when spbox was started, and are to stay so: a letter for each.
std::string ignored_signals();

// In the process that becomes the command: gives it the signals back that were not ignored. False where these are not
// the letters that ignored_signals() gives.
bool restore_signals(const std::string &letters);

// In spbox: keeps the signals that come before the command is there, and passes on those that come later.
void keep_signals();
void pass_signals_to(pid_t command);  // from now on, and those that were kept
void pass_no_signals();               // the command has ended

}  // namespace spbox
