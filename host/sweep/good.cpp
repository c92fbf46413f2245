#include "host/sweep/good.h"

#include "host/base/number.h"
#include "host/script/script.h"

namespace sweep {
namespace {

std::string line(const script::Words &words) {
  return script::as_line(words) + "\n";
}

template <typename Number>
Number number_in(const script::Statement &statement, std::size_t word) {
  const auto number = base::number_in<Number>(statement.words.at(word));
  if (!number) throw statement.error("there is no number");
  return *number;
}

std::string text_of(const CommandEnd &command) {
  std::string text = line({"command", std::to_string(command.start)});
  if (command.ending) {
    text += line({"ended", command.ending->by_signal ? "signal" : "status", std::to_string(command.ending->number)});
  }
  for (const auto &sentence : command.left) text += line({"left", sentence});
  for (const auto &entry : command.logged) text += line({"logged", entry});
  for (const auto &row : command.shown) text += line({"shown", row});
  return text;
}

void take(Good &good, const script::Statement &statement) {
  const auto &words = statement.words;
  if (words[0] == "script") {
    good.script = number_in<std::uint64_t>(statement, 1);
    return;
  }
  if (words[0] == "steps") {
    good.first_step = number_in<std::size_t>(statement, 1);
    good.last_step = number_in<std::size_t>(statement, 2);
    return;
  }
  if (words[0] == "command") {
    good.commands.emplace_back().start = number_in<std::size_t>(statement, 1);
    return;
  }
  if (words[0] == "points") {
    good.points.push_back({static_cast<box::PointKind>(number_in<std::uint32_t>(statement, 1)), words.at(2),
                           number_in<std::uint32_t>(statement, 3), number_in<std::uint32_t>(statement, 4),
                           number_in<std::size_t>(statement, 5)});
    return;
  }
  if (good.commands.empty()) throw statement.error("it belongs to no command");
  CommandEnd &command = good.commands.back();
  if (words[0] == "ended") command.ending = {words.at(1) == "signal", number_in<int>(statement, 2)};
  if (words[0] == "left") command.left.push_back(words.at(1));
  if (words[0] == "logged") command.logged.push_back(words.at(1));
  if (words[0] == "shown") command.shown.push_back(words.at(1));
}

}  // namespace

std::string text_of(const Good &good) {
  std::string text = line({"script", std::to_string(good.script)});
  text += line({"steps", std::to_string(good.first_step), std::to_string(good.last_step)});
  for (const CommandEnd &command : good.commands) text += text_of(command);
  for (const PointRange &range : good.points) {
    text += line({"points", std::to_string(static_cast<std::uint32_t>(range.kind)), range.name,
                  std::to_string(range.first), std::to_string(range.last), std::to_string(range.command)});
  }
  return text;
}

Good good_in(const std::string &text) {
  Good good;
  script::Reader reader(text, "the good play", {.has_quotes = true, .has_semicolons = false});
  while (const auto statement = reader.next()) take(good, *statement);
  return good;
}

}  // namespace sweep
