// Which points of a good play are equal, and which of them are tried for all.
#include <gtest/gtest.h>

#include <csignal>
#include <map>
#include <set>

#include "host/sweep/fold.h"
#include "host/trace_book/event_names.h"
#include "tests/host/sweep/sweep_test.h"

namespace {

using box::PointKind;
using sweep::Reached;

Reached traced(const char *function, const char *event) {
  char digits[16];
  std::snprintf(digits, sizeof digits, "%08X", trace_book::event_named(function, event).value());
  return {PointKind::kTrace, digits, 0};
}
Reached read_of(const std::string &name) {
  return {PointKind::kRead, name, 0};
}

class Folded : public testing::Test {
 protected:
  void reach(const std::vector<Reached> &points) {
    good_.order.insert(good_.order.end(), points.begin(), points.end());
  }

  // How often one of these deviations is tried at points of this kind and of a name that begins so: "13" at the first and third.
  std::string tried_at(PointKind kind, const std::string &name, box::Turn turn, std::uint64_t seed = 1) const {
    const std::vector<sweep::Deviation> all = all_at(kind, name);
    std::string tried;
    for (const std::size_t number : sweep::Fold(good_, seed).taken(all)) {
      const box::Turn at = all[number].point->turn;
      if (at.way != turn.way || at.value != turn.value) continue;
      tried += (tried.empty() ? "" : " ") + std::to_string(number / ways_of(kind).size() + 1);
    }
    return tried;
  }
  static std::vector<box::Turn> ways_of(PointKind kind) {
    std::vector<box::Turn> turns;
    for (const box::Way way : box::row_of(kind).ways) {
      if (way == box::Way::kUsual || way == box::Way::kSignal) continue;
      turns.push_back({way, 0});
    }
    if (kind == PointKind::kProgram) {
      turns.push_back({box::Way::kExit, 8});
      turns.push_back({box::Way::kSignal, SIGSEGV});
    } else {
      for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGKILL}) turns.push_back({box::Way::kSignal, signal});
    }
    return turns;
  }
  std::vector<sweep::Deviation> all_at(PointKind kind, const std::string &name) const {
    std::map<std::string, std::uint32_t> counts;
    std::vector<sweep::Deviation> all;
    for (const Reached &point : good_.order) {
      if (point.kind != kind || !point.name.starts_with(name)) continue;
      const std::uint32_t number = ++counts[point.name];
      for (const box::Turn &turn : ways_of(kind)) {
        all.emplace_back().point = box::Deviation{kind, point.name, number, turn, 0};
      }
    }
    return all;
  }
  std::size_t tried_in_all(PointKind kind, const std::string &name) const {
    std::size_t number = 0;
    for (const box::Way way : box::row_of(kind).ways) {
      const std::string tried =
          way == box::Way::kUsual || way == box::Way::kSignal ? "" : tried_at(kind, name, {way, 0});
      number += tried.empty() ? 0 : static_cast<std::size_t>(std::ranges::count(tried, ' ')) + 1;
    }
    return number;
  }

  sweep::Good good_;
};

constexpr box::Turn kTermSignal{box::Way::kSignal, SIGTERM};

TEST_F(Folded, TriesALoopAtItsBeginningAndOnceEachAtItsEndAndInTheMiddle) {
  const Reached lock{PointKind::kLock, "FRU", 0}, unlock{PointKind::kUnlock, "FRU", 0};
  for (int i = 0; i < 20; ++i) reach({lock, read_of("fru_dimm_info_" + std::to_string(i)), unlock});
  EXPECT_EQ(tried_in_all(PointKind::kRead, "fru_dimm"), 4U + 1 + 1);
  const std::string tried = tried_at(PointKind::kUnlock, "FRU", {box::Way::kRefused, 0});
  EXPECT_TRUE(tried.starts_with("1 ") && tried.ends_with(" 20")) << "no other neighbour than the last one: " << tried;
  bool is_other = false;
  for (std::uint64_t seed = 2; seed < 12; ++seed) {
    is_other |= tried_at(PointKind::kUnlock, "FRU", {box::Way::kRefused, 0}, seed) != tried;
  }
  EXPECT_TRUE(is_other) << "the one in the middle is drawn";
}

