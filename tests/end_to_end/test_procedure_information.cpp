// What stands in the file with the procedure information, and was written by no procedure, stops nobody.

#include <fstream>

#include "tests/end_to_end/box_test.h"

namespace end_to_end {
namespace {

using terminal::Ending;

struct Rubbish {
  const char *name;
  std::string content;
};

std::ostream &operator<<(std::ostream &out, const Rubbish &rubbish) {
  return out << rubbish.name;
}

class ProcedureInformation : public BoxTest, public testing::WithParamInterface<Rubbish> {};

TEST_P(ProcedureInformation, ThatNoProcedureWroteStopsNobody) {
  make_box("qa");
  std::ofstream(box() / "tmp/mainte_procedure") << GetParam().content;
  start_procedure("remove_unit psu");
  answers("Which power supply", "q\n");
  EXPECT_EQ(ending(), (Ending{false, 2}));
  expect_in_order();
}

INSTANTIATE_TEST_SUITE_P(With, ProcedureInformation,
                         testing::Values(Rubbish{"Nothing", ""}, Rubbish{"ALineEnd", "\n"},
                                         Rubbish{"Words", "rubbish and more of it\n"},
                                         Rubbish{"AProcessThatNeverWas", "4194999"}, Rubbish{"ANegativeNumber", "-1"},
                                         Rubbish{"ANumberTooLarge", "99999999999999999999"},
                                         Rubbish{"MoreThanItHolds", std::string(4096, 'x')},
                                         Rubbish{"BytesThatAreNoText", std::string("\x80\xff\0\x1b[2J", 7)}),
                         [](const auto &rubbish) { return std::string(rubbish.param.name); });

}  // namespace
}  // namespace end_to_end
