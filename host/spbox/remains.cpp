#include "host/spbox/remains.h"

#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <exception>
#include <filesystem>
#include <optional>
#include <set>
#include <string>

#include "host/base/number.h"
#include "host/box/inhabitants.h"
#include "host/box/trace_ring.h"
#include "host/spbox/ending.h"
#include "host/spbox/signals.h"
#include "host/trace_book/trace_book.h"
#include "trace_events/dialogue.h"
#include "trace_events/frame.h"

namespace spbox {
namespace {

namespace fs = std::filesystem;
using std::chrono::nanoseconds;

constexpr nanoseconds kAtItsStart = std::chrono::seconds(10);  // on a machine that is very busy

// The child of which a record tells: each of the library's children is recorded, by its parent or by itself.
std::optional<pid_t> child_in(const box::TraceEntry &entry) {
  constexpr struct {
    std::uint32_t event, word;
  } kRows[] = {
      {trace_events::kEventBase + trace_events::Exec::kStarted, trace_book::kSecondValueWord},
      {trace_events::kEventBase + trace_events::DotStart::kChild, trace_book::kFirstValueWord},
      {trace_events::kEventBase + trace_events::ShowFile::kChildRuns, trace_book::kPidWord},
  };
  for (const auto &row : kRows) {
    if (entry.event == row.event && row.word < entry.word_count) return static_cast<pid_t>(entry.words.at(row.word));
  }
  return std::nullopt;
}

nanoseconds time_of(clockid_t clock) {
  timespec time{};
  clock_gettime(clock, &time);
  return std::chrono::seconds(time.tv_sec) + nanoseconds(time.tv_nsec);
}

// By the clock of the trace.
nanoseconds started_at(const box::ProcessState &state) {
  const auto ticks = static_cast<std::uint64_t>(sysconf(_SC_CLK_TCK));
  const nanoseconds since_boot(static_cast<std::int64_t>(state.start * (1'000'000'000 / ticks)));
  return time_of(CLOCK_REALTIME) - time_of(CLOCK_BOOTTIME) + since_boot;
}

// A record that is older is of another process that had this number. In a box with a time of its own, that time is ahead.
bool is_of_its_start(const box::TraceEntry &entry, const box::ProcessState &state) {
  return nanoseconds(entry.time_ns) - started_at(state) > -kAtItsStart;
}

void end_lost_children(const box::Place &place) {
  const std::set<pid_t> inside = box::inhabitants(place);
  std::set<pid_t> alone;
  for (const pid_t process : inside) {
    const auto state = box::state_of(process);
    if (state && !inside.contains(state->parent)) alone.insert(process);
  }
  if (alone.empty()) return;
  for (const box::TraceEntry &entry : box::TraceRing::read(place.trace())) {
    const auto child = child_in(entry);
    if (!child || !alone.contains(*child)) continue;
    const auto state = box::state_of(*child);
    if (!state || !is_of_its_start(entry, *state)) continue;
    end_process(*child, [&] { return box::is_inside(*child, place); });
  }
}

void remove_list_files(const box::Place &place) {
  const std::string name = "mainte_fru_list.";
  std::error_code error;
  for (const fs::directory_entry &entry : fs::directory_iterator(place.tmp(), error)) {
    const std::string file = entry.path().filename();
    if (!file.starts_with(name) || !fs::is_regular_file(entry.symlink_status(error))) continue;
    const auto owner = base::number_in<pid_t>(file.substr(name.size()));
    if (owner && !box::is_inside(*owner, place)) fs::remove(entry.path(), error);
  }
}

}  // namespace

bool was_cut_off(int exit_status) {
  const sigset_t told_to_end = ending_signals();
  return exit_status > 128 && exit_status < 128 + NSIG && sigismember(&told_to_end, exit_status - 128) == 0;
}

void clear_up_behind_the_dead(const box::Place &place) {
  try {
    end_lost_children(place);
    remove_list_files(place);
  } catch (const std::exception &) {
    // A box whose trace cannot be read does not tell what is left.
  }
}

}  // namespace spbox
