// Menus and prompts of any texts: all of a line is shown, up to where the header says that it is cut.
#include <vector>

#include "fuzz/library/machine.h"
#include "include/lmainte.h"

namespace fuzz {
namespace {

constexpr std::size_t kTextCut = 1023;

void check_menu(const std::vector<std::string> &texts) {
  std::vector<ListLine> lines;
  std::string expected;
  for (const std::string &text : texts) {
    lines.push_back(doubles::line(static_cast<std::int32_t>(lines.size() % 2), "%s",
                                  {reinterpret_cast<std::uintptr_t>(text.c_str())}));
    expected += text.substr(0, kTextCut);
  }
  lines.push_back(doubles::end_mark());
  require(judged("lmainte_show_menu", {}, [&] { return lmainte_show_menu(lines.data()); }) == 0, "a menu is shown");
  require(machine().pages.size() == 1 && machine().pages[0] == expected, "a menu has its lines, one after the other");
}

void check_prompt(const std::string &text) {
  std::int32_t choice = 0;
  doubles::printed_by([&] { lmainte_ask_select(7, &choice, "%s", text.c_str()); });
  require(machine().asked.size() == 1 && machine().asked[0].prompt == text.substr(0, kTextCut),
          "a prompt has its text, up to its room");
}

}  // namespace

void run_menus(Input input) {
  Source source(input);
  const bool asks = source.flag();
  std::vector<std::string> texts;
  while (!source.empty() && texts.size() < 40) texts.push_back(source.text());
  on_machine([&] {
    if (asks && !texts.empty()) {
      check_prompt(texts[0]);
    } else {
      check_menu(texts);
    }
  });
}

}  // namespace fuzz
