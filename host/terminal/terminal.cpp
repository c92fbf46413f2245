#include "host/terminal/terminal.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <system_error>

#include "host/clock/hours.h"

namespace terminal {
namespace {

using box_time::Clock;

// A screen is drawn in several writes; nobody reads it before it stands still. One that never does is read all the
// same.
constexpr milliseconds kStandsStill{30};
constexpr milliseconds kNeverStandsStill{1000};

std::chrono::nanoseconds left_until(Clock::time_point deadline) {
  return std::max(std::chrono::nanoseconds{0}, deadline - Clock::now());
}

[[noreturn]] void fail(const char *what) {
  throw std::system_error(errno, std::generic_category(), what);
}

// A command that asks the terminal on and on, and does not read what it answers, gets no more answers than this.
constexpr std::size_t kMostUnread = std::size_t{64} << 10U;

}  // namespace

Terminal::Terminal(Size size, int alarm)
    : master_(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK)),
      alarm_(alarm),
      screen_(size, [this](std::string_view answer) {
        if (unsent_.size() + answer.size() <= kMostUnread) unsent_ += answer;
      }) {
  const int master = master_.get();
  if (master < 0 || grantpt(master) != 0 || unlockpt(master) != 0) fail("cannot make a terminal");
  std::array<char, 64> path{};
  if (ptsname_r(master, path.data(), path.size()) != 0) fail("cannot make a terminal");
  path_ = path.data();
  // Held open so that the terminal and its mode outlive the command.
  slave_ = base::Descriptor(open(path_.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC));
  if (slave_.get() < 0) fail("cannot make a terminal");
  set_window(size);
}

void Terminal::set_window(Size size) {
  winsize window{};
  window.ws_row = static_cast<unsigned short>(size.rows);
  window.ws_col = static_cast<unsigned short>(size.columns);
  if (ioctl(slave_.get(), TIOCSWINSZ, &window) != 0) fail("cannot make a terminal");
}

void Terminal::resize(Size size) {
  screen_.resize(size);
  set_window(size);
}

void Terminal::go_on() {
  if (session_) session_->go_on();
}

void Terminal::start(const std::vector<std::string> &command) {
  session_.reset();
  grow_old();
  session_.emplace(path_, command);
  is_end_told_ = false;
}

bool Terminal::type(std::string_view keys, milliseconds patience) {
  grow_old();
  unsent_ += keys;
  keys_end_ = unsent_.size();
  const auto deadline = Clock::now() + patience;
  for (send(); keys_end_ > 0 && runs() && Clock::now() < deadline;) exchange(left_until(deadline));
  if (keys_end_ == 0) return true;
  unsent_.clear();
  keys_end_ = 0;
  return false;
}

// Sends what the command takes now; false when it takes nothing.
bool Terminal::send() {
  const auto sent = unsent_.empty() ? 0 : write(master_.get(), unsent_.data(), unsent_.size());
  if (sent < 0 && errno != EAGAIN && errno != EINTR) fail("cannot type on the terminal");
  if (sent <= 0) return false;
  unsent_.erase(0, static_cast<std::size_t>(sent));
  keys_end_ -= std::min(keys_end_, static_cast<std::size_t>(sent));
  return true;
}

// All that the command has written until now is old, also what nobody has looked at yet. One that prints on and on is
// not listened to for ever.
void Terminal::grow_old() {
  const auto deadline = Clock::now() + kNeverStandsStill;
  while (Clock::now() < deadline && exchange(milliseconds{0})) continue;
  screen_.grow_old();
}

// Takes in what the command writes, and sends what it is to read; false when nothing went either way. The command's end
// is news, too, once.
bool Terminal::exchange(std::chrono::nanoseconds patience) {
  const auto deadline = box_time::now() + patience;
  const int ways = unsent_.empty() ? POLLIN : POLLIN | POLLOUT;
  // Who looks at the command's end of the line lets the system deliver there what was typed.
  std::vector<pollfd> wait{pollfd{master_.get(), static_cast<short>(ways), 0},
                           pollfd{session_ ? session_->news() : -1, POLLIN, 0}, pollfd{alarm_, POLLIN, 0},
                           pollfd{hung_up() ? -1 : slave_.get(), 0, 0}};
  if (session_ && !is_end_told_ && session_->ending()) return is_end_told_ = true;
  if (is_end_told_) wait[1].fd = -1;
  const std::size_t own = wait.size();
  for (const Terminal *other : others_) wait.push_back({other->master_.get(), POLLIN, 0});
  do {
    if (box_time::poll(wait, deadline) <= 0) return false;
    if (wait[2].revents != 0) throw Interrupted();
    for (std::size_t i = 0; i < others_.size(); ++i) {
      if ((wait[own + i].revents & POLLIN) != 0) others_[i]->take_in();
    }
  } while (wait[0].revents == 0 && wait[1].revents == 0 && wait[3].revents == 0 && box_time::now() < deadline);
  const bool has_sent = (wait[0].revents & POLLOUT) != 0 && send();
  if ((wait[0].revents & POLLIN) == 0) return has_sent || wait[1].revents != 0;
  return take_in();
}

