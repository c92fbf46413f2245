#include "include/lmainte.h"

#include "src/db/record.h"
#include "src/db/record_view.h"
#include "src/db/session_bracket.h"
#include "src/frame/trace.h"
#include "src/inventory/unit_entries.h"
#include "src/model/model_family.h"
#include "src/model/unit_range.h"
#include "src/model/unit_status.h"

namespace {

using lmainte::Block;
using lmainte::BracketEvents;
using lmainte::Call;
using lmainte::Hold;
using lmainte::Record;
using lmainte::RecordView;
using lmainte::SessionBracket;
using lmainte::UnitRange;

lmainte::Trace trace;
constexpr Block kGetSbData = lmainte::plain_block(0x003);
constexpr Block kReadCmu = lmainte::plain_block(0x004);
constexpr Block kReadCpuModules = lmainte::plain_block(0x005);
constexpr Block kReadIou = lmainte::second_block(0x00A);
constexpr Block kReadDimms = lmainte::second_block(0x00B);

constexpr BracketEvents kBracketEvents = {.open = 1, .lock = 2, .unlock = 3, .close = 4, .database_first = true};
constexpr uint32_t kBoardDatabases[] = {LMAINTE_DB_SETUP, LMAINTE_DB_CURRENT, LMAINTE_DB_FRU};
constexpr uint32_t kUnitDatabases[] = {LMAINTE_DB_CURRENT, LMAINTE_DB_FRU};

constexpr size_t kXsbModeWord = 9;
constexpr uint32_t kOneXsb = 1;
constexpr uint32_t kXsbsOfABoard = 4;

// The extended system board that holds a quarter of a board.
int32_t xsb_of(int32_t board, uint32_t xsb_mode, int32_t quarter) {
  const uint32_t first = static_cast<uint32_t>(board) * kXsbsOfABoard;
  return static_cast<int32_t>(xsb_mode == kOneXsb ? first : first + static_cast<uint32_t>(quarter));
}

void fill_xsbs(int32_t board, uint32_t xsb_mode, int32_t (&xsbs)[kXsbsOfABoard]) {
  for (int32_t quarter = 0; quarter < static_cast<int32_t>(kXsbsOfABoard); ++quarter)
    xsbs[quarter] = xsb_of(board, xsb_mode, quarter);
}

// What one kind of module on a board has of its own.
struct ModuleKind {
  const Block &block;
  int32_t type;
  int32_t count;
  size_t entry_words;
  int32_t (*number_at)(int32_t position);
  int32_t (*quarter_of)(int32_t number);
  void (*copy_name)(const RecordView &fru, char *name);
};

int32_t cpu_module_at(int32_t position) {
  return position;
}
int32_t quarter_of_cpu_module(int32_t number) {
  return number;
}
void copy_cpu_module_name(const RecordView &fru, char *name) {
  fru.copy_name(lmainte::kIdentityNameByte, name);
}

// The order in which the operator's lists have always shown the memory modules: eight by eight, as they sit on the board.
int32_t dimm_at(int32_t position) {
  constexpr int32_t kOfEight[] = {17, 19, 16, 18, 1, 3, 0, 2};
  return position / 8 * 4 + kOfEight[position % 8];
}

// Modules 0 to 15 fill the quarters four by four, modules 16 to 31 once more.
int32_t quarter_of_dimm(int32_t number) {
  return number % 16 / 4;
}

// A memory module has no name; four bytes of its record stand in the name's place.
void copy_dimm_identity(const RecordView &fru, char *name) {
  constexpr size_t kIdentityByte = 95;
  constexpr size_t kIdentitySize = 4;
  for (size_t i = 0; i < kIdentitySize; ++i) name[i] = static_cast<char>(fru.byte(kIdentityByte + i));
}

constexpr ModuleKind kCpuModules = {kReadCpuModules,       LMAINTE_TYPE_CPUM,   4, 186, cpu_module_at,
                                    quarter_of_cpu_module, copy_cpu_module_name};
constexpr ModuleKind kDimms = {kReadDimms, LMAINTE_TYPE_DIMM, 32, 14, dimm_at, quarter_of_dimm, copy_dimm_identity};

void fill_module(const ModuleKind &kind, int32_t board, uint32_t xsb_mode, int32_t number, const RecordView &entry,
                 const RecordView &fru, UnitData &out) {
  lmainte::fill_head(kind.type, number, entry, out);
  out.mainte_status = out.status;
  if (lmainte::is_installed(out.status)) kind.copy_name(fru, out.fru_name);
  out.xsb = xsb_of(board, xsb_mode, kind.quarter_of(number));
}

bool fill_modules(const Call &call, const ModuleKind &kind, int32_t board, int32_t model, UnitData *out) {
  Record cmu;
  Record current;
  if (!cmu.read(LMAINTE_DB_CURRENT, model, LMAINTE_TYPE_CMU, board) ||
      !current.read(LMAINTE_DB_CURRENT, model, kind.type, board)) {
    call.error(6, LMAINTE_FAILED, board);
    return false;
  }
  const uint32_t xsb_mode = cmu.view().word(kXsbModeWord);
  for (int32_t position = 0; position < kind.count; ++position) {
    const int32_t number = kind.number_at(position);
    Record fru;
    if (!fru.read(LMAINTE_DB_FRU, model, kind.type, board * kind.count + number)) {
      call.error(7, LMAINTE_FAILED, number);
      return false;
    }
    const size_t entry = static_cast<size_t>(number) * kind.entry_words * sizeof(uint32_t);
    fill_module(kind, board, xsb_mode, number, current.view().at(entry), fru.view(), out[position]);
  }
  return true;
}

// A board as the first level of a position within the server: one byte, of which 0xFF says that there is none; -1 then.
int32_t board_level(int32_t board) {
  const int32_t level = board & 0xFF;
  return level == 0xFF ? -1 : level;
}

bool read_modules(const ModuleKind &kind, int32_t board, int32_t model, UnitData *out) {
  const Call call(trace, kind.block);
  if (board < 0) {
    call.error(5, board);
    return false;
  }
  SessionBracket bracket(call, kBracketEvents, kUnitDatabases, Hold::kLocked);
  return bracket.run([&] { return fill_modules(call, kind, board, model, out); });
}

// The state of a board's modules in one word: the first faulted one decides, else any degraded one.
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
  SessionBracket bracket(call, kBracketEvents, kBoardDatabases, Hold::kLocked);
  return bracket.run([&] {
    Record setup;
    Record current;
    Record fru;
    if (!setup.read(LMAINTE_DB_SETUP, model, LMAINTE_TYPE_CMU, board) ||
        !current.read(LMAINTE_DB_CURRENT, model, LMAINTE_TYPE_CMU, board) ||
        !fru.read(LMAINTE_DB_FRU, model, LMAINTE_TYPE_CMU, board)) {
      call.error(5, LMAINTE_FAILED, board);
      return false;
    }
    const int32_t level = board_level(board);
    if (!read_modules(kCpuModules, level, model, out.cpum) || !read_modules(kDimms, level, model, out.dimm)) {
      call.error(6, LMAINTE_FAILED, board);
      return false;
    }
    fill_cmu(board, setup.view(), current.view(), fru.view(), out);
    return true;
  });
}

