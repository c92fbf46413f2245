#include "host/trace_book/history.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <map>
#include <utility>

#include "host/box/inventory_kinds.h"
#include "host/trace_book/call_words.h"
#include "host/trace_book/pages.h"
#include "trace_events/frame.h"

namespace trace_book {
namespace {

// Units by the two numbers that the library records of them. What two units have in common names neither.
class UnitBook {
 public:
  explicit UnitBook(std::uint32_t model) {
    for (const box::UnitPlace &place : box::places_of(model)) {
      for (const box::UnitEntry &entry : place.entries) {
        const auto [at, is_new] =
            names_.try_emplace({static_cast<std::uint32_t>(entry.type), entry.number}, place.name);
        if (!is_new && at->second != place.name) at->second.clear();
      }
    }
  }
  std::string name_of(std::uint32_t type, std::uint32_t number) const {
    const auto found = names_.find({type, number});
    return found == names_.end() ? "" : found->second;
  }

 private:
  std::map<std::pair<std::uint32_t, std::uint32_t>, std::string> names_;
};

std::string values_text(const TraceLine &line, const UnitBook &units) {
  const auto &values = line.values;
  if (values.size() == 2 && values[0].meaning == "type" && values[1].meaning == "number") {
    const std::string name = units.name_of(values[0].word, values[1].word);
    if (!name.empty()) return ": " + name;
  }
  std::string text;
  for (const TraceValue &value : values) {
    text += (text.empty() ? ": " : ", ") + value.meaning + " " + value.text;
  }
  return text;
}

// Where a call of a function has begun.
struct Frame {
  std::size_t moment;
  Code entry;
};

struct Process {
  std::size_t run = kNoRun;
  std::vector<Frame> frames;
  std::optional<std::size_t> program;    // the moment of its start, where it is one
  std::optional<std::size_t> not_read;   // of the last record of the library that says so
  const box::CallEntry *read = nullptr;  // the last read of a record
  std::int32_t result = 0;               // that the library recorded with it
};

class Reader {
 public:
  Reader(const std::vector<box::TraceEntry> &records, const std::vector<box::CallEntry> &calls, std::uint32_t model,
         std::vector<Moment> &moments, std::vector<Run> &runs)
      : units_(model), moments_(moments), runs_(runs) {
    std::vector<const box::CallEntry *> in_order;
    for (const box::CallEntry &call : calls) in_order.push_back(&call);
    // A call is kept when it has ended, and stands where it began.
    std::ranges::stable_sort(in_order, {}, [](const box::CallEntry *call) {
      return std::pair(call->position, ends_something(*call) ? end_of(*call) : call->time_ns);
    });
    auto call = in_order.begin();
    for (const box::TraceEntry &record : records) {
      for (; call != in_order.end() && comes_before(**call, record); ++call) take(**call);
      take(record);
    }
    for (; call != in_order.end(); ++call) take(**call);
    for (Moment &moment : moments_) {
      if (moment.run == kNoRun) moment.run = processes_[moment.pid].run;
    }
  }

 private:
  static bool ends_something(const box::CallEntry &call) { return call.kind == box::CallKind::kProgramEnd; }
  static std::int64_t end_of(const box::CallEntry &call) {
    return call.time_ns + static_cast<std::int64_t>(call.duration_ns);
  }
  // A control program knows where it began among the records, not where it ended.
  static bool comes_before(const box::CallEntry &call, const box::TraceEntry &record) {
    return ends_something(call) ? end_of(call) <= record.time_ns && call.position <= record.number
                                : call.position <= record.number;
  }

  Moment &add(Moment moment) {
    moments_.push_back(std::move(moment));
    return moments_.back();
  }

