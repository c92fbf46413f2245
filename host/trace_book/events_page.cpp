#include "host/trace_book/events_page.h"

#include <cstdio>

#include "host/trace_book/call_words.h"
#include "host/trace_book/pages.h"

namespace trace_book {
namespace {

constexpr char kHead[] =
    "# Trace events\n"
    "\n"
    "What the library writes into the trace, room by room. `./dev events` makes this page out of the catalogue "
    "in\n"
    "`trace_events/` and the phrases in `host/trace_book/`.\n"
    "\n"
    "A script of a technician names an event by its function and its name: `when trace lmainte_chk_fru_install entry`. "
    "Every\n"
    "function also has the event `exit`: its number is that of `entry` and one more. An internal step of a function "
    "stands\n"
    "behind it, as in `lmainte_exec:stop-child`. The last table has what the platform keeps beside them.\n";

std::string code_text(Code code) {
  char text[16];
  std::snprintf(text, sizeof text, "0x%08X", trace_events::kEventBase + code);
  return text;
}

std::string values_text(const Event &event) {
  std::string text = event.first.meaning == nullptr ? "" : event.first.meaning;
  if (event.second.meaning != nullptr) text += std::string(", ") + event.second.meaning;
  return text;
}

std::string row(const Event &event) {
  const std::string kind = trace_events::is_error(event.code) ? "error" : "point";
  return "| `" + std::string(event.name) + "` | " + kind + " | " + code_text(event.code) + " | " + event.text + " | " +
         values_text(event) + " |\n";
}

std::string section(const Function &function) {
  std::string text =
      "\n### " + function.title() + "\n\n| event | | number | it says | values |\n|---|---|---|---|---|\n";
  for (const Event &event : function.events) {
    if (event.name != "exit") text += row(event);
  }
  return text;
}

constexpr char kPlatform[] =
    "\n## The platform's records\n"
    "\n"
    "A box keeps what passes between a command and its platform in a ring of its own, `mgb/log/calls`, the last 8192 "
    "records.\n"
    "The trace in words has them among the library's, in the order in which they happened. They are not among the "
    "library's events:\n"
    "`when trace` does not find them, and `--json` leaves them out. Each has the time at which it began, how long it "
    "took, and its\n"
    "result; where the client is told an error, the result stands by its name.\n"
    "\n"
    "| who | function | it says |\n"
    "|---|---|---|\n";

std::string row(const CallRow &call) {
  const std::string function =
      call.function.empty() ? "the name of the program" : "`" + std::string(call.function) + "`";
  return "| " + std::string(call.party) + " | " + function + " | " + std::string(call.meaning) + " |\n";
}

}  // namespace

std::string events_page() {
  std::string page = kHead;
  for (const Room &room : rooms()) {
    page += "\n## " + std::string(room.folder) + "\n";
    for (const Function &function : room.functions()) page += section(function);
  }
  page += kPlatform;
  for (const CallRow &call : call_rows()) page += row(call);
  return page;
}

}  // namespace trace_book
