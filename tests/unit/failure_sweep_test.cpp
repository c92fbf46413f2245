// Every function, with its first, second, third ... call of the platform or the system failing, until it needs no more
// calls than that. Whatever fails: the result is one that the header lists, and nothing is left behind but what could
// not be given back.

#include <sys/mman.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <map>
#include <set>

#include <gtest/gtest.h>

#include "tests/unit/doubles/library_test.h"
#include "tests/unit/doubles/units.h"

namespace {

using doubles::Bytes;
using doubles::Lines;
using doubles::machine;

struct Row {
  std::string name;
  std::function<int32_t()> call;
  std::set<int32_t> results;       // that the header lists, but for the one of a call in which nothing fails
  std::set<std::string> harmless;  // calls whose failure need not be one of the function
  uint32_t entry = 0;              // its entry record, 0 where it has none of its own
  std::function<void()> prepare = [] {};
};

void put_inventory() {
  doubles::put_units();
  doubles::put_system_status(0x8000);
  machine().records[{1, "setup_system_info"}] = {Bytes(248)};
  machine().records[{0, "gen_system_info"}] = {Bytes(1408, 1)};
  machine().files["/mgb/cli/etc/controltime_qb"] = Bytes(256, 1);
  machine().files["/mgb/cli/etc/cmdtime_qb"] = Bytes(128, 1);
  machine().markers = {"/tmp/.qb1"};
  machine().names[{0, 0}] = "/PSU#0";
}

void mark_units() {
  for (const int32_t type : {16, 80, 161, 180}) doubles::put_status(type, 0, 0x80008000);
}

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

int32_t get_model() {
  lmainte_model_data data = {};
  lmainte_cmdtime times[] = {{3, 0}, {0xFFFFFFFF, 0}};
  return lmainte_get_model_data(&data, times);
}

int32_t get_psus() {
  PsuData psus[2] = {};
  return lmainte_get_psu_data(-1, 2, 3, psus);
}

// Into as many records as any row reads.
template <class Record, class Reader>
int32_t read(Reader reader) {
  Record records[4] = {};
  return reader(records);
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

int32_t get_position() {
  lmainte_unit_position position = {};
  return lmainte_get_unit_position_id(0, "/PSU#1", &position);
}

int32_t convert() {
  lmainte_fru_type type = {};
  return lmainte_convert_strtofrutype("/PSU#1", &type);
}

int32_t get_boards() {
  return read<SbData>([](SbData *out) { return lmainte_get_sb_data(-1, 1, 3, out); });
}
int32_t get_xsbs() {
  return read<XsbData>([](XsbData *out) { return lmainte_get_xsb_data(-1, 2, 3, out); });
}
int32_t get_fantrays() {
  return read<FantrayData>([](FantrayData *out) { return lmainte_get_fantray_data(-1, 2, 5, out); });
}
int32_t get_fantrays_of_qe1() {
  return read<FantrayData>([](FantrayData *out) { return lmainte_get_fantray_data(0, 1, 3, out); });
}
int32_t get_fantrays_without_names() {
  return read<FantrayData>([](FantrayData *out) { return lmainte_get_fantray_data(-1, 4, 1, out); });
}
int32_t get_domains() {
  return read<DomainData>([](DomainData *out) { return lmainte_get_domain_data(-1, 2, 3, out); });
}
int32_t get_system_status() {
  return read<SystemStatus>([](SystemStatus *out) { return lmainte_get_system_status(out); });
}
int32_t get_backplane() {
  return read<Bp32Data>([](Bp32Data *out) { return lmainte_get_bp32_data(0, 1, 3, out); });
}
int32_t get_ddcs() {
  return read<BpUnitData>([](BpUnitData *out) { return lmainte_get_ddca_data(-1, 2, 3, out); });
}
int32_t get_emgbus() {
  return read<EmgbUnitData>([](EmgbUnitData *out) { return lmainte_get_emgbu_data(-1, 2, 5, out); });
}
int32_t get_emgbrs() {
  return read<EmgbUnitData>([](EmgbUnitData *out) { return lmainte_get_emgbr_data(-1, 2, 5, out); });
}
int32_t get_emgbs() {
  return read<EmgbUnitData>([](EmgbUnitData *out) { return lmainte_get_emgb_data(130, -1, 2, 5, out); });
}
int32_t get_all_emgbs() {
  return read<EmgbUnitData>([](EmgbUnitData *out) { return lmainte_get_emgb_data_all(5, out); });
}
int32_t get_emgb_pairs() {
  return read<EmgbUnitData>([](EmgbUnitData *out) { return lmainte_get_emgb_data_pair(-1, 5, out); });
}

int32_t get_fru() {
  return read<SbData>([](SbData *out) { return lmainte_get_fru_data(80, 0, 1, 3, out); });
}
int32_t check_install() {
  return read<PsuData>([](PsuData *out) { return lmainte_chk_fru_install(0, 161, 0, 3, out); });
}

// The list goes with the call, so that what stays in memory was forgotten.
int32_t list_marked_units() {
  lmainte_model_data data = {};
  data.model = 5;
  for (auto &slot : data.unit) slot.max_count = 1;
  const int32_t result = lmainte_init_swap_fru_list(&data);
  lmainte_free_swap_fru_list();
  return result == 4 ? 0 : result;
}

int32_t add_a_marked_unit() {
  lmainte_model_data data = {};
  data.model = 3;
  doubles::put_system_status(0);
  if (lmainte_init_swap_fru_list(&data) != 0) return -1;
  const int32_t result = lmainte_add_swap_fru_to_list(161, 0);
  lmainte_free_swap_fru_list();
  return result == 1 ? 0 : result;
}

constexpr int32_t kDaemon = 9;

int32_t communicate() {
  const uint32_t request[4] = {};
  uint32_t reply[4] = {};
  machine().daemon.ready = {kDaemon};
  return lmainte_ipc_communicate(request, kDaemon, 2, reply);
}

int32_t send_event() {
  const EventUnit unit = {};
  return lmainte_send_event(0, 0, &unit);
}

const char *const kProcedure = "/tmp/procedure";

int32_t get_procedure() {
  char text[256] = {};
  return lmainte_fget_pinfo(kProcedure, text);
}

void put_procedure() {
  machine().files[kProcedure] = Bytes(4, '1');
}

// With a file that the caller has opened, and closes.
constexpr int32_t kFd = 7;

template <class Call>
int32_t with_procedure(Call call) {
  put_procedure();
  machine().descriptors[kFd] = {kProcedure, 0};
  const int32_t result = call();
  machine().descriptors.erase(kFd);
  return result;
}

int32_t put_information() {
  return with_procedure([] { return lmainte_put_pinfo(kFd); });
}
int32_t clear_information() {
  return with_procedure([] { return lmainte_clear_pinfo(kFd); });
}
int32_t get_information() {
  char text[256] = {};
  return with_procedure([&text] { return lmainte_get_pinfo(kFd, text); });
}

int32_t ask() {
  int32_t choice = 0;
  int32_t result = 0;
  doubles::printed_by([&] { result = lmainte_ask_select(1, &choice, "? "); });
  return result;
}

const uint8_t kRecord[256] = {};
const UnitRecord kUnit = {161, 0, 0, {0, 0}, "/PSU#0"};
const UnitRecord kBoard = {16, 0, 0, {0, 0}, "/CMU#0"};
const PsuData kPsus[2] = {};
const ListLine kLines[] = {doubles::head("h\n"), doubles::foot("f\n"), doubles::end_mark()};
const std::set<std::string> kPager = {"waitpid", "fclose", "sigprocmask"};
const std::set<std::string> kEmptyList = {"fopen", "fclose", "fork", "waitpid", "sigprocmask", "system"};
const std::set<std::string> kDots = {"waitpid", "kill", "sigprocmask"};

const SbData kBoards[1] = {};
const XsbData kXsbs[4] = {};
const FantrayData kTrays[2] = {};
const IoxListData kIox[1] = {};
const BpUnitData kDdcs[2] = {};
const ClearRequest kClearing = {{80, 0}, {0, 0, 0}, "-u /IOU#0"};
const lmainte_signal_entry kHandlers[] = {{10, nullptr}, {12, nullptr}, {-1, nullptr}};
const lmainte_mask_entry kMasks[] = {{10, 0}, {12, 0}, {-1, 0}};

int32_t list_boards() {
  return lmainte_show_cmu_iou_list(0, 2, 1, kBoards, kXsbs, kLines);
}
int32_t list_io_units() {
  return lmainte_show_iounit_list(0, 1, 1, kBoards, kIox, kLines);
}
int32_t list_iox() {
  return lmainte_show_iox_list(0, nullptr, kLines);
}
int32_t list_iox_psus() {
  return lmainte_show_ioxpsu_list(0, nullptr, kLines);
}

int32_t show_iox_psu_status() {
  const int32_t result = lmainte_show_ioxpsu_status(0, &kRecord);
  machine().disk.erase("tmp");
  return result;
}

void run_a_minute() {
  machine().programs = {doubles::exits(0, 60)};
}
int32_t start_and_end_dots() {
  const DotParam request = {1, nullptr, 60};
  const int32_t child = lmainte_dot_start(&request);
  if (child == -1) return -1;
  lmainte_dot_end(child);
  return 0;
}

void hang() {
  machine().programs = {doubles::ignores_sigterm()};
}

const std::vector<Row> &frame_rows() {
  static const std::vector<Row> kRows = {
      {"exec", [] { return lmainte_exec(0, 2, "-c lock"); }, {127}, {}, 0x110C0020},
      {"exec_of_a_hung_program", [] { return lmainte_exec(0, 2, "-c lock") - 127; }, {0}, {}, 0x110C0020, hang},
      {"signal", [] { return lmainte_signal(kHandlers); }, {8}, {}, 0x110C0390},
      {"signal_mask", [] { return lmainte_signal_mask(kMasks); }, {}, {"sigprocmask"}, 0x110C0398},
  };
  return kRows;
}

const std::vector<Row> &db_rows() {
  static const std::vector<Row> kRows = {
      {"scdb", use_a_session, {-1}, {}},
      {"access_table", read_a_table, {-1}, {}},
      {"scdb_get", read_under_a_lock, {8}, {}},
      {"scdb_lget", read_one_record, {8}, {}},
      {"scdb_put", [] { return static_cast<int32_t>(lmainte_scdb_put(1, 3, 16, 0, &kRecord)); }, {8}, {}, 0x110C81D0},
  };
  return kRows;
}

const std::vector<Row> &model_rows() {
  static const std::vector<Row> kRows = {
      {"get_model_data", get_model, {8}, {"stat"}, 0x110C0440},
      {"get_unit_position_id", get_position, {8}, {"stat"}, 0x110C04A0},
      {"convert_strtofrutype", convert, {8}, {"stat"}, 0x110C0520},
  };
  return kRows;
}

const std::vector<Row> &inventory_rows() {
  static const std::vector<Row> kRows = {
      {"get_psu_data", get_psus, {8}, {}, 0x110C0400},
      {"get_sb_data", get_boards, {8}, {}, 0x110C0030},
      {"get_xsb_data", get_xsbs, {8}, {}, 0x110C8000},
      {"get_fantray_data", get_fantrays, {8}, {}, 0x110C03E0},
      {"get_fantray_data_of_qe1", get_fantrays_of_qe1, {8}, {}, 0x110C03E0},
      {"get_fantray_data_without_names", get_fantrays_without_names, {8}, {}, 0x110C03E0},
      {"get_domain_data", get_domains, {8}, {}, 0x110C0420},
      {"get_system_status", get_system_status, {8}, {}, 0x110C0410},
      {"get_bp32_data", get_backplane, {8}, {}, 0x110C8110},
      {"get_ddca_data", get_ddcs, {8}, {}, 0x110C8120},
      {"get_emgbu_data", get_emgbus, {8}, {}, 0x110C8210},
      {"get_emgbr_data", get_emgbrs, {8}, {}, 0x110C8220},
      {"get_emgb_data", get_emgbs, {8}, {}, 0x110C8228},
      {"get_emgb_data_all", get_all_emgbs, {8}, {}, 0x110C82E0},
      {"get_emgb_data_pair", get_emgb_pairs, {8}, {}, 0x110C82E0},
      {"get_fru_data", get_fru, {8}, {}, 0x110C06A0},
      {"chk_fru_install", check_install, {8}, {"sleep"}, 0x110C06B0},
  };
  return kRows;
}

const std::vector<Row> &ops_rows() {
  static const std::vector<Row> kRows = {
      {"control_mainte", [] { return lmainte_control_mainte(1, 2); }, {8}, {}, 0x110C02F0},
      {"report_vanta", [] { return lmainte_report_vanta(0, 2); }, {8}, {}, 0x110C0300},
      {"control_fan", [] { return lmainte_control_fan(2, 2, "/FAN_A#0"); }, {8}, {}, 0x110C0310},
      {"control_led", [] { return lmainte_control_led(1, 2, &kUnit); }, {8}, {}, 0x110C0330},
      {"set_mainteflag", [] { return lmainte_set_mainteflag(1, 2, &kUnit); }, {8}, {}, 0x110C0340},
      {"control_ioxled", [] { return lmainte_control_ioxled(1, 2, &kUnit); }, {8}, {}},
      {"control_ioxpower", [] { return lmainte_control_ioxpower(1, 2, &kUnit); }, {8}, {}},
      {"judge_control_fru", [] { return lmainte_judge_control_fru(0, 2, &kUnit); }, {8}, {}, 0x110C0350},
      {"detach_fru", [] { return lmainte_detach_fru(2, &kUnit); }, {8}, {}, 0x110C0320},
      {"test_fru", [] { return lmainte_test_fru(2, &kUnit); }, {8}, {}, 0x110C0360},
      {"check_fanspeed", [] { return lmainte_check_fanspeed(2, "/FAN_A#0"); }, {8}, {}, 0x110C0540},
      {"test_sb", [] { return lmainte_test_sb(2, &kBoard); }, {8}, {}, 0x110C81C0},
      {"set_xsb", [] { return lmainte_set_xsb(4, 0, 2, &kBoard); }, {8}, {}, 0x110C81A0},
      {"clear_xsb", [] { return lmainte_clear_xsb(4, 2, &kBoard); }, {8}, {}, 0x110C81B0},
      {"link_board", [] { return lmainte_link_board(1, 2, &kBoard); }, {8}, {}, 0x110C81E0},
      {"clear_status", [] { return lmainte_clear_status(2, &kClearing); }, {8}, {}, 0x110C0470},
  };
  return kRows;
}

const std::vector<Row> &state_rows() {
  static const std::vector<Row> kRows = {
      {"ipc_communicate", communicate, {8}, {}, 0x110C03D0},
      {"send_event", send_event, {8}, {}, 0x110C0500},
      {"init_swap_fru_list", list_marked_units, {-1}, {}, 0, mark_units},
      {"add_swap_fru_to_list", add_a_marked_unit, {-1}, {}, 0, mark_units},
      {"put_pinfo", put_information, {8}, {}, 0x110C0700},
      {"clear_pinfo", clear_information, {8}, {}, 0x110C0710},
      {"get_pinfo", get_information, {8}, {}, 0x110C0720},
      {"fput_pinfo", [] { return lmainte_fput_pinfo(kProcedure, 0600); }, {8}, {}, 0x110C0730},
      {"fclear_pinfo", [] { return lmainte_fclear_pinfo(kProcedure); }, {8}, {}, 0x110C0740, put_procedure},
      {"fget_pinfo", get_procedure, {8}, {}, 0x110C0750, put_procedure},
  };
  return kRows;
}

const std::vector<Row> &dialogue_rows() {
  static const std::vector<Row> kRows = {
      {"tty_control", [] { return lmainte_tty_control(0, 1); }, {8}, {}, 0x110C0010},
      {"tty_control_flush", [] { return lmainte_tty_control(2, 1); }, {8}, {}, 0x110C0010},
      {"ask_select", ask, {-1}, {}, 0x110C0000},
      {"show_file", [] { return lmainte_show_file("/tmp/text"); }, {8}, kPager, 0x110C02E0},
      {"show_menu", [] { return lmainte_show_menu(kLines); }, {8}, kPager, 0x110C8170},
      {"show_psu_list", [] { return lmainte_show_psu_list(0, 2, kPsus, kLines); }, {8}, kPager, 0x110C0130},
      {"show_psu_status", [] { return lmainte_show_psu_status(0, kPsus, kLines); }, {8}, kPager, 0x110C0230},
      {"show_cmu_iou_list", list_boards, {8}, kPager, 0x110C8150},
      {"show_fantray_list", [] { return lmainte_show_fantray_list(0, 2, kTrays, kLines); }, {8}, kPager, 0x110C0120},
      {"show_iounit_list", list_io_units, {8}, kPager, 0x110C0190},
      {"show_ioupci_list", [] { return lmainte_show_ioupci_list(0, 8, kBoards, kLines); }, {8}, kPager, 0x110C01A0},
      {"show_ioxpci_list", [] { return lmainte_show_ioxpci_list(0, 7, kIox->boat, kLines); }, {8}, kPager, 0x110C0170},
      {"show_ddca_list", [] { return lmainte_show_ddca_list(0, 2, kDdcs, kLines); }, {8}, kPager, 0x110C8130},
      {"show_iox_list", list_iox, {}, kEmptyList, 0x110C0150},
      {"show_ioxpsu_list", list_iox_psus, {}, kEmptyList, 0x110C0150},
      {"show_fantray_status", [] { return lmainte_show_fantray_status(0, kTrays, kLines); }, {8}, kPager, 0x110C0220},
      {"show_ddca_status", [] { return lmainte_show_ddca_status(0, kDdcs, kLines); }, {8}, kPager, 0x110C8140},
      {"show_sb_status", [] { return lmainte_show_sb_status(0, 2, kBoards, kLines); }, {8}, kPager, 0x110C8160},
      {"show_ioxpsu_status", show_iox_psu_status, {8}, {"system", "fclose", "remove"}},
      {"dot_start_and_end", start_and_end_dots, {-1}, kDots, 0, run_a_minute},
  };
  return kRows;
}

const std::vector<Row> &rows() {
  static const auto kAll = [] {
    std::vector<Row> all;
    for (const auto *room :
         {&frame_rows(), &db_rows(), &model_rows(), &inventory_rows(), &ops_rows(), &state_rows(), &dialogue_rows()})
      all.insert(all.end(), room->begin(), room->end());
    return all;
  }();
  return kAll;
}

// The functions of a row that is not named after the one that it calls.
const std::map<std::string, Lines> kFunctions = {
    {"scdb", {"scdb_open", "scdb_lock", "scdb_unlock", "scdb_close"}},
    {"access_table", {"db_make_access_table", "db_get_data", "db_free_access_table"}},
    {"get_fantray_data_of_qe1", {"get_fantray_data"}},
    {"get_fantray_data_without_names", {"get_fantray_data"}},
    {"exec_of_a_hung_program", {"exec"}},
    {"tty_control_flush", {"tty_control"}},
    {"dot_start_and_end", {"dot_start", "dot_end"}},
};

// Those that call nothing that could fail.
const Lines kWithoutCalls = {"get_coolgrp_data",  "get_iox_data",   "get_pid",
                             "get_swap_fru_list", "check_swap_fru", "delete_swap_fru_from_list",
                             "free_swap_fru_list"};

TEST(FailureSweepRows, AreThoseOfEveryExportedFunction) {
  std::set<std::string> swept(kWithoutCalls.begin(), kWithoutCalls.end());
  for (const auto &row : rows()) {
    const auto several = kFunctions.find(row.name);
    const Lines names = several != kFunctions.end() ? several->second : Lines{row.name};
    for (const auto &name : names) swept.insert(name);
  }
  std::set<std::string> exported;
  std::ifstream file(EXPORTED_NAMES);
  const std::string prefix = "lmainte_";
  for (std::string name; std::getline(file, name);)
    if (name.rfind(prefix, 0) == 0) exported.insert(name.substr(prefix.size()));
  EXPECT_EQ(swept, exported);
}

// A number that a child process leaves for its parent.
int &number_of_calls() {
  static void *const memory = mmap(nullptr, sizeof(int), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  return *static_cast<int *>(memory);
}

void PrintTo(const Row &row, std::ostream *out) {
  *out << row.name;
}

class FailureSweep : public doubles::LibraryTest, public ::testing::WithParamInterface<Row> {
 protected:
  // The machine that each of the test's processes gets.
  void SetUp() override {
    LibraryTest::SetUp();
    put_inventory();
    row().prepare();
    number_of_calls() = 1;
  }

  const Row &row() { return GetParam(); }

  // The row's result on that machine, with the call at this place failing.
  int32_t run(int fail_at) {
    machine().forget_records();  // which processes share
    machine().fail_at = fail_at;
    return row().call();
  }
};

INSTANTIATE_TEST_SUITE_P(Of, FailureSweep, ::testing::ValuesIn(rows()), [](const auto &row) { return row.param.name; });

std::string verb_of(const std::string &call) {
  return call.substr(0, call.find(' '));
}

// A database that stays locked keeps those below it locked too: they are not unlocked before it.
Lines locked_up_to(const std::string &db_id) {
  Lines locked;
  for (int id = 0; id <= std::stoi(db_id); ++id) locked.push_back("database " + std::to_string(id) + " locked");
  return locked;
}

// What cannot be given back when this call has failed.
Lines stays_behind(const std::string &failed) {
  const std::string verb = verb_of(failed);
  const std::string rest = failed.substr(std::min(verb.size() + 1, failed.size()));
  if (verb == "unlock") return locked_up_to(rest);
  if (verb == "close") return {"database " + rest + " open"};
  if (verb == "remove") return {"file " + rest};
  if (verb == "system") return {"file " + rest.substr(rest.rfind(' ') + 1)};
  if (verb == "waitpid") return {"child " + rest.substr(0, rest.find(' '))};
  return {};
}

// A file that fails to close counts as open; which one it is the call does not say.
bool may_stay(const std::string &what, const std::string &failed) {
  if (verb_of(failed) == "lclose") return what.rfind("descriptor of ", 0) == 0;
  const auto staying = stays_behind(failed);
  return std::find(staying.begin(), staying.end(), what) != staying.end();
}

TEST_P(FailureSweep, NothingFails) {
  doubles::in_a_process_of_its_own([this] {
    EXPECT_EQ(run(0), 0);
    EXPECT_EQ(machine().left_behind(), Lines{});
    number_of_calls() = machine().steps + 1;
  });
  EXPECT_GT(number_of_calls(), 1);
}

TEST_P(FailureSweep, EachCallFailsInTurn) {
  for (int n = 1; n <= number_of_calls() && !HasFailure(); ++n) {
    doubles::in_a_process_of_its_own([this, n] {
      const int32_t result = run(n);
      const std::string failed = machine().failed_call;
      SCOPED_TRACE("call " + std::to_string(n) + " fails: " + failed);
      if (failed.empty()) return;
      number_of_calls() = n + 1;
      const bool is_harmless = row().harmless.contains(verb_of(failed)) && result == 0;
      EXPECT_TRUE(is_harmless || row().results.contains(result)) << "result " << result;
      for (const auto &left : machine().left_behind()) EXPECT_TRUE(may_stay(left, failed)) << left;
      if (row().entry == 0) return;
      const auto trace = machine().trace_records();
      EXPECT_EQ(trace.front().event, row().entry);
      EXPECT_EQ(trace.back().event, row().entry + 1);
    });
  }
  EXPECT_GT(number_of_calls(), 1);
}

TEST_P(FailureSweep, TraceThatFailsChangesNothing) {
  doubles::in_a_process_of_its_own([this] {
    machine().trace_result = -1;
    EXPECT_EQ(run(0), 0);
    EXPECT_EQ(machine().left_behind(), Lines{});
  });
}

}  // namespace
