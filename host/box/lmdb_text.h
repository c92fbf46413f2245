// What LMDB's results mean to the owner of a box.
#pragma once

#include <cstddef>
#include <string>

namespace box {

// What is said of a data file that is not as it was saved, with the way out.
std::string damaged(const std::string &how);

// A result of LMDB, or a number of errno, in words. `room` is the size of a full data file.
std::string lmdb_text(int result, std::size_t room);

}  // namespace box
