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
#include <span>
#include <utility>

#include "host/base/descriptor.h"
#include "host/base/signal_name.h"
#include "host/box/advice.h"
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
  Half ordered;  // points whose order was kept, or would have been
  std::array<Half, 10> zeros;
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

// Behind the page, where the order of the points is kept: of each point the number of its counter, from 1.
using Order = std::array<std::atomic<std::uint16_t>, kLongestOrder>;
static_assert(kCounters <= UINT16_MAX && sizeof(Order) == 2 * kLongestOrder);

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

BoxError damaged_points(const Place &place) {
  return BoxError("points " + place.points().string() + ": the file is damaged, or is none of points. " +
                  advice({"points", place.root(), "--count"}) + " makes it anew.");
}

// No descriptor where there is no such file.
base::Descriptor open_points(const Place &place, int flags) {
  base::Descriptor file(open(place.points().c_str(), flags | kOwnFile, 0666));
  if (file.get() < 0 && errno != ENOENT) throw points_failure(place, "cannot open them", errno);
  return file;
}

// The same for who changes the file: one at a time, until it is closed.
base::Descriptor open_locked(const Place &place) {
  base::Descriptor file = open_points(place, O_RDWR | O_CREAT);
  int failed = -1;
  while (file.get() >= 0 && (failed = flock(file.get(), LOCK_EX)) != 0 && errno == EINTR) {
  }
  if (failed != 0) throw points_failure(place, "cannot lock them", errno);
  return file;
}

// Returns 0, or a number of errno. The write behind a short one tells the reason.
template <typename Value>
int write_at(int fd, const Value &value, std::size_t at) {
  const auto *bytes = reinterpret_cast<const char *>(&value);
  for (std::size_t done = 0; done < sizeof value;) {
    const ssize_t size = pwrite(fd, bytes + done, sizeof value - done, static_cast<off_t>(at + done));
    if (size < 0 && errno != EINTR) return errno;
    if (size > 0) done += static_cast<std::size_t>(size);
  }
  return 0;
}

// The row is there when it is counted.
int write_row(int fd, const DeviationRow &row, std::uint32_t rows_before) {
  const int error = write_at(fd, row, offsetof(Page, deviations) + rows_before * sizeof row);
  return error == 0 ? write_at(fd, rows_before + 1, offsetof(Page, head.deviations)) : error;
}

// An empty page counts when its first word says so. Its room on the disk is taken at once: a full disk must not kill a process that
// counts. A limit of the size of files would end the writing in the middle: the last byte, written as it is, tells of it while the
// old page is whole.
int write_empty(int fd, std::size_t size) {
  constexpr std::array<char, sizeof(Page)> kZeros{};
  constexpr std::size_t kLast = sizeof(Page) - 1;
  if (const int error = posix_fallocate(fd, 0, static_cast<off_t>(size)); error != 0) return error;
  char last = 0;
  if (pread(fd, &last, 1, kLast) < 0) return errno;
  const int error = write_at(fd, last, kLast);
  return error == 0 ? write_at(fd, kZeros, 0) : error;
}

void begin_to_count(const Place &place, int fd, const DeviationRow *row, std::size_t size = sizeof(Page)) {
  int error = write_empty(fd, size);
  if (error == 0 && row != nullptr) error = write_row(fd, *row, 0);
  if (error == 0) error = write_at(fd, kPointsMagic, 0);
  if (error != 0) throw points_failure(place, "cannot make room for them", error);
}

enum class Counting { kNot, kYes, kDamaged };

// Returns how much there is of it.
std::size_t read_at(const Place &place, int fd, void *to, std::size_t wanted, std::size_t at) {
  auto *bytes = static_cast<char *>(to);
  std::size_t done = 0;
  while (done < wanted) {
    const ssize_t size = pread(fd, bytes + done, wanted - done, static_cast<off_t>(at + done));
    if (size < 0 && errno == EINTR) continue;
    if (size < 0) throw points_failure(place, "cannot read them", errno);
    if (size == 0) break;
    done += static_cast<std::size_t>(size);
  }
  return done;
}

