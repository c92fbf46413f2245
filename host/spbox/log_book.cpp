#include "host/spbox/log_book.h"

#include <algorithm>
#include <iterator>
#include <span>
#include <sstream>

#include "host/box/confinement.h"
#include "host/box/contents.h"
#include "host/box/unit_name.h"
#include "host/include/lmainte_host.h"
#include "host/spbox/text.h"
#include "include/lmainte_procedure.h"

namespace spbox {
namespace {

constexpr std::uint8_t kMaintenance = LMAINTE_LEFT_SOURCE, kChanged = 2, kLeft = LMAINTE_LEFT_FORM;
constexpr std::size_t kSourceAt = LMAINTE_LEFT_SOURCE_AT, kFormAt = LMAINTE_LEFT_FORM_AT,
                      kCodeAt = LMAINTE_LEFT_CODE_AT, kIdAt = LMAINTE_LEFT_UNIT_AT;
constexpr std::size_t kDetailAt = 29, kDetailSize = 18;  // of what was changed

static_assert(int{LMAINTE_LEFT_SIZE} == int{LMAINTE_HOST_EVENT_SIZE} &&
              int{LMAINTE_LEFT_HEAD} == int{LMAINTE_HOST_EVENT_HEAD});

struct CodeRow {
  unsigned code;
  const char *what;
  const char *kind;
};

constexpr const char *kCmu = "CPU/memory unit", *kIou = "I/O unit", *kFan = "fan tray", *kPsu = "power supply";
constexpr const char *kDdc = "DDC unit", *kServer = "server";
constexpr const char *kReplaced = "unit replaced", *kAdded = "unit added", *kRemoved = "unit removed";
constexpr const char *kReplacedOrAdded = "unit replaced or added";  // some kinds have one code for both

constexpr CodeRow kChanges[] = {
    {1, kReplaced, kCmu},
    {2, kAdded, kCmu},
    {3, kRemoved, kCmu},
    {4, kReplaced, kFan},
    {5, kAdded, kFan},
    {6, kRemoved, kFan},
    {7, kReplacedOrAdded, "kind 4"},  // no unit that the library knows is of these three kinds
    {8, kReplacedOrAdded, "kind 5"},
    {9, kReplacedOrAdded, "kind 6"},
    {10, kReplaced, kPsu},
    {11, kAdded, kPsu},
    {12, kRemoved, kPsu},
    {13, kReplaced, kIou},
    {14, kAdded, kIou},
    {15, kRemoved, kIou},
    {16, kReplaced, kDdc},
    {17, kAdded, kDdc},
    {18, kRemoved, kDdc},
};

// What a procedure left undone. Which kind of unit it is its location tells.
constexpr CodeRow kLeftovers[] = {
    {LMAINTE_LEFT_EMPTY, "place left empty", ""},
    {LMAINTE_LEFT_OUT, "unit left out of operation", ""},
    {LMAINTE_LEFT_IN_DOUBT, "unit perhaps left out of operation", ""},
    {LMAINTE_LEFT_REJECTED, "unit left out of operation, not passed", ""},
    {LMAINTE_LEFT_UNTESTED, "unit left untested", ""},
    {LMAINTE_LEFT_UNCHECKED, "unit left in operation, not checked to the end", ""},
    {LMAINTE_LEFT_UNKNOWN, "unit left in an unknown state", ""},
    {LMAINTE_LEFT_MARKED, "LED, maintenance flag or fans left switched", ""},
    {LMAINTE_LEFT_IN_MODE, "left in maintenance mode", kServer},
};

struct PlaceRow {
  std::string_view begin;
  const char *kind;
};
constexpr PlaceRow kPlaces[] = {{"/CMU#", kCmu}, {"/IOU#", kIou}, {"/FAN", kFan},
                                {"/PSU#", kPsu}, {"/DDC", kDdc},  {"/EMGB", "service processor unit"}};

std::string kind_by_place(const std::string &unit) {
  const auto *const row =
      std::ranges::find_if(kPlaces, [&](const PlaceRow &each) { return unit.starts_with(each.begin); });
  return row == std::end(kPlaces) || unit.find('/', 1) != std::string::npos ? "" : row->kind;
}

std::span<const CodeRow> codes_of(std::uint8_t form) {
  if (form == kChanged) return kChanges;
  if (form == kLeft) return kLeftovers;
  return {};
}

std::uint32_t word(const box::LogEntry &entry, std::size_t at) {
  std::uint32_t value = 0;
  for (std::size_t i = 0; i < 4; ++i) value = value << 8U | entry.event.at(at + i);
  return value;
}

std::string unit_of(std::uint32_t model, const box::LogEntry &entry) {
  const box::UnitId id{word(entry, kIdAt), word(entry, kIdAt + 4)};
  if (id[0] == 0 && id[1] == 0) return "";
  return box::unit_name(model, id).value_or(hexadecimal(id[0]) + " " + hexadecimal(id[1]));
}

std::string detail_of(const box::LogEntry &entry) {
  const auto detail = std::span(entry.event).subspan(kDetailAt, kDetailSize);
  if (std::ranges::all_of(detail, [](std::uint8_t byte) { return byte == 0; })) return "";
  std::string text;
  for (const std::uint8_t byte : detail) text += hexadecimal(byte, 2).substr(2);
  return text;
}

}  // namespace

LogLine decode(std::uint32_t model, const box::LogEntry &entry) {
  const unsigned code = entry.event[kCodeAt];
  LogLine line{"event " + std::to_string(code), "", unit_of(model, entry), detail_of(entry), code};
  line.kind = kind_by_place(line.unit);
  const unsigned form = entry.event[kFormAt];
  if (entry.event[kSourceAt] != kMaintenance) return line;
  if (form >= LMAINTE_LOG_OWN) line.what += " of form " + std::to_string(form);
  for (const CodeRow &row : codes_of(entry.event[kFormAt])) {
    if (row.code != code) continue;
    line.what = row.what;
    if (*row.kind != '\0') line.kind = row.kind;
  }
  return line;
}

std::string sentence_of(const LogLine &line) {
  return line.what + "  " + line.kind + "  " + line.unit;
}

std::vector<std::string> log_of(const box::Place &place, const std::function<std::string(const LogLine &)> &in_words) {
  std::istringstream lines(box::in_confinement(place, [&] {
    const std::uint32_t model = box::model_of_box(place);
    std::string text;
    for (const box::LogEntry &entry : box::EventLog::read(place.events()))
      text += in_words(decode(model, entry)) + "\n";
    return text;
  }));
  std::vector<std::string> log;
  for (std::string line; std::getline(lines, line);) log.push_back(line);
  return log;
}

}  // namespace spbox
