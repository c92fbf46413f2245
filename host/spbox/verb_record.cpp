// Records what an author does by hand, as a play.
#include <unistd.h>

#include <cstdlib>
#include <memory>
#include <set>
#include <system_error>

#include "host/base/shown.h"
#include "host/box/advice.h"
#include "host/box/confinement.h"
#include "host/box/contents.h"
#include "host/clock/hours.h"
#include "host/include/lmainte_host.h"
#include "host/play/interrupts.h"
#include "host/play/leftovers.h"
#include "host/play/own_folder.h"
#include "host/recorder/beginning.h"
#include "host/recorder/recording.h"
#include "host/spbox/dump.h"
#include "host/spbox/log_book.h"
#include "host/spbox/machine.h"
#include "host/spbox/speed.h"
#include "host/spbox/standard_output.h"
#include "host/spbox/verbs.h"
#include "host/spbox/whole_file.h"

namespace spbox {
namespace {

namespace fs = std::filesystem;

struct RecordOptions {
  fs::path box, file;
  bool force = false;
  SpeedOption speed;
  MachineOption machine;
  std::vector<std::string> command;
};

// Beside the play, for a box that is not as new.
fs::path dump_beside(const fs::path &file) {
  return fs::path(file).replace_extension(".dump");
}

void check_terminal() {
  if (isatty(STDIN_FILENO) == 1 && isatty(STDOUT_FILENO) == 1) return;
  throw box::BoxError(
      "there is no terminal: standard input and standard output have to be the one at which you operate.");
}

void check_absent(const fs::path &file) {
  if (!fs::exists(fs::symlink_status(file))) return;
  throw box::BoxError(file.string() + " is there already. Give another name, or --force to replace it.");
}

// What cannot be written is known before the author has worked for an hour.
void check_file(const RecordOptions &options) {
  if (!options.force) check_absent(options.file);
  const fs::path folder = options.file.has_parent_path() ? options.file.parent_path() : fs::path(".");
  if (!fs::is_directory(folder)) throw box::BoxError(folder.string() + ": there is no such folder for the play.");
  if (fs::is_directory(options.file)) throw box::BoxError(options.file.string() + " is a folder, not a file.");
  if (access(folder.c_str(), W_OK | X_OK) == 0) return;
  throw box::BoxError(options.file.string() + " cannot be written: " + std::generic_category().message(errno) + ".");
}

// A play finds a program by its path relative to the play.
std::vector<std::string> as_in_play(std::vector<std::string> command, const fs::path &file) {
  std::string &program = command.front();
  if (program.find('/') == std::string::npos || program.starts_with('/')) return command;
  const fs::path folder = fs::absolute(file).parent_path();
  program = fs::absolute(program).lexically_normal().lexically_relative(folder.lexically_normal()).string();
  if (program.find('/') == std::string::npos) program.insert(0, "./");
  return command;
}

std::string could_not_be_written(const fs::path &file, const std::system_error &error) {
  return file.string() + " could not be written: " + error.code().message() + ".";
}

// The script in its file, as far as it goes.
class ScriptFile {
 public:
  explicit ScriptFile(const RecordOptions &options)
      : file_(options.file), force_(options.force), machine_(options.machine.words()) {}

  void keep(const std::string &script) {
    script_ = script;
    wrong_.clear();
    try {
      if (!force_) check_absent(file_);
      write_whole_file(file_, script);
      force_ = true;  // It is ours now.
    } catch (const std::system_error &error) {
      wrong_ = could_not_be_written(file_, error);
    } catch (const box::BoxError &error) {
      wrong_ = error.what();
    }
  }

  // What was recorded is not lost where its file cannot be written.
  bool tell() const {
    if (script_.empty()) return false;
    if (!wrong_.empty()) {
      print(script_);
      complain(wrong_ + " The play stands above.");
      return false;
    }
    const std::string file = file_.string();
    const std::string advice = machine_.empty()
                                   ? box::advice({"test", "--speed", "full", file})
                                   : box::advice({"test", machine_.front(), machine_.back(), "--speed", "full", file});
    print_line("Wrote " + file + ". " + advice + " plays it.");
    return true;
  }

