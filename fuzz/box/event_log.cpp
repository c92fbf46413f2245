// The file of the log. Whatever is written over it: what is read was saved so, in this order, and nothing is missing that was
// not damaged.
#include <algorithm>
#include <fstream>
#include <vector>

#include "fuzz/box/targets.h"
#include "host/box/event_log.h"

namespace fuzz {
namespace {

constexpr std::size_t kEntrySize = 72;

struct Saved {
  box::LogEntry entry;
  bool damaged = false;
};

bool is_same(const box::LogEntry &one, const box::LogEntry &other) {
  return one.time_ns == other.time_ns && one.pid == other.pid && one.head == other.head && one.event == other.event;
}

class Log {
 public:
  // An empty log, as a new box has it.
  Log() : file_(scratch() / "events") { std::ofstream(file_, std::ios::trunc); }

  void save(Source &source) {
    box::LogEntry entry{};
    entry.time_ns = source.number<std::int16_t>();
    entry.pid = static_cast<std::uint32_t>(saved_.size());
    entry.head = source.byte();
    const Input event = source.bytes(entry.event.size());
    std::copy(event.begin(), event.end(), entry.event.begin());
    require(box::EventLog::append(file_, entry), "an entry can be saved");
    saved_.push_back({entry});
  }

  // Bytes over what is there. Behind the last entry they are what a crash left of one.
  void damage(Source &source) {
    if (saved_.empty()) return;
    const std::size_t at = source.below(static_cast<std::uint32_t>(saved_.size() * kEntrySize));
    const Input bytes = source.bytes(source.byte());
    std::fstream out(file_, std::ios::binary | std::ios::in | std::ios::out);
    out.seekp(static_cast<std::streamoff>(at));
    out.write(reinterpret_cast<const char *>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    if (bytes.empty()) return;
    for (std::size_t i = at / kEntrySize; i <= (at + bytes.size() - 1) / kEntrySize && i < saved_.size(); ++i) {
      saved_[i].damaged = true;
    }
    is_whole_ = is_whole_ && at + bytes.size() <= saved_.size() * kEntrySize;
  }

  bool is_whole() const { return is_whole_; }

  // Whoever knows the check can write an entry of their own over one; more entries than were saved there are never.
  void check() const {
    const auto entries = box::EventLog::read(file_);
    auto at = entries.begin();
    for (const Saved &row : saved_) {
      if (row.damaged) continue;
      at = std::find_if(at, entries.end(), [&](const box::LogEntry &entry) { return is_same(row.entry, entry); });
      require(at != entries.end(), "nothing is missing that was not damaged, and all is in its order");
      ++at;
    }
    const bool all_whole = std::none_of(saved_.begin(), saved_.end(), [](const Saved &row) { return row.damaged; });
    require(entries.size() <= saved_.size() && (!all_whole || entries.size() == saved_.size()),
            "what is read was saved");
  }

 private:
  std::filesystem::path file_;
  std::vector<Saved> saved_;
  bool is_whole_ = true;  // no bytes behind the last entry
};

// A file of any bytes, which has room for so many entries.
void read_rubbish(const std::string &bytes) {
  const auto file = scratch() / "rubbish";
  write_file(file, bytes);
  require(box::EventLog::read(file).size() <= bytes.size() / kEntrySize, "an entry has its bytes");
}

}  // namespace

void run_event_log(Input input) {
  Source source(input);
  if (source.byte() % 4 == 3) return read_rubbish(source.all_text());
  Log log;
  while (!source.empty() && log.is_whole()) {
    if (source.byte() % 3 == 0) {
      log.damage(source);
    } else {
      log.save(source);
    }
  }
  log.check();
}

}  // namespace fuzz
