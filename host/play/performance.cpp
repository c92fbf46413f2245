#include "host/play/performance.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <system_error>
#include <utility>

#include "host/box/advice.h"
#include "host/box/contents.h"
#include "host/include/lmainte_host.h"
#include "host/play/chronicle.h"
#include "host/play/player.h"

namespace play {
namespace {

namespace fs = std::filesystem;

// A file that can be written, before the play; what is in it stays until its text is there.
class KeptFile {
 public:
  KeptFile(std::string what, fs::path path) : what_(std::move(what)), path_(std::move(path)) {
    if (path_.empty()) return;
    is_new_ = !fs::exists(path_);
    if (!std::ofstream(path_, std::ios::binary | std::ios::app)) throw script::Error(cannot_write());
  }
  ~KeptFile() {
    std::error_code ignored;
    if (is_new_) fs::remove(path_, ignored);
  }
  KeptFile(const KeptFile &) = delete;
  KeptFile &operator=(const KeptFile &) = delete;

  bool is_wanted() const { return !path_.empty(); }
  void write(const std::string &text) {
    std::ofstream file(path_, std::ios::binary | std::ios::trunc);
    if (!(file << text << std::flush)) throw std::runtime_error(cannot_write());
    is_new_ = false;
  }

 private:
  std::string cannot_write() const {
    return what_ + " " + path_.string() + " cannot be written: " + std::generic_category().message(errno);
  }

  std::string what_;
  fs::path path_;
  bool is_new_ = false;
};

// The files that a play leaves however it ends.
class Chronicles {
 public:
  explicit Chronicles(const Files &files)
      : report_("the report", files.report),
        cast_("the recording", files.cast),
        chronicle_(name_of_script(files.script), {report_.is_wanted(), cast_.is_wanted()}) {}

  Chronicle *chronicle() { return report_.is_wanted() || cast_.is_wanted() ? &chronicle_ : nullptr; }
  void write(const Box &box) {
    chronicle_.close(box);
    if (report_.is_wanted()) report_.write(chronicle_.page());
    if (cast_.is_wanted()) cast_.write(chronicle_.recording());
  }

 private:
  KeptFile report_, cast_;
  Chronicle chronicle_;
};

// What the library recorded and the log, however the play ended.
void keep_books(const Box &box, Transcript &transcript) {
  if (!transcript.is_kept() || !box.exists()) return;
  constexpr std::array<std::pair<const char *, const char *>, 2> kBooks{{{"trace", "The trace"}, {"log", "The log"}}};
  for (const auto &[verb, heading] : kBooks) {
    auto book = box.spbox({verb});
    book.wait();
    transcript.keep(std::string("==== ") + heading + "\n\n" + book.output() + "\n");
  }
}

}  // namespace

std::vector<Step> prepare(const Files &files, const Values &values, const Verbs &verbs, std::vector<fs::path> *played) {
  auto steps = read_plan(files.script, values, verbs, played);
  const auto script = name_of_script(files.script);
  if (!files.picture.empty() && !has_step(steps, &Traits::draws)) {
    throw script::Error(script + " shows no screen to be drawn. Write `screen \"what it shows\"`.");
  }
  if (has_step(steps, &Traits::makes_box)) return steps;
  if (files.box.empty()) {
    throw script::Error(script + " makes no box. Write `box qe1`, for example, or play it with " +
                        box::advice({"play", "--box", "BOX", script}) + ".");
  }
  if (!box::is_box(box::Place(files.box))) {
    throw script::Error(files.box.string() + " is not a box, and " + script +
                        " makes none. Write `box qe1`, for example, or make one with " +
                        box::advice({"create", files.box, "--model", "MODEL"}) + ".");
  }
  return steps;
}

void perform(const std::vector<Step> &steps, const Files &files, const std::string &spbox, std::ostream &out,
             int alarm) {
  KeptFile picture_file("the picture", files.picture);
  Chronicles chronicles(files);
  Transcript transcript(out);
  if (!files.transcript.empty()) transcript.keep_in(files.transcript);
  Picture picture;
  Narrator narrator(transcript, picture, chronicles.chronicle());
  Box box(spbox, files.box, alarm, files.options);
  // NOLINTNEXTLINE(concurrency-mt-unsafe): there is one thread
  if (files.box.empty()) setenv(LMAINTE_HOST_RUN, "", 1);  // A step `start` takes what a command advises to type.
  try {
    Stage stage(box, narrator, alarm);
    stage.account = AccountWriter(files.account);
    stage.chronicle = chronicles.chronicle();
    stage.draws_server = files.draws_server && picture_file.is_wanted();
    if (!files.cast.empty()) {
      stage.operators.pass_on_to([&](const std::string &name, const Operator &op, std::string_view bytes) {
        chronicles.chronicle()->wrote(name, op, bytes);
      });
    }
    play_steps(stage, steps);
  } catch (const Failure &failure) {
    transcript.keep(std::string(failure.what()) + "\n");
    chronicles.write(box);
    keep_books(box, transcript);
    throw;
  } catch (const terminal::Interrupted &) {
    chronicles.write(box);
    throw;
  }
  keep_books(box, transcript);
  chronicles.write(box);
  if (picture_file.is_wanted()) picture_file.write(picture.svg());
}

}  // namespace play
