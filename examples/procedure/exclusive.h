// One procedure at a time: the procedure information tells who is at work, and the server is in maintenance mode.
#pragma once

#include <fcntl.h>
#include <sys/types.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <string>
#include <system_error>

#include "../graceful.h"
#include "advice.h"
#include "beside.h"
#include "left.h"
#include "lmainte.h"
#include "lmainte_platform.h"
#include "results.h"
#include "telling.h"
#include "unit_kinds.h"

namespace procedure {

// The file with the procedure information tells who is at work.
class Claim {
 public:
  Claim() = default;
  ~Claim() {
    // Until what the last procedure left has been taken care of, the next one has to find the file as it is.
    if (is_held_ && !is_taken_over_ && lmainte_fclear_pinfo(kFile) != LMAINTE_OK)
      advise(text_of("The file %s could not be cleared. Remove it with:", kFile), kRemoval);
  }
  Claim(const Claim &) = delete;
  Claim &operator=(const Claim &) = delete;

  Outcome take() {
    // While the file is open nobody else reads or writes it: two procedures cannot both find it free.
    const int32_t fd = lcmn_lopen(kFile, O_RDWR | O_CREAT, 0644);
    if (fd < 0) {
      const std::string reason = std::system_category().message(errno);
      tell("The file %s could not be opened: %s.", kFile, reason.c_str());
      advise("Make room in /tmp, or remove the file with:", kRemoval);
      return kFailed;
    }
    const Outcome outcome = take(fd);
    lcmn_close(fd);
    return outcome;
  }

  // True when the last procedure died on its way, and left things as they were.
  bool is_taken_over() const { return is_taken_over_; }
  // They are in order. Until then the claim stays, also behind this procedure: the next one takes over.
  void settle() { is_taken_over_ = false; }

 private:
  static constexpr char kFile[] = "/tmp/mainte_procedure";
  static constexpr char kRemoval[] = "rm /tmp/mainte_procedure";

  // A process that has ended and was not waited for still has its number. It does nothing any more.
  static bool is_running(pid_t process) {
    if (kill(process, 0) != 0 && errno != EPERM) return false;
    std::ifstream file("/proc/" + std::to_string(process) + "/stat");
    const std::string text((std::istreambuf_iterator<char>(file)), {});
    const size_t name_end = text.rfind(") ");
    const char state = name_end == std::string::npos ? 'R' : text[name_end + 2];
    return state != 'Z' && state != 'X';
  }

  Outcome take(int32_t fd) {
    char text[257] = {};  // the library reads up to 256 bytes and writes no NUL
    int32_t result = lmainte_get_pinfo(fd, text);
    if (result != LMAINTE_OK) return failed(text_of("The file %s could not be read", kFile), result, kTryAgain);
    const pid_t other = text[0] == '\0' ? 0 : lmainte_get_pid(text);
    if (other > 0 && other != getpid() && is_running(other)) {
      tell("Another procedure is running: process %d. Let it end, then start again.", static_cast<int>(other));
      advise("If that process is no procedure, remove the file that names it with:", kRemoval);
      return kFailed;
    }
    is_taken_over_ = other > 0;
    if (is_taken_over_)
      tell("\nThe last procedure, process %d, was killed before its end. This one takes over.",
           static_cast<int>(other));
    else if (text[0] != '\0')
      tell("The file %s names no process. It is written anew.", kFile);
    result = lmainte_put_pinfo(fd);
    is_held_ = result == LMAINTE_OK;
    return is_held_ ? kDone : failed(text_of("The file %s could not be written", kFile), result, "Is /tmp full?");
  }

  bool is_held_ = false;
  bool is_taken_over_ = false;
};

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
