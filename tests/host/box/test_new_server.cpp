// A new server, looked at with the numbers of the readers: record names, sizes and offsets.
#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <map>
#include <set>

#include "host/box/contents.h"
#include "host/box/unit_name.h"
#include "tests/host/box/scratch.h"

namespace {

using box::Bytes;

std::string numbered(const std::string &pattern, int number, int digits) {
  std::string text = std::to_string(number);
  text.insert(0, static_cast<std::size_t>(digits) - text.size(), '0');
  return pattern + text;
}

std::uint32_t word(const Bytes &record, std::size_t at) {
  std::uint32_t value = 0;
  if (at + 4 > record.size()) return 0xDEADBEEF;
  std::memcpy(&value, record.data() + at, 4);
  return value;
}

// Units of each kind that a full server of the model has.
struct ModelRow {
  const char *name;
  std::uint32_t code;
  int boards, cpums, dimms, ious, slots, psus, trays, emgbus, emgbrs;
};
constexpr ModelRow kModels[] = {
    {"qa", 6, 1, 0, 8, 1, 4, 2, 2, 1, 0},        {"qb1", 1, 1, 2, 32, 1, 5, 2, 4, 1, 0},
    {"qb2", 2, 2, 4, 64, 2, 10, 4, 4, 1, 0},     {"qe1", 3, 4, 16, 128, 4, 32, 18, 12, 2, 0},
    {"qe2", 4, 8, 32, 256, 8, 64, 30, 16, 2, 0}, {"qe3", 5, 16, 64, 512, 16, 128, 60, 32, 2, 2},
};

// Entries of one kind in the current database.
struct KindRow {
  const char *says;
  const char *record;  // with a number behind it where it ends in "_"
  std::size_t size, first, stride;
  int entries;
  int ModelRow::*units;
};
constexpr KindRow kKinds[] = {
    {"boards", "current_cmu_info_", 1760, 0, 0, 1, &ModelRow::boards},
    {"CPU modules", "current_cpu_module_info_", 2976, 0, 744, 4, &ModelRow::cpums},
    {"memory modules", "current_dimm_info_", 1792, 0, 56, 32, &ModelRow::dimms},
    {"I/O units", "current_iou_info_", 2016, 0, 0, 1, &ModelRow::ious},
    {"PCI slots", "current_iou_info_", 2016, 56, 40, 8, &ModelRow::slots},
    {"power supplies", "current_psu_info", 3360, 0, 56, 60, &ModelRow::psus},
    {"fan trays", "current_fantray_info", 6912, 0, 216, 32, &ModelRow::trays},
    {"service processor units", "current_mgb_info", 160, 0, 80, 2, &ModelRow::emgbus},
    {"service processor units of the second kind", "current_mgbr_info", 48, 0, 24, 2, &ModelRow::emgbrs},
};

class NewServer : public testing::TestWithParam<ModelRow> {
 protected:
  bool high_end() const { return GetParam().code >= 3 && GetParam().code <= 5; }

  const Bytes *find(std::uint32_t db_id, const std::string &name) const {
    const auto at = server_.records.at(db_id).find(name);
    return at == server_.records.at(db_id).end() ? nullptr : &at->second;
  }

  const Bytes &record(std::uint32_t db_id, const std::string &name, std::size_t size) const {
    static const Bytes kNone;
    const Bytes *found = find(db_id, name);
    EXPECT_TRUE(found != nullptr) << "database " << db_id << " holds no " << name;
    if (found == nullptr) return kNone;
    EXPECT_EQ(found->size(), size) << name;
    return *found;
  }

  // The entries of a kind that hold a unit.
  int units(const KindRow &kind, std::set<std::uint64_t> &ids) const {
    int units = 0;
    const bool one = std::string_view(kind.record).back() != '_';
    for (int number = 0; number < (one ? 1 : 16); ++number) {
      const Bytes *found = find(2, one ? kind.record : numbered(kind.record, number, 2));
      if (found == nullptr) continue;
      EXPECT_EQ(found->size(), kind.size) << kind.record;
      for (int entry = 0; entry < kind.entries; ++entry) {
        const std::size_t at = kind.first + kind.stride * static_cast<std::size_t>(entry);
        const std::uint32_t high = word(*found, at), low = word(*found, at + 4);
        if (high == 0 && low == 0) continue;
        ++units;
        ids.insert(std::uint64_t{high} << 32U | low);
        EXPECT_TRUE(box::unit_name(GetParam().code, {high, low})) << kind.record << " byte " << at;
        EXPECT_EQ(word(*found, at + 8), 0x80000000u) << kind.record << " byte " << at;
      }
    }
    return units;
  }

