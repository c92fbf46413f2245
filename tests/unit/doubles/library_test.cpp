#include "tests/unit/doubles/library_test.h"

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstring>

#include "tests/unit/doubles/kept_events.h"
#include "tests/unit/doubles/system_calls.h"

namespace doubles {

namespace {

// An event without the offset that marks an error.
uint32_t without_error(uint32_t event) {
  const uint32_t space = event & 0xF000;
  if (space == 0xB000) return event - 0x3000;
  return space == 0x1000 ? event - 0x1000 : event;
}

uint32_t block_of(uint32_t event) {
  return without_error(event) & ~0xFU;
}

// Where two functions share a block, the second one enters at point 8 and leaves at point 9.
bool has_second_function(uint32_t event) {
  const uint32_t block = block_of(event);
  return block == 0x110C0390 || block == 0x110C8220;
}

// The record of the progress indicator's signal handler, which may come at any time.
bool is_of_a_handler(uint32_t event) {
  return event == 0x110C0379;
}

// 0 for an entry record, 1 for an exit record, another number for any other record.
uint32_t point_of(uint32_t event) {
  const uint32_t point = event & 0xF;
  return has_second_function(event) && point >= 8 ? point - 8 : point;
}

std::string described(const TraceRecord &record) {
  char text[80];
  int used = std::snprintf(text, sizeof text, "%X %08X", record.level, record.event);
  for (uint32_t n = 2; n < (record.length - 8) / 4 && n < 4; ++n)
    used +=
        std::snprintf(text + used, sizeof text - static_cast<size_t>(used), " %d", static_cast<int>(record.words[n]));
  return text;
}

bool is_well_formed(const TraceRecord &record) {
  return record.module == 14 && record.kind == 15 && record.length >= 16 && record.length <= 24 &&
         record.length % 4 == 0 &&
         record.words[0] == static_cast<uint32_t>(machine().pid + (record.in_child ? 1 : 0)) && record.words[1] != 0;
}

Lines described(const std::vector<TraceRecord> &records) {
  Lines lines;
  for (const auto &record : records) lines.push_back(described(record));
  return lines;
}

}  // namespace

Lines trace() {
  return described(machine().trace_records());
}

Lines child_trace() {
  return described(machine().trace_records(true));
}

Lines trace_of(uint32_t entry_event) {
  Lines lines;
  for (const auto &record : machine().trace_records())
    if (block_of(record.event) == (entry_event & ~0xFU)) lines.push_back(described(record));
  return lines;
}

std::vector<uint32_t> source_lines_of(uint32_t event) {
  std::vector<uint32_t> lines;
  for (const auto &record : machine().trace_records())
    if (record.event == event) lines.push_back(record.words[1]);
  return lines;
}

Lines broken_trace_laws() {
  Lines broken;
  std::vector<uint32_t> calls;
  for (const auto &record : machine().trace_records()) {
    const auto text = described(record);
    if (!is_well_formed(record)) broken.push_back(text + ": not a record of the library");
    if (is_of_a_handler(record.event)) continue;
    const bool is_error = without_error(record.event) != record.event;
    const uint32_t point = point_of(record.event);
    if (!is_error && point == 0) {
      calls.push_back(block_of(record.event));
    } else if (calls.empty() || calls.back() != block_of(record.event)) {
      broken.push_back(text + ": outside its call");
    } else if (!is_error && point == 1) {
      calls.pop_back();
    }
    if (!is_error && point < 2 && record.level != 256) broken.push_back(text + ": not at level 256");
    if (is_error && record.level != 2053 && record.level != 32778) broken.push_back(text + ": not at an error's level");
  }
  for (const std::string &doubled : lines_of_two_events()) broken.push_back(doubled);
  for (const uint32_t call : calls) broken.push_back("no exit record of the block " + std::to_string(call));
  return broken;
}

void in_a_process_of_its_own(const std::function<void()> &body) {
  std::fflush(nullptr);
  const pid_t child = __real_fork();
  ASSERT_NE(child, -1);
  if (child == 0) {
    body();
    EXPECT_EQ(broken_trace_laws(), Lines{});
    std::fflush(nullptr);
    leave(::testing::Test::HasFailure() ? 1 : 0);
  }
  int status = -1;
  ASSERT_EQ(__real_waitpid(child, &status, 0), child);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "failed in a process of its own, status " << status;
}

std::string printed_by(const std::function<void()> &body) {
  std::fflush(stdout);
  const int before = dup(STDOUT_FILENO);
  FILE *paper = std::tmpfile();
  EXPECT_NE(paper, nullptr);
  dup2(fileno(paper), STDOUT_FILENO);
  body();
  std::fflush(stdout);
  dup2(before, STDOUT_FILENO);
  __real_close(before);
  std::string text(4096, '\0');
  std::rewind(paper);
  text.resize(std::fread(text.data(), 1, text.size(), paper));
  __real_fclose(paper);
  return text;
}

std::vector<int> blocked_signals() {
  sigset_t set;
  EXPECT_EQ(__real_sigprocmask(SIG_BLOCK, nullptr, &set), 0);
  std::vector<int> signals;
  for (int signal = 1; signal < 65; ++signal)
    if (sigismember(&set, signal) == 1) signals.push_back(signal);
  return signals;
}

RecordBytes &RecordBytes::word(size_t offset, uint32_t value) {
  std::memcpy(&bytes_.at(offset), &value, sizeof value);
  return *this;
}

RecordBytes &RecordBytes::text(size_t offset, const std::string &text) {
  std::copy(text.begin(), text.end(), bytes_.begin() + static_cast<ptrdiff_t>(offset));
  return *this;
}

ListLine line(int32_t position, const char *format, const std::vector<uintptr_t> &values) {
  ListLine result = {position, format, 0xBAD, {}};
  std::copy(values.begin(), values.end(), result.args);
  return result;
}

}  // namespace doubles
