#include "host/sweep/replay.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdlib>
#include <sstream>

#include "host/base/signal_name.h"
#include "host/base/told.h"
#include "host/box/confinement.h"
#include "host/box/inventory.h"
#include "host/clock/hours.h"
#include "host/clock/keeper.h"
#include "host/include/lmainte_host.h"
#include "host/play/script_writer.h"
#include "host/play/stage.h"
#include "host/sweep/careful.h"
#include "host/technician/changes.h"

namespace sweep {
namespace {

namespace fs = std::filesystem;
using play::Step;
using std::chrono::milliseconds;
using Sentences = std::vector<std::string>;

constexpr milliseconds kDyingTime{2000};  // What dies with a command dies a moment later.
constexpr int kSignalsFrom = 128;

bool is_verb(const Step &step, std::initializer_list<std::string_view> verbs) {
  return std::ranges::find(verbs, step.row->verb) != verbs.end();
}

bool ends_command(const Step &step) {
  return is_verb(step, {"exit", "dies"});
}

// A check, or what a check needs: behind the end of a command it changes nothing.
bool is_check(const Step &step) {
  if (is_verb(step, {"in_order", "says", "takesaid", "absent", "patience", "pause"})) return true;
  constexpr std::array<std::string_view, 4> kLooks{"units", "show", "log", "trace"};
  return step.row->verb == "spbox" && std::ranges::find(kLooks, step.words[0]) != kLooks.end();
}

// As the good play has it, too.
bool gives_up(const Step &answer) {
  constexpr std::array<std::string_view, 4> kKeys{"q", "q\n", "\003", "\004"};
  return std::ranges::find(kKeys, answer.words[0]) != kKeys.end();
}

// From here on, what was said and logged before may not be so any more.
bool changes_units(const Step &step) {
  const auto &rows = technician::kChanges;
  return step.row->verb == "spbox" &&
         std::ranges::any_of(rows, [&](const auto &row) { return row.verb == step.words[0]; });
}

// A step that only people need.
bool is_for_people(const Step &step) {
  return is_verb(step, {"screen", "say"});
}

std::string from(const fs::path &folder, const fs::path &file) {
  const fs::path path =
      fs::absolute(file).lexically_normal().lexically_relative(fs::absolute(folder).lexically_normal());
  return path.has_parent_path() ? path.string() : "./" + path.string();
}

// As a play in this folder writes it.
Words words_of(const Step &step, const fs::path &folder) {
  Words words = step.words;
  if (step.row->traits.starts_command) {
    std::error_code error;
    const fs::path beside = step.folder / words[0];
    const bool is_path = words[0].find('/') != std::string::npos && fs::path(words[0]).is_relative();
    if (is_path && fs::is_regular_file(beside, error)) words[0] = from(folder, beside);
  }
  if (step.row->traits.makes_box && words.size() > 1) words[1] = from(folder, step.folder / words[1]);
  words.insert(words.begin(), std::string(step.row->verb));
  return words;
}

std::string in_one_line(const std::string &text) {
  std::string line;
  std::istringstream words(text);
  for (std::string word; words >> word;) line += (line.empty() ? "" : " ") + word;
  return line;
}

bool is_part_of(const Sentences &some, const Sentences &all) {
  return std::ranges::all_of(some, [&](const auto &one) { return std::ranges::find(all, one) != all.end(); });
}

// All that a play needs, and that goes with it.
struct House {
  House(const ReplayRules &rules)
      : keeper(rules.speed),
        transcript(out),
        narrator(transcript, picture),
        box(rules.spbox, {}, rules.alarm, rules.options),
        stage(box, narrator, rules.alarm) {}

