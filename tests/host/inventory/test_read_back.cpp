// What the library reads on every model, field by field beside the records of the box.

#include <cstring>

#include "include/lmainte.h"
#include "include/lmainte_platform.h"
#include "tests/host/inventory/bent_box.h"

namespace {

using box::Bytes;

std::uint32_t word(const Bytes &record, std::size_t number) {
  std::uint32_t value = 0;
  std::memcpy(&value, &record.at(4 * number), sizeof value);
  return value;
}

std::string numbered(const char *stem, std::size_t number, int digits = 2) {
  char name[64];
  std::snprintf(name, sizeof name, "%s%0*zu", stem, digits, number);
  return name;
}

bool is_installed(std::uint32_t status) {
  return (status & 0x80000000) != 0;
}

std::uint32_t merged(std::uint32_t status, std::uint8_t flags) {
  if ((flags & 0x20) != 0) return status | 0x20000000;
  return (flags & 0x10) != 0 ? status | 0x10000000 : status;
}

// The name whose length byte is at an offset.
std::string name_at(const Bytes &record, std::size_t at) {
  const auto *text = reinterpret_cast<const char *>(&record.at(at + 1));
  return {text, std::min<std::size_t>(record.at(at) & 0x3F, 18)};
}

// A name that the reader has written into a cleared record.
template <std::size_t Size>
std::string text(const char (&field)[Size]) {
  return {field, strnlen(field, Size)};
}

// The five fields that all units have, beside the entry that begins at a word.
template <class Unit>
void expect_head(const Unit &unit, int32_t type, std::size_t number, const Bytes &record, std::size_t at,
                 std::uint32_t status) {
  EXPECT_EQ(unit.type, type);
  EXPECT_EQ(unit.number, static_cast<int32_t>(number));
  EXPECT_EQ(unit.unit_id[0], word(record, at));
  EXPECT_EQ(unit.unit_id[1], word(record, at + 1));
  EXPECT_EQ(static_cast<std::uint32_t>(unit.status), status);
}

class ReadBack : public BentBox {
 protected:
  void expect_module(const UnitData &unit, int32_t type, std::size_t number, const Bytes &current, std::size_t at,
                     const std::string &name, int32_t xsb) {
    expect_head(unit, type, number, current, at, word(current, at + 2));
    EXPECT_EQ(unit.mainte_status, unit.status);
    EXPECT_EQ(text(unit.fru_name), is_installed(word(current, at + 2)) ? name : "");
    EXPECT_EQ(unit.xsb, xsb);
  }

  void expect_modules(const CmuData &cmu, std::size_t board) {
    const Bytes &cpums = record(2, numbered("current_cpu_module_info_", board));
    const Bytes &dimms = record(2, numbered("current_dimm_info_", board));
    const auto first = static_cast<int32_t>(4 * board);
    const bool is_one = cmu.xsb_mode == 1;
    for (std::size_t k = 0; k < 4; ++k) {
      const std::string name = name_at(record(4, numbered("fru_cpu_info_", 4 * board + k)), 6187);
      expect_module(cmu.cpum[k], 32, k, cpums, 186 * k, name, first + (is_one ? 0 : static_cast<int32_t>(k)));
    }
    std::set<int32_t> numbers;
    for (const UnitData &dimm : cmu.dimm) {
      numbers.insert(dimm.number);
      const auto d = static_cast<std::size_t>(dimm.number);
      const Bytes &identity = record(4, numbered("fru_dimm_info_", 32 * board + d, 3));
      const std::string four(reinterpret_cast<const char *>(&identity.at(95)), 4);
      expect_module(dimm, 40, d, dimms, 14 * d, four.substr(0, four.find('\0')),
                    first + (is_one ? 0 : dimm.number % 16 / 4));
    }
    EXPECT_EQ(numbers.size(), 32u);
  }

