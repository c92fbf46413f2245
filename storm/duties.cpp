#include "storm/duties.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <stdexcept>

#include "host/box/box_error.h"
#include "host/box/breakage.h"
#include "host/box/database.h"
#include "host/box/event_log.h"
#include "host/box/hardware.h"
#include "host/box/inventory.h"
#include "host/box/trace_ring.h"
#include "host/programs/control_programs.h"
#include "host/spbox/act.h"
#include "host/spbox/verbs.h"
#include "trace_events/frame.h"

namespace storm {
namespace {

using std::chrono::microseconds;

const std::string &any_unit(Hand &hand) {
  return one_of(hand.units, hand.random);
}

bool save_event(Hand &hand) {
  constexpr std::array<std::uint8_t, LMAINTE_HOST_EVENT_SIZE> kEvent{};
  const std::uint32_t head = hand.told.next_event++;
  if (!box::EventLog::append(hand.place.events(), head, kEvent)) throw std::runtime_error("an event cannot be saved");
  hand.told.acknowledge(head);
  return true;
}

std::uint32_t number_in(const box::Bytes &record) {
  std::uint32_t number = 0;
  if (record.size() != sizeof number) throw std::runtime_error("a number has another size than it was saved with");
  std::memcpy(&number, record.data(), sizeof number);
  return number;
}

bool count(Hand &hand) {
  box::Database general(hand.place.database(0)), local(hand.place.database(3)), reserved(hand.place.database(5));
  for (box::Database *database : {&general, &local, &reserved}) {
    if (!database->lock()) throw std::runtime_error(database->name().text() + " stays locked");
  }
  const auto before = general.get(kCountedRecord);
  const std::uint32_t number = (before ? number_in(*before) : 0) + 1;
  std::array<std::uint8_t, sizeof number> record{};
  std::memcpy(record.data(), &number, sizeof number);
  for (box::Database *database : {&general, &local, &reserved}) database->put(kCountedRecord, record);
  box::Database::unlock_together({&general, &local, &reserved});
  std::uint32_t told = hand.told.counted;
  while (told < number && !hand.told.counted.compare_exchange_weak(told, number)) continue;
  return true;
}

bool read_all(Hand &hand) {
  counted_in(hand.place);
  return true;
}

bool change(Hand &hand) {
  using box::Change;
  constexpr std::array kChanges{Change::kPull, Change::kInsert, Change::kFault, Change::kDegrade, Change::kRepair};
  box::Inventory(hand.place).change(one_of(kChanges, hand.random), {any_unit(hand)});
  return true;
}

bool mark(Hand &hand) {
  constexpr std::array kLights{"on", "off", "blink"};
  const std::string &unit = any_unit(hand);
  box::Hardware(hand.place).set_led(unit, one_of(kLights, hand.random));
  box::Inventory(hand.place).set_flag(unit, hand.random() % 2 == 0);
  return true;
}

// Any exit status will do but the one for a box that fails, where no record was broken on purpose.
bool run_program(Hand &hand) {
  constexpr std::array kPrograms{"detachfru", "testfru", "ctlled", "setmainteflag", "judgectlfru"};
  constexpr std::array kModes{"on", "blink", "start", "end", "add", "del"};
  const programs::Arguments arguments{{{'u', any_unit(hand)}, {'c', one_of(kModes, hand.random)}}, {}};
  box::Hardware hardware(hand.place);
  programs::Machine machine(hand.place, hardware);
  programs::find_program(one_of(kPrograms, hand.random))->act(arguments, machine);
  return true;
}

bool break_and_mend(Hand &hand) {
  const auto broken = box::broken_records(hand.place);
  if (broken.empty()) {
    const box::Inventory inventory(hand.place);
    const box::UnitPlace &unit = one_of(inventory.places(), hand.random);
    if (unit.entries.empty()) return true;
    box::break_records(hand.place, {box::find_record(hand.place, unit.entries.front().record)}, box::Breakage::kLong);
  } else {
    std::vector<box::RecordName> names;
    for (const box::BrokenRecord &record : broken) names.push_back(record.record);
    box::mend_records(hand.place, names);
  }
  return true;
}

bool trace(Hand &hand) {
  box::TraceRing ring;
  if (!ring.map(hand.place.trace().c_str())) throw std::runtime_error("the trace is no ring");
  constexpr std::uint32_t kEvent = trace_events::kEventBase + trace_events::Exec::kEntry;
  for (int i = 0; i < 20; ++i) {
    const auto any = static_cast<std::uint32_t>(hand.random());
    const std::array<std::uint32_t, 4> words{static_cast<std::uint32_t>(getpid()), 1, any, ~any};
    if (!ring.append(kModuleOfStorm, 0, 0, kEvent, words.data(), words.size()))
      throw std::runtime_error("a record of the trace cannot be written");
  }
  return true;
}

// What a verb tells people goes nowhere.
void be_silent() {
  const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
  if (nowhere < 0 || dup2(nowhere, STDOUT_FILENO) < 0 || dup2(nowhere, STDERR_FILENO) < 0)
    throw std::runtime_error("a verb has no output");
}

Words any_line(Hand &hand) {
  const std::string box = hand.place.root(), &unit = any_unit(hand);
  const std::array<Words, 9> lines{{{"units", box},
                                    {"show", box, unit},
                                    {"dump", box},
                                    {"fault", box, unit},
                                    {"repair", box, unit},
                                    {"pull", box, unit},
                                    {"insert", box, unit},
                                    {"program", box, "ctlled", "--delay", "1"},
                                    {"daemon", box, "late", "5"}}};
  return one_of(lines, hand.random);
}

// The verb confines the process, also where the box says why not: no other can follow.
bool do_verb(Hand &hand) {
  Words words = any_line(hand);
  const std::string name = words.front();
  words.erase(words.begin());
  const auto verbs = spbox::all_verbs();
  const auto verb = std::ranges::find(verbs, name, &spbox::Verb::name);
  be_silent();
  try {
    spbox::act(*verb, words);
  } catch (const box::BoxError &error) {
    if (*error.what() == '\0') throw std::runtime_error("a verb does not say why not");
  }
  return false;
}

constexpr std::array kDuties{
    Duty{"saves events", 4, microseconds(2000), save_event},
    Duty{"counts under locks", 4, microseconds(3000), count},
    Duty{"reads", 2, microseconds(3000), read_all},
    Duty{"changes units", 3, microseconds(6000), change},
    Duty{"marks units", 3, microseconds(6000), mark},
    Duty{"control programs", 3, microseconds(6000), run_program},
    Duty{"breaks and mends", 1, microseconds(6000), break_and_mend},
    Duty{"traces", 1, microseconds(1000), trace},
    Duty{"verbs", 2, microseconds(10000), do_verb},
};

}  // namespace

void Told::acknowledge(std::uint32_t head) {
  const std::uint32_t at = events++;
  if (at < kMostEvents) heads.at(at) = head;
}

std::uint32_t counted_in(const box::Place &place) {
  const auto all = box::Database::all_in(place.databases());
  std::vector<std::uint32_t> numbers;
  for (const std::uint32_t db_id : kCountedDatabases) {
    const auto found = all.at(db_id).find(kCountedRecord);
    numbers.push_back(found == all.at(db_id).end() ? 0 : number_in(found->second));
  }
  if (std::ranges::count(numbers, numbers.front()) != std::ssize(numbers))
    throw std::runtime_error("a change of several databases was saved in part");
  return numbers.front();
}

std::span<const Duty> duties() {
  return kDuties;
}

bool saves_events(const Duty &duty) {
  return duty.once == save_event;
}

}  // namespace storm
