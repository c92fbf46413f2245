// What is in the two rings of a box, and what comes into them, look by look.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/box/call_ring.h"
#include "host/box/place.h"
#include "host/box/trace_ring.h"
#include "host/trace_book/history.h"

namespace trace_book {

struct Rings {
  std::vector<box::TraceEntry> records;
  std::vector<box::CallEntry> calls;
  std::string
      trouble;  // why the platform's calls cannot be read; a box of an older spbox has none, which is no trouble
};

// Throws where the library's records cannot be read.
Rings rings_of(const box::Place &place);

// The newest of both, read without the others.
Rings newest_rings_of(const box::Place &place, std::uint32_t count);

// A ring that is made anew begins at its front, whatever the other one does.
class Following {
 public:
  explicit Following(box::Place place) : trace_(place.trace()), calls_(place.calls()), place_(std::move(place)) {}

  struct News {
    bool trace_is_anew = false, calls_are_anew = false;
    std::string trouble;  // as of Rings
    History history;
    std::vector<const Moment *> moments;  // those of the history that no look before has given
  };

  // Nothing where nothing has come, or where the trace is just being made anew. Throws.
  std::optional<News> look();

 private:
  // What a look has seen of a ring.
  struct Ring {
    explicit Ring(std::filesystem::path path) : file(std::move(path)) {}

    std::filesystem::path file;
    ino_t made = 0;
    std::string count;
    std::vector<std::uint64_t> numbers;  // in ascending order
  };
  struct Glance;

  static Glance glance_at(const Ring &ring);
  bool has_seen(const Moment &moment) const;

  Ring trace_, calls_;
  box::Place place_;
  bool was_new_ = true;
};

}  // namespace trace_book
