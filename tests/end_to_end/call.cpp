// Calls one function of the library in a box and prints its result: call FUNCTION ARGUMENT...

#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "lmainte.h"
#include "lmainte_host.h"
#include "lmainte_platform.h"
#include "lmainte_procedure.h"
#include "tests/end_to_end/rows.h"

namespace {

using end_to_end::Row;

int32_t number(const char *text) {
  return static_cast<int32_t>(std::strtol(text, nullptr, 0));
}

int32_t exec(char **words) {
  return lmainte_exec(number(words[0]), number(words[1]), "%s", words[2]);
}

UnitRecord unit(const char *name) {
  UnitRecord record{};
  std::snprintf(record.name, sizeof record.name, "%s", name);
  return record;
}

int32_t led(char **words) {
  const auto record = unit(words[2]);
  return lmainte_control_led(number(words[0]), number(words[1]), &record);
}

// As a command that ends in order: a signal waits for the end of the control program.
int32_t led_gracefully(char **words) {
  lmainte_session_begin();
  const int32_t result = lmainte::operate_quietly("Switching ", 60, [&] { return led(words); });
  lmainte_session_end();
  return result;
}

int32_t flag(char **words) {
  const auto record = unit(words[2]);
  return lmainte_set_mainteflag(number(words[0]), number(words[1]), &record);
}

int32_t fan(char **words) {
  return lmainte_control_fan(number(words[0]), number(words[1]), nullptr);
}
int32_t mainte(char **words) {
  return lmainte_control_mainte(number(words[0]), number(words[1]));
}
int32_t vanta(char **words) {
  return lmainte_report_vanta(number(words[0]), number(words[1]));
}

int32_t model(char ** /*words*/) {
  lmainte_model_data data{};
  const int32_t result = lmainte_get_model_data(&data, nullptr);
  std::printf("model %u, %u power supplies\n", data.model, data.unit[LMAINTE_SLOT_PSU].max_count);
  return result;
}

int32_t psu(char **words) {
  PsuData data{};
  const int32_t result = lmainte_get_psu_data(number(words[0]), 1, number(words[1]), &data);
  std::printf("power supply %d, status %08x, FRU name %.18s\n", data.number, static_cast<unsigned>(data.status),
              data.fru_name);
  return result;
}

int32_t show(char **words) {
  return lmainte_show_file(words[0]);
}

int32_t tty(char **words) {
  return lmainte_tty_control(number(words[0]), number(words[1]));
}

int32_t ask(char **words) {
  int32_t answer = 0;
  const int32_t result = lmainte_ask_select(number(words[0]), &answer, "%s", words[1]);
  std::printf("answer %d\n", answer);
  return result;
}

// The progress indicator, while text of the command's own is still unwritten.
int32_t dots(char **words) {
  std::printf("before ");
  const DotParam request = {1, "Testing", number(words[0])};
  const int32_t pid = lmainte_dot_start(&request);
  sleep(static_cast<unsigned>(number(words[1])));
  lmainte_dot_end(pid);
  return pid > 0 ? 0 : -1;
}

int32_t dots_gracefully(char **words) {
  lmainte_session_begin();
  const int32_t result = dots(words);
  if (lmainte_session_signal() != 0) std::puts("\nInterrupted.");
  lmainte_session_end();
  return result;
}

// Opens and locks the databases 0 to 5, and gives them back.
int32_t locks(char ** /*words*/) {
  constexpr uint32_t kCount = 6;
  for (uint32_t id = 0; id < kCount; ++id) {
    if (lmainte_scdb_open(id) != 0 || lmainte_scdb_lock(id) != 0) return static_cast<int32_t>(id) + 1;
  }
  for (uint32_t id = kCount; id-- > 0;) {
    if (lmainte_scdb_unlock(id) != 0 || lmainte_scdb_close(id) != 0) return static_cast<int32_t>(id) + 1;
  }
  return 0;
}

// Locks a database and holds it until it is killed.
int32_t hold(char **words) {
  const auto id = static_cast<uint32_t>(number(words[0]));
  if (lmainte_scdb_open(id) != 0 || lmainte_scdb_lock(id) != 0) return -1;
  std::puts("held");
  for (;;) pause();
}

constexpr std::array<Row, 16> kRows{{{"exec", 3, exec},
                                     {"led", 3, led},
                                     {"led_gracefully", 3, led_gracefully},
                                     {"flag", 3, flag},
                                     {"fan", 2, fan},
                                     {"mainte", 2, mainte},
                                     {"vanta", 2, vanta},
                                     {"model", 0, model},
                                     {"psu", 2, psu},
                                     {"show", 1, show},
                                     {"tty", 2, tty},
                                     {"ask", 2, ask},
                                     {"dots", 2, dots},
                                     {"dots_gracefully", 2, dots_gracefully},
                                     {"locks", 0, locks},
                                     {"hold", 1, hold}}};

}  // namespace

int main(int argc, char **argv) {
  return end_to_end::call_and_print(kRows, argc, argv);
}
