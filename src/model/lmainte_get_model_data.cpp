#include "include/lmainte.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <cerrno>

#include "include/lmainte_platform.h"
#include "src/db/access_table.h"
#include "src/frame/trace.h"
#include "src/model/model_family.h"
#include "trace_events/model.h"

namespace {

using lmainte::AccessTable;
using lmainte::Block;
using lmainte::Call;
using lmainte::Family;
using lmainte::RecordView;
using trace_events::GetModelData;
using trace_events::ReadTimeFile;

lmainte::Trace trace;
constexpr Block kGetModelData = lmainte::block_of<GetModelData>();
constexpr Block kFindModel = lmainte::block_of<trace_events::FindModel>();
constexpr Block kReadTimeFile = lmainte::block_of<ReadTimeFile>();

struct Marker {
  const char *path;
  uint32_t model;
};

// The first file that exists decides.
constexpr Marker kMarkers[] = {
    {"/tmp/.qa", LMAINTE_MODEL_QA},   {"/tmp/.qb1", LMAINTE_MODEL_QB1}, {"/tmp/.qb2", LMAINTE_MODEL_QB2},
    {"/tmp/.qe1", LMAINTE_MODEL_QE1}, {"/tmp/.qe2", LMAINTE_MODEL_QE2}, {"/tmp/.qe3", LMAINTE_MODEL_QE3},
};

uint32_t lmainte_model_cache = LMAINTE_MODEL_NONE;

// If the inode is too large for this build's struct, the file exists.
bool exists(const char *path) {
  struct stat unused;
  return stat(path, &unused) == 0 || errno == EOVERFLOW;
}

uint32_t marked_model() {
  for (const Marker &marker : kMarkers)
    if (exists(marker.path)) return marker.model;
  return LMAINTE_MODEL_NONE;
}

// Once found, the model stays the same. Without a marker file, every call looks for one again.
uint32_t find_model() {
  Call call(trace, kFindModel);
  if (lmainte_model_cache == LMAINTE_MODEL_NONE) lmainte_model_cache = marked_model();
  return lmainte_model_cache;
}

// What differs between the families of models.
struct FamilyRow {
  Family family;
  const char *control_times;
  const char *command_times;
};

constexpr FamilyRow kFamilies[] = {
    {Family::kQb, "/mgb/cli/etc/controltime_qb", "/mgb/cli/etc/cmdtime_qb"},
    {Family::kQe, "/mgb/cli/etc/controltime_qe", "/mgb/cli/etc/cmdtime_qe"},
    {Family::kQa, "/mgb/cli/etc/controltime_qa", "/mgb/cli/etc/cmdtime_qa"},
};

// A file of 32-bit times, in the service processor's own byte order on every machine.
template <size_t Words>
class TimeFile {
 public:
  uint32_t word(size_t n) const {
    const uint8_t *bytes = bytes_ + n * 4;
    return uint32_t{bytes[0]} << 24 | uint32_t{bytes[1]} << 16 | uint32_t{bytes[2]} << 8 | bytes[3];
  }
  bool is_read() const { return is_read_; }

  // True when the file was opened, read in full and closed. If only the close fails, is_read() is still true.
  bool read(const char *path) {
    Call call(trace, kReadTimeFile);
    const int32_t fd = lcmn_lopen(path, O_RDONLY, 0444);
    if (fd < 0) {
      call.system_call_failed(ReadTimeFile::kNotOpened, fd);
      return false;
    }
    const int32_t got = lcmn_read(fd, bytes_, sizeof bytes_);
    is_read_ = got == static_cast<int32_t>(sizeof bytes_);
    if (!is_read_) call.system_call_failed(ReadTimeFile::kNotRead, got);
    const int32_t closed = lcmn_close(fd);
    if (closed != 0) call.system_call_failed(ReadTimeFile::kNotClosed, closed);
    return is_read_ && closed == 0;
  }

