// What a program on another machine and the platform of the box say to each other: a message for each call, and one for its answer.
//
// The other machine is emulated here, and may have another word size and byte order. So nothing of a message depends on a machine:
//
//   size, kind, sequence   a word each, of 32 bits, the highest byte first
//   the fields of its kind  a word; a long word of 64 bits, its highest byte first; a text: its size in a word, and its bytes
//
// The first message is kHello, which is not answered. Each other one is answered by kReply, with its sequence. While it works, the
// platform may send kSignal: the program takes this signal, and says kGoOn.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string_view>

namespace wire {

// Where the program finds the platform: a link in the command's root, below the folder of Place::here(). It leads to a socket of whole
// messages (SOCK_SEQPACKET) among those of the box's daemons.
inline constexpr char kSocketLink[] = "mgb/lib/platform";

inline constexpr std::uint32_t kVersion = 1;

// The fields of each kind, and of its answer. `result` and `errno` are words; "there" is 1 where a pointer is not null.
enum class Kind : std::uint32_t {
  kHello = 1,   // version; byte order; bits of the databases that the parent process has open
  kReply,       // the fields of the answer
  kSignal,      // a signal's number
  kGoOn,        // (none)
  kBegin,       // the parent's id; the words of the command -> (none)
  kEnd,         // exit status; the words of the command -> (none)
  kTrace,       // module, level, kind, event; how many words; four words -> result
  kPoint,       // kind; its name -> way; value
  kCallBegins,  // kind -> time (long); position (long)
  kCallEnds,    // kind; time (long); position (long); result; first; second; text -> (none)
  kOpen,        // number of a database, also of the next five -> result
  kClose,       //
  kLock,        //
  kUnlock,      //
  kRead,        // there: key, record, size; flags; key -> result; record
  kWrite,       // there: key, data; size; flags; key; data -> result
  kLog,         // there: head, record; head; record -> result; errno
  kName,        // there: unit id, name; two words; form; two unused -> result; name
};
inline constexpr std::uint32_t kLastKind = static_cast<std::uint32_t>(Kind::kName);

enum class ByteOrder : std::uint32_t { kBig = 1, kLittle = 2 };
inline constexpr ByteOrder kByteOrder = __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__ ? ByteOrder::kBig : ByteOrder::kLittle;

inline constexpr std::size_t kHeadSize = 12, kSequenceAt = 8;
inline constexpr std::size_t kLongestRecord = 0x10000, kKeyRoom = 128, kLongestText = 512;
inline constexpr std::size_t kLongestShort = 1024;  // of a message without a record
inline constexpr std::size_t kLongest = kLongestRecord + kLongestShort;

inline void put_word(std::uint8_t *at, std::uint32_t word) noexcept {
  for (int i = 3; i >= 0; --i, word >>= 8U) at[i] = static_cast<std::uint8_t>(word);
}

inline std::uint32_t word_at(const std::uint8_t *at) noexcept {
  return std::uint32_t{at[0]} << 24U | std::uint32_t{at[1]} << 16U | std::uint32_t{at[2]} << 8U | at[3];
}

// Makes a message in memory that somebody else has. Allocates nothing.
class Writer {
 public:
  Writer(std::span<std::uint8_t> room, Kind kind, std::uint32_t sequence = 0) noexcept : room_(room) {
    word(0).word(static_cast<std::uint32_t>(kind)).word(sequence);
  }

  Writer &word(std::uint32_t value) noexcept {
    if (has_room(4)) put_word(&room_[size_ - 4], value);
    return *this;
  }
  Writer &number(std::int32_t value) noexcept { return word(static_cast<std::uint32_t>(value)); }
  Writer &flag(bool value) noexcept { return word(value ? 1 : 0); }
  Writer &long_word(std::uint64_t value) noexcept {
    return word(static_cast<std::uint32_t>(value >> 32U)).word(static_cast<std::uint32_t>(value));
  }
  Writer &text(std::string_view bytes) noexcept {
    word(static_cast<std::uint32_t>(bytes.size()));
    if (has_room(bytes.size()) && !bytes.empty()) std::memcpy(&room_[size_ - bytes.size()], bytes.data(), bytes.size());
    return *this;
  }

  void set_sequence(std::uint32_t sequence) noexcept { put_word(&room_[kSequenceAt], sequence); }

  // The whole message; empty where there was no room for it.
  std::span<const std::uint8_t> message() noexcept {
    if (!fits_) return {};
    put_word(room_.data(), static_cast<std::uint32_t>(size_));
    return room_.first(size_);
  }

 private:
  bool has_room(std::size_t more) noexcept {
    fits_ = fits_ && room_.size() - size_ >= more;
    if (fits_) size_ += more;
    return fits_;
  }

  std::span<std::uint8_t> room_;
  std::size_t size_ = 0;
  bool fits_ = true;
};

// Reads a message, which anybody may have sent. What is not there reads as 0 and as an empty text; is_whole() tells.
class Reader {
 public:
  Reader() noexcept = default;
  explicit Reader(std::span<const std::uint8_t> message) noexcept : rest_(message) { take_head(message.size()); }

  bool is_good() const noexcept { return is_good_; }
  // All of it was read, and nothing was missing.
  bool is_whole() const noexcept { return is_good_ && rest_.empty(); }
  Kind kind() const noexcept { return static_cast<Kind>(kind_); }
  std::uint32_t sequence() const noexcept { return sequence_; }

  std::uint32_t word() noexcept { return takes(4) ? word_at(taken_.data()) : 0; }
  std::int32_t number() noexcept { return static_cast<std::int32_t>(word()); }
  bool flag() noexcept {
    const std::uint32_t value = word();
    is_good_ = is_good_ && value <= 1;
    return value == 1;
  }
  std::uint64_t long_word() noexcept {
    const std::uint64_t high = word();
    return high << 32U | word();
  }
  std::string_view text(std::size_t longest) noexcept {
    const std::size_t size = word();
    is_good_ = is_good_ && size <= longest;
    if (!takes(size)) return {};
    return {reinterpret_cast<const char *>(taken_.data()), taken_.size()};
  }

 private:
  void take_head(std::size_t whole) noexcept {
    const std::size_t size = word();
    kind_ = word();
    sequence_ = word();
    is_good_ = is_good_ && size == whole && kind_ >= 1 && kind_ <= kLastKind;
  }
  bool takes(std::size_t size) noexcept {
    is_good_ = is_good_ && rest_.size() >= size;
    if (!is_good_) return false;
    taken_ = rest_.first(size);
    rest_ = rest_.subspan(size);
    return true;
  }

  std::span<const std::uint8_t> rest_, taken_;
  std::uint32_t kind_ = 0, sequence_ = 0;
  bool is_good_ = true;
};

}  // namespace wire
