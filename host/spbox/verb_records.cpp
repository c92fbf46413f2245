// What commands left behind in the box: the trace and the log.
#include <memory>

#include "host/box/contents.h"
#include "host/box/trace_ring.h"
#include "host/spbox/bent_text.h"
#include "host/spbox/json.h"
#include "host/spbox/log_book.h"
#include "host/spbox/standard_output.h"
#include "host/spbox/text.h"
#include "host/spbox/verbs.h"
#include "host/trace_book/trace_book.h"

namespace spbox {
namespace {

using trace_book::TraceLine;
using trace_book::TraceValue;

struct RecordsOptions {
  std::filesystem::path box;
  std::size_t last = 0;  // 0: all
  bool as_json = false, errors = false;
};

template <typename Entry>
void keep_last(std::vector<Entry> &entries, std::size_t last) {
  if (last > 0 && entries.size() > last) entries.erase(entries.begin(), entries.end() - static_cast<long>(last));
}

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

}  // namespace

std::string trace_text(const box::TraceEntry &entry) {
  const TraceLine line = trace_book::words_of(entry);
  return line.function + ": " + text_of(line);
}

namespace {

std::vector<std::string> cells_of(const box::TraceEntry &entry) {
  const TraceLine line = trace_book::words_of(entry);
  return {time_of_day(entry.time_ns), std::to_string(line.pid), line.level, line.function, text_of(line)};
}

bool is_error(const box::TraceEntry &entry) {
  return trace_book::words_of(entry).is_error;
}

int trace(const RecordsOptions &options) {
  const box::Place place(options.box);
  box::check_is_box(place);
  std::vector<box::TraceEntry> entries = box::TraceRing::read(place.trace());
  if (options.errors) std::erase_if(entries, [](const box::TraceEntry &entry) { return !is_error(entry); });
  keep_last(entries, options.last);
  if (options.as_json) {
    Json::List list;
    for (const box::TraceEntry &entry : entries) list.push_back(trace_json(entry));
    print(Json(list).text());
    return 0;
  }
  std::vector<std::vector<std::string>> lines{{"Time", "Pid", "Level", "Function", "Event"}};
  for (const box::TraceEntry &entry : entries) lines.push_back(cells_of(entry));
  if (entries.empty()) {
    print_line(options.errors ? "The trace holds no error."
                              : "The trace is empty: the library has recorded nothing in this box yet.");
  } else {
    print(aligned(lines));
  }
  return 0;
}

// Beside what is printed, so that scripts can read that.
void tell_of(const box::EventLog::Damage &damage) {
  if (damage.bytes == 0) return;
  const std::string places = damage.places == 1 ? " place: " : " places: ";
  const std::string bytes = damage.bytes == 1 ? " byte belongs" : " bytes belong";
  complain("the log is damaged in " + std::to_string(damage.places) + places + std::to_string(damage.bytes) + bytes +
           " to no whole entry.");
}

int log(const RecordsOptions &options) {
  const box::Place place(options.box);
  const std::uint32_t model = box::model_of_box(place);
  box::EventLog::Damage damage;
  std::vector<box::LogEntry> entries = box::EventLog::read(place.events(), &damage);
  keep_last(entries, options.last);
  Json::List list;
  std::vector<std::vector<std::string>> lines{{"Time", "Pid", "Event", "Kind", "Unit", "Detail"}};
  for (const box::LogEntry &entry : entries) {
    const LogLine line = decode(model, entry);
    lines.push_back(
        {date_and_time(entry.time_ns), std::to_string(entry.pid), line.what, line.kind, line.unit, line.detail});
    list.push_back(Json::Object{{"time", utc(entry.time_ns)},
                                {"pid", entry.pid},
                                {"head", hexadecimal(entry.head)},
                                {"code", line.code},
                                {"what", line.what},
                                {"kind", line.kind},
                                {"unit", line.unit},
                                {"detail", line.detail}});
  }
  if (options.as_json) {
    print(Json(list).text());
  } else if (entries.empty()) {
    print_line(damage.bytes == 0 ? "The log is empty." : "The log holds no whole entry.");
  } else {
    print(aligned(lines));
  }
  tell_of(damage);
  return 0;
}

Word last_option(RecordsOptions &options) {
  return {.name = "--last",
          .help = "Only so many, the newest",
          .to = number(options.last, 1, box::TraceRing::kSlots),
          .value = "COUNT"};
}

}  // namespace

Verb trace_verb() {
  auto options = std::make_shared<RecordsOptions>();
  return {.name = "trace",
          .line = "Show what the library recorded, in words",
          .works_on_box = true,
          .words = {box_word(options->box),
                    last_option(*options),
                    json_option(options->as_json),
                    {.name = "--errors", .help = "Only errors", .to = &options->errors}},
          .footer = "The trace keeps the last " + std::to_string(box::TraceRing::kSlots) +
                    " records of all commands.\n\n"
                    "Examples:\n"
                    "  spbox trace box --last 20\n"
                    "  spbox trace box --errors",
          .act = [options] { return trace(*options); }};
}

Verb log_verb() {
  auto options = std::make_shared<RecordsOptions>();
  return {.name = "log",
          .line = "Show the service processor's log, in words",
          .works_on_box = true,
          .words = {box_word(options->box), last_option(*options), json_option(options->as_json)},
          .footer = "Example:\n  spbox log box --json",
          .act = [options] { return log(*options); }};
}

}  // namespace spbox
