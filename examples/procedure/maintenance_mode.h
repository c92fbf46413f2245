// The server in maintenance mode, from the beginning of a procedure to its end.
#pragma once

#include <cstdint>

#include "../server.h"
#include "advice.h"
#include "beside.h"
#include "lmainte.h"
#include "lmainte_host.h"
#include "log_left.h"
#include "results.h"
#include "telling.h"

namespace procedure {

// The server in maintenance mode, and the remote service told of it.
class Maintenance {
 public:
  explicit Maintenance(const Server &server) : server_(server) {}
  ~Maintenance() { end(); }
  Maintenance(const Maintenance &) = delete;
  Maintenance &operator=(const Maintenance &) = delete;

  Outcome begin(bool is_taken_over) {
    int32_t reported = LMAINTE_OK;
    const int32_t result = with_late_progress("Starting maintenance mode ", longest(), [&] {
      if (is_taken_over) set_mode(LMAINTE_MAINTE_UNLOCK);  // whether or not it was on
      const int32_t set = set_mode(LMAINTE_MAINTE_LOCK);
      if (set == LMAINTE_OK) reported = report(LMAINTE_REPORT_START);
      return set;
    });
    is_begun_ = perhaps_done(result);
    is_reported_ = result == LMAINTE_OK;
    if (is_reported_) {
      tell_of_report(reported);
      return kDone;
    }
    failed("Maintenance mode could not be started", result);
    if (result == LMAINTE_BUSY) advise("If no other procedure runs, end the mode with:", kEndMode);
    return kFailed;
  }

  bool end() {
    if (!is_begun_) return true;
    is_begun_ = false;
    int32_t reported = LMAINTE_OK;
    const int32_t result = with_late_progress("Ending maintenance mode ", longest(), [&] {
      if (is_reported_) reported = report(LMAINTE_REPORT_END);
      return set_mode(LMAINTE_MAINTE_UNLOCK);
    });
    tell_of_report(reported);
    if (result == LMAINTE_OK) return true;
    advise(text_of("The server may still be in maintenance mode: %s.\nEnd the mode with:", reason_of(result).c_str()),
           kEndMode);
    log_left(LMAINTE_HOST_LEFT_IN_MODE);
    return false;
  }

 private:
  static constexpr char kEndMode[] = "/mgb/bin/ctlmainte -c unlock";

  int32_t longest() const { return 2 * server_.time(LMAINTE_CMD_CTLMAINTE) + server_.time(LMAINTE_CMD_VANTAMAINTE); }
  int32_t set_mode(int32_t mode) const { return lmainte_control_mainte(mode, server_.time(LMAINTE_CMD_CTLMAINTE)); }
  int32_t report(int32_t mode) const { return lmainte_report_vanta(mode, server_.time(LMAINTE_CMD_VANTAMAINTE)); }

  // Maintenance goes on without the remote service.
  static void tell_of_report(int32_t result) {
    if (result != LMAINTE_OK) tell("The remote service could not be told of the maintenance (result %d).", result);
  }

  const Server &server_;
  bool is_begun_ = false;
  bool is_reported_ = false;  // that it began
};

}  // namespace procedure
