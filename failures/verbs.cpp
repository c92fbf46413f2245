#include "failures/verbs.h"

namespace failures {
namespace {

// In a folder with `box`, a box of model qa in which somebody has worked; `qa.dump` and `qb1.dump`; `short.play`;
// `fault.rec`, a recording; and `kept`, a file with something else.
const std::vector<Line> kLines{
    {"help", {"help"}},
    {"help VERB", {"help", "play"}},
    {"create", {"create", "new", "--model", "qa"}},
    {"create --force", {"create", "box", "--model", "qb1", "--force"}},
    {.name = "run", .words = {"run", "box", "--", "echo", "done"}, .tells_more = true, .clears_up = true},
    {"units", {"units", "box"}},
    {"units --json", {"units", "box", "--json"}},
    {"show", {"show", "box", "/PSU#0"}},
    {"pull", {"pull", "box", "/PSU#0", "/MBU_A"}},
    {"insert", {"insert", "box", "/PSU#0"}, {"pull", "box", "/PSU#0"}},
    {"fault", {"fault", "box", "/PSU#0"}},
    {"degrade", {"degrade", "box", "/FAN_A#0"}},
    {"repair", {"repair", "box", "/PSU#0"}, {"fault", "box", "/PSU#0"}},
    {"technician", {"technician", "box", "--do", "fault /PSU#0"}},
    {.name = "play",
     .words = {"play", "short.play", "--transcript", "play.txt", "--picture", "play.svg"},
     .written = {"play.txt", "play.svg"},
     .tells_more = true,
     .clears_up = true},
    {"program", {"program", "box", "ctlled", "--exit", "3"}},
    {"program, shown", {"program", "box"}},
    {"daemon", {"daemon", "box", "late", "5"}},
    {"daemon, shown", {"daemon", "box"}},
    {"break", {"break", "box", "/PSU#0", "/FAN_A#0", "--short"}},
    {"mend", {"mend", "box"}, {"break", "box", "/PSU#0", "--missing"}},
    {"status", {"status", "box"}, {"break", "box", "/PSU#0", "--short"}},
    {"edit", {"edit", "box", "/PSU#0", "0:00"}},
    {"times", {"times", "box", "ctlled", "2"}},
    {"model", {"model", "box", "unknown"}},
    {"deviate", {"deviate", "box", "log", "--refused"}},
    {"points", {"points", "box"}, {"deviate", "box", "log", "--refused"}},
    {"watch", {"watch", "box", "--once"}},
    {"trace", {"trace", "box"}},
    {"log", {"log", "box"}},
    {"replay", {"replay", "fault.rec"}},
    {.name = "replay --report",
     .words = {"replay", "fault.rec", "--report", "fault.html"},
     .written = {"fault.html"},
     .clears_up = true},
    {"dump", {"dump", "box"}},
    {"dump FILE", {"dump", "box", "kept"}},
    {"new", {"new", "fan_check"}},
    {"load", {"load", "qa.dump", "new"}},
    {"load --force", {"load", "qb1.dump", "box", "--force"}},
};

}  // namespace

std::span<const Line> lines() {
  return kLines;
}

}  // namespace failures
