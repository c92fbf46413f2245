// Records as people name them: by their own names, or by a unit that is written down in one.
#pragma once

#include <string>
#include <vector>

#include "host/box/breakage.h"
#include "host/box/place.h"

namespace spbox {

// A unit stands for the record of its state or, with `identity`, for its identity record. Throws box::BoxError where there is none.
std::vector<box::RecordName> records_named(const box::Place &place, const std::vector<std::string> &names,
                                           bool identity);

}  // namespace spbox
