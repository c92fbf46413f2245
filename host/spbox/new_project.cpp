#include "host/spbox/new_project.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <string_view>
#include <system_error>

#include "host/base/quoted.h"
#include "host/box/box_error.h"
#include "host/spbox/project_texts.h"
#include "host/spbox/whole_file.h"

namespace spbox {
namespace {

namespace fs = std::filesystem;

// A file of a project, by language.
struct ProjectRow {
  const char *path;  // @NAME@ stands for the command's name here, too
  std::string_view c, cxx;
};

constexpr std::array kProjectRows{
    ProjectRow{"@NAME@.c", project_texts::kCommandC, ""},
    ProjectRow{"@NAME@.cpp", "", project_texts::kCommandCxx},
    ProjectRow{"Makefile", project_texts::kMakefileC, project_texts::kMakefileCxx},
    ProjectRow{"CMakeLists.txt", "", project_texts::kCMakeLists},
    ProjectRow{"@NAME@.play", project_texts::kPlay, project_texts::kPlay},
    ProjectRow{"README.md", project_texts::kReadme, project_texts::kReadme},
    ProjectRow{".gitignore", project_texts::kGitignore, project_texts::kGitignore},
    ProjectRow{".github/workflows/test.yml", project_texts::kWorkflow, project_texts::kWorkflow},
};

constexpr auto kKeywords = std::to_array<std::string_view>(
    {"auto",       "break",     "case",           "char",         "const",    "continue", "default",  "do",
     "double",     "else",      "enum",           "extern",       "float",    "for",      "goto",     "if",
     "inline",     "int",       "long",           "register",     "restrict", "return",   "short",    "signed",
     "sizeof",     "static",    "struct",         "switch",       "typedef",  "union",    "unsigned", "void",
     "volatile",   "while",     "_Alignas",       "_Alignof",     "_Atomic",  "_Bool",    "_Complex", "_Generic",
     "_Imaginary", "_Noreturn", "_Static_assert", "_Thread_local"});
constexpr auto kTargets =
    std::to_array<std::string_view>({"CMakeFiles", "Makefile", "all", "clean", "depend", "edit_cache", "help",
                                     "install", "package", "rebuild_cache", "test"});

bool is_one_of(const auto &words, const std::string &name) {
  return std::ranges::find(words, name) != words.end();
}

bool is_letter_of_name(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}

std::string filled_in(std::string_view text, std::string_view place, std::string_view value) {
  std::string result;
  for (std::size_t at = 0; (at = text.find(place)) != std::string_view::npos; text.remove_prefix(at + place.size())) {
    result += text.substr(0, at);
    result += value;
  }
  return result += text;
}

// A folder beside the project's, which takes its name once all is in it. What is removed is known by name, so that it goes also
// where folders cannot be read any more.
class Draft {
 public:
  explicit Draft(const fs::path &folder) {
    constexpr int kMost = 100;  // names that others left
    for (int i = 0; i < kMost; ++i) {
      root_ = folder.string() + ".new" + std::to_string(i);
      if (mkdir(root_.c_str(), kMode) == 0) {
        made_.push_back(root_);
        return;
      }
      if (errno != EEXIST) break;
    }
    throw std::system_error(errno, std::generic_category());
  }
  ~Draft() {
    for (; !made_.empty(); made_.pop_back()) std::remove(made_.back().c_str());
  }
  Draft(const Draft &) = delete;
  Draft &operator=(const Draft &) = delete;

  void add(const ProjectFile &file) {
    fs::path folder = root_;
    for (const fs::path &part : file.path.parent_path()) {
      folder /= part;
      if (std::ranges::find(made_, folder) != made_.end()) continue;
      if (mkdir(folder.c_str(), kMode) != 0) throw std::system_error(errno, std::generic_category());
      made_.push_back(folder);
    }
    made_.push_back(root_ / file.path);
    write_whole_file(made_.back(), file.text);
  }

  // False where another one has made the folder meanwhile.
  bool becomes(const fs::path &folder) {
    if (renameat2(AT_FDCWD, root_.c_str(), AT_FDCWD, folder.c_str(), RENAME_NOREPLACE) == 0) {
      made_.clear();
      return true;
    }
    if (errno == EEXIST) return false;
    throw std::system_error(errno, std::generic_category());
  }

 private:
  static constexpr mode_t kMode = 0777;

  fs::path root_;
  std::vector<fs::path> made_;
};

[[noreturn]] void refuse(const fs::path &folder) {
  throw box::BoxError(base::quoted(folder.string()) + " exists already. Name another folder, or remove it.");
}

}  // namespace

const char *why_no_command_name(const std::string &name) {
  const bool is_identifier = !name.empty() && is_letter_of_name(name.front()) && std::ranges::all_of(name, [](char c) {
    return is_letter_of_name(c) || (c >= '0' && c <= '9');
  });
  if (!is_identifier) return "is no identifier of C: letters, digits and _, and no digit first";
  if (is_one_of(kKeywords, name)) return "is a word of the language C";
  if (is_one_of(kTargets, name)) return "is a target of make or of CMake";
  constexpr std::size_t kLongest = 64;
  return name.size() > kLongest ? "is longer than 64 letters" : nullptr;
}

std::vector<ProjectFile> project_files(const std::string &name, Language language) {
  const bool is_c = language == Language::kC;
  std::vector<ProjectFile> files;
  for (const ProjectRow &row : kProjectRows) {
    const std::string_view text = is_c ? row.c : row.cxx;
    if (text.empty()) continue;
    files.push_back({filled_in(row.path, "@NAME@", name),
                     filled_in(filled_in(text, "@SOURCE@", is_c ? "@NAME@.c" : "@NAME@.cpp"), "@NAME@", name)});
  }
  return files;
}

void make_project(const fs::path &folder, const std::vector<ProjectFile> &files) try {
  const fs::path plain = folder.has_filename() ? folder : folder.parent_path();  // a slash at the end
  if (fs::exists(fs::symlink_status(plain))) refuse(folder);
  Draft draft(plain);
  for (const ProjectFile &file : files) draft.add(file);
  if (!draft.becomes(plain)) refuse(folder);
} catch (const std::system_error &error) {
  throw box::BoxError(base::quoted(folder.string()) + " cannot be made: " + error.code().message() + ".");
}

}  // namespace spbox