  // The worst state of the installed modules of one kind.
  static std::uint32_t worst(const UnitData *units, std::size_t count) {
    std::uint32_t result = 0;
    for (std::size_t i = 0; i < count; ++i) {
      const auto status = static_cast<std::uint32_t>(units[i].status);
      if (!is_installed(status)) continue;
      const std::uint32_t state = (status & 0x20000000) != 0 ? 0xA0000000 : 0x80000000 | (status & 0x10000000);
      result = std::max(result, state);
    }
    return result;
  }

  void expect_cmu(const CmuData &cmu, std::size_t board) {
    const Bytes &setup = record(1, numbered("setup_cmu_info_", board));
    const Bytes &current = record(2, numbered("current_cmu_info_", board));
    expect_head(cmu, 16, board, current, 0, word(current, 2));
    EXPECT_EQ(cmu.mainte_status, cmu.status);
    EXPECT_EQ(cmu.parts_status, worst(cmu.cpum, 4) | worst(cmu.dimm, 32));
    EXPECT_EQ(cmu.cur_info_6, word(current, 6));
    EXPECT_EQ(cmu.cur_info_7, word(current, 7));
    EXPECT_EQ(cmu.setup_info_0, word(setup, 0));
    EXPECT_EQ(cmu.setup_info_1, word(setup, 1));
    EXPECT_EQ(static_cast<std::uint32_t>(cmu.xsb_mode), word(current, 9));
    EXPECT_EQ(cmu.cur_info_11, word(current, 11));
    const std::string name = name_at(record(4, numbered("fru_cmu_info_", board)), 6187);
    EXPECT_EQ(text(cmu.fru_name), is_installed(word(current, 2)) ? name : "");
    for (int32_t i = 0; i < 4; ++i)
      EXPECT_EQ(cmu.xsb[i], static_cast<int32_t>(4 * board) + (cmu.xsb_mode == 1 ? 0 : i));
    expect_modules(cmu, board);
  }

  void expect_iou(const SbData &sb, std::size_t board) {
    const IouData &iou = sb.iou;
    const Bytes &current = record(2, numbered("current_iou_info_", board));
    expect_head(iou, 80, board, current, 0, word(current, 2));
    EXPECT_EQ(iou.mainte_status, 0x80000000u);
    EXPECT_EQ(iou.parts_status, iou.status);
    const char *stem = box::is_high_end(GetParam()) ? "fru_iou_qe_info_" : "fru_iou_qb_info_";
    EXPECT_EQ(text(iou.fru_name),
              is_installed(word(current, 2)) ? name_at(record(4, numbered(stem, board)), 6187) : "");
    EXPECT_TRUE(std::equal(iou.xsb, iou.xsb + 4, sb.cmu.xsb));
    for (const std::uint32_t untouched : iou.reserved) EXPECT_EQ(untouched, 0u);
  }

  void expect_fans(const FantrayData &tray, const Bytes &current, std::size_t at) {
    for (int32_t fan = 0; fan < tray.fan_count; ++fan) {
      const std::size_t place = at + 32 + 56 * static_cast<std::size_t>(fan);
      const std::uint8_t flags = current.at(place + 12);
      EXPECT_EQ(static_cast<std::uint32_t>(tray.fan[fan].status), merged(word(current, place / 4), flags)) << fan;
      EXPECT_EQ(tray.fan[fan].flags, flags) << fan;
    }
  }

  void expect_tray(const FantrayData &tray, std::size_t number, std::size_t fans_of) {
    const Bytes &current = record(2, "current_fantray_info");
    const std::uint8_t flags = current.at(216 * number + 20);
    const std::uint32_t status = merged(word(current, 54 * number + 2), flags);
    expect_head(tray, 180, number, current, 54 * number, status);
    EXPECT_EQ(tray.mainte_status, tray.status);
    EXPECT_EQ(tray.flags, flags);
    EXPECT_EQ(tray.fan_count, model().fans[number].fans);
    expect_fans(tray, current, 216 * fans_of);
    const bool has_name = box::is_high_end(GetParam()) && is_installed(status);
    EXPECT_EQ(text(tray.fru_name), has_name ? name_at(record(4, numbered("fru_fan_qe_info_", number)), 43) : "");
  }

