#include "procedure/kinds.h"

#include <algorithm>
#include <cstring>
#include <iterator>

#include "include/lmainte_platform.h"
#include "include/lmainte_procedure.h"
#include "procedure/words.h"

namespace lmainte::procedure {
namespace {

// With this every kind's record begins.
struct Head {
  int32_t type, number;
  uint32_t unit_id[2], status;
};

template <class Record>
constexpr bool kBeginsWithHead = offsetof(Record, type) == offsetof(Head, type) &&
                                 offsetof(Record, number) == offsetof(Head, number) &&
                                 offsetof(Record, unit_id) == offsetof(Head, unit_id) &&
                                 offsetof(Record, status) == offsetof(Head, status);
static_assert(kBeginsWithHead<CmuData> && kBeginsWithHead<IouData> && kBeginsWithHead<FantrayData> &&
              kBeginsWithHead<PsuData> && kBeginsWithHead<BpUnitData>);

Head head_of(const Kind &kind, const void *record) {
  Head head{};
  memcpy(&head, static_cast<const char *>(record) + kind.head, sizeof head);
  return head;
}

template <size_t Slot>
uint32_t count_of(const Server &server) {
  return server.count(Slot);
}

// Only qe1 has a backplane with DDC units of its own.
uint32_t count_of_ddcs(const Server &server) {
  return server.data().model == LMAINTE_MODEL_QE1 ? server.count(LMAINTE_SLOT_BP32) : 0;
}

template <class Record, auto Show>
int32_t show_list(const Server & /*server*/, uint32_t count, const void *records, const ListLine *lines) {
  return Show(0, count, static_cast<const Record *>(records), lines);
}

// The domains of a board are those of its extended system boards. A server without these is one domain.
template <uint32_t Parts>
int32_t show_boards(const Server &server, uint32_t count, const void *records, const ListLine *lines) {
  constexpr XsbData kOfOneDomain = {0, 0, 0, 0, 0, 1};
  const size_t parts = size_t{4} * count;
  auto *const xsbs = static_cast<XsbData *>(calloc(std::max<size_t>(parts, 1), sizeof(XsbData)));
  if (xsbs == nullptr) return LMAINTE_FAILED;
  std::fill(xsbs, xsbs + parts, kOfOneDomain);
  int32_t result = LMAINTE_OK;
  if (server.is_high_end()) result = lmainte_get_xsb_data(-1, static_cast<int32_t>(parts), server.model(), xsbs);
  if (result == LMAINTE_OK)
    result = lmainte_show_cmu_iou_list(0, Parts, count, static_cast<const SbData *>(records), xsbs, lines);
  free(xsbs);
  return result;
}

template <class Record, auto Show>
int32_t show_status(const AnyRecord &record, const ListLine *lines) {
  return Show(0, &record.as<Record>(), lines);
}

template <uint32_t Parts>
int32_t show_board(const AnyRecord &record, const ListLine *lines) {
  return lmainte_show_sb_status(0, Parts, &record.as<SbData>(), lines);
}

constexpr char kBoardColumns[] =
    "                          Domain of XSB\nNo. Unit              0     1     2     3  Power State\n";
constexpr char kUnitColumns[] = "\nNo. Unit            State\n";

constexpr char kDomains[] = "0 to 3: extended system boards (XSB) of the board; SP: one that has no domain.\n";
constexpr char kSigns[] = "*: a CPU module or a memory module of the unit is faulted or degraded.\n";
constexpr char kDdc[] = "DDC unit: a DC-to-DC converter, which makes a supply voltage.\n";

// The library shows them as they stand.
constexpr bool fits_on_terminal(const char *text) {
  size_t columns = 0;
  for (; *text != '\0'; ++text) {
    columns = *text == '\n' ? 0 : columns + 1;
    if (columns > kColumns) return false;
  }
  return true;
}
static_assert(fits_on_terminal(kBoardColumns) && fits_on_terminal(kUnitColumns) && fits_on_terminal(kDomains) &&
              fits_on_terminal(kSigns) && fits_on_terminal(kDdc));

constexpr Kind kRows[] = {
    {"cmu",
     noted("CPU/memory unit"),
     noted("CPU/memory units"),
     LMAINTE_TYPE_CMU,
     LMAINTE_KIND_CMU,
     count_of<LMAINTE_SLOT_CMU>,
     sizeof(SbData),
     offsetof(SbData, cmu),
     noted(kBoardColumns),
     {noted(kDomains), noted(kSigns)},
     show_boards<LMAINTE_BOARD_CMU>,
     show_board<LMAINTE_BOARD_CMU>},
    {"iou",
     noted("I/O unit"),
     noted("I/O units"),
     LMAINTE_TYPE_IOU,
     LMAINTE_KIND_IOU,
     count_of<LMAINTE_SLOT_IOU>,
     sizeof(SbData),
     offsetof(SbData, iou),
     kBoardColumns,
     {kDomains, ""},
     show_boards<LMAINTE_BOARD_IOU>,
     show_board<LMAINTE_BOARD_IOU>},
    {"fan",
     noted("fan tray"),
     noted("fan trays"),
     LMAINTE_TYPE_FANTRAY,
     LMAINTE_KIND_FANTRAY,
     count_of<LMAINTE_SLOT_FAN>,
     sizeof(FantrayData),
     0,
     kUnitColumns,
     {},
     show_list<FantrayData, lmainte_show_fantray_list>,
     show_status<FantrayData, lmainte_show_fantray_status>},
    {"psu",
     noted("power supply"),
     noted("power supplies"),
     LMAINTE_TYPE_PSU,
     LMAINTE_KIND_PSU,
     count_of<LMAINTE_SLOT_PSU>,
     sizeof(PsuData),
     0,
     kUnitColumns,
     {},
     show_list<PsuData, lmainte_show_psu_list>,
     show_status<PsuData, lmainte_show_psu_status>},
    {"ddc",
     noted("DDC unit"),
     noted("DDC units"),
     LMAINTE_TYPE_DDC,
     LMAINTE_KIND_DDC,
     count_of_ddcs,
     sizeof(BpUnitData),
     0,
     kUnitColumns,
     {kDdc, ""},
     show_list<BpUnitData, lmainte_show_ddca_list>,
     show_status<BpUnitData, lmainte_show_ddca_status>},
};

static_assert(std::size(kRows) <= Kinds::kMost);

template <class Predicate>
const Kind *find_kind(Predicate predicate) {
  const Kind *const kind = std::find_if(std::begin(kRows), std::end(kRows), predicate);
  return kind == std::end(kRows) ? nullptr : kind;
}

uintptr_t word(const char *text) {
  return reinterpret_cast<uintptr_t>(text);
}

}  // namespace

const Kind *Kinds::begin() const {
  return std::begin(kRows);
}

const Kind *Kinds::end() const {
  return std::end(kRows);
}

const Kind *kind_named(const char *word) {
  return find_kind([&](const Kind &row) { return strcmp(row.word, word) == 0; });
}

const Kind *kind_of_type(int32_t type) {
  return find_kind([&](const Kind &row) { return row.type == type; });
}

bool take_unit(const Kind &kind, const void *record, Unit &unit) {
  const Head head = head_of(kind, record);
  unit = {{head.type, head.number, 0, {head.unit_id[0], head.unit_id[1]}, {}}, head.status};
  return api_conv_unit_name_get(head.unit_id, 0, unit.record.name, 0, 0) == 0;
}

uint32_t status_of(const Kind &kind, const void *record) {
  return head_of(kind, record).status;
}

int32_t read_one(const Server &server, const Kind &kind, int32_t number, AnyRecord &record) {
  record = {};
  return lmainte_get_fru_data(kind.type, number, 1, server.model(), &record);
}

int32_t Units::read() {
  free(records_);
  records_ = static_cast<std::byte *>(calloc(std::max(count_, 1U), kind_.record_size));
  if (records_ == nullptr) return LMAINTE_FAILED;
  return lmainte_get_fru_data(kind_.type, -1, static_cast<int32_t>(count_), server_.model(), records_);
}

int32_t Units::show() const {
  const char *const many = words(kind_.many);
  const bool has_legend = kind_.legend[0] != nullptr;
  const ListLine lines[] = {{LMAINTE_LINE_HEAD, words("The %s of this server\n"), 0, {word(many)}},
                            {LMAINTE_LINE_HEAD, words(kind_.columns), 0, {}},
                            {LMAINTE_LINE_FOOT, "\n", 0, {}},
                            has_legend ? ListLine{LMAINTE_LINE_FOOT, words(kind_.legend[0]), 0, {}}
                                       : ListLine{LMAINTE_LINE_FOOT, "%u %s.\n", 0, {count_, word(many)}},
                            has_legend && *kind_.legend[1] != '\0'
                                ? ListLine{LMAINTE_LINE_FOOT, words(kind_.legend[1]), 0, {}}
                                : ListLine{LMAINTE_LINE_END, nullptr, 0, {}},
                            {LMAINTE_LINE_END, nullptr, 0, {}}};
  return lmainte_session_shown(kind_.show_list(server_, count_, records_, lines));
}

int32_t read_domains(const Server &server, int32_t board, Text &domains) {
  constexpr int32_t kParts = 4, kMostDomains = 32;
  XsbData xsbs[kParts] = {};
  const int32_t result = lmainte_get_xsb_data(kParts * board, kParts, server.model(), xsbs);
  if (result != LMAINTE_OK) return result;
  uint32_t running = 0;
  for (const XsbData &xsb : xsbs)
    if (xsb.active == 1 && xsb.current_domain >= 0 && xsb.current_domain < kMostDomains)
      running |= 1U << static_cast<uint32_t>(xsb.current_domain);
  if (running == 0) return LMAINTE_OK;
  domains.add((running & (running - 1)) == 0 ? words("domain") : words("domains"));
  const char *between = " ";
  for (int32_t domain = 0; domain < kMostDomains; ++domain) {
    if ((running >> static_cast<uint32_t>(domain) & 1) == 0) continue;
    domains.add_format("%s%d", between, domain);
    between = ", ";
  }
  return LMAINTE_OK;
}

}  // namespace lmainte::procedure
