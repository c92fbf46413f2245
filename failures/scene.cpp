#include "failures/scene.h"

#include <array>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <vector>

#include "host/box/event_log.h"
#include "host/box/place.h"
#include "tests/host/recording/made_recording.h"
#include "tests/run.h"

namespace failures {
namespace {

namespace fs = std::filesystem;

constexpr auto kAsItIs = fs::copy_options::recursive | fs::copy_options::copy_symlinks;
// The command clears its screen, on which stands what spbox tells of a daemon that does not run.
constexpr const char *kPlay =
    "box qa\n"
    "spbox pull /PSU#0\n"
    "says \"Not installed\"\n"
    "hands \"fault /PSU#1\"\n"
    "start sh -c \"printf '\\e[2J\\e[H'; echo ready; read answer; echo you said $$answer; exit 3\"\n"
    "wait \"ready\"\n"
    "type \"go\\n\"\n"
    "wait \"you said go\"\n"
    "exit 3\n"
    "handsdone\n"
    "screen \"the end\"\n";

Done spbox_in(const fs::path &folder, const std::vector<std::string> &words) {
  std::vector<std::string> command{"/usr/bin/env", "-C", folder, SPBOX};
  command.insert(command.end(), words.begin(), words.end());
  return run_to_end(command);
}

void do_in(const fs::path &folder, const std::vector<std::string> &words) {
  const Done done = spbox_in(folder, words);
  if (done.exit_status != 0) throw std::runtime_error("spbox " + words.front() + ": " + done.output);
}

std::string text_of(const fs::path &file) {
  std::ifstream in(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

// The first spbox that comes clears up what is left of a making. A folder that is no box is as good as none.
std::string told_of(const fs::path &folder, const char *box) {
  if (!fs::exists(folder / box)) return "";
  const Done units = spbox_in(folder, {"units", box});
  const Done dump = spbox_in(folder, {"dump", box});
  if (dump.output.find(std::string(box) + " is no box. ") != std::string::npos) return "";
  return dump.output + (units.exit_status == 0 ? "" : units.output);
}

}  // namespace

void make_start(const fs::path &folder) {
  fs::create_directories(folder / "tmp");
  do_in(folder, {"create", "box", "--model", "qb1"});
  do_in(folder, {"dump", "box", "qb1.dump"});
  do_in(folder, {"create", "box", "--model", "qa", "--force"});
  do_in(folder, {"dump", "box", "qa.dump"});
  do_in(folder, {"degrade", "box", "/FAN_A#1"});
  do_in(folder, {"run", "box", "--", LIST_UNITS});
  constexpr std::array<std::uint8_t, LMAINTE_HOST_EVENT_SIZE> kEvent{};
  for (const std::uint32_t head : {1U, 2U}) box::EventLog::append(box::Place(folder / "box").events(), head, kEvent);
  std::ofstream(folder / "short.play") << kPlay;
  MadeRecording recording;
  recording.begin();
  recording.add({.kind = LMAINTE_RECORD_OPEN, .first = 2});
  std::ofstream(folder / "fault.rec", std::ios::binary) << recording.bytes;
  std::ofstream(folder / "kept") << "something else\n";
}

Scene::Scene(const fs::path &folder, const Line &line) : line_(line), start_(folder / "start"), work_(folder / "work") {
  make_start(start_);
  if (!line.before.empty()) do_in(start_, line.before);
  restore();
  before_ = now();
}

State Scene::now() const {
  State state{told_of(work_, "box") + told_of(work_, "new") + text_of(work_ / "kept"), {}};
  for (const auto &entry : fs::recursive_directory_iterator(work_)) {
    state.files.insert(entry.path().lexically_relative(work_));
  }
  for (const std::string &file : line_.written) state.files.erase(file);
  return state;
}

void Scene::restore() const {
  fs::remove_all(work_);
  fs::copy(start_, work_, kAsItIs);
}

}  // namespace failures
