// The operators of a play: one, or several with terminals and commands of their own. One of them is at work now.
#pragma once

#include <functional>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "host/play/account.h"
#include "host/play/operator.h"
#include "host/report/report.h"

namespace play {

class Operators {
 public:
  explicit Operators(int alarm) : alarm_(alarm) { turn_to(""); }

  // What their commands write goes there, too, of all terminals that they take from now on.
  using Listener = std::function<void(const std::string &name, const Operator &op, std::string_view bytes)>;
  void pass_on_to(Listener listener);

  void turn_to(const std::string &name);  // empty: the first one, who has no name
  Operator &now() { return operators_.at(name_); }
  void keep_up();  // Whoever waits takes in what the others' commands write.

  // Of the one who is at work now: "Operator anna", "The command of anna", "anna: the caption". Without a name, as is.
  std::string subject() const { return name_.empty() ? "The operator" : "Operator " + name_; }
  std::string whose(const std::string &thing) const { return name_.empty() ? thing : thing + " of " + name_; }
  std::string by(const std::string &text) const { return name_.empty() ? text : name_ + ": " + text; }

  // What the others' commands do: whether one runs, and the processes.
  bool others_work();
  std::set<pid_t> processes_of_others() const;

  // Of all who have one. The last ones are what was taken in.
  std::vector<SeenScreen> screens();
  std::vector<SeenScreen> last_screens() const;
  std::vector<report::Screen> painted_screens() const;  // the last ones

 private:
  void let_listen(const std::string &name, Operator &op) const;

  int alarm_;
  Listener listener_;
  std::map<std::string, Operator> operators_;
  std::string name_;
};

}  // namespace play
