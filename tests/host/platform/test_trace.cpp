#include <sys/time.h>

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdlib>

#include "include/lmainte_platform.h"
#include "tests/host/platform/box_fixture.h"

namespace {

constexpr std::uint32_t kWords[4] = {4711, 88, 0xFFFFFFFF, 7};

std::int32_t trace(std::uint32_t event, std::uint32_t length = 24, const std::uint32_t *words = kWords) {
  return mgb_trace_write(14, 0x100, 15, event, words, length);
}

// The ring stays mapped for the life of a process, so each case has a process of its own.
class PlatformTrace : public BoxTest {
 protected:
  std::vector<box::TraceEntry> entries() const { return box::TraceRing::read(place.trace()); }
};

TEST_F(PlatformTrace, WritesAsManyWordsAsTheLengthSays) {
  EXPECT_EQ(in_child([] { return trace(1, 16) == 0 && trace(2, 20) == 0 && trace(3, 24) == 0 ? 0 : 1; }), 0);
  const auto all = entries();
  ASSERT_EQ(all.size(), 3U);
  EXPECT_EQ(all[0].module, 14U);
  EXPECT_EQ(all[0].level, 0x100U);
  EXPECT_EQ(all[0].kind, 15U);
  EXPECT_EQ(all[0].event, 1U);
  EXPECT_EQ(all[0].word_count, 2U);
  EXPECT_EQ(all[1].word_count, 3U);
  EXPECT_EQ(all[2].word_count, 4U);
  EXPECT_EQ(all[0].words, (std::array<std::uint32_t, 4>{4711, 88, 0, 0}));
  EXPECT_EQ(all[2].words, (std::array<std::uint32_t, 4>{4711, 88, 0xFFFFFFFF, 7}));
}

TEST_F(PlatformTrace, RefusesALengthThatNoRecordHas) {
  EXPECT_EQ(in_child([] {
              for (std::uint32_t length : {0U, 4U, 17U, 28U, 0xFFFFFFF8U}) {
                if (trace(1, length) >= 0) return 1;
              }
              return trace(1, 16, nullptr) < 0 ? 0 : 2;
            }),
            0);
  EXPECT_TRUE(entries().empty());
}

TEST_F(PlatformTrace, ARingThatIsEmptiedCostsTheTraceAndNotTheCommand) {
  EXPECT_EQ(in_child([&] {
              if (trace(1) != 0) return 1;
              std::filesystem::resize_file(place.trace(), 0);
              if (trace(2) >= 0) return 2;
              box::TraceRing::create(place.trace());
              return trace(3) == 0 ? 0 : 3;
            }),
            0);
  ASSERT_EQ(entries().size(), 1U);
  EXPECT_EQ(entries()[0].event, 3U);
}

TEST_F(PlatformTrace, AMissingRingIsAFailureUntilThereIsOne) {
  std::filesystem::remove(place.trace());
  EXPECT_EQ(in_child([&] {
              errno = EDOM;
              if (trace(1) >= 0 || errno != EDOM) return 1;
              box::TraceRing::create(place.trace());
              errno = EDOM;
              return trace(2) == 0 && errno == EDOM ? 0 : 2;
            }),
            0);
  ASSERT_EQ(entries().size(), 1U);
  EXPECT_EQ(entries()[0].event, 2U);
}

TEST_F(PlatformTrace, ARootTooLongForAPathIsAFailure) {
  setenv("SPBOX_ROOT", std::string(5000, 'x').c_str(), 1);
  EXPECT_EQ(in_child([] { return trace(1) < 0 ? 0 : 1; }), 0);
}

TEST_F(PlatformTrace, IsWrittenBetweenForkAndExecveAndReadAfterACrash) {
  EXPECT_EQ(in_child([] {
              if (trace(1) != 0) return 1;
              const int status = in_child([] {
                trace(2);
                char *const arguments[] = {const_cast<char *>("true"), nullptr};
                char *const environment[] = {nullptr};
                return execve("/bin/true", arguments, environment);
              });
              if (status != 0) return 2;
              trace(3);
              std::abort();
            }),
            -SIGABRT);
  const auto all = entries();
  ASSERT_EQ(all.size(), 3U);
  for (std::uint32_t i = 0; i < 3; ++i) EXPECT_EQ(all[i].event, i + 1);
}

volatile std::sig_atomic_t traced = 0;

// A handler that allocated memory would find the heap's lock taken sooner or later, and wait for it for ever.
int trace_first_in_a_handler(int after_us) {
  struct sigaction action {};
  action.sa_handler = [](int) { traced = trace(1) == 0 ? 1 : 2; };
  sigaction(SIGALRM, &action, nullptr);
  const itimerval soon{{0, 0}, {0, after_us}};
  setitimer(ITIMER_REAL, &soon, nullptr);
  while (traced == 0) std::free(std::malloc(5000));
  return traced == 1 ? 0 : 1;
}

TEST_F(PlatformTrace, MapsTheRingInASignalHandler) {
  constexpr int kRounds = 30;
  for (int round = 0; round < kRounds; ++round) {
    ASSERT_EQ(in_child([&] { return trace_first_in_a_handler(300 + 37 * round); }), 0);
  }
  EXPECT_EQ(entries().size(), static_cast<std::size_t>(kRounds));
}

}  // namespace