  void take(const box::TraceEntry &record) {
    const TraceLine line = words_of(record);
    const auto pid = static_cast<pid_t>(line.pid);
    Process &process = process_of(pid);
    Moment moment;
    moment.is_of_library = true;
    moment.number = record.number;
    moment.time_ns = record.time_ns;
    moment.pid = pid;
    moment.run = process.run;
    moment.level = line.level;
    moment.function = line.function;
    moment.text = line.event + values_text(line, units_);
    moment.is_error = line.is_error;
    moment.depth = process.frames.size();
    moment.is_begin = line.is_known && line.name == "entry";
    moment.is_end = line.is_known && line.name == "exit";
    const auto code = code_of(record.event);
    if (moment.is_end && code) leave(process, static_cast<Code>(*code - 1), moment);
    Moment &kept = add(std::move(moment));
    if (kept.is_begin && code) process.frames.push_back({moments_.size() - 1, *code});
    if (line.is_error) judge_read(process, line, kept);
    if (record.event == trace_events::kEventBase + trace_events::Exec::kStarted &&
        record.word_count > kSecondValueWord) {
      const auto child = static_cast<pid_t>(record.words.at(kSecondValueWord));
      if (!processes_.contains(child)) processes_[child] = child_of(process);
    }
  }

  // A child goes on where its parent stood.
  static Process child_of(const Process &parent) {
    Process child;
    child.run = parent.run;
    child.frames = parent.frames;
    return child;
  }

  // The library does not record the beginning of each child. Where one run alone is under way, the child is of that.
  Process &process_of(pid_t pid) {
    const auto [at, is_new] = processes_.try_emplace(pid);
    if (!is_new) return at->second;
    const auto begun = std::ranges::find_if(runs_, [](const Run &run) { return !run.end_ns; });
    if (begun == runs_.end()) return at->second;
    const bool is_only =
        std::ranges::none_of(std::next(begun), runs_.end(), [](const Run &run) { return !run.end_ns; });
    if (is_only && begun->pid != pid) at->second = child_of(processes_[begun->pid]);
    return at->second;
  }

  // A call of a function ends with all that it called, also with what was left by a jump.
  void leave(Process &process, Code entry, Moment &exit) {
    for (std::size_t at = process.frames.size(); at > 0; --at) {
      if (process.frames[at - 1].entry != entry) continue;
      Moment &begin = moments_[process.frames[at - 1].moment];
      begin.duration_ns = exit.time_ns - begin.time_ns;
      process.frames.resize(at - 1);
      exit.depth = at - 1;
      return;
    }
  }

  // The library records two things of a record that it could not use, one of which holds.
  void judge_read(Process &process, const TraceLine &line, Moment &moment) {
    if (line.name == "not-read" && !line.values.empty() && line.values[0].meaning == "client's result") {
      process.not_read = moments_.size() - 1;
      process.result = static_cast<std::int32_t>(line.values[0].word);
      moment.is_void = process.result == 0;
      if (!moment.is_void) moment.text = record_text(process) + failure_text(process.result);
      return;
    }
    if (line.name != "other-size" || !process.not_read || line.values.size() < 2) return;
    moment.is_void = process.result != 0;
    if (!moment.is_void) {
      moment.text = record_text(process) + " has another size: " + line.values[0].text + " bytes expected, " +
                    line.values[1].text + " found";
    }
    process.not_read.reset();
  }

  static std::string record_text(const Process &process) {
    if (process.read == nullptr) return "the record";
    return "record " + process.read->whole_text + " of database " + database_text(process.read->first);
  }
  static std::string failure_text(std::int32_t result) {
    constexpr std::int32_t kAbsent = -4;
    return (result == kAbsent ? " is absent: " : " was not read: ") + database_result_text(result);
  }

