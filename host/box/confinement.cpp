#include "host/box/confinement.h"

#include <fcntl.h>
#include <linux/landlock.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <exception>
#include <new>
#include <stdexcept>
#include <system_error>

#include "host/base/child.h"
#include "host/base/descriptor.h"
#include "host/base/pipe.h"
#include "host/base/read_all.h"
#include "host/base/told.h"
#include "host/box/confined_calls.h"
#include "host/box/lmdb_text.h"

namespace box {
namespace {

// What was added to <linux/landlock.h> later than the first version.
constexpr std::uint64_t kRefer = 1U << 13U, kTruncate = 1U << 14U, kDeviceCalls = 1U << 15U;
constexpr std::uint64_t kAbstractSockets = 1U << 0U, kSignals = 1U << 1U;

struct Rules {
  std::uint64_t files, network, scopes;
};

// What the kernel can refuse, by the version of its Landlock. All of it is.
Rules all_rules(int version) {
  Rules rules{(1U << 13U) - 1, 0, 0};
  if (version >= 2) rules.files |= kRefer;
  if (version >= 3) rules.files |= kTruncate;
  if (version >= 5) rules.files |= kDeviceCalls;
  if (version >= 6) rules.scopes = kAbstractSockets | kSignals;
  return rules;
}

// What is missing is let be: an old kernel confines less, and a damaged box has fewer folders. Where the system has no room for
// what is not missing, nothing is read.
base::Descriptor unless_short(int fd) {
  if (fd < 0 && (errno == EMFILE || errno == ENFILE || errno == ENOMEM)) {
    throw std::system_error(errno, std::generic_category(), "the box cannot be read in confinement");
  }
  return base::Descriptor(fd);
}

base::Descriptor folder_in(int folder, const char *name) {
  return unless_short(openat(folder, name, O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
}

void allow(int rules, const base::Descriptor &folder, std::uint64_t what) {
  if (folder.get() < 0) return;
  const landlock_path_beneath_attr below{.allowed_access = what, .parent_fd = folder.get()};
  syscall(SYS_landlock_add_rule, rules, LANDLOCK_RULE_PATH_BENEATH, &below, 0);
}

// A folder that is a link would lead out of the box: nothing is allowed there.
void refuse_files(const Place &place) {
  const auto version =
      static_cast<int>(syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION));
  if (version < 1) return;
  const Rules all = all_rules(version);
  // An older kernel takes a shorter one, or a longer one whose end is zero.
  const base::Descriptor rules =
      unless_short(static_cast<int>(syscall(SYS_landlock_create_ruleset, &all, sizeof all, 0)));
  if (rules.get() < 0) return;
  constexpr std::uint64_t kLook = LANDLOCK_ACCESS_FS_READ_DIR, kRead = kLook | LANDLOCK_ACCESS_FS_READ_FILE,
                          kWrite = kRead | LANDLOCK_ACCESS_FS_WRITE_FILE | LANDLOCK_ACCESS_FS_MAKE_REG;
  const base::Descriptor root = unless_short(open(place.root().c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  const base::Descriptor mgb = folder_in(root.get(), "mgb");
  allow(rules.get(), root, kLook);
  allow(rules.get(), folder_in(root.get(), "tmp"), kRead);
  allow(rules.get(), mgb, kRead);
  allow(rules.get(), folder_in(mgb.get(), "db"), kWrite);
#ifdef __SANITIZE_ADDRESS__  // it looks for leaks in all threads
  allow(rules.get(), base::Descriptor(open("/proc", O_PATH | O_DIRECTORY | O_CLOEXEC)), kRead);
#endif
  syscall(SYS_landlock_restrict_self, rules.get(), 0);
}

// What comes from the child: how its work ended, in a byte, and the result or the reason.
constexpr char kDone = 'd', kFailed = 'f';

[[noreturn]] void work_in_child(const Place &place, const std::function<std::string()> &work, int to) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  std::string said;
  try {
    confine_to(place);
    said = kDone + work();
  } catch (const std::exception &error) {
    said = kFailed + base::told(error);
  }
  base::write_all(to, said);
  _exit(0);
}

}  // namespace

void confine_to(const Place &place) {
  tzset();  // reads a file
  if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0) return;
  refuse_files(place);
  refuse_calls();
}

std::string in_confinement(const Place &place, const std::function<std::string()> &work) {
  base::Pipe pipe;
  std::fflush(nullptr);
  const pid_t child = fork();
  if (child < 0) base::no_process_for("the box");
  if (child == 0) {
    pipe.out.reset();  // else a child whose parent died before it hears of such things writes to itself for ever
    work_in_child(place, work, pipe.in.get());
  }
  pipe.in.reset();
  std::string said;
  base::read_all(pipe.out.get(), said);
  const int status = base::wait_status_of(child);
  const char how = said.empty() ? '\0' : said.front();
  if (how == '\0' && WIFEXITED(status)) throw std::bad_alloc();  // it could not even tell of its failure
  if (how != kDone && how != kFailed) {
    throw std::runtime_error("databases in " + place.databases().string() +
                             ": cannot read: " + damaged("the process that read it died."));
  }
  said.erase(0, 1);
  if (how == kFailed) throw std::runtime_error(said);
  return said;
}

}  // namespace box
