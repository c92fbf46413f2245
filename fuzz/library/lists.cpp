// Lists and status tables of any records. Whatever is in them: the file of the list goes, nothing is shown where a unit has
// no name, and what is shown has all of the caller's lines.
#include <algorithm>
#include <array>
#include <vector>

#include "fuzz/library/machine.h"
#include "include/lmainte.h"

namespace fuzz {
namespace {

constexpr std::uint32_t kMostUnits = 8, kXsbs = 32;
constexpr std::size_t kLineCut = 127;

// A record of the caller's: any bytes, and a unit id that may have a name.
template <typename Record>
Record record_from(Source &source) {
  Record record = {};
  const Input bytes = source.bytes(std::min<std::size_t>(sizeof record, source.byte()));
  std::copy(bytes.begin(), bytes.end(), reinterpret_cast<std::uint8_t *>(&record));
  return record;
}

void take_id(Source &source, std::uint32_t (&id)[2]) {
  id[0] = source.byte() % 5;
  id[1] = 0;
}

template <typename Record>
std::vector<Record> units_from(Source &source, std::uint32_t count) {
  std::vector<Record> units;
  for (std::uint32_t i = 0; i < count; ++i) {
    units.push_back(record_from<Record>(source));
    take_id(source, units.back().unit_id);
  }
  return units;
}

// The records of a board's parts, and numbers of extended system boards that there are.
std::vector<SbData> boards_from(Source &source, std::uint32_t count) {
  std::vector<SbData> boards;
  for (std::uint32_t i = 0; i < count; ++i) {
    boards.push_back({record_from<CmuData>(source), record_from<IouData>(source)});
    SbData &board = boards.back();
    take_id(source, board.cmu.unit_id);
    take_id(source, board.iou.unit_id);
    for (UnitData &unit : board.cmu.cpum) take_id(source, unit.unit_id);
    for (UnitData &unit : board.cmu.dimm) take_id(source, unit.unit_id);
    for (std::int32_t &xsb : board.cmu.xsb) xsb = source.byte() % static_cast<std::int32_t>(kXsbs - 3);
  }
  return boards;
}

struct Texts {
  std::string head, foot;
  ListLine lines[3];
};

int show_boards(Source &source, std::uint32_t count, const ListLine *lines) {
  const auto boards = boards_from(source, count);
  std::vector<XsbData> xsbs;
  for (std::uint32_t i = 0; i < kXsbs; ++i) xsbs.push_back(record_from<XsbData>(source));
  return lmainte_show_cmu_iou_list(0, source.byte() % 4, count, boards.data(), xsbs.data(), lines);
}
int show_board(Source &source, std::uint32_t /*count*/, const ListLine *lines) {
  const auto boards = boards_from(source, 1);
  return lmainte_show_sb_status(0, source.byte() % 4, boards.data(), lines);
}
int show_io_units(Source &source, std::uint32_t count, const ListLine *lines) {
  const auto boards = boards_from(source, count);
  std::vector<IoxListData> expansions(count);
  for (IoxListData &expansion : expansions) {
    for (IoxBoatData &boat : expansion.boat) {
      boat = record_from<IoxBoatData>(source);
      take_id(source, boat.unit_id);
    }
  }
  return lmainte_show_iounit_list(0, count, count, boards.data(), expansions.data(), lines);
}
int show_slots(Source &source, std::uint32_t count, const ListLine *lines) {
  const auto boards = boards_from(source, 1);
  return lmainte_show_ioupci_list(0, count, boards.data(), lines);
}
int show_boat_slots(Source &source, std::uint32_t count, const ListLine *lines) {
  const auto boats = units_from<IoxBoatData>(source, 1);
  return lmainte_show_ioxpci_list(0, std::min(count, 7U), boats.data(), lines);
}

template <typename Record, std::int32_t Show(std::int32_t, std::uint32_t, const Record *, const ListLine *)>
int show_list(Source &source, std::uint32_t count, const ListLine *lines) {
  const auto units = units_from<Record>(source, count);
  return Show(0, count, units.data(), lines);
}
template <typename Record, std::int32_t Show(std::int32_t, const Record *, const ListLine *)>
int show_status(Source &source, std::uint32_t /*count*/, const ListLine *lines) {
  const auto units = units_from<Record>(source, 1);
  return Show(0, units.data(), lines);
}

constexpr std::array<int (*)(Source &, std::uint32_t, const ListLine *), 11> kShows = {
    show_boards,
    show_board,
    show_io_units,
    show_slots,
    show_boat_slots,
    show_list<PsuData, lmainte_show_psu_list>,
    show_list<FantrayData, lmainte_show_fantray_list>,
    show_list<BpUnitData, lmainte_show_ddca_list>,
    show_status<PsuData, lmainte_show_psu_status>,
    show_status<FantrayData, lmainte_show_fantray_status>,
    show_status<BpUnitData, lmainte_show_ddca_status>,
};

// Every line is cut at its room; what is shown begins and ends with the caller's own.
void check_page(const std::string &page, const Texts &texts) {
  const std::string head = (texts.head + "\n").substr(0, kLineCut), foot = (texts.foot + "\n").substr(0, kLineCut);
  require(page.starts_with(head), "a list begins with the caller's head line");
  require(page.ends_with(foot), "a list ends with the caller's foot line");
}

}  // namespace

void run_lists(Input input) {
  Source source(input);
  on_machine([&] {
    const auto show = kShows.at(source.byte() % kShows.size());
    const std::uint32_t count = source.byte() % (kMostUnits + 1);
    Texts texts{source.text(200), source.text(200), {}};
    texts.lines[0] = doubles::head("%s\n", {reinterpret_cast<std::uintptr_t>(texts.head.c_str())});
    texts.lines[1] = doubles::foot("%s\n", {reinterpret_cast<std::uintptr_t>(texts.foot.c_str())});
    texts.lines[2] = doubles::end_mark();
    for (std::uint32_t id = 0; id < 4; ++id) machine().names[{id, 0}] = source.text(127);
    const std::int32_t result = judged("a list", {LMAINTE_FAILED}, [&] { return show(source, count, texts.lines); });
    require(machine().pages.size() == (result == 0 ? 1U : 0U), "what fails shows nothing");
    if (result == 0) check_page(machine().pages[0], texts);
  });
}

}  // namespace fuzz
