// A test with a box of its own, and an operator's terminal on it. Time in the box does not pass while somebody works, and jumps to
// the next moment for which somebody waits when all wait; so does the patience of the test. A few tests stay in real time on purpose:
// without the library that shows programs the box's time.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/clock/keeper.h"
#include "host/play/leftovers.h"
#include "host/terminal/terminal.h"
#include "tests/run.h"

namespace end_to_end {

using std::chrono::seconds;

constexpr seconds kSoon{10};
constexpr seconds kLater{30};  // for what runs several control programs or waits for a lock

using Words = std::vector<std::string>;

class BoxTest : public testing::Test {
 public:
  BoxTest();
  ~BoxTest() override;
  BoxTest(const BoxTest &) = delete;
  BoxTest &operator=(const BoxTest &) = delete;

 protected:
  void stay_in_real_time() { keeper_.reset(); }  // before the box is made
  void make_box(const std::string &model);
  std::filesystem::path box() const { return folder_ / "box"; }

  // The operator.
  void start(const Words &command);                  // in the box
  void start_procedure(const std::string &command);  // "replace_unit psu"
  bool sees(std::string_view text, seconds patience = kSoon) { return terminal_.wait_for(text, patience); }
  void types(std::string_view keys) { terminal_.type(keys); }
  // The question comes up, after what was typed last. Throws where it does not; then the keys are not typed.
  void answers(std::string_view question, std::string_view keys = "");
  void reads_on_to(std::string_view question);            // turns the pager's pages until it comes up
  bool was_shown(std::string_view text);                  // on the screen or above it
  bool comes_up_again(std::string_view text, int times);  // on so many lines
  std::optional<terminal::Ending> ending() { return terminal_.wait_for_exit(kLater); }
  void send(int signal, const char *program);

  // The screen comes to be the one in the file of this name, all 24 lines of it; lines missing at the file's end are blank.
  void expect_screen(const std::string &name);

  // The technician does what the procedure asks for, and the operator says so.
  void pulls(const std::string &unit);

  // The technician.
  Done spbox(const Words &words);  // spbox VERB BOX ...; must succeed
  std::string led(const std::string &unit) const;
  bool flag(const std::string &unit) const;
  void bend(const std::string &program, const Words &how);
  void remove_list_file() const;  // the one that is there
  void put_record(std::uint32_t db_id, const std::string &name, std::size_t size) const;

  // A function of the library called in the box by a command without a terminal: its output, "result 0\n" at the end.
  std::string call(const Words &words) const;

  // After a procedure: LED, flag, fans, maintenance mode, terminal, processes, files and locks are as before it. The units
  // named may be out of operation.
  void expect_in_order(const Words &detached = {});

  // After every end: the terminal as it was, no process, no list file, no lock.
  void expect_nothing_left();
  void expect_no_process();
  std::vector<std::string> processes_of_box() const;  // those that were started with its folder, by their names
  void expect_no_list_file() const;

  static std::string procedure(const std::string &command);  // "replace_unit psu" with the path of the program
  Words in_box(const Words &command) const;                  // spbox run BOX -- COMMAND

  std::optional<box_time::Keeper> keeper_;  // whoever waits, waits with it: so it comes first
  terminal::Terminal terminal_;

 private:
  std::ptrdiff_t lines_with(std::string_view text);
  void expect_left(const Words &sentences, const Words &detached);

  std::filesystem::path folder_;
  terminal::Mode mode_before_;
  std::optional<play::Before> before_;
};

// How spbox passes on that the command in the box died of a signal.
terminal::Ending died_of(int signal);

}  // namespace end_to_end
