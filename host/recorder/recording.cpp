#include "host/recorder/recording.h"

#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>

#include "host/base/descriptor.h"
#include "host/box/confinement.h"
#include "host/box/hardware.h"
#include "host/clock/hours.h"
#include "host/play/leftovers.h"
#include "host/recorder/deed.h"
#include "host/recorder/playwright.h"
#include "host/terminal/own_mode.h"
#include "host/terminal/terminal.h"

namespace recorder {
namespace {

using box_time::Clock;                   // of what the command does
using Wall = std::chrono::steady_clock;  // of what others do

constexpr milliseconds kLookAgain{250};  // at the window
constexpr milliseconds kToEnd{5000};     // for a command whose line is cut
constexpr milliseconds kToSettle{2000};  // for what ends with the command a moment later

milliseconds between(Clock::time_point from, Clock::time_point to) {
  return std::max(milliseconds{0}, std::chrono::duration_cast<milliseconds>(to - from));
}

// A line for each. The box's databases may hold anything.
std::vector<std::string> detached_units(const box::Place &place) {
  const std::string text = box::in_confinement(place, [&] {
    std::string lines;
    for (const box::SettingValue &row : box::Hardware(place).settings()) {
      if (row.setting == box::Setting::kDetached && !row.is_usual()) lines += row.of + '\n';
    }
    return lines;
  });
  std::vector<std::string> units;
  for (std::size_t at = 0; at < text.size(); at = text.find('\n', at) + 1) {
    units.push_back(text.substr(at, text.find('\n', at) - at));
  }
  return units;
}

class Recording {
 public:
  Recording(const Wanted &wanted, int alarm, const std::function<void(const std::string &)> &keep)
      : wanted_(wanted),
        alarm_(alarm),
        keep_(keep),
        deeds_(wanted.box),
        size_(window()),
        terminal_(size_),
        before_(play::before_command(wanted.box, terminal_)),
        logged_(wanted.log().size()),
        playwright_(wanted.opening) {
    terminal_.pass_on_to([this](std::string_view bytes) { show(bytes); });
  }

  bool run() {
    const terminal::OwnMode mode;
    terminal_.start(wanted_.command);
    playwright_.starts(wanted_.start);
    try {
      mode.make_raw();
      while (terminal_.runs() && !is_cut_) follow(mode);
    } catch (...) {
      mode.put_back();
      throw;
    }
    const auto deadline = Wall::now() + kToEnd;
    while (terminal_.runs() && Wall::now() < deadline) terminal_.watch_with({}, kLookAgain);
    const auto ending = terminal_.wait_for_exit(milliseconds{0});
    last_output_ = Clock::now();
    const View last = view();
    mode.put_back();
    if (ending) {
      wait_for_deeds();
      playwright_.ends(*ending, last);
      judge();
      playwright_.logs(new_entries());
    } else {
      playwright_.breaks_off();
    }
    keep_(playwright_.text());
    terminal_.end(milliseconds{0});
    return ending.has_value();
  }

 private:
  // What the command wrote comes first, then what others did: the author typed when they had seen both.
  void follow(const terminal::OwnMode &mode) {
    std::array<pollfd, 3> others{{{STDIN_FILENO, POLLIN, 0}, {deeds_.news(), POLLIN, 0}, {alarm_, POLLIN, 0}}};
    terminal_.watch_with(others, kLookAgain);
    follow_window();
    if (terminal_.take_stop()) stop_too(mode);
    if (others[1].revents != 0) take_deeds();
    if (others[2].revents != 0) return cut();
    if (others[0].revents != 0) take_keys();
  }

  void show(std::string_view bytes) {
    last_output_ = Clock::now();
    is_gone_ |= base::write_all(STDOUT_FILENO, bytes) != 0;
  }

  View view() const { return {terminal_.new_text(), between(last_step_, last_output_)}; }

  void was_recorded() {
    last_step_ = Clock::now();
    Playwright so_far = playwright_;
    so_far.breaks_off();
    keep_(so_far.text());
  }

  void take_keys() {
    std::array<char, 4096> bytes{};
    const auto length = read(STDIN_FILENO, bytes.data(), bytes.size());
    if (length < 0 && (errno == EINTR || errno == EAGAIN)) return;
    if (length <= 0 || is_gone_) return cut();
    const std::string_view keys(bytes.data(), static_cast<std::size_t>(length));
    const terminal::Mode mode = terminal_.mode();
    if (playwright_.types(keys, view(), {mode.lines, terminal_.maps_returns()})) terminal_.let_grow_old();
    terminal_.send_keys(keys);
    was_recorded();
  }

  void take_deeds() {
    for (const ToldDeed &deed : deeds_.take()) playwright_.does(deed, view());
    was_recorded();
  }

  void wait_for_deeds() {
    const auto deadline = Wall::now() + kToSettle;
    while (playwright_.awaits_deeds() && Wall::now() < deadline) {
      pollfd news{deeds_.news(), POLLIN, 0};
      if (poll(&news, 1, static_cast<int>(kLookAgain.count())) > 0) take_deeds();
    }
  }

  void follow_window() {
    const terminal::Size now = window();
    if (now.rows == size_.rows && now.columns == size_.columns) return;
    size_ = now;
    terminal_.resize(now);
    playwright_.resizes(now);
    was_recorded();
  }

  // As the command itself would under the author's shell. Where no shell waits for it, it goes on at once.
  void stop_too(const terminal::OwnMode &mode) {
    mode.put_back();
    raise(SIGTSTP);
    mode.make_raw();
    follow_window();
    terminal_.go_on();
    playwright_.goes_on();
    was_recorded();
  }

  void cut() {
    is_cut_ = true;
    playwright_.line_is_cut(view());
    terminal_.hang_up();
  }

  // What dies with the command dies a moment later.
  void judge() {
    const auto detached = detached_units(wanted_.box);
    const auto deadline = Wall::now() + kToSettle;
    auto left = play::leftovers(wanted_.box, terminal_, before_, detached);
    while (!left.empty() && Wall::now() < deadline) {
      terminal_.watch(milliseconds{20});
      left = play::leftovers(wanted_.box, terminal_, before_, detached);
    }
    if (left.empty()) return playwright_.is_in_order(detached);
    std::string remark = "Not all was in order then:";
    for (const std::string &sentence : left) remark += "\n- " + sentence;
    playwright_.remarks(remark);
  }

  Lines new_entries() const {
    Lines all = wanted_.log();
    all.erase(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(std::min(logged_, all.size())));
    return all;
  }

  const Wanted &wanted_;
  int alarm_;
  const std::function<void(const std::string &)> &keep_;
  Deeds deeds_;
  terminal::Size size_;
  terminal::Terminal terminal_;
  play::Before before_;
  std::size_t logged_;  // entries, before
  Playwright playwright_;
  Clock::time_point last_step_ = Clock::now(), last_output_ = last_step_;
  bool is_cut_ = false, is_gone_ = false;
};

}  // namespace

terminal::Size window() {
  constexpr int kLargest = 500;
  winsize size{};
  if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_row == 0 || size.ws_col == 0) return {};
  return {std::clamp<int>(size.ws_row, terminal::Size::kFewestRows, kLargest),
          std::clamp<int>(size.ws_col, terminal::Size::kFewestColumns, kLargest)};
}

bool record(const Wanted &wanted, int alarm, const std::function<void(const std::string &script)> &keep) {
  return Recording(wanted, alarm, keep).run();
}

}  // namespace recorder
