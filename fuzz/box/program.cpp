// Command lines of the control programs. A program ends with a status of its page; where that is a failure, nothing in the box
// is changed; afterwards all records can be read, and no lock is held.
#include <algorithm>
#include <chrono>
#include <vector>

#include "fuzz/box/targets.h"
#include "host/box/database.h"
#include "host/box/hardware.h"
#include "host/box/program_list.h"
#include "host/box/text_database.h"
#include "host/programs/control_programs.h"

namespace fuzz {
namespace {

constexpr std::size_t kMostWords = 12;

// Each program has these, and those of its page.
bool is_of(const programs::ControlProgram &program, int status) {
  const auto own = programs::own_statuses_of(program.name);
  return status == programs::kDone || status == programs::kUsage || status == programs::kFailed ||
         std::ranges::find(own, status) != own.end();
}

// What a program does when it is called with these words, as its main function does it.
int run_words(const programs::ControlProgram &program, const box::Place &place, std::vector<std::string> words) {
  words.insert(words.begin(), std::string(program.name));
  std::vector<char *> pointers;
  for (std::string &word : words) pointers.push_back(word.data());
  pointers.push_back(nullptr);
  int status = programs::kFailed;
  try {
    box::Hardware hardware(place);
    programs::Machine machine(place, hardware);
    const auto arguments = programs::parse(static_cast<int>(words.size()), pointers.data(), program.options);
    status = arguments ? program.act(*arguments, machine) : programs::kUsage;
  } catch (const std::exception &failure) {
    require(false, std::string(program.name) + " fails in a whole box: " + failure.what());
  }
  return status;
}

void put_back(const box::Contents &found, const KeptBox &kept) {
  for (std::uint32_t db_id = 0; db_id < box::kDatabaseCount; ++db_id) {
    if (found.records.at(db_id) == kept.contents.records.at(db_id)) continue;
    box::Database database(kept.place.database(db_id));
    for (const auto &[name, record] : kept.contents.records.at(db_id)) {
      const auto at = found.records.at(db_id).find(name);
      if (at == found.records.at(db_id).end() || at->second != record) database.put(name, record);
    }
  }
  if (found.hardware == kept.contents.hardware) return;
  box::TextDatabase hardware(kept.place);
  for (const auto &[key, value] : found.hardware) {
    if (!kept.contents.hardware.contains(key)) hardware.clear(key);
  }
  for (const auto &[key, value] : kept.contents.hardware) hardware.set(key, value);
}

void check_no_lock(const box::Place &place) {
  for (std::uint32_t db_id = 0; db_id < box::kDatabaseCount; ++db_id) {
    box::Database database(place.database(db_id));
    require(database.lock(std::chrono::milliseconds(0)) && database.unlock(), "no lock is held");
  }
  box::Hardware hardware(place);
  hardware.lock();
  hardware.unlock();
}

struct Line {
  const programs::ControlProgram *program;
  std::vector<std::string> words;
};

Line line_from(Source &source) {
  const auto &row = box::kPrograms.at(source.byte() % box::kPrograms.size());
  Line line{programs::find_program(row.name), {}};
  const std::size_t count = source.byte() % kMostWords;
  for (std::size_t i = 0; i < count && !source.empty(); ++i) line.words.push_back(source.text());
  return line;
}

void call(const Line &line, const KeptBox &kept) {
  const box::Contents before = box::contents_of(kept.place);
  const int status = run_words(*line.program, kept.place, line.words);
  const std::string said = std::string(line.program->name) + " ends with " + std::to_string(status);
  require(is_of(*line.program, status), said);
  require(status == programs::kDone || same(before, box::contents_of(kept.place)), said + " and has changed something");
}

}  // namespace

void run_program(Input input) {
  Source source(input);
  const KeptBox &kept = box_of(1 + source.byte() % 6);
  for (int calls = 0; calls < 3 && !source.empty(); ++calls) call(line_from(source), kept);
  const box::Contents found = box::contents_of(kept.place);
  for (const box::Unit &unit : box::Inventory(kept.place).units()) {
    require(unit.unreadable.empty() && unit.fru_unreadable.empty(), "all units can be read: " + unit.place.name);
  }
  check_no_lock(kept.place);
  put_back(found, kept);
}

}  // namespace fuzz
