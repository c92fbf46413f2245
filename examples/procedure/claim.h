// One procedure at a time: the procedure information tells who is at work. One that was killed is taken over.
#pragma once

#include <fcntl.h>
#include <sys/types.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <fstream>
#include <string>
#include <system_error>

#include "advice.h"
#include "lmainte.h"
#include "lmainte_platform.h"
#include "results.h"
#include "telling.h"

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
    std::ifstream file("/proc/" + std::to_string(process) + "/stat");
    std::string text;
    std::getline(file, text);  // nothing where the process ends between the opening and the reading
    const size_t name_end = text.rfind(") ");
    if (name_end != std::string::npos && (text[name_end + 2] == 'Z' || text[name_end + 2] == 'X')) return false;
    return kill(process, 0) == 0 || errno == EPERM;
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

}  // namespace procedure
