// What a command writes on its terminal, any bytes: the screen stays as large as it is, its text is whole characters, and it is
// the same in whichever pieces the bytes come.
#include "host/terminal/screen.h"
#include "fuzz/box/targets.h"
#include "host/base/shown.h"
#include "host/terminal/strainer.h"

namespace fuzz {
namespace {

constexpr std::size_t kMostBytes = 4096;

bool is_of_characters(std::string_view text) {
  while (!text.empty()) {
    const std::size_t size = base::character_size(text);
    if (size == 0) return false;
    text.remove_prefix(size);
  }
  return true;
}

std::vector<std::string> shown(terminal::Size size, std::string_view bytes, std::size_t piece) {
  terminal::Screen screen(size, [](std::string_view) {});
  for (; !bytes.empty(); bytes.remove_prefix(std::min(piece, bytes.size()))) screen.feed(bytes.substr(0, piece));
  auto rows = screen.rows();
  require(rows.size() == static_cast<std::size_t>(size.rows), "a screen has its rows");
  for (const std::string &row : rows) {
    require(is_of_characters(row), "a row is whole characters");
    require(row.empty() || screen.shows(row), "a screen shows its rows");
  }
  screen.grow_old();
  for (const std::string &row : rows)
    require(row.empty() || !screen.shows_new(row), "what was there before is not new");
  return rows;
}

}  // namespace

void run_screen(Input input) {
  Source source(input);
  const terminal::Size size{1 + source.byte() % 50, 2 + source.byte() % 130};
  const std::size_t piece = 1 + source.byte() % 16;
  const std::string bytes = text_of(source.bytes(kMostBytes));
  terminal::Strainer whole, pieces;
  std::string passed;
  for (std::size_t at = 0; at < bytes.size(); at += piece) passed += pieces.passed(bytes.substr(at, piece));
  require(whole.passed(bytes) == passed, "the same passes in whichever pieces it comes");
  require(shown(size, bytes, bytes.size() + 1) == shown(size, bytes, piece), "the screen shows the same");
}

}  // namespace fuzz
