#include "host/play/account.h"

#include <optional>

#include "host/base/descriptor.h"
#include "host/base/shown.h"

namespace play {
namespace {

constexpr char kEndOfWord = '\0';  // which no text has that people are shown

std::string field(std::string_view name, std::string_view value) {
  return std::string(name) + kEndOfWord + base::shown_lines(value) + kEndOfWord;
}

// Who started the play may be gone: the play goes on.
void give(int fd, const std::string &fields) {
  if (fd >= 0) base::write_all(fd, fields);
}

std::optional<std::string> take_word(std::string_view &bytes) {
  const auto end = bytes.find(kEndOfWord);
  if (end == std::string_view::npos) return {};
  std::string word(bytes.substr(0, end));
  bytes.remove_prefix(end + 1);
  return word;
}

void take_field(Account &account, const std::string &name, const std::string &value) {
  if (name == "place") account.place = value;
  if (name == "step") account.step = value;
  if (name == "reason") account.reason = value;
  if (name == "text") account.text = value;
  if (name == "left") account.left.push_back(value);
  if (name == "screen") account.screens.push_back({value, {}});
  if (name == "row" && !account.screens.empty()) account.screens.back().rows.push_back(value);
}

}  // namespace

void AccountWriter::begins(const std::string &place, const std::string &step) const {
  give(fd_, field("place", place) + field("step", step));
}

void AccountWriter::ends(const Account &account) const {
  std::string fields = field("place", account.place) + field("step", account.step) + field("reason", account.reason) +
                       field("text", account.text);
  for (const auto &sentence : account.left) fields += field("left", sentence);
  for (const auto &screen : account.screens) {
    fields += field("screen", screen.caption);
    for (const auto &row : screen.rows) fields += field("row", row);
  }
  give(fd_, fields);
}

Account read_account(std::string_view bytes) {
  Account account;
  while (const auto name = take_word(bytes)) {
    const auto value = take_word(bytes);
    if (!value) break;
    take_field(account, *name, *value);
  }
  return account;
}

}  // namespace play
