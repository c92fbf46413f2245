#include "host/platform/files_in_tmp.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <string_view>

#include "host/base/descriptor.h"
#include "host/platform/points.h"

namespace {

constinit std::atomic<bool> is_full = false;

// How many lines there are, and how many fit on the terminal.
int lines_in(std::string_view text) {
  int lines = 0;
  for (const char c : text) lines += c == '\n' ? 1 : 0;
  return lines;
}
int rows() {
  winsize size{};
  return ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_row > 0 ? size.ws_row : 24;
}

std::string_view first_lines(std::string_view text, int lines) {
  std::size_t end = 0;
  for (; lines > 0 && end < text.size(); ++end) lines -= text[end] == '\n' ? 1 : 0;
  return text.substr(0, end);
}

// As the real one is when it waits for a key: half of its page is shown, the terminal gives it each key, and shows none. It is between
// fork and execve: nothing is allocated.
[[noreturn]] void die_in_the_middle_of_a_page(const char *file) {
  static char room[16384];
  const base::Descriptor in(open(file, O_RDONLY | O_CLOEXEC));
  const ssize_t size = read(in.get(), room, sizeof room);
  const std::string_view text(room, size < 0 ? 0 : static_cast<std::size_t>(size));
  const std::string_view shown = first_lines(text, std::min(lines_in(text), rows()) / 2);
  [[maybe_unused]] const ssize_t written = write(STDOUT_FILENO, shown.data(), shown.size());
  termios mode{};
  if (tcgetattr(STDOUT_FILENO, &mode) == 0) {
    mode.c_lflag &= ~static_cast<tcflag_t>(ECHO | ICANON);
    tcsetattr(STDOUT_FILENO, TCSANOW, &mode);
  }
  raise(SIGKILL);
  _exit(128 + SIGKILL);
}

}  // namespace

namespace platform {

box::Way reach_file(std::string_view call) noexcept {
  const box::Way way = reach(box::PointKind::kFile, call).way;
  if (way == box::Way::kFull) is_full = true;
  return way;
}

}  // namespace platform

bool platform_makes_file() {
  return platform::reach_file("make") != box::Way::kRefused;
}

bool platform_has_room() {
  return !is_full;
}

int platform_starts_pager(const char *file) {
  switch (platform::reach(box::PointKind::kPager, {}).way) {
    case box::Way::kMissing:
      return ENOENT;
    case box::Way::kRefused:
      return EACCES;
    case box::Way::kMidway:
      die_in_the_middle_of_a_page(file);
    default:
      return 0;
  }
}
