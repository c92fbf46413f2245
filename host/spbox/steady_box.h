// A box that stays the one that it is while a verb works on it. The verb is confined to the folders that it finds; those of a box
// that is made anew meanwhile are others, which it may not read.
#pragma once

#include <sys/types.h>

#include <functional>
#include <optional>
#include <string>
#include <utility>

#include "host/box/place.h"
#include "host/spbox/folder_lock.h"

namespace spbox {

// Which box lies there: one that was made anew is another. None where no box lies.
using Identity = std::optional<std::pair<dev_t, ino_t>>;
Identity identity_of(const box::Place &place);

class SteadyBox {
 public:
  // Waits for who makes the box anew. Does nothing where there is no box. Throws.
  explicit SteadyBox(const box::Place &place);

  // Whether it was made anew all the same: nobody waits long for a verb.
  bool is_another() const;

 private:
  box::Place place_;
  std::optional<FolderLock> shared_;
  Identity found_;
};

// For who cannot wait for a maker, as a picture that lives. `look` says what went wrong, or nothing; where it fails at a box that is
// made anew meanwhile, it is called again. Returns what it said last.
std::string look_at_one_box(const box::Place &place, const std::function<std::string()> &look);

// For who makes the box anew, and has the lock of its folder alone: waits for the verbs that work on it, a moment at most. One may
// last as long as a person looks at what it prints.
void wait_for_verbs(const box::Place &place);

}  // namespace spbox
