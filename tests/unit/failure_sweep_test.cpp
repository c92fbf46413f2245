// Every function, with each call of the platform or the system failing in turn, also those of its children, and then in other
// ways. Whatever fails: the result is one that the header lists, and nothing is left behind but what could not be given
// back.

#include <sys/mman.h>
#include <sys/wait.h>

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <fstream>
#include <map>
#include <set>

#include <gtest/gtest.h>

#include "tests/unit/doubles/library_test.h"
#include "tests/unit/doubles/paper.h"
#include "tests/unit/doubles/system_calls.h"
#include "tests/unit/doubles/units.h"
#include "tests/unit/sweep/rows.h"

namespace sweep {

void PrintTo(const Row &row, std::ostream *out) {
  *out << row.name;
}

namespace {

using doubles::Bytes;
using doubles::Lines;
using doubles::machine;

void put_inventory() {
  doubles::put_units();
  doubles::put_system_status(0x8000);
  machine().records[{1, "setup_system_info"}] = {Bytes(248)};
  machine().records[{0, "gen_system_info"}] = {Bytes(1408, 1)};
  machine().names[{0, 0}] = "/PSU#0";
  set_model(1);
}

const std::vector<Row> &rows() {
  static const auto kAll = [] {
    std::vector<Row> all;
    for (const auto *room :
         {&frame_rows(), &db_rows(), &model_rows(), &inventory_rows(), &ops_rows(), &state_rows(), &dialogue_rows()})
      all.insert(all.end(), room->begin(), room->end());
    return all;
  }();
  return kAll;
}

TEST(FailureSweepRows, AreThoseOfEveryExportedFunction) {
  std::set<std::string> swept;
  for (const auto &row : quiet_rows()) swept.insert(row.function);
  for (const auto &row : rows()) {
    if (row.functions.empty()) swept.insert(row.name);
    swept.insert(row.functions.begin(), row.functions.end());
  }
  std::set<std::string> exported;
  std::ifstream file(EXPORTED_NAMES);
  const std::string prefix = "lmainte_";
  for (std::string name; std::getline(file, name);) {
    if (name.rfind(prefix, 0) == 0) exported.insert(name.substr(prefix.size()));
    if (name.rfind("replace_", 0) == 0 || name == "disp_done") exported.insert(name);
  }
  EXPECT_EQ(swept, exported);
}

class QuietFunctions : public doubles::LibraryTest {};

TEST_F(QuietFunctions, CallNothingThatCouldFail) {
  for (const auto &row : quiet_rows()) {
    doubles::in_a_process_of_its_own([&row] {
      put_inventory();
      row.prepare();
      machine().steps = 0;
      row.call();
      EXPECT_EQ(machine().steps, 0) << row.function;
      lmainte_free_swap_fru_list();
    });
  }
}

// The calls of a run, in order: the verb of each.
struct Run {
  static constexpr size_t kMostCalls = 4096;
  size_t count;
  char verbs[kMostCalls][16];
};

// What a process leaves for the test: its own calls, and those of its child.
struct Runs {
  Run of_parent, of_child;
};

Runs &runs() {
  static void *const memory = mmap(nullptr, sizeof(Runs), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  return *static_cast<Runs *>(memory);
}

std::string verb_of(const std::string &call) {
  return call.substr(0, call.find(' '));
}

void keep_call(const std::string &call) {
  Run &run = machine().in_child ? runs().of_child : runs().of_parent;
  if (run.count == Run::kMostCalls) std::abort();
  std::snprintf(run.verbs[run.count++], sizeof run.verbs[0], "%s", verb_of(call).c_str());
}

// A call in a run, counted from 1.
struct Place {
  bool in_child;
  int number;
  std::string verb;
};
using Places = std::vector<Place>;

void add_places(const Run &run, bool in_child, Places &places) {
  for (size_t i = 0; i < run.count; ++i) places.push_back({in_child, static_cast<int>(i) + 1, run.verbs[i]});
}

// The first and the last place of each verb, of the process and of its child.
Places samples_of(const Places &all) {
  std::map<std::pair<bool, std::string>, Places> of_verb;
  for (const auto &place : all) of_verb[{place.in_child, place.verb}].push_back(place);
  Places some;
  for (const auto &[verb, places] : of_verb) {
    some.push_back(places.front());
    if (places.size() > 1) some.push_back(places.back());
  }
  return some;
}

// Other ways in which a call fails than with -1 and an error of the machine; in the last ones it does a part, or nothing.
struct Way {
  const char *says;
  int error;
  int32_t result;
  std::set<std::string> verbs;
  bool may_do = false;
};

const std::set<std::string> kClient = {"open", "close", "lock", "unlock", "get", "put", "name"};
const std::set<std::string> kMessages = {"send", "receive", "select", "save"};
const std::set<std::string> kSystem = {"fork",      "waitpid",   "kill",      "time",       "execve", "lopen",
                                       "lread",     "lwrite",    "lclose",    "lseek",      "write",  "ftruncate",
                                       "tcgetattr", "tcsetattr", "tcflush",   "fopen",      "fclose", "remove",
                                       "stat",      "calloc",    "sigaction", "sigprocmask"};

const Way kWays[] = {
    {"a signal interrupts it", EINTR, -1, kSystem},
    {"memory runs out", ENOMEM, -1, kSystem},
    {"the client has a result of its own", 0, 1, kClient},
    {"the client has the least result", 0, INT_MIN, kClient},
    {"the daemon has the least result", 0, INT_MIN, kMessages},
    {"the shell finds no program", 0, 127 << 8, {"system"}},
    {"the shell is killed", 0, 9, {"system"}},
    {"nothing is read or written", 0, 0, {"lread", "lwrite", "write"}, true},
    {"one byte is read or written", 0, 1, {"lread", "lwrite", "write"}, true},
};

// A database that stays locked keeps those below it locked too: they are not unlocked before it.
Lines locked_up_to(const std::string &db_id) {
  Lines locked;
  for (int id = 0; id <= std::stoi(db_id); ++id) locked.push_back("database " + std::to_string(id) + " locked");
  return locked;
}

// What cannot be given back when this call has failed.
Lines stays_behind(const std::string &failed) {
  const std::string verb = verb_of(failed);
  const std::string rest = failed.substr(std::min(verb.size() + 1, failed.size()));
  if (verb == "unlock") return locked_up_to(rest);
  if (verb == "close") return {"database " + rest + " open"};
  if (verb == "remove") return {"file " + rest};
  if (verb == "system") return {"file " + rest.substr(rest.rfind(' ') + 1)};
  if (verb == "waitpid") return {"child " + rest.substr(0, rest.find(' '))};
  return {};
}

// A file that fails to close counts as open; which one it is the call does not say.
bool may_stay(const std::string &what, const std::string &failed) {
  if (verb_of(failed) == "lclose") return what.rfind("descriptor of ", 0) == 0;
  const auto staying = stays_behind(failed);
  return std::find(staying.begin(), staying.end(), what) != staying.end();
}

class FailureSweep : public doubles::LibraryTest, public ::testing::WithParamInterface<Row> {
 protected:
  // The machine that each of the test's processes gets.
  void SetUp() override {
    LibraryTest::SetUp();
    put_inventory();
    row().prepare();
  }

  const Row &row() { return GetParam(); }

  // The row's result on that machine.
  int32_t run() {
    machine().forget_records();  // which processes share
    const doubles::Paper paper;
    return row().call();
  }

  // A real child ends as it should: it becomes its program, or leaves without the exit handlers of its parent.
  static void check_child() {
    if (!machine().has_forked) return;
    while (__real_waitpid(-1, nullptr, 0) > 0) continue;
    EXPECT_TRUE(machine().executed().happened || machine().child_left_by_exit()) << "the child crashed";
  }

  // All places at which a call can fail, from a run in which none does.
  Places places() {
    runs().of_parent.count = runs().of_child.count = 0;
    doubles::in_a_process_of_its_own([this] {
      machine().meanwhile = keep_call;
      EXPECT_EQ(run(), 0);
      EXPECT_EQ(machine().left_behind(), Lines{});
      EXPECT_EQ(machine().has_forked, machine().children_are_real);
      check_child();
    });
    Places all;
    add_places(runs().of_parent, false, all);
    add_places(runs().of_child, true, all);
    EXPECT_FALSE(all.empty());
    return all;
  }

  // Whether the function may return this although the call, or a part of it, was not done.
  bool may_return(int32_t result, const std::string &verb, bool may_do) {
    if (row().results.contains(result)) return true;
    return result == 0 && (may_do || row().harmless.contains(verb));
  }

  void fail_at(const Place &place, int error, int32_t result, bool may_do = false) {
    (place.in_child ? machine().fail_in_child_at : machine().fail_at) = place.number;
    machine().way.error = error;
    machine().way.result = result;
    const int32_t returned = run();
    const std::string failed = place.in_child ? machine().failed_in_child() : machine().failed_call;
    EXPECT_EQ(verb_of(failed), place.verb) << "the place has moved";
    // A parent does not see how its indicator fares.
    const std::string seen = place.in_child ? "" : failed;
    EXPECT_TRUE(may_return(returned, place.verb, may_do || (place.in_child && place.verb != "execve")))
        << "result " << returned;
    for (const auto &left : machine().left_behind()) EXPECT_TRUE(may_stay(left, seen)) << left;
    check_child();
    if (row().entry == 0) return;
    const auto trace = machine().trace_records();
    EXPECT_EQ(trace.front().event, row().entry);
    EXPECT_EQ(trace.back().event, row().entry + 1);
  }
};

INSTANTIATE_TEST_SUITE_P(Of, FailureSweep, ::testing::ValuesIn(rows()), [](const auto &row) { return row.param.name; });

std::string described(const Place &place) {
  return "call " + std::to_string(place.number) + (place.in_child ? " of the child, " : ", ") + place.verb;
}

TEST_P(FailureSweep, EachCallFailsInTurn) {
  const Places all = places();
  for (const auto &place : row().samples || !ALL_CALLS_FAIL ? samples_of(all) : all) {
    if (HasFailure()) return;
    doubles::in_a_process_of_its_own([&] {
      SCOPED_TRACE(described(place) + " fails");
      fail_at(place, EIO, -1);
    });
  }
}

TEST_P(FailureSweep, CallsFailInOtherWays) {
  if (row().samples) return;
  const Places some = samples_of(places());
  for (const auto &way : kWays) {
    for (const auto &place : some) {
      if (!way.verbs.contains(place.verb) || HasFailure()) continue;
      doubles::in_a_process_of_its_own([&] {
        SCOPED_TRACE(described(place) + ": " + way.says);
        fail_at(place, way.error, way.result, way.may_do);
      });
    }
  }
}

TEST_P(FailureSweep, TraceThatFailsChangesNothing) {
  doubles::in_a_process_of_its_own([this] {
    machine().trace_result = -1;
    EXPECT_EQ(run(), 0);
    EXPECT_EQ(machine().left_behind(), Lines{});
  });
}

}  // namespace
}  // namespace sweep
