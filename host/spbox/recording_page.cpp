#include "host/spbox/recording_page.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <sstream>
#include <utility>

#include "host/box/event_log.h"
#include "host/spbox/log_book.h"
#include "host/spbox/recording_server.h"

namespace spbox {
namespace {

using box::CallEntry;
using box::CallKind;
using trace_book::Moment;
using trace_book::Told;

// What somebody does, or what is done to the world; what is between two of these stands in the trace.
bool is_step(CallKind kind) {
  constexpr std::array<CallKind, 8> kSteps{CallKind::kBegin,      CallKind::kEnd,      CallKind::kProgram,
                                           CallKind::kProgramEnd, CallKind::kQuestion, CallKind::kAnswer,
                                           CallKind::kWrite,      CallKind::kLog};
  return std::ranges::find(kSteps, kind) != kSteps.end();
}

// A longer row is no question that a terminal shows.
constexpr std::size_t kMostColumns = 1000;

class Page {
 public:
  Page(const recording::Recording &recording, const recording::AsRings &rings, const std::string &name)
      : rings_(rings), model_(recording.model), server_(recording) {
    play.what = "recording";
    play.done = "Recorded";
    play.name = name;
  }

  bool is_step(const Told &line) const {
    return !line.moment->is_of_library && spbox::is_step(rings_.calls.at(line.moment->number).kind);
  }

  void take(const Told &line) {
    const Moment &moment = *line.moment;
    if (play.trace.empty()) begin_ns_ = moment.time_ns;
    play.trace.push_back({trace_book::line_since(begin_ns_, line), moment.is_error});
    if (moment.is_of_library) return;
    const CallEntry &call = rings_.calls.at(moment.number);
    show(call);
    if (call.kind == CallKind::kLog) save(call);
    if (!is_step(line)) return;
    if (steps_to_leave_out > 0) {
      --steps_to_leave_out;
      ++play.steps_left_out;
      return;
    }
    report::Step step;
    step.place = "process " + std::to_string(call.pid);
    step.text = moment.function + ": " + line.text;
    step.time = std::chrono::milliseconds((moment.time_ns - begin_ns_) / 1'000'000);
    step.screens = screens();
    step.server = server_.picture_before(rings_.record_of_call.at(moment.number) + 1);
    step.trace = play.trace.size();
    step.log = play.log.size();
    play.steps.push_back(std::move(step));
  }

  report::Play play;
  std::size_t steps_to_leave_out = 0;

 private:
  report::Screens screens() {
    if (!shared_screen_) {
      shared_screen_ = std::make_shared<const std::vector<report::Screen>>(
          1, report::Screen{"What the operator saw of it", screen_});
    }
    return shared_screen_;
  }

  // The commands as they were started, the questions, and what was typed. What commands print besides is not in a recording.
  void show(const CallEntry &call) {
    switch (call.kind) {
      case CallKind::kBegin:
        show("$ " + call.whole_text + "\n");
        break;
      case CallKind::kQuestion:
        asked_ = call.whole_text;
        show(asked_);
        break;
      case CallKind::kAnswer:
        show(call.whole_text + "\n");
        if (call.result == box::kNoAnswer) show(asked_);
        break;
      default:
        break;
    }
  }

  void show(const std::string &text) {
    constexpr std::size_t kMostRows = 24;
    shared_screen_.reset();
    std::istringstream rows(text);
    bool is_first = !is_in_row_;
    for (std::string row; std::getline(rows, row); is_first = true) {
      if (is_first || screen_.empty()) begin_row();
      add(row);
    }
    is_in_row_ = !text.ends_with('\n');
    if (screen_.size() > kMostRows) screen_.erase(screen_.begin(), screen_.end() - kMostRows);
  }

  void begin_row() {
    screen_.emplace_back();
    columns_ = 0;
  }

  void add(std::string part) {
    if (columns_ == kMostColumns) return;
    columns_ += part.size();
    if (columns_ > kMostColumns) {
      part.resize(part.size() - (columns_ - kMostColumns));
      part += "...";
      columns_ = kMostColumns;
    }
    screen_.back().push_back({std::move(part), {}});
  }

  void save(const CallEntry &call) {
    box::LogEntry entry{
        .time_ns = call.time_ns, .pid = static_cast<std::uint32_t>(call.pid), .head = call.first, .event = {}};
    if (call.whole_text.size() < entry.event.size() || call.result != 0) return;
    std::memcpy(entry.event.data(), call.whole_text.data(), entry.event.size());
    play.log.push_back(sentence_of(decode(model_, entry)));
  }

  const recording::AsRings &rings_;
  std::uint32_t model_;
  RecordingServer server_;
  std::int64_t begin_ns_ = 0;
  std::string asked_;  // last
  std::vector<terminal::PaintedRow> screen_;
  std::size_t columns_ = 0;  // of its last row
  report::Screens shared_screen_;
  bool is_in_row_ = false;
};

}  // namespace

report::Play as_play(const recording::Recording &recording, const recording::AsRings &rings,
                     const std::vector<Told> &lines, const std::string &name, const std::function<bool()> &is_over) {
  Page page(recording, rings, name);
  const auto steps =
      static_cast<std::size_t>(std::ranges::count_if(lines, [&](const Told &line) { return page.is_step(line); }));
  page.steps_to_leave_out = steps - std::min(steps, report::kMostSteps);
  for (const Told &line : lines) {
    if (is_over()) break;
    page.take(line);
  }
  return std::move(page.play);
}

}  // namespace spbox
