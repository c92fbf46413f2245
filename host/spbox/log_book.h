// The log in words: what an event says, and about which unit.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "host/box/event_log.h"
#include "host/box/place.h"

namespace spbox {

struct LogLine {
  std::string what;    // "unit replaced", or the event's code where the book does not have it
  std::string kind;    // what sort of unit, such as "fan tray"; empty for an event without one
  std::string unit;    // its location name, its two words where it has none, empty where the event names no unit
  std::string detail;  // the detail block in hexadecimal, empty without one
  unsigned code;
};

LogLine decode(std::uint32_t model, const box::LogEntry &entry);

// The same entry reads the same each time: "unit replaced  fan tray  /FAN_A#0".
std::string sentence_of(const LogLine &line);

// The log of a box, in which a command may have left anything: each entry in words, oldest first. Throws.
std::vector<std::string> log_of(const box::Place &place, const std::function<std::string(const LogLine &)> &in_words);

}  // namespace spbox
