// failures [--runs N] [--at FAILURE] [LINE...]: lets each call of spbox fail, and looks at what must hold then.
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include "failures/sweep.h"
#include "failures/verbs.h"
#include "host/base/number.h"
#include "tests/host/box/scratch.h"

namespace {

using failures::Line;

struct Wanted {
  failures::Options options;
  std::vector<const Line *> lines;
};

// A line is known by its name, and by its verb.
void add_lines(const std::string &name, std::vector<const Line *> &lines) {
  const std::size_t before = lines.size();
  for (const Line &line : failures::lines()) {
    if (name.empty() || name == line.name || name == line.words.front()) lines.push_back(&line);
  }
  if (lines.size() == before) throw std::runtime_error("there is no verb " + name);
}

Wanted read(const std::vector<std::string> &words) {
  Wanted wanted;
  for (auto word = words.begin(); word != words.end(); ++word) {
    const bool has_value = word + 1 != words.end();
    if (*word == "--runs" && has_value) {
      const auto number = base::number_in<std::size_t>(*++word);
      if (!number) throw std::runtime_error("--runs takes a number");
      wanted.options.runs = *number;
    } else if (*word == "--at" && has_value) {
      wanted.options.at = *++word;
    } else {
      add_lines(*word, wanted.lines);
    }
  }
  if (wanted.lines.empty()) add_lines("", wanted.lines);
  return wanted;
}

void tell(const char *name, const failures::Count &count) {
  std::printf("%-16s %6zu points %7zu runs %4zu findings\n", name, count.points, count.runs, count.findings);
  std::fflush(stdout);
}

int sweep(const std::vector<std::string> &words) {
  Wanted wanted = read(words);
  const Scratch scratch;
  wanted.options.folder = scratch.path();
  failures::Count all;
  for (const Line *line : wanted.lines) {
    const failures::Count count = failures::sweep(*line, wanted.options);
    tell(line->name, count);
    all.points += count.points;
    all.runs += count.runs;
    all.findings += count.findings;
  }
  if (wanted.lines.size() > 1) tell("all", all);
  return all.findings == 0 ? 0 : 1;
}

}  // namespace

int main(int argc, char **argv) {
  // What is printed has the same characters where the locale cannot be read.
  setenv("LC_ALL", "C", 1);  // NOLINT(concurrency-mt-unsafe): one thread
  try {
    return sweep({argv + 1, argv + argc});
  } catch (const std::exception &error) {
    std::fprintf(stderr, "failures: %s\n", error.what());
    return 2;
  }
}
