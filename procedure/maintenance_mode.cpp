#include "procedure/maintenance_mode.h"

#include "include/lmainte_procedure.h"
#include "procedure/beside.h"
#include "procedure/log.h"
#include "procedure/results.h"
#include "procedure/telling.h"
#include "procedure/words.h"

namespace lmainte::procedure {
namespace {

Text end_mode() {
  return Text("/mgb/bin/ctlmainte -c unlock");
}

// Maintenance goes on without the remote service.
void tell_of_report(int32_t result) {
  if (result != LMAINTE_OK)
    lmainte_tell(words("The remote service could not be told of the maintenance (result %d)."), result);
}

}  // namespace

int32_t Maintenance::begin(bool is_taken_over) {
  int32_t reported = LMAINTE_OK;
  const int32_t result = with_late_progress(Text(words("Starting maintenance mode ")), longest(), [&] {
    if (is_taken_over) set_mode(LMAINTE_MAINTE_UNLOCK);  // whether or not it was on
    const int32_t set = set_mode(LMAINTE_MAINTE_LOCK);
    if (set == LMAINTE_OK) reported = report(LMAINTE_REPORT_START);
    return set;
  });
  is_begun_ = perhaps_done(result);
  is_reported_ = result == LMAINTE_OK;
  if (is_reported_) {
    tell_of_report(reported);
    return LMAINTE_OUTCOME_DONE;
  }
  failed(words("Maintenance mode could not be started"), result);
  if (result == LMAINTE_BUSY) advise(words("If no other procedure runs, end the mode with:"), end_mode());
  return LMAINTE_OUTCOME_FAILED;
}

bool Maintenance::end() {
  if (!is_begun_) return true;
  is_begun_ = false;
  int32_t reported = LMAINTE_OK;
  const int32_t result = with_late_progress(Text(words("Ending maintenance mode ")), longest(), [&] {
    if (is_reported_) reported = report(LMAINTE_REPORT_END);
    return set_mode(LMAINTE_MAINTE_UNLOCK);
  });
  tell_of_report(reported);
  if (result == LMAINTE_OK) return true;
  advise(
      text_of(words("The server may still be in maintenance mode: %s.\nEnd the mode with:"), reason_of(result).c_str())
          .view(),
      end_mode());
  log_left(LMAINTE_LEFT_IN_MODE);
  return false;
}

int32_t Maintenance::longest() const {
  return 2 * server_.time(LMAINTE_CMD_CTLMAINTE) + server_.time(LMAINTE_CMD_VANTAMAINTE);
}

int32_t Maintenance::set_mode(int32_t mode) const {
  return lmainte_control_mainte(mode, server_.time(LMAINTE_CMD_CTLMAINTE));
}

int32_t Maintenance::report(int32_t mode) const {
  return lmainte_report_vanta(mode, server_.time(LMAINTE_CMD_VANTAMAINTE));
}

}  // namespace lmainte::procedure
