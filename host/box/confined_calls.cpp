#include "host/box/confined_calls.h"

#include <fcntl.h>
#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdint>

namespace box {
namespace {

#if defined(__x86_64__) && defined(__LP64__)
constexpr std::uint32_t kMachine = AUDIT_ARCH_X86_64;
#elif defined(__aarch64__)
constexpr std::uint32_t kMachine = AUDIT_ARCH_AARCH64;
#elif defined(__riscv) && __riscv_xlen == 64
constexpr std::uint32_t kMachine = AUDIT_ARCH_RISCV64;
#elif defined(__powerpc64__) && defined(__LITTLE_ENDIAN__)
constexpr std::uint32_t kMachine = AUDIT_ARCH_PPC64LE;
#elif defined(__s390x__)
constexpr std::uint32_t kMachine = AUDIT_ARCH_S390X;
#else
constexpr std::uint32_t kMachine = 0;
#endif

// Files, memory, time, and the end. Nothing that concerns another process, the network, or what a file is called and to whom
// it belongs.
constexpr std::uint32_t kCalls[] = {
    SYS_read,
    SYS_pread64,
    SYS_readv,
    SYS_preadv,
    SYS_write,
    SYS_pwrite64,
    SYS_writev,
    SYS_pwritev,
    SYS_lseek,
    SYS_openat,
    SYS_close,
    SYS_fstat,
    SYS_statx,
    SYS_fstatfs,
    SYS_statfs,
    SYS_faccessat,
    SYS_faccessat2,
    SYS_readlinkat,
    SYS_getdents64,
    SYS_getcwd,
    SYS_fallocate,
    SYS_fsync,
    SYS_fdatasync,
    SYS_flock,
    SYS_fadvise64,
    SYS_brk,
    SYS_mmap,
    SYS_munmap,
    SYS_mprotect,
    SYS_mremap,
    SYS_madvise,
    SYS_msync,
    SYS_futex,
    SYS_rt_sigaction,
    SYS_rt_sigprocmask,
    SYS_rt_sigreturn,
    SYS_sigaltstack,
    SYS_restart_syscall,
    SYS_getpid,
    SYS_gettid,
    SYS_getppid,
    SYS_getuid,
    SYS_geteuid,
    SYS_getgid,
    SYS_getegid,
    SYS_getrandom,
    SYS_clock_gettime,
    SYS_clock_getres,
    SYS_clock_nanosleep,
    SYS_nanosleep,
    SYS_gettimeofday,
    SYS_sched_yield,
    SYS_sysinfo,
    SYS_uname,
    SYS_exit,
    SYS_exit_group,
    SYS_ppoll,
#ifdef SYS_newfstatat
    SYS_newfstatat,
#endif
#ifdef SYS_open
    SYS_open,
    SYS_stat,
    SYS_lstat,
    SYS_access,
    SYS_readlink,
    SYS_getdents,
    SYS_time,
    SYS_poll,
#endif
#ifdef __SANITIZE_ADDRESS__  // what it needs to look for leaks at the end
    SYS_clone,
    SYS_wait4,
    SYS_ptrace,
    SYS_prctl,
    SYS_sched_getaffinity,
    SYS_dup,
    SYS_pipe2,
#endif
};

// What may be done by fcntl: F_SETOWN and its like let the kernel send signals to other processes.
constexpr std::uint32_t kFileCommands[] = {F_SETLK, F_GETLK, F_SETLKW, F_DUPFD, F_DUPFD_CLOEXEC,
                                           F_GETFD, F_SETFD, F_GETFL,  F_SETFL};

constexpr std::uint32_t kNumber = offsetof(seccomp_data, nr), kArchitecture = offsetof(seccomp_data, arch);

// Where the lower half of an argument lies.
constexpr std::uint32_t argument(std::uint32_t i) {
  constexpr bool kIsBigEndian = __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__;
  return static_cast<std::uint32_t>(offsetof(seccomp_data, args)) + 8 * i + (kIsBigEndian ? 4 : 0);
}

class CallProgram {
 public:
  void load(std::uint32_t from) { add(BPF_LD | BPF_W | BPF_ABS, from); }
  void end_with(std::uint32_t verdict) { add(BPF_RET | BPF_K, verdict); }
  // Skips so many of the next statements where the value is another one.
  void only_where(std::uint32_t value, std::uint8_t skipped_otherwise) {
    add(BPF_JMP | BPF_JEQ | BPF_K, value, skipped_otherwise);
  }
  void allow_where(std::uint32_t value) {
    only_where(value, 1);
    end_with(SECCOMP_RET_ALLOW);
  }
  bool set() {
    const sock_fprog program{size_, statements_.data()};
    return prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0;
  }

 private:
  void add(std::uint16_t code, std::uint32_t value, std::uint8_t if_not = 0) {
    statements_.at(size_++) = {code, 0, if_not, value};
  }
  std::array<sock_filter, 256> statements_{};
  std::uint16_t size_ = 0;
};

}  // namespace

void refuse_calls() noexcept {
  if (kMachine == 0) return;
  constexpr std::uint32_t kRefused = SECCOMP_RET_ERRNO | ENOSYS;
  CallProgram program;
  program.load(kArchitecture);
  program.only_where(kMachine, 1);
  program.load(kNumber);  // otherwise still the architecture, which is no number of a call
  // The call of all readings comes first.
  constexpr std::uint8_t kOfEach = 2;
  program.only_where(SYS_fcntl, static_cast<std::uint8_t>(2 + kOfEach * std::size(kFileCommands)));
  program.load(argument(1));
  for (const std::uint32_t command : kFileCommands) program.allow_where(command);
  program.end_with(kRefused);
  for (const std::uint32_t call : kCalls) program.allow_where(call);
  // What concerns a process, which comes first, and may be this one only. One that finds itself in a wrong state ends itself. Who
  // sets a limit of another one's processor time ends that one.
  const auto self = static_cast<std::uint32_t>(getpid());
  const struct { std::uint32_t call, process; } rows[] = {{SYS_tgkill, self}, {SYS_tkill, self}, {SYS_prlimit64, 0}};
  for (const auto &row : rows) {
    program.only_where(row.call, 4);
    program.load(argument(0));
    program.allow_where(row.process);
    program.end_with(kRefused);
  }
  program.end_with(kRefused);
  program.set();
}

}  // namespace box
