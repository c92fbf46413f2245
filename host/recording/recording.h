// A recording: what passed between commands and their platform, as lmainte_record.h writes it. Anybody may have written
// the file, on any machine; it may be cut, damaged, and written to while it is read.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "host/box/database.h"
#include "include/lmainte_record.h"

namespace recording {

// What is larger is no recording that anybody could look through.
inline constexpr std::size_t kMostBytes = std::size_t{64} << 20U;

struct Record {
  std::uint32_t kind = 0;
  pid_t pid = 0;
  std::uint32_t number = 0;  // in its process
  std::int64_t time_ns = 0;
  std::uint64_t duration_ns = 0;
  std::int32_t result = 0;
  std::uint32_t first = 0, second = 0, third = 0;
  std::string_view text;
  std::string_view content;        // in the byte order of its machine; empty where it is left out
  std::uint32_t content_size = 0;  // also where it is left out
  bool is_left_out = false;
  bool is_big_endian = false;  // its machine

  // Of a process that begins: it was forked by one of a run, and goes on in it.
  bool is_child() const { return (third & LMAINTE_RECORD_IS_CHILD) != 0; }
};

struct Recording {
  std::shared_ptr<const std::string> bytes;  // in which the records' texts lie
  std::vector<Record> records;               // as they stand in the file, also of kinds that nobody knows yet
  std::uint32_t model = 0;                   // of the first process that had one
  bool is_without_contents = false;
  bool is_full = false;                     // it ends at its bound
  std::size_t places = 0;                   // that are damaged
  std::size_t lost_bytes = 0;               // there
  bool is_cut = false;                      // the last of these places is its end
  std::vector<std::size_t> damaged_before;  // which of the records each of these places is before
  std::uint64_t strays = 0;                 // records of processes whose beginning is not there
  std::uint64_t missing = 0;                // records whose numbers are not there
};

// Throws BoxError, in one sentence.
Recording read(const std::filesystem::path &file);

// Of the bytes of a file that is called so.
Recording read(std::string bytes, const std::string &name);

// What is wrong with it beside what is whole: a sentence each.
std::vector<std::string> remarks(const Recording &recording, const std::string &name);

// The content in the byte order of this machine: the words of records that a box knows, and of messages; all else is bytes.
box::Bytes content_here(const Record &record);

std::uint32_t word_at(std::string_view bytes, std::size_t at, bool is_big_endian);  // 0 behind the end

}  // namespace recording
