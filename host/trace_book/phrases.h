// The words for what the library's functions record: a page for each function of the catalogue of trace events.
//
// A page has the function's name and a phrase for each of its events. Phrases that the functions of a room share stand
// once, under the event's name. What is missing, doubled or of another function does not compile.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <utility>

#include "host/trace_book/enumerators.h"
#include "trace_events/event.h"

namespace trace_book {

using trace_events::Code;

// How the number of a value is shown.
enum class Form {
  kNumber,
  kAnswer,
  kClientResult,
  kCommand,
  kDatabase,
  kErrno,
  kFanMode,
  kFlagMode,
  kLedMode,
  kMainteMode,
  kModel,
  kReportMode,
  kResult,
  kSignal,
  kTerminalMode,
  kUnitId,
  kWaitStatus
};

// What a value of a record means, and how it is shown. A value without a meaning is not there.
struct Value {
  const char *meaning = nullptr;  // "time limit"
  Form form = Form::kNumber;
};

inline constexpr Value kClientResult{"client's result", Form::kClientResult};
inline constexpr Value kCommand{"command", Form::kCommand};
inline constexpr Value kDatabase{"database", Form::kDatabase};
inline constexpr Value kErrno{"errno", Form::kErrno};
inline constexpr Value kModel{"model", Form::kModel};
inline constexpr Value kResult{"result", Form::kResult};  // of a function of the library
inline constexpr Value kSignal{"signal", Form::kSignal};
inline constexpr Value kUnitId{"unit id", Form::kUnitId};
inline constexpr Value kWaitStatus{"wait status", Form::kWaitStatus};

// A value as a page has it: most are plain numbers, and only their meaning is written.
struct Written {
  // NOLINTNEXTLINE(google-explicit-constructor)
  consteval Written(const char *meaning = nullptr) : value{meaning} {}
  // NOLINTNEXTLINE(google-explicit-constructor)
  consteval Written(Value value_) : value(value_) {}

  Value value;
};

// What happened, and what the values of the record are.
struct Phrase {
  Code code;
  const char *text;
  Written first = {};
  Written second = {};
};

struct SharedPhrase {
  std::string_view name;  // "no-time-limit"
  const char *text;
  Written first = {};
  Written second = {};
};

struct Event {
  Code code = 0;
  std::string_view name;
  const char *text = nullptr;
  Value first = {};
  Value second = {};
};

// A function, or an internal step of one. Its events begin with entry and exit.
struct Function {
  std::string_view name;   // "lmainte_exec", "lmainte_exec:stop-child"
  std::string_view other;  // of a second function whose events are the same
  std::span<const Event> events;

  // "lmainte_exec", or both names
  std::string title() const { return std::string(name) + (other.empty() ? "" : " or " + std::string(other)); }
};

// A function's name, and that of a second function whose events are the same.
struct Names {
  // NOLINTNEXTLINE(google-explicit-constructor): most have one
  consteval Names(const char *name_, const char *other_ = "") : name(name_), other(other_) {}

  const char *name;
  const char *other;
};

template <std::size_t Phrases>
struct Page {
  consteval explicit Page(Names names_) : names(names_) {}
  template <std::size_t Count>
  consteval Page(Names names_, const Phrase (&phrases_)[Count]) : names(names_), phrases(std::to_array(phrases_)) {}

  Names names;
  std::array<Phrase, Phrases> phrases{};
};
Page(Names)->Page<0>;
template <std::size_t Count>
Page(Names, const Phrase (&)[Count]) -> Page<Count>;

// The page of each function, a specialisation in the file of its room.
template <class Function>
inline constexpr std::nullptr_t kPage{};

// None of these is ever defined: their names are what the compiler says.
void an_event_has_no_phrase();
void an_event_has_two_phrases();
void a_phrase_is_of_another_function();
void a_shared_phrase_is_of_no_event();
void a_block_has_no_such_number();

constexpr std::size_t kMostEvents = std::size_t{2} * trace_events::kEventsOfABlock;

struct Events {
  std::array<Event, kMostEvents> all{};
  std::size_t count = 0;

