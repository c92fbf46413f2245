// A box, and its control programs run as the library runs them: without standard descriptors, with three variables.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include "host/base/child.h"
#include "host/box/hardware.h"
#include "host/box/inventory.h"
#include "host/box/program_list.h"
#include "include/lmainte.h"
#include "tests/host/box/scratch.h"

// One run, and what it is to leave in the box.
struct Row {
  const char *says;
  const char *name;
  const char *line;
  int status;
  const char *key = "";    // of the hardware, where the run is to leave a trace there
  const char *value = "";  // empty: nothing under the key
};

class ControlProgram : public testing::Test {
 protected:
  explicit ControlProgram(std::uint32_t model = LMAINTE_MODEL_QE1) {
    box::create_box(place_, model);
    hardware_.emplace(place_);
  }

  // Starts a program by its name with the words of an argument line.
  pid_t start(const std::string &name, const std::string &line) const {
    const std::string path = (place_.root() / name).string();
    std::error_code exists_already;
    std::filesystem::create_symlink(CONTROL_PROGRAM, path, exists_already);
    std::vector<std::string> words{path};
    std::istringstream in(line);
    for (std::string word; in >> word;) words.push_back(word);
    std::vector<std::string> variables{"LC_ALL=C", "LD_LIBRARY_PATH=", "PRIV=", "SPBOX_ROOT=" + place_.root().string()};
    const base::ArgumentVector arguments(std::move(words)), environment(std::move(variables));
    const pid_t pid = fork();
    if (pid == 0) {
      for (int fd = 0; fd < 3; ++fd) close(fd);
      execve(path.c_str(), arguments.data(), environment.data());
      _exit(127);
    }
    return pid;
  }

  // The exit status of a program that must end by itself.
  int run(const std::string &name, const std::string &line) const {
    const int status = base::wait_status_of(start(name, line));
    EXPECT_TRUE(WIFEXITED(status)) << name << ' ' << line << " ended with wait status " << status;
    return WEXITSTATUS(status);
  }

  // Runs one after the other on one box.
  void expect(const std::vector<Row> &rows) const {
    for (const Row &row : rows) {
      EXPECT_EQ(run(row.name, row.line), row.status) << row.says;
      if (*row.key != '\0') {
        EXPECT_EQ(hardware(row.key), row.value) << row.says;
      }
    }
  }

  void change(box::Change change, const std::vector<std::string> &units) const {
    box::Inventory(place_).change(change, units);
  }

  std::string hardware(const std::string &key) const { return hardware_->get(key).value_or(""); }
  std::optional<box::Run> last_run(const std::string &name) const { return box::last_run(*hardware_, name); }

  Scratch scratch_;
  box::Place place_{scratch_ / "box"};
  std::optional<box::TextDatabase> hardware_;
};
