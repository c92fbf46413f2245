// A ring of records in a mapped file, appended without a lock by all processes of a box. What a record holds is its user's: a form has
//
//   kMagic      the first eight bytes of the file, in little-endian order
//   kSlots      how many records the ring holds
//   kBodyWords  64-bit words of a record; with two more they fill lines of a cache
//   kName       what the file is called where it cannot be read: "trace"
//
// The file is a head of 64 bytes, then the slots.
#pragma once

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "host/base/descriptor.h"
#include "host/box/mapping_guard.h"
#include "host/box/own_files.h"

namespace box {

inline constexpr const char *kDamagedRing =
    "it is damaged: it was cut short or emptied. Make the box anew, or load a dump of it.";

// The parts of a ring that are the same in all forms.
struct alignas(64) RingHead {
  std::atomic<std::uint64_t> magic;
  std::atomic<std::uint64_t> slots;
  std::atomic<std::uint64_t> next;   // number of the next record
  std::atomic<std::uint64_t> spare;  // as the form has it
  std::array<std::atomic<std::uint64_t>, 4> zeros;
};
static_assert(sizeof(RingHead) == 64 && std::atomic<std::uint64_t>::is_always_lock_free,
              "the ring is shared by processes and signal handlers");

// Makes a file of a ring, in place of what is there. Throws.
void create_ring_file(const std::filesystem::path &file, const char *name, const RingHead &head, std::size_t size);

// A copy of the ring may have holes where it was empty, and a full disk would kill a process that writes into one.
bool ring_has_room(int fd, const struct stat &status) noexcept;

// Words of the file from one of them on, as far as it has them. The file may be cut short at any time: it is not mapped to be read.
struct RingWords {
  std::vector<std::uint64_t> words;
  int error = 0;  // an errno; without one, the file ended
};
RingWords ring_words_of(int fd, std::size_t from, std::size_t count);

std::runtime_error ring_failure(const std::filesystem::path &file, const char *name, const char *what,
                                const std::string &reason);

template <class Form>
class RecordRing {
 public:
  using Body = std::array<std::uint64_t, Form::kBodyWords>;

  struct Record {
    std::uint64_t number;  // counted from 0 since the ring was made
    Body body;
  };

  static void create(const std::filesystem::path &file) {
    RingHead head{};
    head.magic = Form::kMagic;
    head.slots = Form::kSlots;
    create_ring_file(file, Form::kName, head, sizeof(Ring));
  }

  // Maps the ring, for the life of the process. Uses system calls only, and keeps errno.
  bool map(const char *file) noexcept {
    const int kept_errno = errno;
    const int fd = open(file, O_RDWR | kOwnFile);
    if (fd >= 0) {
      if (Ring *ring = map_ring(fd)) memory_.store(ring, std::memory_order_release);
      close(fd);
    }
    errno = kept_errno;
    return fd >= 0 && memory_.load(std::memory_order_relaxed) != nullptr;
  }

  // The head of a ring that is mapped, and has not been emptied since: then the guard gave other memory. Else null.
  RingHead *head() noexcept {
    auto *ring = static_cast<Ring *>(memory_.load(std::memory_order_acquire));
    if (ring == nullptr) return nullptr;
    if (ring->head.magic.load(std::memory_order_relaxed) == Form::kMagic) return &ring->head;
    memory_.store(nullptr, std::memory_order_relaxed);
    return nullptr;
  }

  // Writes the record of a number that the caller has taken from this head.
  static void write(RingHead *head, std::uint64_t number, const Body &body) noexcept {
    Slot &slot = reinterpret_cast<Ring *>(head)->slots[number % Form::kSlots];
    // Overtaken: the ring went round meanwhile.
    if (slot.state.load(std::memory_order_relaxed) > 2 * number + 1) return;
    slot.state.store(2 * number + 1, std::memory_order_relaxed);
    std::atomic_thread_fence(std::memory_order_release);
    for (std::size_t i = 0; i < Form::kBodyWords; ++i) slot.body[i].store(body[i], std::memory_order_relaxed);
    slot.check.store(check_of(number, body), std::memory_order_relaxed);
    slot.state.store(2 * number + 2, std::memory_order_release);
  }

  // Throws where it is damaged: no record can be kept there.
  static void check(const std::filesystem::path &file) { open_ring(file, "keep records"); }

