#include "host/box/unit_name.h"

#include <cstring>
#include <map>
#include <system_error>
#include <vector>

#include "host/box/place.h"
#include "include/lmainte.h"

namespace box {
namespace {

struct Model {
  std::uint32_t code;
  const char *marker;
  const lmainte_unit_code *locations;
};

// In the order in which the library looks for the markers.
const std::array<Model, 6> &models() {
  static const std::array<Model, 6> all{{
      {LMAINTE_MODEL_QA, ".qa", convert_unit_code_qa},
      {LMAINTE_MODEL_QB1, ".qb1", convert_unit_code_qb1},
      {LMAINTE_MODEL_QB2, ".qb2", convert_unit_code_qb2},
      {LMAINTE_MODEL_QE1, ".qe1", convert_unit_code_qe1},
      {LMAINTE_MODEL_QE2, ".qe2", convert_unit_code_qe2},
      {LMAINTE_MODEL_QE3, ".qe3", convert_unit_code_qe3},
  }};
  return all;
}

// Position codes of the memory below a board of its own, whose names tell the boards apart.
constexpr bool is_board_memory(std::uint8_t type_pos) {
  return type_pos == 138 || type_pos == 166;
}

constexpr std::size_t kMaxParts = 6;

// A location while it is put together: its name, the last component of it, and the ids of the components.
struct Location {
  std::string name;
  std::string last;
  std::vector<std::uint8_t> ids;

  Location with(const std::string &component, std::uint8_t id) const {
    Location longer{name + "/" + component, component, ids};
    longer.ids.push_back(id);
    return longer;
  }
};

std::vector<std::string> components_of(std::string_view pattern) {
  std::vector<std::string> components;
  while (!pattern.empty()) {
    pattern.remove_prefix(1);
    components.emplace_back(pattern.substr(0, pattern.find('/')));
    pattern.remove_prefix(components.back().size());
  }
  return components;
}

// "MEM#" fits "MEM#03A", "FANBP_B" fits itself alone.
bool fits(std::string_view component, std::string_view name) {
  if (component.back() != '#') return component == name;
  return name.size() > component.size() && name.substr(0, component.size()) == component;
}

void add_counted(const Location &parent, const std::string &component, std::uint8_t max, std::vector<Location> *out) {
  if (component.back() != '#') {
    if (max > 0) out->push_back(parent.with(component, 0));
    return;
  }
  for (std::uint8_t id = 0; id < max; ++id) out->push_back(parent.with(component + std::to_string(id), id));
}

void add_named(const Location &parent, const std::string &component, const lmainte_unit_name *names, bool on_board,
               std::vector<Location> *out) {
  const std::string board = on_board ? parent.last + "/" : "";
  for (; names->name[0] != '\0'; ++names) {
    std::string_view name = names->name;
    if (name.substr(0, board.size()) != board) continue;
    name.remove_prefix(board.size());
    if (fits(component, name)) out->push_back(parent.with(std::string(name), names->id_pos));
  }
}

// Every location that one row of a layout stands for.
std::vector<Location> locations_of(const lmainte_unit_code &row, std::uint32_t model) {
  const std::vector<std::string> components = components_of(row.pattern);
  const bool memory = is_board_memory(row.type_pos);
  std::vector<Location> locations{{}};
  for (std::size_t i = 0; i < components.size(); ++i) {
    std::vector<Location> longer;
    const bool named = row.names != nullptr && i + 1 == components.size();
    for (const Location &parent : locations) {
      if (named) {
        add_named(parent, components[i], row.names, memory && model != LMAINTE_MODEL_QA, &longer);
      } else {
        add_counted(parent, components[i], row.max[i], &longer);
      }
    }
    locations = std::move(longer);
  }
  if (memory && model == LMAINTE_MODEL_QA) {  // its memory has no board of its own, and counts as if it had
    for (Location &location : locations) location.ids.insert(location.ids.begin() + 1, 0);
  }
  return locations;
}

UnitId id_of(std::uint8_t type_pos, const std::vector<std::uint8_t> &ids) {
  std::array<std::uint32_t, 2 + kMaxParts> bytes{type_pos, static_cast<std::uint32_t>(ids.size())};
  for (std::size_t i = 0; i < ids.size() && i < kMaxParts; ++i) bytes[2 + i] = ids[i];
  UnitId id{};
  for (std::size_t i = 0; i < bytes.size(); ++i) id[i / 4] = id[i / 4] << 8U | bytes[i];
  return id;
}

struct Directory {
  std::map<UnitId, std::string> names;
  std::map<std::string, UnitId, std::less<>> ids;
};

Directory directory_of(const Model &model) {
  Directory directory;
  for (const lmainte_unit_code *row = model.locations; row->pattern[0] != '\0'; ++row) {
    for (const Location &location : locations_of(*row, model.code)) {
      const UnitId id = id_of(row->type_pos, location.ids);
      directory.ids.emplace(location.name, id);
      directory.names.emplace(id, location.name);
    }
  }
  return directory;
}

// All locations of a model, or null. Made once: a few thousand at most.
const Directory *directory_for(std::uint32_t code) {
  static std::map<std::uint32_t, Directory> known;
  auto found = known.find(code);
  if (found != known.end()) return &found->second;
  for (const Model &model : models()) {
    if (model.code == code) return &known.emplace(code, directory_of(model)).first->second;
  }
  return nullptr;
}

}  // namespace

std::uint32_t model_in(const Place &place) {
  for (const Model &model : models()) {
    std::error_code error;
    if (std::filesystem::exists(place.tmp() / model.marker, error)) return model.code;
  }
  return LMAINTE_MODEL_NONE;
}

std::optional<std::string> unit_name(std::uint32_t model, const UnitId &id) {
  const Directory *directory = directory_for(model);
  if (directory == nullptr) return std::nullopt;
  auto found = directory->names.find(id);
  if (found == directory->names.end()) return std::nullopt;
  return found->second;
}

std::optional<UnitId> unit_id(std::uint32_t model, std::string_view name) {
  const Directory *directory = directory_for(model);
  if (directory == nullptr) return std::nullopt;
  auto found = directory->ids.find(name);
  if (found == directory->ids.end()) return std::nullopt;
  return found->second;
}

}  // namespace box
