#include <sys/select.h>

#include <gtest/gtest.h>

#include "tests/unit/doubles/library_test.h"

namespace {

using doubles::Bytes;
using doubles::Lines;
using doubles::machine;

constexpr int32_t kDescriptor = 9;

// A daemon that answers at once.
class LmainteIpcCommunicate : public doubles::LibraryTest {
 protected:
  void SetUp() override {
    LibraryTest::SetUp();
    arrange();
  }

  void arrange() {
    machine().start();
    machine().daemon.ready = {kDescriptor};
    machine().daemon.reply = {1, 2, 3, 4, 5, 6, 7, 8};
    reply_ = untouched_;
  }

  int32_t communicate(int32_t time_limit = 30, int32_t descriptor = kDescriptor) {
    return lmainte_ipc_communicate(request_, descriptor, time_limit, reply_.data());
  }

  const uint32_t request_[4] = {0xA0, 0xA1, 0xA2, 0xA3};
  const Bytes untouched_ = Bytes(12, 0x5A);
  Bytes reply_;
};

const std::string kEntry = "100 110C03D0";
const std::string kSent = "8001 110C03D2 161 162";
const std::string kExit = "100 110C03D1";

TEST_F(LmainteIpcCommunicate, SendsWaitsAndReceives) {
  EXPECT_EQ(communicate(), 0);
  EXPECT_EQ(machine().calls, (Lines{"send 9", "select 30.0", "iszero", "receive 9"}));
  EXPECT_EQ(machine().daemon.sent, request_);
  EXPECT_EQ(reply_, (Bytes{1, 2, 3, 4, 5, 6, 7, 8, 0x5A, 0x5A, 0x5A, 0x5A}));
  EXPECT_EQ(doubles::trace(), (Lines{kEntry, kSent, "8001 110C03D3 0", kExit}));
}

TEST_F(LmainteIpcCommunicate, ResultsAboveZeroAreSuccess) {
  machine().daemon.result = 12;
  EXPECT_EQ(communicate(), 0);
  EXPECT_EQ(doubles::trace(), (Lines{kEntry, kSent, "8001 110C03D3 12", kExit}));
}

TEST_F(LmainteIpcCommunicate, WaitsAsLongAsTheCallerSays) {
  for (const int32_t limit : {1, 600, INT32_MAX}) {
    arrange();
    EXPECT_EQ(communicate(limit), 0);
    EXPECT_EQ(machine().calls.at(1), "select " + std::to_string(limit) + ".0");
  }
}

TEST_F(LmainteIpcCommunicate, RefusedArgumentsSendNothing) {
  const Lines refusal = {kEntry, "805 110C13D1", kExit};
  for (const int32_t limit : {0, -1, INT32_MIN}) {
    arrange();
    EXPECT_EQ(communicate(limit), 8) << limit;
    EXPECT_EQ(doubles::trace(), refusal);
    EXPECT_EQ(machine().calls, Lines{});
  }
  arrange();
  EXPECT_EQ(lmainte_ipc_communicate(nullptr, kDescriptor, 30, reply_.data()), 8);
  EXPECT_EQ(doubles::trace(), refusal);
  EXPECT_EQ(machine().calls, Lines{});
  arrange();
  EXPECT_EQ(lmainte_ipc_communicate(request_, kDescriptor, 30, nullptr), 8);
  EXPECT_EQ(doubles::trace(), refusal);
  EXPECT_EQ(machine().calls, Lines{});
}

// ---- each step, failing

struct TalkStepRow {
  const char *says;
  std::function<void()> arrange;
  int32_t result;
  std::string error;
  Lines calls;
};

const std::vector<TalkStepRow> &step_rows() {
  static const Lines kUntilSelect = {"send 9", "select 30.0"};
  static const Lines kUntilLook = {"send 9", "select 30.0", "iszero"};
  static const std::vector<TalkStepRow> kRows = {
      {"the request is not sent", [] { machine().fail("send", 1, EIO, -5); }, 8, "800A 110C13D2 -5", {"send 9"}},
      {"the wait fails", [] { machine().fail("select", 1, EIO, -6); }, 8, "800A 110C13D3 -6", kUntilSelect},
      {"the wait fails and says that nothing came",
       [] {
         machine().fail("select", 1, EIO, -6);
         machine().daemon.status_1 = 1;
       },
       8, "800A 110C13D3 -6", kUntilSelect},
      {"nothing came, the status says",
       [] {
         machine().daemon.status_1 = 1;
         machine().daemon.ready = {};
       },
       128, "805 110C13D4 1", kUntilSelect},
      {"nothing came, the status says, whatever the set does", [] { machine().daemon.status_1 = 1; }, 128,
       "805 110C13D4 1", kUntilSelect},
      {"nothing came, the set says", [] { machine().daemon.ready = {}; }, 128, "805 110C13D5", kUntilLook},
      {"something came for another descriptor",
       [] {
         machine().daemon.ready = {8, 10};
       },
       8, "805 110C13D6 9", kUntilLook},
      {"the reply is not received",
       [] { machine().fail("receive", 1, EIO, -7); },
       8,
       "800A 110C13D7 -7",
       {"send 9", "select 30.0", "iszero", "receive 9"}},
  };
  return kRows;
}

TEST_F(LmainteIpcCommunicate, EachStepThatFailsEndsIt) {
  for (const auto &row : step_rows()) {
    arrange();
    row.arrange();
    EXPECT_EQ(communicate(), row.result) << row.says;
    EXPECT_EQ(machine().calls, row.calls) << row.says;
    EXPECT_EQ(reply_, untouched_) << row.says;
    EXPECT_EQ(doubles::trace(), (Lines{kEntry, kSent, row.error, kExit})) << row.says;
  }
}

TEST_F(LmainteIpcCommunicate, OnlyAFirstStatusOfOneSaysThatNothingCame) {
  for (const int status : {0, 2, 128, 255}) {
    arrange();
    machine().daemon.status_1 = static_cast<uint8_t>(status);
    EXPECT_EQ(communicate(), 0) << status;
  }
  arrange();
  machine().daemon.status_2 = 1;
  EXPECT_EQ(communicate(), 0);
}

TEST_F(LmainteIpcCommunicate, OtherDescriptorsMayBeReadyToo) {
  machine().daemon.ready = {0, 8, 9, 10, FD_SETSIZE - 1};
  EXPECT_EQ(communicate(), 0);
}

TEST_F(LmainteIpcCommunicate, EdgesOfTheSet) {
  for (const int32_t descriptor : {0, static_cast<int32_t>(FD_SETSIZE) - 1}) {
    arrange();
    machine().daemon.ready = {descriptor};
    EXPECT_EQ(communicate(30, descriptor), 0) << descriptor;
    EXPECT_EQ(machine().calls.back(), "receive " + std::to_string(descriptor));
  }
}

TEST_F(LmainteIpcCommunicate, DescriptorThatNoSetHoldsIsSentToAndNotReady) {
  for (const int32_t descriptor : {-1, INT32_MIN, static_cast<int32_t>(FD_SETSIZE), INT32_MAX}) {
    arrange();
    EXPECT_EQ(communicate(30, descriptor), 8) << descriptor;
    const std::string told = std::to_string(descriptor);
    EXPECT_EQ(machine().calls, (Lines{"send " + told, "select 30.0", "iszero"}));
    EXPECT_EQ(doubles::trace().at(2), "805 110C13D6 " + told);
  }
}

}  // namespace
