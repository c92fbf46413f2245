#include "host/play/chronicle.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <memory>
#include <sstream>
#include <utility>

#include "host/base/descriptor.h"
#include "host/base/told.h"
#include "host/box/confinement.h"
#include "host/box/model.h"
#include "host/box/own_files.h"
#include "host/play/stage.h"
#include "host/play/step.h"
#include "host/terminal/background_program.h"
#include "host/trace_book/following.h"

namespace play {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds kPatience{10'000};  // of a look at the box

std::vector<std::string> lines_in(const std::string &text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

std::uint64_t count_in(const std::filesystem::path &file) {
  const base::Descriptor ring(open(file.c_str(), O_RDONLY | box::kOwnFile));
  std::uint64_t count = 0;
  if (pread(ring.get(), &count, sizeof count, box::TraceRing::kCountAt) != sizeof count) return 0;
  return count;
}

// A line of what the box has kept: whose it is, its number there, and what it says. Numbers rise with the time.
struct KeptLine {
  bool is_of_library = false, is_error = false;
  std::uint64_t number = 0;
  std::string text;
};

// Read by a process that is confined to the box, in which a command may have left anything. It writes a line for each: whose it
// is, whether it is an error, its number, and what it says.
std::string kept_text(const box::Place &place) {
  const trace_book::Rings rings = trace_book::rings_of(place);
  const trace_book::History history(rings.records, rings.calls, box::model_in(place));
  std::vector<const trace_book::Moment *> moments;
  for (const trace_book::Moment &moment : history.moments()) {
    if (!moment.is_void) moments.push_back(&moment);
  }
  const std::uint64_t lost = (rings.records.empty() ? 0 : rings.records.front().number) +
                             (rings.calls.empty() ? 0 : rings.calls.front().number);
  std::string text = std::to_string(lost) + "\n";
  for (const trace_book::Told &line : trace_book::told(moments, trace_book::UnitNames::kTogether)) {
    text += line.moment->is_of_library ? 'L' : 'C';
    text += line.moment->is_error ? '!' : ' ';
    text += std::to_string(line.moment->number) + " " + trace_book::line_since(moments.front()->time_ns, line) + "\n";
  }
  return text;
}

KeptLine kept_line(const std::string &line) {
  KeptLine kept;
  const std::size_t blank = line.find(' ', 2);
  if (blank == std::string::npos) return kept;
  kept.is_of_library = line[0] == 'L';
  kept.is_error = line[1] == '!';
  kept.number = std::stoull(line.substr(2, blank - 2));
  kept.text = line.substr(blank + 1);
  return kept;
}

std::vector<std::string> said_by(const Box &box, std::vector<std::string> words) {
  auto work = box.spbox_beside(std::move(words));
  if (!work.wait(kPatience)) return {"This took too long."};
  return lines_in(work.output());
}

std::vector<std::string> picture_up_to(const Box &box, std::string_view section) {
  std::vector<std::string> lines = said_by(box, {"watch", "--once"});
  const auto at = std::ranges::find_if(lines, [&](const std::string &line) { return line.starts_with(section); });
  lines.erase(at, lines.end());
  return lines;
}

}  // namespace

// The report has trace and log anyway.
std::vector<std::string> server_of(const Box &box) {
  return picture_up_to(box, "Trace ");
}

std::vector<std::string> chassis_of(const Box &box) {
  return picture_up_to(box, "At work ");
}

Chronicle::Chronicle(std::string name, Wanted wanted) : wanted_(wanted) {
  play_.name = std::move(name);
}

milliseconds Chronicle::time() const {
  return std::chrono::duration_cast<milliseconds>(box_time::Clock::now() - begin_);
}

void Chronicle::begins(const Step &step) {
  if (!wanted_.report) return;
  report::Step next;
  next.place = step.place;
  next.text = step.text;
  if (!play_.steps.empty()) {
    next.log = play_.steps.back().log;
    next.screens = play_.steps.back().screens;
  }
  play_.steps.push_back(std::move(next));
  counts_.push_back(counts_.empty() ? Counts() : counts_.back());
}

void Chronicle::does(const std::string &sentence, const std::string &output) {
  if (wanted_.report) deeds_.push_back({sentence, output});
}

void Chronicle::shows(const std::string &caption) {
  does("On the screen: " + caption, "");
  if (cast_) cast_->marks(time(), caption);
}

void Chronicle::ends(Stage &stage) {
  if (!wanted_.report || play_.steps.empty()) return;
  try {
    look_at(stage);
  } catch (const std::exception &wrong) {
    does("This could not be looked at: " + base::told(wrong), "");
  }
  report::Step &step = play_.steps.back();
  step.deeds.insert(step.deeds.end(), deeds_.begin(), deeds_.end());
  deeds_.clear();
}

void Chronicle::look_at(Stage &stage) {
  report::Step &step = play_.steps.back();
  step.time = time();
  auto screens = stage.operators.painted_screens();
  if (!step.screens || screens != *step.screens)
    step.screens = std::make_shared<const std::vector<report::Screen>>(std::move(screens));
  if (stage.box.exists()) look_at_box(stage.box, step);
}

void Chronicle::look_at_box(const Box &box, report::Step &step) {
  if (!pulse_) pulse_.emplace(box.place());
  const box::Pulse::Beat beat = pulse_->feel();
  counts_.back() = {count_in(box.place().trace()), count_in(box.place().calls())};
  if (beat.log) {
    play_.log = said_by(box, {"log"});
    if (!play_.log.empty() && play_.log.front().starts_with("Time ")) play_.log.erase(play_.log.begin());
    step.log = play_.log.size();
  }
  if (beat.server || beat.people) server_ = std::make_shared<const std::vector<std::string>>(server_of(box));
  step.server = server_;
}

void Chronicle::fails(Stage &stage, const std::string &reason) {
  if (!wanted_.report) return;
  if (play_.steps.empty()) return;
  ends(stage);
  play_.reason = reason;
}

void Chronicle::wrote(const std::string &name, const Operator &op, std::string_view bytes) {
  if (!wanted_.cast) return;
  if (!cast_) {
    recorded_ = name;
    size_ = op.size();
    cast_.emplace(size_, play_.name);
  }
  if (name != recorded_) return;
  const terminal::Size size = op.size();
  if (size.rows != size_.rows || size.columns != size_.columns) cast_->resized(time(), size_ = size);
  cast_->wrote(time(), bytes);
}

void Chronicle::close(const Box &box) {
  if (!wanted_.report || !box.exists()) return;
  try {
    const std::vector<std::string> lines =
        lines_in(box::in_confinement(box.place(), [&] { return kept_text(box.place()); }));
    if (lines.empty()) return;
    play_.trace_left_out = std::stoull(lines.front());
    std::vector<KeptLine> kept;
    for (std::size_t i = 1; i < lines.size(); ++i) kept.push_back(kept_line(lines[i]));
    for (const KeptLine &line : kept) play_.trace.push_back({line.text, line.is_error});
    for (std::size_t i = 0; i < play_.steps.size(); ++i) {
      const Counts &counts = counts_[i];
      play_.steps[i].trace =
          play_.trace_left_out + static_cast<std::size_t>(std::ranges::count_if(kept, [&](const KeptLine &line) {
            return line.number < (line.is_of_library ? counts.records : counts.calls);
          }));
    }
  } catch (const std::exception &wrong) {
    play_.trace.push_back({"The trace could not be read: " + base::told(wrong), false});
  }
}

}  // namespace play
