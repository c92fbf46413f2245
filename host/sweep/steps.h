// What a sweep asks of a step of a play, and how a play writes it.
#pragma once

#include <cstdint>
#include <filesystem>
#include <initializer_list>
#include <string_view>
#include <vector>

#include "host/play/step.h"
#include "host/sweep/deviation.h"

namespace sweep {

bool is_verb(const play::Step &step, std::initializer_list<std::string_view> verbs);
bool ends_command(const play::Step &step);

// A check, or what a check needs: behind the end of a command it changes nothing.
bool is_check(const play::Step &step);

// An answer with which the operator gives up.
bool is_giving_up(const play::Step &answer);

// From here on, what was said and logged before may not be so any more.
bool changes_units(const play::Step &step);

// A step that only people need.
bool is_for_people(const play::Step &step);

// As a play in this folder writes it: programs are found by a path from there.
Words words_of(const play::Step &step, const std::filesystem::path &folder);

// Of the steps, and where they stand: those of another play have another number.
std::uint64_t number_of_script(const std::vector<play::Step> &steps);

}  // namespace sweep
