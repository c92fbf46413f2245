#include "host/spbox/beside_process.h"

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

// The next line that comes from it; none once bwrap has ended, and it with bwrap.
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

// The descriptor stands behind the words that the program needs, and before the folder, which is for whoever looks at the processes.
Beside daemon_of(const RootPlan & /*plan*/) {
  return {.name = "the box's daemon",
          .command = {kDaemonInside, "/"},
          .without = "Requests to it will fail. The command runs without it.",
          .since = "Requests to it failed from then on."};
}

Beside platform_of(const RootPlan &plan) {
  return {.name = "the platform of the machine's programs",
          .command = {kPlatformServerInside, "/", plan.machine->socket},
          .without = "What the command asks of it will fail.",
          .since = "From then on, calls of processes that had not called before failed."};
}

BesideProcess::BesideProcess(const RootPlan &plan, Children &children, Beside what)
    : children_(children), what_(std::move(what)) {
  base::Pipe pipe;
  says_ = std::move(pipe.out);
  std::vector<std::string> program = what_.command;
  program.insert(program.end(), {std::to_string(pipe.in.get()), plan.box.root().string()});
  bwrap_ = start_in_root(plan, program, pipe.in.get(), [&] {
    setsid();  // the signals of the operator's terminal are for the command
    dup2(pipe.in.get(), STDERR_FILENO);
  });
  children_.expect(bwrap_);
  pipe.in.reset();
  await();
}

// Before it comes what the loader and bwrap have to say, such as a library that cannot be preloaded.
void BesideProcess::await() {
  std::optional<std::string> last;
  while (const std::optional<std::string> line = line_from(says_.get(), bwrap_)) {
    ready_ = base::number_in<pid_t>(*line);
    if (ready_) return;
    last = line;
  }
  if (!children_.has_ended(bwrap_)) kill(bwrap_, SIGTERM);
  children_.exit_status_of(bwrap_);
  children_.end_orphans();  // no command is there yet that may leave some
  complain(what_.name + " does not run" + (last ? ": " + *last : "") + ". " + what_.without);
}

BesideProcess::~BesideProcess() {
  try {
    // It clears away what it has made. bwrap ends with it.
    const bool has_ended = children_.has_ended(bwrap_);
    if (!has_ended) kill(ready_.value_or(bwrap_), SIGTERM);
    const int status = children_.exit_status_of(bwrap_);
    if (!ready_) return;
    std::optional<std::string> last;
    while (const std::optional<std::string> line = line_from(says_.get(), bwrap_)) {
      if (!has_ended) complain(what_.name + ": " + *line + (line->ends_with('.') ? "" : ". " + what_.since));
      last = line;
    }
    if (status == 0 || status == 128 + SIGTERM) return;
    complain(what_.name + " ended before the command: " + last.value_or(ending(status)) + ". " + what_.since);
  } catch (const std::exception &) {
    // Nothing can be told of a child that nobody can wait for.
  }
}

}  // namespace spbox
