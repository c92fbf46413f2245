// Files and standard output as streams in memory: what the library writes arrives write by write, and each write can fail.

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <utility>

#include <unistd.h>

#include "tests/unit/doubles/machine.h"
#include "tests/unit/doubles/paper.h"
#include "tests/unit/doubles/system_calls.h"

using doubles::Machine;
using doubles::machine;

namespace {

// A write that fails has taken some of the bytes, or none.
ssize_t arrive(void *cookie, const char *bytes, size_t size) {
  auto &stream = *static_cast<Machine::Stream *>(cookie);
  const auto *failure = stream.can_fail ? machine().step("write " + stream.path) : nullptr;
  if (failure != nullptr) {
    errno = failure->error;
    size = std::min(size, static_cast<size_t>(std::max(failure->result, 0)));
  }
  stream.text.append(bytes, size);
  return static_cast<ssize_t>(size);
}

FILE *open_in_memory(Machine::Stream &stream, int buffering) {
  FILE *file = fopencookie(&stream, "w", {nullptr, arrive, nullptr, nullptr});
  if (file == nullptr) std::abort();
  std::setvbuf(file, nullptr, buffering, BUFSIZ);
  return file;
}

}  // namespace

namespace doubles {

Paper::Paper() : stream_{"standard output", "", true}, before_(stdout) {
  std::fflush(stdout);
  stdout = open_in_memory(stream_, machine().keeps_output ? _IOFBF : _IONBF);
  machine().paper = stdout;
}

Paper::~Paper() {
  stream_.can_fail = false;
  machine().paper = nullptr;
  __real_fclose(std::exchange(stdout, before_));
}

}  // namespace doubles

// Only the linker knows these names, so no header declares them.
#pragma GCC diagnostic ignored "-Wmissing-declarations"

extern "C" {

FILE *__wrap_fopen(const char *path, const char *mode) {
  if (!machine().active) return __real_fopen(path, mode);
  if (const auto *failure = machine().enter(std::string("fopen ") + path + " " + mode)) {
    errno = failure->error;
    return nullptr;
  }
  auto stream = std::make_unique<Machine::Stream>(Machine::Stream{path, "", true});
  FILE *file = open_in_memory(*stream, _IONBF);
  machine().streams[file] = std::move(stream);
  return file;
}

int __wrap_fclose(FILE *file) {
  const auto found = machine().streams.find(file);
  if (!machine().active || found == machine().streams.end()) return __real_fclose(file);
  const auto stream = std::move(found->second);
  machine().streams.erase(found);
  __real_fclose(file);
  machine().disk[stream->path] = stream->text;
  const auto *failure = machine().enter("fclose " + stream->path);
  return failure != nullptr ? failed(*failure) : 0;
}

int __wrap_fileno(FILE *file) {
  return machine().active && file != nullptr && file == machine().paper ? STDOUT_FILENO : __real_fileno(file);
}

}  // extern "C"
