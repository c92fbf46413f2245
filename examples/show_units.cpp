// show_units - shows the units of this server: all of a kind as a numbered list, or one of them as a status table.
//
//   show_units KIND      the list
//   show_units KIND N    the table of the unit that has number N on the list
//
// A kind is a row of the table below: the reader that fills its records, the list and the status table that show them,
// and the caller's own lines between which they stand. The functions of the one row that you need make a command.
//
// Exit status: 0 shown, 1 something failed, 2 this server has no such unit, or the words are wrong.

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <vector>

#include "lmainte.h"
#include "lmainte_procedure.h"
#include "server.h"

namespace {

enum Outcome { kShown = 0, kFailed = 1, kNotHere = 2 };

// ---- What the operator is told -------------------------------------------------------------------------------------

Outcome failed(const char *what, int32_t result, const char *way_out) {
  std::fprintf(stderr, "show_units: %s (result %d).\n%s\n", what, result, way_out);
  return kFailed;
}

Outcome unreadable(int32_t result) {
  return failed("the units could not be read", result,
                "Another command may hold the database: try again in a minute.\nThe trace names the reason.");
}

Outcome shown(int32_t result) {
  lmainte_session_shown(result);
  if (result == LMAINTE_OK) return kShown;
  return failed("the units could not be shown", result,
                "Check that /bin/busybox is there and that /tmp has room.\nThe trace names the reason.");
}

uintptr_t as_word(const char *text) {
  return reinterpret_cast<uintptr_t>(text);
}

// ---- The units of the server ---------------------------------------------------------------------------------------

uint32_t fan_trays(const Server &server) {
  return server.count(LMAINTE_SLOT_FAN);
}

uint32_t power_supplies(const Server &server) {
  return server.count(LMAINTE_SLOT_PSU);
}

uint32_t boards(const Server &server) {
  return server.board_count();
}

// Only qe1 has a backplane with DDC units of its own.
uint32_t ddc_units(const Server &server) {
  return server.data().model == LMAINTE_MODEL_QE1 ? 2 : 0;
}

// Reads all units in the order of their list: a unit's number there is its place among the records, counted from 1.
template <typename Record, auto Read>
int32_t read_all(const Server &server, uint32_t count, std::vector<Record> &records) {
  records.assign(count, Record{});
  return Read(-1, static_cast<int32_t>(count), server.model(), records.data());
}

// ---- Lists and tables, by what the library asks for them -----------------------------------------------------------

template <typename Record, auto Read, auto Show>
Outcome list_units(const Server &server, uint32_t count, const ListLine *lines) {
  std::vector<Record> records;
  const int32_t result = read_all<Record, Read>(server, count, records);
  return result != LMAINTE_OK ? unreadable(result) : shown(Show(0, count, records.data(), lines));
}

template <typename Record, auto Read, auto Show>
Outcome show_unit(const Server &server, uint32_t count, uint32_t number, const ListLine *lines) {
  std::vector<Record> records;
  const int32_t result = read_all<Record, Read>(server, count, records);
  return result != LMAINTE_OK ? unreadable(result) : shown(Show(0, &records[number - 1], lines));
}

// The domains of a board are those of its four extended system boards.
template <uint32_t Parts>
Outcome list_boards(const Server &server, uint32_t count, const ListLine *lines) {
  std::vector<SbData> records;
  std::vector<XsbData> xsbs;
  int32_t result = read_all<SbData, lmainte_get_sb_data>(server, count, records);
  if (result == LMAINTE_OK) result = read_all<XsbData, lmainte_get_xsb_data>(server, count * 4, xsbs);
  if (result != LMAINTE_OK) return unreadable(result);
  return shown(lmainte_show_cmu_iou_list(0, Parts, count, records.data(), xsbs.data(), lines));
}

// The database holds nothing of I/O expansion units: a command that knows of one adds it here.
Outcome list_io_units(const Server &server, uint32_t count, const ListLine *lines) {
  std::vector<SbData> records;
  const IoxListData none{};
  const int32_t result = read_all<SbData, lmainte_get_sb_data>(server, count, records);
  return result != LMAINTE_OK ? unreadable(result)
                              : shown(lmainte_show_iounit_list(0, count, 0, records.data(), &none, lines));
}

template <uint32_t Parts>
Outcome show_board(const Server &server, uint32_t /*count*/, uint32_t number, const ListLine *lines) {
  SbData board{};
  const int32_t result = lmainte_get_sb_data(static_cast<int32_t>(number) - 1, 1, server.model(), &board);
  return result != LMAINTE_OK ? unreadable(result) : shown(lmainte_show_sb_status(0, Parts, &board, lines));
}

// The PCI slots of an I/O unit stand behind it in its record; no reader of the library copies them.
int32_t read_slots(const Server &server, IouData &iou) {
  constexpr size_t kSlotsAt = 48;
  void *record = nullptr;
  if (lmainte_scdb_open(LMAINTE_DB_CURRENT) != 0) return LMAINTE_FAILED;
  const auto number = static_cast<uint32_t>(iou.number);
  uint32_t result = lmainte_scdb_lget(LMAINTE_DB_CURRENT, server.data().model, LMAINTE_TYPE_IOU, number, &record);
  if (result == LMAINTE_OK) std::memcpy(iou.reserved, static_cast<char *>(record) + kSlotsAt, sizeof iou.reserved);
  std::free(record);
  if (lmainte_scdb_close(LMAINTE_DB_CURRENT) != 0) result = LMAINTE_FAILED;
  return static_cast<int32_t>(result);
}

Outcome show_slots(const Server &server, uint32_t /*count*/, uint32_t number, const ListLine *lines) {
  constexpr uint32_t kSlots = 8;
  SbData board{};
  int32_t result = lmainte_get_sb_data(static_cast<int32_t>(number) - 1, 1, server.model(), &board);
  if (result == LMAINTE_OK) result = read_slots(server, board.iou);
  return result != LMAINTE_OK ? unreadable(result) : shown(lmainte_show_ioupci_list(0, kSlots, &board, lines));
}

// ---- The kinds -----------------------------------------------------------------------------------------------------

constexpr char kStateColumns[] = "Unit          State\n";
constexpr char kUnitColumns[] = "No. Unit            State\n";
constexpr char kDomainColumns[] = "No. Unit              0     1     2     3  Power State\n";
constexpr char kSlotColumns[] = "No. Slot                 Number    Power\n";
constexpr char kWithoutMarks[] = "SP: in no domain.\n";
constexpr char kWithMarks[] = "SP: in no domain.  *: a CPU module or a memory module is faulted or degraded.\n";

struct Kind {
  std::string_view name;  // on the command line
  const char *units;
  const char *help;
  const char *legend;  // of a list that has a column for each domain, else null
  uint32_t (*count)(const Server &);
  Outcome (*list)(const Server &, uint32_t count, const ListLine *lines);  // null: of one unit only
  Outcome (*show)(const Server &, uint32_t count, uint32_t number, const ListLine *lines);
};

constexpr Kind kKinds[] = {
    {"cmu", "CPU/memory units", "CPU/memory units with their domains; N: with its modules", kWithMarks, boards,
     list_boards<LMAINTE_BOARD_CMU>, show_board<LMAINTE_BOARD_CMU>},
    {"iou", "I/O units", "I/O units with their domains", kWithoutMarks, boards, list_boards<LMAINTE_BOARD_IOU>,
     show_board<LMAINTE_BOARD_IOU>},
    {"cmu-iou", "system boards", "both together", kWithMarks, boards, list_boards<LMAINTE_BOARD_BOTH>,
     show_board<LMAINTE_BOARD_BOTH>},
    {"iounit", "I/O units", "I/O units, and I/O expansion units", nullptr, boards, list_io_units,
     show_board<LMAINTE_BOARD_IOU>},
    {"pci", "I/O units", "N: the PCI slots of an I/O unit", nullptr, boards, nullptr, show_slots},
    {"fantray", "fan trays", "fan trays", nullptr, fan_trays,
     list_units<FantrayData, lmainte_get_fantray_data, lmainte_show_fantray_list>,
     show_unit<FantrayData, lmainte_get_fantray_data, lmainte_show_fantray_status>},
    {"psu", "power supplies", "power supplies", nullptr, power_supplies,
     list_units<PsuData, lmainte_get_psu_data, lmainte_show_psu_list>,
     show_unit<PsuData, lmainte_get_psu_data, lmainte_show_psu_status>},
    {"ddca", "DDC units", "DDC units of the backplane", nullptr, ddc_units,
     list_units<BpUnitData, lmainte_get_ddca_data, lmainte_show_ddca_list>,
     show_unit<BpUnitData, lmainte_get_ddca_data, lmainte_show_ddca_status>},
};

Outcome show_list(const Kind &kind, const Server &server) {
  const uint32_t count = kind.count(server);
  const bool by_domain = kind.legend != nullptr;
  const ListLine lines[] = {
      {LMAINTE_LINE_HEAD, "Model %s: %s\n\n", 0, {as_word(server.name()), as_word(kind.units)}},
      {LMAINTE_LINE_HEAD, "%s", 0, {as_word(by_domain ? "                          Domain of XSB\n" : "")}},
      {LMAINTE_LINE_HEAD, by_domain ? kDomainColumns : kUnitColumns, 0, {}},
      {LMAINTE_LINE_FOOT, "\n%u in all.\n", 0, {count}},
      {LMAINTE_LINE_FOOT, "%s", 0, {as_word(by_domain ? kind.legend : "")}},
      {LMAINTE_LINE_END, nullptr, 0, {}}};
  return kind.list(server, count, lines);
}

Outcome show_one(const Kind &kind, const Server &server, uint32_t number) {
  const ListLine lines[] = {{LMAINTE_LINE_HEAD,
                             "Model %s: number %u of the %s\n\n",
                             0,
                             {as_word(server.name()), number, as_word(kind.units)}},
                            {LMAINTE_LINE_HEAD, kind.list != nullptr ? kStateColumns : kSlotColumns, 0, {}},
                            {LMAINTE_LINE_END, nullptr, 0, {}}};
  return kind.show(server, kind.count(server), number, lines);
}

// ---- The command ---------------------------------------------------------------------------------------------------

struct Request {
  const Kind *kind = nullptr;
  bool is_list = true;
  uint32_t number = 0;
};

bool understand(int argc, char **argv, Request &request) {
  if (argc < 2 || argc > 3) return false;
  const auto *kind =
      std::find_if(std::begin(kKinds), std::end(kKinds), [&](const Kind &k) { return k.name == argv[1]; });
  if (kind == std::end(kKinds)) return false;
  request.kind = kind;
  if (argc == 2) return true;
  request.is_list = false;
  const std::string_view text = argv[2];
  const auto read = std::from_chars(text.data(), text.data() + text.size(), request.number);
  return read.ec == std::errc{} && read.ptr == text.data() + text.size();
}

Outcome usage() {
  std::fputs(
      "usage: show_units KIND [N]\nLists the units of a kind, or shows the one that has number N on the list.\n\n",
      stderr);
  for (const Kind &kind : kKinds) std::fprintf(stderr, "  %-8s %s\n", kind.name.data(), kind.help);
  return kNotHere;
}

// Whether this server has what is asked for; says so where it has not.
bool is_there(const Request &request, const Server &server) {
  const Kind &kind = *request.kind;
  const uint32_t count = kind.count(server);
  if (count == 0) {
    std::fprintf(stderr, "show_units: model %s has no %s.\n", server.name(), kind.units);
  } else if (request.is_list && kind.list == nullptr) {
    std::fprintf(stderr, "show_units: name one of the %s, as in \"show_units %s 1\".\n", kind.units, kind.name.data());
  } else if (request.is_list && kind.legend != nullptr && !server.is_high_end()) {
    std::fprintf(stderr,
                 "show_units: model %s has no domains by which its %s are listed.\n\"show_units %s 1\" shows one.\n",
                 server.name(), kind.units, kind.name.data());
  } else if (!request.is_list && (request.number < 1 || request.number > count)) {
    std::fprintf(stderr, "show_units: no number %u among the %s, only 1 to %u.\n", request.number, kind.units, count);
  } else {
    return true;
  }
  return false;
}

Outcome show(const Request &request) {
  Server server;
  const int32_t result = server.read();
  if (result != LMAINTE_OK) {
    return failed("the server's model could not be read", result,
                  "Start show_units on a service processor; the trace names the reason.");
  }
  if (!is_there(request, server)) return kNotHere;
  return request.is_list ? show_list(*request.kind, server) : show_one(*request.kind, server, request.number);
}

}  // namespace

int main(int argc, char **argv) {
  Request request;
  if (!understand(argc, argv, request)) return usage();
  lmainte_session_begin();  // Where there is no terminal a list runs through in one go.
  const Outcome outcome = show(request);
  if (lmainte_session_signal() != 0) std::puts("Interrupted.");
  lmainte_session_end();
  return outcome;
}
