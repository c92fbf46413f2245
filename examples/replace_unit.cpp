// replace_unit - walks an operator through replacing a power supply while the server runs.
//
// A maintenance command as one writes it with liblmainte, in the order in which it happens:
//
//   1. what server this is, and how long its control programs may take
//   2. its power supplies, shown as a numbered list; the operator chooses one
//   3. the unit is marked: its LED blinks, its maintenance flag is set; its state is shown
//   4. the operator replaces it and says so; the state of the new one is read and shown
//   5. the marks are taken back - at every way out, also when the operator gives up or a signal comes
//
// Exit status: 0 replaced, 1 something failed, 2 the operator gave up.

#include <cstdio>
#include <vector>

#include "in_order.h"
#include "lmainte.h"
#include "lmainte_host.h"
#include "lmainte_platform.h"

namespace {

enum Outcome { kReplaced = 0, kFailed = 1, kGaveUp = 2 };

// ---- What the operator is told -------------------------------------------------------------------------------------

constexpr const char *kTryAgain =
    "Another command may hold the database: try again in a minute.\nThe trace names the reason.";
constexpr const char *kCheckPager = "Check that /bin/busybox is there and that /tmp has room.";

Outcome failed(const char *what, int32_t result, const char *way_out) {
  std::printf("\n%s (result %d).\n%s\n", what, result, way_out);
  return kFailed;
}

// The operator typed q, the input ended, a signal came, or the terminal failed.
Outcome not_chosen(int32_t result) {
  if (in_order::signal() == 0 && result < 0) {
    return failed("The question could not be asked", result, "Start replace_unit on the operator's terminal.");
  }
  std::puts(in_order::signal() != 0 ? "Interrupted." : "Given up.");
  return kGaveUp;
}

const char *way_out_of(int32_t result) {
  switch (result) {
    case LMAINTE_BUSY:
    case LMAINTE_FLAG_REFUSED:
      return "Another procedure works on the unit. Let it end, then start again.";
    case LMAINTE_LED_FAILED:
      return "The unit does not answer. Check that it is in place, then start again.";
    default:
      return "The control program is missing, failed or took too long; the trace says which.\nThen start again.";
  }
}

// ---- The server and its units --------------------------------------------------------------------------------------

constexpr uint32_t kNotRead = 0xFFFFFFFF;  // stays where the reader fails before it looks for the model

struct Server {
  lmainte_model_data model{};
  int32_t led_time = 0;  // seconds that the control programs may take
  int32_t flag_time = 0;
};

int32_t read_server(Server &server) {
  server.model.model = kNotRead;
  lmainte_cmdtime times[] = {{LMAINTE_CMD_CTLLED, 0}, {LMAINTE_CMD_SETMAINTEFLAG, 0}, {LMAINTE_CMDTIME_END, 0}};
  const int32_t result = lmainte_get_model_data(&server.model, times);
  server.led_time = static_cast<int32_t>(times[0].time);
  server.flag_time = static_cast<int32_t>(times[1].time);
  return result;
}

int32_t read_psus(const Server &server, std::vector<PsuData> &psus) {
  psus.assign(server.model.unit[LMAINTE_SLOT_PSU].max_count, PsuData{});
  const auto count = static_cast<int32_t>(psus.size());
  return lmainte_get_psu_data(-1, count, static_cast<int32_t>(server.model.model), psus.data());
}

int32_t read_psu(const Server &server, int32_t number, PsuData &psu) {
  psu = {};
  return lmainte_get_psu_data(number, 1, static_cast<int32_t>(server.model.model), &psu);
}

bool works(const PsuData &psu) {
  const auto status = static_cast<uint32_t>(psu.status);
  const uint32_t condition = LMAINTE_STATUS_FAULTED | LMAINTE_STATUS_DEGRADED;
  return (status & LMAINTE_STATUS_INSTALLED) != 0 && (status & condition) == 0;
}

// The operations take a unit by its name.
bool name_unit(const PsuData &psu, UnitRecord &unit) {
  unit = {psu.type, psu.number, 0, {psu.unit_id[0], psu.unit_id[1]}, {}};
  return api_conv_unit_name_get(psu.unit_id, 0, unit.name, 0, 0) == 0;
}

int32_t show_list(const std::vector<PsuData> &psus) {
  const auto count = static_cast<uint32_t>(psus.size());
  const ListLine lines[] = {{LMAINTE_LINE_HEAD, "Power supplies of this server\n\n", 0, {}},
                            {LMAINTE_LINE_HEAD, "No. Unit            State\n", 0, {}},
                            {LMAINTE_LINE_FOOT, "\n%u power supplies.\n", 0, {count}},
                            {LMAINTE_LINE_END, nullptr, 0, {}}};
  return in_order::after_pager(lmainte_show_psu_list(0, count, psus.data(), lines));
}

int32_t show_status(const PsuData &psu) {
  const ListLine lines[] = {{LMAINTE_LINE_HEAD, "Unit          State\n", 0, {}},
                            {LMAINTE_LINE_FOOT, "\n", 0, {}},
                            {LMAINTE_LINE_END, nullptr, 0, {}}};
  return in_order::after_pager(lmainte_show_psu_status(0, &psu, lines));
}

// A unit under maintenance. What was switched is switched back, at the latest by the destructor.
class Marked {
 public:
  Marked(const Server &server, const UnitRecord &unit) : server_(server), unit_(unit) {}
  ~Marked() { take_back(); }
  Marked(const Marked &) = delete;
  Marked &operator=(const Marked &) = delete;

