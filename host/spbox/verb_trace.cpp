// What commands did in the box: the library's records and the platform's calls.
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <memory>
#include <set>

#include "host/base/descriptor.h"
#include "host/box/call_ring.h"
#include "host/box/contents.h"
#include "host/box/inhabitants.h"
#include "host/box/own_files.h"
#include "host/box/trace_ring.h"
#include "host/spbox/bent_text.h"
#include "host/spbox/json.h"
#include "host/spbox/standard_output.h"
#include "host/spbox/text.h"
#include "host/spbox/trace_choice.h"
#include "host/spbox/trace_tree.h"
#include "host/spbox/verbs.h"
#include "host/trace_book/history.h"
#include "host/trace_book/trace_book.h"

namespace spbox {
namespace {

using trace_book::History;
using trace_book::Moment;
using trace_book::TraceLine;
using trace_book::TraceValue;

// A box of an older spbox has no calls. What is damaged costs the calls and not the trace.
std::vector<box::CallEntry> calls_of(const box::Place &place) {
  struct stat status {};
  if (lstat(place.calls().c_str(), &status) != 0 && errno == ENOENT) return {};
  try {
    return box::CallRing::read(place.calls());
  } catch (const std::runtime_error &error) {
    complain(std::string(error.what()) + (std::string(error.what()).ends_with('.') ? "" : ".") +
             " The library's records are shown without the platform's.");
    return {};
  }
}

struct Rings {
  std::vector<box::TraceEntry> records;
  std::vector<box::CallEntry> calls;
};

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

// "a child was started: time limit 10, child 4711"
std::string text_of(const TraceLine &line) {
  std::string text = line.event;
  for (const TraceValue &value : line.values) {
    text += (&value == &line.values.front() ? ": " : ", ") + value.meaning + " " + value.text;
  }
  return text;
}

template <typename Entry>
void keep_last(std::vector<Entry> &entries, std::size_t last) {
  if (last > 0 && entries.size() > last) entries.erase(entries.begin(), entries.end() - static_cast<long>(last));
}

// The records of the library that are wanted, with their numbers as ever.
int print_json(const Rings &rings, const History &history, const TraceOptions &options) {
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
  print(Json(list).text());
  return 0;
}

std::vector<std::string> cells_of(const Moment &moment) {
  return {time_of_day(moment.time_ns), std::to_string(moment.pid), moment.level, moment.function, moment.text};
}

std::vector<const Moment *> shown_of(const History &history, const TraceOptions &options) {
  const Wanted wanted(options, history);
  std::vector<const Moment *> moments;
  for (const Moment &moment : history.moments()) {
    if (!moment.is_void && wanted.has(moment)) moments.push_back(&moment);
  }
  return moments;
}

bool is_narrowed(const TraceOptions &options) {
  return options.pid != 0 || !options.run.empty() || !options.function.empty() || !options.since.empty();
}

void tell_of_none(const History &history, const TraceOptions &options) {
  if (history.moments().empty() && !options.errors) {
    print_line("The trace is empty: the library has recorded nothing in this box yet.");
  } else if (is_narrowed(options)) {
    print_line(options.errors ? "The trace holds no such error." : "The trace holds nothing of this.");
  } else {
    print_line("The trace holds no error.");
  }
}

int print_list(const History &history, const TraceOptions &options) {
  std::vector<const Moment *> moments = shown_of(history, options);
  keep_last(moments, options.last);
  if (moments.empty()) {
    tell_of_none(history, options);
    return 0;
  }
  std::vector<std::vector<std::string>> lines{{"Time", "Pid", "Level", "Function", "Event"}};
  for (const Moment *moment : moments) lines.push_back(cells_of(*moment));
  print(aligned(lines));
  return 0;
}

int print_tree(const History &history, const TraceOptions &options) {
  std::vector<const Moment *> moments = in_tree(shown_of(history, options), options);
  keep_last(moments, options.last);
  if (moments.empty()) {
    tell_of_none(history, options);
  } else {
    print(call_tree(history, moments, options));
  }
  return 0;
}

Rings rings_of(const box::Place &place) {
  Rings rings;
  rings.records = box::TraceRing::read(place.trace());
  rings.calls = calls_of(place);
  return rings;
}

// Whether the reader of what is printed is still there, after a tenth of a second.
bool waits_for_more() {
  constexpr int kLook = 100;
  pollfd reader{.fd = STDOUT_FILENO, .events = 0, .revents = 0};
  return poll(&reader, 1, kLook) == 0;
}

// Prints what comes, until the reader is gone or somebody interrupts. A ring that is made anew begins at its front.
class Following {
 public:
  explicit Following(const TraceOptions &options) : options_(options), place_(options.box) {}

  int go() {
    bool is_first = true;
    do {
      look(is_first);
      is_first = false;
    } while (std::fflush(stdout) == 0 && waits_for_more());
    return 0;
  }

