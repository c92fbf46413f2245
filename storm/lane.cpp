#include "storm/lane.h"

#include <algorithm>
#include <sstream>
#include <stdexcept>
#include <thread>

#include "host/box/inventory.h"

namespace storm {
namespace {

namespace fs = std::filesystem;
using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr milliseconds kAtFirst{60};  // an actor that never ended by itself is given up to this
constexpr seconds kNobodyTakesLonger{60};
constexpr seconds kOrphansEndWithin{10};
constexpr unsigned kEachThorough = 8;  // rounds
constexpr std::uint32_t kMostOfASaver = 100'000;

void do_now(const Words &words) {
  terminal::BackgroundProgram program(words);
  if (program.wait() != 0) throw std::runtime_error(words.at(1) + ": " + program.output());
}

std::string any_model(Random &random) {
  constexpr std::array kModels{"qa", "qb1", "qb2", "qe1", "qe2", "qe3"};
  return one_of(kModels, random);
}

Subject made_in(const fs::path &folder, Random &random) {
  Subject subject{.box = folder / "box",
                  .model = any_model(random),
                  .unit = {},
                  .first_dump = folder / "first.dump",
                  .dump = folder / "dump",
                  .folder = folder / "plays",
                  .next_event = 0};
  fs::create_directory(subject.folder);
  do_now({SPBOX, "create", subject.box, "--model", subject.model});
  do_now({SPBOX, "run", subject.box, "--", "true"});
  do_now({SPBOX, "dump", subject.box, subject.first_dump});
  return subject;
}

std::vector<std::string> units_of(const box::Place &place) {
  std::vector<std::string> names;
  const box::Inventory inventory(place);
  for (const auto &unit : inventory.places()) names.push_back(unit.name);
  return names;
}

bool one_in(unsigned count, Random &random) {
  return std::uniform_int_distribution<unsigned>(1, count)(random) == 1;
}

}  // namespace

Lane::Lane(const fs::path &folder, std::uint64_t seed, Tally &tally)
    : random_(seed),
      tally_(tally),
      subject_(made_in(folder, random_)),
      place_(subject_.box),
      units_(units_of(place_)),
      laws_(place_),
      crew_(place_, units_, tally) {
  usual_.fill(kAtFirst);
}

bool Lane::go(Clock::time_point end, std::uint64_t most_killed) {
  adopt_orphans();
  for (unsigned round = 1; Clock::now() < end && tally_.killed() < most_killed && !tally_.stop && is_sound_; ++round) {
    story_.clear();
    start_some();
    kill_in_time();
    is_sound_ = crew_.finish(events_, savers_) && is_sound_;
    look(round % kEachThorough == 0);
    ++tally_.rounds;
  }
  if (is_sound_) look(true);
  if (is_sound_ && plays_were_killed_) look_at_plays();
  look_for_orphans(Orphans::kAll);
  return is_sound_;
}

void Lane::start(std::size_t actor) {
  subject_.unit = one_of(units_, random_);
  const Actor &row = actors()[actor];
  if (saves_events(row)) subject_.next_event = crew_.heads_of_events(kMostOfASaver);
  const Words words = row.command(subject_, random_);
  const bool is_killed = saves_events(row) || !one_in(8, random_);
  std::uniform_real_distribution<double> part(0, 1.1);
  const auto moment = std::chrono::duration_cast<Clock::duration>(part(random_) * usual_.at(actor));
  workers_.push_back({actor, terminal::BackgroundProgram(words), Clock::now(),
                      is_killed ? moment : Clock::duration(kNobodyTakesLonger)});
}

void Lane::start_some() {
  const std::size_t first = any_actor(random_);
  if (actors()[first].place != Actor::Place::kAlone) crew_.start(random_());
  start(first);
  if (actors()[first].place != Actor::Place::kBox) return;
  for (int i = 0; i < 2; ++i) {
    const std::size_t other = any_actor(random_);
    if (actors()[other].place == Actor::Place::kBox) start(other);
  }
}

void Lane::kill_in_time() {
  std::vector<Worker *> in_time;
  for (Worker &worker : workers_) in_time.push_back(&worker);
  std::ranges::sort(in_time, {}, [](const Worker *worker) { return worker->started + worker->until_killed; });
  for (Worker *worker : in_time) {
    const auto left = worker->started + worker->until_killed - Clock::now();
    worker->program.wait(std::max(std::chrono::duration_cast<milliseconds>(left), milliseconds(0)));
    take_end(*worker);
  }
  workers_.clear();
}

void Lane::take_end(Worker &worker) {
  const Actor &row = actors()[worker.actor];
  const auto status = worker.program.wait(milliseconds(0));
  Tally::Row &counted = tally_.rows[worker.actor];
  if (!status) {
    const auto worked = std::chrono::duration_cast<milliseconds>(Clock::now() - worker.started);
    story_ += std::string(story_.empty() ? "" : ", ") + row.name + " after " + std::to_string(worked.count()) + " ms";
    worker.program.kill();
    ++counted.killed;
    if (worker.until_killed == Clock::duration(kNobodyTakesLonger)) found(std::string(row.name) + " does not end");
  } else {
    ++counted.ended;
    usual_.at(worker.actor) = (usual_.at(worker.actor) * 7 + (Clock::now() - worker.started)) / 8;
    if (!may_end_with(row, *status))
      found(row.name + (" ends with " + std::to_string(*status)) + ": " + worker.program.output());
  }
  if (saves_events(row)) {
    ++savers_;
    take_events(worker.program.output());
  }
  // The box is the old one or a new one, whose log is empty.
  if (row.place == Actor::Place::kAlone) {
    events_.clear();
    crew_.forget_counted();
  }
  plays_were_killed_ = plays_were_killed_ || (!status && row.place == Actor::Place::kOwn);
}

void Lane::take_events(const std::string &output) {
  std::istringstream heads(output.substr(0, output.rfind('\n') + 1));
  for (std::uint32_t head = 0; heads >> head;) {
    events_.insert(head);
    ++tally_.events;
  }
}

void Lane::look(bool thoroughly) {
  look_for_orphans(Orphans::kOutside);
  if (!is_sound_) return;
  for (const std::string &sentence : laws_.broken({events_, savers_, crew_.counted()})) found(sentence);
  savers_ = 0;
  if (!thoroughly) return;
  for (const std::string &sentence : laws_.broken_for_next_command()) found(sentence);
}

void Lane::look_for_orphans(Orphans which) {
  for (const std::string &sentence : orphans_that_live_on(which, kOrphansEndWithin)) found(sentence);
}

// A play clears up what was left by those before it.
void Lane::look_at_plays() {
  do_now({"/usr/bin/env", "TMPDIR=" + subject_.folder, SPBOX, "play", std::string(PLAYS) + "/wrong/no_model.play"});
  for (const auto &entry : fs::directory_iterator(subject_.folder)) found(entry.path().string() + " is left");
}

// At Ctrl-C, all that work are interrupted, too.
void Lane::found(const std::string &what) {
  if (tally_.stop) return;
  is_sound_ = false;
  tally_.find(what + "\n      in the box " + subject_.box + ", model " + subject_.model +
              (story_.empty() ? "" : ", killed: " + story_));
}

}  // namespace storm
