// The control programs of a box. Nobody reads their output: they are run without standard input, output and error, and
// say all with their exit status.
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <exception>
#include <string>
#include <string_view>

#include "host/box/call_ring.h"
#include "host/box/full_file.h"
#include "host/box/mapping_guard.h"
#include "host/box/place.h"
#include "host/box/points.h"
#include "host/box/program_list.h"
#include "host/box/trace_ring.h"
#include "host/programs/control_programs.h"

namespace programs {
namespace {

// The databases would be opened on descriptors 0 to 2 otherwise, where any stray message would be written into them.
bool fill_standard_descriptors() {
  int fd = 0;
  while ((fd = open("/dev/null", O_RDWR | O_CLOEXEC)) >= 0 && fd <= STDERR_FILENO) {
  }
  if (fd < 0) return false;
  close(fd);
  return true;
}

std::string joined(int argc, char **argv) {
  std::string line;
  for (int i = 1; i < argc; ++i) line += (i > 1 ? " " : "") + std::string(argv[i]);
  return line;
}

std::int64_t now_ns() {
  const auto since_epoch = std::chrono::system_clock::now().time_since_epoch();
  return std::chrono::duration_cast<std::chrono::nanoseconds>(since_epoch).count();
}

void sleep_whole(unsigned seconds) {
  while (seconds > 0) seconds = sleep(seconds);
}

volatile sig_atomic_t asked_to_end = 0;

void hang(const box::Bend &bend) {
  // SIGTERM may come at any time but while it is looked for.
  sigset_t all, before;
  sigfillset(&all);
  sigprocmask(SIG_BLOCK, &all, &before);
  if (bend.exit && !bend.ignore_term) std::signal(SIGTERM, [](int) { asked_to_end = 1; });
  while (asked_to_end == 0) sigsuspend(&before);
  sigprocmask(SIG_SETMASK, &before, nullptr);
}

// What comes before the program's own work; returns the exit status that takes its place, if any.
std::optional<int> bent(const box::Bend &bend) {
  sleep_whole(bend.delay);
  if (bend.hang) hang(bend);
  if (bend.die) {
    std::signal(*bend.die, SIG_DFL);
    std::raise(*bend.die);
  }
  return bend.exit;
}

// What the program does unless it is bent. That the box cannot be read or written is an exit status, too.
int work(int argc, char **argv, const ControlProgram &program, const box::Place &place) {
  try {
    box::Hardware hardware(place);
    Machine machine(place, hardware);
    const std::optional<Arguments> arguments = parse(argc, argv, program.options);
    return arguments ? program.act(*arguments, machine) : kUsage;
  } catch (const std::exception &) {
    return kFailed;
  }
}

// What this start of the program does instead of what the box has for all of them.
void deviate(const box::Place &place, std::string_view program, box::Bend &bend) {
  box::PointCounter points;
  points.map(place.points().c_str());
  const box::Turn turn = points.reach(box::PointKind::kProgram, program);
  if (turn.way == box::Way::kExit) bend.exit = turn.value;
  if (turn.way == box::Way::kHang) bend.hang = true;
}

// The start of this program, and its end: a program that is killed has none.
class KeptRun {
 public:
  KeptRun(const box::Place &place, const std::string &line) : start_(box::call_time()) {
    box::TraceRing trace;
    trace.map(place.trace().c_str());
    calls_.map(place.calls().c_str());
    call_.kind = box::CallKind::kProgram;
    call_.pid = getpid();
    call_.time_ns = start_;
    call_.position = trace.next();
    call_.first = static_cast<std::uint32_t>(getppid());
    call_.text = line;
    calls_.append(call_);
  }
  void ends(std::string_view program, int status) {
    call_.kind = box::CallKind::kProgramEnd;
    call_.duration_ns = static_cast<std::uint64_t>(std::max<std::int64_t>(box::call_time() - start_, 0));
    call_.result = status;
    call_.text = program;
    calls_.append(call_);
  }

 private:
  std::int64_t start_;
  box::CallRing calls_;
  box::Call call_;
};

int run(int argc, char **argv, const ControlProgram &program) {
  const box::Place place = box::Place::here();
  box::TextDatabase kept(place);
  box::Bend bend = box::bend_of(kept, program.name);
  deviate(place, program.name, bend);
  if (bend.ignore_term) std::signal(SIGTERM, SIG_IGN);
  box::Run record{now_ns(), getpid(), std::nullopt, joined(argc, argv)};
  const std::string line = std::string(program.name) + (argc > 1 ? " " : "") + record.arguments;
  KeptRun run(place, line);
  box::set_last_run(kept, program.name, record);
  record.status = bent(bend);
  if (!record.status) record.status = work(argc, argv, program, place);
  run.ends(program.name, *record.status);
  box::set_last_run(kept, program.name, record);
  return *record.status;
}

}  // namespace
}  // namespace programs

int main(int argc, char **argv) {
  box::survive_full_files();
  box::survive_lost_mappings();
  if (!programs::fill_standard_descriptors() || argc < 1) return programs::kFailed;
  try {
    const std::string path = argv[0];
    const programs::ControlProgram *program = programs::find_program(path.substr(path.rfind('/') + 1));
    return program == nullptr ? programs::kUsage : programs::run(argc, argv, *program);
  } catch (const std::exception &) {
    return programs::kFailed;
  }
}
