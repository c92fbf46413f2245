// One procedure at a time: the procedure information tells who is at work, and the server is in maintenance mode.
#pragma once

#include <fcntl.h>
#include <sys/types.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <string>
#include <system_error>

#include "../graceful.h"
#include "lmainte.h"
#include "lmainte_platform.h"
#include "telling.h"
#include "unit_kinds.h"

namespace procedure {

// The file with the procedure information tells who is at work.
class Claim {
 public:
  Claim() = default;
  ~Claim() {
    // Unless what the last procedure left has been taken care of, the next one is to find that this one died, too.
    if (is_held_ && !is_taken_over_ && lmainte_fclear_pinfo(kFile) != LMAINTE_OK)
      std::printf("%s could not be cleared: remove it.\n", kFile);
  }
  Claim(const Claim &) = delete;
  Claim &operator=(const Claim &) = delete;

  Outcome take() {
    // While the file is open nobody else reads or writes it: two procedures cannot both find it free.
    const int32_t fd = lcmn_lopen(kFile, O_RDWR | O_CREAT, 0644);
    if (fd < 0) {
      std::printf("The file %s could not be opened: %s.\nMake room in /tmp, or remove the file.\n", kFile,
                  std::system_category().message(errno).c_str());
      return kFailed;
    }
    const Outcome outcome = take(fd);
    lcmn_close(fd);
    return outcome;
  }

  // True when the last procedure died on its way, and left things as they were.
  bool is_taken_over() const { return is_taken_over_; }
  // They are in order.
  void settle() { is_taken_over_ = false; }

 private:
  static constexpr char kFile[] = "/tmp/mainte_procedure";

  Outcome take(int32_t fd) {
    char text[257] = {};  // the library reads up to 256 bytes and writes no NUL
    int32_t result = lmainte_get_pinfo(fd, text);
    if (result != LMAINTE_OK) return failed(std::string("The file ") + kFile + " could not be read", result, kTryAgain);
    const pid_t other = text[0] == '\0' ? 0 : lmainte_get_pid(text);
    const bool is_alive = other > 0 && other != getpid() && (kill(other, 0) == 0 || errno == EPERM);
    if (is_alive) {
      std::printf(
          "Another procedure is running: process %d. Let it end, then start again.\nIf that is none, remove %s.\n",
          static_cast<int>(other), kFile);
      return kFailed;
    }
    is_taken_over_ = other > 0;
    if (is_taken_over_)
      std::printf("\nThe last procedure, process %d, died on its way. This one takes over.\n", static_cast<int>(other));
    else if (text[0] != '\0')
      std::printf("%s named no process, and is written anew.\n", kFile);
    result = lmainte_put_pinfo(fd);
    is_held_ = result == LMAINTE_OK;
    return is_held_ ? kDone
                    : failed(std::string("The file ") + kFile + " could not be written", result, "Is /tmp full?");
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
    const graceful::Undisturbed undisturbed;
    if (is_taken_over) lmainte_control_mainte(LMAINTE_MAINTE_UNLOCK, mode_time());  // whether or not it was locked
    const int32_t result = lmainte_control_mainte(LMAINTE_MAINTE_LOCK, mode_time());
    is_begun_ = perhaps_done(result);
    if (result != LMAINTE_OK) {
      failed("Maintenance mode could not be begun", result, way_out_of(result));
      if (result == LMAINTE_BUSY) std::puts("If there is none, end the mode with: /mgb/bin/ctlmainte -c unlock");
      return kFailed;
    }
    report(LMAINTE_REPORT_START);
    is_reported_ = true;
    return kDone;
  }

  bool end() {
    if (!is_begun_) return true;
    is_begun_ = false;
    const graceful::Undisturbed undisturbed;
    if (is_reported_) report(LMAINTE_REPORT_END);
    const int32_t result = lmainte_control_mainte(LMAINTE_MAINTE_UNLOCK, mode_time());
    if (result != LMAINTE_OK)
      failed("The server may still be in maintenance mode", result, "Mend it with: /mgb/bin/ctlmainte -c unlock");
    return result == LMAINTE_OK;
  }

 private:
  int32_t mode_time() const { return server_.time(LMAINTE_CMD_CTLMAINTE); }

  // Maintenance goes on without the remote service.
  void report(int32_t mode) const {
    const int32_t result = lmainte_report_vanta(mode, server_.time(LMAINTE_CMD_VANTAMAINTE));
    if (result != LMAINTE_OK) std::printf("The remote service was not told (result %d).\n", result);
  }

  const Server &server_;
  bool is_begun_ = false;
  bool is_reported_ = false;  // that it began
};

}  // namespace procedure
