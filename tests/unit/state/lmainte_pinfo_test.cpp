// The procedure information: its text, a file by descriptor, a file by path.

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstring>
#include <fstream>

#include <gtest/gtest.h>

#include "tests/unit/doubles/library_test.h"
#include "tests/unit/doubles/system_calls.h"

namespace {

using doubles::Bytes;
using doubles::Lines;
using doubles::machine;

constexpr int32_t kFd = 7;
const char *const kPath = "/tmp/procedure";

Bytes bytes_of(const std::string &text) {
  return {text.begin(), text.end()};
}

// Appends an item as a provider has to.
int32_t append(char *text, int32_t size, const std::string &item) {
  std::strncat(text, item.c_str(), static_cast<size_t>(size) - 1 - std::strlen(text));
  return 0;
}

// The file lies in memory; the providers are those that are delivered, until a test puts others in.
class LmaintePinfo : public doubles::LibraryTest {
 protected:
  void SetUp() override {
    LibraryTest::SetUp();
    std::copy(std::begin(pinfo_t), std::end(pinfo_t), delivered_);
    std::memset(buffer_, 0x5A, sizeof buffer_);
  }
  void TearDown() override {
    std::copy(std::begin(delivered_), std::end(delivered_), pinfo_t);
    machine().descriptors.erase(kFd);
    LibraryTest::TearDown();
  }

  static void arrange(const std::string &content, size_t position = 0) {
    machine().start();
    machine().files[kPath] = bytes_of(content);
    machine().descriptors[kFd] = {kPath, position};
  }
  static std::string content() {
    const auto &bytes = machine().files.at(kPath);
    return {bytes.begin(), bytes.end()};
  }
  static void provide(const std::vector<lmainte_pinfo_provider> &providers) {
    std::fill(std::begin(pinfo_t), std::end(pinfo_t), nullptr);
    std::copy(providers.begin(), providers.end(), pinfo_t);
  }
  // What put writes with these providers.
  static std::string text_of(const std::vector<lmainte_pinfo_provider> &providers) {
    arrange("before");
    provide(providers);
    EXPECT_EQ(lmainte_put_pinfo(kFd), 0);
    return content();
  }
  ::testing::AssertionResult buffer_is_untouched(size_t from = 0) {
    for (size_t i = from; i < sizeof buffer_; ++i)
      if (buffer_[i] != 0x5A) return ::testing::AssertionFailure() << "byte " << i << " was written";
    return ::testing::AssertionSuccess();
  }

