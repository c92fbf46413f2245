#include "include/lmainte.h"

#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "src/frame/trace.h"
#include "src/model/model_family.h"
#include "trace_events/model.h"

namespace {

using lmainte::Block;
using lmainte::Call;
using trace_events::FindIds;
using trace_events::GetUnitPositionId;
using trace_events::ReplaceMemLocation;
using trace_events::ReplaceMemLocationQa;
using trace_events::SplitPath;

lmainte::Trace trace;
constexpr Block kGetPosition = lmainte::block_of<GetUnitPositionId>();
constexpr Block kSplit = lmainte::block_of<SplitPath>();
constexpr Block kFindIds = lmainte::block_of<FindIds>();
constexpr Block kReplaceMem = lmainte::block_of<ReplaceMemLocation>();
constexpr Block kReplaceMemQa = lmainte::block_of<ReplaceMemLocationQa>();

constexpr uint32_t kMostComponents = 6;
constexpr char kExpansionPrefix[] = "/IOX@";

// Memory below a memory board, whose board is part of its name.
constexpr uint32_t kMemory = 138;
constexpr uint32_t kMemoryOfTheLargerMidRange = 166;

struct Path {
  lmainte_path_component components[kMostComponents] = {};
  uint32_t count = 0;
};

// Copies a text of this length, cut to its room.
template <size_t Size>
void copy_text(char (&to)[Size], const char *from, size_t length) {
  if (length >= Size) length = Size - 1;
  memcpy(to, from, length);
  to[length] = '\0';
}

bool has_white_space(const char *path) {
  for (; *path != '\0'; ++path)
    if (isspace(static_cast<unsigned char>(*path)) != 0) return true;
  return false;
}

bool is_well_formed(const char *path) {
  if (path[0] != '/' || path[strlen(path) - 1] == '/' || has_white_space(path)) return false;
  uint32_t slashes = 0;
  for (const char *c = path; *c != '\0'; ++c) slashes += *c == '/' ? 1 : 0;
  return slashes <= kMostComponents;
}

void fill_component(const char *text, size_t length, lmainte_path_component &component) {
  const char *mark = static_cast<const char *>(memchr(text, '#', length));
  const size_t name_length = mark == nullptr ? length : static_cast<size_t>(mark - text) + 1;
  copy_text(component.whole, text, length);
  copy_text(component.name, text, name_length);
  if (mark == nullptr)
    copy_text(component.number, "0", 1);
  else
    copy_text(component.number, text + name_length, length - name_length);
}

// The path of an I/O expansion unit stays whole: with no component it matches no location.
bool split(uint32_t mode, const char *path, Path &parts) {
  const Call call(trace, kSplit);
  if (strncmp(path, kExpansionPrefix, strlen(kExpansionPrefix)) == 0) return true;
  while (*path == '/') {
    const size_t length = strcspn(++path, "/");
    lmainte_path_component &component = parts.components[parts.count];
    if (length >= sizeof component.whole) {
      call.error(SplitPath::kTooLong, mode, static_cast<uint32_t>(length));
      return false;
    }
    fill_component(path, length, component);
    ++parts.count;
    path += length;
  }
  return true;
}

struct ModelRow {
  uint32_t model;
  const lmainte_unit_code *locations;
};

constexpr ModelRow kModels[] = {
    {LMAINTE_MODEL_QB1, convert_unit_code_qb1}, {LMAINTE_MODEL_QB2, convert_unit_code_qb2},
    {LMAINTE_MODEL_QE1, convert_unit_code_qe1}, {LMAINTE_MODEL_QE2, convert_unit_code_qe2},
    {LMAINTE_MODEL_QE3, convert_unit_code_qe3}, {LMAINTE_MODEL_QA, convert_unit_code_qa},
};

// Whether a pattern is the path without its numbers: "/" and a name for each part.
bool is_pattern_of(const Path &parts, const char *pattern) {
  for (uint32_t i = 0; i < parts.count; ++i) {
    const char *name = parts.components[i].name;
    const size_t length = strlen(name);
    if (*pattern != '/' || strncmp(pattern + 1, name, length) != 0) return false;
    pattern += 1 + length;
  }
  return *pattern == '\0';
}

const lmainte_unit_code *find_location(const lmainte_unit_code *location, const Path &parts) {
  for (; location->pattern[0] != '\0'; ++location)
    if (is_pattern_of(parts, location->pattern)) return location;
  return nullptr;
}

bool is_memory(uint32_t type) {
  return type == kMemory || type == kMemoryOfTheLargerMidRange;
}

// Digits only, no leading zero, below the limit; no limit has more than three digits.
bool number_below(const char *number, uint8_t limit, uint8_t &id) {
  const size_t length = strlen(number);
  if (length == 0 || length > 3 || strspn(number, "0123456789") != length) return false;
  if (number[0] == '0' && length > 1) return false;
  uint32_t value = 0;
  for (const char *digit = number; *digit != '\0'; ++digit) value = value * 10 + static_cast<uint32_t>(*digit - '0');
  if (value >= limit) return false;
  id = static_cast<uint8_t>(value);
  return true;
}

bool find_named(const lmainte_unit_name *row, const char *name, uint32_t mode, uint8_t &id) {
  for (; row->name[0] != '\0'; ++row) {
    if (strcmp(row->name, name) != 0) continue;
    id = mode == LMAINTE_POSITION_FRU ? row->id_fru : row->id_pos;
    return true;
  }
  return false;
}

bool find_ids(const lmainte_unit_code &location, const Path &parts, uint32_t mode, uint8_t (&ids)[kMostComponents]) {
  const Call call(trace, kFindIds);
  for (uint32_t i = 0; i < parts.count; ++i) {
    const lmainte_path_component &component = parts.components[i];
    const bool is_named = i + 1 == parts.count && location.names != nullptr;
    const bool found = is_named ? find_named(location.names, component.whole, mode, ids[i])
                                : number_below(component.number, location.max[i], ids[i]);
    if (!found) {
      call.error(FindIds::kNoUnit, mode, static_cast<uint32_t>(strtoul(component.number, nullptr, 10)));
      return false;
    }
  }
  return true;
}

void rewrite_memory(uint32_t model, Path &parts) {
  if (model == LMAINTE_MODEL_QA)
    replace_mem_location_qa(parts.components, &parts.count);
  else
    replace_mem_location(parts.components);
}

// Finds the position of a path that has been split.
int32_t find_position(const Call &call, uint32_t mode, uint32_t model, Path &parts, lmainte_unit_position &position) {
  const ModelRow *row = lmainte::row_of(kModels, model);
  if (row == nullptr) {
    call.error(GetUnitPositionId::kNoModel, mode, model);
    return LMAINTE_FAILED;
  }
  const lmainte_unit_code *location = find_location(row->locations, parts);
  if (location == nullptr) {
    call.error(GetUnitPositionId::kNoLocation, mode);
    return LMAINTE_POSITION_UNKNOWN;
  }
  lmainte_unit_position found = {};
  found.type = mode == LMAINTE_POSITION_FRU ? location->type_fru : location->type_pos;
  if (mode == LMAINTE_POSITION_FRU && found.type == 0) {
    call.error(GetUnitPositionId::kNotReplaceable, mode, found.type);
    return LMAINTE_POSITION_UNKNOWN;
  }
  if (mode == LMAINTE_POSITION_UNIT && is_memory(found.type)) rewrite_memory(model, parts);
  if (!find_ids(*location, parts, mode, found.id)) {
    call.error(GetUnitPositionId::kNoIds, mode, LMAINTE_POSITION_UNKNOWN);
    return LMAINTE_POSITION_UNKNOWN;
  }
  found.count = static_cast<uint8_t>(parts.count);
  position = found;
  return LMAINTE_OK;
}

}  // namespace