  void expect_service_unit(const EmgbUnitData &unit, int32_t type, std::size_t number) {
    const bool is_first_kind = type == 128;
    const Bytes &current = record(2, is_first_kind ? "current_mgb_info" : "current_mgbr_info");
    const Bytes &local = record(3, "local_mgb_info");
    const std::size_t at = (is_first_kind ? 20 : 6) * number;
    const std::uint32_t status = word(current, at + 2);
    const bool is_own = local.at(20) == number;
    expect_head(unit, type, number, current, at, status);
    EXPECT_EQ(unit.local_word, word(local, is_first_kind ? (is_own ? 0 : 1) : (is_own ? 3 : 4)));
    EXPECT_EQ(unit.fault_flags,
              ((status & 0x20000000) != 0 ? 0x10000u : 0u) | ((status & 0x10000000) != 0 ? 0x8000u : 0u));
    const std::uint32_t role = is_first_kind ? (is_own ? 0 : 0x80000000) : (is_own ? 0x40000000 : 0x20000000);
    EXPECT_EQ(unit.role_flag, is_installed(status) ? role : 0);
    EXPECT_EQ(unit.local_number, local.at(20));
    const std::string identity = numbered("fru_emgbu_info_", number + (is_first_kind ? 0 : 2));
    EXPECT_EQ(text(unit.name), name_at(record(4, identity), 6187));
  }
};

INSTANTIATE_TEST_SUITE_P(Of, ReadBack, testing::Range(1u, 7u), model_of_row);

TEST_P(ReadBack, SystemBoards) {
  std::vector<SbData> boards(model().boards);
  ASSERT_EQ(lmainte_get_sb_data(-1, static_cast<int32_t>(boards.size()), code(), boards.data()), 0);
  for (std::size_t n = 0; n < boards.size(); ++n) {
    SCOPED_TRACE("board " + std::to_string(n));
    expect_cmu(boards[n].cmu, n);
    expect_iou(boards[n], n);
  }
}

TEST_P(ReadBack, ExtendedSystemBoards) {
  std::vector<XsbData> xsbs(std::max<std::size_t>(model().xsbs, 1));
  const int32_t result = lmainte_get_xsb_data(-1, static_cast<int32_t>(xsbs.size()), code(), xsbs.data());
  ASSERT_EQ(result, box::is_high_end(GetParam()) ? 0 : 8);
  for (std::size_t n = 0; n < model().xsbs; ++n) {
    SCOPED_TRACE("extended system board " + std::to_string(n));
    const Bytes &setup = record(1, numbered("setup_xsb_info_", n));
    const Bytes &current = record(2, numbered("current_xsb_info_", n));
    EXPECT_EQ(xsbs[n].number, static_cast<int32_t>(n));
    EXPECT_EQ(xsbs[n].cur_info_0, word(current, 0));
    EXPECT_EQ(xsbs[n].cur_info_13, word(current, 13));
    EXPECT_EQ(static_cast<std::uint32_t>(xsbs[n].current_domain), word(current, 14));
    EXPECT_EQ(static_cast<std::uint32_t>(xsbs[n].setup_domain), word(setup, 32));
    EXPECT_EQ(xsbs[n].active, current.at(61));
  }
}

TEST_P(ReadBack, FanTrays) {
  std::vector<FantrayData> trays(static_cast<std::size_t>(units_of_type(180)));
  const auto count = static_cast<int32_t>(trays.size());
  ASSERT_EQ(lmainte_get_fantray_data(-1, count, code(), trays.data()), 0);
  constexpr std::size_t kShownFirst[] = {2, 3, 4, 5, 0, 1};  // on qe1
  for (std::size_t i = 0; i < trays.size(); ++i) {
    SCOPED_TRACE("position " + std::to_string(i));
    expect_tray(trays[i], GetParam() == 3 && i < 6 ? kShownFirst[i] : i, i);
    FantrayData tray = {};
    ASSERT_EQ(lmainte_get_fantray_data(static_cast<int32_t>(i), 1, code(), &tray), 0);
    expect_tray(tray, i, i);
  }
}

TEST_P(ReadBack, PowerSupplies) {
  std::vector<PsuData> psus(static_cast<std::size_t>(units_of_type(161)));
  ASSERT_EQ(lmainte_get_psu_data(-1, static_cast<int32_t>(psus.size()), code(), psus.data()), 0);
  const Bytes &current = record(2, "current_psu_info");
  const bool is_mid_range = GetParam() == 1 || GetParam() == 2;
  for (std::size_t n = 0; n < psus.size(); ++n) {
    SCOPED_TRACE("power supply " + std::to_string(n));
    const std::uint8_t flags = current.at(56 * n + 20);
    const std::uint32_t status = merged(word(current, 14 * n + 2), flags);
    expect_head(psus[n], 161, n, current, 14 * n, status);
    EXPECT_EQ(psus[n].mainte_status, psus[n].status);
    EXPECT_EQ(psus[n].flags, flags);
    EXPECT_EQ(psus[n].info_byte, box::is_high_end(GetParam()) ? 255 : current.at(56 * n + 24));
    const char *stem = is_mid_range ? "fru_psu_qb_info_" : "fru_psu_qe_info_";
    EXPECT_EQ(text(psus[n].fru_name), is_installed(status) ? name_at(record(4, numbered(stem, n)), 79) : "");
  }
}

TEST_P(ReadBack, DomainsAndTheSystem) {
  std::vector<DomainData> domains(model().domains);
  ASSERT_EQ(lmainte_get_domain_data(-1, static_cast<int32_t>(domains.size()), code(), domains.data()), 0);
  for (std::size_t n = 0; n < domains.size(); ++n) {
    const Bytes &current = record(2, numbered("current_domain_info_", n));
    EXPECT_EQ(domains[n].number, static_cast<int32_t>(n));
    EXPECT_EQ(domains[n].dom_info_0, word(current, 0)) << n;
    EXPECT_EQ(domains[n].dom_byte_44, current.at(44)) << n;
  }
  SystemStatus system = {};
  ASSERT_EQ(lmainte_get_system_status(&system), 0);
  EXPECT_EQ(system.system_status, word(record(2, "current_system_info"), 2));
  EXPECT_EQ(system.system_info_8, word(record(2, "current_system_info"), 8));
}

TEST_P(ReadBack, Backplane) {
  Bp32Data units = {};
  ASSERT_EQ(lmainte_get_bp32_data(0, 1, code(), &units), GetParam() == 3 ? 0 : 8);
  if (GetParam() != 3) return;
  const Bytes &current = record(2, "current_bp32_info");
  expect_head(units.bp, 51, 0, current, 0, word(current, 2));
  EXPECT_EQ(text(units.bp.fru_name), is_installed(word(current, 2)) ? name_at(record(4, "fru_bpa_info"), 6187) : "");
  BpUnitData ddcs[2] = {};
  ASSERT_EQ(lmainte_get_ddca_data(-1, 2, code(), ddcs), 0);
  for (std::size_t k = 0; k < 2; ++k) {
    const std::uint32_t status = word(current, 116 + 10 * k);
    expect_head(units.ddc[k], 212, k, current, 114 + 10 * k, status);
    EXPECT_EQ(units.ddc[k].mainte_status, units.ddc[k].status);
    const std::string name = is_installed(status) ? name_at(record(4, numbered("fru_ddca_info_", k)), 64) : "";
    EXPECT_EQ(text(units.ddc[k].fru_name), name);
    EXPECT_EQ(std::memcmp(&ddcs[k], &units.ddc[k], sizeof ddcs[k]), 0);
  }
}

TEST_P(ReadBack, ServiceProcessorUnits) {
  const bool is_high_end = box::is_high_end(GetParam());
  EmgbUnitData units[4] = {};
  ASSERT_EQ(lmainte_get_emgb_data_all(code(), units), 0);
  expect_service_unit(units[0], 128, 0);
  if (is_high_end) expect_service_unit(units[1], 128, 1);
  if (GetParam() == 5) {
    expect_service_unit(units[2], 130, 0);
    expect_service_unit(units[3], 130, 1);
  }
  EmgbUnitData pairs[4] = {};
  ASSERT_EQ(lmainte_get_emgb_data_pair(-1, code(), pairs), is_high_end ? 0 : 8);
  if (!is_high_end) return;
  expect_service_unit(pairs[0], 128, 0);
  expect_service_unit(pairs[1], GetParam() == 5 ? 130 : 128, GetParam() == 5 ? 0 : 1);
}

// ---- the tree

// A unit in a line: its type, its location and its status word.
std::string line_of(int32_t type, const std::string &location, std::uint32_t status) {
  char text[160];
  std::snprintf(text, sizeof text, "%d %s 0x%08X", type, location.c_str(), status);
  return text;
}

using Seen = std::set<std::string>;

class Tree : public BentBox {
 protected:
  template <class Unit>
  static void see(Seen &seen, const Unit &unit) {
    char name[128] = {};
    if (api_conv_unit_name_get(unit.unit_id, 0, name, 0, 0) != 0) {
      EXPECT_FALSE(is_installed(static_cast<std::uint32_t>(unit.status))) << "an installed unit without a location";
      return;
    }
    seen.insert(line_of(unit.type, name, static_cast<std::uint32_t>(unit.status)));
  }

