#include "tests/unit/sweep/rows.h"

namespace sweep {
namespace {

using doubles::machine;

const UnitRecord kUnit = {161, 0, 0, {0, 0}, "/PSU#0"};
const UnitRecord kBoard = {16, 0, 0, {0, 0}, "/CMU#0"};
const ClearRequest kClearing = {{80, 0}, {0, 0, 0}, "-u /IOU#0"};
const lmainte_signal_entry kHandlers[] = {{10, nullptr}, {12, nullptr}, {-1, nullptr}};
const lmainte_mask_entry kMasks[] = {{10, 0}, {12, 0}, {-1, 0}};

int32_t run_a_program() {
  return lmainte_exec(0, 2, "-c lock");
}

void hang() {
  machine().programs = {doubles::ignores_sigterm()};
}

}  // namespace

void use_real_children() {
  machine().children_are_real = true;
}

const std::vector<Row> &frame_rows() {
  static const std::vector<Row> kRows = {
      {"exec", run_a_program, {127}, {}, 0x110C0020},
      {"exec_of_a_hung_program", [] { return run_a_program() - 127; }, {0}, {}, 0x110C0020, hang, {"exec"}},
      {"exec_with_its_child", run_a_program, {127}, {}, 0x110C0020, use_real_children, {"exec"}},
      {"signal", [] { return lmainte_signal(kHandlers); }, {8}, {}, 0x110C0390},
      {"signal_mask", [] { return lmainte_signal_mask(kMasks); }, {}, {"sigprocmask"}, 0x110C0398},
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

}  // namespace sweep
