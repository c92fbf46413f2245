#include "tests/unit/ops/operations.h"

#include <cstring>

namespace doubles {

UnitRecord a_unit(int32_t type, int32_t number, const char *name) {
  UnitRecord unit;
  std::memset(&unit, 0x5A, sizeof unit);
  unit.type = type;
  unit.number = number;
  std::strcpy(unit.name, name);
  return unit;
}

ClearRequest a_request(const char *arguments) {
  ClearRequest request;
  std::memset(&request, 0x5A, sizeof request);
  request.unit_id[0] = 0x68010203;
  request.unit_id[1] = 17;
  std::strcpy(request.arguments, arguments);
  return request;
}

const UnitRecord &the_unit() {
  static const UnitRecord kUnit = a_unit(161, 7, "/PSU#7");
  return kUnit;
}

const UnitRecord &the_board() {
  static const UnitRecord kBoard = a_unit(16, 3, "/CMU#3");
  return kBoard;
}

const ClearRequest &the_request() {
  static const ClearRequest kRequest = a_request("-u /IOU#0/PCI#1 -c status");
  return kRequest;
}

namespace {

const std::vector<Operation> &on_the_system() {
  static const std::vector<Operation> kRows = {
      {"control_mainte",
       lmainte_control_mainte,
       "/mgb/bin/ctlmainte",
       {{1, "-c\nlock\n"}, {0, "-c\nunlock\n"}},
       {{0, 0}, {128, 128}, {200, 200}},
       8,
       0x110C02F0,
       {"2 0 M"},
       "3 S",
       "3 M S",
       "2 M",
       {2, -1, 256, INT32_MIN, INT32_MAX}},
      {"report_vanta",
       lmainte_report_vanta,
       "/mgb/bin/vantamainte",
       {{0, "-s\n"}, {1, "-e\n"}},
       {{0, 0}, {8, 8}, {127, 8}},
       202,
       0x110C0300,
       {"2 11 M"},
       "3 S",
       "3 M S",
       "2 M",
       {2, -1, 256}},
      {"control_fan",
       [](int32_t mode, int32_t limit) { return lmainte_control_fan(mode, limit, nullptr); },
       "/mgb/bin/ctlfan",
       {{0, "-c\nlow\n"}, {1, "-c\nhigh\n"}},
       {{0, 0}, {128, 219}, {219, 219}},
       8,
       0x110C0310,
       {"2 1 M"},
       "3 S",
       "4 M S",
       "2 M",
       {3, -1, 256}},
      {"control_fan_of_a_unit",
       [](int32_t mode, int32_t limit) { return lmainte_control_fan(mode, limit, "/FAN_A#2"); },
       "/mgb/bin/ctlfan",
       {{0, "-u\n/FAN_A#2\n-c\nlow\n"}, {1, "-u\n/FAN_A#2\n-c\nhigh\n"}, {2, "-u\n/FAN_A#2\n-c\nfull\n"}},
       {{0, 0}, {128, 219}, {219, 219}},
       8,
       0x110C0310,
       {"2 1 M"},
       "3 S",
       "4 M S",
       "2 M",
       {3, -1, 256}},
  };
  return kRows;
}

const std::vector<Operation> &on_a_unit() {
  static const std::vector<Operation> kRows = {
      {"control_led",
       [](int32_t mode, int32_t limit) { return lmainte_control_led(mode, limit, &the_unit()); },
       "/mgb/bin/ctlled",
       {{1, "-u\n/PSU#7\n-c\non\n"},
        {0, "-u\n/PSU#7\n-c\noff\n"},
        {2, "-u\n/PSU#7\n-c\nblink\n"},
        {3, "-u\n/PSU#7\n-c\nsync\n"}},
       {{0, 0}, {128, 206}, {206, 206}},
       8,
       0x110C0330,
       {"2 5 M", "3 161 7"},
       "4 S",
       "4 M S",
       "3 M",
       {4, -1, 256}},
      {"set_mainteflag",
       [](int32_t mode, int32_t limit) { return lmainte_set_mainteflag(mode, limit, &the_unit()); },
       "/mgb/bin/setmainteflag",
       {{0, "-u\n/PSU#7\n-c\nstart\n"}, {1, "-u\n/PSU#7\n-c\nend\n"}},
       {{0, 0}, {128, 128}, {204, 204}},
       8,
       0x110C0340,
       {"2 7 M", "3 161 7"},
       "4 S",
       "4 M S",
       "3 M",
       {2, -1, 256}},
      {"control_ioxled",
       [](int32_t mode, int32_t limit) { return lmainte_control_ioxled(mode, limit, &the_unit()); },
       "/mgb/cli/usr/bin/ioadm",
       {{1, "-u\n/PSU#7\n-c\non\n"}, {0, "-u\n/PSU#7\n-c\noff\n"}, {2, "-u\n/PSU#7\n-c\nblink\n"}},
       {{0, 0}, {128, 217}},
       8,
       0,
       {},
       "",
       "",
       "",
       {3, -1, 256}},
      {"control_ioxpower",
       [](int32_t mode, int32_t limit) { return lmainte_control_ioxpower(mode, limit, &the_unit()); },
       "/mgb/cli/usr/bin/ioadm",
       {{1, "poweron\n/PSU#7\n"}, {0, "poweroff\n/PSU#7\n"}},
       {{0, 0}, {128, 218}},
       8,
       0,
       {},
       "",
       "",
       "",
       {2, -1, 256}},
  };
  return kRows;
}

const std::vector<Operation> &on_a_fru() {
  static const std::vector<Operation> kRows = {
      {"judge_control_fru",
       [](int32_t mode, int32_t limit) { return lmainte_judge_control_fru(mode, limit, &the_unit()); },
       "/mgb/bin/judgectlfru",
       {{0, "-u\n/PSU#7\n-c\nadd\n"}, {1, "-u\n/PSU#7\n-c\ndel\n"}},
       {{0, 0}, {128, 203}, {203, 203}, {232, 232}},
       8,
       0x110C0350,
       {"2 161 7"},
       "3 S",
       "4 S",
       "3 M",
       {2, -1, 256, INT32_MIN, INT32_MAX}},
      {"detach_fru",
       [](int32_t, int32_t limit) { return lmainte_detach_fru(limit, &the_unit()); },
       "/mgb/bin/detachfru",
       {{0, "-u\n/PSU#7\n"}},
       {{0, 0}, {128, 205}, {205, 205}},
       8,
       0x110C0320,
       {"2 161 7"},
       "3 S",
       "3 S",
       "",
       {}},
      {"test_fru",
       [](int32_t, int32_t limit) { return lmainte_test_fru(limit, &the_unit()); },
       "/mgb/bin/testfru",
       {{0, "-u\n/PSU#7\n"}},
       {{0, 0}, {128, 208}, {208, 208}},
       8,
       0x110C0360,
       {"2 161 7"},
       "3 S",
       "3 S",
       "",
       {}},
      {"check_fanspeed",
       [](int32_t, int32_t limit) { return lmainte_check_fanspeed(limit, "/FAN_A#2"); },
       "/mgb/bin/chkfanspeed",
       {{0, "-u\n/FAN_A#2\n"}},
       {{0, 0}, {128, 225}, {225, 225}},
       8,
       0x110C0540,
       {"2 14"},
       "3 S",
       "3 S",
       "",
       {}},
      {"clear_status",
       [](int32_t, int32_t limit) { return lmainte_clear_status(limit, &the_request()); },
       "/mgb/bin/clearpci",
       {{0, "-u\n/IOU#0/PCI#1\n-c\nstatus\n"}},
       {{0, 0}, {128, 220}, {220, 220}},
       8,
       0x110C0470,
       {"2 1744896515 17"},
       "3 S",
       "3 S",
       "",
       {}},
  };
  return kRows;
}

// The modes of set_xsb here: ten times the division, and one more with mirroring.
const std::vector<Operation> &on_a_board() {
  static const std::vector<Operation> kRows = {
      {"test_sb",
       [](int32_t, int32_t limit) { return lmainte_test_sb(limit, &the_board()); },
       "/mgb/cli/usr/bin/testsb",
       {{0, "-q\n-y\n3\n"}},
       {{0, 0}, {1, 8}, {3, 8}, {8, 8}, {127, 8}},
       208,
       0x110C81C0,
       {"2 16 3", "3 12"},
       "4 S",
       "3 S",
       "",
       {}},
      {"set_xsb",
       [](int32_t mode, int32_t limit) { return lmainte_set_xsb(mode / 10, mode % 10, limit, &the_board()); },
       "/mgb/cli/usr/bin/setupfru",
       {{11, "-m\ny\n-x\n1\nsb\n3\n"}, {10, "-m\nn\n-x\n1\nsb\n3\n"}, {40, "-m\nn\n-x\n4\nsb\n3\n"}},
       {{0, 0}, {6, 209}, {136, 209}, {137, 209}},
       8,
       0x110C81A0,
       {"2 16 3", "3 8"},
       "4 S",
       "4 S",
       "",
       {}},
      {"clear_xsb",
       [](int32_t division, int32_t limit) { return lmainte_clear_xsb(division, limit, &the_board()); },
       "/mgb/cli/usr/bin/deleteboard",
       {{1, "-q\ny\n-c\nunassign\n03-0\n"}, {4, "-q\ny\n-c\nunassign\n03-0\n03-1\n03-2\n03-3\n"}},
       {{0, 0}, {6, 210}, {7, 210}, {128, 210}, {131, 210}, {132, 210}, {133, 210}, {136, 210}},
       8,
       0x110C81B0,
       {"2 16 3", "3 13"},
       "4 S",
       "4 S",
       "3 M",
       {0, 2, 3, 5, -1, 257, INT32_MIN}},
      {"link_board",
       [](int32_t mode, int32_t limit) { return lmainte_link_board(mode, limit, &the_board()); },
       "/mgb/bin/linkboard",
       {{1, "-u\n/CMU#3\n-c\nup\n"}, {0, "-u\n/CMU#3\n-c\ndown\n"}},
       {{0, 0}, {128, 226}, {226, 226}},
       8,
       0x110C81E0,
       {"2 16 3", "3 15"},
       "4 S",
       "5 S",
       "4 M",
       {2, -1, 256}},
  };
  return kRows;
}

}  // namespace

const std::vector<Operation> &operations() {
  static const auto kAll = [] {
    std::vector<Operation> all;
    for (const auto *rows : {&on_the_system(), &on_a_unit(), &on_a_fru(), &on_a_board()})
      all.insert(all.end(), rows->begin(), rows->end());
    return all;
  }();
  return kAll;
}

}  // namespace doubles
