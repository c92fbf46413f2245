#include "host/replay/make_score.h"

#include <algorithm>
#include <cstring>
#include <map>

#include "host/box/model.h"
#include "host/recording/programs.h"
#include "host/replay/score.h"

namespace replay {
namespace {

using recording::Record;

// ---- Runs

// Reads the records in their order, and gives each to the run of its process.
class Sorter {
 public:
  explicit Sorter(const recording::Recording &recording)
      : is_without_contents_(recording.is_without_contents), first_(recording.records.data()) {
    for (const Record &record : recording.records) take(record);
    for (Run &run : runs) {
      if (has_gap(run)) flaw(run, "Records of this run are missing.");
      if (is_damaged(run, recording)) flaw(run, "The recording is damaged within this run.");
      if (run.model == 0) flaw(run, "The recording does not say of which model the server is.");
      if (box::find_model(run.model) == nullptr) flaw(run, "It is of a model that spbox does not know.");
    }
  }
  std::vector<Run> runs;

 private:
  void take(const Record &record) {
    if (record.kind == LMAINTE_RECORD_PROCESS) begin(record);
    const auto found = run_of_.find(record.pid);
    if (found == run_of_.end()) {
      drop();
      return;
    }
    const std::size_t number = found->second;
    Run &run = runs[number];
    if (run.is_full) return;
    run.records.push_back(&record);
    if (record.kind == LMAINTE_RECORD_END && record.pid == run.records.front()->pid) {
      run.has_end = true;
      run.exit_status = record.result;
    }
    // For all its processes: where one of them found no room, it is unknown what it did between the calls of the others.
    if (record.kind == LMAINTE_RECORD_FULL) run.is_full = true;
    if (record.kind == LMAINTE_RECORD_PROGRAM_END && !run_of_.contains(static_cast<pid_t>(record.first))) {
      run.doubt =
          "A child of the recorded command ended that has no record: either it made no call, or its records are "
          "missing.";
    }
    if (record.is_left_out && is_needed(record)) {
      flaw(run, is_without_contents_ ? "The recording was made without contents: it can be shown, and nothing else."
                                     : "A content that was too long for it is left out.");
    }
  }

  // The first one is told.
  static void flaw(Run &run, const char *sentence) {
    if (run.flaw.empty()) run.flaw = sentence;
  }

  // A record of a process of which nobody knows to which run it belongs: to any that has not ended, or to the last one.
  void drop() {
    for (std::size_t i = 0; i < runs.size(); ++i) {
      const bool is_last = i + 1 == runs.size();
      if (!runs[i].has_end || is_last)
        flaw(runs[i], "It is unknown whether records of other processes belong to this run.");
    }
  }

  // Between its first record and its last one. Where its end is not there, that may be what is damaged; but for a cut.
  bool is_damaged(const Run &run, const recording::Recording &recording) const {
    const auto begin = static_cast<std::size_t>(run.records.front() - first_);
    const auto last = static_cast<std::size_t>(run.records.back() - first_);
    const std::size_t end = run.has_end || run.is_full ? last : recording.records.size() - (recording.is_cut ? 1 : 0);
    return std::ranges::any_of(recording.damaged_before, [&](std::size_t at) { return at > begin && at <= end; });
  }

  // Of what is written into files, and longer than what the recorder keeps, nothing is compared.
  static bool is_needed(const Record &record) {
    return record.kind != LMAINTE_RECORD_FILE_WRITE && record.kind <= LMAINTE_RECORD_LAST;
  }

  void begin(const Record &record) {
    if (record.is_child()) {
      const auto parent = run_of_.find(static_cast<pid_t>(record.first));
      if (parent != run_of_.end()) run_of_[record.pid] = parent->second;
      if (parent == run_of_.end()) run_of_.erase(record.pid);  // of another process with this id, long ago
      return;
    }
    run_of_[record.pid] = runs.size();
    Run run;
    run.words = record.text;
    run.model = record.second;
    run.is_fed = (record.third & LMAINTE_RECORD_IS_FED) != 0;
    run.is_read = (record.third & LMAINTE_RECORD_IS_READ) != 0;
    if (record.number != 0) flaw(run, "Its beginning is not in the recording.");
    runs.push_back(std::move(run));
  }

