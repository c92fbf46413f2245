// What a process can do no more once it is confined to a box, and what it still can.
#include "host/box/confinement.h"

#include <asm/ioctls.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/landlock.h>
#include <pthread.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/ptrace.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>

#include <cerrno>
#include <fstream>
#include <system_error>

#include "host/box/contents.h"
#include "tests/eventually.h"
#include "tests/host/box/child.h"
#include "tests/host/box/database_test.h"
#include "tests/host/box/scratch.h"

namespace {

namespace fs = std::filesystem;

class Confinement : public testing::Test {
 protected:
  Confinement() {
    box::create_box(place_, LMAINTE_MODEL_QA);
    std::ofstream(outside_ / "file") << "mine";
    fs::create_symlink(outside_.path(), place_.root() / "mgb/link");
  }

  std::string outside() const { return outside_ / "file"; }
  std::string in_box(const char *name) const { return (place_.root() / name).string(); }

  // Whether it succeeds in a confined process.
  bool can(const std::function<bool()> &attempt) const {
    return in_child([&] {
             box::confine_to(place_);
             return attempt() ? 0 : 1;
           }) == 0;
  }
  static bool opens(const std::string &file, int flags) { return open(file.c_str(), flags | O_CLOEXEC, 0600) >= 0; }

  Scratch scratch_, outside_;
  box::Place place_{scratch_ / "box"};
};

bool kernel_confines_files() {
  return syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION) >= 1;
}

TEST_F(Confinement, TheBoxIsReadAndWritten) {
  EXPECT_TRUE(can([&] {
    box::Database current(place_.database(2));
    current.put("key", bytes("text"));
    return current.get("key") == bytes("text");
  }));
  EXPECT_EQ(box::Database(place_.database(2)).get("key"), bytes("text"));
  for (const char *const file : {"mgb/log/events", "mgb/log/trace", "tmp/.qa"}) {
    EXPECT_TRUE(can([&] { return opens(in_box(file), O_RDONLY); })) << file;
  }
  fs::remove(place_.databases() / "locks");
  EXPECT_TRUE(can([&] { return box::contents_of(place_).model == LMAINTE_MODEL_QA; })) << "makes the file of the locks";
}

TEST_F(Confinement, NoOtherFileIsReached) {
  const struct {
    const char *what;
    std::function<bool()> attempt;
  } rows[] = {
      {"a file outside is written", [&] { return opens(outside(), O_WRONLY); }},
      {"a file outside is read", [&] { return opens(outside(), O_RDONLY); }},
      {"a file outside is emptied", [&] { return opens(outside(), O_RDONLY | O_TRUNC); }},
      {"a file is made outside", [&] { return opens(outside_ / "made", O_WRONLY | O_CREAT); }},
      {"a folder outside is listed", [&] { return opens(outside_.path(), O_RDONLY | O_DIRECTORY); }},
      {"a link in the box is followed", [&] { return opens(in_box("mgb/link/file"), O_RDONLY); }},
      {"the user's passwords are read", [] { return opens("/etc/passwd", O_RDONLY); }},
      {"the terminal is opened", [] { return opens("/dev/tty", O_RDWR) || opens("/dev/ptmx", O_RDWR); }},
      {"the memory of a process is opened", [] { return opens("/proc/self/mem", O_RDWR); }},
      {"a program of the box is replaced", [&] { return opens(in_box("mgb/bin/new"), O_WRONLY | O_CREAT); }},
      {"a file is put beside the box's folders", [&] { return opens(in_box("new"), O_WRONLY | O_CREAT); }},
  };
  for (const auto &row : rows) EXPECT_EQ(can(row.attempt), !kernel_confines_files() && row.attempt()) << row.what;
}

TEST_F(Confinement, NothingElseIsDone) {
  const pid_t other = getpid();
  const struct {
    const char *what;
    std::function<bool()> attempt;
  } rows[] = {
      {"a socket is made", [] { return socket(AF_UNIX, SOCK_STREAM, 0) >= 0 || socket(AF_INET, SOCK_DGRAM, 0) >= 0; }},
      {"a signal is sent", [&] { return kill(other, 0) == 0 || syscall(SYS_tgkill, other, other, 0) == 0; }},
      {"another process gets a limit",
       [&] {
         rlimit same{};
         return prlimit(other, RLIMIT_CPU, nullptr, &same) == 0 && prlimit(other, RLIMIT_CPU, &same, nullptr) == 0;
       }},
      {"the kernel is told to send a signal", [&] { return fcntl(STDIN_FILENO, F_SETOWN, other) == 0; }},
      {"a program is run", [] { return execl("/bin/true", "true", nullptr) == 0; }},
      {"another process is read",
       [&] {
         char byte = 0;
         const iovec here{&byte, 1}, there{&byte, 1};
         return process_vm_readv(other, &here, 1, &there, 1, 0) == 1;
       }},
      {"a file is given other rights", [&] { return chmod(outside().c_str(), 0777) == 0; }},
      {"a file gets another name", [&] { return rename(outside().c_str(), in_box("mgb/db/mine").c_str()) == 0; }},
      {"a file is removed", [&] { return unlink(in_box("mgb/db/locks").c_str()) == 0; }},
      {"a link is made", [&] { return symlink("/etc", in_box("mgb/db/etc").c_str()) == 0; }},
      {"the root is changed", [&] { return chroot(in_box("").c_str()) == 0; }},
      {"the terminal is typed into", [] { return syscall(SYS_ioctl, STDIN_FILENO, TIOCSTI, "x") == 0; }},
#ifndef __SANITIZE_ADDRESS__  // it looks for leaks from a process of its own
      {"a process is started",
       [] {
         const auto child = static_cast<pid_t>(syscall(SYS_fork));
         if (child == 0) _exit(0);
         return child > 0;
       }},
      {"another process is traced", [&] { return ptrace(PTRACE_SEIZE, other, nullptr, nullptr) == 0; }},
#endif
  };
  for (const auto &row : rows) EXPECT_FALSE(can(row.attempt)) << row.what;
}

