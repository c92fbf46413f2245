// A maintenance command in short: act STEP ARGUMENT... does one step of a procedure and prints the library's result.

#include <array>
#include <cstdio>
#include <cstdlib>

#include "lmainte.h"
#include "lmainte_host.h"
#include "tests/end_to_end/rows.h"

namespace {

using end_to_end::Row;

constexpr int32_t kTimeLimit = 20;

int32_t number(const char *text) {
  return static_cast<int32_t>(std::strtol(text, nullptr, 0));
}

// A unit by its type, its number and its name.
UnitRecord unit(const char *type, const char *no, const char *name) {
  UnitRecord record{};
  record.type = number(type);
  record.number = number(no);
  std::snprintf(record.name, sizeof record.name, "%s", name);
  return record;
}
UnitRecord named(const char *name) {
  return unit("0", "0", name);
}
UnitRecord board(const char *no) {
  return unit("16", no, "");
}

int32_t judge(char **words) {
  const auto record = named(words[1]);
  return lmainte_judge_control_fru(number(words[0]), kTimeLimit, &record);
}
int32_t detach(char **words) {
  const auto record = named(words[0]);
  return lmainte_detach_fru(kTimeLimit, &record);
}
int32_t test(char **words) {
  const auto record = named(words[0]);
  return lmainte_test_fru(kTimeLimit, &record);
}
int32_t test_board(char **words) {
  const auto record = board(words[0]);
  return lmainte_test_sb(kTimeLimit, &record);
}
int32_t set_xsb(char **words) {
  const auto record = board(words[2]);
  return lmainte_set_xsb(number(words[0]), number(words[1]), kTimeLimit, &record);
}
int32_t clear_xsb(char **words) {
  const auto record = board(words[1]);
  return lmainte_clear_xsb(number(words[0]), kTimeLimit, &record);
}
int32_t link_unit(char **words) {
  const auto record = unit(words[1], "0", words[2]);
  return lmainte_link_board(number(words[0]), kTimeLimit, &record);
}
int32_t fan_speed(char **words) {
  return lmainte_check_fanspeed(kTimeLimit, words[0]);
}
int32_t clear_slot(char **words) {
  ClearRequest request{};
  std::snprintf(request.arguments, sizeof request.arguments, "-u %s", words[0]);
  return lmainte_clear_status(kTimeLimit, &request);
}

// Waits until a power supply of the largest model is in (0) or out (2), and stays so.
int32_t installed(char **words) {
  PsuData psu{};
  return lmainte_chk_fru_install(static_cast<uint32_t>(number(words[0])), LMAINTE_TYPE_PSU, number(words[1]),
                                 LMAINTE_MODEL_QE1, &psu);
}

int32_t send_event(char **words) {
  const EventUnit about = {{},
                           {static_cast<uint32_t>(std::strtoul(words[2], nullptr, 0)),
                            static_cast<uint32_t>(std::strtoul(words[3], nullptr, 0))},
                           {},
                           0};
  return lmainte_send_event(number(words[0]), number(words[1]), &about);
}

struct Request {
  lmainte_host_message head;
  uint32_t unit_id[2];
};
union Reply {
  lmainte_host_reply reply;
  uint8_t bytes[LMAINTE_HOST_MESSAGE_MOST];
};

int32_t ask_once(int32_t channel, uint32_t sequence, int32_t limit) {
  const Request request = {{16, LMAINTE_HOST_MONITOR_NUMBER, LMAINTE_HOST_ASK_STATUS, sequence}, {}};
  Reply answer{};
  const int32_t result = lmainte_ipc_communicate(&request, channel, limit, &answer);
  if (result == LMAINTE_OK) std::printf("reply %u of model %u\n", answer.reply.head.sequence, answer.reply.word[2]);
  return result;
}

int32_t ask(char **words) {
  const int32_t channel = lmainte_host_open_channel(LMAINTE_HOST_MONITOR);
  const int32_t result = ask_once(channel, 1, number(words[0]));
  lmainte_host_close_channel(channel);
  return result;
}

// Asks, gives up after a second, and asks with patience then.
int32_t ask_again(char ** /*words*/) {
  const int32_t channel = lmainte_host_open_channel(LMAINTE_HOST_MONITOR);
  std::printf("first %d\n", ask_once(channel, 1, 1));
  const int32_t result = ask_once(channel, 2, 20);
  lmainte_host_close_channel(channel);
  return result;
}

constexpr std::array<Row, 13> kRows{{{"judge", 2, judge},
                                     {"detach", 1, detach},
                                     {"test", 1, test},
                                     {"test_board", 1, test_board},
                                     {"set_xsb", 3, set_xsb},
                                     {"clear_xsb", 2, clear_xsb},
                                     {"link", 3, link_unit},
                                     {"fan_speed", 1, fan_speed},
                                     {"clear_slot", 1, clear_slot},
                                     {"installed", 2, installed},
                                     {"send_event", 4, send_event},
                                     {"ask", 1, ask},
                                     {"ask_again", 0, ask_again}}};

}  // namespace

int main(int argc, char **argv) {
  return end_to_end::call_and_print(kRows, argc, argv);
}
