#include "host/play/operators.h"

namespace play {
namespace {

std::string caption_of(const std::string &name) {
  return name.empty() ? "the screen" : "the screen of " + name;
}

}  // namespace

void Operators::turn_to(const std::string &name) {
  const auto [op, is_new] = operators_.try_emplace(name, alarm_);
  if (is_new) let_listen(name, op->second);
  name_ = name;
}

void Operators::pass_on_to(Listener listener) {
  listener_ = std::move(listener);
  for (auto &[name, op] : operators_) let_listen(name, op);
}

void Operators::let_listen(const std::string &name, Operator &op) const {
  if (!listener_) return;
  op.pass_on_to([listener = listener_, name, &op](std::string_view bytes) { listener(name, op, bytes); });
}

std::vector<report::Screen> Operators::painted_screens() const {
  std::vector<report::Screen> screens;
  for (const auto &[name, op] : operators_) {
    if (const auto rows = op.last_painted_screen()) screens.push_back({caption_of(name), *rows});
  }
  return screens;
}

void Operators::keep_up() {
  if (operators_.size() < 2) return;
  std::vector<terminal::Terminal *> others;
  for (auto &[name, op] : operators_) {
    if (name != name_ && op.has_terminal()) others.push_back(&op.terminal());
  }
  for (auto &[name, op] : operators_) {
    if (op.has_terminal()) op.terminal().keep_up(name == name_ ? others : std::vector<terminal::Terminal *>{});
  }
}

bool Operators::others_work() {
  for (auto &[name, op] : operators_) {
    if (name != name_ && op.has_terminal() && op.terminal().runs()) return true;
  }
  return false;
}

std::set<pid_t> Operators::processes_of_others() const {
  std::set<pid_t> processes;
  for (const auto &[name, op] : operators_) {
    if (name == name_) continue;
    for (const pid_t process : op.processes()) processes.insert(process);
  }
  return processes;
}

std::vector<SeenScreen> Operators::screens() {
  std::vector<SeenScreen> screens;
  for (auto &[name, op] : operators_) {
    if (const auto rows = op.screen()) screens.push_back({caption_of(name), *rows});
  }
  return screens;
}

std::vector<SeenScreen> Operators::last_screens() const {
  std::vector<SeenScreen> screens;
  for (const auto &[name, op] : operators_) {
    if (const auto rows = op.last_screen()) screens.push_back({caption_of(name), *rows});
  }
  return screens;
}

}  // namespace play
