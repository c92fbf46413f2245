#include "host/trace_book/following.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <stdexcept>
#include <utility>

#include "host/base/descriptor.h"
#include "host/box/contents.h"
#include "host/box/own_files.h"

namespace trace_book {
namespace {

template <typename Read>
Rings rings_by(const box::Place &place, Read read) {
  Rings rings;
  rings.records = read(box::TraceRing(), place.trace());
  struct stat status {};
  if (lstat(place.calls().c_str(), &status) != 0 && errno == ENOENT) return rings;
  try {
    rings.calls = read(box::CallRing(), place.calls());
  } catch (const std::runtime_error &error) {
    const std::string why = error.what();
    rings.trouble = why + (why.ends_with('.') ? "" : ".") + " The library's records are shown without the platform's.";
  }
  return rings;
}

std::vector<std::uint64_t> numbers_of(const auto &entries) {
  std::vector<std::uint64_t> numbers;
  for (const auto &entry : entries) numbers.push_back(entry.number);
  return numbers;
}

}  // namespace

Rings rings_of(const box::Place &place) {
  return rings_by(place, []<typename Ring>(const Ring &, const auto &file) { return Ring::read(file); });
}

Rings newest_rings_of(const box::Place &place, std::uint32_t count) {
  return rings_by(place,
                  [count]<typename Ring>(const Ring &, const auto &file) { return Ring::read_last(file, count); });
}

// Which file a ring is, and the bytes of it that change with each record.
struct Following::Glance {
  ino_t made = 0;
  std::string count;

  // Ends what was seen of another file. True where there was one.
  bool begins_anew(Ring &ring) const {
    const bool is_anew = made != ring.made && ring.made != 0;
    if (made != ring.made) ring.numbers.clear();
    ring.made = made;
    ring.count = count;
    return is_anew;
  }
};

Following::Glance Following::glance_at(const Ring &ring) {
  Glance glance;
  const base::Descriptor file(open(ring.file.c_str(), O_RDONLY | box::kOwnFile));
  struct stat status {};
  if (file.get() < 0 || fstat(file.get(), &status) != 0) return glance;
  glance.made = status.st_ino;
  std::string bytes(sizeof(std::uint64_t), '\0');
  const ssize_t size = pread(file.get(), bytes.data(), bytes.size(), box::TraceRing::kCountAt);
  if (size == static_cast<ssize_t>(bytes.size())) glance.count = bytes;
  return glance;
}

bool Following::has_seen(const Moment &moment) const {
  return std::ranges::binary_search(moment.is_of_library ? trace_.numbers : calls_.numbers, moment.number);
}

std::optional<Following::News> Following::look() {
  const Glance trace = glance_at(trace_), calls = glance_at(calls_);
  const bool is_first = trace_.made == 0;
  if (!is_first && trace.made == 0) return std::nullopt;  // between two rings
  const auto differs = [](const Glance &now, const Ring &ring) {
    return now.made != ring.made || now.count != ring.count;
  };
  const bool is_new = is_first || differs(trace, trace_) || differs(calls, calls_);
  // A record that was still being written when its ring was read is looked for once more.
  if (!is_new && !was_new_) return std::nullopt;
  was_new_ = is_new;
  const bool trace_is_anew = trace.begins_anew(trace_), calls_are_anew = calls.begins_anew(calls_);
  Rings rings = rings_of(place_);
  News news{.trace_is_anew = trace_is_anew,
            .calls_are_anew = calls_are_anew,
            .trouble = std::move(rings.trouble),
            .history = History(rings.records, rings.calls, box::model_in(place_)),
            .moments = {}};
  for (const Moment &moment : news.history.moments()) {
    if (!has_seen(moment)) news.moments.push_back(&moment);
  }
  trace_.numbers = numbers_of(rings.records);
  calls_.numbers = numbers_of(rings.calls);
  return news;
}

}  // namespace trace_book
