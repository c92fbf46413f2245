#include <algorithm>

#include "host/box/contents.h"
#include "host/box/hardware.h"
#include "host/box/inventory_records.h"
#include "host/box/records.h"

namespace box {
namespace {

struct PartNumber {
  std::int32_t type;
  std::string_view text;
};
constexpr PartNumber kPartNumbers[] = {
    {LMAINTE_TYPE_CMU, "CM-2210-B3"},     {LMAINTE_TYPE_CPUM, "CP-1866-C1"},  {LMAINTE_TYPE_IOU, "IU-0808-A4"},
    {LMAINTE_TYPE_EMGBU, "SP-0405-D2"},   {LMAINTE_TYPE_EMGBR, "SR-0405-A1"}, {LMAINTE_TYPE_PSU, "PW-1600-E5"},
    {LMAINTE_TYPE_FANTRAY, "FT-0120-B2"}, {LMAINTE_TYPE_BP, "BP-3200-A1"},    {LMAINTE_TYPE_DDC, "DC-0048-C3"},
};

// A part number and the unit's own four digits; of a memory module, which has room for four characters, "D" and its number.
std::string fru_text(const UnitEntry &entry) {
  if (entry.fru.length_at == kNowhere) return "D" + entry.fru_record.substr(entry.fru_record.size() - 3);
  const std::uint32_t digits = 1000 + (entry.number * 137 + static_cast<std::uint32_t>(entry.type) * 59) % 9000;
  for (const PartNumber &part : kPartNumbers) {
    if (part.type == entry.type) return std::string(part.text) + " " + std::to_string(digits);
  }
  return "";
}

// The records of a new server while they are filled.
class NewRecords {
 public:
  explicit NewRecords(Contents &contents) : contents_(contents) {}

  Bytes &at(std::uint32_t db_id, const std::string &name, std::size_t size) {
    Bytes &record = contents_.records.at(db_id)[name];
    if (record.size() < size) record.resize(size);
    return record;
  }
  Bytes &at(std::uint32_t db_id, const RecordLayout &layout) {
    return at(db_id, std::string(layout.name), layout.size);
  }
  Bytes &at(std::uint32_t db_id, const RecordLayout &layout, std::uint32_t number) {
    return at(db_id, layout.of(number), layout.size);
  }
  // Those of a board, which has so many.
  void make(std::uint32_t db_id, const RecordLayout &layout, std::uint32_t board, std::uint32_t count) {
    for (std::uint32_t i = 0; i < count; ++i) at(db_id, layout, board * count + i);
  }

