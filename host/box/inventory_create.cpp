#include <array>
#include <fstream>
#include <map>

#include "host/box/database.h"
#include "host/box/event_log.h"
#include "host/box/inventory.h"
#include "host/box/inventory_records.h"
#include "host/box/programs.h"
#include "host/box/trace_ring.h"
#include "include/lmainte.h"

namespace box {
namespace {

namespace fs = std::filesystem;

struct PartNumber {
  std::int32_t type;
  std::string_view text;
};
constexpr PartNumber kPartNumbers[] = {
    {LMAINTE_TYPE_CMU, "CM-2210-B3"},     {LMAINTE_TYPE_CPUM, "CP-1866-C1"},  {LMAINTE_TYPE_IOU, "IU-0808-A4"},
    {LMAINTE_TYPE_EMGBU, "SP-0405-D2"},   {LMAINTE_TYPE_EMGBR, "SR-0405-A1"}, {LMAINTE_TYPE_PSU, "PW-1600-E5"},
    {LMAINTE_TYPE_FANTRAY, "FT-0120-B2"}, {LMAINTE_TYPE_BP, "BP-3200-A1"},    {LMAINTE_TYPE_DDC, "DC-0048-C3"},
};
constexpr std::string_view kDimmText = "DR16";

// A part number and the unit's own four digits, which follow from the name of its record.
std::string fru_text(const UnitEntry &entry) {
  std::uint32_t digits = 0;
  for (const char character : entry.fru_record) digits = digits * 31 + static_cast<unsigned char>(character);
  for (const PartNumber &part : kPartNumbers) {
    if (part.type == entry.type) return std::string(part.text) + " " + std::to_string(1000 + digits % 9000);
  }
  return "";
}

// The records of a new box, by database.
class NewRecords {
 public:
  Bytes &at(std::uint32_t db_id, const std::string &name, std::size_t size) {
    Bytes &record = records_.at(db_id)[name];
    if (record.size() < size) record.resize(size);
    return record;
  }

  void write(const Place &place) const {
    for (std::uint32_t db_id = 0; db_id < kDatabaseCount; ++db_id) {
      fs::create_directories(place.database(db_id));
      Database database(place.database(db_id), true);
      if (!database.lock()) throw InventoryError(place.database(db_id).string() + " is locked by another process.");
      for (const auto &[name, record] : records_[db_id]) database.put(name, record);
      if (!database.unlock()) throw InventoryError(place.database(db_id).string() + " could not be written.");
    }
  }

