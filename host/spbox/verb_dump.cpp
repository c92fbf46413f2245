#include <unistd.h>

#include <memory>
#include <system_error>

#include "host/box/advice.h"
#include "host/box/confinement.h"
#include "host/script/script.h"
#include "host/spbox/answer.h"
#include "host/spbox/dump.h"
#include "host/spbox/new_box.h"
#include "host/spbox/standard_output.h"
#include "host/spbox/verbs.h"
#include "host/spbox/whole_file.h"

namespace spbox {
namespace {

namespace fs = std::filesystem;

struct DumpOptions {
  fs::path box, file;
  bool force = false;
};

// A dump of a full box has at most this: two digits, or four of an escaped character, for each byte.
constexpr std::size_t kLongestDump = std::size_t{256} << 20U;

int dump(const DumpOptions &options) {
  const box::Place place(options.box);
  const std::string text = box::in_confinement(place, [&] { return dump_of(box::contents_of(place)); });
  if (options.file.empty() || options.file == "-" || options.file == "/dev/stdout") {
    show({{"dump", text}}, text);
    return 0;
  }
  try {
    write_whole_file(options.file, text);
  } catch (const std::system_error &error) {
    throw box::BoxError(options.file.string() + " could not be written: " + error.code().message() + ".");
  }
  return 0;
}

box::Contents read_file(const fs::path &file) {
  const std::string name = file == "-" ? "standard input" : file.string();
  std::string text;
  try {
    text = file == "-" ? script::text_of(STDIN_FILENO, name, kLongestDump) : script::text_of_file(file, kLongestDump);
  } catch (const script::Error &wrong) {
    throw box::BoxError(wrong.what() + std::string("."));
  }
  return read_dump(std::move(text), name);
}

int load(const DumpOptions &options) {
  const box::Contents contents = read_file(options.file);
  make_box(box::Place(options.box), contents, options.force);
  std::size_t records = 0;
  for (const auto &database : contents.records) records += database.size();
  print_line("Made " + options.box.string() + ": model " + std::string(box::model_name(contents.model)) + ", " +
             std::to_string(records) + " records of " +
             (options.file == "-" ? "standard input" : options.file.string()) + ". " +
             box::advice({"units", options.box}) + " lists its units.");
  return 0;
}

}  // namespace

Verb dump_verb() {
  auto options = std::make_shared<DumpOptions>();
  return {.name = "dump",
          .line = "Write all that the box holds as a text to compare and keep",
          .works_on_box = true,
          .words = {box_word(options->box),
                    {.name = "FILE", .help = "The text; without it, or with -, standard output", .to = &options->file}},
          .footer =
              "The text has the databases, the hardware's state and how programs are bent, but\n"
              "not the trace and the log. It leaves out rows of zeros. All of it is as it was\n"
              "at one moment.\n\n"
              "Examples:\n"
              "  spbox dump box before.dump\n"
              "  spbox dump box | diff before.dump -",
          .act = [options] { return dump(*options); },
          .acts_confined = false};
}

Verb load_verb() {
  auto options = std::make_shared<DumpOptions>();
  return {.name = "load",
          .line = "Make a box of a dump, taken from a box or from a real server",
          .words = {{.name = "FILE",
                     .help = "The dump; - for standard input",
                     .to = &options->file,
                     .need = Need::kRequired},
                    box_word(options->box),
                    force_option(options->force)},
          .footer =
              "docs/host-platform.md says how a real server writes a dump.\n\n"
              "Example:\n  spbox load before.dump box",
          .act = [options] { return load(*options); }};
}

}  // namespace spbox
