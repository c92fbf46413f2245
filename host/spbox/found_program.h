// The programs that `spbox run` needs, and where they are.
#pragma once

#include <unistd.h>

#include <filesystem>
#include <string>

namespace spbox {

// A program as the shell finds it. A name with a slash is taken as it is, whether the file is there or not: what is wrong
// with it is told inside the box. Empty where no folder of the PATH has it.
std::filesystem::path find_program(const std::string &name);

// A part of spbox, a program or a library: beside it, or in the folder of its parts, whose way from spbox is the same where it
// is built and where it is installed. Throws where none can be had in this way (X_OK, R_OK).
std::filesystem::path find_part(const std::filesystem::path &spbox, const std::string &name, int access_mode = X_OK);

// Throw where the system lacks one, and say how to install it.
void check_bwrap();
void check_pager();

}  // namespace spbox
