// Who is in a box: commands hold a lock on a file of it as long as they run.
#pragma once

#include <filesystem>

#include "host/box/place.h"

namespace spbox {

// The file on which commands hold their lock, and which lists the mount points that they made.
std::filesystem::path occupancy_file(const box::Place &place);

// Opens that file and shares its lock, waiting while the box is made anew. Returns the descriptor, which the caller
// closes. Throws.
int enter(const box::Place &place);

// Keeps commands out of a box while it is made anew. Throws BoxError when one is in it.
class EmptyBox {
 public:
  explicit EmptyBox(const box::Place &place);
  ~EmptyBox();
  EmptyBox(const EmptyBox &) = delete;
  EmptyBox &operator=(const EmptyBox &) = delete;

 private:
  int fd_;
};

}  // namespace spbox