 private:
  std::array<std::map<std::string, Bytes>, kDatabaseCount> records_;
};

bool high_end(std::uint32_t model) {
  return model >= LMAINTE_MODEL_QE1 && model <= LMAINTE_MODEL_QE3;
}

std::uint32_t units_of_type(const std::vector<UnitPlace> &places, std::int32_t type) {
  std::uint32_t count = 0;
  for (const UnitPlace &place : places) {
    for (const UnitEntry &entry : place.entries) count += entry.type == type && entry.at != kNowhere;
  }
  return count;
}

constexpr std::uint8_t kAllPowerSuppliesCount = 0x80;

void system_records(NewRecords &records, std::uint32_t model, const std::vector<UnitPlace> &places) {
  Bytes &general = records.at(LMAINTE_DB_GEN, "gen_system_info", 1408);
  const bool two_records_one_board = model == LMAINTE_MODEL_QB2;
  put_word(general, 0, two_records_one_board ? 1 : units_of_type(places, LMAINTE_TYPE_CMU));
  put_word(general, 4, units_of_type(places, LMAINTE_TYPE_IOU));
  put_word(general, 24, units_of_type(places, LMAINTE_TYPE_FANTRAY));
  put_word(general, 32, units_of_type(places, LMAINTE_TYPE_PSU));
  records.at(LMAINTE_DB_SETUP, "setup_system_info", 248);
  Bytes &current = records.at(LMAINTE_DB_CURRENT, "current_system_info", 176);
  current[148] = high_end(model) ? kAllPowerSuppliesCount : std::uint8_t{0};
  records.at(LMAINTE_DB_LOCAL, "local_mgb_info", 280);
  for (std::uint32_t domain = 0; domain < (high_end(model) ? 24 : 1); ++domain) {
    records.at(LMAINTE_DB_CURRENT, numbered("current_domain_info_%02d", domain), 1464);
  }
}

constexpr std::uint32_t kOneXsb = 1, kFourXsbs = 4, kNoDomain = 0xFF;

// The last board is divided into four extended system boards, the others are one each; two boards share a domain.
void xsb_records(NewRecords &records, std::uint32_t board, bool divided) {
  for (std::uint32_t part = 0; part < 4; ++part) {
    const bool spare = part > (divided ? 2u : 0u);
    const std::uint32_t domain = spare ? kNoDomain : board / 2;
    const std::uint32_t xsb = board * 4 + part;
    put_word(records.at(LMAINTE_DB_SETUP, numbered("setup_xsb_info_%02d", xsb), 192), 128, domain);
    Bytes &current = records.at(LMAINTE_DB_CURRENT, numbered("current_xsb_info_%02d", xsb), 152);
    put_word(current, 56, domain);
    current[61] = spare ? std::uint8_t{0} : std::uint8_t{1};
  }
}

// Every record of a board must be there, also those of places that the model leaves empty.
void board_records(NewRecords &records, std::uint32_t model, std::uint32_t board) {
  const bool divided = high_end(model) && board + 1 == boards_of(model);
  records.at(LMAINTE_DB_SETUP, numbered("setup_cmu_info_%02d", board), 256);
  put_word(records.at(LMAINTE_DB_CURRENT, numbered("current_cmu_info_%02d", board), 1760), 36,
           divided ? kFourXsbs : kOneXsb);
  records.at(LMAINTE_DB_CURRENT, numbered("current_cpu_module_info_%02d", board), 2976);
  records.at(LMAINTE_DB_CURRENT, numbered("current_dimm_info_%02d", board), 1792);
  records.at(LMAINTE_DB_CURRENT, numbered("current_iou_info_%02d", board), 2016);
  records.at(LMAINTE_DB_FRU, numbered("fru_cmu_info_%02d", board), 8192);
  for (std::uint32_t k = 0; k < 4; ++k) {
    records.at(LMAINTE_DB_FRU, numbered("fru_cpu_info_%02d", board * 4 + k), 8192);
  }
  for (std::uint32_t d = 0; d < 32; ++d)
    records.at(LMAINTE_DB_FRU, numbered("fru_dimm_info_%03d", board * 32 + d), 256);
  if (high_end(model)) xsb_records(records, board, divided);
}

constexpr std::size_t kPsuInfoByte = 24;

void unit_records(NewRecords &records, const UnitPlace &place) {
  for (const UnitEntry &entry : place.entries) {
    Bytes &record = records.at(LMAINTE_DB_CURRENT, entry.record, entry.size);
    put_word(record, entry.status_at, LMAINTE_STATUS_INSTALLED);
    if (entry.at == kNowhere) continue;
    put_word(record, entry.at, place.id[0]);
    put_word(record, entry.at + 4, place.id[1]);
    if (entry.type == LMAINTE_TYPE_PSU) record.at(entry.at + kPsuInfoByte) = 1;
    if (!entry.fru_record.empty()) records.at(LMAINTE_DB_FRU, entry.fru_record, 0) = fru_record_of(entry);
  }
}

void write_words(const fs::path &file, const std::vector<std::uint32_t> &words) {
  std::ofstream out(file, std::ios::binary);
  for (const std::uint32_t word : words) {
    for (int shift = 24; shift >= 0; shift -= 8) out.put(static_cast<char>(word >> shift & 0xFFu));
  }
  out.close();
  if (!out) throw InventoryError(file.string() + " could not be written. See the disk and the folder's permissions.");
}

// Seconds. Control times stand by unit slot, twice; command times by the number of the control program.
void time_files(const fs::path &etc) {
  std::vector<std::uint32_t> control(64, 0), commands(32, 0);
  for (std::size_t slot = 0; slot < 12; ++slot) {
    control[slot] = 60;
    control[32 + slot] = 120;
  }
  constexpr std::array<std::uint32_t, 16> kCommandTimes{30,  30, 60, 300, 120, 10,  600, 10,
                                                        300, 60, 30, 30,  900, 300, 60,  120};
  for (std::size_t command = 0; command < kCommandTimes.size(); ++command) commands[command] = kCommandTimes[command];
  for (const std::string family : {"qa", "qb", "qe"}) {
    write_words(etc / ("controltime_" + family), control);
    write_words(etc / ("cmdtime_" + family), commands);
  }
}

void program_links(const Place &place) {
  for (const Program &program : kPrograms) {
    const fs::path link = place.root() / std::string(program.path).substr(1);
    fs::create_directories(link.parent_path());
    fs::create_symlink(kControlProgram, link);
  }
  fs::create_directories(place.root() / "mgb/lib");
}

void touch(const fs::path &file) {
  if (!std::ofstream(file)) throw InventoryError(file.string() + " could not be written.");
}

}  // namespace

Bytes fru_record_of(const UnitEntry &entry) {
  Bytes record(entry.fru.size, 0);
  const bool dimm = entry.fru.length_at == kNowhere;
  const std::string text = dimm ? std::string(kDimmText) : fru_text(entry);
  if (!dimm) record.at(entry.fru.length_at) = static_cast<std::uint8_t>(text.size());
  std::memcpy(record.data() + entry.fru.name_at, text.data(), text.size());
  return record;
}

void create_box(const Place &place, std::uint32_t model) {
  const std::vector<UnitPlace> places = places_of(model);
  NewRecords records;
  system_records(records, model, places);
  for (std::uint32_t board = 0; board < boards_of(model); ++board) board_records(records, model, board);
  for (const UnitPlace &unit : places) unit_records(records, unit);

  for (const fs::path &folder : {place.tmp(), place.etc(), place.trace().parent_path(), place.hardware()}) {
    fs::create_directories(folder);
  }
  program_links(place);
  time_files(place.etc());
  TraceRing::create(place.trace());
  touch(place.events());
  records.write(place);
  Hardware(place, true).prepare(high_end(model));
  touch(place.tmp() / ("." + std::string(model_name(model))));
}

void remove_box(const Place &place) {
  fs::remove_all(place.root() / "mgb");
  fs::remove_all(place.tmp());
}

}  // namespace box
