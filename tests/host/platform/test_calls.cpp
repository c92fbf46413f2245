// What the platform keeps of its calls. A process finds its box once, so each row has a process of its own.
#include <unistd.h>

#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

#include "host/base/pipe.h"
#include "host/box/call_ring.h"
#include "include/lmainte.h"
#include "include/lmainte_platform.h"
#include "tests/host/platform/box_fixture.h"

namespace {

using box::CallEntry;
using box::CallKind;

class KeptCalls : public BoxTest {
 protected:
  void SetUp() override {
    BoxTest::SetUp();
    box::CallRing::create(place.calls());
  }
  std::vector<CallEntry> kept_of(const std::function<void()> &calls) {
    EXPECT_EQ(in_child([&] {
                calls();
                return 0;
              }),
              0);
    return box::CallRing::read(place.calls());
  }
};

std::string line_of(const CallEntry &entry) {
  return std::to_string(static_cast<std::uint32_t>(entry.kind)) + " " + entry.whole_text + " " +
         std::to_string(entry.first) + " " + std::to_string(entry.second) + " = " + std::to_string(entry.result);
}

std::string line_of(CallKind kind, const std::string &rest) {
  return std::to_string(static_cast<std::uint32_t>(kind)) + " " + rest;
}

std::vector<std::string> lines_of(const std::vector<CallEntry> &entries) {
  std::vector<std::string> lines;
  for (const CallEntry &entry : entries) lines.push_back(line_of(entry));
  return lines;
}

using Lines = std::vector<std::string>;

TEST_F(KeptCalls, OfDatabasesHaveTheRecordItsSizeAndTheResult) {
  store(2, "some_record", "four");
  char there[128] = "some_record", absent[128] = "other_record";
  const auto kept = kept_of([&] {
    void *record = nullptr;
    int32_t size = 0;
    scdb_open(2);
    scdb_lock(2);
    scdb_get(2, there, &record, &size, 0);
    std::free(record);
    scdb_get(2, absent, &record, &size, 0);
    lcmn_scdb_put(2, there, "longer", 6, 0);
    scdb_unlock(2);
    scdb_close(2);
    scdb_close(99);
  });
  EXPECT_EQ(lines_of(kept),
            (Lines{line_of(CallKind::kOpen, " 2 0 = 0"), line_of(CallKind::kLock, " 2 0 = 0"),
                   line_of(CallKind::kRead, "some_record 2 4 = 0"), line_of(CallKind::kRead, "other_record 2 0 = -4"),
                   line_of(CallKind::kWrite, "some_record 2 6 = 0"), line_of(CallKind::kUnlock, " 2 0 = 0"),
                   line_of(CallKind::kClose, " 2 0 = 0"), line_of(CallKind::kClose, " 99 0 = -1")}));
}

TEST_F(KeptCalls, StandBetweenTheRecordsOfTheLibrary) {
  const auto kept = kept_of([] {
    const uint32_t words[2] = {4711, 1};
    mgb_trace_write(14, 256, 15, 0x110C0020, words, 16);
    mgb_trace_write(14, 256, 15, 0x110C0022, words, 16);
    scdb_open(2);
    mgb_trace_write(14, 256, 15, 0x110C0021, words, 16);
    scdb_close(2);
  });
  ASSERT_EQ(kept.size(), 2u);
  EXPECT_EQ(kept[0].position, 2u);
  EXPECT_EQ(kept[1].position, 3u);
  EXPECT_NE(kept[0].pid, getpid());
  EXPECT_EQ(kept[0].pid, kept[1].pid);
  EXPECT_EQ(box::TraceRing::read(place.trace()).size(), 3u) << "the library's own stay as they were";
}

TEST_F(KeptCalls, AreQuestionsWhenTheyAreAskedAndAnswersWhenTheyAreThere) {
  const auto kept = kept_of([] {
    base::Pipe line;
    if (write(line.in.get(), "x\n2\n", 4) != 4) std::abort();
    dup2(line.out.get(), STDIN_FILENO);
    int32_t choice = 0;
    cli_ask_select(3, &choice, "Which one? ");
  });
  EXPECT_EQ(lines_of(kept), (Lines{line_of(CallKind::kQuestion, "Which one?  3 0 = 0"),
                                   line_of(CallKind::kAnswer, "x 0 0 = -2"), line_of(CallKind::kAnswer, "2 2 0 = 0")}));
}

TEST_F(KeptCalls, KeepErrnoAndCostNothingButThemselvesWhereThereIsNoRing) {
  std::filesystem::remove(place.calls());
  EXPECT_EQ(in_child([] {
              errno = ERANGE;
              const bool is_open = scdb_open(2) == 0;
              const bool is_closed = scdb_close(2) == 0;
              return is_open && is_closed && lcmn_close(-1) == -1 && errno == EBADF ? 0 : 1;
            }),
            0);
  EXPECT_FALSE(std::filesystem::exists(place.calls()));
}

}  // namespace
