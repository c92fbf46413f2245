#include "host/sweep/fold.h"

#include <algorithm>
#include <cctype>

#include "host/trace_book/event_names.h"

namespace sweep {
namespace {

using box::PointKind;

constexpr std::size_t kDrawn = 3600;  // Most numbers of deviations divide it.

// Here a command does something to the world outside it, or its operator does something to it.
bool is_touch(PointKind kind) {
  constexpr PointKind kTouches[] = {PointKind::kProgram, PointKind::kWrite,    PointKind::kFile,
                                    PointKind::kLog,     PointKind::kQuestion, PointKind::kMessage};
  return std::ranges::find(kTouches, kind) != std::end(kTouches);
}

// While a command reads, it holds a lock that others wait for.
bool is_lock(PointKind kind) {
  return kind == PointKind::kLock || kind == PointKind::kUnlock;
}

std::string without_numbers(const std::string &name) {
  std::string kept;
  for (const char c : name) {
    const bool is_digit = std::isdigit(static_cast<unsigned char>(c)) != 0;
    if (!is_digit) kept += c;
    if (is_digit && !kept.ends_with('#')) kept += '#';
  }
  return kept;
}

// "read fru_dimm_info_#". An event of the trace, a program and a database are none of many alike.
std::string kind_and_name(const Reached &point) {
  const bool is_record = point.kind == PointKind::kRead || point.kind == PointKind::kWrite;
  return std::string(box::row_of(point.kind).word) + " " + (is_record ? without_numbers(point.name) : point.name);
}

// The functions of the library in which a command is, as its trace tells.
class Calls {
 public:
  void pass(const Reached &point) {
    if (point.kind != PointKind::kTrace) return;
    const std::string text = trace_book::event_text(point.name);
    const auto blank = text.find(' ');
    if (blank == std::string::npos) return;
    const std::string function = text.substr(0, blank), event = text.substr(blank + 1);
    if (event == "entry") functions_.push_back(function);
    if (event != "exit") return;
    const auto entered = std::find(functions_.rbegin(), functions_.rend(), function);
    if (entered != functions_.rend()) functions_.erase(std::prev(entered.base()), functions_.end());
  }

  std::string text() const {
    std::string text;
    for (const std::string &function : functions_) text += function + "/";
    return text;
  }

  // That of the library which the command called.
  std::string outermost() const { return functions_.empty() ? "" : functions_.front(); }

 private:
  std::vector<std::string> functions_;
};

// Where a point stands.
struct Standing {
  std::string step, functions, name;  // the command and its questions before; the functions of the library
  std::string outermost;              // of these
  std::string before, behind;         // what the command did to the world
  bool is_new = true;                 // no earlier record of the trace is of the same event
  bool is_edge = false;               // for signals
};

// Tells of each point what comes before it.
class Forwards {
 public:
  Standing pass(const Reached &point) {
    if (point.command != command_) *this = Forwards(point.command, std::move(seen_));
    Standing at{std::to_string(point.command) + " " + std::to_string(questions_),
                calls_.text(),
                kind_and_name(point),
                {},
                touched_,
                {}};
    at.outermost = calls_.outermost();
    calls_.pass(point);
    if (at.outermost.empty()) at.outermost = calls_.outermost();  // It is entered here.
    at.is_new = point.kind != PointKind::kTrace || seen_.insert(point.name).second;
    at.is_edge = is_touch(point.kind) || (is_behind_touch_ && gets_signals(point.kind, point.name));
    is_behind_touch_ = is_touch(point.kind) || (is_behind_touch_ && !at.is_edge);
    questions_ += point.kind == PointKind::kQuestion ? 1 : 0;
    if (is_touch(point.kind)) touched_ = at.name;
    return at;
  }

  Forwards() = default;

 private:
  Forwards(std::size_t command, std::set<std::string> &&seen) : command_(command), seen_(std::move(seen)) {}

