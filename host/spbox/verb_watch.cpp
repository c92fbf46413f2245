// The server of a box as a picture that lives, or printed once.
#include <poll.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <memory>
#include <optional>

#include "host/box/contents.h"
#include "host/box/pulse.h"
#include "host/play/interrupts.h"
#include "host/spbox/picture_lines.h"
#include "host/spbox/standard_output.h"
#include "host/spbox/verbs.h"
#include "host/spbox/watch_eyes.h"
#include "host/spbox/watch_hands.h"
#include "host/watch/desk.h"
#include "host/watch/glass.h"

namespace spbox {
namespace {

using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

struct WatchOptions {
  std::filesystem::path box;
  bool once = false;
};

// Nobody looks at it through a window.
int print_picture(const box::Place &place) {
  constexpr std::size_t kLines = 8;
  watch::Scene scene;
  const std::string unread = look_at(place, {}, kLines, scene);
  if (!scene.trouble.empty()) throw box::BoxError(scene.trouble);
  scene.at_work = at_work_in(place);
  for (const std::string &line : picture_lines(scene, place.root().string())) print_line(line);
  if (!unread.empty()) throw box::BoxError(unread);
  return 0;
}

// A process that is forked meanwhile does nothing to the terminal.
class SignalsWait {
 public:
  SignalsWait() {
    sigset_t all;
    sigemptyset(&all);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGTSTP, SIGWINCH}) sigaddset(&all, signal);
    sigprocmask(SIG_BLOCK, &all, &before_);
  }
  ~SignalsWait() { sigprocmask(SIG_SETMASK, &before_, nullptr); }
  SignalsWait(const SignalsWait &) = delete;
  SignalsWait &operator=(const SignalsWait &) = delete;

 private:
  sigset_t before_{};
};

class Watching {
 public:
  Watching(const box::Place &place, const play::Interrupts &interrupts)
      : place_(place),
        interrupts_(interrupts),
        letters_(letters_of_locale()),
        pulse_(place),
        desk_(place.root().string()) {}

  void check_size() const {
    if (has_room()) return;
    throw std::runtime_error("the terminal has " + size_text() + ". Make it larger; --once prints a picture.");
  }
  void go_on_to_the_end();

 private:
  static constexpr milliseconds kLook{50};  // so often: what changes is shown within a tenth of a second
  static_assert(kLook < milliseconds{100});
  static constexpr milliseconds kPeople{1000};    // while somebody is at work
  static constexpr milliseconds kHalfBlink{500};  // how long a LED that blinks shines
  static constexpr std::size_t kLines = 100;

  bool has_room() const { return glass_.rows() >= watch::kLeastRows && glass_.columns() >= watch::kLeastColumns; }
  std::string size_text() const {
    return std::to_string(glass_.rows()) + " rows and " + std::to_string(glass_.columns()) +
           " columns, and the picture needs " + std::to_string(watch::kLeastRows) + " and " +
           std::to_string(watch::kLeastColumns);
  }
  bool is_interrupted() const { return interrupts_.signal() != 0; }
  bool look();
  bool let_blink();
  bool take_keys();
  void show();

  box::Place place_;
  const play::Interrupts &interrupts_;
  watch::Letters letters_;
  watch::Glass glass_;
  box::Pulse pulse_;
  watch::Desk desk_;
  watch::Scene scene_;
  std::optional<watch::Picture> picture_;
  Clock::time_point people_at_{};
};

// Each of these says whether there is something new to show.
bool Watching::look() {
  const box::Pulse::Beat beat = pulse_.feel();
  const bool asks_for_people = !scene_.at_work.empty() && Clock::now() - people_at_ >= kPeople;
  if (!beat.any() && !asks_for_people) return false;
  const SignalsWait wait;
  const Parts parts{.server = beat.server, .trace = beat.trace, .log = beat.log};
  if (parts.any()) look_at(place_, parts, kLines, scene_);
  std::vector<std::string> at_work = at_work_in(place_);
  people_at_ = Clock::now();
  const bool is_new = beat.any() || at_work != scene_.at_work;
  scene_.at_work = std::move(at_work);
  return is_new;
}

bool Watching::let_blink() {
  const bool is_lit = Clock::now().time_since_epoch() / kHalfBlink % 2 == 0;
  if (is_lit == desk_.view().is_lit) return false;
  desk_.set_lit(is_lit);
  return std::ranges::any_of(scene_.server.units,
                             [](const watch::Unit &unit) { return unit.led == watch::Led::kBlinks; });
}

bool Watching::take_keys() {
  bool is_any = false;
  for (auto input = glass_.next(); input; input = glass_.next()) {
    is_any = true;
    if (!picture_) {
      desk_.press_without_picture(input->key);
      if (desk_.is_over()) return false;
      continue;
    }
    const auto hand = input->is_click   ? desk_.click(input->row, input->column, scene_, *picture_)
                      : input->key != 0 ? desk_.press(input->key, scene_, *picture_)
                                        : std::nullopt;
    if (desk_.is_over()) return false;
    if (hand) {
      const SignalsWait wait;
      desk_.say(let_hands(place_, *hand));
      look();
    }
    show();  // the next key is meant for what is on the screen then
  }
  return is_any;
}

void Watching::show() {
  if (!has_room()) {
    picture_.reset();
    return glass_.say(("There are " + size_text() + ". q: quit").c_str());
  }
  picture_ = watch::draw(scene_, desk_.view(), glass_.rows(), glass_.columns(), letters_);
  glass_.show(picture_->canvas);
}

void Watching::go_on_to_the_end() {
  bool is_new = true;
  while (!desk_.is_over() && !is_interrupted()) {
    is_new = look() || is_new;
    is_new = let_blink() || is_new;
    if (is_new) show();
    pollfd keys{.fd = STDIN_FILENO, .events = POLLIN, .revents = 0};
    const int ready = poll(&keys, 1, static_cast<int>(kLook.count()));
    if (ready > 0 && (keys.revents & (POLLHUP | POLLERR | POLLNVAL)) != 0 && !is_interrupted()) {
      throw std::runtime_error("the terminal is gone.");
    }
    is_new = take_keys();
  }
}

int watch_box(const WatchOptions &options) {
  const box::Place place(options.box);
  box::check_is_box(place);
  if (options.once) return print_picture(place);
  const play::Interrupts interrupts;
  {
    Watching watching(place, interrupts);
    watching.check_size();
    watching.go_on_to_the_end();
  }
  return interrupts.signal() == 0 ? 0 : interrupts.die();  // The terminal has been given back.
}

}  // namespace

Verb watch_verb() {
  auto options = std::make_shared<WatchOptions>();
  return {
      .name = "watch",
      .line = "Show the server as a picture that lives, and work on it",
      .works_on_box = true,
      .words = {box_word(options->box), {.name = "--once", .help = "Print one picture, and end", .to = &options->once}},
      .footer =
          "The picture has the whole terminal, 24 rows and 80 columns at least, and follows\n"
          "what happens in the box. Its last lines name the keys; the mouse works, too.\n"
          "A play and a pipe need --once.\n\n"
          "Examples:\n"
          "  spbox watch box\n"
          "  spbox watch box --once",
      .act = [options] { return watch_box(*options); },
      .acts_confined = false};
}

}  // namespace spbox
