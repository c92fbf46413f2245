// Somebody from outside who works on a box beside the one who keeps its time: they have the same time, and it waits for them.
#pragma once

#include <filesystem>
#include <optional>

#include "host/clock/table.h"

namespace box_time {

class Guest {
 public:
  // Of the box with the page of this name. Where nobody keeps its time, or there are too many guests, they have the wall's.
  explicit Guest(const std::filesystem::path &page);
  ~Guest();
  Guest(const Guest &) = delete;
  Guest &operator=(const Guest &) = delete;

  bool has_box_time() const { return row_ >= 0; }

  nanoseconds now() const;  // since any moment
  void sleep(nanoseconds length) const;

 private:
  std::optional<Table> table_;
  int row_ = -1;
};

// Whether somebody keeps the time of the box with this page.
bool is_kept(const std::filesystem::path &page);

}  // namespace box_time
