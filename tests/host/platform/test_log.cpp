#include <array>
#include <cerrno>
#include <ctime>

#include "host/box/event_log.h"
#include "include/lmainte_platform.h"
#include "tests/host/platform/box_fixture.h"

namespace {

using PlatformLog = BoxTest;

TEST_F(PlatformLog, SavesAnEventWithItsHeadItsTimeAndItsProcess) {
  const std::uint32_t head = 0x00030000;
  std::array<std::uint8_t, 48> event{};
  for (std::size_t i = 0; i < event.size(); ++i) event[i] = static_cast<std::uint8_t>(200 + i);
  const std::int64_t before = std::time(nullptr);
  EXPECT_GE(mgblog_save(&head, event.data()), 0);
  event[47] = 1;
  EXPECT_GE(mgblog_save(&head, event.data()), 0);
  const auto entries = box::EventLog::read(place.events());
  ASSERT_EQ(entries.size(), 2U);
  EXPECT_EQ(entries[0].head, head);
  EXPECT_EQ(entries[0].pid, static_cast<std::uint32_t>(getpid()));
  EXPECT_GE(entries[0].time_ns, before * 1'000'000'000);
  EXPECT_EQ(entries[0].event[0], 200);
  EXPECT_EQ(entries[0].event[47], 247);
  EXPECT_EQ(entries[1].event, event);
}

TEST_F(PlatformLog, IsThereAtOnceForAProcessThatThenDies) {
  const std::uint32_t head = 0x00030000;
  const std::array<std::uint8_t, 48> event{1, 2, 3};
  EXPECT_EQ(in_child([&] {
              mgblog_save(&head, event.data());
              raise(SIGKILL);
              return 0;
            }),
            -SIGKILL);
  EXPECT_EQ(box::EventLog::read(place.events()).size(), 1U);
}

TEST_F(PlatformLog, FailsWithoutAnEventOrALog) {
  const std::uint32_t head = 0x00030000;
  const std::array<std::uint8_t, 48> event{};
  EXPECT_LT(mgblog_save(nullptr, event.data()), 0);
  EXPECT_LT(mgblog_save(&head, nullptr), 0);
  EXPECT_FALSE(std::filesystem::exists(place.events()));
  std::filesystem::remove_all(place.events().parent_path());
  errno = 0;
  EXPECT_LT(mgblog_save(&head, event.data()), 0);
  EXPECT_EQ(errno, ENOENT);
}

}  // namespace
