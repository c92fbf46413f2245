// Processes that take one lock in turn: the lock of a database of the box, beside the kernel's lock on a byte of a file.

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench/box_rows.h"
#include "bench/table.h"
#include "host/base/descriptor.h"
#include "host/box/database.h"

namespace {

constexpr int kRounds = 1000;  // of each process

using Work = void (*)(const std::filesystem::path &folder);

void lock_database(const std::filesystem::path &folder) {
  box::Database database({folder / "box", 2});
  for (int round = 0; round < kRounds; ++round)
    if (!database.lock() || !database.unlock()) throw std::runtime_error("bench: a lock was not had");
}

void lock_byte(const std::filesystem::path &folder) {
  const base::Descriptor file(open((folder / "byte").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666));
  struct flock lock {};
  lock.l_whence = SEEK_SET;
  lock.l_len = 1;
  for (int round = 0; round < kRounds; ++round) {
    for (const short type : {short{F_WRLCK}, short{F_UNLCK}}) {
      lock.l_type = type;
      if (fcntl(file.get(), F_SETLKW, &lock) != 0) throw std::runtime_error("bench: a byte was not locked");
    }
  }
}

pid_t start(Work work, const std::filesystem::path &folder) {
  const pid_t child = fork();
  if (child != 0) return child;
  try {
    work(folder);
  } catch (...) {
    _exit(1);
  }
  _exit(0);
}

// Nanoseconds for each time that a process has the lock.
double time_of(Work work, const std::filesystem::path &folder, int processes) {
  const auto begin = std::chrono::steady_clock::now();
  for (int i = 0; i < processes; ++i)
    if (start(work, folder) == -1) throw std::runtime_error("bench: no child");
  bool good = true;
  for (int i = 0; i < processes; ++i) {
    int status = 0;
    good = wait(&status) != -1 && status == 0 && good;
  }
  if (!good) throw std::runtime_error("bench: a process that takes locks failed");
  const std::chrono::duration<double, std::nano> taken = std::chrono::steady_clock::now() - begin;
  return taken.count() / processes / kRounds;
}

}  // namespace

void bench::print_locks(const BoxFolder &folder) {
  print_head("real time");
  for (const int processes : {1, 2, 16}) {
    std::vector<double> floors, calls;
    for (int run = 0; run < 5; ++run) {
      floors.push_back(time_of(lock_byte, folder.path(), processes));
      calls.push_back(time_of(lock_database, folder.path(), processes));
    }
    print_row("lock and unlock, processes: " + std::to_string(processes), median(floors), median(calls));
  }
}
