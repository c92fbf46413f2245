// What a technician does to units, and what happens to them.
#include <memory>

#include "host/box/inventory.h"
#include "host/spbox/answer.h"
#include "host/spbox/text.h"
#include "host/spbox/verbs.h"
#include "host/technician/changes.h"

namespace spbox {
namespace {

struct ChangesOptions {
  std::filesystem::path box;
  std::vector<std::string> units;
};

int change(const ChangesOptions &options, box::Change change) {
  const box::Inventory inventory(box::Place{options.box});
  std::vector<std::vector<std::string>> lines;
  Json::List units;
  for (const box::Unit &unit : inventory.change(change, options.units)) {
    lines.push_back({unit.place.name, std::string(box::state_word(unit))});
    units.emplace_back(Json::Object{{"name", unit.place.name}, {"state", box::state_word(unit)}});
  }
  show({{"units", units}}, aligned(lines));
  return 0;
}

}  // namespace

std::vector<Verb> change_verbs() {
  std::vector<Verb> verbs;
  for (const technician::ChangeRow &row : technician::kChanges) {
    auto options = std::make_shared<ChangesOptions>();
    verbs.push_back({.name = std::string(row.verb),
                     .line = std::string(row.help),
                     .works_on_box = true,
                     .words = {box_word(options->box),
                               {.name = "UNIT",
                                .help = "Their locations, such as /PSU#3 or /CMU#0/MEM#03A",
                                .to = &options->units,
                                .need = Need::kRequired}},
                     .footer = "If one unit cannot be changed, none is.\n\nExample:\n  spbox " + std::string(row.verb) +
                               " box /PSU#3 /FAN_A#0",
                     .act = [options, &row] { return change(*options, row.change); },
                     .as_step = step_of_verb(std::string(row.verb))});
  }
  return verbs;
}

}  // namespace spbox
