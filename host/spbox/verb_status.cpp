// What of a box is not as usual, in one picture; and all of it put right.
#include <memory>

#include "host/base/told.h"
#include "host/box/contents.h"
#include "host/box/hardware.h"
#include "host/box/inhabitants.h"
#include "host/box/inventory.h"
#include "host/box/logs.h"
#include "host/box/partitions.h"
#include "host/spbox/answer.h"
#include "host/spbox/condition.h"
#include "host/spbox/healing.h"
#include "host/spbox/standard_output.h"
#include "host/spbox/text.h"
#include "host/spbox/unit_text.h"
#include "host/spbox/verbs.h"
#include "host/spbox/watch_eyes.h"

namespace spbox {
namespace {

using TextLines = std::vector<std::string>;
using Table = std::vector<TextLines>;

struct StatusOptions {
  std::filesystem::path box;
  TextLines at_work;  // nobody confined sees other processes
};

// A condition of the box, read once.
struct Picture {
  explicit Picture(const box::Place &place)
      : inventory(place),
        hardware(place),
        server(box::server_of(place)),
        bent(bent_lines(place)),
        damaged(box::damaged_logs(place)) {
    for (box::Unit &unit : inventory.units()) {
      if (!is_usual(unit, hardware)) units.push_back(std::move(unit));
    }
    for (std::string &line : other_lines(inventory, hardware)) bent.push_back(std::move(line));
  }

  box::Inventory inventory;
  box::Hardware hardware;
  box::Server server;
  std::vector<box::Unit> units;
  TextLines bent;
  TextLines damaged;  // files of the box
};

// "Faulted, LED blink, maintenance"
std::string condition_text(const box::Unit &unit, const box::Hardware &hardware) {
  if (!unit.unreadable.empty()) return unreadable(unit.unreadable);
  std::string text(box::state_word(unit));
  const std::string led = hardware.led(unit.place.name), flags = flag_text(hardware, unit.place.name);
  if (led != "off") text += ", LED " + led;
  if (!flags.empty()) text += ", " + flags;
  if (!unit.fru_unreadable.empty()) text += ", identity " + unreadable(unit.fru_unreadable);
  return text;
}

// The first line of a section has its name.
void add_section(Table &table, const std::string &name, const TextLines &lines, const std::string &none) {
  for (const std::string &line : lines) table.push_back({&line == &lines.front() ? name : "", line});
  if (lines.empty()) table.push_back({name, none});
}

std::string condition_text(const Picture &picture, const TextLines &at_work) {
  const bool in_mode = picture.hardware.maintenance_mode();
  Table table{{"Model", std::string(box::model_name(picture.inventory.model()))},
              {"Server", (in_mode ? "in maintenance mode, fans " : "no maintenance mode, fans ") +
                             picture.hardware.fan_speed() + ", " +
                             (picture.server.unreadable.empty()
                                  ? "on service processor unit " + std::to_string(picture.server.service_processor)
                                  : unreadable(picture.server.unreadable))}};
  add_section(table, "At work", at_work, "nobody");
  TextLines units;
  for (const box::Unit &unit : picture.units)
    units.push_back(unit.place.name + ": " + condition_text(unit, picture.hardware));
  add_section(table, "Units", units, "all normal");
  add_section(table, "Bent", picture.bent, "nothing");
  if (!picture.damaged.empty()) add_section(table, "Damaged", picture.damaged, "");
  return aligned(table);
}

Json list_of(const TextLines &lines) {
  Json::List list;
  for (const std::string &line : lines) list.emplace_back(line);
  return list;
}

Json::Object condition_json(const Picture &picture, const TextLines &at_work) {
  Json::List units;
  for (const box::Unit &unit : picture.units) units.emplace_back(json_of(unit, picture.hardware));
  const bool readable = picture.server.unreadable.empty();
  return Json::Object{{"model", box::model_name(picture.inventory.model())},
                      {"maintenance_mode", picture.hardware.maintenance_mode() ? "locked" : "unlocked"},
                      {"fan_speed", picture.hardware.fan_speed()},
                      {"service_processor", readable ? Json(picture.server.service_processor) : Json()},
                      {"at_work", list_of(at_work)},
                      {"units", units},
                      {"bent", list_of(picture.bent)},
                      {"damaged", list_of(picture.damaged)}};
}

int status(const StatusOptions &options) {
  const Picture picture{box::Place(options.box)};
  if (is_for_script()) {
    answer(condition_json(picture, options.at_work));
  } else {
    print(condition_text(picture, options.at_work));
  }
  return 0;
}

struct HealOptions {
  std::filesystem::path box;
  bool somebody_works = false;
};

int heal_box(const HealOptions &options) {
  const box::Place place(options.box);
  box::check_is_any_box(place);
  TextLines lines;
  try {
    heal(place, options.somebody_works, lines);
  } catch (const std::exception &error) {
    for (const std::string &line : lines) print_line(line);
    throw box::BoxError(base::told(error) + (lines.empty() ? "" : " What is printed is right; the rest is as it was."));
  }
  const TextLines damaged = box::damaged_logs(place);
  for (const std::string &sentence : damaged) complain(sentence);
  const int status = damaged.empty() ? 0 : kFailure;
  if (is_for_script()) {
    answer({{"put_right", list_of(lines)}, {"somebody_works", options.somebody_works}});
    return status;
  }
  for (const std::string &line : lines) print_line(line);
  if (lines.empty() && damaged.empty()) print_line("Nothing was to be put right.");
  if (options.somebody_works) {
    print_line("A command is at work: the maintenance mode, flags, LEDs and fans stay as they are.");
  }
  return status;
}

}  // namespace

Verb status_verb() {
  auto options = std::make_shared<StatusOptions>();
  return {.name = "status",
          .line = "Show who is at work, and what is not as usual",
          .works_on_box = true,
          .words = {box_word(options->box)},
          .footer =
              "Units that are normal, dark and not under maintenance are left out. Bent are\n"
              "control programs, the daemon, records and points; `spbox heal` puts them right.\n"
              "A trace or a log to which nothing can be written is named as damaged.\n\n"
              "Example:\n  spbox status box",
          .prepare = [options] { options->at_work = at_work_in(box::Place(options->box)); },
          .act = [options] { return status(*options); }};
}

Verb heal_verb() {
  auto options = std::make_shared<HealOptions>();
  return {.name = "heal",
          .line = "Put all right that is bent, broken, out or under maintenance",
          .works_on_box = true,
          .words = {box_word(options->box)},
          .footer =
              "Records are restored, control programs and the daemon do what they should,\n"
              "points are no longer counted, units are in and normal. Where no command is at\n"
              "work, the maintenance mode, flags, LEDs and fans are as after power-on, too.\n"
              "What a command has changed in the records, such as the domains of a board,\n"
              "stays. A trace or a log that is damaged stays, too: it is named, and the exit\n"
              "status is 1.\n\n"
              "Example:\n  spbox heal box",
          .prepare = [options] { options->somebody_works = !box::inhabitants(box::Place(options->box)).empty(); },
          .act = [options] { return heal_box(*options); },
          .as_step = step_of_verb("heal")};
}

}  // namespace spbox
