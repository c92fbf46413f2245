// The kinds of unit that a procedure handles on a server: how many there are, their records, their list and
// their status table. A kind is a row of the table at the end; copy the rows that you need.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <set>
#include <string>
#include <vector>

#include "../graceful.h"
#include "../server.h"
#include "lmainte.h"
#include "lmainte_platform.h"
#include "telling.h"

namespace procedure {

// Room for the record of any unit; a board's is the largest.
struct AnyRecord {
  alignas(SbData) std::byte bytes[sizeof(SbData)];

  template <class Record>
  const Record &as() const {
    static_assert(sizeof(Record) <= sizeof bytes);
    return *reinterpret_cast<const Record *>(bytes);
  }
};

// With this every kind's record begins.
struct Head {
  int32_t type, number;
  uint32_t unit_id[2], status;
};

template <class Record>
inline constexpr bool kBeginsWithHead = offsetof(Record, type) == offsetof(Head, type) &&
                                        offsetof(Record, number) == offsetof(Head, number) &&
                                        offsetof(Record, unit_id) == offsetof(Head, unit_id) &&
                                        offsetof(Record, status) == offsetof(Head, status);
static_assert(kBeginsWithHead<CmuData> && kBeginsWithHead<IouData> && kBeginsWithHead<FantrayData> &&
              kBeginsWithHead<PsuData> && kBeginsWithHead<BpUnitData>);

struct Kind {
  const char *word;  // on the command line
  const char *one;
  const char *many;
  int32_t type;
  int32_t event_kind;                 // in the log
  uint32_t (*count)(const Server &);  // how many the model holds
  size_t record_size;                 // of what lmainte_get_fru_data fills in for a unit
  size_t head;                        // where the unit stands in it: a board's record is of two units
  const char *columns;                // over the list
  const char *legend[2];              // under it: what its columns and signs mean; null: the number of units
  int32_t (*show_list)(const Server &, uint32_t count, const void *records, const ListLine *);
  int32_t (*show_status)(const AnyRecord &, const ListLine *);

  bool is_board() const { return type == LMAINTE_TYPE_CMU || type == LMAINTE_TYPE_IOU; }
};

// A unit as the operations and the log take it, and its status word.
struct Unit {
  UnitRecord record{};
  uint32_t status = 0;

  const char *name() const { return record.name; }
  bool is_installed() const { return (status & LMAINTE_STATUS_INSTALLED) != 0; }
  bool is_faulted() const { return (status & LMAINTE_STATUS_FAULTED) != 0; }
  bool is_healthy() const {
    return is_installed() && (status & (LMAINTE_STATUS_FAULTED | LMAINTE_STATUS_DEGRADED)) == 0;
  }
};

inline Head head_of(const Kind &kind, const void *record) {
  Head head{};
  std::memcpy(&head, static_cast<const char *>(record) + kind.head, sizeof head);
  return head;
}

// The unit of a record. False where it has no location.
inline bool take_unit(const Kind &kind, const void *record, Unit &unit) {
  const Head head = head_of(kind, record);
  unit = {{head.type, head.number, 0, {head.unit_id[0], head.unit_id[1]}, {}}, head.status};
  return api_conv_unit_name_get(head.unit_id, 0, unit.record.name, 0, 0) == 0;
}

inline int32_t read_one(const Server &server, const Kind &kind, int32_t number, AnyRecord &record) {
  record = {};
  return lmainte_get_fru_data(kind.type, number, 1, server.model(), &record);
}

// All units of a kind, in the order of their list: the number on the list is the record's place, counted from 1.
class Units {
 public:
  Units(const Server &server, const Kind &kind) : server_(server), kind_(kind), count_(kind.count(server)) {}

  int32_t read() {
    records_.assign(count_ * kind_.record_size, std::byte{});
    return lmainte_get_fru_data(kind_.type, -1, static_cast<int32_t>(count_), server_.model(), records_.data());
  }

  uint32_t count() const { return count_; }
  const void *at(size_t place) const { return records_.data() + place * kind_.record_size; }
  int32_t show(const ListLine *lines) const {
    return graceful::after_pager(kind_.show_list(server_, count_, records_.data(), lines));
  }

