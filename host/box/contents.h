// What a box holds, but for its trace and its log: enough to make the same box again.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <string>

#include "host/box/box_error.h"
#include "host/box/database.h"
#include "host/box/model.h"
#include "host/box/place.h"

namespace box {

struct Contents {
  std::uint32_t model = LMAINTE_MODEL_NONE;
  std::array<Database::Records, kDatabaseCount> records;  // by database and name
  std::map<std::string, std::string> hardware;            // see hardware.h
};

// A healthy server of this model, full of units. What readers copy from a record differs from unit to unit.
Contents new_server(std::uint32_t model);

// What the box at this place holds at one moment. Throws.
Contents contents_of(const Place &place);

// Makes a box that holds this, or a new server. Throws.
void create_box(const Place &place, const Contents &contents);
void create_box(const Place &place, std::uint32_t model);

bool is_box(const Place &place);

// Throws BoxError where there is no box.
void check_is_any_box(const Place &place);

// Throws BoxError where there is no box, or no marker file that tells its model.
void check_is_box(const Place &place);

// The model of a box, by its marker file. Throws as check_is_box does.
std::uint32_t model_of_box(const Place &place);

}  // namespace box
