#include "host/box/model.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <system_error>
#include <vector>

#include "host/base/descriptor.h"
#include "host/base/listed.h"
#include "host/box/own_files.h"

namespace box {
namespace {

constexpr std::array<Model, 6> kModels{{
    {LMAINTE_MODEL_QA, "qa", 1, 0, 1, convert_unit_code_qa, max_fan_num_qa},
    {LMAINTE_MODEL_QB1, "qb1", 1, 0, 1, convert_unit_code_qb1, max_fan_num_qb1},
    {LMAINTE_MODEL_QB2, "qb2", 2, 0, 1, convert_unit_code_qb2, max_fan_num_qb2},
    {LMAINTE_MODEL_QE1, "qe1", 4, 16, 24, convert_unit_code_qe1, max_fan_num_qe1},
    {LMAINTE_MODEL_QE2, "qe2", 8, 32, 24, convert_unit_code_qe2, max_fan_num_qe2},
    {LMAINTE_MODEL_QE3, "qe3", 16, 64, 24, convert_unit_code_qe3, max_fan_num_qe3},
}};

template <typename Property>
const Model *first_model(Property property) {
  const auto *const found = std::find_if(kModels.begin(), kModels.end(), property);
  return found == kModels.end() ? nullptr : found;
}

}  // namespace

std::span<const Model> models() {
  return kModels;
}

const Model *find_model(std::uint32_t code) {
  return first_model([&](const Model &model) { return model.code == code; });
}

const Model *find_model(std::string_view name) {
  return first_model([&](const Model &model) { return model.name == name; });
}

std::uint32_t model_in(const Place &place) {
  const Model *found = first_model([&](const Model &model) {
    std::error_code error;
    return std::filesystem::exists(place.tmp() / model.marker(), error);
  });
  return found == nullptr ? std::uint32_t{LMAINTE_MODEL_NONE} : found->code;
}

// Looks first, and makes the new one before it removes an old one: what fails has changed nothing.
void set_model(const Place &place, const Model *model) {
  constexpr mode_t kMode = S_IRUSR | S_IWUSR | S_IRGRP | S_IWGRP | S_IROTH | S_IWOTH;
  const base::Descriptor folder = open_own_folder(place, "tmp");
  const auto fail = [&](const Model &row) {
    const std::error_code why(errno, std::generic_category());
    throw std::filesystem::filesystem_error("the marker cannot be changed", place.tmp() / row.marker(), why);
  };
  std::vector<const Model *> others;
  bool is_there = false;
  for (const Model &row : kModels) {
    struct stat marker {};
    const bool found = fstatat(folder.get(), row.marker().c_str(), &marker, AT_SYMLINK_NOFOLLOW) == 0;
    if (!found && errno != ENOENT) fail(row);
    if (found && &row == model) is_there = true;
    if (found && &row != model) others.push_back(&row);
  }
  if (model != nullptr) {
    const base::Descriptor made(openat(folder.get(), model->marker().c_str(), O_WRONLY | O_CREAT | kOwnFile, kMode));
    if (made.get() < 0) fail(*model);
  }
  for (const Model *row : others) {
    if (unlinkat(folder.get(), row->marker().c_str(), 0) == 0) continue;
    const int why = errno;
    if (model != nullptr && !is_there) unlinkat(folder.get(), model->marker().c_str(), 0);
    errno = why;
    fail(*row);
  }
}

std::string model_names() {
  std::array<std::string_view, kModels.size()> names;
  std::transform(kModels.begin(), kModels.end(), names.begin(), [](const Model &model) { return model.name; });
  return base::listed(names, " or ");
}

std::string_view model_name(std::uint32_t code) {
  const Model *model = find_model(code);
  return model == nullptr ? std::string_view() : model->name;
}

std::uint32_t boards_of(std::uint32_t code) {
  const Model *model = find_model(code);
  return model == nullptr ? 0 : model->boards;
}

}  // namespace box
