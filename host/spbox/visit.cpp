#include "host/spbox/visit.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <stdexcept>
#include <system_error>

#include "host/base/child.h"
#include "host/base/descriptor.h"
#include "host/spbox/enclosure.h"
#include "host/spbox/enter_box.h"
#include "host/spbox/handshake.h"
#include "host/spbox/namespace_hint.h"
#include "host/spbox/signals.h"
#include "host/spbox/verb.h"

namespace spbox {
namespace {

[[noreturn]] void system_failure(const std::string &what) {
  throw std::system_error(errno, std::generic_category(), what);
}

[[noreturn]] void become_bwrap(const base::ArgumentVector &words, int inside) {
  ignore_ending_signals();
  fcntl(inside, F_SETFD, 0);
  execvp(words.program(), words.data());
  // NOLINTNEXTLINE(concurrency-mt-unsafe): one thread
  std::fprintf(stderr, "spbox: bwrap cannot be run: %s.\n", std::strerror(errno));
  _exit(kFailure);
}

}  // namespace

int visit(std::vector<std::string> bwrap, const std::vector<std::string> &command) {
  std::array<int, 2> ends{};
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0) system_failure("socketpair");
  base::Descriptor outside(ends[0]), inside(ends[1]);
  bwrap.insert(bwrap.end(), {"--", kSpboxInside, kEnter, std::to_string(inside.get()), ignored_signals()});
  bwrap.insert(bwrap.end(), command.begin(), command.end());
  const base::ArgumentVector words(std::move(bwrap));
  keep_signals();
  std::fflush(nullptr);
  const pid_t child = fork();
  if (child < 0) system_failure("fork");
  if (child == 0) become_bwrap(words, inside.get());
  inside.reset();
  const pid_t entered = announced_on(outside.get());
  if (entered > 0) pass_signals_to(entered);
  outside.reset();
  const int status = base::exit_status_of(child);
  pass_no_signals();
  if (entered > 0) return status;
  throw std::runtime_error("the command was not run: no root of its own could be made for it (see above). " +
                           namespace_hint() + (geteuid() == 0 ? "." : ", or run spbox as root."));
}

}  // namespace spbox
