#include "include/lmainte.h"

#include "src/db/access_table.h"
#include "src/frame/trace.h"
#include "src/inventory/unit_range.h"
#include "src/model/model_family.h"
#include "src/model/unit_status.h"

namespace {

using lmainte::AccessTable;
using lmainte::Block;
using lmainte::Call;
using lmainte::Family;
using lmainte::RecordView;
using lmainte::UnitRange;

lmainte::Trace trace;
constexpr Block kGetPsuData = lmainte::plain_block(0x040);
constexpr Block kFetch = lmainte::plain_block(0x048);
constexpr Block kRead = lmainte::plain_block(0x049);

// The record "current_psu_info": sixty entries.
constexpr int32_t kRecordSize = 3360;
constexpr int32_t kEntrySize = 56;
constexpr int32_t kEntries = kRecordSize / kEntrySize;
constexpr size_t kStatusWord = 2;
constexpr size_t kFlagByte = 20;
constexpr size_t kInfoByte = 24;

constexpr int32_t kFruRecordSize = 320;
constexpr size_t kNameLengthByte = 79;
constexpr uint8_t kNoInfo = 255;

// What one family has of its own. The entry model keeps its FRU records under the high end's names.
struct FamilyRow {
  Family family;
  const char *fru_record;
  bool has_info_byte;
};

constexpr FamilyRow kFamilies[] = {
    {Family::kQb, "fru_psu_qb_info_%02d", true},
    {Family::kQa, "fru_psu_qe_info_%02d", true},
    {Family::kQe, "fru_psu_qe_info_%02d", false},
};

const FamilyRow *row_of(int32_t model) {
  for (const FamilyRow &row : kFamilies)
    if (row.family == lmainte::family_of(static_cast<uint32_t>(model))) return &row;
  return nullptr;
}

// The power supplies' entries in the current record.
class Entries {
 public:
  explicit Entries(const void *record) : record_(record) {}

  static bool has(int32_t number) { return number >= 0 && number < kEntries; }
  RecordView entry(int32_t number) const {
    return RecordView(record_).at(static_cast<size_t>(number) * static_cast<size_t>(kEntrySize));
  }
  uint32_t status(int32_t number) const {
    const RecordView view = entry(number);
    return lmainte::merged_status(view.word(kStatusWord), view.byte(kFlagByte));
  }

  // A power supply that is not installed may lack its FRU record.
  static bool may_lack_fru(const void *entries, int32_t number) {
    return has(number) && !lmainte::is_installed(static_cast<const Entries *>(entries)->status(number));
  }

 private:
  const void *record_;
};

void fill(const Entries &entries, int32_t number, const FamilyRow &family, PsuData &out) {
  const RecordView entry = entries.entry(number);
  const auto status = static_cast<int32_t>(entries.status(number));
  out.type = LMAINTE_TYPE_PSU;
  out.number = number;
  out.unit_id[0] = entry.word(0);
  out.unit_id[1] = entry.word(1);
  out.status = status;
  out.mainte_status = status;
  out.info_byte = family.has_info_byte ? entry.byte(kInfoByte) : kNoInfo;
  out.flags = entry.byte(kFlagByte);
}

bool read(const UnitRange &range, const FamilyRow &family, const Entries &entries, const AccessTable &names,
          PsuData *out) {
  Call call(trace, kRead);
  for (int32_t i = 0; i < range.count; ++i) {
    const int32_t number = range.first + i;
    if (!Entries::has(number)) {
      call.error(1, number);
      return false;
    }
    fill(entries, number, family, out[i]);
    if (!lmainte::is_installed(entries.status(number))) continue;
    const void *fru = names.find(number);
    if (fru == nullptr) {
      call.error(2, number);
      return false;
    }
    RecordView(fru).copy_name(kNameLengthByte, out[i].fru_name);
  }
  return true;
}

bool fetch_and_read(const UnitRange &range, const FamilyRow &family, PsuData *out) {
  Call call(trace, kFetch);
  AccessTable current(0, 1, kRecordSize, "current_psu_info");
  if (!current.fetch(LMAINTE_DB_CURRENT)) {
    call.error(1);
    return false;
  }
  const void *record = current.find(0);
  if (record == nullptr) {
    call.error(2);
    return false;
  }
  const Entries entries(record);
  AccessTable names(range.first, range.count, kFruRecordSize, family.fru_record);
  if (!names.fetch(LMAINTE_DB_FRU, {Entries::may_lack_fru, &entries})) {
    call.error(3, range.first, range.count);
    return false;
  }
  return read(range, family, entries, names, out);
}

}  // namespace

int32_t lmainte_get_psu_data(int32_t psu, int32_t count, int32_t model, PsuData *out) {
  Call call(trace, kGetPsuData);
  const FamilyRow *family = row_of(model);
  if (count == 0 || out == nullptr || family == nullptr) {
    call.error(1, count, model);
    return LMAINTE_FAILED;
  }
  const UnitRange range = lmainte::range_of(psu, count);
  if (!fetch_and_read(range, *family, out)) {
    call.error(2, range.first, range.count);
    return LMAINTE_FAILED;
  }
  return LMAINTE_OK;
}
