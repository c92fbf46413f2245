#include "fuzz/box/targets.h"

#include <array>
#include <fstream>
#include <map>
#include <memory>

#include "host/box/model.h"
#include "tests/host/box/scratch.h"

namespace fuzz {
namespace {

constexpr std::array<Target, 10> kTargets{{
    {"dump", "a dump, read, written and read again", run_dump},
    {"play", "a script of a play", run_play},
    {"technician", "a technician's script", run_technician},
    {"trace_ring", "the file of the trace, damaged", run_trace_ring},
    {"event_log", "the file of the log, damaged", run_event_log},
    {"data_pages", "the data file of the databases, forged", run_data_pages},
    {"daemon", "messages to the daemon, through its socket", run_daemon},
    {"screen", "what a command writes on its terminal", run_screen},
    {"program", "command lines of the control programs", run_program},
    {"recording", "the file of a recording, forged", run_recording},
}};

}  // namespace

std::span<const Target> targets() {
  return kTargets;
}

void calm() {}

const std::filesystem::path &scratch() {
  static const Scratch folder;
  return folder.path();
}

void write_file(const std::filesystem::path &file, const std::string &text) {
  std::ofstream(file, std::ios::binary) << text;
}

KeptBox &box_of(std::uint32_t model) {
  static std::map<std::uint32_t, std::unique_ptr<KeptBox>> boxes;
  auto &kept = boxes[model];
  if (kept == nullptr) {
    const box::Place place(scratch() / std::string(box::model_name(model)));
    box::create_box(place, model);
    kept = std::make_unique<KeptBox>(KeptBox{place, box::contents_of(place), {}});
    for (std::uint32_t db_id = 0; db_id < box::kDatabaseCount; ++db_id) {
      kept->databases.push_back(std::make_unique<box::Database>(place.database(db_id)));
    }
    kept->databases.push_back(std::make_unique<box::Database>(place.hardware()));
  }
  return *kept;
}

bool same(const box::Contents &one, const box::Contents &other) {
  return one.model == other.model && one.records == other.records && one.hardware == other.hardware;
}

}  // namespace fuzz