  std::ostringstream out;
  box_time::Keeper keeper;
  play::Transcript transcript;
  play::Picture picture;
  play::Narrator narrator;
  play::Box box;
  play::Stage stage;
};

class Replay {
 public:
  Replay(const std::vector<Step> &steps, const Good *good, const std::vector<Deviation> &deviations,
         const ReplayRules &rules)
      : steps_(steps), good_(good), deviations_(deviations), rules_(rules), house_(rules), stage_(house_.stage) {
    // NOLINTNEXTLINE(concurrency-mt-unsafe): there is one thread
    setenv(LMAINTE_HOST_RUN, "", 1);
  }

  Good play_well() {
    for (at_ = 0; at_ < steps_.size(); ++at_) {
      if (is_checkpoint()) {
        rules_.checkpoints.keep(found_.commands.size(), {house_.box.place(), house_.keeper.ahead()});
      }
      if (steps_[at_].row->traits.starts_command) check_command_has_ended();
      if (const auto wrong = perform(steps_[at_])) throw steps_[at_].error(*wrong);
      if (!ends_command(steps_[at_])) continue;
      found_.commands.push_back(end_of_command());
      count_points();
    }
    check_command_has_ended();
    play::wait_for_technicians(stage_);
    return std::move(found_);
  }

  Course play_otherwise() {
    for (at_ = begin_at_checkpoint(); at_ < steps_.size(); ++at_) {
      const Step &step = steps_[at_];
      if (step.row->traits.starts_command && has_begun_ && have_happened()) break;
      if (!perform_as_it_deviates(step)) return leave_way();
      if (ends_command(step) && !is_as_good()) return tell_of_end();
    }
    course_.happened = have_happened();
    course_.is_good = true;
    judge_choice();
    return std::move(course_);
  }

 private:
  // ---- steps

  // Nothing, or why it failed.
  std::optional<std::string> perform(const Step &step) {
    if (is_for_people(step)) return {};
    if (step.row->verb == "in_order" && is_order_known_) {
      keep_line(step);
      return {};
    }
    is_order_known_ = is_order_known_ && is_check(step);
    const milliseconds patience = stage_.patience;
    try {
      const Step &with_taken = stage_.with_taken(step);
      if (step.row->traits.starts_command) begin_command();
      if (step.row->verb == "in_order") stage_.patience = std::min(patience, kDyingTime);
      if (step.row->verb == "type" || changes_units(step)) remember_what_was_said(step);
      note_signals(written(with_taken));
      step.row->perform(stage_, with_taken);
      // Nobody knows which of what it said meanwhile it said before the change.
      if (changes_units(step)) remember_what_was_said(step);
      if (step.row->verb == "in_order") stage_.patience = patience;
      keep_line(with_taken);
      is_end_kept_ = is_end_kept_ || ends_command(step);
      if (step.row->traits.makes_box) set_points();
      return {};
    } catch (const terminal::Interrupted &) {
      throw;
    } catch (const std::exception &wrong) {
      stage_.patience = patience;
      return base::told(wrong);
    }
  }

  // Those that a step sends, or that a key may send.
  void note_signals(const Words &step) {
    if (step[0] == "signal") course_.signals.insert(base::signal_number(step[1]));
    if (step[0] == "hangup") course_.signals.insert(SIGHUP);
    if (step[0] == "type" && step[1].find('\003') != std::string::npos) course_.signals.insert(SIGINT);
    if (step[0] == "type" && step[1].find('\034') != std::string::npos) course_.signals.insert(SIGQUIT);
  }

  void note_signals_at_points() {
    const auto points = box::points_of(house_.box.place());
    if (!points) return;
    for (const box::Deviation &at : points->deviations) {
      if (at.happened != 0 && at.turn.way == box::Way::kSignal) course_.signals.insert(at.turn.value);
    }
  }

  void remember_what_was_said(const Step &step) {
    if (!stage_.op().has_terminal()) return;
    typed_at_ = lines_in(stage_.op().terminal().everything_shown());
    if (changes_units(step)) logged_at_ = logged().size();
  }

  Words written(const Step &step) const { return words_of(step, rules_.findings); }