  // A handler may have written in between: the numbers are there, and not always in their order.
  static bool has_gap(const Run &run) {
    std::map<pid_t, std::pair<std::uint64_t, std::uint64_t>> of_process;  // how many, and the number behind the last
    for (const Record *record : run.records) {
      auto &[count, end] = of_process[record->pid];
      ++count;
      end = std::max<std::uint64_t>(end, std::uint64_t{record->number} + 1);
    }
    return std::ranges::any_of(of_process, [](const auto &row) { return row.second.first != row.second.second; });
  }

  bool is_without_contents_;
  const Record *first_;
  std::map<pid_t, std::size_t> run_of_;  // also of those that have ended: a child may come later
};

// ---- The score

// What a command asks for, and is answered; not what it writes into its trace.
bool is_call(const Record &record) {
  switch (record.kind) {
    case LMAINTE_RECORD_PROCESS:
    case LMAINTE_RECORD_END:
    case LMAINTE_RECORD_FULL:
    case LMAINTE_RECORD_TRACE:
    case LMAINTE_RECORD_PROGRAM_END:
      return false;
    case LMAINTE_RECORD_PROGRAM:
      return recording::is_control_program(record.text);
    default:
      return record.kind <= LMAINTE_RECORD_LAST;
  }
}

class Score {
 public:
  explicit Score(const Run &run) {
    for (const Record *record : run.records) {
      if (record->kind == LMAINTE_RECORD_PROGRAM_END) add_end(*record);
      if (is_call(*record)) add(*record);
    }
    replay_score head{};
    head.count = static_cast<std::uint32_t>(calls_.size());
    head.has_end = run.has_end ? 1 : 0;
    head.process = static_cast<std::uint32_t>(run.records.front()->pid);
    const std::size_t size = calls_.size() * sizeof(replay_call);
    const auto before = static_cast<std::uint32_t>(sizeof head + size);
    for (replay_call &call : calls_) {
      call.text += before;
      call.content += before;
    }
    bytes.append(reinterpret_cast<const char *>(&head), sizeof head);
    if (size > 0) bytes.append(reinterpret_cast<const char *>(calls_.data()), size);
    bytes += rest_;
  }
  std::string bytes;

 private:
  void add(const Record &record) {
    const box::Bytes content = recording::content_here(record);
    replay_call call{};
    call.kind = record.kind;
    call.process = static_cast<std::uint32_t>(record.pid);
    call.result = record.result;
    call.first = record.first;
    call.second = record.second;
    call.third = record.kind == LMAINTE_RECORD_PROGRAM ? 0 : record.third;
    call.text = kept(record.text);
    call.text_size = static_cast<std::uint32_t>(record.text.size());
    call.content = kept({reinterpret_cast<const char *>(content.data()), content.size()});
    call.content_size = static_cast<std::uint32_t>(content.size());
    if (record.kind == LMAINTE_RECORD_PROGRAM) programs_.begin(record, calls_.size());
    calls_.push_back(call);
  }

  void add_end(const Record &record) {
    constexpr std::uint64_t kSecond = 1'000'000'000;
    const auto program = programs_.end(record);
    if (!program) return;
    // The library looks once in a second: the program ended before it was found to have.
    const std::uint64_t took = recording::time_of_program(*program->record, record),
                        rest = took - std::min(took, kSecond / 2);
    replay_call &call = calls_[program->call];
    call.result = record.result;
    call.third = 1;
    call.seconds = static_cast<std::uint32_t>(rest / kSecond);
    call.nanoseconds = static_cast<std::uint32_t>(rest % kSecond);
  }

  std::uint32_t kept(std::string_view text) {
    const auto at = static_cast<std::uint32_t>(rest_.size());
    rest_ += text;
    return at;
  }

  std::vector<replay_call> calls_;
  std::string rest_;
  recording::RunningPrograms programs_;
};

}  // namespace

std::vector<Run> runs_of(const recording::Recording &recording) {
  return Sorter(recording).runs;
}

std::string score_of(const Run &run) {
  return Score(run).bytes;
}

}  // namespace replay
