#include <CLI/CLI.hpp>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <memory>

#include "host/spbox/dump.h"
#include "host/spbox/new_box.h"
#include "host/spbox/verbs.h"

namespace spbox {
namespace {

namespace fs = std::filesystem;

struct Options {
  fs::path box, file;
  bool force = false;
};

int dump(const Options &options) {
  const std::string text = dump_of(box::contents_of(box::Place(options.box)));
  if (options.file.empty() || options.file == "-") {
    if (std::fputs(text.c_str(), stdout) < 0 || std::fflush(stdout) != 0) {
      throw box::InventoryError("the dump could not be written to standard output.");
    }
    return 0;
  }
  std::ofstream out(options.file, std::ios::binary);
  out << text;
  out.close();
  if (!out) throw box::InventoryError(options.file.string() + " could not be written. See its folder and the disk.");
  return 0;
}

box::Contents read_file(const fs::path &file) {
  if (file == "-") return read_dump(std::cin, "standard input");
  std::error_code error;
  std::ifstream in(file, std::ios::binary);
  if (!in || fs::is_directory(file, error)) throw box::InventoryError(file.string() + " cannot be read as a dump.");
  return read_dump(in, file.string());
}

int load(const Options &options) {
  const box::Contents contents = read_file(options.file);
  make_box(box::Place(options.box), contents, options.force);
  std::size_t records = 0;
  for (const auto &database : contents.records) records += database.size();
  const std::string folder = options.box.string();
  std::printf("Made %s: model %s, %zu records of %s. `spbox units %s` lists its units.\n", folder.c_str(),
              std::string(box::model_name(contents.model)).c_str(), records,
              options.file == "-" ? "standard input" : options.file.c_str(), box::quoted(folder).c_str());
  return 0;
}

}  // namespace

void add_dump(CLI::App &app, Action &action) {
  CLI::App *verb = app.add_subcommand("dump", "Write all that the box holds as a text to compare and keep");
  auto options = std::make_shared<Options>();
  add_box(verb, options->box);
  verb->add_option("FILE", options->file, "Where to; without it, to standard output");
  verb->footer(
      "The databases, the hardware's state and how programs are bent; not the trace and\n"
      "the log. Rows of zeros are left out. What a command changes between one database\n"
      "and the next is seen half.\n\n"
      "Examples:\n"
      "  spbox dump box before.dump\n"
      "  spbox dump box | diff before.dump -");
  verb->callback([options, &action] { action = [options] { return dump(*options); }; });
}

void add_load(CLI::App &app, Action &action) {
  CLI::App *verb = app.add_subcommand("load", "Make a box of a dump, taken from a box or from a real server");
  auto options = std::make_shared<Options>();
  verb->add_option("FILE", options->file, "The dump; - for standard input")->required();
  add_box(verb, options->box);
  verb->add_flag("--force", options->force, "Make it anew where there is a box already");
  verb->footer("docs/host-platform.md says how a real server writes a dump.\n\nExample:\n  spbox load before.dump box");
  verb->callback([options, &action] { action = [options] { return load(*options); }; });
}

}  // namespace spbox
