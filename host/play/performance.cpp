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
#include "host/play/player.h"

namespace play {
namespace {

namespace fs = std::filesystem;

// A file that can be written, before the play; what is in it stays until the picture is finished.
class PictureFile {
 public:
  explicit PictureFile(fs::path path) : path_(std::move(path)) {
    if (path_.empty()) return;
    is_new_ = !fs::exists(path_);
    if (!std::ofstream(path_, std::ios::binary | std::ios::app)) throw script::Error(cannot_write());
  }
  ~PictureFile() {
    std::error_code ignored;
    if (is_new_) fs::remove(path_, ignored);
  }
  PictureFile(const PictureFile &) = delete;
  PictureFile &operator=(const PictureFile &) = delete;

  void write(const Picture &picture) {
    if (path_.empty()) return;
    std::ofstream file(path_, std::ios::binary | std::ios::trunc);
    if (!(file << picture.svg() << std::flush)) throw std::runtime_error(cannot_write());
    is_new_ = false;
  }

 private:
  std::string cannot_write() const {
    return "the picture " + path_.string() + " cannot be written: " + std::generic_category().message(errno);
  }

  fs::path path_;
  bool is_new_ = false;
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
    throw script::Error(script + " makes no box. Write `box qe1`, for example, or give one with --box.");
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
  PictureFile picture_file(files.picture);
  Transcript transcript(out);
  if (!files.transcript.empty()) transcript.keep_in(files.transcript);
  Picture picture;
  Narrator narrator(transcript, picture);
  Box box(spbox, files.box, alarm);
  // NOLINTNEXTLINE(concurrency-mt-unsafe): there is one thread
  if (files.box.empty()) setenv(LMAINTE_HOST_RUN, "", 1);  // A step `start` takes what a command advises to type.
  try {
    Stage stage(box, narrator, alarm);
    stage.account = AccountWriter(files.account);
    play_steps(stage, steps);
  } catch (const Failure &failure) {
    transcript.keep(std::string(failure.what()) + "\n");
    keep_books(box, transcript);
    throw;
  }
  keep_books(box, transcript);
  picture_file.write(picture);
}

}  // namespace play
