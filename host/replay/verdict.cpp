#include "host/replay/verdict.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdio>
#include <cstring>

#include "host/base/shown.h"
#include "host/replay/score.h"
#include "host/trace_book/call_words.h"

namespace replay {
namespace {

// A call of either side.
struct Side {
  replay_call call{};
  std::string_view text, content;
};

std::string words_of(std::uint32_t first, std::uint32_t second) {
  std::array<char, 24> text{};
  std::snprintf(text.data(), text.size(), "%08X %08X", first, second);
  return text.data();
}

std::string question_text(const Side &side) {
  std::string text = "cli_ask_select: \"" + std::string(side.text) + "\", " + std::to_string(side.call.first);
  std::ranges::replace(text, '\n', ' ');
  return text + (side.call.first == 1 ? " choice" : " choices");
}

// What was asked for, without what was answered.
std::string text_of(const Side &side) {
  const std::string text(side.text), database = "database " + trace_book::database_text(side.call.first);
  switch (side.call.kind) {
    case LMAINTE_RECORD_PROGRAM:
      return trace_book::name_of_program(text) + ": " + text;
    case LMAINTE_RECORD_OPEN:
      return "scdb_open: " + database;
    case LMAINTE_RECORD_CLOSE:
      return "scdb_close: " + database;
    case LMAINTE_RECORD_LOCK:
      return "scdb_lock: " + database;
    case LMAINTE_RECORD_UNLOCK:
      return "scdb_unlock: " + database;
    case LMAINTE_RECORD_GET:
      return "scdb_get: record " + text + " of " + database;
    case LMAINTE_RECORD_PUT:
      return "lcmn_scdb_put: record " + text + " of " + database + ", " + std::to_string(side.call.content_size) +
             " bytes";
    case LMAINTE_RECORD_QUESTION:
      return question_text(side);
    case LMAINTE_RECORD_ANSWER:
      return "cli_ask_select: the answer \"" + text + "\"";
    case LMAINTE_RECORD_LOG:
      return "mgblog_save: an event";
    case LMAINTE_RECORD_NAME:
      return "api_conv_unit_name_get: unit id " + words_of(side.call.first, side.call.second) + ", form " +
             std::to_string(side.call.third);
    case LMAINTE_RECORD_FILE_OPEN:
      return "lcmn_lopen: " + text;
    case LMAINTE_RECORD_FILE_READ:
      return "lcmn_read";
    case LMAINTE_RECORD_FILE_WRITE:
      return "lcmn_write";
    case LMAINTE_RECORD_FILE_CLOSE:
      return "lcmn_close";
    case LMAINTE_RECORD_SEND:
      return "lcmn_send: a request";
    case LMAINTE_RECORD_RECEIVE:
      return "lcmn_receive";
    case LMAINTE_RECORD_SELECT:
      return "lcmn_select";
    default:
      return "call of kind " + std::to_string(side.call.kind);
  }
}

// ", with 0000000A at byte 12": where the contents alone differ.
std::string content_text(std::string_view content, std::size_t at) {
  if (at >= content.size()) return ", with its end at byte " + std::to_string(content.size());
  std::string bytes;
  for (std::size_t i = at; i < content.size() && i < at + 4; ++i) {
    std::array<char, 4> digits{};
    std::snprintf(digits.data(), digits.size(), "%02X", static_cast<std::uint8_t>(content[i]));
    bytes += digits.data();
  }
  return ", with " + bytes + " at byte " + std::to_string(at);
}

// The score, which the command could write into.
class Left {
 public:
  explicit Left(const std::string &score) : bytes_(score) {
    if (bytes_.size() < sizeof head_) return;
    std::memcpy(&head_, bytes_.data(), sizeof head_);
    const std::size_t room = (bytes_.size() - sizeof head_) / sizeof(replay_call);
    head_.count = static_cast<std::uint32_t>(std::min<std::size_t>(head_.count, room));
    head_.next = std::min(head_.next, head_.count);
    if (contents_differ()) head_.at = static_cast<std::uint32_t>(std::min<std::size_t>(head_.at, bytes_.size()));
  }
  const replay_score &head() const { return head_; }

  Side recorded() const {
    Side side;
    if (head_.next >= head_.count) return side;
    std::memcpy(&side.call, bytes_.data() + sizeof head_ + head_.next * sizeof(replay_call), sizeof side.call);
    side.text = part(side.call.text, side.call.text_size);
    side.content = part(side.call.content, side.call.content_size);
    return side;
  }

