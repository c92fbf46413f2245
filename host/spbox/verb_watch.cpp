// The server of a box as a picture on the terminal, or printed once.
#include <langinfo.h>

#include <clocale>
#include <memory>

#include "host/box/contents.h"
#include "host/spbox/standard_output.h"
#include "host/spbox/verbs.h"
#include "host/spbox/watch_eyes.h"
#include "host/watch/picture.h"

namespace spbox {
namespace {

struct WatchOptions {
  std::filesystem::path box;
  bool once = false;
};

watch::Letters letters_of_locale() {
  setlocale(LC_CTYPE, "");  // NOLINT(concurrency-mt-unsafe): one thread
  return std::string_view(nl_langinfo(CODESET)) == "UTF-8" ? watch::Letters::kUnicode : watch::Letters::kAscii;
}

// As many rows as it takes: nobody looks at it through a window.
int print_picture(const box::Place &place, watch::Letters letters) {
  constexpr std::size_t kLines = 8;
  constexpr int kMostRows = 200;
  watch::Scene scene;
  look_at(place, {}, kLines, scene);
  if (!scene.trouble.empty()) throw box::BoxError(scene.trouble);
  scene.at_work = at_work_in(place);
  watch::View view;
  view.box = place.root().string();
  std::vector<std::string> lines = watch::draw(scene, view, kMostRows, watch::kLeastColumns, letters).canvas.lines();
  while (!lines.empty() && lines.back().empty()) lines.pop_back();
  for (const std::string &line : lines) print_line(line);
  return 0;
}

int watch_box(const WatchOptions &options) {
  const box::Place place(options.box);
  box::check_is_box(place);
  return print_picture(place, letters_of_locale());
}

}  // namespace

Verb watch_verb() {
  auto options = std::make_shared<WatchOptions>();
  return {
      .name = "watch",
      .line = "Show the server as a picture",
      .works_on_box = true,
      .words = {box_word(options->box), {.name = "--once", .help = "Print one picture, and end", .to = &options->once}},
      .footer = "Example:\n  spbox watch box --once",
      .check =
          [options] {
            if (!options->once) throw UsageError("--once is missing.");
          },
      .act = [options] { return watch_box(*options); },
      .acts_confined = false};
}

}  // namespace spbox
