#include "storm/laws.h"

#include <chrono>
#include <exception>
#include <fstream>
#include <optional>

#include "host/box/database.h"
#include "host/box/event_log.h"
#include "host/box/inhabitants.h"
#include "host/box/trace_ring.h"
#include "host/terminal/background_program.h"
#include "host/trace_book/trace_book.h"
#include "storm/duties.h"

namespace storm {
namespace {

namespace fs = std::filesystem;
using std::chrono::seconds;
using Sentences = std::vector<std::string>;

std::set<fs::path> files_in(const fs::path &folder) {
  std::set<fs::path> files;
  for (const auto &entry : fs::recursive_directory_iterator(folder)) {
    files.insert(entry.path().lexically_relative(folder));
  }
  return files;
}

void look_for_locks(const box::Place &place, Sentences &broken) {
  for (std::uint32_t db_id = 0; db_id < box::kDatabaseCount; ++db_id) {
    box::Database database(place.database(db_id));
    if (!database.lock(std::chrono::milliseconds(0))) {
      broken.push_back("a lock stays on " + database.name().text());
    } else if (!database.unlock()) {
      broken.push_back("the lock of " + database.name().text() + " cannot be given back");
    }
  }
}

// Returns how many events are torn, of which `torn` were so before.
std::size_t look_for_events(const box::Place &place, const Saved &saved, std::size_t torn, Sentences &broken) {
  std::set<std::uint32_t> events = saved.events;
  box::EventLog::Damage damage;
  for (const box::LogEntry &entry : box::EventLog::read(place.events(), &damage)) events.erase(entry.head);
  if (!events.empty()) broken.push_back("the event " + std::to_string(*events.begin()) + " was saved, and is lost");
  if (damage.places > torn + saved.savers) {
    broken.push_back(std::to_string(damage.places) + " events are torn, and " + std::to_string(torn) + " were before " +
                     std::to_string(saved.savers) + " that saved events were killed");
  }
  return damage.places;
}

void look_at_count(const box::Place &place, std::uint32_t counted, Sentences &broken) {
  const std::uint32_t found = counted_in(place);
  if (found >= counted) return;
  broken.push_back("the number " + std::to_string(counted) + " was saved, and " + std::to_string(found) + " is there");
}

void look_at_trace(const box::Place &place, Sentences &broken) {
  std::optional<std::uint64_t> last;
  for (const box::TraceEntry &entry : box::TraceRing::read(place.trace())) {
    if (last && entry.number <= *last) broken.emplace_back("the records of the trace are not in order");
    last = entry.number;
    const bool is_as_written = entry.module != kModuleOfStorm || entry.words[3] == ~entry.words[2];
    if (trace_book::words_of(entry).is_known && is_as_written) continue;
    broken.push_back("the record " + std::to_string(entry.number) + " of the trace is torn");
    return;
  }
}

void look_for_mounts(const box::Place &place, Sentences &broken) {
  std::ifstream mounts("/proc/self/mountinfo");
  for (std::string line; std::getline(mounts, line);) {
    if (line.find(place.root().string()) != std::string::npos) broken.push_back("this is mounted still: " + line);
  }
}

void run_spbox(const std::vector<std::string> &words, Sentences &broken) {
  terminal::BackgroundProgram spbox(words);
  const auto status = spbox.wait(seconds(20));
  if (status == 0) return;
  std::string line = status ? "ends with " + std::to_string(*status) : "does not end";
  for (const std::string &word : words) line.insert(0, word + " ");
  broken.push_back(line + ": " + spbox.output());
}

}  // namespace

Laws::Laws(const box::Place &place) : place_(place), files_(files_in(place.root())) {}

Sentences Laws::broken(const Saved &saved) {
  Sentences broken;
  try {
    run_spbox({SPBOX, "units", place_.root()}, broken);
    look_for_locks(place_, broken);
    torn_ = look_for_events(place_, saved, torn_, broken);
    look_at_count(place_, saved.counted, broken);
  } catch (const std::exception &error) {
    broken.emplace_back(error.what());
  }
  return broken;
}

Sentences Laws::broken_for_next_command() const {
  Sentences broken;
  try {
    run_spbox({SPBOX, "run", place_.root(), "--", "true"}, broken);
    for (const pid_t process : box::inhabitants(place_)) {
      broken.push_back("the process " + std::to_string(process) + " is in the box still");
    }
    for (const fs::path &file : files_in(place_.root())) {
      if (!files_.contains(file)) broken.push_back("the file " + file.string() + " is left in the box");
    }
    look_for_mounts(place_, broken);
    look_at_trace(place_, broken);
  } catch (const std::exception &error) {
    broken.emplace_back(error.what());
  }
  return broken;
}

}  // namespace storm
