#include "host/spbox/standard_output.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <string>

#include "host/base/shown.h"
#include "host/base/told.h"
#include "host/spbox/verb.h"

namespace spbox {
namespace {

void keep(std::string_view text) {
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    if (end > 0) kept_output().lines.emplace_back(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
}

constexpr std::string_view kHead = "spbox: ";  // of an error

int g_reason = 0;  // why a part of the output could not be written, the first one

void put(const std::string &text) {
  if (kept_output().is_wanted) return keep(text);
  errno = 0;
  if (std::fputs(text.c_str(), stdout) < 0 && g_reason == 0) g_reason = errno;
}

}  // namespace

// Each stays closed to all that uses it: nothing can be read from the first, and nothing be written to the others. The
// commands that spbox starts find them closed.
void keep_standard_descriptors() {
  for (const int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(fd, F_GETFD) >= 0) continue;
    const int direction = fd == STDIN_FILENO ? O_WRONLY : O_RDONLY;
    if (open("/dev/null", direction | O_CLOEXEC) < 0) return;
  }
}

void print(std::string_view lines) {
  put(base::shown_lines(lines));
}

void print_line(std::string_view line) {
  put(base::shown(line) + "\n");
}

KeptOutput &kept_output() {
  static KeptOutput kept;
  return kept;
}

Window window_of_output() {
  if (isatty(STDOUT_FILENO) == 0) return {};
  winsize size{};
  Window window;
  window.columns = ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
  const char *type = std::getenv("TERM"), *none = std::getenv("NO_COLOR");  // NOLINT(concurrency-mt-unsafe): one thread
  const std::string_view name = type == nullptr ? "" : type;
  window.has_colours = !name.empty() && name != "dumb" && (none == nullptr || *none == '\0');
  return window;
}

void print_in(Ink ink, std::string_view lines, const Window &window) {
  constexpr std::array<const char *, 6> kLooks{"", "1", "2", "1;31", "32", "33"};
  const char *look = kLooks.at(static_cast<std::size_t>(ink));
  if (!window.has_colours || *look == '\0') return print(lines);
  const bool ends = lines.ends_with('\n');
  if (ends) lines.remove_suffix(1);
  std::fputs((std::string("\033[") + look + "m").c_str(), stdout);
  print(lines);
  std::fputs(ends ? "\033[0m\n" : "\033[0m", stdout);
}

void print_over(std::string_view text) {
  constexpr const char *kClearBehind = "\033[K";
  std::fputs(("\r" + base::shown(text) + kClearBehind).c_str(), stdout);
  std::fflush(stdout);
}

void complain(std::string_view line) {
  complain_in_lines(std::string(kHead) + base::shown(line) + "\n");
}

void complain_in_lines(std::string_view lines) {
  const std::string text = base::shown_lines(lines);
  if (kept_output().is_wanted) keep(std::string_view(text).substr(text.starts_with(kHead) ? kHead.size() : 0));
  std::fflush(stdout);
  std::fputs(text.c_str(), stderr);
}

int out_of_memory() {
  std::fflush(stdout);
  for (const char *part : {"spbox: ", base::kNoMemory, ".\n"}) std::fputs(part, stderr);
  return kFailure;
}

void say_out_of_memory_at_any_end() {
  static const std::terminate_handler kBefore = std::get_terminate();
  std::set_terminate([] {
    void *const probe = std::malloc(4096);
    if (probe != nullptr) kBefore();
    _exit(out_of_memory());
  });
}

int with_output_judged(int status) {
  errno = 0;
  if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0) return status;
  const int reason = errno == 0 ? g_reason : errno;  // of the last part, or of one before
  // NOLINTNEXTLINE(concurrency-mt-unsafe): there is one thread
  const std::string why = reason == 0 ? "" : std::string(": ") + std::strerror(reason);
  complain("the output cannot be written" + why + ".");
  return status == 0 ? kFailure : status;
}

}  // namespace spbox