  // Every one of these values is another.
  void add_value(const std::string &what, std::uint32_t value) {
    EXPECT_NE(value, 0u) << what;
    const auto [at, is_new] = values_.emplace(value, what);
    EXPECT_TRUE(is_new) << what << " is " << value << ", as is " << at->second;
  }

  void add_name(const std::string &record, std::size_t size, std::size_t length_at) {
    const Bytes &bytes = this->record(4, record, size);
    if (bytes.empty()) return;
    const std::size_t length = bytes.at(length_at);
    EXPECT_GT(length, 0u) << record;
    EXPECT_LE(length, 18u) << record;
    const std::string name(bytes.begin() + static_cast<long>(length_at) + 1,
                           bytes.begin() + static_cast<long>(length_at + 1 + length));
    EXPECT_TRUE(names_.insert(name).second) << record << " names " << name << " a second time";
  }

  box::Contents server_ = box::new_server(GetParam().code);
  std::map<std::uint32_t, std::string> values_;
  std::set<std::string> names_;
};

TEST_P(NewServer, IsFullOfUnits) {
  for (const KindRow &kind : kKinds) {
    std::set<std::uint64_t> ids;
    EXPECT_EQ(units(kind, ids), GetParam().*kind.units) << kind.says;
    const bool one_board_in_two_records = GetParam().code == 2 && kind.units == &ModelRow::boards;
    EXPECT_EQ(ids.size(), static_cast<std::size_t>(GetParam().*kind.units) - one_board_in_two_records) << kind.says;
  }
  EXPECT_EQ(word(record(2, "current_panel_info", 64), 8), 0x80000000u);
}

TEST_P(NewServer, NumbersItsPciSlots) {
  const int slots = GetParam().slots / GetParam().ious;
  for (int iou = 0; iou < GetParam().ious; ++iou) {
    const Bytes &bytes = record(2, numbered("current_iou_info_", iou, 2), 2016);
    for (int slot = 0; slot < slots; ++slot) {
      const std::size_t at = 48 + 40 * static_cast<std::size_t>(slot);
      EXPECT_EQ(word(bytes, at + 24), static_cast<std::uint32_t>(slot)) << iou;
      EXPECT_EQ(word(bytes, at + 28), 0x40000000u) << iou << ": power of slot " << slot;
    }
  }
}

TEST_P(NewServer, HandsAnotherValueThroughForEveryUnit) {
  for (int board = 0; board < GetParam().boards; ++board) {
    const std::string number = numbered("", board, 2);
    for (const std::size_t at : {0UL, 4UL})
      add_value("setup " + number, word(record(1, "setup_cmu_info_" + number, 256), at));
    for (const std::size_t at : {24UL, 28UL, 44UL}) {
      add_value("current " + number, word(record(2, "current_cmu_info_" + number, 1760), at));
    }
  }
  values_.clear();
  for (int xsb = 0; high_end() && xsb < GetParam().boards * 4; ++xsb) {
    const Bytes &current = record(2, numbered("current_xsb_info_", xsb, 2), 152);
    for (const std::size_t at : {0UL, 52UL}) add_value("XSB " + std::to_string(xsb), word(current, at));
    record(1, numbered("setup_xsb_info_", xsb, 2), 192);
  }
  values_.clear();
  for (int domain = 0; domain < (high_end() ? 24 : 1); ++domain) {
    const Bytes &bytes = record(2, numbered("current_domain_info_", domain, 2), 1464);
    add_value("domain " + std::to_string(domain), word(bytes, 0));
    add_value("byte of domain " + std::to_string(domain), bytes.at(44));
  }
  values_.clear();
  const Bytes &psus = record(2, "current_psu_info", 3360);
  for (int psu = 0; psu < GetParam().psus; ++psu) {
    add_value("PSU " + std::to_string(psu), psus.at(56 * static_cast<std::size_t>(psu) + 24));
  }
  values_.clear();
  for (const std::size_t at : {0UL, 4UL, 12UL, 16UL}) add_value("local", word(record(3, "local_mgb_info", 280), at));
  EXPECT_EQ(record(3, "local_mgb_info", 280).at(20), 0);
  add_value("system", word(record(2, "current_system_info", 176), 32));
  EXPECT_EQ(word(record(2, "current_system_info", 176), 8), 0x80000000u);
}

TEST_P(NewServer, TellsAFanFromItsNeighbours) {
  const Bytes &trays = record(2, "current_fantray_info", 6912);
  std::uint8_t before = 0;
  for (int tray = 0; tray < GetParam().trays; ++tray) {
    for (std::size_t fan = 0; fan < 3; ++fan) {
      const std::size_t at = 216 * static_cast<std::size_t>(tray) + 32 + 56 * fan;
      if (word(trays, at) == 0) continue;
      EXPECT_EQ(word(trays, at), 0x80000000u);
      EXPECT_EQ(trays.at(at + 12) & 0x30, 0) << "healthy";
      EXPECT_NE(trays.at(at + 12), before) << tray << ' ' << fan;
      before = trays.at(at + 12);
    }
  }
}

TEST_P(NewServer, NamesEveryUnitDifferently) {
  const ModelRow &model = GetParam();
  const bool qb = model.code == 1 || model.code == 2;
  for (int board = 0; board < model.boards; ++board) {
    add_name(numbered("fru_cmu_info_", board, 2), 8192, 6187);
    add_name(numbered(high_end() ? "fru_iou_qe_info_" : "fru_iou_qb_info_", board, 2), 8192, 6187);
    for (int d = 0; d < 32; ++d) {
      const int number = board * 32 + d;
      const Bytes &dimm = record(4, numbered("fru_dimm_info_", number, 3), 256);
      if (dimm.at(95) == 0) continue;  // the model has no module there
      EXPECT_TRUE(names_.insert(std::string(dimm.begin() + 95, dimm.begin() + 99)).second) << number;
    }
    for (int k = 0; k < 4 && board * 4 + k < model.cpums; ++k) {
      add_name(numbered("fru_cpu_info_", board * 4 + k, 2), 8192, 6187);
    }
  }
  for (int psu = 0; psu < model.psus; ++psu) {
    add_name(numbered(qb ? "fru_psu_qb_info_" : "fru_psu_qe_info_", psu, 2), 320, 79);
  }
  for (int tray = 0; high_end() && tray < model.trays; ++tray) {
    add_name(numbered("fru_fan_qe_info_", tray, 2), 256, 43);
  }
  for (int unit = 0; unit < model.emgbus + model.emgbrs; ++unit) {
    add_name(numbered("fru_emgbu_info_", unit, 2), 8192, 6187);
  }
  if (model.code == 3) {
    add_name("fru_bpa_info", 8192, 6187);
    add_name("fru_ddca_info_00", 320, 64);
    add_name("fru_ddca_info_01", 320, 64);
    const Bytes &bp = record(2, "current_bp32_info", 1008);
    EXPECT_EQ(box::unit_name(3, {word(bp, 0), word(bp, 4)}), "/BP_A#0");
    EXPECT_EQ(box::unit_name(3, {word(bp, 456), word(bp, 460)}), "/DDC_A#0");
    EXPECT_EQ(box::unit_name(3, {word(bp, 496), word(bp, 500)}), "/DDC_A#1");
    EXPECT_EQ(word(bp, 504), 0x80000000u);
  }
}

INSTANTIATE_TEST_SUITE_P(Models, NewServer, testing::ValuesIn(kModels),
                         [](const auto &row) { return std::string(row.param.name); });

// The words of a file, the most significant byte first.
std::vector<std::uint32_t> words_of(const std::filesystem::path &file) {
  std::vector<std::uint32_t> words;
  std::ifstream in(file, std::ios::binary);
  for (char bytes[4]; in.read(bytes, 4);) {
    words.push_back(0);
    for (const char byte : bytes) words.back() = words.back() << 8 | static_cast<std::uint8_t>(byte);
  }
  return words;
}

TEST(Times, StandByTheFamilyTheUnitAndTheProgram) {
  const Scratch scratch;
  const box::Place place(scratch / "box");
  box::create_box(place, 3);
  const std::pair<const char *, std::uint32_t> families[] = {{"qa", 60}, {"qb", 70}, {"qe", 80}};
  for (const auto &[family, first] : families) {
    std::vector<std::uint32_t> control(64, 0);
    for (std::uint32_t unit = 0; unit < 12; ++unit) {
      control[unit] = first + unit;
      control[32 + unit] = first + 60 + unit;
    }
    EXPECT_EQ(words_of(place.etc() / (std::string("controltime_") + family)), control) << family;
    std::vector<std::uint32_t> commands{30, 30, 60, 300, 120, 10, 600, 10, 300, 60, 30, 30, 900, 300, 60, 120};
    commands.resize(32);
    EXPECT_EQ(words_of(place.etc() / (std::string("cmdtime_") + family)), commands) << family;
  }
}

}  // namespace
