// Paths of units. A path that is refused changes nothing, one that is taken is a location of the model, and both calls that
// read paths agree.
#include <algorithm>
#include <array>
#include <cctype>
#include <memory>

#include "fuzz/library/machine.h"
#include "include/lmainte.h"

namespace fuzz {
namespace {

constexpr std::uint8_t kBefore = 0xA5;
constexpr std::size_t kMostParts = 6;

std::size_t parts_of(const std::string &path) {
  return static_cast<std::size_t>(std::count(path.begin(), path.end(), '/'));
}

// Nothing that a location cannot have.
bool is_sound(const std::string &path) {
  return !path.empty() && path.front() == '/' && path.back() != '/' && parts_of(path) <= kMostParts &&
         std::none_of(path.begin(), path.end(), [](unsigned char c) { return std::isspace(c) != 0; });
}

// Behind the parts that it counts, a position has zeros.
bool ends_with_zeros(const lmainte_unit_position &position) {
  return position.count <= kMostParts &&
         std::all_of(position.id + position.count, std::end(position.id), [](std::uint8_t id) { return id == 0; });
}

void check_position(const std::string &path, const lmainte_unit_position &position, std::uint32_t mode) {
  require(is_sound(path), "a malformed path has no position: " + path);
  require(position.count == parts_of(path), "a position has as many parts as its path: " + path);
  require(mode != LMAINTE_POSITION_FRU || position.type != 0, "a position in the records has a type: " + path);
  require(ends_with_zeros(position), "the ids behind the last part are 0: " + path);
}

// The result; the position of a path that is taken.
std::int32_t position_of(std::uint32_t mode, const std::string &path, lmainte_unit_position &position) {
  std::memset(&position, kBefore, sizeof position);
  const lmainte_unit_position before = position;
  const std::int32_t result = judged("lmainte_get_unit_position_id", {8, 222},
                                     [&] { return lmainte_get_unit_position_id(mode, path.c_str(), &position); });
  require(result == 0 || std::memcmp(&position, &before, sizeof before) == 0,
          "a path that is refused leaves the position as it was: " + path);
  return result;
}

void check_both_calls(const std::string &path) {
  lmainte_unit_position position;
  const std::int32_t result = position_of(LMAINTE_POSITION_FRU, path, position);
  lmainte_fru_type type = {};
  const std::int32_t converted = judged("lmainte_convert_strtofrutype", {8, 222},
                                        [&] { return lmainte_convert_strtofrutype(path.c_str(), &type); });
  require(result == converted, "both calls judge a path alike: " + path);
  if (result != 0) return;
  check_position(path, position, LMAINTE_POSITION_FRU);
  require(type.type == position.type && type.count == position.count &&
              std::equal(position.id, position.id + position.count, type.id),
          "both calls find the same position: " + path);
}

// Components as a caller may hand them over: any texts that end within their rooms.
void rewrite_components(Source &source) {
  auto parts = std::make_unique<std::array<lmainte_path_component, 3>>();
  *parts = {};
  for (lmainte_path_component &part : *parts) {
    source.text(sizeof part.name - 1).copy(part.name, sizeof part.name - 1);
    source.text(sizeof part.number - 1).copy(part.number, sizeof part.number - 1);
    source.text(sizeof part.whole - 1).copy(part.whole, sizeof part.whole - 1);
  }
  std::uint32_t count = 2;
  const bool of_qa = source.flag();
  const std::int32_t result =
      of_qa ? replace_mem_location_qa(parts->data(), &count) : replace_mem_location(parts->data());
  require(result == 0 && count == (of_qa ? 3U : 2U), "components are rewritten, on qa to three");
  for (const lmainte_path_component &part : *parts) {
    require(std::memchr(part.whole, 0, sizeof part.whole) != nullptr, "a component's text has its end");
  }
}

}  // namespace

template <std::uint32_t Model>
void run_location(Input input) {
  Source source(input);
  const bool of_components = source.flag();
  on_machine([&] {
    put_model(Model);
    if (of_components) return rewrite_components(source);
    const std::string path = source.text();
    check_both_calls(path);
    lmainte_unit_position position;
    if (position_of(LMAINTE_POSITION_UNIT, path, position) == 0) {
      // Only on qa is the board of a memory module a part of its own.
      const bool has_board = Model == LMAINTE_MODEL_QA && position.count == parts_of(path) + 1;
      require(ends_with_zeros(position), "the ids behind the last part are 0: " + path);
      if (has_board) --position.count;
      if (has_board) position.id[position.count] = 0;
      check_position(path, position, LMAINTE_POSITION_UNIT);
    }
    require(position_of(2, path, position) == LMAINTE_FAILED, "a third mode is refused");
  });
}

template void run_location<1>(Input input);
template void run_location<2>(Input input);
template void run_location<3>(Input input);
template void run_location<4>(Input input);
template void run_location<5>(Input input);
template void run_location<6>(Input input);

}  // namespace fuzz