TEST_F(Confinement, AFolderOfTheBoxThatIsALinkLeadsNowhere) {
  for (const char *const folder : {"mgb/db", "tmp", "mgb"}) {
    const fs::path kept = scratch_ / "kept";
    fs::rename(in_box(folder), kept);
    fs::create_directory_symlink(outside_.path(), in_box(folder));
    EXPECT_EQ(can([&] { return opens(outside(), O_WRONLY); }), !kernel_confines_files()) << folder;
    fs::remove(in_box(folder));
    fs::rename(kept, in_box(folder));
  }
}

TEST_F(Confinement, AProcessEndsItself) {
  EXPECT_EQ(in_child([&] {
              std::signal(SIGABRT, SIG_DFL);
              box::confine_to(place_);
              raise(SIGABRT);
              return 0;
            }),
            -SIGABRT);
}

TEST_F(Confinement, WhereThereIsNoBoxIsNoError) {
  EXPECT_FALSE(in_child([&] {
    box::confine_to(box::Place(scratch_ / "none"));
    return opens(outside(), O_RDONLY) && kernel_confines_files() ? 1 : 0;
  }));
}

// Whichever of the descriptors that it takes is missing.
TEST_F(Confinement, IsWholeOrFailsWhereDescriptorsAreFew) {
  int failed = 0;
  for (rlim_t spare = 0; spare < 8; ++spare) {
    const int result = in_child([&] {
      const int first = open("/", O_PATH | O_CLOEXEC);
      close(first);
      rlimit before{};
      getrlimit(RLIMIT_NOFILE, &before);
      const rlimit few{static_cast<rlim_t>(first) + spare, before.rlim_max};
      if (setrlimit(RLIMIT_NOFILE, &few) != 0) return 10;
      try {
        box::confine_to(place_);
      } catch (const std::system_error &error) {
        return error.code().value() == EMFILE ? 1 : 11;
      }
      if (setrlimit(RLIMIT_NOFILE, &before) != 0) return 12;
      if (kernel_confines_files() && opens(outside(), O_RDONLY)) return 13;
      return opens(in_box("mgb/db/data.mdb"), O_RDWR) ? 0 : 14;
    });
    EXPECT_LT(result, 10) << spare;
    failed += result;
  }
  if (kernel_confines_files()) {
    EXPECT_GT(failed, 1);
    EXPECT_LT(failed, 7);
  }
}

TEST_F(Confinement, WorkInAProcessOfItsOwnReturnsWhatItFound) {
  std::string large(300000, '\0');
  EXPECT_EQ(box::in_confinement(place_, [&] { return std::string(large); }), large);
  EXPECT_EQ(box::in_confinement(place_, [] { return std::string(); }), "");
  EXPECT_EQ(box::in_confinement(place_, [&] { return std::to_string(opens(outside(), O_RDONLY)); }),
            kernel_confines_files() ? "0" : "1");
}

TEST_F(Confinement, WorkInAProcessOfItsOwnFailsInWords) {
  EXPECT_EQ(
      message_of([&] { box::in_confinement(place_, []() -> std::string { throw box::BoxError("no such unit."); }); }),
      "no such unit.");
  EXPECT_THROW(box::in_confinement(place_, []() -> std::string { _exit(1); }), std::bad_alloc);
  EXPECT_EQ(message_of([&] {
              box::in_confinement(place_, []() -> std::string {
                std::signal(SIGABRT, SIG_DFL);
                raise(SIGABRT);
                return "";
              });
            }),
            "databases in " + place_.databases().string() +
                ": cannot read: data.mdb is damaged: the process that read it died. Make the box anew, or load a dump "
                "of it.");
}

// Adopts a process that loses its parent, and waits for its end.
class Adoption {
 public:
  Adoption() { prctl(PR_SET_CHILD_SUBREAPER, 1); }
  ~Adoption() { prctl(PR_SET_CHILD_SUBREAPER, 0); }
  Adoption(const Adoption &) = delete;
  Adoption &operator=(const Adoption &) = delete;

  static bool orphan_ends() {
    return eventually([] { return waitpid(-1, nullptr, WNOHANG) > 0; });
  }
};

TEST_F(Confinement, WorkInAProcessOfItsOwnEndsWithItsParent) {
  const Adoption adoption;
  Child parent([&](const auto &say_ready) {
    box::in_confinement(place_, [&]() -> std::string {
      say_ready();
      for (int i = 0; i < 30000; ++i) usleep(1000);
      return "";
    });
    return 0;
  });
  ASSERT_TRUE(parent.is_ready());
  EXPECT_EQ(parent.die(), -SIGKILL);
  EXPECT_TRUE(Adoption::orphan_ends());
}

// Between the fork and the child's wish to die with its parent.
TEST_F(Confinement, WorkInAProcessOfItsOwnEndsAlsoWhereItsParentDiedAtOnce) {
  static std::function<void()> before_work;
  const Adoption adoption;
  Child parent([&, test = getpid()](const auto &say_ready) {
    before_work = [&] {
      say_ready();
      while (getppid() != test) usleep(1000);
    };
    pthread_atfork(nullptr, nullptr, [] { before_work(); });
    box::in_confinement(place_, [] { return std::string(300000, '\0'); });  // more than a pipe takes
    return 0;
  });
  ASSERT_TRUE(parent.is_ready());
  EXPECT_EQ(parent.die(), -SIGKILL);
  EXPECT_TRUE(Adoption::orphan_ends());
}

}  // namespace
