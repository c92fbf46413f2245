// Every reader at the full size of its model, beside the client calls and trace records that it takes; and a location, beside
// the read of the model that it begins with.

#include <benchmark/benchmark.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <string_view>

#include "bench/memory_platform.h"
#include "bench/rows.h"
#include "bench/server.h"
#include "include/lmainte.h"

extern "C" int __wrap_stat(const char *path, struct stat *result);

// The only file there is marks the largest model.
extern "C" int __wrap_stat(const char *path, struct stat *) {
  return std::strcmp(path, "/tmp/.qe3") == 0 ? 0 : -1;
}

namespace {

void require(std::int32_t result) {
  if (result == LMAINTE_OK) return;
  std::fprintf(stderr, "bench: a reader failed with result %d\n", result);
  std::abort();
}

template <class Record, std::int32_t Count, std::int32_t Model, auto Reader>
void read_units() {
  static Record out[Count];
  require(Reader(-1, Count, Model, out));
  benchmark::DoNotOptimize(out);
}

void read_status() {
  SystemStatus status;
  require(lmainte_get_system_status(&status));
  benchmark::DoNotOptimize(status);
}

template <std::int32_t Model>
void read_all_emgb() {
  EmgbUnitData out[4];
  require(lmainte_get_emgb_data_all(Model, out));
  benchmark::DoNotOptimize(out);
}

void read_emgb_pairs() {
  EmgbUnitData out[4];
  require(lmainte_get_emgb_data_pair(-1, LMAINTE_MODEL_QE3, out));
  benchmark::DoNotOptimize(out);
}

void find_group() {
  CoolgrpData group;
  require(lmainte_get_coolgrp_data(LMAINTE_TYPE_FANTRAY, 3, LMAINTE_MODEL_QB2, &group));
  benchmark::DoNotOptimize(group);
}

void read_model() {
  lmainte_model_data model = {};
  require(lmainte_get_model_data(&model, nullptr));
  benchmark::DoNotOptimize(model);
}

void locate_memory() {
  lmainte_unit_position position;
  require(lmainte_get_unit_position_id(LMAINTE_POSITION_UNIT, "/CMU#15/MEM#30B", &position));
  benchmark::DoNotOptimize(position);
}

void locate_psu() {
  lmainte_fru_type type;
  require(lmainte_convert_strtofrutype("/PSU#74", &type));
  benchmark::DoNotOptimize(type);
}

struct Reader {
  const char *name;
  void (*library)();
  void (*floor)() = nullptr;  // null: the calls that the library makes of the platform
};

constexpr std::int32_t kQe1 = LMAINTE_MODEL_QE1;
constexpr std::int32_t kQb2 = LMAINTE_MODEL_QB2;
constexpr std::int32_t kQe3 = LMAINTE_MODEL_QE3;

constexpr Reader kReaders[] = {
    {"read 16 system boards", read_units<SbData, 16, kQe3, lmainte_get_sb_data>},
    {"read 64 extended system boards", read_units<XsbData, 64, kQe3, lmainte_get_xsb_data>},
    {"read 32 fan trays", read_units<FantrayData, 32, kQe3, lmainte_get_fantray_data>},
    {"read 12 fan trays in qe1's order", read_units<FantrayData, 12, kQe1, lmainte_get_fantray_data>},
    {"read 8 fan trays without names", read_units<FantrayData, 8, kQb2, lmainte_get_fantray_data>},
    {"read 60 power supplies", read_units<PsuData, 60, kQe3, lmainte_get_psu_data>},
    {"read 24 domains", read_units<DomainData, 24, kQe3, lmainte_get_domain_data>},
    {"read the system's status", read_status},
    {"read the backplane", read_units<Bp32Data, 1, kQe1, lmainte_get_bp32_data>},
    {"read 2 DDC units", read_units<BpUnitData, 2, kQe1, lmainte_get_ddca_data>},
    {"read 2 service processor units", read_units<EmgbUnitData, 2, kQe3, lmainte_get_emgbu_data>},
    {"read 4 service processor units", read_all_emgb<kQe3>},
    {"read 2 pairs of service processor units", read_emgb_pairs},
    {"find a cooling group", find_group},
    {"read the model", read_model},
    {"locate a memory module (floor: the model)", locate_memory, read_model},
    {"locate a power supply (floor: the model)", locate_psu, read_model},
};

// These read runs of records into tables, which have them all until they are freed. So has the second floor of such a row.
constexpr std::string_view kWithTables[] = {
    "read 64 extended system boards", "read 32 fan trays", "read 12 fan trays in qe1's order",
    "read 60 power supplies",         "read 24 domains",
};

bench::Row row_of(const Reader &reader, bench::Kept kept) {
  return {reader.name, [asked = bench::watch(reader.library), kept] { bench::replay(asked, kept); }, reader.library};
}

void add_rows(const Reader &reader, std::vector<bench::Row> &rows) {
  if (reader.floor != nullptr) {
    rows.push_back({reader.name, reader.floor, reader.library});
    return;
  }
  rows.push_back(row_of(reader, bench::Kept::kForAMoment));
  if (std::ranges::find(kWithTables, reader.name) == std::end(kWithTables)) return;
  rows.push_back(row_of(reader, bench::Kept::kUntilTheEnd));
  rows.back().name += " (all held)";
}

}  // namespace

std::vector<bench::Row> bench::reader_rows() {
  put_server(kBoards);
  std::vector<Row> rows;
  for (const Reader &reader : kReaders) add_rows(reader, rows);
  return rows;
}
