#include "host/spbox/call_filter.h"

#include <asm/ioctls.h>
#include <linux/tiocl.h>
#include <seccomp.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <initializer_list>
#include <memory>
#include <new>
#include <system_error>

#include "host/base/child.h"

namespace spbox {
namespace {

using Filter = std::unique_ptr<void, decltype(&seccomp_release)>;

void check(int result) {
  if (result < 0)
    throw std::system_error(-result, std::generic_category(), "the filter of system calls cannot be made");
}

// The programs of other architectures that a machine runs, too, each with numbers of its own for the system calls.
void add_relatives(scmp_filter_ctx filter) {
  constexpr struct {
    std::uint32_t native, relative;
  } kRows[] = {
      {SCMP_ARCH_X86_64, SCMP_ARCH_X86},
      {SCMP_ARCH_X86_64, SCMP_ARCH_X32},
      {SCMP_ARCH_AARCH64, SCMP_ARCH_ARM},
      {SCMP_ARCH_S390X, SCMP_ARCH_S390},
  };
  for (const auto &row : kRows) {
    if (row.native == seccomp_arch_native()) check(seccomp_arch_add(filter, row.relative));
  }
}

// The kernel looks at the lower half of a request only.
void refuse_request(scmp_filter_ctx filter, std::uint32_t request) {
  constexpr std::uint64_t kLowerHalf = 0xFFFFFFFF;
  check(seccomp_rule_add(filter, SCMP_ACT_ERRNO(EPERM), SCMP_SYS(ioctl), 1,
                         SCMP_A1(SCMP_CMP_MASKED_EQ, kLowerHalf, request)));
}

// A process that is past its limit of processor time is killed, which no rule for signals hinders. Zero is the caller itself.
void refuse_limits_of_others(scmp_filter_ctx filter) {
  check(seccomp_rule_add(filter, SCMP_ACT_ERRNO(EPERM), SCMP_SYS(prlimit64), 2, SCMP_A0(SCMP_CMP_NE, 0),
                         SCMP_A2(SCMP_CMP_NE, 0)));
}

void write_filter(int file) {
  const Filter filter(seccomp_init(SCMP_ACT_ALLOW), seccomp_release);
  if (!filter) check(-ENOMEM);
  check(seccomp_attr_set(filter.get(), SCMP_FLTATR_ACT_BADARCH, SCMP_ACT_ERRNO(ENOSYS)));
  add_relatives(filter.get());
  for (const std::uint32_t typing : {TIOCSTI, TIOCLINUX}) refuse_request(filter.get(), typing);
  refuse_limits_of_others(filter.get());
  for (const int keys : {SCMP_SYS(keyctl), SCMP_SYS(add_key), SCMP_SYS(request_key)}) {
    check(seccomp_rule_add(filter.get(), SCMP_ACT_ERRNO(EPERM), keys, 0));
  }
  check(seccomp_export_bpf(filter.get(), file));
}

// Returns 0, or the errno of what failed. libseccomp 2.5 dies where it finds no memory, so that it works in a child.
int write_filter_in_child(int file) {
  std::fflush(nullptr);
  const pid_t child = fork();
  if (child < 0) base::no_process_for("the box");
  if (child > 0) {
    const int status = base::wait_status_of(child);
    return WIFEXITED(status) ? WEXITSTATUS(status) : ENOMEM;
  }
  const rlimit no_core{0, 0};
  setrlimit(RLIMIT_CORE, &no_core);
  try {
    write_filter(file);
  } catch (const std::system_error &error) {
    _exit(error.code().value());
  } catch (...) {
    _exit(ENOMEM);
  }
  _exit(0);
}

}  // namespace

base::Descriptor call_filter() {
  base::Descriptor file(memfd_create("call_filter", MFD_CLOEXEC));
  if (file.get() < 0) check(-errno);
  const int error = write_filter_in_child(file.get());
  if (error == ENOMEM) throw std::bad_alloc();
  check(-error);
  if (lseek(file.get(), 0, SEEK_SET) != 0) check(-errno);
  return file;
}

}  // namespace spbox
