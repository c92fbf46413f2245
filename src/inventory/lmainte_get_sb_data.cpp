#include "include/lmainte.h"

#include "src/db/record.h"
#include "src/db/record_view.h"
#include "src/db/session_bracket.h"
#include "src/frame/trace.h"
#include "src/inventory/board_places.h"
#include "src/inventory/unit_entries.h"
#include "src/model/model_family.h"
#include "src/model/unit_range.h"
#include "src/model/unit_status.h"
#include "trace_events/inventory.h"

namespace {

using lmainte::Block;
using lmainte::BracketErrors;
using lmainte::Call;
using lmainte::Hold;
using lmainte::Record;
using lmainte::RecordView;
using lmainte::SessionBracket;
using lmainte::UnitRange;
using trace_events::GetSbData;
using trace_events::ReadCmu;
using trace_events::ReadCpuModules;
using trace_events::ReadDimms;
using trace_events::ReadIou;

lmainte::Trace trace;
constexpr Block kGetSbData = lmainte::block_of<GetSbData>();
constexpr Block kReadCmu = lmainte::block_of<ReadCmu>();
constexpr Block kReadIou = lmainte::block_of<ReadIou>();

constexpr BracketErrors kBoardsErrors = {
    .not_opened = GetSbData::kNotOpened,
    .not_locked = GetSbData::kNotLocked,
    .not_unlocked = GetSbData::kNotUnlocked,
    .not_closed = GetSbData::kNotClosed,
    .database_first = true,
};
constexpr BracketErrors kCmuErrors = {
    .not_opened = ReadCmu::kNotOpened,
    .not_locked = ReadCmu::kNotLocked,
    .not_unlocked = ReadCmu::kNotUnlocked,
    .not_closed = ReadCmu::kNotClosed,
    .database_first = true,
};
constexpr BracketErrors kIouErrors = {
    .not_opened = ReadIou::kNotOpened,
    .not_locked = ReadIou::kNotLocked,
    .not_unlocked = ReadIou::kNotUnlocked,
    .not_closed = ReadIou::kNotClosed,
    .database_first = true,
};
constexpr uint32_t kBoardDatabases[] = {LMAINTE_DB_SETUP, LMAINTE_DB_CURRENT, LMAINTE_DB_FRU};
constexpr uint32_t kUnitDatabases[] = {LMAINTE_DB_CURRENT, LMAINTE_DB_FRU};

constexpr size_t kXsbModeWord = 9;
void fill_xsbs(int32_t board, uint32_t xsb_mode, int32_t (&xsbs)[lmainte::kXsbsOfABoard]) {
  for (int32_t quarter = 0; quarter < lmainte::kXsbsOfABoard; ++quarter)
    xsbs[quarter] = lmainte::xsb_of(board, xsb_mode, quarter);
}

// What differs between the kinds of module on a board.
struct ModuleKind {
  int32_t type;
  int32_t count;
  size_t entry_words;
  int32_t (*number_at)(int32_t position);
  int32_t (*quarter_of)(int32_t number);
  void (*copy_name)(const RecordView &fru, char *name);
  Block block;
  lmainte::Point entry;
  BracketErrors bracket;
  lmainte::Error no_board, no_record, no_fru_record;
};

void copy_cpu_module_name(const RecordView &fru, char *name) {
  fru.copy_name(lmainte::kIdentityNameByte, name);
}

// A memory module has no name; four bytes of its record stand in the name's place.
void copy_dimm_identity(const RecordView &fru, char *name) {
  constexpr size_t kIdentityByte = 95;
  constexpr size_t kIdentitySize = 4;
  for (size_t i = 0; i < kIdentitySize; ++i) name[i] = static_cast<char>(fru.byte(kIdentityByte + i));
}

constexpr ModuleKind kCpuModules = {
    .type = LMAINTE_TYPE_CPUM,
    .count = 4,
    .entry_words = 186,
    .number_at = lmainte::cpu_module_at,
    .quarter_of = lmainte::quarter_of_cpu_module,
    .copy_name = copy_cpu_module_name,
    .block = lmainte::block_of<ReadCpuModules>(),
    .entry = ReadCpuModules::kEntry,
    .bracket =
        {
            .not_opened = ReadCpuModules::kNotOpened,
            .not_locked = ReadCpuModules::kNotLocked,
            .not_unlocked = ReadCpuModules::kNotUnlocked,
            .not_closed = ReadCpuModules::kNotClosed,
            .database_first = true,
        },
    .no_board = ReadCpuModules::kNoBoard,
    .no_record = ReadCpuModules::kNoRecord,
    .no_fru_record = ReadCpuModules::kNoFruRecord,
};
constexpr ModuleKind kDimms = {
    .type = LMAINTE_TYPE_DIMM,
    .count = 32,
    .entry_words = 14,
    .number_at = lmainte::dimm_at,
    .quarter_of = lmainte::quarter_of_dimm,
    .copy_name = copy_dimm_identity,
    .block = lmainte::block_of<ReadDimms>(),
    .entry = ReadDimms::kEntry,
    .bracket =
        {
            .not_opened = ReadDimms::kNotOpened,
            .not_locked = ReadDimms::kNotLocked,
            .not_unlocked = ReadDimms::kNotUnlocked,
            .not_closed = ReadDimms::kNotClosed,
            .database_first = true,
        },
    .no_board = ReadDimms::kNoBoard,
    .no_record = ReadDimms::kNoRecord,
    .no_fru_record = ReadDimms::kNoFruRecord,
};

void fill_module(const ModuleKind &kind, int32_t board, uint32_t xsb_mode, int32_t number, const RecordView &entry,
                 const RecordView &fru, UnitData &out) {
  lmainte::fill_head(kind.type, number, entry, out);
  out.mainte_status = out.status;
  if (lmainte::is_installed(out.status)) kind.copy_name(fru, out.fru_name);
  out.xsb = lmainte::xsb_of(board, xsb_mode, kind.quarter_of(number));
}

bool fill_modules(const Call &call, const ModuleKind &kind, int32_t board, int32_t model, UnitData *out) {
  Record cmu;
  Record current;
  if (!cmu.read(LMAINTE_DB_CURRENT, model, LMAINTE_TYPE_CMU, board) ||
      !current.read(LMAINTE_DB_CURRENT, model, kind.type, board)) {
    call.error(kind.no_record, LMAINTE_FAILED, board);
    return false;
  }
  const uint32_t xsb_mode = cmu.view().word(kXsbModeWord);
  for (int32_t position = 0; position < kind.count; ++position) {
    const int32_t number = kind.number_at(position);
    Record fru;
    if (!fru.read(LMAINTE_DB_FRU, model, kind.type, board * kind.count + number)) {
      call.error(kind.no_fru_record, LMAINTE_FAILED, number);
      return false;
    }
    const size_t entry = static_cast<size_t>(number) * kind.entry_words * sizeof(uint32_t);
    fill_module(kind, board, xsb_mode, number, current.view().at(entry), fru.view(), out[position]);
  }
  return true;
}

bool read_modules(const ModuleKind &kind, int32_t board, int32_t model, UnitData *out) {
  const Call call(trace, kind.block, kind.entry);
  if (board < 0) {
    call.error(kind.no_board, board);
    return false;
  }
  SessionBracket bracket(call, kind.bracket, kUnitDatabases, Hold::kLocked);
  return bracket.run([&] { return fill_modules(call, kind, board, model, out); });
}

// The state of a board's modules in one word: faulted if any is faulted, else degraded if any is degraded.
uint32_t aggregate(const UnitData *units, int32_t count) {
  uint32_t result = 0;
  for (int32_t i = 0; i < count; ++i) {
    const auto status = static_cast<uint32_t>(units[i].status);
    if (!lmainte::is_installed(status)) continue;
    if ((status & LMAINTE_STATUS_FAULTED) != 0) return LMAINTE_STATUS_INSTALLED | LMAINTE_STATUS_FAULTED;
    result |= LMAINTE_STATUS_INSTALLED;
    if ((status & LMAINTE_STATUS_DEGRADED) != 0) result |= LMAINTE_STATUS_DEGRADED;
  }
  return result;
}

void fill_cmu(int32_t board, const RecordView &setup, const RecordView &current, const RecordView &fru, CmuData &out) {
  const uint32_t xsb_mode = current.word(kXsbModeWord);
  lmainte::fill_head(LMAINTE_TYPE_CMU, board, current, out);
  out.mainte_status = out.status;
  out.parts_status = aggregate(out.cpum, kCpuModules.count) | aggregate(out.dimm, kDimms.count);
  out.cur_info_6 = current.word(6);
  out.cur_info_7 = current.word(7);
  out.setup_info_0 = setup.word(0);
  out.setup_info_1 = setup.word(1);
  out.xsb_mode = static_cast<int32_t>(xsb_mode);
  out.cur_info_11 = current.word(11);
  if (lmainte::is_installed(out.status)) fru.copy_name(lmainte::kIdentityNameByte, out.fru_name);
  fill_xsbs(board, xsb_mode, out.xsb);
}

bool read_cmu(int32_t board, int32_t model, CmuData &out) {
  const Call call(trace, kReadCmu);
  SessionBracket bracket(call, kCmuErrors, kBoardDatabases, Hold::kLocked);
  return bracket.run([&] {
    Record setup;
    Record current;
    Record fru;
    if (!setup.read(LMAINTE_DB_SETUP, model, LMAINTE_TYPE_CMU, board) ||
        !current.read(LMAINTE_DB_CURRENT, model, LMAINTE_TYPE_CMU, board) ||
        !fru.read(LMAINTE_DB_FRU, model, LMAINTE_TYPE_CMU, board)) {
      call.error(ReadCmu::kNoRecord, LMAINTE_FAILED, board);
      return false;
    }
    const int32_t level = lmainte::board_level(board);
    if (!read_modules(kCpuModules, level, model, out.cpum) || !read_modules(kDimms, level, model, out.dimm)) {
      call.error(ReadCmu::kModulesNotRead, LMAINTE_FAILED, board);
      return false;
    }
    fill_cmu(board, setup.view(), current.view(), fru.view(), out);
    return true;
  });
}

void fill_iou(int32_t board, uint32_t xsb_mode, const RecordView &current, const RecordView &fru, IouData &out) {
  lmainte::fill_head(LMAINTE_TYPE_IOU, board, current, out);
  // Always installed and normal: the displays take the IOU's own fault from parts_status.
  out.mainte_status = LMAINTE_STATUS_INSTALLED;
  out.parts_status = out.status;
  if (lmainte::is_installed(out.status)) fru.copy_name(lmainte::kIdentityNameByte, out.fru_name);
  fill_xsbs(board, xsb_mode, out.xsb);
}

bool read_iou(int32_t board, int32_t model, IouData &out) {
  const Call call(trace, kReadIou);
  SessionBracket bracket(call, kIouErrors, kUnitDatabases, Hold::kLocked);
  return bracket.run([&] {
    Record cmu;
    Record current;
    Record fru;
    if (!cmu.read(LMAINTE_DB_CURRENT, model, LMAINTE_TYPE_CMU, board) ||
        !current.read(LMAINTE_DB_CURRENT, model, LMAINTE_TYPE_IOU, board) ||
        !fru.read(LMAINTE_DB_FRU, model, LMAINTE_TYPE_IOU, board)) {
      call.error(ReadIou::kNoRecord, LMAINTE_FAILED, board);
      return false;
    }
    fill_iou(board, cmu.view().word(kXsbModeWord), current.view(), fru.view(), out);
    return true;
  });
}

// All CMUs come before the first IOU.
bool read_boards(const Call &call, const UnitRange &range, int32_t model, SbData *out) {
  for (int32_t i = 0; i < range.count; ++i) {
    if (read_cmu(range.first + i, model, out[i].cmu)) continue;
    call.error(GetSbData::kCmuNotRead, LMAINTE_FAILED);
    return false;
  }
  for (int32_t i = 0; i < range.count; ++i) {
    if (read_iou(range.first + i, model, out[i].iou)) continue;
    call.error(GetSbData::kIouNotRead, LMAINTE_FAILED);
    return false;
  }
  return true;
}

}  // namespace

int32_t lmainte_get_sb_data(int32_t sb, int32_t count, int32_t model, SbData *out) {
  const Call call(trace, kGetSbData);
  if (count <= 0 || out == nullptr) {
    call.error(GetSbData::kRefused, count);
    return LMAINTE_FAILED;
  }
  if (!lmainte::is_model(model)) {
    call.error(GetSbData::kNoModel, model);
    return LMAINTE_FAILED;
  }
  const UnitRange range = lmainte::range_of(sb, count);
  SessionBracket bracket(call, kBoardsErrors, kBoardDatabases, Hold::kOpen);
  return bracket.run([&] { return read_boards(call, range, model, out); }) ? LMAINTE_OK : LMAINTE_FAILED;
}
