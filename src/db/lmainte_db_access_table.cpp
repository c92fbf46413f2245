#include "include/lmainte.h"

#include <cerrno>
#include <cstdlib>

#include "include/lmainte_platform.h"
#include "src/db/access_table.h"
#include "src/db/record_name.h"
#include "src/db/session_bracket.h"
#include "src/frame/trace.h"
#include "trace_events/db.h"

namespace {

using lmainte::Absence;
using lmainte::Block;
using lmainte::Call;
using trace_events::FreeAccessTable;
using trace_events::GetData;
using trace_events::MakeAccessTable;

lmainte::Trace trace;
constexpr Block kGetData = lmainte::block_of<GetData>();
constexpr Block kMake = lmainte::block_of<MakeAccessTable>();
constexpr Block kFree = lmainte::block_of<FreeAccessTable>();

constexpr lmainte::BracketErrors kBracketErrors = {
    .not_opened = GetData::kNotOpened,
    .not_locked = GetData::kNotLocked,
    .not_unlocked = GetData::kNotUnlocked,
    .not_closed = GetData::kNotClosed,
};

constexpr int32_t kFailed = -1;

// Reads one record into its entry, which owns the buffer that the client hands over, also after a failure. `name` is that of
// the entry before.
bool read_record(const Call &call, uint32_t db_id, lmainte_access_entry &entry, lmainte::RecordName &name,
                 const Absence &absence) {
  name.fill(entry.name, entry.index);
  const int32_t expected = entry.size;
  const int32_t result = scdb_get(db_id, name.text(), &entry.data, &entry.size, 0);
  if (result == LMAINTE_OK && entry.size == expected) return true;
  if (result != LMAINTE_OK && absence.is_tolerated != nullptr && absence.is_tolerated(absence.context, entry.index))
    return true;
  call.system_error(GetData::kNotRead, result, entry.index);
  call.error(GetData::kOtherSize, expected, entry.size);
  return false;
}

int32_t get_data(uint32_t db_id, lmainte_access_entry *table, const Absence &absence) {
  Call call(trace, kGetData);
  if (table == nullptr) {
    call.error(GetData::kNoTable);
    return kFailed;
  }
  const uint32_t db_ids[] = {db_id};
  lmainte::SessionBracket bracket(call, kBracketErrors, db_ids, lmainte::Hold::kLocked);
  lmainte::RecordName name;
  const bool good = bracket.run([&] {
    for (lmainte_access_entry *entry = table; entry->index >= 0; ++entry)
      if (!read_record(call, db_id, *entry, name, absence)) return false;
    return true;
  });
  return good ? LMAINTE_OK : kFailed;
}

}  // namespace

namespace lmainte {

bool AccessTable::fetch(uint32_t db_id, const Absence &absence) {
  return entries_ != nullptr && get_data(db_id, entries_, absence) == LMAINTE_OK;
}

}  // namespace lmainte

lmainte_access_entry *lmainte_db_make_access_table(int32_t first, int32_t count, int32_t size, const char *name) {
  Call call(trace, kMake);
  if (first < 0 || count < 1 || size < 1 || name == nullptr) {
    call.error(MakeAccessTable::kRefused, first, count);
    call.error(MakeAccessTable::kRefusedSize, size);
    return nullptr;
  }
  const auto records = static_cast<size_t>(count);
  auto *table = static_cast<lmainte_access_entry *>(calloc(records + 1, sizeof(lmainte_access_entry)));
  if (table == nullptr) {
    call.system_call_failed(MakeAccessTable::kNoMemory);
    return nullptr;
  }
  for (size_t i = 0; i < records; ++i) {
    const auto index = static_cast<int32_t>(static_cast<uint32_t>(first) + static_cast<uint32_t>(i));
    table[i] = {index, size, name, nullptr};
  }
  table[records] = {-1, -1, nullptr, nullptr};
  return table;
}

int32_t lmainte_db_get_data(uint32_t db_id, lmainte_access_entry *table) {
  return get_data(db_id, table, {});
}

void lmainte_db_free_access_table(lmainte_access_entry *table) {
  Call call(trace, kFree);
  if (table == nullptr) {
    call.error(FreeAccessTable::kNoTable);
    return;
  }
  for (lmainte_access_entry *entry = table; entry->index >= 0; ++entry) {
    if (entry->data == nullptr)
      call.error(FreeAccessTable::kNeverRead, entry->index);
    else
      free(entry->data);
  }
  free(table);
}
