// What the platform's functions do at a point that deviates. A process looks for points once, so this program is started anew for
// each row, and is that row then.
#include "host/box/points.h"

#include <fcntl.h>
#include <sys/statvfs.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

#include "host/include/lmainte_host.h"
#include "include/lmainte.h"
#include "include/lmainte_platform.h"
#include "tests/host/platform/box_fixture.h"

namespace {

using box::PointKind;
using box::Way;

constexpr char kKey[128] = "some_record";

bool opens() {
  return scdb_open(2) == 0;
}

int32_t size_read() {
  void *record = nullptr;
  int32_t size = -1000;
  const int32_t result = scdb_get(2, kKey, &record, &size, 0);
  std::free(record);
  return result == 0 ? size : result;
}

int32_t send_something() {
  const lmainte_host_message message{sizeof message, 1, 1, 1};
  return lcmn_send(99, &message);
}

// Opens a file and calls so many of write, read and close. Returns errno where one fails, and 0 else.
int32_t file_then_errno(int calls, const std::string &file = box::Place::here().tmp() / "file") {
  errno = 0;
  char byte = 'x';
  const int32_t fd = lcmn_lopen(file.c_str(), O_RDWR | O_CREAT, 0600);
  int32_t result = fd;
  if (calls > 0 && result >= 0) result = lcmn_write(fd, &byte, 1);
  if (calls > 1 && result >= 0) result = lcmn_read(fd, &byte, 1);
  if (calls > 2 && result >= 0) result = lcmn_close(fd);
  return result < 0 ? errno : 0;
}

// Makes a file in /tmp as the library makes a list, and removes it. Returns errno where that fails, and 0 else.
int32_t made_then_errno() {
  errno = 0;
  std::FILE *file = std::fopen("/tmp/lmainte_points", "w");
  if (file == nullptr) return errno;
  std::fputs("some text", file);
  const bool is_written = std::fclose(file) == 0;
  const int reason = is_written ? 0 : errno;
  return unlink("/tmp/lmainte_points") == 0 ? reason : -1;
}

// The same by the platform's own calls.
int32_t written_then_errno() {
  const int32_t reason = file_then_errno(1, "/tmp/lmainte_points");
  return unlink("/tmp/lmainte_points") == 0 ? reason : -1;
}

std::uint64_t room() {
  struct statvfs tmp {};
  return statvfs("/tmp", &tmp) == 0 ? tmp.f_bavail : 1;
}

// Where the pager, or another applet, is run: its exit status.
int32_t pager_then_errno(const char *applet) {
  const pid_t child = fork();
  if (child == 0) {
    char busybox[] = "/bin/busybox", file[] = "/dev/null";
    std::string word(applet);
    char *const arguments[] = {busybox, word.data(), file, nullptr};
    char *const nothing[] = {nullptr};
    execve(busybox, arguments, nothing);
    _exit(errno);
  }
  int status = 0;
  return waitpid(child, &status, 0) == child && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

// Of a file with four lines.
std::string shown_by_pager() {
  const auto file = (box::Place::here().tmp() / "lines").string();
  std::ofstream(file) << "one\ntwo\nthree\nfour\n";
  std::array<int, 2> ends{};
  if (pipe(ends.data()) != 0) return "no pipe";
  const pid_t child = fork();
  if (child == 0) {
    dup2(ends[1], STDOUT_FILENO);
    std::string words[] = {"/bin/busybox", "more", file};
    char *const arguments[] = {words[0].data(), words[1].data(), words[2].data(), nullptr};
    char *const nothing[] = {nullptr};
    execve(arguments[0], arguments, nothing);
    _exit(errno);
  }
  close(ends[1]);
  std::array<char, 64> shown{};
  const ssize_t size = read(ends[0], shown.data(), shown.size());
  int status = 0;
  waitpid(child, &status, 0);
  return WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL ? std::string(shown.data(), std::max<ssize_t>(size, 0))
                                                            : "";
}

struct PointRow {
  const char *says;
  PointKind kind;
  const char *name;
  Way way;
  int32_t (*call)();
  int32_t result;
};

constexpr std::uint32_t kHead = 0x00030000, kId[2] = {0x01020000, 0}, kPair[2] = {1, 2};
constexpr std::array<std::uint8_t, 48> kEvent{};

std::vector<PointRow> rows() {
  return {
      {"a database that is not opened", PointKind::kOpen, "current", Way::kRefused, [] { return scdb_open(2); },
       LMAINTE_HOST_DB_STORAGE},
      {"another one is opened", PointKind::kOpen, "setup", Way::kRefused, [] { return scdb_open(2); }, 0},
      {"a database that is not closed", PointKind::kClose, "current", Way::kRefused,
       [] { return opens() && scdb_close(2) == LMAINTE_HOST_DB_STORAGE ? scdb_close(2) : 1; }, 0},
      {"a lock that is refused", PointKind::kLock, "current", Way::kRefused, [] { return opens() ? scdb_lock(2) : 1; },
       LMAINTE_HOST_DB_STORAGE},
      {"a lock that is kept", PointKind::kUnlock, "current", Way::kRefused,
       [] { return opens() && scdb_lock(2) == 0 && scdb_unlock(2) == LMAINTE_HOST_DB_STORAGE ? scdb_unlock(2) : 1; },
       0},
      {"a record that cannot be read", PointKind::kRead, kKey, Way::kRefused, [] { return opens() ? size_read() : 1; },
       LMAINTE_HOST_DB_STORAGE},
      {"a record that is missing", PointKind::kRead, kKey, Way::kMissing, [] { return opens() ? size_read() : 1; },
       LMAINTE_HOST_DB_ABSENT},
      {"a record that is short", PointKind::kRead, kKey, Way::kShort, [] { return opens() ? size_read() : 1; }, 6},
      {"a record that is long", PointKind::kRead, kKey, Way::kLong, [] { return opens() ? size_read() : 1; }, 8},
      {"and whole again when it is read once more", PointKind::kRead, kKey, Way::kLong,
       [] { return opens() && size_read() == 8 ? size_read() : 1; }, 7},
      {"a record that is not written", PointKind::kWrite, "new", Way::kRefused,
       [] {
         const char key[128] = "new";
         return opens() ? lcmn_scdb_put(2, key, "x", 1, 0) : 1;
       },
       LMAINTE_HOST_DB_STORAGE},
      {"a file that is not opened", PointKind::kFile, "open", Way::kRefused, [] { return file_then_errno(0); }, EIO},
      {"a file that is not written", PointKind::kFile, "write", Way::kRefused, [] { return file_then_errno(1); }, EIO},
      {"a file that is not read", PointKind::kFile, "read", Way::kRefused, [] { return file_then_errno(2); }, EIO},
      {"a file whose closing fails", PointKind::kFile, "close", Way::kRefused, [] { return file_then_errno(3); }, EIO},
      {"and which others can open then", PointKind::kFile, "close", Way::kRefused,
       [] { return file_then_errno(3) == EIO ? file_then_errno(3) : 1; }, 0},
      {"a record that does not come into the trace", PointKind::kTrace, "110C0211", Way::kRefused,
       [] { return mgb_trace_write(14, 0x100, 15, 0x110C0211, kPair, 16); }, -1},
      {"an event that is not saved", PointKind::kLog, "", Way::kRefused,
       [] { return mgblog_save(&kHead, kEvent.data()) < 0 ? errno : 0; }, EIO},
      {"a unit without a name", PointKind::kName, "", Way::kRefused,
       [] {
         char name[128] = {};
         return api_conv_unit_name_get(kId, 0, name, 0, 0);
       },
       -1},
      {"a question that cannot be asked", PointKind::kQuestion, "", Way::kRefused,
       [] {
         int32_t choice = 0;
         return cli_ask_select(1, &choice, "");
       },
       LMAINTE_ASK_FAILED},
      {"an operator whose input ends", PointKind::kQuestion, "", Way::kEnd,
       [] {
         int32_t choice = 0;
         return cli_ask_select(1, &choice, "");
       },
       LMAINTE_ASK_END_OF_INPUT},
      {"a message that does not go", PointKind::kMessage, "send", Way::kRefused,
       [] { return send_something() < 0 ? errno : 0; }, EPIPE},
      {"a message that does not come", PointKind::kMessage, "receive", Way::kRefused,
       [] {
         lmainte_host_message message;
         return lcmn_receive(99, &message) < 0 ? errno : 0;
       },
       ECONNRESET},
      {"a wait for messages that fails", PointKind::kMessage, "select", Way::kRefused,
       [] {
         std::uint8_t first = 0, second = 0;
         fd_set ready;
         timeval limit{};
         return lcmn_select(&first, &second, &ready, nullptr, nullptr, &limit) < 0 ? errno : 0;
       },
       EIO},
      {"a file in /tmp that is not made", PointKind::kFile, "make", Way::kRefused, [] { return made_then_errno(); },
       ENOSPC},
      {"and that open does not make", PointKind::kFile, "make", Way::kRefused,
       [] { return open("/tmp/lmainte_points", O_WRONLY | O_CREAT, 0600) < 0 ? errno : 0; }, ENOSPC},
      {"a file that is read is none that is made", PointKind::kFile, "make", Way::kRefused,
       [] { return open("/tmp/lmainte_points", O_RDONLY) < 0 ? errno : 0; }, ENOENT},
      {"a file of the box is none of the command's", PointKind::kFile, "make", Way::kRefused,
       [] { return file_then_errno(3); }, 0},
      {"a file that is made where /tmp has no room", PointKind::kFile, "make", Way::kFull,
       [] { return made_then_errno(); }, ENOSPC},
      {"no room is left from there on", PointKind::kFile, "make", Way::kFull,
       [] { return made_then_errno() == ENOSPC && room() == 0 ? made_then_errno() : 0; }, ENOSPC},
      {"neither for the platform's own files", PointKind::kFile, "open", Way::kFull,
       [] { return written_then_errno() == ENOSPC ? made_then_errno() : 0; }, ENOSPC},
      {"a write without room", PointKind::kFile, "write", Way::kFull, [] { return written_then_errno(); }, ENOSPC},
      {"there is room before", PointKind::kFile, "write", Way::kFull, [] { return room() > 0 ? made_then_errno() : 1; },
       0},
      {"a pager that is not there", PointKind::kPager, "", Way::kMissing, [] { return pager_then_errno("more"); },
       ENOENT},
      {"a pager that cannot be run", PointKind::kPager, "", Way::kRefused, [] { return pager_then_errno("more"); },
       EACCES},
      {"another applet is no pager", PointKind::kPager, "", Way::kMissing, [] { return pager_then_errno("true"); }, 0},
      {"a pager that is killed when it has shown half", PointKind::kPager, "", Way::kMidway,
       [] { return shown_by_pager() == "one\ntwo\n" ? 0 : 1; }, 0},
      {"a command that runs already is left alone", PointKind::kRead, kKey, Way::kMissing,
       [] {
         const box::Place place = box::Place::here();
         box::forget_points(place);
         if (!opens()) return 1;
         box::deviate(place, {PointKind::kRead, kKey, 1, {Way::kMissing, 0}, 0});
         return size_read();
       },
       7},
  };
}

constexpr char kRowVariable[] = "POINT_ROW";

[[maybe_unused]] const bool kIsNoRow = [] {
  const char *row = std::getenv(kRowVariable);
  if (row == nullptr) return true;
  const PointRow is = rows().at(std::strtoul(row, nullptr, 10));
  _exit(is.call() == is.result ? 0 : 1);
}();

TEST_F(BoxTest, GoesAnotherWayAtAPointThatDeviates) {
  mark(".qa");
  store(2, kKey, "seven b");
  const std::vector<PointRow> all = rows();
  for (std::size_t i = 0; i < all.size(); ++i) {
    box::count_points(place);
    box::deviate(place, {all[i].kind, all[i].name, 1, {all[i].way, 0}, 0});
    setenv(kRowVariable, std::to_string(i).c_str(), 1);
    EXPECT_EQ(in_child([] { return execl("/proc/self/exe", "test_platform", nullptr); }), 0) << all[i].says;
    unsetenv(kRowVariable);
  }
}

}  // namespace
