// The marker file by which a server knows its model.
#include <memory>

#include "host/box/contents.h"
#include "host/box/model.h"
#include "host/spbox/answer.h"
#include "host/spbox/standard_output.h"
#include "host/spbox/verbs.h"

namespace spbox {
namespace {

constexpr const char *kUnknown = "unknown";

struct ModelOptions {
  std::filesystem::path box;
  std::string model;
};

std::vector<std::string> known_names() {
  std::vector<std::string> names;
  for (const box::Model &row : box::models()) names.emplace_back(row.name);
  names.emplace_back(kUnknown);
  return names;
}

int model(const ModelOptions &options) {
  const box::Place place(options.box);
  box::check_is_any_box(place);
  if (!options.model.empty()) box::set_model(place, box::find_model(options.model));
  const std::string_view found = box::model_name(box::model_in(place));
  const std::string_view now = !options.model.empty() ? options.model : found.empty() ? kUnknown : found;
  if (is_for_script()) {
    answer({{"model", now == kUnknown ? Json() : Json(now)}});
  } else {
    print_line(now);
  }
  return 0;
}

}  // namespace

Verb model_verb() {
  auto options = std::make_shared<ModelOptions>();
  return {.name = "model",
          .line = "Show which model the server takes itself for, or change it",
          .works_on_box = true,
          .words = {box_word(options->box),
                    {.name = "MODEL",
                     .help = "qa, qb1, qb2, qe1, qe2, qe3 or unknown",
                     .to = Choice{&options->model, "model", known_names()}}},
          .footer =
              "A server knows its model by a marker file in /tmp, such as .qe1. The records\n"
              "stay as they are: as those of another model, they make no sense. `unknown`\n"
              "removes the marker.\n\n"
              "Examples:\n"
              "  spbox model box                which one it is\n"
              "  spbox model box unknown        no command learns it\n"
              "  spbox model box qe1            back again",
          .act = [options] { return model(*options); },
          .acts_confined = false,  // files are made and removed, where no link leads out of the box
          .as_step = step_of_verb("model", [options] { return !options->model.empty(); })};
}

}  // namespace spbox