 private:
  void look(bool is_first) {
    const ino_t ring = ring_now();
    if (!is_first && ring == 0) return;  // between two rings
    const std::string counts = count_in(place_.trace()) + count_in(place_.calls());
    const bool is_new = ring != ring_ || counts != counts_;
    // A record that was still being written when its ring was read is looked for once more.
    if (!is_new && !was_new_) return;
    was_new_ = is_new;
    counts_ = counts;
    if (ring != ring_) {
      if (ring_ != 0) print_line("-- The trace was made anew. --");
      records_.clear();
      calls_.clear();
      ring_ = ring;
    }
    const Rings rings = rings_of(place_);
    const History history(rings.records, rings.calls, box::model_in(place_));
    show(history, is_first);
    records_ = numbers_of(rings.records);
    calls_ = numbers_of(rings.calls);
  }

  // In ascending order.
  static std::vector<std::uint64_t> numbers_of(const auto &entries) {
    std::vector<std::uint64_t> numbers;
    for (const auto &entry : entries) numbers.push_back(entry.number);
    return numbers;
  }

  // The bytes of the file that change with each record.
  static std::string count_in(const std::filesystem::path &file) {
    const base::Descriptor ring(open(file.c_str(), O_RDONLY | box::kOwnFile));
    std::string bytes(sizeof(std::uint64_t), '\0');
    const ssize_t size = pread(ring.get(), bytes.data(), bytes.size(), box::TraceRing::kCountAt);
    return size == static_cast<ssize_t>(bytes.size()) ? bytes : "";
  }

  ino_t ring_now() const {
    struct stat status {};
    return lstat(place_.trace().c_str(), &status) == 0 ? status.st_ino : 0;
  }

  void show(const History &history, bool is_first) {
    std::vector<const Moment *> moments = shown_of(history, options_);
    std::erase_if(moments, [&](const Moment *moment) {
      return std::ranges::binary_search(moment->is_of_library ? records_ : calls_, moment->number);
    });
    if (is_first) keep_last(moments, options_.last);
    std::vector<std::vector<std::string>> lines;
    // Widths that stay from one look to the next.
    lines.push_back({std::string(15, 'x'), std::string(7, 'x'), std::string(12, 'x'), std::string(30, 'x'), ""});
    if (is_first) lines.push_back({"Time", "Pid", "Level", "Function", "Event"});
    for (const Moment *moment : moments) lines.push_back(cells_of(*moment));
    const std::string text = aligned(lines);
    print(text.substr(text.find('\n') + 1));
  }

  const TraceOptions &options_;
  box::Place place_;
  ino_t ring_ = 0;
  std::string counts_;
  bool was_new_ = true;
  std::vector<std::uint64_t> records_, calls_;  // those that were there at the last look
};

int trace(const TraceOptions &options) {
  const box::Place place(options.box);
  box::check_is_box(place);
  if (options.follow) return Following(options).go();
  const Rings rings = rings_of(place);
  const History history(rings.records, rings.calls, box::model_in(place));
  if (options.as_json) return print_json(rings, history, options);
  return options.calls ? print_tree(history, options) : print_list(history, options);
}

}  // namespace

std::string trace_text(const box::TraceEntry &entry) {
  const TraceLine line = trace_book::words_of(entry);
  return line.function + ": " + text_of(line);
}

Verb trace_verb() {
  auto options = std::make_shared<TraceOptions>();
  return {.name = "trace",
          .line = "Show what commands did, in words",
          .works_on_box = true,
          .words = {box_word(options->box),
                    {.name = "--last",
                     .help = "Only so many, the newest",
                     .to = number(options->last, 1, box::TraceRing::kSlots),
                     .value = "COUNT"},
                    json_option(options->as_json),
                    {.name = "--errors", .help = "Only errors", .to = &options->errors},
                    {.name = "--run",
                     .help = "Of one run of a command: last, its number, or the\ncommand's name for its last run",
                     .to = &options->run,
                     .value = "RUN"},
                    {.name = "--pid",
                     .help = "Of one process",
                     .to = number(options->pid, 1, INT32_MAX),
                     .value = "PROCESS"},
                    {.name = "--function",
                     .help = "Of one function, with its internal steps, or one control\nprogram",
                     .to = &options->function,
                     .value = "NAME"},
                    {.name = "--since",
                     .help = "From a time on, such as 14:05:30, or 30s, 5m, 2h ago",
                     .to = &options->since,
                     .value = "TIME"},
                    {.name = "--calls",
                     .help = "As a tree: which function called which, and how long it\ntook",
                     .to = &options->calls,
                     .excludes = {"--json", "-f"}},
                    {.name = "-f",
                     .help = "Go on with what comes, until Ctrl-C",
                     .to = &options->follow,
                     .excludes = {"--json"}}},
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
                if (options->calls) options->inside = box::inhabitants(box::Place(options->box));
              },
          .act = [options] { return trace(*options); }};
}

}  // namespace spbox
