#include <memory>

#include "host/box/advice.h"
#include "host/box/inventory_kinds.h"
#include "host/spbox/new_box.h"
#include "host/spbox/standard_output.h"
#include "host/spbox/verbs.h"

namespace spbox {
namespace {

struct CreateOptions {
  std::filesystem::path box;
  std::string model;
  bool force = false;
};

std::vector<std::string> model_names() {
  std::vector<std::string> names;
  for (const box::Model &model : box::models()) names.emplace_back(model.name);
  return names;
}

int create(const CreateOptions &options) {
  const box::Place place(options.box);
  const std::uint32_t model = box::find_model(options.model)->code;
  make_box(place, box::new_server(model), options.force);
  print_line("Made " + place.root().string() + ": model " + options.model + ", " +
             std::to_string(box::places_of(model).size()) + " units, all healthy. " +
             box::advice({"units", place.root()}) + " lists them.");
  return 0;
}

}  // namespace

Verb create_verb() {
  auto options = std::make_shared<CreateOptions>();
  return {.name = "create",
          .line = "Make a box: a full, healthy server of a model",
          .words = {box_word(options->box),
                    {.name = "--model",
                     .help = "qa (entry), qb1, qb2 (mid-range), qe1, qe2 or qe3 (high-end)",
                     .to = Choice{&options->model, "model", model_names()},
                     .need = Need::kRequired,
                     .value = "MODEL"},
                    force_option(options->force)},
          .footer = "Example:\n  spbox create box --model qe1",
          .act = [options] { return create(*options); }};
}

}  // namespace spbox
