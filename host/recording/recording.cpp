#include "host/recording/recording.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cstring>
#include <map>
#include <optional>

#include "host/base/descriptor.h"
#include "host/base/read_all.h"
#include "host/box/box_error.h"
#include "host/box/record_words.h"

namespace recording {
namespace {

constexpr std::string_view kWithout = "without contents\n";
constexpr std::size_t kHead = LMAINTE_RECORD_HEAD, kSummedFrom = 12;
static_assert(kWithout.size() == LMAINTE_RECORD_WITHOUT_SIZE);
constexpr std::uint32_t kMostWithin = 2 * LMAINTE_RECORD_LONGEST_CONTENT, kLongestRecord = kHead + kMostWithin;

std::uint32_t sum_of(std::string_view bytes) {
  std::uint32_t sum = 2166136261U;
  for (const char byte : bytes) sum = (sum ^ static_cast<std::uint8_t>(byte)) * 16777619U;
  return sum;
}

std::uint32_t head_word(std::string_view record, std::size_t number) {
  return word_at(record, 4 * number, true);
}

std::uint64_t long_word(std::string_view record, std::size_t number) {
  return std::uint64_t{head_word(record, number)} << 32U | head_word(record, number + 1);
}

std::string number_text(std::uint64_t count, const char *one, const char *several) {
  return std::to_string(count) + (count == 1 ? one : several);
}

// What is known of a process while its records are read.
struct Process {
  bool is_big_endian = true;
  bool has_begun = false;
  std::uint64_t records = 0, end = 0;  // that came, and the number behind the last one
};

class Reader {
 public:
  Reader(std::string bytes, std::string name)
      : bytes_(std::make_shared<const std::string>(std::move(bytes))),
        name_(std::move(name)),
        to_be_hashed_(4 * bytes_->size() + kLongestRecord) {}

  Recording read() {
    const std::string_view all = *bytes_;
    if (all.empty()) fail("is empty: nothing was recorded.");
    recording_.bytes = bytes_;
    recording_.is_without_contents = all.starts_with(kWithout);
    std::size_t at = recording_.is_without_contents ? kWithout.size() : 0;
    if (at == all.size()) fail("holds no record: nothing was recorded.");
    const bool begins_well = head_word(all.substr(at), 0) == LMAINTE_RECORD_MARK;
    while (at < all.size()) {
      const std::size_t size = size_of_record_at(at);
      if (size == 0) {
        at = after_damage(at);
        continue;
      }
      take(all.substr(at, size));
      at += size;
    }
    for (const auto &[pid, process] : processes_) count_missing(process);
    if (has_machine_) return std::move(recording_);
    if (!recording_.records.empty()) fail("is damaged: nothing in it says of which machine it is.");
    fail(begins_well ? "is damaged: it holds no whole record." : "is no recording.");
  }

 private:
  [[noreturn]] void fail(const std::string &what) const { throw box::BoxError(name_ + " " + what); }

  // 0 where none begins there that is whole. What was looked at for it is counted, so that a forged file takes no
  // longer than others.
  std::size_t size_of_record_at(std::size_t at) {
    const std::string_view rest = std::string_view(*bytes_).substr(at);
    if (rest.size() < kHead || head_word(rest, 0) != LMAINTE_RECORD_MARK) return 0;
    const std::uint32_t size = head_word(rest, 1);
    if (size < kHead || size > kLongestRecord || size % 4 != 0 || size > rest.size()) return 0;
    if (to_be_hashed_ < size) return 0;
    to_be_hashed_ -= size;
    const std::string_view record = rest.substr(0, size);
    if (sum_of(record.substr(kSummedFrom)) != head_word(record, 2)) return 0;
    const std::uint64_t text = head_word(record, 14), content = head_word(record, 15);
    const bool is_left_out = (head_word(record, 3) & LMAINTE_RECORD_LEFT_OUT) != 0;
    const std::uint64_t whole = kHead + text + (is_left_out ? 4 : content);
    return (whole + 3) / 4 * 4 == size ? size : 0;
  }

  // Where the next whole record begins.
  std::size_t after_damage(std::size_t from) {
    const std::string_view all = *bytes_;
    constexpr std::string_view kMark = "LMR1";
    std::size_t at = from;
    do {
      at = std::min(all.find(kMark, at + 1), all.size());
    } while (at < all.size() && size_of_record_at(at) == 0);
    ++recording_.places;
    recording_.damaged_before.push_back(recording_.records.size());
    recording_.lost_bytes += at - from;
    recording_.is_cut = at == all.size();
    return at;
  }

  void take(std::string_view bytes) {
    Record record;
    record.kind = head_word(bytes, 3) & ~LMAINTE_RECORD_LEFT_OUT;
    record.is_left_out = (head_word(bytes, 3) & LMAINTE_RECORD_LEFT_OUT) != 0;
    record.pid = static_cast<pid_t>(head_word(bytes, 4));
    record.number = head_word(bytes, 5);
    record.time_ns = static_cast<std::int64_t>(long_word(bytes, 6));
    record.duration_ns = long_word(bytes, 8);
    record.result = static_cast<std::int32_t>(head_word(bytes, 10));
    record.first = head_word(bytes, 11);
    record.second = head_word(bytes, 12);
    record.third = head_word(bytes, 13);
    record.text = bytes.substr(kHead, head_word(bytes, 14));
    record.content_size = head_word(bytes, 15);
    if (!record.is_left_out) record.content = bytes.substr(kHead + record.text.size(), record.content_size);
    if (record.kind == LMAINTE_RECORD_PROCESS) begin(record);
    Process &process = process_of(record);
    record.is_big_endian = process.is_big_endian;
    ++process.records;
    process.end = std::max<std::uint64_t>(process.end, std::uint64_t{record.number} + 1);
    if (record.kind == LMAINTE_RECORD_FULL) recording_.is_full = true;
    if (!process.has_begun) ++recording_.strays;
    recording_.records.push_back(record);
  }

