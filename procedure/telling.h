// How a procedure tells the operator something.
#pragma once

#include <string_view>

#include "procedure/text.h"

namespace lmainte::procedure {

// Sentences, and the end of their line.
void tell(std::string_view sentences);

// The folder in which this command was found, with its slash; empty for one on the PATH. The others may be there, too.
void remember_folder(const char *program);

// A command whose program stands beside this one, with the folder in which this one was found; every other one as it is.
Text command_beside(std::string_view line);

// A procedure for units of a kind, such as add_unit psu.
Text procedure_command(const char *name, const char *kind);

// A control program for a unit, which mends by hand what it did not do when it was run.
Text program_command(const char *program, const char *unit, const char *mode);

// What to do, and the command that does it, indented, in lines that a shell takes as one. On a service processor it is typed as
// it stands; elsewhere the environment says how it gets there.
void advise(std::string_view what, const Text &command);

}  // namespace lmainte::procedure
