#include "procedure/claim.h"

#include <fcntl.h>
#include <sys/types.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>

#include "include/lmainte_platform.h"
#include "include/lmainte_procedure.h"
#include "procedure/results.h"
#include "procedure/telling.h"
#include "procedure/words.h"

namespace lmainte::procedure {
namespace {

constexpr char kFile[] = "/tmp/mainte_procedure";

Text removal() {
  return text_of("rm %s", kFile);
}

// A process that has ended and was not waited for still has its number. It does nothing any more.
bool has_ended(pid_t process) {
  char path[32];
  snprintf(path, sizeof path, "/proc/%d/stat", static_cast<int>(process));
  char text[512] = {};
  const int fd = open(path, O_RDONLY | O_CLOEXEC);
  if (fd < 0) return false;
  const ssize_t size = read(fd, text, sizeof text - 1);  // nothing where the process ends meanwhile
  close(fd);
  const char *const name_end = size > 0 ? strrchr(text, ')') : nullptr;
  return name_end != nullptr && name_end[1] == ' ' && (name_end[2] == 'Z' || name_end[2] == 'X');
}

bool is_running(pid_t process) {
  return !has_ended(process) && (kill(process, 0) == 0 || errno == EPERM);
}

// As lmainte_put_pinfo would empty the file first: who is killed there would leave it empty, and nobody would know of the one before any
// more. One write puts the new text in the place of the old one, and its zero bytes end it for a reader.
int32_t replace_process(int32_t fd, const char *old) {
  char text[256] = {};
  for (const lmainte_pinfo_provider &provider : pinfo_t) {
    if (provider == nullptr) break;
    if (&provider != pinfo_t) strncat(text, ",", sizeof text - 1 - strlen(text));
    if (provider(text, sizeof text) != LMAINTE_OK) return LMAINTE_FAILED;
  }
  const size_t size = strlen(text), old_size = strnlen(old, sizeof text);
  const auto both = static_cast<int32_t>(size > old_size ? size : old_size);
  if (lseek(fd, 0, SEEK_SET) != 0 || lcmn_write(fd, text, both) != both) return LMAINTE_FAILED;
  return ftruncate(fd, static_cast<off_t>(size)) == 0 ? LMAINTE_OK : LMAINTE_FAILED;
}

}  // namespace

bool Claim::end() {
  if (!is_held_) return true;
  is_held_ = false;
  if (is_taken_over_) {
    lmainte_tell(words("The file %s stays: the next procedure takes over what is left."), kFile);
    return false;
  }
  if (lmainte_fclear_pinfo(kFile) == LMAINTE_OK) return true;
  advise(text_of(words("The file %s could not be cleared. Remove it with:"), kFile).view(), removal());
  return false;
}

int32_t Claim::take() {
  // While the file is open nobody else reads or writes it: two procedures cannot both find it free.
  const int32_t fd = lcmn_lopen(kFile, O_RDWR | O_CREAT, 0644);
  if (fd < 0) {
    lmainte_tell(words("The file %s could not be opened: %s."), kFile, strerror(errno));
    advise(words("Make room in /tmp, or remove the file with:"), removal());
    return LMAINTE_OUTCOME_FAILED;
  }
  const int32_t outcome = take(fd);
  lcmn_close(fd);
  return outcome;
}

int32_t Claim::take(int32_t fd) {
  char text[257] = {};  // the library reads up to 256 bytes and writes no NUL
  int32_t result = lmainte_get_pinfo(fd, text);
  if (result != LMAINTE_OK)
    return failed(text_of(words("The file %s could not be read"), kFile).view(), result, try_again());
  const pid_t other = text[0] == '\0' ? 0 : lmainte_get_pid(text);
  if (other > 0 && other != getpid() && is_running(other)) {
    lmainte_tell(words("Another procedure is running: process %d. Let it end, then start again."),
                 static_cast<int>(other));
    advise(words("If that process is no procedure, remove the file that names it with:"), removal());
    return LMAINTE_OUTCOME_FAILED;
  }
  is_taken_over_ = other > 0;
  if (is_taken_over_)
    lmainte_tell(words("\nThe last procedure, process %d, was killed. This one takes over."), static_cast<int>(other));
  else if (text[0] != '\0')
    lmainte_tell(words("The file %s names no process. It is written anew."), kFile);
  result = is_taken_over_ ? replace_process(fd, text) : lmainte_put_pinfo(fd);
  is_held_ = result == LMAINTE_OK;
  if (is_held_) return LMAINTE_OUTCOME_DONE;
  return failed(text_of(words("The file %s could not be written"), kFile).view(), result, words("Is /tmp full?"));
}

}  // namespace lmainte::procedure