  void take(const box::CallEntry &call) {
    const CallLine line = words_of(call);
    Process &process = call.kind == box::CallKind::kBegin ? processes_[call.pid] : process_of(call.pid);
    if (call.kind == box::CallKind::kBegin) begin(process, call);
    if (call.kind == box::CallKind::kProgram) process = child_of(processes_[static_cast<pid_t>(call.first)]);
    Moment moment;
    moment.number = call.number;
    moment.time_ns = ends_something(call) ? end_of(call) : call.time_ns;
    moment.pid = call.pid;
    moment.run = process.run;
    moment.depth = process.frames.size();
    moment.level = line.party;
    moment.function = line.function;
    moment.text = line.text;
    moment.is_error = line.is_error;
    if (call.kind == box::CallKind::kName && !line.is_error) moment.unit_name = call.whole_text;
    moment.is_begin = call.kind == box::CallKind::kProgram;
    moment.is_end = call.kind == box::CallKind::kProgramEnd || call.kind == box::CallKind::kEnd;
    if (!moment.is_begin && !moment.is_end && call.kind != box::CallKind::kBegin &&
        call.kind != box::CallKind::kQuestion) {
      moment.duration_ns = static_cast<std::int64_t>(call.duration_ns);
    }
    add(std::move(moment));
    if (call.kind == box::CallKind::kProgram) process.program = moments_.size() - 1;
    if (call.kind == box::CallKind::kRead) process.read = &call;
    if (call.kind == box::CallKind::kProgramEnd && process.program) {
      Moment &start = moments_[*process.program];
      start.duration_ns = static_cast<std::int64_t>(call.duration_ns);
      start.outcome = call.result < 0 ? "was killed by signal " + std::to_string(-std::int64_t{call.result})
                                      : "exit status " + std::to_string(call.result);
      process.program.reset();
    }
    if (call.kind == box::CallKind::kEnd && process.run != kNoRun) {
      runs_[process.run].end_ns = call.time_ns;
      runs_[process.run].status = call.result;
    }
  }

  void begin(Process &process, const box::CallEntry &call) {
    process = {};
    process.run = runs_.size();
    Run run;
    run.number = call.second;
    run.words = call.whole_text + (call.is_cut() ? " ..." : "");
    run.pid = call.pid;
    run.begin_ns = call.time_ns;
    runs_.push_back(std::move(run));
  }

  UnitBook units_;
  std::vector<Moment> &moments_;
  std::vector<Run> &runs_;
  std::map<pid_t, Process> processes_;
};

bool goes_on(const Told &before, const Moment &moment) {
  return !moment.unit_name.empty() && !before.moment->unit_name.empty() && before.moment->pid == moment.pid;
}

}  // namespace

std::vector<Told> told(const std::vector<const Moment *> &moments, UnitNames names) {
  std::vector<Told> lines;
  std::size_t together = 0;
  for (const Moment *moment : moments) {
    if (names == UnitNames::kEach || lines.empty() || !goes_on(lines.back(), *moment)) {
      lines.push_back({moment, moment->text, moment->duration_ns});
      together = 1;
      continue;
    }
    Told &line = lines.back();
    ++together;
    line.text = std::to_string(together) + " units: " + line.moment->unit_name + (together == 2 ? ", " : " to ") +
                moment->unit_name;
    line.duration_ns = line.duration_ns.value_or(0) + moment->duration_ns.value_or(0);
  }
  return lines;
}

std::string line_since(std::int64_t begin_ns, const Told &line) {
  constexpr double kSecond = 1e9;
  std::array<char, 32> since{};
  std::snprintf(since.data(), since.size(), "%10.6f  ", static_cast<double>(line.moment->time_ns - begin_ns) / kSecond);
  std::string text = since.data() + std::string(2 * line.moment->depth, ' ') + line.moment->function + ": " + line.text;
  std::ranges::replace(text, '\n', ' ');
  return text;
}

std::string Run::name() const {
  return name_of_program(words);
}

History::History(const std::vector<box::TraceEntry> &records, const std::vector<box::CallEntry> &calls,
                 std::uint32_t model) {
  const Reader reader(records, calls, model, moments_, runs_);
}

}  // namespace trace_book
