#include "host/spbox/box_at_hand.h"

#include <cstdlib>
#include <system_error>

#include "host/box/contents.h"

namespace spbox {

namespace fs = std::filesystem;

std::optional<fs::path> box_at_hand() {
  if (const char *named = std::getenv("SPBOX"); named != nullptr && *named != '\0') return fs::path(named);
  std::error_code gone;
  fs::path folder = fs::current_path(gone);
  fs::path way = ".";
  for (; !gone && !box::is_box(box::Place(folder)); folder = folder.parent_path()) {
    if (folder == folder.root_path()) return std::nullopt;
    way = way == "." ? fs::path("..") : way / "..";
  }
  if (gone) return std::nullopt;
  return way;
}

}  // namespace spbox