// Reads the whole page. One that has no first word, or no room yet, does not count.
Counting read_page(const Place &place, int fd, Page &page) {
  const std::size_t done = read_at(place, fd, &page, sizeof page, 0);
  if (page.head.magic == 0) return Counting::kNot;
  return done == sizeof page && page.head.magic == kPointsMagic ? Counting::kYes : Counting::kDamaged;
}

bool is_kind(std::uint32_t kind) {
  return kind < kPointKinds.size();
}

// What a row of the file says, which anybody may have written.
std::optional<Deviation> deviation_in(const DeviationRow &row) {
  if (!is_kind(row.kind) || row.way > static_cast<std::uint32_t>(Way::kMidway)) return std::nullopt;
  return Deviation{static_cast<PointKind>(row.kind),
                   name_in(row.name),
                   row.number,
                   {static_cast<Way>(row.way), static_cast<int>(row.value)},
                   row.happened};
}

Points points_in(const Page &page, const std::vector<std::uint16_t> &ordered) {
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
  std::array<std::uint32_t, kCounters> places{};  // in `counts`, from 1, by counter
  for (const Counter *at : taken) {
    points.counts.push_back({static_cast<PointKind>(at->kind), name_in(at->name), at->count});
    places.at(static_cast<std::size_t>(at - page.counters.data())) = static_cast<std::uint32_t>(points.counts.size());
  }
  points.lost = page.head.lost;
  for (const std::uint16_t number : ordered) {
    const std::uint32_t at = number == 0 || number > kCounters ? 0 : places.at(number - 1U);
    if (at != 0) points.order.push_back(at - 1);
  }
  return points;
}

// The numbers of the counters, one for each point.
std::vector<std::uint16_t> order_in(const Place &place, int fd, const Page &page) {
  std::vector<std::uint16_t> order(std::min<std::size_t>(page.head.ordered, kLongestOrder));
  order.resize(read_at(place, fd, order.data(), order.size() * sizeof order[0], sizeof(Page)) / sizeof order[0]);
  return order;
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

// One thing alone can happen at a point.
void check_is_free(const Place &place, const Page &page, const DeviationRow &row) {
  const std::size_t rows = std::min<std::size_t>(page.head.deviations, kMostDeviations);
  for (const DeviationRow &other : std::span(page.deviations).first(rows)) {
    if (other.happened != 0 || other.hash != row.hash || other.number != row.number) continue;
    const auto known = deviation_in(other);
    if (!known) throw damaged_points(place);
    throw BoxError("something else is to happen there already: " + text_of(known->turn) + ". " +
                   advice({"points", place.root(), "--forget"}) + " lets all happen as usual.");
  }
}

// Points whose order is not kept are none in it.
void resize_order(const Place &place, std::size_t size) {
  const base::Descriptor file = open_points(place, O_RDWR);
  struct stat status {};
  const bool is_counted = file.get() >= 0 && fstat(file.get(), &status) == 0 && status.st_size >= off_t{sizeof(Page)};
  if (is_counted && ftruncate(file.get(), static_cast<off_t>(size)) != 0) {
    throw points_failure(place, "cannot change them", errno);
  }
}

}  // namespace

std::string_view word_of(Way way) {
  constexpr std::array<std::string_view, 12> kWords{"nothing", "refused", "busy", "missing", "short", "long",
                                                    "end",     "exit",    "hang", "signal",  "full",  "midway"};
  return kWords[static_cast<std::size_t>(way)];
}

std::string text_of(const Turn &turn) {
  const std::string word(word_of(turn.way));
  if (turn.way == Way::kExit) return word + " " + std::to_string(turn.value);
  return turn.way == Way::kSignal ? word + " " + base::signal_name(turn.value) : word;
}

bool PointKindRow::can(Way way) const {
  return std::ranges::find(ways, way) != ways.end();
}

const PointKindRow &row_of(PointKind kind) {
  return kPointKinds[static_cast<std::size_t>(kind)];
}

// Keeps the mapping of a page that counts.
void PointCounter::take(void *memory, std::size_t size) noexcept {
  guard_mapping(memory, size);
  if (static_cast<Page *>(memory)->head.magic.load(std::memory_order_acquire) == kPointsMagic) {
    room_.store(size == sizeof(Page) ? 0 : kLongestOrder, std::memory_order_relaxed);
    memory_.store(memory, std::memory_order_release);
  } else {
    munmap(memory, size);
  }
}

