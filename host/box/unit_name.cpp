#include "host/box/unit_name.h"

#include <map>
#include <stdexcept>

namespace box {
namespace {

struct Directory {
  std::map<UnitId, std::string> names;
  std::map<std::string, UnitId, std::less<>> ids;
};

// All locations of a model, or null. Made once: a few thousand at most.
const Directory *directory_for(std::uint32_t code) {
  static std::map<std::uint32_t, Directory> known;
  const auto found = known.find(code);
  if (found != known.end()) return &found->second;
  const Model *model = find_model(code);
  if (model == nullptr) return nullptr;
  Directory directory;
  for (Location &location : locations_of(*model)) {
    directory.ids.emplace(location.name, location.id);
    directory.names.emplace(location.id, std::move(location.name));
  }
  return &known.emplace(code, std::move(directory)).first->second;
}

}  // namespace

std::optional<std::string> unit_name(std::uint32_t model, const UnitId &id) {
  const Directory *directory = directory_for(model);
  if (directory == nullptr) return std::nullopt;
  const auto found = directory->names.find(id);
  if (found == directory->names.end()) return std::nullopt;
  return found->second;
}

std::optional<UnitId> unit_id(std::uint32_t model, std::string_view name) {
  const Directory *directory = directory_for(model);
  if (directory == nullptr) return std::nullopt;
  const auto found = directory->ids.find(name);
  if (found == directory->ids.end()) return std::nullopt;
  return found->second;
}

std::string location_of(std::string_view name) {
  return (name.starts_with('/') ? "" : "/") + std::string(name);
}

void check_units(std::string_view model, std::span<const std::string> names) {
  const Model *row = find_model(model);
  for (const std::string &name : names) {
    if (row != nullptr && unit_id(row->code, location_of(name))) continue;
    throw std::invalid_argument("a server of model " + std::string(model) + " has no unit " + location_of(name));
  }
}

}  // namespace box