bool Terminal::take_in() {
  std::array<char, 4096> bytes{};
  const auto length = read(master_.get(), bytes.data(), bytes.size());
  if (length <= 0) return false;
  const std::string_view taken(bytes.data(), static_cast<std::size_t>(length));
  screen_.feed(taken);
  if (listener_) listener_(taken);
  return true;
}

void Terminal::settle() {
  const auto deadline = Clock::now() + kNeverStandsStill;
  while (Clock::now() < deadline && exchange(kStandsStill)) continue;
}

bool Terminal::shows(std::string_view text) {
  settle();
  return screen_.shows(text);
}

// In the wall's time: people sit there.
void Terminal::watch_with(std::span<pollfd> others, milliseconds patience) {
  const auto ways = static_cast<short>(unsent_.empty() ? POLLIN : POLLIN | POLLOUT);
  std::vector<pollfd> wait{pollfd{master_.get(), ways, 0}, pollfd{session_ ? session_->news() : -1, POLLIN, 0}};
  wait.insert(wait.end(), others.begin(), others.end());
  const int ready = box_time::poll_by_wall(wait, box_time::wall() + patience);
  if (ready < 0 && errno != EINTR) fail("poll");
  if (ready < 0) wait.assign(wait.size(), pollfd{});
  for (std::size_t i = 0; i < others.size(); ++i) others[i].revents = wait[i + 2].revents;
  if ((wait[0].revents & POLLOUT) != 0) send();
  if ((wait[0].revents & POLLIN) != 0) take_in();
}

void Terminal::watch(milliseconds time) {
  const auto deadline = Clock::now() + time;
  do {
    exchange(left_until(deadline));
  } while (Clock::now() < deadline);
}

bool Terminal::wait_for(std::string_view text, milliseconds patience) {
  return wait_until([&] { return screen_.shows(text); }, patience);
}

bool Terminal::wait_for_new(std::string_view text, milliseconds patience) {
  return wait_until([&] { return screen_.shows_new(text); }, patience);
}

// The line as it is when the screen stands still: it may have been half written.
std::optional<std::string> Terminal::wait_for_new(const Finder &finder, milliseconds patience) {
  std::optional<std::string> line;
  const auto has_come = [&] {
    line = screen_.find_new(finder);
    return line.has_value();
  };
  if (wait_until(has_come, patience)) {
    if (auto whole = screen_.find_new(finder)) line = std::move(whole);
  }
  return line;
}

std::optional<std::string> Terminal::find(const Finder &finder) {
  settle();
  return screen_.find(finder);
}

bool Terminal::wait_until(const std::function<bool()> &is_true, milliseconds patience) {
  const auto deadline = Clock::now() + patience;
  bool is_over = false;
  while (!is_true()) {
    if (is_over) return false;
    const bool ended = !session_ || session_->ending();
    const bool news = exchange(ended ? std::chrono::nanoseconds(kStandsStill) : left_until(deadline));
    is_over = (ended && !news) || Clock::now() >= deadline;
    if (is_over) settle();
  }
  settle();
  return true;
}

std::vector<std::string> Terminal::screen() {
  settle();
  return screen_.rows();
}

std::vector<std::string> Terminal::everything_shown() {
  settle();
  std::vector<std::string> lines(screen_.scrolled_off().begin(), screen_.scrolled_off().end());
  const auto rows = screen_.rows();
  lines.insert(lines.end(), rows.begin(), rows.end());
  return lines;
}

std::optional<Ending> Terminal::wait_for_exit(milliseconds patience) {
  const auto deadline = Clock::now() + patience;
  while (session_ && !session_->ending() && Clock::now() < deadline) exchange(left_until(deadline));
  settle();
  return session_ ? session_->ending() : std::nullopt;
}

termios Terminal::attributes() const {
  termios attributes{};
  if (tcgetattr(slave_.get(), &attributes) != 0) fail("cannot read the terminal's mode");
  return attributes;
}

bool Terminal::maps_returns() const {
  return (attributes().c_iflag & ICRNL) != 0;
}

Mode Terminal::mode() const {
  const termios attributes = this->attributes();
  return {(attributes.c_lflag & ECHO) != 0, (attributes.c_lflag & ICANON) != 0, (attributes.c_lflag & ISIG) != 0};
}

void Terminal::end(milliseconds patience) {
  alarm_ = -1;
  others_.clear();
  if (runs()) {
    hang_up();
    wait_for_exit(patience);
  }
  session_.reset();
}

void Terminal::hang_up() {
  unsent_.clear();
  master_.reset();
}

std::vector<Process> Terminal::processes() const {
  return session_ ? session_->processes() : std::vector<Process>{};
}

std::optional<pid_t> Terminal::process(std::string_view name) const {
  return eldest(processes(), name);
}

}  // namespace terminal
