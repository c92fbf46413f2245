#include "host/spbox/progress_line.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <string_view>

#include "host/runner/telling.h"
#include "host/spbox/standard_output.h"

namespace spbox {
namespace {

// A terminal that can clear the rest of a line.
bool is_seen() {
  const char *kind = std::getenv("TERM");  // NOLINT(concurrency-mt-unsafe): there is one thread
  return isatty(STDOUT_FILENO) == 1 && kind != nullptr && *kind != '\0' && std::string_view(kind) != "dumb";
}

}  // namespace

ProgressLine::ProgressLine() : is_seen_(is_seen()) {}

// In the last column, some terminals go on to the next line.
std::size_t ProgressLine::width() const {
  if (!is_seen_) return 0;
  winsize size{};
  constexpr std::size_t kUsual = 80;
  const bool is_known = ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 1;
  return (is_known ? size.ws_col : kUsual) - 1;
}

void ProgressLine::show(const std::string &line) {
  if (!is_seen_) return;
  print_over(line);
  is_shown_ = true;
}

void ProgressLine::clear() {
  if (!is_shown_) return;
  print_over("");
  is_shown_ = false;
}

void ProgressOfPlays::ends(const std::string &name) {
  if (const auto found = std::ranges::find(at_work_, name); found != at_work_.end()) at_work_.erase(found);
}

void ProgressOfPlays::counts(bool is_wrong) {
  ++done_;
  wrong_ += is_wrong ? 1U : 0U;
}

void ProgressOfPlays::show() {
  if (line_.width() > 0)
    line_.show(runner::told_of(runner::Progress{done_, all_, wrong_, at_work_, time(), what_}, line_.width()));
}

std::chrono::milliseconds ProgressOfPlays::time() const {
  return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - begin_);
}

}  // namespace spbox
