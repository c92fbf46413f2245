#include "host/spbox/picture_lines.h"

#include <langinfo.h>

#include <clocale>
#include <string_view>

namespace spbox {

watch::Letters letters_of_locale() {
  setlocale(LC_CTYPE, "");  // NOLINT(concurrency-mt-unsafe): one thread
  // NOLINTNEXTLINE(concurrency-mt-unsafe): as above
  return std::string_view(nl_langinfo(CODESET)) == "UTF-8" ? watch::Letters::kUnicode : watch::Letters::kAscii;
}

std::vector<std::string> picture_lines(const watch::Scene &scene, const std::string &title) {
  constexpr int kMostRows = 200;
  watch::View view;
  view.box = title;
  std::vector<std::string> lines =
      watch::draw(scene, view, kMostRows, watch::kLeastColumns, letters_of_locale()).canvas.lines();
  while (!lines.empty() && lines.back().empty()) lines.pop_back();
  return lines;
}

}  // namespace spbox
