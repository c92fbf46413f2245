#include <CLI/CLI.hpp>
#include <cstdio>
#include <memory>

#include "host/box/inventory.h"
#include "host/spbox/verbs.h"

namespace spbox {
namespace {

namespace fs = std::filesystem;

struct Options {
  fs::path box;
  std::string model;
  bool force = false;
};

// A folder is replaced only when it is a box, and nothing in it is removed but what makes it one.
void make_room(const box::Place &place, bool force) {
  const fs::path &folder = place.root();
  if (!fs::exists(folder)) return;
  if (!fs::is_directory(folder)) {
    throw box::InventoryError(folder.string() + " is a file. Give a folder that does not exist yet.");
  }
  if (fs::is_empty(folder)) return;
  if (!box::is_box(place)) {
    throw box::InventoryError(folder.string() + " is a folder with other things in it. Give one that does not exist " +
                              "yet, or an empty one.");
  }
  if (!force) {
    throw box::InventoryError(folder.string() +
                              " is a box already. --force makes it anew, and all that it holds is lost.");
  }
  box::remove_box(place);
}

int create(const Options &options) {
  const box::Place place(options.box);
  make_room(place, options.force);
  const bool existed = fs::exists(place.root());
  try {
    box::create_box(place, box::model_code(options.model));
  } catch (const std::exception &) {
    std::error_code ignored;  // what was wrong is said already
    if (existed) {
      fs::remove_all(place.root() / "mgb", ignored);
      fs::remove_all(place.tmp(), ignored);
    } else {
      fs::remove_all(place.root(), ignored);
    }
    throw;
  }
  const box::Inventory inventory(place);
  std::printf("Made %s: model %s, %zu units, all healthy. `spbox units %s` lists them.\n", place.root().c_str(),
              options.model.c_str(), inventory.places().size(), place.root().c_str());
  return 0;
}

}  // namespace

void add_create(CLI::App &app, Action &action) {
  CLI::App *verb = app.add_subcommand("create", "Make a box: a full, healthy server of a model");
  auto options = std::make_shared<Options>();
  verb->add_option("DIR", options->box, "Folder of the box")->required();
  verb->add_option("--model", options->model, "qa (entry), qb1, qb2 (mid-range), qe1, qe2 or qe3 (high-end)")
      ->required()
      ->check(CLI::IsMember(std::vector<std::string>(box::kModelNames.begin(), box::kModelNames.end())));
  verb->add_flag("--force", options->force, "Make it anew where there is a box already");
  verb->footer("Example:\n  spbox create box --model qe1");
  verb->callback([options, &action] { action = [options] { return create(*options); }; });
}

}  // namespace spbox
