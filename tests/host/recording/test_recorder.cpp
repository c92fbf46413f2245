// The recorder that a platform takes in, each time in a process that has not recorded yet.
#include "include/lmainte_record.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <fstream>
#include <list>
#include <map>
#include <set>

#include "host/box/box_error.h"
#include "host/recording/programs.h"
#include "host/recording/recording.h"
#include "tests/host/box/child.h"
#include "tests/host/box/scratch.h"

extern "C" {
extern const char *g_recording_path;
extern std::uint32_t g_recording_most;
}

namespace {

int g_writes_left = -1;  // until the disk is full; -1: it never is

namespace fs = std::filesystem;

using recording::Record;
using recording::Recording;

void call(std::uint32_t db_id, std::int32_t result = 0) {
  lmainte_record_session(LMAINTE_RECORD_OPEN, lmainte_record_begin(), db_id, result);
}

class Recorder : public testing::Test {
 protected:
  void SetUp() override {
    path_ = (scratch_ / "recording").string();
    g_recording_path = path_.c_str();
  }
  void switch_on(const std::string &text = "") const { std::ofstream(path_) << text; }
  Recording recorded() const { return recording::read(fs::path(path_)); }
  std::string bytes() const {
    std::ifstream in(path_, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
  }

  std::vector<std::uint32_t> kinds() const {
    std::vector<std::uint32_t> kinds;
    for (const Record &record : recorded().records) kinds.push_back(record.kind);
    return kinds;
  }

  Scratch scratch_;
  std::string path_;
};

using Kinds = std::vector<std::uint32_t>;

TEST_F(Recorder, WritesNothingWhereNoFileIsThere) {
  EXPECT_EQ(in_child([] {
              errno = ERANGE;
              call(1, 7);
              const bool is_off = lmainte_record_begin() == 0;
              call(2);
              return errno == ERANGE && is_off && lmainte_record_missed() == 0 ? 0 : 1;
            }),
            0);
  EXPECT_FALSE(fs::exists(path_));
}

TEST_F(Recorder, WritesEachCallWithItsAnswer) {
  switch_on();
  const pid_t self = getpid();
  ASSERT_EQ(in_child([] {
              const std::uint32_t words[]{11, 22, 33}, head = 0x30000, id[]{0x22010300, 0xFFFFFFFF};
              const std::uint8_t event[48]{1, 2, 3};
              const std::int32_t size = 3, choice = 4;
              char content[]{'a', 'b', 'c'};
              void *record = content;
              char word[] = "-c", on[] = "on", program[] = "/mgb/bin/ctlled";
              char *const arguments[]{program, word, on, nullptr};
              const std::uint8_t status = 1, other = 0;
              lmainte_record_trace(14, 256, 15, 0x110C0020, words, 20);
              lmainte_record_program(program, arguments);
              lmainte_record_program_end(77, 206 << 8);
              const std::uint64_t began = lmainte_record_begin();
              int wrong = 0;
              wrong += lmainte_record_session(LMAINTE_RECORD_LOCK, began, 2, -3) != -3;
              wrong += lmainte_record_get(began, 2, "current_psu_info", &record, &size, 0) != 0;
              wrong += lmainte_record_put(began, 3, "local", content, 2, -5) != -5;
              lmainte_record_question(9, "Which one? ");
              wrong += lmainte_record_answer(began, "4", &choice, 0) != 0;
              errno = EIO;
              wrong += lmainte_record_log(began, &head, event, -1) != -1;
              wrong += lmainte_record_name(began, id, 1, "PSU#3", 0) != 0;
              wrong += lmainte_record_file_open(began, "/mgb/cli/etc/x", O_RDWR, 5) != 5;
              wrong += lmainte_record_file_read(began, 5, "now", 100, 3) != 3;
              wrong += lmainte_record_file_write(began, 5, "then", 4, -1) != -1;
              wrong += lmainte_record_file_close(began, 5, 0) != 0;
              wrong += lmainte_record_send(began, 6, "request", 7, 7) != 7;
              wrong += lmainte_record_receive(began, 6, "reply", 5, 5) != 5;
              wrong += lmainte_record_select(began, &status, &other, 0) != 0;
              lmainte_record_end(3);
              wrong += errno != EIO;
              return wrong;
            }),
            0);
  const Recording all = recorded();
  std::map<std::uint32_t, Record> by_kind;
  for (const Record &record : all.records) by_kind[record.kind] = record;
  EXPECT_EQ(all.records.front().kind, LMAINTE_RECORD_PROCESS);
  EXPECT_EQ(all.records.front().first, static_cast<std::uint32_t>(self));
  EXPECT_NE(all.records.front().text.find("test_recording"), std::string_view::npos);
  EXPECT_EQ(recording::word_at(by_kind[LMAINTE_RECORD_TRACE].content, 12, true), 0x110C0020u);
  EXPECT_EQ(recording::word_at(by_kind[LMAINTE_RECORD_TRACE].content, 24, true), 33u);
  struct Row {
    std::uint32_t kind;
    std::int32_t result;
    std::uint32_t first, second, third;
    std::string text, content;
  };
  const auto parent = static_cast<std::uint32_t>(self);
  for (const Row &row : std::list<Row>{
           {LMAINTE_RECORD_END, 3, 0, 0, 0, "", ""},
           {LMAINTE_RECORD_PROGRAM, 0, parent, by_kind[LMAINTE_RECORD_PROGRAM].second,
            by_kind[LMAINTE_RECORD_PROGRAM].third, "/mgb/bin/ctlled -c on", ""},
           {LMAINTE_RECORD_PROGRAM_END, 206 << 8, 77, by_kind[LMAINTE_RECORD_PROGRAM_END].second,
            by_kind[LMAINTE_RECORD_PROGRAM_END].third, "", ""},
           {LMAINTE_RECORD_LOCK, -3, 2, 0, 0, "", ""},
           {LMAINTE_RECORD_GET, 0, 2, 3, 0, "current_psu_info", "abc"},
           {LMAINTE_RECORD_PUT, -5, 3, 2, 0, "local", "ab"},
           {LMAINTE_RECORD_QUESTION, 0, 9, 0, 0, "Which one? ", ""},
           {LMAINTE_RECORD_ANSWER, 0, 4, 0, 0, "4", ""},
           {LMAINTE_RECORD_LOG, -1, 0x30000, EIO, 0, "", std::string("\1\2\3") + std::string(45, '\0')},
           {LMAINTE_RECORD_NAME, 0, 0x22010300, 0xFFFFFFFF, 1, "PSU#3", ""},
           {LMAINTE_RECORD_FILE_OPEN, 5, O_RDWR, 0, 0, "/mgb/cli/etc/x", ""},
           {LMAINTE_RECORD_FILE_READ, 3, 5, 100, 0, "", "now"},
           {LMAINTE_RECORD_FILE_WRITE, -1, 5, 4, EIO, "", "then"},
           {LMAINTE_RECORD_FILE_CLOSE, 0, 5, 0, 0, "", ""},
           {LMAINTE_RECORD_SEND, 7, 6, 0, 0, "", "request"},
           {LMAINTE_RECORD_RECEIVE, 5, 6, 0, 0, "", "reply"},
           {LMAINTE_RECORD_SELECT, 0, 1, 0, 0, "", ""},
       }) {
    const Record &record = by_kind[row.kind];
    EXPECT_EQ(record.result, row.result) << row.kind;
    EXPECT_EQ(record.first, row.first) << row.kind;
    EXPECT_EQ(record.second, row.second) << row.kind;
    EXPECT_EQ(record.third, row.third) << row.kind;
    EXPECT_EQ(record.text, row.text) << row.kind;
    EXPECT_EQ(record.content, row.content) << row.kind;
  }
  EXPECT_NE(by_kind[LMAINTE_RECORD_PROGRAM].third, 0u);
  EXPECT_LT(recording::time_of_program(by_kind[LMAINTE_RECORD_PROGRAM], by_kind[LMAINTE_RECORD_PROGRAM_END]),
            std::uint64_t{60} * 1'000'000'000);
  EXPECT_EQ(all.missing + all.places, 0u);
}

TEST_F(Recorder, LeavesContentsOutWhereTheFileSaysSo) {
  switch_on("without contents\n");
  ASSERT_EQ(in_child([] {
              char content[] = "serial number";
              void *record = content;
              const std::int32_t size = 13;
              lmainte_record_get(0, 4, "fru_cmu", &record, &size, 0);
              return 0;
            }),
            0);
  EXPECT_EQ(bytes().find("serial"), std::string::npos);
  const Recording all = recorded();
  EXPECT_TRUE(all.is_without_contents);
  EXPECT_TRUE(all.records.back().is_left_out);
  EXPECT_EQ(all.records.back().content_size, 13u);
  EXPECT_EQ(all.records.back().content, "");
}

// As somebody does while a command runs: the rest of the recording is without contents, or with them again.
TEST_F(Recorder, LooksAtTheFirstLineAgain) {
  struct Row {
    const char *before, *after;
    bool has_content;
  };
  for (const Row &row : std::list<Row>{{"", "without contents\n", false}, {"without contents\n", "", true}}) {
    switch_on(row.before);
    ASSERT_EQ(in_child([&] {
                char content[] = "serial number";
                void *record = content;
                const std::int32_t size = 13;
                call(1);
                switch_on(row.after);
                lmainte_record_get(0, 4, "fru_cmu", &record, &size, 0);
                return 0;
              }),
              0);
    EXPECT_EQ(bytes().find("serial") != std::string::npos, row.has_content);
    EXPECT_EQ(kinds(), (Kinds{LMAINTE_RECORD_PROCESS, LMAINTE_RECORD_GET}));
    EXPECT_EQ(recorded().is_without_contents, !row.has_content);
  }
}

TEST_F(Recorder, StopsAtItsBoundAndSaysSo) {
  switch_on();
  g_recording_most = 4096;
  ASSERT_EQ(in_child([] {
              for (int i = 0; i < 100; ++i) call(1);
              return lmainte_record_missed() > 30 ? 0 : 1;
            }),
            0);
  ASSERT_EQ(in_child([] {  // a later process adds nothing
              call(1);
              return lmainte_record_missed() == 1 ? 0 : 1;
            }),
            0);
  g_recording_most = 1U << 20U;
  EXPECT_LE(bytes().size(), 4096u);
  EXPECT_GT(bytes().size(), 3900u);
  EXPECT_TRUE(recorded().is_full);
  EXPECT_EQ(recorded().records.back().kind, LMAINTE_RECORD_FULL);
  EXPECT_EQ(recording::remarks(recorded(), "it"),
            (std::vector<std::string>{"it is full: what came behind its bound is not in it."}));
}

TEST_F(Recorder, EndsNobodyAtTheLimitOfFiles) {
  switch_on();
  ASSERT_EQ(in_child([] {
              call(1);
              const rlimit limit{1000, 1000};
              setrlimit(RLIMIT_FSIZE, &limit);
              for (int i = 0; i < 100; ++i) call(1);
              return 0;
            }),
            0);
  EXPECT_LE(bytes().size(), 1000u);
}

TEST_F(Recorder, GoesOnWithoutAFullDiskAndCounts) {
  switch_on();
  ASSERT_EQ(in_child([] {
              g_writes_left = 3;  // the process, and two calls
              for (int i = 0; i < 12; ++i) call(1);
              const bool has_counted = lmainte_record_missed() == 10;
              g_writes_left = -1;  // there is room again: it is found at the sixteenth
              for (int i = 0; i < 10; ++i) call(2);
              return has_counted && lmainte_record_missed() == 16 ? 0 : 1;
            }),
            0);
  const Recording all = recorded();
  EXPECT_EQ(all.missing, 16u);
  EXPECT_EQ(all.records.size(), 1u + 2 + 4);
  EXPECT_EQ(recording::remarks(all, "it"),
            (std::vector<std::string>{
                "16 records are missing in it: damaged, or not written as on a full disk, or there before the "
                "file was emptied."}));
}

TEST_F(Recorder, TellsAChildOfForkFromItsParent) {
  switch_on();
  ASSERT_EQ(in_child([] {
              call(1);
              const int status = in_child([] {
                call(2);
                return 0;
              });
              call(3);
              lmainte_record_end(0);
              return status;
            }),
            0);
  const Recording all = recorded();
  EXPECT_EQ(kinds(), (Kinds{LMAINTE_RECORD_PROCESS, LMAINTE_RECORD_OPEN, LMAINTE_RECORD_PROCESS, LMAINTE_RECORD_OPEN,
                            LMAINTE_RECORD_OPEN, LMAINTE_RECORD_END}));
  EXPECT_FALSE(all.records[0].is_child());
  EXPECT_TRUE(all.records[2].is_child());
  EXPECT_EQ(all.records[2].first, static_cast<std::uint32_t>(all.records[0].pid));
  EXPECT_EQ(all.records[4].pid, all.records[0].pid);
  EXPECT_EQ(all.missing, 0u);
}

TEST_F(Recorder, KeepsTheRecordsOfManyProcessesWhole) {
  switch_on();
  constexpr int kProcesses = 4, kCalls = 300;
  {
    std::list<Child> children;
    for (int i = 0; i < kProcesses; ++i) {
      children.emplace_back([](const auto &) {
        for (int at = 0; at < kCalls; ++at) call(1);
        return 0;
      });
    }
    for (Child &child : children) EXPECT_EQ(child.end(), 0);
  }
  const Recording all = recorded();
  EXPECT_EQ(all.records.size(), static_cast<std::size_t>(kProcesses * (kCalls + 1)));
  EXPECT_EQ(all.places + all.missing, 0u);
}

TEST_F(Recorder, LosesNothingWhereItsProcessIsKilled) {
  switch_on();
  Child child([](const auto &say_ready) {
    for (int i = 0; i < 50; ++i) call(1);
    say_ready();
    while (true) call(2);
    return 0;
  });
  ASSERT_TRUE(child.is_ready());
  EXPECT_EQ(child.die(), -SIGKILL);
  const Recording all = recorded();
  EXPECT_GT(all.records.size(), 50u);
  EXPECT_EQ(all.places + all.missing, 0u);
}

volatile sig_atomic_t g_rings = 0;

TEST_F(Recorder, RecordsInSignalHandlers) {
  switch_on();
  ASSERT_EQ(in_child([] {
              std::signal(SIGALRM, [](int) {
                call(5);
                g_rings = g_rings + 1;
              });
              const itimerval often{{0, 200}, {0, 200}};
              setitimer(ITIMER_REAL, &often, nullptr);
              for (int i = 0; i < 5000 && g_rings < 20; ++i) call(1);
              const itimerval never{};
              setitimer(ITIMER_REAL, &never, nullptr);
              return 0;
            }),
            0);
  const Recording all = recorded();
  std::set<std::uint32_t> numbers;
  for (const Record &record : all.records) numbers.insert(record.number);
  EXPECT_EQ(all.places, 0u);
  EXPECT_EQ(numbers.size(), all.records.size());
  EXPECT_EQ(all.missing, 0u);
}

TEST_F(Recorder, BeginsAgainInAFileThatIsEmptied) {
  switch_on();
  ASSERT_EQ(in_child([&] {
              call(1);
              switch_on();
              call(2);
              return 0;
            }),
            0);
  EXPECT_EQ(kinds(), (Kinds{LMAINTE_RECORD_PROCESS, LMAINTE_RECORD_OPEN}));
  EXPECT_EQ(recorded().records.back().first, 2u);
  EXPECT_EQ(recorded().missing, 2u);
}

TEST_F(Recorder, StopsInAFileThatIsRemovedAndGoesOnInOneThatIsRenamed) {
  switch_on();
  const fs::path kept = scratch_ / "kept";
  ASSERT_EQ(in_child([&] {
              call(1);
              fs::rename(path_, kept);
              switch_on();  // for commands to come
              call(2);
              fs::remove(kept);
              call(3);
              return lmainte_record_missed() == 1 ? 0 : 1;
            }),
            0);
  EXPECT_EQ(fs::file_size(path_), 0u);
}

TEST_F(Recorder, WritesIntoNoOtherFile) {
  switch_on();
  const fs::path other = scratch_ / "other";
  ASSERT_EQ(in_child([&] {
              call(1);
              const int fd = open(other.c_str(), O_RDWR | O_CREAT, 0600);
              for (int i = 3; i < 400; ++i) {
                if (i != fd) dup2(fd, i);  // as a command does that closes all it knows, and opens its own
              }
              call(2);
              return lmainte_record_missed() == 1 ? 0 : 1;
            }),
            0);
  EXPECT_EQ(fs::file_size(other), 0u);
  EXPECT_EQ(recorded().records.size(), 2u);
}

TEST_F(Recorder, TakesNoFileThatSomebodyElseMayHaveMeant) {
  struct Row {
    const char *says;
    std::function<void(const fs::path &path, const fs::path &other)> make;
  };
  for (const Row &row : std::list<Row>{
           {"a link", [](const auto &path, const auto &other) { fs::create_symlink(other, path); }},
           {"a second name", [](const auto &path, const auto &other) { fs::create_hard_link(other, path); }},
           {"a pipe", [](const auto &path, const auto &) { mkfifo(path.c_str(), 0600); }},
           {"a folder", [](const auto &path, const auto &) { fs::create_directory(path); }},
       }) {
    const fs::path other = scratch_ / "other";
    fs::remove_all(path_);
    std::ofstream(other) << "mine";
    row.make(path_, other);
    EXPECT_EQ(in_child([] {
                call(1);
                call(2);
                return lmainte_record_missed() == 2 ? 0 : 1;
              }),
              0)
        << row.says;
    EXPECT_EQ(fs::file_size(other), 4u) << row.says;
  }
}

}  // namespace

// Stands before the C library's.
extern "C" __attribute__((visibility("default"))) ssize_t writev(int fd, const iovec *parts, int count) {
  if (g_writes_left == 0) {
    errno = ENOSPC;
    return -1;
  }
  if (g_writes_left > 0) --g_writes_left;
  return syscall(SYS_writev, fd, parts, count);
}
