// What commands reported: the log.
#include <algorithm>
#include <memory>
#include <utility>

#include "host/box/contents.h"
#include "host/spbox/answer.h"
#include "host/spbox/log_book.h"
#include "host/spbox/standard_output.h"
#include "host/spbox/text.h"
#include "host/spbox/verbs.h"

namespace spbox {
namespace {

struct LogOptions {
  std::filesystem::path box;
  std::size_t last = 0;  // 0: all
  Window window;
};

// In a window, what has no room goes on below the event.
void print_table(std::vector<std::vector<std::string>> lines, const Window &window) {
  bool is_head = true;
  for (const std::string &line : aligned_lines(std::move(lines), window.columns, 2)) {
    print_in(std::exchange(is_head, false) ? Ink::kHead : Ink::kPlain, line + "\n", window);
  }
}

// Beside what is printed, so that scripts can read that.
void tell_of(const box::EventLog::Damage &damage) {
  if (damage.bytes == 0) return;
  const std::string places = damage.places == 1 ? " place: " : " places: ";
  const std::string bytes = damage.bytes == 1 ? " byte belongs" : " bytes belong";
  complain("the log is damaged in " + std::to_string(damage.places) + places + std::to_string(damage.bytes) + bytes +
           " to no whole entry.");
}

int log(const LogOptions &options) {
  const box::Place place(options.box);
  const std::uint32_t model = box::model_of_box(place);
  box::EventLog::Damage damage;
  std::vector<box::LogEntry> entries = box::EventLog::read(place.events(), &damage);
  const std::size_t last = options.last == 0 ? entries.size() : std::min(options.last, entries.size());
  entries.erase(entries.begin(), entries.end() - static_cast<long>(last));
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
  if (is_for_script()) {
    answer({{"entries", list}});
  } else if (entries.empty()) {
    print_line(damage.bytes == 0 ? "The log is empty." : "The log holds no whole entry.");
  } else {
    print_table(std::move(lines), options.window);
  }
  tell_of(damage);
  return 0;
}

constexpr std::int64_t kMostEntries = 65536;

Word last_option(LogOptions &options) {
  return {.name = "--last",
          .help = "Only so many, the newest",
          .to = number(options.last, 1, kMostEntries),
          .value = "COUNT"};
}

}  // namespace

Verb log_verb() {
  auto options = std::make_shared<LogOptions>();
  return {.name = "log",
          .line = "Show the service processor's log, in words",
          .works_on_box = true,
          .words = {box_word(options->box), last_option(*options)},
          .footer = "Example:\n  spbox log box --json",
          .prepare = [options] { options->window = window_of_output(); },
          .act = [options] { return log(*options); }};
}

}  // namespace spbox
