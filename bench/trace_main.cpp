// The trace of a box, beside what other programs leave their records in: a file, the system's log, and LTTng.

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <exception>
#include <string>
#include <vector>

#include "bench/box_folder.h"
#include "bench/lttng.h"
#include "bench/require.h"
#include "bench/table.h"
#include "host/base/descriptor.h"
#include "host/box/trace_ring.h"
#include "include/lmainte_record.h"

extern "C" const char *g_recording_path;

namespace {

namespace fs = std::filesystem;

constexpr std::uint32_t kCode = 0x110C0022;
constexpr std::uint32_t kWords[4] = {1, 2, 3, 4};

// As many bytes as a record has in the ring, always at the same place.
class WrittenFile {
 public:
  explicit WrittenFile(const fs::path &file) : file_(open(file.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0666)) {}

  void append() const {
    const char record[64] = {};
    bench::require(pwrite(file_.get(), record, sizeof record, 0) == sizeof record, "write");
  }

 private:
  base::Descriptor file_;
};

// A recording that is emptied before it is full, as if it had no bound.
class Recorded {
 public:
  explicit Recorded(const fs::path &file) : name_(file), file_(open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600)) {
    g_recording_path = name_.c_str();
  }

  void append() {
    constexpr unsigned kBeforeItIsFull = 100'000, kLength = 24;
    if (++count_ % kBeforeItIsFull == 0) bench::require(ftruncate(file_.get(), 0) == 0, "empty the recording");
    lmainte_record_trace(14, 256, 15, kCode, kWords, kLength);
    bench::require(lmainte_record_missed() == 0, "record");
  }

 private:
  std::string name_;
  base::Descriptor file_;
  unsigned count_ = 0;
};

// What `syslog` does, word for word: a line with the time and the process id, which a daemon gets as a datagram. The daemon is a
// child that reads and forgets, so that nobody's log is filled.
class SystemLog {
 public:
  SystemLog() {
    int ends[2];
    bench::require(socketpair(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0, ends) == 0, "make a socket");
    log_ = base::Descriptor(ends[0]);
    const base::Descriptor read_end(ends[1]);
    start_daemon(read_end.get());
  }
  ~SystemLog() {
    kill(daemon_, SIGKILL);
    waitpid(daemon_, nullptr, 0);
  }
  SystemLog(const SystemLog &) = delete;
  SystemLog &operator=(const SystemLog &) = delete;

  void append() const {
    const std::time_t now = std::time(nullptr);
    std::tm parts{};
    char when[32], line[256];
    std::strftime(when, sizeof when, "%h %e %T", localtime_r(&now, &parts));
    const int size = std::snprintf(line, sizeof line, "<14>%s bench[%d]: %08x %x %x %x %x", when, getpid(), kCode,
                                   kWords[0], kWords[1], kWords[2], kWords[3]);
    bench::require(send(log_.get(), line, static_cast<std::size_t>(size), 0) == size, "write to the log");
  }

 private:
  void start_daemon(int socket) {
    daemon_ = fork();
    if (daemon_ == 0) forget(socket);
    bench::require(daemon_ > 0, "start a child");
  }
  [[noreturn]] static void forget(int socket) {
    char line[256];
    while (read(socket, line, sizeof line) > 0) {
    }
    _exit(0);
  }

  pid_t daemon_ = 0;
  base::Descriptor log_;
};

}  // namespace

int main(int argc, char **argv) try {
  const bench::BoxFolder folder;
  const fs::path file = folder.path() / "trace";
  box::TraceRing::create(file);
  box::TraceRing ring;
  bench::require(ring.map(file.c_str()), "map the trace");
  const WrittenFile written(folder.path() / "written");
  const SystemLog log;
  Recorded recorded(folder.path() / "recording");
  const auto append = [&] { bench::require(ring.append(14, 256, 15, kCode, kWords, 4), "append to the trace"); };
  std::vector<bench::Row> rows{
      {"append a trace record (floor: a write)", [&] { written.append(); }, append},
      {"append a trace record (floor: syslog)", [&] { log.append(); }, append},
      {"record a trace record (floor: a write)", [&] { written.append(); }, [&] { recorded.append(); }}};
  if (bench::lttng_records()) {
    rows.push_back({"append a trace record (floor: LTTng)", [] { bench::append_to_lttng(kCode, kWords); }, append});
  }
  return bench::measure(rows, argc, argv);
} catch (const std::exception &error) {
  std::fprintf(stderr, "%s\n", error.what());
  return 1;
}
