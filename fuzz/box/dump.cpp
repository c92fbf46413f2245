// Dumps. One that makes no sense is refused in words; one that is taken is written and read again, and nothing of it is lost.
#include "host/spbox/dump.h"
#include "fuzz/box/targets.h"

namespace fuzz {

void run_dump(Input input) {
  box::Contents contents;
  const std::string refusal =
      refusal_of<box::BoxError>("a dump", [&] { contents = spbox::read_dump(text_of(input), "input"); });
  require(refusal.empty() || refusal.starts_with("input"), "a refusal names the dump: " + refusal);
  if (!refusal.empty()) return;
  const std::string written = spbox::dump_of(contents);
  box::Contents again;
  const std::string of_own =
      refusal_of<box::BoxError>("a dump of its own", [&] { again = spbox::read_dump(written, "input"); });
  require(of_own.empty(), "what is written is taken again: " + of_own);
  require(same(contents, again), "what is written and read again is the same");
  require(spbox::dump_of(again) == written, "the same contents are written alike");
}

}  // namespace fuzz