  void keep_line(const Step &step) { course_.played.push_back(play::written_step(written(step))); }

  bool perform_as_it_deviates(const Step &step) {
    for (const Deviation &deviation : deviations_) {
      if (deviation.point || deviation.step != at_) continue;
      has_met_.push_back(at_);
      course_.gave_up = course_.gave_up || deviation.row->is_choice;
      const bool is_as_awaited =
          std::ranges::all_of(deviation.instead, [&](const Words &words) { return try_step(step_of(words)); });
      if (deviation.row->is_choice) played_until_choice_ = course_.played.size();
      return is_as_awaited;
    }
    return try_step(step);
  }

  bool try_step(const Step &step) {
    const auto wrong = perform(step);
    if (!wrong) return true;
    failed_ = step.text + ": " + in_one_line(*wrong);
    course_.failed_line = play::written_step(written(step));
    return false;
  }

  void set_points() {
    const auto place = house_.box.place();
    if (good_ == nullptr) return box::order_points(place);
    box::count_points(place);
    set_deviations();
  }

  void set_deviations() {
    const auto place = house_.box.place();
    for (const Deviation &deviation : deviations_) {
      if (!deviation.point) continue;
      box::deviate(place, *deviation.point);
      const auto lines = lines_of(deviation);
      course_.played.insert(course_.played.end(), lines.begin(), lines.end());
    }
  }

  // Who gives up at a question is heard: the good play's next text does not come.
  void judge_choice() {
    for (const Deviation &deviation : deviations_) {
      const bool is_at_answer = !deviation.point && deviation.row->is_choice;
      if (!is_at_answer || deviations_.size() > 1 || gives_up(steps_[deviation.step])) continue;
      const auto next = std::find_if(steps_.begin() + static_cast<std::ptrdiff_t>(deviation.step), steps_.end(),
                                     [](const Step &step) { return is_verb(step, {"wait"}); });
      if (next == steps_.end() || next->words.size() != 1) continue;
      course_.was_unheard = true;
      course_.next_text = next->words[0];
      course_.played.resize(played_until_choice_);
    }
  }

  // How many of the deviations.
  std::size_t count_happened() const {
    const auto points = box::points_of(house_.box.place());
    std::ptrdiff_t count = 0;
    if (points) {
      count += std::ranges::count_if(points->deviations, [](const auto &at) { return at.happened != 0; });
    }
    count += std::ranges::count_if(deviations_, [&](const Deviation &deviation) {
      return !deviation.point && std::ranges::find(has_met_, deviation.step) != has_met_.end();
    });
    return static_cast<std::size_t>(count);
  }
  bool have_happened() const { return count_happened() == deviations_.size(); }

  void check_command_has_ended() const {
    if (!has_begun_ || found_.commands.size() == command_ + 1) return;
    throw steps_[start_].error("a sweep has to know how this command ends: write `exit` or `dies` behind it");
  }

  // ---- checkpoints

  // Whether all that the steps until now have done is in the box, and a command begins.
  bool is_checkpoint() {
    if (!steps_[at_].row->traits.starts_command || found_.commands.empty()) return false;
    const bool is_quiet = stage_.technicians.at_work().empty() && play::processes_of(house_.box.place()).empty();
    if (!is_quiet || needs_what_was_said()) return false;
    const auto is_not_in_box = [](const Step &step) { return step.slot >= 0 || is_verb(step, {"resize"}); };
    return std::none_of(steps_.begin(), steps_.begin() + static_cast<std::ptrdiff_t>(at_), is_not_in_box);
  }

  bool needs_what_was_said() const {
    for (std::size_t i = at_; i < steps_.size(); ++i) {
      if (steps_[i].row->traits.names_verb) return false;
      if (steps_[i].row->traits.needs_said) return true;
    }
    return false;
  }

