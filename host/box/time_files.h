// The files with time limits in a box: seconds, as big-endian words. Each family of models has two of its own.
#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <optional>

#include "host/box/place.h"

namespace box {

inline constexpr std::size_t kCommandTimes = 16;  // by the number of the control program
inline constexpr std::size_t kControlTimes = 12;  // kinds of units: slots 0 to 10 of lmainte_model_data, and 12

using CommandTimes = std::array<std::uint32_t, kCommandTimes>;
using ControlTimes = std::array<std::array<std::uint32_t, kControlTimes>, 2>;  // control_time_1 and control_time_2

// Those of a new box of this model.
CommandTimes usual_command_times();
ControlTimes usual_control_times(std::uint32_t model);

// The files of all families, in a new box. Throws BoxError.
void make_time_files(const Place &place);

// None where the file is missing. Both throw BoxError where it is too short or cannot be read.
std::optional<CommandTimes> command_times(const Place &place, std::uint32_t model);
std::optional<ControlTimes> control_times(const Place &place, std::uint32_t model);

// A command sees the old times or the new ones. Both throw.
void set_command_times(const Place &place, std::uint32_t model, const CommandTimes &times);
void set_control_times(const Place &place, std::uint32_t model, const ControlTimes &times);

// The model's two files are not there any more. Throws.
void remove_time_files(const Place &place, std::uint32_t model);

}  // namespace box
