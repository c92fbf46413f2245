// The file of the trace. Whatever is written into it: what is read was recorded so, in this order, and as long as the head is
// whole, nothing is missing that was not damaged.
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <map>

#include "fuzz/box/targets.h"
#include "host/box/trace_ring.h"
#include "host/trace_book/trace_book.h"

namespace fuzz {
namespace {

constexpr std::size_t kMark = 8, kLine = 64, kFileSize = kLine * (1 + std::size_t{box::TraceRing::kSlots});

using Recorded = std::array<std::uint32_t, 9>;

Recorded values_of(const box::TraceEntry &entry) {
  return {entry.module,   entry.level,    entry.kind,     entry.event,   entry.word_count,
          entry.words[0], entry.words[1], entry.words[2], entry.words[3]};
}

// A ring, and the file's bytes. What an input changed is put back for the next one.
class Ring {
 public:
  Ring() : file_(scratch() / "trace") {
    box::TraceRing::create(file_);
    require(ring_.map(file_.c_str()), "a new ring can be mapped");
    const int fd = open(file_.c_str(), O_RDWR | O_CLOEXEC);
    bytes_ = static_cast<std::uint8_t *>(mmap(nullptr, kFileSize, PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0));
    close(fd);
    std::copy_n(bytes_, kLine, head_.begin());
  }

  void begin() {
    if (skips_) std::fill_n(bytes_, kFileSize, 0);
    for (const auto &[line, recorded] : recorded_) std::fill_n(bytes_ + line * kLine, kLine, 0);
    for (const std::size_t line : damaged_) std::fill_n(bytes_ + line * kLine, kLine, 0);
    std::copy(head_.begin(), head_.end(), bytes_);
    std::copy_n(head_.begin(), kMark, mark_.begin());
    recorded_.clear();
    damaged_.clear();
    numbers_ = 0;
    skips_ = false;
  }

  void record(Source &source) {
    const auto module = source.number<std::uint32_t>() % 32, level = source.number<std::uint32_t>(),
               kind = source.number<std::uint32_t>() % 32, event = source.number<std::uint32_t>();
    std::array<std::uint32_t, 4> words{};
    for (std::uint32_t &word : words) word = source.number<std::uint16_t>();
    const std::uint32_t count = source.byte() % 6;
    require(ring_.append(module, level, kind, event, words.data(), count), "a mapped ring takes a record");
    for (std::size_t i = count; i < words.size(); ++i) words.at(i) = 0;
    recorded_[1 + numbers_ % box::TraceRing::kSlots] = {
        module, level, kind, event, std::min<std::uint32_t>(count, 4), words[0], words[1], words[2], words[3]};
    ++numbers_;
  }

  void damage(Source &source) {
    const bool near_the_front = source.flag();
    const std::size_t at = source.number<std::uint32_t>() % (near_the_front ? kLine * 12 : kFileSize);
    const Input bytes = source.bytes(std::min<std::size_t>(source.byte() % 65, kFileSize - at));
    for (std::size_t i = 0; i < bytes.size(); ++i) (at + i < kMark ? mark_.at(at + i) : bytes_[at + i]) = bytes[i];
    for (std::size_t line = at / kLine; line <= (at + bytes.size()) / kLine; ++line) damaged_.push_back(line);
    skips_ = skips_ || at < kLine;  // what is recorded behind a damaged head may stand anywhere
  }

  void check() const {
    std::copy(mark_.begin(), mark_.end(), bytes_);
    std::vector<box::TraceEntry> entries;
    const std::string refusal =
        refusal_of<std::runtime_error>("a trace", [&] { entries = box::TraceRing::read(file_); });
    require(refusal.empty() || skips_, "a ring with a whole head can be read: " + refusal);
    std::size_t whole = 0;
    for (const auto &entry : entries) {
      trace_book::words_of(entry);
      whole += check_entry(entry) ? 1 : 0;
    }
    require(std::is_sorted(entries.begin(), entries.end(),
                           [](const auto &a, const auto &b) { return a.number < b.number; }),
            "what is read is in its order");
    if (!skips_) require(whole == undamaged(), "nothing is missing that was not damaged");
  }

 private:
  bool is_damaged(std::size_t line) const {
    return std::find(damaged_.begin(), damaged_.end(), line) != damaged_.end();
  }

  std::size_t undamaged() const {
    return static_cast<std::size_t>(
        std::count_if(recorded_.begin(), recorded_.end(), [&](const auto &row) { return !is_damaged(row.first); }));
  }

  // Whether it stands where nothing was damaged: then it was recorded so.
  bool check_entry(const box::TraceEntry &entry) const {
    const std::size_t line = 1 + static_cast<std::size_t>(entry.number % box::TraceRing::kSlots);
    if (skips_ || is_damaged(line)) return false;
    const auto recorded = recorded_.find(line);
    require(recorded != recorded_.end() && recorded->second == values_of(entry), "what is read was recorded");
    return true;
  }

  std::filesystem::path file_;
  box::TraceRing ring_;
  std::uint8_t *bytes_;
  std::array<std::uint8_t, kLine> head_{};
  std::array<std::uint8_t, kMark>
      mark_{};  // of a file that holds a ring: without it nothing more is recorded, so it is damaged last
  std::map<std::size_t, Recorded> recorded_;  // by the line of the file
  std::vector<std::size_t> damaged_;          // lines
  std::size_t numbers_ = 0;
  bool skips_ = false;
};

}  // namespace

void run_trace_ring(Input input) {
  static Ring ring;
  ring.begin();
  Source source(input);
  while (!source.empty()) {
    if (source.byte() % 3 == 0) {
      ring.damage(source);
    } else {
      ring.record(source);
    }
  }
  ring.check();
  ring.begin();
}

}  // namespace fuzz