  // The step with which the play begins.
  std::size_t begin_at_checkpoint() {
    const auto first = std::ranges::min_element(deviations_, {}, &Deviation::command);
    if (first == deviations_.end() || !rules_.checkpoints.has(first->command)) return 0;
    const std::size_t begin = good_->commands.at(first->command).start;
    for (std::size_t i = 0; i < begin; ++i) {
      const Step &step = steps_[i];
      if (is_for_people(step)) continue;
      if (step.row->traits.takes_terminal || step.row->verb == "patience") step.row->perform(stage_, step);
      keep_line(step);
      if (!step.row->traits.makes_box) continue;
      const auto ahead = rules_.checkpoints.restore(first->command, house_.box.place());
      house_.keeper.keep(house_.box.place().clock(), ahead);
      set_deviations();
    }
    has_begun_ = true;
    command_ = first->command - 1;
    return begin;
  }

  // ---- commands

  void begin_command() {
    auto &op = stage_.op();
    const auto place = house_.box.place();
    hardware_before_ = play::switched_in_hardware(place);
    empty_before_ = play::empty_in_tmp(place);
    log_before_ = logged().size();
    const bool is_same_terminal = op.has_terminal() && !op.terminal().hung_up();
    shown_before_ = is_same_terminal ? lines_in(op.terminal().everything_shown()) : 0;
    typed_at_ = shown_before_;
    if (has_begun_) ++command_;
    has_begun_ = true;
    is_end_kept_ = false;
    start_ = at_;
    course_.signals.clear();
  }

  Sentences logged() {
    std::error_code error;
    const auto size = fs::file_size(house_.box.place().events(), error);
    if (error || size == 0) return {};
    if (size == log_size_) return log_;
    log_size_ = size;
    try {
      log_ = rules_.log(house_.box.place());
    } catch (const std::runtime_error &wrong) {  // The command may have broken it.
      log_ = {"the log cannot be read: " + base::told(wrong)};
    }
    return log_;
  }

  Sentences left() {
    auto &op = stage_.op();
    play::Before before = op.before();
    before.hardware = hardware_before_;
    for (const auto &technician : stage_.technicians.at_work()) before.processes.insert(technician.work.pid());
    const Sentences expected = good_ == nullptr ? Sentences{} : good_->commands.at(command_).left;
    const auto deadline = box_time::Clock::now() + kDyingTime;
    for (;;) {
      auto found = play::leftovers(house_.box.place(), op.terminal(), before, {});
      for (const fs::path &name : play::empty_in_tmp(house_.box.place())) {
        if (empty_before_.contains(name)) continue;
        const fs::path path = "/tmp" / (name.has_filename() ? name : name.parent_path());
        found.push_back((name.has_filename() ? "the empty file " : "the empty folder ") + path.string() + " is left");
      }
      const bool is_dying = std::ranges::any_of(found, [](const auto &line) { return line.ends_with(" still runs"); });
      if (!is_dying || is_part_of(found, expected) || box_time::Clock::now() >= deadline) return found;
      op.watch(10 * play::kLookAgain);
    }
  }

  CommandEnd end_of_command() {
    CommandEnd end;
    auto &terminal = stage_.op().terminal();
    end.start = start_;
    if (!terminal.runs()) end.ending = terminal.wait_for_exit(milliseconds{0});
    auto shown = terminal.everything_shown();
    shown.resize(lines_in(shown));
    const auto before = std::min(shown_before_, shown.size());
    end.shown.assign(shown.begin() + static_cast<std::ptrdiff_t>(before), shown.end());
    end.left = left();
    const Sentences log = logged();
    end.logged.assign(log.begin() + static_cast<std::ptrdiff_t>(std::min(log_before_, log.size())), log.end());
    return end;
  }

