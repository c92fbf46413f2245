#include "host/runner/search.h"

#include <algorithm>
#include <set>

#include "host/script/script.h"

namespace runner {
namespace {

namespace fs = std::filesystem;

bool is_hidden(const fs::path &path) {
  return path.filename().string().starts_with('.');
}

Script script_at(const fs::path &path, bool was_named) {
  const auto file = path.lexically_normal();
  return {file, file.string(), was_named};
}

void add_folder(const fs::path &folder, std::vector<Script> &scripts) {
  std::error_code error;
  fs::recursive_directory_iterator entry(folder, error);
  for (fs::path last = folder; entry != fs::recursive_directory_iterator() || error; entry.increment(error)) {
    if (error) throw script::Error(last.string() + " cannot be searched for plays: " + error.message());
    last = entry->path();
    const fs::path &path = entry->path();
    std::error_code is_gone;
    if (is_hidden(path)) {
      if (entry->is_directory(is_gone)) entry.disable_recursion_pending();
    } else if (path.extension() == ".play" && entry->is_regular_file(is_gone)) {
      scripts.push_back(script_at(path, false));
    }
  }
}

}  // namespace

std::vector<Script> find_scripts(const std::vector<std::string> &paths) {
  std::vector<Script> scripts, found;
  for (const fs::path path : paths) {
    if (path.empty()) throw script::Error("a PLAY is empty. Is a variable not set? The current folder is a dot.");
    if (!fs::exists(path)) throw script::Error(path.string() + ": there is no such file");
    if (fs::is_directory(path))
      add_folder(path, scripts);
    else
      scripts.push_back(script_at(path, true));
  }
  // One that was named itself is played, whatever it is in a folder.
  std::ranges::stable_sort(scripts, {}, [](const Script &script) { return !script.was_named; });
  std::set<fs::path> known;
  for (Script &script : scripts) {
    if (known.insert(fs::canonical(script.file)).second) found.push_back(std::move(script));
  }
  std::ranges::sort(found, {}, &Script::name);
  return found;
}

}  // namespace runner
