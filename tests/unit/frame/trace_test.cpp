#include "src/frame/trace.h"

#include <gtest/gtest.h>

#include <type_traits>

#include "tests/unit/doubles/library_test.h"

namespace {

using doubles::machine;
using lmainte::Call;
using lmainte::Level;

// A room of three functions: of the plain space, of the second one, and of the second half of a block.
struct Invented;
struct Plain : trace_events::PlainBlock<Invented, 0x02F> {
  enum Point : trace_events::Code { kTwo = point(2), kThree, kFour };
  enum Error : trace_events::Code { kOne = error(1), kOther };
};
struct Second : trace_events::SecondBlock<Invented, 0x01D> {
  enum Point : trace_events::Code { kTwo = point(2) };
  enum Error : trace_events::Code { kOne = error(1) };
};
struct Sharing : trace_events::PlainBlock<Invented, 0x039, 8> {
  enum Error : trace_events::Code { kOne = error(1) };
};
struct Invented : trace_events::Room<Plain, Second, Sharing> {};

constexpr lmainte::Block kPlain = lmainte::block_of<Plain>();
constexpr lmainte::Block kSecond = lmainte::block_of<Second>();
constexpr lmainte::Block kSharing = lmainte::block_of<Sharing>();

template <class... Words>
concept Compiles = requires(const Call &call, Words... words) {
  call.point(Plain::kTwo, words...);
};
template <class... Words>
concept CompilesAsError = requires(const Call &call, Words... words) {
  call.error(Plain::kOne, words...);
  call.system_error(Plain::kOne, words...);
};

static_assert(Compiles<> && Compiles<int32_t> && Compiles<int32_t, uint32_t>);
static_assert(!Compiles<int32_t, int32_t, int32_t>, "a record has room for two values");
static_assert(CompilesAsError<int32_t, int32_t> && !CompilesAsError<int32_t, int32_t, int32_t>);

static_assert(std::is_constructible_v<lmainte::Point, Plain::Point>);
static_assert(!std::is_constructible_v<lmainte::Point, uint32_t>, "a bare number is no event");
static_assert(!std::is_constructible_v<lmainte::Point, Level>, "a level is no event");

class TraceTest : public doubles::LibraryTest {
 protected:
  doubles::TraceRecord record(size_t place) { return machine().trace_records().at(place); }

