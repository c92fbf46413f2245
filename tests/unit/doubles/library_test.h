// The frame of the unit tests: a machine for each test, and the laws that hold after every one of them.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include <gtest/gtest.h>

#include "include/lmainte.h"
#include "tests/unit/doubles/machine.h"

namespace doubles {

// The trace as text, one line for each record: level and event in hexadecimal, then the values in decimal.
Lines trace();
Lines trace_of(uint32_t entry_event);  // of the function with this entry record alone, errors included
Lines child_trace();
std::vector<uint32_t> source_lines_of(uint32_t event);

// One sentence for each law that is broken: records are well formed, calls nest from their entries to their exits, and no
// two events of a module are at one source line.
Lines broken_trace_laws();

// Runs a test's body in a place where the state that it leaves in the library harms no other test.
void in_a_process_of_its_own(const std::function<void()> &body);

// What is written to standard output meanwhile.
std::string printed_by(const std::function<void()> &body);

std::vector<int> blocked_signals();

// A database record, written by words, bytes and names at their offsets.
class RecordBytes {
 public:
  explicit RecordBytes(size_t size) : bytes_(size, 0) {}

  RecordBytes &word(size_t offset, uint32_t value);
  RecordBytes &byte(size_t offset, uint8_t value) { return bytes_.at(offset) = value, *this; }
  RecordBytes &text(size_t offset, const std::string &text);

  operator Bytes() const { return bytes_; }  // NOLINT(google-explicit-constructor): it is the record's bytes

 private:
  Bytes bytes_;
};

// Lines of a list, a status table or a menu.
ListLine line(int32_t position, const char *format, const std::vector<uintptr_t> &values = {});
inline ListLine head(const char *format, const std::vector<uintptr_t> &values = {}) {
  return line(0, format, values);
}
inline ListLine foot(const char *format, const std::vector<uintptr_t> &values = {}) {
  return line(1, format, values);
}
inline ListLine end_mark() {
  return line(-1, nullptr);
}

class LibraryTest : public ::testing::Test {
 protected:
  void SetUp() override { machine().start(); }
  void TearDown() override {
    EXPECT_EQ(broken_trace_laws(), Lines{});
    EXPECT_EQ(machine().left_behind(), Lines{});
    machine().stop();
  }
};

}  // namespace doubles
