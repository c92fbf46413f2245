#include "include/lmainte.h"

#include <cctype>
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <iterator>

#include <sys/wait.h>
#include <unistd.h>

#include "src/frame/trace.h"
#include "trace_events/frame.h"

namespace {

using lmainte::Block;
using lmainte::Call;
using lmainte::Level;
using trace_events::Exec;
using trace_events::StopChild;

lmainte::Trace trace;
constexpr Block kExec = lmainte::block_of<Exec>();
constexpr Block kStopChild = lmainte::block_of<StopChild>();

struct ControlProgram {
  int32_t id;
  const char *path;
};

// No operation runs waitmgbready. Its place keeps the numbers of the others as they are.
constexpr ControlProgram kPrograms[] = {
    {LMAINTE_CMD_CTLMAINTE, "/mgb/bin/ctlmainte"},
    {LMAINTE_CMD_CTLFAN, "/mgb/bin/ctlfan"},
    {LMAINTE_CMD_JUDGECTLFRU, "/mgb/bin/judgectlfru"},
    {LMAINTE_CMD_TESTFRU, "/mgb/bin/testfru"},
    {LMAINTE_CMD_DETACHFRU, "/mgb/bin/detachfru"},
    {LMAINTE_CMD_CTLLED, "/mgb/bin/ctlled"},
    {LMAINTE_CMD_WAITMGBREADY, "/mgb/bin/waitmgbready"},
    {LMAINTE_CMD_SETMAINTEFLAG, "/mgb/bin/setmainteflag"},
    {LMAINTE_CMD_SETUPFRU, "/mgb/cli/usr/bin/setupfru"},
    {LMAINTE_CMD_IOADM, "/mgb/cli/usr/bin/ioadm"},
    {LMAINTE_CMD_CLEARPCI, "/mgb/bin/clearpci"},
    {LMAINTE_CMD_VANTAMAINTE, "/mgb/bin/vantamainte"},
    {LMAINTE_CMD_TESTSB, "/mgb/cli/usr/bin/testsb"},
    {LMAINTE_CMD_DELETEBOARD, "/mgb/cli/usr/bin/deleteboard"},
    {LMAINTE_CMD_CHKFANSPEED, "/mgb/bin/chkfanspeed"},
    {LMAINTE_CMD_LINKBOARD, "/mgb/bin/linkboard"},
    {-1, nullptr},
};

constexpr size_t kBufferSize = 1024;
constexpr int kPoliteAttempts = 3;
constexpr unsigned kAttemptSeconds = 5;

const char *path_of(int32_t id) {
  const ControlProgram *program = kPrograms;
  while (program->id != -1 && program->id != id) ++program;
  return program->path;
}

bool is_space(char c) {
  return isspace(static_cast<unsigned char>(c)) != 0;
}

// Cuts the line into words in place. Counts them only where `words` is null.
int32_t split_words(char *line, char **words) {
  int32_t count = 0;
  while (true) {
    while (is_space(*line)) ++line;
    if (*line == '\0') return count;
    if (words != nullptr) words[count] = line;
    ++count;
    while (*line != '\0' && !is_space(*line)) ++line;
    if (words != nullptr && *line != '\0') *line++ = '\0';
  }
}

struct Environment {
  char locale[kBufferSize] = "LC_ALL=C";
  char library_path[kBufferSize] = {};
  char privilege[kBufferSize] = {};
  char *entries[4] = {locale, library_path, privilege, nullptr};

  Environment() {
    fill(library_path, "LD_LIBRARY_PATH");
    fill(privilege, "PRIV");
  }

