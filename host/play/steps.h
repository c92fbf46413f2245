// The steps that a script may have: how each is written, and what it is for.
#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace play {

using Words = std::vector<std::string>;

// What only the program knows that plays the script.
struct Checks {
  std::vector<std::string> verbs;  // of spbox, those that work on a box
  std::function<void(const std::string &steps)>
      check_hands;  // throws where a technician would not understand the steps
};

struct StepForm {
  std::string_view verb;
  std::size_t fewest, most;  // words behind the verb
  std::string_view written;  // "exit STATUS"
  std::string_view meaning;  // for the help, in lines of at most 50 characters

  // Throws std::invalid_argument with what is wrong with the words. Null: any words will do.
  void (*check)(const Words &words, const Checks &checks);
};

// In the order of the help. `play` is one of them, though it is no step of the player's: the reader replaces it.
std::span<const StepForm> step_forms();

// The names of all of them: "box, terminal, ... and pause".
std::string step_names();

// What the words of checked steps stand for.
std::chrono::milliseconds seconds_of(const std::string &word);
int whole_number_of(const std::string &word);
std::span<const std::string> units_in_order(const Words &words);  // those behind `but`

}  // namespace play
