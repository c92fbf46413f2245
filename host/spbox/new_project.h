// A project for a new command: the command, how it is built, one play, and what continuous integration does.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace spbox {

enum class Language { kC, kCxx };

// One file of a project; its texts stand in host/spbox/project.
struct ProjectFile {
  std::filesystem::path path;
  std::string text;
};

// Null where a command may have this name, else why not: "is no identifier of C".
const char *why_no_command_name(const std::string &name);

// All files of a project for a command of this name.
std::vector<ProjectFile> project_files(const std::string &name, Language language);

// Makes the folder with all of them, or nothing. Throws BoxError.
void make_project(const std::filesystem::path &folder, const std::vector<ProjectFile> &files);

}  // namespace spbox
