// list_units - prints the units of this server, as the library reads them: a tree of location names, states and FRU names.
//
//   list_units         all units
//   list_units KIND    those of one kind: boards, fans, psus, backplane, service or domains
//
// Each kind has a function that shows how its reader is called and what is in its records. What all of them need, how many
// units the model holds, comes from lmainte_get_model_data: copy that and the kind that you need. The operator panel and the
// PCI slots are in no reader's records.
//
// Exit status: 0 printed, 1 something could not be read or written, 2 there is no such kind.

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "lmainte.h"
#include "lmainte_platform.h"
#include "lmainte_procedure.h"
#include "server.h"

namespace {

enum Outcome { kPrinted = 0, kFailed = 1, kMisused = 2 };

// ---- A line --------------------------------------------------------------------------------------------------------

const char *state_of(int32_t word) {
  const auto status = static_cast<uint32_t>(word);
  if ((status & LMAINTE_STATUS_INSTALLED) == 0) return "Not installed";
  if ((status & LMAINTE_STATUS_FAULTED) != 0) return "Faulted";
  return (status & LMAINTE_STATUS_DEGRADED) != 0 ? "Degraded" : "Normal";
}

bool is_installed(int32_t status) {
  return (static_cast<uint32_t>(status) & LMAINTE_STATUS_INSTALLED) != 0;
}

// The location of a unit, empty where its id has none.
std::string location_of(const uint32_t (&unit_id)[2]) {
  char name[128] = {};
  return api_conv_unit_name_get(unit_id, 0, name, 0, 0) == 0 ? name : "";
}

// A FRU name fills its field without a NUL, or ends at the first one: the record was cleared before it was read.
template <size_t Size>
std::string text_of(const char (&field)[Size]) {
  return {field, strnlen(field, Size)};
}

// Within 80 columns, of which the last 20 are for a FRU name.
void print_line(int depth, const std::string &name, const std::string &what, const std::string &state,
                const std::string &more = "") {
  std::string line(static_cast<size_t>(2 * depth), ' ');
  line += name;
  line.resize(std::max<size_t>(line.size() + 2, 17), ' ');
  line += what;
  line.resize(std::max<size_t>(line.size() + 2, 45), ' ');
  line += state;
  if (!more.empty()) {
    line.resize(std::max<size_t>(line.size() + 2, 60), ' ');
    line += more;
  }
  lmainte_tell("%s", line.c_str());  // the terminal does not obey what is in a name
}

// Prints a unit below another one by the end of its location. A place that this model lacks has neither unit nor location.
template <class Unit>
void print_unit(int depth, const std::string &above, const std::string &what, const Unit &unit,
                const std::string &more) {
  std::string name = location_of(unit.unit_id);
  if (name.empty() && !is_installed(unit.status)) return;
  if (name.empty()) name = "(no location)";
  if (depth > 0 && name.compare(0, above.size() + 1, above + "/") == 0) name.erase(0, above.size() + 1);
  print_line(depth, name, what, state_of(unit.status), more);
}

Outcome not_read(const char *what, const char *reader, int32_t result) {
  std::fflush(stdout);
  std::fprintf(stderr, "list_units: the %s could not be read.\n%s gave %d. The trace names the reason.\n", what, reader,
               result);
  return kFailed;
}

// ---- System boards -------------------------------------------------------------------------------------------------

// While an extended system board is active it belongs to its current domain, otherwise it is set up for one; above 23 there
// is none.
void print_xsb(const XsbData &xsb) {
  const int32_t domain = xsb.active == 1 ? xsb.current_domain : xsb.setup_domain;
  const std::string state = domain <= 23 ? "domain " + std::to_string(domain) : "no domain";
  print_line(1, "XSB " + std::to_string(xsb.number), "extended system board", state, xsb.active == 1 ? "active" : "");
}

// The larger mid-range model has one board, which fills the records of two.
bool is_same_board(const SbData &one, const SbData &other) {
  return std::equal(one.cmu.unit_id, one.cmu.unit_id + 2, other.cmu.unit_id);
}

// The modules that sit on a board, by their locations: the records have them in the order of the operator's lists.
void print_modules(const std::string &above, const SbData *first, const SbData *last) {
  std::vector<std::pair<std::string, const UnitData *>> modules;
  for (const SbData *board = first; board != last; ++board) {
    for (const UnitData &cpum : board->cmu.cpum) modules.emplace_back(location_of(cpum.unit_id), &cpum);
    for (const UnitData &dimm : board->cmu.dimm) modules.emplace_back(location_of(dimm.unit_id), &dimm);
  }
  std::sort(modules.begin(), modules.end());
  for (const auto &[location, module] : modules) {
    const char *what = module->type == LMAINTE_TYPE_CPUM ? "CPU module" : "memory module";
    print_unit(1, above, what, *module, text_of(module->fru_name));
  }
}

// A board that stands in the records from first to last, and its I/O units.
void print_board(const SbData *first, const SbData *last, const std::vector<XsbData> &xsbs) {
  print_unit(0, "", "CPU/memory unit", first->cmu, text_of(first->cmu.fru_name));
  print_modules(location_of(first->cmu.unit_id), first, last);
  for (const XsbData &xsb : xsbs)
    if (xsb.number / 4 == first->cmu.number) print_xsb(xsb);
  for (const SbData *board = first; board != last; ++board)
    print_unit(0, "", "I/O unit", board->iou, text_of(board->iou.fru_name));
}

Outcome list_boards(const Server &server) {
  std::vector<SbData> boards(server.board_count());
  const auto count = static_cast<int32_t>(boards.size());
  int32_t result = lmainte_get_sb_data(-1, count, server.model(), boards.data());
  if (result != LMAINTE_OK) return not_read("system boards", "lmainte_get_sb_data", result);

  std::vector<XsbData> xsbs(server.is_high_end() ? 4 * boards.size() : 0);
  if (!xsbs.empty()) {
    result = lmainte_get_xsb_data(-1, static_cast<int32_t>(xsbs.size()), server.model(), xsbs.data());
    if (result != LMAINTE_OK) return not_read("extended system boards", "lmainte_get_xsb_data", result);
  }
  const SbData *const end = boards.data() + boards.size();
  for (const SbData *board = boards.data(); board != end;) {
    const SbData *const next =
        std::find_if_not(board + 1, end, [&](const SbData &other) { return is_same_board(*board, other); });
    print_board(board, next, xsbs);
    board = next;
  }
  return kPrinted;
}

// ---- Fans and power supplies ---------------------------------------------------------------------------------------

// Units of the smaller models with the same mask are cooled together. The high end has no groups.
std::string cooling_group_of(const Server &server, int32_t type, int32_t number) {
  CoolgrpData group{};
  if (server.is_high_end() || lmainte_get_coolgrp_data(type, number, server.model(), &group) != LMAINTE_OK) return "";
  return ", cooling " + std::to_string(group.coolgrp_mask[1]);
}

// Each tray by its number: in the list that -1 gives, qe1 has an order of its own and the fans of other trays.
Outcome list_fans(const Server &server) {
  const auto count = static_cast<int32_t>(server.count(LMAINTE_SLOT_FAN));
  for (int32_t number = 0; number < count; ++number) {
    FantrayData tray{};
    const int32_t result = lmainte_get_fantray_data(number, 1, server.model(), &tray);
    if (result != LMAINTE_OK) return not_read("fan trays", "lmainte_get_fantray_data", result);
    const std::string group = cooling_group_of(server, LMAINTE_TYPE_FANTRAY, number);
    print_unit(0, "", "fan tray" + group, tray, text_of(tray.fru_name));
    for (int32_t fan = 0; fan < tray.fan_count; ++fan)
      print_line(1, "FAN#" + std::to_string(fan), "fan", state_of(tray.fan[fan].status));
  }
  return kPrinted;
}

Outcome list_psus(const Server &server) {
  std::vector<PsuData> psus(server.count(LMAINTE_SLOT_PSU));
  const auto count = static_cast<int32_t>(psus.size());
  const int32_t result = lmainte_get_psu_data(-1, count, server.model(), psus.data());
  if (result != LMAINTE_OK) return not_read("power supplies", "lmainte_get_psu_data", result);
  for (const PsuData &psu : psus) {
    const std::string group = cooling_group_of(server, LMAINTE_TYPE_PSU, psu.number);
    print_unit(0, "", "power supply" + group, psu, text_of(psu.fru_name));
  }
  return kPrinted;
}

// ---- The rest ------------------------------------------------------------------------------------------------------

Outcome list_backplane(const Server &server) {
  Bp32Data units{};
  const int32_t result = lmainte_get_bp32_data(0, 1, server.model(), &units);
  if (result != LMAINTE_OK) return not_read("backplane", "lmainte_get_bp32_data", result);
  print_unit(0, "", "backplane", units.bp, text_of(units.bp.fru_name));
  for (const BpUnitData &ddc : units.ddc) print_unit(0, "", "DDC unit", ddc, text_of(ddc.fru_name));
  return kPrinted;
}

Outcome list_service(const Server &server) {
  std::array<EmgbUnitData, 4> units{};
  const int32_t result = lmainte_get_emgb_data_all(server.model(), units.data());
  if (result != LMAINTE_OK) return not_read("service processor units", "lmainte_get_emgb_data_all", result);
  for (const EmgbUnitData &unit : units) {
    if (unit.type == 0) break;  // the model has fewer than four
    const bool is_own = unit.type == LMAINTE_TYPE_EMGBU && unit.local_number == static_cast<uint32_t>(unit.number);
    print_unit(0, "", is_own ? "own service processor unit" : "service processor unit", unit, text_of(unit.name));
  }
  return kPrinted;
}

// What a domain's record says is passed through as it is.
Outcome list_domains(const Server &server) {
  std::vector<DomainData> domains(server.is_high_end() ? 24 : 1);
  const int32_t result =
      lmainte_get_domain_data(-1, static_cast<int32_t>(domains.size()), server.model(), domains.data());
  if (result != LMAINTE_OK) return not_read("domains", "lmainte_get_domain_data", result);
  for (const DomainData &domain : domains) {
    char word[16];
    std::snprintf(word, sizeof word, "0x%08X", static_cast<unsigned>(domain.dom_info_0));
    print_line(0, "Domain " + std::to_string(domain.number), "first word of its record", word);
  }
  return kPrinted;
}

// ---- The command ---------------------------------------------------------------------------------------------------

bool on_any_model(const Server &) {
  return true;
}
bool on_qe1(const Server &server) {
  return server.data().model == LMAINTE_MODEL_QE1;
}

struct Kind {
  std::string_view word;
  const char *title;
  bool (*exists)(const Server &server);
  Outcome (*list)(const Server &server);
};

constexpr Kind kKinds[] = {
    {"boards", "System boards", on_any_model, list_boards},       {"fans", "Fans", on_any_model, list_fans},
    {"psus", "Power supplies", on_any_model, list_psus},          {"backplane", "Backplane", on_qe1, list_backplane},
    {"service", "Service processor", on_any_model, list_service}, {"domains", "Domains", on_any_model, list_domains},
};

Outcome misused() {
  std::fputs("usage: list_units [KIND], where KIND is one of:", stderr);
  for (const Kind &kind : kKinds) std::fprintf(stderr, " %.*s", static_cast<int>(kind.word.size()), kind.word.data());
  std::fputs("\n", stderr);
  return kMisused;
}

Outcome list_all(const Server &server) {
  SystemStatus system{};
  const int32_t result = lmainte_get_system_status(&system);
  if (result != LMAINTE_OK) return not_read("state of the system", "lmainte_get_system_status", result);
  const bool is_marked = (system.system_status & 0x8000) != 0;
  std::printf("Model %s%s\n", server.name(), is_marked ? ", units are marked for replacement" : "");
  Outcome outcome = kPrinted;
  for (const Kind &kind : kKinds) {
    if (!kind.exists(server)) continue;
    std::printf("\n%s\n", kind.title);
    if (kind.list(server) != kPrinted) outcome = kFailed;  // the other kinds all the same
  }
  return outcome;
}

Outcome list_one(const Server &server, const Kind &kind) {
  if (kind.exists(server)) return kind.list(server);
  std::printf("Model %s has none.\n", server.name());
  return kPrinted;
}

// What is printed may not arrive: the disk is full, or nobody reads.
Outcome arrived(Outcome outcome) {
  if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0) return outcome;
  std::fputs("list_units: the list could not be written.\n", stderr);
  return kFailed;
}

}  // namespace

int main(int argc, char **argv) {
  const std::string_view word = argc == 2 ? argv[1] : "";
  const Kind *const end = std::end(kKinds);
  const Kind *const kind = std::find_if(kKinds, end, [&](const Kind &row) { return row.word == word; });
  if (argc > 2 || (argc == 2 && kind == end)) return misused();

  Server server;
  const int32_t result = server.read();
  if (result != LMAINTE_OK) return not_read("server's model", "lmainte_get_model_data", result);
  return arrived(argc == 2 ? list_one(server, *kind) : list_all(server));
}