TEST_F(Folded, TellsApartWhatACommandCanTellApart) {
  const Reached question{PointKind::kQuestion, "", 0};
  constexpr std::size_t kAllAtBoth = std::size_t{2} * 4;
  reach({read_of("a_1"), question, read_of("a_2"), question});
  good_.order.insert(good_.order.begin(), question);
  EXPECT_EQ(tried_in_all(PointKind::kRead, "a"), kAllAtBoth) << "behind another question";
  good_ = {};
  reach({traced("lmainte_detach_fru", "entry"), read_of("a_1"), traced("lmainte_detach_fru", "exit"),
         traced("lmainte_get_fru_data", "entry"), read_of("a_2"), traced("lmainte_get_fru_data", "exit"), question});
  EXPECT_EQ(tried_in_all(PointKind::kRead, "a"), kAllAtBoth) << "in another function";
  good_ = {};
  reach({question, read_of("a_1"), read_of("b"), read_of("c"), read_of("a_2"), read_of("c")});
  EXPECT_EQ(tried_in_all(PointKind::kRead, "a"), kAllAtBoth) << "beside another neighbour";
  good_ = {};
  reach({read_of("a_1"), read_of("a_1")});
  good_.order[1].command = 1;
  EXPECT_EQ(tried_in_all(PointKind::kRead, "a"), kAllAtBoth) << "of another command";
}

TEST_F(Folded, SendsASignalBetweenTwoTouchesOfTheWorldAtTheFirstAndTheLastPoint) {
  const Reached program{PointKind::kProgram, "ctlled", 0}, log{PointKind::kLog, "", 0};
  reach({program, read_of("a"), read_of("b"), read_of("c"), read_of("d"), log});
  EXPECT_EQ(tried_at(PointKind::kRead, "", kTermSignal), "1");
  EXPECT_EQ(tried_at(PointKind::kLog, "", kTermSignal), "1") << "it comes before the event is there";
  good_ = {};
  reach({log, read_of("a"), read_of("b"), read_of("c"), program, log});
  EXPECT_EQ(tried_at(PointKind::kRead, "", kTermSignal), "1 3") << "none comes where a program starts";
  EXPECT_EQ(tried_at(PointKind::kProgram, "ctlled", {box::Way::kSignal, SIGSEGV}), "1") << "that is the program's";
}

TEST_F(Folded, RefusesOfTheRecordsBehindOneCallTheFirstTheLastAndOneMore) {
  for (const char *event : {"entry", "program", "started", "child-runs", "ended", "exit"})
    reach({traced("lmainte_exec", event)});
  const std::string tried = tried_at(PointKind::kTrace, "", {box::Way::kRefused, 0});
  EXPECT_TRUE(tried.starts_with("1 ") && tried.ends_with(" 6") && std::ranges::count(tried, ' ') == 2) << tried;
}

TEST_F(Folded, DrawsOneOfAllThatAProgramCanDo) {
  const Reached program{PointKind::kProgram, "ctlled", 0};
  for (int i = 0; i < 20; ++i) reach({program, read_of("a")});
  std::set<std::size_t> drawn;
  for (std::uint64_t seed = 1; seed < 60; ++seed) {
    const auto taken = sweep::Fold(good_, seed).taken(all_at(PointKind::kProgram, "ctlled"));
    const std::size_t ways = ways_of(PointKind::kProgram).size();
    std::map<std::size_t, std::vector<std::size_t>> at_points;
    for (const std::size_t number : taken) at_points[number / ways].push_back(number % ways);
    for (const auto &[point, tried] : at_points) {
      EXPECT_TRUE(tried.size() == 1 || tried.size() == ways) << point;
      if (tried.size() == 1) drawn.insert(tried.front());
    }
  }
  EXPECT_EQ(drawn.size(), ways_of(PointKind::kProgram).size()) << "also its death by a signal";
}

TEST_F(Folded, LeavesWhatIsNoPointOfWhichTheOrderIsKnown) {
  reach({read_of("a")});
  std::vector<sweep::Deviation> all(3);  // the first one is of a step
  all[1].point = box::Deviation{PointKind::kRead, "a", 2, {box::Way::kMissing, 0}, 0};
  all[2].point = box::Deviation{PointKind::kRead, "b", 2, {box::Way::kMissing, 0}, 0};
  EXPECT_EQ(sweep::Fold(good_, 1).taken(all), (std::vector<std::size_t>{0, 1, 2}));
}

}  // namespace