  static void fill(char (&entry)[kBufferSize], const char *name) {
    const char *value = getenv(name);
    snprintf(entry, sizeof entry, "%s=%s", name, value != nullptr ? value : "");
  }
};

struct Command {
  int32_t id;
  int32_t words;
  char **arguments;
  char *const *environment;
};

// Ends with _exit: the caller's exit handlers and unwritten output are the caller's.
[[noreturn]] void run_child(const Call &call, const Command &command) {
  close(STDIN_FILENO);
  close(STDOUT_FILENO);
  close(STDERR_FILENO);
  call.point(Level::kProcess, Exec::kChildRuns, command.id, command.words);
  execve(command.arguments[0], command.arguments, command.environment);
  call.system_call_failed(Exec::kCannotRun);
  free(command.arguments);
  _exit(LMAINTE_NOT_RUN);
}

// Stops a child that outlived its limit. Returns 0 with its wait status once it is reaped.
int32_t terminate(pid_t child, int &status) {
  Call call(trace, kStopChild);
  call.point(StopChild::kChild, child);
  for (int32_t attempt = 1; attempt <= kPoliteAttempts; ++attempt) {
    kill(child, SIGTERM);
    call.point(Level::kProcess, StopChild::kSignalSent, attempt);
    const pid_t reaped = waitpid(child, &status, WNOHANG);
    if (reaped == child) return LMAINTE_OK;
    if (reaped != 0) {
      call.system_call_failed(StopChild::kWaitFailed, reaped);
      return LMAINTE_NOT_RUN;
    }
    sleep(kAttemptSeconds);
  }
  kill(child, SIGKILL);
  call.point(Level::kProcess, StopChild::kSignalSent, kPoliteAttempts + 1);
  const pid_t reaped = waitpid(child, &status, 0);
  if (reaped == child) return LMAINTE_OK;
  call.system_call_failed(StopChild::kLastWaitFailed, reaped);
  return LMAINTE_NOT_RUN;
}

// Waits until the child has ended or its limit is spent. False when there is no status to judge.
bool await(const Call &call, pid_t child, int32_t time_limit, int &status) {
  for (int32_t waited = 0;; ++waited) {
    const pid_t reaped = waitpid(child, &status, WNOHANG);
    if (reaped == child) return true;
    if (reaped != 0) {
      call.system_call_failed(Exec::kWaitFailed, reaped);
      return false;
    }
    if (time_limit <= waited) {
      call.point(Level::kProcess, Exec::kLimitSpent, waited);
      const int32_t result = terminate(child, status);
      call.point(Level::kProcess, Exec::kStopped, result, status);
      if (result != LMAINTE_OK) call.error(Exec::kNotStopped, result);
      return result == LMAINTE_OK;
    }
    sleep(1);
  }
}

int32_t judge(const Call &call, int status) {
  if ((status & 0x7F) != 0) {
    call.error(Exec::kKilled, status);
    return LMAINTE_NOT_RUN;
  }
  const int32_t exit_status = (status >> 8) & 0xFF;
  call.point(Level::kProcess, Exec::kEnded, exit_status);
  return exit_status;
}

int32_t run(const Call &call, const Command &command, int32_t time_limit) {
  // This is no error, but it has an error's level: readers of the trace filter for it.
  call.point(Level::kError, Exec::kProgram, command.id, command.words);
  const pid_t child = fork();
  if (child == -1) {
    call.system_call_failed(Exec::kNoChild);
    return LMAINTE_NOT_RUN;
  }
  if (child == 0) run_child(call, command);
  call.point(Level::kProcess, Exec::kStarted, time_limit, child);
  int status = 0;
  return await(call, child, time_limit, status) ? judge(call, status) : LMAINTE_NOT_RUN;
}

int32_t start(const Call &call, int32_t command_id, const char *path, char *line, int32_t time_limit,
              const Environment &environment) {
  const int32_t words = split_words(line, nullptr);
  char **arguments = static_cast<char **>(calloc(static_cast<size_t>(words) + 2, sizeof *arguments));
  if (arguments == nullptr) {
    call.system_call_failed(Exec::kNoMemory);
    return LMAINTE_NOT_RUN;
  }
  arguments[0] = const_cast<char *>(path);
  split_words(line, arguments + 1);
  const int32_t result = run(call, {command_id, words, arguments, environment.entries}, time_limit);
  free(arguments);
  return result;
}

}  // namespace

int32_t lmainte_exec(int32_t command_id, int32_t time_limit, const char *format, ...) {
  char line[kBufferSize] = {};
  const Environment environment;
  Call call(trace, kExec);
  if (format == nullptr) {
    call.error(Exec::kRefused);
    return LMAINTE_NOT_RUN;
  }
  va_list values;
  va_start(values, format);
  // NOLINTNEXTLINE(clang-diagnostic-format-nonliteral): a caller's ready-made line is a format too, formatted once here
  if (vsnprintf(line, sizeof line, format, values) < 0) line[0] = '\0';
  va_end(values);
  if (time_limit <= 0) {
    call.error(Exec::kRefused);
    return LMAINTE_NOT_RUN;
  }
  const char *path = path_of(command_id);
  if (path == nullptr) {
    call.error(Exec::kRefused);
    return LMAINTE_NOT_RUN;
  }
  return start(call, command_id, path, line, time_limit, environment);
}
