#include "host/box/contents.h"

#include <algorithm>
#include <fstream>
#include <memory>
#include <vector>

#include "host/box/advice.h"
#include "host/box/call_ring.h"
#include "host/box/own_files.h"
#include "host/box/program_list.h"
#include "host/box/record_set.h"
#include "host/box/time_files.h"
#include "host/box/trace_ring.h"

namespace box {
namespace {

namespace fs = std::filesystem;

void write_contents(const Place &place, const Contents &contents) {
  std::vector<std::unique_ptr<Database>> databases;
  std::vector<Database *> all;
  for (std::uint32_t number = 0; number < kStoreSize; ++number) {
    databases.push_back(std::make_unique<Database>(DatabaseName{place.databases(), number}, true));
    all.push_back(databases.back().get());
    lock(*all.back());
  }
  for (std::uint32_t db_id = 0; db_id < kDatabaseCount; ++db_id) {
    for (const auto &[name, record] : contents.records.at(db_id)) all[db_id]->put(name, record);
  }
  for (const auto &[key, text] : contents.hardware) {
    all[kOwnDatabase]->put(key, {reinterpret_cast<const std::uint8_t *>(text.data()), text.size()});
  }
  Database::unlock_together(all);
}

void program_links(const Place &place) {
  for (const Program &program : kPrograms) {
    const fs::path link = place.root() / std::string(program.path).substr(1);
    fs::create_directories(link.parent_path());
    fs::create_symlink(kControlProgram, link);
  }
  fs::create_directories(place.root() / "mgb/lib");
}

void touch(const fs::path &file) {
  if (!std::ofstream(file)) throw BoxError(file.string() + " could not be written.");
}

}  // namespace

Contents contents_of(const Place &place) {
  Contents contents{.model = model_of_box(place), .records = {}, .hardware = {}};
  auto databases = Database::all_in(place.databases());
  for (const auto &[key, text] : databases.at(kOwnDatabase)) contents.hardware[key].assign(text.begin(), text.end());
  std::move(databases.begin(), databases.begin() + kDatabaseCount, contents.records.begin());
  return contents;
}

void create_box(const Place &place, const Contents &contents) {
  for (const fs::path &folder : {place.tmp(), place.etc(), place.trace().parent_path()}) {
    fs::create_directories(folder);
  }
  program_links(place);
  make_time_files(place);
  TraceRing::create(place.trace());
  CallRing::create(place.calls());
  touch(place.events());
  write_contents(place, contents);
  touch(place.points());
  touch(place.tmp() / ("." + std::string(model_name(contents.model))));
}

void create_box(const Place &place, std::uint32_t model) {
  if (find_model(model) == nullptr) throw BoxError("there is no model of number " + std::to_string(model) + ".");
  create_box(place, new_server(model));
}

bool is_box(const Place &place) {
  return fs::is_directory(place.databases());
}

void check_is_any_box(const Place &place) {
  if (!is_box(place)) {
    const std::string is_none = place.root().string() + " is no box.";
    std::error_code gone;
    if (fs::exists(place.root(), gone) && !(fs::is_directory(place.root(), gone) && fs::is_empty(place.root(), gone))) {
      throw BoxError(is_none);
    }
    throw BoxError(is_none + " " + advice({"create", place.root(), "--model", "MODEL"}) + " makes one.");
  }
  if (const auto link = link_in(place)) {
    throw BoxError(link->string() + " is a link, which may lead out of the box. Put the file or folder itself there.");
  }
}

void check_is_box(const Place &place) {
  model_of_box(place);
}

std::uint32_t model_of_box(const Place &place) {
  check_is_any_box(place);
  const std::uint32_t model = model_in(place);
  if (model == LMAINTE_MODEL_NONE) {
    throw BoxError(place.tmp().string() + " holds no marker file of a model, such as .qe1: the box does not know " +
                   "what server it is. " + advice({"model", place.root(), "MODEL"}) + " puts it back.");
  }
  return model;
}

}  // namespace box