int32_t lmainte_get_unit_position_id(uint32_t mode, const char *path, lmainte_unit_position *position) {
  const Call call(trace, kGetPosition);
  if (mode > LMAINTE_POSITION_UNIT) {
    call.error(GetUnitPositionId::kNoMode, mode);
    return LMAINTE_FAILED;
  }
  if (path == nullptr || position == nullptr) {
    call.error(GetUnitPositionId::kNullArgument, mode);
    return LMAINTE_FAILED;
  }
  if (!is_well_formed(path)) {
    call.error(GetUnitPositionId::kNotWellFormed, mode);
    return LMAINTE_POSITION_UNKNOWN;
  }
  lmainte_model_data model_data = {};
  const int32_t result = lmainte_get_model_data(&model_data, nullptr);
  if (result != LMAINTE_OK) {
    call.error(GetUnitPositionId::kModelNotRead, mode, result);
    return LMAINTE_FAILED;
  }
  Path parts;
  if (!split(mode, path, parts)) {
    call.error(GetUnitPositionId::kNotSplit, mode, LMAINTE_POSITION_UNKNOWN);
    return LMAINTE_POSITION_UNKNOWN;
  }
  return find_position(call, mode, model_data.model, parts, *position);
}

int32_t replace_mem_location(lmainte_path_component *components) {
  const Call call(trace, kReplaceMem);
  if (components == nullptr) {
    call.error(ReplaceMemLocation::kNullArgument);
    return LMAINTE_FAILED;
  }
  char whole[sizeof components[1].whole + 1 + sizeof components[2].whole];
  snprintf(whole, sizeof whole, "%s/%s", components[1].whole, components[2].whole);
  copy_text(components[2].whole, whole, strlen(whole));
  return LMAINTE_OK;
}

int32_t replace_mem_location_qa(lmainte_path_component *components, uint32_t *count) {
  const Call call(trace, kReplaceMemQa);
  if (components == nullptr || count == nullptr) {
    call.error(ReplaceMemLocationQa::kNullArgument);
    return LMAINTE_FAILED;
  }
  components[2] = components[1];
  components[1] = {};
  copy_text(components[1].number, "0", 1);
  *count = 3;
  return LMAINTE_OK;
}