bool PointCounter::map(const char *file) noexcept {
  const int kept_errno = errno;
  const base::Descriptor points(open(file, O_RDWR | kOwnFile));
  struct stat status {};
  const bool is_there = points.get() >= 0 && fstat(points.get(), &status) == 0;
  const auto size = static_cast<std::size_t>(status.st_size);
  if (is_there && (size == sizeof(Page) || size == sizeof(Page) + sizeof(Order))) {
    void *memory = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, points.get(), 0);
    if (memory != MAP_FAILED) take(memory, size);
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
  if (const std::size_t room = room_.load(std::memory_order_relaxed); room > 0) {
    const std::uint32_t at = page->head.ordered.fetch_add(1);
    auto *order = reinterpret_cast<std::atomic<std::uint16_t> *>(page + 1);
    if (at < room) order[at].store(static_cast<std::uint16_t>(counter - page->counters.data() + 1));
  }
  Turn turn;
  const std::size_t rows =
      std::min<std::size_t>(page->head.deviations.load(std::memory_order_acquire), kMostDeviations);
  for (std::size_t i = 0; i < rows; ++i) {
    DeviationRow &row = page->deviations[i];
    if (row.hash != hash || row.number != number) continue;
    std::atomic_ref(row.happened).store(stood_for_ != 0 ? stood_for_ : getpid());
    turn = {static_cast<Way>(row.way), static_cast<int>(row.value)};
    if (turn.way != Way::kSignal) continue;
    if (deliver_ != nullptr) {
      deliver_(turn.value);
    } else {
      raise(turn.value);
    }
  }
  return turn;
}

void PointCounter::stand_for(pid_t process, void (*deliver)(int signal)) noexcept {
  stood_for_ = process;
  deliver_ = deliver;
}

std::optional<Points> points_of(const Place &place) {
  const base::Descriptor file = open_points(place, O_RDONLY);
  const auto page = std::make_unique<Page>();
  const Counting counting = file.get() < 0 ? Counting::kNot : read_page(place, file.get(), *page);
  if (counting == Counting::kNot) return std::nullopt;
  if (counting == Counting::kDamaged) throw damaged_points(place);
  return points_in(*page, order_in(place, file.get(), *page));
}

void count_points(const Place &place) {
  begin_to_count(place, open_locked(place).get(), nullptr);
}

void order_points(const Place &place) {
  begin_to_count(place, open_locked(place).get(), nullptr, sizeof(Page) + sizeof(Order));
}

void forget_order(const Place &place) {
  resize_order(place, sizeof(Page));
}

void resume_order(const Place &place) {
  resize_order(place, sizeof(Page) + sizeof(Order));
}

void deviate(const Place &place, const Deviation &deviation) {
  const base::Descriptor file = open_locked(place);
  const DeviationRow row = row_for(deviation);
  const auto page = std::make_unique<Page>();
  const Counting counting = read_page(place, file.get(), *page);
  if (counting == Counting::kNot) return begin_to_count(place, file.get(), &row);
  if (counting == Counting::kDamaged) throw damaged_points(place);
  const std::uint32_t rows = page->head.deviations;
  check_is_free(place, *page, row);
  if (rows >= kMostDeviations) {
    throw BoxError("a box keeps no more than " + std::to_string(kMostDeviations) +
                   " deviations, those that have happened, too. " + advice({"points", place.root(), "--forget"}) +
                   " begins anew.");
  }
  if (const int error = write_row(file.get(), row, rows); error != 0) {
    throw points_failure(place, "cannot write them", error);
  }
}

bool forget_points(const Place &place) {
  const base::Descriptor file = open_locked(place);
  const auto page = std::make_unique<Page>();
  if (read_page(place, file.get(), *page) == Counting::kNot) return false;
  if (const int error = write_at(file.get(), std::uint64_t{0}, 0); error != 0) {
    throw points_failure(place, "cannot write them", error);
  }
  return true;
}

}  // namespace box
