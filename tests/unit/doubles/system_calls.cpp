// Memory, descriptors, the terminal and the message catalogue, as the library calls them. While no machine runs, they are the system's
// own.

#include "tests/unit/doubles/system_calls.h"

#include <unistd.h>

#include <cerrno>
#include <clocale>
#include <string>

#include "tests/unit/doubles/machine.h"

using doubles::Machine;
using doubles::machine;

namespace {

// A mark between what the library prints: who had the terminal when.
void speak(const char *mark) {
  if (machine().speaks) std::printf("<%s>", mark);
}

Machine::Descriptor *descriptor_of(int fd) {
  const auto found = machine().descriptors.find(fd);
  if (found != machine().descriptors.end()) return &found->second;
  errno = EBADF;
  return nullptr;
}

bool refuses_terminal(int fd) {
  const bool refused = fd < 0 || fd > 2 || !machine().is_terminal[fd];
  if (refused) errno = ENOTTY;
  return refused;
}

}  // namespace

// Only the linker knows these names, so no header declares them.
#pragma GCC diagnostic ignored "-Wmissing-declarations"

extern "C" {

int __wrap_close(int fd) {
  if (machine().active && machine().in_child) machine().note("close " + std::to_string(fd));
  return __real_close(fd);
}

int __wrap_ftruncate(int fd, off_t size) {
  if (!machine().active) return __real_ftruncate(fd, size);
  const std::string call = "ftruncate " + std::to_string(size);
  if (const auto *failure = machine().enter(call)) return failed(*failure);
  if (machine().files_are_real) return __real_ftruncate(fd, size);
  auto *descriptor = descriptor_of(fd);
  if (descriptor == nullptr) return -1;
  machine().files[descriptor->path].resize(static_cast<size_t>(size));
  errno = EAGAIN;
  return 0;
}

off_t __wrap_lseek(int fd, off_t offset, int whence) {
  if (!machine().active) return __real_lseek(fd, offset, whence);
  const std::string call = "lseek " + std::to_string(offset) + (whence == SEEK_SET ? " from the start" : " relative");
  if (const auto *failure = machine().enter(call)) return failed(*failure);
  if (machine().files_are_real) return __real_lseek(fd, offset, whence);
  auto *descriptor = descriptor_of(fd);
  if (descriptor == nullptr) return -1;
  descriptor->position = static_cast<size_t>(offset);
  errno = EAGAIN;
  return offset;
}

void *__wrap_calloc(size_t count, size_t size) {
  if (!machine().active) return __real_calloc(count, size);
  if (const auto *failure = machine().enter("calloc")) {
    errno = failure->error;
    return nullptr;
  }
  void *block = __real_calloc(count, size);
  machine().own(block);
  return block;
}

void __wrap_free(void *block) {
  if (machine().active && block != nullptr) machine().disown(block);
  __real_free(block);
}

int __wrap_remove(const char *path) {
  if (!machine().active) return __real_remove(path);
  if (const auto *failure = machine().enter(std::string("remove ") + path)) return failed(*failure);
  if (machine().disk.erase(path) == 1) return 0;
  errno = ENOENT;
  return -1;
}

int __wrap_stat(const char *path, struct stat *result) {
  if (!machine().active) return __real_stat(path, result);
  if (const auto *failure = machine().enter(std::string("stat ") + path)) return failed(*failure);
  if (machine().markers.contains(path)) return 0;
  errno = ENOENT;
  return -1;
}

int __wrap_tcgetattr(int fd, termios *attributes) {
  if (!machine().active) return __real_tcgetattr(fd, attributes);
  if (const auto *failure = machine().enter("tcgetattr " + std::to_string(fd))) return failed(*failure);
  if (machine().terminal_is_real) return __real_tcgetattr(fd, attributes);
  if (refuses_terminal(fd)) return -1;
  *attributes = machine().terminal;
  return 0;
}

int __wrap_tcsetattr(int fd, int actions, const termios *attributes) {
  if (!machine().active) return __real_tcsetattr(fd, actions, attributes);
  const std::string when = actions == TCSANOW ? " now" : " later";
  if (const auto *failure = machine().enter("tcsetattr " + std::to_string(fd) + when)) return failed(*failure);
  if (machine().terminal_is_real) return __real_tcsetattr(fd, actions, attributes);
  if (refuses_terminal(fd)) return -1;
  speak((attributes->c_lflag & ECHO) != 0 ? "echo on" : "echo off");
  machine().terminal = *attributes;
  return 0;
}

int __wrap_tcflush(int fd, int queue) {
  if (!machine().active) return __real_tcflush(fd, queue);
  const std::string which = queue == TCIFLUSH ? " input" : queue == TCOFLUSH ? " output" : " another queue";
  if (const auto *failure = machine().enter("tcflush " + std::to_string(fd) + which)) return failed(*failure);
  if (machine().terminal_is_real) return __real_tcflush(fd, queue);
  if (refuses_terminal(fd)) return -1;
  speak("flush");
  return 0;
}

char *__wrap_dcgettext(const char *domain, const char *message, int category) {
  if (!machine().active || machine().catalogue_is_real) return __real_dcgettext(domain, message, category);
  machine().looked_up.push_back(std::string(domain) + (category == LC_MESSAGES ? " messages " : " ? ") + message);
  const auto found = machine().catalogue.find(message);
  return const_cast<char *>(found == machine().catalogue.end() ? message : found->second.c_str());
}

}  // extern "C"
