#include "procedure/results.h"

#include <algorithm>
#include <iterator>

#include "include/lmainte_procedure.h"
#include "procedure/telling.h"
#include "procedure/words.h"

namespace lmainte::procedure {
namespace {

constexpr Meaning kMeanings[] = {
    {LMAINTE_BUSY, false, noted("another procedure is at work"), noted("Let it end, then start again.")},
    {LMAINTE_MODE_REFUSED, false, noted("the server refuses"), noted("Let other procedures end, then start again.")},
    {LMAINTE_FLAG_REFUSED, false, noted("the maintenance flag was refused"),
     noted("Let other procedures end, then start again.")},
    {LMAINTE_DETACH_FAILED, false, noted("the server still uses the unit"),
     noted("Stop what runs on it, then start again.")},
    {LMAINTE_LED_FAILED, false, noted("the LED was not switched"),
     noted("Check that the unit is in place, then start again.")},
    {LMAINTE_TEST_FAILED, true, noted("failed its test"), noted("Exchange it for another one.")},
    {LMAINTE_SETUP_FAILED, false, noted("the board could not be divided"),
     noted("Check that no domain runs on the board and that both its units are in place, then start again.")},
    {LMAINTE_CLEAR_FAILED, false, noted("a domain runs on the board"), noted("Stop the domain.")},
    {LMAINTE_FAN_FAILED, false, noted("the speed of the fans was not set"),
     noted("Check the fan trays, then start again.")},
    {LMAINTE_FANSPEED_FAILED, true, noted("does not run at its speed"), noted("Exchange it for another one.")},
    {LMAINTE_LINK_FAILED, true, noted("does not answer on the server's links"),
     noted("Check that it sits firmly, then start again.")},
};

constexpr Meaning kAnyOther = {LMAINTE_FAILED, false, noted("a control program is missing, crashed or took too long"),
                               noted("The trace says which one. Then start again.")};

}  // namespace

const Meaning &meaning_of(int32_t result) {
  const auto *const row = std::find_if(std::begin(kMeanings), std::end(kMeanings),
                                       [&](const Meaning &meaning) { return meaning.result == result; });
  return row == std::end(kMeanings) ? kAnyOther : *row;
}

Text reason_of(int32_t result) {
  const Meaning &meaning = meaning_of(result);
  const char *const reason = words(meaning.reason);
  return meaning.is_fault_of_unit ? text_of(words("it %s (result %d)"), reason, result)
                                  : text_of(words("%s (result %d)"), reason, result);
}

const char *try_again() {
  return words(
      "Another command may be using the database: try again in a minute. If it fails again, a record is broken, and "
      "the trace names it.");
}

const char *check_pager() {
  return words("Check that /bin/busybox is there and that /tmp has room.");
}

const char *check_log() {
  return words("Is the disk of the log full?");
}

int32_t failed(std::string_view what, int32_t result, const char *way_out) {
  Text text(what);
  tell(text.add_format(words(" (result %d).\n%s"), result, way_out).view());
  return LMAINTE_OUTCOME_FAILED;
}

int32_t failed(std::string_view what, int32_t result) {
  Text text(what);
  text.add_format(": %s.\n%s", reason_of(result).c_str(), words(meaning_of(result).way_out));
  tell(text.view());
  return LMAINTE_OUTCOME_FAILED;
}

bool perhaps_done(int32_t result) {
  return result == LMAINTE_OK || result == LMAINTE_FAILED;
}

}  // namespace lmainte::procedure

int32_t lmainte_tell_failure(int32_t result, const char *format, ...) {
  PROCEDURE_TEXT(what, format);
  return lmainte::procedure::failed(what.view(), result);
}