  Side came() const {
    Side side;
    side.call = head_.came;
    side.text = {head_.text, std::min<std::size_t>(head_.came.text_size, sizeof head_.text)};
    return side;
  }

  bool contents_differ() const { return head_.at != UINT32_MAX && head_.departure == REPLAY_DIFFERS; }

  std::string content_that_came() const {
    std::string content(std::min<std::size_t>(head_.came.content_size, head_.at), '\0');
    content.append(reinterpret_cast<const char *>(head_.word), sizeof head_.word);
    content.resize(std::min<std::size_t>(head_.came.content_size, content.size()));
    return content;
  }

 private:
  std::string_view part(std::uint32_t at, std::uint32_t size) const {
    const std::string_view all = bytes_;
    return at > all.size() ? std::string_view() : all.substr(at, size);
  }

  const std::string &bytes_;
  replay_score head_{};
};

std::string number_text(std::int64_t count, const std::string &one) {
  return std::to_string(count) + " " + one + (count == 1 ? "" : "s");
}

std::string calls_text(std::uint32_t count) {
  return number_text(count, "call");
}

// That a command ended, before it has made the recorded calls.
std::string early_end(const Ending &ending, std::uint32_t made, std::uint32_t count) {
  const std::string which = std::to_string(made + 1) + " of " + std::to_string(count);
  if (ending.silent_seconds > 0) {
    return "The command made no call for " + number_text(ending.silent_seconds, "second") +
           ", and was ended before call " + which + ":";
  }
  const std::string ended = "The command ended with exit status " + std::to_string(ending.exit_status);
  if (made > 0) return ended + " before call " + which + ":";
  return ended + " and asked for nothing. Is it linked with its platform as a shared library? The first of " +
         calls_text(count) + ":";
}

}  // namespace

std::uint32_t calls_made(const std::string &score) {
  std::uint32_t made = 0;
  if (score.size() >= offsetof(replay_score, next) + sizeof made) {
    std::memcpy(&made, score.data() + offsetof(replay_score, next), sizeof made);
  }
  return made;
}

Verdict verdict_of(const std::string &score, const Run &run, const Ending &ending) {
  const Left left(score);
  const std::uint32_t made = left.head().next, count = left.head().count;
  Verdict verdict{.differs = true,
                  .in_child = left.head().in_child != 0,
                  .calls = made,
                  .of = count,
                  .sentence = {},
                  .recorded = {},
                  .of_command = {}};
  const std::string which = std::to_string(made + 1) + " of " + std::to_string(count);
  switch (left.head().departure) {
    case REPLAY_DIFFERS:
      verdict.sentence = "The command differs from the recording at call " + which + ":";
      verdict.recorded = text_of(left.recorded());
      verdict.of_command = text_of(left.came());
      if (left.contents_differ()) {
        verdict.recorded += content_text(left.recorded().content, left.head().at);
        verdict.of_command += content_text(left.content_that_came(), left.head().at);
      }
      return verdict;
    case REPLAY_ONE_MORE:
      verdict.sentence =
          "The command makes a call more than the recording has, which ended after " + calls_text(count) + ":";
      verdict.of_command = text_of(left.came());
      return verdict;
    case REPLAY_UNANSWERED:
      verdict.is_compared = verdict.differs = false;
      verdict.sentence = "No difference in " + calls_text(made) +
                         ". There the recorded command asked and went on without an answer, which a signal does.";
      return verdict;
    case REPLAY_RAN_OUT:
      if (made < count || run.has_end) break;  // it has written into its score
      verdict.differs = false;
      verdict.sentence =
          "No difference in " + calls_text(made) + ". There the recording ends, in the middle of the recorded command.";
      return verdict;
    default:
      break;
  }
  if (made < count) {
    verdict.sentence = early_end(ending, made, count);
    verdict.recorded = text_of(left.recorded());
    return verdict;
  }
  const bool has_ended = ending.silent_seconds == 0;
  if (run.has_end && (!has_ended || ending.exit_status != run.exit_status)) {
    verdict.sentence = "The command makes the same " + calls_text(count) + ", and ends in another way:";
    verdict.recorded = "exit status " + std::to_string(run.exit_status);
    verdict.of_command =
        has_ended ? "exit status " + std::to_string(ending.exit_status)
                  : "none; it was ended after " + number_text(ending.silent_seconds, "second") + " without a call";
    return verdict;
  }
  verdict.differs = false;
  verdict.sentence = "No difference in " + calls_text(count) + ".";
  if (!run.has_end) verdict.sentence += " How the recorded command ended is not in the recording.";
  return verdict;
}

}  // namespace replay