  void begin(const Record &record) {
    const auto word = [&](std::size_t number) { return word_at(record.content, 4 * number, true); };
    const std::uint32_t version = word(0), order = word(1), of_long = word(2);
    if (version > LMAINTE_RECORD_VERSION) {
      fail("is of version " + std::to_string(version) + " of recordings, and this spbox reads version " +
           std::to_string(LMAINTE_RECORD_VERSION) + ". A newer spbox reads it.");
    }
    if (version == 0 || (order != 1 && order != 2) || (of_long != 4 && of_long != 8)) {
      fail("is of a machine that spbox does not know: byte order " + std::to_string(order) + ", " +
           std::to_string(of_long) + " bytes in a long.");
    }
    Process &process = process_of(record);
    if (record.number == 0) {
      count_missing(process);
      process = {};
    }
    process.has_begun = true;
    process.is_big_endian = order == 1;
    has_machine_ = true;
    if (recording_.model == 0 && record.second <= 6) recording_.model = record.second;
  }

  Process &process_of(const Record &record) { return processes_[record.pid]; }

  void count_missing(const Process &process) {
    if (process.end > process.records) recording_.missing += process.end - process.records;
  }

  std::shared_ptr<const std::string> bytes_;
  std::string name_;
  Recording recording_;
  std::map<pid_t, Process> processes_;
  std::uint64_t to_be_hashed_;
  bool has_machine_ = false;
};

[[noreturn]] void cannot_be_read(const std::string &name, int error) {
  throw box::BoxError(name + " cannot be read: " + std::strerror(error) +
                      ".");  // NOLINT(concurrency-mt-unsafe): one thread
}

}  // namespace

std::uint32_t word_at(std::string_view bytes, std::size_t at, bool is_big_endian) {
  std::uint32_t word = 0;
  for (std::size_t i = 0; i < 4 && at + i < bytes.size(); ++i) {
    const std::uint32_t byte = static_cast<std::uint8_t>(bytes[at + i]);
    word |= byte << 8U * (is_big_endian ? 3 - i : i);
  }
  return word;
}

box::Bytes content_here(const Record &record) {
  box::Bytes bytes(record.content.begin(), record.content.end());
  if (record.is_big_endian == (std::endian::native == std::endian::big)) return bytes;
  switch (record.kind) {
    case LMAINTE_RECORD_GET:
    case LMAINTE_RECORD_PUT:
      box::swap_words(record.text, bytes);
      break;
    case LMAINTE_RECORD_SEND:
    case LMAINTE_RECORD_RECEIVE:  // of words, as those of the box's daemon
      for (std::size_t at = 0; at + 4 <= bytes.size(); at += 4) {
        std::reverse(bytes.begin() + static_cast<long>(at), bytes.begin() + static_cast<long>(at) + 4);
      }
      break;
    default:
      break;
  }
  return bytes;
}

Recording read(std::string bytes, const std::string &name) {
  return Reader(std::move(bytes), name).read();
}

// As long as it is when this begins: who writes it meanwhile makes it longer.
Recording read(const std::filesystem::path &file) {
  const std::string &name = file.native();
  const base::Descriptor fd(open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  struct stat status {};
  if (fd.get() < 0 || fstat(fd.get(), &status) != 0) cannot_be_read(name, errno);
  if (S_ISDIR(status.st_mode)) throw box::BoxError(name + " is a folder, not a recording.");
  if (!S_ISREG(status.st_mode)) throw box::BoxError(name + " is no file.");
  if (status.st_size > static_cast<off_t>(kMostBytes)) {
    throw box::BoxError(name + " is larger than the " + std::to_string(kMostBytes >> 20U) +
                        " MB that a recording may have.");
  }
  std::string bytes;
  if (const int error = base::read_all(fd.get(), bytes, static_cast<std::size_t>(status.st_size)); error != 0) {
    cannot_be_read(name, error);
  }
  bytes.resize(std::min(bytes.size(), static_cast<std::size_t>(status.st_size)));
  return read(std::move(bytes), name);
}

std::vector<std::string> remarks(const Recording &recording, const std::string &name) {
  std::vector<std::string> said;
  const std::size_t within = recording.places - (recording.is_cut ? 1 : 0);
  if (within > 0) {
    said.push_back(name + " is damaged in " + number_text(within, " place", " places") +
                   ": what stands there is not shown.");
  }
  if (recording.is_cut) said.push_back(name + " ends in the middle of a record: it was cut, or is being written.");
  if (recording.missing > 0) {
    said.push_back(number_text(recording.missing, " record is missing in ", " records are missing in ") + name +
                   ": damaged, or not written as on a full disk, or there before the file was emptied.");
  }
  if (recording.strays > 0) {
    said.push_back(number_text(recording.strays, " record", " records") + " in " + name +
                   " cannot be understood: the beginning of the process is missing.");
  }
  if (recording.is_full) said.push_back(name + " is full: what came behind its bound is not in it.");
  return said;
}

}  // namespace recording
