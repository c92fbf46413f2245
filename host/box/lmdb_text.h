// What LMDB's results mean to the owner of a box.
#pragma once

#include <cstddef>
#include <string>

namespace box {

// The way out where a file of the box is damaged.
inline constexpr const char *kRemake = " Make the box anew, or load a dump of it.";

// A result of LMDB, or a number of errno, in words. `room` is the size of a full data file.
std::string lmdb_text(int result, std::size_t room);

}  // namespace box
