#include "host/box/points.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstring>
#include <memory>
#include <utility>

#include "host/base/descriptor.h"
#include "host/box/box_error.h"
#include "host/box/mapping_guard.h"
#include "host/box/own_files.h"

namespace box {
namespace {

using Word = std::atomic<std::uint64_t>;
using Half = std::atomic<std::uint32_t>;
static_assert(Word::is_always_lock_free && Half::is_always_lock_free, "the page is shared by processes and handlers");

constexpr std::uint64_t kPointsMagic = 0x31544E4950584253;  // "SBXPINT1" in little-endian order
constexpr std::size_t kCounters = 4096;

using Name = std::array<char, kLongestPointName + 1>;

// The file and the memory: a head, then the deviations, then the counters.
struct alignas(64) PointsHead {
  Word magic;
  Half deviations;
  Half kinds_reached;  // counters that are taken
  Half lost;
  std::array<Half, 11> zeros;
};

struct alignas(64) DeviationRow {
  std::uint64_t hash;
  std::uint32_t kind, number, way, value;
  std::int32_t happened;  // a process writes it at any time
  Name name;
};

// A place for points of one kind and name, found by their hash. The place is taken when the hash is set; who takes it writes the rest
// and says with `place` that it is whole: 1 for the first one taken.
struct alignas(64) Counter {
  Word hash;
  Half count, place;
  std::uint32_t kind;
  Name name;
};
static_assert(sizeof(PointsHead) == 64 && sizeof(DeviationRow) == 128 && sizeof(Counter) == 64);

struct Page {
  PointsHead head;
  std::array<DeviationRow, kMostDeviations> deviations;
  std::array<Counter, kCounters> counters;
};

// FNV-1a over the kind and the whole name, never 0.
std::uint64_t hash_of(PointKind kind, std::string_view name) noexcept {
  std::uint64_t hash = (14695981039346656037U ^ static_cast<std::uint32_t>(kind)) * 1099511628211U;
  for (const char byte : name) hash = (hash ^ static_cast<unsigned char>(byte)) * 1099511628211U;
  return hash == 0 ? 1 : hash;
}

void set_name(Name &to, std::string_view name) noexcept {
  const std::size_t length = std::min(name.size(), kLongestPointName);
  std::copy_n(name.data(), length, to.data());
  to[length] = '\0';
}

std::string name_in(const Name &name) {
  return {name.data(), strnlen(name.data(), name.size())};
}

// The counter of this hash; one that is free becomes its. Null when all are taken.
Counter *counter_of(Page &page, std::uint64_t hash, PointKind kind, std::string_view name) noexcept {
  for (std::size_t tried = 0; tried < kCounters; ++tried) {
    Counter &at = page.counters[(hash + tried) % kCounters];
    std::uint64_t free = 0;
    if (at.hash.load(std::memory_order_acquire) == hash) return &at;
    if (at.hash.compare_exchange_strong(free, hash)) {
      at.kind = static_cast<std::uint32_t>(kind);
      set_name(at.name, name);
      at.place.store(page.head.kinds_reached.fetch_add(1) + 1, std::memory_order_release);
      return &at;
    }
    if (free == hash) return &at;  // another process was faster
  }
  return nullptr;
}

BoxError points_failure(const Place &place, const std::string &what, int reason) {
  return BoxError("points " + place.points().string() + ": " + what + ": " + std::strerror(reason));
}

BoxError no_points(const Place &place) {
  return BoxError("points " + place.points().string() + ": this is no file of points, or a damaged one. Remove it.");
}

// The folder of the file, and no other one behind a link that a command has put there.
base::Descriptor points_folder(const Place &place) {
  constexpr int kFolder = O_RDONLY | O_DIRECTORY | O_CLOEXEC;
  base::Descriptor folder(open(place.root().c_str(), kFolder));
  for (const char *below : {"mgb", "log"}) {
    if (folder.get() >= 0) folder = base::Descriptor(openat(folder.get(), below, kFolder | O_NOFOLLOW));
  }
  if (folder.get() < 0) throw points_failure(place, "cannot enter their folder", errno);
  return folder;
}

// The same for who changes the file: one at a time, until the folder is closed.
base::Descriptor locked_folder(const Place &place) {
  base::Descriptor folder = points_folder(place);
  while (flock(folder.get(), LOCK_EX) != 0) {
    if (errno != EINTR) throw points_failure(place, "cannot lock their folder", errno);
  }
  return folder;
}

constexpr char kFile[] = "points", kFresh[] = "points.new";

// Returns 0, or a number of errno.
template <typename Value>
int write_at(int fd, const Value &value, std::size_t at) {
  const ssize_t size = pwrite(fd, &value, sizeof value, static_cast<off_t>(at));
  if (size == static_cast<ssize_t>(sizeof value)) return 0;
  return size < 0 ? errno : ENOSPC;
}

// The row is there when it is counted.
int write_row(int fd, const DeviationRow &row, std::uint32_t rows_before) {
  const int error = write_at(fd, row, offsetof(Page, deviations) + rows_before * sizeof row);
  return error == 0 ? write_at(fd, rows_before + 1, offsetof(Page, head.deviations)) : error;
}

// Its room on the disk is taken at once: a full disk must not kill a process that counts.
int write_fresh(int folder, const DeviationRow *row) {
  const base::Descriptor fresh(openat(folder, kFresh, O_RDWR | O_CREAT | O_TRUNC | kOwnFile, 0666));
  if (fresh.get() < 0) return errno;
  if (const int error = posix_fallocate(fresh.get(), 0, sizeof(Page)); error != 0) return error;
  if (const int error = write_at(fresh.get(), kPointsMagic, 0); error != 0) return error;
  return row == nullptr ? 0 : write_row(fresh.get(), *row, 0);
}

// Makes the file with a deviation or none. Processes that have an older one mapped go on counting there, where nobody looks.
void make_points(const Place &place, int folder, const DeviationRow *row) {
  int error = write_fresh(folder, row);
  if (error == 0 && renameat(folder, kFresh, folder, kFile) != 0) error = errno;
  if (error == 0) return;
  unlinkat(folder, kFresh, 0);
  throw points_failure(place, "cannot make them", error);
}

// The whole page as it was read, all zeros behind an end that came too soon.
bool read_page(int fd, Page &page) {
  auto *bytes = reinterpret_cast<char *>(&page);
  std::size_t done = 0;
  while (done < sizeof page) {
    const ssize_t size = pread(fd, bytes + done, sizeof page - done, static_cast<off_t>(done));
    if (size < 0 && errno == EINTR) continue;
    if (size <= 0) return false;
    done += static_cast<std::size_t>(size);
  }
  return page.head.magic == kPointsMagic;
}

// No descriptor where there is no such file.
base::Descriptor open_points(const Place &place, int folder, int flags) {
  base::Descriptor file(openat(folder, kFile, flags | kOwnFile));
  if (file.get() < 0 && errno != ENOENT) throw points_failure(place, "cannot open them", errno);
  return file;
}

bool is_kind(std::uint32_t kind) {
  return kind < kPointKinds.size();
}

// What a row of the file says, which anybody may have written.
std::optional<Deviation> deviation_in(const DeviationRow &row) {
  if (!is_kind(row.kind) || row.way > static_cast<std::uint32_t>(Way::kSignal)) return std::nullopt;
  return Deviation{static_cast<PointKind>(row.kind),
                   name_in(row.name),
                   row.number,
                   {static_cast<Way>(row.way), static_cast<int>(row.value)},
                   row.happened};
}

Points points_in(const Page &page) {
  Points points;
  const std::size_t rows = std::min<std::size_t>(page.head.deviations, kMostDeviations);
  for (std::size_t i = 0; i < rows; ++i) {
    if (auto deviation = deviation_in(page.deviations[i])) points.deviations.push_back(std::move(*deviation));
  }
  std::vector<const Counter *> taken;
  for (const Counter &counter : page.counters) {
    if (counter.hash != 0 && counter.place != 0 && is_kind(counter.kind)) taken.push_back(&counter);
  }
  std::ranges::sort(taken, {}, [](const Counter *at) { return std::pair(at->kind, at->place.load()); });
  for (const Counter *at : taken) {
    points.counts.push_back({static_cast<PointKind>(at->kind), name_in(at->name), at->count});
  }
  points.lost = page.head.lost;
  return points;
}

DeviationRow row_for(const Deviation &deviation) {
  DeviationRow row{};
  row.hash = hash_of(deviation.kind, deviation.name);
  row.kind = static_cast<std::uint32_t>(deviation.kind);
  row.number = deviation.number;
  row.way = static_cast<std::uint32_t>(deviation.turn.way);
  row.value = static_cast<std::uint32_t>(deviation.turn.value);
  set_name(row.name, deviation.name);
  return row;
}

void add_row(const Place &place, int fd, const DeviationRow &row) {
  const auto page = std::make_unique<Page>();
  if (!read_page(fd, *page)) throw no_points(place);
  const std::uint32_t rows = page->head.deviations;
  if (rows >= kMostDeviations) {
    throw BoxError("no more than " + std::to_string(kMostDeviations) + " deviations can wait in a box.");
  }
  if (const int error = write_row(fd, row, rows); error != 0) throw points_failure(place, "cannot write them", error);
}

}  // namespace

bool PointKindRow::can(Way way) const {
  return std::ranges::find(ways, way) != ways.end();
}

const PointKindRow &row_of(PointKind kind) {
  return kPointKinds[static_cast<std::size_t>(kind)];
}

bool PointCounter::map(const char *file) noexcept {
  const int kept_errno = errno;
  const base::Descriptor points(open(file, O_RDWR | kOwnFile));
  struct stat status {};
  if (points.get() >= 0 && fstat(points.get(), &status) == 0 && status.st_size == static_cast<off_t>(sizeof(Page))) {
    void *memory = mmap(nullptr, sizeof(Page), PROT_READ | PROT_WRITE, MAP_SHARED, points.get(), 0);
    if (memory != MAP_FAILED) {
      guard_mapping(memory, sizeof(Page));
      memory_.store(memory, std::memory_order_release);
    }
  }
  errno = kept_errno;
  return memory_.load(std::memory_order_relaxed) != nullptr;
}

Turn PointCounter::reach(PointKind kind, std::string_view name) noexcept {
  auto *page = static_cast<Page *>(memory_.load(std::memory_order_acquire));
  if (page == nullptr || page->head.magic.load(std::memory_order_relaxed) != kPointsMagic) return {};
  const std::uint64_t hash = hash_of(kind, name);
  Counter *counter = counter_of(*page, hash, kind, name);
  if (counter == nullptr) {
    page->head.lost.fetch_add(1);
    return {};
  }
  const std::uint32_t number = counter->count.fetch_add(1) + 1;
  Turn turn;
  const std::size_t rows =
      std::min<std::size_t>(page->head.deviations.load(std::memory_order_acquire), kMostDeviations);
  for (std::size_t i = 0; i < rows; ++i) {
    DeviationRow &row = page->deviations[i];
    if (row.hash != hash || row.number != number) continue;
    std::atomic_ref(row.happened).store(getpid());
    turn = {static_cast<Way>(row.way), static_cast<int>(row.value)};
    if (turn.way == Way::kSignal) raise(turn.value);
  }
  return turn;
}

std::optional<Points> points_of(const Place &place) {
  const base::Descriptor file = open_points(place, points_folder(place).get(), O_RDONLY);
  if (file.get() < 0) return std::nullopt;
  const auto page = std::make_unique<Page>();
  if (!read_page(file.get(), *page)) throw no_points(place);
  return points_in(*page);
}

void count_points(const Place &place) {
  make_points(place, locked_folder(place).get(), nullptr);
}

void deviate(const Place &place, const Deviation &deviation) {
  const base::Descriptor folder = locked_folder(place);
  const DeviationRow row = row_for(deviation);
  const base::Descriptor file = open_points(place, folder.get(), O_RDWR);
  if (file.get() < 0) return make_points(place, folder.get(), &row);
  add_row(place, file.get(), row);
}

bool forget_points(const Place &place) {
  if (unlinkat(locked_folder(place).get(), kFile, 0) == 0) return true;
  if (errno == ENOENT) return false;
  throw points_failure(place, "cannot remove them", errno);
}

}  // namespace box