 private:
  uint8_t bytes_[Words * 4];
  bool is_read_ = false;
};

// Each half of the file has twelve times. The twelfth belongs to slot 12. Slot 11 has no times.
constexpr size_t kControlWords = 64;
constexpr size_t kSecondHalf = 32;
constexpr size_t kPlainSlots = 11;
constexpr size_t kLastSlot = 12;

void take_control_times(const TimeFile<kControlWords> &file, lmainte_model_data &model_data) {
  for (size_t i = 0; i <= kPlainSlots; ++i) {
    lmainte_unit_slot &slot = model_data.unit[i < kPlainSlots ? i : kLastSlot];
    slot.control_time_1 = file.word(i);
    slot.control_time_2 = file.word(kSecondHalf + i);
  }
}

constexpr size_t kCommands = 16;
constexpr size_t kCommandWords = 32;

bool fill_command_times(const Call &call, uint32_t model, lmainte_cmdtime *cmdtimes) {
  const FamilyRow *row = lmainte::row_of(kFamilies, model);
  if (row == nullptr) {
    call.error(GetModelData::kNoModel, model);
    return false;
  }
  TimeFile<kCommandWords> file;
  if (!file.read(row->command_times)) return false;
  for (lmainte_cmdtime *entry = cmdtimes; entry->cmd_id != LMAINTE_CMDTIME_END; ++entry)
    entry->time = entry->cmd_id < kCommands ? file.word(entry->cmd_id) : 0;
  return true;
}

// Bit 7 says that all power supplies count. Without it, half of them do.
constexpr uint32_t kAllPowerSupplies = LMAINTE_SYSTEM_ALL_PSUS;
constexpr size_t kSystemFlagsByte = 148;

uint32_t slot_10_of_high_end(const Call &call, uint32_t model) {
  switch (model) {
    case LMAINTE_MODEL_QE1:
    case LMAINTE_MODEL_QE2:
      return 2;
    case LMAINTE_MODEL_QE3:
      return 4;
    default:
      call.error(GetModelData::kNoCount, model);
      return 0;
  }
}

void fill_counts(const Call &call, Family family, const RecordView &general, lmainte_model_data &model_data) {
  const bool is_high_end = family == Family::kQe;
  const uint32_t power_supplies = general.word(8);
  const bool all_count = !is_high_end || (model_data.system_flags & kAllPowerSupplies) != 0;
  lmainte_unit_slot *unit = model_data.unit;
  unit[LMAINTE_SLOT_CMU].max_count = general.word(0);
  unit[LMAINTE_SLOT_IOU].max_count = general.word(1);
  unit[2].max_count = 8;
  unit[LMAINTE_SLOT_FAN].max_count = general.word(6);
  unit[LMAINTE_SLOT_PSU].max_count = all_count ? power_supplies : power_supplies >> 1;
  unit[5].max_count = 1;
  unit[6].max_count = 8;
  unit[7].max_count = 2;
  unit[8].max_count = 2;
  unit[9].max_count = 14;
  unit[10].max_count = is_high_end ? slot_10_of_high_end(call, model_data.model) : 1;
  if (is_high_end) unit[LMAINTE_SLOT_BP32].max_count = 2;
}

// One record of the whole system. Null if it cannot be read.
const void *read_system_record(AccessTable &table, uint32_t db_id) {
  return table.fetch(db_id) ? table.find(0) : nullptr;
}

bool fill_model_data(const Call &call, uint32_t model, const RecordView &current, lmainte_model_data &model_data) {
  model_data.model = model;
  AccessTable setup(0, 1, {"setup_system_info", 248});
  if (read_system_record(setup, LMAINTE_DB_SETUP) == nullptr) {
    call.error(GetModelData::kNoSetup);
    return false;
  }
  model_data.system_flags = current.byte(kSystemFlagsByte);
  AccessTable general(0, 1, {"gen_system_info", 1408});
  const void *record = read_system_record(general, LMAINTE_DB_GEN);
  if (record == nullptr) {
    call.error(GetModelData::kNoGeneral);
    return false;
  }
  const FamilyRow *row = lmainte::row_of(kFamilies, model);
  if (row == nullptr) {
    call.error(GetModelData::kNoModel, model);
    return false;
  }
  fill_counts(call, row->family, RecordView(record), model_data);
  TimeFile<kControlWords> file;
  const bool good = file.read(row->control_times);
  if (file.is_read()) take_control_times(file, model_data);
  return good;
}

}  // namespace

int32_t lmainte_get_model_data(lmainte_model_data *model_data, lmainte_cmdtime *cmdtimes) {
  Call call(trace, kGetModelData);
  if (model_data == nullptr && cmdtimes == nullptr) {
    call.error(GetModelData::kBothNull);
    return LMAINTE_FAILED;
  }
  AccessTable current(0, 1, lmainte::kSystemRecord);
  const void *record = read_system_record(current, LMAINTE_DB_CURRENT);
  if (record == nullptr) {
    call.error(GetModelData::kNoCurrent);
    return LMAINTE_FAILED;
  }
  const uint32_t model = find_model();
  call.point(GetModelData::kModel, model);
  if (model_data != nullptr && !fill_model_data(call, model, RecordView(record), *model_data)) return LMAINTE_FAILED;
  if (cmdtimes != nullptr && !fill_command_times(call, model, cmdtimes)) return LMAINTE_FAILED;
  return LMAINTE_OK;
}
