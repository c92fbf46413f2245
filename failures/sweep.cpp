#include "failures/sweep.h"

#include <cstdio>
#include <stdexcept>
#include <vector>

#include "failures/laws.h"
#include "failures/scene.h"
#include "failures/traced.h"

namespace failures {
namespace {

constexpr std::chrono::seconds kPatience{40};

using Lasting = Failure::Lasting;

// Of another's program each call fails once, by its first error.
std::vector<Failure> failures_at(const Moment &moment) {
  if (moment.image == "bwrap") return {{moment, moment.call->errors.front(), Lasting::kOnce}};
  std::vector<Failure> all;
  for (const int error : moment.call->errors) {
    for (const Lasting lasting : {Lasting::kOnce, Lasting::kTwice, Lasting::kForEver}) {
      if (lasting != Lasting::kForEver || !passes(error)) all.push_back({moment, error, lasting});
    }
  }
  return all;
}

// Some of them, evenly, where not all are asked for.
std::vector<Failure> chosen(const std::vector<Moment> &moments, const Options &options) {
  std::vector<Failure> all;
  for (const Moment &moment : moments) {
    for (const Failure &failure : failures_at(moment)) {
      if (name_of(failure).starts_with(options.at)) all.push_back(failure);
    }
  }
  if (options.runs == 0 || all.size() <= options.runs) return all;
  std::vector<Failure> some;
  for (std::size_t i = 0; i < options.runs; ++i) some.push_back(all[i * all.size() / options.runs]);
  return some;
}

void tell(const Line &line, const Failure &failure, const std::string &sentence) {
  std::printf("FOUND %s: %s: %s\n", line.name, name_of(failure).c_str(), sentence.c_str());
  std::fflush(stdout);  // all of them take hours, and may be ended before
}

void show(const Failure &failure, const Run &run) {
  std::printf("%s: exit status %d\n%s%s", name_of(failure).c_str(), run.status.value_or(-1), run.output.c_str(),
              run.error.c_str());
}

}  // namespace

Count sweep(const Line &line, const Options &options) {
  const Scene scene(options.folder / line.name, line);
  Words command{"/usr/bin/env", "TMPDIR=" + (scene.folder() / "tmp").string(), SPBOX};
  command.insert(command.end(), line.words.begin(), line.words.end());
  const Run well = run_traced(command, scene.folder(), {}, kPatience);
  if (well.status != 0) throw std::runtime_error(std::string(line.name) + ": " + well.error);
  const Good good{well.output, scene.now()};
  Count count{.points = well.moments.size()};
  scene.restore();
  const std::vector<Failure> all = chosen(well.moments, options);
  if (all.empty()) throw std::runtime_error(std::string(line.name) + ": no failure's name begins with " + options.at);
  for (const Failure &failure : all) {
    const Run run = run_traced(command, scene.folder(), failure, kPatience);
    if (!options.at.empty()) show(failure, run);
    State now = scene.now();
    if (line.clears_up && now.files != scene.before().files) {
      run_traced(command, scene.folder(), {}, kPatience);
      now.files = scene.now().files;
    }
    for (const std::string &sentence : broken_by(run, line, scene, now, good, failure)) {
      tell(line, failure, sentence);
      ++count.findings;
    }
    if (now != scene.before()) scene.restore();
    ++count.runs;
  }
  std::filesystem::remove_all(options.folder / line.name);
  return count;
}

}  // namespace failures
