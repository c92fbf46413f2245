#include "host/sweep/command_watch.h"

#include <algorithm>
#include <stdexcept>
#include <system_error>

#include "host/base/told.h"
#include "host/sweep/careful.h"
#include "host/sweep/house.h"

namespace sweep {
namespace {

namespace fs = std::filesystem;
using Sentences = std::vector<std::string>;

template <typename List>
List behind(const List &all, std::size_t before) {
  return {all.begin() + static_cast<std::ptrdiff_t>(std::min(before, all.size())), all.end()};
}

std::string sentence_of_empty(const fs::path &name) {
  const fs::path path = "/tmp" / (name.has_filename() ? name : name.parent_path());
  return (name.has_filename() ? "the empty file " : "the empty folder ") + path.string() + " is left";
}

}  // namespace

void CommandWatch::begin() {
  const box::Place &place = stage_.box.place();
  hardware_before_ = play::switched_in_hardware(place);
  empty_before_ = play::empty_in_tmp(place);
  log_before_ = logged().size();
  begin_again();
}

void CommandWatch::begin_again() {
  auto &op = stage_.op();
  const bool is_same_terminal = op.has_terminal() && !op.terminal().hung_up();
  shown_before_ = is_same_terminal ? lines_in(op.terminal().everything_shown()) : 0;
  typed_at_ = shown_before_;
}

void CommandWatch::note_typing() {
  if (stage_.op().has_terminal()) typed_at_ = lines_in(stage_.op().terminal().everything_shown());
}

void CommandWatch::note_change() {
  if (!stage_.op().has_terminal()) return;
  note_typing();
  logged_at_ = logged().size();
}

CommandEnd CommandWatch::end(std::size_t start, const Sentences &expected) {
  CommandEnd end;
  auto &terminal = stage_.op().terminal();
  end.start = start;
  if (!terminal.runs()) end.ending = terminal.wait_for_exit(std::chrono::milliseconds{0});
  auto shown = terminal.everything_shown();
  shown.resize(lines_in(shown));
  end.shown = behind(shown, shown_before_);
  end.left = left(expected);
  end.logged = behind(logged(), log_before_);
  return end;
}

Sentences CommandWatch::logged() {
  std::error_code error;
  const auto size = fs::file_size(stage_.box.place().events(), error);
  if (error || size == 0) return {};
  if (size == log_size_) return log_;
  log_size_ = size;
  try {
    log_ = rules_.log(stage_.box.place());
  } catch (const std::runtime_error &wrong) {  // The command may have broken it.
    log_ = {"the log cannot be read: " + base::told(wrong)};
  }
  return log_;
}

Sentences CommandWatch::left(const Sentences &expected) {
  auto &op = stage_.op();
  play::Before before = op.before();
  before.hardware = hardware_before_;
  for (const auto &technician : stage_.technicians.at_work()) before.processes.insert(technician.work.pid());
  const auto deadline = box_time::Clock::now() + kDyingTime;
  for (;;) {
    auto found = leftovers(before);
    const bool is_dying = std::ranges::any_of(found, [](const auto &line) { return line.ends_with(" still runs"); });
    if (!is_dying || is_part_of(found, expected) || box_time::Clock::now() >= deadline) return found;
    op.watch(10 * play::kLookAgain);
  }
}

Sentences CommandWatch::leftovers(const play::Before &before) const {
  auto found = play::leftovers(stage_.box.place(), stage_.op().terminal(), before, {});
  for (const fs::path &name : play::empty_in_tmp(stage_.box.place())) {
    if (!empty_before_.contains(name)) found.push_back(sentence_of_empty(name));
  }
  return found;
}

bool is_part_of(const Sentences &some, const Sentences &all) {
  return std::ranges::all_of(some, [&](const auto &one) { return std::ranges::find(all, one) != all.end(); });
}

}  // namespace sweep
