// What others do to a box while an author's command is recorded in it: the verbs of spbox in a second terminal. Who does
// something tells it through a pipe with a name in the box, to which nobody listens where nothing is recorded.
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

#include "host/base/descriptor.h"
#include "host/box/place.h"
#include "host/play/step.h"

namespace recorder {

// One that does something to the box. It is told when it begins, so that it stands before what the command makes of it; what
// was not done is not recorded.
class Deed {
 public:
  // `step` is the step of a play that does the same; without words, or where nobody listens, nothing is told.
  Deed(const box::Place &place, const play::Words &step);
  ~Deed();
  Deed(const Deed &) = delete;
  Deed &operator=(const Deed &) = delete;

  void was_done();

 private:
  void tell(char what, const std::string &text) const;

  base::Descriptor pipe_;
  bool is_done_ = false;
};

struct ToldDeed {
  enum class What { kBegins, kDone, kFailed };

  pid_t who;
  What what;
  play::Words step = {};  // of one that begins
};

// The one that listens.
class Deeds {
 public:
  // Throws box::BoxError where another one listens already, and std::system_error.
  explicit Deeds(const box::Place &place);
  ~Deeds();
  Deeds(const Deeds &) = delete;
  Deeds &operator=(const Deeds &) = delete;

  int news() const { return pipe_.get(); }  // a descriptor that becomes readable
  std::vector<ToldDeed> take();             // what was told since

 private:
  std::optional<ToldDeed> deed_in(const std::string &line);

  std::string path_;
  base::Descriptor pipe_;
  std::string unread_;
  std::vector<std::pair<pid_t, std::string>> begun_;  // the parts of what each of them told
};

}  // namespace recorder
