#include <memory>

#include "host/base/quoted.h"
#include "host/spbox/new_project.h"
#include "host/spbox/standard_output.h"
#include "host/spbox/verbs.h"

namespace spbox {
namespace {

namespace fs = std::filesystem;

struct NewOptions {
  std::string name;
  std::string language = "c";
  fs::path folder;
};

void check(const NewOptions &options) {
  const char *const why = why_no_command_name(options.name);
  if (why != nullptr) throw UsageError("a command cannot be named `" + options.name + "`: that " + why + ".");
}

int make(const NewOptions &options) {
  const fs::path folder = options.folder.empty() ? fs::path(options.name) : options.folder;
  const auto files = project_files(options.name, options.language == "c" ? Language::kC : Language::kCxx);
  make_project(folder, files);
  print_line("Made " + folder.string() + " with the command " + files.front().path.string() + ". `make -C " +
             base::quoted(folder.string()) + " test` builds and plays it.");
  return 0;
}

}  // namespace

Verb new_verb() {
  auto options = std::make_shared<NewOptions>();
  return {
      .name = "new",
      .line = "Make a project for a new command: it works, and is played",
      .words = {{.name = "NAME",
                 .help = "Name of the command: letters, digits and _",
                 .to = &options->name,
                 .need = Need::kRequired},
                {.name = "DIR", .help = "Folder of the project, new; NAME if it is not given", .to = &options->folder},
                {.name = "--lang",
                 .help = "c, with a Makefile, or c++, with CMake; c if it is not given",
                 .to = Choice{&options->language, "language", {"c", "c++"}},
                 .value = "LANGUAGE"}},
      .footer =
          "The project has the command, a list of steps over liblmainte_procedure, with a\n"
          "step of its own; a play of it; and a file for continuous integration.\n\n"
          "Example:\n"
          "  spbox new fan_check && make -C fan_check test",
      .check = [options] { check(*options); },
      .act = [options] { return make(*options); }};
}

}  // namespace spbox
