#include <array>

#include "tests/unit/doubles/units.h"
#include "tests/unit/sweep/rows.h"

namespace sweep {
namespace {

using doubles::Bytes;
using doubles::machine;

constexpr std::array<const char *, 7> kModels = {"", "qb1", "qb2", "qe1", "qe2", "qe3", "qa"};
constexpr std::array<const char *, 7> kFamilies = {"", "qb", "qb", "qe", "qe", "qe", "qa"};

// ---- single records

int32_t use_a_session() {
  int32_t result = lmainte_scdb_open(2);
  if (result != 0) return result;
  result = lmainte_scdb_lock(2);
  if (result == 0) result = lmainte_scdb_unlock(2);
  return lmainte_scdb_close(2) == 0 ? result : -1;
}

int32_t read_a_table() {
  lmainte_access_entry *table = lmainte_db_make_access_table(0, 2, 320, "fru_psu_qe_info_%02d");
  if (table == nullptr) return -1;
  const int32_t result = lmainte_db_get_data(4, table);
  lmainte_db_free_access_table(table);
  return result;
}

int32_t read_one_record() {
  if (lmainte_scdb_open(2) != 0) return 8;
  void *record = nullptr;
  const uint32_t result = lmainte_scdb_lget(2, 3, 16, 0, &record);
  free(record);
  return lmainte_scdb_close(2) == 0 ? static_cast<int32_t>(result) : 8;
}

int32_t read_under_a_lock() {
  if (lmainte_scdb_open(2) != 0) return 8;
  uint32_t result = 8;
  void *record = nullptr;
  if (lmainte_scdb_lock(2) == 0) {
    result = lmainte_scdb_get(2, 3, 16, 0, &record);
    if (lmainte_scdb_unlock(2) != 0) result = 8;
  }
  free(record);
  return lmainte_scdb_close(2) == 0 ? static_cast<int32_t>(result) : 8;
}

int32_t write_one_record() {
  const uint8_t record[1760] = {};
  return static_cast<int32_t>(lmainte_scdb_put(1, 3, 16, 0, record));
}

// ---- the model

int32_t get_model() {
  lmainte_model_data data = {};
  lmainte_cmdtime times[] = {{3, 0}, {0xFFFFFFFF, 0}};
  return lmainte_get_model_data(&data, times);
}

int32_t get_position() {
  lmainte_unit_position position = {};
  return lmainte_get_unit_position_id(0, "/PSU#1", &position);
}

int32_t convert() {
  lmainte_fru_type type = {};
  return lmainte_convert_strtofrutype("/PSU#1", &type);
}

// ---- the readers

// Into as many records as any row reads.
template <class Record, class Reader>
int32_t read(Reader reader) {
  Record records[4] = {};
  return reader(records);
}

int32_t get_boards(int32_t model) {
  return read<SbData>([model](SbData *out) { return lmainte_get_sb_data(-1, 1, model, out); });
}
int32_t get_xsbs(int32_t model) {
  return read<XsbData>([model](XsbData *out) { return lmainte_get_xsb_data(-1, 2, model, out); });
}
int32_t get_fantrays(int32_t model) {
  return read<FantrayData>([model](FantrayData *out) { return lmainte_get_fantray_data(0, 1, model, out); });
}
int32_t get_all_fantrays(int32_t model) {
  return read<FantrayData>([model](FantrayData *out) { return lmainte_get_fantray_data(-1, 4, model, out); });
}
int32_t get_psus(int32_t model) {
  return read<PsuData>([model](PsuData *out) { return lmainte_get_psu_data(-1, 2, model, out); });
}
int32_t get_domains(int32_t model) {
  return read<DomainData>([model](DomainData *out) { return lmainte_get_domain_data(-1, 2, model, out); });
}
int32_t get_backplane(int32_t model) {
  return read<Bp32Data>([model](Bp32Data *out) { return lmainte_get_bp32_data(0, 1, model, out); });
}
int32_t get_ddcs(int32_t model) {
  return read<BpUnitData>([model](BpUnitData *out) { return lmainte_get_ddca_data(-1, 2, model, out); });
}
int32_t get_emgbus(int32_t model) {
  return read<EmgbUnitData>([model](EmgbUnitData *out) { return lmainte_get_emgbu_data(-1, 2, model, out); });
}
int32_t get_emgbrs(int32_t model) {
  return read<EmgbUnitData>([model](EmgbUnitData *out) { return lmainte_get_emgbr_data(-1, 2, model, out); });
}
int32_t get_emgbs(int32_t model) {
  const int32_t type = model == 5 ? 130 : 128;
  return read<EmgbUnitData>([=](EmgbUnitData *out) { return lmainte_get_emgb_data(type, -1, 2, model, out); });
}
int32_t get_all_emgbs(int32_t model) {
  return read<EmgbUnitData>([model](EmgbUnitData *out) { return lmainte_get_emgb_data_all(model, out); });
}
int32_t get_emgb_pairs(int32_t model) {
  return read<EmgbUnitData>([model](EmgbUnitData *out) { return lmainte_get_emgb_data_pair(-1, model, out); });
}
int32_t get_fru(int32_t model) {
  return read<SbData>([model](SbData *out) { return lmainte_get_fru_data(80, 0, 1, model, out); });
}
int32_t check_install(int32_t model) {
  return read<PsuData>([model](PsuData *out) { return lmainte_chk_fru_install(0, 161, 0, model, out); });
}
int32_t get_system_status() {
  return read<SystemStatus>([](SystemStatus *out) { return lmainte_get_system_status(out); });
}

// A reader, the models on which it reads something, and the one on which each of its calls fails.
struct Reader {
  const char *function;
  int32_t (*call)(int32_t model);
  uint32_t entry;
  std::set<int32_t> models;
  int32_t whole;
  std::set<std::string> harmless = {};
};

const std::set<int32_t> kEach = {1, 2, 3, 4, 5, 6};
const std::set<int32_t> kHighEnd = {3, 4, 5};

const Reader kReaders[] = {
    {"get_psu_data", get_psus, 0x110C0400, kEach, 3},
    {"get_sb_data", get_boards, 0x110C0030, kEach, 3},
    {"get_xsb_data", get_xsbs, 0x110C8000, kHighEnd, 3},
    {"get_fantray_data", get_fantrays, 0x110C03E0, kEach, 3},
    {"get_domain_data", get_domains, 0x110C0420, kEach, 3},
    {"get_bp32_data", get_backplane, 0x110C8110, {3}, 3},
    {"get_ddca_data", get_ddcs, 0x110C8120, {3}, 3},
    {"get_emgbu_data", get_emgbus, 0x110C8210, kEach, 5},
    {"get_emgbr_data", get_emgbrs, 0x110C8220, {5}, 5},
    {"get_emgb_data", get_emgbs, 0x110C8228, kEach, 5},
    {"get_emgb_data_all", get_all_emgbs, 0x110C82E0, kEach, 5},
    {"get_emgb_data_pair", get_emgb_pairs, 0x110C82E0, kHighEnd, 5},
    {"get_fru_data", get_fru, 0x110C06A0, kEach, 3},
    {"chk_fru_install", check_install, 0x110C06B0, kEach, 3, {"sleep"}},
};

Row row_on(const Reader &reader, int32_t model) {
  const bool is_whole = model == reader.whole;
  const std::string name = reader.function;
  return {.name = is_whole ? name : name + "_on_" + kModels.at(static_cast<size_t>(model)),
          .call = [call = reader.call, model] { return call(model); },
          .results = {8},
          .harmless = reader.harmless,
          .entry = reader.entry,
          .functions = {name},
          .samples = !is_whole};
}

// A function that finds out the model itself, on each of them.
void add_on_each_model(std::vector<Row> &rows, const std::string &function, int32_t (*call)(), uint32_t entry) {
  for (const int32_t model : kEach)
    rows.push_back({.name = function + "_on_" + kModels.at(static_cast<size_t>(model)),
                    .call = call,
                    .results = {8},
                    .harmless = {"stat"},
                    .entry = entry,
                    .prepare = [model] { set_model(model); },
                    .functions = {function},
                    .samples = model != 1});
}

}  // namespace

void set_model(int32_t model) {
  const auto place = static_cast<size_t>(model);
  machine().markers = {std::string("/tmp/.") + kModels.at(place)};
  machine().files[std::string("/mgb/cli/etc/controltime_") + kFamilies.at(place)] = Bytes(256, 1);
  machine().files[std::string("/mgb/cli/etc/cmdtime_") + kFamilies.at(place)] = Bytes(128, 1);
}

const std::vector<Row> &db_rows() {
  static const std::vector<Row> kRows = {
      {"scdb", use_a_session, {-1}, {}, 0, [] {}, {"scdb_open", "scdb_lock", "scdb_unlock", "scdb_close"}},
      {"access_table",
       read_a_table,
       {-1},
       {},
       0,
       [] {},
       {"db_make_access_table", "db_get_data", "db_free_access_table"}},
      {"scdb_get", read_under_a_lock, {8}, {}},
      {"scdb_lget", read_one_record, {8}, {}},
      {"scdb_put", write_one_record, {8}, {}, 0x110C81D0},
  };
  return kRows;
}

const std::vector<Row> &model_rows() {
  static const auto kRows = [] {
    std::vector<Row> rows;
    add_on_each_model(rows, "get_model_data", get_model, 0x110C0440);
    add_on_each_model(rows, "get_unit_position_id", get_position, 0x110C04A0);
    add_on_each_model(rows, "convert_strtofrutype", convert, 0x110C0520);
    return rows;
  }();
  return kRows;
}

const std::vector<Row> &inventory_rows() {
  static const auto kRows = [] {
    std::vector<Row> rows = {
        {"get_system_status", get_system_status, {8}, {}, 0x110C0410},
        {.name = "get_fantray_data_as_a_list",
         .call = [] { return get_all_fantrays(5); },
         .results = {8},
         .entry = 0x110C03E0,
         .functions = {"get_fantray_data"}},
        {.name = "get_fantray_data_without_names",
         .call = [] { return get_all_fantrays(1); },
         .results = {8},
         .entry = 0x110C03E0,
         .functions = {"get_fantray_data"}},
    };
    for (const Reader &reader : kReaders)
      for (const int32_t model : reader.models) rows.push_back(row_on(reader, model));
    return rows;
  }();
  return kRows;
}

}  // namespace sweep
