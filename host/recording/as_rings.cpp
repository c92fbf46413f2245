#include "host/recording/as_rings.h"

#include <algorithm>
#include <array>
#include <map>
#include <string>
#include <utility>

#include "host/recording/programs.h"

namespace recording {
namespace {

using box::CallKind;

struct Row {
  std::uint32_t kind;
  CallKind as;
};
// The kinds whose words are those of a ring.
constexpr std::array<Row, 11> kRows{{
    {LMAINTE_RECORD_OPEN, CallKind::kOpen},
    {LMAINTE_RECORD_CLOSE, CallKind::kClose},
    {LMAINTE_RECORD_LOCK, CallKind::kLock},
    {LMAINTE_RECORD_UNLOCK, CallKind::kUnlock},
    {LMAINTE_RECORD_GET, CallKind::kRead},
    {LMAINTE_RECORD_PUT, CallKind::kWrite},
    {LMAINTE_RECORD_NAME, CallKind::kName},
    {LMAINTE_RECORD_FILE_READ, CallKind::kFileRead},
    {LMAINTE_RECORD_FILE_WRITE, CallKind::kFileWrite},
    {LMAINTE_RECORD_FILE_CLOSE, CallKind::kFileClose},
    {LMAINTE_RECORD_SELECT, CallKind::kWaitForReply},
}};

constexpr std::size_t kTraceHead = 16, kDaemonAt = 4, kRequestAt = 8;

class Turner {
 public:
  explicit Turner(const Recording &recording) {
    for (std::size_t i = 0; i < recording.records.size(); ++i) {
      take(recording.records[i]);
      result.record_of_call.resize(result.calls.size(), i);
    }
  }
  AsRings result;

 private:
  box::CallEntry call(const Record &record, CallKind kind, std::string_view text) const {
    box::CallEntry entry;
    entry.number = result.calls.size();
    entry.kind = kind;
    entry.pid = record.pid;
    entry.time_ns = record.time_ns;
    entry.duration_ns = record.duration_ns;
    entry.position = result.records.size();
    entry.result = record.result;
    entry.first = record.first;
    entry.second = record.second;
    entry.whole_text = text;
    entry.text_size = text.size();
    return entry;
  }

  void take(const Record &record) {
    switch (record.kind) {
      case LMAINTE_RECORD_TRACE:
        take_trace(record);
        return;
      case LMAINTE_RECORD_PROCESS:
        if (record.is_child()) return;
        result.calls.push_back(call(record, CallKind::kBegin, record.text));
        result.calls.back().second = ++runs_;
        lines_[record.pid] = record.text;
        return;
      case LMAINTE_RECORD_END:
        result.calls.push_back(call(record, CallKind::kEnd, lines_[record.pid]));
        return;
      case LMAINTE_RECORD_PROGRAM:
        if (!is_control_program(record.text)) return;
        result.calls.push_back(call(record, CallKind::kProgram, record.text));
        result.calls.back().second = 0;
        programs_.begin(record, result.calls.size() - 1);
        return;
      case LMAINTE_RECORD_PROGRAM_END:
        take_end_of_program(record);
        return;
      case LMAINTE_RECORD_QUESTION:
        result.calls.push_back(call(record, CallKind::kQuestion, record.text));
        return;
      case LMAINTE_RECORD_ANSWER:
        result.calls.push_back(call(record, CallKind::kAnswer, record.text));
        return;
      case LMAINTE_RECORD_LOG:
        result.calls.push_back(call(record, CallKind::kLog, record.content));
        return;
      case LMAINTE_RECORD_FILE_OPEN:
        result.calls.push_back(call(record, CallKind::kFileOpen, record.text));
        result.calls.back().first = static_cast<std::uint32_t>(record.result);
        return;
      case LMAINTE_RECORD_SEND:
      case LMAINTE_RECORD_RECEIVE:
        take_message(record);
        return;
      default:
        break;
    }
    const auto *const row = std::ranges::find(kRows, record.kind, &Row::kind);
    if (row != kRows.end()) result.calls.push_back(call(record, row->as, record.text));
  }

  void take_trace(const Record &record) {
    if (record.content.size() < kTraceHead) return;
    const auto word = [&](std::size_t number) { return word_at(record.content, 4 * number, true); };
    box::TraceEntry entry{};
    entry.number = result.records.size();
    entry.time_ns = record.time_ns;
    entry.module = word(0);
    entry.level = word(1);
    entry.kind = word(2);
    entry.event = word(3);
    entry.word_count =
        static_cast<std::uint32_t>(std::min((record.content.size() - kTraceHead) / 4, entry.words.size()));
    for (std::size_t i = 0; i < entry.word_count; ++i) entry.words.at(i) = word(4 + i);
    result.records.push_back(entry);
  }

  // A ring has no end of a program that was killed; here it has the signal, below 0.
  void take_end_of_program(const Record &record) {
    const auto begun = programs_.end(record);
    if (!begun) return;
    box::CallEntry end = result.calls[begun->call];
    const auto status = static_cast<std::uint32_t>(record.result);
    end.number = result.calls.size();
    end.kind = CallKind::kProgramEnd;
    end.duration_ns = time_of_program(*begun->record, record);
    const auto ended_by = static_cast<std::int32_t>(status & 0x7FU);
    end.result = ended_by != 0 ? -ended_by : static_cast<std::int32_t>(status >> 8U & 0xFFU);
    result.calls.push_back(std::move(end));
  }

  void take_message(const Record &record) {
    const bool is_sent = record.kind == LMAINTE_RECORD_SEND;
    box::CallEntry entry = call(record, is_sent ? CallKind::kSend : CallKind::kReceive, {});
    entry.first = word_at(record.content, kDaemonAt, record.is_big_endian);
    entry.second = word_at(record.content, kRequestAt, record.is_big_endian);
    result.calls.push_back(std::move(entry));
  }

  std::uint32_t runs_ = 0;
  std::map<pid_t, std::string> lines_;
  RunningPrograms programs_;
};

}  // namespace

AsRings as_rings(const Recording &recording) {
  return Turner(recording).result;
}

}  // namespace recording
