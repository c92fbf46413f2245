// The log in words: what an event says, and about which unit.
#pragma once

#include <string>

#include "host/box/event_log.h"

namespace spbox {

struct LogLine {
  std::string what;    // "unit replaced", or the event's code where the book does not have it
  std::string kind;    // what sort of unit, such as "fan tray"; empty for an event without one
  std::string unit;    // its location name, its two words where it has none, empty where the event names no unit
  std::string detail;  // the detail block in hexadecimal, empty without one
  unsigned code;
};

LogLine decode(std::uint32_t model, const box::LogEntry &entry);

}  // namespace spbox