  lmainte_pinfo_provider delivered_[8];
  char buffer_[300];
};

// ---- the providers

TEST_F(LmaintePinfo, DeliveredProviderIsTheProcessIdAlone) {
  ASSERT_NE(pinfo_t[0], nullptr);
  for (size_t i = 1; i < 8; ++i) EXPECT_EQ(pinfo_t[i], nullptr) << i;
  EXPECT_EQ(sizeof pinfo_t / sizeof pinfo_t[0], 8u);
}

TEST_F(LmaintePinfo, FileHoldsTheProcessIdAndNothingElse) {
  for (const pid_t pid : {1, 4711, 32768, 2147483647}) {
    arrange("");
    machine().pid = pid;
    EXPECT_EQ(lmainte_put_pinfo(kFd), 0);
    EXPECT_EQ(content(), std::to_string(pid));
  }
}

TEST_F(LmaintePinfo, ItemsStandInTheTablesOrderWithCommasBetween) {
  const auto first = [](char *text, int32_t size) { return append(text, size, "first"); };
  const auto second = [](char *text, int32_t size) { return append(text, size, "2"); };
  const auto nothing = [](char *, int32_t) { return 0; };
  EXPECT_EQ(text_of({first, second}), "first,2");
  EXPECT_EQ(text_of({second, first}), "2,first");
  EXPECT_EQ(text_of({delivered_[0], first}), "4711,first");
  EXPECT_EQ(text_of({first, delivered_[0], second}), "first,4711,2");
  EXPECT_EQ(text_of({nothing, first}), ",first");
  EXPECT_EQ(text_of({first, nothing, nothing}), "first,,");
  EXPECT_EQ(text_of({}), "");
}

TEST_F(LmaintePinfo, TableEndsAtItsFirstNullOrWithItsLastPlace) {
  const auto item = [](char *text, int32_t size) { return append(text, size, "i"); };
  EXPECT_EQ(text_of({item, nullptr, item}), "i");
  EXPECT_EQ(text_of({item, item, item, item, item, item, item, item}), "i,i,i,i,i,i,i,i");
}

TEST_F(LmaintePinfo, ProviderIsGivenTheTextSoFarAndItsSize) {
  const auto first = [](char *text, int32_t size) { return append(text, size, "first"); };
  const auto checking = [](char *text, int32_t size) {
    EXPECT_STREQ(text, "first,");
    EXPECT_EQ(size, 256);
    return append(text, size, "!");
  };
  EXPECT_EQ(text_of({first, checking}), "first,!");
}

template <int Length>
int32_t long_item(char *text, int32_t size) {
  return append(text, size, std::string(Length, 'x'));
}

TEST_F(LmaintePinfo, TextIsCutAt255Characters) {
  const std::string x(300, 'x');
  EXPECT_EQ(text_of({long_item<250>, delivered_[0]}), x.substr(0, 250) + ",4711");
  EXPECT_EQ(text_of({long_item<251>, delivered_[0]}), x.substr(0, 251) + ",471");
  EXPECT_EQ(text_of({long_item<253>, delivered_[0]}), x.substr(0, 253) + ",4");
  EXPECT_EQ(text_of({long_item<254>, delivered_[0]}), x.substr(0, 254) + ",");
  EXPECT_EQ(text_of({long_item<255>, delivered_[0]}), x.substr(0, 255));
  EXPECT_EQ(text_of({long_item<299>, long_item<299>, delivered_[0]}), x.substr(0, 255));
}

TEST_F(LmaintePinfo, ProviderThatForgetsTheEndOfItsTextGetsOne) {
  const auto careless = [](char *text, int32_t size) {
    std::memset(text, 'y', static_cast<size_t>(size));
    return 0;
  };
  EXPECT_EQ(text_of({careless, delivered_[0]}), std::string(255, 'y'));
}

TEST_F(LmaintePinfo, TableIsReadAtEveryCall) {
  EXPECT_EQ(text_of({delivered_[0]}), "4711");
  EXPECT_EQ(text_of({long_item<2>}), "xx");
}

TEST_F(LmaintePinfo, ProcessIdKeepsTheSizeOfTheText) {
  struct Row {
    int32_t size;
    const char *before, *after;
  };
  for (const auto &row : {Row{256, "", "4711"}, Row{5, "", "4711"}, Row{4, "", "471"}, Row{2, "", "4"}, Row{1, "", ""},
                          Row{0, "", ""}, Row{-1, "", ""}, Row{8, "a,", "a,4711"}, Row{7, "a,", "a,4711"},
                          Row{6, "a,", "a,471"}, Row{3, "a,", "a,"}, Row{2, "a,", "a,"}, Row{INT32_MIN, "a,", "a,"}}) {
    char text[16] = "";
    std::strcpy(text, row.before);
    EXPECT_EQ(pinfo_t[0](text, row.size), 0);
    EXPECT_STREQ(text, row.after) << "size " << row.size;
  }
}

TEST_F(LmaintePinfo, ProviderThatFailsLeavesTheFileAsItWas) {
  struct Row {
    std::vector<lmainte_pinfo_provider> providers;
    Lines records;
  };
  const auto fails = [](char *, int32_t) { return int32_t{-9}; };
  const auto unreached = [](char *, int32_t) {
    ADD_FAILURE() << "a provider after one that failed";
    return int32_t{0};
  };
  for (const auto &row :
       {Row{{fails, unreached}, {"100 110C0702 -9 0", "800A 110C1701 -9 0"}},
        Row{{delivered_[0], fails, unreached}, {"100 110C0702 0 0", "100 110C0702 -9 1", "800A 110C1701 -9 1"}}}) {
    arrange("before", 6);
    provide(row.providers);
    EXPECT_EQ(lmainte_put_pinfo(kFd), 8);
    EXPECT_EQ(machine().calls, Lines{});
    EXPECT_EQ(content(), "before");
    Lines expected = {"100 110C0700"};
    expected.insert(expected.end(), row.records.begin(), row.records.end());
    expected.push_back("100 110C0701");
    EXPECT_EQ(doubles::trace_of(0x110C0700), expected);
  }
}

// ---- by descriptor

TEST_F(LmaintePinfo, PutReplacesTheWholeFile) {
  for (const size_t position : {0U, 3U, 20U}) {
    arrange("a longer text before", position);
    EXPECT_EQ(lmainte_put_pinfo(kFd), 0);
    EXPECT_EQ(content(), "4711");
    EXPECT_EQ(machine().calls, (Lines{"ftruncate 0", "lseek 0 from the start", "lwrite 4 4711"}));
    EXPECT_EQ(doubles::trace(), (Lines{"100 110C0700", "100 110C0760", "100 110C0761", "100 110C0702 0 0",
                                       "100 110C0703 4", "100 110C0701"}));
  }
}

TEST_F(LmaintePinfo, PutOfAnEmptyTableStillWrites) {
  EXPECT_EQ(text_of({}), "");
  EXPECT_EQ(machine().calls, (Lines{"ftruncate 0", "lseek 0 from the start", "lwrite 0 "}));
  EXPECT_EQ(doubles::trace(), (Lines{"100 110C0700", "100 110C0703 0", "100 110C0701"}));
}

struct PutStepRow {
  const char *call;
  Lines calls, records;
  std::string content;
};

TEST_F(LmaintePinfo, EachStepOfPutThatFailsEndsIt) {
  const std::vector<PutStepRow> rows = {
      {"ftruncate", {"ftruncate 0"}, {"800A 110C1702 7 28"}, "before"},
      {"lseek", {"ftruncate 0", "lseek 0 from the start"}, {"800A 110C1703 7 28"}, ""},
      {"lwrite",
       {"ftruncate 0", "lseek 0 from the start", "lwrite 4 4711"},
       {"100 110C0703 -1", "800A 110C1704 7 28"},
       ""},
  };
  for (const auto &row : rows) {
    arrange("before");
    machine().fail(row.call, 1, 28);
    EXPECT_EQ(lmainte_put_pinfo(kFd), 8) << row.call;
    EXPECT_EQ(machine().calls, row.calls);
    EXPECT_EQ(content(), row.content) << row.call;
    Lines expected = {"100 110C0700", "100 110C0702 0 0"};
    expected.insert(expected.end(), row.records.begin(), row.records.end());
    expected.push_back("100 110C0701");
    EXPECT_EQ(doubles::trace_of(0x110C0700), expected);
  }
}

TEST_F(LmaintePinfo, ShortWriteIsSuccess) {
  arrange("before");
  machine().write_at_most = 2;
  EXPECT_EQ(lmainte_put_pinfo(kFd), 0);
  EXPECT_EQ(content(), "47");
  EXPECT_EQ(doubles::trace_of(0x110C0700).at(2), "100 110C0703 2");
}

TEST_F(LmaintePinfo, ClearEmptiesTheFile) {
  arrange("before", 3);
  EXPECT_EQ(lmainte_clear_pinfo(kFd), 0);
  EXPECT_EQ(content(), "");
  EXPECT_EQ(machine().calls, Lines{"ftruncate 0"});
  EXPECT_EQ(doubles::trace(), (Lines{"100 110C0710", "100 110C0711"}));
}

TEST_F(LmaintePinfo, ClearThatFailsIsRecorded) {
  arrange("before");
  machine().fail("ftruncate", 1, 30);
  EXPECT_EQ(lmainte_clear_pinfo(kFd), 8);
  EXPECT_EQ(content(), "before");
  EXPECT_EQ(doubles::trace(), (Lines{"100 110C0710", "800A 110C1711 7 30", "100 110C0711"}));
}

TEST_F(LmaintePinfo, GetReadsFromTheDescriptorsPositionWithoutAnEnd) {
  struct Row {
    std::string content;
    size_t position;
    std::string got;
  };
  for (const auto &row :
       {Row{"4711", 0, "4711"}, Row{"4711", 2, "11"}, Row{"4711", 4, ""}, Row{"", 0, ""},
        Row{std::string(255, 'x'), 0, std::string(255, 'x')}, Row{std::string(256, 'x'), 0, std::string(256, 'x')},
        Row{std::string(400, 'x'), 0, std::string(256, 'x')}}) {
    arrange(row.content, row.position);
    std::memset(buffer_, 0x5A, sizeof buffer_);
    EXPECT_EQ(lmainte_get_pinfo(kFd, buffer_), 0);
    EXPECT_EQ(std::string(buffer_, row.got.size()), row.got);
    EXPECT_TRUE(buffer_is_untouched(row.got.size()));
    EXPECT_EQ(machine().calls, Lines{"lread 256"});
    EXPECT_EQ(doubles::trace(),
              (Lines{"100 110C0720", "100 110C0722 " + std::to_string(row.got.size()), "100 110C0721"}));
  }
}

TEST_F(LmaintePinfo, GetThatFailsIsRecorded) {
  arrange("before");
  machine().fail("lread", 1, 5);
  EXPECT_EQ(lmainte_get_pinfo(kFd, buffer_), 8);
  EXPECT_TRUE(buffer_is_untouched());
  EXPECT_EQ(doubles::trace(), (Lines{"100 110C0720", "100 110C0722 -1", "800A 110C1722 7 5", "100 110C0721"}));
}

TEST_F(LmaintePinfo, GetRefusesNullBeforeItReads) {
  arrange("before");
  EXPECT_EQ(lmainte_get_pinfo(kFd, nullptr), 8);
  EXPECT_EQ(machine().calls, Lines{});
  EXPECT_EQ(doubles::trace(), (Lines{"100 110C0720", "805 110C1721", "100 110C0721"}));
}

TEST_F(LmaintePinfo, DescriptorThatIsNotOpenFailsInTheCall) {
  EXPECT_EQ(lmainte_put_pinfo(-1), 8);
  EXPECT_EQ(doubles::trace_of(0x110C0700).at(2), "800A 110C1702 -1 9");
  EXPECT_EQ(lmainte_clear_pinfo(99), 8);
  EXPECT_EQ(doubles::trace_of(0x110C0710).at(1), "800A 110C1711 99 9");
}

// ---- by path

using FileCall = int32_t (*)(const char *path, char *buffer);

struct FileRow {
  const char *says;
  FileCall call;
  uint32_t entry;
  std::string open, work;
};

const std::vector<FileRow> &file_rows() {
  static const std::vector<FileRow> kRows = {
      {"put", [](const char *path, char *) { return lmainte_fput_pinfo(path, 0640); }, 0x110C0730,
       "lopen /tmp/procedure create 640", "ftruncate 0"},
      {"clear", [](const char *path, char *) { return lmainte_fclear_pinfo(path); }, 0x110C0740,
       "lopen /tmp/procedure rw", "ftruncate 0"},
      {"get", lmainte_fget_pinfo, 0x110C0750, "lopen /tmp/procedure rw", "lread 256"},
  };
  return kRows;
}

std::string event(const char *level, uint32_t code, const std::string &values = "") {
  char text[32];
  std::snprintf(text, sizeof text, "%s %08X", level, code);
  return text + values;
}

class LmaintePinfoFile : public LmaintePinfo {
 protected:
  static void arrange_file(const std::string &content) {
    machine().start();
    machine().files[kPath] = bytes_of(content);
  }
  static Lines trace_with(const FileRow &row, const Lines &between) {
    Lines lines = {event("100", row.entry)};
    lines.insert(lines.end(), between.begin(), between.end());
    lines.push_back(event("100", row.entry + 1));
    return lines;
  }
};

TEST_F(LmaintePinfoFile, OpensWorksAndCloses) {
  const std::map<std::string, std::string> afterwards = {{"put", "4711"}, {"clear", ""}, {"get", "12345"}};
  for (const auto &row : file_rows()) {
    arrange_file("12345");
    EXPECT_EQ(row.call(kPath, buffer_), 0) << row.says;
    EXPECT_EQ(machine().calls.front(), row.open);
    EXPECT_EQ(machine().calls.at(1), row.work);
    EXPECT_EQ(machine().calls.back(), "lclose");
    EXPECT_EQ(content(), afterwards.at(row.says));
    EXPECT_EQ(doubles::trace_of(row.entry), trace_with(row, {}));
    EXPECT_EQ(doubles::trace().front(), event("100", row.entry));
    EXPECT_EQ(doubles::trace().back(), event("100", row.entry + 1));
  }
  EXPECT_EQ(std::string(buffer_, 5), "12345");
  EXPECT_TRUE(buffer_is_untouched(5));
}

TEST_F(LmaintePinfoFile, OnlyPutMakesTheFile) {
  for (const auto &row : file_rows()) {
    machine().start();
    const bool makes = std::string(row.says) == "put";
    EXPECT_EQ(row.call(kPath, buffer_), makes ? 0 : 8) << row.says;
    EXPECT_EQ(machine().files.contains(kPath), makes) << row.says;
    if (makes) continue;
    EXPECT_EQ(machine().calls, Lines{row.open});
    EXPECT_EQ(doubles::trace(), trace_with(row, {event("800A", row.entry + 0x1002, " -1 2")}));
  }
}

TEST_F(LmaintePinfoFile, NewFileHasTheCallersMode) {
  for (const uint32_t mode : {0600U, 0644U, 0U, 07777U}) {
    machine().start();
    EXPECT_EQ(lmainte_fput_pinfo(kPath, mode), 0);
    char open[64];
    std::snprintf(open, sizeof open, "lopen %s create %o", kPath, mode);
    EXPECT_EQ(machine().calls.front(), open);
  }
}

TEST_F(LmaintePinfoFile, RefusesNullBeforeItOpens) {
  for (const auto &row : file_rows()) {
    machine().start();
    EXPECT_EQ(row.call(nullptr, buffer_), 8) << row.says;
    EXPECT_EQ(machine().calls, Lines{});
    EXPECT_EQ(doubles::trace(), trace_with(row, {event("805", row.entry + 0x1001)}));
  }
  arrange_file("4711");
  EXPECT_EQ(lmainte_fget_pinfo(kPath, nullptr), 8);
  EXPECT_EQ(machine().calls, Lines{});
  EXPECT_EQ(doubles::trace(), (Lines{"100 110C0750", "805 110C1751", "100 110C0751"}));
}

TEST_F(LmaintePinfoFile, FileThatDoesNotOpenIsLeftAlone) {
  for (const auto &row : file_rows()) {
    arrange_file("before");
    machine().fail("lopen", 1, 11, -4);
    EXPECT_EQ(row.call(kPath, buffer_), 8) << row.says;
    EXPECT_EQ(machine().calls, Lines{row.open});
    EXPECT_EQ(content(), "before");
    EXPECT_EQ(doubles::trace(), trace_with(row, {event("800A", row.entry + 0x1002, " -4 11")}));
  }
}

TEST_F(LmaintePinfoFile, FileIsClosedAfterWorkThatFailed) {
  for (const auto &row : file_rows()) {
    arrange_file("before");
    machine().fail(row.work);
    EXPECT_EQ(row.call(kPath, buffer_), 8) << row.says;
    EXPECT_EQ(machine().calls, (Lines{row.open, row.work, "lclose"}));
    EXPECT_EQ(doubles::trace_of(row.entry), trace_with(row, {event("805", row.entry + 0x1003, " 8")}));
  }
}

TEST_F(LmaintePinfoFile, FailedCloseSpoilsASuccess) {
  for (const int32_t result : {-1, 1, 8}) {
    for (const auto &row : file_rows()) {
      arrange_file("before");
      machine().fail("lclose", 1, 5, result);
      EXPECT_EQ(row.call(kPath, buffer_), 8) << row.says;
      const std::string values = " " + std::to_string(result) + " 5";
      EXPECT_EQ(doubles::trace_of(row.entry), trace_with(row, {event("800A", row.entry + 0x1004, values)}));
      machine().descriptors.clear();
    }
  }
}

TEST_F(LmaintePinfoFile, FailedCloseAfterFailedWorkIsRecordedToo) {
  for (const auto &row : file_rows()) {
    arrange_file("before");
    machine().fail(row.work);
    machine().fail("lclose", 1, 5);
    EXPECT_EQ(row.call(kPath, buffer_), 8) << row.says;
    EXPECT_EQ(doubles::trace_of(row.entry),
              trace_with(row, {event("805", row.entry + 0x1003, " 8"), event("800A", row.entry + 0x1004, " -1 5")}));
    machine().descriptors.clear();
  }
}

TEST_F(LmaintePinfoFile, ProviderThatFailsLeavesTheFileAsItWas) {
  arrange_file("before");
  provide({[](char *, int32_t) { return int32_t{1}; }});
  EXPECT_EQ(lmainte_fput_pinfo(kPath, 0600), 8);
  EXPECT_EQ(content(), "before");
  EXPECT_EQ(machine().calls, (Lines{"lopen /tmp/procedure create 600", "lclose"}));
}

// ---- real files

class LmaintePinfoOnDisk : public LmaintePinfo {
 protected:
  void SetUp() override {
    LmaintePinfo::SetUp();
    char folder[] = "/tmp/pinfo_test.XXXXXX";
    ASSERT_NE(mkdtemp(folder), nullptr);
    folder_ = folder;
    path_ = folder_ + "/procedure";
    machine().files_are_real = true;
  }
  void TearDown() override {
    LmaintePinfo::TearDown();
    unlink(path_.c_str());
    rmdir(folder_.c_str());
  }

