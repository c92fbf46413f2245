// What the session takes of its command, and gives back.

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>

#include "include/lmainte_procedure.h"
#include "tests/unit/doubles/library_test.h"

namespace {

using doubles::in_a_process_of_its_own;
using doubles::printed_by;

using Handler = void (*)(int);

constexpr int kTaken[] = {SIGINT, SIGQUIT, SIGTERM, SIGHUP, SIGALRM, SIGCHLD};

Handler handler_of(int signal) {
  struct sigaction action {};
  sigaction(signal, nullptr, &action);
  return action.sa_handler;
}

TEST(Session, GivesSignalsBackAsTheyWere) {
  in_a_process_of_its_own([] {
    for (const int signal : kTaken) std::signal(signal, SIG_IGN);
    lmainte_session_begin();
    for (const int signal : kTaken) EXPECT_NE(handler_of(signal), SIG_IGN) << signal;
    EXPECT_EQ(handler_of(SIGCHLD), SIG_DFL) << "the library waits for its children";
    lmainte_session_end();
    for (const int signal : kTaken) EXPECT_EQ(handler_of(signal), SIG_IGN) << signal;
  });
}

TEST(Session, HasNothingToSayBehindAListThatWasShown) {
  EXPECT_EQ(printed_by([] { EXPECT_EQ(lmainte_session_shown(5), 5); }), "");
}

// Also where whoever started the command ignores the signal.
TEST(Session, EndsByTheSignalThatEndedIt) {
  const auto end_by_signal = [] {
    std::signal(SIGTERM, SIG_IGN);
    lmainte_session_begin();
    std::raise(SIGTERM);
    if (lmainte_session_signal() != SIGTERM) std::_Exit(1);
    lmainte_session_end();
    std::_Exit(2);
  };
  EXPECT_EXIT(end_by_signal(), testing::KilledBySignal(SIGTERM), "");
}

}  // namespace
