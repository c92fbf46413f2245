#include "procedure/marks.h"

#include "include/lmainte_procedure.h"
#include "procedure/beside.h"
#include "procedure/log.h"
#include "procedure/results.h"
#include "procedure/telling.h"
#include "procedure/words.h"

namespace lmainte::procedure {
namespace {

bool is_back(const Text &what, int32_t result, const Text &command) {
  if (result != LMAINTE_OK)
    advise(text_of(words("%s: %s.\nSwitch it back by hand with:"), what.c_str(), reason_of(result).c_str()).view(),
           command);
  return result == LMAINTE_OK;
}

}  // namespace

int32_t Marks::set() {
  return with_late_progress(text_of(words("Marking %s "), unit_.name), longest(), [this] { return set_all(); });
}

void Marks::take_over() {
  is_taken_over_ = true;
  has_flag_ = has_led_ = true;
  has_fans_ = is_fan_tray();
}

bool Marks::take_back() {
  if (!are_set()) return true;
  Results results;
  with_late_progress(text_of(words("Taking back the marks of %s "), unit_.name), longest(), [&] {
    results = switch_back();
    return LMAINTE_OK;
  });
  has_fans_ = has_led_ = has_flag_ = false;
  const bool good = tell_what_stays(results);
  if (!good) log_left(LMAINTE_LEFT_MARKED, &unit_);
  return good;
}

int32_t Marks::set_all() {
  int32_t result = lmainte_set_mainteflag(LMAINTE_FLAG_START, time(LMAINTE_CMD_SETMAINTEFLAG), &unit_);
  has_flag_ = perhaps_done(result);
  if (result != LMAINTE_OK) return result;
  result = lmainte_control_led(LMAINTE_LED_BLINK, time(LMAINTE_CMD_CTLLED), &unit_);
  has_led_ = perhaps_done(result);
  if (result != LMAINTE_OK || !is_fan_tray()) return result;
  result = lmainte_control_fan(LMAINTE_FAN_HIGH, time(LMAINTE_CMD_CTLFAN), nullptr);
  has_fans_ = perhaps_done(result);
  return result;
}

Marks::Results Marks::switch_back() const {
  Results results;
  if (has_fans_) results.fans = lmainte_control_fan(LMAINTE_FAN_LOW, time(LMAINTE_CMD_CTLFAN), nullptr);
  if (has_led_) results.led = lmainte_control_led(LMAINTE_LED_OFF, time(LMAINTE_CMD_CTLLED), &unit_);
  // By its flag the next procedure finds what this one could not take back for the one that died.
  const bool is_rest_back = results.fans == LMAINTE_OK && results.led == LMAINTE_OK;
  if (has_flag_ && (is_rest_back || !is_taken_over_))
    results.flag = lmainte_set_mainteflag(LMAINTE_FLAG_END, time(LMAINTE_CMD_SETMAINTEFLAG), &unit_);
  return results;
}

bool Marks::tell_what_stays(const Results &results) const {
  const bool fans = is_back(Text(words("The fans may still run fast")), results.fans, Text("/mgb/bin/ctlfan -c low"));
  const bool led = is_back(text_of(words("The LED of %s may still blink"), unit_.name), results.led,
                           program_command("ctlled", unit_.name, "off"));
  const bool flag = is_back(text_of(words("%s may still have its maintenance flag"), unit_.name), results.flag,
                            program_command("setmainteflag", unit_.name, "end"));
  return fans && led && flag;
}

}  // namespace lmainte::procedure
