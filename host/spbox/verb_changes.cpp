// What a technician does to units, and what happens to them.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <memory>

#include "host/box/inventory.h"
#include "host/spbox/changes.h"
#include "host/spbox/text.h"
#include "host/spbox/verbs.h"

namespace spbox {
namespace {

struct Options {
  std::filesystem::path box;
  std::vector<std::string> units;
};

int change(const Options &options, box::Change change) {
  const box::Inventory inventory(box::Place{options.box});
  inventory.change(change, options.units);
  std::vector<std::vector<std::string>> lines;
  for (const box::Unit &unit : inventory.units(options.units)) {
    lines.push_back({unit.place.name, std::string(box::state_word(unit))});
  }
  std::fputs(aligned(lines).c_str(), stdout);
  return 0;
}

}  // namespace

void add_changes(CLI::App &app, Action &action) {
  for (const ChangeRow &row : kChanges) {
    CLI::App *verb = app.add_subcommand(std::string(row.verb), std::string(row.help));
    auto options = std::make_shared<Options>();
    add_box(verb, options->box);
    verb->add_option("UNIT", options->units, "Their locations, such as /PSU#3 or /CMU#0/MEM#03A")->required();
    verb->footer("Where one unit cannot be changed, none is.\n\nExample:\n  spbox " + std::string(row.verb) +
                 " box /PSU#3 /FAN_A#0");
    verb->callback([options, &row, &action] { action = [options, &row] { return change(*options, row.change); }; });
  }
}

}  // namespace spbox