 private:
  fs::path file_;
  bool force_;
  std::vector<std::string> machine_;
  std::string script_, wrong_;
};

// The steps that make a box like this one; what they cannot do stands in a dump beside the play.
std::vector<play::Words> opening_of(const box::Place &place, const RecordOptions &options) {
  const std::string dump = box::in_confinement(place, [&] { return dump_of(box::contents_of(place)); });
  const play::OwnFolder folder;
  recorder::Beginning beginning = recorder::beginning_of(read_dump(dump, place.root().string()), folder.path());
  if (!beginning.is_whole) {
    if (fs::exists(options.file) && !fs::is_regular_file(options.file)) {
      throw box::BoxError("the box is not as new, and beside " + options.file.string() +
                          " no dump can lie that keeps what it is like. Give a file of its own with -o.");
    }
    const fs::path file = dump_beside(options.file);
    if (!options.force) check_absent(file);
    try {
      write_whole_file(file, dump);
    } catch (const std::system_error &error) {
      throw box::BoxError(could_not_be_written(file, error));
    }
    beginning.steps.front().push_back(file.filename().string());
    print_line("The box is not as new: " + file.string() + " keeps what it is like now.");
  }
  const terminal::Size size = recorder::window(), usual;
  if (size.rows != usual.rows || size.columns != usual.columns) {
    beginning.steps.push_back({"terminal", std::to_string(size.rows), std::to_string(size.columns)});
  }
  return std::move(beginning.steps);
}

// A dump has the server; what commands left in files is not in it.
void tell_of_files(const box::Place &place) {
  const std::set<fs::path> files = play::files_in_tmp(place);
  if (files.empty()) return;
  std::string names;
  for (const fs::path &file : files) names += (names.empty() ? "/tmp/" : ", /tmp/") + base::shown(file.string());
  print_line("The box has files that the play does not make: " + names + ".");
  print_line("If the command looks at them, the play goes another way.");
}

int record(const RecordOptions &options) {
  const box::Place place(fs::absolute(options.box));
  box::check_is_box(box::Place(options.box));
  check_file(options);
  check_command(options.command.front(), options.machine.machine());
  check_terminal();
  recorder::Wanted wanted{.box = place,
                          .command = {fs::read_symlink("/proc/self/exe").string(), "run"},
                          .start = as_in_play(options.command, options.file),
                          .opening = opening_of(place, options),
                          .log = [place] { return log_of(place, [](const LogLine &line) { return line.what; }); }};
  tell_of_files(place);
  const auto add = [&](const std::vector<std::string> &words) {
    wanted.command.insert(wanted.command.end(), words.begin(), words.end());
  };
  add(options.machine.words());
  add({place.root().string(), "--"});
  add(options.command);
  // NOLINTNEXTLINE(concurrency-mt-unsafe): there is one thread
  setenv(LMAINTE_HOST_RUN, "", 1);  // A command advises to type what a step `start` takes, as in the play.
  print_line("Operate the command. What " + box::advice({"pull", options.box, "UNIT"}) +
             " and its like do meanwhile, in another terminal, is recorded, too.");
  std::fflush(stdout);
  const play::Interrupts interrupts;
  const std::unique_ptr<box_time::Keeper> keeper = options.speed.keeper();
  box_time::keep(place.clock());
  ScriptFile file(options);
  const bool has_ended =
      recorder::record(wanted, interrupts.alarm(), [&](const std::string &script) { file.keep(script); });
  const bool is_written = file.tell();
  if (interrupts.signal() != 0) return interrupts.die();
  return is_written && has_ended ? 0 : kFailure;
}

}  // namespace

Verb record_verb() {
  auto options = std::make_shared<RecordOptions>();
  return {.name = "record",
          .line = "Operate a command by hand, and get a play of it",
          .words = {box_word(options->box),
                    {.name = "-o",
                     .help = "The play that is written",
                     .to = &options->file,
                     .need = Need::kRequired,
                     .value = "FILE"},
                    {.name = "COMMAND",
                     .help = "The command and its arguments; -- may stand before it",
                     .to = Rest{&options->command},
                     .need = Need::kRequired},
                    {.name = "--force", .help = "Replace a file that is there", .to = &options->force},
                    options->speed.word(),
                    options->machine.word()},
          .footer =
              "The command runs in the box, on this terminal. The play waits for the texts by\n"
              "which you knew what to type, and types it. What other verbs of spbox do to the\n"
              "box meanwhile stands at its place. The play begins with a box like this one: a\n"
              "new one and what was done to it or, where that does not make the same, a dump\n"
              "beside the play. It ends with `in_order`, or says what was not.\n\n"
              "Example:\n"
              "  spbox record box -o replace.play -- ./replace_unit psu\n"
              "  spbox pull box /PSU#3                        in another terminal\n"
              "  spbox test --speed full replace.play",
          .check = [options] { options->speed.check(); },
          .act = [options] { return record(*options); }};
}

}  // namespace spbox
