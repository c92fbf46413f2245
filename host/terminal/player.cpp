#include "host/terminal/player.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>
#include <sstream>
#include <stdexcept>

#include "host/terminal/run.h"

namespace terminal {
namespace {

constexpr std::size_t kWidth = 78;

int number(const std::string &word) {
  int value = -1;
  const auto *end = word.data() + word.size();
  const auto result = std::from_chars(word.data(), end, value);
  if (result.ec != std::errc{} || result.ptr != end || value < 0) {
    throw std::runtime_error("\"" + word + "\" is no number");
  }
  return value;
}

std::string joined(const std::vector<std::string> &words) {
  std::string line;
  for (const auto &word : words) line += (line.empty() ? "" : " ") + word;
  return line;
}

}  // namespace

struct Player::Verb {
  std::string_view name;
  std::size_t least, most;
  std::string_view usage;
  void (Player::*action)(const Words &);
};

void Player::play(std::istream &script, std::string_view name) {
  for (const auto &step : read_script(script, name)) {
    try {
      perform(step);
    } catch (const std::exception &failure) {
      throw ScriptError(name, step.line, failure.what());
    }
  }
}

void Player::perform(const Step &step) {
  constexpr std::size_t kAny = SIZE_MAX;
  static constexpr std::array<Verb, 8> kVerbs{{
      {"start", 1, kAny, "start COMMAND...", &Player::start},
      {"wait", 1, 1, "wait \"text\"", &Player::wait},
      {"type", 1, 1, "type \"keys\"", &Player::type},
      {"screen", 1, 1, "screen \"caption\"", &Player::screen},
      {"exit", 1, 1, "exit STATUS", &Player::exit},
      {"spbox", 1, kAny, "spbox VERB ...", &Player::spbox},
      {"patience", 1, 1, "patience SECONDS", &Player::patience},
      {"say", 1, 1, "say \"text\"", &Player::say},
  }};
  const auto *verb = std::find_if(kVerbs.begin(), kVerbs.end(), [&](const auto &row) { return row.name == step.verb; });
  if (verb == kVerbs.end()) {
    std::string known;
    for (const auto &row : kVerbs) known += (known.empty() ? "" : ", ") + std::string(row.name);
    throw std::runtime_error("unknown step \"" + step.verb + "\"; the steps are " + known);
  }
  if (step.words.size() < verb->least || step.words.size() > verb->most) {
    throw std::runtime_error("write it as: " + std::string(verb->usage));
  }
  (this->*verb->action)(step.words);
}

void Player::start(const Words &words) {
  Words command{stage_.spbox, "run", stage_.box, "--"};
  command.insert(command.end(), words.begin(), words.end());
  out_ << "The operator starts: " << joined(words) << "\n\n" << std::flush;
  terminal_.start(command);
}

void Player::wait(const Words &words) {
  if (!terminal_.wait_for(words[0], patience_)) {
    throw std::runtime_error(with_screen("\"" + words[0] + "\" did not come up"));
  }
}

void Player::type(const Words &words) {
  out_ << "The operator types: " << describe_keys(words[0]) << "\n\n" << std::flush;
  terminal_.type(words[0]);
}

void Player::screen(const Words &words) {
  print_screen(out_, words[0]);
}

void Player::exit(const Words &words) {
  const int wanted = number(words[0]);
  const auto ending = terminal_.wait_for_exit(patience_);
  if (!ending) throw std::runtime_error(with_screen("the command does not end"));
  if (*ending != Ending{false, wanted}) {
    throw std::runtime_error(
        with_screen("the command ended with " + text(*ending) + ", not with exit status " + words[0]));
  }
  out_ << "The command ends with " << text(*ending) << ".\n\n" << std::flush;
}

void Player::spbox(const Words &words) {
  Words command{stage_.spbox, words[0], stage_.box};
  command.insert(command.end(), words.begin() + 1, words.end());
  const auto done = run(command);
  out_ << "The technician: spbox " << joined(words) << '\n';
  std::istringstream lines(done.output);
  for (std::string line; std::getline(lines, line);) out_ << "    " << line << '\n';
  out_ << '\n' << std::flush;
  if (done.exit_status != 0) {
    throw std::runtime_error("spbox " + joined(words) + " ended with " + text(Ending{false, done.exit_status}) + ":\n" +
                             done.output);
  }
}

void Player::patience(const Words &words) {
  patience_ = std::chrono::seconds(number(words[0]));
}

void Player::say(const Words &words) {
  out_ << words[0] << "\n\n" << std::flush;
}

void Player::print_screen(std::ostream &out, std::string_view caption) {
  auto rows = terminal_.screen();
  while (!rows.empty() && rows.back().empty()) rows.pop_back();
  std::string head = "+-- " + std::string(caption) + " ";
  head.resize(std::max(head.size(), kWidth), '-');
  out << head << '\n';
  for (const auto &row : rows) out << (row.empty() ? "|" : "| ") << row << '\n';
  out << '+' << std::string(kWidth - 1, '-') << "\n\n" << std::flush;
}

std::string Player::with_screen(const std::string &text) {
  std::ostringstream message;
  message << text << ". The screen:\n";
  print_screen(message, "screen");
  return message.str();
}

}  // namespace terminal