  void count_points() {
    const auto points = box::points_of(house_.box.place());
    if (!points) throw script::Error("the play forgets its points, or sets deviations of its own: it cannot be swept");
    if (points->lost > 0) throw script::Error("the play has more kinds of points than can be counted");
    if (points->order.size() == box::kLongestOrder) throw script::Error("the play has more points than can be ordered");
    for (const box::PointCount &count : points->counts) {
      std::uint32_t last = 0;
      for (const PointRange &known : found_.points) {
        if (known.kind == count.kind && known.name == count.name) last = known.last;
      }
      if (count.count > last) found_.points.push_back({count.kind, count.name, last + 1, count.count, command_});
    }
    for (std::size_t i = found_.order.size(); i < points->order.size(); ++i) {
      const box::PointCount &at = points->counts.at(points->order[i]);
      found_.order.push_back({at.kind, at.name, command_});
    }
  }

  // A command that ended as the good play awaits has left, and logged, what it did there.
  bool is_as_good() {
    const CommandEnd &good = good_->commands.at(command_);
    course_.end = end_of_command();
    is_order_known_ = course_.end.left == good.left;
    return is_part_of(course_.end.left, good.left) && course_.end.logged == good.logged;
  }

  // ---- another way

  Course leave_way() {
    auto &op = stage_.op();
    if (!has_begun_) throw std::runtime_error(failed_);
    if (op.terminal().runs()) {
      course_.line_cut = op.terminal().hung_up();
      follow(bring_to_end(op, rules_.limit));
    } else if (is_end_kept_) {
      course_.failed_check = failed_;
    }
    course_.line_cut = op.terminal().hung_up();
    course_.end = end_of_command();
    return tell_of_end();
  }

  void follow(const CarefulEnd &end) {
    course_.gave_up = course_.gave_up || end.gave_up;
    if (end.typed_at > 0) typed_at_ = end.typed_at;
    course_.played.emplace_back("patience 3600");
    for (const Words &words : end.steps) {
      note_signals(words);
      course_.played.push_back(play::written_step(words));
    }
  }

  Course tell_of_end() {
    for (const Deviation &deviation : deviations_) course_.gave_up |= deviation.point && deviation.row->is_choice;
    const std::size_t happened = count_happened();
    course_.happened = happened == deviations_.size();
    if (happened == 0) {
      course_.left_early = failed_.empty() ? "its command left or logged something else" : failed_;
      return std::move(course_);
    }
    course_.command = command_;
    const auto &ending = course_.end.ending;
    if (ending && !is_end_kept_) keep_ending(*ending);
    const bool was_killed = ending && *ending == terminal::Ending{false, kSignalsFrom + SIGKILL};
    if (was_killed && was_to_be_killed()) return go_on_behind_kill();
    if (course_.failed_check.empty() && ending == terminal::Ending{false, 0}) check_as_good_play();
    return course_as_it_ends();
  }

  // With what can be told only then.
  Course course_as_it_ends() {
    note_signals_at_points();
    course_.typed_at = typed_at_ - std::min(typed_at_, shown_before_);
    course_.logged_at = logged_at_ - std::min(logged_at_, log_before_);
    course_.columns = static_cast<std::size_t>(stage_.op().size().columns);
    course_.missing = missing_units();
    course_.switched = play::switched_in_hardware(house_.box.place());
    return std::move(course_);
  }

  void keep_ending(const terminal::Ending &ending) {
    is_end_kept_ = true;
    course_.played.push_back(play::written_step(play::step_of(ending)));
  }

  bool was_to_be_killed() const {
    return std::ranges::any_of(deviations_, [](const Deviation &deviation) {
      const bool is_at_point = deviation.point && deviation.point->turn.way == box::Way::kSignal;
      return (is_at_point && deviation.point->turn.value == SIGKILL) || deviation.row->word == "KILL";
    });
  }