  // The last so many records, oldest first. Throws.
  static std::vector<Record> read_last(const std::filesystem::path &file, std::uint32_t count) {
    const auto [ring, head] = open_ring(file, "read it");
    count = std::min(count, Form::kSlots);
    // Up to the end of the slots, then what went on at their beginning.
    const std::uint64_t first = (head[2] + Form::kSlots - count) % Form::kSlots,
                        before_end = std::min<std::uint64_t>(count, Form::kSlots - first);
    std::vector<Record> records;
    for (const auto &[slot, slots] : {std::pair(first, before_end), std::pair(std::uint64_t{0}, count - before_end)}) {
      const std::vector<std::uint64_t> words =
          words_of(file, ring.get(), kHeadWords + slot * kSlotWords, slots * kSlotWords);
      for (std::size_t at = 0; at < words.size(); at += kSlotWords) {
        if (const auto record = record_in(&words[at])) records.push_back(*record);
      }
    }
    std::ranges::sort(records, {}, &Record::number);
    return records;
  }

 private:
  using Word = std::atomic<std::uint64_t>;

  // A record n stands in slot n modulo the number of slots. Its state is 2n + 1 while it is written and 2n + 2 afterwards;
  // an odd state that stays is a writer that died. The check tells a whole record from one that two writers mixed, the
  // slower one a whole ring behind the other. Each slot has cache lines of its own.
  struct alignas(64) Slot {
    Word state;
    Word check;
    std::array<Word, Form::kBodyWords> body;
  };
  static_assert(sizeof(Slot) == (Form::kBodyWords + 2) * sizeof(std::uint64_t));

  struct Ring {
    RingHead head;
    std::array<Slot, Form::kSlots> slots;
  };
  static constexpr std::size_t kHeadWords = sizeof(RingHead) / sizeof(std::uint64_t),
                               kSlotWords = sizeof(Slot) / sizeof(std::uint64_t);

  // All of them. Throws.
  static std::vector<std::uint64_t> words_of(const std::filesystem::path &file, int ring, std::size_t from,
                                             std::size_t count, const char *what = "read it") {
    RingWords read = ring_words_of(ring, from, count);
    if (read.error != 0) throw ring_failure(file, Form::kName, what, std::strerror(read.error));
    if (read.words.size() != count) throw ring_failure(file, Form::kName, what, kDamagedRing);
    return std::move(read.words);
  }

  // The file, and the words of its head. Throws where it is no whole ring; `what` cannot be done then.
  static std::pair<base::Descriptor, std::vector<std::uint64_t>> open_ring(const std::filesystem::path &file,
                                                                           const char *what) {
    OwnFile ring = open_own_file(file);
    if (ring.descriptor.get() < 0) throw ring_failure(file, Form::kName, what, ring.why_not());
    struct stat status {};
    if (fstat(ring.descriptor.get(), &status) != 0) {
      throw ring_failure(file, Form::kName, what, std::strerror(errno));
    }
    std::vector<std::uint64_t> head = words_of(file, ring.descriptor.get(), 0, kHeadWords, what);
    if (status.st_size != static_cast<off_t>(sizeof(Ring))) throw ring_failure(file, Form::kName, what, kDamagedRing);
    if (head[0] != Form::kMagic || head[1] != Form::kSlots) {
      throw ring_failure(file, Form::kName, what, std::string("the file holds no ") + Form::kName + " ring");
    }
    return {std::move(ring.descriptor), std::move(head)};
  }

  static std::uint64_t check_of(std::uint64_t number, const Body &body) {
    std::uint64_t check = number ^ Form::kMagic;
    for (std::uint64_t word : body) {
      check = (check ^ word) * 0x9E3779B97F4A7C15;
      check ^= check >> 32U;
    }
    return check;
  }

  // Maps a ring of this program's making, or nothing.
  static Ring *map_ring(int fd) noexcept {
    struct stat status {};
    if (fstat(fd, &status) != 0 || status.st_size != static_cast<off_t>(sizeof(Ring))) return nullptr;
    if (!ring_has_room(fd, status)) return nullptr;
    void *memory = mmap(nullptr, sizeof(Ring), PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
    if (memory == MAP_FAILED) return nullptr;
    guard_mapping(memory, sizeof(Ring));
    auto *ring = static_cast<Ring *>(memory);
    if (ring->head.magic == Form::kMagic && ring->head.slots == Form::kSlots) return ring;
    munmap(memory, sizeof(Ring));
    return nullptr;
  }

  // A slot as it was read from the file: its state, its check and its body. A record that is unfinished, or changed while it
  // was read, is none.
  static std::optional<Record> record_in(const std::uint64_t *slot) {
    const std::uint64_t state = slot[0], check = slot[1];
    if (state == 0 || state % 2 != 0) return std::nullopt;
    Record record{state / 2 - 1, {}};
    std::copy_n(slot + 2, Form::kBodyWords, record.body.begin());
    if (check != check_of(record.number, record.body)) return std::nullopt;
    return record;
  }

  std::atomic<void *> memory_ = nullptr;
};

}  // namespace box
