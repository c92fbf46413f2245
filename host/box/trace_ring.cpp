#include "host/box/trace_ring.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <ctime>
#include <optional>
#include <stdexcept>
#include <string>
#include <system_error>
#include <utility>

#include "host/base/descriptor.h"
#include "host/box/mapping_guard.h"
#include "host/box/own_files.h"

namespace box {
namespace {

using Word = std::atomic<std::uint64_t>;
static_assert(Word::is_always_lock_free, "the ring is shared by processes and signal handlers");

constexpr std::uint64_t kMagic = 0x31474E4952584253;  // "SBXRING1" in little-endian order
constexpr std::size_t kBodyWords = 6;

// The ring in the file and in memory: a head, then the slots, each on a cache line of its own.
struct alignas(64) Head {
  Word magic;
  Word slots;
  Word next;  // number of the next record
  std::array<Word, 5> zeros;
};

// A record n stands in slot n modulo the number of slots. Its state is 2n + 1 while it is written and 2n + 2 afterwards;
// an odd state that stays is a writer that died. The check tells a whole record from one that two writers mixed, the
// slower one a whole ring behind the other.
struct alignas(64) Slot {
  Word state;
  Word check;
  std::array<Word, kBodyWords> body;
};
static_assert(sizeof(Head) == 64 && sizeof(Slot) == 64 && offsetof(Head, next) == TraceRing::kCountAt);
constexpr std::size_t kHeadWords = sizeof(Head) / sizeof(std::uint64_t),
                      kSlotWords = sizeof(Slot) / sizeof(std::uint64_t);
constexpr const char *kDamaged = "it is damaged: it was cut short or emptied. Make the box anew, or load a dump of it.";

struct Ring {
  Head head;
  std::array<Slot, TraceRing::kSlots> slots;
};

using Body = std::array<std::uint64_t, kBodyWords>;

std::uint64_t pair(std::uint32_t low, std::uint32_t high) {
  return low | static_cast<std::uint64_t>(high) << 32U;
}
std::uint32_t low(std::uint64_t word) {
  return static_cast<std::uint32_t>(word);
}
std::uint32_t high(std::uint64_t word) {
  return static_cast<std::uint32_t>(word >> 32U);
}

std::uint64_t check_of(std::uint64_t number, const Body &body) {
  std::uint64_t check = number ^ kMagic;
  for (std::uint64_t word : body) {
    check = (check ^ word) * 0x9E3779B97F4A7C15;
    check ^= check >> 32U;
  }
  return check;
}

std::int64_t wall_clock() {
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  return static_cast<std::int64_t>(now.tv_sec) * 1'000'000'000 + now.tv_nsec;
}

TraceEntry entry_of(std::uint64_t number, const Body &body) {
  return {number,       static_cast<std::int64_t>(body[0]),
          low(body[1]), high(body[1]),
          low(body[2]), high(body[2]),
          low(body[5]), {low(body[3]), high(body[3]), low(body[4]), high(body[4])}};
}

// A copy of the ring may have holes where it was empty, and a full disk would kill a process that writes into one.
bool has_room(int fd, const struct stat &status) noexcept {
  constexpr off_t kBlock = 512;
  return status.st_blocks * kBlock >= status.st_size || fallocate(fd, 0, 0, status.st_size) == 0 || errno == EOPNOTSUPP;
}

// Maps a ring of this program's making, or nothing.
Ring *map_ring(int fd) noexcept {
  struct stat status {};
  if (fstat(fd, &status) != 0 || status.st_size != static_cast<off_t>(sizeof(Ring))) return nullptr;
  if (!has_room(fd, status)) return nullptr;
  void *memory = mmap(nullptr, sizeof(Ring), PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
  if (memory == MAP_FAILED) return nullptr;
  guard_mapping(memory, sizeof(Ring));
  auto *ring = static_cast<Ring *>(memory);
  if (ring->head.magic == kMagic && ring->head.slots == TraceRing::kSlots) return ring;
  munmap(memory, sizeof(Ring));
  return nullptr;
}

// A slot as it was read from the file: its state, its check and its body. A record that is unfinished, or changed while it
// was read, is none.
std::optional<TraceEntry> entry_in(const std::uint64_t *slot) {
  const std::uint64_t state = slot[0], check = slot[1];
  if (state == 0 || state % 2 != 0) return std::nullopt;
  Body body{};
  std::copy_n(slot + 2, kBodyWords, body.begin());
  const std::uint64_t number = state / 2 - 1;
  if (check != check_of(number, body)) return std::nullopt;
  return entry_of(number, body);
}

// Words of the file from one of them on, as far as it has them. The file may be cut short at any time: it is not mapped to be read.
std::vector<std::uint64_t> words_of(int fd, std::size_t from, std::size_t count) {
  std::vector<std::uint64_t> words(count);
  const std::size_t size = count * sizeof(std::uint64_t);
  std::size_t done = 0;
  while (done < size) {
    const ssize_t part = pread(fd, reinterpret_cast<char *>(words.data()) + done, size - done,
                               static_cast<off_t>(from * sizeof(std::uint64_t) + done));
    if (part < 0 && errno == EINTR) continue;
    if (part <= 0) break;
    done += static_cast<std::size_t>(part);
  }
  words.resize(done / sizeof(std::uint64_t));
  return words;
}

std::runtime_error failure(const std::filesystem::path &file, const char *what, const std::string &reason) {
  return std::runtime_error("trace " + file.string() + ": cannot " + what + ": " + reason);
}

}  // namespace

void TraceRing::create(const std::filesystem::path &file) {
  // A new file takes the old one's place, because a process may still have the old ring mapped. Its room on the disk is
  // taken at once: a full disk must not kill a process that writes a record.
  const std::filesystem::path fresh = file.string() + ".new";
  const int fd = open(fresh.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
  if (fd < 0) throw failure(file, "make it", std::strerror(errno));
  Head head{};
  head.magic = kMagic;
  head.slots = kSlots;
  int error = posix_fallocate(fd, 0, sizeof(Ring));
  if (error == 0) {
    const ssize_t size = pwrite(fd, &head, sizeof head, 0);
    if (size != static_cast<ssize_t>(sizeof head)) error = size < 0 ? errno : ENOSPC;
  }
  close(fd);
  if (error == 0 && rename(fresh.c_str(), file.c_str()) != 0) error = errno;
  if (error != 0) {
    unlink(fresh.c_str());
    throw failure(file, "make it", std::strerror(error));
  }
}

bool TraceRing::map(const char *file) noexcept {
  const int kept_errno = errno;
  const int fd = open(file, O_RDWR | kOwnFile);
  if (fd >= 0) {
    if (Ring *ring = map_ring(fd)) memory_.store(ring, std::memory_order_release);
    close(fd);
  }
  errno = kept_errno;
  return fd >= 0 && memory_.load(std::memory_order_relaxed) != nullptr;
}

bool TraceRing::append(std::uint32_t module, std::uint32_t level, std::uint32_t kind, std::uint32_t event,
                       const std::uint32_t *words, std::uint32_t word_count) noexcept {
  auto *ring = static_cast<Ring *>(memory_.load(std::memory_order_acquire));
  if (ring == nullptr) return false;
  // The file was emptied: the guard gave other memory.
  if (ring->head.magic.load(std::memory_order_relaxed) != kMagic) {
    memory_.store(nullptr, std::memory_order_relaxed);
    return false;
  }
  std::array<std::uint32_t, 4> values{};
  const std::uint32_t count = words == nullptr ? 0 : std::min<std::uint32_t>(word_count, values.size());
  std::copy_n(words, count, values.begin());
  const std::uint64_t number = ring->head.next.fetch_add(1, std::memory_order_relaxed);
  const Body body{static_cast<std::uint64_t>(wall_clock()),
                  pair(module, level),
                  pair(kind, event),
                  pair(values[0], values[1]),
                  pair(values[2], values[3]),
                  count};
  Slot &slot = ring->slots[number % kSlots];
  // Overtaken: the ring went round meanwhile.
  if (slot.state.load(std::memory_order_relaxed) > 2 * number + 1) return true;
  slot.state.store(2 * number + 1, std::memory_order_relaxed);
  std::atomic_thread_fence(std::memory_order_release);
  for (std::size_t i = 0; i < kBodyWords; ++i) slot.body[i].store(body[i], std::memory_order_relaxed);
  slot.check.store(check_of(number, body), std::memory_order_relaxed);
  slot.state.store(2 * number + 2, std::memory_order_release);
  return true;
}

std::vector<TraceEntry> TraceRing::read(const std::filesystem::path &file) {
  return read_last(file, kSlots);
}

std::vector<TraceEntry> TraceRing::read_last(const std::filesystem::path &file, std::uint32_t count) {
  const base::Descriptor ring(open(file.c_str(), O_RDONLY | kOwnFile));
  if (ring.get() < 0) throw failure(file, "read it", std::strerror(errno));
  struct stat status {};
  const std::vector<std::uint64_t> head = words_of(ring.get(), 0, kHeadWords);
  if (head.size() != kHeadWords || fstat(ring.get(), &status) != 0 ||
      status.st_size != static_cast<off_t>(sizeof(Ring))) {
    throw failure(file, "read it", kDamaged);
  }
  if (head[0] != kMagic || head[1] != kSlots) throw failure(file, "read it", "the file holds no trace ring");
  count = std::min(count, kSlots);
  // Up to the end of the slots, then what went on at their beginning.
  const std::uint64_t first = (head[2] + kSlots - count) % kSlots,
                      before_end = std::min<std::uint64_t>(count, kSlots - first);
  std::vector<TraceEntry> entries;
  for (const auto &[slot, slots] : {std::pair(first, before_end), std::pair(std::uint64_t{0}, count - before_end)}) {
    const std::vector<std::uint64_t> words = words_of(ring.get(), kHeadWords + slot * kSlotWords, slots * kSlotWords);
    if (words.size() != slots * kSlotWords) throw failure(file, "read it", kDamaged);
    for (std::size_t at = 0; at < words.size(); at += kSlotWords) {
      if (const auto entry = entry_in(&words[at])) entries.push_back(*entry);
    }
  }
  std::ranges::sort(entries, {}, &TraceEntry::number);
  return entries;
}

}  // namespace box
