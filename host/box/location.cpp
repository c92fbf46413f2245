#include "host/box/location.h"

#include <string_view>

namespace box {
namespace {

// Position codes of the memory below a board of its own, whose names tell the boards apart.
constexpr bool is_board_memory(const lmainte_unit_code &row) {
  return row.type_pos == 138 || row.type_pos == 166;
}

constexpr std::size_t kMaxParts = 6;

// A location while it is put together, and the last component so far.
struct Part {
  std::string name, last;
  std::vector<std::uint8_t> path;
  std::uint8_t number = 0;

  Part with(const std::string &component, std::uint8_t id, std::uint8_t in_records) const {
    Part longer{name + "/" + component, component, path, in_records};
    longer.path.push_back(id);
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

void add_counted(const Part &parent, const std::string &component, std::uint8_t max, std::vector<Part> *out) {
  if (component.back() != '#') {
    if (max > 0) out->push_back(parent.with(component, 0, 0));
    return;
  }
  for (std::uint8_t id = 0; id < max; ++id) out->push_back(parent.with(component + std::to_string(id), id, id));
}

void add_named(const Part &parent, const std::string &component, const lmainte_unit_name *names, bool on_board,
               std::vector<Part> *out) {
  const std::string board = on_board ? parent.last + "/" : "";
  for (; names->name[0] != '\0'; ++names) {
    std::string_view name = names->name;
    if (name.substr(0, board.size()) != board) continue;
    name.remove_prefix(board.size());
    if (fits(component, name)) out->push_back(parent.with(std::string(name), names->id_pos, names->id_fru));
  }
}

std::vector<Part> parts_of(const lmainte_unit_code &row, std::uint32_t model) {
  const std::vector<std::string> components = components_of(row.pattern);
  std::vector<Part> parts{{}};
  for (std::size_t i = 0; i < components.size(); ++i) {
    std::vector<Part> longer;
    const bool named = row.names != nullptr && i + 1 == components.size();
    for (const Part &parent : parts) {
      if (named) {
        add_named(parent, components[i], row.names, is_board_memory(row) && model != LMAINTE_MODEL_QA, &longer);
      } else {
        add_counted(parent, components[i], row.max[i], &longer);
      }
    }
    parts = std::move(longer);
  }
  return parts;
}

UnitId id_of(std::uint8_t type_pos, const std::vector<std::uint8_t> &path) {
  std::array<std::uint32_t, 2 + kMaxParts> bytes{type_pos, static_cast<std::uint32_t>(path.size())};
  for (std::size_t i = 0; i < path.size() && i < kMaxParts; ++i) bytes[2 + i] = path[i];
  UnitId id{};
  for (std::size_t i = 0; i < bytes.size(); ++i) id[i / 4] = id[i / 4] << 8U | bytes[i];
  return id;
}

}  // namespace

std::vector<Location> locations_of(const Model &model) {
  std::vector<Location> locations;
  for (const lmainte_unit_code *row = model.locations; row->pattern[0] != '\0'; ++row) {
    for (Part &part : parts_of(*row, model.code)) {
      // The entry model's memory has no board of its own, and counts as if it had.
      if (is_board_memory(*row) && model.code == LMAINTE_MODEL_QA) part.path.insert(part.path.begin() + 1, 0);
      const UnitId id = id_of(row->type_pos, part.path);
      locations.push_back({std::move(part.name), id, row, std::move(part.path), part.number});
    }
  }
  return locations;
}

}  // namespace box