  int32_t mark() {
    const in_order::Undisturbed undisturbed;
    int32_t result = lmainte_control_led(LMAINTE_LED_BLINK, server_.led_time, &unit_);
    led_ = perhaps_switched(result);
    if (result != LMAINTE_OK) return result;
    result = lmainte_set_mainteflag(LMAINTE_FLAG_START, server_.flag_time, &unit_);
    flag_ = perhaps_switched(result);
    return result;
  }

  // In reverse order. What cannot be switched back is named, and the rest is done all the same.
  bool take_back() {
    const in_order::Undisturbed undisturbed;
    const int32_t flag = flag_ ? lmainte_set_mainteflag(LMAINTE_FLAG_END, server_.flag_time, &unit_) : LMAINTE_OK;
    const int32_t led = led_ ? lmainte_control_led(LMAINTE_LED_OFF, server_.led_time, &unit_) : LMAINTE_OK;
    flag_ = led_ = false;
    if (flag != LMAINTE_OK) report("maintenance flag may still be set", flag, "/mgb/bin/setmainteflag", "end");
    if (led != LMAINTE_OK) report("LED may still blink", led, "/mgb/bin/ctlled", "off");
    return flag == LMAINTE_OK && led == LMAINTE_OK;
  }

 private:
  // A program that was stopped at its time limit may have done its work all the same.
  static bool perhaps_switched(int32_t result) { return result == LMAINTE_OK || result == LMAINTE_FAILED; }

  void report(const char *what, int32_t result, const char *program, const char *end) const {
    std::printf("\n%s: the %s (result %d).\nMend it with: %s -u %s -c %s\n", unit_.name, what, result, program,
                unit_.name, end);
  }

  const Server &server_;
  const UnitRecord &unit_;
  bool led_ = false;
  bool flag_ = false;
};

// ---- The walk ------------------------------------------------------------------------------------------------------

// Asks until a unit that works is in place.
Outcome exchange(const Server &server, const UnitRecord &unit) {
  for (;;) {
    int32_t done = 0;
    int32_t result = lmainte_ask_select(1, &done, "Replace %s now. Type 1 when it is done, q to give up: ", unit.name);
    if (result != LMAINTE_HOST_CHOSEN || in_order::signal() != 0) return not_chosen(result);

    PsuData psu;
    result = read_psu(server, unit.number, psu);
    if (result != LMAINTE_OK) return failed("The new unit's state could not be read", result, kTryAgain);
    result = show_status(psu);
    if (result != LMAINTE_OK) return failed("The new unit's state could not be shown", result, kCheckPager);
    if (works(psu)) return kReplaced;
    std::printf("%s is not ready: a working unit must be in place.\n", unit.name);
  }
}

Outcome replace(const Server &server, const PsuData &psu) {
  UnitRecord unit;
  if (!name_unit(psu, unit)) {
    return failed("The unit has no location name", LMAINTE_FAILED, "Its record does not fit the model: call service.");
  }
  Marked marked(server, unit);
  int32_t result = marked.mark();
  if (result != LMAINTE_OK) return failed("The unit could not be marked", result, way_out_of(result));
  std::printf("The LED of %s blinks, its maintenance flag is set.\n\n", unit.name);

  result = show_status(psu);
  if (result != LMAINTE_OK) return failed("The unit's state could not be shown", result, kCheckPager);
  const Outcome outcome = exchange(server, unit);
  if (!marked.take_back()) return kFailed;
  std::printf("%s: LED and maintenance flag are off.\n", unit.name);
  return outcome;
}

Outcome walk() {
  Server server;
  int32_t result = read_server(server);
  if (result != LMAINTE_OK) {
    const bool no_model = server.model.model == LMAINTE_MODEL_NONE;
    return failed(
        "The server's model could not be read", result,
        no_model ? "/tmp holds no marker file of a model.\nStart replace_unit on a service processor." : kTryAgain);
  }
  std::vector<PsuData> psus;
  result = read_psus(server, psus);
  if (result != LMAINTE_OK) return failed("The power supplies could not be read", result, kTryAgain);
  result = show_list(psus);
  if (result != LMAINTE_OK) return failed("The list could not be shown", result, kCheckPager);
  if (in_order::signal() != 0) return not_chosen(LMAINTE_OK);

  // Every power supply has a line, so the number on the list is the record's own place, counted from 1.
  int32_t number = 0;
  result = lmainte_ask_select(static_cast<int32_t>(psus.size()), &number,
                              "\nWhich power supply do you replace? Type its number, q to give up: ");
  if (result != LMAINTE_HOST_CHOSEN || in_order::signal() != 0) return not_chosen(result);
  return replace(server, psus[static_cast<size_t>(number) - 1]);
}

}  // namespace

int main() {
  in_order::catch_signals();
  Outcome outcome = kFailed;
  {
    const in_order::Dialogue dialogue;
    if (in_order::Dialogue::begun()) {
      outcome = walk();
    } else {
      std::fputs("replace_unit: this is no terminal. Start it on the operator's terminal.\n", stderr);
    }
  }
  std::fflush(stdout);
  in_order::die_of_signal();
  return outcome;
}
