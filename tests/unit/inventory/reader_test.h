// What the tests of the readers have in common: records whose untouched bytes can be told, the calls of the database
// client, the arguments that are refused and the lengths that a name can have.
#pragma once

#include <algorithm>
#include <cstring>
#include <functional>
#include <span>
#include <string>
#include <type_traits>
#include <utility>

#include <gtest/gtest.h>

#include "tests/unit/doubles/library_test.h"

namespace doubles {

constexpr uint8_t kUntouched = 0x5A;
constexpr uint32_t kInstalled = 0x80000000;  // in a status word

// A record as it was before the call.
template <class Record>
Record untouched() {
  Record record;
  std::memset(&record, kUntouched, sizeof record);
  return record;
}

// The same for a record with padding, which a copy of the record itself need not keep.
template <class Record>
class Image {
 public:
  Record *operator->() { return reinterpret_cast<Record *>(bytes_.data()); }
  const Bytes &bytes() const { return bytes_; }

 private:
  Bytes bytes_ = Bytes(sizeof(Record), kUntouched);
};

inline ::testing::AssertionResult are_same_bytes(const void *expected, const void *record, size_t size) {
  const auto *left = static_cast<const uint8_t *>(expected);
  const auto *right = static_cast<const uint8_t *>(record);
  for (size_t i = 0; i < size; ++i)
    if (left[i] != right[i])
      return ::testing::AssertionFailure() << "byte " << i << " is " << +right[i] << " instead of " << +left[i];
  return ::testing::AssertionSuccess();
}

// Compare records byte for byte, their padding too.
template <class Record>
::testing::AssertionResult is_same(const Record &expected, const Record &record) {
  static_assert(std::has_unique_object_representations_v<Record>, "a record with padding needs an image");
  return are_same_bytes(&expected, &record, sizeof record);
}
template <class Record>
::testing::AssertionResult is_same(const Image<Record> &expected, const Record &record) {
  return are_same_bytes(expected.bytes().data(), &record, sizeof record);
}

// Lines from every list, one after the other.
inline Lines joined(const std::vector<Lines> &lists) {
  Lines all;
  for (const auto &list : lists) all.insert(all.end(), list.begin(), list.end());
  return all;
}

// The calls of one access table: records of a database, between open and close.
inline Lines fetch_of(uint32_t db_id, const Lines &names) {
  const std::string id = std::to_string(db_id);
  Lines calls = {"open " + id, "lock " + id};
  const std::string get = "get " + id + " ";
  for (const auto &name : names) calls.push_back(get + name);
  calls.push_back("unlock " + id);
  calls.push_back("close " + id);
  return calls;
}

inline Lines client_calls() {
  return machine().calls_of({"open", "lock", "get", "unlock", "close"});
}

inline std::string numbered(const char *stem, uint32_t number, int digits = 2) {
  char name[64];
  std::snprintf(name, sizeof name, "%s%0*u", stem, digits, number);
  return name;
}

struct NameLength {
  const char *says;
  uint8_t stored;
  size_t copied;
};

constexpr NameLength kNameLengths[] = {
    {"no name", 0, 0},
    {"one letter", 1, 1},
    {"seventeen letters", 17, 17},
    {"eighteen letters", 18, 18},
    {"one letter more", 19, 18},
    {"the most that six bits say", 63, 18},
    {"the high bits are not the length's", 0xC5, 5},
    {"no letter, with high bits", 0x40, 0},
    {"all bits", 0xFF, 18},
};

// Reads a record whose name has each of the lengths: `read` stores the record and gives back the name's room, which was
// filled with `fill` before.
inline void expect_names(const std::function<std::string(uint8_t length, const std::string &text)> &read,
                         char fill = static_cast<char>(kUntouched)) {
  const std::string letters = "ABCDEFGHIJKLMNOPQRSTUVWXYZ";
  for (const auto &row : kNameLengths) {
    const std::string room = read(row.stored, letters);
    ASSERT_GE(room.size(), 18u);
    EXPECT_EQ(room, letters.substr(0, row.copied) + std::string(room.size() - row.copied, fill)) << row.says;
  }
}

// How a status word and a flag byte make the status of a unit that has both.
struct MergedStatus {
  const char *says;
  uint32_t stored;
  uint8_t flags;
  uint32_t status;
};

constexpr MergedStatus kMergedStates[] = {
    {"one that is well", 0x80000000, 0x00, 0x80000000},
    {"a faulted one", 0x80000000, 0x20, 0xA0000000},
    {"a degraded one", 0x80000000, 0x10, 0x90000000},
    {"faulted goes before degraded", 0x80000000, 0x30, 0xA0000000},
    {"all flags", 0x80000000, 0xFF, 0xA0000000},
    {"other flags say nothing", 0x80000000, 0xCF, 0x80000000},
    {"bits of the status stay", 0xB0008001, 0x00, 0xB0008001},
    {"the flag joins the bits that are there", 0x90008000, 0x20, 0xB0008000},
    {"one that is not installed", 0x00000000, 0x00, 0x00000000},
    {"flags count for an absent one too", 0x00000000, 0x10, 0x10000000},
    {"all ones", 0xFFFFFFFF, 0x00, 0xFFFFFFFF},
};

struct Arguments {
  const char *says;
  int32_t count;
  int32_t model;
  bool out;
};

// What every reader of several models refuses.
constexpr Arguments kRefusedArguments[] = {
    {"count 0", 0, 3, true},           {"no records to fill", 1, 3, false},
    {"model 0", 1, 0, true},           {"model 7", 1, 7, true},
    {"a negative model", 1, -1, true}, {"a model that looks like 3 in its low byte", 1, 259, true},
};

// What an access table still asks of the client when this call has failed: it gives back what it has taken.
inline Lines calls_after(const std::string &failed) {
  const std::string verb = failed.substr(0, failed.find(' '));
  const std::string id = failed.substr(verb.size() + 1, 1);
  if (verb == "get") return {"unlock " + id, "close " + id};
  if (verb == "lock" || verb == "unlock") return {"close " + id};
  return {};
}

// A reader of access tables, which makes these calls when all is well: whichever of them fails, the read fails, and the
// table at hand is the last. What cannot be given back stays with the process, so each case has one of its own.
inline void expect_every_call_to_count(const Lines &calls, const std::function<int32_t()> &read,
                                       const std::function<::testing::AssertionResult()> &nothing_is_written) {
  for (size_t i = 0; i < calls.size(); ++i) {
    const auto here = calls.begin() + static_cast<ptrdiff_t>(i);
    const auto nth = static_cast<int>(std::count(calls.begin(), here + 1, *here));
    in_a_process_of_its_own([&] {
      SCOPED_TRACE("call " + std::to_string(i) + " fails: " + *here);
      machine().calls.clear();
      machine().fail(*here, nth, 0, 77);
      EXPECT_EQ(read(), 8);
      EXPECT_EQ(client_calls(), joined({Lines(calls.begin(), here + 1), calls_after(*here)}));
      EXPECT_TRUE(nothing_is_written());
    });
  }
}

// The caller's own sessions around a body.
inline void within_sessions(const std::vector<uint32_t> &db_ids, const std::function<void()> &body) {
  for (const uint32_t id : db_ids) {
    EXPECT_EQ(lmainte_scdb_open(id), 0);
    EXPECT_EQ(lmainte_scdb_lock(id), 0);
  }
  machine().calls.clear();
  body();
  EXPECT_EQ(machine().calls_of({"open", "lock", "unlock", "close"}), Lines{});
  const std::vector<uint32_t> descending(db_ids.rbegin(), db_ids.rend());
  for (const uint32_t id : descending) {
    EXPECT_EQ(lmainte_scdb_unlock(id), 0);
    EXPECT_EQ(lmainte_scdb_close(id), 0);
  }
}

// A reader's test, with records for it to fill.
template <class Record, size_t Size>
class ReaderTest : public LibraryTest {
 protected:
  ReaderTest() { wipe(); }

  void wipe() { std::memset(out_, kUntouched, sizeof out_); }
  ::testing::AssertionResult is_untouched(size_t i) { return is_same(Image<Record>(), out_[i]); }
  ::testing::AssertionResult all_untouched() {
    for (size_t i = 0; i < Size; ++i)
      if (auto same = is_untouched(i); !same) return same << ", of record " << i;
    return ::testing::AssertionSuccess();
  }

  // `read` refuses these arguments before it asks for a database, and records its entry, the error with count and model,
  // and its exit.
  using Read = int32_t (*)(int32_t index, int32_t count, int32_t model, Record *out);
  void expect_refused(std::span<const Arguments> rows, Read read, const Lines &entry_error_exit) {
    for (const Arguments &row : rows) {
      SCOPED_TRACE(row.says);
      machine().start();
      EXPECT_EQ(read(-1, row.count, row.model, row.out ? out_ : nullptr), 8);
      EXPECT_EQ(machine().calls, Lines{});
      Lines expected = entry_error_exit;
      expected[1] += " " + std::to_string(row.count) + " " + std::to_string(row.model);
      EXPECT_EQ(trace(), expected);
      EXPECT_TRUE(all_untouched());
    }
  }

  Record out_[Size];
};

}  // namespace doubles
