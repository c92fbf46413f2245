#include "tests/unit/doubles/units.h"

#include <cstring>

#include "tests/unit/doubles/machine.h"

namespace doubles {

namespace {

constexpr uint32_t kInstalled = 0x80000000;
constexpr uint32_t kBoards = 4;

// A kind of unit: its entries in the records of the current database, in one record or in a record each.
struct Kind {
  int32_t type;  // in a unit id
  const char *record;
  size_t record_size, first, step;
  uint32_t units;
};

constexpr Kind kCmus = {16, "current_cmu_info_%02u", 1760, 0, 0, kBoards};
constexpr Kind kIous = {80, "current_iou_info_%02u", 2016, 0, 0, kBoards};
constexpr Kind kTrays = {180, "current_fantray_info", 6912, 0, 216, 32};
constexpr Kind kPsus = {161, "current_psu_info", 3360, 0, 56, 60};
constexpr Kind kDdcs = {212, "current_bp32_info", 1008, 456, 40, 2};
constexpr Kind kEmgbus = {128, "current_mgb_info", 160, 0, 80, 2};
constexpr Kind kEmgbrs = {130, "current_mgbr_info", 48, 0, 24, 2};

const Kind &kind_of(int32_t type) {
  switch (type) {
    case 16:
      return kCmus;
    case 80:
      return kIous;
    case 161:
    case 162:
      return kPsus;
    case 212:
      return kDdcs;
    case 128:
      return kEmgbus;
    case 130:
      return kEmgbrs;
    default:
      return kTrays;
  }
}

std::string named(const char *pattern, uint32_t number) {
  char name[64];
  std::snprintf(name, sizeof name, pattern, number);
  return name;
}

void put_word(const Kind &kind, uint32_t number, size_t offset, uint32_t value) {
  auto &bytes = machine().records[{2, named(kind.record, number)}].bytes;
  bytes.resize(kind.record_size);
  std::memcpy(&bytes.at(kind.first + kind.step * number + offset), &value, sizeof value);
}

// Records without a word in them that a test reads.
void put_records(uint32_t db_id, const char *pattern, uint32_t count, size_t size) {
  for (uint32_t n = 0; n < count; ++n) machine().records[{db_id, named(pattern, n)}] = {Bytes(size)};
}

void put_names() {
  put_records(4, "fru_cmu_info_%02u", kBoards, 8192);
  put_records(4, "fru_cpu_info_%02u", kBoards * 4, 8192);
  put_records(4, "fru_dimm_info_%03u", kBoards * 32, 256);
  put_records(4, "fru_iou_qe_info_%02u", kBoards, 8192);
  put_records(4, "fru_iou_qb_info_%02u", kBoards, 8192);
  put_records(4, "fru_fan_qe_info_%02u", kTrays.units, 256);
  put_records(4, "fru_psu_qe_info_%02u", kPsus.units, 320);
  put_records(4, "fru_psu_qb_info_%02u", kPsus.units, 320);
  put_records(4, "fru_bpa_info", 1, 8192);
  put_records(4, "fru_ddca_info_%02u", kDdcs.units, 320);
  put_records(4, "fru_emgbu_info_%02u", kEmgbus.units + kEmgbrs.units, 8192);
}

// What is no unit: extended system boards, domains, what the service processor unit says of itself.
void put_partitions() {
  put_records(1, "setup_xsb_info_%02u", kBoards * 4, 192);
  put_records(2, "current_xsb_info_%02u", kBoards * 4, 152);
  put_records(2, "current_domain_info_%02u", 24, 1464);
  put_records(3, "local_mgb_info", 1, 280);
}

}  // namespace

uint32_t unit_id_of(int32_t type, uint32_t number) {
  return static_cast<uint32_t>(kind_of(type).type) << 24 | number;
}

void put_status(int32_t type, uint32_t number, uint32_t status) {
  put_word(kind_of(type), number, 8, status);
}

void put_units() {
  put_records(1, "setup_cmu_info_%02u", kBoards, 256);
  put_records(2, "current_cpu_module_info_%02u", kBoards, 2976);
  put_records(2, "current_dimm_info_%02u", kBoards, 1792);
  for (const auto *kind : {&kCmus, &kIous, &kTrays, &kPsus, &kDdcs, &kEmgbus, &kEmgbrs}) {
    for (uint32_t n = 0; n < kind->units; ++n) {
      put_word(*kind, n, 0, unit_id_of(kind->type, n));
      put_word(*kind, n, 4, ~unit_id_of(kind->type, n));
      put_word(*kind, n, 8, kInstalled);
    }
  }
  put_names();
  put_partitions();
}

void put_system_status(uint32_t status) {
  Bytes bytes(176);
  std::memcpy(&bytes.at(8), &status, sizeof status);
  machine().records[{2, "current_system_info"}] = {bytes};
}

}  // namespace doubles
