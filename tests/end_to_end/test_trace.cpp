// The trace that a maintenance command leaves, decoded.

#include <algorithm>
#include <map>

#include "host/box/place.h"
#include "host/box/trace_ring.h"
#include "host/trace_book/trace_book.h"
#include "tests/end_to_end/box_test.h"

namespace end_to_end {
namespace {

using terminal::Ending;

class Trace : public BoxTest {
 protected:
  std::vector<trace_book::TraceLine> read() const {
    std::vector<trace_book::TraceLine> lines;
    for (const auto &entry : box::TraceRing::read(box::Place(box()).trace()))
      lines.push_back(trace_book::words_of(entry));
    return lines;
  }

  // Every record is known to the book, and every function that was entered was left.
  void expect_whole() const {
    std::map<std::string, int> inside;
    for (const auto &entry : box::TraceRing::read(box::Place(box()).trace())) {
      const auto line = trace_book::words_of(entry);
      EXPECT_TRUE(line.is_known) << std::hex << entry.event << " with " << std::dec << entry.word_count << " words";
      if (line.event == "entry") ++inside[line.function];
      if (line.event == "exit") --inside[line.function];
    }
    EXPECT_GT(inside.size(), 10U);
    for (const auto &[function, depth] : inside) EXPECT_EQ(depth, 0) << function;
  }

  std::ptrdiff_t count(const std::string &function, const std::string &what) const {
    const auto lines = read();
    return std::count_if(lines.begin(), lines.end(),
                         [&](const auto &line) { return line.function == function && line.event == what; });
  }
};

TEST_F(Trace, OfAWholeWalkIsKnownToTheLastRecord) {
  make_box("qa");
  start_procedure("replace_unit psu");
  answers("Which power supply", "1\n");
  answers("Pull out /PSU#0 now");
  spbox({"pull", "/PSU#0"});
  types("1\n");
  answers("Put in /PSU#0 now");
  spbox({"insert", "/PSU#0"});
  types("1\n");
  ASSERT_EQ(ending(), (Ending{false, 0}));

  expect_whole();
  EXPECT_EQ(count("lmainte_get_model_data", "entry"), 1);
  EXPECT_EQ(count("lmainte_get_psu_data", "entry"), 16);
  EXPECT_EQ(count("lmainte_show_psu_list", "entry"), 1);
  EXPECT_EQ(count("lmainte_ask_select", "entry"), 3);
  EXPECT_EQ(count("lmainte_control_led", "entry"), 2);
  EXPECT_EQ(count("lmainte_set_mainteflag", "entry"), 2);
  EXPECT_EQ(count("lmainte_exec", "entry"), 11);
  EXPECT_EQ(count("lmainte_show_psu_status", "entry"), 2);
  EXPECT_EQ(spbox({"trace", "--errors"}).output.find("lmainte_"), std::string::npos);
}

TEST_F(Trace, OfFailuresIsKnownToTheLastRecord) {
  make_box("qa");
  std::filesystem::remove(box() / "mgb/bin/ctlled");
  bend("ctlfan", {"--die", "9"});
  bend("vantamainte", {"--hang"});
  call({"led", "1", "10", "/PSU#0"});
  call({"led", "4", "10", "/PSU#0"});
  call({"fan", "0", "10"});
  call({"vanta", "0", "1"});
  call({"mainte", "7", "1"});
  call({"exec", "16", "1", "-x"});
  call({"psu", "0", "0"});
  call({"psu", "60", "6"});
  call({"show", "/nowhere"});
  call({"tty", "9", "9"});
  call({"ask", "3", "Which? "});
  put_record(2, "current_psu_info", 1);
  call({"psu", "0", "6"});

  expect_whole();
  EXPECT_GT(count("lmainte_exec", "the program was killed"), 0);
  EXPECT_GT(count("lmainte_exec", "the program cannot be run"), 0);
  EXPECT_GT(count("lmainte_exec", "the time limit is spent"), 0);
  EXPECT_NE(spbox({"trace", "--errors"}).output.find("lmainte_exec"), std::string::npos);
}

}  // namespace
}  // namespace end_to_end
