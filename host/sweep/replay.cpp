#include "host/sweep/replay.h"

#include <algorithm>
#include <csignal>
#include <iterator>
#include <sstream>
#include <utility>

#include "host/base/signal_name.h"
#include "host/box/confinement.h"
#include "host/box/inventory.h"
#include "host/play/script_writer.h"
#include "host/sweep/careful.h"
#include "host/sweep/command_watch.h"
#include "host/sweep/house.h"
#include "host/sweep/judge.h"
#include "host/sweep/sequel.h"
#include "host/sweep/steps.h"

namespace sweep {
namespace {

namespace fs = std::filesystem;
using play::Step;
using Sentences = std::vector<std::string>;

constexpr int kSignalsFrom = 128;

std::string in_one_line(const std::string &text) {
  std::string line;
  std::istringstream words(text);
  for (std::string word; words >> word;) line += (line.empty() ? "" : " ") + word;
  return line;
}

class Replay {
 public:
  Replay(const std::vector<Step> &steps, const Good &good, const std::vector<Deviation> &deviations,
         const ReplayRules &rules)
      : steps_(steps),
        good_(good),
        deviations_(deviations),
        rules_(rules),
        house_(rules),
        stage_(house_.stage()),
        watch_(stage_, rules) {}

  Course play() {
    Course course = play_otherwise();
    const auto points = box::points_of(house_.place());
    if (rules_.notes_sequel && course.happened && points) {
      course.sequel = sequel_.found(good_, deviations_.front(), *points);
    }
    return course;
  }

 private:
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

  // ---- steps

  // Nothing, or why it failed.
  std::optional<std::string> perform(const Step &step) {
    if (is_for_people(step)) return {};
    if (step.row->verb == "in_order" && is_order_known_) {
      keep_line(step);
      return {};
    }
    is_order_known_ = is_order_known_ && is_check(step);
    return attempt([&] { perform_and_note(stage_.with_taken(step)); });
  }

  void perform_and_note(const Step &step) {
    if (step.row->traits.starts_command) begin_command();
    if (step.row->verb == "type") watch_.note_typing();
    if (changes_units(step)) watch_.note_change();
    note_signals(written(step));
    note_hands(step);
    house_.perform(step);
    // Nobody knows which of what it said meanwhile it said before the change.
    if (changes_units(step)) watch_.note_change();
    keep_line(step);
    is_end_kept_ = is_end_kept_ || ends_command(step);
    if (step.row->traits.makes_box) set_points();
  }

