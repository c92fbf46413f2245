#include <map>
#include <memory>

#include "host/base/listed.h"
#include "host/box/hardware.h"
#include "host/box/inventory.h"
#include "host/box/partitions.h"
#include "host/box/records.h"
#include "host/spbox/answer.h"
#include "host/spbox/standard_output.h"
#include "host/spbox/text.h"
#include "host/spbox/unit_choice.h"
#include "host/spbox/unit_text.h"
#include "host/spbox/verbs.h"

namespace spbox {
namespace {

using Lines = std::vector<std::vector<std::string>>;

struct UnitsOptions {
  std::filesystem::path box;
  UnitChoice choice;
};

// What spbox knows of a box, read once.
struct View {
  explicit View(const box::Place &place)
      : inventory(place),
        hardware(place),
        server(box::server_of(place)),
        xsbs(box::xsbs_of(place, inventory.model())),
        domains(box::domains_of(place, inventory.model())),
        others(other_settings(hardware, inventory)) {}

  box::Inventory inventory;
  box::Hardware hardware;
  box::Server server;
  std::vector<box::Xsb> xsbs;
  std::vector<box::Domain> domains;
  std::map<std::string, std::string> others;
};

std::string maintenance(const box::Hardware &hardware) {
  return hardware.maintenance_mode() ? "locked" : "unlocked";
}

std::string domain_text(std::uint32_t domain) {
  return domain <= box::kLastDomain ? std::to_string(domain) : "SP";
}

Json xsb_json(const box::Xsb &xsb) {
  if (!xsb.unreadable.empty()) return Json::Object{{"name", xsb.name}, {"unreadable", xsb.unreadable}};
  return Json::Object{
      {"name", xsb.name}, {"active", xsb.active}, {"domain", xsb.domain}, {"setup_domain", xsb.setup_domain}};
}

Json domain_json(const box::Domain &domain) {
  if (!domain.unreadable.empty()) return Json::Object{{"number", domain.number}, {"unreadable", domain.unreadable}};
  return Json::Object{{"number", domain.number}, {"word_0", hexadecimal(domain.word_0)}, {"byte_44", domain.byte_44}};
}

Json::Object whole_json(const View &view, const std::vector<box::Unit> &units) {
  Json::List list, xsbs, domains;
  Json::Object others;
  for (const box::Unit &unit : units) list.emplace_back(json_of(unit, view.hardware));
  for (const box::Xsb &xsb : view.xsbs) xsbs.push_back(xsb_json(xsb));
  for (const box::Domain &domain : view.domains) domains.push_back(domain_json(domain));
  for (const auto &[key, value] : view.others) others.push_back({key, value});
  Json::Object whole{{"model", box::model_name(view.inventory.model())},
                     {"maintenance_mode", maintenance(view.hardware)},
                     {"fan_speed", view.hardware.fan_speed()},
                     {"units", list},
                     {"xsbs", xsbs},
                     {"domains", domains},
                     {"other_settings", others}};
  if (view.server.unreadable.empty()) {
    whole.push_back({"system_status", hexadecimal(view.server.status)});
    whole.push_back({"service_processor", view.server.service_processor});
  } else {
    whole.push_back({"unreadable", view.server.unreadable});
  }
  return whole;
}

std::string heading(const View &view) {
  std::string text = "Model " + std::string(box::model_name(view.inventory.model())) + ", maintenance mode " +
                     maintenance(view.hardware) + ", fans " + view.hardware.fan_speed() + "\n";
  if (!view.server.unreadable.empty()) return text + "Server " + unreadable(view.server.unreadable) + "\n";
  return text + "System status " + hexadecimal(view.server.status) + ", on service processor unit " +
         std::to_string(view.server.service_processor) + "\n";
}

std::string unit_table(const std::vector<box::Unit> &units, const box::Hardware &hardware) {
  Lines lines{{"Unit", "State", "LED", "Flag", "FRU name"}};
  std::string carrier;  // the last one listed
  for (const box::Unit &unit : units) {
    if (!unit.place.carried) carrier = unit.place.name;
    const std::string name =
        unit.place.carrier() == carrier && unit.place.carried ? "  " + unit.place.label : unit.place.name;
    if (!unit.unreadable.empty()) {
      lines.push_back({name, unreadable(unit.unreadable)});
      continue;
    }
    lines.push_back({name, std::string(box::state_word(unit)), hardware.led(unit.place.name),
                     flag_text(hardware, unit.place.name),
                     unit.fru_unreadable.empty() ? unit.fru_name : unreadable(unit.fru_unreadable)});
  }
  return aligned(lines);
}

std::string partition_tables(const View &view) {
  Lines xsbs{{"XSB", "Active", "Domain", "Set up for"}};
  for (const box::Xsb &xsb : view.xsbs) {
    if (!xsb.unreadable.empty()) {
      xsbs.push_back({xsb.name, unreadable(xsb.unreadable)});
    } else {
      xsbs.push_back({xsb.name, xsb.active ? "yes" : "no", domain_text(xsb.domain), domain_text(xsb.setup_domain)});
    }
  }
  Lines domains{{"Domain", "Word 0", "Byte 44"}};
  for (const box::Domain &domain : view.domains) {
    const std::string number = std::to_string(domain.number);
    if (!domain.unreadable.empty()) {
      domains.push_back({number, unreadable(domain.unreadable)});
    } else {
      domains.push_back({number, hexadecimal(domain.word_0), std::to_string(domain.byte_44)});
    }
  }
  return (view.xsbs.empty() ? "" : "\n" + aligned(xsbs)) + "\n" + aligned(domains);
}

std::string other_table(const View &view) {
  if (view.others.empty()) return "";
  Lines lines{{"Other setting", "Value"}};
  for (const auto &[key, value] : view.others) lines.push_back({key, value});
  return "\n" + aligned(lines);
}

int units(const UnitsOptions &options) {
  const View view{box::Place(options.box)};
  const std::vector<box::Unit> all = chosen_units(options.choice, view.inventory, view.hardware, view.xsbs);
  if (is_for_script()) {
    answer(whole_json(view, all));
    return 0;
  }
  std::string text = unit_table(all, view.hardware);
  if (options.choice.is_all()) text = heading(view) + "\n" + text + partition_tables(view) + other_table(view);
  print(text);
  return 0;
}

}  // namespace

Verb units_verb() {
  auto options = std::make_shared<UnitsOptions>();
  return {.name = "units",
          .line = "List the units, each with state, LED and maintenance flag",
          .works_on_box = true,
          .words = {box_word(options->box),
                    {.name = "UNIT",
                     .help = "List only these, with what sits on them; or a pattern,\nsuch as '/PSU#4*'",
                     .to = &options->choice.units},
                    {.name = "--kind",
                     .help = "Only of this kind: psu, mem, fan_a",
                     .to = &options->choice.kind,
                     .value = "KIND"},
                    {.name = "--state",
                     .help = base::listed(state_names(), " or ") + ",\nwhich is all that are not as usual",
                     .to = Choice{&options->choice.state, "state", state_names()},
                     .value = "STATE"},
                    {.name = "--domain",
                     .help = "Only on boards of this domain",
                     .to = number(options->choice.domain, 0, box::kLastDomain),
                     .value = "NUMBER"}},
          .footer =
              "Below the units come extended system boards and domains, and then what control\n"
              "programs have set for units that are not in the list, such as the LED of a fan\n"
              "backplane.\n\n"
              "Examples:\n"
              "  spbox units box\n"
              "  spbox units box /CMU#0\n"
              "  spbox units box --state unusual\n"
              "  spbox units box --kind mem --domain 0\n"
              "  spbox units box --json | jq '.units[] | select(.state != \"Normal\")'",
          .act = [options] { return units(*options); }};
}

}  // namespace spbox
