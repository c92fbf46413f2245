#include "host/spbox/run_in_root.h"

#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <stdexcept>
#include <system_error>

#include "host/base/descriptor.h"
#include "host/spbox/bwrap.h"
#include "host/spbox/enter_box.h"
#include "host/spbox/handshake.h"
#include "host/spbox/namespace_hint.h"
#include "host/spbox/remains.h"
#include "host/spbox/signals.h"

namespace spbox {
namespace {

[[noreturn]] void not_run(int status) {
  if (status > 128) {
    throw std::runtime_error("the command was not run: bwrap died of signal " + std::to_string(status - 128) +
                             " before the command was in the box.");
  }
  throw std::runtime_error("the command was not run: no root of its own could be made for it (see above). " +
                           namespace_hint() + (geteuid() == 0 ? "." : ", or run spbox as root."));
}

}  // namespace

int run_in_root(const RootPlan &plan, const std::vector<std::string> &command, Children &children) {
  std::array<int, 2> ends{};
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0) {
    throw std::system_error(errno, std::generic_category(), "socketpair");
  }
  base::Descriptor outside(ends[0]), inside(ends[1]);
  std::vector<std::string> program{kSpboxInside, kEnter, std::to_string(inside.get()), ignored_signals()};
  program.insert(program.end(), command.begin(), command.end());
  keep_signals();
  const pid_t child = start_in_root(plan, program, inside.get(), ignore_ending_signals);
  children.expect(child);
  inside.reset();
  const pid_t entered = announced_on(outside.get(), child);
  if (entered > 0) pass_signals_to(entered);
  outside.reset();
  const int status = children.exit_status_of(child);
  pass_no_signals();
  if (entered == 0 || was_cut_off(status)) children.end_orphans();
  if (entered == 0) not_run(status);
  return status;
}

}  // namespace spbox
