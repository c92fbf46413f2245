// What a command leaves behind that it should have taken back or ended.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "host/box/place.h"
#include "host/terminal/terminal.h"

namespace play {

// What was there before the command, and is not its fault.
struct Before {
  terminal::Mode mode;
  std::set<std::filesystem::path> files;
  std::set<pid_t> processes;
  std::vector<std::string> hardware = {};  // what the commands of others had switched, a sentence for each
};

Before before_command(const box::Place &place, const terminal::Terminal &terminal, bool others_work = false);

// A sentence for each leftover, such as "the LED of /PSU#3 blinks". The units in `detached`, and no others, have to be
// detached. Waits for nothing. Throws where the box cannot be read.
std::vector<std::string> leftovers(const box::Place &place, const terminal::Terminal &terminal, const Before &before,
                                   const std::vector<std::string> &detached);

// What is switched in the hardware, read as leftovers() reads it: whatever a command has left there.
std::vector<std::string> switched_in_hardware(const box::Place &place);

// Its parts.
std::vector<std::string> left_in_hardware(const box::Place &place, const std::vector<std::string> &detached);
std::vector<std::string> locked_databases(const box::Place &place);
std::set<std::filesystem::path> files_in_tmp(const box::Place &place);  // those that are not empty
std::set<std::filesystem::path> empty_in_tmp(const box::Place &place);  // files, and folders: "lock/"
std::string sentence_of(const std::filesystem::path &file);             // "the file /tmp/x is left"

// The processes in the box, whatever their session, and those that were started for it with its folder among their
// arguments, such as its daemon; not this process.
std::set<pid_t> processes_of(const box::Place &place);

// The name of a process's program; empty when the process is gone.
std::string program_of(pid_t process);

}  // namespace play