  void see_boards(Seen &seen) {
    std::vector<SbData> boards(model().boards);
    ASSERT_EQ(lmainte_get_sb_data(-1, static_cast<int32_t>(boards.size()), code(), boards.data()), 0);
    for (const SbData &board : boards) {
      see(seen, board.cmu);
      see(seen, board.iou);
      for (const UnitData &cpum : board.cmu.cpum) see(seen, cpum);
      for (const UnitData &dimm : board.cmu.dimm) see(seen, dimm);
    }
  }
  void see_fans_and_psus(Seen &seen) {
    for (int32_t n = 0; n < units_of_type(180); ++n) {
      FantrayData tray = {};
      ASSERT_EQ(lmainte_get_fantray_data(n, 1, code(), &tray), 0);
      see(seen, tray);
    }
    std::vector<PsuData> psus(static_cast<std::size_t>(units_of_type(161)));
    ASSERT_EQ(lmainte_get_psu_data(-1, static_cast<int32_t>(psus.size()), code(), psus.data()), 0);
    for (const PsuData &psu : psus) see(seen, psu);
  }
  void see_the_rest(Seen &seen) {
    EmgbUnitData units[4] = {};
    ASSERT_EQ(lmainte_get_emgb_data_all(code(), units), 0);
    for (const EmgbUnitData &unit : units)
      if (unit.type != 0) see(seen, unit);
    if (GetParam() != 3) return;
    Bp32Data backplane = {};
    ASSERT_EQ(lmainte_get_bp32_data(0, 1, code(), &backplane), 0);
    for (const BpUnitData &unit : {backplane.bp, backplane.ddc[0], backplane.ddc[1]}) see(seen, unit);
  }
};

INSTANTIATE_TEST_SUITE_P(Of, Tree, testing::Range(1u, 7u), model_of_row);

// A fan of a tray has no location of its own.
TEST_P(Tree, IsThatOfTheBox) {
  Seen expected;
  for (const box::Unit &unit : units())
    for (const box::UnitEntry &entry : unit.place.entries)
      if (has_reader(entry) && entry.at != box::kNowhere)
        expected.insert(line_of(entry.type, unit.place.name, unit.status));
  Seen seen;
  see_boards(seen);
  see_fans_and_psus(seen);
  see_the_rest(seen);
  EXPECT_EQ(differences(seen, expected), Seen());
  EXPECT_GT(seen.size(), 10u);

  std::set<std::string> states;
  for (const box::Unit &unit : units()) states.insert(std::string(box::state_word(unit)));
  EXPECT_EQ(states, (std::set<std::string>{"Normal", "Degraded", "Faulted", "Not installed"}));
}

}  // namespace