 private:
  const Server &server_;
  const Kind &kind_;
  uint32_t count_;
  std::vector<std::byte> records_;
};

// The domains that run on a board of the high end: "domain 1", "domains 2, 7"; empty where none does.
inline int32_t read_domains(const Server &server, int32_t board, std::string &domains) {
  std::array<XsbData, 4> xsbs{};
  const int32_t result =
      lmainte_get_xsb_data(4 * board, static_cast<int32_t>(xsbs.size()), server.model(), xsbs.data());
  if (result != LMAINTE_OK) return result;
  std::set<int32_t> running;
  for (const XsbData &xsb : xsbs)
    if (xsb.active == 1) running.insert(xsb.current_domain);
  domains = running.empty() ? "" : running.size() == 1 ? "domain" : "domains";
  for (const int32_t domain : running) domains += (domain == *running.begin() ? " " : ", ") + std::to_string(domain);
  return LMAINTE_OK;
}

// ---- What a kind has of its own ------------------------------------------------------------------------------------

template <size_t Slot>
uint32_t count_of(const Server &server) {
  return server.count(Slot);
}

// Only qe1 has a backplane with DDC units of its own.
inline uint32_t count_of_ddcs(const Server &server) {
  return server.data().model == LMAINTE_MODEL_QE1 ? server.count(LMAINTE_SLOT_BP32) : 0;
}

template <class Record, auto Show>
int32_t show_list(const Server & /*server*/, uint32_t count, const void *records, const ListLine *lines) {
  return Show(0, count, static_cast<const Record *>(records), lines);
}

// The domains of a board are those of its extended system boards. A server without these is one domain.
template <uint32_t Parts>
int32_t show_boards(const Server &server, uint32_t count, const void *records, const ListLine *lines) {
  std::vector<XsbData> xsbs(size_t{4} * count, XsbData{0, 0, 0, 0, 0, 1});
  const auto xsb_count = static_cast<int32_t>(xsbs.size());
  const int32_t result =
      server.is_high_end() ? lmainte_get_xsb_data(-1, xsb_count, server.model(), xsbs.data()) : LMAINTE_OK;
  if (result != LMAINTE_OK) return result;
  return lmainte_show_cmu_iou_list(0, Parts, count, static_cast<const SbData *>(records), xsbs.data(), lines);
}

template <class Record, auto Show>
int32_t show_status(const AnyRecord &record, const ListLine *lines) {
  return Show(0, &record.as<Record>(), lines);
}

template <uint32_t Parts>
int32_t show_board(const AnyRecord &record, const ListLine *lines) {
  return lmainte_show_sb_status(0, Parts, &record.as<SbData>(), lines);
}

inline constexpr char kBoardColumns[] =
    "                          Domain of XSB\nNo. Unit              0     1     2     3  Power State\n";
inline constexpr char kUnitColumns[] = "\nNo. Unit            State\n";

inline constexpr char kDomains[] = "0 to 3: extended system boards (XSB) of the board; SP: one that has no domain.\n";
inline constexpr char kSigns[] = "*: a CPU module or a memory module of the unit is faulted or degraded.\n";
inline constexpr char kDdc[] = "DDC unit: a DC-to-DC converter, which makes a supply voltage.\n";

static_assert(fits_on_terminal(kBoardColumns) && fits_on_terminal(kUnitColumns) && fits_on_terminal(kDomains) &&
              fits_on_terminal(kSigns) && fits_on_terminal(kDdc));

inline constexpr Kind kKinds[] = {
    {"cmu",
     "CPU/memory unit",
     "CPU/memory units",
     LMAINTE_TYPE_CMU,
     0,
     count_of<LMAINTE_SLOT_CMU>,
     sizeof(SbData),
     offsetof(SbData, cmu),
     kBoardColumns,
     {kDomains, kSigns},
     show_boards<LMAINTE_BOARD_CMU>,
     show_board<LMAINTE_BOARD_CMU>},
    {"iou",
     "I/O unit",
     "I/O units",
     LMAINTE_TYPE_IOU,
     1,
     count_of<LMAINTE_SLOT_IOU>,
     sizeof(SbData),
     offsetof(SbData, iou),
     kBoardColumns,
     {kDomains, ""},
     show_boards<LMAINTE_BOARD_IOU>,
     show_board<LMAINTE_BOARD_IOU>},
    {"fan",
     "fan tray",
     "fan trays",
     LMAINTE_TYPE_FANTRAY,
     2,
     count_of<LMAINTE_SLOT_FAN>,
     sizeof(FantrayData),
     0,
     kUnitColumns,
     {},
     show_list<FantrayData, lmainte_show_fantray_list>,
     show_status<FantrayData, lmainte_show_fantray_status>},
    {"psu",
     "power supply",
     "power supplies",
     LMAINTE_TYPE_PSU,
     3,
     count_of<LMAINTE_SLOT_PSU>,
     sizeof(PsuData),
     0,
     kUnitColumns,
     {},
     show_list<PsuData, lmainte_show_psu_list>,
     show_status<PsuData, lmainte_show_psu_status>},
    {"ddc",
     "DDC unit",
     "DDC units",
     LMAINTE_TYPE_DDC,
     7,
     count_of_ddcs,
     sizeof(BpUnitData),
     0,
     kUnitColumns,
     {kDdc, ""},
     show_list<BpUnitData, lmainte_show_ddca_list>,
     show_status<BpUnitData, lmainte_show_ddca_status>},
};

// The first kind of which this is true, or null.
template <class Predicate>
const Kind *find_kind(Predicate predicate) {
  const Kind *const end = std::end(kKinds);
  const Kind *const kind = std::find_if(std::begin(kKinds), end, predicate);
  return kind == end ? nullptr : kind;
}

}  // namespace procedure
