#include "host/spbox/log_book.h"

#include <algorithm>
#include <span>

#include "host/box/unit_name.h"
#include "host/spbox/text.h"

namespace spbox {
namespace {

constexpr std::uint8_t kMaintenance = 215, kMaintenanceForm = 2;
constexpr std::size_t kSourceAt = 8, kFormAt = 9, kCodeAt = 11, kIdAt = 19, kDetailAt = 29, kDetailSize = 18;

struct CodeRow {
  unsigned code;
  const char *what;
  unsigned kind;
};

constexpr const char *kReplaced = "unit replaced", *kAdded = "unit added", *kRemoved = "unit removed";
constexpr const char *kReplacedOrAdded = "unit replaced or added";  // some kinds have one code for both

constexpr CodeRow kCodes[] = {
    {1, kReplaced, 0},        {2, kAdded, 0},     {3, kRemoved, 0},         {4, kReplaced, 2},
    {5, kAdded, 2},           {6, kRemoved, 2},   {7, kReplacedOrAdded, 4}, {8, kReplacedOrAdded, 5},
    {9, kReplacedOrAdded, 6}, {10, kReplaced, 3}, {11, kAdded, 3},          {12, kRemoved, 3},
    {13, kReplaced, 1},       {14, kAdded, 1},    {15, kRemoved, 1},        {16, kReplaced, 7},
    {17, kAdded, 7},          {18, kRemoved, 7},
};

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
  if (entry.event[kSourceAt] != kMaintenance || entry.event[kFormAt] != kMaintenanceForm) return line;
  for (const CodeRow &row : kCodes) {
    if (row.code != code) continue;
    line.what = row.what;
    line.kind = "kind " + std::to_string(row.kind);
  }
  return line;
}

}  // namespace spbox