  lmainte::Trace trace_;
};

using TraceDeathTest = TraceTest;

TEST_F(TraceTest, CallRecordsItsEntryFirstAndItsExitLast) {
  {
    const Call call(trace_, kPlain);
    call.point(Plain::kTwo, 7);
  }
  EXPECT_EQ(doubles::trace(), (doubles::Lines{"100 110C02F0", "100 110C02F2 7", "100 110C02F1"}));
}

TEST_F(TraceTest, RecordIsWholeWhenASignalHandlerTracesThroughTheSameModuleMeanwhile) {
  const Call call(trace_, kPlain);
  machine().interruption_of_trace = [this] {
    const Call of_handler(trace_, kSecond);
    of_handler.point(Second::kTwo, 5, 6);
  };
  call.point(Plain::kTwo, 7, 8);
  EXPECT_EQ(doubles::trace(),
            (doubles::Lines{"100 110C02F0", "100 110C81D0", "100 110C81D2 5 6", "100 110C81D1", "100 110C02F2 7 8"}));
}

TEST_F(TraceTest, RecordNamesModuleKindProcessAndLine) {
  const uint32_t line = __LINE__ + 1;
  { const Call call(trace_, kPlain); }
  EXPECT_EQ(record(0).module, 14u);
  EXPECT_EQ(record(0).kind, 15u);
  EXPECT_EQ(record(0).level, 256u);
  EXPECT_EQ(record(0).event, 0x110C02F0u);
  EXPECT_EQ(record(0).words[0], 4711u);
  EXPECT_EQ(record(0).words[1], line);
}

TEST_F(TraceTest, LengthGrowsByFourBytesAValue) {
  {
    const Call call(trace_, kPlain);
    call.point(Plain::kTwo);
    call.point(Plain::kThree, 1);
    call.point(Plain::kFour, 1, 2);
  }
  EXPECT_EQ(record(1).length, 16u);
  EXPECT_EQ(record(2).length, 20u);
  EXPECT_EQ(record(3).length, 24u);
}

TEST_F(TraceTest, ValuesStandInTheOrderGiven) {
  {
    const Call call(trace_, kPlain);
    call.point(Plain::kTwo, -1, 0xFFFFFFFEu);
  }
  EXPECT_EQ(record(1).words[2], 0xFFFFFFFFu);
  EXPECT_EQ(record(1).words[3], 0xFFFFFFFEu);
}

TEST_F(TraceTest, CharacterIsTakenWithoutItsSign) {
  {
    const Call call(trace_, kPlain);
    call.point(Plain::kTwo, static_cast<unsigned char>(0xE4));
  }
  EXPECT_EQ(record(1).words[2], 0xE4u);
}

TEST_F(TraceTest, ErrorsOfThePlainSpaceAreAThousandHexFurther) {
  {
    const Call call(trace_, kPlain);
    call.error(Plain::kOne);
    call.system_error(Plain::kOther, 5);
  }
  EXPECT_EQ(doubles::trace(), (doubles::Lines{"100 110C02F0", "805 110C12F1", "800A 110C12F2 5", "100 110C02F1"}));
}

TEST_F(TraceTest, ErrorsOfTheSecondSpaceAreThreeThousandHexFurther) {
  {
    const Call call(trace_, kSecond);
    call.error(Second::kOne);
  }
  EXPECT_EQ(doubles::trace(), (doubles::Lines{"100 110C81D0", "805 110CB1D1", "100 110C81D1"}));
}

TEST_F(TraceTest, FunctionThatSharesABlockCountsFromItsFirstPoint) {
  {
    const Call call(trace_, kSharing);
    call.error(Sharing::kOne);
  }
  EXPECT_EQ(doubles::trace(), (doubles::Lines{"100 110C0398", "805 110C1399", "100 110C0399"}));
}

TEST_F(TraceTest, PointCanStandAtAnotherLevel) {
  {
    const Call call(trace_, kPlain);
    call.point(Level::kProcess, Plain::kTwo);
    call.point(Level::kError, Plain::kThree);
  }
  EXPECT_EQ(doubles::trace(), (doubles::Lines{"100 110C02F0", "8001 110C02F2", "805 110C02F3", "100 110C02F1"}));
}

TEST_F(TraceTest, EveryTracePointHasALineOfItsOwn) {
  {
    const Call call(trace_, kPlain);
    call.point(Plain::kTwo);
    call.error(Plain::kOne);
    call.error(Plain::kOne);
  }
  EXPECT_EQ(record(2).words[1], record(1).words[1] + 1);
  EXPECT_EQ(record(3).words[1], record(1).words[1] + 2);
}

TEST_F(TraceTest, ExitCarriesTheResultWhereTheFunctionSaysSo) {
  {
    Call call(trace_, kPlain);
    EXPECT_EQ(call.returns(-1), -1);
  }
  EXPECT_EQ(doubles::trace().back(), "100 110C02F1 -1");
  EXPECT_EQ(record(1).length, 20u);
}

TEST_F(TraceTest, ProcessIdIsTakenAfreshForEveryRecord) {
  {
    const Call call(trace_, kPlain);
    machine().pid = 4712;
  }
  EXPECT_EQ(record(0).words[0], 4711u);
  EXPECT_EQ(record(1).words[0], 4712u);
  machine().start();
}

TEST_F(TraceTest, RecordIsBuiltAnewEachTime) {
  trace_.begin(1);
  trace_.add(8);
  trace_.add(9);
  trace_.begin(2);
  trace_.write(Level::kProgress, Plain::kEntry);
  EXPECT_EQ(record(0).length, 16u);
  EXPECT_EQ(record(0).words[1], 2u);
  machine().start();
}

TEST_F(TraceDeathTest, ThirdValueKillsTheProcess) {
  trace_.begin(1);
  trace_.add(1);
  trace_.add(2);
  machine().stop();
  EXPECT_EXIT(trace_.add(3), ::testing::KilledBySignal(SIGABRT), "");
}

// A facility that takes the length for the size of the words reads eight bytes past the fourth word.
TEST_F(TraceTest, RecordHasRoomBehindItsWords) {
  EXPECT_GE(sizeof trace_, 4u + 24u);
}

}  // namespace
