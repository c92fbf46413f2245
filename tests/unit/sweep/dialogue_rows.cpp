#include "tests/unit/doubles/library_test.h"
#include "tests/unit/sweep/rows.h"

namespace sweep {
namespace {

using doubles::machine;

const std::set<std::string> kPager = {"waitpid", "fclose", "sigprocmask", "write"};
const std::set<std::string> kEmptyList = {"fopen", "fclose", "fork", "waitpid", "sigprocmask", "system"};
const std::set<std::string> kDots = {"waitpid", "kill", "sigprocmask", "write"};

const ListLine kLines[] = {doubles::head("h\n"), doubles::foot("f\n"), doubles::end_mark()};
const uint8_t kRecord[256] = {};
const PsuData kPsus[2] = {};
const SbData kBoards[1] = {};
const XsbData kXsbs[4] = {};
const FantrayData kTrays[2] = {};
const IoxListData kIox[1] = {};
const BpUnitData kDdcs[2] = {};

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
int32_t show_file() {
  return lmainte_show_file("/tmp/text");
}

int32_t ask() {
  int32_t choice = 0;
  return lmainte_ask_select(1, &choice, "? ");
}

void run_a_minute() {
  machine().programs = {doubles::exits(0, 60)};
}
void keep_output() {
  machine().keeps_output = true;
}
void keep_output_of_real_children() {
  use_real_children();
  keep_output();
}

int32_t start_and_end_dots(const char *message, int32_t seconds) {
  const DotParam request = {1, message, seconds};
  const int32_t child = lmainte_dot_start(&request);
  if (child == -1) return -1;
  lmainte_dot_end(child);
  return 0;
}
int32_t show_a_minute() {
  return start_and_end_dots("Testing: ", 60);
}
int32_t show_six_seconds() {
  return start_and_end_dots(nullptr, 6);
}

}  // namespace

const std::vector<Row> &dialogue_rows() {
  static const doubles::Lines kIndicator = {"dot_start", "dot_end"};
  static const std::vector<Row> kRows = {
      {"tty_control", [] { return lmainte_tty_control(0, 1); }, {8}, {}, 0x110C0010},
      {"tty_control_flush", [] { return lmainte_tty_control(2, 1); }, {8}, {}, 0x110C0010, [] {}, {"tty_control"}},
      {"ask_select", ask, {-1}, {"write"}, 0x110C0000},
      {"ask_select_with_output_kept", ask, {-1}, {"write"}, 0x110C0000, keep_output, {"ask_select"}},
      {"show_file", show_file, {8}, kPager, 0x110C02E0},
      {"show_file_with_its_child", show_file, {8}, kPager, 0x110C02E0, use_real_children, {"show_file"}},
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
      {"dot_start_and_end", show_a_minute, {-1}, kDots, 0, run_a_minute, kIndicator},
      {"dot_start_and_end_with_the_child", show_six_seconds, {-1}, kDots, 0, use_real_children, kIndicator},
      {"dot_start_and_end_with_output_kept",
       show_six_seconds,
       {-1},
       kDots,
       0,
       keep_output_of_real_children,
       kIndicator},
  };
  return kRows;
}

}  // namespace sweep
