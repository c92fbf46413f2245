// The making of a box in steps, such that whoever comes after a maker that died finds the old box or the new one, whole.
//
// The new box is made in a folder of the box's own and gets the name of what is complete there. From this moment on it is the
// box: its parts then take the places of the old ones, by the maker or by the next spbox.
#pragma once

#include "host/box/contents.h"

namespace spbox {

// What people are told where the old box could not be put back either.
class HalfMade : public box::BoxError {
 public:
  using BoxError::BoxError;
};

class Making {
 public:
  // The folder exists, and the caller has its lock alone.
  explicit Making(const box::Place &place);

  // Makes a complete box beside the one that is there, and puts it in its place. Throws HalfMade where the next spbox has to end
  // it. Throws anything else; then nothing has changed.
  void make(const box::Contents &contents) const;

  // What a maker left that died.
  enum class Left { kNothing, kUndone, kFinished };
  static bool is_any_left(const box::Place &place);
  static bool is_unfinished(const box::Place &place);  // the new box has not taken its place yet
  Left clear_up() const;                               // finishes it or undoes it. Throws.

 private:
  void refuse_links() const;
  void begin() const;
  void discard() const;
  void discard_if_possible() const;
  void finish() const;
  bool undo() const;  // false when it could not

  std::filesystem::path root_, folder_, fresh_, whole_, old_;
};

// Clears up behind a maker that died, waiting for one that lives, and says on standard error what was done. Does nothing
// for all other folders. Throws.
void clear_up_making(const box::Place &place);
void clear_up_making_alone(const box::Place &place);  // the same, by who has the lock of the folder alone

}  // namespace spbox
