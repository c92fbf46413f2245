#include "storm/actors.h"

#include <array>

#include "storm/tally.h"

namespace storm {
namespace {

Words change(const Subject &subject, Random &random) {
  constexpr std::array kVerbs{"pull", "insert", "fault", "degrade", "repair"};
  return {SPBOX, one_of(kVerbs, random), subject.box, subject.unit};
}
Words bend(const Subject &subject, Random &random) {
  constexpr std::array kPrograms{"ctlled", "detachfru", "testfru", "setmainteflag"};
  const std::array<Words, 3> bends{{{"--reset"}, {"--exit", "3"}, {"--delay", "1"}}};
  Words words{SPBOX, "program", subject.box, one_of(kPrograms, random)};
  const Words &bend = one_of(bends, random);
  words.insert(words.end(), bend.begin(), bend.end());
  return words;
}
Words break_record(const Subject &subject, Random &) {
  return {SPBOX, "break", subject.box, subject.unit, "--short"};
}
Words mend_records(const Subject &subject, Random &) {
  return {SPBOX, "mend", subject.box};
}
Words read_units(const Subject &subject, Random &) {
  return {SPBOX, "units", subject.box};
}
Words write_dump(const Subject &subject, Random &) {
  return {SPBOX, "dump", subject.box, subject.dump};
}
Words run_program(const Subject &subject, Random &random) {
  constexpr std::array kStates{"on", "off", "blink"};
  return {SPBOX, "run", subject.box, "--", "/mgb/bin/ctlled", "-u", subject.unit, "-c", one_of(kStates, random)};
}
Words run_processes(const Subject &subject, Random &) {
  return {
      SPBOX, "run", subject.box, "--", "sh", "-c", "sleep 30 & a=$!; setsid sleep 30 & b=$!; sleep 0.05; kill $a $b"};
}
Words save_events(const Subject &subject, Random &) {
  return {"/usr/bin/env", "SPBOX_ROOT=" + subject.box, SAVE_EVENTS, std::to_string(subject.next_event)};
}
Words create_box(const Subject &subject, Random &) {
  return {SPBOX, "create", subject.box, "--model", subject.model, "--force"};
}
Words load_box(const Subject &subject, Random &) {
  return {SPBOX, "load", subject.first_dump, subject.box, "--force"};
}
Words play(const Subject &subject, Random &random) {
  constexpr std::array kPlays{"models/qa", "wrong/given_up", "wrong/no_model"};
  return {"/usr/bin/env", "TMPDIR=" + subject.folder, SPBOX, "play",
          std::string(PLAYS "/") + one_of(kPlays, random) + ".play"};
}

using Place = Actor::Place;
constexpr std::array kActors{
    Actor{"change", 12, Place::kBox, change},
    Actor{"save events", 6, Place::kBox, save_events},
    Actor{"bend", 4, Place::kBox, bend},
    Actor{"break", 2, Place::kBox, break_record},
    Actor{"mend", 2, Place::kBox, mend_records},
    Actor{"units", 2, Place::kBox, read_units},
    Actor{"dump", 2, Place::kBox, write_dump},
    Actor{"control program", 4, Place::kBox, run_program},
    Actor{"processes", 1, Place::kBox, run_processes},
    Actor{"create", 2, Place::kAlone, create_box},
    Actor{"load", 2, Place::kAlone, load_box},
    Actor{"play", 1, Place::kOwn, play},
};
static_assert(kActors.size() <= kMostActors);

}  // namespace

std::span<const Actor> actors() {
  return kActors;
}

std::size_t any_actor(Random &random) {
  static const auto all = [] {
    std::vector<unsigned> weights;
    for (const Actor &actor : kActors) weights.push_back(actor.weight);
    return std::discrete_distribution<std::size_t>(weights.begin(), weights.end());
  }();
  auto distribution = all;
  return distribution(random);
}

bool saves_events(const Actor &actor) {
  return actor.command == save_events;
}

bool may_end_with(const Actor &actor, int exit_status) {
  const bool is_signal = exit_status > 128 && exit_status < 128 + 64;
  return actor.command == run_program ? !is_signal : exit_status <= 1;
}

}  // namespace storm
