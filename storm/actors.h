// Who works in a box while the storm goes on: a row for each kind of work.
#pragma once

#include <cstdint>
#include <random>
#include <span>
#include <string>
#include <vector>

namespace storm {

using Random = std::mt19937_64;
using Words = std::vector<std::string>;

// One of them, each as likely as the others.
template <typename Choices>
const auto &one_of(const Choices &choices, Random &random) {
  return *(std::begin(choices) + std::uniform_int_distribution<std::ptrdiff_t>(
                                     0, static_cast<std::ptrdiff_t>(std::size(choices)) - 1)(random));
}

// What the command of an actor is about.
struct Subject {
  std::string box, model, unit;
  std::string first_dump, dump;  // the box as it was made; what is dumped meanwhile
  std::string folder;            // for boxes of their own
  std::uint32_t next_event;
};

struct Actor {
  enum class Place {
    kBox,    // works beside others
    kAlone,  // makes the box anew: nobody else is there
    kOwn     // has a box of its own
  };
  const char *name;
  unsigned weight;  // how often, among all
  Place place;
  Words (*command)(const Subject &subject, Random &random);
};

std::span<const Actor> actors();

// The number of a row in actors(), each as likely as its weight says.
std::size_t any_actor(Random &random);

bool saves_events(const Actor &actor);

// Whether an actor that was not killed may end so: a verb does what is asked or says why not, a control program has results of
// its own, and neither crashes.
bool may_end_with(const Actor &actor, int exit_status);

}  // namespace storm
