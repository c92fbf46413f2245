#include "host/spbox/daemon_process.h"

#include <unistd.h>

#include <csignal>
#include <exception>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "host/base/number.h"
#include "host/base/pipe.h"
#include "host/spbox/bwrap.h"
#include "host/spbox/handshake.h"
#include "host/spbox/standard_output.h"

namespace spbox {
namespace {

// The next line that comes from the daemon; none once bwrap has ended, and the daemon with it.
std::optional<std::string> line_from(int fd, pid_t bwrap) {
  std::string line;
  while (comes_before_end(fd, bwrap) && read_on(fd, line)) {
    if (!line.ends_with('\n')) continue;
    line.pop_back();
    return line;
  }
  return std::nullopt;
}

std::string ending(int status) {
  return status > 128 ? "signal " + std::to_string(status - 128) : "exit status " + std::to_string(status);
}

}  // namespace

DaemonProcess::DaemonProcess(const RootPlan &plan, Children &children) : children_(children) {
  base::Pipe pipe;
  says_ = std::move(pipe.out);
  const std::vector<std::string> program{kDaemonInside, "/", std::to_string(pipe.in.get()), plan.box.root().string()};
  bwrap_ = start_in_root(plan, program, pipe.in.get(), [&] {
    setsid();  // the signals of the operator's terminal are for the command
    dup2(pipe.in.get(), STDERR_FILENO);
  });
  children_.expect(bwrap_);
  pipe.in.reset();
  await();
}

void DaemonProcess::await() {
  const std::optional<std::string> line = line_from(says_.get(), bwrap_);
  ready_ = base::number_in<pid_t>(line.value_or(""));
  if (ready_) return;
  // It clears up, and bwrap ends.
  for (std::string rest; comes_before_end(says_.get(), bwrap_) && read_on(says_.get(), rest);) continue;
  if (!children_.has_ended(bwrap_)) kill(bwrap_, SIGTERM);
  children_.exit_status_of(bwrap_);
  children_.end_orphans();  // no command is there yet that may leave some
  complain("the box's daemon does not run" + (line ? ": " + *line : "") +
           ". Requests to it will fail. The command runs without it.");
}

DaemonProcess::~DaemonProcess() {
  try {
    // The daemon clears away what it has made. bwrap ends with it.
    if (!children_.has_ended(bwrap_)) kill(ready_.value_or(bwrap_), SIGTERM);
    const int status = children_.exit_status_of(bwrap_);
    if (!ready_ || status == 0 || status == 128 + SIGTERM) return;
    complain("the box's daemon ended before the command: " + line_from(says_.get(), bwrap_).value_or(ending(status)) +
             ". Requests to it failed from then on.");
  } catch (const std::exception &) {
    // Nothing can be told of a child that nobody can wait for.
  }
}

}  // namespace spbox
