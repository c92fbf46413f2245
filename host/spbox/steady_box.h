// A box that stays the one that it is while a verb works on it. The verb is confined to the folders that it finds; those of a box
// that is made anew meanwhile are others, which it may not read.
#pragma once

#include <sys/types.h>

#include <optional>
#include <utility>

#include "host/box/place.h"
#include "host/spbox/folder_lock.h"

namespace spbox {

class SteadyBox {
 public:
  // Waits for who makes the box anew. Does nothing where there is no box. Throws.
  explicit SteadyBox(const box::Place &place);

  // Whether it was made anew all the same: nobody waits long for a verb.
  bool is_another() const;

 private:
  using Identity = std::pair<dev_t, ino_t>;
  std::optional<Identity> identity() const;

  std::filesystem::path parts_;
  std::optional<FolderLock> shared_;
  std::optional<Identity> found_;
};

// For who makes the box anew, and has the lock of its folder alone: waits for the verbs that work on it, a moment at most. One may
// last as long as a person looks at what it prints.
void wait_for_verbs(const box::Place &place);

}  // namespace spbox
