#include "failures/calls.h"

#include <sys/syscall.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>

namespace failures {
namespace {

constexpr int kOpens[] = {EACCES, EMFILE, EIO};
constexpr int kMakes[] = {ENOSPC, EACCES, EMFILE, EIO};
constexpr int kPaths[] = {EACCES, EIO};
constexpr int kReads[] = {EIO, EINTR, kShort};
constexpr int kWrites[] = {ENOSPC, EIO, EINTR, kShort};
constexpr int kRoom[] = {ENOSPC, EIO, EINTR};
constexpr int kChanges[] = {ENOSPC, EACCES, EIO};
constexpr int kRemoves[] = {EACCES, EIO};
constexpr int kSaves[] = {EIO, ENOSPC};
constexpr int kDescriptors[] = {EMFILE};
constexpr int kMemory[] = {ENOMEM};
constexpr int kProcesses[] = {EAGAIN, ENOMEM};
constexpr int kPrograms[] = {ENOMEM, EACCES};
constexpr int kInterrupted[] = {EINTR};
constexpr int kWaits[] = {EINTR, ENOMEM};
constexpr int kDisk[] = {EIO};
constexpr int kLocks[] = {ENOLCK, EINTR};
constexpr int kRefused[] = {EPERM};
constexpr int kUnknown[] = {EINVAL};
constexpr int kRoots[] = {EPERM, ENOSPC};
constexpr int kPeers[] = {ECONNRESET, EINTR, ENOBUFS};
constexpr int kAddresses[] = {EACCES, ENOMEM};
constexpr int kRemoved[] = {ENOENT};
constexpr int kTerminals[] = {EIO};

// Those without errors fail only where a program is wrong itself, or their failure is the kernel's secret.
constexpr std::array kCalls{
    Call{SYS_open, "open", kOpens},
    Call{SYS_openat, "openat", kMakes},
    Call{SYS_creat, "creat", kMakes},
    Call{SYS_read, "read", kReads},
    Call{SYS_pread64, "pread64", kReads},
    Call{SYS_readv, "readv", kDisk},
    Call{SYS_preadv, "preadv", kDisk},
    Call{SYS_write, "write", kWrites},
    Call{SYS_pwrite64, "pwrite64", kWrites},
    Call{SYS_writev, "writev", kSaves},
    Call{SYS_pwritev, "pwritev", kSaves},
    Call{SYS_close, "close", kDisk, Call::Failing::kDone},
    Call{SYS_close_range, "close_range", kMemory},
    Call{SYS_lseek, "lseek", kDisk},
    Call{SYS_stat, "stat", kPaths},
    Call{SYS_lstat, "lstat", kPaths},
    Call{SYS_fstat, "fstat", kDisk},
    Call{SYS_newfstatat, "newfstatat", kPaths},
    Call{SYS_statx, "statx", kPaths},
    Call{SYS_statfs, "statfs", kDisk},
    Call{SYS_fstatfs, "fstatfs", kDisk},
    Call{SYS_access, "access", kPaths},
    Call{SYS_faccessat, "faccessat", kPaths},
    Call{SYS_faccessat2, "faccessat2", kPaths},
    Call{SYS_readlink, "readlink", kPaths},
    Call{SYS_readlinkat, "readlinkat", kPaths},
    Call{SYS_getdents64, "getdents64", kDisk},
    Call{SYS_getcwd, "getcwd", kRemoved},
    Call{SYS_chdir, "chdir", kPaths},
    Call{SYS_fchdir, "fchdir", kPaths},
    Call{SYS_mkdir, "mkdir", kChanges},
    Call{SYS_mkdirat, "mkdirat", kChanges},
    Call{SYS_symlink, "symlink", kChanges},
    Call{SYS_symlinkat, "symlinkat", kChanges},
    Call{SYS_link, "link", kChanges},
    Call{SYS_linkat, "linkat", kChanges},
    Call{SYS_rename, "rename", kChanges},
    Call{SYS_renameat, "renameat", kChanges},
    Call{SYS_renameat2, "renameat2", kChanges},
    Call{SYS_unlink, "unlink", kRemoves},
    Call{SYS_unlinkat, "unlinkat", kRemoves},
    Call{SYS_rmdir, "rmdir", kRemoves},
    Call{SYS_chmod, "chmod", kRemoves},
    Call{SYS_fchmod, "fchmod", kRemoves},
    Call{SYS_fchmodat, "fchmodat", kRemoves},
    Call{SYS_chown, "chown", kRemoves},
    Call{SYS_fchown, "fchown", kRemoves},
    Call{SYS_utimensat, "utimensat", kRemoves},
    Call{SYS_truncate, "truncate", kSaves},
    Call{SYS_ftruncate, "ftruncate", kSaves},
    Call{SYS_fallocate, "fallocate", kRoom},
    Call{SYS_copy_file_range, "copy_file_range", kSaves},
    Call{SYS_sendfile, "sendfile", kSaves},
    Call{SYS_fsync, "fsync", kSaves},
    Call{SYS_fdatasync, "fdatasync", kSaves},
    Call{SYS_msync, "msync", kDisk},
    Call{SYS_flock, "flock", kLocks},
    Call{SYS_dup, "dup", kDescriptors},
    Call{SYS_dup2, "dup2", kDescriptors},
    Call{SYS_dup3, "dup3", kDescriptors},
    Call{SYS_pipe, "pipe", kDescriptors},
    Call{SYS_pipe2, "pipe2", kDescriptors},
    Call{SYS_memfd_create, "memfd_create", kDescriptors},
    Call{SYS_eventfd2, "eventfd2", kDescriptors},
    Call{SYS_signalfd4, "signalfd4", kDescriptors},
    Call{SYS_pidfd_open, "pidfd_open", kDescriptors},
    Call{SYS_pidfd_send_signal, "pidfd_send_signal", kRefused},
    Call{SYS_socket, "socket", kDescriptors},
    Call{SYS_socketpair, "socketpair", kDescriptors},
    Call{SYS_connect, "connect", kAddresses},
    Call{SYS_bind, "bind", kAddresses},
    Call{SYS_listen, "listen", kAddresses},
    Call{SYS_accept, "accept", kDescriptors},
    Call{SYS_accept4, "accept4", kDescriptors},
    Call{SYS_sendto, "sendto", kPeers},
    Call{SYS_sendmsg, "sendmsg", kPeers},
    Call{SYS_recvfrom, "recvfrom", kPeers},
    Call{SYS_recvmsg, "recvmsg", kPeers},
    Call{SYS_shutdown, "shutdown", kPeers},
    Call{SYS_pause, "pause", kInterrupted},
    Call{SYS_poll, "poll", kWaits},
    Call{SYS_ppoll, "ppoll", kWaits},
    Call{SYS_wait4, "wait4", kInterrupted},
    Call{SYS_waitid, "waitid", kInterrupted},
    Call{SYS_clock_nanosleep, "clock_nanosleep", kInterrupted},
    Call{SYS_clone, "clone", kProcesses},
    Call{SYS_clone3, "clone3", kProcesses},
    Call{SYS_fork, "fork", kProcesses},
    Call{SYS_vfork, "vfork", kProcesses},
    Call{SYS_execve, "execve", kPrograms},
    Call{SYS_mmap, "mmap", kMemory},
    Call{SYS_mremap, "mremap", kMemory},
    Call{SYS_mprotect, "mprotect", kMemory},
    Call{SYS_munmap, "munmap", kMemory},
    Call{SYS_madvise, "madvise", kMemory},
    Call{SYS_brk, "brk", kMemory},
    Call{SYS_kill, "kill", kRefused},
    Call{SYS_setsid, "setsid", kRefused},
    Call{SYS_setpgid, "setpgid", kRefused},
    Call{SYS_prctl, "prctl", kUnknown},
    Call{SYS_seccomp, "seccomp", kUnknown},
    Call{SYS_landlock_create_ruleset, "landlock_create_ruleset", kMemory},
    Call{SYS_landlock_add_rule, "landlock_add_rule", kMemory},
    Call{SYS_landlock_restrict_self, "landlock_restrict_self", kMemory},
    Call{SYS_ioctl, "ioctl", kTerminals},
    Call{SYS_sigaltstack, "sigaltstack", kMemory},
    Call{SYS_mount, "mount", kRefused},
    Call{SYS_umount2, "umount2", kRefused},
    Call{SYS_pivot_root, "pivot_root", kRefused},
    Call{SYS_unshare, "unshare", kRoots},
    Call{SYS_setns, "setns", kRefused},
    Call{SYS_sethostname, "sethostname", kRefused},
    Call{SYS_capget, "capget", kRefused},
    Call{SYS_capset, "capset", kRefused},
    Call{SYS_setfsuid, "setfsuid", {}},
    Call{SYS_fcntl, "fcntl", kLocks},
    Call{SYS_arch_prctl, "arch_prctl", {}},
    Call{SYS_clock_gettime, "clock_gettime", {}},
    Call{SYS_exit, "exit", {}},
    Call{SYS_exit_group, "exit_group", {}},
    Call{SYS_futex, "futex", {}},
    Call{SYS_getegid, "getegid", {}},
    Call{SYS_geteuid, "geteuid", {}},
    Call{SYS_getgid, "getgid", {}},
    Call{SYS_getpid, "getpid", {}},
    Call{SYS_getppid, "getppid", {}},
    Call{SYS_getrandom, "getrandom", {}},
    Call{SYS_getsockopt, "getsockopt", {}},
    Call{SYS_getsockname, "getsockname", {}},
    Call{SYS_gettid, "gettid", {}},
    Call{SYS_getuid, "getuid", {}},
    Call{SYS_prlimit64, "prlimit64", {}},
    Call{SYS_restart_syscall, "restart_syscall", {}},
    Call{SYS_rseq, "rseq", {}},
    Call{SYS_rt_sigaction, "rt_sigaction", {}},
    Call{SYS_rt_sigprocmask, "rt_sigprocmask", {}},
    Call{SYS_rt_sigreturn, "rt_sigreturn", {}},
    Call{SYS_rt_sigtimedwait, "rt_sigtimedwait", {}},
    Call{SYS_sched_getaffinity, "sched_getaffinity", {}},
    Call{SYS_set_robust_list, "set_robust_list", {}},
    Call{SYS_set_tid_address, "set_tid_address", {}},
    Call{SYS_sysinfo, "sysinfo", {}},
    Call{SYS_tgkill, "tgkill", {}},
    Call{SYS_umask, "umask", {}},
    Call{SYS_uname, "uname", {}},
};

}  // namespace

const Call *call_of(long number) {
  const auto *const row = std::ranges::find(kCalls, number, &Call::number);
  return row == kCalls.end() ? nullptr : row;
}

const char *error_name(int error) {
  return error == kShort ? "short" : strerrorname_np(error);
}

bool passes(int error) {
  return error == EINTR;
}

}  // namespace failures