  std::string on_disk() const {
    std::ifstream file(path_, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }
  bool exists() const { return access(path_.c_str(), F_OK) == 0; }

  // Becomes the process that a maintenance command would be.
  void begin_procedure(pid_t pid) {
    machine().in_child = true;
    machine().pid = pid;
    lmainte_fput_pinfo(path_.c_str(), 0600);
  }

  std::string folder_, path_;
};

TEST_F(LmaintePinfoOnDisk, FileIsMadeRewrittenEmptiedAndNeverRemoved) {
  const mode_t before = umask(022);
  EXPECT_EQ(lmainte_fput_pinfo(path_.c_str(), 0666), 0);
  umask(before);
  struct stat status;
  ASSERT_EQ(__real_stat(path_.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777U, 0644U);
  EXPECT_EQ(on_disk(), "4711");
  std::ofstream(path_) << "what another procedure left";
  EXPECT_EQ(lmainte_fput_pinfo(path_.c_str(), 0666), 0);
  EXPECT_EQ(on_disk(), "4711");
  EXPECT_EQ(lmainte_fget_pinfo(path_.c_str(), buffer_), 0);
  EXPECT_EQ(std::string(buffer_, 4), "4711");
  EXPECT_TRUE(buffer_is_untouched(4));
  EXPECT_EQ(lmainte_fclear_pinfo(path_.c_str()), 0);
  EXPECT_EQ(on_disk(), "");
  EXPECT_TRUE(exists());
  std::memset(buffer_, 0x5A, sizeof buffer_);
  EXPECT_EQ(lmainte_fget_pinfo(path_.c_str(), buffer_), 0);
  EXPECT_TRUE(buffer_is_untouched());
}

TEST_F(LmaintePinfoOnDisk, FileThatDoesNotExistIsMadeByPutAlone) {
  EXPECT_EQ(lmainte_fclear_pinfo(path_.c_str()), 8);
  EXPECT_EQ(lmainte_fget_pinfo(path_.c_str(), buffer_), 8);
  EXPECT_FALSE(exists());
  EXPECT_EQ(lmainte_fput_pinfo(path_.c_str(), 0600), 0);
  EXPECT_TRUE(exists());
}

TEST_F(LmaintePinfoOnDisk, DescriptorMayStandAnywhere) {
  std::ofstream(path_) << "a text that is longer";
  const int fd = open(path_.c_str(), O_RDWR);
  ASSERT_GE(fd, 0);
  machine().descriptors[fd] = {path_, 0};
  EXPECT_EQ(__real_lseek(fd, 12, SEEK_SET), 12);
  EXPECT_EQ(lmainte_get_pinfo(fd, buffer_), 0);
  EXPECT_EQ(std::string(buffer_, 9), "is longer");
  EXPECT_EQ(lmainte_put_pinfo(fd), 0);
  EXPECT_EQ(on_disk(), "4711");
  EXPECT_EQ(lmainte_clear_pinfo(fd), 0);
  EXPECT_EQ(on_disk(), "");
  machine().descriptors.clear();
  __real_close(fd);
}

TEST_F(LmaintePinfoOnDisk, KilledProcedureTellsTheNextOneWhoDied) {
  const pid_t procedure = __real_fork();
  ASSERT_NE(procedure, -1);
  if (procedure == 0) {
    begin_procedure(__real_getpid());
    __real_kill(__real_getpid(), SIGKILL);
    __real__exit(0);
  }
  int status = 0;
  ASSERT_EQ(__real_waitpid(procedure, &status, 0), procedure);
  ASSERT_TRUE(WIFSIGNALED(status));
  char text[256] = {};
  EXPECT_EQ(lmainte_fget_pinfo(path_.c_str(), text), 0);
  EXPECT_EQ(lmainte_get_pid(text), procedure);
  EXPECT_EQ(__real_kill(procedure, 0), -1);
  EXPECT_EQ(lmainte_fclear_pinfo(path_.c_str()), 0);
  std::memset(text, 0, sizeof text);
  EXPECT_EQ(lmainte_fget_pinfo(path_.c_str(), text), 0);
  EXPECT_EQ(lmainte_get_pid(text), 0);
}

}  // namespace
