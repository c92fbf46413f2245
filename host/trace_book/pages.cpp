#include "host/trace_book/pages.h"

#include <algorithm>
#include <array>

#include "trace_events/db.h"
#include "trace_events/dialogue.h"
#include "trace_events/frame.h"
#include "trace_events/inventory.h"
#include "trace_events/model.h"
#include "trace_events/ops.h"
#include "trace_events/state.h"

namespace trace_book {
namespace {

template <class... All>
consteval std::array<Code, sizeof...(All)> entries_of(const trace_events::Room<All...> &) {
  return {All::kEntry...};
}
template <class Catalogue>
constexpr auto kEntries = entries_of(Catalogue{});

constexpr Room kRooms[] = {
    {"src/frame", frame_functions, kEntries<trace_events::Frame>},
    {"src/db", db_functions, kEntries<trace_events::Db>},
    {"src/model", model_functions, kEntries<trace_events::Model>},
    {"src/inventory", inventory_functions, kEntries<trace_events::Inventory>},
    {"src/ops", ops_functions, kEntries<trace_events::Ops>},
    {"src/dialogue", dialogue_functions, kEntries<trace_events::Dialogue>},
    {"src/state", state_functions, kEntries<trace_events::State>},
};

// No two functions of the library begin at the same place of a block.
consteval bool is_each_block_taken_once() {
  std::vector<Code> entries;
  for (const Room &room : kRooms) entries.insert(entries.end(), room.entries.begin(), room.entries.end());
  std::ranges::sort(entries);
  return std::ranges::adjacent_find(entries) == entries.end();
}
static_assert(is_each_block_taken_once());

// The bits of a code that say that it is an error's.
Code error_bits(Code code) {
  if (!trace_events::is_error(code)) return 0;
  return (code & trace_events::kSecondSpace) != 0 ? trace_events::kSecondError : trace_events::kPlainError;
}

// The code without what makes it an error: that of a point with the same number.
Code point_of(Code code) {
  return code & static_cast<Code>(~error_bits(code));
}

}  // namespace

std::span<const Room> rooms() {
  return kRooms;
}

const std::vector<Function> &all_functions() {
  static const auto all = [] {
    std::vector<Function> functions;
    for (const Room &room : kRooms) {
      const Functions its_own = room.functions();
      functions.insert(functions.end(), its_own.begin(), its_own.end());
    }
    return functions;
  }();
  return all;
}

std::optional<Code> code_of(std::uint32_t event) {
  constexpr std::uint32_t kLast = trace_events::kEventBase + 0xFFFF;
  if (event < trace_events::kEventBase || event > kLast) return std::nullopt;
  return static_cast<Code>(event - trace_events::kEventBase);
}

BlockNumber block_number_of(Code code) {
  const std::uint32_t point = point_of(code) & static_cast<Code>(~trace_events::kSecondSpace);
  return {point / trace_events::kEventsOfABlock, point % trace_events::kEventsOfABlock};
}

const Function *function_of(Code code) {
  const Code point = point_of(code);
  const Code block = point - point % trace_events::kEventsOfABlock;
  const Function *found = nullptr;
  for (const Function &function : all_functions()) {
    const Code entry = function.events[0].code;
    if (entry < block || entry > point) continue;
    if (found == nullptr || entry > found->events[0].code) found = &function;
  }
  return found;
}

const Event *event_of(const Function &function, Code code) {
  const auto found = std::ranges::find(function.events, code, &Event::code);
  return found == function.events.end() ? nullptr : &*found;
}

}  // namespace trace_book
