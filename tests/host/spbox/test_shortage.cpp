// What spbox says where the workstation has no memory, or no process, left for it, or keeps what it removes.
#include <algorithm>

#include "host/script/script.h"
#include "host/terminal/background_program.h"
#include "tests/eventually.h"
#include "tests/host/recording/made_recording.h"
#include "tests/host/spbox/spbox_test.h"

// A sanitizer has a memory of its own and wants to be loaded first, so under sanitizers nothing can be taken away.
#ifndef __SANITIZE_ADDRESS__
namespace {

class Shortage : public SpboxTest {
 protected:
  Shortage() {
    make_box("qa");
    done({"dump", "box", "box.dump"});
    write("short.play", "box qa\nspbox pull /PSU#0\nsays \"Not installed\"\n");
    MadeRecording recording;
    recording.begin();
    write("fault.rec", recording.bytes);
  }

  Done spbox_short_of(const std::string &what, const Words &words) const {
    Words command{"/usr/bin/env",
                  "-C",
                  scratch_.path(),
                  std::string("LD_PRELOAD=") + SHORTAGE,
                  "TMPDIR=" + scratch_.path().string(),
                  what,
                  SPBOX};
    command.insert(command.end(), words.begin(), words.end());
    return run_to_end(command);
  }
};

const Words kLines[] = {
    {"help"},
    {"help", "play"},
    {"create", "new", "--model", "qa", "--force"},
    {"units", "box"},
    {"units", "box", "--json"},
    {"show", "box", "/PSU#0"},
    {"fault", "box", "/PSU#0"},
    {"program", "box", "ctlled", "--exit", "1"},
    {"daemon", "box", "well"},
    {"break", "box", "/PSU#0", "--short"},
    {"mend", "box"},
    {"trace", "box"},
    {"log", "box"},
    {"replay", "fault.rec"},
    {"dump", "box"},
    {"load", "box.dump", "loaded", "--force"},
    {"technician", "box", "--do", "repair /PSU#0"},
    {"play", "short.play"},
    {"run", "box", "--", "true"},
};

// Each verb with less and less missing, until it has enough.
TEST_F(Shortage, OfMemoryIsOneSentence) {
  for (const Words &line : kLines) {
    int failed = 0;
    for (long requests = 1; requests < 1'000'000; requests += 1 + requests / 2) {
      const Done result = spbox_short_of("SHORT_OF_MEMORY=" + std::to_string(requests), line);
      if (result.exit_status == 0) break;
      const std::string what = "spbox " + line[0] + " with memory for " + std::to_string(requests) + " requests";
      EXPECT_TRUE(result.exit_status == 1 || result.exit_status == 2) << what << ": " << result.exit_status;
      EXPECT_NE(result.output.find("memory"), std::string::npos) << what << ": " << result.output;
      EXPECT_EQ(result.output.find("bad_alloc"), std::string::npos) << what << ": " << result.output;
      ++failed;
    }
    EXPECT_GT(failed, 3) << line[0];
  }
}

TEST_F(Shortage, OfMemoryFromTheBeginning) {
  const Done result = spbox_short_of("SHORT_OF_MEMORY=1", {"units", "box"});
  EXPECT_EQ(result.exit_status, 1);
  EXPECT_EQ(result.output, "spbox: there is not enough memory.\n");
}

// Who makes the box says so. Who comes next finds what stayed there, and has nothing to tell.
TEST_F(Shortage, OfARightToRemoveKeepsNobodyFromANewBox) {
  EXPECT_EQ(spbox_short_of("NOTHING_GOES=yes", {"create", "box", "--model", "qb1", "--force"}).output,
            "Made box: model qb1, 53 units, all healthy. `spbox units box` lists them.\n");
  EXPECT_TRUE(std::filesystem::exists(place().root() / ".making/made_by_spbox"));
  EXPECT_EQ(spbox_short_of("NOTHING_GOES=yes", {"fault", "box", "/PSU#0"}).output, "/PSU#0  Faulted\n");
  EXPECT_EQ(spbox_short_of("NOTHING_GOES=yes", {"run", "box", "--", "echo", "it runs"}).output, "it runs\n");
  EXPECT_EQ(done({"repair", "box", "/PSU#0"}), "/PSU#0  Normal\n");
  EXPECT_FALSE(std::filesystem::exists(place().root() / ".making"));
}

TEST_F(Shortage, OfProcessesIsASentence) {
  const Done run = spbox_short_of("SHORT_OF_PROCESSES=yes", {"run", "box", "--", "true"});
  EXPECT_EQ(run.exit_status, 1);
  EXPECT_EQ(run.output,
            "spbox: no process can be started for the box: Resource temporarily unavailable. End some, or raise "
            "their limit (ulimit -u).\n");
  const Done play = spbox_short_of("SHORT_OF_PROCESSES=yes", {"play", "short.play"});
  EXPECT_EQ(play.exit_status, 1);
  EXPECT_NE(play.output.find("short.play:1: `box qa`: no process can be started for "), std::string::npos)
      << play.output;
}

TEST_F(Shortage, OfProcessesThatEndWhileSomebodyLooksLeavesThePicture) {
  terminal::BackgroundProgram command({SPBOX, "run", place().root(), "--", "sh", "-c", "echo begun; sleep 100"});
  ASSERT_TRUE(eventually([&] { return command.output() == "begun\n"; }));
  const Words look{"watch", "box", "--once"};
  EXPECT_NE(spbox(look).output.find("At work  sh -c echo begun"), std::string::npos);
  const Done done = spbox_short_of("PROCESSES_END=yes", look);
  EXPECT_EQ(done.exit_status, 0) << done.output;
  EXPECT_NE(done.output.find("At work  nobody\n"), std::string::npos) << done.output;
}

// Between the confinement of a verb and its end.
TEST_F(Shortage, OfTimeForTwoBoxesKeepsAVerbInTheOneThatItFound) {
  const std::string make = "(sleep 0.02; exec env -u MEANWHILE " SPBOX " create box --model qb1 --force >made 2>&1) &";
  EXPECT_EQ(spbox_short_of("MEANWHILE=" + make, {"fault", "box", "/PSU#0"}).output, "/PSU#0  Faulted\n");
  const auto made = [&] { return script::text_of_file(scratch_ / "made"); };
  EXPECT_TRUE(eventually([&] { return made().ends_with('\n'); }));
  EXPECT_TRUE(made().starts_with("Made box: model qb1")) << made();
}

}  // namespace
#endif
