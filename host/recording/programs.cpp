#include "host/recording/programs.h"

#include <algorithm>

namespace recording {

bool is_control_program(std::string_view line) {
  return line.starts_with("/mgb/");
}

std::uint64_t time_of_program(const Record &began, const Record &ended) {
  constexpr std::uint64_t kDay = 86'400'000'000'000;
  const auto time = [](const Record &record) { return std::uint64_t{record.second} << 32U | record.third; };
  // Earlier recordings have the time of day alone, which may have been set meanwhile.
  const bool has_times = time(began) != 0 && time(ended) != 0;
  const std::uint64_t from = has_times ? time(began) : static_cast<std::uint64_t>(began.time_ns);
  const std::uint64_t to = has_times ? time(ended) : static_cast<std::uint64_t>(ended.time_ns);
  return to > from ? std::min(to - from, kDay) : 0;
}

void RunningPrograms::begin(const Record &record, std::size_t call) {
  begun_[record.pid] = {call, &record};
}

std::optional<RunningPrograms::Begun> RunningPrograms::end(const Record &record) {
  const auto found = begun_.find(static_cast<pid_t>(record.first));
  if (found == begun_.end()) return std::nullopt;
  const Begun begun = found->second;
  begun_.erase(found);
  return begun;
}

}  // namespace recording