void fill_iou(int32_t board, uint32_t xsb_mode, const RecordView &current, const RecordView &fru, IouData &out) {
  lmainte::fill_head(LMAINTE_TYPE_IOU, board, current, out);
  // Installed and normal whatever the IOU's state is: the displays show its own fault from parts_status.
  out.mainte_status = LMAINTE_STATUS_INSTALLED;
  out.parts_status = out.status;
  if (lmainte::is_installed(out.status)) fru.copy_name(lmainte::kIdentityNameByte, out.fru_name);
  fill_xsbs(board, xsb_mode, out.xsb);
}

bool read_iou(int32_t board, int32_t model, IouData &out) {
  const Call call(trace, kReadIou);
  SessionBracket bracket(call, kBracketEvents, kUnitDatabases, Hold::kLocked);
  return bracket.run([&] {
    Record cmu;
    Record current;
    Record fru;
    if (!cmu.read(LMAINTE_DB_CURRENT, model, LMAINTE_TYPE_CMU, board) ||
        !current.read(LMAINTE_DB_CURRENT, model, LMAINTE_TYPE_IOU, board) ||
        !fru.read(LMAINTE_DB_FRU, model, LMAINTE_TYPE_IOU, board)) {
      call.error(5, LMAINTE_FAILED, board);
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
    call.error(7, LMAINTE_FAILED);
    return false;
  }
  for (int32_t i = 0; i < range.count; ++i) {
    if (read_iou(range.first + i, model, out[i].iou)) continue;
    call.error(8, LMAINTE_FAILED);
    return false;
  }
  return true;
}

}  // namespace

int32_t lmainte_get_sb_data(int32_t sb, int32_t count, int32_t model, SbData *out) {
  const Call call(trace, kGetSbData);
  if (count <= 0 || out == nullptr) {
    call.error(5, count);
    return LMAINTE_FAILED;
  }
  if (!lmainte::is_model(model)) {
    call.error(6, model);
    return LMAINTE_FAILED;
  }
  const UnitRange range = lmainte::range_of(sb, count);
  SessionBracket bracket(call, kBracketEvents, kBoardDatabases, Hold::kOpen);
  return bracket.run([&] { return read_boards(call, range, model, out); }) ? LMAINTE_OK : LMAINTE_FAILED;
}
