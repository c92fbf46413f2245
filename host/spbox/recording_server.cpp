#include "host/spbox/recording_server.h"

#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "host/box/contents.h"
#include "host/box/database.h"
#include "host/spbox/picture_lines.h"
#include "host/spbox/watch_eyes.h"

namespace spbox {
namespace {

using recording::Record;

// Both sides have its bytes then.
bool tells_of_record(const Record &record) {
  const bool is_of_record = record.kind == LMAINTE_RECORD_GET || record.kind == LMAINTE_RECORD_PUT;
  return is_of_record && record.result == 0 && !record.is_left_out && record.first < box::kDatabaseCount &&
         !record.text.empty();
}

// Up to what the page has anyway, or what this box alone would have.
void keep_chassis(std::vector<std::string> &lines) {
  const auto end = std::ranges::find_if(lines, [](const std::string &line) { return line.starts_with("At work "); });
  lines.erase(end, lines.end());
  while (!lines.empty() && lines.back().empty()) lines.pop_back();
}

}  // namespace

RecordingServer::RecordingServer(const recording::Recording &recording) : recording_(recording) {
  if (recording.model == LMAINTE_MODEL_NONE || recording.is_without_contents) return;
  folder_.emplace();
  place_.emplace(folder_->box());
  box::Contents nothing;
  nothing.model = recording.model;
  box::create_box(*place_, nothing);
}

bool RecordingServer::take_records_before(std::size_t number) {
  bool is_any = false;
  for (; next_ < number; ++next_) {
    const Record &record = recording_.records[next_];
    if (!tells_of_record(record)) continue;
    box::Database(place_->database(record.first)).put(record.text, recording::content_here(record));
    is_any = true;
  }
  return is_any;
}

report::Picture RecordingServer::picture_before(std::size_t number) {
  if (!place_ || (!take_records_before(number) && picture_)) return picture_;
  watch::Scene scene;
  look_at(*place_, {.server = true, .trace = false, .log = false}, 0, scene);
  if (!scene.trouble.empty()) {
    return picture_ = std::make_shared<const std::vector<std::string>>(1, scene.trouble);
  }
  // Only its units are known by records.
  scene.server.fan_speed.clear();
  std::vector<std::string> lines = picture_lines(scene, "as its records tell");
  keep_chassis(lines);
  return picture_ = std::make_shared<const std::vector<std::string>>(std::move(lines));
}

}  // namespace spbox
