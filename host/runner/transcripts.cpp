#include "host/runner/transcripts.h"

#include <unistd.h>

#include <cerrno>
#include <exception>
#include <fstream>
#include <string_view>
#include <system_error>

#include "host/base/remove_tree.h"

namespace runner {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kPrefix = "spbox-test.";

// A file in the folder as long as its owner is at work: what they keep in the end is without it.
constexpr const char *kUnfinished = ".unfinished";

void remove_empty(const fs::path &folder) {
  std::error_code ignored;
  for (const auto &entry : fs::directory_iterator(folder, ignored)) {
    if (entry.is_directory(ignored)) remove_empty(entry.path());
  }
  rmdir(folder.c_str());
}

// Of one whose owner is dead. What their owners have kept stays.
void remove_unfinished(const fs::path &folder) {
  try {
    if (fs::exists(folder / kUnfinished)) base::remove_tree(folder);
    rmdir(folder.c_str());  // they may have died before there was anything in it
  } catch (const std::exception &) {
    // What cannot be removed stays.
  }
}

}  // namespace

Transcripts::Transcripts(const fs::path &wanted) : folder_(wanted) {
  if (!wanted.empty()) {
    fs::create_directories(folder_);
    return;
  }
  base::OwnedFolder::for_each_of_the_dead(kPrefix, remove_unfinished);
  folder_ = own_.emplace(kPrefix, "transcripts").path();
  if (!std::ofstream(folder_ / kUnfinished)) {
    rmdir(folder_.c_str());
    throw std::system_error(errno, std::generic_category(), "cannot make " + (folder_ / kUnfinished).string());
  }
}

Transcripts::~Transcripts() {
  if (!own_) return;
  try {
    fs::remove(folder_ / kUnfinished);
    remove_empty(folder_);
  } catch (const std::exception &) {
    // What cannot be removed stays.
  }
}

fs::path Transcripts::place_for(const std::string &name) const {
  fs::path file = folder_;
  for (const fs::path &part : fs::path(name).relative_path()) file /= part == ".." ? "(up)" : part;
  fs::create_directories(file.parent_path());
  return file += ".txt";
}

fs::path Transcripts::kept(const fs::path &file, Verdict verdict) const {
  std::error_code ignored;
  if (own_ && !is_wrong(verdict)) fs::remove(file, ignored);
  return fs::exists(file, ignored) ? file : fs::path();
}

}  // namespace runner
