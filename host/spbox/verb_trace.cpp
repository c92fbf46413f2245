// What commands did in the box: the library's records and the platform's calls.
#include <poll.h>
#include <unistd.h>

#include <cstdio>
#include <memory>
#include <set>

#include "host/box/call_ring.h"
#include "host/box/contents.h"
#include "host/box/inhabitants.h"
#include "host/box/trace_ring.h"
#include "host/spbox/answer.h"
#include "host/spbox/standard_output.h"
#include "host/spbox/text.h"
#include "host/spbox/trace_choice.h"
#include "host/spbox/trace_lines.h"
#include "host/spbox/verbs.h"
#include "host/trace_book/following.h"
#include "host/trace_book/history.h"
#include "host/trace_book/trace_book.h"

namespace spbox {
namespace {

using trace_book::History;
using trace_book::Moment;
using trace_book::Rings;
using trace_book::Told;
using trace_book::TraceLine;
using trace_book::TraceValue;

Json trace_json(const box::TraceEntry &entry) {
  const TraceLine line = trace_book::words_of(entry);
  Json::List values;
  for (const TraceValue &value : line.values) {
    values.push_back(Json::Object{
        {"meaning", value.meaning}, {"number", static_cast<std::int32_t>(value.word)}, {"text", value.text}});
  }
  return Json::Object{{"number", entry.number},
                      {"time", utc(entry.time_ns)},
                      {"pid", line.pid},
                      {"function", line.function},
                      {"line", line.line},
                      {"level", line.level},
                      {"name", line.name},
                      {"event", line.event},
                      {"code", hexadecimal(entry.event)},
                      {"known", line.is_known},
                      {"values", values}};
}

// The records of the library that are wanted, with their numbers as ever.
void answer_with(const Rings &rings, const History &history, const TraceOptions &options) {
  const Wanted wanted(options, history);
  std::set<std::uint64_t> numbers;
  for (const Moment &moment : history.moments()) {
    if (moment.is_of_library && wanted.has(moment)) numbers.insert(moment.number);
  }
  std::vector<const box::TraceEntry *> entries;
  for (const box::TraceEntry &entry : rings.records) {
    if (numbers.contains(entry.number)) entries.push_back(&entry);
  }
  keep_last(entries, options.last);
  Json::List list;
  for (const box::TraceEntry *entry : entries) list.push_back(trace_json(*entry));
  answer({{"records", list}});
}

// Whether the reader of what is printed is still there, after a tenth of a second.
bool waits_for_more() {
  constexpr int kLook = 100;
  pollfd reader{.fd = STDOUT_FILENO, .events = 0, .revents = 0};
  return poll(&reader, 1, kLook) == 0;
}

void tell_of(const std::string &trouble) {
  if (!trouble.empty()) complain(trouble);
}

void print_news(const trace_book::Following::News &news, const TraceOptions &options, bool is_first) {
  tell_of(news.trouble);
  if (news.trace_is_anew) print_line("-- The trace was made anew. --");
  if (news.calls_are_anew && !news.trace_is_anew) print_line("-- The platform's part of the trace was made anew. --");
  std::vector<Told> lines = told(shown_of(news.moments, news.history, options), options.names());
  if (is_first) keep_last(lines, options.last);
  print_lines(lines, options, is_first ? Head::kShown : Head::kNone);
}

// Prints what comes, until the reader is gone or somebody interrupts.
int follow(const TraceOptions &options) {
  trace_book::Following following{box::Place(options.box)};
  bool is_first = true;
  do {
    if (auto news = following.look()) print_news(*news, options, is_first);
    is_first = false;
  } while (std::fflush(stdout) == 0 && waits_for_more());
  return 0;
}

int trace(const TraceOptions &options) {
  const box::Place place(options.box);
  box::check_is_box(place);
  if (options.follow) return follow(options);
  const Rings rings = trace_book::rings_of(place);
  tell_of(rings.trouble);
  const History history(rings.records, rings.calls, box::model_in(place));
  if (!is_for_script()) {
    print_history(history, options);
    return 0;
  }
  answer_with(rings, history, options);
  return 0;
}

std::vector<Word> words_of(TraceOptions &options) {
  std::vector<Word> words = choosing_words(options);
  words.insert(words.begin(), box_word(options.box));
  words.insert(
      words.end(),
      {{.name = "--since",
        .help = "From a time on, such as 14:05:30, or 30s, 5m, 2h ago",
        .to = &options.since,
        .value = "TIME"},
       {.name = "--calls",
        .help = "As a tree: which function called which, and how long it\ntook",
        .to = &options.calls,
        .excludes = {"--json", "-f"}},
       {.name = "--names",
        .help = "Each call for the name of a unit; without it, a list of\nunits is one line",
        .to = &options.each_name},
       {.name = "-f", .help = "Go on with what comes, until Ctrl-C", .to = &options.follow, .excludes = {"--json"}}});
  return words;
}

}  // namespace

Verb trace_verb() {
  auto options = std::make_shared<TraceOptions>();
  return {.name = "trace",
          .line = "Show what commands did, in words",
          .works_on_box = true,
          .words = words_of(*options),
          .footer =
              "The library's records stand beside what passes between the command and its\n"
              "platform: databases, questions and answers, control programs. The trace keeps\n"
              "the last " +
              std::to_string(box::TraceRing::kSlots) + " records of all commands, and the last " +
              std::to_string(box::CallRing::kSlots) +
              " of the platform.\n"
              "--json gives the library's.\n\n"
              "Examples:\n"
              "  spbox trace box --last 20\n"
              "  spbox trace box --run last --calls\n"
              "  spbox trace box --errors --since 5m",
          .check = [options] { check(*options); },
          .prepare =
              [options] {
                options->window = window_of_output();
                if (options->calls) options->inside = box::inhabitants(box::Place(options->box));
              },
          .act = [options] { return trace(*options); }};
}

}  // namespace spbox