  std::size_t command_ = 0, questions_ = 0;
  Calls calls_;
  std::string touched_;
  bool is_behind_touch_ = true;
  std::set<std::string> seen_;  // events of the trace
};

std::vector<Standing> standings_of(const std::vector<Reached> &order) {
  std::vector<Standing> all;
  Forwards forwards;
  for (const Reached &point : order) all.push_back(forwards.pass(point));
  std::string behind;
  bool is_before_program = true;  // or before the end
  for (std::size_t i = order.size(); i-- > 0;) {
    const bool is_last = i + 1 == order.size() || order[i + 1].command != order[i].command;
    if (is_last) behind.clear();
    if (is_touch(order[i].kind)) behind = all[i].name;
    is_before_program |= is_last || order[i].kind == PointKind::kProgram;
    all[i].behind = behind;
    if (!is_before_program || !gets_signals(order[i].kind, order[i].name)) continue;
    all[i].is_edge = true;
    is_before_program = false;
  }
  return all;
}

// Equal points have equal words. Empty: another point tells the same.
struct Places {
  std::vector<std::string> of_calls, of_signals;
};

Places places_of(const std::vector<Reached> &order) {
  const std::vector<Standing> all = standings_of(order);
  const auto name_of_next = [&](std::size_t i, std::size_t next) {
    return next < all.size() && order[next].command == order[i].command ? all[next].name : "";
  };
  Places places;
  for (std::size_t i = 0; i < all.size(); ++i) {
    const Standing &at = all[i];
    const std::string here = at.step + "|" + at.functions + "|" + at.name + "|";
    std::string of_calls = here + name_of_next(i, i - 1) + "|" + name_of_next(i, i + 1), of_signals;
    if (order[i].kind == PointKind::kTrace) of_calls = at.is_new ? "trace " + at.outermost : "";
    if (is_lock(order[i].kind)) of_signals = at.step + "|" + at.name;
    if (at.is_edge) of_signals = here + at.before + "|" + at.behind;
    places.of_calls.push_back(std::move(of_calls));
    places.of_signals.push_back(std::move(of_signals));
  }
  return places;
}

bool is_signal_between_calls(const box::Deviation &deviation) {
  return deviation.turn.way == box::Way::kSignal && deviation.kind != PointKind::kProgram &&
         deviation.kind != PointKind::kPager;
}

}  // namespace

Fold::TriedAt Fold::tried_at(const std::vector<Point> &points, const std::vector<std::string> &places,
                             std::uint64_t seed, std::size_t &classes) {
  std::map<std::string, std::vector<std::size_t>> equal;
  for (std::size_t i = 0; i < places.size(); ++i) {
    if (!places[i].empty()) equal[places[i]].push_back(i);
  }
  classes = equal.size();
  TriedAt tried;
  for (const auto &[place, at] : equal) {
    Draw draw(Draw::hash_of(place, seed));  // its own: one class more or fewer changes no other's
    tried[points[at.front()]].is_all = true;
    if (at.size() > 1) tried[points[at.back()]].drawn = draw.below(kDrawn);
    if (at.size() > 2) tried[points[at[1 + draw.below(at.size() - 2)]]].drawn = draw.below(kDrawn);
  }
  return tried;
}

Fold::Fold(const Good &good, std::uint64_t seed) {
  std::vector<Point> points;
  std::map<std::size_t, std::uint32_t> counts;
  for (const PointRange &range : good.points) {
    const std::size_t name = names_.try_emplace({range.kind, range.name}, names_.size()).first->second;
    counts.try_emplace(name, range.first - 1);  // The first range of a name has its first points.
  }
  for (const Reached &point : good.order) {
    const std::size_t name = names_.try_emplace({point.kind, point.name}, names_.size()).first->second;
    points.emplace_back(name, ++counts[name]);
  }
  known_.insert(points.begin(), points.end());
  const Places places = places_of(good.order);
  calls_ = tried_at(points, places.of_calls, seed, classes_);
  signals_ = tried_at(points, places.of_signals, seed, signal_classes_);
}

std::pair<Fold::Takes, std::size_t> Fold::takes(const Deviation &deviation) const {
  if (!deviation.point) return {Takes::kAll, 0};
  const auto name = names_.find({deviation.point->kind, deviation.point->name});
  if (name == names_.end()) return {Takes::kAll, 0};
  const Point point{name->second, deviation.point->number};
  if (!known_.contains(point)) return {Takes::kAll, 0};
  const TriedAt &at_points = is_signal_between_calls(*deviation.point) ? signals_ : calls_;
  const auto tried = at_points.find(point);
  if (tried == at_points.end()) return {Takes::kNone, 0};
  return {tried->second.is_all ? Takes::kAll : Takes::kOne, tried->second.drawn};
}

std::vector<std::size_t> Fold::taken(const std::vector<Deviation> &all) const {
  struct Choice {
    std::size_t drawn = 0;
    std::vector<std::size_t> numbers;
  };
  std::map<std::pair<std::string, bool>, Choice> choices;  // by the point, and whether they are signals there
  std::vector<std::size_t> numbers;
  for (std::size_t i = 0; i < all.size(); ++i) {
    const auto [takes_of_it, drawn] = takes(all[i]);
    if (takes_of_it == Takes::kAll) numbers.push_back(i);
    if (takes_of_it != Takes::kOne) continue;
    Choice &choice = choices[{where(all[i]), is_signal_between_calls(*all[i].point)}];
    choice.drawn = drawn;
    choice.numbers.push_back(i);
  }
  for (const auto &[point, choice] : choices) numbers.push_back(choice.numbers[choice.drawn % choice.numbers.size()]);
  std::ranges::sort(numbers);
  return numbers;
}

}  // namespace sweep
