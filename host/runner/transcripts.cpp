#include "host/runner/transcripts.h"

#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <system_error>

#include "host/base/temporary_folder.h"

namespace runner {
namespace {

namespace fs = std::filesystem;

void remove_empty(const fs::path &folder) {
  std::error_code ignored;
  for (const auto &entry : fs::directory_iterator(folder, ignored)) {
    if (entry.is_directory(ignored)) remove_empty(entry.path());
  }
  rmdir(folder.c_str());
}

}  // namespace

Transcripts::Transcripts(const fs::path &wanted) : folder_(wanted), keeps_all_(!wanted.empty()) {
  if (keeps_all_) {
    fs::create_directories(folder_);
    return;
  }
  auto pattern = (base::temporary_folder() / "spbox-test.XXXXXX").string();
  if (mkdtemp(pattern.data()) == nullptr) {
    throw std::system_error(errno, std::generic_category(), "cannot make a folder for transcripts: " + pattern);
  }
  folder_ = pattern;
}

Transcripts::~Transcripts() {
  try {
    if (!keeps_all_) remove_empty(folder_);
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
  if (!keeps_all_ && !is_wrong(verdict)) fs::remove(file, ignored);
  return fs::exists(file, ignored) ? file : fs::path();
}

}  // namespace runner