  constexpr void add(Code code, std::string_view name) { all.at(count++) = {code, name}; }
};

struct Named {
  Code number;
  Dashed name;
};

// What has a name in an enumeration whose numbers are counted from `Base`.
template <class Enumeration, Code Base, std::size_t... Numbers>
consteval auto named_in(std::index_sequence<Numbers...>) {
  constexpr auto kNames = enumerators<static_cast<Enumeration>(Base + Numbers)...>();
  std::array<Named, kNames.size() - static_cast<std::size_t>(std::ranges::count(kNames, ""))> named;
  std::size_t count = 0;
  for (std::size_t number = 0; number < kNames.size(); ++number)
    if (!kNames[number].empty()) named[count++] = {static_cast<Code>(number), dashed(kNames[number])};
  return named;
}

template <class Enumeration, Code Base>
inline constexpr auto kNamed =
    named_in<Enumeration, Base>(std::make_index_sequence<trace_events::kEventsOfABlock + 1>());

constexpr void add_named(Events &events, std::span<const Named> all, Code base) {
  for (const Named &one : all) {
    if (one.number == trace_events::kEventsOfABlock) a_block_has_no_such_number();
    events.add(base + one.number, one.name.view());
  }
}

template <class Function>
consteval Events events_of() {
  Events events;
  events.add(Function::kEntry, "entry");
  events.add(Function::kExit, "exit");
  if constexpr (requires { typename Function::Point; })
    add_named(events, kNamed<typename Function::Point, Function::point(0)>, Function::point(0));
  if constexpr (requires { typename Function::Error; })
    add_named(events, kNamed<typename Function::Error, Function::error(0)>, Function::error(0));
  return events;
}

inline constexpr SharedPhrase kBounds[] = {{"entry", "entry"}, {"exit", "exit", kResult}};

template <class Function>
constexpr bool is_bound(Code code) {
  return code == Function::kEntry || code == Function::kExit;
}

constexpr void phrase(Event &event, const auto &phrase) {
  if (event.text != nullptr) an_event_has_two_phrases();
  event = {event.code, event.name, phrase.text, phrase.first.value, phrase.second.value};
}

// The events of a function with their phrases.
template <class Function>
consteval Events phrased(std::span<const SharedPhrase> shared) {
  Events events = events_of<Function>();
  std::size_t used = 0;
  for (std::size_t i = 0; i < events.count; ++i) {
    Event &event = events.all.at(i);
    for (const Phrase &row : kPage<Function>.phrases) {
      if (row.code != event.code) continue;
      phrase(event, row);
      ++used;
    }
    const bool has_own = event.text != nullptr;
    for (const SharedPhrase &row : is_bound<Function>(event.code) ? std::span<const SharedPhrase>(kBounds) : shared)
      if (row.name == event.name && !has_own) phrase(event, row);
    if (event.text == nullptr) an_event_has_no_phrase();
  }
  if (used != kPage<Function>.phrases.size()) a_phrase_is_of_another_function();
  return events;
}

template <class Function, const auto &Shared>
inline constexpr Events kEvents = phrased<Function>(Shared);

constexpr bool has_name(const Events &events, std::string_view name) {
  return std::ranges::any_of(events.all, [&](const Event &event) { return event.name == name; });
}

// The pages of a room, with what its functions share.
template <const auto &Shared, class... All>
consteval auto functions_of(const trace_events::Room<All...> &) {
  for (const SharedPhrase &row : Shared)
    if (!(has_name(kEvents<All, Shared>, row.name) || ...)) a_shared_phrase_is_of_no_event();
  return std::array{Function{
      kPage<All>.names.name, kPage<All>.names.other, {kEvents<All, Shared>.all.data(), kEvents<All, Shared>.count}}...};
}

using Functions = std::span<const Function>;

// Each stands in the file of its room; pages.cpp has the rooms.
Functions frame_functions();
Functions db_functions();
Functions model_functions();
Functions inventory_functions();
Functions ops_functions();
Functions dialogue_functions();
Functions state_functions();

}  // namespace trace_book