 private:
  Contents &contents_;
};

std::uint32_t units_of_type(const std::vector<UnitPlace> &places, std::int32_t type) {
  std::uint32_t count = 0;
  for (const UnitPlace &place : places) {
    for (const UnitEntry &entry : place.entries) count += entry.type == type && entry.at != kNowhere;
  }
  return count;
}

// Words that the library hands through and that mean something to the server's own tools only: revisions, say. Their
// upper half tells which word it is, the lower one whose.
void pass_on(Bytes &record, std::initializer_list<std::size_t> words, std::uint32_t owner) {
  for (const std::size_t word : words) {
    put_word(record, word * 4, static_cast<std::uint32_t>(word + 1) << 16 | (owner + 1));
  }
}

constexpr std::uint8_t kAllPowerSuppliesCount = 0x80;

void system_records(NewRecords &records, std::uint32_t model, const std::vector<UnitPlace> &places) {
  Bytes &general = records.at(LMAINTE_DB_GEN, kGeneralSystem);
  const bool two_records_one_board = model == LMAINTE_MODEL_QB2;
  put_word(general, kCmuCount, two_records_one_board ? 1 : units_of_type(places, LMAINTE_TYPE_CMU));
  put_word(general, kIouCount, units_of_type(places, LMAINTE_TYPE_IOU));
  put_word(general, kFantrayCount, units_of_type(places, LMAINTE_TYPE_FANTRAY));
  put_word(general, kPsuCount, units_of_type(places, LMAINTE_TYPE_PSU));
  records.at(LMAINTE_DB_SETUP, kSetupSystem);
  Bytes &current = records.at(LMAINTE_DB_CURRENT, kCurrentSystem);
  put_word(current, kSystemStatus, LMAINTE_STATUS_INSTALLED);
  pass_on(current, {8}, 0);
  current[kSystemFlags] = is_high_end(model) ? kAllPowerSuppliesCount : std::uint8_t{0};
  Bytes &local = records.at(LMAINTE_DB_LOCAL, kLocalServiceProcessor);
  pass_on(local, {0, 1, 3, 4}, 0);
  local[kOwnNumber] = 0;  // the first of the service processor units is the one that runs
}

constexpr std::uint32_t kOneXsb = 1;

// Two boards share a domain.
void domain_records(NewRecords &records, std::uint32_t model) {
  const std::uint32_t used = (boards_of(model) + 1) / 2;
  for (std::uint32_t domain = 0; domain < find_model(model)->domains; ++domain) {
    Bytes &record = records.at(LMAINTE_DB_CURRENT, kCurrentDomain, domain);
    pass_on(record, {0}, domain);
    if (domain < used) {
      put_word(record, kDomainStatus, word_at(record, kDomainStatus) | LMAINTE_STATUS_INSTALLED);
    }
    record[kDomainByte] = static_cast<std::uint8_t>(domain + 1);
  }
}

// The last board is divided into four extended system boards, the others are one each. One of the four is to change to
// the next domain.
void xsb_records(NewRecords &records, std::uint32_t board, bool divided) {
  for (std::uint32_t part = 0; part < kMostParts; ++part) {
    const bool spare = part > (divided ? 2u : 0u);
    const std::uint32_t domain = spare ? kNoDomain : board / 2;
    const std::uint32_t xsb = board * kMostParts + part;
    const std::uint32_t changes = divided && part == 2 ? 1 : 0;
    put_word(records.at(LMAINTE_DB_SETUP, kSetupXsb, xsb), kXsbSetupDomain, domain + changes);
    Bytes &current = records.at(LMAINTE_DB_CURRENT, kCurrentXsb, xsb);
    pass_on(current, {0, 13}, xsb);
    put_word(current, kXsbDomain, domain);
    current[kXsbActive] = spare ? std::uint8_t{0} : std::uint8_t{1};
  }
}

// Every record of a board must be there, also those of places that the model leaves empty.
void board_records(NewRecords &records, std::uint32_t model, std::uint32_t board) {
  const bool divided = is_high_end(model) && board + 1 == boards_of(model);
  pass_on(records.at(LMAINTE_DB_SETUP, kSetupCmu, board), {0, 1}, board);
  Bytes &cmu = records.at(LMAINTE_DB_CURRENT, kCurrentCmu, board);
  pass_on(cmu, {6, 7, 11}, board);
  put_word(cmu, kBoardParts, divided ? kMostParts : kOneXsb);
  for (const RecordLayout &layout : {kCurrentCpum, kCurrentDimm, kCurrentIou}) {
    records.at(LMAINTE_DB_CURRENT, layout, board);
  }
  records.at(LMAINTE_DB_FRU, kFruCmu, board);
  records.make(LMAINTE_DB_FRU, kFruCpum, board, kCpumsOfBoard);
  records.make(LMAINTE_DB_FRU, kFruDimm, board, kDimmsOfBoard);
  if (is_high_end(model)) xsb_records(records, board, divided);
}

constexpr std::uint32_t kPowerOn = 0x40000000;

// What a unit's entry holds besides its id, its status and its flags.
void more_of(const UnitEntry &entry, Bytes &record) {
  switch (entry.type) {
    case LMAINTE_TYPE_PSU:
      record.at(entry.at + kPsuInfoByte) = static_cast<std::uint8_t>(entry.number + 1);
      return;
    case LMAINTE_TYPE_PCI:
      put_word(record, entry.at + kSlotNumber, entry.number % kSlotsInRecord);
      put_word(record, entry.at + kSlotPower, kPowerOn);
      return;
    default:
      return;
  }
}

void unit_records(NewRecords &records, const UnitPlace &place) {
  for (const UnitEntry &entry : place.entries) {
    Bytes &record = records.at(LMAINTE_DB_CURRENT, entry.record, entry.size);
    put_word(record, entry.status_at, LMAINTE_STATUS_INSTALLED);
    if (entry.at == kNowhere) {  // a fan: the free bits of its flag byte tell it from its neighbours
      record.at(entry.flag_at) = static_cast<std::uint8_t>(1 + entry.number % 15);
      continue;
    }
    put_word(record, entry.at, place.id[0]);
    put_word(record, entry.at + 4, place.id[1]);
    more_of(entry, record);
    if (!entry.fru_record.empty()) records.at(LMAINTE_DB_FRU, entry.fru_record, 0) = fru_record_of(entry);
  }
}

}  // namespace

Bytes fru_record_of(const UnitEntry &entry) {
  Bytes record(entry.fru.size, 0);
  const std::string text = fru_text(entry);
  if (entry.fru.length_at != kNowhere) record.at(entry.fru.length_at) = static_cast<std::uint8_t>(text.size());
  std::copy(text.begin(), text.end(), record.begin() + static_cast<std::ptrdiff_t>(entry.fru.name_at));
  return record;
}

Contents new_server(std::uint32_t model) {
  Contents contents{.model = model, .records = {}, .hardware = after_power_on(model)};
  NewRecords records(contents);
  const std::vector<UnitPlace> places = places_of(model);
  system_records(records, model, places);
  domain_records(records, model);
  for (std::uint32_t board = 0; board < boards_of(model); ++board) board_records(records, model, board);
  for (const UnitPlace &unit : places) unit_records(records, unit);
  return contents;
}

}  // namespace box