  void note_hands(const Step &step) {
    if (!is_verb(step, {"hands"})) return;
    std::string script = step.words[0];
    std::ranges::replace(script, ';', ' ');
    std::istringstream words(script);
    for (std::string word, unit; words >> word;) {
      if (word == "insert" && words >> unit) course_.put_back.insert(unit);
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
    const auto points = box::points_of(house_.place());
    if (!points) return;
    for (const box::Deviation &at : points->deviations) {
      if (at.happened != 0 && at.turn.way == box::Way::kSignal) course_.signals.insert(at.turn.value);
    }
  }

  Words written(const Step &step) const { return words_of(step, rules_.findings); }

  void keep_line(const Step &step) { course_.played.push_back(play::written_step(written(step))); }

  bool perform_as_it_deviates(const Step &step) {
    const bool is_behind = rules_.notes_sequel && have_happened();
    for (const Deviation &deviation : deviations_) {
      if (deviation.point || deviation.step != at_) continue;
      if (rules_.notes_sequel) sequel_.begin_behind(box::points_of(house_.place()).value().order.size());
      has_met_.push_back(at_);
      course_.gave_up = course_.gave_up || deviation.row->is_choice;
      const bool is_as_awaited =
          std::ranges::all_of(deviation.instead, [&](const Words &words) { return try_step(step_of(words)); });
      if (deviation.row->is_choice) played_until_choice_ = course_.played.size();
      return is_as_awaited;
    }
    if (!try_step(step)) return false;
    if (is_behind) sequel_.note_step(at_);
    return true;
  }

  bool try_step(const Step &step) {
    const auto wrong = perform(step);
    if (!wrong) return true;
    failed_ = step.text + ": " + in_one_line(*wrong);
    course_.failed_line = play::written_step(written(step));
    return false;
  }

  void set_points() {
    if (rules_.notes_sequel) {
      box::order_points(house_.place());
    } else {
      box::count_points(house_.place());
    }
    set_deviations();
  }

  void set_deviations() {
    const auto place = house_.place();
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
      const bool is_last = &deviation == &deviations_.back();
      if (!is_at_answer || !is_last || is_giving_up(steps_[deviation.step])) continue;
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
    const auto points = box::points_of(house_.place());
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

  // The step with which the play begins: that which starts the first command that meets something else, where the box as this one found it
  // was kept.
  std::size_t begin_at_checkpoint() {
    const auto first = std::ranges::min_element(deviations_, {}, &Deviation::command);
    if (first == deviations_.end() || !rules_.checkpoints.has(first->command)) return 0;
    const std::size_t begin = good_.commands.at(first->command).start;
    for (std::size_t i = 0; i < begin; ++i) {
      const Step &step = steps_[i];
      if (is_for_people(step)) continue;
      if (step.row->traits.takes_terminal || step.row->verb == "patience") step.row->perform(stage_, step);
      keep_line(step);
      if (!step.row->traits.makes_box) continue;
      const auto ahead = rules_.checkpoints.restore(first->command, house_.place());
      house_.keeper().keep(house_.place().clock(), ahead);
      if (rules_.notes_sequel) box::resume_order(house_.place());
      set_deviations();
    }
    has_begun_ = true;
    command_ = first->command - 1;
    return begin;
  }

  // ---- commands

  void begin_command() {
    watch_.begin();
    if (has_begun_) ++command_;
    has_begun_ = true;
    is_end_kept_ = false;
    start_ = at_;
    course_.signals.clear();
    if (stage_.technicians.at_work().empty()) course_.put_back.clear();
  }

  CommandEnd end_of_command() { return watch_.end(start_, good_.commands.at(command_).left); }

  // A command that ended as the good play awaits has left, and logged, what it did there.
  bool is_as_good() {
    const CommandEnd &good = good_.commands.at(command_);
    course_.end = end_of_command();
    is_order_known_ = course_.end.left == good.left;
    return !leaves_more_than_good() && course_.end.logged == good.logged;
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
    if (end.typed_at > 0) watch_.note_lines(end.typed_at);
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
    if (is_killed() && was_to_be_killed()) return go_on_behind_kill();
    if (course_.failed_check.empty() && ending == terminal::Ending{false, 0}) check_as_good_play();
    return course_as_it_ends();
  }

  bool is_killed() const { return course_.end.ending == terminal::Ending{false, kSignalsFrom + SIGKILL}; }

  // With what can be told only then.
  Course course_as_it_ends() {
    note_signals_at_points();
    course_.typed_at = watch_.typed_at();
    course_.logged_at = watch_.logged_at();
    course_.columns = static_cast<std::size_t>(stage_.op().size().columns);
    course_.missing = missing_units();
    course_.switched = play::switched_in_hardware(house_.place());
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

  // The same command once more, given up at its first question, has to put all in order. One that is killed there, or meets the second
  // deviation and says why it cannot begin, is followed by another one.
  Course go_on_behind_kill() {
    course_.was_killed = true;
    const std::set<fs::path> files = stage_.op().before().files;
    std::size_t met = 0;
    do {
      met = count_happened();
      if (is_killed()) std::ranges::copy(course_.end.shown, std::back_inserter(course_.shown_by_killed));
      begin_again();
      note_files_left(files);
    } while (count_happened() > met && (is_killed() || could_not_begin()));
    course_.happened = have_happened();
    return course_as_it_ends();
  }

  bool could_not_begin() const {
    const auto &ending = course_.end.ending;
    const bool has_failed = ending && !ending->by_signal && ending->number > 0 && ending->number < kSignalsFrom;
    return has_failed && !course_.gave_up && leaves_more_than_good() && gives_reason(course_, good_);
  }

  // Those that the killed one made, too.
  void note_files_left(const std::set<fs::path> &before) {
    for (const fs::path &file : play::files_in_tmp(house_.place())) {
      if (before.contains(file)) continue;
      const std::string sentence = play::sentence_of(file);
      if (std::ranges::find(course_.end.left, sentence) == course_.end.left.end()) course_.end.left.push_back(sentence);
    }
  }

  bool leaves_more_than_good() const { return !is_part_of(course_.end.left, good_.commands.at(command_).left); }

  void begin_again() {
    const Step &start = steps_[start_];
    watch_.begin_again();
    start.row->perform(stage_, stage_.with_taken(start));
    keep_line(start);
    is_end_kept_ = false;
    course_.gave_up = false;
    follow(bring_to_end(stage_.op(), rules_.limit));
    course_.end = end_of_command();
    if (course_.end.ending) keep_ending(*course_.end.ending);
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
    const auto place = house_.place();
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
  const Good &good_;
  const std::vector<Deviation> &deviations_;
  const ReplayRules &rules_;
  House house_;
  play::Stage &stage_;
  CommandWatch watch_;
  Sequel sequel_;

  std::size_t at_ = 0, start_ = 0, command_ = 0;
  bool has_begun_ = false;
  bool is_end_kept_ = false;  // The lines that were played have the end of the command.
  bool is_order_known_ =
      false;  // What the command left is what the good play leaves, and nobody has done anything since.
  std::vector<std::size_t> has_met_;
  std::size_t played_until_choice_ = 0;  // lines
  std::string failed_;
  Course course_;
};

}  // namespace

Course replay(const std::vector<Step> &steps, const Good &good, const std::vector<Deviation> &deviations,
              const ReplayRules &rules) {
  if (number_of_script(steps) != good.script) throw script::Error("the play has changed since the sweep began");
  return Replay(steps, good, deviations, rules).play();
}

}  // namespace sweep
