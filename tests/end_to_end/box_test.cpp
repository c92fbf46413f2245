#include "tests/end_to_end/box_test.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>

#include "host/box/database.h"
#include "host/box/hardware.h"
#include "host/box/place.h"
#include "host/clock/hours.h"
#include "tests/eventually.h"

namespace end_to_end {
namespace fs = std::filesystem;
using std::chrono::milliseconds;

namespace {

std::string framed(const std::vector<std::string> &rows) {
  std::string text = "\n";
  for (const auto &row : rows) text += "|" + row + "\n";
  return text;
}

}  // namespace

terminal::Ending died_of(int signal) {
  return {false, 128 + signal};
}

BoxTest::BoxTest() : keeper_(std::in_place, box_time::Speed{}), mode_before_(terminal_.mode()) {
  auto pattern = (fs::temp_directory_path() / "lmainte.XXXXXX").string();
  if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("cannot make a folder: " + pattern);
  folder_ = pattern;
}

BoxTest::~BoxTest() {
  std::error_code ignored;
  fs::remove_all(folder_, ignored);
}

Words BoxTest::in_box(const Words &command) const {
  Words words{SPBOX, "run", box(), "--"};
  words.insert(words.end(), command.begin(), command.end());
  return words;
}

void BoxTest::make_box(const std::string &model) {
  spbox({"create", "--model", model});
  box_time::keep(box::Place(box()).clock());
  before_ = play::before_command(box::Place(box()), terminal_);
}

void BoxTest::start(const Words &command) {
  terminal_.start(in_box(command));
}

std::string BoxTest::procedure(const std::string &command) {
  return std::string(PROCEDURES) + "/" + command;
}

void BoxTest::start_procedure(const std::string &command) {
  std::istringstream in(procedure(command));
  start({std::istream_iterator<std::string>(in), {}});
}

void BoxTest::answers(std::string_view question, std::string_view keys) {
  if (!terminal_.wait_for_new(question, kLater)) {
    throw std::runtime_error("\"" + std::string(question) + "\" was not asked:" + framed(terminal_.screen()));
  }
  if (!keys.empty()) types(keys);
}

void BoxTest::reads_on_to(std::string_view question) {
  eventually(
      [&] {
        if (terminal_.wait_for_new("--More--", {})) types(" ");
        return !terminal_.runs() || terminal_.wait_for_new(question, milliseconds{200});
      },
      kLater);
  answers(question);
}

bool BoxTest::was_shown(std::string_view text) {
  return lines_with(text) > 0;
}

bool BoxTest::comes_up_again(std::string_view text, int times) {
  return eventually([&] { return lines_with(text) >= times; }) && lines_with(text) == times;
}

std::ptrdiff_t BoxTest::lines_with(std::string_view text) {
  const auto lines = terminal_.everything_shown();
  return std::count_if(lines.begin(), lines.end(), [&](const auto &line) { return line.find(text) != line.npos; });
}

void BoxTest::send(int signal, const char *program) {
  const auto pid = terminal_.process(program);
  ASSERT_TRUE(pid) << program << " does not run";
  ASSERT_EQ(kill(*pid, signal), 0);
}

namespace {

std::vector<std::string> read_screen(const std::string &name) {
  std::ifstream file(fs::path(SCREENS) / (name + ".txt"));
  EXPECT_TRUE(file) << "no screen " << name;
  std::vector<std::string> rows;
  for (std::string row; std::getline(file, row);) rows.push_back(row);
  rows.resize(24);
  return rows;
}

}  // namespace

void BoxTest::expect_screen(const std::string &name) {
  const auto wanted = read_screen(name);
  std::vector<std::string> rows;
  eventually([&] { return (rows = terminal_.screen()) == wanted; });
  EXPECT_EQ(framed(rows), framed(wanted)) << name;
}

Done BoxTest::spbox(const Words &words) {
  Words command{SPBOX, words[0], box()};
  command.insert(command.end(), words.begin() + 1, words.end());
  auto done = run_to_end(command);
  EXPECT_EQ(done.exit_status, 0) << "spbox " << words[0] << ": " << done.output;
  return done;
}

void BoxTest::pulls(const std::string &unit) {
  answers("Pull out " + unit + " now.");
  spbox({"pull", unit});
  types("1\n");
}

std::string BoxTest::led(const std::string &unit) const {
  return box::Hardware(box::Place(box())).led(unit);
}

bool BoxTest::flag(const std::string &unit) const {
  return box::Hardware(box::Place(box())).flag(unit);
}

void BoxTest::bend(const std::string &program, const Words &how) {
  Words words{"program", program};
  words.insert(words.end(), how.begin(), how.end());
  spbox(words);
}

void BoxTest::remove_list_file() const {
  int removed = 0;
  for (const auto &file : fs::directory_iterator(box() / "tmp")) {
    if (file.path().filename().string().starts_with("mainte_fru_list.")) removed += fs::remove(file.path());
  }
  EXPECT_EQ(removed, 1);
}

void BoxTest::put_record(std::uint32_t db_id, const std::string &name, std::size_t size) const {
  box::Database(box::Place(box()).database(db_id)).put(name, box::Bytes(size));
}

std::string BoxTest::call(const Words &words) const {
  Words command{CALL};
  command.insert(command.end(), words.begin(), words.end());
  return run_to_end(in_box(command)).output;
}

void BoxTest::expect_in_order(const Words &detached) {
  expect_left({}, detached);
}

void BoxTest::expect_left(const Words &sentences, const Words &detached) {
  Words left;
  eventually([&] { return (left = play::leftovers(box::Place(box()), terminal_, *before_, detached)) == sentences; },
             seconds{2});
  EXPECT_EQ(left, sentences);
}

void BoxTest::expect_nothing_left() {
  EXPECT_EQ(terminal_.mode(), mode_before_);
  expect_no_process();
  expect_no_list_file();
  EXPECT_EQ(call({"locks"}), "result 0\n");
}

void BoxTest::expect_no_list_file() const {
  for (const auto &file : fs::directory_iterator(box() / "tmp")) {
    EXPECT_EQ(file.path().filename().string().find("mainte_fru_list"), std::string::npos) << file.path();
  }
}

// The daemon has a session of its own, in which the terminal does not see it.
void BoxTest::expect_no_process() {
  for (const auto &process : terminal_.processes()) ADD_FAILURE() << process.name << " still runs";
  for (const auto &process : processes_of_box()) ADD_FAILURE() << process << " is still in the box";
  EXPECT_FALSE(fs::exists(box::Place(box()).daemons() / "monitor")) << "the daemon's socket";
}

std::vector<std::string> BoxTest::processes_of_box() const {
  std::vector<std::string> names;
  for (const auto &process : fs::directory_iterator("/proc")) {
    std::ifstream command_line(process.path() / "cmdline"), comm(process.path() / "comm");
    bool is_of_box = false;
    for (std::string word; std::getline(command_line, word, '\0');) is_of_box |= word == box();
    if (std::string name; is_of_box && std::getline(comm, name)) names.push_back(name);
  }
  return names;
}

}  // namespace end_to_end