  // The same command once more, given up at its first question, has to put all in order.
  Course go_on_behind_kill() {
    course_.was_killed = true;
    course_.shown_by_killed = course_.end.shown;
    const Step &start = steps_[start_];
    auto &op = stage_.op();
    const std::set<fs::path> files = op.before().files;
    shown_before_ = lines_in(op.terminal().everything_shown());
    typed_at_ = shown_before_;
    start.row->perform(stage_, stage_.with_taken(start));
    keep_line(start);
    is_end_kept_ = false;
    course_.gave_up = false;
    follow(bring_to_end(op, rules_.limit));
    course_.end = end_of_command();
    if (course_.end.ending) keep_ending(*course_.end.ending);
    for (const fs::path &file : play::files_in_tmp(house_.box.place())) {
      if (files.contains(file)) continue;
      const std::string sentence = play::sentence_of(file);
      if (std::ranges::find(course_.end.left, sentence) == course_.end.left.end()) course_.end.left.push_back(sentence);
    }
    return course_as_it_ends();
  }

  // It says that it has done what the good play wants: then the good play's checks hold, up to where somebody does something.
  void check_as_good_play() {
    bool is_behind_end = false;
    for (std::size_t i = start_ + 1; i < steps_.size() && !steps_[i].row->traits.starts_command; ++i) {
      if (is_behind_end && is_verb(steps_[i], {"wait"})) continue;  // for a text of the good play's way
      if (is_behind_end && !is_check(steps_[i]) && !is_for_people(steps_[i])) return;
      if (is_behind_end && !try_step(steps_[i])) {
        course_.failed_check = failed_;
        return;
      }
      is_behind_end = is_behind_end || ends_command(steps_[i]);
    }
  }

  Sentences missing_units() const {
    const auto place = house_.box.place();
    std::istringstream lines(box::in_confinement(place, [&] {
      std::string names;
      for (const box::Unit &unit : box::Inventory(place).units()) {
        if (unit.unreadable.empty() && !unit.installed()) names += unit.place.name + '\0';
      }
      return names;
    }));
    Sentences names;
    for (std::string name; std::getline(lines, name, '\0');) names.push_back(name);
    return names;
  }

  const std::vector<Step> &steps_;
  const Good *good_;
  const std::vector<Deviation> &deviations_;
  const ReplayRules &rules_;
  House house_;
  play::Stage &stage_;

  std::size_t at_ = 0, start_ = 0, command_ = 0;
  bool has_begun_ = false;
  bool is_end_kept_ = false;  // The lines that were played have the end of the command.
  bool is_order_known_ =
      false;  // What the command left is what the good play leaves, and nobody has done anything since.
  std::vector<std::size_t> has_met_;
  std::size_t played_until_choice_ = 0;  // lines
  std::string failed_;
  Sentences hardware_before_, log_;
  std::set<fs::path> empty_before_;  // files and folders
  std::size_t log_before_ = 0, logged_at_ = 0, shown_before_ = 0, typed_at_ = 0;
  std::uintmax_t log_size_ = 0;
  Good found_;
  Course course_;
};

// FNV-1a over what stands in the scripts, and where.
std::uint64_t number_of_script(const std::vector<Step> &steps) {
  std::uint64_t number = 14695981039346656037U;
  for (const Step &step : steps) {
    for (const char byte : step.place + '\n' + play::written_step(words_of(step, {})) + '\n') {
      number = (number ^ static_cast<unsigned char>(byte)) * 1099511628211U;
    }
  }
  return number;
}

}  // namespace

Good play_well(const std::vector<Step> &steps, const ReplayRules &rules) {
  Good good = Replay(steps, nullptr, {}, rules).play_well();
  good.script = number_of_script(steps);
  return good;
}

Course replay(const std::vector<Step> &steps, const Good &good, const std::vector<Deviation> &deviations,
              const ReplayRules &rules) {
  if (number_of_script(steps) != good.script) throw script::Error("the play has changed since the sweep began");
  return Replay(steps, &good, deviations, rules).play_otherwise();
}

}  // namespace sweep
